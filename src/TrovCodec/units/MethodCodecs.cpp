// The four walks over a method side's derived plan, and the structured replies.
//
// Wire: the fields in order, big-endian, no padding; a counted part is its
// count (u8 or u16) and then its elements. Record: the fixed part (scalars at
// natural alignment, blocks as they stand, 16-byte heads 8-aligned), then
// each counted part's elements in field order, each 8-aligned. The size pass
// checks every byte it walks against the cursor; the decode pass trusts it:
// the method body always sizes the same bytes first and gives the record the
// extent the size pass reported.
#include "units/MethodCodecs.h"

#include "engine/Cursor.h"

namespace trov {
namespace {

constexpr uint32_t pad8(uint32_t n) { return (n + 7u) & ~7u; }

constexpr bool isCounted(MethodFieldKind kind) {
    return kind == MethodFieldKind::List || kind == MethodFieldKind::Chars;
}

// Record room of a counted part's elements: characters keep a terminating
// zero, and an empty string keeps nothing.
constexpr uint32_t partRoom(const MethodStep &s, uint32_t n) {
    if (s.kind == MethodFieldKind::Chars) return n == 0 ? 0 : pad8(n + 1);
    return pad8(n * s.width);
}

uint32_t headCount(const uint8_t *record, const MethodStep &s) {
    return s.countBytes == 1 ? loadField<uint8_t>(record, s.offset) : loadField<uint16_t>(record, s.offset);
}

const uint8_t *headElements(const uint8_t *record, const MethodStep &s) {
    return loadField<const uint8_t *>(record, s.offset + 8u);
}

} // namespace

TrovResult methodEncCalc(const MethodPlan &plan, const void *params, uint16_t *wireBytes) {
    if (wireBytes == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (plan.count == 0) {
        *wireBytes = 0;
        return TROV_RESULT_OK;
    }
    if (params == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const auto *record = static_cast<const uint8_t *>(params);
    uint32_t total = plan.prefix;
    for (uint8_t k = 0; k < plan.count; ++k) {
        const MethodStep &s = plan.steps[k];
        if (!isCounted(s.kind)) continue;
        const uint32_t n = headCount(record, s);
        if (n != 0 && headElements(record, s) == nullptr) return TROV_RESULT_NULL_ARGUMENT;
        total += n * s.width;
    }
    // A u16 length or count near its top would not fit the 16-bit size.
    if (total > 0xFFFFu) return TROV_RESULT_SHORT_INPUT;
    *wireBytes = static_cast<uint16_t>(total);
    return TROV_RESULT_OK;
}

void methodEncode(const MethodPlan &plan, PacketCursor *cursor, const void *params) {
    if (cursor == nullptr || cursor->position == nullptr || params == nullptr) return;
    PacketCursor &c = *cursor;
    const auto *record = static_cast<const uint8_t *>(params);
    for (uint8_t k = 0; k < plan.count; ++k) {
        const MethodStep &s = plan.steps[k];
        switch (s.kind) {
        case MethodFieldKind::Scalar: putValue(c, record + s.offset, s.width); break;
        case MethodFieldKind::Block: putBytes(&c, record + s.offset, s.width); break;
        case MethodFieldKind::List:
        case MethodFieldKind::Chars: {
            const uint32_t n = headCount(record, s);
            if (s.countBytes == 1)
                putU8(c, static_cast<uint8_t>(n));
            else
                putU16(c, static_cast<uint16_t>(n));
            const uint8_t *elements = headElements(record, s);
            if (s.width == 1) {
                putBytes(&c, elements, n);
                break;
            }
            for (uint32_t i = 0; i < n; ++i) putValue(c, elements + i * s.width, s.width);
            break;
        }
        case MethodFieldKind::End: break;
        }
    }
}

TrovResult methodDecCalc(const MethodPlan &plan, const PacketCursor *cursor, uint16_t *paramsLength,
                         RecordSize *size) {
    if (cursor == nullptr || paramsLength == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (plan.count != 0 && cursor->position == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const uint8_t *wire = cursor->position;
    const uint64_t have = cursor->remaining;
    uint64_t at = 0; // wire bytes walked; 64-bit so no sum wraps
    uint16_t bytes = plan.record;
    uint32_t extent = plan.record;
    for (uint8_t k = 0; k < plan.count; ++k) {
        const MethodStep &s = plan.steps[k];
        if (!isCounted(s.kind)) {
            at += s.width; // tested with whatever follows, or at the end
            continue;
        }
        if (have < at + s.countBytes) return TROV_RESULT_SHORT_INPUT;
        const uint32_t n = s.countBytes == 1 ? wire[at] : loadU16(wire + at);
        at += s.countBytes + uint64_t{n} * s.width;
        if (have < at) return TROV_RESULT_SHORT_INPUT;
        const uint32_t room = partRoom(s, n);
        bytes = static_cast<uint16_t>(bytes + room); // the protocol's 16-bit figure
        extent += room;
    }
    if (have < at) return TROV_RESULT_SHORT_INPUT;
    *paramsLength = plan.reportsLength ? static_cast<uint16_t>(at) : uint16_t{0};
    *size = RecordSize{bytes, extent};
    return TROV_RESULT_OK;
}

void *methodDecode(const MethodPlan &plan, void *record, PacketCursor *cursor) {
    if (record == nullptr || cursor == nullptr) return record;
    PacketCursor &c = *cursor;
    auto *base = static_cast<uint8_t *>(record);
    uint8_t *data = base + plan.record; // a multiple of 8
    for (uint8_t k = 0; k < plan.count; ++k) {
        const MethodStep &s = plan.steps[k];
        switch (s.kind) {
        case MethodFieldKind::Scalar:
            if (s.width == 1) storeField(base, s.offset, getU8(c));
            if (s.width == 2) storeField(base, s.offset, getU16(c));
            if (s.width == 4) storeField(base, s.offset, getU32(c));
            break;
        case MethodFieldKind::Block: getBytes(c, base + s.offset, s.width); break;
        case MethodFieldKind::List:
        case MethodFieldKind::Chars: {
            const uint32_t n = s.countBytes == 1 ? getU8(c) : getU16(c);
            if (s.countBytes == 1)
                storeField(base, s.offset, static_cast<uint8_t>(n));
            else
                storeField(base, s.offset, static_cast<uint16_t>(n));
            storeField(base, s.offset + 8u, n == 0 ? nullptr : data);
            if (n == 0) break;
            if (s.width == 1) getBytes(c, data, n);
            if (s.width == 2) getU16Array(c, data, n);
            if (s.width == 4) getU32Array(c, data, n);
            if (s.kind == MethodFieldKind::Chars) data[n] = 0;
            data += partRoom(s, n);
            break;
        }
        case MethodFieldKind::End: break;
        }
    }
    return data;
}

TrovResult structuredReplyDecCalc(const StructField *d, const PacketCursor *cursor, uint16_t *paramsLength,
                                  RecordSize *size) {
    if (d == nullptr || cursor == nullptr || paramsLength == nullptr || size == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    PacketCursor probe = *cursor;
    RecordSize decoded{};
    const TrovResult r = structDecCalc(d, structRecordSize(d), &probe, &decoded);
    if (r != TROV_RESULT_OK) return r;
    *paramsLength = static_cast<uint16_t>(probe.position - cursor->position);
    *size = decoded;
    return TROV_RESULT_OK;
}

void *structuredReplyDecode(const StructField *d, void *record, PacketCursor *cursor) {
    if (d == nullptr || record == nullptr || cursor == nullptr) return record;
    return structDecode(d, cursor, record, static_cast<uint8_t *>(record) + pad8(structRecordSize(d)));
}

} // namespace trov
