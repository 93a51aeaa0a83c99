// Output files for -o.
#include "OutputFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace trov {

std::unique_ptr<std::ostream> openOutput(const std::string &path, std::string &error) {
    errno = 0;
    auto file = std::make_unique<std::ofstream>(path, std::ios::binary | std::ios::trunc);
    if (!file->is_open()) {
        error = "cannot write " + path + (errno != 0 ? std::string(": ") + std::strerror(errno) : std::string());
        return nullptr;
    }
    return file;
}

} // namespace trov
