// The data-type codec table: values tagged on the wire with a data-type code
// instead of an attribute identifier. Ends at the row whose code is 0.
#include "api/Dispatch.h"

namespace trov {

extern const DataTypeCodecRow DataTypeCodecTable[] = {
    {0, 0, {nullptr, nullptr, nullptr, nullptr}},
};

} // namespace trov
