#include "CaptureInput.h"

#include <functional>
#include <string>
#include <utility>

#include "CaptureFile.h"
#include "CaptureFlows.h"
#include "CaptureLink.h"

namespace trov {

namespace {

class CaptureInput final : public PacketInput {
public:
    CaptureInput(std::unique_ptr<ChunkReader> reader, const CaptureOptions &options)
        : name_(reader->name()), note_(options.note), flows_(options.port, options.note) {
        std::string error;
        file_ = CaptureFile::open(std::move(reader), error);
        if (file_ == nullptr) fail(error);
        else if (!linkTypeKnown(file_->linkType()))
            fail("link type " + std::to_string(file_->linkType()) +
                 " is not read (Ethernet, Linux cooked, raw IP and loopback are)");
    }

    PacketItem next() override {
        PacketItem item;
        while (!flows_.next(item)) {
            if (done_) {
                if (error_.kind != PacketItem::Kind::Error) return PacketItem{};
                return std::exchange(error_, PacketItem{});
            }
            read();
        }
        return item;
    }

    bool isHex() const override { return false; }

private:
    void read() {
        CapturedFrame frame;
        switch (file_->next(frame)) {
        case CaptureFile::Read::Frame: break;
        case CaptureFile::Read::End:
            flows_.finish(last_);
            done_ = true;
            return;
        case CaptureFile::Read::Error:
            // What the capture held up to the damage comes out first.
            flows_.finish(last_);
            fail(file_->error());
            return;
        }
        last_ = FrameStamp{frame.number, frame.seconds, frame.fraction, file_->nano()};
        TcpSegment segment;
        switch (findTcpSegment(file_->linkType(), frame.data, frame.caplen, segment)) {
        case LinkResult::Tcp: flows_.segment(segment, last_); break;
        case LinkResult::Fragment:
            if (!fragmentNoted_ && note_)
                note_(name_ + ": frame " + std::to_string(frame.number) +
                      ": IP fragments are not reassembled; the fragmented segments are skipped");
            fragmentNoted_ = true;
            break;
        case LinkResult::NotTcp: break;
        }
    }

    void fail(const std::string &what) {
        done_ = true;
        error_.kind = PacketItem::Kind::Error;
        error_.error = name_ + ": " + what;
    }

    std::string name_;
    std::function<void(const std::string &)> note_;
    std::unique_ptr<CaptureFile> file_;
    CaptureFlows flows_;
    FrameStamp last_;
    PacketItem error_;
    bool done_ = false;
    bool fragmentNoted_ = false;
};

} // namespace

std::unique_ptr<PacketInput> openCaptureInput(std::unique_ptr<ChunkReader> reader, const CaptureOptions &options) {
    return std::make_unique<CaptureInput>(std::move(reader), options);
}

} // namespace trov
