// The record value codec: one implementation for every record value type,
// instantiated per type with its parsed field string (see RecordValueType.h).
#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include "attributes/AttributeList.h"
#include "attributes/RecordValueType.h"

namespace trov {

// The generic walks over one element of a layout.
// Adds the packet bytes of one element to packetBytes (marking nullData for
// a null pointer behind a non-zero length or count); 1 for a nested list whose
// entries are null behind a non-zero count.
TrovResult layoutEncCalc(const Layout &layout, const uint8_t *record, WireSize &packetBytes,
                         uint8_t isArray, uint8_t version);
void layoutEncode(const Layout &layout, PacketCursor &cursor, const uint8_t *record,
                  uint8_t isArray, uint8_t version);
// Checks the packet holds one element, moves past it, and adds the bytes of
// its data area (not its fixed part).
TrovResult layoutDecCalc(const Layout &layout, PacketCursor &cursor, Sizes &data, uint8_t isArray,
                         uint8_t version);
// Reads one element into `record`, its variable data from `data` on;
// returns where the data area ends.
uint8_t *layoutDecode(const Layout &layout, PacketCursor &cursor, uint8_t *record, uint8_t *data,
                      uint8_t isArray, uint8_t version);

// The four operations over a whole value (scalar or array form, or selector).
struct RecordValueShape {
    uint8_t prefixBytes;
    const Layout *layout;                 // null for a selector type
    const std::array<Layout, 4> *variants; // a selector type's variants
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
    static constexpr bool kSelector = T.fields == nullptr;
    static constexpr Layout kLayout = parseLayout(T.fields);
    static constexpr std::array<Layout, 4> kVariants{parseLayout(T.variants[0]), parseLayout(T.variants[1]),
                                                     parseLayout(T.variants[2]), parseLayout(T.variants[3])};
    static_assert(kSelector ? kVariants[0].valid && kVariants[1].valid && kVariants[2].valid &&
                                  kVariants[3].valid
                            : kLayout.valid,
                  "a field string does not parse");
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
