// The TCP connections of a capture: which side is the client, one
// TcpDirection per side, and the items they frame, stamped with where and
// when they were captured (CaptureInfo).
//
// The client is the side that sent the SYN (without ACK), or that received
// the SYN-ACK. A connection whose handshake was not captured: the side whose
// port is `--port` is the server; else the first payload's header decides
// when it is plausible as a request and not as a reply (or the reverse);
// else the side with the lower port is the server (equal ports: the first
// sender is the client). A connection whose first bytes in either direction
// are not the protocol mark is left out (reported through `note` when one
// side has the `--port` port).
//
// Memory: at most kMaxFlows connections are followed at once; a new one
// beyond that ends the one idle longest (reported through `note`). FIN from
// both sides, or RST, ends a connection: its directions finish and it is
// forgotten.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>

#include "CaptureLink.h"
#include "CaptureTcp.h"
#include "PacketInput.h"

namespace trov {

// A captured frame's number (from 1) and time.
struct FrameStamp {
    uint64_t frame = 0;
    int64_t seconds = 0;   // since 1970-01-01 UTC
    uint32_t fraction = 0; // microseconds, or nanoseconds when `nano`
    bool nano = false;
};

// "2026-11-24T05:46:12.123456Z" (nine digits when `nano`).
std::string captureTime(int64_t seconds, uint32_t fraction, bool nano);

class CaptureFlows {
public:
    static constexpr size_t kMaxFlows = 1024;

    CaptureFlows(uint16_t serverPort, std::function<void(const std::string &)> note, size_t maxFlows = kMaxFlows);

    void segment(const TcpSegment &segment, const FrameStamp &stamp);
    // The end of the capture: every connection ends (stamped with `last`).
    void finish(const FrameStamp &last);
    // Takes the next item framed, if any.
    bool next(PacketItem &item);
    size_t live() const { return flows_.size(); }

private:
    struct Key {
        Endpoint a, b; // the lower endpoint first
        bool operator==(const Key &) const = default;
    };
    struct KeyHash {
        size_t operator()(const Key &key) const;
    };
    struct Flow {
        Flow(const Key &k, uint64_t n, const Endpoint &c, const Endpoint &s)
            : key(k), id(n), client(c), server(s), clientText(c.text()), serverText(s.text()) {}
        Key key;
        uint64_t id;
        Endpoint client, server;
        std::string clientText, serverText;
        TcpDirection requests{true}, replies{false};
        std::optional<uint32_t> syn; // the client's SYN sequence number
        uint8_t fins = 0;            // 1: the client's FIN seen, 2: the server's
        bool leftOut = false;
    };
    using Flows = std::list<Flow>; // most recently active first

    Flows::iterator create(const TcpSegment &segment);
    void collect(Flow &flow, const FrameStamp &stamp);
    void close(Flows::iterator flow, const FrameStamp &stamp);
    const std::string &timeOf(const FrameStamp &stamp);

    uint16_t port_;
    std::function<void(const std::string &)> note_;
    size_t maxFlows_;
    Flows flows_;
    std::unordered_map<Key, Flows::iterator, KeyHash> index_;
    uint64_t nextId_ = 1;
    std::deque<PacketItem> ready_;
    uint64_t timeFrame_ = 0; // the frame whose time timeText_ holds
    std::string timeText_;
};

} // namespace trov
