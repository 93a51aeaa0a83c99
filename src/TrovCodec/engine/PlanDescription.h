// The public description of a plan (TrovLayout.h), built at compile time
// from the plan the codecs run on.
//
// A description is a TrovLayoutInfo (TrovLayout.h) pointing at a constant
// array of TrovFieldInfo, both static data of the library. Fields without a
// member name of their own get a generated one: the kind's group and the
// field's index in the layout (value3, string1, ...).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "TrovLayout.h"
#include "engine/Field.h"

namespace trov {

// The public kind numbers are the field model's.
static_assert(TROV_KIND_U8 == int(FieldKind::U8) && TROV_KIND_RESERVED == int(FieldKind::Reserved8) &&
              TROV_KIND_BYTES12 == int(FieldKind::Bytes12) && TROV_KIND_WIDE_U32S == int(FieldKind::WideU32s) &&
              TROV_KIND_U32U8_ITEMS == int(FieldKind::U32ByteItems) && TROV_KIND_REST == int(FieldKind::Rest) &&
              TROV_KIND_COUNT == int(FieldKind::Count) && TROV_KIND_ATTRIBUTE == int(FieldKind::Attribute) &&
              TROV_KIND_RESERVED_VALUE == int(FieldKind::ReservedValue) &&
              TROV_KIND_EVENT_ATTRIBUTES == int(FieldKind::EventAttributes) &&
              TROV_KIND_BUFFER == int(FieldKind::Buffer));

namespace layout_names {

inline constexpr size_t kKindCount = std::size(kKinds);

struct Table {
    char text[kKindCount][kMaxFields][16];
};

// Each kind's generated names, "value0" to "attributes23", made once.
inline constexpr Table kTable = [] {
    Table t{};
    for (size_t k = 0; k < kKindCount; ++k)
        for (int i = 0; i < kMaxFields; ++i) {
            int n = 0;
            for (const char *p = kKinds[k].member; *p != '\0'; ++p) t.text[k][i][n++] = *p;
            if (i >= 10) t.text[k][i][n++] = static_cast<char>('0' + i / 10);
            t.text[k][i][n++] = static_cast<char>('0' + i % 10);
        }
    return t;
}();

constexpr const char *nameOf(FieldKind k, int index) {
    if (k == FieldKind::Buffer) return "buffer";
    return kTable.text[static_cast<size_t>(k)][index];
}

} // namespace layout_names

// One field of a plan (or of a plan-shaped list whose offsets are set), at
// `index`; `counted` tells that the field before it holds its count.
constexpr TrovFieldInfo describeField(const Field &f, int index, bool countBefore, bool nestable = false) {
    const KindInfo &k = kindInfo(f.kind);
    const bool attributes = f.kind == FieldKind::Attributes || f.kind == FieldKind::EventAttributes;
    const bool pointerOnly = k.counted && f.prefix == 0 && f.kind != FieldKind::Rest;
    TrovFieldInfo out{};
    out.name = f.name != nullptr ? f.name : layout_names::nameOf(f.kind, index);
    out.kind = k.name;
    out.kindId = static_cast<uint8_t>(f.kind);
    out.offset = f.offset;
    out.dataOffset = f.data;
    out.countField = countBefore && pointerOnly ? static_cast<int16_t>(index - 1) : int16_t{-1};
    uint32_t width = k.record;
    switch (f.kind) {
    case FieldKind::Bytes: width = f.size; break;
    case FieldKind::Count:
        width = f.prefix;
        out.countBytes = f.prefix;
        if (nestable) out.countRecordBytes = f.prefix == 1 ? 1 : 2; // a structured record's counts are 16-bit
        break;
    case FieldKind::Attribute:
    case FieldKind::TypedValue:
    case FieldKind::ReservedValue: width = f.data + 8u - f.offset; break;
    case FieldKind::Record: width = f.size; break;
    case FieldKind::Options:
        out.countBytes = 1;
        out.countRecordBytes = 1;
        break;
    default: break;
    }
    if (f.kind == FieldKind::Records) { // the slot without records to the pointer with them
        width = f.data + 8u - f.offset;
    } else if (attributes) { // a u16 count and the entries' pointer: an AttributeList head
        out.countBytes = 2;
        out.countRecordBytes = 2;
        out.dataOffset = static_cast<uint16_t>(f.offset + 8);
    } else if (pointerOnly) {
        width = 8;
    } else if (k.counted) { // a 16-byte head: the count at +0, the pointer at +8
        out.countBytes = f.prefix;
        out.countRecordBytes = f.countWidth != 0 ? f.countWidth : f.prefix != 0 ? f.prefix : 2;
    }
    out.width = static_cast<uint16_t>(width);
    return out;
}

// The fields of a layout, at most kMaxFields.
struct FieldList {
    std::array<TrovFieldInfo, kMaxFields> at{};
    uint16_t count = 0;
};

constexpr FieldList describePlan(const Plan &p) {
    FieldList out;
    for (uint8_t i = 0; i < p.count; ++i)
        out.at[out.count++] =
            describeField(p.fields[i], i, i > 0 && p.fields[i - 1].kind == FieldKind::Count, p.rules.nestable);
    return out;
}

// A list cut to its length, as static data.
template <class Maker, size_t I>
inline constexpr auto kFieldArray = [] {
    constexpr FieldList all = Maker::make(I);
    std::array<TrovFieldInfo, all.count> out{};
    for (size_t k = 0; k < all.count; ++k) out[k] = all.at[k];
    return out;
}();

template <class Maker, size_t I>
constexpr const TrovFieldInfo *fieldArray() {
    if constexpr (kFieldArray<Maker, I>.size() == 0) return nullptr;
    else return kFieldArray<Maker, I>.data();
}

template <class Maker, size_t I>
constexpr uint16_t fieldCount() {
    return static_cast<uint16_t>(kFieldArray<Maker, I>.size());
}

} // namespace trov
