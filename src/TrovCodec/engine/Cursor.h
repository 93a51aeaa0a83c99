// Packet cursor primitives.
//
// Every byte the library reads from or writes to a packet goes through these
// helpers. All multi-byte values are big-endian on the wire. A primitive that
// consumes or produces n bytes adds n to the position and subtracts n from the
// remaining count.
//
// Readers do not test `remaining`: the decoders first run a DecCalc pass
// that checks the packet holds every byte (the field walker's size pass is
// where decoded input is checked). The encoders likewise size
// their output with an EncCalc pass first, but the writers still never
// write past `remaining`: a write that does not fit writes nothing and
// leaves the cursor overrun (position null, nothing remaining), so every
// later write is refused too and the encoder that owns the cursor sees it.
// For records their size pass accepted this never happens; it is the last
// line of defence should a size pass and a write pass ever disagree.
#pragma once

#include <cstddef>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define TROV_AVX2_KERNELS 1
#endif

#include "TrovCodec.h"

namespace trov {

// Rounds n up to a multiple of 8 in n's own unsigned width: the one rounding
// of decoded data, which starts every piece at a multiple of 8 (record room
// and extents in 32 or 64 bits, addresses as integers).
template <typename T>
constexpr T roundUp8(T n) {
    static_assert(std::is_unsigned_v<T>);
    return static_cast<T>((n + 7u) & ~T{7});
}

// The same rounding the way the record sizes of the protocol are computed:
// with a 16-bit mask, so 0xFFF9..0xFFFF wrap to 0.
constexpr uint16_t roundUp8u16(uint32_t n) { return static_cast<uint16_t>(roundUp8(n)); }

// Rounds n up to a multiple of a (a > 0), in 32 bits: the placement of record
// fields at their alignment, never the protocol's wrapping 16-bit sizes.
constexpr uint32_t alignTo(uint32_t n, uint32_t a) { return (n + a - 1) / a * a; }

// Rounds an address up to the next multiple of 8.
inline void *alignUp8(void *p) { return reinterpret_cast<void *>(roundUp8(reinterpret_cast<uintptr_t>(p))); }

inline void advance(PacketCursor &c, uint32_t n) {
    c.position += n;
    c.remaining -= n;
}

// ---- byte order and unaligned access --------------------------------------

// Host order to and from big-endian: a byte swap on little-endian hosts,
// which the compiler emits as one instruction (and vectorises in loops).
inline uint16_t bigEndian(uint16_t v) {
    return std::endian::native == std::endian::little ? __builtin_bswap16(v) : v;
}
inline uint32_t bigEndian(uint32_t v) {
    return std::endian::native == std::endian::little ? __builtin_bswap32(v) : v;
}

// Unaligned-safe access to a record's fields by byte offset.
template <class T>
inline T loadField(const void *record, size_t offset) {
    T v;
    std::memcpy(&v, static_cast<const uint8_t *>(record) + offset, sizeof v);
    return v;
}

template <class T>
inline void storeField(void *record, size_t offset, T v) {
    std::memcpy(static_cast<uint8_t *>(record) + offset, &v, sizeof v);
}

inline uint16_t loadU16(const uint8_t *p) { return bigEndian(loadField<uint16_t>(p, 0)); }
inline uint32_t loadU32(const uint8_t *p) { return bigEndian(loadField<uint32_t>(p, 0)); }
inline void storeU16(uint8_t *p, uint16_t v) { storeField(p, 0, bigEndian(v)); }
inline void storeU32(uint8_t *p, uint32_t v) { storeField(p, 0, bigEndian(v)); }

// ---- writers ---------------------------------------------------------------

inline void markOverrun(PacketCursor &c) {
    c.position = nullptr;
    c.remaining = 0;
}

// Whether n more bytes fit; if not, the cursor becomes overrun.
inline bool room(PacketCursor &c, uint32_t n) {
    if (c.position != nullptr && c.remaining >= n) return true;
    markOverrun(c);
    return false;
}

// Whether a write did not fit since the cursor was set up.
inline bool overrun(const PacketCursor &c) { return c.position == nullptr; }

inline void putU8(PacketCursor &c, uint8_t v) {
    if (!room(c, 1)) return;
    c.position[0] = v;
    advance(c, 1);
}

inline void putU16(PacketCursor &c, uint16_t v) {
    if (!room(c, 2)) return;
    storeU16(c.position, v);
    advance(c, 2);
}

inline void putU32(PacketCursor &c, uint32_t v) {
    if (!room(c, 4)) return;
    storeU32(c.position, v);
    advance(c, 4);
}

// Reads a u8, u16 or u32 from memory (width 1, 2 or 4) and writes it
// big-endian. Any other width writes nothing and leaves the cursor alone.
inline void putValue(PacketCursor &c, const void *src, uint32_t width) {
    if (width == 1) putU8(c, loadField<uint8_t>(src, 0));
    else if (width == 2) putU16(c, loadField<uint16_t>(src, 0));
    else if (width == 4) putU32(c, loadField<uint32_t>(src, 0));
}

// Copies n bytes; nothing when n is 0 or the cursor or its position is null.
// A null source with a non-zero count is refused like a write that does not
// fit: the size passes turn such records away before anything is written.
inline void putBytes(PacketCursor *c, const void *src, uint32_t n) {
    if (n == 0 || c == nullptr || c->position == nullptr) return;
    if (src == nullptr) return markOverrun(*c);
    if (!room(*c, n)) return;
    std::memcpy(c->position, src, n);
    advance(*c, n);
}

inline void skip(PacketCursor &c, uint32_t n) { advance(c, n); }

// Writes the n elements of W bytes (2 or 4) at `data` (host order) to `out`
// big-endian, which the compiler does not vectorise for itself: 32 bytes at
// a time with AVX2 byte shuffles where the processor has them (asked on each
// call: a load and a test), else 16 at a time with SSE2 (the bytes of each
// 16-bit half swapped, then for u32 the halves); the tail one by one.
#if TROV_AVX2_KERNELS
template <unsigned W>
[[gnu::target("avx2")]] uint32_t storeSwappedAvx2(uint8_t *out, const uint8_t *data, uint32_t n) {
    const __m256i swap = _mm256_broadcastsi128_si256(
        W == 2 ? _mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14)
               : _mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12));
    uint32_t i = 0;
    for (; i + 32 / W <= n; i += 32 / W) {
        __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(data + W * i));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(out + W * i), _mm256_shuffle_epi8(v, swap));
    }
    return i;
}
#endif
template <unsigned W>
inline void storeSwapped(uint8_t *out, const uint8_t *data, uint32_t n) {
    uint32_t i = 0;
#if TROV_AVX2_KERNELS
    if (n >= 32 / W && __builtin_cpu_supports("avx2")) i = storeSwappedAvx2<W>(out, data, n);
#endif
#if defined(__SSE2__)
    for (; i + 16 / W <= n; i += 16 / W) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i *>(data + W * i));
        v = _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
        if constexpr (W == 4) v = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, 0xB1), 0xB1);
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out + W * i), v);
    }
#endif
    for (std::conditional_t<W == 2, uint16_t, uint32_t> v; i < n; ++i) {
        std::memcpy(&v, data + W * i, W);
        if constexpr (W == 2) storeU16(out + 2 * i, v);
        else storeU32(out + 4 * i, v);
    }
}

inline uint8_t getU8(PacketCursor &c) {
    uint8_t v = c.position[0];
    advance(c, 1);
    return v;
}

inline uint16_t getU16(PacketCursor &c) {
    uint16_t v = loadU16(c.position);
    advance(c, 2);
    return v;
}

inline uint32_t getU32(PacketCursor &c) {
    uint32_t v = loadU32(c.position);
    advance(c, 4);
    return v;
}

// Copies exactly n bytes. Strings in packets are mostly short: up to 16
// bytes are moved with fixed-size copies the compiler inlines (two that may
// overlap), longer ones through memcpy.
inline void copyBytes(uint8_t *dst, const uint8_t *src, uint32_t n) {
    if (n >= 8 && n <= 16) {
        uint64_t head, tail;
        std::memcpy(&head, src, 8);
        std::memcpy(&tail, src + n - 8, 8);
        std::memcpy(dst, &head, 8);
        std::memcpy(dst + n - 8, &tail, 8);
    } else if (n >= 4 && n < 8) {
        uint32_t head, tail;
        std::memcpy(&head, src, 4);
        std::memcpy(&tail, src + n - 4, 4);
        std::memcpy(dst, &head, 4);
        std::memcpy(dst + n - 4, &tail, 4);
    } else if (n < 4) {
        for (uint32_t i = 0; i < n; ++i) dst[i] = src[i];
    } else {
        std::memcpy(dst, src, n);
    }
}

// Copies n bytes into dst and returns dst + n; when n is 0 or dst is null
// nothing is copied and the cursor does not move.
inline void *getBytes(PacketCursor &c, void *dst, uint32_t n) {
    if (n == 0 || dst == nullptr) return dst;
    std::memcpy(dst, c.position, n);
    advance(c, n);
    return static_cast<uint8_t *>(dst) + n;
}

// Reads n big-endian values of T (u16 or u32) into n consecutive T in
// memory; returns dst + n * sizeof(T).
template <class T>
inline void *getArray(PacketCursor &c, void *dst, uint32_t n) {
    static_assert(sizeof(T) == 2 || sizeof(T) == 4);
    auto *out = static_cast<uint8_t *>(dst);
    for (uint32_t i = 0; i < n; ++i) {
        const T v = sizeof(T) == 2 ? static_cast<T>(getU16(c)) : static_cast<T>(getU32(c));
        std::memcpy(out + sizeof(T) * i, &v, sizeof(T));
    }
    return out + sizeof(T) * n;
}
inline void *getU16Array(PacketCursor &c, void *dst, uint32_t n) { return getArray<uint16_t>(c, dst, n); }
inline void *getU32Array(PacketCursor &c, void *dst, uint32_t n) { return getArray<uint32_t>(c, dst, n); }

} // namespace trov
