// Decodes the fuzz input as a reply packet and encodes whatever decodes
// back with TROV_EncodeReply, which must succeed (or refuse a body longer
// than 65535 bytes) and write exactly the bytes the decoder read: the input's
// header with the true body length, and the body as far as the layout reads
// it. Where a read makes up bytes (event 0x30's missing tail, a raw event
// attribute cut short) or leaves some unread (the length field of an
// attribute entry, in an event's list or a structure, whose codec decides
// the value's length), the packet written must be a fixed point instead:
// decoded and encoded again, the same bytes. Where the record lost something (see
// Losses) the encoder must refuse it, or leave it out.
//
// Input: the packet, its header as it stands (the unit type in bytes 18-19
// decides, as for any reply, whether the body is decoded at all).
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "RecordWalk.h"
#include "TrovCodec.h"
#include "TrovLayout.h"
#include "TrovReplyEncode.h"

namespace {

using Bytes = std::vector<uint8_t>;

[[noreturn]] void fail(const char *what) {
    std::fprintf(stderr, "fuzz_encode_replies: %s\n", what);
    std::abort();
}
void check(bool ok, const char *what) {
    if (!ok) fail(what);
}

struct Decoded {
    HeaderInfo info{};
    DecodeResult result{nullptr, nullptr, 0};
    TrovResult r;
    explicit Decoded(Bytes &packet) {
        const PacketCursor cursor{packet.data(), static_cast<uint32_t>(packet.size())};
        r = TROV_DecodeFU(&info, &result, &cursor, nullptr);
    }
    ~Decoded() {
        if (result.buffer != nullptr) trovFree(result.buffer->data);
        trovFree(result.record);
    }
};

// What of a decoded record cannot go back on the wire, found by reading it
// through the layout description: a value read over and not kept (event
// 0x78 with a data type that reserves no room leaves its pointer null: the
// encoder refuses the record, 1), and a structure's attribute entry without
// a codec, kept as its bytes, which the structure codec does not write.
class Losses final : public trov::describe::RecordReader {
public:
    bool lost = false;
    bool structureRawEntry = false;

    void beginRecord(const TrovLayoutInfo &) override { frames_.push_back(0); }
    void member(const TrovFieldInfo &field) override { frames_.back() = field.kindId; }
    void endRecord() override { frames_.pop_back(); }
    void beginList(uint32_t) override {}
    void endList() override {}
    void number(uint32_t) override {}
    void bytes(const uint8_t *, size_t, trov::describe::Text text) override {
        // The entry's own record is open; its owner is the member before it.
        if (text == trov::describe::Text::Unparsed && frames_.size() >= 2 &&
            frames_[frames_.size() - 2] == TROV_KIND_ENTRY)
            structureRawEntry = true;
    }
    void numbers(const trov::describe::Numbers &) override {}
    void absent() override { lost = true; }
    void unread(trov::describe::Unread) override {}

private:
    std::vector<uint8_t> frames_;
};

// The record's packet, or an empty one when the encoder refused it.
Bytes encode(const Decoded &d, TrovResult &r) {
    HeaderInfo info = d.info;
    EncodeOutput out{nullptr, 0};
    r = TROV_EncodeReply(&info, d.result.record != nullptr ? d.result.record : &d.info, &out);
    Bytes bytes;
    if (r == TROV_RESULT_OK) bytes.assign(out.data, out.data + out.length);
    trovFree(out.data);
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    TROV_InitCoder();
    if (size > 0x20000) return 0;
    Bytes packet(data, data + size);
    Decoded d(packet);
    // Failures leave no record, nor do bodies the unit type skips and
    // bodies without a reply: nothing of the body was read.
    if (d.r != TROV_RESULT_OK || d.result.record == nullptr) return 0;
    TrovResult r = TROV_RESULT_OK;
    Bytes again = encode(d, r);
    if (r == TROV_RESULT_SHORT_INPUT) return 0; // a made-up tail pushed the body past 65535 bytes
    TrovLayoutInfo layout{};
    check(TROV_DescribeBody(d.info.code, static_cast<uint8_t>(d.info.version), 0, &layout) == 0,
          "a decoded body without a layout");
    Losses losses;
    trov::describe::readRecord(layout, d.result.record, static_cast<uint8_t>(d.info.version), false, losses);
    if (losses.lost) {
        check(r == TROV_RESULT_NULL_ARGUMENT, "a record that lost a value was not refused");
        return 0;
    }
    check(r == TROV_RESULT_OK, "a decoded reply does not encode");
    if (losses.structureRawEntry) return 0; // the entry is left out
    check(again.size() >= TROV_HEADER_LENGTH, "a packet shorter than its header");

    // The header comes back with the true body length. Bytes 18-19 come back
    // where the flags say they carry the 16-bit extension; otherwise the
    // header codec writes the byte form's byte 18 (flag 0x08) or zeros.
    const size_t body = again.size() - TROV_HEADER_LENGTH;
    check(again[8] == (body >> 8 & 0xFF) && again[9] == (body & 0xFF), "the body length is not the body's");
    Bytes expected(packet.begin(), packet.begin() + TROV_HEADER_LENGTH);
    expected[8] = again[8];
    expected[9] = again[9];
    const size_t compared = (packet[3] & TROV_FLAG_EXTENSION16) != 0 ? TROV_HEADER_LENGTH
                            : (packet[3] & TROV_FLAG_EXTENSION8) != 0 ? 19
                                                                       : 18;
    check(std::memcmp(again.data(), expected.data(), compared) == 0, "the header changed");
    // The body is what the layout read.
    if (body <= packet.size() - TROV_HEADER_LENGTH &&
        std::memcmp(again.data() + TROV_HEADER_LENGTH, packet.data() + TROV_HEADER_LENGTH, body) == 0)
        return 0;

    // Bytes made up or rewritten: the packet written must be a fixed point.
    // Decoded under the input's bytes 18-19, which decide the unit type even
    // where the header codec does not write them back.
    Bytes probe = again;
    probe[18] = packet[18];
    probe[19] = packet[19];
    Decoded second(probe);
    check(second.r == TROV_RESULT_OK, "an encoded reply does not decode");
    TrovResult r2 = TROV_RESULT_OK;
    const Bytes third = encode(second, r2);
    check(r2 == TROV_RESULT_OK && third == again, "an encoded reply is not a fixed point");
    return 0;
}
