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
// Every layout is one row of kAttributeEventLayouts: its codes and its items
// in wire order. Record offsets, the fixed wire bytes and the fixed part are
// derived from the items at compile time and checked against the figures
// each row states; one generic walk per operation (AttributeEvents.cpp) runs
// over the derived plan. Codes that share a row share its functions.
//
// Two codes, 0xC4 and 0xC5, carry one record described for the structure
// codec instead (StructureEventOps below).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "api/Dispatch.h"
#include "attributes/AttributeList.h"
#include "engine/StructureCodec.h"

namespace trov {

// ---- layout items --------------------------------------------------------------

enum class AttributeEventItem : uint8_t {
    End,        // ends an item list
    U8,         // big-endian scalars, natural width and alignment in the record
    U16,
    U32,
    Count8,     // u8 count (or length) of the run that follows; a u8 in the record
    Count16,    // u16 count of the run that follows; a u16 in the record
    Head,       // record only: the following fields open a 16-byte head at the
                // next multiple of 8 (no wire bytes)
    Octets,     // run: count octets; one spare byte is kept behind them
    BytePairs,  // run: count pairs of bytes, copied as they stand
    U32s,       // run: count u32, stored in host order, 4 bytes each
    U32U8Items, // run: count items of (u32, u8), each an 8-byte element (u32 @0, u8 @4)
    Attributes, // the attribute list; always the last item
};

// The wire and record figures of a run's elements. Only U32U8Items decodes
// into more bytes than it occupies on the wire.
struct AttributeEventRun {
    uint8_t wireBytes; // per element on the wire
    uint8_t stride;    // per element in the decoded data
    uint8_t spare;     // bytes kept behind the data (never written)
};

constexpr AttributeEventRun attributeEventRun(AttributeEventItem item) {
    switch (item) {
    case AttributeEventItem::Octets: return {1, 1, 1};
    case AttributeEventItem::BytePairs: return {2, 2, 0};
    case AttributeEventItem::U32s: return {4, 4, 0};
    case AttributeEventItem::U32U8Items: return {5, 8, 0};
    default: return {0, 0, 0};
    }
}

constexpr bool attributeEventIsRun(AttributeEventItem item) {
    return attributeEventRun(item).wireBytes != 0;
}

// Wire (and record) width of a scalar or count; 0 for any other item.
constexpr uint16_t attributeEventWidth(AttributeEventItem item) {
    switch (item) {
    case AttributeEventItem::U8:
    case AttributeEventItem::Count8: return 1;
    case AttributeEventItem::U16:
    case AttributeEventItem::Count16: return 2;
    case AttributeEventItem::U32: return 4;
    default: return 0;
    }
}

inline constexpr int kAttributeEventMaxItems = 24;
inline constexpr int kAttributeEventMaxCodes = 9;

// One row: the codes that share the layout, its items, and the figures the
// derived plan must reproduce.
struct AttributeEventLayout {
    uint16_t codes[kAttributeEventMaxCodes];           // 0-terminated
    AttributeEventItem items[kAttributeEventMaxItems]; // wire order, End-terminated
    uint16_t wireFixed; // wire bytes when every count is 0 (the prefix before the
                        // attribute count when there is no run); DecCalc needs them first
    uint16_t record;    // the record's fixed part; variable data starts behind it
    // Bytes of the fixed part behind the list head that no field fills. The
    // protocol's fixed parts of 0xAF, 0xB9 and 0xBA are larger than their
    // fields need (by 16, 8 and 16; 0xBF follows 0xB9); the record keeps the
    // protocol's size so that what Decode writes matches what DecCalc reports.
    uint8_t reserved;
    // The bare attribute lists report their size without the 16-byte head
    // that Decode writes at the record's start: the reported size is 16 bytes
    // short on purpose (callers rely on the figure as reported).
    bool headUnreported;
};

// ---- derived plans -------------------------------------------------------------

struct AttributeEventStep {
    AttributeEventItem item;
    uint16_t offset; // record offset: a scalar or count, a run's pointer, the list head
};

struct AttributeEventPlan {
    std::array<AttributeEventStep, kAttributeEventMaxItems> steps; // Head markers dropped
    uint8_t count;
    uint16_t wireFixed;     // sum of the scalar and count widths
    uint16_t fieldsEnd;     // end of the list head: the fixed part the fields need
    uint16_t record;        // the fixed part (fieldsEnd + reserved)
    uint16_t reportedFixed; // what DecCalc reports for the fixed part
    bool valid;             // items well formed: every run right behind its count,
                            // every count right before a run, the list last
};

constexpr uint16_t attributeEventAlign(uint32_t v, uint32_t a) {
    return static_cast<uint16_t>((v + a - 1) / a * a);
}

constexpr AttributeEventPlan planAttributeEvent(const AttributeEventLayout &layout) {
    using I = AttributeEventItem;
    AttributeEventPlan plan{};
    plan.valid = true;
    uint32_t offset = 0, wire = 0;
    bool listSeen = false, countPending = false;
    int i = 0;
    for (; i < kAttributeEventMaxItems && layout.items[i] != I::End; ++i) {
        const I item = layout.items[i];
        if (listSeen) plan.valid = false; // nothing may follow the list
        if (countPending != attributeEventIsRun(item)) plan.valid = false;
        countPending = item == I::Count8 || item == I::Count16;
        uint32_t at = offset;
        if (const uint16_t w = attributeEventWidth(item); w != 0) {
            at = attributeEventAlign(offset, w);
            offset = at + w;
            wire += w;
        } else if (item == I::Head) {
            offset = attributeEventAlign(offset, 8);
            continue;
        } else if (attributeEventIsRun(item)) {
            at = attributeEventAlign(offset, 8);
            offset = at + 8;
        } else if (item == I::Attributes) {
            at = attributeEventAlign(offset, 8);
            offset = at + 16;
            listSeen = true;
        } else {
            plan.valid = false;
        }
        plan.steps[plan.count++] = {item, static_cast<uint16_t>(at)};
    }
    if (!listSeen || countPending || i == kAttributeEventMaxItems) plan.valid = false;
    plan.wireFixed = static_cast<uint16_t>(wire);
    plan.fieldsEnd = static_cast<uint16_t>(offset);
    plan.record = static_cast<uint16_t>(offset + layout.reserved);
    plan.reportedFixed = layout.headUnreported ? 0 : plan.record;
    return plan;
}

// ---- the layouts -----------------------------------------------------------------

namespace attribute_event_items {
inline constexpr auto u8 = AttributeEventItem::U8;
inline constexpr auto u16 = AttributeEventItem::U16;
inline constexpr auto u32 = AttributeEventItem::U32;
inline constexpr auto count8 = AttributeEventItem::Count8;
inline constexpr auto count16 = AttributeEventItem::Count16;
inline constexpr auto head = AttributeEventItem::Head;
inline constexpr auto octets = AttributeEventItem::Octets;
inline constexpr auto pairs = AttributeEventItem::BytePairs;
inline constexpr auto u32s = AttributeEventItem::U32s;
inline constexpr auto items5 = AttributeEventItem::U32U8Items;
inline constexpr auto attrs = AttributeEventItem::Attributes;

// Rows 0 to 16 are the regular layouts (fields, then the list): wireFixed
// is the prefix before the attribute count and `record` the fixed part
// including the list head.
inline constexpr AttributeEventLayout kAttributeEventLayouts[] = {
    {{0x5E, 0x5F}, {u32, u32, attrs}, 8, 24, 0, false},
    {{0xA2}, {u16, u32, u8, u8, attrs}, 8, 32, 0, false},
    {{0xA3}, {u8, u32, attrs}, 5, 24, 0, false},
    {{0xA4, 0xB4, 0xB8}, {u16, u32, u32, attrs}, 10, 32, 0, false},
    {{0xA5}, {u8, u8, u8, attrs}, 3, 24, 0, false},
    {{0xA6, 0xA9, 0xAB, 0xBC}, {u8, u8, attrs}, 2, 24, 0, false},
    {{0xA7, 0xC0}, {u16, u32, u32, u32, u32, attrs}, 18, 40, 0, false},
    {{0xA8, 0xBB}, {u16, u32, u32, u32, u32, u32, u16, u16, u16, attrs}, 28, 48, 0, false},
    {{0xAC}, {u32, u32, u32, u16, u32, attrs}, 18, 40, 0, false},
    {{0xAE}, {u16, u32, u16, u32, attrs}, 12, 32, 0, false},
    {{0xB0, 0xBD, 0xE0}, {u32, u32, u32, attrs}, 12, 32, 0, false},
    {{0xB1}, {u32, attrs}, 4, 24, 0, false},
    {{0xB2}, {u8, attrs}, 1, 24, 0, false},
    {{0xB5}, {u32, u8, attrs}, 5, 24, 0, false},
    {{0xB6}, {u16, u32, u32, u32, u32, u8, u8, u8, u32, attrs}, 25, 48, 0, false},
    {{0xC3}, {u16, u32, u32, u32, u32, u32, u32, u32, u8, attrs}, 31, 56, 0, false},
    {{0xE1}, {u32, u32, u32, u32, attrs}, 16, 32, 0, false},
    // The bare attribute lists: the record is the list head itself.
    {{0x12C, 0x12D, 0x12E, 0x12F, 0x130, 0x132, 0x133, 0x135, 0x136}, {attrs}, 0, 16, 0, true},
    // A byte string, then the list: an OctetString head {u8 length, data @8}.
    {{0xC1}, {count8, octets, attrs}, 1, 32, 0, false},
    // u16, then a head {u16, u16 length, data @8}, then the list.
    {{0xC2}, {u16, head, u16, count16, octets, attrs}, 6, 40, 0, false},
    // Byte pairs before the list.
    {{0xB7}, {count8, pairs, attrs}, 1, 32, 0, false},
    {{0xE2}, {u16, u32, count8, pairs, attrs}, 7, 40, 0, false},
    // 5-byte items before the list, decoded into 8-byte elements.
    {{0xBE}, {u16, u32, u32, u32, count8, items5, attrs}, 15, 48, 0, false},
    // u32 values in the middle: the count and pointer form a 16-byte head.
    {{0x98, 0x99}, {u16, u32, u8, u8, head, count8, u32s, u32, u8, attrs}, 14, 56, 0, false},
    // Fields, a byte string (length and pointer as plain fields), fields, list.
    {{0xAF},
     {u16, u32, u8, u8, u8, u16, u16, u16, count8, octets, u32, u8, u16, u32, u32, u8, u8, attrs},
     33, 88, 16, false},
    {{0xB9},
     {u8, u8, u32, u8, u16, u16, u16, count8, octets, u32, u8, u16, u32, u32, u8, u8, u8, attrs},
     32, 80, 8, false},
    {{0xBA},
     {u16, u32, u16, u32, u8, u8, u8, u16, u16, u16, count8, octets, u32, u8, u16, u32, u32, u8, u8,
      attrs},
     39, 96, 16, false},
    // 0xB9's plan with a u16 length: the same record, the length widened in place.
    {{0xBF},
     {u8, u8, u32, u8, u16, u16, u16, count16, octets, u32, u8, u16, u32, u32, u8, u8, u8, attrs},
     33, 80, 8, false},
    // u32, u16, an OctetString head, a head of u32 values, the list.
    {{0x9A}, {u32, u16, head, count8, octets, count8, u32s, attrs}, 8, 56, 0, false},
    // u16, u32, two OctetString heads, u32, the list.
    {{0x9B}, {u16, u32, head, count8, octets, count8, octets, u32, attrs}, 12, 64, 0, false},
};
} // namespace attribute_event_items

using attribute_event_items::kAttributeEventLayouts;
inline constexpr size_t kAttributeEventLayoutCount = std::size(kAttributeEventLayouts);
inline constexpr size_t kRegularAttributeEventLayouts = 17;

inline constexpr auto kAttributeEventPlans = [] {
    std::array<AttributeEventPlan, kAttributeEventLayoutCount> plans{};
    for (size_t i = 0; i < kAttributeEventLayoutCount; ++i)
        plans[i] = planAttributeEvent(kAttributeEventLayouts[i]);
    return plans;
}();

// Every row's figures follow from its items: wire bytes from the widths,
// record offsets from natural alignment with the list head 8-aligned, and
// the reserved bytes are what the stated fixed part leaves over.
constexpr bool attributeEventFiguresHold() {
    for (size_t i = 0; i < kAttributeEventLayoutCount; ++i) {
        const AttributeEventLayout &l = kAttributeEventLayouts[i];
        const AttributeEventPlan &p = kAttributeEventPlans[i];
        if (!p.valid || p.wireFixed != l.wireFixed || p.record != l.record || l.record % 8 != 0)
            return false;
        if (i >= kRegularAttributeEventLayouts) continue;
        // A regular layout: scalars, then the list, nothing reserved.
        if (l.reserved != 0 || l.headUnreported || p.count < 2) return false;
        for (uint8_t s = 0; s + 1 < p.count; ++s) {
            const AttributeEventItem item = p.steps[s].item;
            if (item != AttributeEventItem::U8 && item != AttributeEventItem::U16 &&
                item != AttributeEventItem::U32)
                return false;
        }
    }
    return true;
}
static_assert(attributeEventFiguresHold(), "a layout's items disagree with its stated figures");

// ---- the attribute list of an event ------------------------------------------------

// The list's size pass. Needs 2 bytes for the count, then 4 for each
// attribute's identifier and length. Each identifier's codec is looked up at
// version 0 whatever the packet's version; a codec sizes its value from the
// cursor (array form, version 0) and consumes what it reads: the wire length
// is not used to skip. Without a codec `length` bytes are skipped; a raw
// value running past the end of the bytes is caught only by the next
// attribute's header test, and after the last attribute it passes (the
// cursor stops at the end). Adds N x 16 plus each value's size rounded up to
// 8 to `size`. Results: 0; 5 the count or a header is cut short; an
// attribute codec's own result. On failure the cursor and size are unchanged.
TrovResult eventAttributeListDecCalc(PacketCursor &cursor, Sizes &size);

// Reads a list that the size pass accepted into the AttributeList head at
// `head`: the entries start at `area` rounded up to 8 (null when N is 0), the
// values behind them, each 8-aligned. A value with a codec is decoded by it
// and its entry's length set to 0; a raw value is copied and its length kept
// (bytes missing from the packet read as 0). Returns the first 8-aligned
// address behind the last value.
uint8_t *eventAttributeListDecode(PacketCursor &cursor, void *head, uint8_t *area);

// The encoding mirror of the list in the AttributeList head at `head`: the
// count, then per entry the identifier, the value length and the value, from
// the codec (array form, version 0) or, for an identifier without a codec,
// `length` raw bytes. Adds the packet bytes to `packetBytes`. Results: 0; 1
// entries or a value null where needed; an attribute codec's own result.
TrovResult eventAttributeListEncCalc(const void *head, WireSize &packetBytes);
void eventAttributeListEncode(PacketCursor &cursor, const void *head);

// ---- the generic operations (AttributeEvents.cpp) --------------------------------------

// Checks that the body at the cursor holds the event: the fixed wire bytes
// first, then after each count the bytes up to the end of its run, then the
// list. Moves the cursor past the body and reports the record size: `bytes`
// = the reported fixed part + the list's size rounded up to 8 + for each
// non-empty run its wire bytes plus spare rounded up to 8, in 16-bit
// arithmetic; `extent` = what Decode writes, in 32 bits. Results: 0; 1 a null
// argument; 5 the body is short; an attribute codec's result. On failure the
// cursor and size are unchanged.
TrovResult attributeEventDecCalc(const AttributeEventPlan &plan, PacketCursor *cursor, RecordSize *size);
// Reads a body that DecCalc accepted into `record` (8-aligned, `extent`
// bytes): the fixed part is zeroed and filled, the run data goes behind it
// and the list behind that. Returns the first 8-aligned address behind
// everything written.
void *attributeEventDecode(const AttributeEventPlan &plan, void *record, PacketCursor *cursor);
// The packet bytes of a record. Results: 0; 1 a null argument, or a run or
// list with elements and a null pointer; 4 more than 65535 bytes; an
// attribute codec's own result.
TrovResult attributeEventEncCalc(const AttributeEventPlan &plan, const void *record, uint16_t *packetBytes);
// Writes the body of a record; the cursor holds what EncCalc reported.
void attributeEventEncode(const AttributeEventPlan &plan, PacketCursor *cursor, const void *record);

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

inline constexpr uint8_t kU8 = 3, kU16 = 5, kU32 = 7; // the structure codec's scalar kinds

inline constexpr StructField kStamp[] = {
    structScalar(1, kU32, 4),
    structScalar(2, kU16, 2),
    structScalar(3, kU8, 1),
    structEnd(),
};
inline constexpr StructField kItem[] = {
    structScalar(1, kU16, 2),
    structScalar(2, kU8, 1),
    structScalar(3, kU32, 4),
    structEnd(),
};
inline constexpr StructField kBody[] = {
    structScalar(1, kU32, 4),
    structScalar(2, kU16, 2),
    structScalar(3, kU8, 1, 1),
    structField(4, kStructChars),
    structField(5, kStructNested, sizeof(Stamp), kStamp),
    structScalar(6, kU32, 4),
    structScalar(7, kU16, 2),
    structScalar(8, kU16, 2, 1),
    structField(9, kStructArray, sizeof(Item), kItem),
    structEnd(),
};

inline constexpr uint16_t kHeadBytes = 16;

static_assert(structDescriptorValid(kBody));
static_assert(structFixedWireSize(kBody) == 22 && structFixedWireSize(kItem) == 7);
static_assert(structRecordSize(kStamp) == sizeof(Stamp) && structRecordSize(kItem) == sizeof(Item));
static_assert(structRecordSize(kBody) == sizeof(Body) && sizeof(Body) == 40);
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

// The flag of the event operations is ignored.
template <size_t I>
struct AttributeEventLayoutOps {
    static constexpr const AttributeEventPlan &kPlan = kAttributeEventPlans[I];
    static TrovResult decCalc(PacketCursor *c, uint8_t, RecordSize *s) { return attributeEventDecCalc(kPlan, c, s); }
    static void *decode(void *r, PacketCursor *c, uint8_t) { return attributeEventDecode(kPlan, r, c); }
    static TrovResult encCalc(const void *r, uint16_t *n) { return attributeEventEncCalc(kPlan, r, n); }
    static void encode(PacketCursor *c, const void *r) { attributeEventEncode(kPlan, c, r); }
};

// One code of the family and its operations. The event table registers
// decCalc and decode; encCalc and encode build bodies and are registered
// nowhere.
struct AttributeEventCodec {
    uint16_t code;
    TrovResult (*decCalc)(PacketCursor *cursor, uint8_t flag, RecordSize *size);
    void *(*decode)(void *record, PacketCursor *cursor, uint8_t flag);
    TrovResult (*encCalc)(const void *record, uint16_t *packetBytes);
    void (*encode)(PacketCursor *cursor, const void *record);
};

inline constexpr uint16_t kStructureEventCodes[] = {0xC4, 0xC5};

inline constexpr size_t kAttributeEventCodeCount = [] {
    size_t n = std::size(kStructureEventCodes);
    for (const AttributeEventLayout &l : kAttributeEventLayouts)
        for (uint16_t code : l.codes) n += code != 0;
    return n;
}();

template <size_t... I>
constexpr std::array<AttributeEventCodec, kAttributeEventCodeCount>
collectAttributeEventCodecs(std::index_sequence<I...>) {
    const AttributeEventCodec ops[] = {
        {0, AttributeEventLayoutOps<I>::decCalc, AttributeEventLayoutOps<I>::decode,
         AttributeEventLayoutOps<I>::encCalc, AttributeEventLayoutOps<I>::encode}...,
        {0, structureEventDecCalc, structureEventDecode, structureEventEncCalc, structureEventEncode}};
    std::array<AttributeEventCodec, kAttributeEventCodeCount> out{};
    size_t n = 0;
    auto insert = [&](uint16_t code, AttributeEventCodec c) { // ascending code order
        size_t k = n++;
        for (; k > 0 && out[k - 1].code > code; --k) out[k] = out[k - 1];
        c.code = code;
        out[k] = c;
    };
    for (size_t i = 0; i < sizeof...(I); ++i)
        for (uint16_t code : kAttributeEventLayouts[i].codes)
            if (code != 0) insert(code, ops[i]);
    for (uint16_t code : kStructureEventCodes) insert(code, ops[sizeof...(I)]);
    return out;
}

// Every code of the family with its operations, in ascending code order.
inline constexpr auto kAttributeEventCodecs =
    collectAttributeEventCodecs(std::make_index_sequence<kAttributeEventLayoutCount>{});

// The operations of an event code of this family; null for any other code.
constexpr const AttributeEventCodec *findAttributeEventCodec(uint16_t code) {
    for (const AttributeEventCodec &c : kAttributeEventCodecs)
        if (c.code == code) return &c;
    return nullptr;
}

// The layout row of a code; -1 for 0xC4, 0xC5 and codes of other families.
constexpr int attributeEventLayoutOf(uint16_t code) {
    for (size_t i = 0; i < kAttributeEventLayoutCount; ++i)
        for (uint16_t c : kAttributeEventLayouts[i].codes)
            if (c != 0 && c == code) return static_cast<int>(i);
    return -1;
}

// The family is exactly these 51 codes, each once.
constexpr bool attributeEventCodesHold() {
    constexpr uint16_t expected[] = {
        0x5E, 0x5F, 0x98, 0x99, 0x9A, 0x9B, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8,
        0xA9, 0xAB, 0xAC, 0xAE, 0xAF, 0xB0, 0xB1, 0xB2, 0xB4, 0xB5, 0xB6, 0xB7, 0xB8,
        0xB9, 0xBA, 0xBB, 0xBC, 0xBD, 0xBE, 0xBF, 0xC0, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5,
        0xE0, 0xE1, 0xE2, 0x12C, 0x12D, 0x12E, 0x12F, 0x130, 0x132, 0x133, 0x135, 0x136};
    if (std::size(expected) != kAttributeEventCodecs.size()) return false;
    for (size_t i = 0; i < std::size(expected); ++i)
        if (kAttributeEventCodecs[i].code != expected[i]) return false; // sorted: no duplicates
    return true;
}
static_assert(kAttributeEventCodeCount == 51 && attributeEventCodesHold());

} // namespace trov
