// Cuts a byte stream into packets, and finds the next packet again after
// bytes that are not one.
//
// A packet is 20 header bytes and as many body bytes as the header's
// bodyLength (bytes 8-9) says. Right after a packet (and at the start) the
// next packet is taken if it starts with the protocol mark (0xA7E5), so that a
// header the decoder refuses, or a body too short for its code, is still
// reported as that packet. Bytes that do not start with the mark are skipped,
// and so is everything up to the next plausible header: the mark, a version
// the library's header codec knows, and a body length that holds at least the
// fixed part of the body code's layout (any length for a code the library
// does not describe). The run comes out as one Skipped item. A Gap (bytes
// lost from the stream, as a capture that missed a segment) drops what was
// held of a packet (as Skipped) and looks for the next plausible header.
//
// Bytes are pushed as they arrive; `wanted()` says how many more complete the
// item in hand, so a reader of a live pipe never waits for bytes the next
// packet brings. Memory stays bounded by one packet (20 + 65535 bytes) and
// kKeptSkipped bytes of a skipped run, however long the stream.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "PacketInput.h"

namespace trov {

class StreamFramer {
public:
    static constexpr size_t kHeaderBytes = 20;
    // Of a skipped run only the first bytes are kept (for its hex); the
    // count covers all of it.
    static constexpr size_t kKeptSkipped = 4096;

    // `request`: the stream carries requests (checked against the request
    // layouts), else replies.
    explicit StreamFramer(bool request, uint64_t offset = 0) : request_(request), offset_(offset) {}

    // The next bytes of the stream.
    void push(const uint8_t *bytes, size_t n);
    // `lost` bytes of the stream are missing here.
    void gap(uint64_t lost);
    // The stream ends: a packet cut short comes out as Trailing.
    void finish();

    // Takes the next item (Packet, Skipped, Gap or Trailing), if one is complete.
    bool next(PacketItem &item);
    // How many more bytes complete the item in hand (at least 1).
    size_t wanted() const;
    // Bytes held for the packet in hand.
    size_t held() const { return buffer_.size() - start_; }
    // The stream offset of the next byte pushed.
    uint64_t end() const { return offset_ + held(); }

    // Whether a header (at least kHeaderBytes) could start a packet.
    static bool plausibleHeader(const uint8_t *header, bool request);

private:
    void frame();
    void skip(size_t n);
    void closeSkipped();
    void emit(PacketItem::Kind kind, size_t n);

    bool request_;
    std::vector<uint8_t> buffer_;
    size_t start_ = 0;     // first held byte
    uint64_t offset_ = 0;  // stream offset of buffer_[start_]
    bool searching_ = false; // after skipped or lost bytes, until the next packet
    bool skipping_ = false;
    PacketItem skipped_;   // the open skipped run
    std::deque<PacketItem> ready_;
};

} // namespace trov
