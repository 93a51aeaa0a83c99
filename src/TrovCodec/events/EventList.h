// Event lists: the two framings in which function-unit replies carry events.
//
// Long framing (EventListBody): a 12-byte body head (u32, u8, u16, u16, u8,
// u16 event count N), then N events, each a 13-byte head (u16, u32, u32, u8,
// u16 event code) followed by the event's body.
// Short framing (ShortEventListBody): a 5-byte body head (u32, u8 count N),
// then N events, each a u16 event code and a u8 followed by the event body.
//
// Decoding runs in two passes: a size pass looks every event code up and
// sizes every event body, then one block receives the entry array followed
// by all event records, and the decode pass fills it.
//
// Each framing is stated once, below, as two field lists in wire order: the
// body head (the count last) and the event head. The decoder reads the heads
// through them, the layout description describes the records from them, and
// the records' remaining members (the pointers and the managed buffer) sit
// where the lists leave off, which the compiler checks against the public
// records.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/Tables.h"
#include "engine/Field.h"

namespace trov {

enum class EventFraming : uint8_t { Long, Short };

// A framing: its two heads and where the record members behind them sit.
struct EventFrame {
    Plan head;             // the body head, the event count last
    Plan entry;            // an event's head, as the members of its entry
    uint8_t code;          // the event code's index in `entry`
    uint16_t codeWire;     // the event code's offset in the event head on the wire
    uint16_t entries;      // the body record's pointer to the entries, behind the head
    uint16_t buffer;       // the body record's managed buffer, behind that pointer
    uint16_t recordBytes;  // the body record
    uint16_t body;         // an entry's pointer to its event record, behind its head
    uint16_t entryBytes;   // one entry in the block
    const char *record;    // the public records' names
    const char *entryRecord;
};

namespace event_frames {

constexpr Field named(FieldKind kind, const char *name) { return Field{kind, 0, 0, name}; }

template <size_t H, size_t E>
constexpr EventFrame frame(const Field (&head)[H], const Field (&entry)[E], uint8_t code, const char *record,
                           const char *entryRecord) {
    EventFrame f{makePlan(head), makePlan(entry), code, 0, 0, 0, 0, 0, 0, record, entryRecord};
    for (uint8_t i = 0; i < code; ++i) f.codeWire = static_cast<uint16_t>(f.codeWire + kindInfo(entry[i].kind).wire);
    f.entries = static_cast<uint16_t>(alignTo(f.head.fieldsEnd, 8));
    f.buffer = static_cast<uint16_t>(f.entries + 8);
    f.recordBytes = static_cast<uint16_t>(f.buffer + sizeof(BufferDesc));
    f.body = static_cast<uint16_t>(alignTo(f.entry.fieldsEnd, 8));
    f.entryBytes = static_cast<uint16_t>(f.body + 8);
    return f;
}

// Long framing: u32, u8, u16, u16, u8, u16 count; per event u16, u32, u32,
// u8, u16 event code.
inline constexpr Field kLongHead[] = {named(FieldKind::U32, "value0"), named(FieldKind::U8, "value1"),
                                      named(FieldKind::U16, "value2"), named(FieldKind::U16, "value3"),
                                      named(FieldKind::U8, "value4"),  named(FieldKind::U16, "count")};
inline constexpr Field kLongEntry[] = {named(FieldKind::U16, "field1"), named(FieldKind::U32, "field2"),
                                       named(FieldKind::U32, "field3"), named(FieldKind::U8, "field4"),
                                       named(FieldKind::U16, "eventCode")};
// Short framing: u32, u8 count; per event u16 event code, u8.
inline constexpr Field kShortHead[] = {named(FieldKind::U32, "value0"), named(FieldKind::U8, "count")};
inline constexpr Field kShortEntry[] = {named(FieldKind::U16, "eventCode"), named(FieldKind::U8, "field2")};

// The public record's offsets of a list's members, then of the pointer behind them.
template <size_t N>
constexpr bool placed(const Plan &p, const size_t (&offsets)[N], size_t pointer) {
    if (!p.valid || p.count + 1 != N || alignTo(p.fieldsEnd, 8) != pointer) return false;
    for (uint8_t i = 0; i < p.count; ++i)
        if (p.fields[i].offset != offsets[i] || p.fields[i].kind == FieldKind::Count) return false;
    return offsets[p.count] == pointer;
}

} // namespace event_frames

// Indexed by EventFraming.
inline constexpr EventFrame kEventFrames[] = {
    event_frames::frame(event_frames::kLongHead, event_frames::kLongEntry, 4, "EventListBody", "EventEntry"),
    event_frames::frame(event_frames::kShortHead, event_frames::kShortEntry, 0, "ShortEventListBody",
                        "EventBriefEntry"),
};

constexpr const EventFrame &eventFrame(EventFraming framing) { return kEventFrames[static_cast<size_t>(framing)]; }

// The lists against the public records, member by member.
static_assert(event_frames::placed(kEventFrames[0].head,
                                   {offsetof(EventListBody, value0), offsetof(EventListBody, value1),
                                    offsetof(EventListBody, value2), offsetof(EventListBody, value3),
                                    offsetof(EventListBody, value4), offsetof(EventListBody, count),
                                    offsetof(EventListBody, entries)},
                                   offsetof(EventListBody, entries)) &&
                  event_frames::placed(kEventFrames[0].entry,
                                       {offsetof(EventEntry, field1), offsetof(EventEntry, field2),
                                        offsetof(EventEntry, field3), offsetof(EventEntry, field4),
                                        offsetof(EventEntry, eventCode), offsetof(EventEntry, body)},
                                       offsetof(EventEntry, body)) &&
                  kEventFrames[0].entry.fields[kEventFrames[0].code].offset == offsetof(EventEntry, eventCode) &&
                  kEventFrames[0].buffer == offsetof(EventListBody, buffer) &&
                  kEventFrames[0].recordBytes == sizeof(EventListBody) &&
                  kEventFrames[0].entryBytes == sizeof(EventEntry) && kEventFrames[0].head.wireFixed == 12 &&
                  kEventFrames[0].entry.wireFixed == 13 && kEventFrames[0].codeWire == 11,
              "the long framing disagrees with EventListBody and EventEntry");
static_assert(event_frames::placed(kEventFrames[1].head,
                                   {offsetof(ShortEventListBody, value0), offsetof(ShortEventListBody, count),
                                    offsetof(ShortEventListBody, entries)},
                                   offsetof(ShortEventListBody, entries)) &&
                  event_frames::placed(kEventFrames[1].entry,
                                       {offsetof(EventBriefEntry, eventCode), offsetof(EventBriefEntry, field2),
                                        offsetof(EventBriefEntry, body)},
                                       offsetof(EventBriefEntry, body)) &&
                  kEventFrames[1].entry.fields[kEventFrames[1].code].offset ==
                      offsetof(EventBriefEntry, eventCode) &&
                  kEventFrames[1].buffer == offsetof(ShortEventListBody, buffer) &&
                  kEventFrames[1].recordBytes == sizeof(ShortEventListBody) &&
                  kEventFrames[1].entryBytes == sizeof(EventBriefEntry) && kEventFrames[1].head.wireFixed == 5 &&
                  kEventFrames[1].entry.wireFixed == 3 && kEventFrames[1].codeWire == 0,
              "the short framing disagrees with ShortEventListBody and EventBriefEntry");

// Decodes the event list at `body` into result->record (allocated, zeroed,
// when null) and its managed block. Results: 0; 5 the body ends before a
// head or an event; 6 an allocation failed; 12 an event code without a codec
// (before anything is written); an event codec's or the block allocation's
// result. On failure result->type is 6 and everything this call allocated is
// released.
//
// `limit` decodes only the first events (at most that many; the record's
// count then says how many it holds), whatever follows them; `read`, when
// given, receives the body bytes the decode read on success.
inline constexpr uint32_t kEveryEvent = 0xFFFFFFFFu;
TrovResult decodeEventList(EventFraming framing, const Tables &tables, uint8_t version,
                           DecodeResult *result, const PacketCursor *body, uint32_t limit = kEveryEvent,
                           uint32_t *read = nullptr);

// Where the size pass over a list stopped.
struct EventListStop {
    uint32_t count = 0; // the events the body head announces (0 when the head is cut short)
    uint32_t sized = 0; // the events before the one it stopped at (all of them on success)
    uint32_t at = 0;    // the body offset of that event's head; on success the bytes the list takes
    uint16_t code = 0;  // that event's code; 0 when its head is cut short
};

// The size pass of decodeEventList alone: nothing is allocated or written.
// Results as decodeEventList's, but never 6: 0; 5; 12; an event codec's.
TrovResult sizeEventList(EventFraming framing, const Tables &tables, uint8_t version, const PacketCursor *body,
                         EventListStop &stop);

} // namespace trov
