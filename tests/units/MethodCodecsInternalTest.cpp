// The FU method codecs: every method's request written from a record, every
// method's reply decoded from bytes built here from its field list, and the
// families' sizes and failures.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "engine/Cursor.h"
#include "units/MethodCodecs.h"

namespace trov {
namespace {

const MethodCodecRow &rowOf(uint16_t code) { return *findMethodRow(builtinTables(), code, 0x10); }

// A value for field k, element i, of `width` bytes, with the high bits set.
uint32_t pattern(size_t k, uint32_t i, uint32_t width) {
    const uint32_t v = 0xF1E2D3C4u - static_cast<uint32_t>(k) * 0x01030507u - i * 0x1111u;
    return width == 4 ? v : width == 2 ? (v & 0xFFFFu) | 0x8000u : (v & 0xFFu) | 0x80u;
}

void putBig(std::vector<uint8_t> &wire, uint32_t v, uint32_t width) {
    for (uint32_t b = width; b-- > 0;) wire.push_back(static_cast<uint8_t>(v >> (8 * b)));
}

void storeNative(uint8_t *p, uint32_t v, uint32_t width) {
    if (width == 1) *p = static_cast<uint8_t>(v);
    if (width == 2) storeField(p, 0, static_cast<uint16_t>(v));
    if (width == 4) storeField(p, 0, v);
}

uint32_t loadNative(const uint8_t *p, uint32_t width) {
    return width == 1 ? *p : width == 2 ? loadField<uint16_t>(p, 0) : loadField<uint32_t>(p, 0);
}

// The wire bytes of a field list with every counted part `n` long, values by
// pattern(), built independently of the codecs.
std::vector<uint8_t> wireOf(const MethodPlan &plan, uint32_t n) {
    std::vector<uint8_t> wire;
    for (size_t k = 0; k < plan.count; ++k) {
        const MethodStep &s = plan.steps[k];
        if (s.kind == MethodFieldKind::Scalar) putBig(wire, pattern(k, 0, s.width), s.width);
        if (s.kind == MethodFieldKind::Block)
            for (uint32_t i = 0; i < s.width; ++i) wire.push_back(static_cast<uint8_t>(pattern(k, i, 1)));
        if (s.kind != MethodFieldKind::List && s.kind != MethodFieldKind::Chars) continue;
        putBig(wire, n, s.countBytes);
        for (uint32_t i = 0; i < n; ++i) putBig(wire, pattern(k, i, s.width), s.width);
    }
    return wire;
}

// Checks a decoded or hand-filled record against pattern(): every scalar,
// block and counted part (count, elements, the characters' terminating zero,
// null for an empty part, data inside [record, record + extent)).
void expectRecord(const MethodPlan &plan, const uint8_t *record, uint32_t n, uint32_t extent) {
    for (size_t k = 0; k < plan.count; ++k) {
        const MethodStep &s = plan.steps[k];
        const uint8_t *at = record + s.offset;
        if (s.kind == MethodFieldKind::Scalar) { EXPECT_EQ(loadNative(at, s.width), pattern(k, 0, s.width)) << k; }
        if (s.kind == MethodFieldKind::Block) {
            for (uint32_t i = 0; i < s.width; ++i) EXPECT_EQ(at[i], pattern(k, i, 1)) << k;
        }
        if (s.kind != MethodFieldKind::List && s.kind != MethodFieldKind::Chars) continue;
        EXPECT_EQ(loadNative(at, s.countBytes), n) << k;
        const auto *data = loadField<const uint8_t *>(at, 8);
        if (n == 0) {
            EXPECT_EQ(data, nullptr) << k;
            continue;
        }
        ASSERT_NE(data, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(data) % 8, 0u);
        EXPECT_LE(data + n * s.width + (s.kind == MethodFieldKind::Chars), record + extent);
        for (uint32_t i = 0; i < n; ++i) EXPECT_EQ(loadNative(data + i * s.width, s.width), pattern(k, i, s.width));
        if (s.kind == MethodFieldKind::Chars) { EXPECT_EQ(data[n], 0); }
    }
}

// A request record with every counted part `n` long; the parts' elements live
// in `store`.
std::vector<uint8_t> recordOf(const MethodPlan &plan, uint32_t n, std::vector<std::vector<uint8_t>> &store) {
    std::vector<uint8_t> record(plan.record + 8u, 0xEE);
    for (size_t k = 0; k < plan.count; ++k) {
        const MethodStep &s = plan.steps[k];
        uint8_t *at = record.data() + s.offset;
        if (s.kind == MethodFieldKind::Scalar) storeNative(at, pattern(k, 0, s.width), s.width);
        if (s.kind == MethodFieldKind::Block)
            for (uint32_t i = 0; i < s.width; ++i) at[i] = static_cast<uint8_t>(pattern(k, i, 1));
        if (s.kind != MethodFieldKind::List && s.kind != MethodFieldKind::Chars) continue;
        storeNative(at, n, s.countBytes);
        std::vector<uint8_t> &elements = store.emplace_back(n * s.width + 1);
        for (uint32_t i = 0; i < n; ++i) storeNative(elements.data() + i * s.width, pattern(k, i, s.width), s.width);
        storeField(at, 8, n == 0 ? nullptr : elements.data());
    }
    return record;
}

class EveryMethod : public testing::TestWithParam<size_t> {};

// Encode writes exactly what EncCalc reports, and the bytes are the record's
// fields big-endian, counted parts after their counts; a canary follows.
TEST_P(EveryMethod, RequestWritesTheRecordsFields) {
    const MethodPlan &plan = kMethodPlans[GetParam()].request;
    const MethodCodecRow &row = rowOf(kMethods[GetParam()].code);
    for (uint32_t n : {0u, 3u}) {
        std::vector<std::vector<uint8_t>> store;
        const std::vector<uint8_t> record = recordOf(plan, n, store);
        uint16_t wireBytes = 0xBEEF;
        ASSERT_EQ(row.encCalc(record.data(), 0x1234, &wireBytes), TROV_RESULT_OK);
        const std::vector<uint8_t> expected = wireOf(plan, n);
        ASSERT_EQ(wireBytes, expected.size());
        std::vector<uint8_t> out(wireBytes + 1u, 0xA5);
        PacketCursor c{out.data(), wireBytes};
        row.encode(&c, record.data(), 0x1234);
        EXPECT_EQ(c.position, out.data() + wireBytes);
        EXPECT_EQ(out.back(), 0xA5);
        out.pop_back();
        EXPECT_EQ(out, expected) << "n=" << n;
    }
}

// Replies: DecCalc reports the bytes Decode fills, into a heap block of
// exactly the extent. (Every truncation: GuardPageTest.)
TEST_P(EveryMethod, ReplyDecodesFromItsFieldList) {
    const MethodInfo &method = kMethods[GetParam()];
    const MethodPlan &plan = kMethodPlans[GetParam()].reply;
    const MethodCodecRow &row = rowOf(method.code);
    if (method.reply == MethodReply::Structured) { // decoded by hand vectors below
        PacketCursor empty{nullptr, 0};
        uint16_t length = 0;
        RecordSize size{};
        EXPECT_NE(row.decCalc(&empty, &length, &size), TROV_RESULT_OK);
        return;
    }
    for (uint32_t n : {0u, 3u}) {
        std::vector<uint8_t> wire = wireOf(plan, n);
        wire.push_back(0x5A); // a trailing byte that no reply reads
        PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
        uint16_t length = 0xBEEF;
        RecordSize size{};
        ASSERT_EQ(row.decCalc(&c, &length, &size), TROV_RESULT_OK);
        EXPECT_EQ(length, method.reply == MethodReply::Specific ? wire.size() - 1 : 0u);
        EXPECT_EQ(size.bytes, size.extent);
        EXPECT_EQ(size.extent % 8, 0u);
        if (method.reply == MethodReply::None) { EXPECT_EQ(size.extent, 0u); }
        if (method.reply == MethodReply::OneByte) { EXPECT_EQ(size.extent, 8u); }
        std::unique_ptr<uint8_t[]> record(new uint8_t[size.extent + 1u]);
        std::memset(record.get(), 0xEE, size.extent);
        void *end = row.decode(record.get(), &c);
        EXPECT_EQ(end, record.get() + size.extent);
        EXPECT_EQ(c.remaining, 1u + (method.reply == MethodReply::None ? wire.size() - 1 : 0u));
        expectRecord(plan, record.get(), n, size.extent);

    }
}

INSTANTIATE_TEST_SUITE_P(MethodCodecs, EveryMethod, testing::Range<size_t>(0, kMethodCount),
                         [](const testing::TestParamInfo<size_t> &info) {
                             char name[8];
                             std::snprintf(name, sizeof name, "m%02x", kMethods[info.param].code);
                             return std::string(name);
                         });

// Request sizes of the counted families follow their formulas. (Each fixed
// family's constant is checked at compile time.)
TEST(MethodCodecs, CountedRequestSizesFollowTheFamilies) {
    struct Counted { uint16_t code; uint32_t base, perElement; };
    const Counted counted[] = {{0x0b, 2, 1}, {0x0d, 2, 1}, {0x0c, 1, 1}, {0x0e, 1, 1}, {0x88, 1, 1},
                               {0xb8, 1, 1}, {0xb6, 1, 2}, {0xb7, 1, 2}, {0xb0, 2, 4}};
    for (const Counted &m : counted) {
        std::vector<std::vector<uint8_t>> store;
        const auto record = recordOf(kMethodPlans[methodIndex(m.code)].request, 5, store);
        uint16_t wire = 0;
        ASSERT_EQ(rowOf(m.code).encCalc(record.data(), 0, &wire), TROV_RESULT_OK);
        EXPECT_EQ(wire, m.base + 5 * m.perElement) << std::hex << m.code;
    }
}

TEST(MethodCodecs, RequestRefusals) {
    uint16_t wire = 0xBEEF;
    EXPECT_EQ(rowOf(0x66).encCalc(nullptr, 0, &wire), TROV_RESULT_OK); // no parameters, no record
    EXPECT_EQ(wire, 0);
    EXPECT_EQ(rowOf(0x75).encCalc(nullptr, 0, &wire), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(rowOf(0x75).encCalc(&wire, 0, nullptr), TROV_RESULT_NULL_ARGUMENT);
    alignas(8) uint8_t head[16] = {};
    storeField<uint16_t>(head, 0, 4); // a count without elements
    EXPECT_EQ(rowOf(0x0b).encCalc(head, 0, &wire), TROV_RESULT_NULL_ARGUMENT);
    std::vector<uint8_t> big(0x10000);
    storeField(head, 8, big.data());
    storeField<uint16_t>(head, 0, 0xFFFD); // 0xFFFD + 2 is the largest size
    EXPECT_EQ(rowOf(0x0b).encCalc(head, 0, &wire), TROV_RESULT_OK);
    EXPECT_EQ(wire, 0xFFFF);
    storeField<uint16_t>(head, 0, 0xFFFE);
    EXPECT_EQ(rowOf(0x0b).encCalc(head, 0, &wire), TROV_RESULT_SHORT_INPUT);
    storeField<uint16_t>(head, 0, 0x4000); // 4 x 0x4000 + 2
    EXPECT_EQ(rowOf(0xb0).encCalc(head, 0, &wire), TROV_RESULT_SHORT_INPUT);
    EXPECT_EQ(wire, 0xFFFF);
}

// 0xb4's reply by hand: u8, u8, u8 length + characters, u8 count + u16s.
TEST(MethodCodecs, SpecificReplyLayoutByHand) {
    const uint8_t wire[] = {0x81, 0x82, 3, 'a', 'b', 'c', 2, 0x12, 0x34, 0xFE, 0xDC};
    PacketCursor c{const_cast<uint8_t *>(wire), sizeof wire};
    uint16_t length = 0;
    RecordSize size{};
    ASSERT_EQ(rowOf(0xb4).decCalc(&c, &length, &size), TROV_RESULT_OK);
    EXPECT_EQ(length, sizeof wire);
    EXPECT_EQ(size.extent, 40u + 8 + 8); // heads at 8 and 24, then "abc\0", then two u16
    std::unique_ptr<uint8_t[]> record(new uint8_t[size.extent]);
    rowOf(0xb4).decode(record.get(), &c);
    EXPECT_EQ(record[0], 0x81);
    EXPECT_EQ(record[1], 0x82);
    EXPECT_EQ(record[8], 3);
    EXPECT_EQ(loadField<const char *>(record.get(), 16), reinterpret_cast<char *>(record.get() + 40));
    EXPECT_STREQ(loadField<const char *>(record.get(), 16), "abc");
    EXPECT_EQ(record[24], 2);
    EXPECT_EQ(loadField<const uint16_t *>(record.get(), 32)[1], 0xFEDC);
}

struct StructuredCase {
    uint16_t code;
    std::vector<uint8_t> wire;
    RecordSize size;
};

TEST(MethodCodecs, StructuredRepliesByHand) {
    const StructuredCase cases[] = {
        {0xbb, {0x7F, 2, 0x12, 0x34, 0x89, 0xAB, 0xCD, 0xEF, 0, 1, 0, 0, 0, 2}, {32, 32}},
        {0xbc, {0xDE, 0xAD, 0xBE, 0xEF, 5, 'h', 'e', 'l', 'l', 'o'}, {24, 24}},
        {0xc0, {0x12, 0x34, 0, 2, 3, 'a', 'b', 'c', 0}, {56, 56}},
    };
    for (const StructuredCase &t : cases) {
        const MethodCodecRow &row = rowOf(t.code);
        std::vector<uint8_t> wire = t.wire;
        PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
        uint16_t length = 0;
        RecordSize size{};
        ASSERT_EQ(row.decCalc(&c, &length, &size), TROV_RESULT_OK) << std::hex << t.code;
        EXPECT_EQ(length, wire.size());
        EXPECT_EQ(size.bytes, t.size.bytes);
        ASSERT_EQ(size.extent, t.size.extent);
        std::unique_ptr<uint8_t[]> buffer(new uint8_t[size.extent]());
        uint8_t *r = buffer.get();
        row.decode(r, &c);
        EXPECT_EQ(c.remaining, 0u);
        if (t.code == 0xbb) {
            EXPECT_EQ(r[0], 0x7F);
            const uint8_t *entries = loadField<const uint8_t *>(r, 8);
            EXPECT_EQ(loadField<uint16_t>(entries, 0), 0x1234);
            EXPECT_EQ(loadField<uint32_t>(entries, 4), 0x89ABCDEFu);
            EXPECT_EQ(loadField<uint32_t>(entries, 12), 2u);
        } else if (t.code == 0xbc) {
            EXPECT_EQ(loadField<uint32_t>(r, 0), 0xDEADBEEFu);
            EXPECT_STREQ(loadField<const char *>(r, 8), "hello");
        } else {
            EXPECT_EQ(loadField<uint16_t>(r, 0), 0x1234);
            const uint8_t *entries = loadField<const uint8_t *>(r, 8);
            EXPECT_EQ(entries[0], 3);
            EXPECT_EQ(std::memcmp(loadField<const uint8_t *>(entries, 8), "abc", 3), 0);
            EXPECT_EQ(loadField<const uint8_t *>(entries, 24), nullptr);
        }
    }
}

} // namespace
} // namespace trov
