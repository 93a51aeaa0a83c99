// One walker for every plan of the field model (Field.h): flat layouts and
// structured records alike.
//
// Encode size: adds up the wire bytes of a record (through the value codecs
// for values, attributes and lists). Encode: writes them; the cursor's
// writers refuse what does not fit. Decode size: checks that the packet
// holds every field (every count, length, identifier and type is tested
// before use), moves the cursor past the item and adds up the data area, in
// the protocol's 16-bit figure and the true extent. Decode: fills the fixed
// part and puts every field's data into the data area in field order, each
// piece at a multiple of 8.
//
// The engine knows no table: whatever a field needs from above (the codec of
// an attribute identifier or a data type, the attribute lists) comes in
// through FieldEnv.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "engine/CodecTypes.h"
#include "engine/Field.h"

namespace trov {

// An attribute list's four operations over its AttributeList head at `head`.
struct ListOps {
    TrovResult (*encCalc)(const void *head, uint8_t nesting, uint8_t version, WireSize &size);
    void (*encode)(PacketCursor &cursor, const void *head, uint8_t nesting, uint8_t version);
    // Reads the count itself; adds the entries and values to `data`.
    TrovResult (*decCalc)(PacketCursor &cursor, uint8_t nesting, uint8_t version, Sizes &data);
    // Fills the head; entries and values from `data` on; returns their end.
    uint8_t *(*decode)(PacketCursor &cursor, void *head, uint8_t *data, uint8_t nesting,
                       uint8_t version);
};

struct FieldEnv {
    uint8_t version = 0; // the packet's version byte: attribute fields and lists
    uint8_t nesting = 0; // the array flag of the value holding the fields (nesting depth)
    const ValueCodecOps *(*attribute)(uint16_t id, uint8_t version) = nullptr;
    const ValueCodecOps *(*dataType)(uint16_t type) = nullptr;
    const ListOps *attributes = nullptr;      // Attributes fields
    const ListOps *eventAttributes = nullptr; // EventAttributes fields
};

// Results: 0; 1 a null pointer behind a count (at once when the plan's rules
// say so, else only `nullData`), or a value's pointer null; 10 an attribute
// identifier without a codec; 13 a data type without a codec; a value
// codec's own result.
// The opening run of fixed fields is sized by the plan, and a plan of fixed
// fields alone, or of none, needs no call of the walker's loop.
TrovResult walkEncCalcRest(const Plan &plan, const uint8_t *record, WireSize &size, const FieldEnv &env);
void walkEncodeFields(const Plan &plan, PacketCursor &cursor, const uint8_t *record, const FieldEnv &env);
inline TrovResult walkEncCalc(const Plan &plan, const uint8_t *record, WireSize &size, const FieldEnv &env) {
    size.add(plan.leadWire);
    if (plan.leadFields == plan.count) return TROV_RESULT_OK;
    return walkEncCalcRest(plan, record, size, env);
}
inline void walkEncode(const Plan &plan, PacketCursor &cursor, const uint8_t *record, const FieldEnv &env) {
    if (plan.count != 0) walkEncodeFields(plan, cursor, record, env);
}
// Results: 0; 5 the packet ends early (or a value outgrows the room its
// type reserves, or a trailing block is longer than 65535 bytes); 10, 13, a
// codec's own result. On failure the cursor and `data` are unchanged.
TrovResult walkDecCalc(const Plan &plan, PacketCursor &cursor, Sizes &data, const FieldEnv &env);
// Returns the end of the data written (each piece rounded up to 8).
uint8_t *walkDecode(const Plan &plan, PacketCursor &cursor, uint8_t *record, uint8_t *data,
                    const FieldEnv &env);
// The decode pass from field `first` on, which must not stand behind a Count.
uint8_t *walkDecodeFrom(const Plan &plan, uint8_t first, PacketCursor &cursor, uint8_t *record,
                        uint8_t *data, const FieldEnv &env);

// ---- structured records ----------------------------------------------------------
//
// A structured record (a plan with the kStructured rules) travels as its
// fields, unpadded; its data (counted bytes, arrays of records, option lists,
// attribute values) goes to one area behind the outermost record. These four
// are the walker's passes with what such records add:
//   - attribute entries are looked up at version 0, in array form with a
//     flag one above the record's nesting level, so that records inside
//     values inside records share one bound (kMaxRecordNesting);
//   - the encode size counts what it can: an entry without a codec (or whose
//     codec refuses it) counts nothing and is not written, and only records
//     or options missing behind a count refuse the record (1);
//   - the decode size reports, in 16 bits, the rounded record size plus the
//     data, where an array of records SETS the running figure of its record
//     (the data counted for earlier fields is dropped from it), and in 32
//     bits the true extent;
//   - the decode pass sizes its input again and writes the data area only
//     within that extent, so it is safe on bytes nobody sized.
// `level` is the nesting level the record starts at: 1 at the top.

// Kind 11 in memory: the option count and the options. On decoding both the
// entries and the option values go to the data area; options is null when
// count is 0.
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

// Stores the packet bytes of `record` in *size. Results: 0; 1 a null
// argument, or records or options missing behind a non-zero count. Null bytes
// behind a count, or a null option value that has bytes, set nullData.
TrovResult structEncCalc(const Plan &plan, const void *record, WireSize *size, uint32_t level = 1);
// Writes `record` unchecked (sized by structEncCalc). Results: 0; 1 a null argument.
TrovResult structEncode(const Plan &plan, PacketCursor *cursor, const void *record, uint32_t level = 1);
// Checks the cursor holds the record and reports its decoded size: bytes =
// roundUp8(fixedRecordBytes) + the data figure, 16-bit; extent the same in 32
// bits without the array reset. fixedRecordBytes is at least plan.record.
// Advances the cursor. Results: 0; 1 a null argument; 5 the input ends early,
// an entry's codec refuses it, or the nesting passes kMaxRecordNesting. On failure
// *cursor and *size are unchanged.
TrovResult structDecCalc(const Plan &plan, uint16_t fixedRecordBytes, PacketCursor *cursor, RecordSize *size,
                         uint32_t level = 1);
// Decodes the record at the cursor into `record` and its data into the area
// from `extra` (rounded up to 8); returns the first free 8-aligned address.
// Input that structDecCalc would refuse is neither read nor written. Null
// arguments return null.
void *structDecode(const Plan &plan, PacketCursor *cursor, void *record, void *extra, uint32_t level = 1);

// ---- plans known at compile time ----------------------------------------------------

// The decode passes over plan I of a constexpr array of plans, with what the
// plan's shape allows settled at compile time: the opening run of fixed
// fields is read as straight-line code, and the commonest event shape (that
// run, then one string with a u8 or u16 length) is sized and read without
// the walker's loop. Every other plan, and every body too short for its
// opening run, goes to the walker. Results, cursor movement, sizes and
// record bytes are the walker's own.
template <const auto &Plans, size_t I>
struct PlanWalk {
    static constexpr const Plan &P = Plans[I];

    static constexpr bool stringTail() {
        if (P.rules.slack != 0 || P.count != P.leadFields + 1) return false;
        const Field &f = P.fields[P.leadFields];
        return (f.kind == FieldKind::Octets || f.kind == FieldKind::Chars) && (f.prefix == 1 || f.prefix == 2);
    }
    static constexpr bool kStringTail = stringTail();

    // The wire offset of lead field J.
    static constexpr uint32_t wireAt(size_t j) {
        uint32_t at = 0;
        for (size_t k = 0; k < j; ++k)
            at += P.fields[k].kind == FieldKind::Bytes ? P.fields[k].size : kindInfo(P.fields[k].kind).wire;
        return at;
    }

    template <size_t J>
    static void readLead(const uint8_t *in, uint8_t *record) {
        constexpr Field f = P.fields[J];
        constexpr uint32_t at = wireAt(J);
        if constexpr (f.kind == FieldKind::U8) record[f.offset] = in[at];
        else if constexpr (f.kind == FieldKind::U16) storeField(record, f.offset, loadU16(in + at));
        else if constexpr (f.kind == FieldKind::U32) storeField(record, f.offset, loadU32(in + at));
        else if constexpr (f.kind == FieldKind::Bytes && f.size != 0) std::memcpy(record + f.offset, in + at, f.size);
        else if constexpr (f.kind == FieldKind::Bytes12) std::memcpy(record + f.offset, in + at, 12);
        // Reserved8: no wire byte
    }
    template <size_t... J>
    static void readLeads([[maybe_unused]] const uint8_t *in, [[maybe_unused]] uint8_t *record,
                          std::index_sequence<J...>) {
        (readLead<J>(in, record), ...);
    }

    template <size_t J>
    static void writeLead(uint8_t *out, const uint8_t *record) {
        constexpr Field f = P.fields[J];
        constexpr uint32_t at = wireAt(J);
        if constexpr (f.kind == FieldKind::U8) out[at] = record[f.offset];
        else if constexpr (f.kind == FieldKind::U16) storeU16(out + at, loadField<uint16_t>(record, f.offset));
        else if constexpr (f.kind == FieldKind::U32) storeU32(out + at, loadField<uint32_t>(record, f.offset));
        else if constexpr (f.kind == FieldKind::Bytes && f.size != 0) std::memcpy(out + at, record + f.offset, f.size);
        else if constexpr (f.kind == FieldKind::Bytes12) std::memcpy(out + at, record + f.offset, 12);
        // Reserved8: no wire byte
    }
    template <size_t... J>
    static void writeLeads([[maybe_unused]] uint8_t *out, [[maybe_unused]] const uint8_t *record,
                           std::index_sequence<J...>) {
        (writeLead<J>(out, record), ...);
    }

    // Whether the plan is fixed fields only, so that records of it can be
    // written back to back by encodeRecords.
    static constexpr bool kFixedOnly = P.count == P.leadFields && P.leadWire != 0;

    // Writes n records, `stride` bytes apart, as straight-line code with one
    // bounds test for them all; false (nothing written) when the cursor
    // lacks the room, and the walker takes over record by record.
    static bool encodeRecords(PacketCursor &c, const uint8_t *records, uint32_t n, uint32_t stride) {
        static_assert(kFixedOnly, "only plans of fixed fields are written back to back");
        if (c.position == nullptr || c.remaining / P.leadWire < n) return false;
        uint8_t *out = c.position;
        for (uint32_t i = 0; i < n; ++i, out += P.leadWire, records += stride)
            writeLeads(out, records, std::make_index_sequence<P.leadFields>{});
        advance(c, n * P.leadWire);
        return true;
    }

    static TrovResult decCalc(PacketCursor &c, Sizes &data, const FieldEnv &env) {
        if constexpr (kStringTail) {
            constexpr Field f = P.fields[P.leadFields];
            constexpr uint32_t head = P.wireFixed; // the run and the length
            if (c.remaining < head) return TROV_RESULT_SHORT_INPUT;
            const uint32_t n = f.prefix == 1 ? c.position[head - 1] : loadU16(c.position + head - 2);
            if (c.remaining - head < n) return TROV_RESULT_SHORT_INPUT;
            advance(c, head + n);
            data.add(static_cast<uint16_t>(dataReported(f.kind, n)), dataRoom(f.kind, n));
            return TROV_RESULT_OK;
        } else if constexpr (P.count == P.leadFields && P.rules.slack == 0) {
            if (c.remaining < P.leadWire) return TROV_RESULT_SHORT_INPUT;
            advance(c, P.leadWire);
            return TROV_RESULT_OK;
        } else {
            return walkDecCalc(P, c, data, env);
        }
    }

    static uint8_t *decode(PacketCursor &c, uint8_t *record, uint8_t *data, const FieldEnv &env) {
        if (c.remaining < P.leadWire) return walkDecode(P, c, record, data, env);
        readLeads(c.position, record, std::make_index_sequence<P.leadFields>{});
        advance(c, P.leadWire);
        if constexpr (P.count == P.leadFields) {
            return data;
        } else if constexpr (kStringTail) {
            constexpr Field f = P.fields[P.leadFields];
            if (c.remaining < f.prefix) return walkDecodeFrom(P, P.leadFields, c, record, data, env);
            const uint32_t n = f.prefix == 1 ? c.position[0] : loadU16(c.position);
            advance(c, f.prefix);
            constexpr uint8_t width = f.countWidth != 0 ? f.countWidth : f.prefix;
            if constexpr (width == 2) storeField(record, f.offset, static_cast<uint16_t>(n));
            else storeField(record, f.offset, static_cast<uint8_t>(n));
            storeField(record, f.data, n != 0 ? static_cast<void *>(data) : nullptr);
            // Bytes the body lacks read as 0, as the walker reads them.
            const uint32_t held = n < c.remaining ? n : c.remaining;
            copyBytes(data, c.position, held);
            advance(c, held);
            if (held < n) std::memset(data + held, 0, n - held);
            if constexpr (P.rules.terminateChars && f.kind == FieldKind::Chars)
                if (n != 0) data[n] = 0;
            return data + dataRoom(f.kind, n);
        } else {
            return walkDecodeFrom(P, P.leadFields, c, record, data, env);
        }
    }
};

} // namespace trov
