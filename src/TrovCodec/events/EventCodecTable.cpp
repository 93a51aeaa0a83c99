// The event codec tables: event code -> the operations that size and decode
// an event body. Events travel only towards the host, so each row holds the
// decode side alone. The FP family has no events: its table is the
// terminator row alone.
#include "api/Dispatch.h"

namespace trov {

extern const EventCodecRow FUEventCodecTable[] = {
    {0, 0, nullptr, nullptr},
};

extern const EventCodecRow FPEventCodecTable[] = {
    {0, 0, nullptr, nullptr},
};

} // namespace trov
