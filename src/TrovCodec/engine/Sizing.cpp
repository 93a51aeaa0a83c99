// Sizing primitives: one routine, parameterised by each item kind's prefix
// width, element width and record-size rule.
#include "engine/Sizing.h"

#include "engine/Cursor.h"

namespace trov {

namespace {

// Record-size rules. Arithmetic is 16-bit with the protocol's rounding mask.
uint16_t countedU32Record(uint32_t n) { return static_cast<uint16_t>((n + 2) * 8); }
uint16_t octetRecord(uint32_t n) { return static_cast<uint16_t>(16 + roundUp8u16(n)); }
uint16_t charRecord(uint32_t n) {
    // One spare byte for the terminating zero; nothing at all when empty.
    return n == 0 ? uint16_t{16} : static_cast<uint16_t>(roundUp8u16(n + 1) + 16);
}
uint16_t fixed12Record(uint32_t) { return 16; }

constexpr SizedItem kCountedU32s{1, 4, 0, countedU32Record};
constexpr SizedItem kOctets8{1, 1, 0, octetRecord};
constexpr SizedItem kChars8{1, 1, 0, charRecord};
constexpr SizedItem kChars16{2, 1, 0, charRecord};
constexpr SizedItem kFixed12{0, 0, 12, fixed12Record};

// True when both the budget and the cursor hold `need` more bytes. The budget
// is what the protocol checks; the cursor test only matters for a budget that
// claims more than the buffer holds, and keeps every read inside the buffer.
bool holds(const PacketCursor &c, int32_t budget, int64_t need) {
    return int64_t{budget} - need >= 0 && int64_t{c.remaining} - need >= 0;
}

} // namespace

TrovResult sizeItem(const SizedItem &item, PacketCursor &cursor, uint16_t &recordBytes,
                    int32_t &budget) {
    const int64_t head = item.prefixBytes != 0 ? item.prefixBytes : item.fixedBytes;
    if (!holds(cursor, budget, head)) return TROV_RESULT_SHORT_INPUT;

    uint32_t n = 0;
    if (item.prefixBytes == 1) n = cursor.position[0];
    if (item.prefixBytes == 2) n = loadU16(cursor.position);

    const int64_t total = head + int64_t{n} * item.elementBytes;
    if (!holds(cursor, budget, total)) return TROV_RESULT_SHORT_INPUT;

    advance(cursor, static_cast<uint32_t>(total));
    budget = static_cast<int32_t>(budget - total);
    recordBytes = item.recordBytes(n);
    return TROV_RESULT_OK;
}

TrovResult sizeCountedU32s(PacketCursor &c, uint16_t &r, int32_t &b) { return sizeItem(kCountedU32s, c, r, b); }
TrovResult sizeOctets8(PacketCursor &c, uint16_t &r, int32_t &b) { return sizeItem(kOctets8, c, r, b); }
TrovResult sizeChars8(PacketCursor &c, uint16_t &r, int32_t &b) { return sizeItem(kChars8, c, r, b); }
TrovResult sizeChars16(PacketCursor &c, uint16_t &r, int32_t &b) { return sizeItem(kChars16, c, r, b); }
TrovResult sizeFixed12(PacketCursor &c, uint16_t &r, int32_t &b) { return sizeItem(kFixed12, c, r, b); }

} // namespace trov
