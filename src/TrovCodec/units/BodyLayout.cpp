// The generic body codec: one encode and one decode routine for every layout.
//
// Encoding sizes the body first (attribute values through their codec's
// EncCalc), reserves the output, then writes each field big-endian.
// Decoding checks the layout's minimum and obtains the record, runs a size
// pass over a copy of the cursor that checks every byte a field needs and
// sums the managed-buffer bytes (strings rounded up to 8, attribute values
// as their DecCalc reports), prepares the buffer, then reads the fields with
// the variable data placed one after another in the buffer.
#include "units/BodyLayout.h"

#include <cstring>

#include "api/Memory.h"
#include "engine/Cursor.h"
#include "events/EventList.h"

namespace trov {

namespace {

uint8_t *at(void *record, uint32_t offset) { return static_cast<uint8_t *>(record) + offset; }
const uint8_t *at(const void *record, uint32_t offset) {
    return static_cast<const uint8_t *>(record) + offset;
}

// A string's length as the record gives it: a u8-counted string takes the
// first byte of the OctetString's length only.
uint16_t stringLength(BodyFieldKind kind, const void *field) {
    if (kind == BodyFieldKind::String8) return loadField<uint8_t>(field, 0);
    return loadField<uint16_t>(field, 0);
}

uint32_t scalarWidth(BodyFieldKind kind) {
    return kind == BodyFieldKind::U8 ? 1 : kind == BodyFieldKind::U16 ? 2 : 4;
}

// The encode size pass. On success `bodyLength` is the body's true byte
// count (saturating 32-bit, so that an overlong body is seen rather than
// wrapped).
TrovResult sizeRequest(const BodyLayout &l, const void *record, uint8_t version,
                       uint32_t &bodyLength) {
    WireSize total;
    for (uint32_t i = 0; i < l.count; ++i) {
        const BodyField &f = l.fields[i];
        const uint8_t *field = at(record, fieldOffset(l, i));
        switch (f.kind) {
        case BodyFieldKind::U8:
        case BodyFieldKind::U16:
        case BodyFieldKind::U32:
        case BodyFieldKind::Bytes: total.add(minimumWireBytes(f)); break;
        case BodyFieldKind::String8:
        case BodyFieldKind::String16:
        case BodyFieldKind::Block: {
            const uint16_t n = stringLength(f.kind, field);
            if (n != 0 && loadField<const void *>(field, offsetof(OctetString, data)) == nullptr)
                return TROV_RESULT_NULL_ARGUMENT;
            total.add(minimumWireBytes(f) + n);
            break;
        }
        case BodyFieldKind::Attribute: {
            const uint16_t id = loadField<uint16_t>(field, 0);
            const void *value = loadField<const void *>(record, valueOffset(fieldOffset(l, i)));
            const AttributeCodecRow *row = lookupAttribute(id, version);
            if (row == nullptr) return TROV_RESULT_NO_ATTRIBUTE_CODEC;
            if (value == nullptr) return TROV_RESULT_NULL_ARGUMENT;
            WireSize valueBytes;
            if (TrovResult r = row->ops.encCalc(value, 1, &valueBytes, version)) return r;
            if (valueBytes.nullData) return TROV_RESULT_NULL_ARGUMENT;
            total.add(2);
            total.add(valueBytes);
            break;
        }
        }
    }
    bodyLength = total.extent;
    return TROV_RESULT_OK;
}

void writeRequest(const BodyLayout &l, const void *record, uint8_t version, PacketCursor &c) {
    for (uint32_t i = 0; i < l.count; ++i) {
        const BodyField &f = l.fields[i];
        const uint32_t offset = fieldOffset(l, i);
        const uint8_t *field = at(record, offset);
        switch (f.kind) {
        case BodyFieldKind::U8:
        case BodyFieldKind::U16:
        case BodyFieldKind::U32: putValue(c, field, scalarWidth(f.kind)); break;
        case BodyFieldKind::Bytes: putBytes(&c, field, f.bytes); break;
        case BodyFieldKind::String8:
        case BodyFieldKind::String16:
        case BodyFieldKind::Block: {
            const uint16_t n = stringLength(f.kind, field);
            if (f.kind == BodyFieldKind::String8) putU8(c, static_cast<uint8_t>(n));
            if (f.kind == BodyFieldKind::String16) putU16(c, n);
            putBytes(&c, loadField<const void *>(field, offsetof(OctetString, data)), n);
            break;
        }
        case BodyFieldKind::Attribute: {
            const uint16_t id = loadField<uint16_t>(field, 0);
            putU16(c, id);
            lookupAttribute(id, version)
                ->ops.encode(&c, loadField<const void *>(record, valueOffset(offset)), 1, version);
            break;
        }
        }
    }
}

// The decode size pass over a copy of the body: every byte a field needs is
// checked here, so the read pass does not check again. `bytes` is the
// managed buffer's size in the protocol's 16-bit arithmetic, `extent` the
// room the read pass really uses.
TrovResult sizeReply(const BodyLayout &l, PacketCursor c, uint8_t version, uint16_t &bytes,
                     uint32_t &extent) {
    bytes = 0;
    extent = 0;
    for (uint32_t i = 0; i < l.count; ++i) {
        const BodyField &f = l.fields[i];
        switch (f.kind) {
        case BodyFieldKind::U8:
        case BodyFieldKind::U16:
        case BodyFieldKind::U32:
        case BodyFieldKind::Bytes: {
            const uint32_t n = minimumWireBytes(f);
            if (c.remaining < n) return TROV_RESULT_SHORT_INPUT;
            skip(c, n);
            break;
        }
        case BodyFieldKind::String8:
        case BodyFieldKind::String16:
        case BodyFieldKind::Block: {
            uint32_t n = c.remaining;
            if (f.kind != BodyFieldKind::Block) {
                const uint32_t prefix = minimumWireBytes(f);
                if (c.remaining < prefix) return TROV_RESULT_SHORT_INPUT;
                n = prefix == 1 ? getU8(c) : getU16(c);
                if (c.remaining < n) return TROV_RESULT_SHORT_INPUT;
            } else if (n > 0xFFFF) {
                return TROV_RESULT_SHORT_INPUT; // its length cannot be recorded
            }
            skip(c, n);
            bytes = static_cast<uint16_t>(bytes + roundUp8u16(n));
            extent += alignTo(n, 8);
            break;
        }
        case BodyFieldKind::Attribute: {
            if (c.remaining < 2) return TROV_RESULT_SHORT_INPUT;
            const AttributeCodecRow *row = lookupAttribute(getU16(c), version);
            if (row == nullptr) return TROV_RESULT_NO_ATTRIBUTE_CODEC;
            RecordSize size{};
            if (TrovResult r = row->ops.decCalc(&c, 1, &size, version)) return r;
            bytes = static_cast<uint16_t>(bytes + size.bytes);
            extent += size.extent > size.bytes ? size.extent : size.bytes;
            break;
        }
        }
    }
    return TROV_RESULT_OK;
}

// The read pass: fills the record, variable data from `data` on.
void readReply(const BodyLayout &l, PacketCursor c, uint8_t version, void *record, uint8_t *data) {
    for (uint32_t i = 0; i < l.count; ++i) {
        const BodyField &f = l.fields[i];
        const uint32_t offset = fieldOffset(l, i);
        uint8_t *field = at(record, offset);
        switch (f.kind) {
        case BodyFieldKind::U8: storeField(field, 0, getU8(c)); break;
        case BodyFieldKind::U16: storeField(field, 0, getU16(c)); break;
        case BodyFieldKind::U32: storeField(field, 0, getU32(c)); break;
        case BodyFieldKind::Bytes: getBytes(c, field, f.bytes); break;
        case BodyFieldKind::String8:
        case BodyFieldKind::String16:
        case BodyFieldKind::Block: {
            const uint16_t n = f.kind == BodyFieldKind::String8    ? getU8(c)
                               : f.kind == BodyFieldKind::String16 ? getU16(c)
                                                               : static_cast<uint16_t>(c.remaining);
            storeField(field, offsetof(OctetString, length), n);
            storeField(field, offsetof(OctetString, data), n == 0 ? nullptr : data);
            getBytes(c, data, n);
            if (n != 0) data += alignTo(n, 8);
            break;
        }
        case BodyFieldKind::Attribute: {
            const uint16_t id = getU16(c);
            storeField(field, 0, id);
            storeField(record, valueOffset(offset), static_cast<void *>(data));
            data = static_cast<uint8_t *>(
                lookupAttribute(id, version)->ops.decode(data, &c, 1, version));
            break;
        }
        }
    }
}

} // namespace

TrovResult encodeLayout(const BodyLayout &l, HeaderInfo *info, const void *record,
                        EncodeOutput *output) {
    const auto version = static_cast<uint8_t>(info->version);
    uint32_t bodyLength = 0;
    if (TrovResult r = sizeRequest(l, record, version, bodyLength)) return r;
    PacketCursor body{};
    bool allocated = false;
    if (TrovResult r = reserveEncodeBuffer(info, bodyLength, output, &body, &allocated)) return r;
    writeRequest(l, record, version, body);
    return finishEncodeBuffer(output, body, allocated);
}

TrovResult decodeLayout(const BodyLayout &l, HeaderInfo *info, DecodeResult *result,
                        const PacketCursor *body) {
    const auto version = static_cast<uint8_t>(info->version);
    switch (l.kind) {
    case BodyKind::NoReply: return TROV_RESULT_OK;
    case BodyKind::EventList:
        return decodeEventList(EventFraming::Long, activeTables(), version, result, body);
    case BodyKind::ShortEventList:
        return decodeEventList(EventFraming::Short, activeTables(), version, result, body);
    case BodyKind::Fields: break;
    }

    bool recordAllocated = false;
    if (TrovResult r = allocateRecord(result, body, minimumLength(l),
                                      static_cast<uint16_t>(layoutRecordBytes(l)), &recordAllocated))
        return r;

    uint16_t bytes = 0;
    uint32_t extent = 0;
    if (TrovResult r = sizeReply(l, *body, version, bytes, extent)) {
        releaseOnFailure(result, recordAllocated, false);
        return r;
    }
    uint8_t *data = nullptr;
    if (hasVariableParts(l)) {
        auto *buffer = reinterpret_cast<BufferDesc *>(at(result->record, bufferOffset(l)));
        bool bufferAllocated = false;
        if (TrovResult r = prepareBuffer(result, buffer, bytes, &bufferAllocated, extent)) {
            releaseOnFailure(result, recordAllocated, bufferAllocated);
            return r;
        }
        data = static_cast<uint8_t *>(buffer->data);
    }
    readReply(l, *body, version, result->record, data);
    return TROV_RESULT_OK;
}

} // namespace trov
