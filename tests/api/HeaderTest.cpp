// The packet header through the exported interface: single-field access in a
// record and in packets of every length, the whole-header codec, and the
// results of the six header functions.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "api/GuardedRegion.h"
#include "api/ReplyPacket.h"

namespace {

// A header with the high bits of every field set, and its 20 wire bytes.
// Flags 0x89 has bit 0 set, so bytes 18-19 carry the extension big-endian.
// Only the low byte of the 16-bit version and flags slots counts.
constexpr HeaderInfo kInfo{0xA7E5, 0xAB10, 0xCD89, 0x8421, 0xFEDC, 0xF00F, 0x89ABCDEF, 0xF1E2D3C4, 0xBEEF};
constexpr std::array<uint8_t, 20> kWire{0xA7, 0xE5, 0x10, 0x89, 0x84, 0x21, 0xFE, 0xDC, 0xF0, 0x0F,
                                        0x89, 0xAB, 0xCD, 0xEF, 0xF1, 0xE2, 0xD3, 0xC4, 0xBE, 0xEF};

struct FieldCase {
    uint32_t index;
    uint32_t offset, width; // in the packet; width: also the bytes of the caller's value
    uint32_t inRecord;      // the field's value read from kInfo
    uint32_t update;        // a new value to store
    void (*store)(HeaderInfo &, uint32_t); // what storing `update` does to a record
};

const FieldCase kFields[] = {
    {0, 0, 2, 0xA7E5, 0x8001, [](HeaderInfo &h, uint32_t v) { h.mark = uint16_t(v); }},
    {1, 2, 1, 0x10, 0x90, [](HeaderInfo &h, uint32_t v) { h.version = uint16_t((h.version & 0xFF00) | v); }},
    {2, 3, 1, 0x89, 0xF6, [](HeaderInfo &h, uint32_t v) { h.flags = uint16_t((h.flags & 0xFF00) | v); }},
    {3, 4, 2, 0x8421, 0x9BDF, [](HeaderInfo &h, uint32_t v) { h.code = uint16_t(v); }},
    {4, 6, 2, 0xFEDC, 0x8000, [](HeaderInfo &h, uint32_t v) { h.value4 = uint16_t(v); }},
    {5, 8, 2, 0xF00F, 0xFFFF, [](HeaderInfo &h, uint32_t v) { h.bodyLength = uint16_t(v); }},
    {6, 10, 4, 0x89ABCDEF, 0x80000001, [](HeaderInfo &h, uint32_t v) { h.value6 = v; }},
    {7, 14, 4, 0xF1E2D3C4, 0xFEDCBA98, [](HeaderInfo &h, uint32_t v) { h.value7 = v; }},
    {8, 18, 2, 0xBEEF, 0xC0DE, [](HeaderInfo &h, uint32_t v) { h.extension = uint16_t(v); }},
    // Byte form: the low byte of extension (a set clears the high byte); in
    // a packet, byte 18.
    {9, 18, 1, 0xEF, 0xC3, [](HeaderInfo &h, uint32_t v) { h.extension = uint16_t(v); }},
};

// The value in an 8-byte out area: the field's width in host order, then
// canary bytes that must survive.
std::array<uint8_t, 8> hostValue(uint32_t value, uint32_t width) {
    std::array<uint8_t, 8> out;
    out.fill(0xCC);
    putHost(out.data(), value, width);
    return out;
}

std::array<uint8_t, 8> canary() { return hostValue(0, 0); }

// Every field, and the whole header, in a packet of n bytes that ends at an
// inaccessible page: read and written only when it fits, nothing else touched.
// Alongside, each field at its width in a record: a set changes that field alone.
TEST(HeaderFields, EachFieldInARecordAndInPacketsEndingAtAGuardPage) {
    static const GuardedRegion region(64);
    for (uint32_t n = 0; n <= 20; ++n) {
        SCOPED_TRACE(n);
        const PacketCursor cursor{region.tail(n), n};
        for (const FieldCase &f : kFields) {
            SCOPED_TRACE(f.index);
            if (n == 20) {
                auto fromInfo = canary();
                EXPECT_EQ(TROV_GetFromInfo(f.index, &kInfo, fromInfo.data()), TROV_RESULT_OK);
                EXPECT_EQ(fromInfo, hostValue(f.inRecord, f.width));
                HeaderInfo info = kInfo, expected = kInfo;
                f.store(expected, f.update);
                ASSERT_EQ(TROV_SetToInfo(f.index, &info, hostValue(f.update, f.width).data()), TROV_RESULT_OK);
                EXPECT_EQ(headerFields(info), headerFields(expected));
            }
            const bool fits = n >= f.offset + f.width;
            region.place(kWire.data(), n);
            uint32_t wire = 0;
            for (uint32_t i = 0; fits && i < f.width; ++i) wire = wire << 8 | kWire[f.offset + i];
            auto out = canary();
            EXPECT_EQ(TROV_GetFromPacket(f.index, &cursor, out.data()), fits ? TROV_RESULT_OK : TROV_RESULT_BAD_PACKET);
            EXPECT_EQ(out, fits ? hostValue(wire, f.width) : canary());

            std::vector<uint8_t> expected(kWire.begin(), kWire.begin() + n), update;
            putWire(update, f.update, f.width);
            if (fits) std::copy(update.begin(), update.end(), expected.begin() + f.offset);
            EXPECT_EQ(TROV_SetToPacket(f.index, &cursor, hostValue(f.update, f.width).data()),
                      fits ? TROV_RESULT_OK : TROV_RESULT_BUFFER_TOO_SMALL);
            EXPECT_EQ(std::vector<uint8_t>(region.tail(n), region.end()), expected);
        }
        std::memset(region.tail(n), 0xCC, n);
        EXPECT_EQ(TROV_EncodeHeader(&kInfo, &cursor), n < 20 ? TROV_RESULT_BUFFER_TOO_SMALL : TROV_RESULT_OK);
        const std::vector<uint8_t> written(region.tail(n), region.end());
        EXPECT_EQ(written, n < 20 ? std::vector<uint8_t>(n, 0xCC) : std::vector<uint8_t>(kWire.begin(), kWire.end()));
    }
}

// The golden header with each flags value: exactly 20 bytes written in place
// (the caller advances). Bytes 18-19 by the flags: encoding extension 0xBEEF,
// bit 0 big-endian, else bit 3 the low byte then 0, else zeros. Decoding: bit
// 0 big-endian, else the two bytes in wire order, so a byte form reads back
// as the byte and 12 34 comes back swapped. Only the body decoders insist on
// the protocol mark.
TEST(HeaderCodec, GoldenHeaderWithTheExtensionFormTheFlagsSay) {
    const struct { uint8_t flags, b18, b19; uint16_t readBack, from1234; } cases[] = {
        {0x89, 0xBE, 0xEF, 0xBEEF, 0x1234}, {0x00, 0x00, 0x00, 0x0000, 0x3412}, {0x01, 0xBE, 0xEF, 0xBEEF, 0x1234},
        {0x08, 0xEF, 0x00, 0x00EF, 0x3412}, {0x09, 0xBE, 0xEF, 0xBEEF, 0x1234}, {0x80, 0x00, 0x00, 0x0000, 0x3412},
        {0xFE, 0xEF, 0x00, 0x00EF, 0x3412}, {0xF6, 0x00, 0x00, 0x0000, 0x3412},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(int(c.flags));
        HeaderInfo info = kInfo, out{};
        info.flags = uint16_t(0xCD00 | c.flags);
        std::array<uint8_t, 21> wire;
        wire.fill(0xCC);
        const PacketCursor cursor{wire.data(), 20};
        ASSERT_EQ(TROV_EncodeHeader(&info, &cursor), TROV_RESULT_OK);
        std::array<uint8_t, 21> expected{};
        std::copy(kWire.begin(), kWire.end(), expected.begin());
        expected[3] = c.flags;
        expected[18] = c.b18;
        expected[19] = c.b19;
        expected[20] = 0xCC;
        EXPECT_EQ(wire, expected);
        EXPECT_EQ(cursor.position, wire.data());
        wire[0] = 0x12;
        ASSERT_EQ(TROV_DecodeHeader(&out, &cursor), TROV_RESULT_OK);
        info.mark = 0x12E5, info.version = 0x10, info.flags = c.flags;
        info.extension = c.readBack;
        EXPECT_EQ(headerFields(out), headerFields(info));
        wire[18] = 0x12;
        wire[19] = 0x34;
        ASSERT_EQ(TROV_DecodeHeader(&out, &cursor), TROV_RESULT_OK);
        EXPECT_EQ(out.extension, c.from1234);
    }
}

TEST(HeaderResults, NullArgumentsAndIndicesAboveNine) {
    HeaderInfo info = kInfo;
    std::array<uint8_t, 20> wire = kWire;
    const PacketCursor cursor{wire.data(), 20};
    const PacketCursor nowhere{nullptr, 20};
    uint32_t out = 0;
    for (uint32_t index : {0u, 1u, 5u, 10u}) { // before the index is looked at
        SCOPED_TRACE(index);
        const TrovResult results[] = {
            TROV_GetFromInfo(index, nullptr, &out),      TROV_GetFromInfo(index, &info, nullptr),
            TROV_SetToInfo(index, nullptr, &out),        TROV_SetToInfo(index, &info, nullptr),
            TROV_GetFromPacket(index, nullptr, &out),    TROV_GetFromPacket(index, &nowhere, &out),
            TROV_GetFromPacket(index, &cursor, nullptr), TROV_SetToPacket(index, nullptr, &out),
            TROV_SetToPacket(index, &nowhere, &out),     TROV_SetToPacket(index, &cursor, nullptr)};
        for (size_t i = 0; i < std::size(results); ++i)
            EXPECT_EQ(results[i], TROV_RESULT_NULL_ARGUMENT) << "call " << i;
    }
    EXPECT_EQ(TROV_EncodeHeader(nullptr, &cursor), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_EncodeHeader(&info, nullptr), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_EncodeHeader(&info, &nowhere), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_DecodeHeader(nullptr, &cursor), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_DecodeHeader(&info, nullptr), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_DecodeHeader(&info, &nowhere), TROV_RESULT_NULL_ARGUMENT);
    for (uint32_t index : {10u, 11u, 0x100u, 0x80000000u, 0xFFFFFFFFu}) { // indices above 9
        SCOPED_TRACE(index);
        auto out = canary();
        EXPECT_EQ(TROV_GetFromInfo(index, &info, out.data()), TROV_RESULT_BAD_FIELD_INDEX);
        EXPECT_EQ(TROV_GetFromPacket(index, &cursor, out.data()), TROV_RESULT_BAD_FIELD_INDEX);
        EXPECT_EQ(out, canary());
        const auto value = hostValue(0x5A5A5A5A, 4);
        EXPECT_EQ(TROV_SetToInfo(index, &info, value.data()), TROV_RESULT_BAD_FIELD_INDEX);
        EXPECT_EQ(TROV_SetToPacket(index, &cursor, value.data()), TROV_RESULT_BAD_FIELD_INDEX);
    }
    EXPECT_EQ(headerFields(info), headerFields(kInfo));
    EXPECT_EQ(wire, kWire);
}

// Version 0x11 has no header codec: only the mark and the version itself can
// be reached, and the codec lookup comes before the length checks.
TEST(HeaderResults, UnknownVersionGivesNoHeaderCodec) {
    HeaderInfo info = kInfo;
    info.version = 0x11;
    const HeaderInfo before = info;
    std::array<uint8_t, 20> wire = kWire;
    wire[2] = 0x11;
    const std::array<uint8_t, 20> wireBefore = wire;
    const PacketCursor cursor{wire.data(), 20};
    for (uint32_t index = 0; index <= 10; ++index) {
        SCOPED_TRACE(index);
        const TrovResult expected = index < 2 ? TROV_RESULT_OK : TROV_RESULT_NO_HEADER_CODEC;
        auto out = canary();
        EXPECT_EQ(TROV_GetFromInfo(index, &info, out.data()), expected);
        EXPECT_TRUE(index < 2 || out == canary());
        EXPECT_EQ(TROV_GetFromPacket(index, &cursor, out.data()), expected);
        // Index 0 and 1 store what is already there.
        const auto value = index == 0 ? hostValue(0xA7E5, 2) : hostValue(0x11, 1);
        EXPECT_EQ(TROV_SetToInfo(index, &info, value.data()), expected);
        EXPECT_EQ(TROV_SetToPacket(index, &cursor, value.data()), expected);
    }
    EXPECT_EQ(headerFields(info), headerFields(before));
    EXPECT_EQ(wire, wireBefore);

    HeaderInfo out = kInfo;
    for (uint32_t length : {20u, 19u}) {
        const PacketCursor c{wire.data(), length};
        EXPECT_EQ(TROV_EncodeHeader(&info, &c), TROV_RESULT_NO_HEADER_CODEC);
        EXPECT_EQ(TROV_DecodeHeader(&out, &c), TROV_RESULT_NO_HEADER_CODEC);
    }
    EXPECT_EQ(wire, wireBefore);
    EXPECT_EQ(headerFields(out), headerFields(kInfo));
}

} // namespace
