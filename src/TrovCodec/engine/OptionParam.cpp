// Option parameters: a small typed value on the wire.
//
//   u8 kind, u8 length, then the value (big-endian):
//   kind 0     no value (length 0)
//   kind 1, 2  u32 (length 4)
//   kind 3, 4  u16 (length 2)
//   kind 5     u32 then u16 (length 6)
//   kind 6+    raw bytes, as many as the length byte says (decode only)
//
// For kinds 0 to 5 the kind alone decides how many bytes are read; the length
// byte of a received option is not compared with it. Decoded values are placed
// at 8-byte boundaries so that consecutive options pack into one record area.
#include <cstring>

#include "TrovCodec.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

// Value bytes of the kinds with a fixed layout; 0xFF for the others.
constexpr uint8_t kNoFixedSize = 0xFF;
constexpr uint8_t fixedValueBytes(uint8_t kind) {
    constexpr uint8_t sizes[] = {0, 4, 4, 2, 2, 6};
    return kind < sizeof sizes ? sizes[kind] : kNoFixedSize;
}

} // namespace
} // namespace trov

using namespace trov;

extern "C" {

TROV_API void trovEncode_OptionParam(PacketCursor *cursor, uint8_t kind, const void *value) {
    if (cursor == nullptr || cursor->position == nullptr) return;
    const uint8_t size = fixedValueBytes(kind);
    if (size == kNoFixedSize) {
        if (cursor->remaining >= 1) putU8(*cursor, kind); // kind byte alone
        return;
    }
    if ((size != 0 && value == nullptr) || cursor->remaining < 2u + size) return;
    putU8(*cursor, kind);
    putU8(*cursor, size);
    const auto *v = static_cast<const uint8_t *>(value);
    switch (kind) {
    case 1:
    case 2: putValue(*cursor, v, 4); break;
    case 3:
    case 4: putValue(*cursor, v, 2); break;
    case 5:
        putValue(*cursor, v, 4);
        putValue(*cursor, v + 4, 2);
        break;
    default: break;
    }
}

TROV_API TrovResult trovEncCalc_OptionParam(uint8_t kind, const void *, uint8_t *size) {
    if (size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const uint8_t bytes = fixedValueBytes(kind);
    if (bytes == kNoFixedSize) {
        *size = 0;
        return TROV_RESULT_NULL_ARGUMENT;
    }
    *size = bytes;
    return TROV_RESULT_OK;
}

TROV_API void *trovDecode_OptionParam(uint8_t kind, uint8_t length, void *destination,
                                      PacketCursor *cursor) {
    if (cursor == nullptr || cursor->position == nullptr) return nullptr;
    const auto base = reinterpret_cast<uintptr_t>(destination);
    const uint8_t fixed = fixedValueBytes(kind);
    if (fixed == kNoFixedSize) {
        // Raw bytes: nothing moves when there is no length or no destination.
        if (length != 0 && destination != nullptr) {
            if (cursor->remaining < length) return nullptr;
            getBytes(*cursor, destination, length);
        }
        return reinterpret_cast<void *>(roundUp8(base + length));
    }
    if (fixed != 0 && (destination == nullptr || cursor->remaining < fixed)) return nullptr;
    auto *d = static_cast<uint8_t *>(destination);
    switch (kind) {
    case 1:
    case 2: storeField<uint32_t>(d, 0, getU32(*cursor)); return reinterpret_cast<void *>(roundUp8(base + 4));
    case 3:
    case 4: storeField<uint16_t>(d, 0, getU16(*cursor)); return reinterpret_cast<void *>(roundUp8(base + 2));
    case 5:
        storeField<uint32_t>(d, 0, getU32(*cursor));
        storeField<uint16_t>(d, 4, getU16(*cursor));
        return reinterpret_cast<void *>(roundUp8(base + 8));
    default: return reinterpret_cast<void *>(roundUp8(base)); // kind 0
    }
}

TROV_API uint32_t trovDecCalc_OptionParam(uint8_t kind, uint8_t length) {
    if (kind == 0) return 0;
    if (kind <= 5) return 8;
    return length;
}

} // extern "C"
