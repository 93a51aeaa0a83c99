// The structure rows of the attribute table, record first: a record is built
// from the row's own descriptor (scalars, counted fields with two elements,
// option lists, attribute values), encoded, sized, decoded into a block of
// exactly the reported extent and encoded again; the bytes must agree.
#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <memory>
#include <vector>

#include "attributes/StructureValueTypes.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

// Owns the memory a built record points into.
struct Arena {
    std::deque<std::vector<uint8_t>> blocks;
    uint8_t *take(size_t n) {
        blocks.emplace_back(n + 8, 0);
        return static_cast<uint8_t *>(alignUp8(blocks.back().data()));
    }
};

const uint8_t kAttributeByte = 0x5C; // the value of attribute 0x00CB (one byte)

// Fills the record at `r` for descriptor d; counted fields get two elements.
void build(const StructField *d, uint8_t *r, Arena &arena, uint8_t seed) {
    uint32_t offset = 0;
    for (const StructField *f = d; f->number != 0; ++f) {
        const bool scalar = f->kind >= 1 && f->kind <= 7;
        const uint32_t align = scalar ? f->size : f->kind == 10 ? structAlignment(f->nested) : 8;
        offset = (offset + align - 1) / align * align;
        uint8_t *at = r + offset;
        switch (f->kind) {
        case 8:
        case 9: {
            uint8_t *bytes = arena.take(2);
            bytes[0] = 'a';
            bytes[1] = static_cast<uint8_t>(seed);
            storeField<uint8_t *>(at, 0, bytes);
            break;
        }
        case 10: build(f->nested, at, arena, static_cast<uint8_t>(seed + 1)); break;
        case 11: {
            auto *options = reinterpret_cast<StructOption *>(arena.take(2 * sizeof(StructOption)));
            uint8_t *values = arena.take(16);
            storeField<uint32_t>(values, 0, 0xA1B2C3D4u);
            storeField<uint16_t>(values, 8, 0x0102);
            options[0] = StructOption{1, 4, {}, values};
            options[1] = StructOption{3, 2, {}, values + 8};
            storeField<StructOptionList>(at, 0, StructOptionList{2, {}, options});
            break;
        }
        case 12: {
            uint8_t *elements = arena.take(2u * f->size);
            build(f->nested, elements, arena, static_cast<uint8_t>(seed + 2));
            build(f->nested, elements + f->size, arena, static_cast<uint8_t>(seed + 3));
            storeField<uint8_t *>(at, 0, elements);
            break;
        }
        case 13:
            storeField<AttributeEntry>(at, 0, AttributeEntry{0x00CB, 0, const_cast<uint8_t *>(&kAttributeByte)});
            break;
        default: // scalars; a count field holds 2
            if (f->countFlag != 0) {
                if (f->size == 1) at[0] = 2;
                else storeField<uint16_t>(at, 0, 2);
            } else {
                for (uint32_t k = 0; k < f->size; ++k) at[k] = static_cast<uint8_t>(0x80 + seed + k);
            }
            break;
        }
        offset += f->kind == 10 || f->kind == 11 || f->kind == 13 || scalar ? f->size : 8;
    }
}

std::vector<uint8_t> encode(const ValueCodecOps &ops, const void *record) {
    WireSize size;
    EXPECT_EQ(ops.encCalc(record, 1, &size, 0x10), 0u);
    std::vector<uint8_t> wire(size.bytes);
    PacketCursor c{wire.data(), size.bytes};
    ops.encode(&c, record, 1, 0x10);
    EXPECT_EQ(c.remaining, 0u);
    return wire;
}

class StructureRows : public testing::TestWithParam<size_t> {
protected:
    void SetUp() override { TROV_InitCoder(); }
};

TEST_P(StructureRows, RoundTripThroughTheAttributeTable) {
    const StructureValueType &type = kStructureValueTypes[GetParam()];
    SCOPED_TRACE(type.name);
    const AttributeCodecRow &row = AttributeCodecTable[type.row - 1];
    const ValueCodecOps &ops = row.ops;
    ASSERT_EQ(lookupAttribute(row.identifiers[0], 0x10), &row);

    Arena arena;
    uint8_t *record = arena.take(256);
    build(type.fields, record, arena, 1);
    const std::vector<uint8_t> wire = encode(ops, record);

    PacketCursor c{const_cast<uint8_t *>(wire.data()), static_cast<uint32_t>(wire.size())};
    RecordSize size{};
    ASSERT_EQ(ops.decCalc(&c, 1, &size, 0x10), 0u);
    EXPECT_EQ(c.remaining, 0u);
    EXPECT_EQ(size.bytes % 8, 0);
    EXPECT_GE(size.extent, size.bytes);

    // Exactly the extent, so AddressSanitizer sees any write past it.
    auto block = std::make_unique<uint64_t[]>((size.extent + 7) / 8);
    PacketCursor d{const_cast<uint8_t *>(wire.data()), static_cast<uint32_t>(wire.size())};
    void *end = ops.decode(block.get(), &d, 1, 0x10);
    EXPECT_EQ(d.remaining, 0u);
    EXPECT_LE(static_cast<uint8_t *>(end), reinterpret_cast<uint8_t *>(block.get()) + size.extent);
    EXPECT_EQ(encode(ops, block.get()), wire);

    // Every truncation is refused and leaves the cursor where it was.
    for (size_t n = 0; n < wire.size(); ++n) {
        std::vector<uint8_t> cut(wire.begin(), wire.begin() + static_cast<ptrdiff_t>(n));
        PacketCursor t{cut.data(), static_cast<uint32_t>(n)};
        RecordSize ignored{};
        EXPECT_NE(ops.decCalc(&t, 1, &ignored, 0x10), 0u) << n;
        EXPECT_EQ(t.remaining, n);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, StructureRows, testing::Range<size_t>(0, std::size(kStructureValueTypes)));

// Hand-worked: row 274 (RangeList) with one range {0x01020304, 0x0A0B0C0D}.
TEST(StructureRowsGolden, RangeList) {
    TROV_InitCoder();
    const uint8_t wire[] = {0x00, 0x01, 0x01, 0x02, 0x03, 0x04, 0x0A, 0x0B, 0x0C, 0x0D};
    const ValueCodecOps &ops = AttributeCodecTable[273].ops;
    PacketCursor c{const_cast<uint8_t *>(wire), sizeof wire};
    RecordSize size{};
    ASSERT_EQ(ops.decCalc(&c, 0, &size, 0x10), 0u);
    EXPECT_EQ(size.bytes, 16 + 8); // the record, then one 8-byte range
    alignas(8) uint8_t record[64] = {};
    PacketCursor d{const_cast<uint8_t *>(wire), sizeof wire};
    ops.decode(record, &d, 0, 0x10);
    EXPECT_EQ(loadField<uint16_t>(record, 0), 1);
    const auto *range = loadField<const uint8_t *>(record, 8);
    ASSERT_EQ(range, record + 16);
    EXPECT_EQ(loadField<uint32_t>(range, 0), 0x01020304u);
    EXPECT_EQ(loadField<uint32_t>(range, 4), 0x0A0B0C0Du);
}

} // namespace
} // namespace trov
