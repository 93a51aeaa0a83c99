// Finds the TCP segment in one captured frame: the link layer named by the
// capture's link type, then IPv4 or IPv6, then TCP.
//
// Link types (libpcap's DLT values): Ethernet with any number of 802.1Q or
// 802.1ad (QinQ) tags, Linux cooked capture v1 (SLL) and v2 (SLL2), raw IP
// (DLT_RAW, LINKTYPE_IPV4, LINKTYPE_IPV6) and loopback (DLT_NULL with the
// address family in host order, DLT_LOOP in network order; the IP version
// nibble decides either way). IPv6 extension headers are walked; IPv4 and
// IPv6 fragments are not reassembled (Fragment). Ethernet padding is cut off
// by the IP length.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace trov {

struct Endpoint {
    std::array<uint8_t, 16> address{}; // IPv4 in the first 4 bytes
    bool v6 = false;
    uint16_t port = 0;

    bool operator==(const Endpoint &) const = default;
    // "10.0.0.1:40512", "[fd00::1]:5000"
    std::string text() const;
};

namespace tcp {
constexpr uint8_t kFin = 0x01, kSyn = 0x02, kRst = 0x04, kAck = 0x10;
}

struct TcpSegment {
    Endpoint src, dst;
    uint32_t seq = 0, ack = 0;
    uint8_t flags = 0;               // tcp::kFin ...
    const uint8_t *payload = nullptr; // into the frame
    size_t length = 0;               // payload bytes captured
    size_t missing = 0;              // payload bytes the capture cut off (snap length)
};

enum class LinkResult { Tcp, NotTcp, Fragment };

// Whether frames of this link type are read.
bool linkTypeKnown(int linkType);
// The TCP segment of a frame of `caplen` captured bytes.
LinkResult findTcpSegment(int linkType, const uint8_t *frame, size_t caplen, TcpSegment &segment);

} // namespace trov
