// The field model: one description of every layout the library codes.
//
// A layout is a list of fields in wire order. Each field has a kind, a name
// and its place in the record. The kind says, through one property table,
// how the field travels (its wire bytes, or its count prefix and elements)
// and how it is held in memory (its record bytes and alignment, and the room
// its data takes in the data area). From the list the compiler derives a
// plan: every field's record offset, the fixed wire bytes and the size of the
// record's fixed part. One walker (FieldWalker.h) runs the four passes over
// any plan: encode size, encode, decode size, decode.
//
// Record form. Scalars sit at their natural width and alignment; byte blocks
// inline. A counted field (a byte string, characters, an array) is a 16-byte
// head aligned to 8: the count at +0 (u8 or u16) and a pointer at +8; its
// elements go to the data area. Where a record keeps the count in a field of
// its own, a Count field stands before the data field and the data field
// holds only the pointer (8 bytes, aligned to 8). A value coded by another
// codec (an attribute, a typed value) is a u16 identifier or data type and,
// at the next multiple of 8, a pointer to the value. Data of every field goes
// to the data area in field order, each piece starting at a multiple of 8:
// behind the record's fixed part, or into the managed buffer of a body.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/Cursor.h"

namespace trov {

enum class FieldKind : uint8_t {
    End,           // ends a field list held in a fixed-size array
    U8,            // big-endian scalars
    U16,
    U32,
    Reserved8,     // a u8 of the record that no wire byte fills
    Bytes,         // `size` bytes as they stand; record alignment 1
    Bytes12,       // 12 bytes as they stand, in a 16-byte slot aligned to 8
    Octets,        // counted bytes
    Chars,         // counted characters; a zero is kept behind non-empty data
    U16s,          // counted u16, stored in host order
    U32s,          // counted u32, stored in host order
    WideU32s,      // counted u32, stored in host order with 8 bytes of room each
    ByteU32Items,  // counted (u8, u32) items, 8-byte elements: u8 @0, u32 @4
    U32ByteItems,  // counted (u32, u8) items, 8-byte elements: u32 @0, u8 @4;
                   // the size reported for them is their wire size
    BytePairs,     // counted byte pairs, as they stand
    Rest,          // the bytes up to the end of the body; no count on the wire
    Count,         // a count kept in a record field of its own (u8 or u16 as
                   // `prefix` says); it counts the data field that follows
    Attribute,     // u16 attribute identifier, then the value its codec writes
    TypedValue,    // u16 data type, then the value that type's codec writes
    ReservedValue, // as TypedValue, with the room the type reserves
    Option,        // option parameter: u8 kind, u8 length, the value
    Attributes,    // u16 count, then attributes (id, length, value)
    EventAttributes, // as Attributes, with the rules of attribute lists in events
    Buffer,        // record only: the managed buffer descriptor of a body
    Record,        // a nested record, inline: the fields of plan `nested`,
                   // `size` record bytes at the nested record's alignment
    Records,       // behind a Count: that many records of plan `nested`,
                   // `size` bytes apart, in the data area
    Options,       // u8 count, then options (u8 kind, u8 length, the value);
                   // in the record a 16-byte StructOptionList
    Entry,         // u16 identifier, u16 length, the value in array form; in
                   // the record a 16-byte AttributeEntry
    Head,          // record only, dropped from plans: the next field starts a
                   // 16-byte head at a multiple of 8
};

// What the kinds have in common. `wire` is the fixed wire bytes of a field
// that has no count (0: it depends on `size`, or on the value); for counted
// kinds it is the wire bytes of one element. `record` is the record bytes of
// the field itself (heads, pointers, scalars); `room` the data-area bytes
// per element and `spare` the bytes kept behind non-empty data.
struct KindInfo {
    const char *name;
    uint8_t wire;
    uint8_t record;
    uint8_t align;
    uint8_t room;
    uint8_t spare;
    bool counted;
    const char *member; // a field without a record member's name is called
                        // this and its index in the layout ("value3")
};

inline constexpr KindInfo kKinds[] = {
    // name         wire record align room spare counted member
    {"end",            0,  0, 1, 0, 0, false, ""},
    {"u8",             1,  1, 1, 0, 0, false, "value"},
    {"u16",            2,  2, 2, 0, 0, false, "value"},
    {"u32",            4,  4, 4, 0, 0, false, "value"},
    {"reserved",       0,  1, 1, 0, 0, false, "reserved"},
    {"bytes",          0,  0, 1, 0, 0, false, "bytes"},
    {"bytes",         12, 16, 8, 0, 0, false, "bytes"},
    {"octets",         1, 16, 8, 1, 0, true,  "string"},
    {"chars",          1, 16, 8, 1, 1, true,  "string"},
    {"u16s",           2, 16, 8, 2, 0, true,  "array"},
    {"u32s",           4, 16, 8, 4, 0, true,  "array"},
    {"u32s",           4, 16, 8, 8, 0, true,  "array"},
    {"u8u32items",     5, 16, 8, 8, 0, true,  "array"},
    {"u32u8items",     5, 16, 8, 8, 0, true,  "array"},
    {"bytepairs",      2, 16, 8, 2, 0, true,  "array"},
    {"rest",           1, 16, 8, 1, 0, true,  "string"},
    {"count",          0,  0, 1, 0, 0, false, "count"},
    {"attribute",      0, 16, 8, 0, 0, false, "attribute"},
    {"value",          0, 16, 8, 0, 0, false, "value"},
    {"value",          0, 16, 8, 0, 0, false, "value"},
    {"option",         0, 16, 8, 0, 0, false, "option"},
    {"attributes",     0, 16, 8, 0, 0, false, "attributes"},
    {"attributes",     0, 16, 8, 0, 0, false, "attributes"},
    {"buffer",         0, 16, 8, 0, 0, false, "buffer"},
    {"record",         0,  0, 1, 0, 0, false, "record"},
    {"records",        0,  8, 8, 0, 0, true,  "records"},
    {"options",        1, 16, 8, 0, 0, false, "options"},
    {"entry",          4, 16, 8, 0, 0, false, "entry"},
    {"head",           0,  0, 8, 0, 0, false, ""},
};
static_assert(std::size(kKinds) == static_cast<size_t>(FieldKind::Head) + 1);

constexpr const KindInfo &kindInfo(FieldKind k) { return kKinds[static_cast<size_t>(k)]; }
constexpr bool isCounted(FieldKind k) { return kindInfo(k).counted; }

// A field of a layout. `prefix` is the wire width of a counted field's count
// (1 or 2; 0 when a Count field holds it, or for Rest) and the width of a
// Count field. `countWidth` is the record width of a head's count when it is
// wider than the wire's (a body's u8-counted string keeps a u16 length).
// `offset` is the record offset of the field, of a head, or of an identifier
// or data type; `data` the record offset of the pointer (kNoData: none).
//
// A Record or Records field names the plan of its records in `nested` and
// their record bytes (the room or the stride) in `size`. A Records field's
// pointer sits at `data`, a multiple of 8, when there are records; without
// any it is stored at `offset`, where the previous field ended (a quirk of
// the structured records, which is why an array of records closes its plan).
inline constexpr uint16_t kNoData = 0xFFFF;

struct Plan;

struct Field {
    FieldKind kind;
    uint8_t prefix = 0;
    uint16_t size = 0; // Bytes: the block's length; Record, Records: record bytes
    const char *name = nullptr;
    uint16_t offset = 0;
    uint16_t data = kNoData;
    uint8_t countWidth = 0;
    const Plan *nested = nullptr;
};

// The spellings layouts use.
namespace fields {
inline constexpr Field u8{FieldKind::U8};
inline constexpr Field u16{FieldKind::U16};
inline constexpr Field u32{FieldKind::U32};
inline constexpr Field reserved8{FieldKind::Reserved8};
inline constexpr Field b12{FieldKind::Bytes12};
inline constexpr Field oct8{FieldKind::Octets, 1};
inline constexpr Field oct16{FieldKind::Octets, 2};
inline constexpr Field chr8{FieldKind::Chars, 1};
inline constexpr Field chr16{FieldKind::Chars, 2};
inline constexpr Field u16s8{FieldKind::U16s, 1};
inline constexpr Field u16s16{FieldKind::U16s, 2};
inline constexpr Field u32s8{FieldKind::U32s, 1};
inline constexpr Field u32s16{FieldKind::U32s, 2};
inline constexpr Field wideU32s8{FieldKind::WideU32s, 1};
inline constexpr Field items8{FieldKind::ByteU32Items, 1};
inline constexpr Field rest{FieldKind::Rest, 0, 0, nullptr, 0, kNoData, 2}; // its length: a u16 in the record
inline constexpr Field count8{FieldKind::Count, 1};
inline constexpr Field count16{FieldKind::Count, 2};
inline constexpr Field count32{FieldKind::Count, 4}; // taken as 16 bits: its first two bytes in memory
inline constexpr Field octets{FieldKind::Chars};      // behind a Count: bytes with a spare byte
inline constexpr Field pairs{FieldKind::BytePairs};   // behind a Count
inline constexpr Field u32s{FieldKind::U32s};         // behind a Count
inline constexpr Field items5{FieldKind::U32ByteItems}; // behind a Count
inline constexpr Field attribute{FieldKind::Attribute};
inline constexpr Field value{FieldKind::TypedValue};
inline constexpr Field reservedValue{FieldKind::ReservedValue};
inline constexpr Field option{FieldKind::Option};
inline constexpr Field attrs{FieldKind::Attributes};
inline constexpr Field eventAttrs{FieldKind::EventAttributes};
inline constexpr Field buffer{FieldKind::Buffer};
inline constexpr Field head{FieldKind::Head};
inline constexpr Field chars{FieldKind::Chars};        // behind a Count: characters
inline constexpr Field plainOctets{FieldKind::Octets}; // behind a Count: bytes, no spare
inline constexpr Field options{FieldKind::Options, 0, 16};
inline constexpr Field entry{FieldKind::Entry, 0, 16};
constexpr Field bytes(uint16_t n) { return Field{FieldKind::Bytes, 0, n}; }
constexpr Field record(const Plan &p, uint16_t bytes) {
    return Field{FieldKind::Record, 0, bytes, nullptr, 0, kNoData, 0, &p};
}
constexpr Field records(const Plan &p, uint16_t stride) { // behind a Count
    return Field{FieldKind::Records, 0, stride, nullptr, 0, kNoData, 0, &p};
}
constexpr Field named(Field f, const char *name) {
    f.name = name;
    return f;
}
} // namespace fields

// ---- plans ---------------------------------------------------------------------

inline constexpr int kMaxFields = 24;

// The deliberate quirks a family keeps, as named parameters of its plans.
struct PlanRules {
    // The decode length tests compare against the bytes held plus `slack`
    // (one event tests 16 bytes fewer than its fields take); bytes the body
    // lacks read as 0 and the cursor stops at the end.
    uint8_t slack = 0;
    // Bytes of the record's fixed part that no field fills (the fixed part
    // the protocol states is larger than the fields need).
    uint8_t reserved = 0;
    // The size reported for the fixed part leaves out its first 16 bytes
    // (bare attribute lists report their entries and values only).
    bool headUnreported = false;
    // An encode size pass refuses a null pointer behind a count with 1 at
    // once; otherwise it only marks the size (`nullData`), so that a size
    // query still answers.
    bool nullRefusedAtOnce = true;
    // The decode pass writes the zero behind characters into their spare
    // byte; otherwise the spare byte keeps what the (zeroed) data area holds.
    bool terminateChars = false;
    // The decode pass zeroes the record's fixed part before it fills it.
    bool zeroFixedPart = false;
    // A structured record, which nests in others as a C struct does: its
    // size is rounded up to its own alignment (not to 8), the alignment being
    // the largest of its fields' up to the first field aligned to 8 or more
    // (a larger one after that is not seen); its counts are 16-bit whatever
    // their width. Walks into such records are bounded to kMaxRecordNesting levels.
    bool nestable = false;
};

// Structured records: nested, with the characters terminated, and a null
// pointer behind a count marked in the size rather than refused at once.
inline constexpr PlanRules kStructured{0, 0, false, false, true, false, true};

// Walks nested deeper than this (records in records, through attribute
// entries too) fail (decode size) or are skipped.
inline constexpr uint32_t kMaxRecordNesting = 16;

struct Plan {
    std::array<Field, kMaxFields> fields{};
    uint8_t count = 0;
    uint16_t wireFixed = 0; // wire bytes with every count 0 and no values
    uint16_t fieldsEnd = 0; // record bytes the fields take
    uint16_t record = 0;    // the fixed part: fieldsEnd and the reserved bytes, rounded up to 8
    uint16_t reportedFixed = 0;
    // The run of fields that opens the plan and has a fixed wire size
    // (scalars, reserved bytes, byte blocks): how many, and their wire bytes.
    // The walker reads such a run without a test per field when the body
    // holds it whole, and its size pass steps over it at once.
    uint8_t leadFields = 0;
    uint16_t leadWire = 0;
    uint8_t align = 1; // the record's alignment, as a nested record places it
    PlanRules rules{};
    bool valid = true;
};

// Whether a field has a fixed wire size and needs nothing but its bytes.
constexpr bool isFixedWire(FieldKind k) {
    switch (k) {
    case FieldKind::U8:
    case FieldKind::U16:
    case FieldKind::U32:
    case FieldKind::Reserved8:
    case FieldKind::Bytes:
    case FieldKind::Bytes12: return true;
    default: return false;
    }
}

// Where a field lands when the record is laid out by the kinds' rules from
// `end` on: its offset and (for pointers) the pointer's offset, and the new end.
struct Placement {
    uint32_t offset, data, end;
};

constexpr Placement place(const Field &f, uint32_t end, bool pointerOnly) {
    const KindInfo &k = kindInfo(f.kind);
    switch (f.kind) {
    case FieldKind::Bytes: return {end, kNoData, end + f.size};
    case FieldKind::Count: {
        const uint32_t at = alignTo(end, f.prefix);
        return {at, kNoData, at + f.prefix};
    }
    case FieldKind::Attribute:
    case FieldKind::TypedValue:
    case FieldKind::ReservedValue: {
        const uint32_t at = alignTo(end, 2);
        const uint32_t ptr = alignTo(at + 2, 8);
        return {at, ptr, ptr + 8};
    }
    case FieldKind::Record: {
        const uint32_t at = alignTo(end, f.nested->align);
        return {at, kNoData, at + f.size};
    }
    case FieldKind::Records: {
        const uint32_t ptr = alignTo(end, 8);
        return {end, ptr, ptr + 8};
    }
    default: break;
    }
    if (k.counted && pointerOnly) { // behind a Count field: the pointer alone
        const uint32_t at = alignTo(end, 8);
        return {at, at, at + 8};
    }
    const uint32_t at = alignTo(end, k.align);
    const bool pointer = k.counted || f.kind == FieldKind::Option || f.kind == FieldKind::Options ||
                         f.kind == FieldKind::Entry;
    return {at, pointer ? at + 8 : kNoData, at + k.record};
}

// A field's alignment in the record, as a record's own alignment counts it.
constexpr uint32_t fieldAlign(const Field &f) {
    switch (f.kind) {
    case FieldKind::Count: return f.prefix;
    case FieldKind::Record: return f.nested->align;
    case FieldKind::Bytes: return 1;
    default: return kindInfo(f.kind).counted ? 8 : kindInfo(f.kind).align;
    }
}

// Lays a field list out by the kinds' rules: every field's offset and
// pointer, the fixed wire bytes and the fixed part of the record.
constexpr Plan makePlan(const Field *list, size_t n, PlanRules rules = {}) {
    Plan plan{};
    plan.rules = rules;
    uint32_t end = 0, wire = 0, align = 1;
    bool countPending = false, alignSeen = false;
    for (size_t i = 0; i < n; ++i) {
        Field f = list[i];
        if (f.kind == FieldKind::End) break;
        if (f.kind == FieldKind::Head) {
            end = alignTo(end, 8);
            continue;
        }
        const KindInfo &k = kindInfo(f.kind);
        const bool behindCount = k.counted && f.prefix == 0 && f.kind != FieldKind::Rest;
        if (behindCount != countPending) plan.valid = false; // a Count and its data go together
        countPending = f.kind == FieldKind::Count;
        if (f.kind == FieldKind::Record || f.kind == FieldKind::Records) {
            // A nested plan that is there, valid, fits its room and reads at
            // least a byte per record (so no count outruns the input unseen).
            const Plan *n = f.nested;
            if (n == nullptr || !n->valid || f.size < n->record || n->wireFixed == 0) plan.valid = false;
            if (n == nullptr) break;
        }
        if (i > 0 && list[i - 1].kind == FieldKind::Records) plan.valid = false; // records close a plan
        if (f.kind == FieldKind::Count && !(f.prefix == 1 || f.prefix == 2 || (f.prefix == 4 && rules.nestable)))
            plan.valid = false;
        if (!alignSeen) {
            const uint32_t a = fieldAlign(f);
            if (a > align) align = a;
            alignSeen = a >= 8;
        }
        const Placement p = place(f, end, behindCount);
        f.offset = static_cast<uint16_t>(p.offset);
        f.data = static_cast<uint16_t>(p.data);
        end = p.end;
        switch (f.kind) {
        case FieldKind::Bytes: wire += f.size; break;
        case FieldKind::Record: wire += f.nested->wireFixed; break;
        case FieldKind::Attribute:
        case FieldKind::TypedValue:
        case FieldKind::ReservedValue:
        case FieldKind::Option:
        case FieldKind::Attributes:
        case FieldKind::EventAttributes: wire += 2; break; // identifier, type, or count
        default: wire += k.counted || f.kind == FieldKind::Count ? f.prefix : k.wire; break;
        }
        if (plan.count == kMaxFields) {
            plan.valid = false;
            break;
        }
        plan.fields[plan.count++] = f;
    }
    if (countPending) plan.valid = false;
    for (uint8_t i = 0; i < plan.count && isFixedWire(plan.fields[i].kind); ++i) {
        const Field &f = plan.fields[i];
        plan.leadWire = static_cast<uint16_t>(plan.leadWire + (f.kind == FieldKind::Bytes ? f.size : kindInfo(f.kind).wire));
        plan.leadFields = static_cast<uint8_t>(i + 1);
    }
    plan.wireFixed = static_cast<uint16_t>(wire);
    plan.fieldsEnd = static_cast<uint16_t>(end);
    plan.align = static_cast<uint8_t>(align);
    plan.record = static_cast<uint16_t>(rules.nestable ? alignTo(end, align) : alignTo(end + rules.reserved, 8));
    plan.reportedFixed = rules.headUnreported ? static_cast<uint16_t>(plan.record - 16) : plan.record;
    return plan;
}

template <size_t N>
constexpr Plan makePlan(const Field (&list)[N], PlanRules rules = {}) {
    return makePlan(list, N, rules);
}

// The plan of a structured record.
template <size_t N>
constexpr Plan structurePlan(const Field (&list)[N]) {
    return makePlan(list, N, kStructured);
}

// The room a reserved value keeps for data type T: 54 bytes (rounded up to
// 8) for types 16 and 17, 24 for types 19 and 20, none for the others.
constexpr uint32_t reservedValueRoom(uint16_t type) {
    switch (type) {
    case 16:
    case 17: return alignTo(54, 8);
    case 19:
    case 20: return 24;
    default: return 0;
    }
}

// ---- the data area -----------------------------------------------------------

// Data-area bytes of n elements of a counted kind.
constexpr uint32_t dataRoom(FieldKind kind, uint32_t n) {
    const KindInfo &k = kindInfo(kind);
    if (n == 0) return 0;
    return alignTo(n * k.room + k.spare, 8);
}

// The figure the protocol reports for them: the room, except for items it
// counts at their wire size.
constexpr uint32_t dataReported(FieldKind kind, uint32_t n) {
    if (kind == FieldKind::U32ByteItems && n != 0) return alignTo(n * kindInfo(kind).wire, 8);
    return dataRoom(kind, n);
}

} // namespace trov
