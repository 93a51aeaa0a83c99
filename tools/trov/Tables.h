// `trov tables`: every layout the library describes.
#pragma once

#include <cstdint>
#include <ostream>

#include "RecordJson.h"
#include "TrovCodec.h"

namespace trov {

// The families of layouts the library describes.
enum class LayoutFamily { Body, Event, Method, Attribute, DataType };

// One layout as `trov tables --json` lists it: code, side (bodies and
// methods), layout name, form, record size, array form, fields (nested
// records' fields under them) and a selector value's variants. `request`
// picks the side of a body or method and is ignored elsewhere. The
// description's result: 0 with `out` set, else the family's "no codec"
// result (9 to 13) and `out` untouched.
TrovResult describeLayout(LayoutFamily family, uint16_t code, uint8_t version, bool request, Json &out);

// All layouts at the header version 0x10: body codes (request and reply),
// event codes, method codes (request and reply; codes of 0x2000 and above only
// where a method of their own exists), attribute identifiers and data types,
// each with its layout's name, form and fields.
Json tablesJson();

// Writes the tables as text (one line per layout) or as JSON. Returns the
// exit code: 0, or 2 when `out` cannot be written.
int runTables(bool json, std::ostream &out);

} // namespace trov
