// The raw-method row: parameters of method codes 0x2000 and above that have
// no row of their own travel as opaque bytes. On encoding the caller's params
// length is the wire size; on decoding the parameters are everything that
// remains of the body.
#include "engine/CodecTypes.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

TrovResult rawEncCalc(const void *params, uint16_t paramsLength, WireSize *wireBytes) {
    if (paramsLength != 0 && params == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    *wireBytes = WireSize::of(paramsLength);
    return TROV_RESULT_OK;
}

void rawEncode(PacketCursor *cursor, const void *params, uint16_t paramsLength) {
    putBytes(cursor, params, paramsLength);
}

// The params length is the remaining count taken as 16 bits; the record
// takes it rounded up to a multiple of 8 with the 16-bit mask, which wraps
// to 0 for the longest parameters a body carries (0xFFF9 bytes and up). The
// extent is what rawDecode copies, everything, rounded in 32 bits: the
// buffer gets that much real room while its capacity keeps the wrapped
// figure.
TrovResult rawDecCalc(const PacketCursor *cursor, uint16_t *paramsLength, RecordSize *recordBytes) {
    const uint32_t n = cursor->remaining;
    *paramsLength = static_cast<uint16_t>(n);
    recordBytes->bytes = roundUp8u16(n);
    recordBytes->extent = n > UINT32_MAX - 7 ? UINT32_MAX : roundUp8(n);
    return TROV_RESULT_OK;
}

void *rawDecode(void *record, PacketCursor *cursor) {
    return getBytes(*cursor, record, cursor->remaining);
}

} // namespace

extern const MethodCodecRow RawMethodCodecRow = {0, 0, rawEncCalc, rawEncode, rawDecCalc, rawDecode};

} // namespace trov
