// The four walks of the string event family over a layout's derived plan.
//
// Wire: the fields in order, big-endian, no padding. Record: the fixed part
// (fields at natural alignment, each variable part's 16-byte head 8-aligned),
// then each variable part's data in field order, each starting 8-aligned.
// The size pass reads only the counts, lengths and types it needs, and tests
// every byte it moves over; the decode pass trusts it, but still never reads
// past the cursor, so a layout with slack (0x30) reads missing bytes as 0.
#include "events/StringEvents.h"

#include <cstring>

#include "engine/Cursor.h"

namespace trov {
namespace {

constexpr uint32_t kItemWireBytes = 5;   // u8, u32
constexpr uint32_t kItemRecordBytes = 8; // u8 @0, u32 @4

// Typed values carry no version of their own: a row for every version is
// looked up, and the codec is told version 0.
constexpr uint8_t kValueVersion = 0;
// Nested values travel in array form; the flag is also the nesting depth.
constexpr uint8_t kValueArrayForm = 1;

constexpr uint32_t pad8(uint32_t n) { return (n + 7u) & ~7u; }

// The count or length of `width` bytes at `offset` of the body; bytes the
// cursor does not hold read as 0.
uint32_t countAt(const PacketCursor &c, uint64_t offset, uint32_t width) {
    auto byteAt = [&](uint64_t at) -> uint32_t { return at < c.remaining ? c.position[at] : 0u; };
    return width == 1 ? byteAt(offset) : byteAt(offset) << 8 | byteAt(offset + 1);
}

// Copies n bytes to dst without reading past the cursor: what it lacks is
// written as 0 and the cursor stops at the end.
void take(PacketCursor &c, uint8_t *dst, uint32_t n) {
    const uint32_t held = n < c.remaining ? n : c.remaining;
    getBytes(c, dst, held);
    if (held < n) std::memset(dst + held, 0, n - held);
}

uint32_t takeScalar(PacketCursor &c, uint32_t width) {
    if (c.remaining >= width) {
        switch (width) {
        case 1: return getU8(c);
        case 2: return getU16(c);
        default: return getU32(c);
        }
    }
    uint8_t wire[4];
    take(c, wire, width);
    return width == 1 ? wire[0] : width == 2 ? loadU16(wire) : loadU32(wire);
}

// An option's value bytes on the wire: the kind's fixed size for kinds 0 to
// 5 (whatever the length byte says), the length byte for the others.
uint32_t optionWireBytes(uint8_t kind, uint8_t length) {
    uint8_t fixed = 0;
    return trovEncCalc_OptionParam(kind, nullptr, &fixed) == TROV_RESULT_OK ? fixed : length;
}

// The room a decoded option value takes behind the fixed part.
uint32_t optionRoom(uint8_t kind, uint8_t length) { return pad8(trovDecCalc_OptionParam(kind, length)); }

const DataTypeCodecRow *valueCodec(uint16_t type) { return lookupDataType(type, kValueVersion); }

} // namespace

TrovResult stringEventDecCalc(const StringEventPlan &plan, PacketCursor *cursor, RecordSize *size) {
    if (cursor == nullptr || size == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const PacketCursor &c = *cursor;
    // What the length tests compare with; 64-bit so no sum can wrap.
    const uint64_t have = uint64_t{c.remaining} + plan.slack;
    uint64_t offset = 0;          // body bytes walked so far
    uint16_t bytes = plan.record; // the protocol's figure: 16-bit, wraps
    uint32_t extent = plan.record;
    auto addRoom = [&](uint32_t room) {
        bytes = static_cast<uint16_t>(bytes + room);
        extent += room;
    };

    for (uint8_t i = 0; i < plan.count; ++i) {
        const EventStep &s = plan.steps[i];
        switch (s.kind) {
        case EventFieldKind::Octets8:
        case EventFieldKind::Octets16:
        case EventFieldKind::Items: {
            if (have < offset + s.wireBytes) return TROV_RESULT_SHORT_INPUT;
            const uint32_t n = countAt(c, offset, s.wireBytes);
            const bool items = s.kind == EventFieldKind::Items;
            offset += s.wireBytes + uint64_t{n} * (items ? kItemWireBytes : 1);
            if (have < offset) return TROV_RESULT_SHORT_INPUT;
            addRoom(pad8(n * (items ? kItemRecordBytes : 1)));
            break;
        }
        case EventFieldKind::Option: {
            if (have < offset + 2) return TROV_RESULT_SHORT_INPUT;
            const auto kind = static_cast<uint8_t>(countAt(c, offset, 1));
            const auto length = static_cast<uint8_t>(countAt(c, offset + 1, 1));
            offset += 2 + optionWireBytes(kind, length);
            if (have < offset) return TROV_RESULT_SHORT_INPUT;
            addRoom(optionRoom(kind, length));
            break;
        }
        case EventFieldKind::Value:
        case EventFieldKind::ReservedValue: {
            // No slack here (checked at compile time): the codec gets the real bytes.
            if (c.remaining < offset + 2) return TROV_RESULT_SHORT_INPUT;
            const uint16_t type = loadU16(c.position + offset);
            const DataTypeCodecRow *row = valueCodec(type);
            if (row == nullptr) return TROV_RESULT_NO_DATA_TYPE_CODEC;
            PacketCursor value{c.position + offset + 2, static_cast<uint32_t>(c.remaining - offset - 2)};
            RecordSize decoded{};
            const TrovResult r = row->ops.decCalc(&value, kValueArrayForm, &decoded, kValueVersion);
            if (r != TROV_RESULT_OK) return r;
            offset = static_cast<uint64_t>(value.position - c.position);
            if (s.kind == EventFieldKind::Value) {
                bytes = static_cast<uint16_t>(bytes + roundUp8u16(decoded.bytes));
                extent += pad8(decoded.extent);
                break;
            }
            const uint32_t room = reservedValueRoom(type);
            // A value that outgrows its type's room would run into the string.
            if (room != 0 && decoded.extent > room) return TROV_RESULT_SHORT_INPUT;
            addRoom(room);
            break;
        }
        default: offset += s.wireBytes; break; // fixed fields: tested with what follows
        }
    }
    if (have < offset) return TROV_RESULT_SHORT_INPUT;
    // With slack the body may end before its last byte; the cursor stops there.
    advance(*cursor, offset < c.remaining ? static_cast<uint32_t>(offset) : c.remaining);
    *size = RecordSize{bytes, extent};
    return TROV_RESULT_OK;
}

void *stringEventDecode(const StringEventPlan &plan, void *record, PacketCursor *cursor) {
    PacketCursor &c = *cursor;
    auto *base = static_cast<uint8_t *>(record);
    uint8_t *data = base + plan.record; // plan.record is a multiple of 8

    for (uint8_t i = 0; i < plan.count; ++i) {
        const EventStep &s = plan.steps[i];
        switch (s.kind) {
        case EventFieldKind::U8: storeField(base, s.offset, static_cast<uint8_t>(takeScalar(c, 1))); break;
        case EventFieldKind::U16: storeField(base, s.offset, static_cast<uint16_t>(takeScalar(c, 2))); break;
        case EventFieldKind::U32: storeField(base, s.offset, takeScalar(c, 4)); break;
        case EventFieldKind::Block: take(c, base + s.offset, s.wireBytes); break;
        case EventFieldKind::Octets8:
        case EventFieldKind::Octets16: {
            const uint32_t n = takeScalar(c, s.wireBytes);
            if (s.wireBytes == 1) storeField(base, s.offset, static_cast<uint8_t>(n));
            else storeField(base, s.offset, static_cast<uint16_t>(n));
            storeField(base, s.pointer, n != 0 ? data : nullptr);
            take(c, data, n);
            data += pad8(n);
            break;
        }
        case EventFieldKind::Items: {
            const uint32_t m = takeScalar(c, 1);
            storeField(base, s.offset, static_cast<uint8_t>(m));
            storeField(base, s.pointer, m != 0 ? data : nullptr);
            for (uint32_t k = 0; k < m; ++k, data += kItemRecordBytes) {
                storeField(data, 0, getU8(c));
                storeField(data, 4, getU32(c));
            }
            break;
        }
        case EventFieldKind::Option: {
            const uint8_t kind = getU8(c);
            const uint8_t length = getU8(c);
            storeField(base, s.offset, kind);
            storeField(base, s.offset + 1u, length);
            const uint32_t room = optionRoom(kind, length);
            storeField(base, s.pointer, room != 0 ? data : nullptr);
            if (room != 0) trovDecode_OptionParam(kind, length, data, &c);
            data += room;
            break;
        }
        case EventFieldKind::Value:
        case EventFieldKind::ReservedValue: {
            const uint16_t type = getU16(c);
            storeField(base, s.offset, type);
            const DataTypeCodecRow *row = valueCodec(type);
            if (row == nullptr) break; // not reached: the size pass refused it
            // Size the value again to place it exactly where the size pass counted it.
            PacketCursor probe = c;
            RecordSize decoded{};
            row->ops.decCalc(&probe, kValueArrayForm, &decoded, kValueVersion);
            uint32_t room = pad8(decoded.extent);
            if (s.kind == EventFieldKind::ReservedValue) {
                room = reservedValueRoom(type);
                if (room == 0) { // read over; the pointer is left as it was
                    c = probe;
                    break;
                }
            }
            storeField(base, s.pointer, data);
            row->ops.decode(data, &c, kValueArrayForm, kValueVersion);
            data += room;
            break;
        }
        default: break; // Gap8: no wire byte fills it
        }
    }
    return data;
}

TrovResult stringEventEncCalc(const StringEventPlan &plan, const void *record, uint16_t *packetBytes) {
    if (record == nullptr || packetBytes == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    uint64_t total = 0;
    for (uint8_t i = 0; i < plan.count; ++i) {
        const EventStep &s = plan.steps[i];
        const auto *pointer = s.pointer != 0 ? loadField<const uint8_t *>(record, s.pointer) : nullptr;
        uint32_t n = 0; // bytes behind the fixed wire bytes
        switch (s.kind) {
        case EventFieldKind::Octets8:
        case EventFieldKind::Items:
            n = loadField<uint8_t>(record, s.offset);
            if (s.kind == EventFieldKind::Items) n *= kItemWireBytes;
            break;
        case EventFieldKind::Octets16: n = loadField<uint16_t>(record, s.offset); break;
        case EventFieldKind::Option: {
            uint8_t fixed = 0;
            const auto kind = loadField<uint8_t>(record, s.offset);
            n = trovEncCalc_OptionParam(kind, nullptr, &fixed) == TROV_RESULT_OK
                    ? fixed
                    : loadField<uint8_t>(record, s.offset + 1u);
            break;
        }
        case EventFieldKind::Value:
        case EventFieldKind::ReservedValue: {
            const DataTypeCodecRow *row = valueCodec(loadField<uint16_t>(record, s.offset));
            if (row == nullptr) return TROV_RESULT_NO_DATA_TYPE_CODEC;
            if (pointer == nullptr) return TROV_RESULT_NULL_ARGUMENT;
            WireSize valueBytes;
            const TrovResult r = row->ops.encCalc(pointer, kValueArrayForm, &valueBytes, kValueVersion);
            if (r != TROV_RESULT_OK) return r;
            if (valueBytes.nullData) return TROV_RESULT_NULL_ARGUMENT;
            n = valueBytes.extent;
            break;
        }
        default: break;
        }
        if (n != 0 && s.pointer != 0 && pointer == nullptr) return TROV_RESULT_NULL_ARGUMENT;
        total += s.wireBytes + uint64_t{n};
    }
    if (total > 0xFFFF) return TROV_RESULT_SHORT_INPUT;
    *packetBytes = static_cast<uint16_t>(total);
    return TROV_RESULT_OK;
}

void stringEventEncode(const StringEventPlan &plan, PacketCursor *cursor, const void *record) {
    if (cursor == nullptr || record == nullptr) return;
    PacketCursor &c = *cursor;
    const auto *base = static_cast<const uint8_t *>(record);
    for (uint8_t i = 0; i < plan.count; ++i) {
        const EventStep &s = plan.steps[i];
        const auto *pointer = s.pointer != 0 ? loadField<const uint8_t *>(base, s.pointer) : nullptr;
        switch (s.kind) {
        case EventFieldKind::U8:
        case EventFieldKind::U16:
        case EventFieldKind::U32: putValue(c, base + s.offset, s.wireBytes); break;
        case EventFieldKind::Block: putBytes(&c, base + s.offset, s.wireBytes); break;
        case EventFieldKind::Octets8:
        case EventFieldKind::Octets16: {
            const uint32_t n =
                s.wireBytes == 1 ? loadField<uint8_t>(base, s.offset) : loadField<uint16_t>(base, s.offset);
            putValue(c, base + s.offset, s.wireBytes);
            putBytes(&c, pointer, n);
            break;
        }
        case EventFieldKind::Items: {
            const uint8_t m = loadField<uint8_t>(base, s.offset);
            putU8(c, m);
            for (uint32_t k = 0; k < m; ++k) {
                putValue(c, pointer + k * kItemRecordBytes, 1);
                putValue(c, pointer + k * kItemRecordBytes + 4, 4);
            }
            break;
        }
        case EventFieldKind::Option: {
            const auto kind = loadField<uint8_t>(base, s.offset);
            uint8_t fixed = 0;
            if (trovEncCalc_OptionParam(kind, nullptr, &fixed) == TROV_RESULT_OK) {
                trovEncode_OptionParam(&c, kind, pointer); // writes the kind's own length byte
                break;
            }
            const auto length = loadField<uint8_t>(base, s.offset + 1u);
            putU8(c, kind);
            putU8(c, length);
            putBytes(&c, pointer, length);
            break;
        }
        case EventFieldKind::Value:
        case EventFieldKind::ReservedValue: {
            const auto type = loadField<uint16_t>(base, s.offset);
            const DataTypeCodecRow *row = valueCodec(type);
            if (row == nullptr) break; // EncCalc refused it
            putU16(c, type);
            row->ops.encode(&c, pointer, kValueArrayForm, kValueVersion);
            break;
        }
        default: break;
        }
    }
}

} // namespace trov
