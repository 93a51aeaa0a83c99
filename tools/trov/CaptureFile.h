// Captured frames from a pcap or pcapng file, read through libpcap.
//
// libpcap reads from a FILE*; the input's ChunkReader stands behind it (a
// glibc cookie stream), so the bytes read to recognise the file are read
// again, and a pipe's frames come out as soon as each is whole. In a build
// without libpcap, open() fails with "capture input needs the Linux build
// (libpcap)".
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "HexText.h"

namespace trov {

struct CapturedFrame {
    uint64_t number = 0;   // from 1
    int64_t seconds = 0;
    uint32_t fraction = 0; // microseconds, or nanoseconds for a capture of that precision
    const uint8_t *data = nullptr; // valid until the next read
    size_t caplen = 0;     // bytes captured
};

class CaptureFile {
public:
    enum class Read { Frame, End, Error };

    // nullptr, with `error` set, when libpcap refuses the file's header (or is
    // not part of the build).
    static std::unique_ptr<CaptureFile> open(std::unique_ptr<ChunkReader> reader, std::string &error);
    virtual ~CaptureFile();

    virtual Read next(CapturedFrame &frame) = 0;
    // libpcap's link type (DLT_*) of the frames.
    virtual int linkType() const = 0;
    // Times carry nanoseconds (a nanosecond pcap, or a pcapng interface with a
    // resolution finer than a microsecond).
    virtual bool nano() const = 0;
    // After Read::Error: what is wrong ("truncated dump file; ...").
    virtual const std::string &error() const = 0;
};

// Whether bytes start a pcap file (microsecond or nanosecond magic, either
// byte order) or a pcapng file.
bool isCaptureMagic(const uint8_t *p, size_t n);

} // namespace trov
