// The sizing primitives of the decode size passes: budget taken, record bytes
// reported, and nothing changed on failure.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "engine/Sizing.h"

namespace trov {
namespace {

using SizeFn = TrovResult (*)(PacketCursor &, uint16_t &, int32_t &);

struct Case {
    const char *name;
    SizeFn fn;
    std::vector<uint8_t> prefix; // followed by filler up to `available` bytes
    uint32_t available;
    int32_t budget;
    TrovResult expected;
    uint16_t recordBytes; // on success
    uint32_t consumed;    // on success
};

const Case kCases[] = {
    {"u32s n=0", sizeCountedU32s, {0}, 8, 8, 0, 16, 1},
    {"u32s n=2", sizeCountedU32s, {2}, 9, 9, 0, 32, 9},
    {"u32s n=2 budget 8", sizeCountedU32s, {2}, 9, 8, 5, 0, 0},
    {"octets n=9", sizeOctets8, {9}, 12, 12, 0, 32, 10},
    {"octets n=8", sizeOctets8, {8}, 9, 9, 0, 24, 9},
    {"octets n=0", sizeOctets8, {0}, 1, 1, 0, 16, 1},
    {"octets n=5 budget 3", sizeOctets8, {5}, 8, 3, 5, 0, 0},
    {"chars8 n=7", sizeChars8, {7}, 8, 8, 0, 24, 8},
    {"chars8 n=8", sizeChars8, {8}, 9, 9, 0, 32, 9},
    {"chars8 n=0", sizeChars8, {0}, 4, 4, 0, 16, 1},
    {"chars8 n=5 budget 3", sizeChars8, {5}, 8, 3, 5, 0, 0},
    {"chars16 n=7", sizeChars16, {0, 7}, 9, 9, 0, 24, 9},
    {"chars16 n=0", sizeChars16, {0, 0}, 2, 2, 0, 16, 2},
    {"chars16 n=0x1ff", sizeChars16, {1, 0xFF}, 0x201, 0x201, 0, 16 + 0x200, 0x201},
    {"chars16 n=0xfff7 wraps", sizeChars16, {0xFF, 0xF7}, 0xFFF9, 0xFFF9, 0, 8, 0xFFF9},
    {"chars16 n=0xffff wraps", sizeChars16, {0xFF, 0xFF}, 0x10001, 0x10001, 0, 16, 0x10001},
    {"chars16 n=5 budget 6", sizeChars16, {0, 5}, 7, 6, 5, 0, 0},
    {"chars16 budget 1", sizeChars16, {0, 0}, 2, 1, 5, 0, 0},
    {"fixed12", sizeFixed12, {}, 12, 12, 0, 16, 12},
    {"fixed12 budget 11", sizeFixed12, {}, 12, 11, 5, 0, 0},
    // A budget that claims more than the cursor holds still stops at its end.
    {"octets past the cursor", sizeOctets8, {5}, 3, 100, 5, 0, 0},
    {"chars16 past the cursor", sizeChars16, {0}, 1, 100, 5, 0, 0},
    {"fixed12 past the cursor", sizeFixed12, {}, 11, 100, 5, 0, 0},
};

TEST(Sizing, BudgetTakenAndRecordBytesReported) {
    for (const Case &c : kCases) {
        SCOPED_TRACE(c.name);
        std::vector<uint8_t> bytes(c.prefix);
        bytes.resize(c.available, 0x41);
        PacketCursor cursor{bytes.data(), c.available};
        uint16_t record = 0xAAAA;
        int32_t budget = c.budget;
        EXPECT_EQ(c.fn(cursor, record, budget), c.expected);
        if (c.expected == 0) {
            EXPECT_EQ(record, c.recordBytes);
            EXPECT_EQ(budget, c.budget - static_cast<int32_t>(c.consumed));
            EXPECT_EQ(cursor.position, bytes.data() + c.consumed);
            EXPECT_EQ(cursor.remaining, c.available - c.consumed);
        } else {
            EXPECT_EQ(record, 0xAAAA);
            EXPECT_EQ(budget, c.budget);
            EXPECT_EQ(cursor.position, bytes.data());
            EXPECT_EQ(cursor.remaining, c.available);
        }
    }
}

TEST(Sizing, ZeroBudgetFailsEveryPrimitiveBeforeReading) {
    for (SizeFn fn : {sizeCountedU32s, sizeOctets8, sizeChars8, sizeChars16, sizeFixed12}) {
        uint8_t bytes[16] = {};
        PacketCursor cursor{bytes, sizeof bytes};
        uint16_t record = 0xAAAA;
        int32_t budget = 0;
        EXPECT_EQ(fn(cursor, record, budget), 5u);
        EXPECT_EQ(budget, 0);
        EXPECT_EQ(record, 0xAAAA);
        EXPECT_EQ(cursor.position, bytes);
    }
}

} // namespace
} // namespace trov
