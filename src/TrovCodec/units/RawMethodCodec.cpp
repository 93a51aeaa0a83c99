// The raw-method row: parameters of method codes 0x2000 and above that have
// no row of their own travel as opaque bytes. On encoding the caller's params
// length is the wire size; on decoding the parameters are everything that
// remains of the body.
#include "api/Dispatch.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

TrovResult rawEncCalc(const void *params, uint16_t paramsLength, uint16_t *wireBytes) {
    if (paramsLength != 0 && params == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    *wireBytes = paramsLength;
    return TROV_RESULT_OK;
}

void rawEncode(PacketCursor *cursor, const void *params, uint16_t paramsLength) {
    putBytes(cursor, params, paramsLength);
}

// The params length is the remaining count taken as 16 bits; the record
// takes it rounded up to a multiple of 8 with the 16-bit mask. The extent is
// what rawDecode copies: everything, unless that rounding wraps, when it
// copies nothing (a body that long cannot be a method invocation).
TrovResult rawDecCalc(const PacketCursor *cursor, uint16_t *paramsLength, RecordSize *recordBytes) {
    const uint32_t n = cursor->remaining;
    *paramsLength = static_cast<uint16_t>(n);
    recordBytes->bytes = roundUp8u16(n);
    recordBytes->extent = roundUp8u16(n) < n ? 0 : recordBytes->bytes;
    return TROV_RESULT_OK;
}

void *rawDecode(void *record, PacketCursor *cursor) {
    const uint32_t n = cursor->remaining;
    if (n == 0 || record == nullptr) return record;
    if (roundUp8u16(n) < n) return record;
    return getBytes(*cursor, record, n);
}

} // namespace

extern const MethodCodecRow RawMethodCodecRow = {0, 0, rawEncCalc, rawEncode, rawDecCalc, rawDecode};

} // namespace trov
