// A structure row of the attribute table worked out by hand. (Every
// structure row's extent: ExtentBoundaryInternalTest; its record-first round
// trip: the encode fuzz targets; the walk itself, kind by kind, with golden
// bytes and round trips: StructureCodecInternalTest.)
#include <gtest/gtest.h>

#include "api/Dispatch.h"
#include "attributes/StructureValueTypes.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

// Hand-worked: row 274 (RangeList) with one range {0x01020304, 0x0A0B0C0D}.
TEST(StructureRowsGolden, RangeList) {
    TROV_InitCoder();
    const uint8_t wire[] = {0x00, 0x01, 0x01, 0x02, 0x03, 0x04, 0x0A, 0x0B, 0x0C, 0x0D};
    const ValueCodecOps &ops = AttributeCodecTable[273].ops;
    PacketCursor c{const_cast<uint8_t *>(wire), sizeof wire};
    RecordSize size{};
    ASSERT_EQ(ops.decCalc(&c, 0, &size, 0x10), 0u);
    EXPECT_EQ(size.bytes, 16 + 8); // the record, then one 8-byte range
    alignas(8) uint8_t record[64] = {};
    PacketCursor d{const_cast<uint8_t *>(wire), sizeof wire};
    ops.decode(record, &d, 0, 0x10);
    EXPECT_EQ(loadField<uint16_t>(record, 0), 1);
    const auto *range = loadField<const uint8_t *>(record, 8);
    ASSERT_EQ(range, record + 16);
    EXPECT_EQ(loadField<uint32_t>(range, 0), 0x01020304u);
    EXPECT_EQ(loadField<uint32_t>(range, 4), 0x0A0B0C0Du);
}

} // namespace
} // namespace trov
