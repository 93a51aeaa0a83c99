#include "CaptureTcp.h"

#include <algorithm>

#include "TrovCodec.h"

namespace trov {

int64_t TcpDirection::offsetOf(uint32_t seq) const {
    // The nearest offset to next_ with this sequence number (32-bit wrap).
    const auto delta = static_cast<int32_t>(seq - static_cast<uint32_t>(base_ + static_cast<uint32_t>(next_)));
    return static_cast<int64_t>(next_) + delta;
}

void TcpDirection::segment(uint32_t seq, bool syn, bool fin, const uint8_t *data, size_t n, size_t missing) {
    if (ended_ || markMissing_) return;
    const uint32_t first = syn ? seq + 1 : seq;
    if (!started_) {
        started_ = true;
        base_ = first;
    }
    const int64_t at = offsetOf(first);
    if (fin && at >= 0) {
        const uint64_t end = static_cast<uint64_t>(at) + n + missing;
        if (!fin_ || end < *fin_) fin_ = end;
    }
    take(at, data, n);
    // Bytes cut by the snap length never come: give them up once the
    // stream has reached them.
    if (missing != 0 && at >= 0 && next_ == static_cast<uint64_t>(at) + n) {
        skipTo(next_ + missing);
        drain();
    }
    if (fin_ && next_ >= *fin_) end();
}

void TcpDirection::take(int64_t at, const uint8_t *data, size_t n) {
    if (n == 0) return;
    const int64_t stop = at + static_cast<int64_t>(n);
    if (stop <= static_cast<int64_t>(next_)) return; // all delivered before: a retransmission
    if (at < static_cast<int64_t>(next_)) {         // partly new: keep the new part
        data += static_cast<uint64_t>(static_cast<int64_t>(next_) - at);
        n = static_cast<size_t>(stop - static_cast<int64_t>(next_));
        at = static_cast<int64_t>(next_);
    }
    const auto offset = static_cast<uint64_t>(at);
    if (offset == next_) {
        deliver(data, n);
        next_ += n;
        drain();
        return;
    }
    auto &held = pending_[offset];
    if (held.size() >= n) return; // the same segment again, or a longer one held
    pendingBytes_ += n - held.size();
    held.assign(data, data + n);
    // A full window gives up the first hole.
    while (pendingBytes_ > kWindowBytes) {
        skipTo(pending_.begin()->first);
        drain();
    }
}

void TcpDirection::drain() {
    while (!pending_.empty() && pending_.begin()->first <= next_) {
        auto it = pending_.begin();
        const uint64_t stop = it->first + it->second.size();
        if (stop > next_) {
            deliver(it->second.data() + (next_ - it->first), static_cast<size_t>(stop - next_));
            next_ = stop;
        }
        pendingBytes_ -= it->second.size();
        pending_.erase(it);
    }
}

void TcpDirection::deliver(const uint8_t *data, size_t n) {
    if (markMissing_) return;
    // The stream must start with the protocol mark.
    if (next_ < 2 && !lostFirst_) {
        static constexpr uint8_t kMark[2] = {TROV_PROTOCOL_MARK >> 8, TROV_PROTOCOL_MARK & 0xFF};
        for (uint64_t i = next_; i < 2 && i - next_ < n; ++i) {
            if (data[i - next_] != kMark[i]) {
                markMissing_ = true;
                pending_.clear();
                pendingBytes_ = 0;
                return;
            }
        }
    }
    framer_.push(data, n);
}

void TcpDirection::skipTo(uint64_t at) {
    if (at <= next_) return;
    if (next_ == 0) lostFirst_ = true;
    framer_.gap(at - next_);
    next_ = at;
}

void TcpDirection::acked(uint32_t ack) {
    if (!started_ || ended_ || markMissing_) return;
    const int64_t upTo = offsetOf(ack);
    // Holes before data already held (or before the FIN) that the other
    // side has acknowledged: it received bytes the capture missed. A hole
    // with nothing captured after it waits, in case the capture shows an
    // acknowledgement before the data it acknowledges.
    for (;;) {
        const std::optional<uint64_t> after = pending_.empty() ? fin_ : std::optional(pending_.begin()->first);
        if (!after || *after <= next_ || static_cast<int64_t>(*after) > upTo) break;
        skipTo(*after);
        drain();
    }
    if (fin_ && next_ >= *fin_) end();
}

void TcpDirection::finish() {
    if (ended_) return;
    if (!markMissing_) {
        while (!pending_.empty()) {
            skipTo(pending_.begin()->first);
            drain();
        }
    }
    end();
}

void TcpDirection::end() {
    if (ended_) return;
    ended_ = true;
    pending_.clear();
    pendingBytes_ = 0;
    if (!markMissing_) framer_.finish();
}

} // namespace trov
