// Bytes for tests of the codecs. A reply packet: the protocol mark, version
// 0x10, flags 0x01 (a 16-bit extension), the body code, the body's length
// (unless told otherwise), and the unit type in the extension; unit type 1 is
// a unit whose bodies are all decoded.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "TrovCodec.h"
#include "TrovInspect.h"

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

// A packet decoded with TROV_DecodeFU, or with TROV_InspectFU into `report`;
// what the call handed out is freed with it.
struct Decoded {
    HeaderInfo info{};
    DecodeResult out{nullptr, nullptr, 0};
    TrovInspectReport report{};
    TrovResult result;
    explicit Decoded(std::vector<uint8_t> packet, bool inspect = false) {
        const PacketCursor cursor{packet.data(), uint32_t(packet.size())};
        result = inspect ? TROV_InspectFU(&info, &out, &cursor, nullptr, &report) : TROV_DecodeFU(&info, &out, &cursor, nullptr);
    }
    Decoded(const Decoded &) = delete;
    ~Decoded() {
        if (out.buffer != nullptr) trovFree(out.buffer->data);
        trovFree(out.record);
    }
};

// An event list body of either framing, long (0x4d: a 12-byte head, 13 bytes
// before each event) or short (0x0a: 5, then 3), the heads' fields set with
// their high bits; the head announces `count` events (the number given when
// negative); `starts` receives each event's offset, then the end.
struct ListedEvent {
    uint16_t code;
    std::vector<uint8_t> body;
};
inline std::vector<uint8_t> eventListBody(uint16_t list, const std::vector<ListedEvent> &events, int count = -1,
                                          std::vector<uint32_t> *starts = nullptr) {
    const auto n = uint16_t(count < 0 ? events.size() : size_t(count));
    std::vector<uint8_t> b = {0x89, 0xAB, 0xCD, 0xEF};
    if (list == 0x4d) b.insert(b.end(), {0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, uint8_t(n >> 8)});
    b.push_back(uint8_t(n));
    for (size_t i = 0; i < events.size(); ++i) {
        if (starts != nullptr) starts->push_back(uint32_t(b.size()));
        const ListedEvent &e = events[i];
        if (list == 0x4d) b.insert(b.end(), {0xE1, uint8_t(i), 0xE3, 0xE4, 0xE5, 0xE6, 0xD1, 0xD2, 0xD3, 0xD4, 0xC1});
        b.insert(b.end(), {uint8_t(e.code >> 8), uint8_t(e.code)});
        if (list != 0x4d) b.push_back(uint8_t(0xB1 + i));
        b.insert(b.end(), e.body.begin(), e.body.end());
    }
    if (starts != nullptr) starts->push_back(uint32_t(b.size()));
    return b;
}

inline std::vector<uint8_t> concat(const std::vector<std::vector<uint8_t>> &parts) {
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
