// Records built from JSON, field by field, through the library's layout
// description; and whole packets encoded from their JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "RecordJson.h"
#include "RecordWalk.h"

namespace trov {

// Zero-filled, 16-byte aligned memory for the records the tool builds,
// released together.
class RecordArena {
public:
    void *allocate(size_t bytes);
    // Memory for the walk (RecordWalk.h): records and array headers always,
    // data and elements only when there are some (null for none).
    void *place(size_t bytes, describe::Block block);

private:
    std::vector<std::unique_ptr<std::byte[]>> blocks_;
};

struct JsonError {
    std::string path;    // JSON pointer of the offending value, e.g. "/body/fields/value3"
    std::string message; // what is wrong with it
    // The library's result where the library refused (no codec for a code, a
    // failed encode); a value that does not fit its field is BAD_VALUE.
    TrovResult result = TROV_RESULT_BAD_VALUE;
};

// The record of `layout` built from its "fields" JSON (at JSON pointer `path`);
// nullptr with `error` set when the JSON does not fit the layout.
const void *jsonToRecord(const Json &fields, const TrovLayoutInfo &layout, uint8_t version, bool request,
                         RecordArena &arena, const std::string &path, JsonError &error);

// A packet object (header, direction and body, at `path`) encoded through
// TROV_EncodeFU (a request) or TROV_EncodeReply (a reply); the body length is
// computed. false with `error` set on bad JSON or a failed encode.
bool encodePacket(const Json &packet, const std::string &path, std::vector<uint8_t> &bytes, JsonError &error);

// Whether the packet object is one whose body the decoder skipped (a body
// code its unit type does not decode) and whose header says the body is
// empty: then the header is the whole packet, and encodePacket writes it.
bool skippedEmptyBody(const Json &packet);

// The packet object's "direction": "request" (also when absent, so that
// request objects written by hand need none) or "reply". false with `error`
// set on any other value.
bool jsonToDirection(const Json &packet, const std::string &path, bool &request, JsonError &error);

// The header of a packet object: every member of "header" but bodyLength,
// which the encoder computes. Absent members take the protocol mark, the
// protocol version and 0. false with `error` set on a bad member.
bool jsonToHeader(const Json &header, const std::string &path, HeaderInfo &info, JsonError &error);

} // namespace trov
