// Events with an attribute list: the four passes of an event's attribute
// list (the field model's walker runs the fields around it), and the two
// structure events.
//
// The size pass adds up two figures: the protocol's record size in 16-bit
// arithmetic, which wraps, and the extent that Decode really writes, in 32
// bits. Callers report the first and allocate the second.
#include "events/AttributeEvents.h"

#include <cstddef>
#include <cstring>

#include "attributes/ValueForms.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

// Every attribute inside an event is looked up and coded at version 0,
// whatever the packet's version, and in array form at the top nesting depth.
constexpr uint8_t kValueVersion = 0;
constexpr uint8_t kValueForm = 1;

const AttributeCodecRow *eventAttributeCodec(uint16_t id) { return lookupAttribute(id, kValueVersion); }

// A raw value may announce more bytes than the packet holds (the size pass
// lets the last one through): copy what is there, the rest reads as 0, and
// the cursor stops at the end.
void copyRaw(PacketCursor &c, uint8_t *dst, uint16_t length) {
    const uint32_t have = length < c.remaining ? length : c.remaining;
    getBytes(c, dst, have);
    if (have < length) std::memset(dst + have, 0, length - have);
}

} // namespace

// ---- the attribute list ------------------------------------------------------------

TrovResult eventAttributeListDecCalc(PacketCursor &cursor, Sizes &size) {
    PacketCursor c = cursor;
    if (lacks(c, 2)) return TROV_RESULT_SHORT_INPUT;
    const uint16_t n = getU16(c);
    Sizes list;
    list.add(static_cast<uint16_t>(n * 16u), n * 16u);
    for (uint32_t i = 0; i < n; ++i) {
        if (lacks(c, 4)) return TROV_RESULT_SHORT_INPUT;
        const uint16_t id = getU16(c);
        const uint16_t length = getU16(c);
        if (const AttributeCodecRow *row = eventAttributeCodec(id)) {
            // The codec reads the value from the cursor and consumes what it
            // reads; the announced length plays no part.
            RecordSize value{};
            if (TrovResult r = row->ops.decCalc(&c, kValueForm, &value, kValueVersion)) return r;
            list.add(roundUp8u16(value.bytes), alignTo(value.extent, 8));
        } else {
            skipClamped(c, length);
            list.add(roundUp8u16(length), alignTo(length, 8));
        }
    }
    cursor = c;
    size.add(list.bytes, list.extent);
    return TROV_RESULT_OK;
}

uint8_t *eventAttributeListDecode(PacketCursor &cursor, void *head, uint8_t *area) {
    const uint16_t n = getU16(cursor);
    auto *entries = static_cast<AttributeEntry *>(alignUp8(area));
    storeField<uint16_t>(head, offsetof(AttributeList, count), n);
    storeField<AttributeEntry *>(head, offsetof(AttributeList, entries), n != 0 ? entries : nullptr);
    auto *next = reinterpret_cast<uint8_t *>(entries + n);
    for (uint32_t i = 0; i < n; ++i) {
        AttributeEntry &entry = entries[i];
        entry.id = getU16(cursor);
        entry.length = getU16(cursor);
        entry.value = next;
        if (const AttributeCodecRow *row = eventAttributeCodec(entry.id)) {
            next = static_cast<uint8_t *>(alignUp8(row->ops.decode(next, &cursor, kValueForm, kValueVersion)));
            entry.length = 0;
        } else {
            copyRaw(cursor, next, entry.length);
            next += alignTo(entry.length, 8);
        }
    }
    return static_cast<uint8_t *>(alignUp8(next));
}

TrovResult eventAttributeListEncCalc(const void *head, WireSize &packetBytes) {
    const uint16_t n = loadField<uint16_t>(head, offsetof(AttributeList, count));
    const auto *entries = loadField<const AttributeEntry *>(head, offsetof(AttributeList, entries));
    if (n != 0 && entries == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    WireSize total = WireSize::of(2);
    for (uint32_t i = 0; i < n; ++i) {
        const AttributeEntry &entry = entries[i];
        total.add(4);
        if (const AttributeCodecRow *row = eventAttributeCodec(entry.id)) {
            WireSize value;
            if (TrovResult r = row->ops.encCalc(entry.value, kValueForm, &value, kValueVersion)) return r;
            total.add(value);
        } else {
            if (entry.length != 0 && entry.value == nullptr) return TROV_RESULT_NULL_ARGUMENT;
            total.add(entry.length);
        }
    }
    packetBytes.add(total);
    return TROV_RESULT_OK;
}

void eventAttributeListEncode(PacketCursor &cursor, const void *head) {
    const uint16_t n = loadField<uint16_t>(head, offsetof(AttributeList, count));
    const auto *entries = loadField<const AttributeEntry *>(head, offsetof(AttributeList, entries));
    putU16(cursor, n);
    for (uint32_t i = 0; i < n; ++i) {
        const AttributeEntry &entry = entries[i];
        putU16(cursor, entry.id);
        if (const AttributeCodecRow *row = eventAttributeCodec(entry.id)) {
            WireSize value;
            row->ops.encCalc(entry.value, kValueForm, &value, kValueVersion);
            putU16(cursor, value.bytes);
            row->ops.encode(&cursor, entry.value, kValueForm, kValueVersion);
        } else {
            putU16(cursor, entry.length);
            putBytes(&cursor, entry.value, entry.length);
        }
    }
}

// The list as the walker runs it (the nesting depth and the packet's
// version play no part: event attributes are coded at version 0).
const ListOps kEventAttributeLists{
    [](const void *head, uint8_t, uint8_t, WireSize &size) { return eventAttributeListEncCalc(head, size); },
    [](PacketCursor &c, const void *head, uint8_t, uint8_t) { eventAttributeListEncode(c, head); },
    [](PacketCursor &c, uint8_t, uint8_t, Sizes &data) { return eventAttributeListDecCalc(c, data); },
    [](PacketCursor &c, void *head, uint8_t *data, uint8_t, uint8_t) {
        return eventAttributeListDecode(c, head, data);
    },
};

// ---- the structure events ------------------------------------------------------------

namespace se = structure_event;

TrovResult structureEventDecCalc(PacketCursor *cursor, uint8_t, RecordSize *size) {
    if (cursor == nullptr || cursor->position == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (lacks(*cursor, structFixedWireSize(se::kBody))) return TROV_RESULT_SHORT_INPUT;
    PacketCursor c = *cursor;
    RecordSize body{};
    if (structDecCalc(se::kBody, structRecordSize(se::kBody), &c, &body) != TROV_RESULT_OK)
        return TROV_RESULT_SHORT_INPUT;
    *cursor = c;
    size->bytes = static_cast<uint16_t>(body.bytes + se::kHeadBytes);
    size->extent = body.extent + se::kHeadBytes;
    return TROV_RESULT_OK;
}

void *structureEventDecode(void *record, PacketCursor *cursor, uint8_t) {
    auto *base = static_cast<uint8_t *>(record);
    auto *body = static_cast<uint8_t *>(alignUp8(base + se::kHeadBytes));
    constexpr uint16_t bodyBytes = structRecordSize(se::kBody);
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
