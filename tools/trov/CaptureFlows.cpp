#include "CaptureFlows.h"

#include <cstdio>
#include <tuple>

namespace trov {

namespace {

bool before(const Endpoint &x, const Endpoint &y) {
    return std::tie(x.v6, x.address, x.port) < std::tie(y.v6, y.address, y.port);
}

// Days since 1970-01-01 as a civil date (proleptic Gregorian).
void civil(int64_t days, int64_t &year, unsigned &month, unsigned &day) {
    days += 719468;
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const auto doe = static_cast<unsigned>(days - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    day = doy - (153 * mp + 2) / 5 + 1;
    month = mp < 10 ? mp + 3 : mp - 9;
    year = static_cast<int64_t>(yoe) + era * 400 + (month <= 2);
}

} // namespace

std::string captureTime(int64_t seconds, uint32_t fraction, bool nano) {
    int64_t days = seconds / 86400, rest = seconds % 86400;
    if (rest < 0) rest += 86400, --days;
    int64_t year;
    unsigned month, day;
    civil(days, year, month, day);
    char text[64];
    std::snprintf(text, sizeof text, "%04lld-%02u-%02uT%02u:%02u:%02u.%0*uZ", static_cast<long long>(year), month, day,
                  static_cast<unsigned>(rest / 3600), static_cast<unsigned>(rest / 60 % 60),
                  static_cast<unsigned>(rest % 60), nano ? 9 : 6, fraction);
    return text;
}

size_t CaptureFlows::KeyHash::operator()(const Key &key) const {
    uint64_t h = 1469598103934665603ull; // FNV-1a over both endpoints
    auto mix = [&h](const Endpoint &e) {
        for (uint8_t b : e.address) h = (h ^ b) * 1099511628211ull;
        h = (h ^ e.port) * 1099511628211ull;
        h = (h ^ (e.v6 ? 1u : 0u)) * 1099511628211ull;
    };
    mix(key.a);
    mix(key.b);
    return static_cast<size_t>(h);
}

CaptureFlows::CaptureFlows(uint16_t serverPort, std::function<void(const std::string &)> note, size_t maxFlows)
    : port_(serverPort), note_(std::move(note)), maxFlows_(maxFlows == 0 ? 1 : maxFlows) {}

CaptureFlows::Flows::iterator CaptureFlows::create(const TcpSegment &s) {
    const bool syn = (s.flags & tcp::kSyn) != 0, ack = (s.flags & tcp::kAck) != 0;
    bool clientSent;
    if (syn) {
        clientSent = !ack;
    } else if (port_ != 0 && (s.src.port == port_) != (s.dst.port == port_)) {
        clientSent = s.dst.port == port_;
    } else {
        const bool request = s.length >= StreamFramer::kHeaderBytes && StreamFramer::plausibleHeader(s.payload, true);
        const bool reply = s.length >= StreamFramer::kHeaderBytes && StreamFramer::plausibleHeader(s.payload, false);
        if (request != reply) clientSent = request;
        else clientSent = s.src.port == s.dst.port || s.src.port > s.dst.port;
    }
    const Key key = before(s.src, s.dst) ? Key{s.src, s.dst} : Key{s.dst, s.src};
    flows_.emplace_front(key, nextId_++, clientSent ? s.src : s.dst, clientSent ? s.dst : s.src);
    index_.emplace(key, flows_.begin());
    return flows_.begin();
}

void CaptureFlows::segment(const TcpSegment &s, const FrameStamp &stamp) {
    const bool syn = (s.flags & tcp::kSyn) != 0, ack = (s.flags & tcp::kAck) != 0;
    const bool fin = (s.flags & tcp::kFin) != 0, rst = (s.flags & tcp::kRst) != 0;
    const Key key = before(s.src, s.dst) ? Key{s.src, s.dst} : Key{s.dst, s.src};
    auto found = index_.find(key);
    Flows::iterator flow;
    if (found != index_.end()) {
        flow = found->second;
        // A SYN that is not the client's first one again starts a new connection.
        if (syn && !ack && !(flow->client == s.src && flow->syn == s.seq)) {
            close(flow, stamp);
            found = index_.end();
        }
    }
    if (found == index_.end()) {
        if (rst || (!syn && s.length == 0)) return; // nothing of a connection to follow
        if (flows_.size() >= maxFlows_) {
            const Flow &oldest = flows_.back();
            if (note_)
                note_("flow " + std::to_string(oldest.id) + " (" + oldest.clientText + " -> " + oldest.serverText +
                      ") ended early: more than " + std::to_string(maxFlows_) + " connections at once");
            close(std::prev(flows_.end()), stamp);
        }
        flow = create(s);
    } else if (flow != flows_.begin()) {
        flows_.splice(flows_.begin(), flows_, flow);
    }
    Flow &f = *flow;
    const bool fromClient = s.src == f.client;
    if (syn && fromClient) f.syn = s.seq;
    if (fin) f.fins |= fromClient ? 1 : 2;
    if (!f.leftOut) {
        TcpDirection &own = fromClient ? f.requests : f.replies;
        TcpDirection &other = fromClient ? f.replies : f.requests;
        if (ack) other.acked(s.ack);
        own.segment(s.seq, syn, fin, s.payload, s.length, s.missing);
        collect(f, stamp);
        if (own.markMissing() || other.markMissing()) {
            f.leftOut = true;
            if (note_ && port_ != 0 && (f.server.port == port_ || f.client.port == port_))
                note_("flow " + std::to_string(f.id) + " (" + f.clientText + " -> " + f.serverText +
                      ") does not start with the protocol mark 0xa7e5: left out");
        }
    }
    const bool ended = f.leftOut ? f.fins == 3 : f.requests.ended() && f.replies.ended();
    if (rst || ended) close(flow, stamp);
}

void CaptureFlows::finish(const FrameStamp &last) {
    while (!flows_.empty()) close(std::prev(flows_.end()), last);
}

bool CaptureFlows::next(PacketItem &item) {
    if (ready_.empty()) return false;
    item = std::move(ready_.front());
    ready_.pop_front();
    return true;
}

void CaptureFlows::collect(Flow &f, const FrameStamp &stamp) {
    for (int side = 0; side < 2; ++side) {
        TcpDirection &direction = side == 0 ? f.requests : f.replies;
        PacketItem item;
        while (direction.next(item)) {
            CaptureInfo info;
            info.frame = stamp.frame;
            info.time = timeOf(stamp);
            info.flow = f.id;
            info.request = side == 0;
            info.src = info.request ? f.clientText : f.serverText;
            info.dst = info.request ? f.serverText : f.clientText;
            item.capture = std::move(info);
            ready_.push_back(std::move(item));
        }
    }
}

void CaptureFlows::close(Flows::iterator flow, const FrameStamp &stamp) {
    if (!flow->leftOut) {
        flow->requests.finish();
        flow->replies.finish();
        collect(*flow, stamp);
    }
    index_.erase(flow->key);
    flows_.erase(flow);
}

const std::string &CaptureFlows::timeOf(const FrameStamp &stamp) {
    if (timeFrame_ != stamp.frame || timeText_.empty()) {
        timeFrame_ = stamp.frame;
        timeText_ = captureTime(stamp.seconds, stamp.fraction, stamp.nano);
    }
    return timeText_;
}

} // namespace trov
