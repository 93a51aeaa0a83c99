// Function-unit bodies described as field lists.
//
// Apart from the method invocation and the event lists, every function-unit
// body is a sequence of big-endian fields drawn from a closed set: u8, u16
// and u32 scalars, fixed blocks of raw bytes, byte strings with a u8 or u16
// length, a trailing block that runs to the end of the body, and attribute
// values (a u16 identifier, then the value as the attribute's codec writes
// it, in array form). A layout lists its fields in wire order once; the
// request length (or that it varies), the reply's minimum length, every
// field's place in the body record and the record's size all follow from
// that list, and one generic routine encodes or decodes any layout.
//
// Body records hold the fields in wire order at their natural alignment:
// scalars as themselves, byte blocks inline, strings and the trailing block
// as an OctetString (16 bytes, 8-aligned; a u8-counted string uses the first
// byte of the length on encoding), an attribute value as a u16 identifier
// followed by an 8-aligned pointer to the value. A layout with any variable
// part ends its record with the BufferDesc that holds the decoded data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "api/Dispatch.h"
#include "engine/Cursor.h"

namespace trov {

enum class BodyFieldKind : uint8_t {
    U8,
    U16,
    U32,
    Bytes,     // `bytes` raw bytes, inline in the record
    String8,   // u8 length, then the bytes
    String16,  // u16 length, then the bytes
    Block,     // the rest of the body; no length on the wire
    Attribute, // u16 identifier, then the value (array form)
};

struct BodyField {
    BodyFieldKind kind;
    uint8_t bytes; // Bytes only
};
static_assert(sizeof(BodyField) == 2);

// The fields, as layouts spell them.
namespace field {
inline constexpr BodyField U8{BodyFieldKind::U8, 0};
inline constexpr BodyField U16{BodyFieldKind::U16, 0};
inline constexpr BodyField U32{BodyFieldKind::U32, 0};
inline constexpr BodyField String8{BodyFieldKind::String8, 0};
inline constexpr BodyField String16{BodyFieldKind::String16, 0};
inline constexpr BodyField Block{BodyFieldKind::Block, 0};
inline constexpr BodyField Attribute{BodyFieldKind::Attribute, 0};
constexpr BodyField bytes(uint8_t n) { return BodyField{BodyFieldKind::Bytes, n}; }
} // namespace field

// How a body is read: through its field list, not at all (the unit sends no
// reply body), or as one of the two event-list framings.
enum class BodyKind : uint8_t { Fields, NoReply, EventList, ShortEventList };

struct BodyLayout {
    BodyKind kind;
    const BodyField *fields;
    uint8_t count;
};

// ---- what a field list implies -------------------------------------------------


constexpr bool isVariable(BodyFieldKind k) {
    return k == BodyFieldKind::String8 || k == BodyFieldKind::String16 || k == BodyFieldKind::Block ||
           k == BodyFieldKind::Attribute;
}

// Wire bytes a field takes at least: its prefix for strings, the identifier
// and one value byte for an attribute, nothing for the trailing block.
constexpr uint32_t minimumWireBytes(const BodyField &f) {
    switch (f.kind) {
    case BodyFieldKind::U8: return 1;
    case BodyFieldKind::U16: return 2;
    case BodyFieldKind::U32: return 4;
    case BodyFieldKind::Bytes: return f.bytes;
    case BodyFieldKind::String8: return 1;
    case BodyFieldKind::String16: return 2;
    case BodyFieldKind::Block: return 0;
    case BodyFieldKind::Attribute: return 3;
    }
    return 0;
}

constexpr uint32_t recordAlign(BodyFieldKind k) {
    switch (k) {
    case BodyFieldKind::U8:
    case BodyFieldKind::Bytes: return 1;
    case BodyFieldKind::U16: return 2;
    case BodyFieldKind::U32: return 4;
    case BodyFieldKind::Attribute: return 2; // the identifier; the pointer after it is 8-aligned
    default: return 8;
    }
}

// Where a field that starts at `at` ends in the record: an attribute is its
// identifier and then, at the next multiple of 8, the value pointer.
constexpr uint32_t valueOffset(uint32_t at) { return alignTo(at + 2, 8); }

constexpr uint32_t fieldEnd(const BodyField &f, uint32_t at) {
    switch (f.kind) {
    case BodyFieldKind::U8: return at + 1;
    case BodyFieldKind::U16: return at + 2;
    case BodyFieldKind::U32: return at + 4;
    case BodyFieldKind::Bytes: return at + f.bytes;
    case BodyFieldKind::Attribute: return valueOffset(at) + 8;
    default: return at + sizeof(OctetString);
    }
}

constexpr bool hasVariableParts(const BodyLayout &l) {
    for (uint32_t i = 0; i < l.count; ++i)
        if (isVariable(l.fields[i].kind)) return true;
    return false;
}

// Whether a request of this layout always has the same length.
constexpr bool isFixedLength(const BodyLayout &l) {
    return l.kind == BodyKind::Fields && !hasVariableParts(l);
}

// The request length of a fixed layout; the reply's minimum body length.
constexpr uint16_t minimumLength(const BodyLayout &l) {
    switch (l.kind) {
    case BodyKind::NoReply: return 0;
    case BodyKind::EventList: return 12;
    case BodyKind::ShortEventList: return 5;
    case BodyKind::Fields: break;
    }
    uint32_t n = 0;
    for (uint32_t i = 0; i < l.count; ++i) n += minimumWireBytes(l.fields[i]);
    return static_cast<uint16_t>(n);
}

constexpr uint32_t fieldOffset(const BodyLayout &l, uint32_t index) {
    uint32_t at = 0;
    for (uint32_t i = 0;; ++i) {
        at = alignTo(at, recordAlign(l.fields[i].kind));
        if (i == index) return at;
        at = fieldEnd(l.fields[i], at);
    }
}

constexpr uint32_t fieldsEnd(const BodyLayout &l) {
    return l.count == 0 ? 0 : fieldEnd(l.fields[l.count - 1], fieldOffset(l, l.count - 1));
}

constexpr uint32_t bufferOffset(const BodyLayout &l) { return alignTo(fieldsEnd(l), 8); }

// The record's size as a C compiler lays it out; an empty layout still has a
// one-byte record, since C has no empty structures.
constexpr uint32_t layoutRecordBytes(const BodyLayout &l) {
    if (l.count == 0) return 1;
    uint32_t align = 1;
    for (uint32_t i = 0; i < l.count; ++i) {
        const uint32_t a = l.fields[i].kind == BodyFieldKind::Attribute ? 8 : recordAlign(l.fields[i].kind);
        if (a > align) align = a;
    }
    const uint32_t end = hasVariableParts(l) ? bufferOffset(l) + sizeof(BufferDesc) : fieldsEnd(l);
    return alignTo(end, align);
}

// A field-list layout over a constant array of fields.
template <size_t N>
constexpr BodyLayout fieldLayout(const BodyField (&fields)[N]) {
    static_assert(N < 256);
    return BodyLayout{BodyKind::Fields, fields, static_cast<uint8_t>(N)};
}

// Whether a layout places its fields where the C compiler places the public
// record's members: `offsets` lists, in field order, each field's member (an
// attribute's identifier, then its value pointer), then the buffer when the
// layout has variable parts; `size` is the record's size.
constexpr bool matchesRecord(const BodyLayout &l, size_t size,
                             std::initializer_list<size_t> offsets) {
    const size_t *next = offsets.begin();
    for (uint32_t i = 0; i < l.count; ++i) {
        if (next == offsets.end() || *next++ != fieldOffset(l, i)) return false;
        if (l.fields[i].kind == BodyFieldKind::Attribute &&
            (next == offsets.end() || *next++ != valueOffset(fieldOffset(l, i))))
            return false;
    }
    if (hasVariableParts(l) && (next == offsets.end() || *next++ != bufferOffset(l))) return false;
    return next == offsets.end() && size == layoutRecordBytes(l);
}

// ---- the generic operations ------------------------------------------------------

// Builds the request packet of layout `l` from `record` into `output`.
// Results: 0; 1 a string with a length but no data, or an attribute without a
// value; 10 an attribute identifier without a codec for the header's version;
// the attribute codec's size result; 5 a body longer than 65535 bytes; 8, 6,
// 7 from reserving the output (nothing written to a caller's buffer that is
// too short).
TrovResult encodeLayout(const BodyLayout &l, HeaderInfo *info, const void *record,
                        EncodeOutput *output);

// Reads a reply body of layout `l` into result->record (allocated and zeroed
// when null). Results: 0; 5 the body is shorter than the layout's minimum
// (nothing allocated) or ends inside a later field, or a trailing block
// longer than 65535 bytes; 6 an allocation failed; 10 an attribute identifier
// without a codec; the attribute codec's size result; 1 or 7 from preparing
// the record's managed buffer. Every failure sets result->type to 6 and frees
// what the call allocated; a caller's record is never freed. NoReply layouts
// read nothing and return 0; event-list layouts decode through the event
// table.
TrovResult decodeLayout(const BodyLayout &l, HeaderInfo *info, DecodeResult *result,
                        const PacketCursor *body);

// The row operations of one layout: thin instantiations of the routines above.
template <const BodyLayout *L>
TrovResult encodeBody(HeaderInfo *info, const void *record, void *output, void *, uint8_t) {
    return encodeLayout(*L, info, record, static_cast<EncodeOutput *>(output));
}

template <const BodyLayout *L>
TrovResult decodeBody(HeaderInfo *info, DecodeResult *result, const PacketCursor *body, void *) {
    return decodeLayout(*L, info, result, body);
}

} // namespace trov
