// The attribute codec table: attribute identifier -> value codec.
//
// Each row lists the attribute identifiers that share one data type and holds
// that type's four operations. The table ends at the row whose identifier
// list is null.
#include "api/Dispatch.h"

namespace trov {

extern const AttributeCodecRow AttributeCodecTable[] = {
    {nullptr, 0, {nullptr, nullptr, nullptr, nullptr}},
};

} // namespace trov
