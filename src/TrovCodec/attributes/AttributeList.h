// Attribute lists: attributes framed inside bodies, events and values.
//
// Wire: in array form a u16 count, then per attribute a u16 identifier, a u16
// value length and the value, always in array form; in scalar form a single
// attribute without the count. In memory each attribute is an AttributeEntry
// {id, length, value pointer}; a decoded list is an AttributeList head, its
// entry array, then each value's record at a multiple of 8.
#pragma once

#include <cstdint>

#include "api/Dispatch.h"

namespace trov {

// Packet bytes of a list: 2 for the count in array form, plus 4 and the
// value's size per entry. An identifier without a codec gives 10 at once;
// null entries behind a non-zero count give 1.
TrovResult attributeListEncCalc(const AttributeEntry *entries, uint16_t count, uint8_t isArray,
                                uint8_t version, WireSize *packetBytes);

// Writes a list. An entry whose identifier has no codec is skipped without a
// trace: a caller that sized the list first never meets one.
void attributeListEncode(PacketCursor &cursor, const AttributeEntry *entries, uint16_t count,
                         uint8_t isArray, uint8_t version);

// The packet bytes of a single attribute outside a list: 4 and the value's
// size. The codec is looked up, and sized, at version 0 whatever the packet
// says.
TrovResult singleAttributeEncCalc(uint16_t id, const void *value, uint16_t *packetBytes);

// Checks that the packet holds a list of `count` attributes (count read by
// the caller), moves past it and adds the record bytes of its entries and
// values. 10 for an identifier without a codec; 5 when the packet ends early
// or a value's length disagrees with what its codec reads; 5 beyond the
// nesting limit (isArray carries the depth).
TrovResult attributeListDecCalc(PacketCursor &cursor, uint16_t count, uint8_t isArray,
                                uint8_t version, Sizes *recordBytes);

// Reads `count` attributes into `entries` (count of them), their values from
// `values` on; returns the end of the last value, rounded up to 8.
uint8_t *attributeListDecode(PacketCursor &cursor, uint16_t count, AttributeEntry *entries,
                             uint8_t *values, uint8_t isArray, uint8_t version);

} // namespace trov
