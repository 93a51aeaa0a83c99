// Round trips over every row of the attribute and data-type tables. For each
// row a generator writes valid wire bytes from the row's type description
// (fixed-size element, record field string, selector variants), in scalar
// form and in array form; the bytes must size, decode into a block of exactly
// the reported extent, and encode back to the same bytes, and every shorter
// packet must fail the size pass without moving the cursor.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "api/Dispatch.h"
#include "attributes/FixedValueTypes.h"
#include "attributes/RecordValueTypes.h"

namespace trov {
namespace {

constexpr uint8_t kVersion = 0x10;
using Bytes = std::vector<uint8_t>;

// A value type as the generator sees it.
struct Shape {
    uint8_t prefix = 0;                    // array form's count prefix; 0: scalar form only
    uint8_t wireBytes = 0;                 // a fixed-size element; 0 for a record
    const char *fields = nullptr;          // a record element's field string
    const char *const *variants = nullptr; // a selector type's variants 1 to 4
    bool known = true;
};

// Rows 133 and 143 test the 2-byte count prefix narrowly on purpose.
bool narrowRow(uint16_t row) { return row == 133 || row == 143; }

Shape shapeOfRow(uint16_t row) {
    for (const FixedValueType &t : kFixedValueTypes)
        if (t.row == row) return {t.prefixBytes, t.wireBytes, nullptr, nullptr, true};
    for (const RecordValueType &t : kRecordValueTypes)
        if (t.row == row) return {t.prefixBytes, 0, t.fields, t.fields ? nullptr : t.variants, true};
    return {0, 0, nullptr, nullptr, false};
}

enum class Lengths { Zero, Max, Random };

// Writes valid wire bytes for a shape. Lengths and counts are all 0, all at
// their maximum (255 for u8 prefixes, kMax16 for u16 prefixes, 3 nested
// attributes of 3 elements), or random; every other byte is random.
class WireGenerator {
public:
    static constexpr uint32_t kMax16 = 300;

    WireGenerator(Lengths lengths, uint32_t seed) : lengths_(lengths), rng_(seed) {}

    // Scalar form for count < 0 or a type without array form.
    Bytes value(const Shape &s, int count, uint8_t selector) {
        wire_.clear();
        if (count < 0 || s.prefix == 0) {
            element(s, selector);
        } else {
            putCount(s.prefix, static_cast<uint32_t>(count));
            for (int i = 0; i < count; ++i) element(s, selector);
        }
        return wire_;
    }

private:
    uint32_t length(uint32_t max) {
        if (lengths_ == Lengths::Zero) return 0;
        if (lengths_ == Lengths::Max) return max;
        return std::uniform_int_distribution<uint32_t>(0, max)(rng_);
    }
    void random(uint32_t n) {
        for (uint32_t i = 0; i < n; ++i) wire_.push_back(static_cast<uint8_t>(rng_()));
    }
    void putU16(uint32_t v) {
        wire_.push_back(static_cast<uint8_t>(v >> 8));
        wire_.push_back(static_cast<uint8_t>(v));
    }
    void putCount(uint8_t prefix, uint32_t n) {
        if (prefix == 2) putU16(n);
        else wire_.push_back(static_cast<uint8_t>(n));
    }

    void element(const Shape &s, uint8_t selector) {
        if (s.wireBytes != 0) return random(s.wireBytes);
        std::string_view rest;
        if (s.variants != nullptr) {
            wire_.push_back(selector);
            rest = s.variants[selector - 1];
        } else {
            rest = s.fields;
        }
        while (!rest.empty()) {
            const size_t end = rest.find(' ');
            field(rest.substr(0, end));
            rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
        }
    }

    void field(std::string_view kind) {
        if (kind == "u8") return random(1);
        if (kind == "u16") return random(2);
        if (kind == "u32") return random(4);
        if (kind == "b12") return random(12);
        if (kind == "o8" || kind == "c8" || kind == "l32") {
            const uint32_t n = length(255);
            wire_.push_back(static_cast<uint8_t>(n));
            return random(kind == "l32" ? 4 * n : n);
        }
        if (kind == "o16" || kind == "c16") {
            const uint32_t n = length(kMax16);
            putU16(n);
            return random(n);
        }
        if (kind == "attrs") {
            const uint32_t n = length(3);
            putU16(n);
            for (uint32_t i = 0; i < n; ++i) nestedAttribute();
            return;
        }
        ADD_FAILURE() << "no generator for field kind " << kind;
    }

    // An attribute of a fixed-size row: id, length, value in array form.
    void nestedAttribute() {
        const FixedValueType *t = nullptr;
        while (t == nullptr || AttributeCodecTable[t->row - 1].identifiers[0] == 0)
            t = &kFixedValueTypes[rng_() % std::size(kFixedValueTypes)];
        const uint32_t count = length(3);
        putU16(AttributeCodecTable[t->row - 1].identifiers[0]);
        putU16(t->prefixBytes == 0 ? t->wireBytes : t->prefixBytes + count * t->wireBytes);
        if (t->prefixBytes == 0) return random(t->wireBytes);
        putCount(t->prefixBytes, count);
        random(count * t->wireBytes);
    }

    Lengths lengths_;
    std::mt19937 rng_;
    Bytes wire_;
};

// Size, decode, re-encode; then every truncation. Packets, records and
// outputs are heap blocks of exactly their size, so AddressSanitizer sees any
// access past them. `narrowArray`: the row tests its count prefix narrowly and
// the value has elements, so a packet one byte short of its last element
// passes the size pass.
void checkRoundTrip(const ValueCodecOps &ops, const Bytes &wire, uint8_t isArray, bool narrowArray) {
    const uint32_t len = static_cast<uint32_t>(wire.size());
    std::unique_ptr<uint8_t[]> packet(new uint8_t[len]);
    std::copy(wire.begin(), wire.end(), packet.get());
    PacketCursor c{packet.get(), len};
    RecordSize size{0xAAAA, 0xAAAAAAAA};
    ASSERT_EQ(ops.decCalc(&c, isArray, &size, kVersion), 0u);
    EXPECT_EQ(c.position, packet.get() + len);
    EXPECT_EQ(c.remaining, 0u);
    EXPECT_EQ(size.bytes, size.extent);
    EXPECT_EQ(size.bytes % 8, 0);

    std::unique_ptr<uint8_t[]> record(new uint8_t[size.extent]());
    PacketCursor d{packet.get(), len};
    const auto end = reinterpret_cast<uintptr_t>(ops.decode(record.get(), &d, isArray, kVersion));
    const auto base = reinterpret_cast<uintptr_t>(record.get());
    EXPECT_EQ(d.remaining, 0u);
    EXPECT_LE(end, base + size.extent);
    EXPECT_EQ((end - base) % 8, 0u);

    WireSize packetBytes{0xAAAA, 0xAAAA};
    ASSERT_EQ(ops.encCalc(record.get(), isArray, &packetBytes, kVersion), 0u);
    ASSERT_EQ(packetBytes.bytes, len);
    std::unique_ptr<uint8_t[]> out(new uint8_t[len]());
    PacketCursor e{out.get(), len};
    ops.encode(&e, record.get(), isArray, kVersion);
    EXPECT_EQ(e.remaining, 0u);
    EXPECT_EQ(Bytes(out.get(), out.get() + len), wire) << "re-encoded bytes differ";

    // Each truncation sits at the very end of the block.
    for (uint32_t n = 0; n < len; ++n) {
        uint8_t *start = packet.get() + (len - n);
        std::copy(wire.begin(), wire.begin() + n, start);
        PacketCursor t{start, n};
        RecordSize s{};
        const TrovResult r = ops.decCalc(&t, isArray, &s, kVersion);
        if (narrowArray && n == len - 1) {
            ASSERT_EQ(r, 0u) << "one byte short of the last element passes the narrow test";
            EXPECT_EQ(t.remaining, 0u);
            std::unique_ptr<uint8_t[]> r2(new uint8_t[s.extent]());
            PacketCursor u{start, n};
            const auto e2 = reinterpret_cast<uintptr_t>(ops.decode(r2.get(), &u, isArray, kVersion));
            EXPECT_EQ(u.remaining, 0u);
            EXPECT_EQ(u.position, start + n);
            EXPECT_LE(e2, reinterpret_cast<uintptr_t>(r2.get()) + s.extent);
            continue;
        }
        if (r == 0 || t.position != start || t.remaining != n) {
            ADD_FAILURE() << "truncated to " << n << " of " << len << " bytes: result " << r
                          << ", cursor moved by " << (t.position - start);
            return;
        }
    }
}

struct Case {
    const char *table; // "row" or "type"
    uint16_t key;      // row number, or data-type code
    const ValueCodecOps *ops;
    Shape shape;
    bool narrow;
};

// Every row the wire generator describes: the fixed-size and record rows.
// The structure rows go record first instead (StructureRowsInternalTest).
std::vector<Case> attributeCases() {
    std::vector<Case> cases;
    for (const AttributeCodecRow *row = AttributeCodecTable; row->identifiers != nullptr; ++row) {
        const auto n = static_cast<uint16_t>(row - AttributeCodecTable + 1);
        if (shapeOfRow(n).known) cases.push_back({"row", n, &row->ops, shapeOfRow(n), narrowRow(n)});
    }
    EXPECT_EQ(cases.size(), 282u - 13u);
    return cases;
}

// Data types described as the protocol gives them: the attribute row whose
// codec a code shares, or the code's own value type.
struct DataTypeDescription {
    uint16_t code;
    uint16_t sameAsRow;
    Shape own;
};
const DataTypeDescription kDataTypes[] = {
    {0x03, 6, {}},   {0x16, 0, {2, 1}},   {0x07, 85, {}},  {0x05, 130, {}},
    {0x09, 148, {}}, {0x08, 149, {}},     {0x02, 6, {}},   {0x06, 85, {}},
    {0x04, 130, {}}, {0x14, 0, {0, 12}},  {0x17, 0, {0, 16}}, {0x15, 140, {}},
    {0x18, 0, {2, 1}}, {0x19, 0, {2, 0, "o8"}}, {0x1A, 0, {2, 0, "o16"}},
};

std::vector<Case> dataTypeCases() {
    std::vector<Case> cases;
    for (const DataTypeDescription &d : kDataTypes) {
        const DataTypeCodecRow *row = findRow(DataTypeCodecTable, d.code, kVersion);
        cases.push_back({"type", d.code, row != nullptr ? &row->ops : nullptr,
                         d.sameAsRow != 0 ? shapeOfRow(d.sameAsRow) : d.own, false});
    }
    return cases;
}

class ValueRoundTrip : public testing::TestWithParam<Case> {
protected:
    static void SetUpTestSuite() { TROV_InitCoder(); }
};

TEST_P(ValueRoundTrip, GeneratedWireSizesDecodesAndEncodesBack) {
    const Case &c = GetParam();
    ASSERT_NE(c.ops, nullptr) << "no codec row";
    ASSERT_TRUE(c.shape.known);
    struct Form {
        uint8_t isArray;
        int count; // < 0: scalar wire
    };
    // Types without array form ignore the flag: their wire is the scalar wire.
    const std::vector<Form> forms = c.shape.prefix != 0
                                        ? std::vector<Form>{{0, -1}, {1, 0}, {1, 1}, {1, 3}}
                                        : std::vector<Form>{{0, -1}, {1, -1}};
    const uint8_t selectors = c.shape.variants != nullptr ? 4 : 1;
    uint32_t seed = c.key * 7919u;
    for (const Form &f : forms)
        for (uint8_t selector = 1; selector <= selectors; ++selector)
            for (Lengths lengths : {Lengths::Zero, Lengths::Max, Lengths::Random, Lengths::Random}) {
                const Bytes wire = WireGenerator(lengths, ++seed).value(c.shape, f.count, selector);
                SCOPED_TRACE(testing::Message()
                             << "isArray " << int{f.isArray} << " count " << f.count << " selector "
                             << int{selector} << " lengths " << int(lengths) << " seed " << seed
                             << " wire bytes " << wire.size());
                checkRoundTrip(*c.ops, wire, f.isArray, c.narrow && f.count > 0);
                if (HasFatalFailure()) return;
            }
}

std::string caseName(const testing::TestParamInfo<Case> &info) {
    char name[16];
    if (info.param.table[0] == 'r') std::snprintf(name, sizeof name, "row_%03u", unsigned{info.param.key});
    else std::snprintf(name, sizeof name, "type_0x%02X", unsigned{info.param.key});
    return name;
}

INSTANTIATE_TEST_SUITE_P(AttributeRows, ValueRoundTrip, testing::ValuesIn(attributeCases()), caseName);
INSTANTIATE_TEST_SUITE_P(DataTypes, ValueRoundTrip, testing::ValuesIn(dataTypeCases()), caseName);

// The selector type meets a selector outside 1 to 4: its size pass refuses
// the value (4) without moving, its packet-size pass reports 1.
TEST(SelectorValue, SelectorOutsideOneToFourIsRefused) {
    const RecordValueType *selector = nullptr;
    for (const RecordValueType &t : kRecordValueTypes)
        if (t.fields == nullptr) selector = &t;
    ASSERT_NE(selector, nullptr);
    const ValueCodecOps &ops = AttributeCodecTable[selector->row - 1].ops;
    for (uint8_t bad : {0, 5, 0xFF}) {
        uint8_t wire[16] = {bad};
        PacketCursor c{wire, sizeof wire};
        RecordSize size{};
        EXPECT_EQ(ops.decCalc(&c, 0, &size, kVersion), 4u) << int{bad};
        EXPECT_EQ(c.position, wire);
        alignas(16) uint8_t record[64] = {bad};
        WireSize packetBytes{0xAAAA, 0xAAAA};
        EXPECT_EQ(ops.encCalc(record, 0, &packetBytes, kVersion), 1u) << int{bad};
        EXPECT_EQ(packetBytes.bytes, 0xAAAA);
    }
}

} // namespace
} // namespace trov
