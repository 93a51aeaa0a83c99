// Function-unit bodies through the exported interface, worked out by hand
// where the layout is unusual: body 0x1d without a codec below method
// 0x2000, a reply whose strings share one rounded buffer, and the failures
// that must leave the caller's memory alone. (Every request layout's bytes,
// attribute values and raw parameters too: EncodeRoundTripTest and
// RecordWalkTest's bytes worked out by hand; every reply, and attribute
// values' elements in host order: RecordWalkTest, the extent sweep and the
// differential corpus; 0x31's reply running
// to the packet's end: BodyRoutingInternalTest and GuardPageTest.)
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "TrovCodec.h"
#include "api/ReplyPacket.h"

namespace {

using Bytes = std::vector<uint8_t>;

// Attribute 0x08D5: a u32 value, scalar form only; its record is the u32.
constexpr uint16_t kU32Attribute = 0x08D5;
// An identifier no attribute codec serves.
constexpr uint16_t kUnknownAttribute = 0x0001;

// The encoder sets the body length.
HeaderInfo requestHeader(uint16_t code) { return HeaderInfo{0xA7E5, 0x10, 0, code, 0, 0xEEEE, 0, 0, 0}; }

std::string text(const OctetString &s) {
    return s.data == nullptr ? std::string() : std::string(reinterpret_cast<char *>(s.data), s.length);
}

class Bodies : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(TROV_InitCoder(), 1); }
};

uint32_t attributeValue = 0x01020304;
// Body 0x1d: below 0x2000 a method needs a codec.
uint8_t params[] = {0xDE, 0xAD, 0xBE};
MethodBody kNoMethodCodec{1, 0x1FFF, params, 3, {}};

TEST_F(Bodies, RequestFailuresComeBeforeAnyOutput) {
    static AttributeBody unknown{kUnknownAttribute, &attributeValue, {}};
    static AttributeBody noValue{kU32Attribute, nullptr, {}};
    static StringBody noData{{4, nullptr}, {}};
    static U32Body any{1};
    const struct { uint16_t code; const void *record; TrovResult expected; } cases[] = {
        {0x12, &unknown, 10}, {0x12, &noValue, 1}, {0x1a, &noData, 1}, {0x1d, &kNoMethodCodec, 11},
        {0x0a, &any, 9}, // decode-only
        {0x1e, &any, 9}, {0x86, &any, 9}, {0, &any, 9},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "code 0x" << std::hex << c.code);
        HeaderInfo h = requestHeader(c.code);
        EncodeOutput out{nullptr, 0};
        EXPECT_EQ(TROV_EncodeFU(&h, c.record, &out), c.expected);
        EXPECT_EQ(out.data, nullptr);
    }
}

// Two strings in one buffer, each rounded up to 8: 9 bytes take 16. Into a
// record the library allocates and into the caller's.
TEST_F(Bodies, StringsShareOneBufferEachRoundedUp) {
    U32StringPairBody mine{};
    for (void *given : {static_cast<void *>(nullptr), static_cast<void *>(&mine)}) {
        DecodeResult result{given, nullptr, 0};
        ASSERT_EQ(decodeReply(0x6f, {0, 0, 0, 1, 9, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 1, 'z'}, result), 0u);
        ASSERT_NE(result.record, nullptr);
        EXPECT_TRUE(given == nullptr || result.record == given);
        const auto &r = *static_cast<const U32StringPairBody *>(result.record);
        EXPECT_EQ(text(r.string1), "abcdefghi");
        EXPECT_EQ(text(r.string2), "z");
        EXPECT_EQ(static_cast<void *>(r.string1.data), r.buffer.data);
        EXPECT_EQ(r.string2.data, r.string1.data + 16);
        EXPECT_EQ(r.buffer.capacity, 24);
        EXPECT_EQ(r.buffer.flags, TROV_BUFFER_ALLOCATED);
        trovFree(r.buffer.data);
        if (given == nullptr) trovFree(result.record);
    }
}

TEST_F(Bodies, ReplyFailuresFreeWhatTheCallAllocatedAndKeepTheCallersRecord) {
    const struct { uint16_t code; Bytes body; TrovResult expected; } cases[] = {
        {0x12, {0x00, 0x01, 0, 0, 0, 0}, 10},        // unknown attribute
        {0x03, {0, 0, 0, 1, 0x08, 0xD5, 0, 0, 0}, 5}, // the value is one byte short
        {0x3a, {0, 0, 0, 1, 0, 0, 0, 2, 4, 'a'}, 5},  // the string is shorter than its length
        {0x1e, {0, 0, 0, 0}, 9},                      // no body codec
        {0x86, {}, 9},
        {0x1d, {0, 0, 0, 1, 0x1F, 0xFF}, 11},       // no method codec below 0x2000
        {0x1d, {0, 0, 0, 2, 0x00, 0x92}, 5},        // method 0x92's one-byte reply missing
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "code 0x" << std::hex << c.code);
        DecodeResult allocated{nullptr, nullptr, 0};
        EXPECT_EQ(decodeReply(c.code, c.body, allocated), c.expected);
        EXPECT_EQ(allocated.record, nullptr);
        if (c.expected != 9) {
            EXPECT_EQ(allocated.type, 6);
        }
        alignas(8) uint8_t record[64] = {};
        DecodeResult supplied{record, nullptr, 0};
        EXPECT_EQ(decodeReply(c.code, c.body, supplied), c.expected);
        EXPECT_EQ(supplied.record, record);
        EXPECT_EQ(supplied.buffer, nullptr);
    }
}

TEST_F(Bodies, NoReplyBodiesReadNothing) {
    for (uint16_t code : {0x1a, 0x1c, 0x55}) {
        uint8_t record[4] = {9, 9, 9, 9};
        DecodeResult result{record, nullptr, 0}, none{nullptr, nullptr, 0};
        EXPECT_EQ(decodeReply(code, {1, 2, 3}, result), 0u);
        EXPECT_EQ(result.record, record);
        EXPECT_EQ(record[0], 9);
        EXPECT_EQ(decodeReply(code, {1, 2, 3}, none), 0u);
        EXPECT_EQ(none.record, nullptr);
    }
}

} // namespace
