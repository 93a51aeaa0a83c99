// The indented human view of a packet object (`trov decode --text`).
#pragma once

#include <ostream>

#include "RecordJson.h"

namespace trov {

// Writes `packet` (the object `trov decode` prints) as indented text lines:
// where it is, its header on one line, the body's verdict, then the fields.
void writeText(const Json &packet, std::ostream &out);

} // namespace trov
