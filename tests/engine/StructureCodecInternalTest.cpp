// The walker's passes over structured records, on the test's own plans:
// golden bytes worked out by hand, decode sizes (the array reset, counts,
// option lists, attribute entries), record offsets, round trips and the
// nesting bound.
// Attribute rows are the test's own, installed per test.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "api/Dispatch.h"
#include "engine/Cursor.h"
#include "engine/FieldWalker.h"

namespace trov {
namespace {

using Bytes = std::vector<uint8_t>;
constexpr uint64_t kCanary = 0xA5A5A5A5A5A5A5A5u;

// ---- attribute rows: 0x0101 a u32 value; 0x0202 the same but only for
// version 0x10; 0x0303 a structure holding one attribute (recursion);
// 0x0404 a codec that cannot size; 0x0505 no row.
uint8_t gForm, gVersion; // what the u32 codec was last called with
TrovResult u32EncCalc(const void *, uint8_t form, WireSize *size, uint8_t version) {
    gForm = form;
    gVersion = version;
    *size = WireSize::of(4);
    return 0;
}
void u32Encode(PacketCursor *c, const void *v, uint8_t, uint8_t) { putU32(*c, loadField<uint32_t>(v, 0)); }
TrovResult u32DecCalc(PacketCursor *c, uint8_t form, RecordSize *size, uint8_t version) {
    gForm = form;
    gVersion = version;
    if (c->remaining < 4) return 5;
    skip(*c, 4);
    *size = {8, 8};
    return 0;
}
void *u32Decode(void *r, PacketCursor *c, uint8_t, uint8_t) {
    storeField(r, 0, getU32(*c));
    return static_cast<uint8_t *>(r) + 8;
}
TrovResult failEncCalc(const void *, uint8_t, WireSize *, uint8_t) { return 1; }

using namespace fields;
constexpr Field kDeepFields[] = {entry};
constexpr Plan kDeep = structurePlan(kDeepFields);
// A structure row passes the array flag it gets on as its nesting level.
TrovResult deepEncCalc(const void *v, uint8_t a, WireSize *s, uint8_t) { return structEncCalc(kDeep, v, s, a); }
void deepEncode(PacketCursor *c, const void *v, uint8_t a, uint8_t) { structEncode(kDeep, c, v, a); }
TrovResult deepDecCalc(PacketCursor *c, uint8_t a, RecordSize *s, uint8_t) { return structDecCalc(kDeep, 16, c, s, a); }
void *deepDecode(void *r, PacketCursor *c, uint8_t a, uint8_t) {
    return structDecode(kDeep, c, r, static_cast<uint8_t *>(r) + 16, a);
}

constexpr ValueCodecOps kU32{u32EncCalc, u32Encode, u32DecCalc, u32Decode};
constexpr uint16_t kIdsV10[] = {0x0202, 0}, kIdsU32[] = {0x0101, 0}, kIdsDeep[] = {0x0303, 0},
                   kIdsFail[] = {0x0404, 0};
constexpr AttributeCodecRow kRows[] = {
    {kIdsV10, 0x10, kU32},
    {kIdsU32, 0, kU32},
    {kIdsDeep, 0, {deepEncCalc, deepEncode, deepDecCalc, deepDecode}},
    {kIdsFail, 0, {failEncCalc, u32Encode, u32DecCalc, u32Decode}},
    {nullptr, 0, {}},
};

class StructCodec : public testing::Test {
protected:
    void SetUp() override { saved_ = installedTables.exchange(&kView); }
    void TearDown() override { installedTables.store(saved_); }

private:
    static constexpr Tables kView{kRows};
    const Tables *saved_ = nullptr;
};

// ---- plans and their records ------------------------------------------------

struct Point { uint16_t x; uint32_t y; };
struct Item { uint8_t n; const char *name; uint8_t tag; };
struct All {
    uint8_t a;
    uint16_t n8;              // counts the octets
    const uint8_t *octets;
    Point point;              // a nested record
    uint8_t nChars;
    const char *chars;
    StructOptionList options;
    AttributeEntry attr;
    uint32_t nItems;          // a 4-byte count
    Item *items;              // an array of records closes the plan
};
constexpr Field kPointFields[] = {u16, u32};
constexpr Plan kPoint = structurePlan(kPointFields);
constexpr Field kItemFields[] = {count8, chars, u8};
constexpr Plan kItem = structurePlan(kItemFields);
constexpr Field kAllFields[] = {u8,     count16, plainOctets, record(kPoint, sizeof(Point)), count8,
                                chars,  options, entry,       count32, records(kItem, sizeof(Item))};
constexpr Plan kAll = structurePlan(kAllFields);
static_assert(kAll.valid && kAll.record == sizeof(All) && kItem.record == sizeof(Item) && kPoint.align == 4);
static_assert(kAll.fields[9].data == offsetof(All, items) && kAll.fields[8].offset == offsetof(All, nItems));
static_assert(kAll.wireFixed == 1 + 2 + 6 + 1 + 1 + 4 + 4);
// The alignment search stops at the first field aligned to 8: a later u32
// is not seen, and the record rounds to 8.
constexpr Field kWideFields[] = {u8, count8, plainOctets, u32};
static_assert(structurePlan(kWideFields).align == 8);

const uint8_t kOctets3[] = {0xDE, 0xAD, 0xBE};
Item gItems[2] = {{5, "hello", 0x11}, {0, nullptr, 0x22}};
uint16_t gOpt0 = 0xBEEF;
StructOption gOptions[2] = {{3, 2, {}, &gOpt0}, {9, 3, {}, const_cast<char *>("xyz")}};
uint32_t gAttrValue = 0xCAFEBABE;
All sample() {
    All r{};
    r.a = 0xA1, r.n8 = 3, r.octets = kOctets3, r.point = {0x1234, 0x89ABCDEF};
    r.nChars = 8, r.chars = "ABCDEFGH";
    r.options = {2, {}, gOptions}, r.attr = {0x0101, 0, &gAttrValue};
    r.nItems = 0x00010002; // counts as its first two bytes in memory: 2
    r.items = gItems;
    return r;
}
const Bytes kGolden = {
    0xA1, 0x00, 0x03, 0xDE, 0xAD, 0xBE,                         // a, n8, octets
    0x12, 0x34, 0x89, 0xAB, 0xCD, 0xEF,                         // point
    0x08, 'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H',                // nChars, chars
    0x02, 0x03, 0x02, 0xBE, 0xEF, 0x09, 0x03, 'x', 'y', 'z',     // options
    0x01, 0x01, 0x00, 0x04, 0xCA, 0xFE, 0xBA, 0xBE,             // attribute
    0x00, 0x01, 0x00, 0x02,                                     // nItems
    0x05, 'h', 'e', 'l', 'l', 'o', 0x11, 0x00, 0x22};           // items

struct Decoded {
    Bytes wire;
    RecordSize size{};
    std::vector<uint64_t> block; // record, extra area, two canary words
    void *end = nullptr;
    const uint8_t *base() const { return reinterpret_cast<const uint8_t *>(block.data()); }
};

// Encodes into exactly the size reported, sizes and decodes into exactly the
// extent reported, then re-encodes the decoded record: the same bytes.
Decoded roundTrip(const Plan &d, const void *record) {
    Decoded out;
    WireSize size;
    EXPECT_EQ(structEncCalc(d, record, &size), 0u);
    out.wire.resize(size.bytes);
    PacketCursor c{out.wire.data(), size.bytes};
    EXPECT_EQ(structEncode(d, &c, record), 0u);
    EXPECT_EQ(c.remaining, 0u);
    PacketCursor r{out.wire.data(), size.bytes};
    EXPECT_EQ(structDecCalc(d, d.record, &r, &out.size), 0u);
    EXPECT_EQ(r.remaining, 0u);
    out.block.assign(out.size.extent / 8 + 2, kCanary);
    PacketCursor dc{out.wire.data(), size.bytes};
    uint8_t *base = reinterpret_cast<uint8_t *>(out.block.data());
    out.end = structDecode(d, &dc, base, base + ((d.record + 7) & ~7));
    EXPECT_EQ(out.end, base + out.size.extent);
    EXPECT_EQ(dc.remaining, 0u);
    EXPECT_EQ(out.block[out.block.size() - 1], kCanary);
    EXPECT_EQ(out.block[out.block.size() - 2], kCanary);
    Bytes again(size.bytes);
    PacketCursor ac{again.data(), size.bytes};
    structEncode(d, &ac, base);
    EXPECT_EQ(again, out.wire);
    return out;
}

TEST_F(StructCodec, GoldenBytesOfEveryKindAndTheirDecodedRecord) {
    const All in = sample();
    const Decoded out = roundTrip(kAll, &in);
    EXPECT_EQ(out.wire, kGolden);
    EXPECT_NE(gForm, 0) << "attribute values travel in array form";
    EXPECT_EQ(gVersion, 0) << "and are coded at version 0";
    // The array resets the figure: only its elements and their data count.
    EXPECT_EQ(out.size.bytes, 88 + 48 + 8);
    EXPECT_EQ(out.size.extent, 88u + 8 + 16 + 32 + 8 + 8 + 8 + 48 + 8);
    PacketCursor figureOnly{const_cast<uint8_t *>(kGolden.data()), static_cast<uint32_t>(kGolden.size())};
    RecordSize figure{};
    EXPECT_EQ(structDecCalc(kAll, 85, &figureOnly, &figure), 0u); // 85 rounds to 88
    EXPECT_EQ(figure.bytes, out.size.bytes);

    // Where the extra area puts each item, and what it holds.
    All r;
    std::memcpy(&r, out.base(), sizeof r);
    auto at = [&](const void *p) { return static_cast<const uint8_t *>(p) - out.base(); };
    EXPECT_EQ(at(r.octets), 88);
    EXPECT_EQ(at(r.chars), 96);
    ASSERT_EQ(at(r.options.options), 112);
    EXPECT_EQ(at(r.options.options[0].value), 144);
    EXPECT_EQ(at(r.options.options[1].value), 152);
    EXPECT_EQ(at(r.attr.value), 160);
    ASSERT_EQ(at(r.items), 168);
    EXPECT_EQ(at(r.items[0].name), 216);
    EXPECT_STREQ(r.items[0].name, "hello");
    EXPECT_EQ(r.items[1].name, nullptr);
    EXPECT_STREQ(r.chars, "ABCDEFGH");
    EXPECT_EQ(r.nItems, 0x00010002u);
    EXPECT_EQ(r.attr.length, 0) << "a codec decoded it";
}

// (Eight characters, a 4-byte count, both kinds of option and the figure an
// array resets: the golden record above.)
constexpr Field kCharsFields[] = {count8, chars};
constexpr Field kPointsFields[] = {count8, records(kPoint, 8)};
constexpr Field kOptionsFields[] = {options};
constexpr Plan kChars = structurePlan(kCharsFields), kPoints = structurePlan(kPointsFields),
               kOptions = structurePlan(kOptionsFields), kEmpty = makePlan(kCharsFields, 0, kStructured);

TEST_F(StructCodec, DecodeSizeOfEachKind) {
    struct Case {
        const char *name;
        const Plan &d;
        Bytes wire;
        TrovResult result;
        uint16_t figure;  // extra bytes (fixed record size 0)
        uint32_t extent;
        uint32_t consumed;
    };
    Bytes raw13(16, 0xAB); // one option of kind 200 and 13 raw bytes
    raw13[0] = 1, raw13[1] = 200, raw13[2] = 13;
    const Case cases[] = {
        {"empty", kEmpty, {0x77}, 0, 0, 0, 0},
        {"7 chars take 8", kChars, {7, 'a', 'b', 'c', 'd', 'e', 'f', 'g'}, 0, 8, 8, 8},
        {"records cut short", kPoints, {2, 0, 1, 0, 0, 0, 2, 0, 3}, 5, 0, 0, 0},
        {"options: 13 raw bytes", kOptions, raw13, 0, 16 + 16, 32, 16},
        {"raw attribute", kDeep, {5, 5, 0, 3, 'a', 'b', 'c'}, 0, 8, 8, 7},
        {"raw attribute cut short", kDeep, {5, 5, 0, 4, 'a', 'b', 'c'}, 5, 0, 0, 0},
        {"a codec ignores the length field", kDeep, {1, 1, 0, 9, 0xCA, 0xFE, 0xBA, 0xBE}, 0, 8, 8, 8},
        {"a codec's failure", kDeep, {1, 1, 0, 4, 0xCA, 0xFE, 0xBA}, 5, 0, 0, 0},
        {"a version-0x10 row is not found", kDeep, {2, 2, 0, 2, 0xAA, 0xBB}, 0, 8, 8, 6},
    };
    for (const Case &k : cases) {
        SCOPED_TRACE(k.name);
        Bytes wire = k.wire;
        PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
        RecordSize size{0xAAAA, 0xAAAA};
        ASSERT_EQ(structDecCalc(k.d, 0, &c, &size), k.result);
        if (k.result != 0) continue;
        EXPECT_EQ(size.bytes, k.figure);
        EXPECT_EQ(size.extent, k.extent);
        EXPECT_EQ(c.position, wire.data() + k.consumed);
        // The decode fills exactly the extent.
        std::vector<uint64_t> block(k.extent / 8 + 5, kCanary);
        PacketCursor dc{wire.data(), static_cast<uint32_t>(wire.size())};
        auto *extra = reinterpret_cast<uint8_t *>(block.data()) + 32; // every record here fits
        EXPECT_EQ(structDecode(k.d, &dc, block.data(), extra), extra + k.extent);
        EXPECT_EQ(dc.position, c.position);
        EXPECT_EQ(block[k.extent / 8 + 4], kCanary);
    }
}

TEST_F(StructCodec, AttributesWithoutAUsableCodec) {
    constexpr Field fields[] = {u8, entry, u8};
    constexpr Plan d = structurePlan(fields);
    struct Record { uint8_t a; AttributeEntry attr; uint8_t b; };
    // No row (0x0505), only a row of version 0x10 (0x0202), a codec that
    // cannot size (0x0404): nothing is written; 0x0101 for contrast. (Their
    // raw bytes decoded: DecodeSizeOfEachKind and the corpus.)
    for (uint16_t id : {0x0202, 0x0404, 0x0505, 0x0101}) {
        SCOPED_TRACE(id);
        const Record in{0x61, {id, 0, &gAttrValue}, 0x62};
        WireSize size;
        EXPECT_EQ(structEncCalc(d, &in, &size), 0u) << "the walk's failure is not passed on";
        Bytes wire(size.bytes);
        PacketCursor c{wire.data(), size.bytes};
        structEncode(d, &c, &in);
        const Bytes expected = id == 0x0101 ? Bytes{0x61, 1, 1, 0, 4, 0xCA, 0xFE, 0xBA, 0xBE, 0x62}
                                            : Bytes{0x61, 0x62};
        EXPECT_EQ(wire, expected);
    }
    WireSize size{0xAAAA, 0xAAAA}; // an empty plan encodes nothing
    EXPECT_EQ(structEncCalc(kEmpty, &gAttrValue, &size), 0u);
    EXPECT_EQ(size.extent, 0u);
}

// A chain of plans, each an array of the one below: N levels of records.
struct Tree { uint8_t n; Tree *children; };
template <uint32_t N>
struct Chain {
    static constexpr Field kFields[] = {count8, records(Chain<N - 1>::kPlan, sizeof(Tree))};
    static constexpr Plan kPlan = structurePlan(kFields);
};
template <>
struct Chain<0> {
    static constexpr Field kFields[] = {count8, chars};
    static constexpr Plan kPlan = structurePlan(kFields);
};

TEST_F(StructCodec, NestingIsBoundedThroughArraysAndAttributes) {
    // N levels of one child each, then a leaf with no characters.
    const Plan &deepest = Chain<kMaxRecordNesting>::kPlan;
    for (uint32_t levels : {kMaxRecordNesting - 1, kMaxRecordNesting}) {
        Bytes wire(levels, 1);
        wire.push_back(0);
        PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
        RecordSize size{};
        const Plan &top = levels == kMaxRecordNesting ? deepest : Chain<kMaxRecordNesting - 1>::kPlan;
        EXPECT_EQ(structDecCalc(top, 16, &c, &size), levels < kMaxRecordNesting ? 0u : 5u) << levels;
    }
    std::vector<Tree> chain(kMaxRecordNesting);
    for (size_t i = 0; i + 1 < chain.size(); ++i) chain[i] = {1, &chain[i + 1]};
    EXPECT_EQ(roundTrip(Chain<kMaxRecordNesting - 1>::kPlan, chain.data()).size.extent, 16u * kMaxRecordNesting);

    // Attributes whose values are structures holding attributes.
    for (uint32_t levels : {kMaxRecordNesting - 1, kMaxRecordNesting}) {
        Bytes wire;
        for (uint32_t i = 0; i < levels; ++i) wire.insert(wire.end(), {3, 3, 0, 0});
        wire.insert(wire.end(), {1, 1, 0, 4, 0xCA, 0xFE, 0xBA, 0xBE});
        PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
        RecordSize size{};
        EXPECT_EQ(structDecCalc(kDeep, 16, &c, &size), levels < kMaxRecordNesting ? 0u : 5u) << levels;
    }
    // A record that holds itself encodes to the bound, and exactly as sized.
    AttributeEntry self{0x0303, 0, nullptr};
    self.value = &self;
    WireSize size;
    structEncCalc(kDeep, &self, &size);
    EXPECT_EQ(size.extent, 4 * kMaxRecordNesting);
    Bytes wire(size.bytes);
    PacketCursor c{wire.data(), size.bytes};
    structEncode(kDeep, &c, &self);
    EXPECT_EQ(c.remaining, 0u);
    EXPECT_EQ(loadU16(wire.data() + 2), 4 * kMaxRecordNesting - 4);
}

} // namespace
} // namespace trov
