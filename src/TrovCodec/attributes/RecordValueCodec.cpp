// The record value codec's walks. Wire and record forms are described in
// RecordValueType.h.
#include "attributes/RecordValueCodec.h"

#include "attributes/ValueForms.h"
#include "engine/Cursor.h"
#include "engine/Sizing.h"

namespace trov {

namespace {

uint32_t lengthPrefix(FieldKind k) {
    return (k == FieldKind::Octets16 || k == FieldKind::Chars16) ? 2 : 1;
}

// Data-area bytes of a string of n bytes: the bytes rounded up to 8, and for
// character strings one spare byte more (nothing for an empty string).
uint32_t stringData(FieldKind k, uint32_t n) {
    const bool chars = k == FieldKind::Chars8 || k == FieldKind::Chars16;
    if (n == 0) return 0;
    return ((chars ? n + 1 : n) + 7) & ~7u;
}

uint32_t loadLength(FieldKind k, const uint8_t *head) {
    return lengthPrefix(k) == 2 ? loadField<uint16_t>(head, 0) : loadField<uint8_t>(head, 0);
}

} // namespace

TrovResult layoutEncCalc(const Layout &layout, const uint8_t *record, WireSize &packetBytes,
                         uint8_t isArray, uint8_t version) {
    for (int i = 0; i < layout.count; ++i) {
        const LayoutField f = layout.fields[i];
        const uint8_t *field = record + f.offset;
        switch (f.kind) {
        case FieldKind::U8: packetBytes.add(1); break;
        case FieldKind::U16: packetBytes.add(2); break;
        case FieldKind::U32: packetBytes.add(4); break;
        case FieldKind::Block12: packetBytes.add(12); break;
        case FieldKind::Octets8:
        case FieldKind::Octets16:
        case FieldKind::Chars8:
        case FieldKind::Chars16: {
            const uint32_t n = loadLength(f.kind, field);
            packetBytes.add(lengthPrefix(f.kind) + n);
            packetBytes.nullData |= n != 0 && loadField<const uint8_t *>(field, 8) == nullptr;
            break;
        }
        case FieldKind::U32List: {
            const uint32_t n = loadField<uint8_t>(field, 0);
            packetBytes.add(1 + 4 * n);
            packetBytes.nullData |= n != 0 && loadField<const uint8_t *>(field, 8) == nullptr;
            break;
        }
        case FieldKind::Attributes: {
            WireSize list;
            if (TrovResult r = attributeListEncCalc(loadField<const AttributeEntry *>(field, 8),
                                                    loadField<uint16_t>(field, 0), nestedFlag(isArray),
                                                    version, &list))
                return r;
            packetBytes.add(list);
            break;
        }
        }
    }
    return TROV_RESULT_OK;
}

void layoutEncode(const Layout &layout, PacketCursor &c, const uint8_t *record, uint8_t isArray,
                  uint8_t version) {
    for (int i = 0; i < layout.count; ++i) {
        const LayoutField f = layout.fields[i];
        const uint8_t *field = record + f.offset;
        switch (f.kind) {
        case FieldKind::U8: putValue(c, field, 1); break;
        case FieldKind::U16: putValue(c, field, 2); break;
        case FieldKind::U32: putValue(c, field, 4); break;
        case FieldKind::Block12: putBytes(&c, field, 12); break;
        case FieldKind::Octets8:
        case FieldKind::Octets16:
        case FieldKind::Chars8:
        case FieldKind::Chars16: {
            const uint32_t n = loadLength(f.kind, field);
            if (lengthPrefix(f.kind) == 2) putU16(c, static_cast<uint16_t>(n));
            else putU8(c, static_cast<uint8_t>(n));
            putBytes(&c, loadField<const uint8_t *>(field, 8), n);
            break;
        }
        case FieldKind::U32List: {
            const uint8_t n = loadField<uint8_t>(field, 0);
            const auto *values = loadField<const uint8_t *>(field, 8);
            putU8(c, n);
            for (uint32_t k = 0; k < n; ++k) putValue(c, values + 4 * k, 4);
            break;
        }
        case FieldKind::Attributes:
            attributeListEncode(c, loadField<const AttributeEntry *>(field, 8),
                                loadField<uint16_t>(field, 0), nestedFlag(isArray), version);
            break;
        }
    }
}

TrovResult layoutDecCalc(const Layout &layout, PacketCursor &cursor, Sizes &data, uint8_t isArray,
                         uint8_t version) {
    PacketCursor c = cursor;
    Sizes sizes;
    for (int i = 0; i < layout.count; ++i) {
        const FieldKind k = layout.fields[i].kind;
        int32_t budget = static_cast<int32_t>(c.remaining > 0x7FFFFFFF ? 0x7FFFFFFF : c.remaining);
        const uint32_t before = c.remaining;
        uint16_t record = 0;
        TrovResult r = TROV_RESULT_OK;
        switch (k) {
        case FieldKind::U8:
        case FieldKind::U16:
        case FieldKind::U32:
        case FieldKind::Block12: {
            const uint32_t n = k == FieldKind::U8 ? 1 : k == FieldKind::U16 ? 2 : k == FieldKind::U32 ? 4 : 12;
            if (lacks(c, n)) return TROV_RESULT_SHORT_INPUT;
            advance(c, n);
            continue;
        }
        case FieldKind::Octets8: r = sizeOctets8(c, record, budget); break;
        case FieldKind::Chars8: r = sizeChars8(c, record, budget); break;
        case FieldKind::Chars16: r = sizeChars16(c, record, budget); break;
        case FieldKind::U32List: r = sizeCountedU32s(c, record, budget); break;
        case FieldKind::Octets16: {
            if (lacks(c, 2)) return TROV_RESULT_SHORT_INPUT;
            const uint32_t n = loadU16(c.position);
            if (lacks(c, 2 + int64_t{n})) return TROV_RESULT_SHORT_INPUT;
            advance(c, 2 + n);
            record = static_cast<uint16_t>(16 + roundUp8u16(n));
            break;
        }
        case FieldKind::Attributes: {
            if (lacks(c, 2)) return TROV_RESULT_SHORT_INPUT;
            const uint16_t n = getU16(c);
            if (TrovResult e = attributeListDecCalc(c, n, nestedFlag(isArray), version, &sizes)) return e;
            continue;
        }
        }
        if (r != TROV_RESULT_OK) return r;
        // The sizing primitives report head and data; the head lives in the
        // fixed part of the record, so only the data counts here. Their 16-bit
        // figure can wrap for long strings: the extent comes from the length.
        const uint32_t consumed = before - c.remaining;
        const uint32_t extent = k == FieldKind::U32List
                                    ? 8u * ((consumed - 1) / 4)
                                    : stringData(k, consumed - lengthPrefix(k));
        sizes.add(static_cast<uint16_t>(record - 16), extent);
    }
    cursor = c;
    data.add(sizes.bytes, sizes.extent);
    return TROV_RESULT_OK;
}

uint8_t *layoutDecode(const Layout &layout, PacketCursor &c, uint8_t *record, uint8_t *data,
                      uint8_t isArray, uint8_t version) {
    for (int i = 0; i < layout.count; ++i) {
        const LayoutField f = layout.fields[i];
        uint8_t *field = record + f.offset;
        switch (f.kind) {
        case FieldKind::U8: storeField<uint8_t>(field, 0, getU8(c)); break;
        case FieldKind::U16: storeField<uint16_t>(field, 0, getU16(c)); break;
        case FieldKind::U32: storeField<uint32_t>(field, 0, getU32(c)); break;
        case FieldKind::Block12: getBytes(c, field, 12); break;
        case FieldKind::Octets8:
        case FieldKind::Octets16:
        case FieldKind::Chars8:
        case FieldKind::Chars16: {
            const uint32_t n = lengthPrefix(f.kind) == 2 ? getU16(c) : getU8(c);
            if (lengthPrefix(f.kind) == 2) storeField<uint16_t>(field, 0, static_cast<uint16_t>(n));
            else storeField<uint8_t>(field, 0, static_cast<uint8_t>(n));
            storeField<uint8_t *>(field, 8, n != 0 ? data : nullptr);
            getBytes(c, data, n);
            data += stringData(f.kind, n);
            break;
        }
        case FieldKind::U32List: {
            const uint8_t n = getU8(c);
            storeField<uint8_t>(field, 0, n);
            storeField<uint8_t *>(field, 8, n != 0 ? data : nullptr);
            getU32Array(c, data, n);
            data += 8u * n; // the size pass reserves 8 bytes per value
            break;
        }
        case FieldKind::Attributes: {
            const uint16_t n = getU16(c);
            storeField<uint16_t>(field, 0, n);
            auto *entries = reinterpret_cast<AttributeEntry *>(data);
            storeField<AttributeEntry *>(field, 8, n != 0 ? entries : nullptr);
            data = attributeListDecode(c, n, entries, data + 16u * n, nestedFlag(isArray), version);
            break;
        }
        }
    }
    return data;
}

namespace {

// The layout of a value: its own, or the variant its selector byte names.
const Layout *variantOf(const RecordValueShape &s, uint8_t selector) {
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
        if (s.layout != nullptr) return layoutEncCalc(*s.layout, e, total, isArray, version);
        const Layout *v = variantOf(s, e[0]);
        if (v == nullptr) return TROV_RESULT_NULL_ARGUMENT; // selector outside 1 to 4
        total.add(1);
        return layoutEncCalc(*v, e + kVariantOffset, total, isArray, version);
    };
    if (s.prefixBytes == 0 || isArray == 0) {
        if (TrovResult r = element(record)) return r;
    } else {
        const uint16_t n = arrayCount(record, 2);
        const auto *e = static_cast<const uint8_t *>(arrayElements(record));
        if (n != 0 && e == nullptr) return TROV_RESULT_NULL_ARGUMENT; // their fields give the size
        const uint32_t stride = s.layout != nullptr ? s.layout->fixedBytes : 0;
        total.add(2);
        for (uint32_t i = 0; i < n; ++i, e += stride)
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
        if (s.layout != nullptr) return layoutEncode(*s.layout, c, e, isArray, version);
        const Layout *v = variantOf(s, e[0]);
        if (v == nullptr) return;
        putU8(c, e[0]);
        layoutEncode(*v, c, e + kVariantOffset, isArray, version);
    };
    if (s.prefixBytes == 0 || isArray == 0) return element(record);
    const uint16_t n = arrayCount(record, 2);
    putU16(c, n);
    const auto *e = static_cast<const uint8_t *>(arrayElements(record));
    for (uint32_t i = 0; i < n; ++i, e += s.layout->fixedBytes) element(e);
}

TrovResult recordDecCalc(const RecordValueShape &s, PacketCursor *cursor, uint8_t isArray,
                         RecordSize *out, uint8_t version) {
    PacketCursor c = *cursor;
    Sizes sizes;
    auto element = [&]() -> TrovResult {
        if (s.layout != nullptr) {
            sizes.add(s.layout->fixedBytes, s.layout->fixedBytes);
            return layoutDecCalc(*s.layout, c, sizes, isArray, version);
        }
        if (lacks(c, 1)) return TROV_RESULT_SHORT_INPUT;
        const Layout *v = variantOf(s, c.position[0]);
        if (v == nullptr) return TROV_RESULT_BAD_VALUE;
        advance(c, 1);
        const uint32_t fixed = (kVariantOffset + v->fixedBytes + 7) & ~7u;
        sizes.add(static_cast<uint16_t>(fixed), fixed);
        return layoutDecCalc(*v, c, sizes, isArray, version);
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
        const Layout *v = variantOf(s, selector);
        uint8_t *data = base + ((kVariantOffset + v->fixedBytes + 7) & ~7u);
        return alignUp8(layoutDecode(*v, c, base + kVariantOffset, data, isArray, version));
    }
    const uint32_t stride = s.layout->fixedBytes;
    if (s.prefixBytes == 0 || isArray == 0)
        return alignUp8(layoutDecode(*s.layout, c, base, base + stride, isArray, version));
    const uint16_t n = getU16(c);
    uint8_t *elements = storeArrayHeader(base, n, 2);
    uint8_t *data = elements + n * stride;
    for (uint32_t i = 0; i < n; ++i) data = layoutDecode(*s.layout, c, elements + i * stride, data, isArray, version);
    return alignUp8(data);
}

} // namespace trov
