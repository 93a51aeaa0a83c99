// `trov decode` over a capture against the same packets as a raw stream:
// what reading pcap through libpcap, finding the TCP segments and putting
// the connection back together costs on top of framing and decoding.
//
// Both inputs are generated as they are read (a streambuf), so a 1 GiB
// capture is read in constant memory: the "peakMiB" counter is the process's
// peak resident size after the run. The connection is pipelined: the client
// sends method requests back to back, the server method replies, in
// 1448-byte segments (a TCP MSS on Ethernet) that cut packets anywhere, one
// segment of each side in turn.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <istream>
#include <streambuf>
#include <sys/resource.h>
#include <vector>

#include "CaptureWriter.h"
#include "DecodeCommand.h"
#include "PacketInput.h"

namespace {

using captest::Bytes;

constexpr size_t kSegment = 1448;

const Bytes kRequest = {0xA7, 0xE5, 0x10, 0x01, 0x00, 0x1D, 0x00, 0x03, 0x00, 0x13, 0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0x01,
                        0x00, 0x00, 0x00, 0x11, 0x00, 0x95, 0x05, 0x03, 0x00, 0x01, 0x00, 0x02, 0xBE, 0xEF, 0x01,
                        0xDE, 0xAD, 0xBE, 0xEF};
const Bytes kReply = {0xA7, 0xE5, 0x10, 0x01, 0x00, 0x1D, 0x00, 0x00, 0x00, 0x07, 0, 0, 0, 0, 0, 0,
                      0,    0,    0x00, 0x01, 0x00, 0x00, 0x00, 0x09, 0x00, 0x92, 0x01};

// The bytes of one side: its packet repeated, `bytes` of them in all (whole packets).
class Side {
public:
    Side(const Bytes &packet, uint64_t bytes) : packet_(packet), total_(bytes / packet.size() * packet.size()) {}
    // Up to n of the next bytes into out; how many.
    size_t take(uint8_t *out, size_t n) {
        n = static_cast<size_t>(std::min<uint64_t>(n, total_ - sent_));
        for (size_t i = 0; i < n; ++i) out[i] = packet_[(sent_ + i) % packet_.size()];
        sent_ += n;
        return n;
    }
    bool done() const { return sent_ == total_; }
    uint64_t sent() const { return sent_; }

private:
    const Bytes &packet_;
    uint64_t total_, sent_ = 0;
};

// A pcap capture of the connection, made as it is read: the file header,
// then one frame of each side in turn.
class CaptureBuf : public std::streambuf {
public:
    explicit CaptureBuf(uint64_t bytesPerSide) : sides_{Side(kRequest, bytesPerSide), Side(kReply, bytesPerSide)} {
        captest::CaptureWriter header(captest::Format::PcapBigEndian, captest::Link::Ethernet);
        buffer_.assign(header.bytes().begin(), header.bytes().end());
        frame(0, 0x02, 0);
        frame(1, 0x12, 0);
        setg(buffer_.data(), buffer_.data(), buffer_.data() + buffer_.size());
    }

protected:
    int_type underflow() override {
        buffer_.clear();
        for (int i = 0; i < 16 && !(sides_[0].done() && sides_[1].done()); ++i) {
            turn_ = sides_[1 - turn_].done() ? turn_ : 1 - turn_;
            frame(turn_, 0x18, kSegment);
        }
        if (buffer_.empty()) return traits_type::eof();
        setg(buffer_.data(), buffer_.data(), buffer_.data() + buffer_.size());
        return traits_type::to_int_type(buffer_[0]);
    }

private:
    void frame(int side, uint8_t flags, size_t most) {
        payload_.resize(most);
        const uint64_t before = sides_[side].sent();
        payload_.resize(sides_[side].take(payload_.data(), most));
        captest::Tcp t;
        t.seq = uint32_t(isn_[side] + (flags & 0x02 ? 0 : 1) + before);
        t.ack = uint32_t(isn_[1 - side] + 1 + sides_[1 - side].sent());
        t.flags = flags;
        const Bytes f = captest::tcpFrame(captest::Link::Ethernet, hosts_[side], hosts_[1 - side], t, payload_);
        const uint32_t n = uint32_t(f.size()), us = uint32_t(++frames_);
        const uint8_t record[16] = {0, 0, 0, 1, uint8_t(us >> 24), uint8_t(us >> 16), uint8_t(us >> 8), uint8_t(us),
                                    uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n),
                                    uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n)};
        buffer_.insert(buffer_.end(), record, record + 16);
        buffer_.insert(buffer_.end(), f.begin(), f.end());
    }

    Side sides_[2];
    const captest::Host hosts_[2] = {captest::v4(10, 0, 0, 1, 40512), captest::v4(10, 0, 0, 2, 5000)};
    const uint32_t isn_[2] = {1000, 9000000};
    int turn_ = 1;
    uint64_t frames_ = 0;
    Bytes payload_;
    std::vector<char> buffer_;
};

// One side's bytes as a raw stream.
class RawBuf : public std::streambuf {
public:
    RawBuf(const Bytes &packet, uint64_t bytes) : side_(packet, bytes), buffer_(64 * 1024) {}

protected:
    int_type underflow() override {
        const size_t n = side_.take(reinterpret_cast<uint8_t *>(buffer_.data()), buffer_.size());
        if (n == 0) return traits_type::eof();
        setg(buffer_.data(), buffer_.data(), buffer_.data() + n);
        return traits_type::to_int_type(buffer_[0]);
    }

private:
    Side side_;
    std::vector<char> buffer_;
};

// Frames (and with `decode`, decodes as `trov decode` does) every item; the payload bytes seen.
uint64_t drain(trov::PacketInput &input, bool decode, bool request) {
    uint64_t bytes = 0;
    for (trov::PacketItem item = input.next(); item.kind != trov::PacketItem::Kind::End; item = input.next()) {
        if (item.kind == trov::PacketItem::Kind::Error) break;
        bytes += item.bytes.size();
        if (decode) {
            bool failed = false;
            benchmark::DoNotOptimize(trov::decodeItem(item, item.capture ? item.capture->request : request, failed));
        }
    }
    return bytes;
}

double peakMiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

// Arguments: MiB per side, whether to decode.
void BM_CaptureDecode(benchmark::State &state) {
    const uint64_t perSide = uint64_t(state.range(0)) << 20;
    uint64_t bytes = 0;
    for (auto _ : state) {
        CaptureBuf buf(perSide);
        std::istream in(&buf);
        auto input = trov::PacketInput::fromStream(in, "bench", trov::InputFormat::Detect);
        bytes += drain(*input, state.range(1) != 0, false);
    }
    state.SetBytesProcessed(int64_t(bytes));
    state.counters["peakMiB"] = peakMiB();
}

void BM_RawStreamDecode(benchmark::State &state) {
    const uint64_t perSide = uint64_t(state.range(0)) << 20;
    uint64_t bytes = 0;
    for (auto _ : state) {
        for (bool request : {true, false}) {
            RawBuf buf(request ? kRequest : kReply, perSide);
            std::istream in(&buf);
            auto input = trov::PacketInput::fromStream(in, "bench", trov::InputFormat::Raw, request);
            bytes += drain(*input, state.range(1) != 0, request);
        }
    }
    state.SetBytesProcessed(int64_t(bytes));
    state.counters["peakMiB"] = peakMiB();
}

} // namespace

// Framing only, and framing with decoding, over 16 MiB per side; then a
// capture of 1 GiB (512 MiB per side) framed once, for its memory.
BENCHMARK(BM_CaptureDecode)->Args({16, 0})->Args({16, 1})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RawStreamDecode)->Args({16, 0})->Args({16, 1})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CaptureDecode)->Args({512, 0})->Iterations(1)->Unit(benchmark::kMillisecond);
