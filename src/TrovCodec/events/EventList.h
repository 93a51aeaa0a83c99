// Event lists: the two framings in which function-unit replies carry events.
//
// Long framing (EventListBody): a 12-byte body head (u32, u8, u16, u16, u8,
// u16 event count N), then N events, each a 13-byte head (u16, u32, u32, u8,
// u16 event code) followed by the event's body.
// Short framing (ShortEventListBody): a 5-byte body head (u32, u8 count N),
// then N events, each a u16 event code and a u8 followed by the event body.
//
// Decoding runs in two passes: a size pass looks every event code up and
// sizes every event body, then one block receives the entry array followed
// by all event records, and the decode pass fills it.
#pragma once

#include <cstdint>

#include "api/Dispatch.h"

namespace trov {

enum class EventFraming : uint8_t { Long, Short };

// Decodes the event list at `body` into result->record (allocated, zeroed,
// when null) and its managed block. Results: 0; 5 the body ends before a
// head or an event; 6 an allocation failed; 12 an event code without a codec
// (before anything is written); an event codec's or the block allocation's
// result. On failure result->type is 6 and everything this call allocated is
// released.
TrovResult decodeEventList(EventFraming framing, const Tables &tables, uint8_t version,
                           DecodeResult *result, const PacketCursor *body);

} // namespace trov
