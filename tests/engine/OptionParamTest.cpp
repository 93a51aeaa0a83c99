// Option parameters through the exported operations: u8 kind, u8 length, then
// a value whose layout kinds 0 to 5 fix (big-endian on the wire); other kinds
// are raw bytes on decoding and a lone kind byte on encoding.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "TrovCodec.h"
#include "api/GuardedRegion.h"

namespace {

struct OptionCase {
    uint8_t kind;
    std::vector<uint8_t> memory; // a fixed kind's value on a little-endian host: u32; u16; u32, u16
    std::vector<uint8_t> wire;   // what encoding writes, worked out by hand
};

const OptionCase kCases[] = {
    {0, {}, {0x00, 0x00}},
    {1, {0xEF, 0xCD, 0xAB, 0x89}, {0x01, 0x04, 0x89, 0xAB, 0xCD, 0xEF}},
    {2, {0x01, 0x00, 0x00, 0xF0}, {0x02, 0x04, 0xF0, 0x00, 0x00, 0x01}},
    {3, {0xEF, 0xBE}, {0x03, 0x02, 0xBE, 0xEF}},
    {4, {0x01, 0x80}, {0x04, 0x02, 0x80, 0x01}},
    {5, {0xEF, 0xBE, 0xAD, 0xDE, 0xFE, 0xCA}, {0x05, 0x06, 0xDE, 0xAD, 0xBE, 0xEF, 0xCA, 0xFE}},
    {6, {}, {0x06}},
    {7, {}, {0x07}},
    {200, {}, {0xC8}},
    {255, {}, {0xFF}},
};

class OptionParam : public ::testing::TestWithParam<OptionCase> {};

// The golden bytes written into a buffer that ends at the guard, and nothing
// into any shorter one; the value bytes (a raw kind's five) decode back from
// the guard's edge, and nothing decodes from any truncation of them.
TEST_P(OptionParam, GoldenBytesAtTheGuardAndNothingFromShortBuffers) {
    const OptionCase &c = GetParam();
    static const GuardedRegion region(64); // the longest option parameter and a canary margin
    std::vector<uint8_t> value = c.memory;
    value.resize(8, 0xCC);
    const auto total = uint32_t(c.wire.size());
    for (uint32_t n = 0; n <= total; ++n) {
        SCOPED_TRACE(n);
        std::memset(region.tail(n + 16), 0xCC, n + 16);
        PacketCursor cursor{region.tail(n), n};
        trovEncode_OptionParam(&cursor, c.kind, value.data());
        EXPECT_EQ(cursor.position, n < total ? region.tail(n) : region.end());
        std::vector<uint8_t> expected(16 + n, 0xCC);
        if (n == total) std::copy(c.wire.begin(), c.wire.end(), expected.begin() + 16);
        EXPECT_EQ(std::vector<uint8_t>(region.tail(n + 16), region.end()), expected);
    }

    const uint8_t raw[5] = {1, 2, 3, 4, 5};
    const bool fixed = c.kind <= 5;
    const uint8_t length = fixed ? c.wire[1] : 5;
    const uint32_t read = fixed ? total - 2 : 5;
    for (uint32_t n = 0; n <= read; ++n) {
        SCOPED_TRACE(n);
        PacketCursor reader{region.place(fixed ? c.wire.data() + 2 : raw, n), n};
        const PacketCursor before = reader;
        alignas(8) std::array<uint8_t, 16> out;
        out.fill(0xCC);
        void *next = trovDecode_OptionParam(c.kind, length, out.data(), &reader);
        if (n < read) {
            EXPECT_EQ(next, nullptr);
            EXPECT_EQ(reader.position, before.position);
            continue;
        }
        EXPECT_EQ(next, out.data() + (trovDecCalc_OptionParam(c.kind, length) + 7) / 8 * 8);
        EXPECT_EQ(reader.position, region.end());
        const std::vector<uint8_t> used = fixed ? c.memory : std::vector<uint8_t>(raw, raw + 5);
        EXPECT_TRUE(std::equal(used.begin(), used.end(), out.begin()));
        EXPECT_EQ(out[used.size()], 0xCC); // nothing past the value
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, OptionParam, ::testing::ValuesIn(kCases),
                         [](const auto &info) { return "Kind" + std::to_string(info.param.kind); });

TEST(OptionParamArguments, MissingCursorOrValueReadsAndWritesNothing) {
    std::array<uint8_t, 8> buf{};
    PacketCursor nowhere{nullptr, 8};
    trovEncode_OptionParam(nullptr, 1, buf.data());
    trovEncode_OptionParam(&nowhere, 1, buf.data());
    PacketCursor cursor{buf.data(), 8};
    for (uint8_t kind = 1; kind <= 5; ++kind) trovEncode_OptionParam(&cursor, kind, nullptr);
    EXPECT_EQ(cursor.position, buf.data());
    // Kind 0 and the other kinds need no value.
    trovEncode_OptionParam(&cursor, 0, nullptr);
    trovEncode_OptionParam(&cursor, 9, nullptr);
    EXPECT_EQ(cursor.remaining, 5u);
    EXPECT_EQ(buf[2], 0x09);
    EXPECT_EQ(trovDecode_OptionParam(1, 4, buf.data(), nullptr), nullptr);
    EXPECT_EQ(trovDecode_OptionParam(1, 4, buf.data(), &nowhere), nullptr);
}

// The size passes and the decode, by kind and length byte. EncCalc gives
// the value bytes of a fixed kind and refuses the others; DecCalc gives the
// record bytes, 8 for every fixed kind with a value, and for the others the
// length byte as it is (not rounded). A decode reads a fixed kind's own size
// whatever the length byte says, a raw kind's length byte (none without a
// destination), and returns destination + value bytes rounded up to 8, also
// from a destination that is not itself on a boundary.
TEST(OptionParamKinds, SizesAndDecodeByKind) {
    const struct {
        uint8_t kind, length;
        uint32_t offset, next, read, recordBytes;
        TrovResult encResult;
        uint8_t encSize;
    } cases[] = {
        {0, 0, 0, 0, 0, 0, 0, 0},        {0, 9, 3, 8, 0, 0, 0, 0},         {1, 4, 1, 8, 4, 8, 0, 4},
        {2, 0, 4, 8, 4, 8, 0, 4},        {3, 2, 6, 8, 2, 8, 0, 2},         {3, 5, 0, 8, 2, 8, 0, 2},
        {4, 255, 7, 16, 2, 8, 0, 2},     {5, 6, 0, 8, 6, 8, 0, 6},         {5, 6, 1, 16, 6, 8, 0, 6},
        {200, 13, 3, 16, 13, 13, 1, 0},  {200, 0, 0, 0, 0, 0, 1, 0},       {255, 8, 0, 8, 8, 8, 1, 0},
        {7, 0, 5, 8, 0, 0, 1, 0},        {6, 1, 8, 16, 1, 1, 1, 0},
    };
    uint8_t bytes[16];
    for (uint8_t i = 0; i < 16; ++i) bytes[i] = uint8_t(0xB0 + i);
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << int(c.kind) << "/" << int(c.length) << " at +" << c.offset);
        EXPECT_EQ(trovDecCalc_OptionParam(c.kind, c.length), c.recordBytes);
        uint8_t size = 0xEE;
        EXPECT_EQ(trovEncCalc_OptionParam(c.kind, &c, &size), c.encResult);
        EXPECT_EQ(size, c.encSize);
        PacketCursor cursor{bytes, sizeof bytes};
        alignas(8) std::array<uint8_t, 32> dest;
        dest.fill(0xCC);
        EXPECT_EQ(trovDecode_OptionParam(c.kind, c.length, dest.data() + c.offset, &cursor), dest.data() + c.next);
        EXPECT_EQ(cursor.position, bytes + c.read);
        EXPECT_EQ(dest[c.offset + c.read], 0xCC); // nothing past the value
        EXPECT_TRUE(c.kind <= 5 || std::equal(bytes, bytes + c.read, dest.data() + c.offset));
    }
    PacketCursor cursor{bytes, sizeof bytes};
    trovDecode_OptionParam(200, 1, nullptr, &cursor);
    EXPECT_EQ(cursor.position, bytes);
}

} // namespace
