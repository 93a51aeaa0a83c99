// Dispatch tables: the library's table pointers and the lookups (the row
// types are in engine/CodecTypes.h).
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
//
// Each built-in table has an index, built from its rows at compile time beside
// the table (api/LookupIndex.h), that gives the same row as the scan in
// constant time. A lookup on one of the built-in tables goes through its index;
// on any other table (tests pass their own) it scans.
#pragma once

#include <atomic>
#include <cstdint>

#include "api/LookupIndex.h"
#include "api/RecordLayout.h"
#include "TrovCodec.h"
#include "engine/CodecTypes.h"

namespace trov {

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

// Their indexes, each defined beside its table.
extern const RowIndex AttributeCodecIndex;
extern const RowIndex DataTypeCodecIndex;
extern const RowIndex FUCodecIndex;
extern const RowIndex FPCodecIndex;
extern const RowIndex FUMethodCodecIndex;
extern const RowIndex FPMethodCodecIndex;
extern const RowIndex FUEventCodecIndex;
extern const RowIndex FPEventCodecIndex;

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

// The index of a built-in table, or null for any other table.
inline const RowIndex *builtinIndexOf(const DataTypeCodecRow *t) {
    return t == DataTypeCodecTable ? &DataTypeCodecIndex : nullptr;
}
inline const RowIndex *builtinIndexOf(const BodyCodecRow *t) {
    return t == FUCodecTable ? &FUCodecIndex : t == FPCodecTable ? &FPCodecIndex : nullptr;
}
inline const RowIndex *builtinIndexOf(const MethodCodecRow *t) {
    return t == FUMethodCodecTable ? &FUMethodCodecIndex
           : t == FPMethodCodecTable ? &FPMethodCodecIndex
                                     : nullptr;
}
inline const RowIndex *builtinIndexOf(const EventCodecRow *t) {
    return t == FUEventCodecTable ? &FUEventCodecIndex
           : t == FPEventCodecTable ? &FPEventCodecIndex
                                    : nullptr;
}

// The shared rule for code-keyed tables, by scanning.
template <class Row>
const Row *scanRows(const Row *table, uint16_t code, uint8_t version) {
    for (const Row *row = table; row->code != 0; ++row) {
        if (row->code == code && (row->version == 0 || row->version == version)) return row;
    }
    return nullptr;
}

// The shared rule for code-keyed tables: null table or no match gives null.
template <class Row>
const Row *findRow(const Row *table, uint16_t code, uint8_t version) {
    if (table == nullptr) return nullptr;
    if (const RowIndex *index = builtinIndexOf(table)) return rowAt(table, index->find(code, version));
    return scanRows(table, code, version);
}

// Header rows match their version byte exactly.
const HeaderCodecRow *findHeaderRow(uint8_t version);

// The built-in attribute table's row for an identifier, through its index
inline const AttributeCodecRow *findBuiltinAttributeRow(uint16_t id, uint8_t version) {
    return rowAt(AttributeCodecTable, AttributeCodecIndex.find(id, version));
}

// The built-in table through its index; any other scans each row's identifier
// list, where an identifier found in a row of another version skips the rest
// of that row's list.
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
