// Placeholder until the reader lands.
#include "PacketInput.h"

namespace trov {

PacketInput::~PacketInput() = default;

std::unique_ptr<PacketInput> PacketInput::open(const std::string &, InputFormat, std::string &error) {
    error = "not implemented";
    return nullptr;
}

std::unique_ptr<PacketInput> PacketInput::fromStream(std::istream &, const std::string &, InputFormat) {
    return nullptr;
}

} // namespace trov
