// Reads one input (a file or standard input), raw bytes or pasted hex text,
// and frames it into packets by each header's body length (StreamFramer.h:
// bytes that are not a packet are skipped up to the next plausible header),
// in constant memory.
#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace trov {

enum class InputFormat { Detect, Raw, Hex };

// Where a packet was captured (capture input only).
struct CaptureInfo {
    uint64_t frame = 0;   // the capture's frame (1-based) that completed the item
    std::string time;     // that frame's time, ISO 8601 UTC with its fraction of a second
    uint64_t flow = 0;    // the TCP connection, numbered from 1 in order of appearance
    std::string src, dst; // "ADDRESS:PORT" of the item's sender and receiver
    bool request = false; // sent by the client
};

// Capture input (pcap and pcapng files, found by their magic): CaptureInput.h.
struct CaptureOptions {
    uint16_t port = 0; // the server's TCP port, for connections whose SYN was not captured; 0: none
    std::function<void(const std::string &)> note; // remarks (flows left out or ended early), one line each
};

struct PacketItem {
    // Packet: a framed packet. Skipped: bytes where no plausible header
    // starts, up to the next one (`count` of them; `bytes` keeps the first
    // few). Gap: `count` bytes missing from the stream. Trailing: a packet cut
    // short by the end of the input.
    enum class Kind { Packet, Skipped, Gap, Trailing, End, Error } kind = Kind::End;
    uint64_t offset = 0;        // the item's first byte in the input's byte stream
    std::vector<uint8_t> bytes; // Packet: header and body; Skipped, Trailing: the bytes
    uint64_t count = 0;         // Skipped, Gap: the bytes skipped or lost
    std::string error;          // Error: "NAME:LINE:COLUMN: what is wrong", or a read error
    std::optional<CaptureInfo> capture;
};

class PacketInput {
public:
    // "-" is standard input (binary on Windows too). nullptr, with `error` set
    // ("cannot open X: reason", "X is a directory"), when it cannot be read.
    // `request`: the input holds requests (which the search for the next
    // plausible header after bytes that are not a packet checks against).
    // A pcap or pcapng capture (InputFormat::Detect only) yields the TCP
    // connections' packets instead, each with its CaptureInfo.
    static std::unique_ptr<PacketInput> open(const std::string &path, InputFormat format, std::string &error,
                                             bool request = false, const CaptureOptions &capture = {});
    // Over any stream; `name` appears in error messages.
    static std::unique_ptr<PacketInput> fromStream(std::istream &in, const std::string &name, InputFormat format,
                                                   bool request = false, const CaptureOptions &capture = {});
    virtual ~PacketInput();

    // The next item; after End or Error, End. Packets completed before a
    // hex or read error come out first; a packet cut short by one is dropped.
    virtual PacketItem next() = 0;
    // Whether the input is read as hex text (known after the first next()).
    virtual bool isHex() const = 0;
};

} // namespace trov
