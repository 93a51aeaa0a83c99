// The fixed-size value codec: one implementation for every type whose wire
// element has a fixed size, instantiated per type with the type's constants.
//
// Wire, scalar form: the element's fields, big-endian, no padding.
// Wire, array form (types with a count prefix): the count in P bytes, then
// count elements. Scalar-only types ignore the array flag entirely.
// Record, array form: an AttributeArrayHeader, then the element records one
// after another at the element record stride M.
#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include "attributes/FixedValueType.h"
#include "attributes/ValueForms.h"
#include "engine/FieldWalker.h"

namespace trov {

template <const FixedValueType *Types, size_t I>
struct FixedValueCodec {
    static constexpr const FixedValueType &T = Types[I];
    static_assert(T.consistent(), "fixed-size type constants disagree");
    static constexpr bool kArrays = T.prefixBytes != 0;

    // The element's fields go through the field model's walker; its decode
    // pass reads missing bytes as 0 (a narrow length test can let an element
    // through that the packet does not fully hold).
    static constexpr std::array<Plan, 1> kElements{T.plan()};
    static constexpr const Plan &kElement = kElements[0];
    using Element = PlanWalk<kElements, 0>;
    static void putElement(PacketCursor &c, const uint8_t *record) { walkEncode(kElement, c, record, {}); }
    static void getElement(PacketCursor &c, uint8_t *record) { walkDecode(kElement, c, record, nullptr, {}); }

    static TrovResult encCalc(const void *value, uint8_t isArray, WireSize *packetBytes, uint8_t) {
        if (!kArrays || isArray == 0) {
            *packetBytes = WireSize::of(T.wireBytes);
            packetBytes->nullData = value == nullptr;
            return TROV_RESULT_OK;
        }
        if (value == nullptr) return TROV_RESULT_NULL_ARGUMENT; // the count is in it
        const uint32_t n = arrayCount(value, T.prefixBytes);
        const uint32_t total = T.prefixBytes + n * T.wireBytes;
        if ((T.checks & kOverflowCheck) && total > 0xFFFF) return TROV_RESULT_SHORT_INPUT;
        *packetBytes = WireSize::of(total);
        packetBytes->nullData = n != 0 && arrayElements(value) == nullptr;
        return TROV_RESULT_OK;
    }

    static void encode(PacketCursor *cursor, const void *value, uint8_t isArray, uint8_t) {
        PacketCursor &c = *cursor;
        if (!kArrays || isArray == 0) {
            putElement(c, static_cast<const uint8_t *>(value));
            return;
        }
        const uint16_t n = arrayCount(value, T.prefixBytes);
        putCount(c, n, T.prefixBytes);
        const auto *element = static_cast<const uint8_t *>(arrayElements(value));
        // Elements of fixed fields go out back to back when the packet has
        // room for them all; otherwise one by one, each bounded.
        if constexpr (Element::kFixedOnly)
            if (n != 0 && Element::encodeRecords(c, element, n, T.recordBytes)) return;
        for (uint32_t i = 0; i < n; ++i, element += T.recordBytes) putElement(c, element);
    }

    static TrovResult decCalc(PacketCursor *cursor, uint8_t isArray, RecordSize *out, uint8_t) {
        PacketCursor &c = *cursor;
        if (!kArrays || isArray == 0) {
            if (lacks(c, T.wireBytes)) return TROV_RESULT_SHORT_INPUT;
            advance(c, T.wireBytes);
            const uint16_t bytes = kArrays ? roundUp8u16(T.recordBytes) : T.recordBytes;
            *out = RecordSize{bytes, bytes};
            return TROV_RESULT_OK;
        }
        constexpr bool narrow = (T.checks & kNarrowPrefixTest) != 0;
        // The narrow test asks for one byte before reading two; a packet that
        // really holds one byte cannot carry the count, and nothing is read
        // beyond it.
        if (lacks(c, narrow ? 1 : T.prefixBytes) || c.remaining < T.prefixBytes)
            return TROV_RESULT_SHORT_INPUT;
        const uint32_t n = T.prefixBytes == 1 ? c.position[0] : loadU16(c.position);
        const int64_t elementBytes = int64_t{n} * T.wireBytes;
        if (int64_t{c.remaining} - (narrow ? 1 : T.prefixBytes) - elementBytes < 0)
            return TROV_RESULT_SHORT_INPUT;
        skipClamped(c, T.prefixBytes + static_cast<uint32_t>(elementBytes));
        const uint32_t records = n * T.recordBytes;
        *out = RecordSize{static_cast<uint16_t>(roundUp8u16(records) + 16),
                          16 + roundUp8(records)};
        return TROV_RESULT_OK;
    }

    static void *decode(void *record, PacketCursor *cursor, uint8_t isArray, uint8_t) {
        PacketCursor &c = *cursor;
        auto *base = static_cast<uint8_t *>(record);
        if (!kArrays || isArray == 0) {
            getElement(c, base);
            return alignUp8(base + T.layoutBytes());
        }
        const uint16_t n = getCount(c, T.prefixBytes);
        uint8_t *element = storeArrayHeader(base, n, T.prefixBytes);
        if (n == 0) return element;
        for (uint32_t i = 0; i < n; ++i, element += T.recordBytes) getElement(c, element);
        return alignUp8(element);
    }

    static constexpr ValueCodecOps ops{encCalc, encode, decCalc, decode};
};

template <const FixedValueType *Types, size_t... I>
constexpr std::array<ValueCodecOps, sizeof...(I)> fixedValueOps(std::index_sequence<I...>) {
    return {FixedValueCodec<Types, I>::ops...};
}

} // namespace trov
