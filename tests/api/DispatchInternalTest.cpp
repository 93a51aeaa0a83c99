// The shared lookup rule, attribute and method lookups and the selectors, on
// tables of the test's own; then the raw-method row's operations.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "api/Dispatch.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

// Rows are told apart by their address; the operations are never called.
constexpr BodyCodecRow kBodies[] = {
    {5, 0x10, nullptr, nullptr}, // [0]
    {5, 0, nullptr, nullptr},    // [1] code 5 for every other version
    {7, 0, nullptr, nullptr},    // [2]
    {7, 0x10, nullptr, nullptr}, // [3] shadowed by [2]
    {8, 0x11, nullptr, nullptr}, // [4]
    {0, 0, nullptr, nullptr},    // terminator
    {9, 0, nullptr, nullptr},    // beyond the terminator: never seen
};

TEST(Lookup, TerminatorFirstMatchAndVersionWildcard) {
    struct Case {
        uint16_t code;
        uint8_t version;
        const BodyCodecRow *expected;
    };
    const Case cases[] = {
        {5, 0x10, &kBodies[0]}, {5, 0x11, &kBodies[1]}, {5, 0x00, &kBodies[1]},
        {7, 0x10, &kBodies[2]}, {7, 0xFF, &kBodies[2]}, {8, 0x11, &kBodies[4]},
        {8, 0x10, nullptr},     {9, 0x10, nullptr},     {6, 0x10, nullptr},
        {0, 0x10, nullptr},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "code " << c.code << " version " << int{c.version});
        EXPECT_EQ(findRow(kBodies, c.code, c.version), c.expected);
    }
    EXPECT_EQ(findRow<BodyCodecRow>(nullptr, 5, 0x10), nullptr);
}

constexpr uint16_t kIdsV20[] = {0x100, 0x200, 0x200, 0};
constexpr uint16_t kIdsV10[] = {0x200, 0x300, 0};
constexpr uint16_t kIdsAny[] = {0x300, 0x400, 0};
constexpr uint16_t kIdsEmpty[] = {0};
constexpr uint16_t kIdsLate[] = {0x500, 0};

constexpr AttributeCodecRow kAttributes[] = {
    {kIdsV20, 0x20, {}},   // [0]
    {kIdsEmpty, 0, {}},    // [1] an empty list matches nothing, not even 0
    {kIdsV10, 0x10, {}},   // [2]
    {kIdsAny, 0, {}},      // [3]
    {nullptr, 0, {}},      // a null list ends the table
    {kIdsLate, 0, {}},
};

TEST(Lookup, AttributeIdentifiersServedByFirstRowWhoseVersionFits) {
    struct Case {
        uint16_t id;
        uint8_t version;
        const AttributeCodecRow *expected;
    };
    const Case cases[] = {
        {0x100, 0x20, &kAttributes[0]}, {0x100, 0x10, nullptr},
        // Listed twice in [0] for 0x20: both skipped, [2] serves 0x10.
        {0x200, 0x20, &kAttributes[0]}, {0x200, 0x10, &kAttributes[2]},
        {0x200, 0x30, nullptr},         {0x300, 0x10, &kAttributes[2]},
        {0x300, 0x30, &kAttributes[3]}, {0x400, 0x10, &kAttributes[3]},
        {0x500, 0x10, nullptr},         {0, 0x10, nullptr},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "id " << c.id << " version " << int{c.version});
        EXPECT_EQ(findAttributeRow(kAttributes, c.id, c.version), c.expected);
    }
    EXPECT_EQ(findAttributeRow(nullptr, 0x100, 0x20), nullptr);
}

constexpr BodyCodecRow kFuBodies[] = {{5, 0, nullptr, nullptr}, {0, 0, nullptr, nullptr}};
constexpr BodyCodecRow kFpBodies[] = {{6, 0, nullptr, nullptr}, {0, 0, nullptr, nullptr}};
constexpr EventCodecRow kFuEvents[] = {{5, 0, nullptr, nullptr}, {0, 0, nullptr, nullptr}};
constexpr EventCodecRow kFpEvents[] = {{6, 0, nullptr, nullptr}, {0, 0, nullptr, nullptr}};

TEST(Lookup, SelectorOneSearchesFuEveryOtherValueFp) {
    Tables t{};
    t.fuBodies = kFuBodies;
    t.fpBodies = kFpBodies;
    t.fuEvents = kFuEvents;
    t.fpEvents = kFpEvents;
    EXPECT_EQ(findBodyRow(t, 5, 0x10, 1), &kFuBodies[0]);
    EXPECT_EQ(findEventRow(t, 5, 0x10, 1), &kFuEvents[0]);
    EXPECT_EQ(findBodyRow(t, 6, 0x10, 1), nullptr);
    EXPECT_EQ(findEventRow(t, 6, 0x10, 1), nullptr);
    for (uint8_t selector : {0, 2, 3, 0x81, 0xFF}) {
        SCOPED_TRACE(testing::Message() << "selector " << int{selector});
        EXPECT_EQ(findBodyRow(t, 5, 0x10, selector), nullptr);
        EXPECT_EQ(findEventRow(t, 5, 0x10, selector), nullptr);
        EXPECT_EQ(findBodyRow(t, 6, 0x10, selector), &kFpBodies[0]);
        EXPECT_EQ(findEventRow(t, 6, 0x10, selector), &kFpEvents[0]);
    }
}

constexpr MethodCodecRow kFuMethods[] = {
    {0x30, 0x10, nullptr, nullptr, nullptr, nullptr},
    {0x2100, 0, nullptr, nullptr, nullptr, nullptr},
    {0, 0, nullptr, nullptr, nullptr, nullptr},
};
constexpr MethodCodecRow kFpMethods[] = {
    {0x40, 0, nullptr, nullptr, nullptr, nullptr},
    {0x2200, 0, nullptr, nullptr, nullptr, nullptr},
    {0, 0, nullptr, nullptr, nullptr, nullptr},
};

TEST(Lookup, MethodFallsBackToRawRowFrom0x2000) {
    Tables t{};
    t.fuMethods = kFuMethods;
    t.fpMethods = kFpMethods;
    struct Case {
        uint16_t code;
        uint8_t version;
        const MethodCodecRow *expected;
    };
    const Case cases[] = {
        {0x30, 0x10, &kFuMethods[0]},        {0x30, 0x11, nullptr},
        {0x1fff, 0x10, nullptr},             {0x40, 0x10, nullptr}, // FP table never searched
        {0x2000, 0x10, &RawMethodCodecRow},  {0xffff, 0x10, &RawMethodCodecRow},
        {0x2200, 0x10, &RawMethodCodecRow},  {0x2100, 0x10, &kFuMethods[1]},
        {0, 0x10, nullptr},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "method " << c.code << " version " << int{c.version});
        EXPECT_EQ(findMethodRow(t, c.code, c.version), c.expected);
    }
    t.fuMethods = nullptr;
    for (uint16_t code : {0x30, 0x1fff, 0x2000, 0x2100, 0xffff}) {
        SCOPED_TRACE(testing::Message() << "uninitialised, method " << code);
        EXPECT_EQ(findMethodRow(t, code, 0x10), nullptr);
    }
}

// ---- the raw-method row ---------------------------------------------------

TEST(RawMethodRow, DecCalcTakesEverythingThatRemains) {
    struct Case {
        uint32_t remaining;
        uint16_t paramsLength;
        uint16_t recordBytes;
    };
    const Case cases[] = {
        {0, 0, 0},           {1, 1, 8},           {8, 8, 8},          {9, 9, 16},
        {0xFFF8, 0xFFF8, 0xFFF8}, {0xFFF9, 0xFFF9, 0}, // the 16-bit mask wraps; the extent does not
        {0x10005, 5, 8},
    };
    uint8_t byte = 0;
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "remaining " << c.remaining);
        const PacketCursor cursor{&byte, c.remaining};
        uint16_t length = 0xAAAA;
        RecordSize record{0xAAAA, 0xAAAA};
        EXPECT_EQ(RawMethodCodecRow.decCalc(&cursor, &length, &record), 0u);
        EXPECT_EQ(length, c.paramsLength);
        EXPECT_EQ(record.bytes, c.recordBytes);
        EXPECT_EQ(record.extent, (c.remaining + 7) / 8 * 8);
        EXPECT_EQ(cursor.position, &byte);
    }
}

} // namespace
} // namespace trov
