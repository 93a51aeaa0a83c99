// The structure value types of the attribute table: rows 270 to 282, whose
// values are structured records (plans with the kStructured rules: nested
// records, arrays of records, option lists, attribute entries). Scalar form
// only: the array flag these rows get carries only the nesting depth (see
// ValueForms.h). Fields in wire order, named as the public records name them.
#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include "engine/CodecTypes.h"
#include "engine/Cursor.h"
#include "engine/Field.h"
#include "engine/FieldWalker.h"

namespace trov {

namespace structures {

using namespace fields;

// Nested records.
inline constexpr Field kVersionFields[] = {named(u16, "major"), named(u16, "minor")};
inline constexpr Plan kVersion = structurePlan(kVersionFields);
inline constexpr Field kRangeFields[] = {named(u32, "low"), named(u32, "high")};
inline constexpr Plan kRange = structurePlan(kRangeFields);
inline constexpr Field kHopFields[] = {named(u8, "kind"), named(u16, "node"), named(count8, "nameLength"),
                                       named(chars, "name")};
inline constexpr Plan kHop = structurePlan(kHopFields);

// The rows' records.
inline constexpr Field kEndpointAddressFields[] = {named(u8, "family"), named(u16, "port"),
                                                   named(count8, "addressLength"), named(plainOctets, "address")};
inline constexpr Field kNamedValueFields[] = {named(count8, "nameLength"), named(chars, "name"), named(u32, "value")};
inline constexpr Field kTimeWindowFields[] = {named(u32, "start"), named(u32, "end"), named(u16, "flags")};
inline constexpr Field kVersionStampFields[] = {named(record(kVersion, 4), "version"), named(u32, "build")};
inline constexpr Field kRangeListFields[] = {named(count16, "rangeCount"), named(records(kRange, 8), "ranges")};
inline constexpr Field kOptionSetFields[] = {named(u8, "setId"), named(options, "options")};
inline constexpr Field kTaggedAttributeFields[] = {named(u16, "tag"), named(entry, "attribute")};
inline constexpr Field kLabelFields[] = {named(count8, "textLength"), named(chars, "text"),
                                         named(count8, "dataLength"), named(plainOctets, "data")};
inline constexpr Field kRouteFields[] = {named(count8, "hopCount"), named(records(kHop, 16), "hops")};
inline constexpr Field kCountersFields[] = {named(u32, "total"), named(u32, "failed"), named(u8, "state"),
                                            named(u8, "reason"), named(u16, "period")};
inline constexpr Field kProfileFields[] = {named(u16, "profileId"),        named(count8, "nameLength"),
                                           named(chars, "name"),          named(record(kVersion, 4), "version"),
                                           named(count16, "rangeCount"),   named(records(kRange, 8), "ranges")};
inline constexpr Field kAttributePairFields[] = {named(entry, "first"), named(entry, "second")};
inline constexpr Field kSessionFields[] = {named(u32, "sessionId"), named(count32, "tokenLength"),
                                           named(plainOctets, "token"), named(options, "options")};

inline constexpr Plan kEndpointAddress = structurePlan(kEndpointAddressFields);
inline constexpr Plan kNamedValue = structurePlan(kNamedValueFields);
inline constexpr Plan kTimeWindow = structurePlan(kTimeWindowFields);
inline constexpr Plan kVersionStamp = structurePlan(kVersionStampFields);
inline constexpr Plan kRangeList = structurePlan(kRangeListFields);
inline constexpr Plan kOptionSet = structurePlan(kOptionSetFields);
inline constexpr Plan kTaggedAttribute = structurePlan(kTaggedAttributeFields);
inline constexpr Plan kLabel = structurePlan(kLabelFields);
inline constexpr Plan kRoute = structurePlan(kRouteFields);
inline constexpr Plan kCounters = structurePlan(kCountersFields);
inline constexpr Plan kProfile = structurePlan(kProfileFields);
inline constexpr Plan kAttributePair = structurePlan(kAttributePairFields);
inline constexpr Plan kSession = structurePlan(kSessionFields);

} // namespace structures

struct StructureValueType {
    uint16_t row;
    const char *name;
    const Plan *plan;
};

inline constexpr StructureValueType kStructureValueTypes[] = {
    {270, "EndpointAddress", &structures::kEndpointAddress},
    {271, "NamedValue", &structures::kNamedValue},
    {272, "TimeWindow", &structures::kTimeWindow},
    {273, "VersionStamp", &structures::kVersionStamp},
    {274, "RangeList", &structures::kRangeList},
    {275, "OptionSet", &structures::kOptionSet},
    {276, "TaggedAttribute", &structures::kTaggedAttribute},
    {277, "Label", &structures::kLabel},
    {278, "Route", &structures::kRoute},
    {279, "Counters", &structures::kCounters},
    {280, "Profile", &structures::kProfile},
    {281, "AttributePair", &structures::kAttributePair},
    {282, "Session", &structures::kSession},
};

template <const StructureValueType *Types, size_t I>
struct StructureValueCodec {
    static constexpr const Plan &kFields = *Types[I].plan;
    static_assert(kFields.valid, "a structure plan is malformed");
    static constexpr uint16_t kRecordBytes = kFields.record;

    static uint32_t level(uint8_t isArray) { return isArray == 0 ? 1 : isArray; }

    static TrovResult encCalc(const void *value, uint8_t isArray, WireSize *size, uint8_t) {
        return structEncCalc(kFields, value, size, level(isArray));
    }
    static void encode(PacketCursor *cursor, const void *value, uint8_t isArray, uint8_t) {
        structEncode(kFields, cursor, value, level(isArray));
    }
    static TrovResult decCalc(PacketCursor *cursor, uint8_t isArray, RecordSize *size, uint8_t) {
        return structDecCalc(kFields, kRecordBytes, cursor, size, level(isArray));
    }
    static void *decode(void *record, PacketCursor *cursor, uint8_t isArray, uint8_t) {
        auto *extra = static_cast<uint8_t *>(record) + roundUp8(uint32_t{kRecordBytes});
        return structDecode(kFields, cursor, record, extra, level(isArray));
    }
    static constexpr ValueCodecOps ops{encCalc, encode, decCalc, decode};
};

template <const StructureValueType *Types, size_t... I>
constexpr std::array<ValueCodecOps, sizeof...(I)> structureValueOps(std::index_sequence<I...>) {
    return {StructureValueCodec<Types, I>::ops...};
}

} // namespace trov
