// Extended event data: the typed items inside an event's byte string.
//
// Self-describing form: u8 item count, then per item u16 attribute
// identifier, u8 length L, and the value as the attribute codec writes it in
// array form. With a caller's schema row for the event code: the values
// alone, as the row lists them (kind 99: a data-type code; any other kind:
// an attribute identifier).
//
// Decoding sizes every item first (16-bit total, as the protocol computes
// it), prepares the caller's buffer once, then decodes: the entry array opens
// the block, each value follows at a multiple of 8. An item without a schema
// whose identifier has no codec is kept raw: a 24-byte EventExtendRawItem and
// its L bytes.
#include <cstring>

#include "api/EventExtend.h"

#include "api/Dispatch.h"
#include "engine/Memory.h"
#include "engine/CodecTypes.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

constexpr uint16_t kLongStringEvent = 0x30; // the one event whose string length is 16-bit
constexpr uint8_t kArrayForm = 1;
constexpr uint32_t kRawItemBytes = sizeof(EventExtendRawItem);

bool schemaWellFormed(const EventExtendSchema *schema) {
    if (schema->count != 0 && schema->rows == nullptr) return false;
    for (uint16_t i = 0; i < schema->count; ++i)
        if (schema->rows[i].itemCount != 0 && schema->rows[i].items == nullptr) return false;
    return true;
}

const EventExtendSchemaRow *schemaRowFor(const EventExtendSchema *schema, uint16_t eventCode) {
    if (schema == nullptr) return nullptr;
    for (uint16_t i = 0; i < schema->count; ++i)
        if (schema->rows[i].eventCode == eventCode) return &schema->rows[i];
    return nullptr;
}

uint16_t stringLength(const OctetString *data, uint16_t eventCode) {
    return eventCode == kLongStringEvent ? data->length : static_cast<uint8_t>(data->length);
}

// The value codec of an item: a data type for kind 99 in a schema, else an
// attribute. Null with the result to report when there is none.
const ValueCodecOps *codecOf(bool dataType, uint16_t identifier, uint8_t version, TrovResult *missing) {
    if (dataType) {
        const DataTypeCodecRow *row = lookupDataType(identifier, version);
        *missing = TROV_RESULT_NO_DATA_TYPE_CODEC;
        return row != nullptr ? &row->ops : nullptr;
    }
    const AttributeCodecRow *row = lookupAttribute(identifier, version);
    *missing = TROV_RESULT_NO_ATTRIBUTE_CODEC;
    return row != nullptr ? &row->ops : nullptr;
}

using ValueDecodeFn = void *(*)(void *, PacketCursor *, uint8_t, uint8_t);

} // namespace

TrovResult decodeEventExtend(EventExtendList *list, const OctetString *data, uint16_t eventCode,
                             const EventExtendSchema *schema, uint8_t version, BufferDesc *buffer) {
    if (list == nullptr || data == nullptr || buffer == nullptr || version == 0 || eventCode == 0 ||
        data->data == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    if (schema != nullptr && !schemaWellFormed(schema)) return TROV_RESULT_NULL_ARGUMENT;
    const EventExtendSchemaRow *row = schemaRowFor(schema, eventCode);

    PacketCursor cursor{data->data, stringLength(data, eventCode)};
    uint8_t count = 0;
    if (row != nullptr) {
        count = row->itemCount;
    } else {
        if (cursor.remaining == 0) return TROV_RESULT_SHORT_INPUT;
        count = getU8(cursor);
    }
    list->count = count;
    list->entries = nullptr;
    if (count == 0) return TROV_RESULT_OK;

    auto *slots = static_cast<ValueDecodeFn *>(heapAlloc(count * uint32_t{sizeof(ValueDecodeFn)}));
    if (slots == nullptr) return TROV_RESULT_NO_MEMORY;
    auto fail = [&](TrovResult r) {
        heapFree(slots);
        return r;
    };

    // Size pass.
    Sizes total;
    total.add(static_cast<uint16_t>(count * 16u), count * 16u);
    PacketCursor sizing = cursor;
    for (uint8_t i = 0; i < count; ++i) {
        uint16_t identifier = 0;
        bool dataType = false;
        if (row != nullptr) {
            identifier = row->items[i].identifier;
            dataType = row->items[i].kind == TROV_EXTEND_KIND_DATA_TYPE;
        } else {
            if (sizing.remaining < 3) return fail(TROV_RESULT_SHORT_INPUT);
            identifier = getU16(sizing);
            const uint8_t length = getU8(sizing);
            if (lookupAttribute(identifier, version) == nullptr) {
                // Raw: its bytes are moved over without a test, as the
                // protocol does; the cursor stops at the end of the data.
                advance(sizing, length < sizing.remaining ? length : sizing.remaining);
                const uint32_t bytes = ((length + 7u) & 0xFFF8u) + kRawItemBytes;
                total.add(static_cast<uint16_t>(bytes), bytes);
                slots[i] = nullptr;
                continue;
            }
        }
        TrovResult missing = TROV_RESULT_OK;
        const ValueCodecOps *ops = codecOf(dataType, identifier, version, &missing);
        if (ops == nullptr) return fail(missing);
        RecordSize size{};
        if (TrovResult r = ops->decCalc(&sizing, kArrayForm, &size, version)) return fail(r);
        total.add(size.bytes, size.extent > size.bytes ? size.extent : size.bytes);
        slots[i] = ops->decode;
    }

    DecodeResult own{};
    bool allocated = false;
    if (TrovResult r = prepareBuffer(&own, buffer, total.bytes, &allocated, total.extent)) return fail(r);

    // Decode pass.
    auto *entries = static_cast<EventExtendEntry *>(buffer->data);
    auto *value = static_cast<uint8_t *>(buffer->data) + count * 16u;
    for (uint8_t i = 0; i < count; ++i) {
        EventExtendEntry &entry = entries[i];
        uint8_t length = 0;
        if (row != nullptr) {
            entry.kind = row->items[i].kind;
            entry.identifier = row->items[i].identifier;
        } else {
            entry.kind = 0;
            entry.identifier = getU16(cursor);
            length = getU8(cursor);
        }
        entry.value = value;
        if (slots[i] != nullptr) {
            value = static_cast<uint8_t *>(alignUp8(slots[i](value, &cursor, kArrayForm, version)));
            continue;
        }
        EventExtendRawItem raw{};
        raw.identifier = entry.identifier;
        raw.length = length;
        raw.data = value + kRawItemBytes;
        std::memcpy(value, &raw, sizeof raw);
        // Copy what the data holds of the L bytes; the rest stays zero.
        const uint32_t present = length < cursor.remaining ? length : cursor.remaining;
        getBytes(cursor, value + kRawItemBytes, present);
        entry.identifier = 0;
        value += kRawItemBytes + roundUp8(uint32_t{length});
    }
    list->entries = entries;
    heapFree(slots);
    return TROV_RESULT_OK;
}

TrovResult encodeEventExtend(const EventExtendList *list, OctetString *data, uint16_t eventCode,
                             const EventExtendSchema *schema, uint8_t version, BufferDesc *buffer) {
    if (list == nullptr || data == nullptr || buffer == nullptr || eventCode == 0 || version == 0 ||
        (list->count != 0 && list->entries == nullptr))
        return TROV_RESULT_NULL_ARGUMENT;
    const EventExtendSchemaRow *row = nullptr;
    if (schema != nullptr) {
        // Unlike the decoder, an empty schema is refused rather than ignored.
        if (schema->count == 0 || !schemaWellFormed(schema)) return TROV_RESULT_NULL_ARGUMENT;
        row = schemaRowFor(schema, eventCode);
        if (row == nullptr || row->itemCount != list->count) return TROV_RESULT_NULL_ARGUMENT;
        for (uint8_t i = 0; i < list->count; ++i)
            if (list->entries[i].kind != row->items[i].kind ||
                list->entries[i].identifier != row->items[i].identifier)
                return TROV_RESULT_NULL_ARGUMENT;
    }
    const uint8_t count = list->count;
    // The byte string's length is one byte (two for event 0x30); the total is
    // the true extent, so that a value whose 16-bit size wraps is refused
    // rather than written into room sized for the wrapped figure.
    WireSize total = WireSize::of(row != nullptr ? 0 : 1 + 3 * count);

    struct Slot {
        uint8_t size;
        void (*encode)(PacketCursor *, const void *, uint8_t, uint8_t);
    };
    Slot *slots = nullptr;
    if (count != 0) {
        slots = static_cast<Slot *>(heapAlloc(count * uint32_t{sizeof(Slot)}));
        if (slots == nullptr) return TROV_RESULT_NO_MEMORY;
    }
    auto fail = [&](TrovResult r) {
        if (slots != nullptr) heapFree(slots);
        return r;
    };
    for (uint8_t i = 0; i < count; ++i) {
        const EventExtendEntry &entry = list->entries[i];
        const bool dataType = row != nullptr && entry.kind == TROV_EXTEND_KIND_DATA_TYPE;
        TrovResult missing = TROV_RESULT_OK;
        const ValueCodecOps *ops = codecOf(dataType, entry.identifier, version, &missing);
        if (ops == nullptr) return fail(missing);
        WireSize size;
        if (TrovResult r = ops->encCalc(entry.value, kArrayForm, &size, version)) return fail(r);
        if (size.nullData) return fail(TROV_RESULT_NULL_ARGUMENT);
        // An item's length byte frames at most 255 bytes: the 16-bit figure
        // is tested here, and a value whose true extent passes 65535 (so
        // that the figure wraps below 256) is refused with the total below.
        if (!dataType && size.bytes > 0xFF) return fail(TROV_RESULT_SHORT_INPUT);
        slots[i] = Slot{static_cast<uint8_t>(size.bytes), ops->encode};
        total.add(size);
    }
    // The byte string's length is one byte but for event 0x30: a 16-bit
    // total above 255 is refused before anything is set. A total whose true
    // extent its length cannot state (wrapping in 16 bits) is refused once
    // the data keeps its figure, as the length of a string that is never
    // written.
    if (eventCode != kLongStringEvent && total.bytes > 0xFF) return fail(TROV_RESULT_SHORT_INPUT);
    if (total.extent != total.bytes) {
        if (eventCode == kLongStringEvent) data->length = total.bytes;
        else std::memcpy(&data->length, &total.bytes, 1);
        return fail(TROV_RESULT_SHORT_INPUT);
    }

    DecodeResult own{};
    bool allocated = false;
    if (TrovResult r = prepareBuffer(&own, buffer, total.bytes, &allocated)) return fail(r);
    if (eventCode == kLongStringEvent) data->length = total.bytes;
    else std::memcpy(&data->length, &total.bytes, 1); // a one-byte length: the first byte only
    data->data = static_cast<uint8_t *>(buffer->data);

    PacketCursor c{static_cast<uint8_t *>(buffer->data), total.bytes};
    if (row == nullptr) putU8(c, count);
    for (uint8_t i = 0; i < count; ++i) {
        if (row == nullptr) {
            putU16(c, list->entries[i].identifier);
            putU8(c, slots[i].size);
        }
        slots[i].encode(&c, list->entries[i].value, kArrayForm, version);
    }
    if (total.extent != 0 && overrun(c)) {
        // A size pass that under-reported: the writers stopped at the end of
        // the buffer. Nothing of this call stays behind. (With nothing to
        // write there may be no buffer at all, and nothing was written.)
        if (allocated) releaseOnFailure(&own, false, true);
        data->length = 0;
        data->data = nullptr;
        return fail(TROV_RESULT_SHORT_INPUT);
    }
    if (slots != nullptr) heapFree(slots);
    return TROV_RESULT_OK;
}

} // namespace trov

extern "C" {

TROV_API TrovResult TROV_DecodeEventExtend(EventExtendList *list, const OctetString *data,
                                           uint16_t eventCode, const EventExtendSchema *schema,
                                           uint8_t version, BufferDesc *buffer) {
    return trov::decodeEventExtend(list, data, eventCode, schema, version, buffer);
}

TROV_API TrovResult TROV_EncodeEventExtend(const EventExtendList *list, OctetString *data,
                                           uint16_t eventCode, const EventExtendSchema *schema,
                                           uint8_t version, BufferDesc *buffer) {
    return trov::encodeEventExtend(list, data, eventCode, schema, version, buffer);
}

} // extern "C"
