// Frames one input into packets through StreamFramer. The input is read as
// raw bytes or through HexText, so at most one packet and a chunk or two are
// held whatever its size.
#include "PacketInput.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fcntl.h>

#include "HexText.h"
#include "StreamFramer.h"

#ifdef _WIN32
#include <io.h>
#endif

namespace trov {

namespace {

// Text is printable ASCII, tabs and line breaks, after a UTF-8 byte-order
// mark or none; or anything after a UTF-16 one (FF FE, FE FF). A packet's
// first byte (0xA7) starts none of these.
bool looksLikeText(const uint8_t *p, size_t n) {
    if (n >= 2 && ((p[0] == 0xff && p[1] == 0xfe) || (p[0] == 0xfe && p[1] == 0xff))) return true;
    if (n >= 3 && p[0] == 0xef && p[1] == 0xbb && p[2] == 0xbf) p += 3, n -= 3;
    return std::all_of(p, p + n, [](uint8_t c) { return (c >= 0x20 && c < 0x7f) || c == '\t' || c == '\r' || c == '\n'; });
}

class Framer final : public PacketInput {
public:
    Framer(std::unique_ptr<ChunkReader> reader, InputFormat format, bool request)
        : reader_(std::move(reader)), format_(format), framer_(request) {}

    PacketItem next() override {
        PacketItem item;
        if (!started_) start();
        // Reads only what completes the item in hand, so that a packet from a
        // live pipe comes out as soon as its last byte arrives.
        while (!framer_.next(item)) {
            if (finished_) {
                if (!errorPending_) return PacketItem{};
                errorPending_ = false;
                return std::move(error_);
            }
            const size_t want = std::min(framer_.wanted(), chunk_.size());
            const size_t got = read(chunk_.data(), want);
            framer_.push(chunk_.data(), got);
            if (got == want) continue;
            finished_ = true;
            const std::string &error = hex_ ? hex_->error() : reader_->error();
            if (error.empty()) {
                framer_.finish();
                continue;
            }
            // Items completed before the error come out first (a packet cut
            // short by it is dropped), then the error.
            PacketItem failure;
            failure.kind = PacketItem::Kind::Error;
            failure.error = error;
            if (!framer_.next(item)) return failure;
            error_ = std::move(failure);
            errorPending_ = true;
            return item;
        }
        return item;
    }

    bool isHex() const override { return hex_ != nullptr; }

private:
    void start() {
        started_ = true;
        chunk_.resize(ChunkReader::kChunk);
        const bool hex = format_ == InputFormat::Hex ||
                         (format_ == InputFormat::Detect && reader_->ensure() && looksLikeText(reader_->data(), reader_->size()));
        if (hex) hex_ = std::make_unique<HexText>(*reader_);
    }

    size_t read(uint8_t *dst, size_t n) { return hex_ ? hex_->read(dst, n) : reader_->read(dst, n); }

    std::unique_ptr<ChunkReader> reader_;
    std::unique_ptr<HexText> hex_;
    InputFormat format_;
    StreamFramer framer_;
    std::vector<uint8_t> chunk_;
    PacketItem error_; // a read error, after the items completed before it
    bool errorPending_ = false;
    bool started_ = false;
    bool finished_ = false;
};

} // namespace

PacketInput::~PacketInput() = default;

std::unique_ptr<PacketInput> PacketInput::open(const std::string &path, InputFormat format, std::string &error,
                                               bool request) {
    if (path == "-") {
#ifdef _WIN32
        _setmode(0, _O_BINARY);
#endif
        return std::make_unique<Framer>(std::make_unique<ChunkReader>(0, false, "-"), format, request);
    }
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) {
        error = path + " is a directory";
        return nullptr;
    }
#ifdef _WIN32
    const int fd = _open(path.c_str(), _O_RDONLY | _O_BINARY);
#else
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
#endif
    if (fd < 0) {
        error = "cannot open " + path + ": " + std::strerror(errno);
        return nullptr;
    }
    return std::make_unique<Framer>(std::make_unique<ChunkReader>(fd, true, path), format, request);
}

std::unique_ptr<PacketInput> PacketInput::fromStream(std::istream &in, const std::string &name, InputFormat format,
                                                     bool request) {
    return std::make_unique<Framer>(std::make_unique<ChunkReader>(in, name), format, request);
}

} // namespace trov
