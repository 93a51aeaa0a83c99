// The descriptions of the function-unit bodies and of their frames (event
// lists, the method invocation), and which belong to a body row.
#pragma once

#include <cstddef>
#include <cstdint>

#include "TrovLayout.h"
#include "engine/CodecTypes.h"
#include "engine/PlanDescription.h"
#include "units/BodyLayout.h"
#include "units/MethodBody.h"

namespace trov {

// ---- the frames: event lists and the method invocation ------------------------------

// A frame's field of a kind of its own: a pointer at `offset` (and, for
// params, the length behind it), its count or code held by field `other`.
constexpr TrovFieldInfo frameField(const char *name, const char *kind, uint8_t kindId, uint16_t offset,
                                   uint16_t width, int other) {
    return TrovFieldInfo{name, kind, kindId, 0, 0, 0, offset, width, offset, static_cast<int16_t>(other)};
}

constexpr void append(FieldList &list, TrovFieldInfo f) { list.at[list.count++] = f; }
constexpr void appendBuffer(FieldList &list, uint16_t offset) {
    append(list, describeField(Field{FieldKind::Buffer, 0, 0, "buffer", offset}, list.count, false));
}

// An event-list body: the head the decoder reads, its last field the event
// count, then the entries and the buffer.
template <EventFraming F>
struct EventListFields {
    static constexpr FieldList make(size_t) {
        const EventFrame &f = eventFrame(F);
        FieldList out = describePlan(f.head);
        TrovFieldInfo &count = out.at[out.count - 1];
        count.kind = kindInfo(FieldKind::Count).name;
        count.kindId = TROV_KIND_COUNT;
        count.countBytes = static_cast<uint8_t>(count.width);
        append(out, frameField("entries", "events", TROV_KIND_EVENTS, f.entries, 8, out.count - 1));
        appendBuffer(out, f.buffer);
        return out;
    }
};

// An entry: the event's head, then the pointer to the event its code picks.
template <EventFraming F>
struct EventEntryFields {
    static constexpr FieldList make(size_t) {
        const EventFrame &f = eventFrame(F);
        FieldList out = describePlan(f.entry);
        append(out, frameField("body", "event", TROV_KIND_EVENT, f.body, 8, f.code));
        return out;
    }
};

template <EventFraming F>
inline constexpr TrovLayoutInfo kEventListInfo = {
    eventFrame(F).record,          eventFrame(F).recordBytes, fieldCount<EventListFields<F>, 0>(),
    fieldArray<EventListFields<F>, 0>(), TROV_LAYOUT_EVENT_LIST, 0, eventFrame(F).head.wireFixed};

template <EventFraming F>
inline constexpr TrovLayoutInfo kEventEntryInfo = {
    eventFrame(F).entryRecord,      eventFrame(F).entryBytes, fieldCount<EventEntryFields<F>, 0>(),
    fieldArray<EventEntryFields<F>, 0>(), TROV_LAYOUT_FIELDS, 0, eventFrame(F).entry.wireFixed};

// Body 0x1d, both ways: the prefix the codec writes and reads, then the
// parameters (their pointer and length) and the buffer.
struct MethodCallFields {
    static constexpr FieldList make(size_t) {
        FieldList out = describePlan(kMethodPrefix);
        append(out, frameField("params", "params", TROV_KIND_PARAMS, kMethodParams,
                               static_cast<uint16_t>(kMethodParamsLength + 2 - kMethodParams), kMethodCodeField));
        appendBuffer(out, kMethodBuffer);
        return out;
    }
};

inline constexpr TrovLayoutInfo kMethodCallInfo = {
    "MethodBody", sizeof(MethodBody), fieldCount<MethodCallFields, 0>(), fieldArray<MethodCallFields, 0>(),
    TROV_LAYOUT_METHOD_CALL, 0, kMethodPrefix.wireFixed};

// ---- function-unit bodies ----------------------------------------------------------

// The description of a body layout.
template <const BodyLayout *L>
struct BodyFields {
    static constexpr FieldList make(size_t) {
        return L->plan != nullptr ? describePlan(*L->plan) : FieldList{};
    }
};

template <const BodyLayout *L>
inline constexpr TrovLayoutInfo kBodyInfo = {
    L->name,
    L->recordBytes,
    fieldCount<BodyFields<L>, 0>(),
    fieldArray<BodyFields<L>, 0>(),
    L->kind == BodyKind::NoReply ? uint8_t{TROV_LAYOUT_NONE} : uint8_t{TROV_LAYOUT_FIELDS},
    0,
    L->kind == BodyKind::Fields ? L->plan->wireFixed : uint16_t{0},
};

template <const BodyLayout *L>
constexpr const TrovLayoutInfo *describedBody() {
    if constexpr (L == nullptr) return nullptr;
    else if constexpr (L->kind == BodyKind::EventList) return &kEventListInfo<EventFraming::Long>;
    else if constexpr (L->kind == BodyKind::ShortEventList) return &kEventListInfo<EventFraming::Short>;
    else return &kBodyInfo<L>;
}

// A row's layouts and their descriptions (layouts null for the method
// invocation, whose parameters the method codecs carry).
struct BodyDescriptions {
    const TrovLayoutInfo *request; // null: the body is decode-only
    const TrovLayoutInfo *reply;
    const BodyLayout *requestLayout;
    const BodyLayout *replyLayout;
};

// The layouts and descriptions of a row of the built-in FU body table; null
// for a row of any other table.
const BodyDescriptions *bodyDescriptionsOf(const BodyCodecRow *row);

} // namespace trov
