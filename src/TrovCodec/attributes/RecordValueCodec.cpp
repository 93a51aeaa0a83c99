// The record value codec's frame: scalar or array form, and the selector.
// The fields of each element go through the field model's walker.
#include "attributes/RecordValueCodec.h"

#include "attributes/ValueForms.h"
#include "engine/FieldWalker.h"

namespace trov {

namespace {

FieldEnv valueEnv(uint8_t isArray, uint8_t version) {
    FieldEnv env;
    env.version = version;
    env.nesting = isArray;
    env.attributes = &kNestedAttributeLists;
    return env;
}

} // namespace

namespace {

// The layout of a value: its own, or the variant its selector byte names.
const Plan *variantOf(const RecordValueShape &s, uint8_t selector) {
    if (s.layout != nullptr) return s.layout;
    if (selector < 1 || selector > 4) return nullptr;
    return &(*s.variants)[selector - 1];
}

constexpr uint32_t kVariantOffset = 8; // a selector record's variant part

} // namespace

TrovResult recordEncCalc(const RecordValueShape &s, const void *value, uint8_t isArray,
                         WireSize *packetBytes, uint8_t version) {
    if (value == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const auto *record = static_cast<const uint8_t *>(value);
    WireSize total;
    auto element = [&](const uint8_t *e) -> TrovResult {
        if (s.layout != nullptr) return walkEncCalc(*s.layout, e, total, valueEnv(isArray, version));
        const Plan *v = variantOf(s, e[0]);
        if (v == nullptr) return TROV_RESULT_NULL_ARGUMENT; // selector outside 1 to 4
        total.add(1);
        return walkEncCalc(*v, e + kVariantOffset, total, valueEnv(isArray, version));
    };
    if (s.prefixBytes == 0 || isArray == 0) {
        if (TrovResult r = element(record)) return r;
    } else {
        const uint16_t n = arrayCount(record, 2);
        const auto *e = static_cast<const uint8_t *>(arrayElements(record));
        if (n != 0 && e == nullptr) return TROV_RESULT_NULL_ARGUMENT; // their fields give the size
        const uint32_t stride = s.layout != nullptr ? s.layout->record : 0;
        total.add(2);
        // Refused whatever follows past the sizing limit (WireSize::kSizingLimit).
        for (uint32_t i = 0; i < n && !total.pastLimit(); ++i, e += stride)
            if (TrovResult r = element(e)) return r;
    }
    *packetBytes = total;
    return TROV_RESULT_OK;
}

void recordEncode(const RecordValueShape &s, PacketCursor *cursor, const void *value,
                  uint8_t isArray, uint8_t version) {
    PacketCursor &c = *cursor;
    const auto *record = static_cast<const uint8_t *>(value);
    auto element = [&](const uint8_t *e) {
        if (s.layout != nullptr) return walkEncode(*s.layout, c, e, valueEnv(isArray, version));
        const Plan *v = variantOf(s, e[0]);
        if (v == nullptr) return;
        putU8(c, e[0]);
        walkEncode(*v, c, e + kVariantOffset, valueEnv(isArray, version));
    };
    if (s.prefixBytes == 0 || isArray == 0) return element(record);
    const uint16_t n = arrayCount(record, 2);
    putU16(c, n);
    const auto *e = static_cast<const uint8_t *>(arrayElements(record));
    for (uint32_t i = 0; i < n; ++i, e += s.layout->record) element(e);
}

TrovResult recordDecCalc(const RecordValueShape &s, PacketCursor *cursor, uint8_t isArray,
                         RecordSize *out, uint8_t version) {
    PacketCursor c = *cursor;
    Sizes sizes;
    auto element = [&]() -> TrovResult {
        if (s.layout != nullptr) {
            sizes.add(s.layout->record, s.layout->record);
            return walkDecCalc(*s.layout, c, sizes, valueEnv(isArray, version));
        }
        if (lacks(c, 1)) return TROV_RESULT_SHORT_INPUT;
        const Plan *v = variantOf(s, c.position[0]);
        if (v == nullptr) return TROV_RESULT_BAD_VALUE;
        advance(c, 1);
        const uint32_t fixed = roundUp8(uint32_t{kVariantOffset} + v->record);
        sizes.add(static_cast<uint16_t>(fixed), fixed);
        return walkDecCalc(*v, c, sizes, valueEnv(isArray, version));
    };
    if (s.prefixBytes == 0 || isArray == 0) {
        if (TrovResult r = element()) return r;
    } else {
        if (lacks(c, 2)) return TROV_RESULT_SHORT_INPUT;
        const uint16_t n = getU16(c);
        sizes.add(16, 16);
        for (uint32_t i = 0; i < n; ++i)
            if (TrovResult r = element()) return r;
    }
    *cursor = c;
    *out = RecordSize{sizes.bytes, sizes.extent};
    return TROV_RESULT_OK;
}

void *recordDecode(const RecordValueShape &s, void *record, PacketCursor *cursor, uint8_t isArray,
                   uint8_t version) {
    PacketCursor &c = *cursor;
    auto *base = static_cast<uint8_t *>(record);
    if (s.layout == nullptr) { // selector types have the scalar form only
        const uint8_t selector = getU8(c);
        base[0] = selector;
        const Plan *v = variantOf(s, selector);
        uint8_t *data = base + roundUp8(uint32_t{kVariantOffset} + v->record);
        return alignUp8(walkDecode(*v, c, base + kVariantOffset, data, valueEnv(isArray, version)));
    }
    const uint32_t stride = s.layout->record;
    if (s.prefixBytes == 0 || isArray == 0)
        return alignUp8(walkDecode(*s.layout, c, base, base + stride, valueEnv(isArray, version)));
    const uint16_t n = getU16(c);
    uint8_t *elements = storeArrayHeader(base, n, 2);
    uint8_t *data = elements + n * stride;
    for (uint32_t i = 0; i < n; ++i) data = walkDecode(*s.layout, c, elements + i * stride, data, valueEnv(isArray, version));
    return alignUp8(data);
}

} // namespace trov
