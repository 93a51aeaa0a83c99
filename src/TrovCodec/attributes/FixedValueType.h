// The constants of a fixed-size value type and what follows from them.
//
// A fixed-size type's element has the same fields on the wire and in memory,
// in the same order: big-endian and packed on the wire, each at its natural
// alignment in the record (so the record may be larger than the wire
// element). Fields are 1, 2 or 4 bytes wide.
#pragma once

#include <cstdint>

#include "engine/Field.h"

namespace trov {

// Row-specific behaviour that the family keeps on purpose.
enum : uint8_t {
    // Array form requires only 1 byte before reading the 2-byte count and
    // compares the elements with the remaining bytes less 1, so a packet one
    // byte short of its last element passes the size pass.
    kNarrowPrefixTest = 1,
    // Array form computes its packet size in 32 bits and refuses (5) a size
    // above 0xFFFF.
    kOverflowCheck = 2,
};

inline constexpr int kMaxFixedFields = 16;

struct FixedValueType {
    uint16_t row;        // place in the attribute table, from 1 (0: not an attribute row)
    uint8_t wireBytes;   // W: element bytes on the wire
    uint8_t prefixBytes; // P: count prefix of the array form; 0 = scalar form only
    uint8_t recordBytes; // M: element record bytes; scalar-only types: the reported size
    uint8_t checks;      // kNarrowPrefixTest, kOverflowCheck
    uint8_t fields[kMaxFixedFields]; // widths in wire order, 0-terminated

    constexpr int fieldCount() const {
        int n = 0;
        while (n < kMaxFixedFields && fields[n] != 0) ++n;
        return n;
    }
    // The element as a layout of the field model: each field at its natural
    // alignment.
    constexpr Plan plan() const {
        Field list[kMaxFixedFields]{};
        for (int k = 0; k < fieldCount(); ++k)
            list[k] = fields[k] == 1 ? fields::u8 : fields[k] == 2 ? fields::u16 : fields::u32;
        return makePlan(list, kMaxFixedFields);
    }
    // The element record as its fields lay it out, padded to its alignment.
    constexpr uint32_t layoutBytes() const {
        uint32_t align = 1;
        for (int k = 0; k < fieldCount(); ++k) align = fields[k] > align ? fields[k] : align;
        return alignTo(plan().fieldsEnd, align);
    }
    // The constants agree with each other: the fields add up to W, lay out to
    // M (scalar-only types: fit in the reported size), widths are 1, 2 or 4.
    constexpr bool consistent() const {
        for (int k = 0; k < fieldCount(); ++k)
            if (fields[k] != 1 && fields[k] != 2 && fields[k] != 4) return false;
        if (plan().wireFixed != wireBytes || prefixBytes > 2) return false;
        return prefixBytes == 0 ? layoutBytes() <= recordBytes && recordBytes % 8 == 0
                                : layoutBytes() == recordBytes;
    }
};

} // namespace trov
