// Events with an attribute list.
//
// These event bodies end in a list of attributes, each value written by the
// attribute codec registered for its identifier:
//
//   field ... field | u16 count N | N x (u16 id, u16 length, value)
//
// Some put a counted run before the list (a byte string, byte pairs, u32
// values or 5-byte items: a u8 or u16 count, then the elements), possibly
// with more fields behind it; the bare attribute lists carry the list alone.
// A record holds the fields at their natural widths and alignment, each run
// as its count and an 8-aligned data pointer, and the list as an 8-aligned
// AttributeList head {u16 count, entries @+8}. Everything variable follows
// the record's fixed part in wire order, each piece 8-aligned: the run data,
// then the AttributeEntry array, then the values.
//
// Every layout is one row of kAttributeEventLayouts: its codes and its fields
// in wire order, in the field model's spellings (a count kept in a field of
// its own stands before its run). The plan is derived at compile time and
// checked against the figures each row states; the field model's walker runs
// it. Codes that share a row share its functions.
//
// Two codes, 0xC4 and 0xC5, carry one record described for the structure
// codec instead (the structure events below).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "attributes/AttributeList.h"
#include "engine/FieldWalker.h"
#include "events/EventLayout.h"

namespace trov {

// ---- the layouts -----------------------------------------------------------------

namespace attribute_event_items {
using namespace fields;
inline constexpr Field attrs = eventAttrs;

// Rows 0 to 16 are the regular layouts (fields, then the list). The figures:
// the wire bytes with every count 0 (the fields and the list's u16 count)
// and the fixed part, including the list head. The protocol states a few
// fixed parts larger than their fields need (`reserved` bytes behind the
// list head: 0xAF, 0xB9, 0xBA, and 0xBF as 0xB9), and the bare attribute
// lists report their size without the 16-byte head that the decode pass
// writes at the record's start (callers rely on the figure as reported).
inline constexpr EventLayout kAttributeEventLayouts[] = {
    {{0x5E, 0x5F}, {u32, u32, attrs}, 10, 24},
    {{0xA2}, {u16, u32, u8, u8, attrs}, 10, 32},
    {{0xA3}, {u8, u32, attrs}, 7, 24},
    {{0xA4, 0xB4, 0xB8}, {u16, u32, u32, attrs}, 12, 32},
    {{0xA5}, {u8, u8, u8, attrs}, 5, 24},
    {{0xA6, 0xA9, 0xAB, 0xBC}, {u8, u8, attrs}, 4, 24},
    {{0xA7, 0xC0}, {u16, u32, u32, u32, u32, attrs}, 20, 40},
    {{0xA8, 0xBB}, {u16, u32, u32, u32, u32, u32, u16, u16, u16, attrs}, 30, 48},
    {{0xAC}, {u32, u32, u32, u16, u32, attrs}, 20, 40},
    {{0xAE}, {u16, u32, u16, u32, attrs}, 14, 32},
    {{0xB0, 0xBD, 0xE0}, {u32, u32, u32, attrs}, 14, 32},
    {{0xB1}, {u32, attrs}, 6, 24},
    {{0xB2}, {u8, attrs}, 3, 24},
    {{0xB5}, {u32, u8, attrs}, 7, 24},
    {{0xB6}, {u16, u32, u32, u32, u32, u8, u8, u8, u32, attrs}, 27, 48},
    {{0xC3}, {u16, u32, u32, u32, u32, u32, u32, u32, u8, attrs}, 33, 56},
    {{0xE1}, {u32, u32, u32, u32, attrs}, 18, 32},
    // The bare attribute lists: the record is the list head itself.
    {{0x12C, 0x12D, 0x12E, 0x12F, 0x130, 0x132, 0x133, 0x135, 0x136}, {attrs}, 2, 16, {.headUnreported = true}},
    // A byte string, then the list: an OctetString head {u8 length, data @8}.
    {{0xC1}, {count8, octets, attrs}, 3, 32},
    // u16, then a head {u16, u16 length, data @8}, then the list.
    {{0xC2}, {u16, head, u16, count16, octets, attrs}, 8, 40},
    // Byte pairs before the list.
    {{0xB7}, {count8, pairs, attrs}, 3, 32},
    {{0xE2}, {u16, u32, count8, pairs, attrs}, 9, 40},
    // 5-byte items before the list, decoded into 8-byte elements.
    {{0xBE}, {u16, u32, u32, u32, count8, items5, attrs}, 17, 48},
    // u32 values in the middle: the count and pointer form a 16-byte head.
    {{0x98, 0x99}, {u16, u32, u8, u8, head, count8, u32s, u32, u8, attrs}, 16, 56},
    // Fields, a byte string (length and pointer as plain fields), fields, list.
    {{0xAF},
     {u16, u32, u8, u8, u8, u16, u16, u16, count8, octets, u32, u8, u16, u32, u32, u8, u8, attrs},
     35, 88, {.reserved = 16}},
    {{0xB9},
     {u8, u8, u32, u8, u16, u16, u16, count8, octets, u32, u8, u16, u32, u32, u8, u8, u8, attrs},
     34, 80, {.reserved = 8}},
    {{0xBA},
     {u16, u32, u16, u32, u8, u8, u8, u16, u16, u16, count8, octets, u32, u8, u16, u32, u32, u8, u8,
      attrs},
     41, 96, {.reserved = 16}},
    // 0xB9's plan with a u16 length: the same record, the length widened in place.
    {{0xBF},
     {u8, u8, u32, u8, u16, u16, u16, count16, octets, u32, u8, u16, u32, u32, u8, u8, u8, attrs},
     35, 80, {.reserved = 8}},
    // u32, u16, an OctetString head, a head of u32 values, the list.
    {{0x9A}, {u32, u16, head, count8, octets, count8, u32s, attrs}, 10, 56},
    // u16, u32, two OctetString heads, u32, the list.
    {{0x9B}, {u16, u32, head, count8, octets, count8, octets, u32, attrs}, 14, 64},
};
} // namespace attribute_event_items

using attribute_event_items::kAttributeEventLayouts;
inline constexpr size_t kAttributeEventLayoutCount = std::size(kAttributeEventLayouts);
inline constexpr size_t kRegularAttributeEventLayouts = 17;

// Every attribute event's decode pass zeroes the fixed part first.
inline constexpr auto kAttributeEventPlans = [] {
    std::array<Plan, kAttributeEventLayoutCount> plans{};
    for (size_t i = 0; i < kAttributeEventLayoutCount; ++i) {
        EventLayout l = kAttributeEventLayouts[i];
        l.rules.zeroFixedPart = true;
        plans[i] = eventPlan(l);
    }
    return plans;
}();

// The regular layouts are plain fields, then the list, nothing reserved.
constexpr bool attributeEventLayoutsHold() {
    for (size_t i = 0; i < kRegularAttributeEventLayouts; ++i) {
        const Plan &p = kAttributeEventPlans[i];
        if (p.rules.reserved != 0 || p.rules.headUnreported || p.count < 2) return false;
        for (uint8_t k = 0; k + 1 < p.count; ++k) {
            const FieldKind kind = p.fields[k].kind;
            if (kind != FieldKind::U8 && kind != FieldKind::U16 && kind != FieldKind::U32) return false;
        }
    }
    for (const Plan &p : kAttributeEventPlans)
        if (p.fields[p.count - 1].kind != FieldKind::EventAttributes) return false; // the list is last
    return true;
}
static_assert(eventFiguresHold(kAttributeEventLayouts, kAttributeEventPlans) && attributeEventLayoutsHold(),
              "a layout's fields disagree with its stated figures");

// ---- the structure events 0xC4 and 0xC5 ------------------------------------------------

// The body is one record written by the structure codec:
//
//   u32 object, u16 reason, u8 name length L, L characters,
//   stamp (u32 seconds, u16 milliseconds, u8 zone),
//   u32 sequence, u16 flags, u16 item count M,
//   M items (u16 tag, u8 state, u32 value)
//
// 22 fixed wire bytes. The decoded event starts with a 16-byte head whose
// first 8 bytes point at the structure (the rest are 0); the structure's
// record follows at +16 and its name and items behind it.
namespace structure_event {

struct Stamp {
    uint32_t seconds;
    uint16_t milliseconds;
    uint8_t zone;
};
struct Item {
    uint16_t tag;
    uint8_t state;
    uint32_t value;
};
struct Body {
    uint32_t object;
    uint16_t reason;
    uint8_t nameLength;
    char *name; // L characters and a zero; null when L is 0
    Stamp stamp;
    uint32_t sequence;
    uint16_t flags;
    uint16_t itemCount; // ends at 32, so the items pointer is 8-aligned whatever the count
    Item *items;        // null when M is 0
};
struct Event {
    Body *body; // points at `data`
    uint8_t reserved[8];
    Body data;
};

using namespace fields;
inline constexpr Field kStampFields[] = {named(u32, "seconds"), named(u16, "milliseconds"), named(u8, "zone")};
inline constexpr Plan kStamp = structurePlan(kStampFields);
inline constexpr Field kItemFields[] = {named(u16, "tag"), named(u8, "state"), named(u32, "value")};
inline constexpr Plan kItem = structurePlan(kItemFields);
inline constexpr Field kBodyFields[] = {
    named(u32, "object"),   named(u16, "reason"),   named(count8, "nameLength"),
    named(chars, "name"),   named(record(kStamp, sizeof(Stamp)), "stamp"),
    named(u32, "sequence"), named(u16, "flags"),    named(count16, "itemCount"),
    named(records(kItem, sizeof(Item)), "items"),
};
inline constexpr Plan kBody = structurePlan(kBodyFields);

inline constexpr uint16_t kHeadBytes = 16;

static_assert(kBody.valid && kBody.wireFixed == 22 && kItem.wireFixed == 7);
static_assert(kStamp.record == sizeof(Stamp) && kItem.record == sizeof(Item));
static_assert(kBody.record == sizeof(Body) && sizeof(Body) == 40);
static_assert(offsetof(Body, name) == 8 && offsetof(Body, stamp) == 16 && offsetof(Body, sequence) == 24 &&
              offsetof(Body, itemCount) == 30 && offsetof(Body, items) == 32);
static_assert(offsetof(Item, value) == 4 && offsetof(Stamp, zone) == 6);
static_assert(offsetof(Event, data) == kHeadBytes);

} // namespace structure_event

// DecCalc: 5 when fewer bytes remain than the fixed wire size or when the
// structure codec's size pass fails; otherwise the structure codec's size
// plus the 16-byte head. Decode writes the head and runs the structure
// codec's decode at +16. EncCalc and Encode write the structure the head
// points at (1 when it is null).
TrovResult structureEventDecCalc(PacketCursor *cursor, uint8_t flag, RecordSize *size);
void *structureEventDecode(void *record, PacketCursor *cursor, uint8_t flag);
TrovResult structureEventEncCalc(const void *record, uint16_t *packetBytes);
void structureEventEncode(PacketCursor *cursor, const void *record);

// ---- the operations of each code ------------------------------------------------------

inline constexpr uint16_t kStructureEventCodes[] = {0xC4, 0xC5};

template <size_t... I>
constexpr auto collectAttributeEventCodecs(std::index_sequence<I...>) {
    constexpr EventCodec ops[] = {EventOps<kAttributeEventPlans, I>::codec...};
    constexpr size_t count = eventCodeCount(kAttributeEventLayouts) + std::size(kStructureEventCodes);
    return collectEventCodecs<count>(
        kAttributeEventLayouts, ops,
        {EventCodec{0xC4, structureEventDecCalc, structureEventDecode, structureEventEncCalc, structureEventEncode, nullptr},
         EventCodec{0xC5, structureEventDecCalc, structureEventDecode, structureEventEncCalc, structureEventEncode, nullptr}});
}

// Every code of the family with its operations, in ascending code order.
inline constexpr auto kAttributeEventCodecs =
    collectAttributeEventCodecs(std::make_index_sequence<kAttributeEventLayoutCount>{});

// The operations of an event code of this family; null for any other code.
constexpr const EventCodec *findAttributeEventCodec(uint16_t code) {
    return findEventCodec(kAttributeEventCodecs, code);
}

// The layout row of a code; -1 for 0xC4, 0xC5 and codes of other families.
constexpr int attributeEventLayoutOf(uint16_t code) {
    for (size_t i = 0; i < kAttributeEventLayoutCount; ++i)
        for (uint16_t c : kAttributeEventLayouts[i].codes)
            if (c != 0 && c == code) return static_cast<int>(i);
    return -1;
}

static_assert(kAttributeEventCodecs.size() == 51 && codesAscend(kAttributeEventCodecs));

} // namespace trov
