// Frames one input into packets: 20 header bytes, then as many body bytes as
// the header's bodyLength (bytes 8-9) says, whatever the rest of the header
// holds (a wrong mark is the decoder's to report). The input is read a chunk
// at a time, as raw bytes or through HexText, so at most one packet and a
// chunk or two are held whatever its size.
#include "PacketInput.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fcntl.h>

#include "HexText.h"

#ifdef _WIN32
#include <io.h>
#endif

namespace trov {

namespace {

constexpr size_t kHeaderSize = 20;
constexpr size_t kBodyLengthAt = 8;

// Text is printable ASCII, tabs and line breaks; a packet's first byte (0xA7)
// is none of these.
bool looksLikeText(const uint8_t *p, size_t n) {
    return std::all_of(p, p + n, [](uint8_t c) { return (c >= 0x20 && c < 0x7f) || c == '\t' || c == '\r' || c == '\n'; });
}

class Framer final : public PacketInput {
public:
    Framer(std::unique_ptr<ChunkReader> reader, InputFormat format)
        : reader_(std::move(reader)), format_(format) {}

    PacketItem next() override {
        PacketItem item;
        if (finished_) return item;
        if (!started_) start();
        item.offset = offset_;
        item.bytes.resize(kHeaderSize);
        size_t got = read(item.bytes.data(), kHeaderSize);
        if (got == kHeaderSize) {
            const size_t body = size_t{item.bytes[kBodyLengthAt]} << 8 | item.bytes[kBodyLengthAt + 1];
            item.bytes.resize(kHeaderSize + body);
            got += read(item.bytes.data() + kHeaderSize, body);
        }
        if (got == item.bytes.size()) {
            item.kind = PacketItem::Kind::Packet;
            offset_ += got;
            return item;
        }
        finished_ = true;
        const std::string &error = hex_ ? hex_->error() : reader_->error();
        if (!error.empty()) {
            item.kind = PacketItem::Kind::Error;
            item.bytes.clear();
            item.error = error;
        } else if (got == 0) {
            item.bytes.clear();
        } else {
            item.kind = PacketItem::Kind::Trailing;
            item.bytes.resize(got);
        }
        return item;
    }

    bool isHex() const override { return hex_ != nullptr; }

private:
    void start() {
        started_ = true;
        const bool hex = format_ == InputFormat::Hex ||
                         (format_ == InputFormat::Detect && reader_->ensure() && looksLikeText(reader_->data(), reader_->size()));
        if (hex) hex_ = std::make_unique<HexText>(*reader_);
    }

    size_t read(uint8_t *dst, size_t n) { return hex_ ? hex_->read(dst, n) : reader_->read(dst, n); }

    std::unique_ptr<ChunkReader> reader_;
    std::unique_ptr<HexText> hex_;
    InputFormat format_;
    bool started_ = false;
    bool finished_ = false;
    uint64_t offset_ = 0;
};

} // namespace

PacketInput::~PacketInput() = default;

std::unique_ptr<PacketInput> PacketInput::open(const std::string &path, InputFormat format, std::string &error) {
    if (path == "-") {
#ifdef _WIN32
        _setmode(0, _O_BINARY);
#endif
        return std::make_unique<Framer>(std::make_unique<ChunkReader>(0, false, "<stdin>"), format);
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
    return std::make_unique<Framer>(std::make_unique<ChunkReader>(fd, true, path), format);
}

std::unique_ptr<PacketInput> PacketInput::fromStream(std::istream &in, const std::string &name, InputFormat format) {
    return std::make_unique<Framer>(std::make_unique<ChunkReader>(in, name), format);
}

} // namespace trov
