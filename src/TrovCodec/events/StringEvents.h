// Events with fixed fields and a byte string.
//
// Most event bodies are a run of big-endian numbers followed by one byte
// string whose length is the byte just before it:
//
//   field ... field | u8 L | L octets
//
// They decode to a record of the same fields at their natural widths and
// alignment, then an 8-aligned OctetString {u8 length @+0, data @+8}; the L
// octets go to the first 8-aligned address behind that fixed part and the
// data pointer is null when L is 0. A few layouts vary the pattern: a record
// field that no wire byte fills (0x3C), no string (0xAA), two strings (0x5D),
// a counted array of (u8, u32) items (0x38, 0x53), byte blocks and a u16
// string length (0x30), a typed value (0x78), and the longer layouts 0x35,
// 0x36, 0x37, 0x39, 0x49, 0x54, 0x56 and 0x131.
//
// Every layout is one row of kStringEventLayouts: its codes and its fields in
// wire order, in the field model's spellings. The plan (record offsets, fixed
// wire bytes, the record's fixed part) is derived at compile time and checked
// against the figures each row states; the field model's walker runs it.
// Codes that share a row share its functions.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "events/EventLayout.h"

namespace trov {

// ---- the layouts ---------------------------------------------------------------

namespace string_event_fields {
using namespace fields;
inline constexpr Field gap8 = reserved8;
inline constexpr Field str8 = oct8;
inline constexpr Field str16 = oct16;
inline constexpr Field items = items8;
constexpr Field block(uint16_t n) { return bytes(n); }

inline constexpr EventLayout kStringEventLayouts[] = {
    // Fixed fields, then one u8-counted string.
    {{0x02, 0x03, 0x48, 0xDA}, {u32, u8, str8}, 6, 24},
    {{0x04}, {u8, str8}, 2, 24},
    {{0x05}, {u8, u8, u8, u8, u16, u32, u32, u8, str8}, 16, 40},
    {{0x0B}, {u32, u8, u32, str8}, 10, 32},
    {{0x0E, 0x45}, {u16, u32, u32, u32, u16, u16, u16, u16, u16, str8}, 25, 48},
    {{0x0F}, {u16, u8, u8, u8, u16, str8}, 8, 24},
    {{0x10}, {u32, u32, u32, u16, u16, u16, u16, u16, str8}, 23, 40},
    {{0x11}, {u16, u32, u32, u32, u16, u16, u16, u16, u16, u16, u16, u16, str8}, 31, 48},
    {{0x12}, {u16, u32, u32, u32, u32, u32, u32, u32, u32, u16, u16, u16, str8}, 41, 64},
    {{0x13, 0x14, 0x82}, {u32, str8}, 5, 24},
    {{0x18, 0x43, 0xDB}, {u16, u32, u8, str8}, 8, 32},
    {{0x1A}, {u8, u32, str8}, 6, 24},
    {{0x28}, {u16, u32, u32, u32, u32, u16, u8, str8}, 22, 40},
    {{0x2D}, {u16, u32, u8, u8, str8}, 9, 32},
    {{0x3A}, {u16, u32, u8, u32, str8}, 12, 32},
    // Nine record fields for eight wire fields: the u8 at record offset 1 is
    // never written; the second wire byte goes to offset 2.
    {{0x3C}, {u8, gap8, u8, u8, u16, u32, u32, u8, u8, str8}, 16, 40},
    {{0x3F}, {u16, u32, u16, u32, u8, u8, u8, u8, u16, u32, u32, u8, u8, str8}, 29, 56},
    {{0x40}, {u16, u32, u8, u16, u16, u8, u8, u16, u8, u8, u16, str8}, 20, 40},
    {{0x41}, {u16, u32, u8, u16, u16, str8}, 12, 32},
    {{0x42}, {u16, u32, u8, u8, u8, u8, u16, u32, u32, u8, u8, str8}, 23, 48},
    {{0x44}, {u16, u32, u8, u8, u8, u8, u8, str8}, 12, 32},
    {{0x46, 0x47}, {u8, u8, str8}, 3, 24},
    {{0x4A}, {u8, u8, u32, u8, u8, u16, u32, u32, u8, u8, u8, str8}, 22, 40},
    {{0x52, 0xD9, 0xDF}, {u32, u32, str8}, 9, 24},
    {{0x55}, {u16, u32, u32, u32, u16, u16, str8}, 19, 40},
    {{0x57}, {u32, u32, u8, u16, str8}, 12, 32},
    {{0x58}, {u16, u32, u32, u32, u32, u32, u32, u16, u8, str8}, 30, 48},
    {{0x59}, {u16, u32, u32, u32, u16, str8}, 17, 40},
    {{0x5A}, {u32, u32, u32, str8}, 13, 32},
    {{0x5B}, {u32, u8, u8, str8}, 7, 24},
    {{0x5C}, {u16, u32, u8, u8, u8, u8, u8, u8, str8}, 13, 32},
    {{0x6A}, {u16, u32, u32, u8, u32, u32, u8, u16, u8, u8, u32, u8, u8, u16, u8, u32, str8}, 38, 64},
    {{0x71}, {u16, u32, u32, u8, u32, u32, u8, u32, u32, u8, u32, str8}, 34, 64},
    {{0x7A}, {u32, u8, u16, u16, u32, str8}, 14, 32},
    {{0x7D}, {u16, u32, u8, u32, u32, u8, str8}, 17, 40},
    {{0x81}, {u16, u32, u32, u8, u32, u32, u8, u8, u32, u32, u8, u16, u32, str8}, 37, 64},
    {{0x9C, 0xA1}, {u16, u32, u32, u32, u32, str8}, 19, 40},
    {{0x9D}, {u16, u32, u32, u32, u16, u32, str8}, 21, 40},
    {{0x9E}, {u16, u32, u32, u32, u32, u32, u16, u16, u16, str8}, 29, 48},
    {{0x9F}, {u16, u32, u32, u32, u32, u32, u32, u32, u8, str8}, 32, 56},
    {{0xA0}, {u16, u32, u32, u32, u32, u32, u8, str8}, 24, 48},
    {{0xB3}, {u16, u32, u32, u32, u32, u32, u32, u8, u32, u8, str8}, 33, 56},
    {{0xDE}, {u32, u8, u8, u8, u8, u32, u32, u16, u32, str8}, 23, 40},

    // Layouts that vary the pattern.
    {{0xAA}, {u8, u32, u32}, 9, 16}, // no string
    {{0x5D}, {u16, u32, str8, str8}, 8, 40},
    {{0x78}, {u32, u16, reservedValue, str8}, 9, 32},
    {{0x38, 0x53}, {u16, u32, u8, u8, u32, u32, u32, u32, items, str8}, 26, 64},
    // 0x30 tests 71 bytes where its fields take 87, so a body up to 16 bytes
    // short passes; what it lacks decodes as 0.
    {{0x30}, {u16, u16, block(32), block(32), u32, u32, u32, u32, u8, str16}, 87, 104, {.slack = 16}},

    // Longer layouts: fixed fields, byte blocks, further strings, an array of
    // items, a typed value or an option parameter, ending with a u8 string.
    {{0x35}, {u16, u32, u8, str8, u32, u16, str8}, 15, 56},
    {{0x36}, {u16, u32, u32, block(16), value, str8}, 29, 56},
    {{0x37},
     {u16, u32, block(32), block(24), block(48), block(20), block(40), block(16), block(40), u32, u8, str8},
     232, 256},
    {{0x39}, {u16, u32, u8, u8, u32, items, option, str8}, 16, 64},
    {{0x49}, {u16, u32, str16, u8, str8}, 10, 48},
    {{0x54}, {u16, u32, u32, u32, block(8), items, str8}, 24, 56},
    {{0x56}, {u16, u32, u8, value, str8, str8}, 11, 56},
    {{0x131}, {u16, u32, u32, u16, block(12), option, str16, str8}, 29, 80},
};
} // namespace string_event_fields

using string_event_fields::kStringEventLayouts;
inline constexpr size_t kStringEventLayoutCount = std::size(kStringEventLayouts);
inline constexpr size_t kRegularStringEventLayouts = 43; // the first rows: fields, then one u8 string

inline constexpr auto kStringEventPlans = eventPlans(kStringEventLayouts);

template <size_t... I>
constexpr auto collectStringEventCodecs(std::index_sequence<I...>) {
    constexpr EventCodec ops[] = {EventOps<kStringEventPlans, I>::codec...};
    return collectEventCodecs<eventCodeCount(kStringEventLayouts)>(kStringEventLayouts, ops, {});
}

// Every code of the family with its operations, in ascending code order.
inline constexpr auto kStringEventCodecs =
    collectStringEventCodecs(std::make_index_sequence<kStringEventLayoutCount>{});

// The operations of an event code of this family; null for any other code.
constexpr const EventCodec *findStringEventOps(uint16_t code) { return findEventCodec(kStringEventCodecs, code); }

// The plan of an event code of this family (the first layout's for any other).
constexpr const Plan &stringEventPlan(uint16_t code) {
    const EventCodec *c = findStringEventOps(code);
    return c != nullptr ? *c->plan : kStringEventPlans[0];
}

// ---- compile-time checks -------------------------------------------------------

constexpr bool stringEventLayoutsHold() {
    for (size_t i = 0; i < kStringEventLayoutCount; ++i) {
        const EventLayout &l = kStringEventLayouts[i];
        const Plan &p = kStringEventPlans[i];
        for (uint8_t k = 0; k < p.count; ++k) {
            const FieldKind kind = p.fields[k].kind;
            const bool plain = kind == FieldKind::U8 || kind == FieldKind::U16 || kind == FieldKind::U32 ||
                               kind == FieldKind::Bytes || kind == FieldKind::Reserved8;
            // Slack is for plain fields and strings only: the typed values and
            // options hand the cursor to other codecs, which must see real bytes.
            if (l.rules.slack != 0 && !plain && kind != FieldKind::Octets) return false;
            // The regular rows are plain fields and one u8 string, last.
            if (i < kRegularStringEventLayouts && !plain && (kind != FieldKind::Octets || k != p.count - 1))
                return false;
        }
    }
    return true;
}
static_assert(eventFiguresHold(kStringEventLayouts, kStringEventPlans) && stringEventLayoutsHold() &&
                  codesAscend(kStringEventCodecs),
              "a string event layout disagrees with its stated figures");
static_assert(kStringEventLayoutCount == kRegularStringEventLayouts + 5 + 8);
static_assert(kStringEventCodecs.size() == 69);
static_assert(stringEventPlan(0x3C).fields[1].kind == FieldKind::Reserved8 &&
                  stringEventPlan(0x3C).fields[2].offset == 2 && stringEventPlan(0x3C).count == 10,
              "0x3C keeps its unfilled record field");
static_assert(stringEventPlan(0x30).fields[9].kind == FieldKind::Octets &&
                  stringEventPlan(0x30).fields[9].prefix == 2 && stringEventPlan(0x30).rules.slack == 16,
              "0x30: a u16 length at 85-86, tested against 71 bytes");

} // namespace trov
