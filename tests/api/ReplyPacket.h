// Bytes for tests of the codecs. A reply packet: the protocol mark, version
// 0x10, flags 0x01 (a 16-bit extension), the body code, the body's length
// (unless told otherwise), and the unit type in the extension; unit type 1 is
// a unit whose bodies are all decoded.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "TrovCodec.h"

inline std::vector<uint8_t> replyPacket(uint16_t code, const std::vector<uint8_t> &body, uint16_t unitType = 1,
                                        int bodyLength = -1) {
    const auto n = uint16_t(bodyLength < 0 ? body.size() : size_t(bodyLength));
    std::vector<uint8_t> p = {0xA7, 0xE5, 0x10, 0x01, uint8_t(code >> 8), uint8_t(code), 0, 0, uint8_t(n >> 8), uint8_t(n),
                              0, 0, 0, 0, 0, 0, 0, 0, uint8_t(unitType >> 8), uint8_t(unitType)};
    // Laid out at its full size at once: g++ 12 warns (-Warray-bounds) about
    // an insert behind the header where it inlines one.
    p.resize(20 + body.size());
    if (!body.empty()) std::memcpy(p.data() + 20, body.data(), body.size());
    return p;
}

// Decodes a reply of body `code` with TROV_DecodeFU into `result`.
inline TrovResult decodeReply(uint16_t code, const std::vector<uint8_t> &body, DecodeResult &result) {
    std::vector<uint8_t> p = replyPacket(code, body);
    const PacketCursor cursor{p.data(), uint32_t(p.size())};
    HeaderInfo info{};
    return TROV_DecodeFU(&info, &result, &cursor, nullptr);
}

inline std::vector<uint8_t> concat(std::initializer_list<std::vector<uint8_t>> parts) {
    std::vector<uint8_t> out;
    for (const auto &p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}

// Bytes from hex text; spaces are ignored ("A7E5 10 01").
inline std::vector<uint8_t> hexBytes(std::string text) {
    std::erase(text, ' ');
    std::vector<uint8_t> out;
    for (size_t i = 0; i + 1 < text.size(); i += 2) out.push_back(uint8_t(std::stoi(text.substr(i, 2), nullptr, 16)));
    return out;
}

// v as `width` (1, 2 or 4) bytes: big-endian on the wire, host order in a record.
inline void putWire(std::vector<uint8_t> &w, uint32_t v, unsigned width) {
    for (unsigned k = width; k-- > 0;) w.push_back(uint8_t(v >> (8 * k)));
}
inline void putHost(uint8_t *at, uint32_t v, unsigned width) {
    const uint16_t v16 = uint16_t(v);
    if (width == 1) *at = uint8_t(v);
    if (width == 2) std::memcpy(at, &v16, 2);
    if (width == 4) std::memcpy(at, &v, 4);
}
inline uint32_t getHost(const uint8_t *at, unsigned width) {
    uint16_t v16 = 0;
    uint32_t v = width == 1 ? *at : 0;
    if (width == 2) std::memcpy(&v16, at, 2), v = v16;
    if (width == 4) std::memcpy(&v, at, 4);
    return v;
}

// Every field of a header record, to compare records whole.
inline std::array<uint32_t, 9> headerFields(const HeaderInfo &h) {
    return {h.mark, h.version, h.flags, h.code, h.value4, h.bodyLength, h.value6, h.value7, h.extension};
}
