// Request bodies read back into records: the walk over described records
// (RecordWalk.h) lays the record out, and this builder answers it from the
// wire, the mirror of what the encoder writes.
//
// Every read is checked against the bytes left before it happens, and every
// count against the bytes its elements need before anything is allocated, so
// a hostile body costs at most memory in proportion to its own size. Where
// reading stops is the start of the field that could not be read, or the
// byte that was wrong (an unknown identifier or method code, a selector, an
// entry's length).
#include "RequestReader.h"

#include <cstring>
#include <vector>

namespace trov {

namespace {

using describe::Frame;

class WireBuilder final : public describe::RecordBuilder {
public:
    WireBuilder(const uint8_t *body, size_t size, RecordArena &arena) : body_(body), size_(size), arena_(arena) {}

    size_t position() const { return position_; }
    size_t stoppedAt() const { return stoppedAt_ == kUnset ? 0 : stoppedAt_; }
    TrovResult result() const { return result_; }

    // Fails with `result`, stopping at `at` (by default the start of the field
    // being read in the innermost record).
    bool stop(TrovResult result, size_t at = kUnset) {
        if (stoppedAt_ == kUnset) {
            for (auto frame = frames_.rbegin(); at == kUnset && frame != frames_.rend(); ++frame)
                if (!ownRecord(frame->frame)) at = frame->fieldStart;
            stoppedAt_ = at == kUnset ? position_ : at;
            result_ = result;
        }
        return false;
    }

    void *allocate(size_t bytes, describe::Block block) override { return arena_.place(bytes, block); }

    bool beginRecord(const TrovLayoutInfo &, Frame frame) override {
        frames_.push_back({frame, position_, 0, 0});
        return true;
    }
    bool endRecord() override {
        const Open done = frames_.back();
        frames_.pop_back();
        if (done.frame != Frame::Entry) return true;
        // An entry's value fills exactly its length.
        if (position_ != done.end) return stop(TROV_RESULT_SHORT_INPUT, position_);
        size_ = done.size;
        return true;
    }
    bool beginField(const TrovFieldInfo &) override {
        if (!frames_.empty()) frames_.back().fieldStart = position_;
        return true;
    }

    bool code(const describe::Code &code, uint32_t &value) override {
        using Of = describe::Code::Of;
        const bool byte = code.of == Of::Option || code.of == Of::Selector;
        // An option stops at its field (or list) like any field; codes at themselves.
        if (!read(byte ? 1 : 2, value))
            return stop(TROV_RESULT_SHORT_INPUT, code.of == Of::Option ? kUnset : position_);
        if (code.of == Of::Method) paramsStart_ = position_;
        return true;
    }

    bool scalar(const TrovFieldInfo &, unsigned width, uint32_t &value) override {
        return read(width, value) || stop(TROV_RESULT_SHORT_INPUT);
    }

    bool count(const describe::Count &count, uint32_t &value) override {
        using Of = describe::Count::Of;
        if (count.of == Of::Rest) { // the bytes up to the end of the body
            value = static_cast<uint32_t>(size_ - position_);
            return value <= 0xFFFF || stop(TROV_RESULT_SHORT_INPUT, position_);
        }
        if (!count.announced && count.prefixBytes != 0 && !read(count.prefixBytes, value))
            return stop(TROV_RESULT_SHORT_INPUT, count.of == Of::CountField ? position_ : kUnset);
        // The elements must be there before memory is taken for them.
        const size_t each = count.elementWire != 0 ? count.elementWire : 1;
        const uint32_t n = count.announced ? value : value & count.limit;
        if (count.of != Of::CountField && count.of != Of::Option && (size_ - position_) / each < n)
            return stop(TROV_RESULT_SHORT_INPUT);
        return true;
    }

    bool bytes(const TrovFieldInfo &, describe::Text, uint8_t *out, size_t size) override {
        if (size_ - position_ < size) return stop(TROV_RESULT_SHORT_INPUT);
        std::memcpy(out, body_ + position_, size);
        position_ += size;
        return true;
    }

    bool element(const describe::Numbers &numbers, uint32_t, uint32_t (&parts)[2]) override {
        for (unsigned p = 0; p < numbers.parts; ++p)
            if (!read(numbers.partBytes(p), parts[p])) return stop(TROV_RESULT_SHORT_INPUT);
        return true;
    }

    bool filler(describe::Filler what, uint32_t &value) override {
        if (what == describe::Filler::ParamsLength) value = static_cast<uint32_t>(position_ - paramsStart_);
        if (what != describe::Filler::EntryLength || frames_.empty()) return true;
        // u16 length, then the value, which may not read past it. The length
        // kept is 0, as the encoder computes it.
        Open &entry = frames_.back();
        uint32_t length = 0;
        if (!read(2, length) || size_ - position_ < length) return stop(TROV_RESULT_SHORT_INPUT, position_);
        entry.end = position_ + length;
        entry.size = size_;
        size_ = entry.end;
        return true;
    }

    describe::Answer missing(const describe::Miss &miss, void *&) override {
        using Of = describe::Miss::Of;
        switch (miss.of) {
        case Of::Code: stop(miss.result, position_ - 2); break; // at the identifier (an entry's: its length)
        case Of::Variant: stop(TROV_RESULT_BAD_VALUE, position_ - 1); break;
        case Of::Depth: stop(TROV_RESULT_SHORT_INPUT, position_); break;
        case Of::Layout: stop(TROV_RESULT_BAD_VALUE, position_); break;
        }
        return describe::Answer::Stop;
    }

    bool stopped() const { return stoppedAt_ != kUnset; }

private:
    static constexpr size_t kUnset = ~size_t{0};

    struct Open {
        Frame frame;
        size_t fieldStart;
        size_t end;  // an entry's: where its value ends
        size_t size; // an entry's: the body size to restore
    };

    // The walk's own records (a typed value, an entry, an option) stop where
    // the field holding them started.
    static bool ownRecord(Frame frame) {
        return frame == Frame::Typed || frame == Frame::Entry || frame == Frame::Option;
    }

    // A big-endian unsigned of `bytes` bytes; false when the body is short.
    bool read(unsigned bytes, uint32_t &value) {
        if (stopped() || size_ - position_ < bytes) return false;
        value = 0;
        for (unsigned i = 0; i < bytes; ++i) value = value << 8 | body_[position_ + i];
        position_ += bytes;
        return true;
    }

    const uint8_t *body_;
    size_t size_;
    RecordArena &arena_;
    size_t position_ = 0;
    size_t paramsStart_ = 0;
    size_t stoppedAt_ = kUnset;
    TrovResult result_ = TROV_RESULT_OK;
    std::vector<Open> frames_;
};

} // namespace

TrovResult readRequestBody(const TrovLayoutInfo &layout, uint8_t version, const uint8_t *body, size_t size,
                           RecordArena &arena, const void *&record, size_t &stoppedAt) {
    stoppedAt = 0;
    if (body == nullptr && size != 0) return TROV_RESULT_NULL_ARGUMENT;
    if (layout.form != TROV_LAYOUT_METHOD_CALL && layout.form != TROV_LAYOUT_FIELDS && layout.form != TROV_LAYOUT_NONE)
        return TROV_RESULT_BAD_VALUE;
    WireBuilder reader(body, size, arena);
    const void *out = describe::buildRecord(layout, version, true, reader);
    // Bytes the layout does not account for cannot be kept in the record.
    if (out != nullptr && reader.position() != size) reader.stop(TROV_RESULT_SHORT_INPUT, reader.position());
    if (out == nullptr && !reader.stopped()) reader.stop(TROV_RESULT_BAD_VALUE, reader.position());
    if (reader.stopped()) {
        stoppedAt = reader.stoppedAt();
        return reader.result();
    }
    record = out;
    return TROV_RESULT_OK;
}

} // namespace trov
