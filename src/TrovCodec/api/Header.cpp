// The header's exports: field access in a record and in a packet, encode and
// decode, through the header codec (engine/HeaderCodec.h).
#include "api/Dispatch.h"
#include "engine/Cursor.h"
#include "engine/HeaderCodec.h"

using namespace trov;

extern "C" {

// Fields 0 and 1 (the mark and the version byte) need no header codec; the
// others go through the row of the record's or the packet's version byte.
TROV_API TrovResult TROV_GetFromInfo(uint32_t index, const HeaderInfo *info, void *out) {
    if (info == nullptr || out == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (index <= TROV_FIELD_VERSION) return headerGetFromRecord(index, info, out);
    const HeaderCodecRow *row = findHeaderRow(static_cast<uint8_t>(info->version));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    return row->getFromRecord(index, info, out);
}

TROV_API TrovResult TROV_SetToInfo(uint32_t index, HeaderInfo *info, const void *value) {
    if (info == nullptr || value == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (index <= TROV_FIELD_VERSION) return headerSetToRecord(index, info, value);
    const HeaderCodecRow *row = findHeaderRow(static_cast<uint8_t>(info->version));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    return row->setToRecord(index, info, value);
}

// Past the version byte, the packet must hold it (3 bytes) to find the codec.
TROV_API TrovResult TROV_GetFromPacket(uint32_t index, const PacketCursor *cursor, void *out) {
    if (cursor == nullptr || cursor->position == nullptr || out == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    if (index <= TROV_FIELD_VERSION) return headerGetFromPacket(index, cursor, out);
    if (cursor->remaining < 3) return TROV_RESULT_BAD_PACKET;
    const HeaderCodecRow *row = findHeaderRow(packetVersion(*cursor));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    return row->getFromPacket(index, cursor, out);
}

TROV_API TrovResult TROV_SetToPacket(uint32_t index, const PacketCursor *cursor, const void *value) {
    if (cursor == nullptr || cursor->position == nullptr || value == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    if (index <= TROV_FIELD_VERSION) return headerSetToPacket(index, cursor, value);
    if (cursor->remaining < 3) return TROV_RESULT_BUFFER_TOO_SMALL;
    const HeaderCodecRow *row = findHeaderRow(packetVersion(*cursor));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    return row->setToPacket(index, cursor, value);
}

TROV_API TrovResult TROV_EncodeHeader(const HeaderInfo *info, const PacketCursor *cursor) {
    if (info == nullptr || cursor == nullptr || cursor->position == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    const HeaderCodecRow *row = findHeaderRow(static_cast<uint8_t>(info->version));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    if (cursor->remaining < row->headerLength) return TROV_RESULT_BUFFER_TOO_SMALL;
    row->encodeHeader(info, cursor);
    return TROV_RESULT_OK;
}

TROV_API TrovResult TROV_DecodeHeader(HeaderInfo *info, const PacketCursor *cursor) {
    if (info == nullptr || cursor == nullptr || cursor->position == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    if (cursor->remaining < 3) return TROV_RESULT_BAD_PACKET; // no version byte to look at
    const HeaderCodecRow *row = findHeaderRow(packetVersion(*cursor));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    if (cursor->remaining < row->headerLength) return TROV_RESULT_BAD_PACKET;
    row->decodeHeader(cursor, info);
    return TROV_RESULT_OK;
}

} // extern "C"
