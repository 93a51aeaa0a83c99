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

// The packet's version byte (byte 2). The cursor must hold at least 3 bytes.
uint8_t packetVersion(const PacketCursor &cursor);

} // namespace trov
