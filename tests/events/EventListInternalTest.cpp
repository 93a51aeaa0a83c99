// The event-list framings driven by test-local event rows: a "blob" event
// whose body is a u16 length and that many bytes, decoded into a record of
// the length and the bytes behind it; and long lists of built-in events
// through the exported decoder. What the built-in rows decode, in both
// framings and at every count: the differential corpus and the extent sweep.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "TrovRecords.h"
#include "api/ReplyPacket.h"
#include "engine/Cursor.h"
#include "events/EventList.h"

namespace trov {
namespace {

TrovResult blobDecCalc(PacketCursor *c, uint8_t, RecordSize *size) {
    if (c->remaining < 2) return TROV_RESULT_SHORT_INPUT;
    const uint32_t n = loadU16(c->position);
    if (c->remaining < 2 + n) return TROV_RESULT_SHORT_INPUT;
    advance(*c, 2 + n);
    const uint32_t bytes = 8 + ((n + 7) & ~7u);
    *size = RecordSize{static_cast<uint16_t>(bytes), bytes};
    return TROV_RESULT_OK;
}

void *blobDecode(void *record, PacketCursor *c, uint8_t) {
    const uint16_t n = getU16(*c);
    storeField<uint16_t>(record, 0, n);
    getBytes(*c, static_cast<uint8_t *>(record) + 8, n);
    return static_cast<uint8_t *>(record) + 8 + ((n + 7) & ~7u);
}

constexpr EventCodecRow kEvents[] = {{0x0030, 0, blobDecCalc, blobDecode},
                                     {0x0131, 0x11, blobDecCalc, blobDecode}, // another version
                                     {}};

Tables tables() {
    Tables t{};
    t.fuEvents = kEvents;
    return t;
}

std::vector<uint8_t> blobEvent(EventFraming framing, uint16_t code, uint16_t n, uint8_t fill) {
    std::vector<uint8_t> e;
    if (framing == EventFraming::Long) e = {0x01, 0x02, 0, 0, 0, 3, 0, 0, 0, 4, 5};
    e.push_back(uint8_t(code >> 8));
    e.push_back(uint8_t(code));
    if (framing == EventFraming::Short) e.push_back(0x77);
    e.push_back(uint8_t(n >> 8));
    e.push_back(uint8_t(n));
    e.insert(e.end(), n, fill);
    return e;
}

std::vector<uint8_t> list(EventFraming framing, const std::vector<std::vector<uint8_t>> &events) {
    std::vector<uint8_t> b;
    if (framing == EventFraming::Long)
        b = {0xA1, 0xA2, 0xA3, 0xA4, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0A, uint8_t(events.size() >> 8),
             uint8_t(events.size())};
    else
        b = {0xA1, 0xA2, 0xA3, 0xA4, uint8_t(events.size())};
    for (const auto &e : events) b.insert(b.end(), e.begin(), e.end());
    return b;
}

class EventList : public testing::TestWithParam<EventFraming> {
protected:
    // The list's block, behind the record of either framing.
    static BufferDesc &block(const DecodeResult &r) {
        return GetParam() == EventFraming::Long ? static_cast<EventListBody *>(r.record)->buffer
                                                : static_cast<ShortEventListBody *>(r.record)->buffer;
    }
    static void freeAll(DecodeResult &r) {
        trovFree(block(r).data);
        trovFree(r.record);
    }
    TrovResult decode(std::vector<uint8_t> &bytes, DecodeResult &r) {
        const PacketCursor body{bytes.data(), static_cast<uint32_t>(bytes.size())};
        return decodeEventList(GetParam(), tables(), 0x10, &r, &body);
    }
};

// A code without a row (0x31), or with a row of another version (0x131),
// after a good event: everything the decode allocated is released; a
// caller's record stays the caller's. (Truncations: GuardPageTest.)
TEST_P(EventList, UnknownCodesReleaseEverythingAndMarkTheResult) {
    const auto good = blobEvent(GetParam(), 0x30, 5, 1);
    for (uint16_t unknown : {0x31, 0x131}) {
        SCOPED_TRACE(unknown);
        auto bytes = list(GetParam(), {good, blobEvent(GetParam(), unknown, 1, 0)});
        DecodeResult r{nullptr, nullptr, 0x55};
        EXPECT_EQ(decode(bytes, r), TROV_RESULT_NO_EVENT_CODEC);
        EXPECT_EQ(r.type, 6);
        EXPECT_EQ(r.record, nullptr);
        EXPECT_EQ(r.buffer, nullptr);
        alignas(8) uint8_t record[48] = {};
        DecodeResult mine{record, nullptr, 0};
        EXPECT_EQ(decode(bytes, mine), TROV_RESULT_NO_EVENT_CODEC);
        EXPECT_EQ(mine.record, record);
        EXPECT_EQ(mine.type, 6);
    }
}

// Event sizes add up in 16 bits: four events of 16,392 record bytes wrap the
// total to 0x0020 + the entries. The reported capacity keeps the wrapped
// figure, yet the block has room for everything (AddressSanitizer watches).
TEST_P(EventList, WrappingTotalKeepsTheFigureAndStaysInsideTheBlock) {
    const uint16_t n = 16384;
    auto e = blobEvent(GetParam(), 0x30, n, 0x5A);
    auto bytes = list(GetParam(), {e, e, e, e});
    DecodeResult r{};
    ASSERT_EQ(decode(bytes, r), 0u);
    const uint32_t entries = 4 * (GetParam() == EventFraming::Long ? 24u : 16u);
    const uint16_t wrapped = static_cast<uint16_t>(entries + 4 * (8 + n));
    const BufferDesc &b = block(r);
    EXPECT_EQ(b.capacity, wrapped);
    EXPECT_LT(b.capacity, 1000);
    freeAll(r);
}

// Past the first 256 events, whose rows the size pass keeps for the decode
// pass (later rows are looked up again), and above what a u8 count holds:
// of 257 events behind a short count, the count's 1 is decoded and the rest
// left unread. Events 0xAA (u8 u32 u32; record 16 bytes) and 0x04 (u8, a
// u8-counted string of i % 10 bytes; record 24, the bytes behind it rounded
// up to 8) alternate so that event i and event i + 256 differ.
TEST_P(EventList, BuiltInEventsPastTheKeptRowsAndAboveTheCountWidth) {
    TROV_InitCoder();
    const bool isLong = GetParam() == EventFraming::Long;
    struct Count {
        uint32_t events, count; // events on the wire; the count announces `count` of them
    };
    const std::vector<Count> counts =
        isLong ? std::vector<Count>{{300, 300}} : std::vector<Count>{{255, 255}, {257, 1}};
    const uint32_t entryBytes = isLong ? sizeof(EventEntry) : sizeof(EventBriefEntry);
    auto code = [](uint32_t i) { return uint16_t(i % 3 == 0 ? 0xAA : 0x04); };
    for (const Count &n : counts) {
        SCOPED_TRACE(testing::Message() << n.events << " events, count " << n.count);
        std::vector<uint8_t> body = {0xA1, 0xA2, 0xA3, 0xA4};
        if (isLong) body.insert(body.end(), {5, 0, 6, 0, 7, 8, uint8_t(n.count >> 8)});
        body.push_back(uint8_t(n.count));
        auto put = [&](uint32_t v, unsigned bytes) { putWire(body, v, bytes); };
        for (uint32_t i = 0; i < n.events; ++i) {
            if (isLong) {
                put(i, 2);
                put(0x10000 + i, 4);
                put(~i, 4);
                put(i * 5, 1);
            }
            put(code(i), 2);
            if (!isLong) put(i * 5, 1);
            put(i, 1);
            if (code(i) == 0xAA) {
                put(0xA0000000 | i, 4);
                put(i * 0x01000193, 4);
                continue;
            }
            put(i % 10, 1);
            for (uint32_t k = 0; k < i % 10; ++k) put(i + k, 1);
        }
        DecodeResult r{};
        ASSERT_EQ(decodeReply(isLong ? 0x4d : 0x0a, body, r), 0u);
        const auto *longList = static_cast<EventListBody *>(r.record);
        const auto *shortList = static_cast<ShortEventListBody *>(r.record);
        EXPECT_EQ(isLong ? longList->count : shortList->count, n.count);
        const void *entries = isLong ? static_cast<void *>(longList->entries) : shortList->entries;
        ASSERT_EQ(entries, block(r).data);
        const auto *base = static_cast<const uint8_t *>(block(r).data);
        const uint8_t *next = base + n.count * entryBytes;
        for (uint32_t i = 0; i < n.count; ++i) {
            SCOPED_TRACE(i);
            if (isLong) {
                const EventEntry &e = longList->entries[i];
                ASSERT_EQ(e.field1, uint16_t(i));
                ASSERT_EQ(e.field2, 0x10000 + i);
                ASSERT_EQ(e.field3, ~i);
                ASSERT_EQ(e.field4, uint8_t(i * 5));
            } else {
                ASSERT_EQ(shortList->entries[i].field2, uint8_t(i * 5));
            }
            ASSERT_EQ(isLong ? longList->entries[i].eventCode : shortList->entries[i].eventCode, code(i));
            const void *event = isLong ? longList->entries[i].body : shortList->entries[i].body;
            ASSERT_EQ(event, next);
            if (code(i) == 0xAA) {
                const auto &e = *static_cast<const TrovEvent00AA *>(event);
                ASSERT_EQ(e.value0, uint8_t(i));
                ASSERT_EQ(e.value1, 0xA0000000 | i);
                ASSERT_EQ(e.value2, i * 0x01000193);
                next += 16;
                continue;
            }
            const auto &e = *static_cast<const TrovEvent0004 *>(event);
            const uint8_t length = uint8_t(i % 10);
            ASSERT_EQ(e.value0, uint8_t(i));
            ASSERT_EQ(e.string1.length, length);
            ASSERT_EQ(e.string1.data, length == 0 ? nullptr : next + 24);
            for (uint8_t k = 0; k < length; ++k) ASSERT_EQ(e.string1.data[k], uint8_t(i + k));
            next += 24 + ((length + 7) & ~7);
        }
        EXPECT_EQ(block(r).capacity, next - base);
        freeAll(r);
    }
}

INSTANTIATE_TEST_SUITE_P(Framings, EventList, testing::Values(EventFraming::Long, EventFraming::Short),
                         [](const auto &info) { return info.param == EventFraming::Long ? "Long" : "Short"; });

} // namespace
} // namespace trov
