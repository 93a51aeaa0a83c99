// The event-list framings driven by test-local event rows: a "blob" event
// whose body is a u16 length and that many bytes, decoded into a record of
// the length and the bytes behind it; and long lists of built-in events
// through the exported decoder. What the built-in rows decode, in both
// framings and at every count: the differential corpus and the extent sweep.
#include <gtest/gtest.h>

#include <vector>

#include "TrovRecords.h"
#include "TrovReplyEncode.h"
#include "api/Initialised.h"
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

// An event of the blob rows: a u16 length, then n bytes of `fill`.
ListedEvent blob(uint16_t code, uint16_t n, uint8_t fill) {
    ListedEvent e{code, {uint8_t(n >> 8), uint8_t(n)}};
    e.body.insert(e.body.end(), n, fill);
    return e;
}

class EventList : public testing::TestWithParam<EventFraming> {
protected:
    // The list's block, behind the record of either framing.
    static uint16_t listCode() { return GetParam() == EventFraming::Long ? 0x4d : 0x0a; }
    static BufferDesc &block(const DecodeResult &r) {
        return GetParam() == EventFraming::Long ? static_cast<EventListBody *>(r.record)->buffer
                                                : static_cast<ShortEventListBody *>(r.record)->buffer;
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
    for (uint16_t unknown : {0x31, 0x131}) {
        SCOPED_TRACE(unknown);
        auto bytes = eventListBody(listCode(), {blob(0x30, 5, 1), blob(unknown, 1, 0)});
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
    const ListedEvent e = blob(0x30, n, 0x5A);
    auto bytes = eventListBody(listCode(), {e, e, e, e});
    DecodeResult r{};
    ASSERT_EQ(decode(bytes, r), 0u);
    const uint32_t entries = 4 * (GetParam() == EventFraming::Long ? 24u : 16u);
    const uint16_t wrapped = static_cast<uint16_t>(entries + 4 * (8 + n));
    const BufferDesc &b = block(r);
    EXPECT_EQ(b.capacity, wrapped);
    EXPECT_LT(b.capacity, 1000);
    trovFree(b.data);
    trovFree(r.record);
}

// Past the first 256 events, whose rows the size pass keeps for the decode
// pass (later rows are looked up again), and above what a u8 count holds:
// of 257 events behind a short count, the count's 1 is decoded and the rest
// left unread. Events 0xAA (u8 u32 u32; record 16 bytes) and 0x04 (u8, a
// u8-counted string of i % 10 bytes; record 24, the bytes behind it rounded
// up to 8) alternate so that event i and event i + 256 differ. The decoded
// list encodes back to the events its count announces.
TEST_P(EventList, BuiltInEventsPastTheKeptRowsAndAboveTheCountWidth) {
    const bool isLong = GetParam() == EventFraming::Long;
    struct Count {
        uint32_t events, count; // events on the wire; the count announces `count` of them
    };
    const std::vector<Count> counts =
        isLong ? std::vector<Count>{{300, 300}} : std::vector<Count>{{255, 255}, {257, 1}};
    for (const Count &n : counts) {
        SCOPED_TRACE(testing::Message() << n.events << " events, count " << n.count);
        std::vector<ListedEvent> events;
        // The entries, then the records of the first `count` events.
        uint32_t recordBytes = n.count * (isLong ? sizeof(EventEntry) : sizeof(EventBriefEntry));
        for (uint32_t i = 0; i < n.events; ++i) {
            ListedEvent e{uint16_t(i % 3 == 0 ? 0xAA : 0x04), {uint8_t(i)}};
            if (e.code == 0xAA) {
                putWire(e.body, 0xA0000000 | i, 4);
                putWire(e.body, i * 0x01000193, 4);
            } else {
                e.body.push_back(uint8_t(i % 10));
                for (uint32_t k = 0; k < i % 10; ++k) e.body.push_back(uint8_t(i + k));
            }
            if (i < n.count) recordBytes += e.code == 0xAA ? 16 : 24 + (i % 10 + 7) / 8 * 8;
            events.push_back(e);
        }
        const Decoded d(replyPacket(listCode(), eventListBody(listCode(), events, int(n.count))));
        ASSERT_EQ(d.result, 0u);
        EXPECT_EQ(block(d.out).capacity, recordBytes);
        HeaderInfo h = d.info;
        EncodeOutput out{nullptr, 0};
        ASSERT_EQ(TROV_EncodeReply(&h, d.out.record, &out), 0u);
        events.resize(n.count);
        EXPECT_EQ(std::vector<uint8_t>(out.data, out.data + out.length),
                  replyPacket(listCode(), eventListBody(listCode(), events)));
        trovFree(out.data);
    }
}

INSTANTIATE_TEST_SUITE_P(Framings, EventList, testing::Values(EventFraming::Long, EventFraming::Short),
                         [](const auto &info) { return info.param == EventFraming::Long ? "Long" : "Short"; });

} // namespace
} // namespace trov
