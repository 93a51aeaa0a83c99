#include "CaptureLink.h"

#include <algorithm>
#include <cstdio>

namespace trov {

namespace {

// libpcap's link types as pcap_datalink() reports them.
constexpr int kNull = 0, kEthernet = 1, kRaw = 12, kRawOpenBsd = 14, kLinktypeRaw = 101, kLoop = 108,
              kSll = 113, kIpv4 = 228, kIpv6 = 229, kSll2 = 276;

constexpr uint16_t kEtherIpv4 = 0x0800, kEtherIpv6 = 0x86DD, kEtherVlan = 0x8100, kEtherQinQ = 0x88A8,
                   kEtherQinQOld = 0x9100;
constexpr uint8_t kProtoTcp = 6;

uint16_t be16(const uint8_t *p) { return uint16_t(p[0] << 8 | p[1]); }
uint32_t be32(const uint8_t *p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]; }

LinkResult tcp(const uint8_t *p, size_t captured, size_t wire, TcpSegment &s) {
    if (captured < 20) return LinkResult::NotTcp;
    const size_t header = size_t(p[12] >> 4) * 4;
    if (header < 20 || header > captured || header > wire) return LinkResult::NotTcp;
    s.src.port = be16(p);
    s.dst.port = be16(p + 2);
    s.seq = be32(p + 4);
    s.ack = be32(p + 8);
    s.flags = p[13];
    s.payload = p + header;
    s.length = captured - header;
    s.missing = wire - captured;
    return LinkResult::Tcp;
}

// `wire`: the IP packet's own length, so link-layer padding is left out.
LinkResult ipv4(const uint8_t *p, size_t n, TcpSegment &s) {
    if (n < 20) return LinkResult::NotTcp;
    const size_t header = size_t(p[0] & 0x0F) * 4, total = be16(p + 2);
    if (header < 20 || total < header || header > n) return LinkResult::NotTcp;
    if (p[9] != kProtoTcp) return LinkResult::NotTcp;
    if ((be16(p + 6) & 0x3FFF) != 0) return LinkResult::Fragment; // more fragments, or an offset
    s.src = Endpoint{};
    s.dst = Endpoint{};
    std::copy(p + 12, p + 16, s.src.address.begin());
    std::copy(p + 16, p + 20, s.dst.address.begin());
    const size_t captured = std::min(n, total);
    return tcp(p + header, captured - header, total - header, s);
}

LinkResult ipv6(const uint8_t *p, size_t n, TcpSegment &s) {
    if (n < 40) return LinkResult::NotTcp;
    size_t wire = be16(p + 4);
    if (wire == 0) wire = n - 40; // a jumbogram: take what is there
    uint8_t next = p[6];
    s.src = Endpoint{};
    s.dst = Endpoint{};
    s.src.v6 = s.dst.v6 = true;
    std::copy(p + 8, p + 24, s.src.address.begin());
    std::copy(p + 24, p + 40, s.dst.address.begin());
    size_t at = 40;
    const size_t end = 40 + wire;
    // Extension headers: hop-by-hop 0, routing 43, fragment 44, AH 51, destination options 60.
    for (;;) {
        if (next == kProtoTcp) break;
        if (at + 8 > n || at + 8 > end) return LinkResult::NotTcp;
        size_t length;
        switch (next) {
        case 0: case 43: case 60: length = (size_t(p[at + 1]) + 1) * 8; break;
        case 51: length = (size_t(p[at + 1]) + 2) * 4; break;
        case 44:
            if ((be16(p + at + 2) & 0xFFF9) != 0) return LinkResult::Fragment; // offset or more fragments
            length = 8;
            break;
        default: return LinkResult::NotTcp;
        }
        next = p[at];
        at += length;
    }
    if (at > n || at > end) return LinkResult::NotTcp;
    return tcp(p + at, std::min(n, end) - at, end - at, s);
}

LinkResult ip(const uint8_t *p, size_t n, TcpSegment &s) {
    if (n == 0) return LinkResult::NotTcp;
    switch (p[0] >> 4) {
    case 4: return ipv4(p, n, s);
    case 6: return ipv6(p, n, s);
    default: return LinkResult::NotTcp;
    }
}

// A link header of `at` bytes whose EtherType sits at `typeAt`; VLAN tags
// may follow it.
LinkResult ether(const uint8_t *p, size_t n, size_t typeAt, size_t at, TcpSegment &s) {
    if (at > n) return LinkResult::NotTcp;
    uint16_t type = be16(p + typeAt);
    while (type == kEtherVlan || type == kEtherQinQ || type == kEtherQinQOld) {
        if (at + 4 > n) return LinkResult::NotTcp;
        type = be16(p + at + 2); // after the tag's priority and VLAN identifier
        at += 4;
    }
    if (type != kEtherIpv4 && type != kEtherIpv6) return LinkResult::NotTcp;
    return ip(p + at, n - at, s);
}

} // namespace

std::string Endpoint::text() const {
    char out[64];
    const uint8_t *a = address.data();
    if (!v6) {
        std::snprintf(out, sizeof out, "%u.%u.%u.%u:%u", a[0], a[1], a[2], a[3], unsigned{port});
        return out;
    }
    // The longest run of two or more zero groups becomes "::" (the first such run on a tie).
    uint16_t groups[8];
    for (int i = 0; i < 8; ++i) groups[i] = be16(a + 2 * i);
    int best = -1, bestLength = 1;
    for (int i = 0; i < 8;) {
        int j = i;
        while (j < 8 && groups[j] == 0) ++j;
        if (j - i > bestLength) best = i, bestLength = j - i;
        i = j == i ? i + 1 : j;
    }
    std::string text = "[";
    for (int i = 0; i < 8; ++i) {
        if (i == best) {
            text += "::";
            i += bestLength - 1;
            continue;
        }
        if (i != 0 && i != best + bestLength) text += ':';
        std::snprintf(out, sizeof out, "%x", unsigned{groups[i]});
        text += out;
    }
    std::snprintf(out, sizeof out, "]:%u", unsigned{port});
    return text + out;
}

bool linkTypeKnown(int linkType) {
    switch (linkType) {
    case kNull: case kEthernet: case kRaw: case kRawOpenBsd: case kLinktypeRaw: case kLoop:
    case kSll: case kIpv4: case kIpv6: case kSll2: return true;
    default: return false;
    }
}

LinkResult findTcpSegment(int linkType, const uint8_t *frame, size_t caplen, TcpSegment &segment) {
    switch (linkType) {
    case kEthernet: return ether(frame, caplen, 12, 14, segment);
    case kSll: return ether(frame, caplen, 14, 16, segment);
    case kSll2: return ether(frame, caplen, 0, 20, segment);
    case kNull:
    case kLoop: // a 4-byte address family, in host or network order
        if (caplen < 4) return LinkResult::NotTcp;
        return ip(frame + 4, caplen - 4, segment);
    case kRaw: case kRawOpenBsd: case kLinktypeRaw: case kIpv4: case kIpv6: return ip(frame, caplen, segment);
    default: return LinkResult::NotTcp;
    }
}

} // namespace trov
