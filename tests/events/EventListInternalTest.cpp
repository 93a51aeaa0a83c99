// The event-list framings driven by test-local event rows: a "blob" event
// whose body is a u16 length and that many bytes, decoded into a record of
// the length and the bytes behind it. What the built-in rows decode, in both
// framings and at every count: the differential corpus and the extent sweep.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

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
    static void freeAll(DecodeResult &r) {
        if (r.record == nullptr) return;
        const bool isLong = GetParam() == EventFraming::Long;
        BufferDesc &b = isLong ? static_cast<EventListBody *>(r.record)->buffer
                               : static_cast<ShortEventListBody *>(r.record)->buffer;
        trovFree(b.data);
        trovFree(r.record);
        r.record = nullptr;
    }
    TrovResult decode(std::vector<uint8_t> &bytes, DecodeResult &r) {
        const PacketCursor body{bytes.data(), static_cast<uint32_t>(bytes.size())};
        return decodeEventList(GetParam(), tables(), 0x10, &r, &body);
    }
};

// A code without a row (0x31), or with a row of another version (0x131),
// after a good event. (Truncations: GuardPageTest.)
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
    }
}

TEST_P(EventList, CallersRecordIsKeptOnFailure) {
    alignas(8) uint8_t record[48];
    std::memset(record, 0, sizeof record);
    auto bytes = list(GetParam(), {blobEvent(GetParam(), 0x99, 1, 0)});
    DecodeResult r{record, nullptr, 0};
    EXPECT_EQ(decode(bytes, r), 12u);
    EXPECT_EQ(r.record, record);
    EXPECT_EQ(r.type, 6);
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
    const BufferDesc &b = GetParam() == EventFraming::Long ? static_cast<EventListBody *>(r.record)->buffer
                                                           : static_cast<ShortEventListBody *>(r.record)->buffer;
    EXPECT_EQ(b.capacity, wrapped);
    EXPECT_LT(b.capacity, 1000);
    freeAll(r);
}

INSTANTIATE_TEST_SUITE_P(Framings, EventList, testing::Values(EventFraming::Long, EventFraming::Short),
                         [](const auto &info) { return info.param == EventFraming::Long ? "Long" : "Short"; });

} // namespace
} // namespace trov
