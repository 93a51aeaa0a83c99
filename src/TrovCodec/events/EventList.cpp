// The event-list decoder shared by both framings.
#include "events/EventList.h"

#include <cstring>

#include "api/Memory.h"
#include "engine/Cursor.h"

namespace trov {

namespace {

// What differs between the framings.
struct Framing {
    uint32_t bodyHead;    // bytes of the body head, the count last
    uint32_t eventHead;   // bytes of each event's head
    uint32_t codeOffset;  // the event code's place in the event head
    uint32_t entryBytes;  // bytes of one entry in the block
    uint16_t recordBytes; // the body record
    size_t bufferOffset;  // the record's managed buffer
};

constexpr Framing kLong{12, 13, 11, sizeof(EventEntry), sizeof(EventListBody),
                        offsetof(EventListBody, buffer)};
constexpr Framing kShort{5, 3, 0, sizeof(EventBriefEntry), sizeof(ShortEventListBody),
                         offsetof(ShortEventListBody, buffer)};

// Reads the body head into the record; returns the event count.
uint16_t readBodyHead(EventFraming framing, PacketCursor &c, void *record) {
    if (framing == EventFraming::Long) {
        auto *r = static_cast<EventListBody *>(record);
        r->value0 = getU32(c);
        r->value1 = getU8(c);
        r->value2 = getU16(c);
        r->value3 = getU16(c);
        r->value4 = getU8(c);
        r->count = getU16(c);
        r->entries = nullptr;
        return r->count;
    }
    auto *r = static_cast<ShortEventListBody *>(record);
    r->value0 = getU32(c);
    r->count = getU8(c);
    r->entries = nullptr;
    return r->count;
}

// Reads one event head into entry i of the block.
void readEventHead(EventFraming framing, PacketCursor &c, uint8_t *entries, uint32_t i,
                   void *body) {
    if (framing == EventFraming::Long) {
        auto &e = reinterpret_cast<EventEntry *>(entries)[i];
        e.field1 = getU16(c);
        e.field2 = getU32(c);
        e.field3 = getU32(c);
        e.field4 = getU8(c);
        e.eventCode = getU16(c);
        e.body = body;
        return;
    }
    auto &e = reinterpret_cast<EventBriefEntry *>(entries)[i];
    e.eventCode = getU16(c);
    e.field2 = getU8(c);
    e.body = body;
}

// The rows the size pass finds are kept for the decode pass on the stack, up
// to this many events; the rows of any later events are looked up again.
// (The short framing counts at most 255 events; long lists rarely hold more.)
constexpr uint32_t kKeptRows = 256;

} // namespace

TrovResult decodeEventList(EventFraming framing, const Tables &tables, uint8_t version,
                           DecodeResult *result, const PacketCursor *body) {
    const Framing &f = framing == EventFraming::Long ? kLong : kShort;
    bool recordAllocated = false;
    if (TrovResult r = allocateRecord(result, body, static_cast<uint16_t>(f.bodyHead), f.recordBytes,
                                      &recordAllocated))
        return r;
    void *record = result->record;
    PacketCursor c = *body;
    const uint16_t n = readBodyHead(framing, c, record);
    if (n == 0) return TROV_RESULT_OK;

    auto fail = [&](TrovResult r, bool bufferAllocated) {
        releaseOnFailure(result, recordAllocated, bufferAllocated);
        return r;
    };

    // Size pass. The total is 16-bit and wraps, as the protocol computes it;
    // the extent beside it is the room the decode pass really needs.
    const EventCodecRow *rows[kKeptRows];
    uint16_t total = static_cast<uint16_t>(n * f.entryBytes);
    uint32_t extent = n * f.entryBytes;
    PacketCursor sizing = c;
    for (uint32_t i = 0; i < n; ++i) {
        if (sizing.remaining < f.eventHead) return fail(TROV_RESULT_SHORT_INPUT, false);
        const uint16_t code = loadU16(sizing.position + f.codeOffset);
        advance(sizing, f.eventHead);
        const EventCodecRow *row = findEventRow(tables, code, version, 1);
        if (row == nullptr) return fail(TROV_RESULT_NO_EVENT_CODEC, false);
        RecordSize size{};
        if (TrovResult r = row->decCalc(&sizing, 0, &size)) return fail(r, false);
        total = static_cast<uint16_t>(total + size.bytes);
        extent += size.extent > size.bytes ? size.extent : size.bytes;
        if (i < kKeptRows) rows[i] = row;
    }

    auto *buffer = reinterpret_cast<BufferDesc *>(static_cast<uint8_t *>(record) + f.bufferOffset);
    bool bufferAllocated = false;
    if (TrovResult r = prepareBuffer(result, buffer, total, &bufferAllocated, extent))
        return fail(r, bufferAllocated);

    // Decode pass: the entries open the block, the event records follow.
    auto *entries = static_cast<uint8_t *>(buffer->data);
    void *next = entries + n * f.entryBytes;
    for (uint32_t i = 0; i < n; ++i) {
        const EventCodecRow *row =
            i < kKeptRows ? rows[i] : findEventRow(tables, loadU16(c.position + f.codeOffset), version, 1);
        readEventHead(framing, c, entries, i, next);
        next = row->decode(next, &c, 0);
    }
    if (framing == EventFraming::Long) static_cast<EventListBody *>(record)->entries = reinterpret_cast<EventEntry *>(entries);
    else static_cast<ShortEventListBody *>(record)->entries = reinterpret_cast<EventBriefEntry *>(entries);
    return TROV_RESULT_OK;
}

} // namespace trov
