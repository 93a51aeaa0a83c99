// The attribute codec table's figures, computed from the table itself: rows,
// identifier lists, the served set, duplicates, the rows that the protocol
// names; and every identifier reaching its row through the exported size
// query.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <vector>

#include "api/Dispatch.h"
#include "attributes/RecordValueTypes.h"

namespace trov {
namespace {

using Ids = std::vector<uint16_t>;

// The identifier lists in row order, up to the terminator (bounded, so a
// missing terminator fails instead of running away).
std::vector<Ids> tableLists() {
    std::vector<Ids> lists;
    for (const AttributeCodecRow *row = AttributeCodecTable; row->identifiers != nullptr; ++row) {
        if (lists.size() == 1000) break;
        Ids ids;
        for (const uint16_t *id = row->identifiers; *id != 0; ++id) ids.push_back(*id);
        lists.push_back(ids);
    }
    return lists;
}

// The served identifiers, as the protocol lists them: inclusive ranges.
constexpr uint16_t kServedRanges[][2] = {
    {0x0002, 0x0004}, {0x0006, 0x000E}, {0x0010, 0x0010}, {0x0012, 0x0014}, {0x0017, 0x0019},
    {0x001B, 0x0020}, {0x0023, 0x0025}, {0x0027, 0x0027}, {0x002C, 0x0036}, {0x0039, 0x003C},
    {0x003F, 0x0044}, {0x0048, 0x004E}, {0x0050, 0x0051}, {0x0053, 0x0059}, {0x005B, 0x005C},
    {0x005F, 0x005F}, {0x0063, 0x006D}, {0x006F, 0x0071}, {0x0073, 0x0076}, {0x0079, 0x007E},
    {0x0081, 0x0082}, {0x0084, 0x0085}, {0x0087, 0x0088}, {0x008A, 0x008A}, {0x0090, 0x0090},
    {0x0092, 0x0093}, {0x009C, 0x009E}, {0x00A0, 0x00A1}, {0x00A5, 0x00B0}, {0x00B2, 0x00B5},
    {0x00B9, 0x00BB}, {0x00BE, 0x00BE}, {0x00C2, 0x00C3}, {0x00C5, 0x00C7}, {0x00CA, 0x00CC},
    {0x00CF, 0x00DE}, {0x00E0, 0x00EA}, {0x00EC, 0x00FF}, {0x0103, 0x0103}, {0x0105, 0x0108},
    {0x010A, 0x0126}, {0x0128, 0x0129}, {0x012B, 0x016B}, {0x03E9, 0x03EB}, {0x03EF, 0x03F5},
    {0x03F8, 0x03FB}, {0x0404, 0x0406}, {0x040A, 0x040B}, {0x040E, 0x040F}, {0x0414, 0x0417},
    {0x0419, 0x0424}, {0x0426, 0x043B}, {0x043D, 0x044C}, {0x07D1, 0x07DA}, {0x07DE, 0x07E9},
    {0x07EB, 0x07EB}, {0x07ED, 0x07F0}, {0x07F6, 0x07F6}, {0x07F8, 0x07FA}, {0x07FC, 0x07FE},
    {0x0801, 0x0804}, {0x0806, 0x0806}, {0x0809, 0x080C}, {0x080E, 0x0811}, {0x0818, 0x0818},
    {0x081A, 0x081C}, {0x081E, 0x0820}, {0x0822, 0x0828}, {0x082A, 0x082D}, {0x082F, 0x082F},
    {0x0831, 0x0834}, {0x0837, 0x083A}, {0x083D, 0x083E}, {0x0840, 0x0843}, {0x0848, 0x084F},
    {0x0853, 0x0854}, {0x0857, 0x0857}, {0x0859, 0x0860}, {0x0865, 0x086F}, {0x0873, 0x0894},
    {0x0896, 0x089E}, {0x08A0, 0x08BA}, {0x08BC, 0x09A8}, {0x0BB9, 0x0BBD}, {0x0BC5, 0x0BCC},
    {0x0BCF, 0x0BD0}, {0x0BD9, 0x0BDB}, {0x0BE0, 0x0BE0}, {0x0BE9, 0x0BEB}, {0x0BED, 0x0BF2},
    {0x0BF8, 0x0BF9}, {0x0BFB, 0x0C03}, {0x0C05, 0x0C07}, {0x0C18, 0x0C19}, {0x0C25, 0x0C29},
    {0x0C2E, 0x0C2E}, {0x0C34, 0x0C38}, {0x0C41, 0x0C44}, {0x0C46, 0x0C49}, {0x0C4B, 0x0C4B},
    {0x0C4D, 0x0C4E}, {0x0C50, 0x0C50}, {0x0C52, 0x0C69}, {0x0C6B, 0x0C75}, {0x0C77, 0x0C7C},
    {0x0C7E, 0x0C81}, {0x0C84, 0x0CA4}, {0x0FA2, 0x0FA6}, {0x0FA8, 0x0FB4}, {0x0FB7, 0x0FC0},
    {0x0FC2, 0x0FCC}, {0x1013, 0x1014}, {0x1016, 0x1016}, {0x1018, 0x101D}, {0x101F, 0x1028},
    {0x102A, 0x102D}, {0x1389, 0x1391}, {0x1771, 0x178F}, {0x28A1, 0x28A2}, {0x28B6, 0x28B7},
    {0x2969, 0x2969}, {0x2972, 0x2972}, {0x2979, 0x2989}, {0x298B, 0x299D}, {0x2A9D, 0x2A9F},
    {0x2AF9, 0x2AF9}, {0x2AFB, 0x2B07}, {0x2CED, 0x2CEF}, {0x2CF1, 0x2D06}, {0x2D51, 0x2D6A},
    {0x2DB5, 0x2DB7}, {0x2DB9, 0x2DBC}, {0x2DC2, 0x2DC5}, {0x2E19, 0x2E1C}, {0x2E1E, 0x2E21},
    {0x2E23, 0x2E26}, {0x2E7D, 0x2E8F}, {0x2EE1, 0x2EE3}, {0x2EE5, 0x2EE9}, {0x30D5, 0x30E1},
    {0x32C9, 0x32CB}, {0x36B1, 0x36B9},
};

TEST(AttributeTable, RowsIdentifierCountsAndListLengths) {
    const std::vector<Ids> lists = tableLists();
    ASSERT_EQ(lists.size(), 282u);
    EXPECT_EQ(AttributeCodecTable[282].identifiers, nullptr);
    for (size_t i = 0; i < lists.size(); ++i) EXPECT_EQ(AttributeCodecTable[i].version, 0) << "row " << i + 1;

    size_t entries = 0;
    std::set<uint16_t> distinct;
    std::map<size_t, int> rowsOfLength;
    std::vector<size_t> lengths;
    for (const Ids &ids : lists) {
        entries += ids.size();
        distinct.insert(ids.begin(), ids.end());
        ++rowsOfLength[ids.size()];
        lengths.push_back(ids.size());
    }
    EXPECT_EQ(entries, 1211u);
    EXPECT_EQ(distinct.size(), 1208u);
    EXPECT_EQ(*distinct.begin(), 0x0002);
    EXPECT_EQ(*distinct.rbegin(), 0x36B9);
    EXPECT_EQ(rowsOfLength[1], 200);
    EXPECT_EQ(rowsOfLength[2], 33);
    EXPECT_EQ(rowsOfLength[3], 20);
    EXPECT_EQ(rowsOfLength[0], 1);
    EXPECT_TRUE(lists[132].empty()) << "row 133 keeps its place with an empty list";
    std::sort(lengths.begin(), lengths.end(), std::greater<>());
    EXPECT_EQ(Ids(lengths.begin(), lengths.begin() + 10),
              (Ids{289, 127, 88, 56, 46, 32, 27, 24, 22, 21}));
}

TEST(AttributeTable, ServedIdentifiersAreExactlyTheListedRanges) {
    std::set<uint16_t> listed;
    for (const auto &r : kServedRanges)
        for (uint32_t id = r[0]; id <= r[1]; ++id) listed.insert(static_cast<uint16_t>(id));
    ASSERT_EQ(listed.size(), 1208u);
    std::set<uint16_t> served;
    for (const Ids &ids : tableLists()) served.insert(ids.begin(), ids.end());
    for (uint16_t id : listed) EXPECT_TRUE(served.count(id)) << std::hex << "0x" << id << " not served";
    for (uint16_t id : served) EXPECT_TRUE(listed.count(id)) << std::hex << "0x" << id << " not listed";
}

TEST(AttributeTable, OnlyThreeIdentifiersRepeatAndEachWithinItsOwnRow) {
    std::map<uint16_t, std::set<size_t>> rowsOf;
    std::map<uint16_t, int> occurrences;
    const std::vector<Ids> lists = tableLists();
    for (size_t i = 0; i < lists.size(); ++i)
        for (uint16_t id : lists[i]) {
            rowsOf[id].insert(i + 1);
            ++occurrences[id];
        }
    std::map<uint16_t, int> repeated;
    for (const auto &[id, n] : occurrences)
        if (n > 1) repeated[id] = n;
    EXPECT_EQ(repeated, (std::map<uint16_t, int>{{0x0162, 2}, {0x2D65, 2}, {0x2D66, 2}}));
    for (const auto &[id, rows] : rowsOf) EXPECT_EQ(rows.size(), 1u) << std::hex << "0x" << id;
}

TEST(AttributeTable, NamedRowsSitAtTheirPlaces) {
    const std::vector<Ids> lists = tableLists();
    ASSERT_EQ(lists.size(), 282u);
    EXPECT_EQ(lists[0], (Ids{0x177C, 0x1780}));
    ASSERT_EQ(lists[5].size(), 289u);
    EXPECT_EQ(Ids(lists[5].begin(), lists[5].begin() + 10),
              (Ids{0x00CB, 0x00CC, 0x0025, 0x07E0, 0x0031, 0x0036, 0x0035, 0x08BD, 0x08DB, 0x2D5A}));
    EXPECT_EQ(lists[7],
              (Ids{0x0880, 0x0FC5, 0x2A9E, 0x0C88, 0x0BC9, 0x0BE0, 0x0902, 0x0903, 0x0951, 0x0952}));
    EXPECT_EQ(lists[147], (Ids{0x2E24, 0x0987, 0x102D}));
    EXPECT_EQ(lists[148],
              (Ids{0x007A, 0x007C, 0x0076, 0x042F, 0x28A2, 0x0008, 0x0013, 0x041C, 0x08F4, 0x178D}));
}

// Through the exported size query every served identifier finds the row that
// lists it, and sizes a zeroed value (empty strings, empty nested lists,
// empty arrays) without failing.
TEST(AttributeTable, EveryIdentifierReachesItsRowThroughTheSizeQuery) {
    ASSERT_EQ(TROV_InitCoder(), 1);
    uint16_t selectorRow = 0;
    for (const RecordValueType &t : kRecordValueTypes)
        if (t.fields == nullptr) selectorRow = t.row;
    ASSERT_NE(selectorRow, 0);

    HeaderInfo info{};
    info.version = 0x10;
    const std::vector<Ids> lists = tableLists();
    for (size_t i = 0; i < lists.size(); ++i) {
        alignas(16) uint8_t value[512] = {};
        if (i + 1 == selectorRow) value[0] = 1; // the variant, 1 to 4
        for (uint16_t id : lists[i]) {
            SCOPED_TRACE(testing::Message() << "row " << i + 1 << std::hex << " id 0x" << id);
            EXPECT_EQ(lookupAttribute(id, 0x10), &AttributeCodecTable[i]);
            for (uint8_t isArray : {0, 1}) {
                uint16_t size = 0xAAAA;
                WireSize direct;
                ASSERT_EQ(TROV_GetAttributePacketSize(&info, id, value, isArray, &size), 0u);
                ASSERT_EQ(AttributeCodecTable[i].ops.encCalc(value, isArray, &direct, 0x10), 0u);
                EXPECT_EQ(size, direct.bytes);
            }
        }
    }
    for (uint16_t id : {0x0000, 0x0001, 0x0005, 0x0011, 0x016C, 0x36BA, 0xFFFF}) {
        alignas(16) uint8_t value[512] = {};
        uint16_t size = 0xAAAA;
        EXPECT_EQ(TROV_GetAttributePacketSize(&info, id, value, 0, &size), 10u) << id;
        EXPECT_EQ(size, 0xAAAA);
        EXPECT_EQ(lookupAttribute(id, 0x10), nullptr);
    }
}

} // namespace
} // namespace trov

namespace trov {
namespace {

// The built-in table is looked up through an index; a copy of its rows goes
// through the plain scan. Both must name the same row for every identifier.
TEST(AttributeIndex, AnswersAsTheScanDoesForEveryIdentifier) {
    std::vector<AttributeCodecRow> copy;
    for (const AttributeCodecRow *r = AttributeCodecTable;; ++r) {
        copy.push_back(*r);
        if (r->identifiers == nullptr) break;
    }
    for (uint32_t id = 0; id <= 0xFFFF; ++id) {
        const AttributeCodecRow *scanned = findAttributeRow(copy.data(), uint16_t(id), 0x10);
        const AttributeCodecRow *indexed = findBuiltinAttributeRow(uint16_t(id));
        ASSERT_EQ(scanned == nullptr, indexed == nullptr) << id;
        if (scanned != nullptr) {
            ASSERT_EQ(scanned - copy.data(), indexed - AttributeCodecTable) << id;
        }
    }
}

} // namespace
} // namespace trov
