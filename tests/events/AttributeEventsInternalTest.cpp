// Events with an attribute list: every layout built by its encoding mirror
// and read back into a block of exactly the reported extent, with the sizes
// its runs and list add; every truncation; raw values; the structure events;
// bodies worked out by hand (including the short reports).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "engine/Cursor.h"
#include "events/AttributeEvents.h"

namespace trov {
namespace {

using Bytes = std::vector<uint8_t>;
using Item = AttributeEventItem;
constexpr uint16_t r8(uint32_t n) { return static_cast<uint16_t>((n + 7) & ~7u); }

// Record bytes of a run of m elements: reported, and written by Decode.
// Strings keep a spare byte; 0xBE's 5-byte items are reported at 5 bytes
// and written at 8.
uint32_t runReported(Item item, uint32_t m) {
    if (m == 0) return 0;
    return item == Item::Octets ? r8(m + 1) : item == Item::BytePairs ? r8(2 * m) : item == Item::U32s ? r8(4 * m) : r8(5 * m);
}
uint32_t runWritten(Item item, uint32_t m) { return m != 0 && item == Item::U32U8Items ? 8 * m : runReported(item, m); }

std::unique_ptr<uint8_t[]> zeroed(uint32_t n) { return std::unique_ptr<uint8_t[]>(new uint8_t[n]()); }

class AttributeEventTest : public testing::Test {
protected:
    void SetUp() override { TROV_InitCoder(); }

    // A raw value (0x0001 has no codec), a one-byte scalar-only value and a
    // u16 array; the last has a codec so that every truncation is caught.
    uint8_t raw_[5] = {0xD1, 0xD2, 0xD3, 0xD4, 0xD5};
    uint8_t byte_ = 0x9C;
    uint16_t words_[3] = {0x8001, 0xFEDC, 0x0102};
    AttributeArrayHeader wordArray_{3, words_};
    AttributeEntry entries_[3] = {{0x0001, 5, raw_}, {0x00CB, 0, &byte_}, {0x0070, 0, &wordArray_}};
    // Record bytes of the three values: N x 16, raw 5 -> 8, byte 8, array 16 + 8.
    static constexpr uint16_t kListBytes3 = 3 * 16 + 8 + 8 + 24;

    void expectEntries(const AttributeList &list, uint16_t n) {
        ASSERT_EQ(list.count, n);
        if (n == 0) {
            EXPECT_EQ(list.entries, nullptr);
            return;
        }
        const AttributeEntry *e = list.entries;
        const auto *values = static_cast<uint8_t *>(e[0].value);
        EXPECT_TRUE(e[0].id == 0x0001 && e[0].length == 5 && std::memcmp(values, raw_, 5) == 0);
        EXPECT_TRUE(e[1].id == 0x00CB && e[1].length == 0 && e[1].value == values + 8 && values[8] == 0x9C);
        EXPECT_TRUE(e[2].id == 0x0070 && e[2].length == 0 && e[2].value == values + 16);
        const auto *array = static_cast<AttributeArrayHeader *>(e[2].value);
        EXPECT_TRUE(array->count == 3 && std::memcmp(array->elements, words_, 6) == 0);
    }
};

Bytes encode(const AttributeEventCodec &codec, const void *record) {
    uint16_t size = 0;
    EXPECT_EQ(codec.encCalc(record, &size), 0u);
    Bytes body(size + 3u, 0xEE); // three bytes of the next event behind the body
    PacketCursor c{body.data(), static_cast<uint32_t>(body.size())};
    codec.encode(&c, record);
    EXPECT_EQ(c.remaining, 3u) << "encode wrote other than encCalc reported";
    return body;
}

// ---- every layout code, generated from the layout table ----------------------------

// Each row states its fixed part (checked against its items at compile
// time); the bare lists report theirs 16 bytes short. The runs and the list
// add their own figures.
class AttributeEventLayoutTest : public AttributeEventTest, public testing::WithParamInterface<size_t> {};

TEST_P(AttributeEventLayoutTest, MirrorBodyDecodesIntoItsExtentWithTheProtocolSizes) {
    const AttributeEventLayout &layout = kAttributeEventLayouts[GetParam()];
    const AttributeEventCodec *codec = findAttributeEventCodec(layout.codes[0]);
    const AttributeEventPlan &plan = kAttributeEventPlans[GetParam()];
    ASSERT_NE(codec, nullptr);
    bool hasRun = false;
    for (uint8_t s = 0; s < plan.count; ++s) hasRun |= attributeEventIsRun(plan.steps[s].item);

    for (uint32_t m : {0u, 1u, 3u, 7u}) {
        if (m != 0 && !hasRun) break;
        for (uint16_t n : {uint16_t{0}, uint16_t{3}}) {
            SCOPED_TRACE(testing::Message() << "M " << m << ", N " << n);
            // The record: scalars with their high bits set, runs of m elements.
            alignas(8) uint8_t record[128] = {};
            std::vector<Bytes> runs;
            runs.reserve(4);
            const uint32_t list = n != 0 ? kListBytes3 : 0;
            uint32_t reported = (layout.headUnreported ? layout.record - 16 : layout.record) + list,
                     extent = layout.record + list;
            for (uint8_t s = 0; s < plan.count; ++s) {
                const auto [item, at] = plan.steps[s];
                switch (item) {
                case Item::U8: storeField<uint8_t>(record, at, static_cast<uint8_t>(0x80 | s)); break;
                case Item::U16: storeField<uint16_t>(record, at, static_cast<uint16_t>(0x8000 | s * 0x111)); break;
                case Item::U32: storeField<uint32_t>(record, at, 0x80000000u | s * 0x01010101u); break;
                case Item::Count8: storeField<uint8_t>(record, at, static_cast<uint8_t>(m)); break;
                case Item::Count16: storeField<uint16_t>(record, at, static_cast<uint16_t>(m)); break;
                case Item::Attributes: storeField(record, at, AttributeList{n, n != 0 ? entries_ : nullptr}); break;
                default: {
                    const uint32_t stride = attributeEventRun(item).stride;
                    Bytes &data = runs.emplace_back(m * stride, 0);
                    for (uint32_t k = 0; k < data.size(); ++k)
                        if (item != Item::U32U8Items || k % 8 < 5) data[k] = static_cast<uint8_t>(0xA0 + k);
                    storeField<uint8_t *>(record, at, m != 0 ? data.data() : nullptr);
                    reported += runReported(item, m);
                    extent += runWritten(item, m);
                }
                }
            }
            const Bytes body = encode(*codec, record);

            PacketCursor c{const_cast<uint8_t *>(body.data()), static_cast<uint32_t>(body.size())};
            RecordSize size{};
            ASSERT_EQ(codec->decCalc(&c, 0, &size), 0u);
            EXPECT_EQ(c.remaining, 3u);
            EXPECT_EQ(size.bytes, reported);
            EXPECT_EQ(size.extent, extent);

            auto out = zeroed(size.extent);
            c = PacketCursor{const_cast<uint8_t *>(body.data()), static_cast<uint32_t>(body.size())};
            EXPECT_EQ(codec->decode(out.get(), &c, 0), out.get() + size.extent);
            EXPECT_EQ(c.remaining, 3u);
            for (uint8_t s = 0; s < plan.count; ++s) {
                const auto [item, at] = plan.steps[s];
                if (const uint16_t w = attributeEventWidth(item)) {
                    EXPECT_EQ(std::memcmp(out.get() + at, record + at, w), 0) << "item " << int(s);
                } else if (item == Item::Attributes) {
                    expectEntries(loadField<AttributeList>(out.get(), at), n);
                } else {
                    const auto *data = loadField<uint8_t *>(out.get(), at);
                    if (m == 0) EXPECT_EQ(data, nullptr);
                    else EXPECT_EQ(std::memcmp(data, loadField<uint8_t *>(record, at), m * attributeEventRun(item).stride), 0);
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AttributeEvent, AttributeEventLayoutTest,
                         testing::Range<size_t>(0, kAttributeEventLayoutCount),
                         [](const testing::TestParamInfo<size_t> &i) {
                             char name[8];
                             std::snprintf(name, sizeof name, "x%X", kAttributeEventLayouts[i.param].codes[0]);
                             return std::string(name);
                         });

// ---- bodies worked out by hand ---------------------------------------------------------

struct Decoded {
    RecordSize size{};
    std::unique_ptr<uint8_t[]> record;
    uint32_t left = 0;
};
Decoded decode(uint16_t code, Bytes body) {
    const AttributeEventCodec *codec = findAttributeEventCodec(code);
    Decoded d;
    PacketCursor c{body.data(), static_cast<uint32_t>(body.size())};
    EXPECT_EQ(codec->decCalc(&c, 0, &d.size), 0u);
    d.record = zeroed(d.size.extent);
    c = PacketCursor{body.data(), static_cast<uint32_t>(body.size())};
    EXPECT_EQ(codec->decode(d.record.get(), &c, 0), d.record.get() + d.size.extent);
    d.left = c.remaining;
    return d;
}

TEST_F(AttributeEventTest, RegularLayoutByHand) {
    // 0xA3: u8, u32, then a byte value and a raw value of 3 bytes.
    const Decoded d = decode(0xA3, {0x81, 0x82, 0x83, 0x84, 0x85, 0x00, 0x02, 0x00, 0xCB, 0x00, 0x01, 0x7F,
                                    0x00, 0x01, 0x00, 0x03, 0xAA, 0xBB, 0xCC});
    const uint8_t *r = d.record.get();
    EXPECT_EQ(d.size.bytes, 24 + 32 + 8 + 8); // fixed part, two entries, two values
    EXPECT_EQ(d.size.extent, 72u);
    EXPECT_EQ(r[0], 0x81);
    EXPECT_EQ(loadField<uint32_t>(r, 4), 0x82838485u);
    const auto list = loadField<AttributeList>(r, 8);
    ASSERT_EQ(list.count, 2);
    EXPECT_EQ(reinterpret_cast<uint8_t *>(list.entries), r + 24);
    EXPECT_EQ(list.entries[0].value, r + 56);
    EXPECT_EQ(r[56], 0x7F);
    EXPECT_TRUE(list.entries[1].id == 0x0001 && list.entries[1].length == 3 && list.entries[1].value == r + 64);
    EXPECT_EQ(std::memcmp(r + 64, "\xAA\xBB\xCC", 3), 0);
}

TEST_F(AttributeEventTest, CodecConsumesWhatItReadsNotTheAnnouncedLength) {
    // Bare list: the first byte value announces 9 bytes; its codec reads 1
    // and the next header follows at once. Reported 16 short of the extent.
    const Decoded d = decode(0x12C, {0x00, 0x02, 0x00, 0xCB, 0x00, 0x09, 0x7F, 0x00, 0xCB, 0x00, 0x01, 0x80});
    EXPECT_EQ(d.size.bytes, 2 * 16 + 8 + 8);
    EXPECT_EQ(d.size.extent, 16u + 48);
    EXPECT_EQ(d.left, 0u);
    const auto list = loadField<AttributeList>(d.record.get(), 0);
    EXPECT_EQ(reinterpret_cast<uint8_t *>(list.entries), d.record.get() + 16);
    EXPECT_EQ(*static_cast<uint8_t *>(list.entries[1].value), 0x80);
}

TEST_F(AttributeEventTest, RawValueRunningPastTheEndPassesOnlyWhenLast) {
    // Six bytes announced, two present: kept, the rest reads as 0.
    const Decoded d = decode(0x133, {0x00, 0x01, 0x00, 0x01, 0x00, 0x06, 0xAA, 0xBB});
    EXPECT_EQ(d.size.bytes, 16 + 8);
    EXPECT_EQ(d.left, 0u);
    const auto list = loadField<AttributeList>(d.record.get(), 0);
    EXPECT_EQ(list.entries[0].length, 6);
    EXPECT_EQ(std::memcmp(list.entries[0].value, "\xAA\xBB\0\0\0\0", 6), 0);
    // With another attribute behind it, that attribute's header is missing.
    Bytes two = {0x00, 0x02, 0x00, 0x01, 0x00, 0x06, 0xAA, 0xBB, 0x00, 0xCB};
    PacketCursor c{two.data(), static_cast<uint32_t>(two.size())};
    RecordSize size{};
    EXPECT_EQ(findAttributeEventCodec(0x133)->decCalc(&c, 0, &size), 5u);
}

TEST_F(AttributeEventTest, StringsKeepASpareByte) {
    // 0xC1: "abc" then one byte value. 32 + entry 16 + value 8 + (3 + 1 -> 8).
    Decoded d = decode(0xC1, {0x03, 'a', 'b', 'c', 0x00, 0x01, 0x00, 0xCB, 0x00, 0x01, 0x7F});
    uint8_t *r = d.record.get();
    EXPECT_EQ(d.size.bytes, 64);
    EXPECT_TRUE(r[0] == 3 && loadField<uint8_t *>(r, 8) == r + 32 && std::memcmp(r + 32, "abc", 3) == 0);
    EXPECT_EQ(loadField<uint8_t *>(r, 24), r + 40);
    // 0xC2: u16, u16, 8 bytes of string (8 + 1 -> 16), no attributes.
    d = decode(0xC2, {0x81, 0x02, 0x83, 0x04, 0x00, 0x08, 1, 2, 3, 4, 5, 6, 7, 8, 0x00, 0x00});
    r = d.record.get();
    EXPECT_EQ(d.size.bytes, 40 + 16);
    EXPECT_EQ(d.size.extent, 56u);
    EXPECT_TRUE(loadField<uint16_t>(r, 0) == 0x8102 && loadField<uint16_t>(r, 8) == 0x8304 &&
                loadField<uint16_t>(r, 10) == 8 && loadField<uint8_t *>(r, 16) == r + 40);
    EXPECT_TRUE(loadField<uint16_t>(r, 24) == 0 && loadField<void *>(r, 32) == nullptr);
}

TEST_F(AttributeEventTest, ItemsOfBEAreReportedShort) {
    // 14 bytes of fields, M items of (u32, u8), no attributes. Reported
    // 48 + 8 x ceil(5M / 8); written 48 + 8M.
    struct Case {
        uint32_t m, bytes, extent;
    };
    for (const auto [m, bytes, extent] : {Case{3, 64, 72}, Case{7, 88, 104}}) {
        Bytes body(14, 0x11);
        body.push_back(static_cast<uint8_t>(m));
        for (uint32_t k = 0; k < m; ++k) body.insert(body.end(), {0x90, 0, 0, static_cast<uint8_t>(k), 0xC0});
        body.insert(body.end(), {0x00, 0x00});
        const Decoded d = decode(0xBE, body);
        EXPECT_EQ(d.size.bytes, bytes);
        EXPECT_EQ(d.size.extent, extent);
        const uint8_t *items = loadField<uint8_t *>(d.record.get(), 24);
        EXPECT_EQ(loadField<uint32_t>(items, 8 * (m - 1)), 0x90000000u + m - 1);
        EXPECT_EQ(items[8 * (m - 1) + 4], 0xC0);
    }
}

TEST_F(AttributeEventTest, U32ArrayInTheMiddleIsReadInHostOrder) {
    const Decoded d = decode(0x98, {0x80, 0x01, 0x80, 0x02, 0x03, 0x04, 0x85, 0x86, 0x02, 0x11, 0x12, 0x13, 0x14,
                                    0x21, 0x22, 0x23, 0x24, 0x90, 0x91, 0x92, 0x93, 0x94, 0x00, 0x00});
    const uint8_t *r = d.record.get();
    EXPECT_EQ(d.size.bytes, 56 + 8);
    EXPECT_TRUE(r[9] == 0x86 && r[16] == 2 && loadField<uint32_t>(r, 32) == 0x90919293u && r[36] == 0x94);
    const uint8_t *values = loadField<uint8_t *>(r, 24);
    EXPECT_EQ(values, r + 56);
    EXPECT_TRUE(loadField<uint32_t>(values, 0) == 0x11121314u && loadField<uint32_t>(values, 4) == 0x21222324u);
}

TEST_F(AttributeEventTest, SixteenBitFiguresWrapWhileTheExtentHolds) {
    // 4096 byte values: 4096 x 16 of entries wraps to 0; 4096 x 8 of values remains.
    std::vector<AttributeEntry> entries(4096, AttributeEntry{0x00CB, 0, &byte_});
    const AttributeList list{4096, entries.data()};
    const AttributeEventCodec *codec = findAttributeEventCodec(0x12C);
    Bytes body = encode(*codec, &list);
    body.resize(body.size() - 3);
    const Decoded d = decode(0x12C, body);
    EXPECT_EQ(d.size.bytes, 32768);
    EXPECT_EQ(d.size.extent, 16u + 65536 + 32768);
    EXPECT_EQ(*static_cast<uint8_t *>(loadField<AttributeList>(d.record.get(), 0).entries[4095].value), 0x9C);
}

// ---- the structure events ------------------------------------------------------------------

TEST_F(AttributeEventTest, StructureEventByHandAndThroughItsMirror) {
    namespace se = structure_event;
    const Bytes body = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x03, 'a', 'b', 'c', 0x0A, 0x0B, 0x0C, 0x0D,
                        0x0E, 0x0F, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x00, 0x02, 0x21, 0x22, 0x23,
                        0x24, 0x25, 0x26, 0x27, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37};
    for (uint16_t code : kStructureEventCodes) {
        const Decoded d = decode(code, body);
        // Head 16 + record 40 + items 16; the name's 8 bytes are written but
        // not reported (the item array's size replaces what came before it).
        EXPECT_EQ(d.size.bytes, 16 + 40 + 16);
        EXPECT_EQ(d.size.extent, 16u + 40 + 8 + 16);
        const auto *event = reinterpret_cast<const se::Event *>(d.record.get());
        ASSERT_EQ(event->body, &event->data);
        const se::Body &b = event->data;
        EXPECT_TRUE(b.object == 0x01020304u && b.reason == 0x0506 && b.nameLength == 3);
        EXPECT_STREQ(b.name, "abc");
        EXPECT_TRUE(b.stamp.seconds == 0x0A0B0C0Du && b.stamp.milliseconds == 0x0E0F && b.stamp.zone == 0x10);
        EXPECT_TRUE(b.sequence == 0x11121314u && b.flags == 0x1516 && b.itemCount == 2);
        EXPECT_TRUE(b.items[1].tag == 0x3132 && b.items[1].state == 0x33 && b.items[1].value == 0x34353637u);

        Bytes again = encode(*findAttributeEventCodec(code), event);
        again.resize(again.size() - 3);
        EXPECT_EQ(again, body);
    }
    // No name, no items: the fixed 22 bytes; null pointers, size exactly 56.
    Bytes empty(body.begin(), body.begin() + 7);
    empty[6] = 0;
    empty.insert(empty.end(), body.begin() + 10, body.begin() + 23);
    empty.insert(empty.end(), {0x00, 0x00});
    const Decoded d = decode(0xC4, empty);
    EXPECT_EQ(d.size.bytes, 56);
    const auto *event = reinterpret_cast<const se::Event *>(d.record.get());
    EXPECT_TRUE(event->data.name == nullptr && event->data.items == nullptr && event->data.flags == 0x1516);
}

} // namespace
} // namespace trov
