// Function-unit bodies as layouts of the field model.
//
// Apart from the method invocation and the event lists, every function-unit
// body is a sequence of big-endian fields: u8, u16 and u32 scalars, fixed
// blocks of raw bytes, byte strings with a u8 or u16 length, a trailing
// block that runs to the end of the body, and attribute values (a u16
// identifier, then the value as the attribute's codec writes it, in array
// form). The public record of a body holds the fields in wire order at their
// natural alignment: strings and the trailing block as an OctetString (a
// u8-counted string uses the first byte of the length on encoding), an
// attribute as `id` and a pointer `value`; a layout with variable parts ends
// its record with the BufferDesc that receives the decoded data.
//
// Each layout is written once, in FunctionUnitBodies.h, as the public
// record's members in wire order. The compiler derives the plan and the
// record's size from the kinds; the public records (TrovBodies.h) are
// generated from the layouts, and the compiler checks each record against its
// layout's offsets and size.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/CodecTypes.h"
#include "engine/Field.h"
#include "events/EventList.h"

namespace trov {

// How a body is read: through its fields, not at all (the unit sends no
// reply body), or as one of the two event-list framings.
enum class BodyKind : uint8_t { Fields, NoReply, EventList, ShortEventList };

struct BodyLayout {
    BodyKind kind;
    const Plan *plan;     // Fields only
    uint16_t recordBytes; // the public record's size
    const char *name;     // the public record's name
    // Per plan field: the record member that holds the field's value pointer
    // where that is a member of its own (an attribute's `value`), else null.
    // The codecs go by offsets; the records' generator needs the name.
    const char *const *pointers = nullptr;
};

constexpr bool hasVariableParts(const BodyLayout &l) {
    if (l.plan == nullptr) return false;
    for (uint8_t i = 0; i < l.plan->count; ++i)
        if (l.plan->fields[i].kind == FieldKind::Buffer) return true;
    return false;
}

// Whether a request of this layout always has the same length.
constexpr bool isFixedLength(const BodyLayout &l) {
    return l.kind == BodyKind::Fields && !hasVariableParts(l);
}

// The request length of a fixed layout; the reply's minimum body length: the
// fixed wire bytes and one value byte behind each attribute identifier.
constexpr uint16_t minimumLength(const BodyLayout &l) {
    switch (l.kind) {
    case BodyKind::NoReply: return 0;
    case BodyKind::EventList: return eventFrame(EventFraming::Long).head.wireFixed;
    case BodyKind::ShortEventList: return eventFrame(EventFraming::Short).head.wireFixed;
    case BodyKind::Fields: break;
    }
    uint32_t n = l.plan->wireFixed;
    for (uint8_t i = 0; i < l.plan->count; ++i) n += l.plan->fields[i].kind == FieldKind::Attribute;
    return static_cast<uint16_t>(n);
}

// The spellings of the body tables: a member of the record R, its kind and,
// for an attribute, the member that holds the value's pointer.
namespace body_fields {
struct Member {
    Field field;
    const char *pointer = nullptr;
};
constexpr Member member(Field f, const char *name, size_t offset, size_t data = kNoData,
                        const char *pointer = nullptr) {
    f.name = name;
    f.offset = static_cast<uint16_t>(offset);
    f.data = static_cast<uint16_t>(data);
    return Member{f, pointer};
}
inline constexpr Field str8{FieldKind::Octets, 1, 0, nullptr, 0, kNoData, 2};
inline constexpr Field block = fields::rest;
} // namespace body_fields

// The plan of a layout's members (the offsets they were given are not used).
template <size_t N>
constexpr Plan planOf(const body_fields::Member (&given)[N]) {
    std::array<Field, N> list{};
    for (size_t i = 0; i < N; ++i) list[i] = given[i].field;
    return makePlan(list.data(), N);
}

template <size_t N>
constexpr std::array<const char *, N> pointersOf(const body_fields::Member (&given)[N]) {
    std::array<const char *, N> out{};
    for (size_t i = 0; i < N; ++i) out[i] = given[i].pointer;
    return out;
}

// The size of the record a plan lays out: its fields rounded up to the
// largest alignment among them. C gives every struct a member, so a record
// without fields keeps one byte.
constexpr uint16_t bodyRecordBytes(const Plan &p) {
    uint32_t align = 1;
    for (uint8_t i = 0; i < p.count; ++i) {
        const Field &f = p.fields[i];
        const uint32_t a = f.data != kNoData ? 8 : kindInfo(f.kind).align;
        if (a > align) align = a;
    }
    return static_cast<uint16_t>(p.fieldsEnd == 0 ? 1 : alignTo(p.fieldsEnd, align));
}

// Whether the plan puts every field where the public record has it (the
// offsets and pointers the members were given, from offsetof).
template <size_t N>
constexpr bool placedAsRecord(const Plan &p, const body_fields::Member (&given)[N]) {
    if (!p.valid || p.count != N) return false;
    for (size_t i = 0; i < N; ++i) {
        const Field &f = p.fields[i], &g = given[i].field;
        if (f.offset != g.offset || (g.data != kNoData && f.data != g.data)) return false;
    }
    return true;
}

// The row operations of a layout.
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
// `read`, when given, receives the body bytes read on success.
TrovResult decodeLayout(const BodyLayout &l, HeaderInfo *info, DecodeResult *result,
                        const PacketCursor *body, uint32_t *read = nullptr);

// Where the size pass over a body of a Fields layout stops: the field (its
// index in the plan, which the layout description numbers alike) and the
// body offset where the field starts; after a success, the field count and
// the bytes the body's fields take.
struct FieldStop {
    uint8_t field = 0;
    uint32_t at = 0;
};

// Runs the size pass of decodeLayout field by field, to find the field it
// fails at. Nothing is allocated. Results: the size pass's (0 when the body
// passes it; decodeLayout may still refuse a body shorter than its minimum).
TrovResult locateField(const BodyLayout &l, const HeaderInfo *info, const PacketCursor *body, FieldStop &stop);

template <const BodyLayout *L>
TrovResult encodeBody(HeaderInfo *info, const void *record, void *output, void *, uint8_t) {
    return encodeLayout(*L, info, record, static_cast<EncodeOutput *>(output));
}

template <const BodyLayout *L>
TrovResult decodeBody(HeaderInfo *info, DecodeResult *result, const PacketCursor *body, void *) {
    return decodeLayout(*L, info, result, body);
}

} // namespace trov
