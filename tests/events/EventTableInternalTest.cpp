// The event table as a whole: its 120 codes, and every code decoding through
// both list framings with the built-in tables. Event bodies come from each
// layout's encode mirror applied to a minimal record.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <vector>

#include "api/Memory.h"
#include "engine/Cursor.h"
#include "events/AttributeEvents.h"
#include "events/EventList.h"
#include "events/StringEvents.h"

namespace trov {
namespace {

constexpr uint16_t kCodes[] = {
    0x02,  0x03,  0x04,  0x05,  0x0B,  0x0E,  0x0F,  0x10,  0x11,  0x12,  0x13,  0x14,  0x18,  0x1A,
    0x28,  0x2D,  0x30,  0x35,  0x36,  0x37,  0x38,  0x39,  0x3A,  0x3C,  0x3F,  0x40,  0x41,  0x42,
    0x43,  0x44,  0x45,  0x46,  0x47,  0x48,  0x49,  0x4A,  0x52,  0x53,  0x54,  0x55,  0x56,  0x57,
    0x58,  0x59,  0x5A,  0x5B,  0x5C,  0x5D,  0x5E,  0x5F,  0x6A,  0x71,  0x78,  0x7A,  0x7D,  0x81,
    0x82,  0x98,  0x99,  0x9A,  0x9B,  0x9C,  0x9D,  0x9E,  0x9F,  0xA0,  0xA1,  0xA2,  0xA3,  0xA4,
    0xA5,  0xA6,  0xA7,  0xA8,  0xA9,  0xAA,  0xAB,  0xAC,  0xAE,  0xAF,  0xB0,  0xB1,  0xB2,  0xB3,
    0xB4,  0xB5,  0xB6,  0xB7,  0xB8,  0xB9,  0xBA,  0xBB,  0xBC,  0xBD,  0xBE,  0xBF,  0xC0,  0xC1,
    0xC2,  0xC3,  0xC4,  0xC5,  0xD9,  0xDA,  0xDB,  0xDE,  0xDF,  0xE0,  0xE1,  0xE2,  0x12C, 0x12D,
    0x12E, 0x12F, 0x130, 0x131, 0x132, 0x133, 0x135, 0x136};

TEST(EventTable, HoldsTheHundredAndTwentyCodesOnce) {
    std::set<uint16_t> seen;
    size_t rows = 0;
    for (const EventCodecRow *r = FUEventCodecTable; r->code != 0; ++r, ++rows) {
        EXPECT_TRUE(seen.insert(r->code).second) << r->code;
        EXPECT_EQ(r->version, 0);
        EXPECT_NE(r->decCalc, nullptr);
        EXPECT_NE(r->decode, nullptr);
    }
    EXPECT_EQ(rows, 120u);
    EXPECT_EQ(seen, std::set<uint16_t>(std::begin(kCodes), std::end(kCodes)));
    EXPECT_EQ(FPEventCodecTable[0].code, 0);
    // Codes of one layout share one pair of operations.
    EXPECT_EQ(findRow(FUEventCodecTable, 0x02, 0x10)->decode, findRow(FUEventCodecTable, 0xDA, 0x10)->decode);
    EXPECT_EQ(findRow(FUEventCodecTable, 0x12C, 0x10)->decCalc, findRow(FUEventCodecTable, 0x136, 0x10)->decCalc);
}

// A body for `code`: its encode mirror applied to a zeroed record, with a
// valid data type (0x14, a 12-byte value) where the layout carries a typed
// value, and the structure pointer of the structure events.
std::vector<uint8_t> sampleBody(uint16_t code) {
    alignas(8) static uint8_t record[1024];
    alignas(8) static uint8_t value[16];
    std::memset(record, 0, sizeof record);
    auto typed = [&](size_t typeAt, size_t valueAt) {
        storeField<uint16_t>(record, typeAt, 0x14);
        storeField<uint8_t *>(record, valueAt, value);
    };
    if (code == 0x36) typed(28, 32);
    if (code == 0x56) typed(10, 16);
    if (code == 0x78) typed(6, 8);
    if (code == 0xC4 || code == 0xC5) storeField<uint8_t *>(record, 0, record + 16);
    uint16_t n = 0;
    TrovResult r;
    const StringEventOps *s = findStringEventOps(code);
    const AttributeEventCodec *a = findAttributeEventCodec(code);
    r = s != nullptr ? s->encCalc(record, &n) : a->encCalc(record, &n);
    EXPECT_EQ(r, 0u) << code;
    std::vector<uint8_t> body(n);
    PacketCursor c{body.data(), n};
    if (s != nullptr) s->encode(&c, record);
    else a->encode(&c, record);
    EXPECT_EQ(c.remaining, 0u) << code;
    return body;
}

class EventFramings : public testing::TestWithParam<EventFraming> {
protected:
    void SetUp() override { TROV_InitCoder(); }
    std::vector<uint8_t> list(const std::vector<uint16_t> &codes) {
        const bool isLong = GetParam() == EventFraming::Long;
        std::vector<uint8_t> b = isLong ? std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10,
                                                                uint8_t(codes.size() >> 8), uint8_t(codes.size())}
                                        : std::vector<uint8_t>{1, 2, 3, 4, uint8_t(codes.size())};
        for (uint16_t code : codes) {
            if (isLong) b.insert(b.end(), {0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 4});
            b.push_back(uint8_t(code >> 8));
            b.push_back(uint8_t(code));
            if (!isLong) b.push_back(0x42);
            const auto body = sampleBody(code);
            b.insert(b.end(), body.begin(), body.end());
        }
        return b;
    }
    // Decodes and returns the codes of the entries, in order.
    std::vector<uint16_t> decodeCodes(std::vector<uint8_t> &bytes, DecodeResult &r) {
        const PacketCursor body{bytes.data(), static_cast<uint32_t>(bytes.size())};
        EXPECT_EQ(decodeEventList(GetParam(), builtinTables(), 0x10, &r, &body), 0u);
        std::vector<uint16_t> codes;
        if (r.record == nullptr) return codes;
        if (GetParam() == EventFraming::Long) {
            auto *b = static_cast<EventListBody *>(r.record);
            for (uint16_t i = 0; i < b->count; ++i) {
                codes.push_back(b->entries[i].eventCode);
                EXPECT_NE(b->entries[i].body, nullptr);
            }
        } else {
            auto *b = static_cast<ShortEventListBody *>(r.record);
            for (uint16_t i = 0; i < b->count; ++i) codes.push_back(b->entries[i].eventCode);
        }
        return codes;
    }
    static void release(DecodeResult &r) {
        BufferDesc *b = r.buffer;
        if (b != nullptr) trovFree(b->data);
        trovFree(r.record);
    }
};

TEST_P(EventFramings, EveryCodeDecodesAloneAndBetweenOthers) {
    for (uint16_t code : kCodes) {
        SCOPED_TRACE(code);
        auto bytes = list({0x04, code, 0x12C});
        DecodeResult r{};
        EXPECT_EQ(decodeCodes(bytes, r), (std::vector<uint16_t>{0x04, code, 0x12C}));
        release(r);
    }
}

TEST_P(EventFramings, AListOfManyCodesInOneBlock) {
    // The short framing counts events in a byte: take the first 120 either way.
    std::vector<uint16_t> codes(std::begin(kCodes), std::end(kCodes));
    auto bytes = list(codes);
    DecodeResult r{};
    EXPECT_EQ(decodeCodes(bytes, r), codes);
    release(r);
}

INSTANTIATE_TEST_SUITE_P(Framings, EventFramings, testing::Values(EventFraming::Long, EventFraming::Short),
                         [](const auto &info) { return info.param == EventFraming::Long ? "Long" : "Short"; });

} // namespace
} // namespace trov
