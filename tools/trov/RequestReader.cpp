// Placeholder until the reader lands.
#include "RequestReader.h"

namespace trov {

TrovResult readRequestBody(const TrovLayoutInfo &, uint8_t, const uint8_t *, size_t, RecordArena &, const void *&,
                           size_t &stoppedAt) {
    stoppedAt = 0;
    return TROV_RESULT_SHORT_INPUT;
}

} // namespace trov
