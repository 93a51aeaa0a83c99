// The string event family over the field model's walker. A record is its
// fixed part, then each variable part's data in field order, each starting
// 8-aligned. One layout has slack (0x30): its body may be up to 16 bytes
// short, and what it lacks decodes as 0.
#include "events/StringEvents.h"

#include "engine/FieldWalker.h"

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
    return env;
}

} // namespace

TrovResult stringEventDecCalc(const Plan &plan, PacketCursor *cursor, RecordSize *size) {
    if (cursor == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    Sizes total;
    total.add(plan.record, plan.record);
    if (TrovResult r = walkDecCalc(plan, *cursor, total, eventEnv())) return r;
    *size = RecordSize{total.bytes, total.extent};
    return TROV_RESULT_OK;
}

void *stringEventDecode(const Plan &plan, void *record, PacketCursor *cursor) {
    auto *base = static_cast<uint8_t *>(record);
    return walkDecode(plan, *cursor, base, base + plan.record, eventEnv());
}

TrovResult stringEventEncCalc(const Plan &plan, const void *record, uint16_t *packetBytes) {
    if (record == nullptr || packetBytes == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    WireSize size;
    if (TrovResult r = walkEncCalc(plan, static_cast<const uint8_t *>(record), size, eventEnv())) return r;
    if (size.extent > 0xFFFF) return TROV_RESULT_SHORT_INPUT; // no 16-bit size can state it
    *packetBytes = size.bytes;
    return TROV_RESULT_OK;
}

void stringEventEncode(const Plan &plan, PacketCursor *cursor, const void *record) {
    if (cursor == nullptr || record == nullptr) return;
    walkEncode(plan, *cursor, static_cast<const uint8_t *>(record), eventEnv());
}

} // namespace trov
