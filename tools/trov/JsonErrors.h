// JSON syntax errors as `trov encode` reports them: where and what, in the
// compiler style "NAME:LINE:COLUMN: syntax error: what near 'text'", without
// the JSON library's own prefixes.
#pragma once

#include <cstdint>
#include <string>

#include "RecordJson.h"

namespace trov {

// The message for `error`, met parsing text that starts on line `firstLine`
// of the input `name` (1 for a whole input; a line's number when each line
// is parsed on its own).
std::string jsonSyntaxError(const Json::parse_error &error, const std::string &name, uint64_t firstLine);

} // namespace trov
