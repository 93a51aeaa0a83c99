// Records a buggy or hostile host can build, through the exported encoders.
// Each case is a record that once made the library write past the memory it
// allocated or was given, or read through a null pointer; the line above it
// names the cause. Every encode refuses before writing, and the canary after
// a caller's buffer stays intact.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "TrovCodec.h"

namespace {

constexpr uint8_t kCanary = 0xC5;

HeaderInfo header(uint16_t code) {
    HeaderInfo info{};
    info.mark = 0xA7E5;
    info.version = 0x10;
    info.code = code;
    return info;
}

// Encodes into a library-allocated packet and into a caller buffer of
// `capacity` bytes followed by canaries; both must give `expected`.
void expectEncode(uint16_t code, const void *record, uint32_t capacity, TrovResult expected,
                  TrovResult expectedInBuffer) {
    HeaderInfo info = header(code);
    EncodeOutput allocated{nullptr, 0};
    EXPECT_EQ(TROV_EncodeFU(&info, record, &allocated), expected);
    if (expected != 0) {
        EXPECT_EQ(allocated.data, nullptr);
    }
    if (allocated.data != nullptr) trovFree(allocated.data);

    std::vector<uint8_t> buffer(capacity + 64, kCanary);
    EncodeOutput given{buffer.data(), capacity};
    info = header(code);
    EXPECT_EQ(TROV_EncodeFU(&info, record, &given), expectedInBuffer);
    for (size_t i = capacity; i < buffer.size(); ++i) ASSERT_EQ(buffer[i], kCanary) << "byte " << i;
}

class EncodeSafety : public testing::Test {
  protected:
    void SetUp() override { TROV_InitCoder(); }
};

// (Raw parameters one byte longer than a body can frame, refused into
// buffers of every size: GuardPageTest.)

// The longest raw parameters a body carries (0xFFF9 bytes, a 65535-byte
// body) round to 0 in the record's 16-bit size: the decoder once copied
// nothing and handed back a record that could not be encoded again. The
// buffer now gets real room while its capacity keeps the wrapped figure.
TEST_F(EncodeSafety, TheLongestRawMethodBodyRoundTrips) {
    std::vector<uint8_t> params(0xFFF9);
    for (size_t i = 0; i < params.size(); ++i) params[i] = uint8_t(i * 7);
    MethodBody body{};
    body.method = 0x2000;
    body.params = params.data();
    body.paramsLength = 0xFFF9;
    HeaderInfo info = header(0x1d);
    info.flags = 0x01;
    info.extension = 1; // a unit type whose bodies are decoded
    EncodeOutput packet{nullptr, 0};
    ASSERT_EQ(TROV_EncodeFU(&info, &body, &packet), 0u);
    ASSERT_EQ(packet.length, 20u + 0xFFFF);

    HeaderInfo replyInfo{};
    DecodeResult result{nullptr, nullptr, 0};
    const PacketCursor cursor{packet.data, packet.length};
    ASSERT_EQ(TROV_DecodeFU(&replyInfo, &result, &cursor, nullptr), 0u);
    auto *decoded = static_cast<MethodBody *>(result.record);
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(decoded->paramsLength, 0xFFF9);
    EXPECT_EQ(decoded->buffer.capacity, 0); // (0xFFF9 + 7) & 0xFFF8
    ASSERT_NE(decoded->params, nullptr);
    EXPECT_EQ(std::memcmp(decoded->params, params.data(), params.size()), 0);

    EncodeOutput again{nullptr, 0};
    HeaderInfo againInfo = info;
    ASSERT_EQ(TROV_EncodeFU(&againInfo, decoded, &again), 0u);
    ASSERT_EQ(again.length, packet.length);
    EXPECT_EQ(std::memcmp(again.data, packet.data, packet.length), 0);
    trovFree(again.data);
    trovFree(decoded->buffer.data);
    trovFree(decoded);
    trovFree(packet.data);
}

// Identifier 0x0806: 5-byte elements (u16 u16 u8, record stride 6) behind a
// u16 count. Its size is reported in 16 bits, as the protocol defines, but
// the encoders go by the true size.
TEST_F(EncodeSafety, AttributeArraysLongerThan16BitsAreReportedWrappedAndNeverWritten) {
    struct Case {
        uint16_t count;
        uint16_t reported; // 2 + 5 x count, 16-bit
        TrovResult result;
    } const cases[] = {
        {13106, 65532, 0}, // body 2 + 65532 = 65534 bytes: fits
        {13107, 65537 & 0xFFFF, 5},
        {13108, 6, 5},      // 65542 wrapped to 6: an 8-byte body then took 64 KB
        {0xFFFF, 65533, 5}, // 327677 wrapped to 65533
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.count);
        std::vector<uint8_t> elements(size_t{c.count} * 6, 0x11);
        AttributeArrayHeader array{c.count, elements.data()};
        HeaderInfo info = header(0x12);
        uint16_t size = 0xAAAA;
        EXPECT_EQ(TROV_GetAttributePacketSize(&info, 0x0806, &array, 1, &size), 0u);
        EXPECT_EQ(size, c.reported);

        AttributeBody body{0x0806, &array, {nullptr, 0, 0}};
        expectEncode(0x12, &body, 64, c.result, c.result == 0 ? 7 : c.result);

        // As an extended-data item: one length byte frames at most 255 bytes.
        EventExtendEntry entry{0, 0x0806, &array};
        EventExtendList list{1, &entry};
        OctetString data{0, nullptr};
        uint8_t room[64];
        BufferDesc buffer{room, sizeof room, 0};
        EXPECT_EQ(TROV_EncodeEventExtend(&list, &data, 0x30, nullptr, 0x10, &buffer), 5u);
    }
}

// Event 0x30's byte string has a 16-bit length: 254 items of 255 bytes
// (identifier 0x0842, u16 elements behind a u8 count of 127) with their
// heads and the count byte make 65533 bytes, 255 of them 65791, which the
// length cannot state.
TEST_F(EncodeSafety, ExtendedDataLongerThanItsLengthFieldIsRefused) {
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
        EXPECT_EQ(data.length, count == 254 ? 65533 : 0);
        trovFree(buffer.data);
    }
}

// A null pointer behind a non-zero count or length: sizes can still be
// stated, but no encoder follows the pointer.
TEST_F(EncodeSafety, NullDataBehindACountIsRefusedWithNullArgument) {
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
