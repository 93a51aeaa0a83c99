// The header-only C++ layer (TrovCodec.hpp) over the exported interface:
// owned decodes and encodes, typed access to bodies and events, decoding into
// the caller's memory, the stream splitter and the throwing set. Leaks and
// double frees of the owning handles are left to LeakSanitizer and
// AddressSanitizer, which the sanitizer build runs this suite under.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <vector>

#include "TrovCodec.hpp"
#include "api/ReplyPacket.h"

namespace {

// Body 0x4D, long framing: head (u32, u8, u16, u16, u8, count 2), then event
// 0x04 (a u8 7, the string "hi") and event 0x12C (one attribute, 0x00CB = 0x2A),
// each behind its 13-byte head.
const std::vector<uint8_t> kLongList = replyPacket(
    0x4D, {0, 0, 0, 1, 2, 0, 3, 0, 4, 5, 0, 2,                                  //
           0, 1, 0, 0, 0, 0x10, 0, 0, 0, 0x20, 0x30, 0x00, 0x04, 7, 2, 'h', 'i', //
           0, 2, 0, 0, 0, 0x11, 0, 0, 0, 0x21, 0x31, 0x01, 0x2C, 0, 1, 0, 0xCB, 0, 1, 0x2A});

// Body 0x0A, short framing: head (u32, count 2), then event 0x04 as above and
// event 0x02 (u32, u8, the string "ab"), each behind its code and a u8.
const std::vector<uint8_t> kShortList = replyPacket(
    0x0A, {0, 0, 0, 0x2A, 2,                          //
           0x00, 0x04, 9, 7, 2, 'h', 'i',             //
           0x00, 0x02, 10, 1, 2, 3, 4, 5, 2, 'a', 'b'});

class CppLayer : public ::testing::Test {
protected:
    void SetUp() override { trov::init(); }
};

// Both framings: the owned record, its events in order with the head each
// came with, and typed access that answers only for the matching code. (Every
// event's fields, decoded and encoded back: RecordWalkTest.)
TEST_F(CppLayer, DecodedEventListsYieldTypedEvents) {
    const struct {
        const std::vector<uint8_t> &packet;
        std::vector<uint16_t> codes;
        std::vector<unsigned> heads; // field4 (long) or field2 (short) of each event
    } cases[] = {{kLongList, {0x04, 0x12C}, {0x30, 0x31}}, {kShortList, {0x04, 0x02}, {9, 10}}};
    for (const auto &c : cases) {
        const trov::Decoded d = trov::decode(c.packet);
        ASSERT_EQ(d.result(), trov::Result::Ok);
        SCOPED_TRACE(d.code());
        EXPECT_EQ(d.unitType(), 1);
        EXPECT_EQ(d.as<trov::ReplyRecord<0x4D>::type>() != nullptr, d.code() == 0x4D);
        EXPECT_EQ(d.as<0x0A>() != nullptr, d.code() == 0x0A);
        EXPECT_EQ(d.as<U32Body>(), nullptr);

        std::vector<uint16_t> codes;
        std::vector<unsigned> heads;
        for (const trov::Event ev : d.events()) {
            codes.push_back(ev.code());
            heads.push_back(ev.entry() != nullptr ? ev.entry()->field4 : ev.briefEntry()->field2);
            EXPECT_NE(ev.entry() == nullptr, ev.briefEntry() == nullptr);
        }
        EXPECT_EQ(codes, c.codes);
        EXPECT_EQ(heads, c.heads);

        const trov::Events events = d.events();
        ASSERT_EQ(events.size(), 2u);
        const TrovEvent0004 *first = events[0].as<TrovEvent0004>();
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(first, events[0].as<0x04>());
        EXPECT_EQ(first->value0, 7);
        EXPECT_EQ(std::string(reinterpret_cast<const char *>(first->string1.data), first->string1.length), "hi");
        EXPECT_EQ(events[1].as<TrovEvent0004>(), nullptr);
        EXPECT_EQ(events[1].as<0x04>(), nullptr);
        EXPECT_EQ(events[0].as<TrovEvent012C>(), nullptr);
    }
}

// Every truncation of an event list fails, holding nothing: the library has
// released the record and the block it allocated before failing.
TEST_F(CppLayer, FailingDecodesHoldNothing) {
    EXPECT_EQ(trov::decode(trov::Bytes()).result(), trov::Result::NullArgument);
    for (size_t n = 1; n < kLongList.size(); ++n) {
        std::vector<uint8_t> cut(kLongList.begin(), kLongList.begin() + std::ptrdiff_t(n));
        if (n >= 10) cut[9] = uint8_t(n - 20); // the body length says what is there
        const trov::Decoded d = trov::decode(cut);
        SCOPED_TRACE(n);
        EXPECT_EQ(d.result(), n < 20 ? trov::Result::BadPacket : trov::Result::ShortInput);
        EXPECT_FALSE(d);
        EXPECT_EQ(d.record(), nullptr);
        EXPECT_TRUE(d.events().empty());
        if (n >= 20) {
            EXPECT_EQ(d.unitType(), 6);
        }
    }
}

// A typed request goes out and comes back as the reply record of the same
// body; the untyped encode refuses a record of another type before the
// library reads it.
TEST_F(CppLayer, EncodeRoundTripsAndRefusesTheWrongRecord) {
    uint32_t value = 0x01020304;
    AttributeBody request{};
    request.id = 0x08D5;
    request.value = &value;
    const trov::Encoded typed = trov::encode<0x12>(trov::makeHeader(0, 1), request);
    ASSERT_EQ(typed.result, trov::Result::Ok);
    EXPECT_EQ(typed.header.code, 0x12);
    EXPECT_EQ(typed.header.bodyLength, 6);
    ASSERT_EQ(typed.packet.size(), 26u);

    const trov::Encoded untyped = trov::encode(trov::makeHeader(0x12, 1), request);
    ASSERT_EQ(untyped.result, trov::Result::Ok);
    EXPECT_TRUE(std::equal(typed.packet.bytes().begin(), typed.packet.bytes().end(), untyped.packet.bytes().begin(),
                           untyped.packet.bytes().end()));

    const trov::Decoded back = trov::decode(typed.packet);
    ASSERT_EQ(back.result(), trov::Result::Ok);
    const AttributeBody *reply = back.as<0x12>();
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(reply->id, 0x08D5);
    EXPECT_EQ(*static_cast<const uint32_t *>(reply->value), value);

    const U32Body number{7};
    const struct { uint16_t code; trov::Result expected; } cases[] = {
        {0x12, trov::Result::WrongRecord}, // takes an AttributeBody
        {0x0A, trov::Result::WrongRecord}, // decoded only: no request record
        {0x0B, trov::Result::Ok},
        {0x1E, trov::Result::NoBodyCodec}, // no codec: the library answers
    };
    for (const auto &c : cases) {
        const trov::Encoded e = trov::encode(trov::makeHeader(c.code, 1), number);
        EXPECT_EQ(e.result, c.expected) << c.code;
        EXPECT_EQ(e.packet.empty(), c.expected != trov::Result::Ok);
    }
    EXPECT_STREQ(trov::name(trov::Result::WrongRecord), "WRONG_RECORD");
    EXPECT_STREQ(trov::name(trov::Result::BufferTooSmall), "BUFFER_TOO_SMALL");
    EXPECT_STREQ(trov::name(trov::Result::NoDataTypeCodec), "NO_DATA_TYPE_CODEC");
}

// Decoding into the caller's record and storage: the pointers land in the
// storage; too little storage, or none, is refused rather than allocated; a
// record of the wrong type is refused untouched.
TEST_F(CppLayer, DecodeIntoUsesOnlyTheCallersMemory) {
    alignas(8) uint8_t storage[256];
    const size_t sizes[] = {sizeof storage, 8, 0};
    for (size_t size : sizes) {
        SCOPED_TRACE(size);
        EventListBody list;
        const trov::DecodeReport report = trov::decodeInto(kLongList, list, size != 0 ? storage : nullptr, size);
        if (size != sizeof storage) {
            EXPECT_EQ(report.result, trov::Result::BufferTooSmall);
            EXPECT_EQ(list.buffer.data, size != 0 ? static_cast<void *>(storage) : nullptr);
            continue;
        }
        ASSERT_EQ(report.result, trov::Result::Ok);
        EXPECT_EQ(report.header.code, 0x4D);
        EXPECT_EQ(list.buffer.data, storage);
        std::vector<uint16_t> codes;
        for (const trov::Event ev : trov::events(list)) {
            const auto *at = static_cast<const uint8_t *>(ev.record());
            EXPECT_TRUE(at >= storage && at < storage + sizeof storage);
            codes.push_back(ev.code());
        }
        EXPECT_EQ(codes, (std::vector<uint16_t>{0x04, 0x12C}));
    }

    U32Body wrong{0xFEEDF00D};
    EXPECT_EQ(trov::decodeInto(kLongList, wrong).result, trov::Result::WrongRecord);
    EXPECT_EQ(wrong.value0, 0xFEEDF00Du);
}

// A stream cut at every byte: the first part frames the packets it holds in
// full and reports the rest as its tail, the rest frames the others, and
// together they give each packet once, whole.
TEST_F(CppLayer, SplitterFramesStreamsCutAnywhere) {
    const U32Body number{123456};
    const trov::Encoded first = trov::encode<0x0B>(trov::makeHeader(0, 1), number);
    ASSERT_TRUE(first);
    const std::vector<uint8_t> skipped = replyPacket(0x0A, {}, 4); // unit type 4 does not decode 0x0A
    std::vector<uint8_t> stream(first.packet.bytes().begin(), first.packet.bytes().end());
    for (const std::vector<uint8_t> *p : {&kLongList, &skipped, &kShortList})
        stream.insert(stream.end(), p->begin(), p->end());
    const std::vector<size_t> starts{0, 24, 24 + kLongList.size(), 44 + kLongList.size()};
    const std::vector<uint16_t> codes{0x0B, 0x4D, 0x0A, 0x0A};

    // The skipped packet alone, from each kind of byte holder: Ok, no record.
    uint8_t raw[20];
    std::array<uint8_t, 20> array;
    std::copy(skipped.begin(), skipped.end(), raw);
    std::copy(skipped.begin(), skipped.end(), array.begin());
    for (const trov::Bytes holder : {trov::Bytes(raw), trov::Bytes(array), trov::Bytes(std::span(skipped))}) {
        const trov::Decoded d = trov::decode(holder);
        EXPECT_EQ(d.result(), trov::Result::Ok);
        EXPECT_EQ(d.unitType(), 4);
        EXPECT_EQ(d.record(), nullptr);
        EXPECT_TRUE(d.events().empty());
    }

    for (size_t cut = 0; cut <= stream.size(); ++cut) {
        SCOPED_TRACE(cut);
        const trov::Bytes whole(stream);
        const trov::Frames head = trov::split(whole.sub(0, cut));
        const trov::Frames rest = trov::split(whole.sub(head.consumed()));
        EXPECT_EQ(head.tail().size(), cut - head.consumed());
        EXPECT_TRUE(rest.tail().empty());
        std::vector<size_t> seen;
        std::vector<uint16_t> decoded;
        for (const trov::Frames *part : {&head, &rest})
            for (const trov::Frame frame : *part) {
                seen.push_back(frame.offset + (part == &rest ? head.consumed() : 0));
                const trov::Decoded d = trov::decode(frame);
                EXPECT_EQ(d.result(), trov::Result::Ok);
                EXPECT_EQ(frame.bytes.size(), 20u + d.header().bodyLength);
                decoded.push_back(d.code());
            }
        EXPECT_EQ(seen, starts);
        EXPECT_EQ(decoded, codes);
    }
}

#if defined(TROV_CPP_EXCEPTIONS)
TEST_F(CppLayer, ThrowingSetThrowsTheResult) {
    const std::vector<uint8_t> cut(kShortList.begin(), kShortList.end() - 1);
    try {
        trov::throwing::decode(cut);
        ADD_FAILURE() << "no exception";
    } catch (const trov::Error &e) {
        EXPECT_EQ(e.result(), trov::Result::ShortInput);
        EXPECT_STREQ(e.what(), trov::meaning(e.result()));
    }
    const U32Body number{1};
    EXPECT_THROW(trov::throwing::encode(trov::makeHeader(0x12, 1), number), trov::Error);
    EXPECT_EQ(trov::throwing::encode<0x0B>(trov::makeHeader(0, 1), number).size(), 24u);
    const trov::Decoded d = trov::throwing::decode(kShortList);
    EXPECT_EQ(d.events().size(), 2u);
}
#endif

} // namespace
