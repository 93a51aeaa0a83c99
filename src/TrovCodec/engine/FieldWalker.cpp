// The four passes of the field model. Each handles every kind once; the
// plan's rules carry what a family does differently.
#include "engine/FieldWalker.h"

#include <bit>
#include <cstring>

namespace trov {
namespace {

// Typed values carry no version of their own and travel in array form.
constexpr uint8_t kValueVersion = 0;
constexpr uint8_t kArrayForm = 1;


uint32_t loadCount(const uint8_t *record, uint16_t offset, uint8_t width) {
    return width == 2 ? loadField<uint16_t>(record, offset) : loadField<uint8_t>(record, offset);
}

void storeCount(uint8_t *record, uint16_t offset, uint8_t width, uint32_t n) {
    if (width == 2) storeField(record, offset, static_cast<uint16_t>(n));
    else storeField(record, offset, static_cast<uint8_t>(n));
}

// The value bytes an option carries: the kind's fixed size for kinds 0 to 5
// (whatever its length byte says), the length byte for the others.
uint32_t optionWireBytes(uint8_t kind, uint8_t length) {
    uint8_t fixed = 0;
    return trovEncCalc_OptionParam(kind, nullptr, &fixed) == TROV_RESULT_OK ? fixed : length;
}
uint32_t optionRoom(uint8_t kind, uint8_t length) { return roundUp8(trovDecCalc_OptionParam(kind, length)); }

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
    return width == 1 ? byteAt(offset) : byteAt(offset) << 8 | byteAt(offset + 1);
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
    case FieldKind::U16s:
        for (uint32_t i = 0; i < n; ++i) storeU16(out + 2 * i, loadField<uint16_t>(data, 2 * i));
        break;
    case FieldKind::U32s:
    case FieldKind::WideU32s:
        for (uint32_t i = 0; i < n; ++i) storeU32(out + 4 * i, loadField<uint32_t>(data, 4 * i));
        break;
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

} // namespace

TrovResult walkEncCalc(const Plan &plan, const uint8_t *record, WireSize &size, const FieldEnv &env) {
    uint32_t pending = 0; // the last Count field's value
    for (uint8_t i = 0; i < plan.count; ++i) {
        const Field &f = plan.fields[i];
        const KindInfo &k = kindInfo(f.kind);
        const auto *pointer = f.data != kNoData ? loadField<const uint8_t *>(record, f.data) : nullptr;
        switch (f.kind) {
        case FieldKind::Bytes: size.add(f.size); break;
        case FieldKind::Count:
            pending = loadCount(record, f.offset, f.prefix);
            size.add(f.prefix);
            break;
        case FieldKind::Attribute:
        case FieldKind::TypedValue:
        case FieldKind::ReservedValue: {
            const ValueCodec codec = valueCodec(f, loadField<uint16_t>(record, f.offset), env);
            if (codec.ops == nullptr) return codec.missing;
            if (pointer == nullptr) return TROV_RESULT_NULL_ARGUMENT;
            WireSize value;
            if (TrovResult r = codec.ops->encCalc(pointer, kArrayForm, &value, codec.version)) return r;
            if (value.nullData) return TROV_RESULT_NULL_ARGUMENT;
            size.add(2);
            size.add(value);
            break;
        }
        case FieldKind::Option: {
            const uint32_t n = optionWireBytes(loadField<uint8_t>(record, f.offset),
                                               loadField<uint8_t>(record, f.offset + 1u));
            if (n != 0 && pointer == nullptr) return TROV_RESULT_NULL_ARGUMENT;
            size.add(2 + n);
            break;
        }
        case FieldKind::Attributes:
        case FieldKind::EventAttributes: {
            const ListOps *list = f.kind == FieldKind::Attributes ? env.attributes : env.eventAttributes;
            if (TrovResult r = list->encCalc(record + f.offset, env.nesting, env.version, size)) return r;
            break;
        }
        default:
            if (!k.counted) {
                size.add(k.wire);
                break;
            }
            const uint32_t n = f.kind == FieldKind::Rest ? loadField<uint16_t>(record, f.offset)
                               : f.prefix == 0           ? pending
                                                         : loadCount(record, f.offset, f.prefix);
            if (n != 0 && pointer == nullptr) {
                if (plan.rules.nullRefusedAtOnce) return TROV_RESULT_NULL_ARGUMENT;
                size.nullData = true;
            }
            size.add(f.prefix + n * k.wire);
            break;
        }
    }
    return TROV_RESULT_OK;
}

void walkEncode(const Plan &plan, PacketCursor &c, const uint8_t *record, const FieldEnv &env) {
    uint8_t i = 0;
    if (c.position != nullptr && c.remaining >= plan.leadWire) { // the opening run fits: no tests
        uint8_t *out = c.position;
        for (; i < plan.leadFields; ++i) {
            const Field &f = plan.fields[i];
            switch (f.kind) {
            case FieldKind::U8: *out++ = record[f.offset]; break;
            case FieldKind::U16:
                storeU16(out, loadField<uint16_t>(record, f.offset));
                out += 2;
                break;
            case FieldKind::U32:
                storeU32(out, loadField<uint32_t>(record, f.offset));
                out += 4;
                break;
            case FieldKind::Bytes:
                if (f.size != 0) std::memcpy(out, record + f.offset, f.size);
                out += f.size;
                break;
            case FieldKind::Bytes12:
                std::memcpy(out, record + f.offset, 12);
                out += 12;
                break;
            default: break; // Reserved8: no wire byte
            }
        }
        advance(c, plan.leadWire);
    }
    uint32_t pending = 0;
    for (; i < plan.count; ++i) {
        const Field &f = plan.fields[i];
        const KindInfo &k = kindInfo(f.kind);
        const auto *pointer = f.data != kNoData ? loadField<const uint8_t *>(record, f.data) : nullptr;
        switch (f.kind) {
        case FieldKind::U8:
        case FieldKind::U16:
        case FieldKind::U32: putValue(c, record + f.offset, k.wire); break;
        case FieldKind::Bytes: putBytes(&c, record + f.offset, f.size); break;
        case FieldKind::Bytes12: putBytes(&c, record + f.offset, k.wire); break;
        case FieldKind::End:
        case FieldKind::Reserved8:
        case FieldKind::Buffer:
        case FieldKind::Head: break;
        case FieldKind::Count:
            pending = loadCount(record, f.offset, f.prefix);
            putValue(c, record + f.offset, f.prefix);
            break;
        case FieldKind::Attribute:
        case FieldKind::TypedValue:
        case FieldKind::ReservedValue: {
            const uint16_t key = loadField<uint16_t>(record, f.offset);
            const ValueCodec codec = valueCodec(f, key, env);
            if (codec.ops == nullptr) break; // the size pass refused it
            putU16(c, key);
            codec.ops->encode(&c, pointer, kArrayForm, codec.version);
            break;
        }
        case FieldKind::Option: {
            const auto kind = loadField<uint8_t>(record, f.offset);
            uint8_t fixed = 0;
            if (trovEncCalc_OptionParam(kind, nullptr, &fixed) == TROV_RESULT_OK) {
                trovEncode_OptionParam(&c, kind, pointer); // writes the kind's own length byte
                break;
            }
            const auto length = loadField<uint8_t>(record, f.offset + 1u);
            putU8(c, kind);
            putU8(c, length);
            putBytes(&c, pointer, length);
            break;
        }
        case FieldKind::Attributes:
        case FieldKind::EventAttributes:
            (f.kind == FieldKind::Attributes ? env.attributes : env.eventAttributes)
                ->encode(c, record + f.offset, env.nesting, env.version);
            break;
        default: {
            uint32_t n = pending;
            if (f.kind == FieldKind::Rest) n = loadField<uint16_t>(record, f.offset);
            else if (f.prefix != 0) {
                n = loadCount(record, f.offset, f.prefix);
                putValue(c, record + f.offset, f.prefix);
            }
            writeElements(c, f.kind, pointer, n);
            break;
        }
        }
    }
}

TrovResult walkDecCalc(const Plan &plan, PacketCursor &cursor, Sizes &data, const FieldEnv &env) {
    const PacketCursor &c = cursor;
    // What the length tests compare with; 64-bit so no sum can wrap.
    const uint64_t have = uint64_t{c.remaining} + plan.rules.slack;
    // The opening run of fixed fields is tested with what follows it.
    uint64_t offset = plan.leadWire; // body bytes walked so far
    uint32_t pending = 0;
    Sizes sizes;
    // A cursor over the real bytes from `offset` on, for the codecs of values
    // and lists: they read what they need and report where they stopped.
    auto rest = [&]() { return PacketCursor{c.position + offset, static_cast<uint32_t>(c.remaining - offset)}; };

    for (uint8_t i = plan.leadFields; i < plan.count; ++i) {
        const Field &f = plan.fields[i];
        const KindInfo &k = kindInfo(f.kind);
        switch (f.kind) {
        case FieldKind::Bytes: offset += f.size; break; // tested with what follows
        case FieldKind::Count:
            if (have < offset + f.prefix) return TROV_RESULT_SHORT_INPUT;
            pending = countAt(c, offset, f.prefix);
            offset += f.prefix;
            break;
        case FieldKind::Attribute:
        case FieldKind::TypedValue:
        case FieldKind::ReservedValue: {
            // No slack here: the codec gets the real bytes.
            if (c.remaining < offset + 2) return TROV_RESULT_SHORT_INPUT;
            const uint16_t key = loadU16(c.position + offset);
            const ValueCodec codec = valueCodec(f, key, env);
            if (codec.ops == nullptr) return codec.missing;
            offset += 2;
            PacketCursor value = rest();
            RecordSize decoded{};
            if (TrovResult r = codec.ops->decCalc(&value, kArrayForm, &decoded, codec.version)) return r;
            offset = static_cast<uint64_t>(value.position - c.position);
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
            break;
        }
        case FieldKind::Option: {
            if (have < offset + 2) return TROV_RESULT_SHORT_INPUT;
            const auto kind = static_cast<uint8_t>(countAt(c, offset, 1));
            const auto length = static_cast<uint8_t>(countAt(c, offset + 1, 1));
            offset += 2 + optionWireBytes(kind, length);
            if (have < offset) return TROV_RESULT_SHORT_INPUT;
            const uint32_t room = optionRoom(kind, length);
            sizes.add(static_cast<uint16_t>(room), room);
            break;
        }
        case FieldKind::Attributes:
        case FieldKind::EventAttributes: {
            if (c.remaining < offset) return TROV_RESULT_SHORT_INPUT;
            const ListOps *list = f.kind == FieldKind::Attributes ? env.attributes : env.eventAttributes;
            PacketCursor items = rest();
            if (TrovResult r = list->decCalc(items, env.nesting, env.version, sizes)) return r;
            offset = static_cast<uint64_t>(items.position - c.position);
            break;
        }
        default: {
            if (!k.counted) {
                offset += k.wire; // fixed fields: tested with what follows
                break;
            }
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
            offset += uint64_t{n} * k.wire;
            if (have < offset) return TROV_RESULT_SHORT_INPUT;
            sizes.add(static_cast<uint16_t>(dataReported(f.kind, n)), dataRoom(f.kind, n));
            break;
        }
        }
    }
    if (have < offset) return TROV_RESULT_SHORT_INPUT;
    // With slack the body may end before its last byte; the cursor stops there.
    advance(cursor, offset < c.remaining ? static_cast<uint32_t>(offset) : c.remaining);
    data.add(sizes.bytes, sizes.extent);
    return TROV_RESULT_OK;
}

uint8_t *walkDecode(const Plan &plan, PacketCursor &c, uint8_t *record, uint8_t *data,
                    const FieldEnv &env) {
    uint8_t i = 0;
    if (c.remaining >= plan.leadWire) { // the opening run is all there: no tests
        const uint8_t *in = c.position;
        for (; i < plan.leadFields; ++i) {
            const Field &f = plan.fields[i];
            switch (f.kind) {
            case FieldKind::U8: record[f.offset] = *in++; break;
            case FieldKind::U16:
                storeField(record, f.offset, loadU16(in));
                in += 2;
                break;
            case FieldKind::U32:
                storeField(record, f.offset, loadU32(in));
                in += 4;
                break;
            case FieldKind::Bytes:
                if (f.size != 0) std::memcpy(record + f.offset, in, f.size);
                in += f.size;
                break;
            case FieldKind::Bytes12:
                std::memcpy(record + f.offset, in, 12);
                in += 12;
                break;
            default: break; // Reserved8: no wire byte
            }
        }
        advance(c, plan.leadWire);
    }
    return walkDecodeFrom(plan, i, c, record, data, env);
}

uint8_t *walkDecodeFrom(const Plan &plan, uint8_t first, PacketCursor &c, uint8_t *record, uint8_t *data,
                        const FieldEnv &env) {
    uint32_t pending = 0;
    for (uint8_t i = first; i < plan.count; ++i) {
        const Field &f = plan.fields[i];
        const KindInfo &k = kindInfo(f.kind);
        switch (f.kind) {
        case FieldKind::U8: storeField(record, f.offset, static_cast<uint8_t>(takeScalar(c, 1))); break;
        case FieldKind::U16: storeField(record, f.offset, static_cast<uint16_t>(takeScalar(c, 2))); break;
        case FieldKind::U32: storeField(record, f.offset, takeScalar(c, 4)); break;
        case FieldKind::Bytes: take(c, record + f.offset, f.size); break;
        case FieldKind::Bytes12: take(c, record + f.offset, k.wire); break;
        case FieldKind::End:
        case FieldKind::Reserved8:
        case FieldKind::Buffer:
        case FieldKind::Head: break;
        case FieldKind::Count:
            pending = takeScalar(c, f.prefix);
            storeCount(record, f.offset, f.prefix, pending);
            break;
        case FieldKind::Attribute: {
            const uint16_t id = getU16(c);
            storeField(record, f.offset, id);
            storeField(record, f.data, static_cast<void *>(data));
            data = static_cast<uint8_t *>(env.attribute(id, env.version)->decode(data, &c, kArrayForm, env.version));
            break;
        }
        case FieldKind::TypedValue:
        case FieldKind::ReservedValue: {
            const uint16_t type = getU16(c);
            storeField(record, f.offset, type);
            const ValueCodecOps *ops = env.dataType(type);
            if (ops == nullptr) break; // not reached: the size pass refused it
            // Size the value again to place it where the size pass counted it.
            PacketCursor probe = c;
            RecordSize decoded{};
            ops->decCalc(&probe, kArrayForm, &decoded, kValueVersion);
            uint32_t room = roundUp8(decoded.extent);
            if (f.kind == FieldKind::ReservedValue) {
                room = reservedValueRoom(type);
                if (room == 0) { // read over; the pointer is left as it was
                    c = probe;
                    break;
                }
            }
            storeField(record, f.data, static_cast<void *>(data));
            ops->decode(data, &c, kArrayForm, kValueVersion);
            data += room;
            break;
        }
        case FieldKind::Option: {
            const uint8_t kind = getU8(c);
            const uint8_t length = getU8(c);
            storeField(record, f.offset, kind);
            storeField(record, f.offset + 1u, length);
            const uint32_t room = optionRoom(kind, length);
            storeField(record, f.data, room != 0 ? static_cast<void *>(data) : nullptr);
            if (room != 0) trovDecode_OptionParam(kind, length, data, &c);
            data += room;
            break;
        }
        case FieldKind::Attributes:
            data = env.attributes->decode(c, record + f.offset, data, env.nesting, env.version);
            break;
        case FieldKind::EventAttributes:
            data = env.eventAttributes->decode(c, record + f.offset, data, env.nesting, env.version);
            break;
        default: {
            uint32_t n = pending;
            if (f.kind == FieldKind::Rest) n = c.remaining;
            else if (f.prefix != 0) n = takeScalar(c, f.prefix);
            if (f.prefix != 0 || f.kind == FieldKind::Rest)
                storeCount(record, f.offset, f.countWidth != 0 ? f.countWidth : f.prefix, n);
            storeField(record, f.data, n != 0 ? static_cast<void *>(data) : nullptr);
            readElements(c, f.kind, data, n, plan.rules.terminateChars);
            data += dataRoom(f.kind, n);
            break;
        }
        }
    }
    return data;
}

} // namespace trov
