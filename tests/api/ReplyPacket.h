// Packets for tests of the exported decoders. A reply packet: the protocol
// mark, version 0x10, flags 0x01 (a 16-bit extension), the body code, the
// body's length (unless told otherwise), and the unit type in the extension;
// unit type 1 is a unit whose bodies are all decoded.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

inline std::vector<uint8_t> replyPacket(uint16_t code, const std::vector<uint8_t> &body, uint16_t unitType = 1,
                                        int bodyLength = -1) {
    const auto n = uint16_t(bodyLength < 0 ? body.size() : size_t(bodyLength));
    const uint8_t head[20] = {0xA7, 0xE5, 0x10, 0x01, uint8_t(code >> 8), uint8_t(code), 0, 0, uint8_t(n >> 8),
                              uint8_t(n), 0, 0, 0, 0, 0, 0, 0, 0, uint8_t(unitType >> 8), uint8_t(unitType)};
    std::vector<uint8_t> p(head, head + 20);
    p.insert(p.end(), body.begin(), body.end());
    return p;
}

// Bytes from hex text; spaces are ignored ("A7E5 10 01").
inline std::vector<uint8_t> hexBytes(std::string text) {
    std::erase(text, ' ');
    std::vector<uint8_t> out;
    for (size_t i = 0; i + 1 < text.size(); i += 2) out.push_back(uint8_t(std::stoi(text.substr(i, 2), nullptr, 16)));
    return out;
}
