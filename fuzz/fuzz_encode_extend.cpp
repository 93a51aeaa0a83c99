// Encodes extended event data built from fuzz input through
// TROV_EncodeEventExtend, self-describing or with a schema (attributes and
// kind-99 data types), into a buffer the library allocates, into caller
// buffers of one byte short, exactly the size and one byte spare (each
// allocated with exactly that size), and into a growable buffer that starts
// small. The results must agree; a list that follows a null pointer, names
// no codec or does not match its schema must be refused. What encodes is
// decoded with TROV_DecodeEventExtend under the same schema and encoded
// again to the same bytes.
//
// Input: the builder's hostility byte; the event code (below 0x40: 0x30,
// below 0xF0: the byte, else the next two bytes); the version (below 0xF0:
// 0x10, 0xFF: 0, else the byte); the schema byte (bit 0 a schema, then
// (b >> 1) % 3 other rows and (b >> 3) the list's place among them); with a
// schema a byte that, at 0xF8 and above, makes it not fit the list (its low
// bits say how); the item count; per item, with a schema a kind byte (below
// 0x80: kind 99 and a data type, else kind 1 + b % 98 and an identifier),
// without one a u16 kind and an identifier, then the value and its pointer
// decision; the size of the growable buffer.
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "RecordBuilder.h"

namespace {

using namespace trovfuzz;
using Bytes = std::vector<uint8_t>;

constexpr uint8_t kCanary = 0xA5;
constexpr uint16_t kLongStringEvent = 0x30; // the one code whose data has a u16 length

struct Call {
    const EventExtendList *list;
    uint16_t eventCode;
    const EventExtendSchema *schema;
    uint8_t version;
};

// The data's length as the encoder set it: a u8 for all codes but 0x30.
uint16_t dataLength(const OctetString &data, uint16_t eventCode) {
    return eventCode == kLongStringEvent ? data.length : static_cast<uint8_t>(data.length);
}

// Into a buffer the library allocates; on success `bytes` holds the data.
TrovResult encodeAllocated(const Call &call, Bytes &bytes) {
    BufferDesc buffer{nullptr, 0, 0};
    OctetString data{0, nullptr};
    const TrovResult r = TROV_EncodeEventExtend(call.list, &data, call.eventCode, call.schema, call.version, &buffer);
    if (r != TROV_RESULT_OK) {
        check(buffer.data == nullptr, "a failed encode handed over a buffer");
        return r;
    }
    const uint16_t n = dataLength(data, call.eventCode);
    check(data.data == buffer.data, "the data is not in the buffer");
    check(n == 0 || (buffer.flags == TROV_BUFFER_ALLOCATED && buffer.capacity == n),
          "the allocated buffer does not describe the data");
    bytes.assign(data.data, data.data + n);
    trovFree(buffer.data);
    return r;
}

// Into a caller's buffer of exactly `capacity` bytes, not growable.
TrovResult encodeInto(const Call &call, uint16_t capacity, Bytes &bytes) {
    std::unique_ptr<uint8_t[]> memory(new uint8_t[capacity]);
    std::memset(memory.get(), kCanary, capacity);
    BufferDesc buffer{memory.get(), capacity, 0};
    OctetString data{0, nullptr};
    const TrovResult r = TROV_EncodeEventExtend(call.list, &data, call.eventCode, call.schema, call.version, &buffer);
    check(buffer.data == memory.get(), "a caller's buffer that may not grow was replaced");
    if (r == TROV_RESULT_BUFFER_TOO_SMALL)
        for (uint32_t i = 0; i < capacity; ++i) check(memory[i] == kCanary, "a buffer refused as too small was written");
    if (r == TROV_RESULT_OK) {
        const uint16_t n = dataLength(data, call.eventCode);
        check(n <= capacity && (n == 0 || data.data == memory.get()), "the data is not in the caller's buffer");
        for (uint32_t i = n; i < capacity; ++i) check(memory[i] == kCanary, "a byte written behind the data");
        bytes.assign(memory.get(), memory.get() + n);
    }
    return r;
}

// Into a growable buffer of `capacity` bytes from trovMalloc.
TrovResult encodeGrowable(const Call &call, uint16_t capacity, Bytes &bytes) {
    BufferDesc buffer{trovMalloc(capacity), capacity, TROV_BUFFER_GROWABLE};
    check(buffer.data != nullptr, "trovMalloc failed");
    OctetString data{0, nullptr};
    const TrovResult r = TROV_EncodeEventExtend(call.list, &data, call.eventCode, call.schema, call.version, &buffer);
    if (r == TROV_RESULT_OK) {
        const uint16_t n = dataLength(data, call.eventCode);
        check(n == 0 || data.data == buffer.data, "the data is not in the grown buffer");
        bytes.assign(data.data, data.data + n);
    }
    trovFree(buffer.data);
    return r;
}

// Decodes the data under the same schema and encodes the list again.
void roundTrip(const Call &call, const Bytes &bytes, bool faithful) {
    // The decoder wants a data pointer even for no bytes.
    std::unique_ptr<uint8_t[]> copy(new uint8_t[bytes.empty() ? 1 : bytes.size()]);
    if (!bytes.empty()) std::memcpy(copy.get(), bytes.data(), bytes.size());
    const OctetString data{static_cast<uint16_t>(bytes.size()), copy.get()};
    EventExtendList list{};
    BufferDesc buffer{nullptr, 0, 0};
    const TrovResult r = TROV_DecodeEventExtend(&list, &data, call.eventCode, call.schema, call.version, &buffer);
    if (r != TROV_RESULT_OK) {
        if (faithful)
            std::fprintf(stderr, "event 0x%04x data of %zu bytes (schema %s) decodes with %u\n", call.eventCode,
                         bytes.size(), call.schema != nullptr ? "yes" : "no", r);
        if (faithful) {
            for (uint8_t b : bytes) std::fprintf(stderr, " %02x", b);
            std::fprintf(stderr, "\n");
        }
        check(!faithful, "encoded extended data does not decode");
        check(buffer.data == nullptr, "a failed decode handed over a buffer");
        return;
    }
    check(list.count == call.list->count, "the decoded list has another count");
    Bytes again;
    const TrovResult e = encodeAllocated(Call{&list, call.eventCode, call.schema, call.version}, again);
    if (faithful) {
        check(e == TROV_RESULT_OK, "decoded extended data does not encode again");
        check(again == bytes, "decoding and encoding again changed the data");
    }
    trovFree(buffer.data);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    TROV_InitCoder();
    RecordBuilder builder(data, size);
    FuzzInput &in = builder.input();

    const uint8_t codeByte = in.u8();
    const uint16_t eventCode = codeByte < 0x40 ? kLongStringEvent : codeByte < 0xF0 ? codeByte : in.u16();
    const uint8_t versionByte = in.u8();
    const uint8_t version = versionByte < 0xF0 ? TROV_PROTOCOL_VERSION : versionByte == 0xFF ? 0 : versionByte;
    if (eventCode == 0 || version == 0) builder.refuse();
    const uint8_t schemaByte = in.u8();
    const bool withSchema = (schemaByte & 1) != 0;
    const uint8_t misfit = withSchema ? in.u8() : 0;

    // The list: values always travel in array form.
    EventExtendList list{};
    list.count = static_cast<uint8_t>(builder.count(1, 4, sizeof(EventExtendEntry), true));
    auto *entries = reinterpret_cast<EventExtendEntry *>(
        builder.zeroed(size_t{list.count} * sizeof(EventExtendEntry), list.count != 0));
    list.entries = entries;
    auto *items = reinterpret_cast<EventExtendItemSpec *>(
        builder.block(size_t{list.count} * sizeof(EventExtendItemSpec)));
    for (uint32_t i = 0; entries != nullptr && i < list.count; ++i) {
        EventExtendEntry &e = entries[i];
        bool known = false;
        if (withSchema && in.u8() < 0x80) {
            e.kind = TROV_EXTEND_KIND_DATA_TYPE;
            e.identifier = builder.dataTypeCode();
            e.value = builder.dataTypeValue(e.identifier);
            known = dataType(e.identifier).family != ValueType::Family::None;
        } else {
            e.kind = withSchema ? static_cast<uint16_t>(1 + in.u8() % 98) : in.u16();
            e.identifier = builder.attributeId();
            e.value = builder.attributeValue(e.identifier);
            known = attributeType(e.identifier).family != ValueType::Family::None;
        }
        if (!known) builder.refuse();
        if (builder.nullPointer()) {
            e.value = nullptr;
            builder.refuse();
        }
        items[i] = EventExtendItemSpec{e.kind, e.identifier};
    }

    // The schema: the list's row among others for other codes, each row
    // well formed unless the input asks for a schema that does not fit.
    EventExtendSchema schema{};
    std::vector<EventExtendSchemaRow> rows;
    if (withSchema) {
        const uint32_t count = 1 + (schemaByte >> 1) % 3;
        const uint32_t mine = count - 1 - (schemaByte >> 3) % count;
        for (uint32_t i = 0; i < count; ++i) {
            const uint16_t other = static_cast<uint16_t>(eventCode + 1 + i);
            if (i == mine) rows.push_back({eventCode, list.count, items});
            else rows.push_back({other, 0, nullptr});
        }
        schema = {static_cast<uint16_t>(rows.size()), rows.data()};
        if (misfit >= 0xF8) {
            builder.refuse();
            EventExtendSchemaRow &row = rows[mine];
            switch (misfit & 7) {
            case 0: schema.count = 0; break;      // an empty schema
            case 1: schema.rows = nullptr; break; // rows missing
            case 2: row.eventCode = static_cast<uint16_t>(eventCode ^ 0x8000); break; // no row for the code
            case 3: row.itemCount = static_cast<uint8_t>(list.count + 1); break;     // one item more
            case 4: // items missing
                row.items = nullptr;
                row.itemCount = list.count == 0 ? 1 : list.count;
                break;
            default: // one item differs, or a row with an item for an empty list
                if (list.count == 0) {
                    row.itemCount = 1;
                    row.items = reinterpret_cast<EventExtendItemSpec *>(builder.block(sizeof(EventExtendItemSpec)));
                } else {
                    items[misfit % list.count].identifier ^= 0x4000;
                }
                break;
            }
        }
    }
    const Call call{&list, eventCode, withSchema ? &schema : nullptr, version};

    Bytes bytes;
    const TrovResult r = encodeAllocated(call, bytes);
    if (builder.mustFail()) {
        if (r == TROV_RESULT_OK && !builder.deep()) {
            std::fprintf(stderr, "event 0x%04x, schema %s, %u entries:", eventCode, withSchema ? "yes" : "no",
                         list.count);
            for (uint32_t i = 0; entries != nullptr && i < list.count; ++i)
            {
                trov::WireSize w;
                const trov::AttributeCodecRow *arow = trov::lookupAttribute(entries[i].identifier, version);
                const TrovResult er = arow != nullptr ? arow->ops.encCalc(entries[i].value, 1, &w, version) : 99;
                std::fprintf(stderr, " (%u, 0x%04x, %s: %u %u/%u%s)", entries[i].kind, entries[i].identifier,
                             entries[i].value != nullptr ? "value" : "NULL", er, w.bytes, w.extent,
                             w.nullData ? " null data" : "");
            }
            std::fprintf(stderr, "\n");
        }
        check(r != TROV_RESULT_OK || builder.deep(), "a list that must be refused was encoded");
    } else {
        check(r == TROV_RESULT_OK || r == TROV_RESULT_SHORT_INPUT,
              "a well-formed list was refused for another reason than its length");
    }

    const uint16_t grow = in.u16();
    if (r == TROV_RESULT_OK) {
        const auto n = static_cast<uint16_t>(bytes.size());
        for (uint32_t capacity = n == 0 ? 0 : n - 1u; capacity <= n + 1u && capacity <= 0xFFFF; ++capacity) {
            Bytes into;
            const TrovResult ri = encodeInto(call, static_cast<uint16_t>(capacity), into);
            if (capacity < n) {
                check(ri == TROV_RESULT_BUFFER_TOO_SMALL, "a buffer too short for the data was not refused");
            } else {
                check(ri == TROV_RESULT_OK, "a buffer that holds the data was refused");
                check(into == bytes, "the caller's buffer got other bytes than the library's");
            }
        }
        Bytes grown;
        check(encodeGrowable(call, static_cast<uint16_t>(grow % (n + 1u)), grown) == TROV_RESULT_OK,
              "a growable buffer was refused");
        check(grown == bytes, "the grown buffer got other bytes than the library's");
        roundTrip(call, bytes, builder.faithful());
    } else {
        Bytes into;
        const TrovResult ri = encodeInto(call, grow, into);
        check(ri == r || ri == TROV_RESULT_BUFFER_TOO_SMALL, "the result depends on the caller's buffer");
        check(encodeGrowable(call, static_cast<uint16_t>(grow & 0xFF), into) == r,
              "the result depends on the growable buffer");
    }
    return 0;
}
