// The body codec: one encode and one decode routine for every layout, both
// running the field model's walker. Variable data of a decoded body goes
// into the record's managed buffer.
#include "units/BodyLayout.h"

#include "engine/Memory.h"
#include "engine/FieldWalker.h"
#include "events/EventList.h"

namespace trov {

namespace {

FieldEnv bodyEnv(const HeaderInfo *info) {
    FieldEnv env;
    env.version = static_cast<uint8_t>(info->version);
    env.attribute = attributeCodec;
    return env;
}

uint16_t bufferOffset(const Plan &plan) {
    for (uint8_t i = 0; i < plan.count; ++i)
        if (plan.fields[i].kind == FieldKind::Buffer) return plan.fields[i].offset;
    return kNoData;
}

} // namespace

TrovResult encodeLayout(const BodyLayout &l, HeaderInfo *info, const void *record,
                        EncodeOutput *output) {
    const FieldEnv env = bodyEnv(info);
    const auto *fields = static_cast<const uint8_t *>(record);
    WireSize size;
    if (TrovResult r = walkEncCalc(*l.plan, fields, size, env)) return r;
    PacketCursor body{};
    bool allocated = false;
    if (TrovResult r = reserveEncodeBuffer(info, size, output, &body, &allocated)) return r;
    walkEncode(*l.plan, body, fields, env);
    return finishEncodeBuffer(output, body, allocated);
}

TrovResult decodeLayout(const BodyLayout &l, HeaderInfo *info, DecodeResult *result,
                        const PacketCursor *body, uint32_t *read) {
    const auto version = static_cast<uint8_t>(info->version);
    switch (l.kind) {
    case BodyKind::NoReply:
        if (read != nullptr) *read = 0;
        return TROV_RESULT_OK;
    case BodyKind::EventList:
        return decodeEventList(EventFraming::Long, activeTables(), version, result, body, kEveryEvent, read);
    case BodyKind::ShortEventList:
        return decodeEventList(EventFraming::Short, activeTables(), version, result, body, kEveryEvent, read);
    case BodyKind::Fields: break;
    }

    bool recordAllocated = false;
    if (TrovResult r = allocateRecord(result, body, minimumLength(l), l.recordBytes, &recordAllocated))
        return r;

    // The size pass over a copy of the body checks every byte a field needs
    // and sums the managed buffer; the read pass then trusts it.
    const FieldEnv env = bodyEnv(info);
    PacketCursor sizing = *body;
    Sizes data;
    if (TrovResult r = walkDecCalc(*l.plan, sizing, data, env)) {
        releaseOnFailure(result, recordAllocated, false);
        return r;
    }
    auto *record = static_cast<uint8_t *>(result->record);
    uint8_t *area = nullptr;
    if (const uint16_t at = bufferOffset(*l.plan); at != kNoData) {
        auto *buffer = reinterpret_cast<BufferDesc *>(record + at);
        bool bufferAllocated = false;
        if (TrovResult r = prepareBuffer(result, buffer, data.bytes, &bufferAllocated, data.extent)) {
            releaseOnFailure(result, recordAllocated, bufferAllocated);
            return r;
        }
        area = static_cast<uint8_t *>(buffer->data);
    }
    PacketCursor reading = *body;
    walkDecode(*l.plan, reading, record, area, env);
    if (read != nullptr) *read = static_cast<uint32_t>(reading.position - body->position);
    return TROV_RESULT_OK;
}

TrovResult locateField(const BodyLayout &l, const HeaderInfo *info, const PacketCursor *body, FieldStop &stop) {
    stop = FieldStop{};
    if (l.kind != BodyKind::Fields) return TROV_RESULT_OK;
    // The walker tests fixed fields together with what follows them, so the
    // failing field is found by sizing ever longer runs of the fields: the
    // first run that fails ends with it. (A run that ends on a count is not
    // a plan of its own; the field it counts closes it.)
    const FieldEnv env = bodyEnv(info);
    const Plan &plan = *l.plan;
    for (uint8_t n = 1; n <= plan.count; ++n) {
        const Plan run = makePlan(plan.fields.data(), n, plan.rules);
        if (!run.valid) continue;
        PacketCursor sizing = *body;
        Sizes data;
        if (TrovResult r = walkDecCalc(run, sizing, data, env)) {
            stop.field = static_cast<uint8_t>(n - 1);
            return r;
        }
        stop.at = static_cast<uint32_t>(sizing.position - body->position);
    }
    stop.field = plan.count;
    return TROV_RESULT_OK;
}

} // namespace trov
