// The selector value type outside its four variants. (Every row and data
// type round trips, and refuses every truncation, in
// ExtentBoundaryInternalTest.)
#include <gtest/gtest.h>

#include <cstdint>

#include "api/Dispatch.h"
#include "attributes/RecordValueTypes.h"

namespace trov {
namespace {

constexpr uint8_t kVersion = 0x10;

// The selector type meets a selector outside 1 to 4: its size pass refuses
// the value (4) without moving, its packet-size pass reports 1.
TEST(SelectorValue, SelectorOutsideOneToFourIsRefused) {
    TROV_InitCoder();
    const RecordValueType *selector = nullptr;
    for (const RecordValueType &t : kRecordValueTypes)
        if (t.variants != nullptr) selector = &t;
    ASSERT_NE(selector, nullptr);
    const ValueCodecOps &ops = AttributeCodecTable[selector->row - 1].ops;
    for (uint8_t bad : {0, 5, 0xFF}) {
        uint8_t wire[16] = {bad};
        PacketCursor c{wire, sizeof wire};
        RecordSize size{};
        EXPECT_EQ(ops.decCalc(&c, 0, &size, kVersion), 4u) << int{bad};
        EXPECT_EQ(c.position, wire);
        alignas(16) uint8_t record[64] = {bad};
        WireSize packetBytes{0xAAAA, 0xAAAA};
        EXPECT_EQ(ops.encCalc(record, 0, &packetBytes, kVersion), 1u) << int{bad};
        EXPECT_EQ(packetBytes.bytes, 0xAAAA);
    }
}

} // namespace
} // namespace trov
