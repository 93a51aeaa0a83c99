// A reply packet for tests of the exported decoders: the protocol mark,
// version 0x10, flags 0x01 (a 16-bit extension), the body code, the body's
// length, and unit type 1 (a unit whose bodies are all decoded).
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

inline std::vector<uint8_t> replyPacket(uint16_t code, const std::vector<uint8_t> &body) {
    const auto n = uint16_t(body.size());
    const uint8_t head[20] = {0xA7, 0xE5, 0x10, 0x01, uint8_t(code >> 8), uint8_t(code), 0, 0, uint8_t(n >> 8),
                              uint8_t(n), 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    std::vector<uint8_t> p(head, head + 20);
    p.insert(p.end(), body.begin(), body.end());
    return p;
}
