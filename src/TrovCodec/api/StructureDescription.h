// Descriptions of the structure codec's records (TROV_LAYOUT_STRUCTURE).
//
// The structure codec runs on 16-byte descriptor entries that carry kinds and
// sizes but no names; this file gives every descriptor the library holds its
// public type name (TrovRecords.h) and member names, and turns it into
// TrovFieldInfo rows at compile time:
//   - scalars (u8, u16, u32) at their aligned offsets; a count-flagged one is
//     a TROV_KIND_COUNT field (counts are 16-bit: countRecordBytes 1 or 2);
//   - counted octets and characters: the data pointer, countField naming the
//     most recent count field that no counted field has used yet (the codec's
//     running count, which counted fields and attribute values clear);
//   - nested records, arrays of records (whose pointer slot the codec moves
//     when the count is 0), option lists and attribute entries.
// Offsets come from the codec's own placement rule (structPlaceField), so a
// description cannot disagree with where a decode writes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "TrovLayout.h"
#include "attributes/StructureValueTypes.h"
#include "events/AttributeEvents.h"
#include "units/MethodCodecs.h"

namespace trov {

inline constexpr size_t kMaxStructFields = 10;

struct StructureNames {
    const StructField *fields;
    const char *record; // the public type's name
    std::array<const char *, kMaxStructFields> members;
};

// Every descriptor of the library, nested ones before those that use them.
inline constexpr StructureNames kStructureNames[] = {
    {structures::kVersion, "TrovVersion", {"major", "minor"}},
    {structures::kRange, "TrovRange", {"low", "high"}},
    {structures::kHop, "TrovHop", {"kind", "node", "nameLength", "name"}},
    {structures::kEndpointAddress, "TrovEndpointAddress", {"family", "port", "addressLength", "address"}},
    {structures::kNamedValue, "TrovNamedValue", {"nameLength", "name", "value"}},
    {structures::kTimeWindow, "TrovTimeWindow", {"start", "end", "flags"}},
    {structures::kVersionStamp, "TrovVersionStamp", {"version", "build"}},
    {structures::kRangeList, "TrovRangeList", {"rangeCount", "ranges"}},
    {structures::kOptionSet, "TrovOptionSet", {"setId", "options"}},
    {structures::kTaggedAttribute, "TrovTaggedAttribute", {"tag", "attribute"}},
    {structures::kLabel, "TrovLabel", {"textLength", "text", "dataLength", "data"}},
    {structures::kRoute, "TrovRoute", {"hopCount", "hops"}},
    {structures::kCounters, "TrovCounters", {"total", "failed", "state", "reason", "period"}},
    {structures::kProfile, "TrovProfile", {"profileId", "nameLength", "name", "version", "rangeCount", "ranges"}},
    {structures::kAttributePair, "TrovAttributePair", {"first", "second"}},
    {structures::kSession, "TrovSession", {"sessionId", "tokenLength", "token", "options"}},
    {kMethodEntry16x32, "TrovMethod00BBEntry", {"key", "value"}},
    {kMethodReplyBB, "TrovMethod00BBReply", {"status", "count", "entries"}},
    {kMethodReplyBC, "TrovMethod00BCReply", {"value", "length", "text"}},
    {kMethodOctetEntry, "TrovMethod00C0Entry", {"length", "data"}},
    {kMethodReplyC0, "TrovMethod00C0Reply", {"value", "count", "entries"}},
    {structure_event::kStamp, "TrovEvent00C4Stamp", {"seconds", "milliseconds", "zone"}},
    {structure_event::kItem, "TrovEvent00C4Item", {"tag", "state", "value"}},
    {structure_event::kBody,
     "TrovEvent00C4Body",
     {"object", "reason", "nameLength", "name", "stamp", "sequence", "flags", "itemCount", "items"}},
};
inline constexpr size_t kStructureCount = std::size(kStructureNames);

// The index of a descriptor in kStructureNames; kStructureCount for none.
constexpr size_t structureIndex(const StructField *d) {
    for (size_t i = 0; i < kStructureCount; ++i)
        if (kStructureNames[i].fields == d) return i;
    return kStructureCount;
}

constexpr size_t structFieldCount(const StructField *d) {
    size_t n = 0;
    while (d[n].number != 0) ++n;
    return n;
}

struct StructFieldList {
    std::array<TrovFieldInfo, kMaxStructFields> at{};
    uint16_t count = 0;
    bool valid = true; // every field describable (checked where the lists are made)
};

constexpr TrovFieldInfo structFieldInfo(const char *name, const char *kind, uint8_t kindId, uint16_t offset,
                                        uint16_t width) {
    TrovFieldInfo f{};
    f.name = name;
    f.kind = kind;
    f.kindId = kindId;
    f.offset = offset;
    f.width = width;
    f.dataOffset = TROV_NO_DATA;
    f.countField = -1;
    return f;
}

// The fields of descriptor kStructureNames[i], as the codec places them.
constexpr StructFieldList describeStructure(size_t i) {
    const StructureNames &n = kStructureNames[i];
    StructFieldList out;
    uint16_t offset = 0;
    int pendingCount = -1; // the count field the next counted field takes
    const size_t count = structFieldCount(n.fields);
    out.valid = count <= kMaxStructFields && (count == kMaxStructFields || n.members[count] == nullptr);
    for (size_t k = 0; out.valid && k < count; ++k) {
        const StructField &f = n.fields[k];
        const StructPlacement placed = structPlaceField(f, offset, true);
        const char *name = n.members[k];
        out.valid = name != nullptr;
        TrovFieldInfo info{};
        if (structIsScalar(f.kind)) {
            const uint8_t id = f.size == 1 ? TROV_KIND_U8 : f.size == 2 ? TROV_KIND_U16 : TROV_KIND_U32;
            out.valid = out.valid && (f.size == 1 || f.size == 2 || f.size == 4);
            info = structFieldInfo(name, id == TROV_KIND_U8 ? "u8" : id == TROV_KIND_U16 ? "u16" : "u32", id,
                                   placed.at, f.size);
            if (f.countFlag != 0) {
                info.kind = "count";
                info.kindId = TROV_KIND_COUNT;
                info.countBytes = static_cast<uint8_t>(f.size);
                info.countRecordBytes = static_cast<uint8_t>(f.size == 1 ? 1 : 2);
                pendingCount = static_cast<int>(k);
            }
        } else {
            switch (f.kind) {
            case kStructOctets:
            case kStructChars:
                info = structFieldInfo(name, f.kind == kStructOctets ? "octets" : "chars",
                                       f.kind == kStructOctets ? TROV_KIND_OCTETS : TROV_KIND_CHARS, placed.at, 8);
                info.dataOffset = placed.at;
                break;
            case kStructNested:
                info = structFieldInfo(name, "record", TROV_KIND_RECORD, placed.at, f.size);
                break;
            case kStructOptions:
                info = structFieldInfo(name, "options", TROV_KIND_OPTIONS, placed.at, f.size);
                info.countBytes = 1;
                info.countRecordBytes = 1;
                info.dataOffset = static_cast<uint16_t>(placed.at + 8);
                break;
            case kStructAttribute:
                info = structFieldInfo(name, "entry", TROV_KIND_ENTRY, placed.at, f.size);
                info.dataOffset = static_cast<uint16_t>(placed.at + 8);
                pendingCount = -1;
                break;
            case kStructArray: {
                // Without elements the codec keeps the slot where the offset stands.
                const uint16_t empty = structPlaceField(f, offset, false).at;
                info = structFieldInfo(name, "records", TROV_KIND_RECORDS, empty,
                                       static_cast<uint16_t>(placed.at + 8 - empty));
                info.dataOffset = placed.at;
                // Where the slot is decides where later fields go: arrays come last.
                out.valid = out.valid && k + 1 == count;
                break;
            }
            default: out.valid = false; break;
            }
            if (f.kind == kStructOctets || f.kind == kStructChars || f.kind == kStructArray) {
                // Every counted field has a count of its own to take.
                out.valid = out.valid && pendingCount >= 0;
                info.countField = static_cast<int16_t>(pendingCount);
                pendingCount = -1;
            }
            if (f.kind == kStructNested || f.kind == kStructArray)
                out.valid = out.valid && structureIndex(f.nested) < kStructureCount;
        }
        out.at[out.count++] = info;
        offset = placed.next;
    }
    return out;
}

// Each descriptor's fields as static data.
template <size_t I>
inline constexpr auto kStructFieldArray = [] {
    constexpr StructFieldList all = describeStructure(I);
    static_assert(all.valid, "a structure descriptor the description cannot spell");
    std::array<TrovFieldInfo, all.count> out{};
    for (size_t k = 0; k < all.count; ++k) out[k] = all.at[k];
    return out;
}();

// The wire bytes of a record with every count 0: its scalars, its nested
// records', an option list's count byte, an attribute entry's identifier and
// length (as the description of flat layouts counts an attribute's
// identifier). The codec's fixed wire size leaves the last two out.
constexpr uint16_t describedWireFixed(const StructField *d, uint32_t depth = 0) {
    uint32_t total = 0;
    for (; depth <= kMaxStructDepth && d != nullptr && d->number != 0; ++d) {
        if (structIsScalar(d->kind)) total += d->size;
        if (d->kind == kStructNested) total += describedWireFixed(d->nested, depth + 1);
        if (d->kind == kStructOptions) total += 1;
        if (d->kind == kStructAttribute) total += 4;
    }
    return static_cast<uint16_t>(total);
}

// The layout of descriptor I, `recordBytes` the room it is given.
template <size_t I>
constexpr TrovLayoutInfo structureInfo(uint16_t recordBytes) {
    const StructField *d = kStructureNames[I].fields;
    return TrovLayoutInfo{kStructureNames[I].record,
                          recordBytes,
                          static_cast<uint16_t>(kStructFieldArray<I>.size()),
                          kStructFieldArray<I>.data(),
                          TROV_LAYOUT_STRUCTURE,
                          0,
                          describedWireFixed(d)};
}

template <size_t... I>
constexpr std::array<TrovLayoutInfo, sizeof...(I)> structureInfos(std::index_sequence<I...>) {
    return {structureInfo<I>(structRecordSize(kStructureNames[I].fields))...};
}
// Every descriptor's layout at its own record size, in kStructureNames order.
inline constexpr auto kStructureInfos = structureInfos(std::make_index_sequence<kStructureCount>{});

constexpr const TrovLayoutInfo *describeStructureOf(const StructField *d) {
    const size_t i = structureIndex(d);
    return i < kStructureCount ? &kStructureInfos[i] : nullptr;
}

} // namespace trov
