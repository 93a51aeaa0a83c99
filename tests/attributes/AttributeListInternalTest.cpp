// Attribute lists nested in values: the size/write asymmetry for unknown
// identifiers, and values that hold nested lists (disagreeing lengths,
// unknown identifiers, nesting beyond the limit; their sizes, bytes and
// decoded records: the corpus and the extent sweep of row 104). The event
// rules: the hand-worked attribute events.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "api/ReplyPacket.h"
#include "api/Dispatch.h"
#include "api/Initialised.h"
#include "engine/Cursor.h"
#include "attributes/AttributeList.h"
#include "attributes/ValueForms.h"

namespace trov {
namespace {

constexpr uint8_t kVersion = 0x10;
using Bytes = std::vector<uint8_t>;

class AttributeListTest : public testing::Test {};

// Two values of fixed-size rows, 0x00CB one byte (scalar only) and 0x0070
// u16 elements with a u16 count, around an identifier without a row: the
// size pass refuses the list, the write pass skips the entry.
TEST_F(AttributeListTest, UnknownIdentifierFailsSizingButIsSkippedWhenWriting) {
    alignas(8) uint8_t byte[8] = {0x7F};
    uint16_t words[3] = {0x1234, 0xABCD, 0x0001};
    AttributeArrayHeader wordArray{3, words};
    AttributeEntry entries[] = {{0x00CB, 0, byte}, {0x0001, 0, byte}, {0x0070, 0, &wordArray}};
    const AttributeList list{3, entries};
    WireSize size{0xAAAA, 0xAAAA};
    EXPECT_EQ(kNestedAttributeLists.encCalc(&list, 1, kVersion, size), 10u);
    EXPECT_EQ(size.bytes, 0xAAAAu);
    Bytes out(64, 0xEE);
    PacketCursor c{out.data(), static_cast<uint32_t>(out.size())};
    kNestedAttributeLists.encode(c, &list, 1, kVersion);
    EXPECT_EQ(out, concat({{0x00, 0x03, 0x00, 0xCB, 0x00, 0x01, 0x7F},
                           {0x00, 0x70, 0x00, 0x08, 0x00, 0x03, 0x12, 0x34, 0xAB, 0xCD, 0x00, 0x01}, Bytes(45, 0xEE)}));
}

TEST_F(AttributeListTest, NestedValuesMustFillTheirLengthAndHaveACodec) {
    const ValueCodecOps &ops = AttributeCodecTable[103].ops;
    struct Bad {
        const char *what;
        Bytes wire;
        TrovResult expected;
    };
    const Bad cases[] = {
        {"length 2, value 1", {0x00, 0x01, 0x00, 0xCB, 0x00, 0x02, 0x7F, 0x00}, 5},
        {"length 0, value 1", {0x00, 0x01, 0x00, 0xCB, 0x00, 0x00, 0x7F}, 5},
        {"length 3, value 4", {0x00, 0x01, 0x00, 0x70, 0x00, 0x03, 0x00, 0x01, 0x12, 0x34}, 5},
        {"length 5, value 4", {0x00, 0x01, 0x00, 0x70, 0x00, 0x05, 0x00, 0x01, 0x12, 0x34, 0x99}, 5},
        {"length past the packet", {0x00, 0x01, 0x00, 0xCB, 0x00, 0x05, 0x7F}, 5},
        {"two entries announced, one present", {0x00, 0x02, 0x00, 0xCB, 0x00, 0x01, 0x7F}, 5},
        {"unknown identifier", {0x00, 0x01, 0x00, 0x01, 0x00, 0x01, 0x00}, 10},
        {"unknown identifier 0", {0x00, 0x01, 0x00, 0x00, 0x00, 0x00}, 10},
    };
    for (const Bad &b : cases) {
        Bytes wire = b.wire;
        PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
        RecordSize r{};
        EXPECT_EQ(ops.decCalc(&c, 0, &r, kVersion), b.expected) << b.what;
        EXPECT_EQ(c.position, wire.data()) << b.what;
    }
}

// Row 104 nested in itself: a list of one attribute 0x08CC whose value (in
// array form: one element) is again such a list, `depth` times, ending in an
// empty list.
Bytes selfNested(int depth) {
    Bytes v = {0x00, 0x01, 0x00, 0x00};
    for (int i = 1; i < depth; ++i) {
        Bytes outer = {0x00, 0x01, 0x00, 0x01, 0x08, 0xCC, static_cast<uint8_t>(v.size() >> 8),
                       static_cast<uint8_t>(v.size())};
        outer.insert(outer.end(), v.begin(), v.end());
        v = std::move(outer);
    }
    Bytes top = {0x00, 0x01, 0x08, 0xCC, static_cast<uint8_t>(v.size() >> 8), static_cast<uint8_t>(v.size())};
    top.insert(top.end(), v.begin(), v.end());
    return top;
}

// The same value as host records.
struct Level {
    AttributeArrayHeader value;
    AttributeList list;
    AttributeEntry entry;
};
std::vector<Level> selfNestedRecords(int depth) {
    std::vector<Level> levels(depth + 1);
    for (int i = 0; i <= depth; ++i) {
        levels[i].value = {1, &levels[i].list};
        levels[i].list = i < depth ? AttributeList{1, &levels[i].entry} : AttributeList{0, nullptr};
        if (i < depth) levels[i].entry = {0x08CC, 0, &levels[i + 1].value};
    }
    return levels; // levels[0].list is the top value, in scalar form
}

TEST_F(AttributeListTest, NestingIsBoundedNotRecursedWithoutLimit) {
    const ValueCodecOps &ops = AttributeCodecTable[103].ops;
    for (int depth : {1, 2, 8}) {
        SCOPED_TRACE(testing::Message() << "depth " << depth);
        Bytes wire = selfNested(depth);
        std::vector<Level> levels = selfNestedRecords(depth);
        WireSize size;
        ASSERT_EQ(ops.encCalc(&levels[0].list, 0, &size, kVersion), 0u);
        ASSERT_EQ(size.bytes, wire.size());
        Bytes out(size.bytes);
        PacketCursor e{out.data(), size.bytes};
        ops.encode(&e, &levels[0].list, 0, kVersion);
        EXPECT_EQ(out, wire);
        PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
        RecordSize r{};
        EXPECT_EQ(ops.decCalc(&c, 0, &r, kVersion), 0u);
        EXPECT_EQ(c.remaining, 0u);
    }
    for (int depth : {kMaxNesting + 8, 1000}) {
        SCOPED_TRACE(testing::Message() << "depth " << depth);
        Bytes wire = selfNested(depth);
        PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
        RecordSize r{};
        EXPECT_EQ(ops.decCalc(&c, 0, &r, kVersion), 5u);
        EXPECT_EQ(c.position, wire.data());
        std::vector<Level> levels = selfNestedRecords(depth);
        WireSize size{0xAAAA, 0xAAAA};
        EXPECT_NE(ops.encCalc(&levels[0].list, 0, &size, kVersion), 0u);
        EXPECT_EQ(size.bytes, 0xAAAA);
    }
}

// Entries that share one value: 256 entries a level, each pointing at the
// same next level, 4 levels deep, make 256^4 paths through a record of about
// a thousand entries. Sizing each path took hours; the size pass stops once
// no length field can state the value, and the encoder refuses it (5) with
// nothing written. (Its speed is measured by the benchmarks.)
TEST_F(AttributeListTest, SharedValuesAreSizedOncePastTheLimit) {
    constexpr int kDepth = 4, kFanout = 256;
    struct SharedLevel {
        AttributeArrayHeader value;
        AttributeList list;
        std::vector<AttributeEntry> entries;
    };
    std::vector<SharedLevel> levels(kDepth + 1);
    for (int i = kDepth; i >= 0; --i) {
        SharedLevel &l = levels[i];
        if (i < kDepth) l.entries.assign(kFanout, AttributeEntry{0x08CC, 0, &levels[i + 1].value});
        l.list = AttributeList{static_cast<uint16_t>(l.entries.size()), l.entries.empty() ? nullptr : l.entries.data()};
        l.value = {1, &l.list};
    }
    const ValueCodecOps &ops = AttributeCodecTable[103].ops;
    WireSize size;
    ASSERT_EQ(ops.encCalc(&levels[0].value, 1, &size, kVersion), 0u);
    EXPECT_TRUE(size.pastLimit());

    AttributeBody body{0x08CC, &levels[0].value, {nullptr, 0, 0}};
    HeaderInfo info{0xA7E5, 0x10, 0, 0x12, 0, 0, 0, 0, 0};
    EncodeOutput out{nullptr, 0};
    EXPECT_EQ(TROV_EncodeFU(&info, &body, &out), TROV_RESULT_SHORT_INPUT);
    EXPECT_EQ(out.data, nullptr);
}

} // namespace
} // namespace trov
