// Option parameters through the exported operations: u8 kind, u8 length, then
// a value whose layout kinds 0 to 5 fix (big-endian on the wire); other kinds
// are raw bytes on decoding and a lone kind byte on encoding.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "TrovCodec.h"

namespace {

struct OptionCase {
    uint8_t kind;
    uint32_t first;             // u32 of kinds 1, 2, 5; u16 of kinds 3, 4
    uint16_t second;            // u16 of kind 5
    std::vector<uint8_t> wire;  // what encoding writes, worked out by hand
};

const OptionCase kCases[] = {
    {0, 0, 0, {0x00, 0x00}},
    {1, 0x89ABCDEF, 0, {0x01, 0x04, 0x89, 0xAB, 0xCD, 0xEF}},
    {2, 0xF0000001, 0, {0x02, 0x04, 0xF0, 0x00, 0x00, 0x01}},
    {3, 0xBEEF, 0, {0x03, 0x02, 0xBE, 0xEF}},
    {4, 0x8001, 0, {0x04, 0x02, 0x80, 0x01}},
    {5, 0xDEADBEEF, 0xCAFE, {0x05, 0x06, 0xDE, 0xAD, 0xBE, 0xEF, 0xCA, 0xFE}},
    {6, 0x11111111, 0, {0x06}},
    {7, 0x11111111, 0, {0x07}},
    {200, 0x11111111, 0, {0xC8}},
    {255, 0x11111111, 0, {0xFF}},
};

// The in-memory value of a fixed kind (u32; u16; u32 with a u16 right after
// it) and how many of its bytes a decode writes.
struct Memory {
    alignas(8) std::array<uint8_t, 8> bytes;
    uint32_t used;
};

Memory memoryValue(uint8_t kind, uint32_t first, uint16_t second) {
    Memory m{};
    m.bytes.fill(0xCC);
    m.used = 0;
    if (kind == 1 || kind == 2) {
        std::memcpy(m.bytes.data(), &first, 4);
        m.used = 4;
    } else if (kind == 3 || kind == 4) {
        const auto v = uint16_t(first);
        std::memcpy(m.bytes.data(), &v, 2);
        m.used = 2;
    } else if (kind == 5) {
        std::memcpy(m.bytes.data(), &first, 4);
        std::memcpy(m.bytes.data() + 4, &second, 2);
        m.used = 6;
    }
    return m;
}

void PrintTo(const OptionCase &c, std::ostream *os) { *os << "kind " << int(c.kind); }

class OptionParam : public ::testing::TestWithParam<OptionCase> {};

// The golden bytes, and nothing after them; a fixed kind's bytes decode
// back to the value. (Short buffers and cursors: GuardPageTest.)
TEST_P(OptionParam, EncodesTheGoldenBytesAndDecodesThemBack) {
    const OptionCase &c = GetParam();
    const Memory value = memoryValue(c.kind, c.first, c.second);
    const auto n = uint32_t(c.wire.size());
    std::array<uint8_t, 16> buf;
    buf.fill(0xCC);
    PacketCursor cursor{buf.data(), 16};
    trovEncode_OptionParam(&cursor, c.kind, value.bytes.data());
    EXPECT_EQ(std::vector<uint8_t>(buf.begin(), buf.begin() + n), c.wire);
    for (uint32_t i = n; i < buf.size(); ++i) EXPECT_EQ(buf[i], 0xCC) << i;
    EXPECT_EQ(cursor.position, buf.data() + n);
    EXPECT_EQ(cursor.remaining, 16 - n);
    if (c.kind > 5) return; // other kinds encode as the kind byte alone

    PacketCursor reader{buf.data() + 2, n - 2};
    alignas(8) std::array<uint8_t, 16> out;
    out.fill(0xCC);
    EXPECT_EQ(trovDecode_OptionParam(c.kind, buf[1], out.data(), &reader),
              out.data() + trovDecCalc_OptionParam(c.kind, buf[1]));
    EXPECT_EQ(reader.remaining, 0u);
    EXPECT_TRUE(std::equal(out.begin(), out.begin() + value.used, value.bytes.begin()));
    EXPECT_EQ(out[8], 0xCC); // nothing past the value's slot
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

TEST(OptionParamDecode, FixedKindsIgnoreTheLengthByte) {
    uint8_t bytes[] = {0xBE, 0xEF, 0x11, 0x22, 0x33};
    PacketCursor cursor{bytes, 2}; // the length byte says 5, but kind 3 needs 2
    alignas(8) std::array<uint8_t, 8> dest;
    dest.fill(0xCC);
    EXPECT_EQ(trovDecode_OptionParam(3, 5, dest.data(), &cursor), dest.data() + 8);
    EXPECT_EQ(cursor.position, bytes + 2);
    EXPECT_EQ(cursor.remaining, 0u);
    uint16_t v;
    std::memcpy(&v, dest.data(), 2);
    EXPECT_EQ(v, 0xBEEF);
    EXPECT_EQ(dest[2], 0xCC);
}

TEST(OptionParamDecode, RawKindCopiesLengthBytesAndRoundsUp) {
    uint8_t bytes[14] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 0x77};
    PacketCursor cursor{bytes, sizeof bytes};
    alignas(8) std::array<uint8_t, 24> dest;
    dest.fill(0xCC);
    EXPECT_EQ(trovDecode_OptionParam(200, 13, dest.data(), &cursor), dest.data() + 16);
    EXPECT_EQ(cursor.position, bytes + 13);
    EXPECT_TRUE(std::equal(dest.begin(), dest.begin() + 13, bytes));
    EXPECT_EQ(dest[13], 0xCC);

    // No length or no destination: nothing is read.
    EXPECT_EQ(trovDecode_OptionParam(200, 0, dest.data() + 16, &cursor), dest.data() + 16);
    trovDecode_OptionParam(200, 1, nullptr, &cursor);
    EXPECT_EQ(cursor.position, bytes + 13);
}

// The returned address is destination + value bytes, rounded up to 8, also
// from a destination that is not itself on a boundary.
TEST(OptionParamDecode, ReturnedAddressIsTheNextEightByteBoundary) {
    const struct { uint8_t kind, length; uint32_t offset, next; } cases[] = {
        {0, 0, 0, 0}, {0, 9, 3, 8}, {1, 4, 1, 8}, {2, 4, 4, 8}, {3, 2, 6, 8}, {4, 2, 7, 16},
        {5, 6, 0, 8}, {5, 6, 1, 16}, {200, 13, 3, 16}, {255, 8, 0, 8}, {7, 0, 5, 8}, {6, 1, 8, 16},
    };
    std::vector<uint8_t> bytes(16, 0x5A);
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << int(c.kind) << " at +" << c.offset);
        PacketCursor cursor{bytes.data(), uint32_t(bytes.size())};
        alignas(8) std::array<uint8_t, 32> dest{};
        EXPECT_EQ(trovDecode_OptionParam(c.kind, c.length, dest.data() + c.offset, &cursor),
                  dest.data() + c.next);
    }
}

// The size passes: EncCalc gives the value bytes of a fixed kind and refuses
// the others; DecCalc gives the record bytes, 8 for every fixed kind with a
// value, and for the others the length byte as it is (not rounded).
TEST(OptionParamSizes, EncCalcAndDecCalcByKind) {
    const struct { uint8_t kind, length; uint32_t recordBytes; TrovResult encResult; uint8_t encSize; } cases[] = {
        {0, 0, 0, 0, 0},   {0, 9, 0, 0, 0},     {1, 4, 8, 0, 4},       {2, 0, 8, 0, 4},
        {3, 5, 8, 0, 2},   {4, 255, 8, 0, 2},   {5, 6, 8, 0, 6},       {6, 0, 0, 1, 0},
        {7, 1, 1, 1, 0},   {200, 13, 13, 1, 0}, {255, 255, 255, 1, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << int(c.kind) << "/" << int(c.length));
        EXPECT_EQ(trovDecCalc_OptionParam(c.kind, c.length), c.recordBytes);
        uint8_t size = 0xEE;
        EXPECT_EQ(trovEncCalc_OptionParam(c.kind, &c, &size), c.encResult);
        EXPECT_EQ(size, c.encSize);
    }
}

} // namespace
