// Record value types: values made of fixed fields, counted sub-arrays,
// length-prefixed strings and nested attribute lists, each type described by
// a short field string in wire order, e.g. "u32 c8 l32".
//
// Field kinds, wire form and record form:
//   u8 u16 u32  big-endian scalar          the scalar at its natural alignment
//   b12         12 raw bytes               16-byte slot holding the bytes
//   o8 o16      u8/u16 length, octets      OctetString head (16 bytes); the bytes
//                                          follow in the data area, rounded up to 8
//   c8 c16      u8/u16 length, characters  as o8/o16, with one spare byte behind the
//                                          characters (none for an empty string)
//   l32         u8 count, count u32        AttributeArrayHeader-like head; the values
//                                          (host order) follow, 8 bytes reserved each
//   attrs       u16 count, then per        AttributeList head; the AttributeEntry
//               attribute u16 id, u16      array and each value's record follow
//               length, value (array form)
//
// A record is its fields at their alignments (heads and b12 at multiples of
// 8), rounded up to 8, followed by its data area: each variable field's data
// in field order, each at a multiple of 8. Array form (types with a count
// prefix) puts the element records one after another behind the array
// header, then all elements' data.
//
// A selector type carries a u8 selector 1 to 4 on the wire and then the
// fields of the selected variant; its record holds the selector at offset 0
// and the variant's record at offset 8.
#pragma once

#include <array>
#include <cstdint>

namespace trov {

enum class FieldKind : uint8_t { U8, U16, U32, Block12, Octets8, Octets16, Chars8, Chars16, U32List, Attributes };

struct LayoutField {
    FieldKind kind;
    uint16_t offset; // record offset
};

inline constexpr int kMaxLayoutFields = 12;

// A parsed field string.
struct Layout {
    std::array<LayoutField, kMaxLayoutFields> fields{};
    uint8_t count = 0;
    uint16_t fixedBytes = 0; // the record's fixed part, a multiple of 8
    bool valid = false;
};

struct RecordValueType {
    uint16_t row;        // place in the attribute table, from 1 (0: not an attribute row)
    uint8_t prefixBytes; // 2: array form with a u16 count prefix; 0: scalar form only
    const char *fields;  // the field string; null for a selector type
    const char *variants[4]; // a selector type's variants 1 to 4
};

namespace layout_detail {

constexpr bool same(const char *a, int n, const char *b) {
    int i = 0;
    for (; i < n; ++i)
        if (b[i] != a[i]) return false;
    return b[i] == '\0';
}

struct KindInfo {
    const char *name;
    FieldKind kind;
    uint8_t size, align;
};

inline constexpr KindInfo kKinds[] = {
    {"u8", FieldKind::U8, 1, 1},           {"u16", FieldKind::U16, 2, 2},
    {"u32", FieldKind::U32, 4, 4},         {"b12", FieldKind::Block12, 16, 8},
    {"o8", FieldKind::Octets8, 16, 8},     {"o16", FieldKind::Octets16, 16, 8},
    {"c8", FieldKind::Chars8, 16, 8},      {"c16", FieldKind::Chars16, 16, 8},
    {"l32", FieldKind::U32List, 16, 8},    {"attrs", FieldKind::Attributes, 16, 8},
};

} // namespace layout_detail

constexpr Layout parseLayout(const char *text) {
    Layout out;
    if (text == nullptr) return out;
    uint32_t offset = 0;
    int i = 0;
    while (text[i] != '\0') {
        if (text[i] == ' ') {
            ++i;
            continue;
        }
        int n = 0;
        while (text[i + n] != '\0' && text[i + n] != ' ') ++n;
        bool known = false;
        for (const auto &k : layout_detail::kKinds) {
            if (!layout_detail::same(text + i, n, k.name)) continue;
            if (out.count == kMaxLayoutFields) return Layout{};
            offset = (offset + k.align - 1) / k.align * k.align;
            out.fields[out.count++] = LayoutField{k.kind, static_cast<uint16_t>(offset)};
            offset += k.size;
            known = true;
        }
        if (!known) return Layout{};
        i += n;
    }
    out.fixedBytes = static_cast<uint16_t>((offset + 7) & ~7u);
    out.valid = out.count != 0;
    return out;
}

constexpr bool isVariable(FieldKind k) { return k >= FieldKind::Octets8; }

} // namespace trov
