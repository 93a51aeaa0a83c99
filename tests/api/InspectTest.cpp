// TROV_InspectFU: the item each failing packet is located at, the events a
// failing list keeps, the body bytes a decoded body reads, and agreement with
// TROV_DecodeFU over every truncation of an event list.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "TrovCodec.h"
#include "TrovInspect.h"
#include "TrovRecords.h"
#include "api/Initialised.h"
#include "api/ReplyPacket.h"

namespace {

using Bytes = std::vector<uint8_t>;

// Event 0x04: a u8 and a u8-counted string.
ListedEvent event04(uint8_t value, const std::string &text) {
    Bytes b{value, uint8_t(text.size())};
    b.insert(b.end(), text.begin(), text.end());
    return {0x04, b};
}

const uint16_t kLongList = 0x4d, kShortList = 0x0a;

// The two list records, by their public declarations.
const EventListBody &longList(const void *record) { return *static_cast<const EventListBody *>(record); }
const ShortEventListBody &shortList(const void *record) { return *static_cast<const ShortEventListBody *>(record); }

// A list record as comparable bytes: its head, then its block with every
// pointer into the block taken relative to the block's start.
Bytes listImage(uint16_t code, const void *record) {
    const auto *r = static_cast<const uint8_t *>(record);
    Bytes image(r, r + (code == kLongList ? offsetof(EventListBody, entries) : offsetof(ShortEventListBody, entries)));
    const BufferDesc buffer = code == kLongList ? longList(record).buffer : shortList(record).buffer;
    const auto base = reinterpret_cast<uintptr_t>(buffer.data);
    const auto *block = static_cast<const uint8_t *>(buffer.data);
    for (size_t at = 0; block != nullptr && at + 8 <= buffer.capacity; at += 8) {
        uint64_t word;
        std::memcpy(&word, block + at, 8);
        if (word >= base && word <= base + buffer.capacity) word -= base;
        image.insert(image.end(), reinterpret_cast<uint8_t *>(&word), reinterpret_cast<uint8_t *>(&word) + 8);
    }
    return image;
}

// ---- located failures ----------------------------------------------------------------

struct Located {
    const char *name;
    Bytes packet;
    TrovResult result;
    uint8_t item;
    uint32_t offset, index;
    uint16_t code;
    uint32_t kept;     // events kept (partial when the item is an event)
    uint32_t bodyRead; // of a decoded body
};

std::vector<Located> locatedCases() {
    const Bytes unknownSecond = eventListBody(kLongList, {event04(9, "ab"), {0x0001, {}}});
    Bytes cutHead = eventListBody(kShortList, {event04(9, "ab")}, 2);
    cutHead.insert(cutHead.end(), {0x00, 0x04});
    Bytes badVersion = replyPacket(0x0b, {0, 0, 0, 1});
    badVersion[2] = 0x77;
    return {
        // Events: index, code and the head's offset; the events before are kept.
        {"SecondEventUnknown", replyPacket(kLongList, unknownSecond), 12, TROV_ITEM_EVENT, 20 + 12 + 13 + 4, 1, 1, 1, 0},
        {"HeadOfSecondEventCutShort", replyPacket(kShortList, cutHead), 5, TROV_ITEM_EVENT, 20 + 5 + 3 + 4, 1, 0, 1, 0},
        {"FirstEventBodyCutShort", replyPacket(kShortList, {0, 0, 0, 1, 1, 0x00, 0x04, 7, 9, 5, 'a'}), 5,
         TROV_ITEM_EVENT, 25, 0, 4, 0, 0},
        {"ListHeadCutShort", replyPacket(kLongList, {0, 0, 0, 1, 2, 0}), 5, TROV_ITEM_BODY, 20, 0, 0, 0, 0},
        // Attributes: the identifier, also behind fixed fields.
        {"UnknownAttribute", replyPacket(0x12, {0x00, 0x01, 0}), 10, TROV_ITEM_ATTRIBUTE, 20, 0, 1, 0, 0},
        {"AttributeValueCutShort", replyPacket(0x12, {0x00, 0x90, 2, 0, 0, 0, 1}), 5, TROV_ITEM_ATTRIBUTE, 20, 0,
         0x90, 0, 0},
        {"AttributeBehindAU32", replyPacket(0x03, {0, 0, 0, 7, 0x00, 0x01, 0}), 10, TROV_ITEM_ATTRIBUTE, 24, 1, 1, 0, 0},
        // Methods: the code's offset when it has no codec, else the parameters'.
        {"UnknownMethod", replyPacket(0x1d, {0, 0, 0, 1, 0x00, 0x01}), 11, TROV_ITEM_METHOD, 24, 0, 1, 0, 0},
        {"MethodParamsCutShort", replyPacket(0x1d, {0, 0, 0, 1, 0x00, 0x96, 5, 3, 'a'}), 5, TROV_ITEM_METHOD, 26, 0,
         0x96, 0, 0},
        {"FixedFieldCutShort", replyPacket(0x13, {1, 0, 0}), 5, TROV_ITEM_FIELD, 21, 1, 0, 0, 0},
        {"UnknownVersion", badVersion, 8, TROV_ITEM_HEADER, 0, 0, 0, 0, 0},
        {"NoBodyCodec", replyPacket(0x86, {1}), 9, TROV_ITEM_BODY, 20, 0, 0, 0, 0},
        // Decoded and skipped bodies: how much of the body was read.
        {"UnreadBytesBehindTheFields", replyPacket(0x13, {1, 0, 0, 0, 2, 0xEE, 0xEE, 0xEE}), 0, TROV_ITEM_NONE, 0, 0, 0,
         0, 5},
        {"NoReplyReadsNothing", replyPacket(0x1a, {1, 2, 3}), 0, TROV_ITEM_NONE, 0, 0, 0, 0, 0},
        {"MethodReadsItsParameters", replyPacket(0x1d, {0, 0, 0, 1, 0x00, 0x96, 5, 1, 'a', 0xEE}), 0, TROV_ITEM_NONE, 0,
         0, 0, 0, 9},
        {"WholeListIsRead", replyPacket(kLongList, eventListBody(kLongList, {event04(1, "x"), event04(2, "")})), 0,
         TROV_ITEM_NONE, 0, 0, 0, 0, 12 + 13 + 3 + 13 + 2},
        {"SkippedBody", replyPacket(kShortList, {1, 2, 3, 4, 5}, 4), 0, TROV_ITEM_NONE, 0, 0, 0, 0, 0},
    };
}

class Locates : public testing::TestWithParam<Located> {};

TEST_P(Locates, TheItemWhereDecodingStops) {
    const Located &c = GetParam();
    const Decoded plain(c.packet), inspected(c.packet, true);
    EXPECT_EQ(inspected.result, c.result);
    EXPECT_EQ(plain.result, c.result);
    const TrovInspectReport &r = inspected.report;
    EXPECT_EQ(r.item, c.item);
    EXPECT_EQ(r.offset, c.offset);
    EXPECT_EQ(r.index, c.index);
    EXPECT_EQ(r.code, c.code);
    EXPECT_EQ(r.bodyRead, c.bodyRead);
    const bool partial = c.item == TROV_ITEM_EVENT;
    EXPECT_EQ(r.partial, partial ? 1 : 0);
    EXPECT_EQ(r.kept, c.kept);
    EXPECT_EQ(inspected.out.type, plain.out.type);
    EXPECT_EQ(inspected.out.record != nullptr, c.result == 0 ? plain.out.record != nullptr : partial);
    if (partial) {
        const void *list = inspected.out.record;
        EXPECT_EQ(inspected.info.code == kLongList ? longList(list).count : shortList(list).count, c.kept);
    }
}

INSTANTIATE_TEST_SUITE_P(Packets, Locates, testing::ValuesIn(locatedCases()),
                         [](const testing::TestParamInfo<Located> &info) { return std::string(info.param.name); });

TEST(Inspect, NullReportDecodesNothing) {
    Bytes p = replyPacket(0x0b, {0, 0, 0, 1});
    const PacketCursor cursor{p.data(), uint32_t(p.size())};
    HeaderInfo info{};
    DecodeResult out{nullptr, nullptr, 0};
    EXPECT_EQ(TROV_InspectFU(&info, &out, &cursor, nullptr, nullptr), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(out.record, nullptr);
}

// ---- every truncation of an event list ---------------------------------------------

class Truncation : public testing::TestWithParam<uint16_t> {};

// The body is cut after every byte, framed both by a header that says the cut
// length and by one that claims the whole body. Both decoders give the same
// result; a decoded list is the same record; a failed one keeps exactly the
// events that lie whole in the cut, which decode to the record TROV_DecodeFU
// makes of a list of just them.
TEST_P(Truncation, AgreesWithDecodeFUAtEveryByte) {
    const uint16_t code = GetParam();
    const std::vector<ListedEvent> events = {event04(1, "abc"), {0x0002, {0, 0, 0, 5, 1, 2, 'x', 'y'}}, event04(3, ""),
                                       {0x012C, {0, 0}}, event04(4, std::string(20, 'z'))};
    std::vector<uint32_t> starts;
    const Bytes whole = eventListBody(code, events, -1, &starts);
    const uint32_t head = starts[0];
    for (uint32_t cut = 0; cut <= whole.size(); ++cut) {
        for (const bool claimsAll : {false, true}) {
            SCOPED_TRACE(testing::Message() << "cut " << cut << (claimsAll ? ", header claims all" : ""));
            const Bytes body(whole.begin(), whole.begin() + cut);
            const Bytes packet = replyPacket(code, body, 1, claimsAll ? int(whole.size()) : -1);
            const Decoded plain(packet), inspected(packet, true);
            ASSERT_EQ(inspected.result, plain.result);
            const TrovInspectReport &r = inspected.report;
            EXPECT_EQ(r.bodyLength, cut);
            if (plain.result == 0) {
                EXPECT_EQ(cut, whole.size());
                EXPECT_EQ(r.bodyRead, cut);
                EXPECT_EQ(listImage(code, inspected.out.record), listImage(code, plain.out.record));
                continue;
            }
            if (cut < head) {
                EXPECT_EQ(r.item, TROV_ITEM_BODY);
                EXPECT_EQ(inspected.out.record, nullptr);
                continue;
            }
            uint32_t kept = 0;
            while (starts[kept + 1] <= cut) ++kept;
            ASSERT_EQ(r.partial, 1);
            EXPECT_EQ(r.item, TROV_ITEM_EVENT);
            EXPECT_EQ(r.index, kept);
            EXPECT_EQ(r.kept, kept);
            EXPECT_EQ(r.offset, 20 + starts[kept]);
            EXPECT_EQ(r.code, cut - starts[kept] >= (code == kLongList ? 13u : 3u) ? events[kept].code : 0);
            const std::vector<ListedEvent> first(events.begin(), events.begin() + kept);
            const Decoded alone(replyPacket(code, eventListBody(code, first)));
            ASSERT_EQ(alone.result, 0u);
            EXPECT_EQ(listImage(code, inspected.out.record), listImage(code, alone.out.record));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(BothFramings, Truncation, testing::Values(kLongList, kShortList),
                         [](const testing::TestParamInfo<uint16_t> &info) {
                             return info.param == kLongList ? std::string("Long") : std::string("Short");
                         });

} // namespace
