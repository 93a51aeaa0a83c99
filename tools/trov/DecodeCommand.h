// `trov decode`: packets in, one JSON packet object (or a text view) out per
// packet, streamed as each packet is decoded.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "PacketInput.h"
#include "RecordJson.h"
#include "TrovLayout.h"

namespace trov {

enum class OutputStyle { JsonArray, Ndjson, Text };

struct DecodeOptions {
    InputFormat format = InputFormat::Detect;
    bool request = false; // read bodies as requests of the body code
    OutputStyle style = OutputStyle::JsonArray;
    uint16_t port = 0; // captures: the server's TCP port (--port), 0: none
    uint64_t count = 0;   // -c: stop after printing this many objects (0: no limit)
    uint64_t skip = 0;    // --skip: objects framed but neither decoded nor printed, first
    // A progress line on the error stream (where it is a terminal), shown
    // from `progressAfter` into the run, at most once per `progressEvery`.
    bool progress = false;
    std::chrono::milliseconds progressAfter{500}, progressEvery{250};
};

// Exit codes of the commands.
enum ExitCode : int { kExitOk = 0, kExitPacketFailed = 1, kExitInputError = 2 };

// Prints a decoded body's record in place of recordToJson (a binding making
// its own objects through RecordPrinter.h): the packet object's "fields"
// is then null, for the caller to fill. Called while the record lives.
using FieldsHook = std::function<void(const TrovLayoutInfo &layout, const void *record, uint8_t version, bool request)>;

// The packet object of one framed packet found at `offset` of its input.
// Sets `failed` when the header or the body failed to decode.
Json decodePacket(const std::vector<uint8_t> &bytes, uint64_t offset, bool request, bool &failed,
                  const FieldsHook *fields = nullptr);

// The packet object of one framed item (PacketInput::next) of kind Packet or
// Trailing: what `trov decode` prints for it, without "file". Sets `failed`
// when the item failed to decode (trailing bytes always do).
Json decodeItem(const PacketItem &item, bool request, bool &failed, const FieldsHook *fields = nullptr);

// A captured packet's "capture" object: frame, time, flow, src, dst and
// direction ("request" or "reply").
Json captureJson(const CaptureInfo &capture);

// Decodes every input in `files` ("-": `in`; empty: `in`; when `in` is std::cin,
// descriptor 0, so that its read errors count) to `out`, errors to `err`.
// Objects are counted across the inputs for `skip` and `count`. Returns 0
// when every printed packet decoded (skipped bodies and unread bytes behind
// a body included), 1 when some packet failed or was partial, or bytes were
// skipped, lost or trailing, 2 after an input error (cannot open, bad hex)
// or when `out` cannot be written.
int runDecode(const std::vector<std::string> &files, const DecodeOptions &options, std::istream &in,
              std::ostream &out, std::ostream &err);

} // namespace trov
