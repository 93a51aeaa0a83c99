// Request bodies read from their wire bytes into records, through the
// request layouts of the library's layout description. The library decodes
// replies; the tool reads requests back so that a packet it built can be
// shown again.
#pragma once

#include <cstddef>
#include <cstdint>

#include "RecordBuild.h"
#include "TrovCodec.h"

namespace trov {

// Reads `size` body bytes as a record of the request `layout` allocated in
// `arena`. TROV_RESULT_OK with `record` set, or the result code of what is
// wrong (the body is short, a value is unknown...) with `stoppedAt` the body
// offset where reading stopped.
TrovResult readRequestBody(const TrovLayoutInfo &layout, uint8_t version, const uint8_t *body, size_t size,
                           RecordArena &arena, const void *&record, size_t &stoppedAt);

} // namespace trov
