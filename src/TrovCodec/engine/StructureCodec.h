// Descriptor-driven structure codec.
//
// A structured value (a record of scalars, nested records, counted strings,
// counted arrays, option lists and attribute values) is described by a static
// descriptor: an array of 16-byte StructField entries in field order, ended by
// an entry whose field number is 0. One generic walk per operation interprets
// any descriptor: encode size, encode, decode size, decode.
//
// Why a walk of its own beside the field model (Field.h): structures place
// things by rules the flat layouts do not share. A count is any earlier
// count-flagged scalar of the same walk (not the field in front), records
// nest inside records with their own alignment, option lists and attribute
// values sit inline as 16-byte entries, every piece of data goes to one extra
// area behind the outermost record, the reported size is reset by each
// array, and the decode pass re-sizes its own input so that it can be called
// on bytes nobody sized. Folding those rules into the walker would give every
// flat layout a dozen parameters it never uses.
//
// On the wire the fields follow one another with no padding:
//   kinds 1-7  scalar: `size` bytes, big-endian (only widths 1, 2, 4 are written)
//   kind 8     count octets, raw
//   kind 9     count characters, raw (decoded with a terminating zero)
//   kind 10    the nested record's fields
//   kind 11    option list: u8 option count, then per option u8 kind, u8 length,
//              value (the option-parameter layout; kinds above 5 carry `length`
//              raw bytes)
//   kind 12    count elements, each the nested record's fields
//   kind 13    u16 attribute identifier, u16 value length, value as the
//              attribute's codec writes it in array form
// In the record, scalars take `size` bytes aligned to `size`; kinds 8, 9 and 12
// an 8-byte pointer aligned to 8; kind 10 `size` bytes aligned to the nested
// record's alignment; kind 11 a StructOptionList and kind 13 an AttributeEntry
// (both 16 bytes aligned to 8). Decoded variable data goes to an extra area
// behind the record, each item at the next multiple of 8.
//
// The count of kinds 8, 9 and 12 is the most recent count-flagged scalar of
// the same walk (a nested walk starts with no count): a 1-byte scalar gives its
// byte, a wider one its first two bytes in memory read as a u16 (a 4-byte count
// is taken as 16 bits). Kinds 8, 9, 12 and 13 clear the count.
//
// Memory safety. The decode-size walk checks every byte it consumes against
// the cursor, so neither decode pass reads past the item. It reports two
// figures (RecordSize): `bytes`, the protocol's record size in 16-bit
// arithmetic, in which a kind-12 array SETS the running total of its
// descriptor (the extra bytes counted for the fields before it are dropped),
// so `bytes` can be smaller than what the fields decode to (a string followed
// by an array is the common case); and `extent`, in 32 bits, what the decode
// pass really writes. As everywhere in this library, whoever allocates for a
// decode gives it at least `extent` bytes and reports `bytes`. structDecode
// does not rely on its caller having sized the same bytes: it recomputes the
// extent on a copy of the cursor, writes nothing for input that does not
// size, and writes the extra area only within that extent (an attribute value
// whose codec would need more is dropped: null pointer, length 0, its bytes
// skipped). Record writes stay within structRecordSize(d).
//
// Nesting (nested records, arrays of records, attribute values whose codecs
// use structures in turn) is bounded to kMaxStructDepth levels, carried down
// the walks and through attribute codecs' array flag; a deeper item fails the
// decode-size walk with 5 and is skipped by the others.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/CodecTypes.h"
#include "TrovCodec.h"

namespace trov {

// One descriptor entry. The layout is fixed: descriptor tables are data.
struct StructField {
    uint8_t number;     // 1, 2, 3 ... in order; 0 ends the descriptor
    uint8_t kind;       // StructKind
    uint8_t countFlag;  // 1: this scalar holds the count of the next counted field
    uint8_t reserved0;
    uint16_t size;      // scalar width; nested record size; array element stride
    uint16_t reserved1;
    const StructField *nested; // kinds 10 and 12, else null
};
static_assert(sizeof(StructField) == 16);
static_assert(offsetof(StructField, number) == 0 && offsetof(StructField, kind) == 1 &&
              offsetof(StructField, countFlag) == 2 && offsetof(StructField, reserved0) == 3 &&
              offsetof(StructField, size) == 4 && offsetof(StructField, reserved1) == 6 &&
              offsetof(StructField, nested) == 8);

// Field kinds. 1 to 7 are scalars (3: u8, 5: u16, 7: u32; 1, 2: other 1-byte
// scalars, 6: another 4-byte scalar); the walks only look at `size`.
enum StructKind : uint8_t {
    kStructScalarFirst = 1,
    kStructScalarLast = 7,
    kStructOctets = 8,
    kStructChars = 9,
    kStructNested = 10,
    kStructOptions = 11,
    kStructArray = 12,
    kStructAttribute = 13,
};

// Kind 11 in memory: the option count (the wire prefix is one byte) and the
// options. On decoding both the entries and the option values are placed in
// the extra area; options is null when count is 0.
struct StructOption {
    uint8_t kind;
    uint8_t length;  // as on the wire; on encoding used for kinds above 5 only
    uint8_t reserved[6];
    void *value;     // the option-parameter value; null when it has no bytes
};
struct StructOptionList {
    uint8_t count;
    uint8_t reserved[7];
    StructOption *options;
};
static_assert(sizeof(StructOption) == 16 && offsetof(StructOption, value) == 8);
static_assert(sizeof(StructOptionList) == 16 && offsetof(StructOptionList, options) == 8);

// Walks nested deeper than this fail (decode size) or are skipped.
constexpr uint32_t kMaxStructDepth = 16;

// ---- building descriptors ------------------------------------------------------

constexpr StructField structScalar(uint8_t number, uint8_t kind, uint16_t width,
                                   uint8_t countFlag = 0) {
    return {number, kind, countFlag, 0, width, 0, nullptr};
}
constexpr StructField structField(uint8_t number, uint8_t kind, uint16_t size = 8,
                                  const StructField *nested = nullptr) {
    return {number, kind, 0, 0, size, 0, nested};
}
constexpr StructField structEnd() { return {0, 0, 0, 0, 0, 0, nullptr}; }

// ---- derived properties ----------------------------------------------------------

constexpr bool structIsScalar(uint8_t kind) {
    return kind >= kStructScalarFirst && kind <= kStructScalarLast;
}

// Rounds offset up to a multiple of alignment (any alignment; 0 and 1 leave
// it). Record offsets are 16-bit.
constexpr uint16_t structAlignOffset(uint32_t offset, uint32_t alignment) {
    if (alignment <= 1) return static_cast<uint16_t>(offset);
    return static_cast<uint16_t>((offset + alignment - 1) / alignment * alignment);
}

constexpr uint16_t structAlignment(const StructField *d, uint32_t depth = 0);

// A field's alignment: a scalar's is its size, a nested record's its own,
// every other kind's 8.
constexpr uint16_t structFieldAlignment(const StructField &f, uint32_t depth = 0) {
    if (structIsScalar(f.kind)) return f.size;
    if (f.kind == kStructNested) return structAlignment(f.nested, depth + 1);
    if (f.kind >= kStructOctets && f.kind <= kStructAttribute) return 8;
    return 1;
}

// The largest field alignment, except that the search stops at the first
// field whose alignment is 8 or more (a later, larger one is not seen).
constexpr uint16_t structAlignment(const StructField *d, uint32_t depth) {
    uint16_t alignment = 1;
    if (d == nullptr || depth > kMaxStructDepth) return alignment;
    for (; d->number != 0; ++d) {
        const uint16_t a = structFieldAlignment(*d, depth);
        if (a > alignment) alignment = a;
        if (a >= 8) break;
    }
    return alignment;
}

// Scalar bytes plus the fixed wire size of nested records (kind 10); the
// variable kinds add nothing. 16-bit.
constexpr uint16_t structFixedWireSize(const StructField *d, uint32_t depth = 0) {
    uint16_t total = 0;
    if (d == nullptr || depth > kMaxStructDepth) return total;
    for (; d->number != 0; ++d) {
        if (structIsScalar(d->kind)) total = static_cast<uint16_t>(total + d->size);
        if (d->kind == kStructNested)
            total = static_cast<uint16_t>(total + structFixedWireSize(d->nested, depth + 1));
    }
    return total;
}

// Where a field sits in the record given the running offset, and the offset
// after it. Shared by every walk and by structRecordSize. `countPending`: a
// count above 0 is waiting (only kind 12 cares).
struct StructPlacement {
    uint16_t at;
    uint16_t next;
};
constexpr StructPlacement structPlaceField(const StructField &f, uint16_t offset,
                                           bool countPending) {
    if (structIsScalar(f.kind)) {
        const uint16_t at = structAlignOffset(offset, f.size);
        // After a scalar of an unusual width the offset restarts at 0.
        const bool usual = f.size == 1 || f.size == 2 || f.size == 4 || f.size == 8;
        return {at, usual ? static_cast<uint16_t>(at + f.size) : uint16_t{0}};
    }
    switch (f.kind) {
    case kStructOctets:
    case kStructChars: {
        const uint16_t at = structAlignOffset(offset, 8);
        return {at, static_cast<uint16_t>(at + 8)};
    }
    case kStructNested: {
        const uint16_t at = structAlignOffset(offset, structAlignment(f.nested, 1));
        return {at, static_cast<uint16_t>(at + f.size)};
    }
    case kStructOptions:
    case kStructAttribute: {
        const uint16_t at = structAlignOffset(offset, 8);
        return {at, static_cast<uint16_t>(at + f.size)};
    }
    case kStructArray: {
        // Without elements the pointer slot is taken where the offset stands.
        const uint16_t at = countPending ? structAlignOffset(offset, 8) : offset;
        return {at, static_cast<uint16_t>(at + 8)};
    }
    default: return {offset, offset};
    }
}

// Bytes the field occupies in the record from its placement.
constexpr uint16_t structFieldFootprint(const StructField &f) {
    if (f.kind == kStructOctets || f.kind == kStructChars || f.kind == kStructArray) return 8;
    if (structIsScalar(f.kind) || (f.kind >= kStructNested && f.kind <= kStructAttribute))
        return f.size;
    return 0;
}

// The record size of a descriptor: the furthest byte any field reaches,
// rounded up to the descriptor's alignment. A decode never writes the record
// beyond it; callers size records (and the fixed record size they pass to
// structDecCalc) with it.
constexpr uint16_t structRecordSize(const StructField *d) {
    uint32_t extent = 0;
    uint16_t offset = 0;
    for (const StructField *f = d; f != nullptr && f->number != 0; ++f) {
        const StructPlacement p = structPlaceField(*f, offset, true);
        const uint32_t end = uint32_t{p.at} + structFieldFootprint(*f);
        if (end > extent) extent = end;
        offset = p.next;
    }
    return structAlignOffset(extent, structAlignment(d));
}

// Compile-time check for descriptor tables: field numbers 1, 2, 3 ...;
// scalars of width 1, 2, 4 or 8; count flags on scalars only; nested
// descriptors present, valid and no larger than the room given to them;
// option lists and attribute values given their 16 bytes; reserved bytes 0.
constexpr bool structDescriptorValid(const StructField *d, uint32_t depth = 0) {
    if (d == nullptr || depth > kMaxStructDepth) return false;
    uint8_t number = 0;
    for (const StructField *e = d; e->number != 0; ++e) {
        const StructField &f = *e;
        if (f.number != ++number || f.reserved0 != 0 || f.reserved1 != 0) return false;
        if (f.countFlag > 1 || (f.countFlag == 1 && !structIsScalar(f.kind))) return false;
        if (structIsScalar(f.kind)) {
            if (f.size != 1 && f.size != 2 && f.size != 4 && f.size != 8) return false;
        } else if (f.kind == kStructNested || f.kind == kStructArray) {
            // An array element may be the descriptor itself (a tree, bounded
            // at run time); it is checked where it is defined.
            if (f.nested == nullptr || f.size < structRecordSize(f.nested)) return false;
            if (f.nested != d && !structDescriptorValid(f.nested, depth + 1)) return false;
        } else if (f.kind == kStructOptions || f.kind == kStructAttribute) {
            if (f.size < 16) return false;
        } else if (f.kind != kStructOctets && f.kind != kStructChars) {
            return false;
        }
        if (f.kind != kStructNested && f.kind != kStructArray && f.nested != nullptr) return false;
    }
    return true;
}

// ---- the four operations --------------------------------------------------------
//
// `level` is the nesting level the item starts at: 1 at the top. A structure
// decoded as an attribute value starts at the level its array flag carries,
// and attribute values inside a structure get the structure's level plus one
// as their (non-zero) array flag, so structures and attribute lists nested in
// each other share one bound.

// Stores in *size the packet bytes of `record`: the fixed wire size plus the
// variable part (counted bytes, elements, option lists, 4 + value bytes per
// attribute whose codec sized it). An attribute without a codec (or whose
// codec fails to size it) counts nothing and is not written by structEncode
// either. The walk's own result (10, or the codec's) is not passed on:
// returns 0, or 1 for a null argument or null array elements or options
// behind a non-zero count (they cannot be sized). Null bytes behind a
// non-zero count, or a null option value that has bytes, set the size's
// nullData: no encoder may write such a record. The size's `bytes` is
// 16-bit like every packet size (a record of more packet bytes wraps; no
// packet body could carry it), its `extent` what structEncode really
// writes, less 8 for each 8-byte scalar, which is counted but not written.
TrovResult structEncCalc(const StructField *d, const void *record, WireSize *size,
                         uint32_t level = 1);

// Writes `record` at the cursor and advances it. Does not check room: the
// caller sized the buffer with structEncCalc. Returns 0 (1 for a null
// argument, nothing written).
TrovResult structEncode(const StructField *d, PacketCursor *cursor, const void *record,
                        uint32_t level = 1);

// Checks that the cursor holds the item and reports the record bytes of its
// decoded form: bytes = ((fixedRecordBytes + 7) & 0xFFF8) plus the extra
// bytes of the decode-size walk, 16-bit (wrapping as the protocol's sizes
// do); extent = the same in 32 bits without the kind-12 reset, the room a
// caller allocates for the record and its extra area laid out one after the
// other. fixedRecordBytes must be at least structRecordSize(d). On success
// advances *cursor past the item. Results: 0; 1 null argument or cursor
// position; 5 fewer bytes than the fixed wire size, a count larger than the
// bytes remaining, any item cut short, an attribute codec's failure, or
// nesting beyond kMaxStructDepth. On failure *cursor and *size are unchanged.
TrovResult structDecCalc(const StructField *d, uint16_t fixedRecordBytes, PacketCursor *cursor,
                         RecordSize *size, uint32_t level = 1);
// Decodes the item at the cursor into `record` and its variable data into the
// extra area from `extra` (rounded up to 8), and advances the cursor. Characters
// are followed by a zero byte. Writes the record within structRecordSize(d) bytes
// and the extra area within the extent structDecCalc reports for it (the
// extent less the rounded fixed record size). Returns the first free 8-aligned
// address of the extra area. Input that structDecCalc would refuse is neither
// read nor written: the cursor stays and `extra` rounded up to 8 is returned.
// Null arguments return null.
void *structDecode(const StructField *d, PacketCursor *cursor, void *record, void *extra,
                   uint32_t level = 1);

} // namespace trov
