// Where a command writes: standard output, or the file `-o` names.
#pragma once

#include <memory>
#include <ostream>
#include <string>

namespace trov {

// The file at `path`, created or emptied, written as bytes (no line-end
// translation); null with `error` ("cannot write PATH: reason") when it
// cannot be opened. "-" is not a file: the caller writes to standard output.
std::unique_ptr<std::ostream> openOutput(const std::string &path, std::string &error);

} // namespace trov
