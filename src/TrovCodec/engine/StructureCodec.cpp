// Descriptor-driven structure codec: one walk, four passes.
//
// A structure travels as its fields in descriptor order, unpadded: big-endian
// scalars, raw counted bytes, nested records inline, option lists (u8 count,
// then kind, length, value per option), counted arrays of nested records and
// attribute values (u16 identifier, u16 length, value). walk() owns what the
// four operations share (field order, record offsets, the pending count and
// the nesting bound); each pass supplies what one operation does per kind.
#include "engine/StructureCodec.h"

#include <cstring>

#include "engine/Cursor.h"

namespace trov {
namespace {

// Attribute values inside structures are looked up with version 0, whatever
// the packet's version: only rows that serve every version are found.
constexpr uint8_t kAttributeVersion = 0;
// Nested attribute values are always in array form. The flag they get is
// non-zero and also tells their codecs how deep the value is nested, so that
// structures inside attributes inside structures stay bounded.
uint8_t attributeFlag(uint32_t level) {
    return static_cast<uint8_t>(level + 1 < 0xFF ? level + 1 : 0xFF);
}

// The in-memory image of a scalar, host order. Only widths 1, 2, 4 and 8 have
// one; other widths leave it zero (their offset rule restarts the record).
using ScalarImage = uint8_t[8];

bool hasImage(uint16_t width) { return width == 1 || width == 2 || width == 4 || width == 8; }


void imageFromRecord(const uint8_t *field, uint16_t width, ScalarImage &image) {
    if (hasImage(width)) std::memcpy(image, field, width);
}

void imageFromWire(const uint8_t *wire, uint16_t width, ScalarImage &image) {
    switch (width) {
    case 1: image[0] = wire[0]; break;
    case 2: {
        const uint16_t v = loadU16(wire);
        std::memcpy(image, &v, 2);
        break;
    }
    case 4: {
        const uint32_t v = loadU32(wire);
        std::memcpy(image, &v, 4);
        break;
    }
    case 8: {
        const uint64_t v = (uint64_t{loadU32(wire)} << 32) | loadU32(wire + 4);
        std::memcpy(image, &v, 8);
        break;
    }
    default: break;
    }
}

// A count-flagged scalar's count: a byte, or the first two bytes in memory
// read as a u16 (so a 4-byte count is taken as 16 bits).
uint16_t countOf(const ScalarImage &image, uint16_t width) {
    if (width == 1) return image[0];
    uint16_t v;
    std::memcpy(&v, image, 2);
    return v;
}

// Walks descriptor d with one pass. A hook's non-zero result ends the walk
// and is returned; so is 5 when the nesting bound is reached.
template <class Pass>
TrovResult walk(const StructField *d, Pass &pass) {
    if (pass.level > kMaxStructDepth) return TROV_RESULT_SHORT_INPUT;
    uint16_t offset = 0;
    uint16_t count = 0;
    for (const StructField *f = d; f->number != 0; ++f) {
        const StructPlacement place = structPlaceField(*f, offset, count > 0);
        TrovResult r = TROV_RESULT_OK;
        if (structIsScalar(f->kind)) {
            ScalarImage image = {};
            r = pass.scalar(*f, place.at, image);
            if (r == TROV_RESULT_OK && f->countFlag != 0) {
                count = countOf(image, f->size);
                r = pass.countRead(count);
            }
        } else {
            switch (f->kind) {
            case kStructOctets:
            case kStructChars:
                r = pass.bytes(*f, place.at, count);
                count = 0;
                break;
            case kStructNested: r = pass.nested(*f, place.at); break;
            case kStructOptions: r = pass.options(place.at); break;
            case kStructArray:
                r = pass.array(*f, place.at, count);
                count = 0;
                break;
            case kStructAttribute:
                r = pass.attribute(place.at);
                count = 0;
                break;
            default: break; // not a kind: no bytes, no room
            }
        }
        if (r != TROV_RESULT_OK) return r;
        offset = place.next;
    }
    return TROV_RESULT_OK;
}

// ---- option lists ------------------------------------------------------------------

// Value bytes of an option on the wire: the kind decides for kinds 0 to 5,
// the length byte for the others.
uint32_t optionValueBytes(uint8_t kind, uint8_t length) {
    uint8_t fixed = 0;
    return trovEncCalc_OptionParam(kind, nullptr, &fixed) == TROV_RESULT_OK ? fixed : length;
}

StructOptionList loadOptionList(const uint8_t *record, uint16_t at) {
    return loadField<StructOptionList>(record, at);
}

// Packet bytes of an option list (255 options of 255 bytes pass 65535, so
// this is the true extent, not a 16-bit figure). The options themselves must
// be there when the count says so (false otherwise); a null value that has
// bytes is marked in nullData.
bool optionListWireBytes(const StructOptionList &list, WireSize &size) {
    size.add(1);
    if (list.count != 0 && list.options == nullptr) return false;
    for (uint32_t i = 0; i < list.count; ++i) {
        const StructOption &o = list.options[i];
        const uint32_t n = optionValueBytes(o.kind, o.length);
        size.add(2 + n);
        size.nullData |= n != 0 && o.value == nullptr;
    }
    return true;
}

void encodeOptionList(PacketCursor &cursor, const StructOptionList &list) {
    putU8(cursor, list.count);
    for (uint32_t i = 0; i < list.count; ++i) {
        const StructOption &o = list.options[i];
        uint8_t fixed = 0;
        if (trovEncCalc_OptionParam(o.kind, nullptr, &fixed) == TROV_RESULT_OK) {
            trovEncode_OptionParam(&cursor, o.kind, o.value);
        } else {
            // The exported encoder writes such kinds as a lone kind byte; in a
            // list the length and bytes must follow for the list to be read.
            putU8(cursor, o.kind);
            putU8(cursor, o.length);
            putBytes(&cursor, o.value, o.length);
        }
    }
}

// Moves over an option list and reports the extra bytes of its decoded form:
// 16 per option entry plus each value rounded up to 8, 16-bit and in full.
struct OptionListSize {
    uint16_t figure = 0;
    uint64_t extent = 0;
};
TrovResult sizeOptionList(PacketCursor &cursor, OptionListSize &size) {
    if (cursor.remaining < 1) return TROV_RESULT_SHORT_INPUT;
    const uint8_t count = getU8(cursor);
    uint64_t total = uint64_t{count} * sizeof(StructOption);
    for (uint32_t i = 0; i < count; ++i) {
        if (cursor.remaining < 2) return TROV_RESULT_SHORT_INPUT;
        const uint8_t kind = getU8(cursor);
        const uint8_t length = getU8(cursor);
        const uint32_t n = optionValueBytes(kind, length);
        if (cursor.remaining < n) return TROV_RESULT_SHORT_INPUT;
        skip(cursor, n);
        total += roundUp8(static_cast<uint64_t>(trovDecCalc_OptionParam(kind, length)));
    }
    size.figure = roundUp8u16(static_cast<uint32_t>(total));
    size.extent = total;
    return TROV_RESULT_OK;
}

// ---- the bounded extra area of a decode -------------------------------------------

struct ExtraArea {
    uint8_t *next; // 8-aligned
    uint8_t *end;  // next <= end always

    bool fits(uint64_t n) const { return roundUp8(n) <= uint64_t(end - next); }
    // Reserves n bytes rounded up to 8; null when they do not fit.
    uint8_t *take(uint64_t n) {
        if (!fits(n)) return nullptr;
        uint8_t *p = next;
        next += roundUp8(n);
        return p;
    }
    // Moves to where a codec's decode ended (as returned, already 8-aligned),
    // kept within the area; `fallback` when the codec returned nothing usable.
    void moveTo(uint8_t *after, uint8_t *fallback) {
        if (after == nullptr || after < next) after = fallback;
        next = after > end ? end : after;
    }
};

// ---- the passes ----------------------------------------------------------------------

// Encode size. Never stops: a field that cannot be sized counts nothing (and
// is not written by the encode pass); the first such failure is kept. Null
// pointers behind a non-zero count are different. Array elements or options
// that are not there cannot be sized at all (`unsizable`, which fails the
// operation with 1); bytes the encode pass would copy from a null pointer
// are counted and reported in the size's nullData, so no encoder writes the
// record.
struct EncCalcPass {
    const uint8_t *record;
    WireSize total;
    TrovResult failure = TROV_RESULT_OK;
    bool unsizable = false;
    // Nesting level of this walk: 1 at the top, one more per nested
    // record, array element or attribute value that uses a structure again.
    uint32_t level = 1;

    void note(TrovResult r) {
        if (failure == TROV_RESULT_OK) failure = r;
    }
    void add(uint32_t n) { total.add(n); }
    void sub(const StructField *d, const uint8_t *subRecord) {
        EncCalcPass inner{subRecord, {}};
        inner.level = level + 1;
        note(walk(d, inner));
        note(inner.failure);
        unsizable = unsizable || inner.unsizable;
        total.add(inner.total);
    }

    TrovResult scalar(const StructField &f, uint16_t at, ScalarImage &image) {
        imageFromRecord(record + at, f.size, image);
        add(f.size);
        return TROV_RESULT_OK;
    }
    TrovResult countRead(uint16_t) { return TROV_RESULT_OK; }
    TrovResult bytes(const StructField &, uint16_t at, uint16_t count) {
        if (count > 0 && loadField<const uint8_t *>(record, at) == nullptr) total.nullData = true;
        add(count);
        return TROV_RESULT_OK;
    }
    TrovResult nested(const StructField &f, uint16_t at) {
        sub(f.nested, record + at);
        return TROV_RESULT_OK;
    }
    TrovResult options(uint16_t at) {
        if (!optionListWireBytes(loadOptionList(record, at), total)) unsizable = true;
        return TROV_RESULT_OK;
    }
    TrovResult array(const StructField &f, uint16_t at, uint16_t count) {
        if (count == 0) return TROV_RESULT_OK;
        const auto *elements = loadField<const uint8_t *>(record, at);
        if (elements == nullptr) {
            unsizable = true;
            return TROV_RESULT_OK;
        }
        // Refused whatever follows past the sizing limit (WireSize::kSizingLimit).
        for (uint32_t i = 0; i < count && !total.pastLimit(); ++i) sub(f.nested, elements + size_t{i} * f.size);
        return TROV_RESULT_OK;
    }
    TrovResult attribute(uint16_t at) {
        const auto entry = loadField<AttributeEntry>(record, at);
        const ValueCodecOps *row = attributeCodec(entry.id, kAttributeVersion);
        if (row == nullptr) {
            note(TROV_RESULT_NO_ATTRIBUTE_CODEC);
            return TROV_RESULT_OK;
        }
        WireSize size;
        const TrovResult r = row->encCalc(entry.value, attributeFlag(level), &size, kAttributeVersion);
        if (r != TROV_RESULT_OK) {
            note(r);
            return TROV_RESULT_OK;
        }
        add(4);
        total.add(size);
        return TROV_RESULT_OK;
    }
};

// Encode. Unchecked writes; an attribute is written only when the encode
// size pass counted it.
struct EncodePass {
    const uint8_t *record;
    PacketCursor &cursor;
    // Nesting level of this walk: 1 at the top, one more per nested
    // record, array element or attribute value that uses a structure again.
    uint32_t level = 1;

    TrovResult scalar(const StructField &f, uint16_t at, ScalarImage &image) {
        imageFromRecord(record + at, f.size, image);
        putValue(cursor, record + at, f.size); // widths 1, 2 and 4 only
        return TROV_RESULT_OK;
    }
    TrovResult countRead(uint16_t) { return TROV_RESULT_OK; }
    TrovResult bytes(const StructField &, uint16_t at, uint16_t count) {
        if (count > 0) putBytes(&cursor, loadField<const uint8_t *>(record, at), count);
        return TROV_RESULT_OK;
    }
    TrovResult nested(const StructField &f, uint16_t at) {
        EncodePass inner{record + at, cursor};
        inner.level = level + 1;
        walk(f.nested, inner);
        return TROV_RESULT_OK;
    }
    TrovResult options(uint16_t at) {
        encodeOptionList(cursor, loadOptionList(record, at));
        return TROV_RESULT_OK;
    }
    TrovResult array(const StructField &f, uint16_t at, uint16_t count) {
        if (count == 0) return TROV_RESULT_OK;
        const auto *elements = loadField<const uint8_t *>(record, at);
        for (uint32_t i = 0; i < count; ++i) {
            EncodePass inner{elements + size_t{i} * f.size, cursor};
            inner.level = level + 1;
            walk(f.nested, inner);
        }
        return TROV_RESULT_OK;
    }
    TrovResult attribute(uint16_t at) {
        const auto entry = loadField<AttributeEntry>(record, at);
        const ValueCodecOps *row = attributeCodec(entry.id, kAttributeVersion);
        if (row == nullptr) return TROV_RESULT_OK; // unknown identifier: nothing written
        WireSize size;
        if (row->encCalc(entry.value, attributeFlag(level), &size, kAttributeVersion) != TROV_RESULT_OK)
            return TROV_RESULT_OK;
        putU16(cursor, entry.id);
        putU16(cursor, size.bytes);
        row->encode(&cursor, entry.value, attributeFlag(level), kAttributeVersion);
        return TROV_RESULT_OK;
    }
};

// Decode size. Checks every byte it moves over against the cursor and adds
// up the extra bytes twice: the protocol's 16-bit figure, which a kind-12
// array resets, and the extent the decode pass writes.
struct DecCalcPass {
    PacketCursor &cursor;
    uint16_t figure = 0;
    uint64_t extent = 0;
    // Nesting level of this walk: 1 at the top, one more per nested
    // record, array element or attribute value that uses a structure again.
    uint32_t level = 1;

    void add(uint32_t n) {
        figure = static_cast<uint16_t>(figure + roundUp8u16(n));
        extent += roundUp8(static_cast<uint64_t>(n));
    }
    bool take(uint32_t n) {
        if (cursor.remaining < n) return false;
        skip(cursor, n);
        return true;
    }
    TrovResult sub(const StructField *d) {
        DecCalcPass inner{cursor};
        inner.level = level + 1;
        if (walk(d, inner) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
        figure = static_cast<uint16_t>(figure + inner.figure);
        extent += inner.extent;
        return TROV_RESULT_OK;
    }

    TrovResult scalar(const StructField &f, uint16_t, ScalarImage &image) {
        if (cursor.remaining < f.size) return TROV_RESULT_SHORT_INPUT;
        imageFromWire(cursor.position, f.size, image);
        skip(cursor, f.size);
        return TROV_RESULT_OK;
    }
    TrovResult countRead(uint16_t count) {
        return count > cursor.remaining ? TROV_RESULT_SHORT_INPUT : TROV_RESULT_OK;
    }
    TrovResult bytes(const StructField &f, uint16_t, uint16_t count) {
        if (count == 0) return TROV_RESULT_OK;
        if (!take(count)) return TROV_RESULT_SHORT_INPUT;
        // Characters reserve one byte for the terminating zero.
        add(f.kind == kStructChars ? count + 1u : count);
        return TROV_RESULT_OK;
    }
    TrovResult nested(const StructField &f, uint16_t) { return sub(f.nested); }
    TrovResult options(uint16_t) {
        OptionListSize size;
        if (sizeOptionList(cursor, size) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
        figure = static_cast<uint16_t>(figure + size.figure);
        extent += size.extent;
        return TROV_RESULT_OK;
    }
    TrovResult array(const StructField &f, uint16_t, uint16_t count) {
        if (count == 0) return TROV_RESULT_OK;
        // The array SETS the figure: extra bytes of earlier fields of this
        // descriptor are no longer counted in it. The extent keeps them.
        const uint32_t elements = uint32_t{count} * f.size;
        figure = roundUp8u16(elements);
        extent += roundUp8(static_cast<uint64_t>(elements));
        const uint16_t fixed = structFixedWireSize(f.nested);
        for (uint32_t i = 0; i < count; ++i) {
            if (cursor.remaining < fixed) return TROV_RESULT_SHORT_INPUT;
            if (sub(f.nested) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
        }
        return TROV_RESULT_OK;
    }
    TrovResult attribute(uint16_t) {
        if (cursor.remaining < 4) return TROV_RESULT_SHORT_INPUT;
        const uint16_t id = getU16(cursor);
        const uint16_t length = getU16(cursor);
        const ValueCodecOps *row = attributeCodec(id, kAttributeVersion);
        if (row == nullptr) {
            if (!take(length)) return TROV_RESULT_SHORT_INPUT;
            add(length);
            return TROV_RESULT_OK;
        }
        // The codec decides how many bytes the value takes; the length field
        // is not consulted.
        RecordSize size{};
        if (row->decCalc(&cursor, attributeFlag(level), &size, kAttributeVersion) != TROV_RESULT_OK)
            return TROV_RESULT_SHORT_INPUT;
        figure = static_cast<uint16_t>(figure + roundUp8u16(size.bytes));
        extent += roundUp8(static_cast<uint64_t>(size.extent));
        return TROV_RESULT_OK;
    }
};

// Decode. Reads what the decode size pass checked; writes the record at the
// placements and variable data only inside the extra area's bounds.
struct DecodePass {
    uint8_t *record;
    PacketCursor &cursor;
    ExtraArea &area;
    // Nesting level of this walk: 1 at the top, one more per nested
    // record, array element or attribute value that uses a structure again.
    uint32_t level = 1;

    TrovResult scalar(const StructField &f, uint16_t at, ScalarImage &image) {
        imageFromWire(cursor.position, f.size, image);
        if (hasImage(f.size)) std::memcpy(record + at, image, f.size);
        skip(cursor, f.size);
        return TROV_RESULT_OK;
    }
    TrovResult countRead(uint16_t) { return TROV_RESULT_OK; }
    TrovResult bytes(const StructField &f, uint16_t at, uint16_t count) {
        uint8_t *data = nullptr;
        if (count > 0) {
            const bool chars = f.kind == kStructChars;
            data = area.take(chars ? count + 1u : count);
            if (data != nullptr) {
                std::memcpy(data, cursor.position, count);
                if (chars) data[count] = 0;
            }
            skip(cursor, count);
        }
        storeField(record, at, data);
        return TROV_RESULT_OK;
    }
    TrovResult nested(const StructField &f, uint16_t at) {
        DecodePass inner{record + at, cursor, area};
        inner.level = level + 1;
        return walk(f.nested, inner);
    }
    TrovResult options(uint16_t at) {
        StructOptionList list{};
        const uint8_t count = getU8(cursor);
        uint8_t *entries = count > 0 ? area.take(count * uint32_t{sizeof(StructOption)}) : nullptr;
        if (entries != nullptr) {
            list.count = count;
            list.options = reinterpret_cast<StructOption *>(entries);
        }
        for (uint32_t i = 0; i < count; ++i) {
            StructOption option{};
            option.kind = getU8(cursor);
            option.length = getU8(cursor);
            const uint32_t bytes = trovDecCalc_OptionParam(option.kind, option.length);
            if (entries != nullptr && bytes > 0) option.value = area.take(bytes);
            if (option.value != nullptr)
                trovDecode_OptionParam(option.kind, option.length, option.value, &cursor);
            else
                skip(cursor, optionValueBytes(option.kind, option.length));
            if (entries != nullptr) std::memcpy(entries + i * sizeof option, &option, sizeof option);
        }
        storeField(record, at, list);
        return TROV_RESULT_OK;
    }
    TrovResult array(const StructField &f, uint16_t at, uint16_t count) {
        uint8_t *elements = count > 0 ? area.take(uint32_t{count} * f.size) : nullptr;
        storeField(record, at, elements);
        for (uint32_t i = 0; i < count; ++i) {
            if (elements != nullptr) {
                DecodePass inner{elements + size_t{i} * f.size, cursor, area};
                inner.level = level + 1;
                if (walk(f.nested, inner) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
            } else {
                DecCalcPass skipper{cursor};
                skipper.level = level + 1; // dropped: move over the element only
                if (walk(f.nested, skipper) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
            }
        }
        return TROV_RESULT_OK;
    }
    TrovResult attribute(uint16_t at) {
        AttributeEntry entry{};
        entry.id = getU16(cursor);
        entry.length = getU16(cursor);
        const ValueCodecOps *row = attributeCodec(entry.id, kAttributeVersion);
        if (row != nullptr) {
            PacketCursor probe = cursor;
            RecordSize size{};
            if (row->decCalc(&probe, attributeFlag(level), &size, kAttributeVersion) != TROV_RESULT_OK)
                return TROV_RESULT_SHORT_INPUT;
            entry.length = 0; // decoded by a codec: no raw length
            if (area.fits(size.extent)) {
                uint8_t *value = area.next;
                void *after = row->decode(value, &cursor, attributeFlag(level), kAttributeVersion);
                area.moveTo(static_cast<uint8_t *>(after), value + roundUp8(static_cast<uint64_t>(size.extent)));
                entry.value = value;
            }
            // Resume where the size pass found the value's end, whatever the
            // codec's decode read: the rest of the walk stays on checked bytes.
            cursor = probe;
        } else {
            // No codec: the raw bytes, their length kept.
            const uint16_t length = entry.length;
            entry.value = area.take(length);
            if (entry.value != nullptr) std::memcpy(entry.value, cursor.position, length);
            else entry.length = 0; // dropped
            skip(cursor, length);
        }
        storeField(record, at, entry);
        return TROV_RESULT_OK;
    }
};

} // namespace

TrovResult structEncCalc(const StructField *d, const void *record, WireSize *size, uint32_t level) {
    if (d == nullptr || record == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    EncCalcPass pass{static_cast<const uint8_t *>(record), {}};
    pass.level = level;
    walk(d, pass); // the walk's result (10, a codec's failure) is not passed on
    if (pass.unsizable) return TROV_RESULT_NULL_ARGUMENT;
    *size = pass.total;
    return TROV_RESULT_OK;
}

TrovResult structEncode(const StructField *d, PacketCursor *cursor, const void *record,
                        uint32_t level) {
    if (d == nullptr || cursor == nullptr || cursor->position == nullptr || record == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    EncodePass pass{static_cast<const uint8_t *>(record), *cursor};
    pass.level = level;
    walk(d, pass);
    return TROV_RESULT_OK;
}

TrovResult structDecCalc(const StructField *d, uint16_t fixedRecordBytes, PacketCursor *cursor,
                         RecordSize *size, uint32_t level) {
    if (d == nullptr || cursor == nullptr || cursor->position == nullptr || size == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    if (cursor->remaining < structFixedWireSize(d)) return TROV_RESULT_SHORT_INPUT;
    PacketCursor c = *cursor;
    DecCalcPass pass{c};
    pass.level = level;
    if (walk(d, pass) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
    const uint64_t extent = roundUp8(static_cast<uint64_t>(fixedRecordBytes)) + pass.extent;
    size->bytes = static_cast<uint16_t>(roundUp8u16(fixedRecordBytes) + pass.figure);
    size->extent = extent > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(extent);
    *cursor = c;
    return TROV_RESULT_OK;
}

void *structDecode(const StructField *d, PacketCursor *cursor, void *record, void *extra,
                   uint32_t level) {
    if (d == nullptr || cursor == nullptr || cursor->position == nullptr || record == nullptr ||
        extra == nullptr)
        return nullptr;
    auto *start = static_cast<uint8_t *>(alignUp8(extra));
    // The extent of the extra area, sized again here: the bound of every write.
    PacketCursor probe = *cursor;
    DecCalcPass sizing{probe};
    sizing.level = level;
    if (walk(d, sizing) != TROV_RESULT_OK) return start;
    const uint64_t room = sizing.extent < UINT32_MAX ? sizing.extent : UINT32_MAX;
    ExtraArea area{start, static_cast<uint8_t *>(extra) + room};
    if (area.end < start) area.end = start;
    DecodePass pass{static_cast<uint8_t *>(record), *cursor, area};
    pass.level = level;
    walk(d, pass);
    return area.next;
}

} // namespace trov
