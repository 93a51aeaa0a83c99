// The 20-byte packet header.
//
//   0  u16 mark        protocol mark (0xA7E5 for the body decoders)
//   2  u8  version     selects the header codec and every table lookup
//   3  u8  flags       bit 0: bytes 18-19 hold a 16-bit extension;
//                      bit 3: byte 18 holds an 8-bit extension, byte 19 is 0
//   4  u16 code        body code
//   6  u16 value4      carried unchanged
//   8  u16 bodyLength  body bytes after the header
//  10  u32 value6      carried unchanged
//  14  u32 value7      carried unchanged
//  18  u16 extension   the body decoder's unit type
//
// The decoder is deliberately asymmetric with the encoder: with flags bit 0
// clear, bytes 18-19 are copied into the record in wire order (little-endian)
// rather than read as a big-endian number, so a byte-form extension reads back
// as the byte and two non-zero bytes come back swapped.
#include <cstring>

#include "engine/HeaderCodec.h"

#include "engine/Cursor.h"

namespace trov {

namespace {

enum class Width : uint8_t {
    LowByte,  // u8 in the low byte of a u16 record slot, high byte kept
    ByteOnly, // u8 that replaces the whole u16 record slot (high byte 0)
    U16,
    U32,
};

struct HeaderField {
    uint8_t recordOffset;
    uint8_t packetOffset;
    Width width;
};

// Fields 0..9. The mark and the version byte (0 and 1) need no header codec:
// the exports reach them without one.
constexpr HeaderField kFields[] = {
    {0, 0, Width::U16},       // 0 mark
    {2, 2, Width::LowByte},   // 1 version
    {4, 3, Width::LowByte},   // 2 flags
    {6, 4, Width::U16},       // 3 code
    {8, 6, Width::U16},       // 4 value4
    {10, 8, Width::U16},      // 5 bodyLength
    {12, 10, Width::U32},     // 6 value6
    {16, 14, Width::U32},     // 7 value7
    {20, 18, Width::U16},     // 8 extension
    {20, 18, Width::ByteOnly} // 9 extension, byte form
};
static_assert(offsetof(HeaderInfo, flags) == 4 && offsetof(HeaderInfo, extension) == 20);

constexpr uint32_t wireBytes(Width w) {
    return w == Width::U32 ? 4 : w == Width::U16 ? 2 : 1;
}

const HeaderField *fieldAt(uint32_t index) {
    if (index > 9) return nullptr;
    return &kFields[index];
}

// The caller's value, at the field's width (a byte field's byte alone).
uint32_t valueIn(const void *value, Width w) {
    if (w == Width::U32) return loadField<uint32_t>(value, 0);
    return w == Width::U16 ? loadField<uint16_t>(value, 0) : loadField<uint8_t>(value, 0);
}
void valueOut(void *out, uint32_t v, Width w) {
    if (w == Width::U32) storeField(out, 0, v);
    else if (w == Width::U16) storeField(out, 0, static_cast<uint16_t>(v));
    else storeField(out, 0, static_cast<uint8_t>(v));
}

} // namespace

// A byte field is the low byte of its u16 record slot: read as that byte;
// written into it with the high byte kept (LowByte) or cleared (ByteOnly).
TrovResult headerGetFromRecord(uint32_t index, const HeaderInfo *info, void *out) {
    const HeaderField *f = fieldAt(index);
    if (f == nullptr) return TROV_RESULT_BAD_FIELD_INDEX;
    const uint8_t at = f->recordOffset;
    valueOut(out, f->width == Width::U32 ? loadField<uint32_t>(info, at) : loadField<uint16_t>(info, at), f->width);
    return TROV_RESULT_OK;
}

TrovResult headerSetToRecord(uint32_t index, HeaderInfo *info, const void *value) {
    const HeaderField *f = fieldAt(index);
    if (f == nullptr) return TROV_RESULT_BAD_FIELD_INDEX;
    const uint8_t at = f->recordOffset;
    const uint32_t v = valueIn(value, f->width);
    if (f->width == Width::U32) storeField(info, at, v);
    else if (f->width == Width::LowByte)
        storeField(info, at, static_cast<uint16_t>((loadField<uint16_t>(info, at) & 0xFF00u) | v));
    else storeField(info, at, static_cast<uint16_t>(v));
    return TROV_RESULT_OK;
}

// Field access in a packet does not move the cursor. It does refuse a field
// that lies beyond the bytes the cursor holds: the library never touches
// memory outside the caller's buffer.
TrovResult headerGetFromPacket(uint32_t index, const PacketCursor *cursor, void *out) {
    const HeaderField *f = fieldAt(index);
    if (f == nullptr) return TROV_RESULT_BAD_FIELD_INDEX;
    if (cursor->remaining < f->packetOffset + wireBytes(f->width)) return TROV_RESULT_BAD_PACKET;
    const uint8_t *p = cursor->position + f->packetOffset;
    valueOut(out, f->width == Width::U32 ? loadU32(p) : f->width == Width::U16 ? loadU16(p) : p[0], f->width);
    return TROV_RESULT_OK;
}

TrovResult headerSetToPacket(uint32_t index, const PacketCursor *cursor, const void *value) {
    const HeaderField *f = fieldAt(index);
    if (f == nullptr) return TROV_RESULT_BAD_FIELD_INDEX;
    if (cursor->remaining < f->packetOffset + wireBytes(f->width)) return TROV_RESULT_BUFFER_TOO_SMALL;
    uint8_t *p = cursor->position + f->packetOffset;
    const uint32_t v = valueIn(value, f->width);
    if (f->width == Width::U32) storeU32(p, v);
    else if (f->width == Width::U16) storeU16(p, static_cast<uint16_t>(v));
    else p[0] = static_cast<uint8_t>(v); // index 9: byte 18 only
    return TROV_RESULT_OK;
}

namespace {

// The callers have checked that the 20 bytes fit: the header goes out as
// plain stores.
uint8_t *encodeHeader(const HeaderInfo *info, const PacketCursor *cursor) {
    uint8_t *p = cursor->position;
    storeU16(p, info->mark);
    p[2] = static_cast<uint8_t>(info->version);
    p[3] = static_cast<uint8_t>(info->flags);
    storeU16(p + 4, info->code);
    storeU16(p + 6, info->value4);
    storeU16(p + 8, info->bodyLength);
    storeU32(p + 10, info->value6);
    storeU32(p + 14, info->value7);
    uint16_t extension = 0;
    if (info->flags & TROV_FLAG_EXTENSION16) extension = info->extension;
    else if (info->flags & TROV_FLAG_EXTENSION8) extension = static_cast<uint16_t>(info->extension << 8);
    storeU16(p + 18, extension);
    return p + TROV_HEADER_LENGTH;
}

const uint8_t *decodeHeader(const PacketCursor *cursor, HeaderInfo *info) {
    PacketCursor c = *cursor;
    info->mark = getU16(c);
    info->version = getU8(c);
    info->flags = getU8(c);
    info->code = getU16(c);
    info->value4 = getU16(c);
    info->bodyLength = getU16(c);
    info->value6 = getU32(c);
    info->value7 = getU32(c);
    const uint8_t b18 = getU8(c);
    const uint8_t b19 = getU8(c);
    info->extension = (info->flags & TROV_FLAG_EXTENSION16)
                          ? static_cast<uint16_t>(b18 << 8 | b19)
                          : static_cast<uint16_t>(b19 << 8 | b18); // wire order, on purpose
    return c.position;
}

} // namespace

extern const HeaderCodecRow HeaderCodecTable[] = {
    {TROV_PROTOCOL_VERSION, TROV_HEADER_LENGTH, headerGetFromRecord, headerSetToRecord, headerGetFromPacket,
     headerSetToPacket, encodeHeader, decodeHeader},
    {0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
};

uint8_t packetVersion(const PacketCursor &cursor) { return cursor.position[2]; }

} // namespace trov
