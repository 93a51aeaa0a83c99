// Events with an attribute list: bodies worked out by hand (the short
// reports, raw values, the structure events). Every layout's round trip,
// extent and truncations: the corpus, extent and fuzz sweeps; strings' spare
// byte: StringEventsInternalTest and the corpus.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

#include "api/Initialised.h"
#include "engine/Cursor.h"
#include "events/AttributeEvents.h"

namespace trov {
namespace {

using Bytes = std::vector<uint8_t>;

class AttributeEventTest : public testing::Test {
protected:
    uint8_t byte_ = 0x9C; // a one-byte value
};

Bytes encode(const EventCodec &codec, const void *record) {
    uint16_t size = 0;
    EXPECT_EQ(codec.encCalc(record, &size), 0u);
    Bytes body(size + 3u, 0xEE); // three bytes of the next event behind the body
    PacketCursor c{body.data(), static_cast<uint32_t>(body.size())};
    codec.encode(&c, record);
    EXPECT_EQ(c.remaining, 3u) << "encode wrote other than encCalc reported";
    return body;
}

// ---- bodies worked out by hand ---------------------------------------------------------

struct Decoded {
    RecordSize size{};
    std::unique_ptr<uint8_t[]> record;
    uint32_t left = 0;
};
Decoded decode(uint16_t code, Bytes body) {
    const EventCodec *codec = findAttributeEventCodec(code);
    Decoded d;
    PacketCursor c{body.data(), static_cast<uint32_t>(body.size())};
    EXPECT_EQ(codec->decCalc(&c, 0, &d.size), 0u);
    d.record.reset(new uint8_t[d.size.extent]());
    c = PacketCursor{body.data(), static_cast<uint32_t>(body.size())};
    EXPECT_EQ(codec->decode(d.record.get(), &c, 0), d.record.get() + d.size.extent);
    d.left = c.remaining;
    return d;
}

TEST_F(AttributeEventTest, RegularLayoutByHand) {
    // 0xA3: u8, u32, then a raw value of 3 bytes and a byte value, which
    // starts at the next multiple of 8 in the record.
    const Decoded d = decode(0xA3, {0x81, 0x82, 0x83, 0x84, 0x85, 0x00, 0x02, 0x00, 0x01, 0x00, 0x03, 0xAA,
                                    0xBB, 0xCC, 0x00, 0xCB, 0x00, 0x01, 0x7F});
    const uint8_t *r = d.record.get();
    EXPECT_EQ(d.size.bytes, 24 + 32 + 8 + 8); // fixed part, two entries, two values
    EXPECT_EQ(d.size.extent, 72u);
    EXPECT_EQ(r[0], 0x81);
    EXPECT_EQ(loadField<uint32_t>(r, 4), 0x82838485u);
    const auto list = loadField<AttributeList>(r, 8);
    ASSERT_EQ(list.count, 2);
    EXPECT_EQ(reinterpret_cast<uint8_t *>(list.entries), r + 24);
    EXPECT_TRUE(list.entries[0].id == 0x0001 && list.entries[0].length == 3 && list.entries[0].value == r + 56);
    EXPECT_EQ(std::memcmp(r + 56, "\xAA\xBB\xCC", 3), 0);
    EXPECT_TRUE(list.entries[1].id == 0x00CB && list.entries[1].length == 0 && list.entries[1].value == r + 64);
    EXPECT_EQ(r[64], 0x7F);
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

TEST_F(AttributeEventTest, SixteenBitFiguresWrapWhileTheExtentHolds) {
    // 4096 byte values: 4096 x 16 of entries wraps to 0; 4096 x 8 of values remains.
    std::vector<AttributeEntry> entries(4096, AttributeEntry{0x00CB, 0, &byte_});
    const AttributeList list{4096, entries.data()};
    const EventCodec *codec = findAttributeEventCodec(0x12C);
    Bytes body = encode(*codec, &list);
    body.resize(body.size() - 3);
    const Decoded d = decode(0x12C, body);
    EXPECT_EQ(d.size.bytes, 32768);
    EXPECT_EQ(d.size.extent, 16u + 65536 + 32768);
    EXPECT_EQ(*static_cast<uint8_t *>(loadField<AttributeList>(d.record.get(), 0).entries[4095].value), 0x9C);
}

// ---- the structure events ------------------------------------------------------------------

// The structure events: head 16 + record 40 + items 16; the name's 8 bytes
// are written but not reported (the item array's size replaces what came
// before it). (Their fields built from the description: RecordWalkTest;
// where the description places them: PublicRecordsTest.)
TEST_F(AttributeEventTest, StructureEventsReportTheirItemsNotTheirName) {
    const Bytes body = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x03, 'a', 'b', 'c', 0x0A, 0x0B, 0x0C, 0x0D,
                        0x0E, 0x0F, 0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x00, 0x02, 0x21, 0x22, 0x23,
                        0x24, 0x25, 0x26, 0x27, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37};
    for (uint16_t code : kStructureEventCodes) {
        const Decoded d = decode(code, body);
        EXPECT_EQ(d.size.bytes, 16 + 40 + 16);
        EXPECT_EQ(d.size.extent, 16u + 40 + 8 + 16);
        Bytes again = encode(*findAttributeEventCodec(code), d.record.get());
        again.resize(again.size() - 3);
        EXPECT_EQ(again, body);
    }
}

} // namespace
} // namespace trov
