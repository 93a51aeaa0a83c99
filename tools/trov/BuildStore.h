// Record stores shared by the JSON builder and the request reader: scalars
// and pointers written at a layout's offsets, whatever the alignment there.
#pragma once

#include <cstdint>
#include <cstring>

#include "TrovLayout.h"

namespace trov {

// `value` as an unsigned integer of `width` bytes (1, 2, 4 or 8) at `at`,
// in host order.
inline void storeUnsigned(uint8_t *at, uint64_t value, unsigned width) {
    switch (width) {
    case 1: {
        const auto v = static_cast<uint8_t>(value);
        std::memcpy(at, &v, 1);
        break;
    }
    case 2: {
        const auto v = static_cast<uint16_t>(value);
        std::memcpy(at, &v, 2);
        break;
    }
    case 4: {
        const auto v = static_cast<uint32_t>(value);
        std::memcpy(at, &v, 4);
        break;
    }
    default:
        std::memcpy(at, &value, 8);
        break;
    }
}

inline void storePointer(uint8_t *at, const void *pointer) { std::memcpy(at, &pointer, sizeof pointer); }

// The largest count a prefix of `bytes` bytes can carry.
inline uint32_t countLimit(unsigned bytes) { return bytes == 1 ? 0xFFu : 0xFFFFu; }

// The bytes of a u8, u16 or u32 field.
inline unsigned scalarBytes(uint8_t kind) { return kind == TROV_KIND_U8 ? 1 : kind == TROV_KIND_U16 ? 2 : 4; }

// How far apart the elements of a counted field sit in the record. The
// "wide" u32 arrays reserve 8 bytes a value but keep the values 4 apart, as
// the codecs read and write them.
inline unsigned recordElementBytes(uint8_t kind) {
    switch (kind) {
    case TROV_KIND_U16S:
    case TROV_KIND_BYTE_PAIRS: return 2;
    case TROV_KIND_U32S:
    case TROV_KIND_WIDE_U32S: return 4;
    case TROV_KIND_U8U32_ITEMS:
    case TROV_KIND_U32U8_ITEMS: return 8;
    default: return 1;
    }
}

// The wire bytes of one element of a counted field.
inline unsigned wireElementBytes(uint8_t kind) {
    return kind == TROV_KIND_U8U32_ITEMS || kind == TROV_KIND_U32U8_ITEMS ? 5 : recordElementBytes(kind);
}

// Nested attribute lists go no deeper than the library's own bound.
constexpr int kMaxValueDepth = 32;

} // namespace trov
