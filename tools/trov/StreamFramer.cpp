#include "StreamFramer.h"

#include <algorithm>
#include <cstring>

#include "TrovCodec.h"
#include "TrovLayout.h"

namespace trov {

namespace {

constexpr size_t kBodyLengthAt = 8;
constexpr uint8_t kMarkHigh = TROV_PROTOCOL_MARK >> 8, kMarkLow = TROV_PROTOCOL_MARK & 0xFF;

size_t bodyLength(const uint8_t *header) { return size_t{header[kBodyLengthAt]} << 8 | header[kBodyLengthAt + 1]; }

} // namespace

bool StreamFramer::plausibleHeader(const uint8_t *header, bool request) {
    if (header[0] != kMarkHigh || header[1] != kMarkLow) return false;
    uint8_t copy[kHeaderBytes]; // the library's cursor is not const
    std::memcpy(copy, header, sizeof copy);
    const PacketCursor cursor{copy, sizeof copy};
    HeaderInfo info{};
    if (TROV_DecodeHeader(&info, &cursor) != TROV_RESULT_OK) return false; // a version nobody knows
    TrovLayoutInfo layout{};
    if (TROV_DescribeBody(info.code, static_cast<uint8_t>(info.version), request ? 1 : 0, &layout) != TROV_RESULT_OK)
        return true; // a code the library does not describe: any length
    return bodyLength(header) >= layout.wireFixed;
}

void StreamFramer::push(const uint8_t *bytes, size_t n) {
    if (start_ == buffer_.size()) {
        buffer_.clear();
        start_ = 0;
    } else if (start_ >= 64 * 1024) {
        buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
        start_ = 0;
    }
    buffer_.insert(buffer_.end(), bytes, bytes + n);
    frame();
}

void StreamFramer::gap(uint64_t lost) {
    skip(held()); // what was held of a packet cannot be completed
    closeSkipped();
    PacketItem item;
    item.kind = PacketItem::Kind::Gap;
    item.offset = offset_;
    item.count = lost;
    ready_.push_back(std::move(item));
    offset_ += lost;
    searching_ = true;
}

void StreamFramer::finish() {
    // While searching, a last few bytes that could only begin a header stay
    // part of the skipped run.
    if (searching_ && held() < kHeaderBytes) skip(held());
    closeSkipped();
    if (held() != 0) emit(PacketItem::Kind::Trailing, held());
}

bool StreamFramer::next(PacketItem &item) {
    if (ready_.empty()) return false;
    item = std::move(ready_.front());
    ready_.pop_front();
    return true;
}

size_t StreamFramer::wanted() const {
    const size_t have = held();
    if (have < kHeaderBytes) return kHeaderBytes - have;
    // frame() leaves a plausible header in hand, its packet not yet whole.
    return kHeaderBytes + bodyLength(buffer_.data() + start_) - have;
}

void StreamFramer::frame() {
    while (held() != 0) {
        const uint8_t *p = buffer_.data() + start_;
        const size_t have = held();
        if (p[0] != kMarkHigh) { // the mark's first byte, wherever it comes next
            const void *mark = std::memchr(p, kMarkHigh, have);
            skip(mark == nullptr ? have : static_cast<size_t>(static_cast<const uint8_t *>(mark) - p));
            continue;
        }
        if (have >= 2 && p[1] != kMarkLow) {
            skip(1);
            continue;
        }
        if (have < kHeaderBytes) return;
        if (searching_ && !plausibleHeader(p, request_)) {
            skip(1);
            continue;
        }
        closeSkipped();
        const size_t whole = kHeaderBytes + bodyLength(p);
        if (have < whole) return;
        emit(PacketItem::Kind::Packet, whole);
        searching_ = false;
    }
}

void StreamFramer::skip(size_t n) {
    if (n == 0) return;
    searching_ = true;
    if (!skipping_) {
        skipping_ = true;
        skipped_ = PacketItem{};
        skipped_.kind = PacketItem::Kind::Skipped;
        skipped_.offset = offset_;
    }
    const uint8_t *p = buffer_.data() + start_;
    const size_t keep = std::min(n, kKeptSkipped - skipped_.bytes.size());
    skipped_.bytes.insert(skipped_.bytes.end(), p, p + keep);
    skipped_.count += n;
    start_ += n;
    offset_ += n;
}

void StreamFramer::closeSkipped() {
    if (!skipping_) return;
    skipping_ = false;
    ready_.push_back(std::move(skipped_));
}

void StreamFramer::emit(PacketItem::Kind kind, size_t n) {
    PacketItem item;
    item.kind = kind;
    item.offset = offset_;
    item.bytes.assign(buffer_.begin() + static_cast<std::ptrdiff_t>(start_),
                      buffer_.begin() + static_cast<std::ptrdiff_t>(start_ + n));
    ready_.push_back(std::move(item));
    start_ += n;
    offset_ += n;
}

} // namespace trov
