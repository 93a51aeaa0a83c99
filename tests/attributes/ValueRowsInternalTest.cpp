// Attribute rows by value type. Fixed-size values: row 257's overflow check
// and a record size that wraps its 16 bits; the selector type outside its four
// variants. (Element records in host order: DifferentialCorpusInternalTest.) (Every row's figures are checked against the
// reference by AttributeTableInternalTest; every row's round trip and
// truncations, the narrow count tests included, by ExtentBoundaryInternalTest;
// structure rows against their descriptions: PublicRecordsTest and
// EncodeRoundTripTest;
// the structure walk, kind by kind: StructureCodecInternalTest.)
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "api/Dispatch.h"
#include "api/Initialised.h"
#include "api/ReplyPacket.h"
#include "attributes/RecordValueTypes.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

constexpr uint8_t kVersion = 0x10;
using Bytes = std::vector<uint8_t>;

const ValueCodecOps &ops(uint16_t row) { return AttributeCodecTable[row - 1].ops; }

// An array header as the host fills it: a u16 count, then the elements.
struct Header {
    uint16_t count;
    const void *elements = nullptr;
};

TEST(FixedValue, Row257RefusesPacketSizesAbove16Bits) {
    const Header over{7282}, largest{7281}; // 65,540 and 65,531 bytes
    WireSize size{0xAAAA, 0xAAAA};
    EXPECT_EQ(ops(257).encCalc(&over, 1, &size, kVersion), 5u);
    EXPECT_EQ(size.bytes, 0xAAAA);
    EXPECT_EQ(ops(257).encCalc(&largest, 1, &size, kVersion), 0u);
    EXPECT_EQ(size.bytes, 65531);
    EXPECT_EQ(ops(257).encCalc(&over, 0, &size, kVersion), 0u);
    EXPECT_EQ(size.bytes, 9);
    // Other rows keep the protocol's 16-bit arithmetic: row 155 has the same
    // W and P, and its size.bytes wraps.
    EXPECT_EQ(ops(155).encCalc(&over, 1, &size, kVersion), 0u);
    EXPECT_EQ(size.bytes, 4);
}

// 40,000 two-byte elements: the reported 16-bit figure wraps, the extent does
// not, and the decode stays inside a block of the extent.
TEST(FixedValue, WrappedRecordSizeDecodesIntoItsExtent) {
    const uint32_t n = 40000;
    Bytes wire;
    wire.reserve(2 + 2 * n); // a block of exactly the packet
    for (uint32_t i = 0; i <= n; ++i) putWire(wire, i == 0 ? n : i - 1, 2); // the count, then 0 to n - 1
    PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
    RecordSize r{};
    ASSERT_EQ(ops(140).decCalc(&c, 1, &r, kVersion), 0u);
    EXPECT_EQ(r.bytes, (80000 + 16) % 65536);
    EXPECT_EQ(r.extent, 80016u);
    EXPECT_EQ(c.remaining, 0u);
    std::unique_ptr<uint8_t[]> block(new uint8_t[r.extent]);
    PacketCursor d{wire.data(), static_cast<uint32_t>(wire.size())};
    EXPECT_EQ(ops(140).decode(block.get(), &d, 1, kVersion), block.get() + 80016);
    EXPECT_EQ(loadField<uint16_t>(block.get(), 0), n);
    EXPECT_EQ(loadField<uint16_t>(block.get(), 16), 0);
    EXPECT_EQ(loadField<uint16_t>(block.get(), 16 + 2 * (n - 1)), n - 1);
}

// The selector type meets a selector outside 1 to 4: its size pass refuses
// the value (4) without moving, its packet-size pass reports 1.
TEST(SelectorValue, SelectorOutsideOneToFourIsRefused) {
    const RecordValueType *selector = nullptr;
    for (const RecordValueType &t : kRecordValueTypes)
        if (t.variants != nullptr) selector = &t;
    ASSERT_NE(selector, nullptr);
    for (uint8_t bad : {0, 5, 0xFF}) {
        uint8_t wire[16] = {bad};
        PacketCursor c{wire, sizeof wire};
        RecordSize size{};
        EXPECT_EQ(ops(selector->row).decCalc(&c, 0, &size, kVersion), 4u) << int{bad};
        EXPECT_EQ(c.position, wire);
        alignas(16) uint8_t record[64] = {bad};
        WireSize packetBytes{0xAAAA, 0xAAAA};
        EXPECT_EQ(ops(selector->row).encCalc(record, 0, &packetBytes, kVersion), 1u) << int{bad};
        EXPECT_EQ(packetBytes.bytes, 0xAAAA);
    }
}

} // namespace
} // namespace trov
