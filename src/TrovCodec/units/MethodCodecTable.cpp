// The method codec tables: method code -> the four operations on a method
// invocation's parameters. The FP family has no methods: its table is the
// terminator row alone.
#include "api/Dispatch.h"

namespace trov {

extern const MethodCodecRow FUMethodCodecTable[] = {
    {0, 0, nullptr, nullptr, nullptr, nullptr},
};

extern const MethodCodecRow FPMethodCodecTable[] = {
    {0, 0, nullptr, nullptr, nullptr, nullptr},
};

} // namespace trov
