// Reads and writes at the edge of the caller's memory. Every input here ends
// right before an inaccessible page and every caller's output buffer ends
// there too, so a single byte read or written past the end kills the test
// on every platform, with or without a sanitizer: every truncation of a valid
// reply or extended-data string, every output size from the exact one down
// to zero, and the records a host could build that once made an encoder
// overrun. (Headers at the guard: HeaderTest.)
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "GuardedRegion.h"
#include "Initialised.h"
#include "TrovCodec.h"
#include "TrovRecords.h"
#include "api/ReplyPacket.h"

namespace {

using Bytes = std::vector<uint8_t>;

// Room for the longest packet a body can frame, and a margin before it.
constexpr size_t kMargin = 16;
const GuardedRegion &region() {
    static const GuardedRegion r(20 + 0xFFFF + 64 + kMargin);
    return r;
}

// Fills the n bytes before the guard and the margin before them with a
// canary; checks the margin alone, or the margin and the n bytes.
void fillCanary(size_t n) { std::memset(region().tail(n + kMargin), 0xA5, n + kMargin); }
bool canaryIntact(size_t n, bool bufferToo = true) {
    const uint8_t *p = region().tail(n + kMargin);
    return std::all_of(p, p + (bufferToo ? n + kMargin : kMargin), [](uint8_t b) { return b == 0xA5; });
}
template <class Case> std::string caseName(const testing::TestParamInfo<Case> &info) { return info.param.name; }

// ---- decoders ----------------------------------------------------------------

constexpr size_t kWhole = SIZE_MAX;
constexpr size_t kNoBuffer = SIZE_MAX;

struct DecodeCase {
    const char *name;
    uint16_t code;
    const char *body;
    size_t bufferAt;          // offset of the record's BufferDesc, or kNoBuffer
    size_t complete = kWhole; // the shortest prefix of the body that decodes
};

const DecodeCase kDecodes[] = {
    {"U32", 0x0b, "89ABCDEF", kNoBuffer},
    {"FiveFields", 0x67, "00000001 00000002 00000003 ABCD EF", kNoBuffer},
    {"ScalarAttribute", 0x12, "00CB 2A", offsetof(AttributeBody, buffer)},
    // 0x0070: u16 elements behind a u16 count.
    {"ArrayAttribute", 0x32, "0070 0002 0102 A0B0", offsetof(AttributeBody, buffer)},
    // 0x0002: elements of a u8 and a u8-counted string behind a u16 count.
    {"RecordArrayAttribute", 0x15, "0002 0002 01 02 6869 02 00", offsetof(AttributeBody, buffer)},
    {"U32ThenAttribute", 0x57, "00000005 08D5 00000006", offsetof(U32AttributeBody, buffer)},
    {"U16ThenAttribute", 0x35, "1234 0070 0001 BEEF", offsetof(U16AttributeBody, buffer)},
    // Long framing: event 0x04 (a u8 and a string), event 0x12C (an attribute list).
    {"LongEventList", 0x4d,
     "00000001 02 0003 0004 05 0002"
     "  0001 00000010 00000020 30 0004  07 02 6869"
     "  0002 00000011 00000021 31 012C  0001 00CB 0001 2A",
     offsetof(EventListBody, buffer)},
    // Short framing: the same two events, then 0x39 with an item run and an
    // option parameter (kind 1, a u32) before its string.
    {"ShortEventList", 0x0a,
     "AABBCCDD 03"
     "  0004 77  07 02 6869"
     "  012C 78  0001 00CB 0001 2A"
     "  0039 79  0102 00000003 04 05 00000006  01 07 00000008  01 04 0000ABCD  02 6869",
     offsetof(ShortEventListBody, buffer)},
    {"MethodOneByteReply", 0x1d, "00000009 0092 01", offsetof(MethodBody, buffer)},
    {"MethodCountedReply", 0x1d, "00000003 000B 0102 0003 414243", offsetof(MethodBody, buffer)},
    {"MethodStructuredPairs", 0x1d, "00000002 00BB 01 02 0001 00000002 0003 00000004",
     offsetof(MethodBody, buffer)},
    {"MethodStructuredStrings", 0x1d, "00000002 00C0 1234 0002 02 AABB 01 CC", offsetof(MethodBody, buffer)},
    // Raw parameters are whatever follows the method code; a method without
    // a reply reads nothing.
    {"RawMethod", 0x1d, "00000001 2000 0102030405060708090A", offsetof(MethodBody, buffer), 6},
    {"MethodWithoutReply", 0x1d, "00000002 0066 DEAD", offsetof(MethodBody, buffer), 6},
    {"TwoStrings", 0x6f, "00000001 09 616263646566676869 01 7A", offsetof(U32StringPairBody, buffer)},
    {"LongString", 0x50, "00000001 00000002 0003 616263", offsetof(U32PairLongStringBody, buffer)},
    {"TrailingBlock", 0x6d, "07 7879", offsetof(ByteBlockBody, buffer), 1},
    {"BlockToPacketEnd", 0x31, "00000002 616263", offsetof(U32BlockBody, buffer), 4},
    {"NoReply", 0x1a, "020C0D", kNoBuffer, 0},
};

class GuardedDecode : public testing::TestWithParam<DecodeCase> {};

// The header keeps announcing the whole body; the cursor holds n bytes.
TEST_P(GuardedDecode, EveryTruncationEndsAtTheGuard) {
    const DecodeCase &c = GetParam();
    const Bytes body = hexBytes(c.body);
    const Bytes packet = replyPacket(c.code, body);
    const size_t complete = 20 + (c.complete == kWhole ? body.size() : c.complete);
    for (size_t n = 0; n <= packet.size(); ++n) {
        SCOPED_TRACE(n);
        const PacketCursor cursor{region().place(packet.data(), n), uint32_t(n)};
        HeaderInfo info{};
        DecodeResult result{nullptr, nullptr, 0xEEEE};
        const TrovResult r = TROV_DecodeFU(&info, &result, &cursor, nullptr);
        EXPECT_EQ(r, n < 20 ? TROV_RESULT_BAD_PACKET : n < complete ? TROV_RESULT_SHORT_INPUT : TROV_RESULT_OK);
        EXPECT_EQ(result.type, n < 20 ? 0xEEEE : n < complete ? 6 : 1);
        EXPECT_TRUE(n >= complete || result.record == nullptr);
        if (result.record != nullptr && c.bufferAt != kNoBuffer) {
            BufferDesc b;
            std::memcpy(&b, static_cast<const uint8_t *>(result.record) + c.bufferAt, sizeof b);
            trovFree(b.data);
        }
        trovFree(result.record);

        DecodeResult fp{nullptr, nullptr, 0};
        EXPECT_EQ(TROV_DecodeFP(&info, &fp, &cursor), n < 20 ? TROV_RESULT_BAD_PACKET : TROV_RESULT_NO_BODY_CODEC);
    }
}

INSTANTIATE_TEST_SUITE_P(Bodies, GuardedDecode, testing::ValuesIn(kDecodes),
                         caseName<DecodeCase>);

// ---- extended event data ------------------------------

struct ExtendCase {
    const char *name;
    uint16_t eventCode;
    bool schema;
    Bytes data;
    size_t complete; // the shortest prefix that decodes
};

// Event 0x44's schema: a 12-byte data-type value, then attribute 0x00CB.
const EventExtendItemSpec kSpecs[] = {{TROV_EXTEND_KIND_DATA_TYPE, 0x14}, {7, 0x00CB}};
const EventExtendSchemaRow kRows[] = {{0x44, 2, kSpecs}};
const EventExtendSchema kSchema{1, kRows};

// 301 bytes: 75 one-byte items. Only event 0x30 reads a length above 255.
Bytes seventyFiveItems() {
    Bytes b = {75};
    for (int i = 0; i < 75; ++i) b.insert(b.end(), {0x00, 0xCB, 1, uint8_t(i)});
    return b;
}

const ExtendCase kExtends[] = {
    {"SelfDescribing", 0x31, false, hexBytes("02 00CB 01 5A 0070 06 0002 0102 A0B0"), 14},
    // A raw item's bytes are not checked against the data: once its head is
    // complete, the bytes that are there are kept.
    {"RawItemLast", 0x31, false, hexBytes("02 00CB 01 5A 0001 05 AABBCCDDEE"), 8},
    {"Schema", 0x44, true, hexBytes("0102030405060708090A0B0C 33"), 13},
    {"SixteenBitLength", 0x30, false, seventyFiveItems(), 301},
};

class GuardedExtend : public testing::TestWithParam<ExtendCase> {};

// Every truncation decodes or is short; encoding the whole data into a
// caller's buffer that may not grow needs the exact size (else 7), and
// writes nothing outside it.
TEST_P(GuardedExtend, EveryTruncationAndBufferSizeEndsAtTheGuard) {
    const ExtendCase &c = GetParam();
    const EventExtendSchema *schema = c.schema ? &kSchema : nullptr;
    EventExtendList list{};
    BufferDesc decoded{};
    for (size_t n = 0; n <= c.data.size(); ++n) {
        SCOPED_TRACE(n);
        const OctetString data{uint16_t(n), region().place(c.data.data(), n)};
        trovFree(decoded.data);
        decoded = BufferDesc{};
        const TrovResult r = TROV_DecodeEventExtend(&list, &data, c.eventCode, schema, 0x10, &decoded);
        EXPECT_EQ(r, n < c.complete ? TROV_RESULT_SHORT_INPUT : TROV_RESULT_OK);
        EXPECT_EQ(static_cast<void *>(list.entries), decoded.data);
        EXPECT_EQ(decoded.data == nullptr, n < c.complete);
    }
    for (size_t size = c.data.size() + 1; c.complete == c.data.size() && size-- > 0;) { // raw items cannot be encoded
        SCOPED_TRACE(size);
        fillCanary(size);
        BufferDesc buffer{region().tail(size), uint16_t(size), 0};
        OctetString data{};
        const TrovResult r = TROV_EncodeEventExtend(&list, &data, c.eventCode, schema, 0x10, &buffer);
        if (size == c.data.size()) {
            ASSERT_EQ(r, TROV_RESULT_OK);
            EXPECT_EQ(data.data, region().tail(size));
            EXPECT_EQ(Bytes(region().tail(size), region().end()), c.data);
        } else {
            EXPECT_EQ(r, TROV_RESULT_BUFFER_TOO_SMALL);
            EXPECT_TRUE(canaryIntact(size));
        }
    }
    trovFree(decoded.data);
}

INSTANTIATE_TEST_SUITE_P(Data, GuardedExtend, testing::ValuesIn(kExtends),
                         caseName<ExtendCase>);

// ---- encoders -------------------------------------------------------------------

uint8_t abc[] = {'a', 'b', 'c'};
uint8_t hello[] = {'h', 'e', 'l', 'l', 'o'};
uint16_t words[] = {0x0102, 0xA0B0, 0xFFFF};
AttributeArrayHeader threeWords{3, words};
std::vector<uint16_t> manyWords(0x8000, 0xBEEF);
AttributeArrayHeader manyWordsArray{0x8000, manyWords.data()};
// Bytes for raw parameters and long strings.
std::vector<uint8_t> filler = [] {
    std::vector<uint8_t> b(0x10000);
    for (size_t i = 0; i < b.size(); ++i) b[i] = uint8_t(i * 7 + 1);
    return b;
}();

// Parameter records of methods 0x0b (a u16-counted octet run) and 0xc0
// (u16, a u8-counted u32 run, a u16-counted octet run).
struct Octets16 {
    uint16_t count;
    uint8_t *data;
} octets{3, abc};
uint32_t twoValues[] = {0x01020304, 0xF0F1F2F3};
struct Method0xc0 {
    uint16_t value;
    struct {
        uint8_t count;
        uint32_t *data;
    } values;
    Octets16 octets;
} method0xc0{0x1234, {2, twoValues}, {3, abc}};
static_assert(offsetof(Method0xc0, values) == 8 && offsetof(Method0xc0, octets) == 24 && sizeof(Method0xc0) == 40);

EmptyBody emptyRec{};
U32Body u32Rec{0x89ABCDEF};
AttributeBody arrayRec{0x0070, &threeWords, {}}, longArrayRec{0x0070, &manyWordsArray, {}};
U32AttributeBody u32ArrayRec{7, 0x0070, &threeWords, {}};
U32StringBody stringRec{0xCAFEBABE, {3, abc}, {}};
U32PairLongStringPairBody longStringsRec{1, 2, {3, abc}, {5, hello}, {}},
    longestStringsRec{1, 2, {0xFFFF, filler.data()}, {0xFFFF, filler.data()}, {}};
U32PairStringByteBody stringByteRec{1, 2, {5, hello}, 0x7F, {}};
BlockBody blockRec{{5, hello}, {}};
MethodBody countedRec{1, 0x0b, &octets, sizeof octets, {}}, computedRec{1, 0xc0, &method0xc0, sizeof method0xc0, {}},
    noParamsRec{1, 0x66, nullptr, 0, {}}, rawRec{1, 0x2000, filler.data(), 10, {}},
    longestRawRec{1, 0x2001, filler.data(), 0xFFFF - 6, {}}, tooLongRawRec{1, 0x2000, filler.data(), 0xFFFF - 5, {}},
    longestRawParamsRec{1, 0x2000, filler.data(), 0xFFFF, {}};

struct EncodeCase {
    const char *name;
    uint16_t code;
    const void *record;
    uint32_t bodyLength; // worked out from the layout; above 0xFFFF it cannot be framed
};

const EncodeCase kEncodes[] = {
    {"HeaderOnly", 0x16, &emptyRec, 0},
    {"U32", 0x0b, &u32Rec, 4},
    {"ArrayAttribute", 0x12, &arrayRec, 10},
    {"U32ThenArrayAttribute", 0x03, &u32ArrayRec, 14},
    {"String", 0x06, &stringRec, 8},
    {"TwoLongStrings", 0x7c, &longStringsRec, 20},
    {"StringThenByte", 0x67, &stringByteRec, 15},
    {"Block", 0x01, &blockRec, 5},
    {"MethodCountedOctets", 0x1d, &countedRec, 11},
    {"MethodComputed", 0x1d, &computedRec, 22},
    {"MethodWithoutParameters", 0x1d, &noParamsRec, 6},
    {"RawMethod", 0x1d, &rawRec, 16},
    {"LongestRawMethod", 0x1d, &longestRawRec, 0xFFFF},
    {"ArrayOf32768U16TooLong", 0x12, &longArrayRec, 4 + 0x10000},
    {"RawParametersOneByteTooLong", 0x1d, &tooLongRawRec, 0x10000},
    {"RawParametersOf65535BytesTooLong", 0x1d, &longestRawParamsRec, 6 + 0xFFFF},
    {"TwoStringsOf65535BytesTooLong", 0x7c, &longestStringsRec, 8 + 2 * (2 + 0xFFFF)},
};

class GuardedEncode : public testing::TestWithParam<EncodeCase> {};

// Every size below the packet (for long packets, around the edges) is
// refused with 7 and nothing written outside the buffer. A body longer than
// the 16-bit body length can frame is refused whole with 5: nothing is
// allocated, and nothing is written to a buffer sized for the wrapped length
// or for the longest packet there is. Either way the header keeps the body's
// 16-bit figure, the true length modulo 65536.
TEST_P(GuardedEncode, EveryBufferSizeEndsAtTheGuard) {
    const EncodeCase &c = GetParam();
    HeaderInfo h{0xA7E5, 0x10, 0x01, c.code, 0, 0xEEEE, 0, 0, 1};
    const bool framed = c.bodyLength <= 0xFFFF;
    const uint32_t total = 20 + (c.bodyLength & 0xFFFF);
    EncodeOutput allocated{nullptr, 0};
    ASSERT_EQ(TROV_EncodeFU(&h, c.record, &allocated), framed ? TROV_RESULT_OK : TROV_RESULT_SHORT_INPUT);
    ASSERT_EQ(allocated.length, framed ? total : 0);
    EXPECT_EQ(h.bodyLength, uint16_t(c.bodyLength));
    const Bytes reference(allocated.data, allocated.data + allocated.length);
    trovFree(allocated.data);

    std::vector<uint32_t> sizes = {20 + 0xFFFFu};
    for (uint32_t n = 0; n <= total; ++n)
        if (total <= 1024 || n < 64 || total - n <= 64 || n % 4093 == 0) sizes.push_back(n);
    for (uint32_t size : sizes) {
        SCOPED_TRACE(size);
        fillCanary(size);
        EncodeOutput out{region().tail(size), size};
        h.bodyLength = 0xEEEE;
        const TrovResult r = TROV_EncodeFU(&h, c.record, &out);
        EXPECT_EQ(h.bodyLength, uint16_t(c.bodyLength));
        if (!framed) {
            EXPECT_EQ(r, TROV_RESULT_SHORT_INPUT);
            EXPECT_TRUE(canaryIntact(size));
        } else if (size >= total) {
            ASSERT_EQ(r, TROV_RESULT_OK);
            EXPECT_EQ(out.length, total);
            EXPECT_EQ(Bytes(out.data, out.data + total), reference);
            EXPECT_TRUE(canaryIntact(size, false)) << "written before the buffer";
        } else {
            EXPECT_EQ(r, TROV_RESULT_BUFFER_TOO_SMALL);
            EXPECT_EQ(out.length, size);
            EXPECT_EQ(out.data, region().tail(size));
            EXPECT_TRUE(canaryIntact(size));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Requests, GuardedEncode, testing::ValuesIn(kEncodes), caseName<EncodeCase>);

// ---- records a buggy or hostile host can build ----------------------------------
//
// Each case below is a record that once made the library write past the
// memory it allocated or was given, or read through a null pointer; the line
// above it names the cause. Arrays at the edges of their count prefix and of
// the packet are written as worked out by hand, or refused.

// Encodes into a packet the library allocates, which it returns, and into
// `capacity` bytes before the guard. `figure`, when given, is the body's
// 16-bit length, which the header keeps whatever the result.
Bytes expectEncode(uint16_t code, const void *record, uint32_t capacity, TrovResult expected,
                   TrovResult expectedInBuffer, int32_t figure = -1) {
    HeaderInfo info{0xA7E5, 0x10, 0, code, 0, 0, 0, 0, 0};
    EncodeOutput allocated{nullptr, 0};
    EXPECT_EQ(TROV_EncodeFU(&info, record, &allocated), expected);
    if (figure >= 0) {
        EXPECT_EQ(info.bodyLength, figure);
    }
    if (expected != 0) {
        EXPECT_EQ(allocated.data, nullptr);
    }
    const Bytes packet(allocated.data, allocated.data + allocated.length);
    trovFree(allocated.data);
    EncodeOutput given{region().tail(capacity), capacity};
    EXPECT_EQ(TROV_EncodeFU(&info, record, &given), expectedInBuffer);
    return packet;
}

// The longest raw parameters a body carries (0xFFF9 bytes, a 65535-byte
// body) round to 0 in the record's 16-bit size: the decoder once copied
// nothing and handed back a record that could not be encoded again. The
// buffer now gets real room while its capacity keeps the wrapped figure.
TEST(GuardedRecords, TheLongestRawMethodBodyRoundTrips) {
    Bytes body = {0, 0, 0, 0, 0x20, 0x00};
    for (uint32_t i = 0; i < 0xFFF9; ++i) body.push_back(uint8_t(i * 7));
    DecodeResult result{nullptr, nullptr, 0};
    ASSERT_EQ(decodeReply(0x1d, body, result), 0u);
    auto *decoded = static_cast<MethodBody *>(result.record);
    EXPECT_EQ(decoded->paramsLength, 0xFFF9);
    EXPECT_EQ(decoded->buffer.capacity, 0); // (0xFFF9 + 7) & 0xFFF8
    ASSERT_NE(decoded->params, nullptr);
    EXPECT_EQ(std::memcmp(decoded->params, body.data() + 6, 0xFFF9), 0);
    const Bytes again = expectEncode(0x1d, decoded, 64, 0, 7, 0xFFFF);
    EXPECT_TRUE(std::equal(again.begin() + 20, again.end(), body.begin(), body.end()));
    trovFree(decoded->buffer.data);
    trovFree(decoded);
}

// Array values at the edges of their count prefix, through the attribute
// request (body 0x12: the u16 identifier, then the value in array form), the
// size query and an extended-data item. The size is reported in 16 bits, as
// the protocol defines it, and wraps; the encoders go by the true size, so a
// body above 65535 bytes and an item above 255 bytes are refused. Each
// element's record and wire bytes are worked out from its type.
struct ArrayType {
    uint16_t id;
    uint8_t prefix;
    size_t stride;
    void (*element)(uint8_t *record, uint32_t i, Bytes &wire);
};
// One byte behind a u8 count: only the first byte of the header's count counts.
void byteElement(uint8_t *r, uint32_t i, Bytes &w) {
    r[0] = uint8_t(i * 7 + 1);
    w.push_back(r[0]);
}
// u16 u16 u8 at record offsets 0, 2, 4 (stride 6), behind a u16 count.
void fiveByteElement(uint8_t *r, uint32_t i, Bytes &w) {
    const uint16_t a = uint16_t(i), b = uint16_t(0xF000 ^ i);
    std::memcpy(r, &a, 2);
    std::memcpy(r + 2, &b, 2);
    r[4] = uint8_t(i >> 8);
    w.insert(w.end(), {uint8_t(a >> 8), uint8_t(a), uint8_t(b >> 8), uint8_t(b), r[4]});
}
// A record {u8, u8-counted octets} (stride 24), behind a u16 count; the
// octets are empty: the u8, then a length of 0.
void recordElement(uint8_t *r, uint32_t i, Bytes &w) {
    const TrovAttribute138BValue v{uint8_t(i), {0, nullptr}};
    std::memcpy(r, &v, sizeof v);
    w.insert(w.end(), {v.value0, 0});
}
constexpr ArrayType kBytes{0x011E, 1, 1, byteElement}, kFiveBytes{0x0806, 2, 6, fiveByteElement},
    kRecords{0x138B, 2, sizeof(TrovAttribute138BValue), recordElement};

TEST(GuardedRecords, ArrayCountsAtTheEdgesOfTheirPrefixAndOfThePacket) {
    struct Case {
        const ArrayType &type;
        uint16_t count; // as the host writes it into the header
        uint32_t size;  // the value's true packet bytes, count prefix included
        TrovResult result;
    } const cases[] = {
        {kBytes, 254, 255, 0},             // the longest extended-data item
        {kBytes, 255, 256, 0},             // an item one byte too long
        {kBytes, 0x0100, 1, 0},            // first byte 0: an empty array
        {kRecords, 255, 512, 0},
        {kRecords, 256, 514, 0},           // count 01 00
        {kRecords, 32765, 65532, 0},       // body 65534 bytes
        {kRecords, 32766, 65534, 5},       // body 65536 bytes
        {kRecords, 0xFFFF, 131072, 5},     // wrapped to 0
        {kFiveBytes, 13106, 65532, 0},
        {kFiveBytes, 13107, 65537, 5},
        {kFiveBytes, 13108, 65542, 5},     // wrapped to 6: the header keeps a body length of 8
        {kFiveBytes, 0xFFFF, 327677, 5},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << "0x" << c.type.id << " count 0x" << c.count);
        const uint32_t n = c.type.prefix == 1 ? c.count & 0xFF : c.count;
        Bytes elements(size_t{c.count} * c.type.stride, 0xEE);
        Bytes wire = {uint8_t(c.type.id >> 8), uint8_t(c.type.id)};
        if (c.type.prefix == 2) wire.push_back(uint8_t(n >> 8));
        wire.push_back(uint8_t(n));
        for (uint32_t i = 0; i < c.count; ++i) {
            Bytes w;
            c.type.element(&elements[i * c.type.stride], i, w);
            if (i < n) wire.insert(wire.end(), w.begin(), w.end());
        }
        ASSERT_EQ(wire.size(), 2 + c.size);
        AttributeArrayHeader array{c.count, elements.data()};
        const HeaderInfo info{0xA7E5, 0x10, 0, 0x12, 0, 0, 0, 0, 0};
        uint16_t size = 0xAAAA;
        EXPECT_EQ(TROV_GetAttributePacketSize(&info, c.type.id, &array, 1, &size), 0u);
        EXPECT_EQ(size, uint16_t(c.size));

        AttributeBody body{c.type.id, &array, {nullptr, 0, 0}};
        const TrovResult inBuffer = c.result == 0 && 20 + wire.size() > 64 ? 7 : c.result;
        const Bytes packet = expectEncode(0x12, &body, 64, c.result, inBuffer, uint16_t(2 + c.size));
        if (c.result == 0) {
            ASSERT_GE(packet.size(), 20u);
            EXPECT_TRUE(std::equal(packet.begin() + 20, packet.end(), wire.begin(), wire.end()))
                << "the body is not the identifier, the count and the elements";
        }

        // As an extended-data item: its length byte frames at most 255 bytes.
        EventExtendEntry entry{0, c.type.id, &array};
        EventExtendList list{1, &entry};
        OctetString data{0, nullptr};
        BufferDesc buffer{nullptr, 0, 0};
        const bool fits = c.size <= 0xFF;
        ASSERT_EQ(TROV_EncodeEventExtend(&list, &data, 0x30, nullptr, 0x10, &buffer), fits ? 0u : 5u);
        if (fits) {
            wire.insert(wire.begin() + 2, uint8_t(c.size));
            wire.insert(wire.begin(), 1);
            EXPECT_EQ(Bytes(data.data, data.data + data.length), wire);
        }
        trovFree(buffer.data);
    }
}

// Event 0x30's byte string has a 16-bit length: 254 items of 255 bytes
// (identifier 0x0842, u16 elements behind a u8 count of 127) with their
// heads and the count byte make 65533 bytes, 255 of them 65791, which the
// length cannot state.
TEST(GuardedRecords, ExtendedDataLongerThanItsLengthFieldIsRefused) {
    std::vector<uint16_t> elements(127, 0x0102);
    AttributeArrayHeader array{127, elements.data()};
    std::vector<EventExtendEntry> entries(255, EventExtendEntry{0, 0x0842, &array});
    for (uint8_t count : {254, 255}) {
        SCOPED_TRACE(int{count});
        EventExtendList list{count, entries.data()};
        OctetString data{0, nullptr};
        BufferDesc buffer{nullptr, 0, 0};
        const TrovResult r = TROV_EncodeEventExtend(&list, &data, 0x30, nullptr, 0x10, &buffer);
        EXPECT_EQ(r, count == 254 ? 0u : 5u);
        // 1 + 3 x 255 + 255 x 255 = 65791: the length keeps the 16-bit figure.
        EXPECT_EQ(data.length, count == 254 ? 65533 : 65791 - 65536);
        trovFree(buffer.data);
    }
}

// A null pointer behind a non-zero count or length: sizes can still be
// stated, but no encoder follows the pointer.
TEST(GuardedRecords, NullDataBehindACountIsRefusedWithNullArgument) {
    MethodBody raw{};
    raw.method = 0x2000;
    raw.paramsLength = 10; // params NULL: ten bytes were copied from address 0
    expectEncode(0x1d, &raw, 64, 1, 1);

    AttributeArrayHeader array{3, nullptr};
    const HeaderInfo info{0xA7E5, 0x10, 0, 0x12, 0, 0, 0, 0, 0};
    uint16_t size = 0;
    EXPECT_EQ(TROV_GetAttributePacketSize(&info, 0x0806, &array, 1, &size), 0u);
    EXPECT_EQ(size, 2 + 3 * 5);
    AttributeBody body{0x0806, &array, {nullptr, 0, 0}};
    expectEncode(0x12, &body, 64, 1, 1);

    // An extended-data entry without a value was read through NULL.
    EventExtendEntry entry{0, 0x0806, nullptr};
    EventExtendList list{1, &entry};
    OctetString data{0, nullptr};
    BufferDesc buffer{nullptr, 0, 0};
    EXPECT_EQ(TROV_EncodeEventExtend(&list, &data, 0x22, nullptr, 0x10, &buffer), 1u);
    EXPECT_EQ(buffer.data, nullptr);
    entry.value = &array;
    EXPECT_EQ(TROV_EncodeEventExtend(&list, &data, 0x22, nullptr, 0x10, &buffer), 1u);
    EXPECT_EQ(buffer.data, nullptr);
}

} // namespace
