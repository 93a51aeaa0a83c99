// Helpers shared by the value codecs: the array form's header, count
// prefixes, and cursor steps that can never leave the packet.
//
// Array form: the caller's address holds an AttributeArrayHeader (16 bytes:
// the count in its first bytes, the element pointer at offset 8); on the wire
// a count prefix of 1 or 2 bytes precedes the elements. Decoded elements
// start at the first multiple of 8 at least 16 bytes past the header.
#pragma once

#include <cstdint>

#include "engine/CodecTypes.h"
#include "engine/Cursor.h"

namespace trov {

// Nested values always travel in array form, and the array flag they get is
// also their nesting depth: 1 at the top, one more per level of attributes
// inside attributes. Any non-zero flag means array form to every codec; the
// codecs that nest use the depth to refuse input nested deeper than
// kMaxNesting, so crafted packets cannot exhaust the stack.
inline constexpr uint8_t kMaxNesting = 32;
constexpr uint8_t nestedFlag(uint8_t isArray) {
    return static_cast<uint8_t>(isArray == 0 ? 2 : isArray + 1);
}

// The count of an array header, read at the prefix width (1: first byte).
inline uint16_t arrayCount(const void *header, uint8_t prefixBytes) {
    return prefixBytes == 1 ? loadField<uint8_t>(header, 0) : loadField<uint16_t>(header, 0);
}
inline void *arrayElements(const void *header) { return loadField<void *>(header, 8); }

// Where decoded elements start behind an array header.
inline uint8_t *elementsBehind(void *header) {
    return static_cast<uint8_t *>(alignUp8(static_cast<uint8_t *>(header) + 16));
}

// Stores a decoded array header: the count at the prefix width, the element
// pointer (null for an empty array). Returns where the elements go.
inline uint8_t *storeArrayHeader(void *header, uint16_t count, uint8_t prefixBytes) {
    if (prefixBytes == 1) storeField<uint8_t>(header, 0, static_cast<uint8_t>(count));
    else storeField<uint16_t>(header, 0, count);
    uint8_t *elements = elementsBehind(header);
    storeField<void *>(header, 8, count != 0 ? elements : nullptr);
    return elements;
}

inline void putCount(PacketCursor &c, uint16_t count, uint8_t prefixBytes) {
    if (prefixBytes == 1) putU8(c, static_cast<uint8_t>(count));
    else putU16(c, count);
}

inline uint16_t getCount(PacketCursor &c, uint8_t prefixBytes) {
    return prefixBytes == 1 ? getU8(c) : getU16(c);
}

// The protocol's size test: remaining - needed < 0, in signed 32-bit terms.
inline bool lacks(const PacketCursor &c, int64_t needed) {
    return int64_t{c.remaining} - needed < 0;
}

// Moves over n bytes but never past the end of the packet. Only input that a
// deliberately narrow length test lets through ever needs the clamp.
inline void skipClamped(PacketCursor &c, uint32_t n) {
    advance(c, n < c.remaining ? n : c.remaining);
}

} // namespace trov
