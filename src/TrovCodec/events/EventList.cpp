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

} // namespace

TrovResult decodeEventList(EventFraming framing, const Tables &tables, uint8_t version,
                           DecodeResult *result, const PacketCursor *body) {
    const EventFrame &f = eventFrame(framing);
    bool recordAllocated = false;
    if (TrovResult r = allocateRecord(result, body, f.head.wireFixed, f.recordBytes, &recordAllocated)) return r;
    auto *record = static_cast<uint8_t *>(result->record);
    PacketCursor c = *body;
    const uint16_t n = readBodyHead(f, c, record);
    const uint32_t entryBytes = f.entryBytes;
    if (n == 0) return TROV_RESULT_OK;

    auto fail = [&](TrovResult r, bool bufferAllocated) {
        releaseOnFailure(result, recordAllocated, bufferAllocated);
        return r;
    };

    // Size pass. The total is 16-bit and wraps, as the protocol computes it;
    // the extent beside it is the room the decode pass really needs.
    const EventCodecRow *rows[kKeptRows];
    uint16_t total = static_cast<uint16_t>(n * entryBytes);
    uint32_t extent = n * entryBytes;
    PacketCursor sizing = c;
    for (uint32_t i = 0; i < n; ++i) {
        if (sizing.remaining < f.entry.wireFixed) return fail(TROV_RESULT_SHORT_INPUT, false);
        const uint16_t code = loadU16(sizing.position + f.codeWire);
        advance(sizing, f.entry.wireFixed);
        const EventCodecRow *row = findEventRow(tables, code, version, 1);
        if (row == nullptr) return fail(TROV_RESULT_NO_EVENT_CODEC, false);
        RecordSize size{};
        if (TrovResult r = row->decCalc(&sizing, 0, &size)) return fail(r, false);
        total = static_cast<uint16_t>(total + size.bytes);
        extent += size.extent > size.bytes ? size.extent : size.bytes;
        if (i < kKeptRows) rows[i] = row;
    }

    auto *buffer = reinterpret_cast<BufferDesc *>(record + f.buffer);
    bool bufferAllocated = false;
    if (TrovResult r = prepareBuffer(result, buffer, total, &bufferAllocated, extent))
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
    return TROV_RESULT_OK;
}

} // namespace trov
