// Record value types: values made of fixed fields, counted sub-arrays,
// length-prefixed strings and nested attribute lists, each type a field list
// of the field model (engine/Field.h) in wire order, e.g. {u32, chr8, l32}.
//
// The kinds these values use, wire form and record form:
//   u8 u16 u32     big-endian scalar          the scalar at its natural alignment
//   b12            12 raw bytes               a 16-byte slot holding the bytes
//   oct8 oct16     u8/u16 length, octets      16-byte head {length, data @+8}; the
//                                             bytes follow in the data area
//   chr8 chr16     u8/u16 length, characters  as oct8/oct16, with one spare byte
//                                             behind the characters (none when empty)
//   l32            u8 count, count u32        head {count, values @+8}; the values
//                                             (host order) follow, 8 bytes of room each
//   attrs          u16 count, then per        AttributeList head; the AttributeEntry
//                  attribute u16 id, u16      array and each value's record follow
//                  length, value (array form)
//
// A record is its fields at their alignments, rounded up to 8, followed by
// its data area: each variable field's data in field order, each at a
// multiple of 8. Array form (types with a count prefix) puts the element
// records one after another behind the array header, then all elements' data.
//
// A selector type carries a u8 selector 1 to 4 on the wire and then the
// fields of the selected variant; its record holds the selector at offset 0
// and the variant's record at offset 8.
#pragma once

#include <array>
#include <cstdint>

#include "engine/Field.h"

namespace trov {

inline constexpr int kMaxValueFields = 8;

using ValueFields = Field[kMaxValueFields]; // End-terminated
struct SelectorVariants {
    ValueFields variant[4];
};

struct RecordValueType {
    uint16_t row;        // place in the attribute table, from 1 (0: not an attribute row)
    uint8_t prefixBytes; // 2: array form with a u16 count prefix; 0: scalar form only
    ValueFields fields;  // empty for a selector type
    const SelectorVariants *variants = nullptr; // a selector type's variants 1 to 4
};

// The values' plans: nested-list values answer a size query even when an
// element's pointer is null (the encoders refuse through `nullData`).
constexpr Plan valuePlan(const ValueFields &fields) {
    return makePlan(fields, kMaxValueFields, PlanRules{.nullRefusedAtOnce = false});
}

} // namespace trov
