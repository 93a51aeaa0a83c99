// The event encode operations over a plan, shared by both event families:
// the field model's walker (the decode operations are compiled per plan in
// EventLayout.h).
#include "events/EventLayout.h"


#include "engine/Tables.h"
#include "engine/FieldWalker.h"
#include "events/AttributeEvents.h"

namespace trov {
namespace {

// Typed values carry no version of their own: a row for every version is
// looked up.
const ValueCodecOps *dataTypeCodec(uint16_t type) {
    const DataTypeCodecRow *row = lookupDataType(type, 0);
    return row != nullptr ? &row->ops : nullptr;
}

} // namespace

const FieldEnv kEventEnv{0, 0, nullptr, dataTypeCodec, nullptr, &kEventAttributeLists};

TrovResult eventEncCalc(const Plan &plan, const void *record, uint16_t *packetBytes) {
    if (record == nullptr || packetBytes == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    WireSize size;
    if (TrovResult r = walkEncCalc(plan, static_cast<const uint8_t *>(record), size, kEventEnv)) return r;
    if (size.nullData) return TROV_RESULT_NULL_ARGUMENT;
    if (size.extent > 0xFFFF) return TROV_RESULT_SHORT_INPUT; // no 16-bit size can state it
    *packetBytes = size.bytes;
    return TROV_RESULT_OK;
}

void eventEncode(const Plan &plan, PacketCursor *cursor, const void *record) {
    if (cursor == nullptr || record == nullptr) return;
    walkEncode(plan, *cursor, static_cast<const uint8_t *>(record), kEventEnv);
}

} // namespace trov
