// Sizing primitives of the decode size passes.
//
// A DecCalc pass walks a body without decoding it: it checks that every item
// is present, moves over it and adds up the record bytes the decode pass will
// need. Beside the cursor it carries the body budget, a signed count of body
// bytes not yet accounted for (initially the header's bodyLength). Each
// primitive fails with 5 when the item would take the budget below zero.
//
// Decoded records follow one sizing rule: a variable-length item becomes a
// 16-byte head (count or length, and a pointer) followed by its data rounded
// up to a multiple of 8, in 16-bit arithmetic. Character strings reserve one
// byte for a terminating zero; an empty string reserves no data at all.
#pragma once

#include <cstdint>

#include "api/TrovCodec.h"

namespace trov {

// One kind of sized item: a length/count prefix of 0, 1 or 2 bytes, then that
// many elements of elementBytes each (or, without a prefix, fixedBytes), and
// the record bytes its decoded form takes for a given count.
struct SizedItem {
    uint8_t prefixBytes;
    uint8_t elementBytes;
    uint16_t fixedBytes;
    uint16_t (*recordBytes)(uint32_t n);
};

// Checks the item at the cursor against the budget (and against the bytes the
// cursor holds), then moves over it, lowers the budget and stores the record
// size. On failure (5) the cursor, budget and record size are unchanged.
TrovResult sizeItem(const SizedItem &item, PacketCursor &cursor, uint16_t &recordBytes,
                    int32_t &budget);

// u8 count n, then n four-byte values: record (n + 2) * 8.
TrovResult sizeCountedU32s(PacketCursor &cursor, uint16_t &recordBytes, int32_t &budget);
// u8 length n, then n octets: record 16 + n rounded up to 8.
TrovResult sizeOctets8(PacketCursor &cursor, uint16_t &recordBytes, int32_t &budget);
// u8 length n, then n characters: record 16, or 16 + (n + 1) rounded up to 8.
TrovResult sizeChars8(PacketCursor &cursor, uint16_t &recordBytes, int32_t &budget);
// u16 length n, then n characters: as sizeChars8.
TrovResult sizeChars16(PacketCursor &cursor, uint16_t &recordBytes, int32_t &budget);
// A fixed 12-byte item: record 16.
TrovResult sizeFixed12(PacketCursor &cursor, uint16_t &recordBytes, int32_t &budget);

} // namespace trov
