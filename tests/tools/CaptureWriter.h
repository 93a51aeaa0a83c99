// Small pcap and pcapng captures for the tests: TCP segments over IPv4 or
// IPv6, framed for Ethernet (with 802.1Q or QinQ tags), Linux cooked capture
// v1 and v2, raw IP or loopback. Checksums are left 0 (nothing reads them).
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace captest {

using Bytes = std::vector<uint8_t>;

enum class Link { Ethernet, Vlan, QinQ, Sll, Sll2, Raw, Null, Loop };
enum class Format { Pcap, PcapBigEndian, PcapNano, Pcapng, PcapngNano };

// The link type a capture file names for frames of `link`.
inline uint32_t linkType(Link link) {
    constexpr uint32_t types[] = {1, 1, 1, 113, 276, 101, 0, 108}; // in Link's order
    return types[static_cast<int>(link)];
}

struct Host {
    std::array<uint8_t, 16> address{};
    bool v6 = false;
    uint16_t port = 0;
};

inline Host v4(uint8_t a, uint8_t b, uint8_t c, uint8_t d, uint16_t port) { return {{a, b, c, d}, false, port}; }

// fd00::N
inline Host v6(uint8_t n, uint16_t port) {
    return {{0xfd, 0x00, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, n}, true, port};
}

namespace detail {
inline void put16(Bytes &b, uint32_t v) { b.insert(b.end(), {uint8_t(v >> 8), uint8_t(v)}); }
inline void put32(Bytes &b, uint32_t v) { b.insert(b.end(), {uint8_t(v >> 24), uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)}); }
} // namespace detail

struct Tcp {
    uint32_t seq = 0, ack = 0;
    uint8_t flags = 0x18; // PSH ACK
    bool fragment = false; // IPv4: sent as the first fragment of a larger datagram
};

// One frame carrying a TCP segment from `src` to `dst`.
inline Bytes tcpFrame(Link link, const Host &src, const Host &dst, const Tcp &t, const Bytes &payload) {
    using namespace detail;
    Bytes seg;
    put16(seg, src.port);
    put16(seg, dst.port);
    put32(seg, t.seq);
    put32(seg, t.ack);
    seg.insert(seg.end(), {0x50, t.flags, 0xff, 0xff, 0, 0, 0, 0});
    seg.insert(seg.end(), payload.begin(), payload.end());
    Bytes ip;
    if (!src.v6) {
        put16(ip, 0x4500);
        put16(ip, uint32_t(20 + seg.size()));
        put16(ip, 0x1234);
        put16(ip, t.fragment ? 0x2000 : 0x4000); // more fragments / don't fragment
        ip.insert(ip.end(), {64, 6, 0, 0});
        ip.insert(ip.end(), src.address.begin(), src.address.begin() + 4);
        ip.insert(ip.end(), dst.address.begin(), dst.address.begin() + 4);
    } else {
        put32(ip, 0x60000000);
        put16(ip, uint32_t(seg.size()));
        ip.insert(ip.end(), {6, 64});
        ip.insert(ip.end(), src.address.begin(), src.address.end());
        ip.insert(ip.end(), dst.address.begin(), dst.address.end());
    }
    ip.insert(ip.end(), seg.begin(), seg.end());
    const uint16_t ether = src.v6 ? 0x86DD : 0x0800;
    Bytes frame;
    switch (link) {
    case Link::Ethernet:
    case Link::Vlan:
    case Link::QinQ:
        frame.assign({2, 0, 0, 0, 0, 2, 2, 0, 0, 0, 0, 1});
        if (link == Link::QinQ) put16(frame, 0x88A8), put16(frame, 100);
        if (link != Link::Ethernet) put16(frame, 0x8100), put16(frame, 42);
        put16(frame, ether);
        break;
    case Link::Sll:
        frame.assign({0, 0, 0, 1, 0, 6, 2, 0, 0, 0, 0, 1, 0, 0});
        put16(frame, ether);
        break;
    case Link::Sll2:
        put16(frame, ether);
        frame.insert(frame.end(), {0, 0, 0, 0, 0, 1, 0, 1, 0, 6, 2, 0, 0, 0, 0, 1, 0, 0});
        break;
    case Link::Raw: break;
    case Link::Null: frame.assign({uint8_t(src.v6 ? 10 : 2), 0, 0, 0}); break; // host order (little-endian)
    case Link::Loop: frame.assign({0, 0, 0, uint8_t(src.v6 ? 24 : 2)}); break;
    }
    frame.insert(frame.end(), ip.begin(), ip.end());
    if ((link == Link::Ethernet || link == Link::Vlan) && frame.size() < 60) frame.resize(60); // Ethernet padding
    return frame;
}

// A capture file in memory.
class CaptureWriter {
public:
    CaptureWriter(Format format, Link link, int interfaces = 1) : format_(format) {
        using namespace detail;
        if (format == Format::Pcapng || format == Format::PcapngNano) {
            block(0x0A0D0D0A, {0x1A, 0x2B, 0x3C, 0x4D, 0, 1, 0, 0, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff});
            for (int i = 0; i < interfaces; ++i) {
                Bytes body;
                put16(body, linkType(link));
                put16(body, 0);
                put32(body, 65535);
                if (format == Format::PcapngNano) body.insert(body.end(), {0, 9, 0, 1, 9, 0, 0, 0}); // if_tsresol 10^-9
                body.insert(body.end(), {0, 0, 0, 0});                                              // end of options
                block(1, body);
            }
            return;
        }
        // pcap's fields are in the writer's byte order: little-endian unless told.
        little_ = format != Format::PcapBigEndian;
        put(format == Format::PcapNano ? 0xA1B23C4D : 0xA1B2C3D4, 4);
        put(2, 2);
        put(4, 2);
        put(0, 4);
        put(0, 4);
        put(65535, 4);
        put(linkType(link), 4);
    }

    // A frame at `nanoseconds` since 1970, of which the first `caplen` bytes are kept.
    void add(const Bytes &frame, uint64_t nanoseconds, int interface = 0, size_t caplen = SIZE_MAX) {
        using namespace detail;
        const size_t kept = std::min(caplen, frame.size());
        const bool nano = format_ == Format::PcapNano || format_ == Format::PcapngNano;
        const uint64_t units = nano ? nanoseconds : nanoseconds / 1000;
        if (format_ == Format::Pcapng || format_ == Format::PcapngNano) {
            Bytes body;
            put32(body, uint32_t(interface));
            put32(body, uint32_t(units >> 32));
            put32(body, uint32_t(units));
            put32(body, uint32_t(kept));
            put32(body, uint32_t(frame.size()));
            body.insert(body.end(), frame.begin(), frame.begin() + std::ptrdiff_t(kept));
            body.resize((body.size() + 3) / 4 * 4);
            block(6, body);
            return;
        }
        put(units / (nano ? 1000000000 : 1000000), 4);
        put(units % (nano ? 1000000000 : 1000000), 4);
        put(kept, 4);
        put(frame.size(), 4);
        out_.append(frame.begin(), frame.begin() + std::ptrdiff_t(kept));
    }

    const std::string &bytes() const { return out_; }

private:
    // The low `bytes` bytes of `v`, in the file's byte order.
    void put(uint64_t v, int bytes) {
        for (int i = 0; i < bytes; ++i) out_ += char(v >> 8 * (little_ ? i : bytes - 1 - i));
    }

    // pcapng blocks are written big-endian (the section's byte-order magic says so).
    void block(uint32_t type, const Bytes &body) {
        put(type, 4);
        put(12 + body.size(), 4);
        out_.append(body.begin(), body.end());
        put(12 + body.size(), 4);
    }

    Format format_;
    bool little_ = false;
    std::string out_;
};

} // namespace captest
