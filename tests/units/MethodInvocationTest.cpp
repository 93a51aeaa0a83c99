// Body 0x1d through the exported interface and the built-in method table:
// the raw fallback from 0x2000 and no codec below it, and a failing reply
// into the caller's record. (Every method's replies and their truncations:
// the differential corpus.)
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

    DecodeResult none{};
    EXPECT_EQ(decode({0, 0, 0, 1, 0x1F, 0xFF}, none), TROV_RESULT_NO_METHOD_CODEC);
    EXPECT_EQ(none.type, 6);
    EXPECT_EQ(none.record, nullptr);
}

// A reply one byte short of method 0x92's one-byte parameters.
TEST_F(MethodInvocation, CallersRecordIsFilledAndKeptOnFailure) {
    MethodBody mine{};
    DecodeResult caller{&mine, nullptr, 0};
    EXPECT_EQ(decode({0, 0, 0, 2, 0x00, 0x92}, caller), TROV_RESULT_SHORT_INPUT);
    EXPECT_EQ(caller.record, &mine);
    EXPECT_EQ(caller.type, 6);
    EXPECT_EQ(mine.method, 0x92);
}

} // namespace
