// String events: golden vectors worked out by hand for the layouts that vary
// the pattern (every layout's round trip and extent: the corpus and extent
// sweeps).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "api/Initialised.h"
#include "api/ReplyPacket.h"
#include "engine/Cursor.h"
#include "events/StringEvents.h"

namespace trov {
namespace {

using Bytes = std::vector<uint8_t>;
// ---- golden vectors, worked out by hand ------------------------------------------

constexpr uint8_t kPtr = 0;              // a pointer field: value is the record offset it points to
constexpr uint64_t kNull = ~uint64_t{0}; // ... or a null pointer
struct Expect {
    uint16_t offset;
    uint8_t width; // 1, 2, 4, 8, or kPtr
    uint64_t value;
};
struct Golden {
    const char *what;
    uint16_t code;
    Bytes body;
    TrovResult result;
    uint32_t consumed, size;
    std::vector<Expect> fields; // the record is filled with 0xCC first
};

const Bytes k0x38Fixed = {0, 1, 0, 0, 0, 2, 3, 4, 0, 0, 0, 5, 0, 0, 0, 6, 0, 0, 0, 7, 0, 0, 0, 8};
const Bytes k0x38Items = {2, 0x09, 0, 0, 0, 0x0A, 0x0B, 0, 0, 0, 0x0C};
const Bytes k0x78Head = {0, 0, 0, 1, 0, 2};
const Bytes kTwelve = {0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x1B};
Bytes pattern(size_t n) {
    Bytes b(n);
    for (size_t i = 0; i < n; ++i) b[i] = static_cast<uint8_t>(i);
    return b;
}

const Golden kGolden[] = {
    {"regular", 0x02, {0x12, 0x34, 0x56, 0x78, 0x9A, 3, 'a', 'b', 'c', 0xEE}, 0, 9, 32,
     {{0, 4, 0x12345678}, {4, 1, 0x9A}, {8, 1, 3}, {16, kPtr, 24}, {24, 1, 'a'}, {26, 1, 'c'}}},
    {"unfilled field", 0x3C, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0}, 0, 16, 40,
     {{0, 1, 1}, {1, 1, 0xCC}, {2, 1, 2}, {3, 1, 3}, {4, 2, 0x0405}, {8, 4, 0x06070809}, {12, 4, 0x0A0B0C0D},
      {16, 1, 14}, {17, 1, 15}, {24, 1, 0}, {32, kPtr, kNull}}},
    {"no string", 0xAA, {1, 0, 0, 0, 2, 0, 0, 0, 3}, 0, 9, 16, {{0, 1, 1}, {4, 4, 2}, {8, 4, 3}}},
    {"no string, short", 0xAA, Bytes(8), 5, 0, 0, {}},
    {"items", 0x38, concat({k0x38Fixed, k0x38Items, {1, 'Z'}}), 0, 37, 64 + 16 + 8,
     {{24, 4, 8}, {32, 1, 2}, {40, kPtr, 64}, {72, 1, 0x0B}, {76, 4, 0x0C}, {48, 1, 1}, {56, kPtr, 80}, {80, 1, 'Z'}}},
    {"items, length byte missing", 0x38, concat({k0x38Fixed, k0x38Items}), 5, 0, 0, {}},
    {"two strings", 0x5D, {0, 1, 0, 0, 0, 2, 2, 'A', 'B', 1, 'C'}, 0, 11, 56,
     {{8, 1, 2}, {16, kPtr, 40}, {41, 1, 'B'}, {24, 1, 1}, {32, kPtr, 48}, {48, 1, 'C'}}},
    {"value of type 20 in its 24 bytes", 0x78, concat({k0x78Head, {0, 20}, kTwelve, {1, 'q'}}), 0, 22, 32 + 24 + 8,
     {{6, 2, 20}, {8, kPtr, 32}, {43, 1, 0x1B}, {24, kPtr, 56}, {56, 1, 'q'}}},
    {"value of type 3 read over", 0x78, concat({k0x78Head, {0, 3, 0x7F, 0}}), 0, 10, 32,
     {{6, 2, 3}, {8, 8, 0xCCCCCCCCCCCCCCCC}}},
    {"type without a codec", 0x78, concat({k0x78Head, {0, 16, 0}}), 13, 0, 0, {}},
    {"value cut short", 0x78, concat({k0x78Head, {0, 20, 0}}), 5, 0, 0, {}},
    // 71 bytes pass the 71-byte tests: length and missing fields read as 0.
    {"71-byte body", 0x30, pattern(71), 0, 71, 104,
     {{0, 2, 0x0001}, {36, 1, 36}, {68, 4, 0x44454600}, {80, 4, 0}, {88, 2, 0}, {96, kPtr, kNull}}},
    {"70-byte body", 0x30, pattern(70), 5, 0, 0, {}},
    // The length's high byte is the body's last: its low byte reads as 0.
    {"length's low byte missing", 0x30, concat({pattern(85), {0x00}}), 0, 86, 104, {{88, 2, 0}, {96, kPtr, kNull}}},
    {"u16 length 300", 0x30, concat({pattern(85), {0x01, 0x2C}, pattern(300)}), 0, 387, 104 + 304,
     {{88, 2, 300}, {96, kPtr, 104}, {104 + 299, 1, 299 & 0xFF}}},
};

TEST(StringEventGolden, HandWorkedBodies) {
    for (const Golden &g : kGolden) {
        SCOPED_TRACE(g.what);
        const EventCodec &ops = *findStringEventOps(g.code);
        Bytes body = g.body;
        PacketCursor c{body.data(), static_cast<uint32_t>(body.size())};
        RecordSize size{};
        ASSERT_EQ(ops.decCalc(&c, 0, &size), g.result);
        EXPECT_EQ(body.size() - c.remaining, g.consumed);
        if (g.result != 0) continue;
        EXPECT_EQ(size.bytes, g.size);
        std::unique_ptr<uint8_t[]> r(new uint8_t[size.extent]);
        std::memset(r.get(), 0xCC, size.extent);
        PacketCursor d{body.data(), static_cast<uint32_t>(body.size())};
        EXPECT_EQ(ops.decode(r.get(), &d, 0), r.get() + size.extent);
        EXPECT_EQ(d.position, c.position);
        for (const Expect &e : g.fields) {
            if (e.width == kPtr) {
                EXPECT_EQ(loadField<const uint8_t *>(r.get(), e.offset), e.value == kNull ? nullptr : r.get() + e.value)
                    << "pointer at " << e.offset;
                continue;
            }
            uint64_t v = 0;
            std::memcpy(&v, r.get() + e.offset, e.width); // little-endian host
            EXPECT_EQ(v, e.value) << "field at " << e.offset;
        }
    }
}

// The protocol's 16-bit record size wraps; the extent that Decode needs does not.
TEST(StringEventGolden, SixteenBitSizeWrapsExtentDoesNot) {
    Bytes body(87 + 65535, 0);
    body[85] = body[86] = 0xFF;
    PacketCursor c{body.data(), static_cast<uint32_t>(body.size())};
    RecordSize size{};
    ASSERT_EQ(findStringEventOps(0x30)->decCalc(&c, 0, &size), 0u);
    EXPECT_EQ(size.bytes, 104);
    EXPECT_EQ(size.extent, 104u + 65536u);
    EXPECT_EQ(c.remaining, 0u);
}

TEST(StringEventGolden, EncodeMirrorRefusesWhatItCannotWrite) {
    alignas(8) uint8_t record[64] = {};
    uint16_t n = 0;
    record[8] = 4; // 0x02: a length without data
    EXPECT_EQ(findStringEventOps(0x02)->encCalc(record, &n), 1u);
    record[8] = 0;
    storeField<uint16_t>(record, 6, 16); // 0x78 with data type 16: no codec
    EXPECT_EQ(findStringEventOps(0x78)->encCalc(record, &n), 13u);
}

} // namespace
} // namespace trov
