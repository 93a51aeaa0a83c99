// The attribute lists, both rule sets in one implementation.
#include "attributes/AttributeList.h"

#include <cstddef>
#include <cstring>

#include "engine/Tables.h"
#include "attributes/ValueForms.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

enum class Rules : uint8_t { Nested, Event };

// The version and array flag the values of a list are coded at. A nested
// list sits one level below the value holding it (`nesting`), and its
// values one level below the list.
struct Coding {
    uint8_t version;
    uint8_t flag;
};
Coding codingOf(Rules rules, uint8_t nesting, uint8_t version) {
    return rules == Rules::Event ? Coding{0, 1} : Coding{version, nestedFlag(nestedFlag(nesting))};
}

uint16_t countOf(const void *head) { return loadField<uint16_t>(head, offsetof(AttributeList, count)); }
const AttributeEntry *entriesOf(const void *head) {
    return loadField<const AttributeEntry *>(head, offsetof(AttributeList, entries));
}

template <Rules R>
TrovResult encCalc(const void *head, uint8_t nesting, uint8_t version, WireSize &size) {
    if (R == Rules::Nested && nestedFlag(nesting) > kMaxNesting) return TROV_RESULT_SHORT_INPUT;
    const Coding coding = codingOf(R, nesting, version);
    const uint16_t n = countOf(head);
    const AttributeEntry *entries = entriesOf(head);
    if (n != 0 && entries == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    WireSize total = WireSize::of(2);
    for (uint32_t i = 0; i < n; ++i) {
        const AttributeEntry &entry = entries[i];
        total.add(4);
        if (const AttributeCodecRow *row = lookupAttribute(entry.id, coding.version)) {
            WireSize value;
            if (TrovResult r = row->ops.encCalc(entry.value, coding.flag, &value, coding.version)) return r;
            total.add(value);
        } else if (R == Rules::Nested) {
            return TROV_RESULT_NO_ATTRIBUTE_CODEC;
        } else {
            if (entry.length != 0 && entry.value == nullptr) return TROV_RESULT_NULL_ARGUMENT;
            total.add(entry.length);
        }
        if (total.pastLimit()) break; // refused whatever follows (WireSize::kSizingLimit)
    }
    size.add(total);
    return TROV_RESULT_OK;
}

template <Rules R>
void encode(PacketCursor &cursor, const void *head, uint8_t nesting, uint8_t version) {
    const Coding coding = codingOf(R, nesting, version);
    const uint16_t n = countOf(head);
    const AttributeEntry *entries = entriesOf(head);
    putU16(cursor, n);
    for (uint32_t i = 0; i < n; ++i) {
        const AttributeEntry &entry = entries[i];
        if (const AttributeCodecRow *row = lookupAttribute(entry.id, coding.version)) {
            WireSize value;
            row->ops.encCalc(entry.value, coding.flag, &value, coding.version);
            putU16(cursor, entry.id);
            putU16(cursor, value.bytes);
            row->ops.encode(&cursor, entry.value, coding.flag, coding.version);
        } else if (R == Rules::Event) {
            putU16(cursor, entry.id);
            putU16(cursor, entry.length);
            putBytes(&cursor, entry.value, entry.length);
        } // nested: the size pass refused it
    }
}

template <Rules R>
TrovResult decCalc(PacketCursor &cursor, uint8_t nesting, uint8_t version, Sizes &data) {
    if (R == Rules::Nested && nestedFlag(nesting) > kMaxNesting) return TROV_RESULT_SHORT_INPUT;
    const Coding coding = codingOf(R, nesting, version);
    PacketCursor c = cursor;
    if (lacks(c, 2)) return TROV_RESULT_SHORT_INPUT;
    const uint16_t n = getU16(c);
    Sizes sizes;
    sizes.add(static_cast<uint16_t>(n * 16u), n * 16u);
    for (uint32_t i = 0; i < n; ++i) {
        if (lacks(c, 4)) return TROV_RESULT_SHORT_INPUT;
        const uint16_t id = getU16(c);
        const uint16_t length = getU16(c);
        const AttributeCodecRow *row = lookupAttribute(id, coding.version);
        RecordSize value{length, length}; // a raw value's
        if (R == Rules::Nested) {
            if (row == nullptr) return TROV_RESULT_NO_ATTRIBUTE_CODEC;
            if (lacks(c, length)) return TROV_RESULT_SHORT_INPUT;
            PacketCursor bounded{c.position, length};
            if (TrovResult r = row->ops.decCalc(&bounded, coding.flag, &value, coding.version)) return r;
            if (bounded.remaining != 0) return TROV_RESULT_SHORT_INPUT;
            advance(c, length);
        } else if (row != nullptr) {
            if (TrovResult r = row->ops.decCalc(&c, coding.flag, &value, coding.version)) return r;
        } else {
            skipClamped(c, length);
        }
        sizes.add(roundUp8u16(value.bytes), roundUp8(value.extent));
    }
    cursor = c;
    data.add(sizes.bytes, sizes.extent);
    return TROV_RESULT_OK;
}

template <Rules R>
uint8_t *decode(PacketCursor &cursor, void *head, uint8_t *data, uint8_t nesting, uint8_t version) {
    const Coding coding = codingOf(R, nesting, version);
    const uint16_t n = getU16(cursor);
    auto *entries = static_cast<AttributeEntry *>(alignUp8(data));
    storeField<uint16_t>(head, offsetof(AttributeList, count), n);
    storeField<AttributeEntry *>(head, offsetof(AttributeList, entries), n != 0 ? entries : nullptr);
    auto *next = reinterpret_cast<uint8_t *>(entries + n);
    for (uint32_t i = 0; i < n; ++i) {
        AttributeEntry &entry = entries[i];
        entry.id = getU16(cursor);
        entry.length = getU16(cursor);
        entry.value = next;
        const AttributeCodecRow *row = lookupAttribute(entry.id, coding.version);
        if (R == Rules::Nested) {
            PacketCursor bounded{cursor.position, entry.length};
            next = static_cast<uint8_t *>(alignUp8(row->ops.decode(next, &bounded, coding.flag, coding.version)));
            advance(cursor, entry.length);
            entry.length = 0;
        } else if (row != nullptr) {
            next = static_cast<uint8_t *>(alignUp8(row->ops.decode(next, &cursor, coding.flag, coding.version)));
            entry.length = 0;
        } else {
            // A raw value may announce more bytes than the packet holds (the
            // size pass lets the last one through): what is missing reads as 0.
            const uint32_t have = entry.length < cursor.remaining ? entry.length : cursor.remaining;
            getBytes(cursor, next, have);
            std::memset(next + have, 0, entry.length - have);
            next += roundUp8(uint32_t{entry.length});
        }
    }
    return static_cast<uint8_t *>(alignUp8(next));
}

} // namespace

const ListOps kNestedAttributeLists{encCalc<Rules::Nested>, encode<Rules::Nested>, decCalc<Rules::Nested>,
                                    decode<Rules::Nested>};
const ListOps kEventAttributeLists{encCalc<Rules::Event>, encode<Rules::Event>, decCalc<Rules::Event>,
                                   decode<Rules::Event>};

} // namespace trov
