// Descriptions of the structured records (TROV_LAYOUT_STRUCTURE).
//
// Structured records are plans of the field model like every other layout,
// their members named in the plans; this file gives each its public type
// name (TrovRecords.h) and turns it into a TrovLayoutInfo at compile time
// through the same describePlan as the flat layouts. A count field is
// described with its record width (1, or 2 for wider counts, which are
// 16-bit); an array of records with the slot it takes without records as its
// offset and the pointer it takes with records as its data offset.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "TrovLayout.h"
#include "units/BodyDescription.h"
#include "attributes/StructureValueTypes.h"
#include "events/AttributeEvents.h"
#include "units/MethodCodecs.h"

namespace trov {

struct StructureName {
    const Plan *plan;
    const char *record; // the public type's name
};

// Every structured record of the library, nested ones before those that use them.
inline constexpr StructureName kStructureNames[] = {
    {&structures::kVersion, "TrovVersion"},
    {&structures::kRange, "TrovRange"},
    {&structures::kHop, "TrovHop"},
    {&structures::kEndpointAddress, "TrovEndpointAddress"},
    {&structures::kNamedValue, "TrovNamedValue"},
    {&structures::kTimeWindow, "TrovTimeWindow"},
    {&structures::kVersionStamp, "TrovVersionStamp"},
    {&structures::kRangeList, "TrovRangeList"},
    {&structures::kOptionSet, "TrovOptionSet"},
    {&structures::kTaggedAttribute, "TrovTaggedAttribute"},
    {&structures::kLabel, "TrovLabel"},
    {&structures::kRoute, "TrovRoute"},
    {&structures::kCounters, "TrovCounters"},
    {&structures::kProfile, "TrovProfile"},
    {&structures::kAttributePair, "TrovAttributePair"},
    {&structures::kSession, "TrovSession"},
    {&kMethodEntry16x32, "TrovMethod00BBEntry"},
    {&kMethodReplyBB, "TrovMethod00BBReply"},
    {&kMethodReplyBC, "TrovMethod00BCReply"},
    {&kMethodOctetEntry, "TrovMethod00C0Entry"},
    {&kMethodReplyC0, "TrovMethod00C0Reply"},
    {&structure_event::kStamp, "TrovEvent00C4Stamp"},
    {&structure_event::kItem, "TrovEvent00C4Item"},
    {&structure_event::kBody, "TrovEvent00C4Body"},
};
inline constexpr size_t kStructureCount = std::size(kStructureNames);

// The index of a plan in kStructureNames; kStructureCount for none.
constexpr size_t structureIndex(const Plan *p) {
    for (size_t i = 0; i < kStructureCount; ++i)
        if (kStructureNames[i].plan == p) return i;
    return kStructureCount;
}

struct StructureFields {
    static constexpr FieldList make(size_t i) { return describePlan(*kStructureNames[i].plan); }
};

// Every plan named, valid, described field by field, its nested plans named too.
constexpr bool structuresDescribed() {
    for (const StructureName &n : kStructureNames) {
        if (!n.plan->valid || !n.plan->rules.nestable) return false;
        for (uint8_t k = 0; k < n.plan->count; ++k) {
            const Field &f = n.plan->fields[k];
            if (f.name == nullptr || (f.nested != nullptr && structureIndex(f.nested) == kStructureCount)) return false;
        }
    }
    return true;
}
static_assert(structuresDescribed(), "a structured record the description cannot spell");

template <size_t... I>
constexpr std::array<TrovLayoutInfo, sizeof...(I)> structureInfos(std::index_sequence<I...>) {
    return {TrovLayoutInfo{kStructureNames[I].record, kStructureNames[I].plan->record,
                           fieldCount<StructureFields, I>(), fieldArray<StructureFields, I>(), TROV_LAYOUT_STRUCTURE,
                           0, kStructureNames[I].plan->wireFixed}...};
}
// Every structured record's layout, in kStructureNames order.
inline constexpr auto kStructureInfos = structureInfos(std::make_index_sequence<kStructureCount>{});

constexpr const TrovLayoutInfo *describeStructureOf(const Plan *p) {
    const size_t i = structureIndex(p);
    return i < kStructureCount ? &kStructureInfos[i] : nullptr;
}

} // namespace trov
