// Events with an attribute list: the size and read passes of an event's
// attribute list, the generic walks over a layout's plan (size, read, and the
// encoding mirror of both), and the two structure events.
//
// The size pass checks what the body holds and adds up two figures: the
// protocol's record size in 16-bit arithmetic, which wraps and which is short
// on purpose in two places (the bare lists leave out their 16-byte head, and
// 0xBE counts its items at 5 bytes where they decode into 8), and the extent
// that Decode really writes, in 32 bits. Callers report the first and
// allocate the second.
#include "events/AttributeEvents.h"

#include <cstddef>
#include <cstring>

#include "attributes/ValueForms.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

using Item = AttributeEventItem;

// Every attribute inside an event is looked up and coded at version 0,
// whatever the packet's version, and in array form at the top nesting depth.
constexpr uint8_t kValueVersion = 0;
constexpr uint8_t kValueForm = 1;

const AttributeCodecRow *eventAttributeCodec(uint16_t id) { return lookupAttribute(id, kValueVersion); }

constexpr uint32_t roundUp8u32(uint32_t n) { return (n + 7u) & ~7u; }

// A raw value may announce more bytes than the packet holds (the size pass
// lets the last one through): copy what is there, the rest reads as 0, and
// the cursor stops at the end.
void copyRaw(PacketCursor &c, uint8_t *dst, uint16_t length) {
    const uint32_t have = length < c.remaining ? length : c.remaining;
    getBytes(c, dst, have);
    if (have < length) std::memset(dst + have, 0, length - have);
}

// Reads `count` elements of a run into `data`; returns the 8-aligned address
// behind them and the spare byte.
uint8_t *readRun(PacketCursor &c, Item item, uint8_t *data, uint32_t count) {
    const AttributeEventRun run = attributeEventRun(item);
    switch (item) {
    case Item::U32s: getU32Array(c, data, count); break;
    case Item::U32U8Items:
        for (uint32_t i = 0; i < count; ++i) {
            uint8_t *element = data + i * run.stride;
            std::memset(element, 0, run.stride);
            storeField<uint32_t>(element, 0, getU32(c));
            storeField<uint8_t>(element, 4, getU8(c));
        }
        break;
    default: getBytes(c, data, count * run.wireBytes); break;
    }
    return data + roundUp8u32(count * run.stride + run.spare);
}

void writeRun(PacketCursor &c, Item item, const uint8_t *data, uint32_t count) {
    const AttributeEventRun run = attributeEventRun(item);
    switch (item) {
    case Item::U32s:
        for (uint32_t i = 0; i < count; ++i) putU32(c, loadField<uint32_t>(data, 4 * i));
        break;
    case Item::U32U8Items:
        for (uint32_t i = 0; i < count; ++i) {
            putU32(c, loadField<uint32_t>(data, i * run.stride));
            putU8(c, loadField<uint8_t>(data, i * run.stride + 4));
        }
        break;
    default: putBytes(&c, data, count * run.wireBytes); break;
    }
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
            list.add(roundUp8u16(value.bytes), roundUp8u32(value.extent));
        } else {
            skipClamped(c, length);
            list.add(roundUp8u16(length), roundUp8u32(length));
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
            next += roundUp8u32(entry.length);
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

// ---- the layouts -----------------------------------------------------------------

TrovResult attributeEventDecCalc(const AttributeEventPlan &plan, PacketCursor *cursor, RecordSize *size) {
    if (cursor == nullptr || cursor->position == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const PacketCursor start = *cursor;
    if (lacks(start, plan.wireFixed)) return TROV_RESULT_SHORT_INPUT;
    PacketCursor c = start;
    Sizes total;
    total.add(plan.reportedFixed, plan.record);
    // The fixed wire bytes are known present; each run extends what the body
    // must hold, counted from its start, before the run is passed over.
    uint32_t need = plan.wireFixed;
    uint32_t count = 0;
    for (uint8_t s = 0; s < plan.count; ++s) {
        const Item item = plan.steps[s].item;
        if (item == Item::Count8) {
            count = getU8(c);
        } else if (item == Item::Count16) {
            count = getU16(c);
        } else if (const uint16_t width = attributeEventWidth(item); width != 0) {
            advance(c, width);
        } else if (attributeEventIsRun(item)) {
            const AttributeEventRun run = attributeEventRun(item);
            need += count * run.wireBytes;
            if (lacks(start, need)) return TROV_RESULT_SHORT_INPUT;
            advance(c, count * run.wireBytes);
            // Reported at the wire size plus the spare byte; written at the
            // element stride (larger for 0xBE's items, whose report is short).
            if (count != 0)
                total.add(roundUp8u16(count * run.wireBytes + run.spare),
                          roundUp8u32(count * run.stride + run.spare));
        } else if (item == Item::Attributes) {
            if (TrovResult r = eventAttributeListDecCalc(c, total)) return r;
        }
    }
    *cursor = c;
    *size = RecordSize{total.bytes, total.extent};
    return TROV_RESULT_OK;
}

void *attributeEventDecode(const AttributeEventPlan &plan, void *record, PacketCursor *cursor) {
    auto *base = static_cast<uint8_t *>(record);
    PacketCursor &c = *cursor;
    std::memset(base, 0, plan.record);
    uint8_t *data = base + plan.record;
    uint32_t count = 0;
    for (uint8_t s = 0; s < plan.count; ++s) {
        const AttributeEventStep step = plan.steps[s];
        switch (step.item) {
        case Item::U8: storeField<uint8_t>(base, step.offset, getU8(c)); break;
        case Item::U16: storeField<uint16_t>(base, step.offset, getU16(c)); break;
        case Item::U32: storeField<uint32_t>(base, step.offset, getU32(c)); break;
        case Item::Count8:
            count = getU8(c);
            storeField<uint8_t>(base, step.offset, static_cast<uint8_t>(count));
            break;
        case Item::Count16:
            count = getU16(c);
            storeField<uint16_t>(base, step.offset, static_cast<uint16_t>(count));
            break;
        case Item::Attributes: return eventAttributeListDecode(c, base + step.offset, data);
        default:
            if (attributeEventIsRun(step.item) && count != 0) {
                storeField<uint8_t *>(base, step.offset, data);
                data = readRun(c, step.item, data, count);
            }
            break;
        }
    }
    return data;
}

TrovResult attributeEventEncCalc(const AttributeEventPlan &plan, const void *record, uint16_t *packetBytes) {
    if (record == nullptr || packetBytes == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    WireSize total = WireSize::of(plan.wireFixed);
    uint32_t count = 0;
    for (uint8_t s = 0; s < plan.count; ++s) {
        const AttributeEventStep step = plan.steps[s];
        if (step.item == Item::Count8) {
            count = loadField<uint8_t>(record, step.offset);
        } else if (step.item == Item::Count16) {
            count = loadField<uint16_t>(record, step.offset);
        } else if (attributeEventIsRun(step.item)) {
            if (count != 0 && loadField<const void *>(record, step.offset) == nullptr)
                return TROV_RESULT_NULL_ARGUMENT;
            total.add(count * attributeEventRun(step.item).wireBytes);
        } else if (step.item == Item::Attributes) {
            if (TrovResult r = eventAttributeListEncCalc(static_cast<const uint8_t *>(record) + step.offset, total))
                return r;
        }
    }
    if (total.nullData) return TROV_RESULT_NULL_ARGUMENT;
    if (total.extent > 0xFFFF) return TROV_RESULT_SHORT_INPUT; // no 16-bit size can state it
    *packetBytes = total.bytes;
    return TROV_RESULT_OK;
}

void attributeEventEncode(const AttributeEventPlan &plan, PacketCursor *cursor, const void *record) {
    const auto *base = static_cast<const uint8_t *>(record);
    PacketCursor &c = *cursor;
    uint32_t count = 0;
    for (uint8_t s = 0; s < plan.count; ++s) {
        const AttributeEventStep step = plan.steps[s];
        if (const uint16_t width = attributeEventWidth(step.item); width != 0) {
            putValue(c, base + step.offset, width);
            if (step.item == Item::Count8) count = loadField<uint8_t>(base, step.offset);
            if (step.item == Item::Count16) count = loadField<uint16_t>(base, step.offset);
        } else if (attributeEventIsRun(step.item)) {
            writeRun(c, step.item, loadField<const uint8_t *>(base, step.offset), count);
        } else if (step.item == Item::Attributes) {
            eventAttributeListEncode(c, base + step.offset);
        }
    }
}

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
