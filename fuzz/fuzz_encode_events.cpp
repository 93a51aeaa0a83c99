// Runs every event code's encoder (the internal operations of both event
// families) on records built from fuzz input: EncCalc, then Encode into a
// buffer of exactly the size it reported, which Encode must fill exactly.
// The bytes are decoded again with the code's DecCalc and Decode into a
// block of exactly the room DecCalc reports, and the decoded record encoded
// again: the same bytes. A record that follows a null pointer or names a
// data type without a codec must be refused.
//
// Input: the builder's hostility byte, then the event: a byte indexing the
// string events (kStringEventCodecs) followed by the attribute events
// (kAttributeEventCodecs), modulo their number; then the record's decisions.
#include <cstring>
#include <memory>
#include <vector>

#include "RecordBuilder.h"
#include "events/AttributeEvents.h"
#include "events/StringEvents.h"

namespace {

using namespace trovfuzz;
using Bytes = std::vector<uint8_t>;

using trov::EventCodec;

// Both families' codes, each with its operations.
const std::vector<EventCodec> &eventCodecs() {
    static const std::vector<EventCodec> codecs = [] {
        std::vector<EventCodec> v(trov::kStringEventCodecs.begin(), trov::kStringEventCodecs.end());
        v.insert(v.end(), trov::kAttributeEventCodecs.begin(), trov::kAttributeEventCodecs.end());
        return v;
    }();
    return codecs;
}

// The event's record as TROV_DescribeEvent describes it; 0xC4 and 0xC5 are
// a head pointing at their structure.
void *buildRecord(RecordBuilder &builder, const EventCodec &codec) {
    TrovLayoutInfo layout{};
    check(TROV_DescribeEvent(codec.code, TROV_PROTOCOL_VERSION, &layout) == TROV_RESULT_OK,
          "an event without a layout");
    return layout.form == TROV_LAYOUT_STRUCTURE ? builder.structureEvent(layout) : builder.record(layout);
}

// Encode into exactly `n` bytes, which it must fill.
Bytes encodeExactly(const EventCodec &codec, const void *record, uint16_t n) {
    std::unique_ptr<uint8_t[]> out(new uint8_t[n]);
    PacketCursor cursor{out.get(), n};
    codec.encode(&cursor, record);
    check(cursor.position == out.get() + n && cursor.remaining == 0,
          "an event encoder did not write exactly what its size pass reported");
    return Bytes(out.get(), out.get() + n);
}

// Decodes the event and encodes the decoded record again.
void roundTrip(const EventCodec &codec, const Bytes &wire, bool faithful) {
    std::unique_ptr<uint8_t[]> copy(new uint8_t[wire.size()]);
    if (!wire.empty()) std::memcpy(copy.get(), wire.data(), wire.size());
    const auto n = static_cast<uint32_t>(wire.size());
    PacketCursor sizing{copy.get(), n};
    trov::RecordSize size{};
    if (codec.decCalc(&sizing, 0, &size) != TROV_RESULT_OK) {
        check(!faithful, "an encoded event does not size");
        return;
    }
    check(!faithful || sizing.remaining == 0, "the size pass did not take the whole event");
    const uint32_t room = size.extent > size.bytes ? size.extent : size.bytes;
    // Exactly the room reported (new[] aligns the block to 16).
    std::unique_ptr<uint8_t[]> record(new uint8_t[room]());
    PacketCursor reading{copy.get(), n};
    auto *end = static_cast<uint8_t *>(codec.decode(record.get(), &reading, 0));
    check(end >= record.get() && end <= record.get() + ((room + 7) & ~7u), "Decode ran past the room reported");
    check(reading.position == sizing.position, "Decode read other bytes than its size pass took");

    uint16_t again = 0;
    const TrovResult r = codec.encCalc(record.get(), &again);
    if (!faithful) return;
    check(r == TROV_RESULT_OK && again == n, "a decoded event does not size as it was encoded");
    check(encodeExactly(codec, record.get(), again) == wire, "decoding and encoding again changed the event");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    TROV_InitCoder();
    RecordBuilder builder(data, size);
    const EventCodec &codec = eventCodecs()[builder.input().u8() % eventCodecs().size()];
    const void *record = buildRecord(builder, codec);

    uint16_t n = 0;
    const TrovResult r = codec.encCalc(record, &n);
    if (builder.mustFail()) {
        check(r != TROV_RESULT_OK || builder.deep(), "a record that must be refused was sized");
    } else {
        check(r == TROV_RESULT_OK || r == TROV_RESULT_BAD_VALUE || r == TROV_RESULT_SHORT_INPUT,
              "a well-formed record was refused for another reason than its length");
    }
    if (r != TROV_RESULT_OK) return 0;
    roundTrip(codec, encodeExactly(codec, record, n), builder.faithful());
    return 0;
}
