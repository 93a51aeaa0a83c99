// The trov tool's capture input over arbitrary bytes (seeded with small pcap
// and pcapng captures): it must end every input with End or Error, stamp
// every item with where it was captured, frame packets by their bodyLength,
// and keep each direction of each connection contiguous (every item starts
// where the one before it ended), without crashing, leaking or reading out
// of bounds.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <utility>

#include "PacketInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char *>(data), size));
    // Connections without a handshake take port 5000 as the server's.
    trov::CaptureOptions options{5000, [](const std::string &note) {
                                     if (note.empty()) std::abort();
                                 }};
    auto input = trov::PacketInput::fromStream(in, "fuzz", trov::InputFormat::Detect, false, options);
    std::map<std::pair<uint64_t, bool>, uint64_t> ends; // (flow, request) -> next offset
    for (;;) {
        const trov::PacketItem item = input->next();
        if (item.kind == trov::PacketItem::Kind::End) break;
        if (item.kind == trov::PacketItem::Kind::Error) {
            if (item.error.empty() || input->next().kind != trov::PacketItem::Kind::End) std::abort();
            break;
        }
        if (!item.capture) continue; // not a capture: the raw framing, which fuzz_tool_hex covers
        if (item.capture->flow == 0 || item.capture->time.empty() || item.capture->src.empty()) std::abort();
        uint64_t &end = ends[{item.capture->flow, item.capture->request}];
        if (item.offset != end) std::abort();
        switch (item.kind) {
        case trov::PacketItem::Kind::Packet:
            if (item.bytes.size() < 20 || item.bytes.size() != 20u + (item.bytes[8] << 8 | item.bytes[9])) std::abort();
            end += item.bytes.size();
            break;
        case trov::PacketItem::Kind::Trailing: end += item.bytes.size(); break;
        default: end += item.count; break; // skipped or lost
        }
    }
    return 0;
}
