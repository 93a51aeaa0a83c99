// Extended event data under allocation failures: each allocation of either
// call fails in turn; the result is 6, nothing leaks, nothing is handed out.
#include <gtest/gtest.h>

#include <vector>

#include "api/EventExtend.h"
#include "api/Memory.h"

namespace trov {
namespace {

TEST(EventExtendMemory, EveryAllocationFailingInTurn) {
    TROV_InitCoder();
    std::vector<uint8_t> bytes = {2, 0x00, 0xCB, 1, 0x5A, 0x00, 0x01, 2, 0xAA, 0xBB};
    const OctetString data{static_cast<uint16_t>(bytes.size()), bytes.data()};
    for (uint32_t nth = 1; nth <= 2; ++nth) {
        SCOPED_TRACE(nth);
        EventExtendList list{};
        BufferDesc buffer{};
        failAllocationAt(nth); // 1: the operation table, 2: the caller's buffer
        EXPECT_EQ(decodeEventExtend(&list, &data, 0x31, nullptr, 0x10, &buffer), TROV_RESULT_NO_MEMORY);
        failAllocationAt(0);
        EXPECT_EQ(list.count, 2); // set before the failure
        EXPECT_EQ(list.entries, nullptr);
        EXPECT_EQ(buffer.data, nullptr);

        uint8_t value = 1;
        EventExtendEntry entry{0, 0x00CB, &value};
        const EventExtendList one{1, &entry};
        OctetString out{};
        failAllocationAt(nth);
        EXPECT_EQ(encodeEventExtend(&one, &out, 0x31, nullptr, 0x10, &buffer), TROV_RESULT_NO_MEMORY);
        failAllocationAt(0);
        EXPECT_EQ(out.data, nullptr);
        EXPECT_EQ(buffer.data, nullptr);
    }
}

} // namespace
} // namespace trov
