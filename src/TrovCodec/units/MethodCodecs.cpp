// The method sides over the field model's walker, and the structured replies.
//
// A decoded parameter record is its fixed part, rounded up to 8, then each
// counted part's elements in field order, each 8-aligned. The method body
// always sizes the same bytes first and gives the record the extent the size
// pass reported, so the decode pass trusts it.
#include "units/MethodCodecs.h"

#include "engine/FieldWalker.h"

namespace trov {

namespace {
const FieldEnv kMethodEnv{}; // method fields are plain: no values, no lists
} // namespace

TrovResult methodEncCalc(const Plan &plan, const void *params, WireSize *wireBytes) {
    if (wireBytes == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (plan.count == 0) {
        *wireBytes = WireSize{};
        return TROV_RESULT_OK;
    }
    if (params == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    WireSize size;
    if (TrovResult r = walkEncCalc(plan, static_cast<const uint8_t *>(params), size, kMethodEnv)) return r;
    *wireBytes = size;
    return TROV_RESULT_OK;
}

void methodEncode(const Plan &plan, PacketCursor *cursor, const void *params) {
    if (cursor == nullptr || cursor->position == nullptr || params == nullptr) return;
    walkEncode(plan, *cursor, static_cast<const uint8_t *>(params), kMethodEnv);
}

TrovResult methodDecCalc(const Plan &plan, bool reportsLength, const PacketCursor *cursor,
                         uint16_t *paramsLength, RecordSize *size) {
    if (cursor == nullptr || paramsLength == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (plan.count != 0 && cursor->position == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    PacketCursor probe = *cursor;
    Sizes total;
    total.add(plan.record, plan.record);
    if (TrovResult r = walkDecCalc(plan, probe, total, kMethodEnv)) return r;
    *paramsLength = reportsLength ? static_cast<uint16_t>(probe.position - cursor->position) : uint16_t{0};
    *size = RecordSize{total.bytes, total.extent};
    return TROV_RESULT_OK;
}

void *methodDecode(const Plan &plan, void *record, PacketCursor *cursor) {
    if (record == nullptr || cursor == nullptr) return record;
    auto *base = static_cast<uint8_t *>(record);
    return walkDecode(plan, *cursor, base, base + plan.record, kMethodEnv);
}

TrovResult structuredReplyDecCalc(const Plan &d, const PacketCursor *cursor, uint16_t *paramsLength,
                                  RecordSize *size) {
    if (cursor == nullptr || paramsLength == nullptr || size == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    PacketCursor probe = *cursor;
    RecordSize decoded{};
    const TrovResult r = structDecCalc(d, d.record, &probe, &decoded);
    if (r != TROV_RESULT_OK) return r;
    *paramsLength = static_cast<uint16_t>(probe.position - cursor->position);
    *size = decoded;
    return TROV_RESULT_OK;
}

void *structuredReplyDecode(const Plan &d, void *record, PacketCursor *cursor) {
    if (record == nullptr || cursor == nullptr) return record;
    return structDecode(d, cursor, record, static_cast<uint8_t *>(record) + roundUp8(uint32_t{d.record}));
}

} // namespace trov
