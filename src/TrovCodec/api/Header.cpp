// The header's exports: field access in a record and in a packet, encode and
// decode, through the header codec (engine/HeaderCodec.h).
#include <cstring>

#include "api/Dispatch.h"
#include "engine/Cursor.h"
#include "engine/HeaderCodec.h"

using namespace trov;

extern "C" {

TROV_API TrovResult TROV_GetFromInfo(uint32_t index, const HeaderInfo *info, void *out) {
    if (info == nullptr || out == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (index == TROV_FIELD_MARK) {
        std::memcpy(out, &info->mark, 2);
        return TROV_RESULT_OK;
    }
    if (index == TROV_FIELD_VERSION) {
        auto v = static_cast<uint8_t>(info->version);
        std::memcpy(out, &v, 1);
        return TROV_RESULT_OK;
    }
    const HeaderCodecRow *row = findHeaderRow(static_cast<uint8_t>(info->version));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    return row->getFromRecord(index, info, out);
}

TROV_API TrovResult TROV_SetToInfo(uint32_t index, HeaderInfo *info, const void *value) {
    if (info == nullptr || value == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    if (index == TROV_FIELD_MARK) {
        std::memcpy(&info->mark, value, 2);
        return TROV_RESULT_OK;
    }
    if (index == TROV_FIELD_VERSION) {
        uint8_t v;
        std::memcpy(&v, value, 1);
        info->version = static_cast<uint16_t>((info->version & 0xFF00u) | v);
        return TROV_RESULT_OK;
    }
    const HeaderCodecRow *row = findHeaderRow(static_cast<uint8_t>(info->version));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    return row->setToRecord(index, info, value);
}

TROV_API TrovResult TROV_GetFromPacket(uint32_t index, const PacketCursor *cursor, void *out) {
    if (cursor == nullptr || cursor->position == nullptr || out == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    if (index == TROV_FIELD_MARK) {
        if (cursor->remaining < 2) return TROV_RESULT_BAD_PACKET;
        uint16_t v = loadU16(cursor->position);
        std::memcpy(out, &v, 2);
        return TROV_RESULT_OK;
    }
    if (cursor->remaining < 3) return TROV_RESULT_BAD_PACKET;
    if (index == TROV_FIELD_VERSION) {
        std::memcpy(out, cursor->position + 2, 1);
        return TROV_RESULT_OK;
    }
    const HeaderCodecRow *row = findHeaderRow(packetVersion(*cursor));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    return row->getFromPacket(index, cursor, out);
}

TROV_API TrovResult TROV_SetToPacket(uint32_t index, const PacketCursor *cursor, const void *value) {
    if (cursor == nullptr || cursor->position == nullptr || value == nullptr)
        return TROV_RESULT_NULL_ARGUMENT;
    if (index == TROV_FIELD_MARK) {
        if (cursor->remaining < 2) return TROV_RESULT_BUFFER_TOO_SMALL;
        uint16_t v;
        std::memcpy(&v, value, 2);
        storeU16(cursor->position, v);
        return TROV_RESULT_OK;
    }
    if (cursor->remaining < 3) return TROV_RESULT_BUFFER_TOO_SMALL;
    if (index == TROV_FIELD_VERSION) {
        std::memcpy(cursor->position + 2, value, 1);
        return TROV_RESULT_OK;
    }
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
