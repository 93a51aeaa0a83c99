// The two structure events (the other attribute events are plain layouts of
// the field model, their lists coded by the attribute lists' event rules).
#include "events/AttributeEvents.h"

#include <cstddef>
#include <cstring>

#include "attributes/ValueForms.h"
#include "engine/Cursor.h"

namespace trov {
// ---- the structure events ------------------------------------------------------------

namespace se = structure_event;

TrovResult structureEventDecCalc(PacketCursor *cursor, uint8_t, RecordSize *size) {
    if (cursor == nullptr || cursor->position == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (lacks(*cursor, se::kBody.wireFixed)) return TROV_RESULT_SHORT_INPUT;
    PacketCursor c = *cursor;
    RecordSize body{};
    if (structDecCalc(se::kBody, se::kBody.record, &c, &body) != TROV_RESULT_OK)
        return TROV_RESULT_SHORT_INPUT;
    *cursor = c;
    size->bytes = static_cast<uint16_t>(body.bytes + se::kHeadBytes);
    size->extent = body.extent + se::kHeadBytes;
    return TROV_RESULT_OK;
}

void *structureEventDecode(void *record, PacketCursor *cursor, uint8_t) {
    auto *base = static_cast<uint8_t *>(record);
    auto *body = static_cast<uint8_t *>(alignUp8(base + se::kHeadBytes));
    constexpr uint16_t bodyBytes = se::kBody.record;
    std::memset(base, 0, static_cast<size_t>(body - base) + bodyBytes);
    storeField<void *>(base, 0, body);
    return structDecode(se::kBody, cursor, body, body + bodyBytes);
}

TrovResult structureEventEncCalc(const void *record, uint16_t *packetBytes) {
    if (record == nullptr || packetBytes == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const void *body = loadField<const void *>(record, 0);
    if (body == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    WireSize size;
    if (TrovResult r = structEncCalc(se::kBody, body, &size)) return r;
    if (size.nullData) return TROV_RESULT_NULL_ARGUMENT;
    if (size.extent > 0xFFFF) return TROV_RESULT_SHORT_INPUT; // no 16-bit size can state it
    *packetBytes = size.bytes;
    return TROV_RESULT_OK;
}

void structureEventEncode(PacketCursor *cursor, const void *record) {
    structEncode(se::kBody, cursor, loadField<const void *>(record, 0));
}

} // namespace trov
