// The trov tool's input reader over arbitrary bytes, detected and read as hex
// text: it must end every input with End or Error, frame packets back to back
// by their bodyLength, and never crash, leak or read out of bounds. A dump's
// '*' lines may stand for 16 MiB each, so draining stops after a megabyte and
// the reader is dropped mid-stream.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "PacketInput.h"

namespace {

void drain(const std::string &bytes, trov::InputFormat format) {
    std::istringstream in(bytes);
    auto input = trov::PacketInput::fromStream(in, "fuzz", format);
    uint64_t offset = 0;
    while (offset < (1u << 20)) {
        const trov::PacketItem item = input->next();
        if (item.kind == trov::PacketItem::Kind::Error && item.error.empty()) std::abort();
        if (item.kind == trov::PacketItem::Kind::End || item.kind == trov::PacketItem::Kind::Error) {
            // Nothing follows the last item.
            if (input->next().kind != trov::PacketItem::Kind::End) std::abort();
            break;
        }
        if (item.offset != offset || item.bytes.empty()) std::abort();
        if (item.kind == trov::PacketItem::Kind::Packet &&
            (item.bytes.size() < 20 || item.bytes.size() != 20u + (item.bytes[8] << 8 | item.bytes[9])))
            std::abort();
        offset += item.bytes.size();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    drain(bytes, trov::InputFormat::Detect);
    drain(bytes, trov::InputFormat::Hex);
    return 0;
}
