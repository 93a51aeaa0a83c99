// Body operations: the exported entry points that route a packet to its body
// codec, and the two size queries. Each takes the table view to dispatch
// through, so that the routing can be exercised with tables of one's own.
#pragma once

#include <cstdint>

#include "api/Dispatch.h"

namespace trov {

// Selector values of the body and event lookups.
inline constexpr uint8_t kSelectFU = 1;
inline constexpr uint8_t kSelectFP = 0;

TrovResult encodeBody(const Tables &tables, uint8_t selector, HeaderInfo *info,
                      const void *record, void *output, void *context);

// TROV_DecodeFU up to the body codec: the argument checks, the mark, the
// header, the unit type's rules, the body row and the body's bytes. Returns
// 0 with *row null for a body the rules skip, 0 with *row and *body set for
// a body to decode, or the result TROV_DecodeFU gives.
TrovResult routeFU(const Tables &tables, HeaderInfo *info, DecodeResult *result, const PacketCursor *cursor,
                   const BodyCodecRow **row, PacketCursor *body);

TrovResult decodeFU(const Tables &tables, HeaderInfo *info, DecodeResult *result,
                    const PacketCursor *cursor, void *context);

TrovResult decodeFP(const Tables &tables, HeaderInfo *info, DecodeResult *result,
                    const PacketCursor *cursor);

// FP encode with an extension value: `output` is a cursor over the whole
// packet. For some codes a 16-bit value is placed into the packet (when the
// slot there is still 0) before the body encoder runs with mode 1.
TrovResult encodeFPWithExtension(const Tables &tables, HeaderInfo *info, const void *record,
                                 PacketCursor *output, void *context, uint16_t value);

// Whether TROV_DecodeFU decodes a body of this unit type and code. May set
// result->type to 0 (code 10 on a unit type without rules of its own).
bool decodesUnitBody(uint16_t unitType, uint16_t code, DecodeResult *result);

TrovResult attributePacketSize(const Tables &tables, const HeaderInfo *info, uint16_t attributeId,
                               const void *value, uint8_t isArray, uint16_t *size);

TrovResult eventPacketSize(const Tables &tables, const HeaderInfo *info, uint16_t eventCode,
                           const void *event, uint16_t *size);

} // namespace trov
