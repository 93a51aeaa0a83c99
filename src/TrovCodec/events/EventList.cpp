// The event-list decoder shared by both framings.
#include "events/EventList.h"

#include <cstring>

#include "engine/Memory.h"
#include "engine/Cursor.h"
#include "engine/FieldWalker.h"

namespace trov {

namespace {

// The two heads of each framing as plans of their own (indexed by
// EventFraming), so that they are read as straight-line code.
constexpr Plan kBodyHeads[] = {kEventFrames[0].head, kEventFrames[1].head};
constexpr Plan kEventHeads[] = {kEventFrames[0].entry, kEventFrames[1].entry};

// Reads a body head into the record; returns the event count, the head's
// last field. The entries pointer stays null until the block is filled.
template <EventFraming F>
uint16_t readBodyHead(PacketCursor &c, uint8_t *record) {
    constexpr const EventFrame &f = eventFrame(F);
    PlanWalk<kBodyHeads, size_t(F)>::decode(c, record, nullptr, FieldEnv{});
    storeField(record, f.entries, static_cast<void *>(nullptr));
    constexpr Field count = f.head.fields[f.head.count - 1];
    if constexpr (count.kind == FieldKind::U8) return record[count.offset];
    else return loadField<uint16_t>(record, count.offset);
}

// What the size pass finds is kept for the decode pass on the stack, up to
// this many events: each event's row and where its head starts, so that the
// decode pass neither looks codes up again nor waits for one event's end to
// find the next. Later events are looked up again and read in turn. (The
// short framing counts at most 255 events; long lists rarely hold more.)
constexpr uint32_t kKeptEvents = 256;
struct KeptEvent {
    const EventCodecRow *row;
    uint8_t *head;
};

uint32_t offsetIn(const PacketCursor &body, const PacketCursor &c) {
    return static_cast<uint32_t>(c.position - body.position);
}

// The size pass over `n` events from `c` (standing on the first event's
// head) on: looks every event code up and sizes every event body, adding the
// record bytes to `data` and moving `c` past them; keeps the first events in
// `kept` (when given). Stops at the first event that fails, `stop` saying
// which (`c` and `data` are then left as they were). The sizes are the
// protocol's 16-bit figures and wrap, as it computes them; `data.extent` is
// the room the decode pass really needs.
template <EventFraming F>
TrovResult sizeEvents(const Tables &tables, uint8_t version, const PacketCursor &body, PacketCursor &c, uint32_t n,
                      KeptEvent *kept, Sizes &data, EventListStop &stop) {
    constexpr const EventFrame &f = eventFrame(F);
    // Locals only in the loop: the stop is written once, after it.
    PacketCursor at = c;
    Sizes sum = data;
    uint8_t *head = at.position;
    uint16_t code = 0;
    TrovResult r = TROV_RESULT_OK;
    uint32_t i = 0;
    for (; i < n; ++i) {
        head = at.position;
        code = 0;
        if (at.remaining < f.entry.wireFixed) {
            r = TROV_RESULT_SHORT_INPUT;
            break;
        }
        code = loadU16(at.position + f.codeWire);
        const EventCodecRow *row = findEventRow(tables, code, version, 1);
        if (row == nullptr) {
            r = TROV_RESULT_NO_EVENT_CODEC;
            break;
        }
        advance(at, f.entry.wireFixed);
        RecordSize size{};
        if ((r = row->decCalc(&at, 0, &size)) != TROV_RESULT_OK) break;
        sum.add(size.bytes, size.extent > size.bytes ? size.extent : size.bytes);
        if (kept != nullptr && i < kKeptEvents) kept[i] = KeptEvent{row, head};
    }
    stop.sized = i;
    stop.at = static_cast<uint32_t>((r == TROV_RESULT_OK ? at.position : head) - body.position);
    stop.code = r == TROV_RESULT_OK ? 0 : code;
    if (r == TROV_RESULT_OK) {
        c = at;
        data = sum;
    }
    return r;
}

// The event count the body head at `p` announces: its last field.
uint32_t announcedCount(const EventFrame &f, const uint8_t *p) {
    const Field &count = f.head.fields[f.head.count - 1];
    return count.kind == FieldKind::U8 ? p[f.head.wireFixed - 1] : loadU16(p + f.head.wireFixed - 2);
}

template <EventFraming F>
TrovResult sizeList(const Tables &tables, uint8_t version, const PacketCursor *body, EventListStop &stop) {
    constexpr const EventFrame &f = eventFrame(F);
    stop = EventListStop{};
    if (body->remaining < f.head.wireFixed) return TROV_RESULT_SHORT_INPUT;
    stop.count = announcedCount(f, body->position);
    PacketCursor c = *body;
    advance(c, f.head.wireFixed);
    Sizes data;
    return sizeEvents<F>(tables, version, *body, c, stop.count, nullptr, data, stop);
}

template <EventFraming F>
TrovResult decodeList(const Tables &tables, uint8_t version, DecodeResult *result, const PacketCursor *body,
                      uint32_t limit, uint32_t *read) {
    constexpr const EventFrame &f = eventFrame(F);
    bool recordAllocated = false;
    if (TrovResult r = allocateRecord(result, body, f.head.wireFixed, f.recordBytes, &recordAllocated)) return r;
    auto *record = static_cast<uint8_t *>(result->record);
    PacketCursor c = *body;
    uint32_t n = readBodyHead<F>(c, record);
    if (n > limit) {
        n = limit;
        constexpr Field count = f.head.fields[f.head.count - 1];
        if constexpr (count.kind == FieldKind::U8) record[count.offset] = static_cast<uint8_t>(n);
        else storeField(record, count.offset, static_cast<uint16_t>(n));
    }
    const uint32_t entryBytes = f.entryBytes;
    if (n == 0) {
        if (read != nullptr) *read = offsetIn(*body, c);
        return TROV_RESULT_OK;
    }

    auto fail = [&](TrovResult r, bool bufferAllocated) {
        releaseOnFailure(result, recordAllocated, bufferAllocated);
        return r;
    };

    // Size pass; the total starts with the entries.
    KeptEvent kept[kKeptEvents];
    Sizes total;
    total.add(static_cast<uint16_t>(n * entryBytes), n * entryBytes);
    PacketCursor sizing = c;
    EventListStop stop;
    if (TrovResult r = sizeEvents<F>(tables, version, *body, sizing, n, kept, total, stop)) return fail(r, false);

    auto *buffer = reinterpret_cast<BufferDesc *>(record + f.buffer);
    bool bufferAllocated = false;
    if (TrovResult r = prepareBuffer(result, buffer, total.bytes, &bufferAllocated, total.extent))
        return fail(r, bufferAllocated);

    // Decode pass: the entries open the block, the event records follow.
    auto *entries = static_cast<uint8_t *>(buffer->data);
    void *next = entries + n * entryBytes;
    const uint8_t *end = c.position + c.remaining;
    for (uint32_t i = 0; i < n; ++i) {
        const EventCodecRow *row;
        if (i < kKeptEvents) {
            row = kept[i].row;
            c = PacketCursor{kept[i].head, static_cast<uint32_t>(end - kept[i].head)};
        } else {
            row = findEventRow(tables, loadU16(c.position + f.codeWire), version, 1);
        }
        uint8_t *entry = entries + i * entryBytes;
        PlanWalk<kEventHeads, size_t(F)>::decode(c, entry, nullptr, FieldEnv{});
        storeField(entry, f.body, next);
        next = row->decode(next, &c, 0);
    }
    storeField(record, f.entries, static_cast<void *>(entries));
    if (read != nullptr) *read = offsetIn(*body, c);
    return TROV_RESULT_OK;
}

} // namespace

TrovResult sizeEventList(EventFraming framing, const Tables &tables, uint8_t version, const PacketCursor *body,
                         EventListStop &stop) {
    return framing == EventFraming::Long ? sizeList<EventFraming::Long>(tables, version, body, stop)
                                         : sizeList<EventFraming::Short>(tables, version, body, stop);
}

TrovResult decodeEventList(EventFraming framing, const Tables &tables, uint8_t version,
                           DecodeResult *result, const PacketCursor *body, uint32_t limit, uint32_t *read) {
    return framing == EventFraming::Long
               ? decodeList<EventFraming::Long>(tables, version, result, body, limit, read)
               : decodeList<EventFraming::Short>(tables, version, result, body, limit, read);
}

} // namespace trov
