// Attribute rows by value type. Fixed-size values: row 257's overflow check,
// golden vectors and a record size that wraps its 16 bits; the selector type
// outside its four variants. (Every row's figures are checked against the
// reference by AttributeTableInternalTest; every row's round trip and
// truncations, the narrow count tests included, by ExtentBoundaryInternalTest;
// structure rows against their descriptions: PublicRecordsTest and
// EncodeRoundTripTest;
// the structure walk, kind by kind: StructureCodecInternalTest.)
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "api/Dispatch.h"
#include "api/ReplyPacket.h"
#include "attributes/RecordValueTypes.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

constexpr uint8_t kVersion = 0x10;
using Bytes = std::vector<uint8_t>;

const ValueCodecOps &ops(uint16_t row) { return AttributeCodecTable[row - 1].ops; }

// An array header as the host fills it: the count at the prefix's width.
struct alignas(8) Header {
    uint8_t bytes[16] = {};
    Header(uint16_t count, uint8_t prefix, const void *elements = nullptr) {
        if (prefix == 1) bytes[0] = static_cast<uint8_t>(count);
        else std::memcpy(bytes, &count, 2);
        std::memcpy(bytes + 8, &elements, sizeof elements);
    }
    Bytes vec() const { return Bytes(bytes, bytes + 16); }
};

TEST(FixedValue, Row257RefusesPacketSizesAbove16Bits) {
    WireSize size{0xAAAA, 0xAAAA};
    EXPECT_EQ(ops(257).encCalc(Header(7282, 2).bytes, 1, &size, kVersion), 5u); // 65,540 bytes
    EXPECT_EQ(size.bytes, 0xAAAA);
    EXPECT_EQ(ops(257).encCalc(Header(7281, 2).bytes, 1, &size, kVersion), 0u);
    EXPECT_EQ(size.bytes, 65531);
    EXPECT_EQ(ops(257).encCalc(Header(7282, 2).bytes, 0, &size, kVersion), 0u);
    EXPECT_EQ(size.bytes, 9);
    // Other rows keep the protocol's 16-bit arithmetic: row 155 has the same
    // W and P, and its size.bytes wraps.
    EXPECT_EQ(ops(155).encCalc(Header(7282, 2).bytes, 1, &size, kVersion), 0u);
    EXPECT_EQ(size.bytes, 4);
}

// Row 1: four bytes, then a big-endian u32; the record holds the u32 at 4.
// Row 257: u32, u8, u32; the record holds them at 0, 4 and 8 (12 bytes).
// Arrays of two elements; element records as a little-endian host holds them.
// (Encoding them back, in both forms: the extent sweep's round trips.)
TEST(FixedValue, GoldenVectorsOfRows1And257) {
    struct Golden {
        uint16_t row;
        Bytes wire, elements;
    };
    const Golden goldens[] = {
        {1,
         {0x02, 0x11, 0x22, 0x33, 0x44, 0x89, 0xAB, 0xCD, 0xEF, 0xF1, 0xF2, 0xF3, 0xF4, 0x00, 0x00, 0x01, 0x00},
         {0x11, 0x22, 0x33, 0x44, 0xEF, 0xCD, 0xAB, 0x89, 0xF1, 0xF2, 0xF3, 0xF4, 0x00, 0x01, 0x00, 0x00}},
        {257,
         {0x00, 0x02, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xDE, 0xAD, 0xBE, 0xEF,
          0x80, 0x00, 0x00, 0x01, 0x7F, 0x00, 0x00, 0x00, 0x02},
         {0x78, 0x56, 0x34, 0x12, 0x9A, 0, 0, 0, 0xEF, 0xBE, 0xAD, 0xDE,
          0x01, 0x00, 0x00, 0x80, 0x7F, 0, 0, 0, 0x02, 0x00, 0x00, 0x00}},
    };
    for (const Golden &g : goldens) {
        SCOPED_TRACE(testing::Message() << "row " << g.row);
        const uint8_t prefix = g.row == 1 ? 1 : 2;
        const uint32_t recordBytes = 16 + roundUp8(static_cast<uint32_t>(g.elements.size()));
        Bytes wire = g.wire;
        PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
        RecordSize r{};
        ASSERT_EQ(ops(g.row).decCalc(&c, 1, &r, kVersion), 0u);
        EXPECT_EQ(r.bytes, recordBytes);
        alignas(8) uint8_t record[64] = {};
        PacketCursor d{wire.data(), static_cast<uint32_t>(wire.size())};
        EXPECT_EQ(ops(g.row).decode(record, &d, 1, kVersion), record + recordBytes);
        EXPECT_EQ(Bytes(record, record + 16), Header(2, prefix, record + 16).vec());
        EXPECT_EQ(Bytes(record + 16, record + 16 + g.elements.size()), g.elements);
    }
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
    TROV_InitCoder();
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
