// What the two event families share: a row type, the four operations of an
// event over its plan, and the code list each family's rows expand into.
//
// An event record is its fixed part, then the data of its variable fields in
// field order, each piece starting at a multiple of 8. Events travel only
// towards the host: the event table registers the two decode operations;
// the encode operations are the mirror that tests and fuzzers build bodies
// with.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <utility>

#include "engine/CodecTypes.h"
#include "engine/Field.h"
#include "engine/FieldWalker.h"

namespace trov {

inline constexpr int kMaxEventFields = 24;
inline constexpr int kMaxEventCodes = 9;

// One layout: the codes that share it, its fields in wire order, the figures
// the derived plan must reproduce (the wire bytes with every count 0, and
// the record's fixed part) and the quirks it keeps.
struct EventLayout {
    uint16_t codes[kMaxEventCodes];  // 0-terminated
    Field fields[kMaxEventFields];   // End-terminated
    uint16_t wireFixed;
    uint16_t record;
    PlanRules rules{};
};

constexpr Plan eventPlan(const EventLayout &l) { return makePlan(l.fields, kMaxEventFields, l.rules); }

template <size_t N>
constexpr std::array<Plan, N> eventPlans(const EventLayout (&layouts)[N]) {
    std::array<Plan, N> plans{};
    for (size_t i = 0; i < N; ++i) plans[i] = eventPlan(layouts[i]);
    return plans;
}

// The rows' stated figures against their plans.
template <size_t N>
constexpr bool eventFiguresHold(const EventLayout (&layouts)[N], const std::array<Plan, N> &plans) {
    for (size_t i = 0; i < N; ++i)
        if (!plans[i].valid || plans[i].wireFixed != layouts[i].wireFixed ||
            plans[i].record != layouts[i].record || layouts[i].codes[0] == 0)
            return false;
    return true;
}

// ---- the operations --------------------------------------------------------------

// The packet bytes of a record. Results: 0; 1 a null argument or a null
// pointer behind a count; 13 a typed value without a data-type codec; 5 more
// than 65535 bytes; a value codec's own result.
TrovResult eventEncCalc(const Plan &plan, const void *record, uint16_t *packetBytes);
void eventEncode(const Plan &plan, PacketCursor *cursor, const void *record);

// What the event plans' fields need from above: the data-type codecs and
// the attribute lists of events.
extern const FieldEnv kEventEnv;

// One code and its operations (the flag of the decode operations is ignored).
struct EventCodec {
    uint16_t code;
    TrovResult (*decCalc)(PacketCursor *cursor, uint8_t flag, RecordSize *size);
    void *(*decode)(void *record, PacketCursor *cursor, uint8_t flag);
    TrovResult (*encCalc)(const void *record, uint16_t *packetBytes);
    void (*encode)(PacketCursor *cursor, const void *record);
    const Plan *plan; // null for a layout of the structure codec
};

// The operations of layout I of a family's plans.
template <const auto &Plans, size_t I>
struct EventOps {
    static constexpr const Plan &P = Plans[I];
    // The decode operations run on every event of a list, so they are
    // compiled for their plan (PlanWalk).
    //
    // Checks that the body at the cursor holds the event (every count,
    // length, type and identifier is tested before use), moves the cursor
    // past it and reports the record size: `bytes` the protocol's 16-bit
    // figure, `extent` the bytes decode writes. Results: 0; 1 a null
    // argument; 5 the body is short (or a typed value is larger than the room
    // its type reserves); 13 a typed value without a data-type codec; a value
    // codec's own result. On failure the cursor and size are unchanged.
    static TrovResult decCalc(PacketCursor *c, uint8_t, RecordSize *s) {
        if (c == nullptr || c->position == nullptr || s == nullptr) return TROV_RESULT_NULL_ARGUMENT;
        Sizes total;
        total.add(P.reportedFixed, P.record);
        if (TrovResult r = PlanWalk<Plans, I>::decCalc(*c, total, kEventEnv)) return r;
        *s = RecordSize{total.bytes, total.extent};
        return TROV_RESULT_OK;
    }
    // Reads a body that decCalc accepted into `r` (8-aligned, at least
    // `extent` bytes). Returns the first 8-aligned address behind it all.
    static void *decode(void *r, PacketCursor *c, uint8_t) {
        auto *base = static_cast<uint8_t *>(r);
        if constexpr (P.rules.zeroFixedPart) std::memset(base, 0, P.record);
        return PlanWalk<Plans, I>::decode(*c, base, base + P.record, kEventEnv);
    }
    static TrovResult encCalc(const void *r, uint16_t *n) { return eventEncCalc(P, r, n); }
    static void encode(PacketCursor *c, const void *r) { eventEncode(P, c, r); }
    static constexpr EventCodec codec{0, decCalc, decode, encCalc, encode, &P};
};

template <size_t N>
constexpr size_t eventCodeCount(const EventLayout (&layouts)[N]) {
    size_t n = 0;
    for (const EventLayout &l : layouts)
        for (uint16_t code : l.codes) n += code != 0;
    return n;
}

// Every code of `layouts` with the operations of its row, in ascending code
// order; `extra` codecs (with their codes set) join the list.
template <size_t Count, size_t N>
constexpr std::array<EventCodec, Count> collectEventCodecs(const EventLayout (&layouts)[N],
                                                           const EventCodec (&ops)[N],
                                                           std::initializer_list<EventCodec> extra) {
    std::array<EventCodec, Count> out{};
    size_t n = 0;
    auto insert = [&](EventCodec c) {
        size_t k = n++;
        for (; k > 0 && out[k - 1].code > c.code; --k) out[k] = out[k - 1];
        out[k] = c;
    };
    for (size_t i = 0; i < N; ++i)
        for (uint16_t code : layouts[i].codes)
            if (code != 0) {
                EventCodec c = ops[i];
                c.code = code;
                insert(c);
            }
    for (const EventCodec &c : extra) insert(c);
    return out;
}

template <size_t N>
constexpr const EventCodec *findEventCodec(const std::array<EventCodec, N> &codecs, uint16_t code) {
    for (const EventCodec &c : codecs)
        if (c.code == code) return &c;
    return nullptr;
}

template <size_t N>
constexpr bool codesAscend(const std::array<EventCodec, N> &codecs) {
    for (size_t i = 1; i < N; ++i)
        if (codecs[i - 1].code >= codecs[i].code) return false; // no duplicates
    return true;
}

} // namespace trov
