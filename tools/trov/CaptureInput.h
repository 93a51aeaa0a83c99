// `trov decode` over a capture: frames from CaptureFile, their TCP segments
// (CaptureLink), the connections put back together (CaptureFlows), and the
// packets of every connection as PacketItems with their CaptureInfo, in the
// order the capture completes them. An item's offset counts from the start of
// its direction of its connection.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "HexText.h"
#include "PacketInput.h"

namespace trov {

// The capture read by `reader`. Errors (a file libpcap refuses, a link type
// not read, a build without libpcap, a capture cut short) come out as an
// Error item, after every item completed before it.
std::unique_ptr<PacketInput> openCaptureInput(std::unique_ptr<ChunkReader> reader, const CaptureOptions &options);

} // namespace trov
