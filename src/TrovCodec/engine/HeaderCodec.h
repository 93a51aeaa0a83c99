// The packet header codec: the table of header rows, one per version byte.
#pragma once

#include <cstdint>

#include "TrovCodec.h"
#include "engine/CodecTypes.h"

namespace trov {

// The header codecs, ended by a row of version 0.
extern const HeaderCodecRow HeaderCodecTable[];

// The row of a version byte: header rows match it exactly.
inline const HeaderCodecRow *findHeaderRow(uint8_t version) {
    for (const HeaderCodecRow *row = HeaderCodecTable; row->version != 0; ++row)
        if (row->version == version) return row;
    return nullptr;
}

// Field access by index 0..9 (3 for any other index), in a record or in a
// packet (2, or 7 when writing, for a field past the cursor's bytes). The
// header rows carry these; the mark and the version byte need no row.
TrovResult headerGetFromRecord(uint32_t index, const HeaderInfo *info, void *out);
TrovResult headerSetToRecord(uint32_t index, HeaderInfo *info, const void *value);
TrovResult headerGetFromPacket(uint32_t index, const PacketCursor *cursor, void *out);
TrovResult headerSetToPacket(uint32_t index, const PacketCursor *cursor, const void *value);

// The packet's version byte (byte 2). The cursor must hold at least 3 bytes.
uint8_t packetVersion(const PacketCursor &cursor);

} // namespace trov
