// TROV_EncodeReply (TrovReplyEncode.h): reply records written back as
// packets, through the layouts the decoder reads them by.
//
// The body row of the code names its reply layout (BodyDescription.h):
//   - a field list is written by the body codec's encoder (encodeLayout), the
//     same walk that writes the requests;
//   - a body without a reply is a header-only packet;
//   - the method invocation writes the u32 and the method code, then the
//     reply side of the method's parameters: the method's reply plan through
//     the method walk, a structured reply through the structure codec, raw
//     parameters as their bytes;
//   - an event list writes its head, then per entry the event head and the
//     event body through the event codec of the entry's code, the encode
//     mirror of the operations the event table registers.
// Each is a size pass over the record, the output reserved (the header's
// bodyLength set, a packet allocated or the caller's buffer checked), then
// the write pass.
#include "TrovReplyEncode.h"

#include <cstddef>
#include <cstdint>
#include <functional>

#include "api/BodyOperations.h"
#include "api/Dispatch.h"
#include "engine/FieldWalker.h"
#include "engine/HeaderCodec.h"
#include "engine/Memory.h"
#include "events/AttributeEvents.h"
#include "events/EventList.h"
#include "events/StringEvents.h"
#include "units/BodyDescription.h"
#include "units/MethodBody.h"
#include "units/MethodCodecs.h"

namespace trov {
namespace {

// Runs the write pass of a size the caller worked out: reserves the output,
// writes the body through `write` and checks it filled the body exactly.
template <class Write>
TrovResult writeBody(HeaderInfo *info, const WireSize &size, EncodeOutput *output, Write write) {
    PacketCursor body{};
    bool allocated = false;
    if (TrovResult r = reserveEncodeBuffer(info, size, output, &body, &allocated)) return r;
    write(body);
    return finishEncodeBuffer(output, body, allocated);
}

// ---- event lists ------------------------------------------------------------------

// The encoder of an event code: the one whose decode operations the event
// table's row for the code and version holds (none before TROV_InitCoder).
const EventCodec *eventCodec(const Tables &tables, uint16_t code, uint8_t version) {
    const EventCodecRow *row = findEventRow(tables, code, version, kSelectFU);
    if (row == nullptr) return nullptr;
    const EventCodec *c = findStringEventOps(code);
    if (c == nullptr) c = findAttributeEventCodec(code);
    return c != nullptr && c->decode == row->decode ? c : nullptr;
}

// What an event's encoder is given. The structure events (the codecs
// without a plan) write the structure their head points at; a head left
// null stands for the structure right behind it, where the layout
// description places the record's one field.
struct EventRecord {
    const void *head[2];
    const void *record;
};
EventRecord eventRecord(const EventCodec &c, const void *record) {
    EventRecord e{{nullptr, nullptr}, record};
    if (c.plan == nullptr && record != nullptr && loadField<const void *>(record, 0) == nullptr) {
        e.head[0] = static_cast<const uint8_t *>(record) + structure_event::kHeadBytes;
        e.record = e.head;
    }
    return e;
}

struct EventListView {
    const EventFrame &frame;
    const uint8_t *record;

    uint32_t count() const {
        const Field &f = frame.head.fields[frame.head.count - 1];
        return f.kind == FieldKind::U8 ? record[f.offset] : loadField<uint16_t>(record, f.offset);
    }
    const uint8_t *entry(uint32_t i) const {
        return loadField<const uint8_t *>(record, frame.entries) + size_t{i} * frame.entryBytes;
    }
    uint16_t code(const uint8_t *entry) const {
        return loadField<uint16_t>(entry, frame.entry.fields[frame.code].offset);
    }
    const void *body(const uint8_t *entry) const { return loadField<const void *>(entry, frame.body); }
};

TrovResult encodeEventList(EventFraming framing, const Tables &tables, HeaderInfo *info, const void *record,
                           EncodeOutput *output) {
    const EventListView list{eventFrame(framing), static_cast<const uint8_t *>(record)};
    const auto version = static_cast<uint8_t>(info->version);
    const uint32_t n = list.count();
    if (n != 0 && loadField<const void *>(record, list.frame.entries) == nullptr) return TROV_RESULT_NULL_ARGUMENT;

    WireSize size = WireSize::of(list.frame.head.wireFixed);
    for (uint32_t i = 0; i < n && !size.pastLimit(); ++i) {
        const uint8_t *entry = list.entry(i);
        const EventCodec *c = eventCodec(tables, list.code(entry), version);
        if (c == nullptr) return TROV_RESULT_NO_EVENT_CODEC;
        const EventRecord e = eventRecord(*c, list.body(entry));
        uint16_t bytes = 0;
        if (TrovResult r = c->encCalc(e.record, &bytes)) return r;
        size.add(list.frame.entry.wireFixed);
        size.add(bytes);
    }
    return writeBody(info, size, output, [&](PacketCursor &body) {
        walkEncode(list.frame.head, body, list.record, FieldEnv{});
        for (uint32_t i = 0; i < n; ++i) {
            const uint8_t *entry = list.entry(i);
            const EventCodec *c = eventCodec(tables, list.code(entry), version);
            walkEncode(list.frame.entry, body, entry, FieldEnv{});
            c->encode(&body, eventRecord(*c, list.body(entry)).record);
        }
    });
}

// ---- the method invocation ---------------------------------------------------------

// The reply side of a method's parameters: sized and written as the
// method's row reads them.
struct ReplyParams {
    const MethodBody &m;
    const MethodCodecRow *raw; // the raw row: the params length's bytes
    const MethodInfo *method;  // else the method of the built-in table
    const Plan *plan;          // its reply plan (a structured reply: the descriptor)

    TrovResult encCalc(WireSize &size) const {
        if (raw != nullptr) return raw->encCalc(m.params, m.paramsLength, &size);
        if (method->reply != MethodReply::Structured) return methodEncCalc(*plan, m.params, &size);
        if (TrovResult r = structEncCalc(*plan, m.params, &size)) return r;
        return size.nullData ? TROV_RESULT_NULL_ARGUMENT : TROV_RESULT_OK;
    }
    void encode(PacketCursor &c) const {
        if (raw != nullptr) raw->encode(&c, m.params, m.paramsLength);
        else if (method->reply != MethodReply::Structured) methodEncode(*plan, &c, m.params);
        else structEncode(*plan, &c, m.params);
    }
};

TrovResult encodeMethodReply(const Tables &tables, HeaderInfo *info, const MethodBody &m, EncodeOutput *output) {
    const MethodCodecRow *row = findMethodRow(tables, m.method, static_cast<uint8_t>(info->version));
    ReplyParams params{m, nullptr, nullptr, nullptr};
    if (row == &RawMethodCodecRow) {
        params.raw = row;
    } else {
        // The built-in rows follow the method list one for one.
        const std::less<const MethodCodecRow *> before;
        if (row == nullptr || before(row, FUMethodCodecTable) || !before(row, FUMethodCodecTable + kMethodCount))
            return TROV_RESULT_NO_METHOD_CODEC;
        const size_t i = static_cast<size_t>(row - FUMethodCodecTable);
        params.method = &kMethods[i];
        params.plan = params.method->reply == MethodReply::Structured ? params.method->replyDescriptor
                                                                       : &kMethodPlans[i].reply;
    }
    return encodeMethodWith(info, m, output, params);
}

// ---- dispatch --------------------------------------------------------------------------

TrovResult encodeReply(const Tables &tables, HeaderInfo *info, const void *record, EncodeOutput *output) {
    if (info == nullptr || record == nullptr || output == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const auto version = static_cast<uint8_t>(info->version);
    if (findHeaderRow(version) == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    const BodyCodecRow *row = findBodyRow(tables, info->code, version, kSelectFU);
    if (row == nullptr || row->decode == nullptr) return TROV_RESULT_NO_BODY_CODEC;

    if (row->decode == &decodeMethodBody)
        return encodeMethodReply(tables, info, *static_cast<const MethodBody *>(record), output);
    const BodyDescriptions *layouts = bodyDescriptionsOf(row);
    if (layouts == nullptr || layouts->replyLayout == nullptr) return TROV_RESULT_NO_BODY_CODEC;
    const BodyLayout &reply = *layouts->replyLayout;
    switch (reply.kind) {
    case BodyKind::Fields: return encodeLayout(reply, info, record, output);
    case BodyKind::NoReply: return writeBody(info, WireSize{}, output, [](PacketCursor &) {});
    case BodyKind::EventList: return encodeEventList(EventFraming::Long, tables, info, record, output);
    case BodyKind::ShortEventList: return encodeEventList(EventFraming::Short, tables, info, record, output);
    }
    return TROV_RESULT_NO_BODY_CODEC;
}

} // namespace
} // namespace trov

extern "C" TROV_API TrovResult TROV_EncodeReply(HeaderInfo *info, const void *record, EncodeOutput *output) {
    return trov::encodeReply(trov::activeTables(), info, record, output);
}
