// Every function-unit body code against the code list, through the exported
// interface: the reply's minimum length (one byte fewer gives 5, type 6 and
// nothing allocated), the request's fixed length, and the request written
// into an allocated packet, an exact caller's buffer, and one a byte short.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "TrovCodec.h"

namespace {

constexpr int kVar = -1;       // the length follows from the record
constexpr int kNone = -2;      // decode-only code

struct CodeFigures {
    uint16_t code;
    int request; // body bytes of the request, or kVar / kNone
    int reply;   // minimum reply body bytes, or kVar
};

// The code list: U32Body 4, U32PairBody 8, U32ByteBody 5, EmptyBody 0,
// NoReplyBody 0, AttributeBody 3 (reply), U32AttributeBody 7, the event lists
// 12 and 5, the method invocation 6; u32,u16,u16 8; u32,u32,u8,u8 10; u8,u32 5.
const CodeFigures kCodes[] = {
    {0x01, kVar, 1},  {0x02, 8, 9},     {0x03, kVar, 7},  {0x04, 6, 7},     {0x05, 13, 15},
    {0x06, kVar, 9},  {0x07, 9, 11},    {0x08, kVar, 8},  {0x09, kVar, 8},  {0x0a, kNone, 5},
    {0x0b, 4, 4},     {0x0c, 9, 5},     {0x0d, 8, 4},     {0x0e, 12, 4},    {0x0f, 10, 10},
    {0x10, 0, 10},    {0x11, 13, 4},    {0x12, kVar, 3},  {0x13, 1, 5},     {0x14, 4, 4},
    {0x15, kVar, 3},  {0x16, 0, 4},     {0x17, 4, 4},     {0x18, kVar, 3},  {0x19, 0, 4},
    {0x1a, kVar, 0},  {0x1b, kVar, 1},  {0x1c, 0, 0},     {0x1d, kVar, 6},  {0x1f, 4, 4},
    {0x20, 4, 4},     {0x21, 4, 4},     {0x22, 8, 8},     {0x23, 4, 4},     {0x24, 4, 8},
    {0x25, 5, 8},     {0x26, 4, 4},     {0x27, 4, 4},     {0x28, 4, 4},     {0x29, 4, 4},
    {0x2a, 5, 5},     {0x2b, 6, kVar},  {0x2c, 17, 9},    {0x2e, 2, 4},     {0x30, 4, 4},
    {0x31, 4, 4},     {0x32, kVar, 3},  {0x33, 0, 4},     {0x35, kVar, kVar}, {0x36, kVar, 10},
    {0x37, kVar, 10}, {0x38, kVar, 18}, {0x39, kVar, 9},  {0x3a, kVar, 9},  {0x3b, kVar, 11},
    {0x3c, 10, 11},   {0x3f, kVar, 3},  {0x40, kVar, 4},  {0x44, kVar, 13}, {0x45, 17, 15},
    {0x46, 8, 5},     {0x47, 17, 5},    {0x48, 17, 11},   {0x49, 10, 10},   {0x4a, 9, 5},
    {0x4c, 10, 8},    {0x4d, 10, 12},   {0x4e, 4, 4},     {0x4f, 4, 4},     {0x50, 8, kVar},
    {0x51, 4, 4},     {0x52, 14, 16},   {0x53, kVar, 13}, {0x54, kVar, 4},  {0x55, 0, 0},
    {0x56, kVar, 7},  {0x57, 10, 7},    {0x58, 13, 15},   {0x5c, 8, 4},     {0x5d, kVar, 8},
    {0x5e, kVar, 8},  {0x5f, kVar, 4},  {0x60, 17, 11},   {0x61, kVar, 8},  {0x62, kVar, 8},
    {0x65, 0, 3},     {0x66, kVar, 2},  {0x67, kVar, 15}, {0x68, kVar, 4},  {0x69, kVar, 7},
    {0x6a, kVar, 8},  {0x6b, kVar, 10}, {0x6c, kVar, 2},  {0x6d, kVar, 1},  {0x6e, kVar, 2},
    {0x6f, kVar, kVar}, {0x70, kVar, 9}, {0x71, kVar, 8}, {0x72, 18, 16},   {0x73, kVar, 4},
    {0x74, kVar, 4},  {0x75, kVar, 8},  {0x76, 17, 2},    {0x77, 5, 5},     {0x78, kVar, 8},
    {0x79, kVar, 8},  {0x7a, 5, 5},     {0x7b, 4, 4},     {0x7c, kVar, 11}, {0x7d, kVar, 11},
    {0x7e, kVar, 17}, {0x7f, kVar, 8},  {0x80, kVar, 17}, {0x81, kVar, 18}, {0x82, 8, 4},
    {0x83, kVar, 9},  {0x84, kVar, 4},  {0x85, 8, 8},
};
static_assert(std::size(kCodes) == 118);

std::vector<uint8_t> packet(uint16_t code, size_t bodyBytes) {
    std::vector<uint8_t> p(20 + bodyBytes, 0);
    const uint8_t head[20] = {0xA7, 0xE5, 0x10, 0x01, uint8_t(code >> 8), uint8_t(code), 0, 0,
                              uint8_t(bodyBytes >> 8), uint8_t(bodyBytes), 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    std::memcpy(p.data(), head, 20);
    return p;
}

class BodyCodeList : public testing::Test {
protected:
    void SetUp() override { TROV_InitCoder(); }
};

TEST_F(BodyCodeList, EveryCodeHasARowAndTheAbsentCodesHaveNone) {
    std::vector<bool> listed(0x100, false);
    for (const CodeFigures &c : kCodes) listed[c.code] = true;
    for (uint16_t code = 0; code < 0x100; ++code) {
        if (listed[code]) continue;
        SCOPED_TRACE(code);
        auto p = packet(code, 0);
        HeaderInfo h{};
        DecodeResult r{};
        const PacketCursor c{p.data(), uint32_t(p.size())};
        EXPECT_EQ(TROV_DecodeFU(&h, &r, &c, nullptr), TROV_RESULT_NO_BODY_CODEC);
    }
}

// The smallest all-zero reply body that decodes is the code's minimum: with
// zero lengths and counts, a body of exactly the minimum has everything the
// reply needs (an attribute identifier 0 then has no codec: 10, not 5).
TEST_F(BodyCodeList, ReplyMinimumsAreExact) {
    for (const CodeFigures &c : kCodes) {
        if (c.reply == kVar || c.code == 0x1d) continue;
        SCOPED_TRACE(c.code);
        for (int n = 0; n <= c.reply; ++n) {
            auto p = packet(c.code, size_t(n));
            HeaderInfo h{};
            DecodeResult r{nullptr, nullptr, 0};
            const PacketCursor cursor{p.data(), uint32_t(p.size())};
            const TrovResult result = TROV_DecodeFU(&h, &r, &cursor, nullptr);
            if (n < c.reply) {
                EXPECT_EQ(result, TROV_RESULT_SHORT_INPUT) << n;
                EXPECT_EQ(r.type, 6);
                EXPECT_EQ(r.record, nullptr);
            } else {
                EXPECT_NE(result, TROV_RESULT_SHORT_INPUT) << n;
            }
            if (r.buffer != nullptr) trovFree(r.buffer->data);
            trovFree(r.record);
        }
    }
}

// A zeroed request record (zero lengths and counts) encodes to the fixed
// length of its code; the same bytes land in an exact caller's buffer, and a
// buffer one byte short is refused untouched.
TEST_F(BodyCodeList, FixedRequestsHaveTheirLengthInEveryKindOfOutput) {
    alignas(8) static uint8_t record[512];
    for (const CodeFigures &c : kCodes) {
        if (c.request < 0) continue;
        SCOPED_TRACE(c.code);
        std::memset(record, 0, sizeof record);
        HeaderInfo h{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, 0, c.code, 0, 0xEEEE, 0, 0, 0};
        EncodeOutput allocated{nullptr, 0};
        ASSERT_EQ(TROV_EncodeFU(&h, record, &allocated), 0u);
        EXPECT_EQ(h.bodyLength, c.request);
        ASSERT_EQ(allocated.length, 20u + uint32_t(c.request));

        std::vector<uint8_t> buffer(allocated.length + 4, 0xCC);
        EncodeOutput shortOne{buffer.data(), allocated.length - 1};
        EXPECT_EQ(TROV_EncodeFU(&h, record, &shortOne), TROV_RESULT_BUFFER_TOO_SMALL);
        EXPECT_EQ(buffer, std::vector<uint8_t>(allocated.length + 4, 0xCC));
        EncodeOutput exact{buffer.data(), allocated.length};
        ASSERT_EQ(TROV_EncodeFU(&h, record, &exact), 0u);
        EXPECT_EQ(exact.length, allocated.length);
        EXPECT_EQ(std::memcmp(buffer.data(), allocated.data, allocated.length), 0);
        EXPECT_EQ(buffer[allocated.length], 0xCC);
        trovFree(allocated.data);
    }
    HeaderInfo h{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, 0, 0x0a, 0, 0, 0, 0, 0};
    EncodeOutput out{nullptr, 0};
    EXPECT_EQ(TROV_EncodeFU(&h, record, &out), TROV_RESULT_NO_BODY_CODEC); // decode-only
}

} // namespace
