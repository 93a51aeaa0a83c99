// Placeholder until the command lands.
#include "EncodeCommand.h"

namespace trov {

int runEncode(const std::string &, bool, std::ostream &, std::ostream &err) {
    err << "trov encode: not implemented\n";
    return 2;
}

} // namespace trov
