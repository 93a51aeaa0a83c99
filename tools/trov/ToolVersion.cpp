// The version line of `trov --version`: the tool's, and the loaded library's
// when it differs.
#include <cstdio>
#include <string>

#include "ToolVersion.h"
#include "TrovVersion.h"

namespace trov {

std::string versionLine() {
    const uint32_t loaded = TROV_GetVersion();
    std::string line = std::string("trov ") + TROV_VERSION_STRING;
    if (loaded != TROV_VERSION) {
        char text[48];
        std::snprintf(text, sizeof text, " (library %u.%u.%u)", loaded >> 16 & 0xFF, loaded >> 8 & 0xFF,
                      loaded & 0xFF);
        line += text;
    }
    return line;
}

} // namespace trov
