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
// wire order. The record offsets, the fixed wire bytes and the size of the
// record's fixed part are derived from the field list at compile time and
// checked against the figures each row states; one generic walk per operation
// (StringEvents.cpp) runs over the derived plan, so the four operations of a
// layout cannot drift apart. Codes that share a row share its functions.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "api/Dispatch.h"
#include "engine/Cursor.h"

namespace trov {

// ---- field lists ---------------------------------------------------------------

enum class EventFieldKind : uint8_t {
    End,      // ends a field list
    U8,       // big-endian scalars: natural width and alignment in the record
    U16,
    U32,
    Gap8,     // a u8 record field that no wire byte fills
    Block,    // `bytes` octets copied as they stand; record alignment 1
    Octets8,  // u8 length L, L octets -> 8-aligned {u8 length, data @+8}
    Octets16, // u16 length L, L octets -> 8-aligned {u16 length, data @+8}
    Items,    // u8 count M, M items of (u8, u32) -> 8-aligned {u8 count, items @+8};
              // each item decodes into 8 bytes: u8 @0, u32 @4
    Value,    // u16 data type T, then a value in the wire form of data-type code T
              // (array form) -> u16 type, then 8-aligned a pointer to the decoded
              // value, which takes the room its codec reports
    ReservedValue, // as Value, but the room is fixed by T (reservedValueRoom);
                   // a type without room is read over and not stored
    Option,   // option parameter: u8 kind, u8 length, value -> 8-aligned
              // {u8 kind, u8 length @+1, value @+8}
};

struct EventField {
    EventFieldKind kind;
    uint16_t bytes; // Block: its length; otherwise 0
};
static_assert(sizeof(EventField) == 4);

// The room a ReservedValue keeps behind the fixed part for the value of data
// type T: 54 bytes (rounded up to 8) for types 16 and 17, 24 for types 19
// and 20, nothing for any other type.
constexpr uint32_t reservedValueRoom(uint16_t type) {
    switch (type) {
    case 16:
    case 17: return (54 + 7) & ~7u;
    case 19:
    case 20: return 24;
    default: return 0;
    }
}

inline constexpr int kMaxEventFields = 20;
inline constexpr int kMaxLayoutCodes = 4;

// One row: the codes that share the layout, its fields, and the figures the
// derived plan must reproduce.
struct StringEventLayout {
    uint16_t codes[kMaxLayoutCodes];    // 0-terminated
    EventField fields[kMaxEventFields]; // wire order, End-terminated
    uint16_t prefix; // wire bytes when every count and length is 0; for the
                     // one-string layouts, the bytes before the string data
    uint16_t record; // bytes of the record's fixed part, a multiple of 8
    // The length tests compare against the remaining bytes plus `slack`. Only
    // 0x30 has one: it tests 71 bytes where its prefix is 87, so a body up to
    // 16 bytes short passes. Reads never go past the cursor: missing bytes
    // read as 0 and the cursor stops at the end.
    uint8_t slack;
};

// ---- derived plans -----------------------------------------------------------

struct EventStep {
    EventFieldKind kind;
    uint16_t wireBytes; // fixed wire bytes: a scalar or block, or a count/length/type prefix
    uint16_t offset;    // record offset of the field, of a variable part's head, or of a type
    uint16_t pointer;   // record offset of a variable part's pointer
};

struct StringEventPlan {
    std::array<EventStep, kMaxEventFields> steps;
    uint8_t count;
    uint16_t prefix; // fixed wire bytes of the whole layout
    uint16_t record; // fixed part of the record, rounded up to 8
    uint8_t slack;
};

constexpr StringEventPlan planStringEvent(const StringEventLayout &layout) {
    StringEventPlan plan{};
    uint32_t wire = 0, end = 0;
    for (int i = 0; i < kMaxEventFields && layout.fields[i].kind != EventFieldKind::End; ++i) {
        const EventField f = layout.fields[i];
        EventStep s{f.kind, 0, 0, 0};
        switch (f.kind) {
        case EventFieldKind::U8: s.wireBytes = 1; [[fallthrough]];
        case EventFieldKind::Gap8: s.offset = static_cast<uint16_t>(end); end += 1; break;
        case EventFieldKind::U16: s.wireBytes = 2; s.offset = alignTo(end, 2); end = s.offset + 2u; break;
        case EventFieldKind::U32: s.wireBytes = 4; s.offset = alignTo(end, 4); end = s.offset + 4u; break;
        case EventFieldKind::Block:
            s.wireBytes = f.bytes;
            s.offset = static_cast<uint16_t>(end);
            end += f.bytes;
            break;
        case EventFieldKind::Octets8:
        case EventFieldKind::Items:
        case EventFieldKind::Octets16:
        case EventFieldKind::Option:
            s.wireBytes = f.kind == EventFieldKind::Octets16 || f.kind == EventFieldKind::Option ? 2 : 1;
            s.offset = alignTo(end, 8);
            s.pointer = static_cast<uint16_t>(s.offset + 8);
            end = s.offset + 16u;
            break;
        case EventFieldKind::Value:
        case EventFieldKind::ReservedValue:
            s.wireBytes = 2;
            s.offset = alignTo(end, 2);
            s.pointer = alignTo(s.offset + 2u, 8);
            end = s.pointer + 8u;
            break;
        case EventFieldKind::End: break;
        }
        wire += s.wireBytes;
        plan.steps[plan.count++] = s;
    }
    plan.prefix = static_cast<uint16_t>(wire);
    plan.record = alignTo(end, 8);
    plan.slack = layout.slack;
    return plan;
}

// ---- the layouts ---------------------------------------------------------------

namespace string_event_fields {
inline constexpr EventField u8{EventFieldKind::U8, 0};
inline constexpr EventField u16{EventFieldKind::U16, 0};
inline constexpr EventField u32{EventFieldKind::U32, 0};
inline constexpr EventField gap8{EventFieldKind::Gap8, 0};
inline constexpr EventField str8{EventFieldKind::Octets8, 0};
inline constexpr EventField str16{EventFieldKind::Octets16, 0};
inline constexpr EventField items{EventFieldKind::Items, 0};
inline constexpr EventField value{EventFieldKind::Value, 0};
inline constexpr EventField reservedValue{EventFieldKind::ReservedValue, 0};
inline constexpr EventField option{EventFieldKind::Option, 0};
constexpr EventField block(uint16_t n) { return {EventFieldKind::Block, n}; }

inline constexpr StringEventLayout kStringEventLayouts[] = {
    // Fixed fields, then one u8-counted string.
    {{0x02, 0x03, 0x48, 0xDA}, {u32, u8, str8}, 6, 24, 0},
    {{0x04}, {u8, str8}, 2, 24, 0},
    {{0x05}, {u8, u8, u8, u8, u16, u32, u32, u8, str8}, 16, 40, 0},
    {{0x0B}, {u32, u8, u32, str8}, 10, 32, 0},
    {{0x0E, 0x45}, {u16, u32, u32, u32, u16, u16, u16, u16, u16, str8}, 25, 48, 0},
    {{0x0F}, {u16, u8, u8, u8, u16, str8}, 8, 24, 0},
    {{0x10}, {u32, u32, u32, u16, u16, u16, u16, u16, str8}, 23, 40, 0},
    {{0x11}, {u16, u32, u32, u32, u16, u16, u16, u16, u16, u16, u16, u16, str8}, 31, 48, 0},
    {{0x12}, {u16, u32, u32, u32, u32, u32, u32, u32, u32, u16, u16, u16, str8}, 41, 64, 0},
    {{0x13, 0x14, 0x82}, {u32, str8}, 5, 24, 0},
    {{0x18, 0x43, 0xDB}, {u16, u32, u8, str8}, 8, 32, 0},
    {{0x1A}, {u8, u32, str8}, 6, 24, 0},
    {{0x28}, {u16, u32, u32, u32, u32, u16, u8, str8}, 22, 40, 0},
    {{0x2D}, {u16, u32, u8, u8, str8}, 9, 32, 0},
    {{0x3A}, {u16, u32, u8, u32, str8}, 12, 32, 0},
    // Nine record fields for eight wire fields: the u8 at record offset 1 is
    // never written; the second wire byte goes to offset 2.
    {{0x3C}, {u8, gap8, u8, u8, u16, u32, u32, u8, u8, str8}, 16, 40, 0},
    {{0x3F}, {u16, u32, u16, u32, u8, u8, u8, u8, u16, u32, u32, u8, u8, str8}, 29, 56, 0},
    {{0x40}, {u16, u32, u8, u16, u16, u8, u8, u16, u8, u8, u16, str8}, 20, 40, 0},
    {{0x41}, {u16, u32, u8, u16, u16, str8}, 12, 32, 0},
    {{0x42}, {u16, u32, u8, u8, u8, u8, u16, u32, u32, u8, u8, str8}, 23, 48, 0},
    {{0x44}, {u16, u32, u8, u8, u8, u8, u8, str8}, 12, 32, 0},
    {{0x46, 0x47}, {u8, u8, str8}, 3, 24, 0},
    {{0x4A}, {u8, u8, u32, u8, u8, u16, u32, u32, u8, u8, u8, str8}, 22, 40, 0},
    {{0x52, 0xD9, 0xDF}, {u32, u32, str8}, 9, 24, 0},
    {{0x55}, {u16, u32, u32, u32, u16, u16, str8}, 19, 40, 0},
    {{0x57}, {u32, u32, u8, u16, str8}, 12, 32, 0},
    {{0x58}, {u16, u32, u32, u32, u32, u32, u32, u16, u8, str8}, 30, 48, 0},
    {{0x59}, {u16, u32, u32, u32, u16, str8}, 17, 40, 0},
    {{0x5A}, {u32, u32, u32, str8}, 13, 32, 0},
    {{0x5B}, {u32, u8, u8, str8}, 7, 24, 0},
    {{0x5C}, {u16, u32, u8, u8, u8, u8, u8, u8, str8}, 13, 32, 0},
    {{0x6A}, {u16, u32, u32, u8, u32, u32, u8, u16, u8, u8, u32, u8, u8, u16, u8, u32, str8}, 38, 64, 0},
    {{0x71}, {u16, u32, u32, u8, u32, u32, u8, u32, u32, u8, u32, str8}, 34, 64, 0},
    {{0x7A}, {u32, u8, u16, u16, u32, str8}, 14, 32, 0},
    {{0x7D}, {u16, u32, u8, u32, u32, u8, str8}, 17, 40, 0},
    {{0x81}, {u16, u32, u32, u8, u32, u32, u8, u8, u32, u32, u8, u16, u32, str8}, 37, 64, 0},
    {{0x9C, 0xA1}, {u16, u32, u32, u32, u32, str8}, 19, 40, 0},
    {{0x9D}, {u16, u32, u32, u32, u16, u32, str8}, 21, 40, 0},
    {{0x9E}, {u16, u32, u32, u32, u32, u32, u16, u16, u16, str8}, 29, 48, 0},
    {{0x9F}, {u16, u32, u32, u32, u32, u32, u32, u32, u8, str8}, 32, 56, 0},
    {{0xA0}, {u16, u32, u32, u32, u32, u32, u8, str8}, 24, 48, 0},
    {{0xB3}, {u16, u32, u32, u32, u32, u32, u32, u8, u32, u8, str8}, 33, 56, 0},
    {{0xDE}, {u32, u8, u8, u8, u8, u32, u32, u16, u32, str8}, 23, 40, 0},

    // Layouts that vary the pattern.
    {{0xAA}, {u8, u32, u32}, 9, 16, 0}, // no string
    {{0x5D}, {u16, u32, str8, str8}, 8, 40, 0},
    {{0x78}, {u32, u16, reservedValue, str8}, 9, 32, 0},
    {{0x38, 0x53}, {u16, u32, u8, u8, u32, u32, u32, u32, items, str8}, 26, 64, 0},
    {{0x30}, {u16, u16, block(32), block(32), u32, u32, u32, u32, u8, str16}, 87, 104, 16},

    // Longer layouts: fixed fields, byte blocks, further strings, an array of
    // items, a typed value or an option parameter, ending with a u8 string.
    {{0x35}, {u16, u32, u8, str8, u32, u16, str8}, 15, 56, 0},
    {{0x36}, {u16, u32, u32, block(16), value, str8}, 29, 56, 0},
    {{0x37},
     {u16, u32, block(32), block(24), block(48), block(20), block(40), block(16), block(40), u32, u8, str8},
     232, 256, 0},
    {{0x39}, {u16, u32, u8, u8, u32, items, option, str8}, 16, 64, 0},
    {{0x49}, {u16, u32, str16, u8, str8}, 10, 48, 0},
    {{0x54}, {u16, u32, u32, u32, block(8), items, str8}, 24, 56, 0},
    {{0x56}, {u16, u32, u8, value, str8, str8}, 11, 56, 0},
    {{0x131}, {u16, u32, u32, u16, block(12), option, str16, str8}, 29, 80, 0},
};
} // namespace string_event_fields

using string_event_fields::kStringEventLayouts;
inline constexpr size_t kStringEventLayoutCount = std::size(kStringEventLayouts);
inline constexpr size_t kRegularStringEventLayouts = 43; // the first rows: fields, then one u8 string

inline constexpr auto kStringEventPlans = [] {
    std::array<StringEventPlan, kStringEventLayoutCount> plans{};
    for (size_t i = 0; i < kStringEventLayoutCount; ++i) plans[i] = planStringEvent(kStringEventLayouts[i]);
    return plans;
}();

// ---- the generic operations (StringEvents.cpp) -------------------------------

// Checks that the body at the cursor holds the event (every count, length
// and type it reads is tested before use), moves the cursor past it and
// reports the record size: `bytes` in 16-bit arithmetic, `extent` the bytes
// Decode writes. Results: 0; 1 cursor or size null; 5 the body is short (or a
// typed value is larger than the room its type reserves); 13 a typed value's
// type has no data-type codec; a data-type codec's own result. On failure the
// cursor and size are unchanged.
TrovResult stringEventDecCalc(const StringEventPlan &plan, PacketCursor *cursor, RecordSize *size);
// Reads a body that DecCalc accepted into `record` (8-aligned, at least
// `extent` bytes), variable parts behind the fixed part in field order, each
// 8-aligned. Returns the first 8-aligned address behind everything written.
void *stringEventDecode(const StringEventPlan &plan, void *record, PacketCursor *cursor);
// The packet bytes of a record. Results: 0; 1 record or packetBytes null, or a
// non-empty part with a null pointer; 13 a typed value without a data-type
// codec; 5 more than 65535 bytes; a data-type codec's own result.
TrovResult stringEventEncCalc(const StringEventPlan &plan, const void *record, uint16_t *packetBytes);
// Writes the body of a record; the cursor must hold what EncCalc reported.
void stringEventEncode(const StringEventPlan &plan, PacketCursor *cursor, const void *record);

// ---- the operations of each layout and the code list ---------------------------

struct StringEventOps {
    TrovResult (*decCalc)(PacketCursor *cursor, uint8_t flag, RecordSize *size);
    void *(*decode)(void *record, PacketCursor *cursor, uint8_t flag);
    TrovResult (*encCalc)(const void *record, uint16_t *packetBytes);
    void (*encode)(PacketCursor *cursor, const void *record);
};

// The flag of the event operations is ignored.
template <size_t I>
struct StringEventLayoutOps {
    static constexpr const StringEventPlan &kPlan = kStringEventPlans[I];
    static TrovResult decCalc(PacketCursor *c, uint8_t, RecordSize *s) { return stringEventDecCalc(kPlan, c, s); }
    static void *decode(void *r, PacketCursor *c, uint8_t) { return stringEventDecode(kPlan, r, c); }
    static TrovResult encCalc(const void *r, uint16_t *n) { return stringEventEncCalc(kPlan, r, n); }
    static void encode(PacketCursor *c, const void *r) { stringEventEncode(kPlan, c, r); }
    static constexpr StringEventOps ops{decCalc, decode, encCalc, encode};
};

struct StringEventCodec {
    uint16_t code;
    StringEventOps ops;
};

inline constexpr size_t kStringEventCodeCount = [] {
    size_t n = 0;
    for (const StringEventLayout &l : kStringEventLayouts)
        for (uint16_t code : l.codes) n += code != 0;
    return n;
}();

template <size_t... I>
constexpr std::array<StringEventCodec, kStringEventCodeCount> collectStringEventCodecs(std::index_sequence<I...>) {
    const StringEventOps ops[] = {StringEventLayoutOps<I>::ops...};
    std::array<StringEventCodec, kStringEventCodeCount> out{};
    size_t n = 0;
    for (size_t i = 0; i < sizeof...(I); ++i)
        for (uint16_t code : kStringEventLayouts[i].codes) {
            if (code == 0) break;
            size_t k = n++; // insertion in ascending code order
            for (; k > 0 && out[k - 1].code > code; --k) out[k] = out[k - 1];
            out[k] = StringEventCodec{code, ops[i]};
        }
    return out;
}

// Every code of the family with its operations, in ascending code order.
// The event table registers decCalc and decode; encCalc and encode build
// bodies and are registered nowhere.
inline constexpr auto kStringEventCodecs =
    collectStringEventCodecs(std::make_index_sequence<kStringEventLayoutCount>{});

// The operations of an event code of this family; null for any other code.
constexpr const StringEventOps *findStringEventOps(uint16_t code) {
    for (const StringEventCodec &c : kStringEventCodecs)
        if (c.code == code) return &c.ops;
    return nullptr;
}

// The plan of an event code of this family (the first layout's for any other).
constexpr const StringEventPlan &stringEventPlan(uint16_t code) {
    for (size_t i = 0; i < kStringEventLayoutCount; ++i)
        for (uint16_t c : kStringEventLayouts[i].codes)
            if (c == code) return kStringEventPlans[i];
    return kStringEventPlans[0];
}

// ---- compile-time checks -------------------------------------------------------

constexpr bool stringEventLayoutsHold() {
    for (size_t i = 0; i < kStringEventLayoutCount; ++i) {
        const StringEventLayout &l = kStringEventLayouts[i];
        const StringEventPlan &p = kStringEventPlans[i];
        if (p.prefix != l.prefix || p.record != l.record || p.record % 8 != 0) return false;
        if (l.codes[0] == 0 || p.count == 0 || p.count == kMaxEventFields) return false;
        const EventFieldKind last = p.steps[p.count - 1].kind;
        bool variable = false;
        for (int k = 0; k < p.count; ++k) {
            const EventFieldKind kind = p.steps[k].kind;
            if (kind == EventFieldKind::Block && p.steps[k].wireBytes == 0) return false;
            const bool scalar = kind <= EventFieldKind::Block;
            variable |= !scalar;
            // Slack is for plain fields and strings only: the typed values and
            // options hand the cursor to other codecs, which must see real bytes.
            if (l.slack != 0 && !scalar && kind != EventFieldKind::Octets8 && kind != EventFieldKind::Octets16)
                return false;
            // The regular rows are scalars and one u8 string, last.
            if (i < kRegularStringEventLayouts && !scalar && (kind != EventFieldKind::Octets8 || k != p.count - 1))
                return false;
        }
        // Each layout ends with a counted string, or has no variable part at all.
        if (variable && last != EventFieldKind::Octets8 && last != EventFieldKind::Octets16) return false;
    }
    for (size_t i = 1; i < kStringEventCodeCount; ++i)
        if (kStringEventCodecs[i - 1].code >= kStringEventCodecs[i].code) return false; // no duplicates
    return true;
}
static_assert(stringEventLayoutsHold(), "a string event layout disagrees with its stated figures");
static_assert(kStringEventLayoutCount == kRegularStringEventLayouts + 5 + 8);
static_assert(kStringEventCodeCount == 69);
static_assert(stringEventPlan(0x3C).steps[1].kind == EventFieldKind::Gap8 &&
                  stringEventPlan(0x3C).steps[2].offset == 2 && stringEventPlan(0x3C).count == 10,
              "0x3C keeps its unfilled record field");
static_assert(stringEventPlan(0x30).steps[9].kind == EventFieldKind::Octets16 && stringEventPlan(0x30).slack == 16,
              "0x30: a u16 length at 85-86, tested against 71 bytes");

} // namespace trov
