// The event operations over a plan, shared by both event families: the
// field model's walker with the event's fixed part in front.
#include "events/EventLayout.h"

#include <cstring>

#include "api/Dispatch.h"
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

FieldEnv eventEnv() {
    FieldEnv env;
    env.dataType = dataTypeCodec;
    env.eventAttributes = &kEventAttributeLists;
    return env;
}

} // namespace

TrovResult eventDecCalc(const Plan &plan, PacketCursor *cursor, RecordSize *size) {
    if (cursor == nullptr || cursor->position == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    Sizes total;
    total.add(plan.reportedFixed, plan.record);
    if (TrovResult r = walkDecCalc(plan, *cursor, total, eventEnv())) return r;
    *size = RecordSize{total.bytes, total.extent};
    return TROV_RESULT_OK;
}

void *eventDecode(const Plan &plan, void *record, PacketCursor *cursor) {
    auto *base = static_cast<uint8_t *>(record);
    if (plan.rules.zeroFixedPart) std::memset(base, 0, plan.record);
    return walkDecode(plan, *cursor, base, base + plan.record, eventEnv());
}

TrovResult eventEncCalc(const Plan &plan, const void *record, uint16_t *packetBytes) {
    if (record == nullptr || packetBytes == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    WireSize size;
    if (TrovResult r = walkEncCalc(plan, static_cast<const uint8_t *>(record), size, eventEnv())) return r;
    if (size.nullData) return TROV_RESULT_NULL_ARGUMENT;
    if (size.extent > 0xFFFF) return TROV_RESULT_SHORT_INPUT; // no 16-bit size can state it
    *packetBytes = size.bytes;
    return TROV_RESULT_OK;
}

void eventEncode(const Plan &plan, PacketCursor *cursor, const void *record) {
    if (cursor == nullptr || record == nullptr) return;
    walkEncode(plan, *cursor, static_cast<const uint8_t *>(record), eventEnv());
}

} // namespace trov
