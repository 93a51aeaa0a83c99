// The FU method codecs: refusals and the raw parameters' figures worked out
// by hand (every method's reply, round trip and extent: the corpus and extent
// sweeps; the structured replies built from their descriptions and through
// the codecs: RecordWalkTest).
#include <gtest/gtest.h>

#include <vector>

#include "engine/Cursor.h"
#include "api/Dispatch.h"
#include "units/MethodCodecs.h"

namespace trov {
namespace {

const MethodCodecRow &rowOf(uint16_t code) { return *findMethodRow(builtinTables(), code, 0x10); }

// Refusals, and the 16-bit figure beside the true extent for parameters near
// and past 65535 bytes (the method body refuses those past it).
TEST(MethodCodecs, RequestRefusalsAndFigures) {
    WireSize wire{0xBEEF, 1, false};
    EXPECT_EQ(rowOf(0x66).encCalc(nullptr, 0, &wire), TROV_RESULT_OK); // no parameters, no record
    EXPECT_EQ(wire.bytes, 0);
    EXPECT_EQ(wire.extent, 0u);
    EXPECT_EQ(rowOf(0x75).encCalc(nullptr, 0, &wire), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(rowOf(0x75).encCalc(&wire, 0, nullptr), TROV_RESULT_NULL_ARGUMENT);
    alignas(8) uint8_t head[16] = {};
    storeField<uint16_t>(head, 0, 4); // a count without elements
    EXPECT_EQ(rowOf(0x0b).encCalc(head, 0, &wire), TROV_RESULT_NULL_ARGUMENT);
    std::vector<uint8_t> big(0x10000);
    storeField(head, 8, big.data());
    const struct {
        uint16_t code, count;
        uint16_t figure;
        uint32_t extent;
    } cases[] = {
        {0x0b, 0xFFFD, 0xFFFF, 0xFFFF},       // 0xFFFD + 2: the largest that fits
        {0x0b, 0xFFFE, 0x0000, 0x10000},      // one more wraps to 0
        {0xb0, 0x4000, 0x0002, 4 * 0x4000 + 2}, // u16 count, u32 elements
    };
    for (const auto &c : cases) {
        storeField<uint16_t>(head, 0, c.count);
        EXPECT_EQ(rowOf(c.code).encCalc(head, 0, &wire), TROV_RESULT_OK) << c.count;
        EXPECT_EQ(wire.bytes, c.figure) << c.count;
        EXPECT_EQ(wire.extent, c.extent) << c.count;
    }
}

// Methods from 0x2000 without a row of their own take everything that
// remains as raw parameters. The record figure is the length rounded up to 8
// in 16 bits, so the longest parameters wrap it to 0; the extent is rounded
// in 32 bits and holds every byte.
TEST(MethodCodecs, RawParametersTakeEverythingThatRemains) {
    const struct { uint32_t remaining; uint16_t paramsLength, recordBytes; } cases[] = {
        {0, 0, 0}, {1, 1, 8}, {8, 8, 8}, {9, 9, 16},
        {0xFFF8, 0xFFF8, 0xFFF8}, {0xFFF9, 0xFFF9, 0}, {0x10005, 5, 8},
    };
    const MethodCodecRow &raw = rowOf(0x2000);
    uint8_t byte = 0;
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "remaining " << c.remaining);
        const PacketCursor cursor{&byte, c.remaining};
        uint16_t length = 0xAAAA;
        RecordSize record{0xAAAA, 0xAAAA};
        EXPECT_EQ(raw.decCalc(&cursor, &length, &record), 0u);
        EXPECT_EQ(length, c.paramsLength);
        EXPECT_EQ(record.bytes, c.recordBytes);
        EXPECT_EQ(record.extent, (c.remaining + 7) / 8 * 8);
        EXPECT_EQ(cursor.position, &byte);
    }
}

} // namespace
} // namespace trov
