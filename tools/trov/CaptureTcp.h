// One direction of a TCP connection put back in order and framed into
// packets (StreamFramer).
//
// Sequence numbers become 64-bit offsets in the direction's byte stream
// (offset 0: the byte after the SYN, or the first byte captured when the SYN
// was not). Bytes at the next expected offset go to the framer at once;
// segments past it wait in an out-of-order window of at most kWindowBytes.
// Duplicates and the parts of a retransmission already delivered are
// dropped, and overlapping segments are trimmed to what is new.
//
// A hole is given up on, as a Gap item of its exact byte count, when
//   - the window is full: the stream jumps to the first segment held;
//   - the other side acknowledges it while later bytes (or the FIN) are held:
//     it received what the capture missed, so no retransmission will come;
//   - a segment's payload was cut by the capture's snap length (the cut bytes);
//   - the direction ends (finish()).
// The framer then resynchronises at the next plausible header.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "StreamFramer.h"

namespace trov {

class TcpDirection {
public:
    // Out-of-order bytes held per direction, at most.
    static constexpr size_t kWindowBytes = 256 * 1024;

    // `request`: the direction carries requests (the client's).
    explicit TcpDirection(bool request) : framer_(request) {}

    // A segment: `syn` takes the SYN's sequence number as the stream's start,
    // `fin` ends the stream after its payload; `missing` payload bytes after
    // `data` were not captured.
    void segment(uint32_t seq, bool syn, bool fin, const uint8_t *data, size_t n, size_t missing);
    // The other side received everything before `ack`.
    void acked(uint32_t ack);
    // The end of the capture or of the connection: holes left become gaps,
    // a packet cut short comes out as Trailing.
    void finish();

    bool next(PacketItem &item) { return framer_.next(item); }
    // The FIN was reached and the framer finished.
    bool ended() const { return ended_; }
    // The stream's first bytes are not the protocol mark.
    bool markMissing() const { return markMissing_; }
    // The next offset expected: bytes before it were delivered or given up.
    uint64_t position() const { return next_; }
    size_t heldOutOfOrder() const { return pendingBytes_; }

private:
    int64_t offsetOf(uint32_t seq) const;
    void take(int64_t at, const uint8_t *data, size_t n);
    void deliver(const uint8_t *data, size_t n);
    void drain();
    void skipTo(uint64_t at);
    void end();

    StreamFramer framer_;
    bool started_ = false;
    uint32_t base_ = 0;   // the sequence number of offset 0
    uint64_t next_ = 0;   // the next offset expected
    std::map<uint64_t, std::vector<uint8_t>> pending_; // out-of-order segments by offset
    size_t pendingBytes_ = 0;
    std::optional<uint64_t> fin_; // the FIN's offset
    bool lostFirst_ = false;      // the stream's first bytes were lost: no mark to check
    bool markMissing_ = false;
    bool ended_ = false;
};

} // namespace trov
