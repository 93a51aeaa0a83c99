// Record stores shared by the JSON builder and the request reader: scalars
// and pointers written at a layout's offsets, whatever the alignment there.
#pragma once

#include <cstdint>
#include <cstring>

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

// Nested attribute lists go no deeper than the library's own bound.
constexpr int kMaxValueDepth = 32;

} // namespace trov
