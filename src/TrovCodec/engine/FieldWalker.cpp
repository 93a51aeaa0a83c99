// The one walker: walk() takes the fields of a plan in order, keeps the
// pending count and the nesting bound, and hands each field to a pass by its
// kind. Four passes, one per operation, say what each kind does; the plan's
// rules carry what a family does differently.
#include "engine/FieldWalker.h"

#include <cstring>

namespace trov {
namespace {

// Typed values carry no version of their own and travel in array form.
constexpr uint8_t kValueVersion = 0;
constexpr uint8_t kArrayForm = 1;
// Attribute entries of structured records are looked up at version 0,
// whatever the packet's version: only rows that serve every version are found.
constexpr uint8_t kEntryVersion = 0;

// The array flag an entry's value gets: non-zero (array form), and one above
// the record's level, so that the value's own records stay bounded.
uint8_t entryFlag(uint32_t level) { return static_cast<uint8_t>(level + 1 < 0xFF ? level + 1 : 0xFF); }

// A count held in the record: a byte, or the first two bytes in memory read
// as a u16 (so a 4-byte count is taken as 16 bits).
uint32_t loadCount(const uint8_t *record, uint16_t offset, uint8_t width) {
    return width == 1 ? loadField<uint8_t>(record, offset) : loadField<uint16_t>(record, offset);
}

void storeCount(uint8_t *record, uint16_t offset, uint8_t width, uint32_t n) {
    if (width == 4) storeField(record, offset, n);
    else if (width == 2) storeField(record, offset, static_cast<uint16_t>(n));
    else storeField(record, offset, static_cast<uint8_t>(n));
}

// The count a wire value of `width` bytes gives, as the record would hold it.
uint32_t countOf(uint32_t value, uint8_t width) {
    if (width != 4) return value;
    uint8_t image[4];
    std::memcpy(image, &value, 4);
    return loadCount(image, 0, 2);
}

// The value bytes an option carries: the kind's fixed size for kinds 0 to 5
// (whatever its length byte says), the length byte for the others.
uint32_t optionWireBytes(uint8_t kind, uint8_t length) {
    uint8_t fixed = 0;
    return trovEncCalc_OptionParam(kind, nullptr, &fixed) == TROV_RESULT_OK ? fixed : length;
}
uint32_t optionRoom(uint8_t kind, uint8_t length) { return roundUp8(trovDecCalc_OptionParam(kind, length)); }

// Writes one option: kinds 0 to 5 as the exported encoder writes them (their
// own length byte), the others as kind, length and the bytes, so a list of
// them can be read back.
void writeOption(PacketCursor &c, uint8_t kind, uint8_t length, const void *value) {
    uint8_t fixed = 0;
    if (trovEncCalc_OptionParam(kind, nullptr, &fixed) == TROV_RESULT_OK) {
        trovEncode_OptionParam(&c, kind, value);
        return;
    }
    putU8(c, kind);
    putU8(c, length);
    putBytes(&c, value, length);
}

// The codec behind an identifier or data type field, the version it codes
// at, and the result when there is none.
struct ValueCodec {
    const ValueCodecOps *ops;
    uint8_t version;
    TrovResult missing;
};
ValueCodec valueCodec(const Field &f, uint16_t key, const FieldEnv &env) {
    if (f.kind == FieldKind::Attribute)
        return {env.attribute(key, env.version), env.version, TROV_RESULT_NO_ATTRIBUTE_CODEC};
    return {env.dataType(key), kValueVersion, TROV_RESULT_NO_DATA_TYPE_CODEC};
}

const ListOps *listOf(const Field &f, const FieldEnv &env) {
    return f.kind == FieldKind::Attributes ? env.attributes : env.eventAttributes;
}

uint32_t fixedWire(const Field &f) { return f.kind == FieldKind::Bytes ? f.size : kindInfo(f.kind).wire; }

// Readers of the decode pass that never pass the cursor: with slack a body
// may end early, and what it lacks reads as 0.
void take(PacketCursor &c, uint8_t *dst, uint32_t n) {
    const uint32_t held = n < c.remaining ? n : c.remaining;
    getBytes(c, dst, held);
    if (held < n) std::memset(dst + held, 0, n - held);
}

uint32_t takeScalar(PacketCursor &c, uint32_t width) {
    if (c.remaining >= width) // the usual case: read it where it stands
        return width == 1 ? getU8(c) : width == 2 ? getU16(c) : getU32(c);
    uint8_t wire[4] = {};
    take(c, wire, width);
    return width == 1 ? wire[0] : width == 2 ? loadU16(wire) : loadU32(wire);
}

// A count at `offset` of the body; bytes the cursor lacks read as 0.
uint32_t countAt(const PacketCursor &c, uint64_t offset, uint32_t width) {
    auto byteAt = [&](uint64_t at) -> uint32_t { return at < c.remaining ? c.position[at] : 0u; };
    uint32_t v = 0;
    for (uint32_t i = 0; i < width; ++i) v = v << 8 | byteAt(offset + i);
    return v;
}

void readElements(PacketCursor &c, FieldKind kind, uint8_t *data, uint32_t n, bool terminate) {
    switch (kind) {
    case FieldKind::U16s: getU16Array(c, data, n); break;
    case FieldKind::U32s:
    case FieldKind::WideU32s: getU32Array(c, data, n); break;
    case FieldKind::ByteU32Items:
        for (uint32_t i = 0; i < n; ++i) {
            storeField(data, 8 * i, getU8(c));
            storeField(data, 8 * i + 4, getU32(c));
        }
        break;
    case FieldKind::U32ByteItems:
        for (uint32_t i = 0; i < n; ++i) {
            std::memset(data + 8 * i, 0, 8);
            storeField(data, 8 * i, getU32(c));
            storeField(data, 8 * i + 4, getU8(c));
        }
        break;
    default: // bytes as they stand
        take(c, data, n * kindInfo(kind).wire);
        if (terminate && kind == FieldKind::Chars && n != 0) data[n] = 0;
        break;
    }
}

// Writes n elements whose wire bytes the cursor holds in full, with one
// test for them all; false (nothing written) when it does not, or when there
// is nothing to write, and the element-by-element writers take over.
bool writeElementsAtOnce(PacketCursor &c, FieldKind kind, const uint8_t *data, uint32_t n) {
    const uint32_t wire = kindInfo(kind).wire;
    if (n == 0 || data == nullptr || c.position == nullptr || uint64_t{n} * wire > c.remaining) return false;
    uint8_t *out = c.position;
    switch (kind) {
    case FieldKind::U16s: storeSwapped<2>(out, data, n); break;
    case FieldKind::U32s:
    case FieldKind::WideU32s: storeSwapped<4>(out, data, n); break;
    case FieldKind::ByteU32Items:
        for (uint32_t i = 0; i < n; ++i) {
            out[5 * i] = data[8 * i];
            storeU32(out + 5 * i + 1, loadField<uint32_t>(data, 8 * i + 4));
        }
        break;
    case FieldKind::U32ByteItems:
        for (uint32_t i = 0; i < n; ++i) {
            storeU32(out + 5 * i, loadField<uint32_t>(data, 8 * i));
            out[5 * i + 4] = data[8 * i + 4];
        }
        break;
    default: return false;
    }
    advance(c, n * wire);
    return true;
}

void writeElements(PacketCursor &c, FieldKind kind, const uint8_t *data, uint32_t n) {
    if (writeElementsAtOnce(c, kind, data, n)) return;
    switch (kind) {
    case FieldKind::U16s:
        for (uint32_t i = 0; i < n; ++i) putValue(c, data + 2 * i, 2);
        break;
    case FieldKind::U32s:
    case FieldKind::WideU32s:
        for (uint32_t i = 0; i < n; ++i) putValue(c, data + 4 * i, 4);
        break;
    case FieldKind::ByteU32Items:
        for (uint32_t i = 0; i < n; ++i) {
            putValue(c, data + 8 * i, 1);
            putValue(c, data + 8 * i + 4, 4);
        }
        break;
    case FieldKind::U32ByteItems:
        for (uint32_t i = 0; i < n; ++i) {
            putValue(c, data + 8 * i, 4);
            putValue(c, data + 8 * i + 4, 1);
        }
        break;
    default: putBytes(&c, data, n * kindInfo(kind).wire); break;
    }
}

// The opening run of fixed fields, read (wire to record) or written (record
// to wire) as straight-line code once the caller has made sure the bytes are
// there. Fixed wire bytes go sequentially; record bytes at each field's offset.
template <bool Read>
void leadRun(const Plan &plan, const uint8_t *from, uint8_t *to) {
    uint32_t at = 0;
    for (uint8_t i = 0; i < plan.leadFields; ++i) {
        const Field &f = plan.fields[i];
        const uint32_t n = fixedWire(f);
        const uint8_t *src = Read ? from + at : from + f.offset;
        uint8_t *dst = Read ? to + f.offset : to + at;
        if (f.kind == FieldKind::U16) storeField(dst, 0, bigEndian(loadField<uint16_t>(src, 0)));
        else if (f.kind == FieldKind::U32) storeField(dst, 0, bigEndian(loadField<uint32_t>(src, 0)));
        else if (n != 0) std::memcpy(dst, src, n);
        at += n;
    }
}

// ---- the walk ------------------------------------------------------------------------

// Runs `pass` over the fields of `plan` from `first` on. A hook's non-zero
// result ends the walk and is returned; so is 5 when a structured record
// lies deeper than kMaxRecordNesting.
template <class Pass>
TrovResult walk(const Plan &plan, Pass &pass, uint8_t first = 0) {
    if (plan.rules.nestable && pass.level > kMaxRecordNesting) return TROV_RESULT_SHORT_INPUT;
    uint32_t pending = 0; // the last Count field's value
    for (uint8_t i = first; i < plan.count; ++i) {
        const Field &f = plan.fields[i];
        TrovResult r = TROV_RESULT_OK;
        switch (f.kind) {
        case FieldKind::U8:
        case FieldKind::U16:
        case FieldKind::U32:
        case FieldKind::Reserved8:
        case FieldKind::Bytes:
        case FieldKind::Bytes12: r = pass.fixed(f); break;
        case FieldKind::Count: r = pass.count(f, pending); break;
        case FieldKind::Attribute:
        case FieldKind::TypedValue:
        case FieldKind::ReservedValue: r = pass.value(f); break;
        case FieldKind::Option: r = pass.option(f); break;
        case FieldKind::Attributes:
        case FieldKind::EventAttributes: r = pass.list(f); break;
        case FieldKind::Record: r = pass.inlineRecord(f); break;
        case FieldKind::Records: r = pass.records(f, pending); break;
        case FieldKind::Options: r = pass.options(f); break;
        case FieldKind::Entry: r = pass.entry(f); break;
        case FieldKind::End:
        case FieldKind::Buffer:
        case FieldKind::Head: break;
        default: r = pass.counted(f, pending); break; // octets to rest
        }
        if (r != TROV_RESULT_OK) return r;
    }
    return TROV_RESULT_OK;
}

// What every pass holds: the plan, the record, the environment and the level.
struct PassBase {
    const Plan &plan;
    const FieldEnv &env;
    uint32_t level;
};

// What both encode passes read: the record, its pointers, and the codec of an
// attribute entry with the value's size (null: the entry is neither counted
// nor written).
struct RecordPass : PassBase {
    const uint8_t *record;

    const uint8_t *pointer(const Field &f) const { return loadField<const uint8_t *>(record, f.data); }
    const ValueCodecOps *sizedEntry(const AttributeEntry &e, WireSize &value) const {
        const ValueCodecOps *ops = env.attribute(e.id, kEntryVersion);
        if (ops == nullptr || ops->encCalc(e.value, entryFlag(level), &value, kEntryVersion) != TROV_RESULT_OK)
            return nullptr;
        return ops;
    }
};

// ---- encode size -----------------------------------------------------------------

struct EncCalcPass : RecordPass {
    WireSize &size;

    // A nested walk: only a record it cannot size (1) ends this one; past the
    // nesting bound a record counts nothing.
    TrovResult nested(const Plan &p, const uint8_t *sub) {
        EncCalcPass inner{{{p, env, level + 1}, sub}, size};
        const TrovResult r = walk(p, inner);
        return r == TROV_RESULT_NULL_ARGUMENT ? TROV_RESULT_NULL_ARGUMENT : TROV_RESULT_OK;
    }

    TrovResult fixed(const Field &f) {
        size.add(fixedWire(f));
        return TROV_RESULT_OK;
    }
    TrovResult count(const Field &f, uint32_t &pending) {
        pending = loadCount(record, f.offset, f.prefix);
        size.add(f.prefix);
        return TROV_RESULT_OK;
    }
    TrovResult counted(const Field &f, uint32_t pending) {
        const uint32_t n = f.kind == FieldKind::Rest ? loadField<uint16_t>(record, f.offset)
                           : f.prefix == 0           ? pending
                                                     : loadCount(record, f.offset, f.prefix);
        if (n != 0 && pointer(f) == nullptr) {
            if (plan.rules.nullRefusedAtOnce) return TROV_RESULT_NULL_ARGUMENT;
            size.nullData = true;
        }
        size.add(f.prefix + n * kindInfo(f.kind).wire);
        return TROV_RESULT_OK;
    }
    TrovResult value(const Field &f) {
        const ValueCodec codec = valueCodec(f, loadField<uint16_t>(record, f.offset), env);
        if (codec.ops == nullptr) return codec.missing;
        if (pointer(f) == nullptr) return TROV_RESULT_NULL_ARGUMENT;
        WireSize value;
        if (TrovResult r = codec.ops->encCalc(pointer(f), kArrayForm, &value, codec.version)) return r;
        if (value.nullData) return TROV_RESULT_NULL_ARGUMENT;
        size.add(2);
        size.add(value);
        return TROV_RESULT_OK;
    }
    TrovResult option(const Field &f) {
        const uint32_t n = optionWireBytes(loadField<uint8_t>(record, f.offset), loadField<uint8_t>(record, f.offset + 1u));
        if (n != 0 && pointer(f) == nullptr) return TROV_RESULT_NULL_ARGUMENT;
        size.add(2 + n);
        return TROV_RESULT_OK;
    }
    TrovResult list(const Field &f) {
        return listOf(f, env)->encCalc(record + f.offset, env.nesting, env.version, size);
    }
    TrovResult records(const Field &f, uint32_t n) {
        if (n == 0) return TROV_RESULT_OK;
        const uint8_t *elements = pointer(f);
        if (elements == nullptr) return TROV_RESULT_NULL_ARGUMENT;
        // Past the sizing limit every encoder refuses the record: stop there.
        for (uint32_t i = 0; i < n && !size.pastLimit(); ++i)
            if (TrovResult r = nested(*f.nested, elements + size_t{i} * f.size)) return r;
        return TROV_RESULT_OK;
    }
    TrovResult options(const Field &f) {
        const auto list = loadField<StructOptionList>(record, f.offset);
        size.add(1);
        if (list.count != 0 && list.options == nullptr) return TROV_RESULT_NULL_ARGUMENT;
        for (uint32_t i = 0; i < list.count; ++i) {
            const StructOption &o = list.options[i];
            const uint32_t n = optionWireBytes(o.kind, o.length);
            size.add(2 + n);
            size.nullData |= n != 0 && o.value == nullptr;
        }
        return TROV_RESULT_OK;
    }
    TrovResult entry(const Field &f) {
        WireSize value;
        if (sizedEntry(loadField<AttributeEntry>(record, f.offset), value) == nullptr)
            return TROV_RESULT_OK; // counts nothing and is not written
        size.add(4);
        size.add(value);
        return TROV_RESULT_OK;
    }
    TrovResult inlineRecord(const Field &f) { return nested(*f.nested, record + f.offset); }
};

// ---- encode ------------------------------------------------------------------------

struct EncodePass : RecordPass {
    PacketCursor &c;

    void nested(const Plan &p, const uint8_t *sub) {
        EncodePass inner{{{p, env, level + 1}, sub}, c};
        walk(p, inner); // past the nesting bound nothing is written, as nothing was counted
    }

    TrovResult fixed(const Field &f) {
        if (f.kind == FieldKind::Bytes || f.kind == FieldKind::Bytes12) putBytes(&c, record + f.offset, fixedWire(f));
        else if (f.kind != FieldKind::Reserved8) putValue(c, record + f.offset, kindInfo(f.kind).wire);
        return TROV_RESULT_OK;
    }
    TrovResult count(const Field &f, uint32_t &pending) {
        pending = loadCount(record, f.offset, f.prefix);
        putValue(c, record + f.offset, f.prefix);
        return TROV_RESULT_OK;
    }
    TrovResult counted(const Field &f, uint32_t pending) {
        uint32_t n = pending;
        if (f.kind == FieldKind::Rest) n = loadField<uint16_t>(record, f.offset);
        else if (f.prefix != 0) {
            n = loadCount(record, f.offset, f.prefix);
            putValue(c, record + f.offset, f.prefix);
        }
        writeElements(c, f.kind, pointer(f), n);
        return TROV_RESULT_OK;
    }
    TrovResult value(const Field &f) {
        const uint16_t key = loadField<uint16_t>(record, f.offset);
        const ValueCodec codec = valueCodec(f, key, env);
        if (codec.ops == nullptr) return TROV_RESULT_OK; // the size pass refused it
        putU16(c, key);
        codec.ops->encode(&c, pointer(f), kArrayForm, codec.version);
        return TROV_RESULT_OK;
    }
    TrovResult option(const Field &f) {
        writeOption(c, loadField<uint8_t>(record, f.offset), loadField<uint8_t>(record, f.offset + 1u), pointer(f));
        return TROV_RESULT_OK;
    }
    TrovResult list(const Field &f) {
        listOf(f, env)->encode(c, record + f.offset, env.nesting, env.version);
        return TROV_RESULT_OK;
    }
    TrovResult inlineRecord(const Field &f) {
        nested(*f.nested, record + f.offset);
        return TROV_RESULT_OK;
    }
    TrovResult records(const Field &f, uint32_t n) {
        const uint8_t *elements = n != 0 ? pointer(f) : nullptr;
        for (uint32_t i = 0; elements != nullptr && i < n; ++i) nested(*f.nested, elements + size_t{i} * f.size);
        return TROV_RESULT_OK;
    }
    TrovResult options(const Field &f) {
        const auto list = loadField<StructOptionList>(record, f.offset);
        putU8(c, list.count);
        for (uint32_t i = 0; i < list.count; ++i)
            writeOption(c, list.options[i].kind, list.options[i].length, list.options[i].value);
        return TROV_RESULT_OK;
    }
    TrovResult entry(const Field &f) {
        const auto e = loadField<AttributeEntry>(record, f.offset);
        WireSize value;
        const ValueCodecOps *ops = sizedEntry(e, value);
        if (ops == nullptr) return TROV_RESULT_OK; // not counted: not written
        putU16(c, e.id);
        putU16(c, value.bytes);
        ops->encode(&c, e.value, entryFlag(level), kEntryVersion);
        return TROV_RESULT_OK;
    }
};

// ---- decode size -------------------------------------------------------------------

TrovResult sizeWalk(const Plan &plan, PacketCursor &cursor, Sizes &data, const FieldEnv &env, uint32_t level);

// Walks the body by offset rather than by cursor: fixed fields are tested
// with what follows them, and with slack a body may end before its last byte.
struct DecCalcPass : PassBase {
    const PacketCursor &c;
    uint64_t have;   // what the length tests compare with; 64-bit so no sum can wrap
    uint64_t offset; // body bytes walked so far
    Sizes sizes;

    // A cursor over the real bytes from `offset` on, for the codecs of values
    // and lists: they read what they need and report where they stopped.
    PacketCursor rest() const {
        return PacketCursor{c.position + offset, static_cast<uint32_t>(c.remaining - offset)};
    }
    void moveTo(const PacketCursor &r) { offset = static_cast<uint64_t>(r.position - c.position); }
    TrovResult nested(const Plan &p) {
        if (c.remaining < offset + p.wireFixed) return TROV_RESULT_SHORT_INPUT;
        PacketCursor sub = rest();
        Sizes inner;
        if (sizeWalk(p, sub, inner, env, level + 1) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
        moveTo(sub);
        sizes.add(inner.bytes, inner.extent);
        return TROV_RESULT_OK;
    }

    TrovResult fixed(const Field &f) {
        offset += fixedWire(f); // tested with what follows
        return TROV_RESULT_OK;
    }
    TrovResult count(const Field &f, uint32_t &pending) {
        if (have < offset + f.prefix) return TROV_RESULT_SHORT_INPUT;
        pending = countOf(countAt(c, offset, f.prefix), f.prefix);
        offset += f.prefix;
        return TROV_RESULT_OK;
    }
    TrovResult counted(const Field &f, uint32_t pending) {
        uint32_t n = pending;
        if (f.kind == FieldKind::Rest) {
            if (have < offset) return TROV_RESULT_SHORT_INPUT;
            n = static_cast<uint32_t>(c.remaining - offset);
            if (n > 0xFFFF) return TROV_RESULT_SHORT_INPUT; // its length cannot be recorded
        } else if (f.prefix != 0) {
            if (have < offset + f.prefix) return TROV_RESULT_SHORT_INPUT;
            n = countAt(c, offset, f.prefix);
            offset += f.prefix;
        }
        offset += uint64_t{n} * kindInfo(f.kind).wire;
        if (have < offset) return TROV_RESULT_SHORT_INPUT;
        sizes.add(static_cast<uint16_t>(dataReported(f.kind, n)), dataRoom(f.kind, n));
        return TROV_RESULT_OK;
    }
    TrovResult value(const Field &f) {
        // No slack here: the codec gets the real bytes.
        if (c.remaining < offset + 2) return TROV_RESULT_SHORT_INPUT;
        const uint16_t key = loadU16(c.position + offset);
        const ValueCodec codec = valueCodec(f, key, env);
        if (codec.ops == nullptr) return codec.missing;
        offset += 2;
        PacketCursor value = rest();
        RecordSize decoded{};
        if (TrovResult r = codec.ops->decCalc(&value, kArrayForm, &decoded, codec.version)) return r;
        moveTo(value);
        if (f.kind == FieldKind::Attribute) { // a body's value, as its codec reports it
            sizes.add(decoded.bytes, decoded.extent > decoded.bytes ? decoded.extent : decoded.bytes);
        } else if (f.kind == FieldKind::TypedValue) {
            sizes.add(roundUp8u16(decoded.bytes), roundUp8(decoded.extent));
        } else {
            const uint32_t room = reservedValueRoom(key);
            // A value that outgrows its type's room would run into what follows.
            if (room != 0 && decoded.extent > room) return TROV_RESULT_SHORT_INPUT;
            sizes.add(static_cast<uint16_t>(room), room);
        }
        return TROV_RESULT_OK;
    }
    TrovResult option(const Field &) {
        if (have < offset + 2) return TROV_RESULT_SHORT_INPUT;
        const auto kind = static_cast<uint8_t>(countAt(c, offset, 1));
        const auto length = static_cast<uint8_t>(countAt(c, offset + 1, 1));
        offset += 2 + optionWireBytes(kind, length);
        if (have < offset) return TROV_RESULT_SHORT_INPUT;
        const uint32_t room = optionRoom(kind, length);
        sizes.add(static_cast<uint16_t>(room), room);
        return TROV_RESULT_OK;
    }
    TrovResult list(const Field &f) {
        if (c.remaining < offset) return TROV_RESULT_SHORT_INPUT;
        PacketCursor items = rest();
        if (TrovResult r = listOf(f, env)->decCalc(items, env.nesting, env.version, sizes)) return r;
        moveTo(items);
        return TROV_RESULT_OK;
    }
    TrovResult inlineRecord(const Field &f) { return nested(*f.nested); }
    TrovResult records(const Field &f, uint32_t n) {
        if (n == 0) return TROV_RESULT_OK;
        // The array SETS the figure: the data of earlier fields of this record
        // is no longer counted in it. The extent keeps it.
        const uint32_t elements = n * uint32_t{f.size};
        sizes.bytes = roundUp8u16(elements);
        sizes.add(0, roundUp8(elements));
        for (uint32_t i = 0; i < n; ++i)
            if (nested(*f.nested) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
        return TROV_RESULT_OK;
    }
    TrovResult options(const Field &) {
        if (c.remaining < offset + 1) return TROV_RESULT_SHORT_INPUT;
        PacketCursor r = rest();
        const uint8_t count = getU8(r);
        uint64_t total = uint64_t{count} * sizeof(StructOption);
        for (uint32_t i = 0; i < count; ++i) {
            if (r.remaining < 2) return TROV_RESULT_SHORT_INPUT;
            const uint8_t kind = getU8(r);
            const uint8_t length = getU8(r);
            const uint32_t n = optionWireBytes(kind, length);
            if (r.remaining < n) return TROV_RESULT_SHORT_INPUT;
            skip(r, n);
            total += optionRoom(kind, length);
        }
        moveTo(r);
        sizes.add(roundUp8u16(static_cast<uint32_t>(total)), total);
        return TROV_RESULT_OK;
    }
    TrovResult entry(const Field &) {
        if (c.remaining < offset + 4) return TROV_RESULT_SHORT_INPUT;
        PacketCursor r = rest();
        const uint16_t id = getU16(r);
        const uint16_t length = getU16(r);
        const ValueCodecOps *ops = env.attribute(id, kEntryVersion);
        if (ops == nullptr) { // the raw bytes, as many as the length says
            if (r.remaining < length) return TROV_RESULT_SHORT_INPUT;
            skip(r, length);
            sizes.add(roundUp8u16(length), roundUp8(uint32_t{length}));
        } else { // the codec decides how many bytes the value takes
            RecordSize size{};
            if (ops->decCalc(&r, entryFlag(level), &size, kEntryVersion) != TROV_RESULT_OK)
                return TROV_RESULT_SHORT_INPUT;
            sizes.add(roundUp8u16(size.bytes), roundUp8(uint64_t{size.extent}));
        }
        moveTo(r);
        return TROV_RESULT_OK;
    }
};

TrovResult sizeWalk(const Plan &plan, PacketCursor &cursor, Sizes &data, const FieldEnv &env, uint32_t level) {
    // The opening run of fixed fields is tested with what follows it.
    DecCalcPass pass{{plan, env, level}, cursor, uint64_t{cursor.remaining} + plan.rules.slack, plan.leadWire, {}};
    if (TrovResult r = walk(plan, pass, plan.leadFields)) return r;
    if (pass.have < pass.offset) return TROV_RESULT_SHORT_INPUT;
    // With slack the body may end before its last byte; the cursor stops there.
    advance(cursor, pass.offset < cursor.remaining ? static_cast<uint32_t>(pass.offset) : cursor.remaining);
    data.add(pass.sizes.bytes, pass.sizes.extent);
    return TROV_RESULT_OK;
}

// ---- decode -----------------------------------------------------------------------

// Fills the record and the data area. A flat plan's area is trusted (its size
// pass sized it: `end` is null); a structured record's is bounded by `end`,
// and what would not fit is dropped (a null pointer, its bytes skipped).
struct DecodePass : PassBase {
    uint8_t *record;
    PacketCursor &c;
    uint8_t *data;
    uint8_t *end;

    bool fits(uint64_t n) const { return end == nullptr || roundUp8(n) <= uint64_t(end - data); }
    // Reserves n bytes rounded up to 8; null when they do not fit.
    uint8_t *reserve(uint64_t n) {
        if (!fits(n)) return nullptr;
        uint8_t *p = data;
        data += roundUp8(n);
        return p;
    }
    TrovResult nested(const Plan &p, uint8_t *sub) {
        DecodePass inner{{p, env, level + 1}, sub, c, data, end};
        const TrovResult r = walk(p, inner);
        data = inner.data;
        return r;
    }

    TrovResult fixed(const Field &f) {
        switch (f.kind) {
        case FieldKind::U8: storeField(record, f.offset, static_cast<uint8_t>(takeScalar(c, 1))); break;
        case FieldKind::U16: storeField(record, f.offset, static_cast<uint16_t>(takeScalar(c, 2))); break;
        case FieldKind::U32: storeField(record, f.offset, takeScalar(c, 4)); break;
        case FieldKind::Reserved8: break;
        default: take(c, record + f.offset, fixedWire(f)); break;
        }
        return TROV_RESULT_OK;
    }
    TrovResult count(const Field &f, uint32_t &pending) {
        storeCount(record, f.offset, f.prefix, takeScalar(c, f.prefix));
        pending = loadCount(record, f.offset, f.prefix);
        return TROV_RESULT_OK;
    }
    TrovResult counted(const Field &f, uint32_t pending) {
        uint32_t n = pending;
        if (f.kind == FieldKind::Rest) n = c.remaining;
        else if (f.prefix != 0) n = takeScalar(c, f.prefix);
        if (f.prefix != 0 || f.kind == FieldKind::Rest)
            storeCount(record, f.offset, f.countWidth != 0 ? f.countWidth : f.prefix, n);
        uint8_t *at = n != 0 ? reserve(dataRoom(f.kind, n)) : nullptr;
        storeField(record, f.data, static_cast<void *>(at));
        if (at != nullptr) readElements(c, f.kind, at, n, plan.rules.terminateChars);
        else skip(c, n * kindInfo(f.kind).wire);
        return TROV_RESULT_OK;
    }
    TrovResult value(const Field &f) {
        const uint16_t key = getU16(c);
        storeField(record, f.offset, key);
        if (f.kind == FieldKind::Attribute) {
            storeField(record, f.data, static_cast<void *>(data));
            data = static_cast<uint8_t *>(env.attribute(key, env.version)->decode(data, &c, kArrayForm, env.version));
            return TROV_RESULT_OK;
        }
        const ValueCodecOps *ops = env.dataType(key);
        if (ops == nullptr) return TROV_RESULT_OK; // not reached: the size pass refused it
        // Size the value again to place it where the size pass counted it.
        PacketCursor probe = c;
        RecordSize decoded{};
        ops->decCalc(&probe, kArrayForm, &decoded, kValueVersion);
        uint32_t room = roundUp8(decoded.extent);
        if (f.kind == FieldKind::ReservedValue) {
            room = reservedValueRoom(key);
            if (room == 0) { // read over; the pointer is left as it was
                c = probe;
                return TROV_RESULT_OK;
            }
        }
        storeField(record, f.data, static_cast<void *>(data));
        ops->decode(data, &c, kArrayForm, kValueVersion);
        data += room;
        return TROV_RESULT_OK;
    }
    TrovResult option(const Field &f) {
        const uint8_t kind = getU8(c);
        const uint8_t length = getU8(c);
        storeField(record, f.offset, kind);
        storeField(record, f.offset + 1u, length);
        const uint32_t room = optionRoom(kind, length);
        storeField(record, f.data, room != 0 ? static_cast<void *>(data) : nullptr);
        if (room != 0) trovDecode_OptionParam(kind, length, data, &c);
        data += room;
        return TROV_RESULT_OK;
    }
    TrovResult list(const Field &f) {
        data = listOf(f, env)->decode(c, record + f.offset, data, env.nesting, env.version);
        return TROV_RESULT_OK;
    }
    TrovResult inlineRecord(const Field &f) { return nested(*f.nested, record + f.offset); }
    TrovResult records(const Field &f, uint32_t n) {
        uint8_t *elements = n > 0 ? reserve(n * uint32_t{f.size}) : nullptr;
        storeField(record, n > 0 ? f.data : f.offset, static_cast<void *>(elements));
        for (uint32_t i = 0; i < n; ++i) {
            if (elements != nullptr) {
                if (nested(*f.nested, elements + size_t{i} * f.size) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
            } else { // dropped: move over the record only
                Sizes ignored;
                if (sizeWalk(*f.nested, c, ignored, env, level + 1) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
            }
        }
        return TROV_RESULT_OK;
    }
    TrovResult options(const Field &f) {
        StructOptionList list{};
        const uint8_t count = getU8(c);
        uint8_t *entries = count > 0 ? reserve(count * uint32_t{sizeof(StructOption)}) : nullptr;
        if (entries != nullptr) {
            list.count = count;
            list.options = reinterpret_cast<StructOption *>(entries);
        }
        for (uint32_t i = 0; i < count; ++i) {
            StructOption option{};
            option.kind = getU8(c);
            option.length = getU8(c);
            const uint32_t bytes = trovDecCalc_OptionParam(option.kind, option.length);
            if (entries != nullptr && bytes > 0) option.value = reserve(bytes);
            if (option.value != nullptr) trovDecode_OptionParam(option.kind, option.length, option.value, &c);
            else skip(c, optionWireBytes(option.kind, option.length));
            if (entries != nullptr) std::memcpy(entries + i * sizeof option, &option, sizeof option);
        }
        storeField(record, f.offset, list);
        return TROV_RESULT_OK;
    }
    TrovResult entry(const Field &f) {
        AttributeEntry e{};
        e.id = getU16(c);
        e.length = getU16(c);
        if (const ValueCodecOps *ops = env.attribute(e.id, kEntryVersion)) {
            PacketCursor probe = c;
            RecordSize size{};
            if (ops->decCalc(&probe, entryFlag(level), &size, kEntryVersion) != TROV_RESULT_OK)
                return TROV_RESULT_SHORT_INPUT;
            e.length = 0; // decoded by a codec: no raw length
            if (fits(size.extent)) {
                uint8_t *value = data;
                auto *after = static_cast<uint8_t *>(ops->decode(value, &c, entryFlag(level), kEntryVersion));
                // Where the codec's decode ended, kept within the area.
                if (after == nullptr || after < data) after = value + roundUp8(uint64_t{size.extent});
                data = end != nullptr && after > end ? end : after;
                e.value = value;
            }
            // Resume where the size pass found the value's end, whatever the
            // codec's decode read: the rest of the walk stays on checked bytes.
            c = probe;
        } else { // no codec: the raw bytes, their length kept
            e.value = reserve(e.length);
            if (e.value != nullptr) std::memcpy(e.value, c.position, e.length);
            skip(c, e.length);
            if (e.value == nullptr) e.length = 0; // dropped
        }
        storeField(record, f.offset, e);
        return TROV_RESULT_OK;
    }
};

// Structured records look attribute entries up through this.
const ValueCodecOps *entryCodec(uint16_t id, uint8_t version) { return attributeCodec(id, version); }
FieldEnv structureEnv() {
    FieldEnv env;
    env.attribute = entryCodec;
    return env;
}

} // namespace

// The fields behind the opening run, which walkEncCalc has sized.
TrovResult walkEncCalcRest(const Plan &plan, const uint8_t *record, WireSize &size, const FieldEnv &env) {
    EncCalcPass pass{{{plan, env, 1}, record}, size};
    return walk(plan, pass, plan.leadFields);
}

void walkEncodeFields(const Plan &plan, PacketCursor &c, const uint8_t *record, const FieldEnv &env) {
    uint8_t first = 0;
    if (c.position != nullptr && c.remaining >= plan.leadWire) { // the opening run fits: no tests
        leadRun<false>(plan, record, c.position);
        advance(c, plan.leadWire);
        first = plan.leadFields;
        if (first == plan.count) return;
    }
    EncodePass pass{{{plan, env, 1}, record}, c};
    walk(plan, pass, first);
}

TrovResult walkDecCalc(const Plan &plan, PacketCursor &cursor, Sizes &data, const FieldEnv &env) {
    return sizeWalk(plan, cursor, data, env, 1);
}

uint8_t *walkDecode(const Plan &plan, PacketCursor &c, uint8_t *record, uint8_t *data, const FieldEnv &env) {
    if (c.remaining < plan.leadWire) return walkDecodeFrom(plan, 0, c, record, data, env);
    leadRun<true>(plan, c.position, record); // the opening run is all there: no tests
    advance(c, plan.leadWire);
    return walkDecodeFrom(plan, plan.leadFields, c, record, data, env);
}

uint8_t *walkDecodeFrom(const Plan &plan, uint8_t first, PacketCursor &c, uint8_t *record, uint8_t *data,
                        const FieldEnv &env) {
    DecodePass pass{{plan, env, 1}, record, c, data, nullptr};
    walk(plan, pass, first);
    return pass.data;
}

TrovResult structEncCalc(const Plan &plan, const void *record, WireSize *size, uint32_t level) {
    if (record == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const FieldEnv env = structureEnv();
    WireSize total;
    EncCalcPass pass{{{plan, env, level}, static_cast<const uint8_t *>(record)}, total};
    // Only a record that cannot be sized fails; past the nesting bound, nothing is counted.
    if (walk(plan, pass) == TROV_RESULT_NULL_ARGUMENT) return TROV_RESULT_NULL_ARGUMENT;
    *size = total;
    return TROV_RESULT_OK;
}

TrovResult structEncode(const Plan &plan, PacketCursor *cursor, const void *record, uint32_t level) {
    if (cursor == nullptr || cursor->position == nullptr || record == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const FieldEnv env = structureEnv();
    EncodePass pass{{{plan, env, level}, static_cast<const uint8_t *>(record)}, *cursor};
    walk(plan, pass);
    return TROV_RESULT_OK;
}

TrovResult structDecCalc(const Plan &plan, uint16_t fixedRecordBytes, PacketCursor *cursor, RecordSize *size,
                         uint32_t level) {
    if (cursor == nullptr || cursor->position == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (cursor->remaining < plan.wireFixed) return TROV_RESULT_SHORT_INPUT;
    PacketCursor c = *cursor;
    Sizes data;
    if (sizeWalk(plan, c, data, structureEnv(), level) != TROV_RESULT_OK) return TROV_RESULT_SHORT_INPUT;
    Sizes total;
    total.add(roundUp8u16(fixedRecordBytes), roundUp8(uint32_t{fixedRecordBytes}));
    total.add(data.bytes, data.extent);
    *size = RecordSize{total.bytes, total.extent};
    *cursor = c;
    return TROV_RESULT_OK;
}

void *structDecode(const Plan &plan, PacketCursor *cursor, void *record, void *extra, uint32_t level) {
    if (cursor == nullptr || cursor->position == nullptr || record == nullptr || extra == nullptr) return nullptr;
    auto *start = static_cast<uint8_t *>(alignUp8(extra));
    const FieldEnv env = structureEnv();
    // The extent of the data area, sized again here: the bound of every write.
    PacketCursor probe = *cursor;
    Sizes room;
    if (sizeWalk(plan, probe, room, env, level) != TROV_RESULT_OK) return start;
    uint8_t *end = static_cast<uint8_t *>(extra) + room.extent;
    DecodePass pass{{plan, env, level}, static_cast<uint8_t *>(record), *cursor, start, end < start ? start : end};
    walk(plan, pass);
    return pass.data;
}

} // namespace trov
