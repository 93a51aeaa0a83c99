// Function-unit bodies through the exported interface: requests built by
// TROV_EncodeFU and checked against bytes worked out by hand, replies built
// byte by byte and read by TROV_DecodeFU, across the families and the
// designed layouts.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

#include "TrovCodec.h"

namespace {

using Bytes = std::vector<uint8_t>;

// Attribute 0x08D5: a u32 value, scalar form only; its record is the u32.
constexpr uint16_t kU32Attribute = 0x08D5;
// An identifier no attribute codec serves.
constexpr uint16_t kUnknownAttribute = 0x0001;

HeaderInfo requestHeader(uint16_t code) {
    HeaderInfo h{};
    h.mark = 0xA7E5;
    h.version = 0x10;
    h.code = code;
    h.bodyLength = 0xEEEE; // the encoder sets it
    return h;
}

// A reply packet: unit type 1 (every code is decoded) in the 16-bit
// extension, the body's length in the header unless told otherwise.
Bytes reply(uint16_t code, const Bytes &body, int bodyLength = -1) {
    const uint16_t n = bodyLength < 0 ? uint16_t(body.size()) : uint16_t(bodyLength);
    const uint8_t head[20] = {0xA7, 0xE5, 0x10, 0x01, uint8_t(code >> 8), uint8_t(code), 0, 0,
                              uint8_t(n >> 8), uint8_t(n), 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    Bytes p(20 + body.size());
    for (size_t i = 0; i < 20; ++i) p[i] = head[i];
    for (size_t i = 0; i < body.size(); ++i) p[20 + i] = body[i];
    return p;
}

class Bodies : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(TROV_InitCoder(), 1); }
};

// ---- requests ------------------------------------------------------------------

uint8_t abc[] = {'a', 'b', 'c'};
uint8_t hello[] = {'h', 'e', 'l', 'l', 'o'};
uint32_t attributeValue = 0x01020304;

struct RequestCase {
    const char *name;
    uint16_t code;
    std::function<const void *()> record;
    Bytes body;
};

const RequestCase kRequests[] = {
    {"EmptyBody", 0x16, [] { static EmptyBody r{}; return &r; }, {}},
    {"U32Body", 0x0b, [] { static U32Body r{0x89ABCDEF}; return &r; }, {0x89, 0xAB, 0xCD, 0xEF}},
    {"U32Body of 0x31", 0x31, [] { static U32Body r{0x00000001}; return &r; }, {0, 0, 0, 1}},
    {"U32PairBody", 0x0d, [] { static U32PairBody r{0x01020304, 0xF0E0D0C0}; return &r; },
     {1, 2, 3, 4, 0xF0, 0xE0, 0xD0, 0xC0}},
    {"U32ByteBody", 0x2a, [] { static U32ByteBody r{0xA1B2C3D4, 0xFE}; return &r; },
     {0xA1, 0xB2, 0xC3, 0xD4, 0xFE}},
    {"u32 u16 u16", 0x02, [] { static U32U16PairBody r{0x11223344, 0x5566, 0x8899}; return &r; },
     {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x88, 0x99}},
    {"u8 u32 u32 u32", 0x11, [] { static ByteU32TripleBody r{0x80, 1, 0x100, 0xFFFFFFFF}; return &r; },
     {0x80, 0, 0, 0, 1, 0, 0, 1, 0, 0xFF, 0xFF, 0xFF, 0xFF}},
    {"u16 and 12 raw bytes", 0x52, [] { static U16Bytes12Body r{0xBEEF, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}; return &r; },
     {0xBE, 0xEF, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
    {"event-list head", 0x4d, [] { static EventListBody r{0x0A0B0C0D, 0xEE, 0x1234, 0x5678, 0x9A, 7, nullptr, {}}; return &r; },
     {0x0A, 0x0B, 0x0C, 0x0D, 0xEE, 0x12, 0x34, 0x56, 0x78, 0x9A}},
    {"u32 and a u8-counted string", 0x06,
     [] { static U32StringBody r{0xCAFEBABE, {3, abc}, {}}; return &r; },
     {0xCA, 0xFE, 0xBA, 0xBE, 3, 'a', 'b', 'c'}},
    {"empty string", 0x1a, [] { static StringBody r{{0, nullptr}, {}}; return &r; }, {0}},
    {"copied block", 0x01, [] { static BlockBody r{{5, hello}, {}}; return &r; }, {'h', 'e', 'l', 'l', 'o'}},
    {"two u16-counted strings", 0x7c, [] { static U32PairLongStringPairBody r{1, 2, {3, abc}, {5, hello}, {}}; return &r; },
     {0, 0, 0, 1, 0, 0, 0, 2, 0, 3, 'a', 'b', 'c', 0, 5, 'h', 'e', 'l', 'l', 'o'}},
    {"AttributeBody", 0x12,
     [] { static AttributeBody r{kU32Attribute, &attributeValue, {}}; return &r; },
     {0x08, 0xD5, 1, 2, 3, 4}},
    {"U32AttributeBody", 0x03,
     [] { static U32AttributeBody r{0xDEADBEEF, kU32Attribute, &attributeValue, {}}; return &r; },
     {0xDE, 0xAD, 0xBE, 0xEF, 0x08, 0xD5, 1, 2, 3, 4}},
    {"u16 u32 and an attribute", 0x7d,
     [] { static U16U32AttributeBody r{0x0102, 0x03040506, kU32Attribute, &attributeValue, {}}; return &r; },
     {1, 2, 3, 4, 5, 6, 0x08, 0xD5, 1, 2, 3, 4}},
};

// (The same bytes in callers' buffers of every size: GuardPageTest.)
TEST_F(Bodies, RequestsAreWrittenBigEndian) {
    for (const RequestCase &c : kRequests) {
        SCOPED_TRACE(c.name);
        const uint32_t total = 20 + uint32_t(c.body.size());

        HeaderInfo h = requestHeader(c.code);
        EncodeOutput out{nullptr, 0};
        ASSERT_EQ(TROV_EncodeFU(&h, c.record(), &out), 0u);
        ASSERT_NE(out.data, nullptr);
        ASSERT_EQ(out.length, total);
        EXPECT_EQ(h.bodyLength, c.body.size());
        EXPECT_EQ(out.data[4], uint8_t(c.code >> 8));
        EXPECT_EQ(out.data[5], uint8_t(c.code));
        EXPECT_EQ(out.data[8], uint8_t(c.body.size() >> 8));
        EXPECT_EQ(out.data[9], uint8_t(c.body.size()));
        EXPECT_EQ(Bytes(out.data + 20, out.data + total), c.body);
        trovFree(out.data);
    }
}

TEST_F(Bodies, RequestFailuresComeBeforeAnyOutput) {
    struct Case {
        uint16_t code;
        const void *record;
        TrovResult expected;
    };
    static AttributeBody unknown{kUnknownAttribute, &attributeValue, {}};
    static AttributeBody noValue{kU32Attribute, nullptr, {}};
    static StringBody noData{{4, nullptr}, {}};
    static U32Body any{1};
    const Case cases[] = {
        {0x12, &unknown, 10}, {0x12, &noValue, 1}, {0x1a, &noData, 1},
        {0x0a, &any, 9},  // decode-only
        {0x1e, &any, 9}, {0x2d, &any, 9}, {0x64, &any, 9}, {0x86, &any, 9}, {0, &any, 9},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "code 0x" << std::hex << c.code);
        HeaderInfo h = requestHeader(c.code);
        EncodeOutput out{nullptr, 0};
        EXPECT_EQ(TROV_EncodeFU(&h, c.record, &out), c.expected);
        EXPECT_EQ(out.data, nullptr);
    }
}

// ---- replies ---------------------------------------------------------------------

struct ReplyCase {
    const char *name;
    uint16_t code;
    Bytes body;
    size_t recordBytes;
    std::function<void(const void *)> check;
};

template <class R>
std::function<void(const void *)> expect(std::function<void(const R &)> f) {
    return [f](const void *p) { f(*static_cast<const R *>(p)); };
}

std::string text(const OctetString &s) {
    return s.data == nullptr ? std::string() : std::string(reinterpret_cast<char *>(s.data), s.length);
}

// A record with a managed buffer ends with it, after at least one 16-byte
// string or attribute; records without one are shorter than 32 bytes.
void freeBuffer(const void *record, size_t recordBytes) {
    if (recordBytes < 32) return;
    BufferDesc b;
    std::memcpy(&b, static_cast<const uint8_t *>(record) + recordBytes - sizeof b, sizeof b);
    trovFree(b.data);
}

const ReplyCase kReplies[] = {
    {"U32Body", 0x0b, {0x89, 0xAB, 0xCD, 0xEF}, sizeof(U32Body),
     expect<U32Body>([](const U32Body &r) { EXPECT_EQ(r.value0, 0x89ABCDEFu); })},
    {"U32PairBody", 0x24, {1, 2, 3, 4, 0xF5, 6, 7, 8}, sizeof(U32PairBody),
     expect<U32PairBody>([](const U32PairBody &r) {
         EXPECT_EQ(r.value0, 0x01020304u);
         EXPECT_EQ(r.value1, 0xF5060708u);
     })},
    {"U32ByteBody", 0x0c, {0, 0, 1, 0, 0x80}, sizeof(U32ByteBody),
     expect<U32ByteBody>([](const U32ByteBody &r) {
         EXPECT_EQ(r.value0, 0x100u);
         EXPECT_EQ(r.value1, 0x80);
     })},
    {"u32 u16 u16", 0x6a, {0xFF, 0xFE, 0xFD, 0xFC, 0x80, 1, 0, 2}, sizeof(U32U16PairBody),
     expect<U32U16PairBody>([](const U32U16PairBody &r) {
         EXPECT_EQ(r.value0, 0xFFFEFDFCu);
         EXPECT_EQ(r.value1, 0x8001);
         EXPECT_EQ(r.value2, 2);
     })},
    {"u32 u32 u8 u8", 0x10, {0, 0, 0, 1, 0, 0, 0, 2, 3, 0xF4}, sizeof(U32PairBytePairBody),
     expect<U32PairBytePairBody>([](const U32PairBytePairBody &r) {
         EXPECT_EQ(r.value0, 1u);
         EXPECT_EQ(r.value1, 2u);
         EXPECT_EQ(r.value2, 3);
         EXPECT_EQ(r.value3, 0xF4);
     })},
    {"u8 u32", 0x4a, {0x7F, 0x80, 0, 0, 1}, sizeof(ByteU32Body),
     expect<ByteU32Body>([](const ByteU32Body &r) {
         EXPECT_EQ(r.value0, 0x7F);
         EXPECT_EQ(r.value1, 0x80000001u);
     })},
    {"u32 u32 u32 u16 u8 (0x67)", 0x67, {0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0xAB, 0xCD, 0xEF},
     sizeof(U32TripleU16ByteBody),
     expect<U32TripleU16ByteBody>([](const U32TripleU16ByteBody &r) {
         EXPECT_EQ(r.value2, 3u);
         EXPECT_EQ(r.value3, 0xABCD);
         EXPECT_EQ(r.value4, 0xEF);
     })},
    {"u32 u32 and a string", 0x3a, {0, 0, 0, 9, 0, 0, 0, 8, 3, 'a', 'b', 'c'},
     sizeof(U32PairStringBody),
     expect<U32PairStringBody>([](const U32PairStringBody &r) {
         EXPECT_EQ(r.value0, 9u);
         EXPECT_EQ(r.value1, 8u);
         EXPECT_EQ(text(r.string2), "abc");
         EXPECT_EQ(static_cast<void *>(r.string2.data), r.buffer.data);
         EXPECT_EQ(r.buffer.capacity, 8);
         EXPECT_EQ(r.buffer.flags, TROV_BUFFER_ALLOCATED);
     })},
    {"two strings in one buffer", 0x6f, {0, 0, 0, 1, 9, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 1, 'z'},
     sizeof(U32StringPairBody),
     expect<U32StringPairBody>([](const U32StringPairBody &r) {
         EXPECT_EQ(text(r.string1), "abcdefghi");
         EXPECT_EQ(text(r.string2), "z");
         EXPECT_EQ(r.string2.data, r.string1.data + 16); // 9 rounded up to 8
         EXPECT_EQ(r.buffer.capacity, 24);
     })},
    {"empty string", 0x1b, {0}, sizeof(StringBody),
     expect<StringBody>([](const StringBody &r) {
         EXPECT_EQ(r.string0.length, 0);
         EXPECT_EQ(r.string0.data, nullptr);
         EXPECT_EQ(r.buffer.data, nullptr);
     })},
    {"trailing block", 0x6d, {7, 'x', 'y'}, sizeof(ByteBlockBody),
     expect<ByteBlockBody>([](const ByteBlockBody &r) {
         EXPECT_EQ(r.value0, 7);
         EXPECT_EQ(text(r.block), "xy");
     })},
    {"AttributeBody", 0x32, {0x08, 0xD5, 0xA0, 0xB0, 0xC0, 0xD0}, sizeof(AttributeBody),
     expect<AttributeBody>([](const AttributeBody &r) {
         EXPECT_EQ(r.id, kU32Attribute);
         ASSERT_NE(r.value, nullptr);
         EXPECT_EQ(*static_cast<uint32_t *>(r.value), 0xA0B0C0D0u);
         EXPECT_EQ(r.value, r.buffer.data);
         EXPECT_EQ(r.buffer.capacity, 8);
     })},
    {"U32AttributeBody", 0x57, {0, 0, 0, 5, 0x08, 0xD5, 0, 0, 0, 6}, sizeof(U32AttributeBody),
     expect<U32AttributeBody>([](const U32AttributeBody &r) {
         EXPECT_EQ(r.value0, 5u);
         EXPECT_EQ(r.id, kU32Attribute);
         EXPECT_EQ(*static_cast<uint32_t *>(r.value), 6u);
     })},
    {"attribute then nothing else (0x35)", 0x35, {0x12, 0x34, 0x08, 0xD5, 0, 0, 0, 7},
     sizeof(U16AttributeBody),
     expect<U16AttributeBody>([](const U16AttributeBody &r) {
         EXPECT_EQ(r.value0, 0x1234);
         EXPECT_EQ(*static_cast<uint32_t *>(r.value), 7u);
     })},
};

// Into a record the library allocates and into the caller's. (Every
// truncation: GuardPageTest.)
TEST_F(Bodies, RepliesAreReadIntoAnAllocatedOrTheCallersRecord) {
    for (const ReplyCase &c : kReplies) {
        SCOPED_TRACE(c.name);
        Bytes p = reply(c.code, c.body);
        const PacketCursor cursor{p.data(), uint32_t(p.size())};
        HeaderInfo h{};
        DecodeResult result{nullptr, nullptr, 0};
        ASSERT_EQ(TROV_DecodeFU(&h, &result, &cursor, nullptr), 0u);
        EXPECT_EQ(result.type, 1);
        ASSERT_NE(result.record, nullptr);
        c.check(result.record);
        freeBuffer(result.record, c.recordBytes);
        trovFree(result.record);

        alignas(8) uint8_t record[128] = {};
        ASSERT_LE(c.recordBytes, sizeof record);
        DecodeResult mine{record, nullptr, 0};
        ASSERT_EQ(TROV_DecodeFU(&h, &mine, &cursor, nullptr), 0u);
        EXPECT_EQ(mine.record, record);
        c.check(record);
        freeBuffer(record, c.recordBytes);
    }
}

TEST_F(Bodies, ReplyOf0x31RunsToThePacketsEndWhateverTheHeaderSays) {
    Bytes p = reply(0x31, {0, 0, 0, 2, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i'}, 4);
    const PacketCursor cursor{p.data(), uint32_t(p.size())};
    HeaderInfo h{};
    U32BlockBody record{};
    DecodeResult result{&record, nullptr, 0};
    ASSERT_EQ(TROV_DecodeFU(&h, &result, &cursor, nullptr), 0u);
    EXPECT_EQ(record.value0, 2u);
    EXPECT_EQ(text(record.block), "abcdefghi");
    EXPECT_EQ(record.buffer.capacity, 16);
    trovFree(record.buffer.data);

    Bytes three = reply(0x31, {0, 0, 0}, 4);
    const PacketCursor c3{three.data(), uint32_t(three.size())};
    DecodeResult r3{nullptr, nullptr, 0};
    EXPECT_EQ(TROV_DecodeFU(&h, &r3, &c3, nullptr), 5u);
    EXPECT_EQ(r3.record, nullptr);
}

TEST_F(Bodies, ReplyFailuresFreeWhatTheCallAllocatedAndKeepTheCallersRecord) {
    struct Case {
        uint16_t code;
        Bytes body;
        TrovResult expected;
    };
    const Case cases[] = {
        {0x12, {0x00, 0x01, 0, 0, 0, 0}, 10},        // unknown attribute
        {0x03, {0, 0, 0, 1, 0x08, 0xD5, 0, 0, 0}, 5}, // the value is one byte short
        {0x3a, {0, 0, 0, 1, 0, 0, 0, 2, 4, 'a'}, 5},  // the string is shorter than its length
        {0x1e, {0, 0, 0, 0}, 9},                      // no body codec
        {0x86, {}, 9},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "code 0x" << std::hex << c.code);
        Bytes p = reply(c.code, c.body);
        const PacketCursor cursor{p.data(), uint32_t(p.size())};
        HeaderInfo h{};
        DecodeResult allocated{nullptr, nullptr, 0};
        EXPECT_EQ(TROV_DecodeFU(&h, &allocated, &cursor, nullptr), c.expected);
        EXPECT_EQ(allocated.record, nullptr);
        if (c.expected != 9) {
            EXPECT_EQ(allocated.type, 6);
        }

        alignas(8) uint8_t record[64];
        std::memset(record, 0, sizeof record);
        DecodeResult supplied{record, nullptr, 0};
        EXPECT_EQ(TROV_DecodeFU(&h, &supplied, &cursor, nullptr), c.expected);
        EXPECT_EQ(supplied.record, record);
        EXPECT_EQ(supplied.buffer, nullptr);
    }
}

TEST_F(Bodies, NoReplyBodiesReadNothing) {
    for (uint16_t code : {0x1a, 0x1c, 0x55}) {
        Bytes p = reply(code, {1, 2, 3});
        const PacketCursor cursor{p.data(), uint32_t(p.size())};
        HeaderInfo h{};
        uint8_t record[4] = {9, 9, 9, 9};
        DecodeResult result{record, nullptr, 0};
        EXPECT_EQ(TROV_DecodeFU(&h, &result, &cursor, nullptr), 0u);
        EXPECT_EQ(result.record, record);
        EXPECT_EQ(record[0], 9);
        DecodeResult none{nullptr, nullptr, 0};
        EXPECT_EQ(TROV_DecodeFU(&h, &none, &cursor, nullptr), 0u);
        EXPECT_EQ(none.record, nullptr);
    }
}

} // namespace
