#include "CaptureFile.h"

#include <algorithm>
#include <cstring>

#ifdef TROV_HAVE_PCAP
#include <cerrno>
#include <cstdio>
#include <pcap/pcap.h>
#endif

namespace trov {

namespace {

constexpr uint32_t kPcapMicro = 0xA1B2C3D4, kPcapNano = 0xA1B23C4D, kPcapng = 0x0A0D0D0A;

uint32_t be32(const uint8_t *p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]; }
uint32_t swap32(uint32_t v) { return v >> 24 | (v >> 8 & 0xFF00) | (v << 8 & 0xFF0000) | v << 24; }

} // namespace

bool isCaptureMagic(const uint8_t *p, size_t n) {
    if (n < 4) return false;
    const uint32_t magic = be32(p);
    for (uint32_t m : {kPcapMicro, kPcapNano})
        if (magic == m || magic == swap32(m)) return true;
    return magic == kPcapng;
}

CaptureFile::~CaptureFile() = default;

#ifdef TROV_HAVE_PCAP

namespace {

// Whether the first interface of a pcapng file (found in its first bytes)
// stamps times finer than a microsecond (option if_tsresol, code 9: 10^-v,
// or 2^-v when the top bit is set; the default is 10^-6).
bool pcapngNano(const uint8_t *p, size_t n) {
    if (n < 12) return false;
    const bool swapped = std::memcmp(p + 8, "\x4D\x3C\x2B\x1A", 4) == 0; // the byte-order magic, little-endian
    auto u32 = [&](size_t at) { return swapped ? swap32(be32(p + at)) : be32(p + at); };
    auto u16 = [&](size_t at) { return swapped ? uint16_t(p[at + 1] << 8 | p[at]) : uint16_t(p[at] << 8 | p[at + 1]); };
    size_t at = 0;
    while (at + 12 <= n) {
        const uint32_t type = u32(at), length = u32(at + 4);
        if (length < 12 || length % 4 != 0 || at + length > n) return false;
        if (type == 1) { // interface description: link type, reserved, snap length, options
            for (size_t o = at + 16; o + 4 <= at + length - 4;) {
                const uint16_t code = u16(o), size = u16(o + 2);
                if (code == 0) break;
                if (code == 9 && size == 1) {
                    const uint8_t v = p[o + 4];
                    return (v & 0x80) != 0 ? (v & 0x7F) > 20 : v > 6;
                }
                o += 4 + (size + 3u) / 4 * 4;
            }
            return false;
        }
        at += length;
    }
    return false;
}

ssize_t readCookie(void *cookie, char *buffer, size_t size) {
    auto &reader = *static_cast<ChunkReader *>(cookie);
    if (!reader.ensure()) {
        if (reader.error().empty()) return 0;
        errno = EIO;
        return -1;
    }
    const size_t n = std::min(size, reader.size());
    std::memcpy(buffer, reader.data(), n);
    reader.consume(n);
    return static_cast<ssize_t>(n);
}

class PcapFile final : public CaptureFile {
public:
    PcapFile(std::unique_ptr<ChunkReader> reader, pcap_t *pcap, bool nano)
        : reader_(std::move(reader)), pcap_(pcap), nano_(nano) {}
    ~PcapFile() override { pcap_close(pcap_); } // closes the cookie stream too

    Read next(CapturedFrame &frame) override {
        pcap_pkthdr *header = nullptr;
        const u_char *data = nullptr;
        const int r = pcap_next_ex(pcap_, &header, &data);
        if (r == 1) {
            frame.number = ++count_;
            frame.seconds = header->ts.tv_sec;
            frame.fraction = static_cast<uint32_t>(header->ts.tv_usec);
            frame.data = data;
            frame.caplen = header->caplen;
            return Read::Frame;
        }
        if (r == PCAP_ERROR_BREAK) return Read::End;
        error_ = reader_->error().empty() ? pcap_geterr(pcap_) : reader_->error();
        return Read::Error;
    }
    int linkType() const override { return pcap_datalink(pcap_); }
    bool nano() const override { return nano_; }
    const std::string &error() const override { return error_; }

private:
    std::unique_ptr<ChunkReader> reader_;
    pcap_t *pcap_;
    bool nano_;
    uint64_t count_ = 0;
    std::string error_;
};

} // namespace

std::unique_ptr<CaptureFile> CaptureFile::open(std::unique_ptr<ChunkReader> reader, std::string &error) {
    bool nano = false;
    if (reader->ensure() && reader->size() >= 4) {
        const uint32_t magic = be32(reader->data());
        nano = magic == kPcapNano || magic == swap32(kPcapNano) ||
               (magic == kPcapng && pcapngNano(reader->data(), reader->size()));
    }
    const cookie_io_functions_t io{readCookie, nullptr, nullptr, nullptr};
    FILE *file = fopencookie(reader.get(), "rb", io);
    if (file == nullptr) {
        error = std::strerror(errno);
        return nullptr;
    }
    char message[PCAP_ERRBUF_SIZE] = "";
    pcap_t *pcap = pcap_fopen_offline_with_tstamp_precision(
        file, nano ? PCAP_TSTAMP_PRECISION_NANO : PCAP_TSTAMP_PRECISION_MICRO, message);
    if (pcap == nullptr) {
        std::fclose(file);
        error = reader->error().empty() ? message : reader->error();
        return nullptr;
    }
    return std::make_unique<PcapFile>(std::move(reader), pcap, nano);
}

#else

std::unique_ptr<CaptureFile> CaptureFile::open(std::unique_ptr<ChunkReader>, std::string &error) {
    error = "capture input needs the Linux build (libpcap)";
    return nullptr;
}

#endif

} // namespace trov
