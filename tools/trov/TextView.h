// The indented human view of a packet object (`trov decode --text`).
#pragma once

#include <ostream>
#include <string>

#include "RecordJson.h"

namespace trov {

// Writes `packet` (the object `trov decode` prints) as indented text lines:
// where it is, its header on one line, the body's verdict, then the fields.
// Codes and identifiers (members named code, id, method and type: body,
// event and method codes, attribute identifiers, data types) are shown in
// hex. Skipped runs, gaps and trailing bytes get one line each.
void writeText(const Json &packet, std::ostream &out);

// Whether writeText colours what it writes to `out` (ANSI escapes): off
// unless set, and kept with the stream.
void setTextColour(std::ostream &out, bool colour);

// How `--color=auto|always|never` resolves: auto colours when standard output
// is a terminal and NO_COLOR is unset or empty. False for any other `when`.
bool colourWanted(const std::string &when);

} // namespace trov
