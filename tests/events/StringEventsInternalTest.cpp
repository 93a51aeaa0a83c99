// String events: every layout round-trips through its encode mirror and its
// decode pair, sizes as stated, refuses every truncation without moving the
// cursor, and leaves what follows the body for the next event; golden
// vectors worked out by hand for the layouts that vary the pattern.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <iomanip>
#include <memory>
#include <sstream>
#include <vector>

#include "engine/Cursor.h"
#include "events/StringEvents.h"

namespace trov {
namespace {

using Bytes = std::vector<uint8_t>;
using K = EventFieldKind;

constexpr uint32_t pad8(uint32_t n) { return (n + 7u) & ~7u; }

// A record of one layout with every variable part filled: strings of length
// L, two items, an option (kind 0, 5 or raw 200 by L), a 12-byte typed value.
struct Sample {
    alignas(8) uint8_t record[512] = {};
    Bytes text;
    alignas(8) uint8_t items[16] = {}; // two items: u8 @0, u32 @4
    alignas(8) uint8_t option[256] = {};
    alignas(8) uint8_t value[16] = {};
    uint32_t expectedBytes = 0; // worked out from the protocol's sizing rule

    Sample(const StringEventPlan &plan, uint32_t L) : text(L), expectedBytes(plan.record) {
        for (uint32_t i = 0; i < L; ++i) text[i] = static_cast<uint8_t>(0xA0 + i);
        for (int i = 0; i < 256; ++i) option[i] = static_cast<uint8_t>(0xC0 ^ i);
        for (int i = 0; i < 16; ++i) items[i] = value[i] = static_cast<uint8_t>(0xF0 + i);
        const uint8_t kind = L == 0 ? 0 : L % 2 ? 5 : 200;
        for (int k = 0; k < plan.count; ++k) {
            const EventStep &s = plan.steps[k];
            uint8_t *f = record + s.offset;
            switch (s.kind) {
            case K::U8: storeField<uint8_t>(f, 0, static_cast<uint8_t>(0x80 + k)); break;
            case K::U16: storeField<uint16_t>(f, 0, static_cast<uint16_t>(0x8001 + 0x101 * k)); break;
            case K::U32: storeField<uint32_t>(f, 0, 0x80000001u + 0x01010101u * k); break;
            case K::Gap8: *f = 0x5A; break; // must not reach the wire
            case K::Block:
                for (uint32_t i = 0; i < s.wireBytes; ++i) f[i] = static_cast<uint8_t>(k * 16 + i);
                break;
            case K::Octets8:
            case K::Octets16:
                storeField<uint16_t>(f, 0, static_cast<uint16_t>(L)); // u8 lengths read the low byte
                storeField<uint8_t *>(record, s.pointer, text.data());
                expectedBytes += pad8(L);
                break;
            case K::Items:
                storeField<uint8_t>(f, 0, 2);
                storeField<uint8_t *>(record, s.pointer, items);
                expectedBytes += 16;
                break;
            case K::Option:
                f[0] = kind;
                f[1] = kind == 5 ? 6 : static_cast<uint8_t>(L);
                storeField<uint8_t *>(record, s.pointer, option);
                expectedBytes += kind == 0 ? 0 : kind == 5 ? 8 : pad8(L);
                break;
            case K::Value:
            case K::ReservedValue:
                storeField<uint16_t>(f, 0, 20); // data type 0x14: a 12-byte value
                storeField<uint8_t *>(record, s.pointer, value);
                expectedBytes += s.kind == K::Value ? 16 : 24;
                break;
            default: break;
            }
        }
    }
};

Bytes encode(const StringEventOps &ops, const void *record) {
    uint16_t n = 0;
    EXPECT_EQ(ops.encCalc(record, &n), 0u);
    Bytes out(n);
    PacketCursor c{out.data(), n};
    ops.encode(&c, record);
    EXPECT_EQ(c.remaining, 0u) << "EncCalc and Encode disagree";
    return out;
}

class StringEventLayout : public testing::TestWithParam<size_t> {
protected:
    static void SetUpTestSuite() { TROV_InitCoder(); }
    const StringEventPlan &plan() const { return kStringEventPlans[GetParam()]; }
    const StringEventOps &ops() const { return *findStringEventOps(kStringEventLayouts[GetParam()].codes[0]); }
};

TEST_P(StringEventLayout, RoundTripsSizesAndRefusesTruncation) {
    const StringEventPlan &p = plan();
    for (uint32_t L : {0u, 1u, 7u, 8u, 9u, 255u}) {
        SCOPED_TRACE(testing::Message() << "L = " << L);
        auto sample = std::make_unique<Sample>(p, L);
        const Bytes body = encode(ops(), sample->record);
        if (GetParam() < kRegularStringEventLayouts) {
            ASSERT_EQ(body.size(), kStringEventLayouts[GetParam()].prefix + L);
            ASSERT_EQ(sample->expectedBytes, kStringEventLayouts[GetParam()].record + pad8(L));
        }
        Bytes packet = body;
        packet.insert(packet.end(), {0xEE, 0xEF, 0xF0}); // the next event
        const auto n = static_cast<uint32_t>(body.size());

        PacketCursor c{packet.data(), n + 3};
        RecordSize size{};
        ASSERT_EQ(ops().decCalc(&c, 0, &size), 0u);
        EXPECT_EQ(c.position, packet.data() + n);
        EXPECT_EQ(size.bytes, sample->expectedBytes);
        EXPECT_EQ(size.extent, sample->expectedBytes);

        // Exactly `extent` bytes, zeroed, so the sanitizer catches an overrun.
        std::unique_ptr<uint8_t[]> out(new uint8_t[size.extent]());
        PacketCursor d{packet.data(), n + 3};
        EXPECT_EQ(ops().decode(out.get(), &d, 0), out.get() + size.extent);
        EXPECT_EQ(d.position, c.position);
        for (int k = 0; k < p.count; ++k) {
            const EventStep &s = p.steps[k];
            if (s.kind == K::Gap8) {
                EXPECT_EQ(out[s.offset], 0) << "field " << k;
            }
            if (s.kind <= K::U32) {
                EXPECT_EQ(std::memcmp(out.get() + s.offset, sample->record + s.offset, s.wireBytes), 0) << k;
            }
            const auto *ptr = s.pointer != 0 ? loadField<const uint8_t *>(out.get(), s.pointer) : nullptr;
            if (ptr != nullptr) { // behind the fixed part, inside the extent, 8-aligned
                EXPECT_TRUE(ptr >= out.get() + p.record && ptr < out.get() + size.extent) << k;
                EXPECT_EQ(reinterpret_cast<uintptr_t>(ptr) % 8, 0u);
            }
            if (s.kind == K::Octets8 || s.kind == K::Octets16) {
                EXPECT_EQ(ptr == nullptr, L == 0) << k;
            }
        }
        EXPECT_EQ(encode(ops(), out.get()), body) << "the decoded record encodes to other bytes";

        // Every shorter body fails and moves nothing; 0x30's length tests
        // pass bodies up to 16 bytes short, and those decode within extent.
        for (uint32_t k = 0; k < n; ++k) {
            PacketCursor t{packet.data(), k};
            RecordSize untouched{0xBEEF, 0xDEADBEEF};
            const TrovResult r = ops().decCalc(&t, 0, &untouched);
            // A body cut inside 0x30's length field reads the missing length bytes as 0.
            const bool passes = k + p.slack >= n || (p.slack != 0 && k < p.prefix && k + p.slack >= p.prefix);
            if (!passes) {
                ASSERT_EQ(r, 5u) << k << " of " << n;
                EXPECT_EQ(t.position, packet.data());
                EXPECT_EQ(t.remaining, k);
                EXPECT_EQ(untouched.bytes, 0xBEEF);
                EXPECT_EQ(untouched.extent, 0xDEADBEEFu);
                continue;
            }
            ASSERT_EQ(r, 0u) << k;
            EXPECT_EQ(t.remaining, 0u);
            std::unique_ptr<uint8_t[]> short_(new uint8_t[untouched.extent]());
            PacketCursor u{packet.data(), k};
            EXPECT_EQ(ops().decode(short_.get(), &u, 0), short_.get() + untouched.extent);
            EXPECT_EQ(u.remaining, 0u);
        }
    }
}

std::string layoutName(const testing::TestParamInfo<size_t> &info) {
    std::ostringstream name;
    for (uint16_t code : kStringEventLayouts[info.param].codes)
        if (code != 0) name << "x" << std::hex << std::uppercase << std::setw(2) << std::setfill('0') << code;
    return name.str();
}

INSTANTIATE_TEST_SUITE_P(StringEvents, StringEventLayout, testing::Range<size_t>(0, kStringEventLayoutCount),
                         layoutName);

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

Bytes concat(std::initializer_list<Bytes> parts) {
    Bytes out;
    for (const Bytes &p : parts) out.insert(out.end(), p.begin(), p.end());
    return out;
}
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
    {"u16 length 300", 0x30, concat({pattern(85), {0x01, 0x2C}, pattern(300)}), 0, 387, 104 + 304,
     {{88, 2, 300}, {96, kPtr, 104}, {104 + 299, 1, 299 & 0xFF}}},
};

TEST(StringEventGolden, HandWorkedBodies) {
    TROV_InitCoder();
    for (const Golden &g : kGolden) {
        SCOPED_TRACE(g.what);
        const StringEventOps &ops = *findStringEventOps(g.code);
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
    TROV_InitCoder();
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
