// The line `trov --version` prints.
#pragma once

#include <string>

namespace trov {

// "trov 1.0.0", and the loaded library's version when it differs.
std::string versionLine();

} // namespace trov
