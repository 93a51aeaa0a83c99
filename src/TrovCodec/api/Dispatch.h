// Dispatch tables: row types, the library's table pointers and the lookups.
//
// Every item the library encodes or decodes is handled by a codec found in a
// static, read-only table by its 16-bit code (or attribute identifier) and the
// packet's version byte. A table ends at its first row whose key is 0; no
// table carries a row count. A row matches when its code equals the wanted one
// and its version is 0 (every version) or equals the packet's version byte;
// the first matching row wins.
//
// The FU and FP families each have a body, a method and an event table; only
// the FU tables hold rows. Body and event lookups take a selector: exactly 1
// searches the FU table, any other value the FP table.
#pragma once

#include <atomic>
#include <cstdint>

#include "api/RecordLayout.h"
#include "api/TrovCodec.h"
#include "engine/CodecTypes.h"

namespace trov {

// ---- row types ---------------------------------------------------------------

// The packet header codec. Field operations take a field index 2..9.
struct HeaderCodecRow {
    uint8_t version;      // exact match, no wildcard; 0 ends the table
    uint8_t headerLength; // bytes
    TrovResult (*getFromRecord)(uint32_t index, const HeaderInfo *info, void *out);
    TrovResult (*setToRecord)(uint32_t index, HeaderInfo *info, const void *value);
    TrovResult (*getFromPacket)(uint32_t index, const PacketCursor *cursor, void *out);
    TrovResult (*setToPacket)(uint32_t index, const PacketCursor *cursor, const void *value);
    uint8_t *(*encodeHeader)(const HeaderInfo *info, const PacketCursor *cursor);
    const uint8_t *(*decodeHeader)(const PacketCursor *cursor, HeaderInfo *info);
};

struct AttributeCodecRow {
    const uint16_t *identifiers; // zero-terminated; null ends the table
    uint8_t version;
    ValueCodecOps ops;
};

struct DataTypeCodecRow {
    uint16_t code;
    uint8_t version;
    ValueCodecOps ops;
};

// A body row: encode builds the whole packet (header and body) into `output`;
// decode reads a body at `body` into `result`.
using BodyEncodeFn = TrovResult (*)(HeaderInfo *info, const void *record, void *output,
                                    void *context, uint8_t mode);
using BodyDecodeFn = TrovResult (*)(HeaderInfo *info, DecodeResult *result,
                                    const PacketCursor *body, void *context);

struct BodyCodecRow {
    uint16_t code;
    uint8_t version;
    BodyEncodeFn encode; // null for decode-only codes
    BodyDecodeFn decode;
};

// A method row: the parameters of a method invocation.
struct MethodCodecRow {
    uint16_t code;
    uint8_t version;
    TrovResult (*encCalc)(const void *params, uint16_t paramsLength, uint16_t *wireBytes);
    void (*encode)(PacketCursor *cursor, const void *params, uint16_t paramsLength);
    TrovResult (*decCalc)(const PacketCursor *cursor, uint16_t *paramsLength,
                          RecordSize *recordBytes);
    void *(*decode)(void *record, PacketCursor *cursor);
};

// An event row: events travel only towards the host, so a row holds the two
// decode-side operations.
struct EventCodecRow {
    uint16_t code;
    uint8_t version;
    TrovResult (*decCalc)(PacketCursor *cursor, uint8_t flag, RecordSize *recordBytes);
    void *(*decode)(void *record, PacketCursor *cursor, uint8_t flag);
};

static_assert(sizeof(ValueCodecOps) == 4 * sizeof(void *));
static_assert(sizeof(BodyCodecRow) == 3 * sizeof(void *));
static_assert(sizeof(EventCodecRow) == 3 * sizeof(void *));
static_assert(sizeof(MethodCodecRow) == 5 * sizeof(void *));

// ---- the tables --------------------------------------------------------------

extern const HeaderCodecRow HeaderCodecTable[];
extern const AttributeCodecRow AttributeCodecTable[];
extern const DataTypeCodecRow DataTypeCodecTable[];
extern const BodyCodecRow FUCodecTable[];
extern const BodyCodecRow FPCodecTable[];
extern const MethodCodecRow FUMethodCodecTable[];
extern const MethodCodecRow FPMethodCodecTable[];
extern const EventCodecRow FUEventCodecTable[];
extern const EventCodecRow FPEventCodecTable[];

// The stand-alone row for method codes of 0x2000 and above that have no row:
// the parameters are carried as opaque bytes. Reached only through the
// fallback of the method lookup.
extern const MethodCodecRow RawMethodCodecRow;

// A view of the eight code-keyed tables. The library's own view is the one
// TROV_InitCoder sets (all null before); tests pass views of their own tables.
struct Tables {
    const AttributeCodecRow *attributes;
    const DataTypeCodecRow *dataTypes;
    const BodyCodecRow *fuBodies;
    const BodyCodecRow *fpBodies;
    const MethodCodecRow *fuMethods;
    const MethodCodecRow *fpMethods;
    const EventCodecRow *fuEvents;
    const EventCodecRow *fpEvents;
};

// The library's eight table pointers: the only global state. Written only by
// TROV_InitCoder, always with the same values; atomic so that concurrent
// calls are well defined without locks.
struct TablePointers {
    std::atomic<const AttributeCodecRow *> attributes{nullptr};
    std::atomic<const DataTypeCodecRow *> dataTypes{nullptr};
    std::atomic<const BodyCodecRow *> fuBodies{nullptr};
    std::atomic<const BodyCodecRow *> fpBodies{nullptr};
    std::atomic<const MethodCodecRow *> fuMethods{nullptr};
    std::atomic<const MethodCodecRow *> fpMethods{nullptr};
    std::atomic<const EventCodecRow *> fuEvents{nullptr};
    std::atomic<const EventCodecRow *> fpEvents{nullptr};
};
extern TablePointers tablePointers;

// The tables as TROV_InitCoder left them.
Tables activeTables();
// The built-in tables, as TROV_InitCoder installs them.
Tables builtinTables();

// ---- lookups -----------------------------------------------------------------

// The shared rule for code-keyed tables: null table or no match gives null.
template <class Row>
const Row *findRow(const Row *table, uint16_t code, uint8_t version) {
    if (table == nullptr) return nullptr;
    for (const Row *row = table; row->code != 0; ++row) {
        if (row->code == code && (row->version == 0 || row->version == version)) return row;
    }
    return nullptr;
}

// Header rows match their version byte exactly.
const HeaderCodecRow *findHeaderRow(uint8_t version);

// The built-in attribute table's row for an identifier, from an index built
// at compile time (the built-in rows all serve every version).
const AttributeCodecRow *findBuiltinAttributeRow(uint16_t id);

// Scans each row's identifier list; an identifier found in a row of another
// version skips the rest of that row's list.
const AttributeCodecRow *findAttributeRow(const AttributeCodecRow *table, uint16_t id,
                                          uint8_t version);

inline const BodyCodecRow *findBodyRow(const Tables &t, uint16_t code, uint8_t version,
                                       uint8_t selector) {
    return findRow(selector == 1 ? t.fuBodies : t.fpBodies, code, version);
}
inline const EventCodecRow *findEventRow(const Tables &t, uint16_t code, uint8_t version,
                                         uint8_t selector) {
    return findRow(selector == 1 ? t.fuEvents : t.fpEvents, code, version);
}

// Searches the FU method table only. Codes of 0x2000 and above without a row
// fall back to the raw-method row; below that the search fails. An
// uninitialised table fails for every code.
const MethodCodecRow *findMethodRow(const Tables &t, uint16_t code, uint8_t version);

// Convenience lookups on the library's own tables.
inline const AttributeCodecRow *lookupAttribute(uint16_t id, uint8_t version) {
    return findAttributeRow(tablePointers.attributes.load(std::memory_order_relaxed), id, version);
}
inline const DataTypeCodecRow *lookupDataType(uint16_t code, uint8_t version) {
    return findRow(tablePointers.dataTypes.load(std::memory_order_relaxed), code, version);
}

} // namespace trov
