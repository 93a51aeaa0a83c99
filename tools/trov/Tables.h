// `trov tables`: every layout the library describes.
#pragma once

#include <ostream>

#include "RecordJson.h"

namespace trov {

// All layouts at the header version 0x10: body codes (request and reply),
// event codes, method codes (request and reply; codes of 0x2000 and above only
// where a method of their own exists), attribute identifiers and data types,
// each with its layout's name, form and fields.
Json tablesJson();

// Writes the tables as text (one line per layout) or as JSON. Returns the
// exit code: 0, or 2 when `out` cannot be written.
int runTables(bool json, std::ostream &out);

} // namespace trov
