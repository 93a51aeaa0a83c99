// The record value codec: one implementation for every record value type,
// instantiated per type with its plans (see RecordValueType.h). The fields of
// an element are run by the field model's walker; this codec adds the value
// forms around them: scalar or array form, and the selector.
#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include "attributes/AttributeList.h"
#include "attributes/RecordValueType.h"

namespace trov {

// The four operations over a whole value (scalar or array form, or selector).
struct RecordValueShape {
    uint8_t prefixBytes;
    const Plan *layout;                  // null for a selector type
    const std::array<Plan, 4> *variants; // a selector type's variants
};
TrovResult recordEncCalc(const RecordValueShape &s, const void *value, uint8_t isArray,
                         WireSize *packetBytes, uint8_t version);
void recordEncode(const RecordValueShape &s, PacketCursor *cursor, const void *value,
                  uint8_t isArray, uint8_t version);
TrovResult recordDecCalc(const RecordValueShape &s, PacketCursor *cursor, uint8_t isArray,
                         RecordSize *out, uint8_t version);
void *recordDecode(const RecordValueShape &s, void *record, PacketCursor *cursor, uint8_t isArray,
                   uint8_t version);

template <const RecordValueType *Types, size_t I>
struct RecordValueCodec {
    static constexpr const RecordValueType &T = Types[I];
    static constexpr bool kSelector = T.variants != nullptr;
    static constexpr Plan kLayout = valuePlan(T.fields);
    static constexpr std::array<Plan, 4> kVariants =
        kSelector ? std::array<Plan, 4>{valuePlan(T.variants->variant[0]), valuePlan(T.variants->variant[1]),
                                        valuePlan(T.variants->variant[2]), valuePlan(T.variants->variant[3])}
                  : std::array<Plan, 4>{};
    static_assert(kSelector ? kVariants[0].count && kVariants[1].count && kVariants[2].count &&
                                  kVariants[3].count
                            : kLayout.count != 0 && kLayout.valid,
                  "a value type without fields");
    static_assert(T.prefixBytes == 0 || T.prefixBytes == 2);
    static_assert(!kSelector || T.prefixBytes == 0, "selector types have the scalar form only");
    static constexpr RecordValueShape kShape{T.prefixBytes, kSelector ? nullptr : &kLayout, &kVariants};

    static TrovResult encCalc(const void *v, uint8_t a, WireSize *size, uint8_t ver) {
        return recordEncCalc(kShape, v, a, size, ver);
    }
    static void encode(PacketCursor *c, const void *v, uint8_t a, uint8_t ver) {
        recordEncode(kShape, c, v, a, ver);
    }
    static TrovResult decCalc(PacketCursor *c, uint8_t a, RecordSize *out, uint8_t ver) {
        return recordDecCalc(kShape, c, a, out, ver);
    }
    static void *decode(void *r, PacketCursor *c, uint8_t a, uint8_t ver) {
        return recordDecode(kShape, r, c, a, ver);
    }
    static constexpr ValueCodecOps ops{encCalc, encode, decCalc, decode};
};

template <const RecordValueType *Types, size_t... I>
constexpr std::array<ValueCodecOps, sizeof...(I)> recordValueOps(std::index_sequence<I...>) {
    return {RecordValueCodec<Types, I>::ops...};
}

} // namespace trov
