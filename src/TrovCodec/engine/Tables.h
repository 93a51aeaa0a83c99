// A view of the dispatch tables and the lookups every codec shares (the row
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
// A view may carry an index per table, built from its rows at compile time
// (engine/LookupIndex.h), that gives the same row as the scan in constant
// time; without one a lookup scans. The exports install the library's own
// view (TROV_InitCoder) and every codec looks through the installed view;
// tests pass views of their own tables.
#pragma once

#include <atomic>
#include <cstdint>

#include "engine/CodecTypes.h"
#include "engine/LookupIndex.h"

namespace trov {

struct Tables {
    const AttributeCodecRow *attributes = nullptr;
    const DataTypeCodecRow *dataTypes = nullptr;
    const BodyCodecRow *fuBodies = nullptr;
    const BodyCodecRow *fpBodies = nullptr;
    const MethodCodecRow *fuMethods = nullptr;
    const MethodCodecRow *fpMethods = nullptr;
    const EventCodecRow *fuEvents = nullptr;
    const EventCodecRow *fpEvents = nullptr;
    // The row of method codes of 0x2000 and above that have no row of their
    // own (their parameters are carried as opaque bytes); null: none.
    const MethodCodecRow *rawMethod = nullptr;
    // The tables' indexes, in the same order; null: the lookup scans.
    const RowIndex *attributeIndex = nullptr, *dataTypeIndex = nullptr, *fuBodyIndex = nullptr,
                   *fpBodyIndex = nullptr, *fuMethodIndex = nullptr, *fpMethodIndex = nullptr,
                   *fuEventIndex = nullptr, *fpEventIndex = nullptr;
};

// The installed view: the library's only global state, set by TROV_InitCoder
// (always to the same view; atomic so that concurrent calls are well defined
// without locks). Null before: every lookup fails.
extern std::atomic<const Tables *> installedTables;

inline constexpr Tables kNoTables{};
inline const Tables &activeTables() {
    const Tables *t = installedTables.load(std::memory_order_relaxed);
    return t != nullptr ? *t : kNoTables;
}

// ---- lookups -----------------------------------------------------------------

// The shared rule for code-keyed tables: null table or no match gives null.
// The scan of a table without an index stays out of line, so that the
// indexed lookup is inlined where it is called.
template <class Row>
[[gnu::noinline]] const Row *scanRows(const Row *table, uint16_t code, uint8_t version) {
    for (const Row *row = table; row->code != 0; ++row) {
        if (row->code == code && (row->version == 0 || row->version == version)) return row;
    }
    return nullptr;
}
template <class Row>
const Row *findRow(const Row *table, uint16_t code, uint8_t version, const RowIndex *index = nullptr) {
    if (table == nullptr) return nullptr;
    if (index != nullptr) return rowAt(table, index->find(code, version));
    return scanRows(table, code, version);
}

// Through the index when there is one; else each row's identifier list is
// scanned, where an identifier found in a row of another version skips the
// rest of that row's list.
const AttributeCodecRow *findAttributeRow(const Tables &t, uint16_t id, uint8_t version);

inline const BodyCodecRow *findBodyRow(const Tables &t, uint16_t code, uint8_t version, uint8_t selector) {
    return selector == 1 ? findRow(t.fuBodies, code, version, t.fuBodyIndex)
                         : findRow(t.fpBodies, code, version, t.fpBodyIndex);
}
inline const EventCodecRow *findEventRow(const Tables &t, uint16_t code, uint8_t version, uint8_t selector) {
    return selector == 1 ? findRow(t.fuEvents, code, version, t.fuEventIndex)
                         : findRow(t.fpEvents, code, version, t.fpEventIndex);
}

// Searches the FU method table only. Codes of 0x2000 and above without a row
// fall back to the raw-method row; below that the search fails. A view
// without a method table fails for every code.
const MethodCodecRow *findMethodRow(const Tables &t, uint16_t code, uint8_t version);

// Lookups on the installed view.
inline const AttributeCodecRow *lookupAttribute(uint16_t id, uint8_t version) {
    return findAttributeRow(activeTables(), id, version);
}
inline const DataTypeCodecRow *lookupDataType(uint16_t code, uint8_t version) {
    const Tables &t = activeTables();
    return findRow(t.dataTypes, code, version, t.dataTypeIndex);
}

} // namespace trov
