// Every exported call that allocates, under allocation failure.
//
// Each call is run once unarmed to count its allocations; then each of them
// fails in turn, either alone or together with every later one. The call
// must return 6, hand nothing out (a library-allocated packet, record or
// buffer pointer stays null; a body decode's type becomes 6) and release
// whatever else it had allocated, which the sanitizer build's leak check
// sees. Failing one allocation beyond the count changes nothing.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "TrovCodec.h"
#include "TrovInspect.h"
#include "TrovRecords.h"
#include "TrovReplyEncode.h"
#include "engine/Memory.h"
#include "api/Initialised.h"
#include "api/ReplyPacket.h"
#include "engine/Cursor.h"

namespace trov {
namespace {

// What a call left for its caller.
struct Outcome {
    TrovResult result;
    bool handedOut; // a pointer the caller would own is set
    int type;       // a body decode's result type; -1 for other calls
};

// ---- encoding ------------------------------------------------------------------

// A request, or (reply) a reply, built from a record.
Outcome encodeFU(uint16_t code, const void *record, bool reply = false) {
    const uint8_t flag = reply ? 1 : 0;
    HeaderInfo info{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, flag, code, 0, 0, 0, 0, flag};
    EncodeOutput packet{nullptr, 0};
    const TrovResult r = reply ? TROV_EncodeReply(&info, record, &packet) : TROV_EncodeFU(&info, record, &packet);
    const bool handedOut = packet.data != nullptr;
    trovFree(packet.data);
    return {r, handedOut, -1};
}

uint8_t kText[] = {'a', 'b', 'c', 'd'};
uint32_t kNumbers32[] = {1, 2};

// Extended data into a buffer the library allocates.
Outcome encodeExtend(const EventExtendEntry &entry, const EventExtendSchema *schema) {
    const EventExtendList list{1, const_cast<EventExtendEntry *>(&entry)};
    OctetString data{0, nullptr};
    BufferDesc buffer{nullptr, 0, 0};
    const TrovResult r = TROV_EncodeEventExtend(&list, &data, 0x31, schema, TROV_PROTOCOL_VERSION, &buffer);
    const bool handedOut = buffer.data != nullptr || data.data != nullptr;
    trovFree(buffer.data);
    return {r, handedOut, -1};
}

// ---- decoding ------------------------------------------------------------------

// A reply of unit type 1 (every body is decoded) into a record the library
// allocates; bufferOffset locates the record's managed buffer (0: none).
Outcome decodeFU(uint16_t code, const std::vector<uint8_t> &body, size_t bufferOffset) {
    DecodeResult result{nullptr, nullptr, 0};
    const TrovResult r = decodeReply(code, body, result);
    const bool handedOut = result.record != nullptr || result.buffer != nullptr;
    if (result.record != nullptr && bufferOffset != 0)
        trovFree(loadField<BufferDesc>(result.record, bufferOffset).data);
    trovFree(result.record);
    return {r, handedOut, result.type};
}

// Into the caller's record: a failing buffer allocation leaves the record
// with the caller and its buffer empty.
Outcome stringReplyIntoCallersRecord() {
    U32PairStringBody record{};
    DecodeResult result{&record, nullptr, 0};
    const TrovResult r = decodeReply(0x3a, {0, 0, 0, 1, 0, 0, 0, 2, 3, 'a', 'b', 'c'}, result);
    const bool handedOut = result.record != &record || record.buffer.data != nullptr;
    trovFree(record.buffer.data);
    return {r, handedOut, result.type};
}

// TROV_InspectFU on a whole list, and on one whose second event has no
// codec: the list up to it is kept, which counts as the call's success.
Outcome inspect(const std::vector<uint8_t> &body) {
    std::vector<uint8_t> p = replyPacket(0x0a, body);
    const PacketCursor cursor{p.data(), static_cast<uint32_t>(p.size())};
    HeaderInfo info{};
    DecodeResult result{nullptr, nullptr, 0};
    TrovInspectReport report{};
    TrovResult r = TROV_InspectFU(&info, &result, &cursor, nullptr, &report);
    if (r == TROV_RESULT_NO_EVENT_CODEC && report.partial == 1) r = TROV_RESULT_OK;
    const bool handedOut = result.record != nullptr || result.buffer != nullptr;
    if (result.record != nullptr) trovFree(loadField<BufferDesc>(result.record, offsetof(ShortEventListBody, buffer)).data);
    trovFree(result.record);
    return {r, handedOut, r == TROV_RESULT_OK ? -1 : result.type};
}

Outcome decodeExtend() {
    // Two items: identifier 0x00CB (one byte), and 0x0001, which has no codec
    // and is kept raw.
    uint8_t bytes[] = {2, 0x00, 0xCB, 1, 0x5A, 0x00, 0x01, 2, 0xAA, 0xBB};
    const OctetString data{sizeof bytes, bytes};
    EventExtendList list{0, nullptr};
    BufferDesc buffer{nullptr, 0, 0};
    const TrovResult r = TROV_DecodeEventExtend(&list, &data, 0x31, nullptr, TROV_PROTOCOL_VERSION, &buffer);
    const bool handedOut = buffer.data != nullptr || list.entries != nullptr;
    trovFree(buffer.data);
    return {r, handedOut, -1};
}

Outcome hostAllocation() {
    void *p = trovMalloc(16);
    trovFree(p);
    return {p != nullptr ? TROV_RESULT_OK : TROV_RESULT_NO_MEMORY, false, -1};
}

// ---- the suite -------------------------------------------------------------------

struct Case {
    const char *name;
    Outcome (*call)();
};

uint8_t kByte = 1, kParams[8] = {1};
OctetString kOctets{3, kText};
AttributeArrayHeader kNumbers{2, kNumbers32}; // identifier 0x0090: u8 count, u32 values
TrovEvent0013 kEvent{7, {4, kText}};
EventBriefEntry kEntry{0x13, 1, &kEvent};

const Case kCases[] = {
    // Every body layout allocates its packet, and nothing else, in the same place.
    {"EncodeLayout", [] { const AttributeBody r{0x0090, &kNumbers, {}}; return encodeFU(0x12, &r); }},
    // Method 0x88: u8 length, octets; raw parameters from 0x2001.
    {"EncodeMethod", [] { const MethodBody r{1, 0x88, &kOctets, 0, {}}; return encodeFU(0x1d, &r); }},
    {"EncodeRawMethod", [] { const MethodBody r{1, 0x2001, kText, sizeof kText, {}}; return encodeFU(0x1d, &r); }},
    // Identifier 0x00CB: one byte; data type 0x08: a character string.
    {"EncodeExtend", [] { return encodeExtend({0, 0x00CB, &kByte}, nullptr); }},
    {"EncodeExtendSchema",
     [] {
         static const EventExtendItemSpec item{TROV_EXTEND_KIND_DATA_TYPE, 0x08};
         static const EventExtendSchemaRow row{0x31, 1, &item};
         static const EventExtendSchema schema{1, &row};
         return encodeExtend({TROV_EXTEND_KIND_DATA_TYPE, 0x08, &kOctets}, &schema);
     }},
    {"DecodeFixed", [] { return decodeFU(0x0b, {0, 0, 0, 1}, 0); }},
    {"DecodeAttribute",
     [] { return decodeFU(0x12, {0x00, 0x90, 2, 0, 0, 0, 1, 0, 0, 0, 2}, offsetof(AttributeBody, buffer)); }},
    {"DecodeStrings",
     [] { return decodeFU(0x3a, {0, 0, 0, 1, 0, 0, 0, 2, 3, 'a', 'b', 'c'}, offsetof(U32PairStringBody, buffer)); }},
    {"DecodeStringsIntoCallersRecord", stringReplyIntoCallersRecord},
    // Method 0x96: u8, u8 length, characters.
    {"DecodeMethod",
     [] { return decodeFU(0x1d, {0, 0, 0, 1, 0x00, 0x96, 5, 3, 'a', 'b', 'c'}, offsetof(MethodBody, buffer)); }},
    // One event 0x04 (u8, u8 length, octets) in each framing.
    {"DecodeLongEventList",
     [] {
         return decodeFU(0x4d, {0, 0, 0, 1, 2, 0, 3, 0, 4, 5, 0, 1, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 4, 0x00, 0x04, 9, 2, 'a', 'b'},
                         offsetof(EventListBody, buffer));
     }},
    {"DecodeShortEventList",
     [] { return decodeFU(0x0a, {0, 0, 0, 1, 1, 0x00, 0x04, 7, 9, 2, 'a', 'b'}, offsetof(ShortEventListBody, buffer)); }},
    {"InspectEventList", [] { return inspect({0, 0, 0, 1, 1, 0x00, 0x04, 7, 9, 2, 'a', 'b'}); }},
    {"InspectPartialEventList", [] { return inspect({0, 0, 0, 1, 2, 0x00, 0x04, 7, 9, 2, 'a', 'b', 0x00, 0x01, 7}); }},
    {"DecodeExtend", decodeExtend},
    {"Malloc", hostAllocation},
    // Replies built from records: an event list, and method 0x92's one-byte reply.
    {"EncodeEventListReply", [] { const ShortEventListBody r{9, 1, &kEntry, {}}; return encodeFU(0x0a, &r, true); }},
    {"EncodeMethodReply", [] { const MethodBody r{9, 0x92, kParams, 0, {}}; return encodeFU(0x1d, &r, true); }},
};

enum class Failing { OnlyTheNth, FromTheNth };

class AllocationFailure : public testing::TestWithParam<std::tuple<Case, Failing>> {
protected:
    void TearDown() override { failAllocationAt(0); }

    // Runs the call with allocation `nth` (and with FromTheNth every later
    // one) failing; returns its outcome and the allocations it attempted.
    std::pair<Outcome, uint32_t> runFailing(uint32_t nth) {
        if (std::get<1>(GetParam()) == Failing::OnlyTheNth) failAllocationAt(nth);
        else failAllocationsFrom(nth);
        const Outcome outcome = std::get<0>(GetParam()).call();
        const uint32_t made = allocationsSinceArmed();
        failAllocationAt(0);
        return {outcome, made};
    }
};

TEST_P(AllocationFailure, EachAllocationFailingGives6AndHandsNothingOut) {
    const auto [unarmed, made] = runFailing(0);
    ASSERT_EQ(unarmed.result, 0u);
    ASSERT_GT(made, 0u) << "the call allocates nothing";
    for (uint32_t nth = 1; nth <= made; ++nth) {
        SCOPED_TRACE(testing::Message() << "allocation " << nth << " of " << made << " fails");
        const Outcome failed = runFailing(nth).first;
        EXPECT_EQ(failed.result, TROV_RESULT_NO_MEMORY);
        EXPECT_FALSE(failed.handedOut);
        if (failed.type >= 0) {
            EXPECT_EQ(failed.type, 6);
        }
    }
    const auto [beyond, attempted] = runFailing(made + 1);
    EXPECT_EQ(beyond.result, 0u);
    EXPECT_EQ(attempted, made);
}

INSTANTIATE_TEST_SUITE_P(
    EveryAllocatingCall, AllocationFailure,
    testing::Combine(testing::ValuesIn(kCases), testing::Values(Failing::OnlyTheNth, Failing::FromTheNth)),
    [](const auto &info) {
        return std::string(std::get<0>(info.param).name) +
               (std::get<1>(info.param) == Failing::OnlyTheNth ? "_Only" : "_Onwards");
    });

// A caller's growable buffer that is too small is grown in place; when that
// fails the call gives 6 and the descriptor's pointer is overwritten with
// null (the caller still holds the block and frees it).
TEST(AllocationFailureGrowing, AFailedGrowGives6AndLeavesTheDescriptorEmpty) {
    void *mine = trovMalloc(1);
    U32PairStringBody record{};
    record.buffer = BufferDesc{mine, 1, TROV_BUFFER_GROWABLE};
    DecodeResult result{&record, nullptr, 0};
    failAllocationAt(1);
    const TrovResult r = decodeReply(0x3a, {0, 0, 0, 1, 0, 0, 0, 2, 3, 'a', 'b', 'c'}, result);
    const uint32_t made = allocationsSinceArmed();
    failAllocationAt(0);
    EXPECT_EQ(r, TROV_RESULT_NO_MEMORY);
    EXPECT_EQ(made, 1u);
    EXPECT_EQ(result.type, 6);
    EXPECT_EQ(result.record, &record);
    EXPECT_EQ(record.buffer.data, nullptr);
    EXPECT_EQ(record.buffer.flags, TROV_BUFFER_GROWABLE);
    trovFree(mine);
}

} // namespace
} // namespace trov
