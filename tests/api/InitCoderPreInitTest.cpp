// Before TROV_InitCoder every lookup fails with its own result, while the
// header operations already work. This executable never initialises.
#include <gtest/gtest.h>

#include <vector>

#include "TrovCodec.h"
#include "api/ReplyPacket.h"

namespace {

// A version 0x10 header whose 16-bit extension (flags bit 0) is the unit type.
std::vector<uint8_t> unitPacket(uint16_t unitType, uint16_t code) { return replyPacket(code, {}, unitType); }

TEST(BeforeInit, HeaderCodecAndFieldAccessWork) {
    std::vector<uint8_t> p = unitPacket(1, 5);
    const PacketCursor cursor{p.data(), uint32_t(p.size())};
    const HeaderInfo in{TROV_PROTOCOL_MARK, 0x10, 0, 0x12, 1, 0, 2, 3, 0};
    ASSERT_EQ(TROV_EncodeHeader(&in, &cursor), TROV_RESULT_OK);
    HeaderInfo out{};
    ASSERT_EQ(TROV_DecodeHeader(&out, &cursor), TROV_RESULT_OK);
    EXPECT_EQ(out.value6, 2u);
    const uint16_t length = 0x1234;
    ASSERT_EQ(TROV_SetToPacket(TROV_FIELD_BODY_LENGTH, &cursor, &length), TROV_RESULT_OK);
    EXPECT_EQ(p[8], 0x12);
    uint16_t code = 0;
    ASSERT_EQ(TROV_GetFromPacket(TROV_FIELD_CODE, &cursor, &code), TROV_RESULT_OK);
    EXPECT_EQ(code, 0x12);
}

// The skip rules run before the body lookup: a skipped body succeeds, a body
// to be decoded finds no table.
TEST(BeforeInit, DecodeFUSkipsOrFindsNoBodyCodec) {
    const struct { uint16_t unitType, code; TrovResult expected; uint16_t type; } cases[] = {
        {1, 5, TROV_RESULT_NO_BODY_CODEC, 1},
        {4, 5, TROV_RESULT_NO_BODY_CODEC, 4},
        {4, 10, TROV_RESULT_OK, 4},
        {200, 5, TROV_RESULT_OK, 200},
        {200, 10, TROV_RESULT_NO_BODY_CODEC, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.unitType << "/" << c.code);
        std::vector<uint8_t> p = unitPacket(c.unitType, c.code);
        const PacketCursor cursor{p.data(), uint32_t(p.size())};
        HeaderInfo info{};
        DecodeResult result{nullptr, nullptr, 0xEEEE};
        EXPECT_EQ(TROV_DecodeFU(&info, &result, &cursor, nullptr), c.expected);
        EXPECT_EQ(result.type, c.type);
        EXPECT_EQ(result.record, nullptr);
        EXPECT_EQ(TROV_DecodeFP(&info, &result, &cursor), TROV_RESULT_NO_BODY_CODEC);
    }
}

TEST(BeforeInit, EncodeAndSizeQueriesFindNoCodec) {
    HeaderInfo info{TROV_PROTOCOL_MARK, 0x10, 0, 5, 0, 0, 0, 0, 1};
    const uint8_t record[16] = {};
    EncodeOutput output{nullptr, 0};
    EXPECT_EQ(TROV_EncodeFU(&info, record, &output), TROV_RESULT_NO_BODY_CODEC);
    EXPECT_EQ(TROV_EncodeFP(&info, record, &output, nullptr), TROV_RESULT_NO_BODY_CODEC);
    EXPECT_EQ(output.data, nullptr);
    uint16_t size = 0xEEEE;
    EXPECT_EQ(TROV_GetAttributePacketSize(&info, 0x0001, record, 0, &size), TROV_RESULT_NO_ATTRIBUTE_CODEC);
    EXPECT_EQ(TROV_GetEventPacketSize(&info, 0x0002, record, &size), TROV_RESULT_NO_EVENT_CODEC);
    EXPECT_EQ(size, 0xEEEE);
}

}  // namespace
