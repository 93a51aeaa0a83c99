// Routing of packets to body codecs, through tables whose rows record what
// they are handed: the skip rules of the function-unit decoder for every
// unit type with a rule, the FP body length rule of code 0x1a and the FP
// extension value, and the body cursor. (The skip rules through the built-in
// tables: the differential corpus and BodyOperationsTest; the size queries:
// BodyOperationsTest and the corpus.)
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "api/BodyOperations.h"
#include "api/ReplyPacket.h"

namespace trov {
namespace {

// What the recording operations last received.
struct Seen {
    int calls;
    PacketCursor body;
    void *output, *context;
    uint8_t mode;
    uint8_t packetAtCall[24];
};
Seen seen;

TrovResult recordDecode(HeaderInfo *, DecodeResult *, const PacketCursor *body, void *context) {
    seen = Seen{seen.calls + 1, *body, nullptr, context, 0, {}};
    return TROV_RESULT_OK;
}

TrovResult recordEncode(HeaderInfo *, const void *, void *output, void *context, uint8_t mode) {
    ++seen.calls;
    seen.output = output;
    seen.context = context;
    seen.mode = mode;
    const auto *c = static_cast<const PacketCursor *>(output);
    if (c->position != nullptr) std::memcpy(seen.packetAtCall, c->position, 24);
    return TROV_RESULT_OK;
}

// Every code from 1 to 0x85 in both body tables, one row each.
const std::vector<BodyCodecRow> kRows = [] {
    std::vector<BodyCodecRow> rows;
    for (uint16_t code = 1; code <= 0x85; ++code) rows.push_back({code, 0, recordEncode, recordDecode});
    rows.push_back({0, 0, nullptr, nullptr});
    return rows;
}();

Tables tables() {
    Tables t{};
    t.fuBodies = t.fpBodies = kRows.data();
    return t;
}

class BodyRouting : public testing::Test {
protected:
    void SetUp() override { seen = Seen{}; }
    HeaderInfo info{};
    DecodeResult result{nullptr, nullptr, 0xBEEF};
};

TEST(UnitRules, WhichUnitTypesAndCodesAreDecoded) {
    // Units with rules of their own, and the codes they decode (none listed: every code).
    const std::pair<std::vector<uint16_t>, std::vector<uint16_t>> rules[] = {
        {{1, 29, 33, 34}, {}},
        {{4}, {5, 6, 7, 53, 56, 69, 82, 83, 84, 88, 93, 94, 95, 97}},
        {{23, 9}, {6, 53, 83, 84}},
        {{8}, {84, 93, 94, 95, 97}},
        {{31}, {93, 94, 95, 97}},
    };
    const uint16_t otherUnits[] = {0, 2, 3, 5, 18, 24, 25, 26, 30, 0x100, 0xFFFF};
    for (uint16_t code = 0; code <= 0x90; ++code) {
        for (const auto &[units, codes] : rules) {
            for (uint16_t unit : units) {
                SCOPED_TRACE(testing::Message() << "unit " << unit << " code " << code);
                const bool expected =
                    codes.empty() || std::find(codes.begin(), codes.end(), code) != codes.end();
                DecodeResult r{nullptr, nullptr, unit};
                EXPECT_EQ(decodesUnitBody(unit, code, &r), expected);
                EXPECT_EQ(r.type, unit);
            }
        }
        for (uint16_t unit : otherUnits) {
            SCOPED_TRACE(testing::Message() << "unit " << unit << " code " << code);
            const bool expected = code == 10 || (code == 27 && unit == 18) ||
                                  (code == 19 && (unit == 24 || unit == 25));
            DecodeResult r{nullptr, nullptr, unit};
            EXPECT_EQ(decodesUnitBody(unit, code, &r), expected);
            EXPECT_EQ(r.type, code == 10 ? 0 : unit); // code 10 clears the type
        }
    }
}

// The body cursor never passes what arrived, whatever the header claims;
// 0x31 runs to the packet's end. (The corpus checks this on Linux alone.)
TEST_F(BodyRouting, DecodeHandsTheRowABodyCursorWithinThePacket) {
    const struct { uint16_t code, bodyLength; size_t total; uint32_t remaining; } cases[] = {
        {5, 10, 40, 10}, {5, 0, 40, 0}, {5, 50, 30, 10}, {0x31, 5, 100, 80}, {0x31, 200, 100, 80},
    };
    int context = 0;
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "code " << c.code << " bodyLength " << c.bodyLength);
        seen = Seen{};
        auto p = replyPacket(c.code, std::vector<uint8_t>(c.total - 20, 0xEE), 1, c.bodyLength);
        const PacketCursor cursor{p.data(), static_cast<uint32_t>(c.total)};
        EXPECT_EQ(decodeFU(tables(), &info, &result, &cursor, &context), 0u);
        ASSERT_EQ(seen.calls, 1);
        EXPECT_EQ(seen.body.position, p.data() + 20);
        EXPECT_EQ(seen.body.remaining, c.remaining);
        EXPECT_EQ(seen.context, &context);
    }
}

TEST_F(BodyRouting, DecodeFpBodyLengthAndNoSkipRules) {
    const struct { uint16_t code; uint8_t b0, b1, b2; uint32_t remaining; } cases[] = {
        {0x1a, 1, 0, 0, 30},       {0x1a, 0, 0x0B, 0, 30}, {0x1a, 0, 0, 0x0D, 30},
        {0x1a, 0, 0, 0, 6},        {0x1a, 0x0B, 0x0D, 1, 6}, // the bytes count only in their places
        {0x1b, 1, 0x0B, 0x0D, 6},  {0x31, 0, 0, 0, 6},     // no 0x31 rule in FP
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "case " << (&c - cases));
        seen = Seen{};
        auto p = replyPacket(c.code, std::vector<uint8_t>(30, 0xEE), 4, 6); // unit type 4 would skip all these in FU
        p[20] = c.b0;
        p[21] = c.b1;
        p[22] = c.b2;
        const PacketCursor cursor{p.data(), 50};
        EXPECT_EQ(decodeFP(tables(), &info, &result, &cursor), 0u);
        ASSERT_EQ(seen.calls, 1);
        EXPECT_EQ(seen.body.position, p.data() + 20);
        EXPECT_EQ(seen.body.remaining, c.remaining);
        EXPECT_EQ(seen.context, nullptr);
    }
}

TEST_F(BodyRouting, EncodeFpWithExtensionPlacesTheValueOnce) {
    // already: the big-endian u16 at the slot before the call; offset: where the value is expected, 0 for nowhere.
    const struct { uint16_t code; uint32_t remaining; uint16_t already; size_t offset; } cases[] = {
        {88, 24, 0, 22},  {103, 24, 0, 22}, {114, 30, 0, 22}, {115, 24, 0, 22}, {129, 24, 0, 22},
        {88, 23, 0, 0},   {129, 24, 0x0102, 0}, {102, 22, 0, 20}, {102, 21, 0, 0},
        {102, 22, 0x0001, 0}, {89, 24, 0, 0},  {7, 24, 0, 0},
    };
    info.version = 0x10;
    const int record = 0;
    int context = 0;
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "code " << c.code << " remaining " << c.remaining);
        seen = Seen{};
        info.code = c.code;
        std::array<uint8_t, 32> bytes{};
        const size_t slot = c.code == 102 ? 20 : 22;
        bytes[slot] = uint8_t(c.already >> 8);
        bytes[slot + 1] = uint8_t(c.already);
        std::array<uint8_t, 32> expected = bytes;
        if (c.offset != 0) {
            expected[c.offset] = 0xAB;
            expected[c.offset + 1] = 0xCD;
        }
        PacketCursor out{bytes.data(), c.remaining};
        EXPECT_EQ(encodeFPWithExtension(tables(), &info, &record, &out, &context, 0xABCD), 0u);
        EXPECT_EQ(bytes, expected);
        ASSERT_EQ(seen.calls, 1);
        EXPECT_EQ(std::memcmp(seen.packetAtCall, expected.data(), 24), 0); // placed before the encoder ran
        EXPECT_EQ(seen.mode, 1);
        EXPECT_EQ(seen.output, &out);
        EXPECT_EQ(seen.context, &context);
    }
    seen = Seen{};
    info.code = 88;
    PacketCursor nowhere{nullptr, 40};
    EXPECT_EQ(encodeFPWithExtension(tables(), &info, &record, &nowhere, nullptr, 1), 0u);
    EXPECT_EQ(seen.calls, 1);
}

} // namespace
} // namespace trov
