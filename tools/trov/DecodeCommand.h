// `trov decode`: packets in, one JSON packet object (or a text view) out per
// packet, streamed as each packet is decoded.
#pragma once

#include <cstdint>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "PacketInput.h"
#include "RecordJson.h"

namespace trov {

enum class OutputStyle { JsonArray, Ndjson, Text };

struct DecodeOptions {
    InputFormat format = InputFormat::Detect;
    bool request = false; // read bodies as requests of the body code
    OutputStyle style = OutputStyle::JsonArray;
};

// Exit codes of the commands.
enum ExitCode : int { kExitOk = 0, kExitPacketFailed = 1, kExitInputError = 2 };

// The packet object of one framed packet found at `offset` of its input.
// Sets `failed` when the header or the body failed to decode.
Json decodePacket(const std::vector<uint8_t> &bytes, uint64_t offset, bool request, bool &failed);

// Decodes every input in `files` ("-": `in`; empty: `in`) to `out`, errors to
// `err`. Returns 0 when every packet decoded (skipped bodies included), 1
// when some packet or trailing bytes failed, 2 after an input error (cannot
// open, bad hex) or when `out` cannot be written.
int runDecode(const std::vector<std::string> &files, const DecodeOptions &options, std::istream &in,
              std::ostream &out, std::ostream &err);

} // namespace trov
