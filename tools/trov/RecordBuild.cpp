// Placeholder until the builder lands.
#include "RecordBuild.h"

namespace trov {

void *RecordArena::allocate(size_t bytes) {
    blocks_.push_back(std::make_unique<std::byte[]>(bytes + 16));
    return blocks_.back().get();
}

const void *jsonToRecord(const Json &, const TrovLayoutInfo &, uint8_t, bool, RecordArena &, const std::string &path,
                         JsonError &error) {
    error = {path, "not implemented"};
    return nullptr;
}

bool encodePacket(const Json &, const std::string &path, std::vector<uint8_t> &, JsonError &error) {
    error = {path, "not implemented"};
    return false;
}

} // namespace trov
