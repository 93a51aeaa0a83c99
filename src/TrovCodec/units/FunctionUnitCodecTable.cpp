// The body codec tables: body code -> the operation that builds a request
// packet and the operation that reads a reply body. The FP family has no
// bodies: its table is the terminator row alone.
#include "api/Dispatch.h"

namespace trov {

extern const BodyCodecRow FUCodecTable[] = {
    {0, 0, nullptr, nullptr},
};

extern const BodyCodecRow FPCodecTable[] = {
    {0, 0, nullptr, nullptr},
};

} // namespace trov
