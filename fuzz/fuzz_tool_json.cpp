// The encode side of the trov tool under arbitrary input.
//
// Input that starts like JSON ('{', '[' or white space) goes to the encode
// command whole, as a file's text would. Any other input is a request body:
// the first two bytes (big-endian) pick a body code with a request layout,
// the rest is the body. A body the reader accepts must come back as exactly
// the same bytes when its record is encoded, and again when the record is
// printed as JSON and rebuilt.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "EncodeCommand.h"
#include "RecordBuild.h"
#include "RecordJson.h"
#include "RequestReader.h"
#include "TrovCodec.h"
#include "TrovLayout.h"

namespace {

const std::vector<uint16_t> &requestCodes() {
    static const std::vector<uint16_t> codes = [] {
        TROV_InitCoder();
        std::vector<uint16_t> found;
        for (unsigned code = 0; code < 0x10000; ++code) {
            TrovLayoutInfo layout{};
            if (TROV_DescribeBody(static_cast<uint16_t>(code), TROV_PROTOCOL_VERSION, 1, &layout) == 0)
                found.push_back(static_cast<uint16_t>(code));
        }
        return found;
    }();
    return codes;
}

std::vector<uint8_t> encodeRecord(uint16_t code, const void *record) {
    HeaderInfo info{};
    info.mark = TROV_PROTOCOL_MARK;
    info.version = TROV_PROTOCOL_VERSION;
    info.flags = 1;
    info.code = code;
    info.extension = 1;
    EncodeOutput output{nullptr, 0};
    if (TROV_EncodeFU(&info, record, &output) != 0) __builtin_trap();
    std::vector<uint8_t> bytes(output.data + TROV_HEADER_LENGTH, output.data + output.length);
    trovFree(output.data);
    return bytes;
}

void readBody(const uint8_t *data, size_t size) {
    const auto &codes = requestCodes();
    const uint16_t code = codes[(size_t{data[0]} << 8 | data[1]) % codes.size()];
    TrovLayoutInfo layout{};
    TROV_DescribeBody(code, TROV_PROTOCOL_VERSION, 1, &layout);
    const std::vector<uint8_t> body(data + 2, data + size);
    trov::RecordArena arena;
    const void *record = nullptr;
    size_t stoppedAt = 0;
    if (trov::readRequestBody(layout, TROV_PROTOCOL_VERSION, body.data(), body.size(), arena, record,
                              stoppedAt) != 0) {
        if (stoppedAt > body.size()) __builtin_trap();
        return;
    }
    if (encodeRecord(code, record) != body) __builtin_trap();

    const trov::Json fields = trov::recordToJson(layout, record, TROV_PROTOCOL_VERSION, true);
    trov::JsonError error;
    const void *rebuilt = trov::jsonToRecord(fields, layout, TROV_PROTOCOL_VERSION, true, arena, "", error);
    if (rebuilt == nullptr || encodeRecord(code, rebuilt) != body) __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    TROV_InitCoder();
    if (size == 0) return 0;
    const char first = static_cast<char>(data[0]);
    if (first == '{' || first == '[' || first == ' ' || first == '\n') {
        std::ostringstream out, err;
        trov::encodeJsonText(std::string(reinterpret_cast<const char *>(data), size), "fuzz", (size & 1) != 0, out,
                             err);
    } else if (size >= 2) {
        readBody(data, size);
    }
    return 0;
}
