// TROV_InspectFU: TROV_DecodeFU with a report of where the body's decoding
// stopped.
//
// The packet takes TROV_DecodeFU's own route to its body row (routeFU). A row
// of the built-in table is then decoded through its layout's decoder, the
// one the row runs, which also says how many body bytes it read. When that
// fails, a size pass finds the item: field by field for a body of fields,
// the method code for a method invocation. An event list is sized first,
// which allocates nothing; when an event fails, the list is decoded up to
// that event and kept.
#include "TrovInspect.h"

#include <cstddef>

#include "api/BodyOperations.h"
#include "engine/Cursor.h"
#include "events/EventList.h"
#include "units/BodyDescription.h"
#include "units/MethodBody.h"

// The report's layout, as the header documents it for hosts.
static_assert(sizeof(TrovInspectReport) == 24 && offsetof(TrovInspectReport, code) == 20);

namespace trov {
namespace {

// Whether a failure lies in the packet's bytes, rather than in memory or in
// the caller's buffer.
bool inTheBytes(TrovResult r) {
    return r != TROV_RESULT_NULL_ARGUMENT && r != TROV_RESULT_NO_MEMORY && r != TROV_RESULT_BUFFER_TOO_SMALL;
}

// Where the body of a packet stands, and the report being filled.
struct Inspection {
    HeaderInfo *info;
    DecodeResult *result;
    PacketCursor body;
    uint32_t bodyAt; // the body's packet offset
    TrovInspectReport &report;

    void at(uint8_t item, uint32_t offset, uint32_t index = 0, uint16_t code = 0) {
        report.item = item;
        report.offset = bodyAt + offset;
        report.index = index;
        report.code = code;
    }

    TrovResult fields(const BodyLayout &layout) {
        uint32_t read = 0;
        const TrovResult r = decodeLayout(layout, info, result, &body, &read);
        if (r == TROV_RESULT_OK) {
            report.bodyRead = read;
            return r;
        }
        at(TROV_ITEM_BODY, 0);
        FieldStop stop;
        if (!inTheBytes(r) || locateField(layout, info, &body, stop) == TROV_RESULT_OK) return r;
        const Field &f = layout.plan->fields[stop.field];
        const bool attribute = f.kind == FieldKind::Attribute;
        const uint16_t id = attribute && body.remaining - stop.at >= 2 ? loadU16(body.position + stop.at) : 0;
        at(attribute ? TROV_ITEM_ATTRIBUTE : TROV_ITEM_FIELD, stop.at, stop.field, id);
        return r;
    }

    TrovResult method() {
        uint32_t read = 0;
        const TrovResult r = decodeMethodBodyWith(activeTables(), info, result, &body, &read);
        if (r == TROV_RESULT_OK) {
            report.bodyRead = read;
            return r;
        }
        at(TROV_ITEM_BODY, 0);
        const uint16_t codeAt = kMethodPrefix.fields[kMethodCodeField].offset;
        if (!inTheBytes(r) || body.remaining < kMethodPrefix.wireFixed) return r;
        const uint16_t code = loadU16(body.position + codeAt);
        at(TROV_ITEM_METHOD, r == TROV_RESULT_NO_METHOD_CODEC ? codeAt : kMethodPrefix.wireFixed, 0, code);
        return r;
    }

    TrovResult events(EventFraming framing) {
        const auto version = static_cast<uint8_t>(info->version);
        EventListStop stop;
        const TrovResult sized = sizeEventList(framing, activeTables(), version, &body, stop);
        const bool headRead = body.remaining >= eventFrame(framing).head.wireFixed;
        if (sized == TROV_RESULT_OK || !headRead) {
            uint32_t read = 0;
            const TrovResult r = decodeEventList(framing, activeTables(), version, result, &body, kEveryEvent, &read);
            if (r == TROV_RESULT_OK) report.bodyRead = read;
            else at(TROV_ITEM_BODY, 0);
            return r;
        }
        // Decode the head and the events before the failing one, and keep them.
        at(TROV_ITEM_EVENT, stop.at, stop.sized, stop.code);
        const TrovResult r = decodeEventList(framing, activeTables(), version, result, &body, stop.sized);
        if (r != TROV_RESULT_OK) return r;
        result->type = 6;
        report.partial = 1;
        report.kept = stop.sized;
        return sized;
    }
};

} // namespace
} // namespace trov

using namespace trov;

extern "C" TROV_API TrovResult TROV_InspectFU(HeaderInfo *info, DecodeResult *result, const PacketCursor *cursor,
                                              void *context, TrovInspectReport *report) {
    if (report == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    *report = TrovInspectReport{};
    const BodyCodecRow *row = nullptr;
    PacketCursor body{};
    const TrovResult routed = routeFU(activeTables(), info, result, cursor, &row, &body);
    if (routed == TROV_RESULT_BAD_PACKET || routed == TROV_RESULT_NO_HEADER_CODEC) report->item = TROV_ITEM_HEADER;
    if (routed == TROV_RESULT_NO_BODY_CODEC) {
        report->item = TROV_ITEM_BODY;
        report->offset = TROV_HEADER_LENGTH;
    }
    if (routed != TROV_RESULT_OK || row == nullptr) return routed;

    report->bodyLength = body.remaining;
    Inspection inspection{info, result, body, static_cast<uint32_t>(body.position - cursor->position), *report};
    const BodyDescriptions *d = bodyDescriptionsOf(row);
    if (d == nullptr) { // a row of some other table: no layout to say more
        const TrovResult r = row->decode(info, result, &body, context);
        if (r == TROV_RESULT_OK) report->bodyRead = body.remaining;
        else inspection.at(TROV_ITEM_BODY, 0);
        return r;
    }
    if (d->replyLayout == nullptr) return inspection.method();
    switch (d->replyLayout->kind) {
    case BodyKind::EventList: return inspection.events(EventFraming::Long);
    case BodyKind::ShortEventList: return inspection.events(EventFraming::Short);
    default: return inspection.fields(*d->replyLayout);
    }
}
