// The structure value types of the attribute table: rows 270 to 282, whose
// values are records described by field descriptors and coded by the
// descriptor-driven structure codec. Scalar form only: the array flag these
// rows get carries only the nesting depth (see ValueForms.h).
//
// Descriptors, fields in wire order (kind: 3 u8, 5 u16, 7 u32, 1/2 other
// bytes, 6 other u32; 8 counted octets, 9 counted characters, 10 nested
// record, 11 option list, 12 counted array of records, 13 attribute value).
#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include "engine/CodecTypes.h"
#include "engine/Cursor.h"
#include "engine/StructureCodec.h"

namespace trov {

namespace structures {

// Nested records.
inline constexpr StructField kVersion[] = {
    structScalar(1, 5, 2), // u16 major
    structScalar(2, 5, 2), // u16 minor
    structEnd()};
inline constexpr StructField kRange[] = {
    structScalar(1, 7, 4), // u32 low
    structScalar(2, 7, 4), // u32 high
    structEnd()};
inline constexpr StructField kHop[] = {
    structScalar(1, 3, 1),    // u8 kind
    structScalar(2, 5, 2),    // u16 node
    structScalar(3, 3, 1, 1), // u8 name length (count)
    structField(4, 9),        // name characters
    structEnd()};

// The rows' records.
inline constexpr StructField kEndpointAddress[] = {
    structScalar(1, 3, 1),    // u8 family
    structScalar(2, 5, 2),    // u16 port
    structScalar(3, 3, 1, 1), // u8 address length (count)
    structField(4, 8),        // address octets
    structEnd()};
inline constexpr StructField kNamedValue[] = {
    structScalar(1, 3, 1, 1), // u8 name length (count)
    structField(2, 9),        // name characters
    structScalar(3, 7, 4),    // u32 value
    structEnd()};
inline constexpr StructField kTimeWindow[] = {
    structScalar(1, 7, 4), // u32 start
    structScalar(2, 7, 4), // u32 end
    structScalar(3, 5, 2), // u16 flags
    structEnd()};
inline constexpr StructField kVersionStamp[] = {
    structField(1, 10, 4, kVersion), // version
    structScalar(2, 7, 4),           // u32 build
    structEnd()};
inline constexpr StructField kRangeList[] = {
    structScalar(1, 5, 2, 1),      // u16 range count (count)
    structField(2, 12, 8, kRange), // ranges
    structEnd()};
inline constexpr StructField kOptionSet[] = {
    structScalar(1, 3, 1),  // u8 set identifier
    structField(2, 11, 16), // options
    structEnd()};
inline constexpr StructField kTaggedAttribute[] = {
    structScalar(1, 5, 2),  // u16 tag
    structField(2, 13, 16), // attribute
    structEnd()};
inline constexpr StructField kLabel[] = {
    structScalar(1, 3, 1, 1), // u8 text length (count)
    structField(2, 9),        // text characters
    structScalar(3, 3, 1, 1), // u8 data length (count)
    structField(4, 8),        // data octets
    structEnd()};
inline constexpr StructField kRoute[] = {
    structScalar(1, 3, 1, 1),    // u8 hop count (count)
    structField(2, 12, 16, kHop), // hops
    structEnd()};
inline constexpr StructField kCounters[] = {
    structScalar(1, 6, 4), // u32 total
    structScalar(2, 7, 4), // u32 failed
    structScalar(3, 1, 1), // u8 state
    structScalar(4, 2, 1), // u8 reason
    structScalar(5, 5, 2), // u16 period
    structEnd()};
inline constexpr StructField kProfile[] = {
    structScalar(1, 5, 2),           // u16 profile identifier
    structScalar(2, 3, 1, 1),        // u8 name length (count)
    structField(3, 9),               // name characters
    structField(4, 10, 4, kVersion), // version
    structScalar(5, 5, 2, 1),        // u16 range count (count)
    structField(6, 12, 8, kRange),   // ranges
    structEnd()};
inline constexpr StructField kAttributePair[] = {
    structField(1, 13, 16), // first attribute
    structField(2, 13, 16), // second attribute
    structEnd()};
inline constexpr StructField kSession[] = {
    structScalar(1, 6, 4),    // u32 session identifier
    structScalar(2, 7, 4, 1), // u32 token length (count, taken as 16 bits)
    structField(3, 8),        // token octets
    structField(4, 11, 16),   // options
    structEnd()};

} // namespace structures

struct StructureValueType {
    uint16_t row;
    const char *name;
    const StructField *fields;
};

inline constexpr StructureValueType kStructureValueTypes[] = {
    {270, "EndpointAddress", structures::kEndpointAddress},
    {271, "NamedValue", structures::kNamedValue},
    {272, "TimeWindow", structures::kTimeWindow},
    {273, "VersionStamp", structures::kVersionStamp},
    {274, "RangeList", structures::kRangeList},
    {275, "OptionSet", structures::kOptionSet},
    {276, "TaggedAttribute", structures::kTaggedAttribute},
    {277, "Label", structures::kLabel},
    {278, "Route", structures::kRoute},
    {279, "Counters", structures::kCounters},
    {280, "Profile", structures::kProfile},
    {281, "AttributePair", structures::kAttributePair},
    {282, "Session", structures::kSession},
};

template <const StructureValueType *Types, size_t I>
struct StructureValueCodec {
    static constexpr const StructField *kFields = Types[I].fields;
    static_assert(structDescriptorValid(kFields), "a structure descriptor is malformed");
    static constexpr uint16_t kRecordBytes = structRecordSize(kFields);

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
