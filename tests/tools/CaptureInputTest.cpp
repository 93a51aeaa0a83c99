// `trov decode` over captures: TCP connections put back together from
// pcap and pcapng files that the tests write (CaptureWriter.h), checked
// packet for packet against the raw-stream decode of the same bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "CaptureFlows.h"
#include "CaptureWriter.h"
#include "DecodeCommand.h"
#include "PacketInput.h"
#include "StreamFramer.h"
#include "api/ReplyPacket.h"

namespace {

using namespace captest;
using Kind = trov::PacketItem::Kind;

const std::vector<Bytes> kRequests = {
    hexBytes("A7E5 10 01 0012 0007 0003 00000001 00000002 0001 00CB 2A"),
    hexBytes("A7E5 10 01 001D 0003 0013 00000000 00000000 0001 00000011 0095 05 03 0001 0002 BEEF 01 DEADBEEF"),
    hexBytes("A7E5 10 01 0012 0003 0019 00000000 00000000 0001 36B9 00000051 00000004 DEADBEEF 02 01 04 C0A80001 07 02 ABCD"),
};
const std::vector<Bytes> kReplies = {
    hexBytes("A7E5 10 01 000B 0000 0004 00000000 00000000 0001 0001E240"),
    hexBytes("A7E5 10 01 001D 0000 0007 00000000 00000000 0001 00000009 0092 01"),
    hexBytes("A7E5 10 01 000A 0000 0000 00000000 00000000 0004"),
};

// 2026-11-24T05:46:12Z
constexpr uint64_t kStart = 1795499172ull * 1000000000ull;

// How each message is cut into segments and what becomes of them. Lossy
// plans touch the second message of each direction only.
// Cut, CutReversed: every message in two at byte kCut (and the second piece
// first).
enum class Plan { Whole, Split, Coalesce, Reorder, Duplicate, Overlap, Lose, Fragment, Snap, Cut, CutReversed };
size_t kCut = 1;
enum class Fate { Sent, Lost, Fragment, Snapped };
constexpr size_t kSnapKept = 3; // payload bytes a snapped segment keeps

struct Piece {
    size_t at, length;
    Fate fate = Fate::Sent;
};

std::vector<Piece> pieces(Plan plan, size_t at, size_t n, bool lossy) {
    const size_t a = at + n / 3, b = at + 2 * n / 3, end = at + n;
    const Piece p0{at, a - at}, p1{a, b - a}, p2{b, end - b};
    const size_t cut = std::min(kCut, n - 1);
    switch (plan) {
    case Plan::Cut: return {{at, cut}, {at + cut, n - cut}};
    case Plan::CutReversed: return {{at + cut, n - cut}, {at, cut}};
    case Plan::Whole:
    case Plan::Coalesce: return {{at, n}};
    case Plan::Split: return {p0, p1, p2};
    case Plan::Reorder: return {p2, p0, p1};
    case Plan::Duplicate: return {p0, p0, p1, p2, p1, p2};
    // Held out of order and overlapped by the segment before it; then one
    // that repeats all but its last byte.
    case Plan::Overlap: return {{a, end - a - 1}, {at, b - at}, {at + 1, n - 1}};
    case Plan::Lose: return {p0, {a, b - a, lossy ? Fate::Lost : Fate::Sent}, p2};
    case Plan::Fragment: return {p0, {a, b - a, lossy ? Fate::Fragment : Fate::Sent}, p2};
    case Plan::Snap: return {p0, {a, b - a, lossy ? Fate::Snapped : Fate::Sent}, p2};
    }
    return {};
}

struct Case {
    const char *name;
    Format format;
    Link link;
    bool ipv6;
    Plan plan;
    bool handshake = true;
    int interfaces = 1;
    uint16_t port = 0;
};

// A capture of one connection: requests from the client, a reply after
// each, and what of each direction's bytes the capture holds.
struct Built {
    std::string capture;
    Bytes stream[2];            // 0: the client's bytes, 1: the server's
    std::vector<bool> seen[2];  // per byte: captured
    std::string src[2];         // sender of each direction, as the tool prints it
    uint64_t frames = 0;
};

Built build(const Case &c) {
    Built out;
    const Host hosts[2] = {c.ipv6 ? v6(1, 40512) : v4(10, 0, 0, 1, 40512), c.ipv6 ? v6(2, 5000) : v4(10, 0, 0, 2, 5000)};
    out.src[0] = c.ipv6 ? "[fd00::1]:40512" : "10.0.0.1:40512";
    out.src[1] = c.ipv6 ? "[fd00::2]:5000" : "10.0.0.2:5000";
    out.stream[0] = concat(kRequests);
    out.stream[1] = concat(kReplies);
    for (int d = 0; d < 2; ++d) out.seen[d].assign(out.stream[d].size(), false);
    CaptureWriter writer(c.format, c.link, c.interfaces);
    const uint32_t isn[2] = {0xFFFFFFF0u, 7000000u}; // the client's numbers wrap within the stream
    size_t sent[2] = {0, 0};
    uint64_t time = kStart + 123456789;
    auto frame = [&](int d, uint32_t seq, uint8_t flags, const Bytes &payload, Fate fate) {
        const uint32_t ack = flags & 0x10 ? isn[1 - d] + 1 + uint32_t(sent[1 - d]) : 0;
        const Tcp t{.seq = seq, .ack = ack, .flags = flags, .fragment = fate == Fate::Fragment};
        const Bytes bytes = tcpFrame(c.link, hosts[d], hosts[1 - d], t, payload);
        const size_t caplen = fate == Fate::Snapped ? bytes.size() - payload.size() + kSnapKept : SIZE_MAX;
        writer.add(bytes, time += 1000, c.interfaces > 1 ? d : 0, caplen);
        ++out.frames;
    };
    auto send = [&](int d, const Piece &p) {
        const Bytes payload(out.stream[d].begin() + std::ptrdiff_t(p.at),
                            out.stream[d].begin() + std::ptrdiff_t(p.at + p.length));
        if (p.fate != Fate::Lost) frame(d, isn[d] + 1 + uint32_t(p.at), 0x18, payload, p.fate);
        const size_t kept = p.fate == Fate::Sent ? p.length : p.fate == Fate::Snapped ? kSnapKept : 0;
        for (size_t i = 0; i < kept; ++i) out.seen[d][p.at + i] = true;
        sent[d] = std::max(sent[d], p.at + p.length);
    };
    if (c.handshake) {
        frame(0, isn[0], 0x02, {}, Fate::Sent);
        frame(1, isn[1], 0x12, {}, Fate::Sent);
        frame(0, isn[0] + 1, 0x10, {}, Fate::Sent);
    }
    size_t at[2] = {0, 0};
    for (size_t i = 0; i < kRequests.size(); ++i) {
        for (int d = 0; d < 2; ++d) {
            const size_t n = (d == 0 ? kRequests : kReplies)[i].size();
            if (c.plan == Plan::Coalesce && i > 0) continue;
            const size_t length = c.plan == Plan::Coalesce ? out.stream[d].size() : n;
            for (const Piece &p : pieces(c.plan, at[d], length, i == 1)) send(d, p);
            at[d] += length;
        }
    }
    if (c.handshake) {
        frame(0, isn[0] + 1 + uint32_t(sent[0]), 0x11, {}, Fate::Sent);
        frame(1, isn[1] + 1 + uint32_t(sent[1]), 0x11, {}, Fate::Sent);
        ++sent[0], ++sent[1];
        frame(0, isn[0] + 1 + uint32_t(sent[0]), 0x10, {}, Fate::Sent);
    }
    out.capture = writer.bytes();
    return out;
}

std::vector<trov::PacketItem> drain(trov::PacketInput &input) {
    std::vector<trov::PacketItem> items;
    for (auto item = input.next(); item.kind != Kind::End; item = input.next()) items.push_back(std::move(item));
    return items;
}

struct Read {
    std::vector<trov::PacketItem> items;
    std::vector<std::string> notes;
};

Read readCapture(const std::string &capture, uint16_t port = 0) {
    Read r;
    std::istringstream in(capture);
    trov::CaptureOptions options{port, [&r](const std::string &note) { r.notes.push_back(note); }};
    auto input = trov::PacketInput::fromStream(in, "cap", trov::InputFormat::Detect, false, options);
    r.items = drain(*input);
    return r;
}

// The raw-stream framing of what the capture holds of a direction: the
// captured runs pushed as they stand, the missing ones as gaps. Without
// gaps this is exactly `trov decode --raw` over the bytes.
std::vector<trov::PacketItem> rawFraming(const Bytes &stream, const std::vector<bool> &seen, bool request) {
    if (std::all_of(seen.begin(), seen.end(), [](bool b) { return b; })) {
        std::istringstream in(std::string(stream.begin(), stream.end()));
        auto input = trov::PacketInput::fromStream(in, "raw", trov::InputFormat::Raw, request);
        return drain(*input);
    }
    trov::StreamFramer framer(request);
    for (size_t i = 0; i < stream.size();) {
        size_t j = i;
        while (j < stream.size() && seen[j] == seen[i]) ++j;
        if (seen[i]) framer.push(stream.data() + i, j - i);
        else framer.gap(j - i);
        i = j;
    }
    framer.finish();
    std::vector<trov::PacketItem> items;
    for (trov::PacketItem item; framer.next(item);) items.push_back(std::move(item));
    return items;
}

std::string decoded(const trov::PacketItem &item, bool request) {
    bool failed = false;
    return trov::decodeItem(item, request, failed).dump();
}

// Every item of each direction decodes as the raw stream's item does.
void expectSameAsRaw(const Built &built, const std::vector<trov::PacketItem> &items) {
    for (int d = 0; d < 2; ++d) {
        const bool request = d == 0;
        std::vector<std::string> got, want;
        uint64_t lastFrame = 0;
        for (const trov::PacketItem &item : items) {
            ASSERT_TRUE(item.capture.has_value());
            if (item.capture->request != request) continue;
            EXPECT_EQ(item.capture->flow, 1u);
            EXPECT_EQ(item.capture->src, built.src[d]);
            EXPECT_EQ(item.capture->dst, built.src[1 - d]);
            EXPECT_GE(item.capture->frame, lastFrame);
            lastFrame = item.capture->frame;
            got.push_back(decoded(item, request));
        }
        for (const trov::PacketItem &item : rawFraming(built.stream[d], built.seen[d], request))
            want.push_back(decoded(item, request));
        EXPECT_EQ(got, want) << (request ? "requests" : "replies");
    }
}

class Captures : public testing::TestWithParam<Case> {};

TEST_P(Captures, SamePacketsAsTheRawStream) {
#ifndef TROV_HAVE_PCAP
    GTEST_SKIP() << "capture input needs libpcap";
#endif
    const Case &c = GetParam();
    const Built built = build(c);
    const Read r = readCapture(built.capture, c.port);
    ASSERT_FALSE(r.items.empty());
    expectSameAsRaw(built, r.items);
    EXPECT_EQ(r.notes.size(), c.plan == Plan::Fragment ? 1u : 0u);
    const bool nano = c.format == Format::PcapNano || c.format == Format::PcapngNano;
    for (const trov::PacketItem &item : r.items) {
        EXPECT_NE(item.kind, Kind::Error) << item.error;
        // A lost segment is given up when the reply acknowledging it arrives,
        // before the connection closes (its last three frames).
        if (item.kind == Kind::Gap && c.handshake) {
            EXPECT_LT(item.capture->frame, built.frames - 3);
        }
        // The time of the frame that completes the item, to the capture's precision.
        const unsigned long long ns = 123456789 + 1000 * item.capture->frame;
        char fraction[16];
        std::snprintf(fraction, sizeof fraction, ".%0*lluZ", nano ? 9 : 6, nano ? ns : ns / 1000);
        EXPECT_EQ(item.capture->time, "2026-11-24T05:46:12" + std::string(fraction));
    }
}

INSTANTIATE_TEST_SUITE_P(
    CaptureInput, Captures,
    testing::Values(Case{"ethernet_whole", Format::Pcap, Link::Ethernet, false, Plan::Whole},
                    Case{"big_endian_split", Format::PcapBigEndian, Link::Ethernet, false, Plan::Split},
                    Case{"several_packets_a_segment", Format::Pcap, Link::Raw, false, Plan::Coalesce},
                    Case{"vlan_reordered", Format::PcapNano, Link::Vlan, false, Plan::Reorder},
                    Case{"qinq_duplicated", Format::Pcap, Link::QinQ, false, Plan::Duplicate},
                    Case{"sll_overlapping", Format::Pcap, Link::Sll, false, Plan::Overlap},
                    Case{"sll2_lost", Format::Pcap, Link::Sll2, false, Plan::Lose},
                    Case{"ipv6_pcapng", Format::Pcapng, Link::Ethernet, true, Plan::Split},
                    Case{"ipv6_raw_reordered", Format::Pcap, Link::Raw, true, Plan::Reorder},
                    Case{"ipv6_lost", Format::PcapngNano, Link::Sll, true, Plan::Lose},
                    Case{"null_loopback", Format::Pcap, Link::Null, false, Plan::Whole},
                    Case{"loop_ipv6_duplicated", Format::Pcap, Link::Loop, true, Plan::Duplicate},
                    Case{"pcapng_two_interfaces", Format::Pcapng, Link::Ethernet, false, Plan::Overlap, true, 2},
                    Case{"ipv4_fragment", Format::Pcap, Link::Ethernet, false, Plan::Fragment},
                    Case{"snap_length", Format::Pcap, Link::Ethernet, false, Plan::Snap},
                    Case{"no_handshake_port", Format::Pcap, Link::Ethernet, false, Plan::Split, false, 1, 5000},
                    Case{"no_handshake_guessed", Format::Pcap, Link::Sll2, true, Plan::Split, false}),
    [](const testing::TestParamInfo<Case> &info) { return std::string(info.param.name); });

#ifdef TROV_HAVE_PCAP

// Every message cut into two segments at each byte boundary, sent in order
// and in reverse order.
TEST(CaptureInput, EverySplitPoint) {
    for (Plan plan : {Plan::Cut, Plan::CutReversed}) {
        for (kCut = 1; kCut < kRequests[2].size(); ++kCut) {
            SCOPED_TRACE("cut at " + std::to_string(kCut) + (plan == Plan::Cut ? "" : ", reversed"));
            const Built built = build(Case{"cut", Format::Pcap, Link::Ethernet, false, plan});
            expectSameAsRaw(built, readCapture(built.capture).items);
        }
    }
}

// A capture cut short in its last frame: everything before it comes out,
// then the error.
TEST(CaptureInput, CutShort) {
    const Case c{"cut", Format::Pcap, Link::Ethernet, false, Plan::Whole, false};
    Built built = build(c);
    built.capture.resize(built.capture.size() - 10); // into the last reply's frame
    const size_t lastReply = built.stream[1].size() - kReplies[2].size();
    built.stream[1].resize(lastReply);
    built.seen[1].resize(lastReply);
    Read r = readCapture(built.capture);
    ASSERT_FALSE(r.items.empty());
    EXPECT_EQ(r.items.back().kind, Kind::Error);
    EXPECT_NE(r.items.back().error.find("cap: truncated"), std::string::npos) << r.items.back().error;
    r.items.pop_back();
    expectSameAsRaw(built, r.items);
}

// A lost segment that no acknowledgement reveals is given up once the
// out-of-order window is full, not at the end of the capture.
TEST(CaptureInput, FullWindowGivesUpAHole) {
    Built built;
    for (int i = 0; i < 12000; ++i) // 288,000 bytes
        built.stream[0].insert(built.stream[0].end(), kReplies[0].begin(), kReplies[0].end());
    built.seen[0].assign(built.stream[0].size(), true);
    built.src[0] = "10.0.0.1:40512", built.src[1] = "10.0.0.2:5000";
    CaptureWriter writer(Format::Pcap, Link::Ethernet);
    const Host client = v4(10, 0, 0, 1, 40512), server = v4(10, 0, 0, 2, 5000);
    uint64_t frames = 0;
    auto send = [&](uint32_t seq, uint8_t flags, size_t at, size_t n) {
        writer.add(tcpFrame(Link::Ethernet, client, server, {.seq = seq + uint32_t(at), .flags = flags},
                            Bytes(built.stream[0].begin() + std::ptrdiff_t(at),
                                  built.stream[0].begin() + std::ptrdiff_t(at + n))),
                   kStart + ++frames);
    };
    send(99, 0x02, 0, 0);
    for (size_t at = 0; at < built.stream[0].size(); at += 1000) {
        const size_t n = std::min<size_t>(1000, built.stream[0].size() - at);
        if (at == 3000) std::fill_n(built.seen[0].begin() + 3000, n, false);
        else send(100, 0x08, at, n);
    }
    const Read r = readCapture(writer.bytes());
    expectSameAsRaw(built, r.items);
    const auto gap = std::find_if(r.items.begin(), r.items.end(), [](const auto &i) { return i.kind == Kind::Gap; });
    ASSERT_NE(gap, r.items.end());
    EXPECT_LT(gap->capture->frame, frames - 10);
}

// Connections: which are followed, numbered, left out or ended early.
TEST(CaptureInput, Flows) {
    CaptureWriter writer(Format::Pcap, Link::Ethernet);
    const Host server = v4(10, 0, 0, 2, 5000);
    uint64_t time = kStart;
    auto packet = [&](const Host &from, const Host &to, uint32_t seq, uint8_t flags, const Bytes &payload) {
        writer.add(tcpFrame(Link::Ethernet, from, to, {.seq = seq, .flags = flags}, payload), time += 1000);
    };
    // Not the protocol: left out, and remarked on as it is on the server's port.
    packet(v4(10, 0, 0, 9, 33000), server, 1, 0x18, {'G', 'E', 'T', ' ', '/'});
    // More connections than are followed at once, each a SYN and a request.
    const size_t n = 1030;
    for (size_t i = 0; i < n; ++i) {
        const Host client = v4(10, 1, uint8_t(i >> 8), uint8_t(i), 40000);
        packet(client, server, 999, 0x02, {});
        packet(client, server, 1000, 0x18, kRequests[0]);
    }
    const Read r = readCapture(writer.bytes(), 5000);
    ASSERT_EQ(r.items.size(), n);
    for (size_t i = 0; i < n; ++i) {
        EXPECT_EQ(r.items[i].kind, Kind::Packet);
        EXPECT_EQ(r.items[i].capture->flow, i + 2); // flow 1 was left out
        EXPECT_TRUE(r.items[i].capture->request);
    }
    // The flow left out, then the ones idle longest as new ones come.
    ASSERT_EQ(r.notes.size(), 1 + (n + 1 - trov::CaptureFlows::kMaxFlows));
    EXPECT_EQ(r.notes[0], "flow 1 (10.0.0.9:33000 -> 10.0.0.2:5000) does not start with the protocol mark 0xa7e5: left out");
    EXPECT_EQ(r.notes[1], "flow 1 (10.0.0.9:33000 -> 10.0.0.2:5000) ended early: more than 1024 connections at once");
}

#endif // (A build without libpcap refusing captures: check-examples.)

} // namespace
