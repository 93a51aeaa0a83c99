// Body 0x1d through the exported interface and the built-in method table:
// the raw fallback from 0x2000, 11 below it, a method without parameters, and
// the one-byte reply.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "TrovCodec.h"

namespace {

std::vector<uint8_t> reply(const std::vector<uint8_t> &body) {
    std::vector<uint8_t> p(20 + body.size(), 0);
    const uint8_t head[20] = {0xA7, 0xE5, 0x10, 0x01, 0x00, 0x1d, 0, 0, uint8_t(body.size() >> 8),
                              uint8_t(body.size()), 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    std::memcpy(p.data(), head, 20);
    for (size_t i = 0; i < body.size(); ++i) p[20 + i] = body[i];
    return p;
}

TrovResult decode(const std::vector<uint8_t> &body, DecodeResult &r) {
    auto p = reply(body);
    HeaderInfo h{};
    const PacketCursor c{p.data(), uint32_t(p.size())};
    return TROV_DecodeFU(&h, &r, &c, nullptr);
}

void release(DecodeResult &r) {
    if (r.record != nullptr) trovFree(static_cast<MethodBody *>(r.record)->buffer.data);
    trovFree(r.record);
}

class MethodInvocation : public testing::Test {
protected:
    void SetUp() override { TROV_InitCoder(); }
    HeaderInfo header{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, 0, 0x1d, 0, 0, 0, 0, 0};
};

TEST_F(MethodInvocation, RawFromTwoThousandHexAndNoCodecBelow) {
    uint8_t params[] = {0xDE, 0xAD, 0xBE};
    MethodBody below{1, 0x1FFF, params, 3, {}};
    EncodeOutput out{nullptr, 0};
    EXPECT_EQ(TROV_EncodeFU(&header, &below, &out), TROV_RESULT_NO_METHOD_CODEC);
    EXPECT_EQ(out.data, nullptr);

    MethodBody raw{1, 0x2000, params, 3, {}};
    ASSERT_EQ(TROV_EncodeFU(&header, &raw, &out), 0u);
    const uint8_t body[] = {0, 0, 0, 1, 0x20, 0x00, 0xDE, 0xAD, 0xBE};
    ASSERT_EQ(out.length, 20u + sizeof body);
    EXPECT_EQ(header.bodyLength, sizeof body);
    EXPECT_EQ(std::memcmp(out.data + 20, body, sizeof body), 0);
    trovFree(out.data);

    DecodeResult r{};
    ASSERT_EQ(decode({0, 0, 0, 1, 0x20, 0x00, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, r), 0u);
    const auto *m = static_cast<MethodBody *>(r.record);
    EXPECT_EQ(m->paramsLength, 10);
    EXPECT_EQ(m->buffer.capacity, 16);
    EXPECT_EQ(static_cast<const uint8_t *>(m->params)[9], 10);
    release(r);

    DecodeResult none{};
    EXPECT_EQ(decode({0, 0, 0, 1, 0x1F, 0xFF}, none), TROV_RESULT_NO_METHOD_CODEC);
    EXPECT_EQ(none.type, 6);
    EXPECT_EQ(none.record, nullptr);
}

TEST_F(MethodInvocation, RepliesOfTheMethodTable) {
    DecodeResult empty{};
    ASSERT_EQ(decode({0, 0, 0, 2, 0x00, 0x66}, empty), 0u); // 0x66: no parameters either way
    EXPECT_EQ(static_cast<MethodBody *>(empty.record)->paramsLength, 0);
    release(empty);

    DecodeResult one{};
    ASSERT_EQ(decode({0, 0, 0, 2, 0x00, 0x92, 0x7E}, one), 0u); // 0x92: a one-byte reply
    EXPECT_EQ(static_cast<const uint8_t *>(static_cast<MethodBody *>(one.record)->params)[0], 0x7E);
    release(one);

    DecodeResult missing{};
    EXPECT_EQ(decode({0, 0, 0, 2, 0x00, 0x92}, missing), TROV_RESULT_SHORT_INPUT);
    EXPECT_EQ(missing.type, 6);
    EXPECT_EQ(missing.record, nullptr);

    DecodeResult tooShort{};
    EXPECT_EQ(decode({0, 0, 0, 2, 0x00}, tooShort), TROV_RESULT_SHORT_INPUT);

    // A caller's record is filled and kept on failure.
    MethodBody mine{};
    DecodeResult caller{&mine, nullptr, 0};
    EXPECT_EQ(decode({0, 0, 0, 2, 0x00, 0x92}, caller), TROV_RESULT_SHORT_INPUT);
    EXPECT_EQ(caller.record, &mine);
    EXPECT_EQ(caller.type, 6);
    EXPECT_EQ(mine.method, 0x92);
}

} // namespace
