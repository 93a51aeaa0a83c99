// Before TROV_InitCoder every lookup fails with its own result, while the
// header operations already work. This executable never initialises.
#include <gtest/gtest.h>

#include "TrovCodec.h"

namespace {

TEST(BeforeInit, HeaderEncodesAndDecodes) {
    HeaderInfo in{TROV_PROTOCOL_MARK, 0x10, 0, 0x12, 1, 0, 2, 3, 0};
    uint8_t packet[20] = {};
    PacketCursor cursor{packet, sizeof packet};
    ASSERT_EQ(TROV_EncodeHeader(&in, &cursor), TROV_RESULT_OK);
    HeaderInfo out{};
    ASSERT_EQ(TROV_DecodeHeader(&out, &cursor), TROV_RESULT_OK);
    EXPECT_EQ(out.code, 0x12);
    EXPECT_EQ(out.value6, 2u);
}

}  // namespace
