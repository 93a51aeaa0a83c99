// Constant-time row lookup for the built-in dispatch tables.
//
// A lookup wants the first row whose code is the wanted one and whose version
// is 0 (every version) or the packet's version byte. For a table fixed at
// compile time that answer is a fixed function of (code, version), so an index
// computed from the rows at compile time gives it in a few loads:
//
//   - the code's high bits pick a page (`pageOf`). Codes past the last page,
//     and pages no code falls in, go to page 0, whose slots are all empty;
//   - the code's low bits pick a slot in that page: 0 for no row; the row
//     number + 1 when the code's first row serves every version (so every
//     version byte gets that row); or kByVersion | n when the answer depends
//     on the version byte: version page n then holds, per version byte, the
//     row number + 1 or 0.
//
// The index is plain constant data beside its table; nothing is built at run
// time. Pages of 16 slots keep it small: the built-in tables' indexes take
// under 6 KB together, most of it the attribute identifiers'. A table enters as keys (code, version, row number) in row order: one
// per row of a code-keyed table, one per listed identifier of an attribute
// row. Code 0 never matches, as the scan stops there.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/CodecTypes.h"

namespace trov {

inline constexpr unsigned kIndexPageBits = 4;
inline constexpr uint32_t kIndexPageSize = uint32_t{1} << kIndexPageBits;
inline constexpr uint16_t kByVersion = 0x8000; // slot flag: the answer is on a version page

// A built index as the lookups read it.
struct RowIndex {
    uint32_t pageCount;        // entries of pageOf (codes below pageCount << kIndexPageBits)
    const uint8_t *pageOf;     // code >> kIndexPageBits -> page
    const uint16_t *slots;     // page p's slots start at p * kIndexPageSize
    const uint16_t *byVersion; // version page n's 256 answers start at n * 256

    // The number + 1 of the row the first-match rule picks, or 0 for none.
    constexpr uint32_t find(uint16_t code, uint8_t version) const {
        const uint32_t high = uint32_t{code} >> kIndexPageBits;
        const uint32_t page = high < pageCount ? pageOf[high] : 0;
        const uint16_t slot = slots[page * kIndexPageSize + (code & (kIndexPageSize - 1))];
        if ((slot & kByVersion) == 0) return slot;
        return byVersion[size_t{uint16_t(slot & ~kByVersion)} * 256 + version];
    }
};

// The row of `table` an index answer names, or null.
template <class Row>
const Row *rowAt(const Row *table, uint32_t found) {
    return found != 0 ? table + (found - 1) : nullptr;
}

// ---- building ----------------------------------------------------------------

// Calls key(code, version, row) for each key of a table, in row order. A
// code-keyed row is one key; rows past the end row, like the end row itself,
// are never reached by the scan.
template <class Row, size_t N, class Key>
constexpr void forEachKey(const Row (&table)[N], Key key) {
    for (size_t r = 0; r < N && table[r].code != 0; ++r) key(table[r].code, table[r].version, r);
}
// An attribute row gives a key per identifier it lists (an identifier listed
// twice in one row gives the same answer twice).
template <size_t N, class Key>
constexpr void forEachKey(const AttributeCodecRow (&table)[N], Key key) {
    for (size_t r = 0; r < N && table[r].identifiers != nullptr; ++r)
        for (const uint16_t *p = table[r].identifiers; *p != 0; ++p) key(*p, table[r].version, r);
}

// The sizes of a table's index.
struct IndexShape {
    size_t pageCount = 0;    // entries of pageOf
    size_t pages = 1;        // pages of slots, the empty page 0 included
    size_t versionPages = 0; // codes whose first row serves one version only
    size_t rows = 0;         // highest row number + 1
};

template <class Table>
constexpr IndexShape rowIndexShape(const Table &table) {
    std::array<uint64_t, 65536 / 64> codeSeen{};
    std::array<uint64_t, (65536 >> kIndexPageBits) / 64> pageSeen{};
    IndexShape s;
    forEachKey(table, [&](uint16_t code, uint8_t version, size_t row) {
        s.rows = std::max(s.rows, row + 1);
        uint64_t &seen = codeSeen[code / 64];
        const uint64_t bit = uint64_t{1} << (code % 64);
        if ((seen & bit) != 0) return; // a later row for the code
        seen |= bit;
        s.versionPages += version != 0;
        const uint32_t high = uint32_t{code} >> kIndexPageBits;
        s.pageCount = std::max<size_t>(s.pageCount, high + 1);
        uint64_t &page = pageSeen[high / 64];
        const uint64_t pageBit = uint64_t{1} << (high % 64);
        s.pages += (page & pageBit) == 0;
        page |= pageBit;
    });
    return s;
}

template <IndexShape S>
struct RowIndexData {
    static_assert(S.pages <= 256, "page numbers are bytes");
    static_assert(S.rows < kByVersion && S.versionPages <= kByVersion,
                  "row and version-page numbers fit a slot");

    std::array<uint8_t, S.pageCount> pageOf{};
    std::array<uint16_t, S.pages * kIndexPageSize> slots{};
    std::array<uint16_t, S.versionPages * 256> byVersion{};

    static constexpr size_t bytes = S.pageCount + sizeof slots + sizeof byVersion;
    constexpr RowIndex view() const {
        return {S.pageCount, pageOf.data(), slots.data(), byVersion.data()};
    }
};

// The index of a table known at compile time, from its shape:
// buildRowIndex<rowIndexShape(table)>(table). Keys are taken in row order, so
// a code's first key decides its slot, and on a version page each version
// byte goes to the first row that serves it.
template <IndexShape S, class Table>
constexpr RowIndexData<S> buildRowIndex(const Table &table) {
    RowIndexData<S> index{};
    size_t pages = 0;
    size_t versionPages = 0;
    forEachKey(table, [&](uint16_t code, uint8_t version, size_t row) {
        const uint32_t high = uint32_t{code} >> kIndexPageBits;
        if (index.pageOf[high] == 0) index.pageOf[high] = static_cast<uint8_t>(++pages);
        uint16_t &slot = index.slots[index.pageOf[high] * kIndexPageSize + (code & (kIndexPageSize - 1))];
        if (slot == 0) {
            slot = version == 0 ? static_cast<uint16_t>(row + 1)
                                : static_cast<uint16_t>(kByVersion | versionPages++);
        }
        if ((slot & kByVersion) == 0) return; // a row for every version came first
        uint16_t *byVersion = &index.byVersion[size_t{uint16_t(slot & ~kByVersion)} * 256];
        for (unsigned v = 0; v < 256; ++v)
            if (byVersion[v] == 0 && (version == 0 || unsigned{version} == v)) byVersion[v] = static_cast<uint16_t>(row + 1);
    });
    return index;
}

// The index of a table defined in the same translation unit, built once at
// compile time; tables hand out its view().
template <const auto &Table>
inline constexpr auto kRowIndexOf = buildRowIndex<rowIndexShape(Table)>(Table);

} // namespace trov
