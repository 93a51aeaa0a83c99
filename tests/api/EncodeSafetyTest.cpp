// Records a buggy or hostile host can build, through the exported encoders.
// Each case is a record that once made the library write past the memory it
// allocated or was given, or read through a null pointer; the line above it
// names the cause. Every encode refuses before writing, and the canary after
// a caller's buffer stays intact. Arrays at the edges of their count prefix
// and of the packet are written as worked out by hand, or refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "TrovCodec.h"
#include "TrovRecords.h"
#include "api/Initialised.h"
#include "api/ReplyPacket.h"

namespace {

constexpr uint8_t kCanary = 0xC5;

HeaderInfo header(uint16_t code) { return HeaderInfo{0xA7E5, 0x10, 0, code, 0, 0, 0, 0, 0}; }

// Encodes into a library-allocated packet, which it returns, and into a
// caller buffer of `capacity` bytes followed by canaries. `figure`, when
// given, is the body's 16-bit length, which the header keeps whatever the
// result.
std::vector<uint8_t> expectEncode(uint16_t code, const void *record, uint32_t capacity, TrovResult expected,
                                  TrovResult expectedInBuffer, int32_t figure = -1) {
    HeaderInfo info = header(code);
    EncodeOutput allocated{nullptr, 0};
    EXPECT_EQ(TROV_EncodeFU(&info, record, &allocated), expected);
    if (figure >= 0) {
        EXPECT_EQ(info.bodyLength, figure);
    }
    if (expected != 0) {
        EXPECT_EQ(allocated.data, nullptr);
    }
    std::vector<uint8_t> packet(allocated.data, allocated.data + allocated.length);
    if (allocated.data != nullptr) trovFree(allocated.data);

    std::vector<uint8_t> buffer(capacity + 64, kCanary);
    EncodeOutput given{buffer.data(), capacity};
    info = header(code);
    EXPECT_EQ(TROV_EncodeFU(&info, record, &given), expectedInBuffer);
    EXPECT_TRUE(std::all_of(buffer.begin() + capacity, buffer.end(), [](uint8_t b) { return b == kCanary; }))
        << "written past the caller's buffer";
    return packet;
}

// (Raw parameters one byte longer than a body can frame, and an array of
// 32768 u16 values, refused into buffers of every size: GuardPageTest.)

// The longest raw parameters a body carries (0xFFF9 bytes, a 65535-byte
// body) round to 0 in the record's 16-bit size: the decoder once copied
// nothing and handed back a record that could not be encoded again. The
// buffer now gets real room while its capacity keeps the wrapped figure.
TEST(EncodeSafety, TheLongestRawMethodBodyRoundTrips) {
    std::vector<uint8_t> body = {0, 0, 0, 0, 0x20, 0x00};
    for (uint32_t i = 0; i < 0xFFF9; ++i) body.push_back(uint8_t(i * 7));
    DecodeResult result{nullptr, nullptr, 0};
    ASSERT_EQ(decodeReply(0x1d, body, result), 0u);
    auto *decoded = static_cast<MethodBody *>(result.record);
    EXPECT_EQ(decoded->paramsLength, 0xFFF9);
    EXPECT_EQ(decoded->buffer.capacity, 0); // (0xFFF9 + 7) & 0xFFF8
    ASSERT_NE(decoded->params, nullptr);
    EXPECT_EQ(std::memcmp(decoded->params, body.data() + 6, 0xFFF9), 0);
    const std::vector<uint8_t> again = expectEncode(0x1d, decoded, 64, 0, 7, 0xFFFF);
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
    void (*element)(uint8_t *record, uint32_t i, std::vector<uint8_t> &wire);
};
// One byte behind a u8 count: only the first byte of the header's count counts.
void byteElement(uint8_t *r, uint32_t i, std::vector<uint8_t> &w) {
    r[0] = uint8_t(i * 7 + 1);
    w.push_back(r[0]);
}
// u16 u16 u8 at record offsets 0, 2, 4 (stride 6), behind a u16 count.
void fiveByteElement(uint8_t *r, uint32_t i, std::vector<uint8_t> &w) {
    const uint16_t a = uint16_t(i), b = uint16_t(0xF000 ^ i);
    std::memcpy(r, &a, 2);
    std::memcpy(r + 2, &b, 2);
    r[4] = uint8_t(i >> 8);
    w.insert(w.end(), {uint8_t(a >> 8), uint8_t(a), uint8_t(b >> 8), uint8_t(b), r[4]});
}
// A record {u8, u8-counted octets} (stride 24), behind a u16 count; the
// octets are empty: the u8, then a length of 0.
void recordElement(uint8_t *r, uint32_t i, std::vector<uint8_t> &w) {
    const TrovAttribute138BValue v{uint8_t(i), {0, nullptr}};
    std::memcpy(r, &v, sizeof v);
    w.insert(w.end(), {v.value0, 0});
}
constexpr ArrayType kBytes{0x011E, 1, 1, byteElement}, kFiveBytes{0x0806, 2, 6, fiveByteElement},
    kRecords{0x138B, 2, sizeof(TrovAttribute138BValue), recordElement};

TEST(EncodeSafety, ArrayCountsAtTheEdgesOfTheirPrefixAndOfThePacket) {
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
        std::vector<uint8_t> elements(size_t{c.count} * c.type.stride, 0xEE);
        std::vector<uint8_t> wire = {uint8_t(c.type.id >> 8), uint8_t(c.type.id)};
        if (c.type.prefix == 2) wire.push_back(uint8_t(n >> 8));
        wire.push_back(uint8_t(n));
        for (uint32_t i = 0; i < c.count; ++i) {
            std::vector<uint8_t> w;
            c.type.element(&elements[i * c.type.stride], i, w);
            if (i < n) wire.insert(wire.end(), w.begin(), w.end());
        }
        ASSERT_EQ(wire.size(), 2 + c.size);
        AttributeArrayHeader array{c.count, elements.data()};
        HeaderInfo info = header(0x12);
        uint16_t size = 0xAAAA;
        EXPECT_EQ(TROV_GetAttributePacketSize(&info, c.type.id, &array, 1, &size), 0u);
        EXPECT_EQ(size, uint16_t(c.size));

        AttributeBody body{c.type.id, &array, {nullptr, 0, 0}};
        const TrovResult inBuffer = c.result == 0 && 20 + wire.size() > 64 ? 7 : c.result;
        const std::vector<uint8_t> packet = expectEncode(0x12, &body, 64, c.result, inBuffer, uint16_t(2 + c.size));
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
            EXPECT_EQ(std::vector<uint8_t>(data.data, data.data + data.length), wire);
        }
        trovFree(buffer.data);
    }
}

// Event 0x30's byte string has a 16-bit length: 254 items of 255 bytes
// (identifier 0x0842, u16 elements behind a u8 count of 127) with their
// heads and the count byte make 65533 bytes, 255 of them 65791, which the
// length cannot state.
TEST(EncodeSafety, ExtendedDataLongerThanItsLengthFieldIsRefused) {
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
TEST(EncodeSafety, NullDataBehindACountIsRefusedWithNullArgument) {
    MethodBody raw{};
    raw.method = 0x2000;
    raw.paramsLength = 10; // params NULL: ten bytes were copied from address 0
    expectEncode(0x1d, &raw, 64, 1, 1);

    AttributeArrayHeader array{3, nullptr};
    HeaderInfo info = header(0x12);
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
