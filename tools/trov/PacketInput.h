// Reads one input (a file or standard input), raw bytes or pasted hex text,
// and frames it into packets by each header's body length, in constant memory.
#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <string>
#include <vector>

namespace trov {

enum class InputFormat { Detect, Raw, Hex };

struct PacketItem {
    enum class Kind { Packet, Trailing, End, Error } kind = Kind::End;
    uint64_t offset = 0;        // the item's first byte in the input's byte stream
    std::vector<uint8_t> bytes; // Packet: header and body; Trailing: the bytes left over
    std::string error;          // Error: "NAME:LINE:COLUMN: what is wrong", or a read error
};

class PacketInput {
public:
    // "-" is standard input (binary on Windows too). nullptr, with `error` set
    // ("cannot open X: reason", "X is a directory"), when it cannot be read.
    static std::unique_ptr<PacketInput> open(const std::string &path, InputFormat format, std::string &error);
    // Over any stream; `name` appears in error messages.
    static std::unique_ptr<PacketInput> fromStream(std::istream &in, const std::string &name, InputFormat format);
    virtual ~PacketInput();

    // The next item; after End or Error, End. Packets completed before a
    // hex or read error come out first; a packet cut short by one is dropped.
    virtual PacketItem next() = 0;
    // Whether the input is read as hex text (known after the first next()).
    virtual bool isHex() const = 0;
};

} // namespace trov
