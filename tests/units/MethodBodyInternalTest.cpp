// Body 0x1d over test-local method rows: a method with no parameters and a
// one-byte reply (0x0092), a two-byte request (0x006B). (The raw fallback is
// tested through the exports with the built-in table.)
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "engine/Cursor.h"
#include "units/MethodBody.h"

namespace trov {
namespace {

TrovResult noneEncCalc(const void *, uint16_t, uint16_t *wire) {
    *wire = 0;
    return TROV_RESULT_OK;
}
void noneEncode(PacketCursor *, const void *, uint16_t) {}
TrovResult oneByteReplyDecCalc(const PacketCursor *c, uint16_t *length, RecordSize *size) {
    if (c->remaining < 1) return TROV_RESULT_SHORT_INPUT;
    *length = 0;
    *size = RecordSize{8, 8};
    return TROV_RESULT_OK;
}
void *oneByteReplyDecode(void *record, PacketCursor *c) {
    static_cast<uint8_t *>(record)[0] = getU8(*c);
    return static_cast<uint8_t *>(record) + 8;
}
TrovResult twoEncCalc(const void *, uint16_t, uint16_t *wire) {
    *wire = 2;
    return TROV_RESULT_OK;
}
void twoEncode(PacketCursor *c, const void *p, uint16_t) { putBytes(c, p, 2); }
TrovResult noReplyDecCalc(const PacketCursor *, uint16_t *length, RecordSize *size) {
    *length = 0;
    *size = RecordSize{0, 0};
    return TROV_RESULT_OK;
}
void *noReplyDecode(void *record, PacketCursor *) { return record; }

constexpr MethodCodecRow kMethods[] = {
    {0x0092, 0, noneEncCalc, noneEncode, oneByteReplyDecCalc, oneByteReplyDecode},
    {0x006B, 0, twoEncCalc, twoEncode, noReplyDecCalc, noReplyDecode},
    {}};

Tables tables() {
    Tables t{};
    t.fuMethods = kMethods;
    return t;
}

HeaderInfo header() {
    HeaderInfo h{};
    h.mark = TROV_PROTOCOL_MARK;
    h.version = TROV_PROTOCOL_VERSION;
    h.code = 0x1d;
    return h;
}

class MethodBodyCodec : public testing::Test {
protected:
    static void release(DecodeResult &r) {
        if (r.record != nullptr) trovFree(static_cast<MethodBody *>(r.record)->buffer.data);
        trovFree(r.record);
    }
    TrovResult decode(std::vector<uint8_t> body, DecodeResult &r) {
        bytes = std::move(body);
        const PacketCursor c{bytes.data(), static_cast<uint32_t>(bytes.size())};
        HeaderInfo h = header();
        return decodeMethodBodyWith(tables(), &h, &r, &c);
    }
    std::vector<uint8_t> bytes;
};

TEST_F(MethodBodyCodec, EncodesThePrefixThenTheMethodsParameters) {
    const uint8_t params[] = {0xAB, 0xCD};
    MethodBody m{0x01020304, 0x006B, const_cast<uint8_t *>(params), 2, {}};
    HeaderInfo h = header();
    EncodeOutput out{nullptr, 0};
    ASSERT_EQ(encodeMethodBodyWith(tables(), &h, &m, &out), 0u);
    EXPECT_EQ(h.bodyLength, 8);
    const uint8_t body[] = {0x01, 0x02, 0x03, 0x04, 0x00, 0x6B, 0xAB, 0xCD};
    ASSERT_EQ(out.length, 28u);
    EXPECT_EQ(std::memcmp(out.data + 20, body, sizeof body), 0);
    trovFree(out.data);
}

TEST_F(MethodBodyCodec, RepliesAndTheirFailures) {
    DecodeResult r{};
    ASSERT_EQ(decode({0, 0, 0, 2, 0x00, 0x6B}, r), 0u); // exactly 6 bytes, no reply parameters
    EXPECT_EQ(static_cast<MethodBody *>(r.record)->paramsLength, 0);
    EXPECT_EQ(static_cast<MethodBody *>(r.record)->params, nullptr);
    release(r);

    DecodeResult one{};
    ASSERT_EQ(decode({0, 0, 0, 2, 0x00, 0x92, 0x5A}, one), 0u);
    EXPECT_EQ(static_cast<uint8_t *>(static_cast<MethodBody *>(one.record)->params)[0], 0x5A);
    release(one);

    DecodeResult missing{};
    EXPECT_EQ(decode({0, 0, 0, 2, 0x00, 0x92}, missing), TROV_RESULT_SHORT_INPUT);
    EXPECT_EQ(missing.type, 6);
    EXPECT_EQ(missing.record, nullptr);

    DecodeResult shortBody{};
    EXPECT_EQ(decode({0, 0, 0, 2, 0x00}, shortBody), TROV_RESULT_SHORT_INPUT);
    EXPECT_EQ(shortBody.type, 6);

    // A caller's record is filled and kept on failure.
    MethodBody mine{};
    DecodeResult caller{&mine, nullptr, 0};
    EXPECT_EQ(decode({0, 0, 0, 2, 0x00, 0x92}, caller), TROV_RESULT_SHORT_INPUT);
    EXPECT_EQ(caller.record, &mine);
    EXPECT_EQ(mine.method, 0x92);
}

TEST_F(MethodBodyCodec, UninitialisedTablesKnowNoMethodAtAll) {
    HeaderInfo h = header();
    MethodBody raw{0, 0x2000, nullptr, 0, {}};
    EncodeOutput out{nullptr, 0};
    EXPECT_EQ(encodeMethodBodyWith(Tables{}, &h, &raw, &out), TROV_RESULT_NO_METHOD_CODEC);
}

} // namespace
} // namespace trov
