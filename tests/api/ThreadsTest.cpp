// The library from eight threads at once after one TROV_InitCoder: every
// family of operations that looks up the codec tables (bodies, attribute
// values, event lists, methods, replies built from records, extended data,
// size queries) runs concurrently, and every result and byte must equal what
// the same operation gave on one thread beforehand. Under ThreadSanitizer this also shows that
// the calls share no unsynchronised state. (Header fields need nothing
// TROV_InitCoder builds, InitCoderPreInitTest, and option parameters read
// no table: HeaderTest and OptionParamTest test them.)
#include <gtest/gtest.h>

#include <atomic>
#include <iterator>
#include <thread>
#include <vector>

#include "TrovCodec.h"
#include "TrovReplyEncode.h"
#include "api/Initialised.h"
#include "api/ReplyPacket.h"

namespace {

using Bytes = std::vector<uint8_t>;

// What an operation produced: its results and the bytes of its output.
struct Digest {
    Bytes bytes;
    bool ok = true; // every result was the expected one
    void add(const void *p, size_t n) {
        if (p != nullptr) bytes.insert(bytes.end(), static_cast<const uint8_t *>(p), static_cast<const uint8_t *>(p) + n);
    }
    template <class T> void value(T v) { add(&v, sizeof v); }
    void result(TrovResult r, TrovResult expected = TROV_RESULT_OK) {
        value(r);
        ok = ok && r == expected;
    }
};

// A reply decoded into an allocated record and encoded back from it: the
// packet stands for every field the record holds, without the pointers.
void roundTrip(Digest &d, uint16_t code, const Bytes &body) {
    const Decoded decoded(replyPacket(code, body));
    d.result(decoded.result);
    d.value(decoded.out.type);
    HeaderInfo info = decoded.info;
    EncodeOutput again{nullptr, 0};
    d.result(TROV_EncodeReply(&info, decoded.out.record, &again));
    d.add(again.data, again.length);
    trovFree(again.data);
}

uint8_t abc[] = {'a', 'b', 'c'};
uint16_t words[] = {0x0102, 0xA0B0, 0xFFFF};
AttributeArrayHeader threeWords{3, words};
struct Octets16 {
    uint16_t count;
    uint8_t *data;
} octets{3, abc};

using Work = void (*)(Digest &);
const Work kWork[] = {
    [](Digest &d) { // bodies, attribute values and method parameters, into allocated and given buffers
        static const U32Body u32{0x89ABCDEF};
        static const AttributeBody attribute{0x0070, &threeWords, {}};
        static const U32PairLongStringPairBody strings{1, 2, {3, abc}, {2, abc}, {}};
        static const MethodBody method{5, 0x0b, &octets, sizeof octets, {}};
        const struct { uint16_t code; const void *record; } requests[] = {
            {0x0b, &u32}, {0x12, &attribute}, {0x7c, &strings}, {0x1d, &method}};
        for (const auto &r : requests) {
            HeaderInfo h{0xA7E5, 0x10, 0x01, r.code, 0, 0, 0, 0, 1};
            EncodeOutput allocated{nullptr, 0};
            d.result(TROV_EncodeFU(&h, r.record, &allocated));
            d.add(allocated.data, allocated.length);
            trovFree(allocated.data);
            uint8_t buffer[64];
            EncodeOutput given{buffer, sizeof buffer};
            d.result(TROV_EncodeFU(&h, r.record, &given));
            d.add(buffer, given.length);
        }
        roundTrip(d, 0x57, {0, 0, 0, 5, 0x00, 0x70, 0, 2, 1, 2, 0xA0, 0xB0});
    },
    [](Digest &d) { // event lists: 0x04 (a u8 and a string), 0x12C (an attribute list)
        roundTrip(d, 0x0a, {0xAA, 0xBB, 0xCC, 0xDD, 2, 0x00, 0x04, 0x77, 7, 2, 'h', 'i', 0x01, 0x2C, 0x78, 0, 1, 0x00, 0xCB, 0, 1, 0x2A});
    },
    [](Digest &d) { // method replies: counted parameters, raw parameters
        roundTrip(d, 0x1d, {0, 0, 0, 3, 0x00, 0x0B, 1, 2, 0, 3, 'a', 'b', 'c'});
        roundTrip(d, 0x1d, {0, 0, 0, 1, 0x20, 0x00, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    },
    [](Digest &d) { // extended data
        uint8_t one = 0x5A;
        EventExtendEntry items[] = {{0, 0x00CB, &one}, {0, 0x0070, &threeWords}};
        const EventExtendList list{2, items};
        BufferDesc encoded{}, decoded{};
        OctetString data{};
        EventExtendList back{};
        d.result(TROV_EncodeEventExtend(&list, &data, 0x31, nullptr, 0x10, &encoded));
        d.add(data.data, data.length);
        d.result(TROV_DecodeEventExtend(&back, &data, 0x31, nullptr, 0x10, &decoded));
        const auto *array = static_cast<const AttributeArrayHeader *>(back.entries[1].value);
        d.value(*static_cast<const uint8_t *>(back.entries[0].value));
        d.add(array->elements, array->count * 2u);
        trovFree(encoded.data);
        trovFree(decoded.data);
    },
    [](Digest &d) { // size queries
        const HeaderInfo info{0xA7E5, 0x10, 0, 0, 0, 0, 0, 0, 0};
        const uint32_t u32 = 7;
        uint16_t size = 0;
        d.result(TROV_GetAttributePacketSize(&info, 0x0070, &threeWords, 1, &size));
        d.value(size);
        d.result(TROV_GetAttributePacketSize(&info, 0x08D5, &u32, 0, &size));
        d.value(size);
        d.result(TROV_GetEventPacketSize(&info, 0x04, &u32, &size), TROV_RESULT_NO_EVENT_CODEC);
    },
};
constexpr size_t kWorkCount = std::size(kWork);

TEST(Threads, EveryFamilyGivesTheSameResultsOnEightThreadsAtOnce) {
    std::vector<Bytes> reference;
    for (Work w : kWork) {
        Digest d;
        w(d);
        EXPECT_TRUE(d.ok) << "work " << reference.size();
        reference.push_back(d.bytes);
    }
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            // Each thread runs the families in its own rotation, so that different ones overlap.
            for (int i = 0; i < 300; ++i) {
                for (size_t j = 0; j < kWorkCount; ++j) {
                    const size_t k = (size_t(t) + size_t(i) + j) % kWorkCount;
                    Digest d;
                    kWork[k](d);
                    if (d.bytes != reference[k]) ++mismatches;
                }
            }
        });
    }
    for (std::thread &t : threads) t.join();
    EXPECT_EQ(mismatches.load(), 0);
}

} // namespace
