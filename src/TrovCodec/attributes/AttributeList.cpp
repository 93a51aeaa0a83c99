// Attribute-list framing.
#include "attributes/AttributeList.h"

#include "attributes/ValueForms.h"
#include "engine/Cursor.h"

namespace trov {

TrovResult attributeListEncCalc(const AttributeEntry *entries, uint16_t count, uint8_t isArray,
                                uint8_t version, WireSize *packetBytes) {
    if (isArray > kMaxNesting) return TROV_RESULT_SHORT_INPUT;
    const uint16_t n = isArray != 0 ? count : 1;
    if (n != 0 && entries == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    WireSize total = WireSize::of(isArray != 0 ? 2 : 0);
    for (uint16_t i = 0; i < n; ++i) {
        const AttributeCodecRow *row = lookupAttribute(entries[i].id, version);
        if (row == nullptr) return TROV_RESULT_NO_ATTRIBUTE_CODEC;
        WireSize size;
        if (TrovResult r = row->ops.encCalc(entries[i].value, nestedFlag(isArray), &size, version))
            return r;
        total.add(4);
        total.add(size);
    }
    *packetBytes = total;
    return TROV_RESULT_OK;
}

void attributeListEncode(PacketCursor &cursor, const AttributeEntry *entries, uint16_t count,
                         uint8_t isArray, uint8_t version) {
    if (isArray != 0) putU16(cursor, count);
    const uint16_t n = isArray != 0 ? count : 1;
    for (uint16_t i = 0; i < n; ++i) {
        const AttributeCodecRow *row = lookupAttribute(entries[i].id, version);
        if (row == nullptr) continue;
        WireSize size;
        row->ops.encCalc(entries[i].value, nestedFlag(isArray), &size, version);
        putU16(cursor, entries[i].id);
        putU16(cursor, size.bytes);
        row->ops.encode(&cursor, entries[i].value, nestedFlag(isArray), version);
    }
}

TrovResult singleAttributeEncCalc(uint16_t id, const void *value, uint16_t *packetBytes) {
    const AttributeCodecRow *row = lookupAttribute(id, 0);
    if (row == nullptr) return TROV_RESULT_NO_ATTRIBUTE_CODEC;
    WireSize size;
    if (TrovResult r = row->ops.encCalc(value, 1, &size, 0)) return r;
    *packetBytes = static_cast<uint16_t>(size.bytes + 4);
    return TROV_RESULT_OK;
}

TrovResult attributeListDecCalc(PacketCursor &cursor, uint16_t count, uint8_t isArray,
                                uint8_t version, Sizes *recordBytes) {
    if (isArray > kMaxNesting) return TROV_RESULT_SHORT_INPUT;
    PacketCursor c = cursor;
    Sizes sizes;
    sizes.add(static_cast<uint16_t>(count * 16u), uint32_t{count} * 16u);
    for (uint16_t i = 0; i < count; ++i) {
        if (lacks(c, 4)) return TROV_RESULT_SHORT_INPUT;
        const uint16_t id = getU16(c);
        const uint16_t length = getU16(c);
        const AttributeCodecRow *row = lookupAttribute(id, version);
        if (row == nullptr) return TROV_RESULT_NO_ATTRIBUTE_CODEC;
        if (lacks(c, length)) return TROV_RESULT_SHORT_INPUT;
        // The value is read within its announced length and must fill it.
        PacketCursor value{c.position, length};
        RecordSize size{};
        if (TrovResult r = row->ops.decCalc(&value, nestedFlag(isArray), &size, version)) return r;
        if (value.remaining != 0) return TROV_RESULT_SHORT_INPUT;
        advance(c, length);
        sizes.add(roundUp8u16(size.bytes), (size.extent + 7) & ~7u);
    }
    cursor = c;
    recordBytes->add(sizes.bytes, sizes.extent);
    return TROV_RESULT_OK;
}

uint8_t *attributeListDecode(PacketCursor &cursor, uint16_t count, AttributeEntry *entries,
                             uint8_t *values, uint8_t isArray, uint8_t version) {
    uint8_t *next = values;
    for (uint16_t i = 0; i < count; ++i) {
        AttributeEntry &entry = entries[i];
        entry.id = getU16(cursor);
        const uint16_t length = getU16(cursor);
        entry.length = 0; // decoded by its codec
        entry.value = next;
        const AttributeCodecRow *row = lookupAttribute(entry.id, version);
        PacketCursor value{cursor.position, length};
        next = static_cast<uint8_t *>(alignUp8(row->ops.decode(next, &value, nestedFlag(isArray), version)));
        advance(cursor, length);
    }
    return next;
}

} // namespace trov
