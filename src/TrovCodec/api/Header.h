// Internal helpers around the packet header codec.
#pragma once

#include <cstdint>

#include "TrovCodec.h"

namespace trov {

// The packet's version byte (byte 2). The cursor must hold at least 3 bytes.
uint8_t packetVersion(const PacketCursor &cursor);

} // namespace trov
