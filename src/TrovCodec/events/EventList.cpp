// The event-list decoder shared by both framings.
#include "events/EventList.h"

#include <cstring>

#include "engine/Memory.h"
#include "engine/Cursor.h"
#include "engine/FieldWalker.h"

namespace trov {

namespace {

// Reads a body head into the record; returns the event count, the head's
// last field. The entries pointer stays null until the block is filled.
uint16_t readBodyHead(const EventFrame &f, PacketCursor &c, uint8_t *record) {
    walkDecode(f.head, c, record, nullptr, FieldEnv{});
    storeField(record, f.entries, static_cast<void *>(nullptr));
    const Field &count = f.head.fields[f.head.count - 1];
    return count.kind == FieldKind::U8 ? record[count.offset] : loadField<uint16_t>(record, count.offset);
}

// Reads one event head into `entry`, which points at the event's record.
void readEventHead(const EventFrame &f, PacketCursor &c, uint8_t *entry, void *body) {
    walkDecode(f.entry, c, entry, nullptr, FieldEnv{});
    storeField(entry, f.body, body);
}

// The rows the size pass finds are kept for the decode pass on the stack, up
// to this many events; the rows of any later events are looked up again.
// (The short framing counts at most 255 events; long lists rarely hold more.)
constexpr uint32_t kKeptRows = 256;

uint32_t offsetIn(const PacketCursor &body, const PacketCursor &c) {
    return static_cast<uint32_t>(c.position - body.position);
}

// The size pass over `n` events from `c` (standing on the first event's
// head) on: looks every event code up and sizes every event body, adding the
// record bytes to `data` and moving `c` past them; keeps the first rows in
// `rows` (when given). Stops at the first event that fails, `stop` saying
// which (`c` and `data` are then left as they were). The sizes are the
// protocol's 16-bit figures and wrap, as it computes them; `data.extent` is
// the room the decode pass really needs.
TrovResult sizeEvents(const EventFrame &f, const Tables &tables, uint8_t version, const PacketCursor &body,
                      PacketCursor &c, uint32_t n, const EventCodecRow **rows, Sizes &data, EventListStop &stop) {
    // Locals only in the loop: the stop is written once, after it.
    PacketCursor at = c;
    Sizes sum = data;
    const uint8_t *head = at.position;
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
        if (rows != nullptr && i < kKeptRows) rows[i] = row;
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

} // namespace

TrovResult sizeEventList(EventFraming framing, const Tables &tables, uint8_t version, const PacketCursor *body,
                         EventListStop &stop) {
    const EventFrame &f = eventFrame(framing);
    stop = EventListStop{};
    if (body->remaining < f.head.wireFixed) return TROV_RESULT_SHORT_INPUT;
    stop.count = announcedCount(f, body->position);
    PacketCursor c = *body;
    advance(c, f.head.wireFixed);
    Sizes data;
    return sizeEvents(f, tables, version, *body, c, stop.count, nullptr, data, stop);
}

TrovResult decodeEventList(EventFraming framing, const Tables &tables, uint8_t version,
                           DecodeResult *result, const PacketCursor *body, uint32_t limit, uint32_t *read) {
    const EventFrame &f = eventFrame(framing);
    bool recordAllocated = false;
    if (TrovResult r = allocateRecord(result, body, f.head.wireFixed, f.recordBytes, &recordAllocated)) return r;
    auto *record = static_cast<uint8_t *>(result->record);
    PacketCursor c = *body;
    uint32_t n = readBodyHead(f, c, record);
    if (n > limit) {
        n = limit;
        const Field &count = f.head.fields[f.head.count - 1];
        if (count.kind == FieldKind::U8) record[count.offset] = static_cast<uint8_t>(n);
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
    const EventCodecRow *rows[kKeptRows];
    Sizes total;
    total.add(static_cast<uint16_t>(n * entryBytes), n * entryBytes);
    PacketCursor sizing = c;
    EventListStop stop;
    if (TrovResult r = sizeEvents(f, tables, version, *body, sizing, n, rows, total, stop)) return fail(r, false);

    auto *buffer = reinterpret_cast<BufferDesc *>(record + f.buffer);
    bool bufferAllocated = false;
    if (TrovResult r = prepareBuffer(result, buffer, total.bytes, &bufferAllocated, total.extent))
        return fail(r, bufferAllocated);

    // Decode pass: the entries open the block, the event records follow.
    auto *entries = static_cast<uint8_t *>(buffer->data);
    void *next = entries + n * entryBytes;
    for (uint32_t i = 0; i < n; ++i) {
        const EventCodecRow *row =
            i < kKeptRows ? rows[i] : findEventRow(tables, loadU16(c.position + f.codeWire), version, 1);
        readEventHead(f, c, entries + i * entryBytes, next);
        next = row->decode(next, &c, 0);
    }
    storeField(record, f.entries, static_cast<void *>(entries));
    if (read != nullptr) *read = offsetIn(*body, c);
    return TROV_RESULT_OK;
}

} // namespace trov
