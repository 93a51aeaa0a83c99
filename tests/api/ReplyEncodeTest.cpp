// TROV_EncodeReply against the decoder, at the exported interface. Every
// reply layout TROV_DescribeBody gives (each method's reply parameters
// inside body 0x1d), and every event code TROV_DescribeEvent gives inside
// both event lists, is written as wire bytes from its description (never by
// the encoder under test): the packet must decode, and its record encode
// back to the same packet, into an allocated packet and into a caller's
// buffer of exactly its length; a buffer one byte short is refused
// untouched. Then the results of the errors, and the reads that cannot come
// back as they were.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "TrovCodec.h"
#include "TrovLayout.h"
#include "TrovReplyEncode.h"
#include "TrovVersion.h"
#include "api/PlainCode.h"
#include "api/ReplyPacket.h"

namespace {

using Bytes = std::vector<uint8_t>;
constexpr uint8_t kVersion = TROV_PROTOCOL_VERSION;

// An identifier without a codec at version 0: an event attribute list keeps
// its value as raw bytes.
uint16_t rawAttribute() {
    TrovLayoutInfo l{};
    for (unsigned id = 1; id < 0x10000; ++id)
        if (TROV_DescribeAttribute(uint16_t(id), 0, &l) == TROV_RESULT_NO_ATTRIBUTE_CODEC) return uint16_t(id);
    return 0;
}

// Wire bytes of a described record: every scalar a value with its high bit
// set, every count 2, every value of an attribute or data type two elements.
struct Wire {
    Bytes out;
    unsigned serial = 0;

    void put(uint32_t v, unsigned bytes) {
        for (unsigned i = bytes; i-- > 0;) out.push_back(uint8_t(v >> (8 * i)));
    }
    void scalar(unsigned bytes) {
        ++serial;
        put(bytes == 1 ? 0x80 | (serial & 0x7F) : bytes == 2 ? 0xA000 + serial : 0xC0000000u + serial, bytes);
    }
    void bytes(unsigned n, bool printable = false) {
        for (unsigned i = 0; i < n; ++i) out.push_back(uint8_t(printable ? 'a' + (serial + i) % 26 : 0xA5 ^ (serial + i)));
        ++serial;
    }

    // An attribute's or data type's value: two elements in array form, one
    // for a type with the scalar form only.
    void value(const TrovLayoutInfo &element) {
        if (element.arrayCountBytes != 0) {
            put(2, element.arrayCountBytes);
            record(element);
        }
        record(element);
    }
    // One attribute list entry (id, length, value) coded at `version`.
    void entry(uint16_t id, uint8_t version) {
        put(id, 2);
        const size_t length = out.size();
        put(0, 2);
        TrovLayoutInfo element{};
        if (TROV_DescribeAttribute(id, version, &element) == 0) value(element);
        else bytes(3);
        const size_t n = out.size() - length - 2;
        out[length] = uint8_t(n >> 8);
        out[length + 1] = uint8_t(n);
    }

    void record(const TrovLayoutInfo &l) {
        for (uint16_t i = 0; i < l.fieldCount; ++i) field(l.fields[i]);
    }

    void field(const TrovFieldInfo &f) {
        TrovLayoutInfo nested{};
        const unsigned prefix = f.countField >= 0 ? 0 : f.countBytes; // a count field wrote the count
        switch (f.kindId) {
        case TROV_KIND_U8: scalar(1); break;
        case TROV_KIND_U16: scalar(2); break;
        case TROV_KIND_U32: scalar(4); break;
        case TROV_KIND_BYTES: bytes(f.width); break;
        case TROV_KIND_BYTES12: bytes(12); break;
        case TROV_KIND_COUNT: put(2, f.countBytes); break;
        case TROV_KIND_OCTETS: put(2, prefix), bytes(2); break;
        case TROV_KIND_CHARS: put(2, prefix), bytes(2, true); break;
        case TROV_KIND_U16S: put(2, prefix), scalar(2), scalar(2); break;
        case TROV_KIND_U32S:
        case TROV_KIND_WIDE_U32S: put(2, prefix), scalar(4), scalar(4); break;
        case TROV_KIND_U8U32_ITEMS: put(2, prefix), scalar(1), scalar(4), scalar(1), scalar(4); break;
        case TROV_KIND_U32U8_ITEMS: put(2, prefix), scalar(4), scalar(1), scalar(4), scalar(1); break;
        case TROV_KIND_BYTE_PAIRS: put(2, prefix), bytes(4); break;
        case TROV_KIND_REST: bytes(3); break;
        case TROV_KIND_ATTRIBUTE: {
            const uint16_t id = plainAttribute(kVersion);
            put(id, 2);
            EXPECT_EQ(TROV_DescribeAttribute(id, kVersion, &nested), 0u);
            value(nested);
            break;
        }
        case TROV_KIND_VALUE:
        case TROV_KIND_RESERVED_VALUE: {
            // Type 0x14: two u16 elements, within the room of a reserved value.
            const uint16_t type = f.kindId == TROV_KIND_VALUE ? 0x15 : 0x14;
            put(type, 2);
            EXPECT_EQ(TROV_DescribeDataType(type, kVersion, &nested), 0u);
            value(nested);
            break;
        }
        case TROV_KIND_OPTION: put(1, 1), put(4, 1), scalar(4); break;
        case TROV_KIND_EVENT_ATTRIBUTES:
            put(2, 2);
            entry(plainAttribute(0), 0);
            entry(rawAttribute(), 0);
            break;
        case TROV_KIND_RECORD:
            ASSERT_EQ(TROV_DescribeNested(&f, &nested), 0u);
            record(nested);
            break;
        case TROV_KIND_RECORDS:
            ASSERT_EQ(TROV_DescribeNested(&f, &nested), 0u);
            record(nested);
            record(nested);
            break;
        case TROV_KIND_OPTIONS: put(1, 1), put(1, 1), put(4, 1), scalar(4); break;
        case TROV_KIND_ENTRY: entry(plainAttribute(0), 0); break;
        case TROV_KIND_RESERVED:
        case TROV_KIND_BUFFER: break;
        default: ADD_FAILURE() << "a reply field of kind " << f.kind << " the test cannot write"; break;
        }
    }
};

// An event list (0x4d or 0x0a) of one event of `code`.
Bytes eventList(uint16_t listCode, uint16_t code) {
    TrovLayoutInfo event{};
    EXPECT_EQ(TROV_DescribeEvent(code, kVersion, &event), 0u);
    Wire w;
    w.record(event);
    return eventListBody(listCode, {{code, w.out}});
}

struct Case {
    std::string name;
    uint16_t code;
    Bytes body;
};

std::string hex4(unsigned v) {
    char s[8];
    std::snprintf(s, sizeof s, "%04x", v);
    return s;
}

std::vector<Case> allCases() {
    TROV_InitCoder();
    std::vector<Case> cases;
    for (unsigned code = 0; code < 0x10000; ++code) {
        TrovLayoutInfo l{};
        if (TROV_DescribeBody(uint16_t(code), kVersion, 0, &l) != 0) continue;
        const std::string name = "body" + hex4(code);
        Wire w;
        switch (l.form) {
        case TROV_LAYOUT_FIELDS: w.record(l); break;
        case TROV_LAYOUT_NONE: break;
        case TROV_LAYOUT_EVENT_LIST: continue; // below, with every event
        case TROV_LAYOUT_METHOD_CALL:
            for (unsigned m = 0; m <= 0x2000; ++m) {
                TrovLayoutInfo params{};
                if (TROV_DescribeMethod(uint16_t(m), kVersion, 0, &params) != 0) continue;
                Wire p;
                p.put(0xC0FFEE01, 4), p.put(m, 2);
                if (params.form == TROV_LAYOUT_RAW) p.bytes(5);
                else p.record(params);
                cases.push_back({name + "_method" + hex4(m), uint16_t(code), p.out});
            }
            continue;
        default: ADD_FAILURE() << name << ": form " << int(l.form); continue;
        }
        cases.push_back({name, uint16_t(code), w.out});
    }
    for (unsigned code = 0; code < 0x10000; ++code) {
        TrovLayoutInfo l{};
        if (TROV_DescribeEvent(uint16_t(code), kVersion, &l) != 0) continue;
        cases.push_back({"event" + hex4(code) + "_long", 0x4d, eventList(0x4d, uint16_t(code))});
        cases.push_back({"event" + hex4(code) + "_short", 0x0a, eventList(0x0a, uint16_t(code))});
    }
    return cases;
}

Bytes encodeReply(HeaderInfo info, const void *record, TrovResult expected = 0) {
    EncodeOutput out{nullptr, 0};
    const TrovResult r = TROV_EncodeReply(&info, record, &out);
    EXPECT_EQ(r, expected) << TROV_ResultName(r);
    Bytes bytes(out.data, out.data + (r == 0 ? out.length : 0));
    trovFree(out.data);
    return bytes;
}

class ReplyRoundTrip : public testing::TestWithParam<Case> {
protected:
    static void SetUpTestSuite() { TROV_InitCoder(); }
};

TEST_P(ReplyRoundTrip, DecodedRecordEncodesToTheSamePacket) {
    const Case &c = GetParam();
    Bytes packet = replyPacket(c.code, c.body);
    Decoded d(packet);
    ASSERT_EQ(d.result, 0u) << TROV_ResultName(d.result);
    // A body without a reply leaves no record; any record stands for it.
    const void *record = d.out.record != nullptr ? d.out.record : &d.info;
    EXPECT_EQ(encodeReply(d.info, record), packet);

    // The caller's buffer: exactly the packet's length, then one byte short
    // (refused with nothing written; bodyLength is set all the same).
    const uint8_t canary = 0xCD;
    Bytes exact(packet.size() + 1, canary);
    EncodeOutput out{exact.data(), uint32_t(packet.size())};
    HeaderInfo info = d.info;
    info.bodyLength = 0;
    ASSERT_EQ(TROV_EncodeReply(&info, record, &out), 0u);
    EXPECT_EQ(out.length, packet.size());
    EXPECT_EQ(Bytes(exact.begin(), exact.end() - 1), packet);
    EXPECT_EQ(exact.back(), canary);
    Bytes shorter(packet.size(), canary);
    out = {shorter.data(), uint32_t(packet.size() - 1)};
    info.bodyLength = 0;
    EXPECT_EQ(TROV_EncodeReply(&info, record, &out), TROV_RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(info.bodyLength, packet.size() - TROV_HEADER_LENGTH);
    EXPECT_EQ(shorter, Bytes(packet.size(), canary));
}

INSTANTIATE_TEST_SUITE_P(EveryReplyAndEvent, ReplyRoundTrip, testing::ValuesIn(allCases()),
                         [](const testing::TestParamInfo<Case> &info) { return info.param.name; });

// ---------------------------------------------------------------- results

TEST(ReplyEncode, Results) {
    TROV_InitCoder();
    U32Body u32{7};
    HeaderInfo info{TROV_PROTOCOL_MARK, kVersion, 1, 0x0b, 0, 0, 0, 0, 1};
    EncodeOutput out{nullptr, 0};
    EXPECT_EQ(TROV_EncodeReply(nullptr, &u32, &out), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_EncodeReply(&info, nullptr, &out), TROV_RESULT_NULL_ARGUMENT);
    EXPECT_EQ(TROV_EncodeReply(&info, &u32, nullptr), TROV_RESULT_NULL_ARGUMENT);
    HeaderInfo wrongVersion = info;
    wrongVersion.version = 0x11;
    EXPECT_EQ(TROV_EncodeReply(&wrongVersion, &u32, &out), TROV_RESULT_NO_HEADER_CODEC);
    HeaderInfo noBody = info;
    noBody.code = 0x1e; // no row
    EXPECT_EQ(TROV_EncodeReply(&noBody, &u32, &out), TROV_RESULT_NO_BODY_CODEC);
    EXPECT_EQ(out.data, nullptr);

    // Body 0x0a, which no request encodes, is a reply: u32 and a u8 count.
    HeaderInfo shortList = info;
    shortList.code = 0x0a;
    const ShortEventListBody empty{0x01020304, 0, nullptr, {nullptr, 0, 0}};
    EXPECT_EQ(encodeReply(shortList, &empty), replyPacket(0x0a, {1, 2, 3, 4, 0}));

    // Entries missing behind a count, an event record missing, an unknown event code.
    EventBriefEntry unknown{0x01, 0, &u32};
    const ShortEventListBody missingEntries{0, 1, nullptr, {nullptr, 0, 0}};
    encodeReply(shortList, &missingEntries, TROV_RESULT_NULL_ARGUMENT);
    EventBriefEntry noRecord{0x13, 0, nullptr};
    const ShortEventListBody missingRecord{0, 1, &noRecord, {nullptr, 0, 0}};
    encodeReply(shortList, &missingRecord, TROV_RESULT_NULL_ARGUMENT);
    const ShortEventListBody unknownCode{0, 1, &unknown, {nullptr, 0, 0}};
    encodeReply(shortList, &unknownCode, TROV_RESULT_NO_EVENT_CODEC);

    // A method without a codec, and raw parameters of a method from 0x2000.
    HeaderInfo method = info;
    method.code = 0x1d;
    uint8_t raw[] = {9, 8, 7};
    const MethodBody unknownMethod{1, 0x0001, nullptr, 0, {nullptr, 0, 0}};
    encodeReply(method, &unknownMethod, TROV_RESULT_NO_METHOD_CODEC);
    const MethodBody rawMethod{1, 0x2000, raw, 3, {nullptr, 0, 0}};
    EXPECT_EQ(encodeReply(method, &rawMethod), replyPacket(0x1d, {0, 0, 0, 1, 0x20, 0x00, 9, 8, 7}));

    // A body the header cannot frame: 5, bodyLength holds the figure modulo 65536.
    static uint8_t big[0x10000];
    HeaderInfo block = info;
    block.code = 0x6d; // ByteBlockBody: u8, then the rest of the body
    const ByteBlockBody tooLong{1, {0xFFFF, big}, {nullptr, 0, 0}};
    encodeReply(block, &tooLong, TROV_RESULT_SHORT_INPUT);
}

// A body without a reply is a header-only packet, whatever the record.
TEST(ReplyEncode, NoReplyIsTheHeaderAlone) {
    TROV_InitCoder();
    const uint8_t anything = 0;
    HeaderInfo info{TROV_PROTOCOL_MARK, kVersion, 1, 0x1c, 0x1234, 99, 5, 6, 1};
    const Bytes packet = encodeReply(info, &anything);
    ASSERT_EQ(packet.size(), TROV_HEADER_LENGTH);
    EXPECT_EQ(packet[9], 0); // bodyLength
    EXPECT_EQ(packet[7], 0x34);
}

// A record built from its description leaves the head of events 0xC4 and
// 0xC5 null: the structure behind it is written, as if the head pointed there.
TEST(ReplyEncode, StructureEventWithoutHead) {
    TROV_InitCoder();
    Bytes packet = eventList(0x0a, 0xC4);
    packet = replyPacket(0x0a, packet);
    Decoded d(packet);
    ASSERT_EQ(d.result, 0u);
    auto *list = static_cast<ShortEventListBody *>(d.out.record);
    void **head = static_cast<void **>(list->entries[0].body);
    ASSERT_EQ(static_cast<uint8_t *>(*head), reinterpret_cast<uint8_t *>(head) + 16);
    *head = nullptr;
    EXPECT_EQ(encodeReply(d.info, d.out.record), packet);
}

// ---------------------------------------------------------------- what cannot come back

// Event 0x78 keeps a typed value only where its data type reserves room
// (types 16, 17, 19, 20); any other type is read over and its pointer left
// null, so the record has nothing to write back: 1.
TEST(ReplyEncode, ReservedValueReadOverIsRefused) {
    TROV_InitCoder();
    // u32, u16, data type 0x15 (no room) with one u16 element (a u16 count), a u8 string.
    Bytes packet = replyPacket(0x0a, {0, 0, 0, 1, 1, 0x00, 0x78, 0, 1, 2, 3, 4, 0xA0, 0x01, 0x00, 0x15, 0, 1, 0x12, 0x34, 0});
    Decoded d(packet);
    ASSERT_EQ(d.result, 0u) << TROV_ResultName(d.result);
    encodeReply(d.info, d.out.record, TROV_RESULT_NULL_ARGUMENT);
}

struct Quirk {
    const char *what;
    uint16_t code;
    Bytes body;
    Bytes again; // the body the decoded record encodes to
};

std::vector<Quirk> quirks() {
    TROV_InitCoder();
    // Event 0x30 in a short list: 87 bytes of fields and a u16-counted
    // string, tested against 71; a body 16 bytes short reads the rest as 0.
    Bytes short30 = {0, 0, 0, 1, 1, 0x00, 0x30, 0x07};
    Bytes cut(71, 0x11);
    short30.insert(short30.end(), cut.begin(), cut.end());
    Bytes full30 = short30;
    full30.insert(full30.end(), 16, 0);
    // Event 0xB1 (u32, then an attribute list): an attribute with a codec
    // whose length field says 9 bytes is read by its codec; the encoder
    // writes the length of what it writes.
    Wire value;
    TrovLayoutInfo element{};
    const uint16_t id = plainAttribute(0);
    TROV_DescribeAttribute(id, 0, &element);
    value.value(element);
    const auto n = uint16_t(value.out.size());
    EXPECT_NE(n, 9); // the length field below claims 9
    Bytes b1 = {0, 0, 0, 7, 1, 0x00, 0xB1, 0, 0, 0, 0, 5, 0, 1, uint8_t(id >> 8), uint8_t(id), 0, 9};
    b1.insert(b1.end(), value.out.begin(), value.out.end());
    Bytes b1Again = b1;
    b1Again[16] = uint8_t(n >> 8);
    b1Again[17] = uint8_t(n);
    return {
        {"event0x30_short", 0x0a, short30, full30},
        {"event_attribute_length", 0x0a, b1, b1Again},
        // Bytes behind the layout are not read, so they are not written.
        {"trailing_bytes", 0x0b, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4}},
        {"no_reply_body", 0x55, {1, 2, 3}, {}},
    };
}

class ReplyQuirks : public testing::TestWithParam<Quirk> {};

TEST_P(ReplyQuirks, EncodeWhatWasRead) {
    const Quirk &q = GetParam();
    Bytes packet = replyPacket(q.code, q.body);
    Decoded d(packet);
    ASSERT_EQ(d.result, 0u) << TROV_ResultName(d.result);
    EXPECT_EQ(encodeReply(d.info, d.out.record ? d.out.record : &d.info), replyPacket(q.code, q.again));
}

INSTANTIATE_TEST_SUITE_P(Table, ReplyQuirks, testing::ValuesIn(quirks()),
                         [](const testing::TestParamInfo<Quirk> &info) { return std::string(info.param.what); });

} // namespace
