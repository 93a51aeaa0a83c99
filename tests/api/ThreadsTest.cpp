// The library from eight threads at once after one TROV_InitCoder: every
// family of operations (bodies, attribute values, event lists, methods,
// extended data, header fields, size queries, option parameters) runs
// concurrently, and every result and byte must equal what the same operation
// gave on one thread beforehand. Under ThreadSanitizer this also shows that
// the calls share no unsynchronised state.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "TrovCodec.h"
#include "api/ReplyPacket.h"

namespace {

using Bytes = std::vector<uint8_t>;

// What an operation produced: its results and the bytes of its output.
struct Digest {
    Bytes bytes;
    bool ok = true; // every result was the expected one

    Digest() { bytes.reserve(1024); }
    void add(const void *p, size_t n) {
        const auto *b = static_cast<const uint8_t *>(p);
        bytes.insert(bytes.end(), b, b + n);
    }
    template <class T> void value(T v) { add(&v, sizeof v); }
    void result(TrovResult r, TrovResult expected = TROV_RESULT_OK) {
        value(r);
        ok = ok && r == expected;
    }
    void string(const OctetString &s) {
        value(s.length);
        if (s.data != nullptr) add(s.data, s.length);
    }
};

// Decodes a reply into an allocated record, lets `read` digest it, then
// frees the record and the managed buffer `bufferOf` names.
template <class Record>
void decodeReply(Digest &d, uint16_t code, const Bytes &body, void (*read)(Digest &, const Record &),
                 BufferDesc Record::*bufferOf) {
    Bytes p = replyPacket(code, body);
    const PacketCursor cursor{p.data(), uint32_t(p.size())};
    HeaderInfo info{};
    DecodeResult result{nullptr, nullptr, 0};
    d.result(TROV_DecodeFU(&info, &result, &cursor, nullptr));
    d.value(result.type);
    if (result.record == nullptr) return;
    const auto &record = *static_cast<Record *>(result.record);
    read(d, record);
    trovFree((record.*bufferOf).data);
    trovFree(result.record);
}

uint8_t abc[] = {'a', 'b', 'c'};
uint16_t words[] = {0x0102, 0xA0B0, 0xFFFF};
AttributeArrayHeader threeWords{3, words};

void encodeBodies(Digest &d) {
    static const U32Body u32{0x89ABCDEF};
    static const AttributeBody attribute{0x0070, &threeWords, {}};
    static const U32PairLongStringPairBody strings{1, 2, {3, abc}, {2, abc}, {}};
    struct Octets16 {
        uint16_t count;
        uint8_t *data;
    };
    static Octets16 octets{3, abc};
    static const MethodBody method{5, 0x0b, &octets, sizeof octets, {}};
    static const MethodBody raw{6, 0x2345, abc, 3, {}};
    const struct { uint16_t code; const void *record; } requests[] = {
        {0x0b, &u32}, {0x12, &attribute}, {0x7c, &strings}, {0x1d, &method}, {0x1d, &raw},
    };
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
}

void decodeBodies(Digest &d) {
    decodeReply<U32PairStringBody>(d, 0x3a, {0, 0, 0, 9, 0, 0, 0, 8, 3, 'a', 'b', 'c'},
        [](Digest &g, const U32PairStringBody &r) {
            g.value(r.value0);
            g.value(r.value1);
            g.string(r.string2);
        }, &U32PairStringBody::buffer);
    decodeReply<U32AttributeBody>(d, 0x57, {0, 0, 0, 5, 0x00, 0x70, 0, 2, 1, 2, 0xA0, 0xB0},
        [](Digest &g, const U32AttributeBody &r) {
            g.value(r.value0);
            g.value(r.id);
            const auto *array = static_cast<const AttributeArrayHeader *>(r.value);
            g.value(array->count);
            g.add(array->elements, array->count * 2u);
        }, &U32AttributeBody::buffer);
}

// Events 0x04 (a u8 and a string) and 0x12C (an attribute list).
void digestEvent(Digest &d, uint16_t code, const void *body) {
    if (code == 0x04) {
        d.value(*static_cast<const uint8_t *>(body));
        d.string(*reinterpret_cast<const OctetString *>(static_cast<const uint8_t *>(body) + 8));
    } else {
        const auto *list = static_cast<const AttributeList *>(body);
        d.value(list->count);
        for (uint16_t i = 0; i < list->count; ++i) {
            d.value(list->entries[i].id);
            d.value(*static_cast<const uint8_t *>(list->entries[i].value));
        }
    }
}

void eventLists(Digest &d) {
    decodeReply<EventListBody>(d, 0x4d,
        {0, 0, 0, 1, 2, 0, 3, 0, 4, 5, 0, 2,
         0, 1, 0, 0, 0, 0x10, 0, 0, 0, 0x20, 0x30, 0x00, 0x04, 7, 2, 'h', 'i',
         0, 2, 0, 0, 0, 0x11, 0, 0, 0, 0x21, 0x31, 0x01, 0x2C, 0, 1, 0x00, 0xCB, 0, 1, 0x2A},
        [](Digest &g, const EventListBody &r) {
            g.value(r.count);
            for (uint16_t i = 0; i < r.count; ++i) {
                const EventEntry &e = r.entries[i];
                g.value(e.field1);
                g.value(e.field2);
                g.value(e.field3);
                g.value(e.field4);
                g.value(e.eventCode);
                digestEvent(g, e.eventCode, e.body);
            }
        }, &EventListBody::buffer);
    decodeReply<ShortEventListBody>(d, 0x0a,
        {0xAA, 0xBB, 0xCC, 0xDD, 2, 0x00, 0x04, 0x77, 7, 2, 'h', 'i',
         0x01, 0x2C, 0x78, 0, 1, 0x00, 0xCB, 0, 1, 0x2A},
        [](Digest &g, const ShortEventListBody &r) {
            g.value(r.value0);
            for (uint8_t i = 0; i < r.count; ++i) {
                g.value(r.entries[i].field2);
                digestEvent(g, r.entries[i].eventCode, r.entries[i].body);
            }
        }, &ShortEventListBody::buffer);
}

void methods(Digest &d) {
    auto read = [](Digest &g, const MethodBody &r) {
        g.value(r.method);
        g.value(r.paramsLength);
        g.value(r.buffer.capacity);
    };
    // 0xc0: u16, u16 N, N x (u8 L, L bytes), read into entries of {u8 L, data}.
    decodeReply<MethodBody>(d, 0x1d, {0, 0, 0, 2, 0x00, 0xC0, 0x12, 0x34, 0, 2, 2, 0xAA, 0xBB, 1, 0xCC},
        [](Digest &g, const MethodBody &r) {
            struct Entry {
                uint8_t length;
                const uint8_t *data;
            };
            struct Reply {
                uint16_t value, count;
                const Entry *entries;
            };
            const auto *reply = static_cast<const Reply *>(r.params);
            g.value(reply->value);
            for (uint16_t i = 0; i < reply->count; ++i) g.add(reply->entries[i].data, reply->entries[i].length);
        }, &MethodBody::buffer);
    decodeReply<MethodBody>(d, 0x1d, {0, 0, 0, 3, 0x00, 0x0B, 1, 2, 0, 3, 'a', 'b', 'c'}, read, &MethodBody::buffer);
    decodeReply<MethodBody>(d, 0x1d, {0, 0, 0, 1, 0x20, 0x00, 1, 2, 3, 4, 5, 6, 7, 8, 9}, read, &MethodBody::buffer);
}

void extendedData(Digest &d) {
    uint8_t one = 0x5A;
    EventExtendEntry items[] = {{0, 0x00CB, &one}, {0, 0x0070, &threeWords}};
    const EventExtendList list{2, items};
    BufferDesc encoded{};
    OctetString data{};
    d.result(TROV_EncodeEventExtend(&list, &data, 0x31, nullptr, 0x10, &encoded));
    d.string(data);
    EventExtendList back{};
    BufferDesc decoded{};
    d.result(TROV_DecodeEventExtend(&back, &data, 0x31, nullptr, 0x10, &decoded));
    d.value(back.count);
    d.value(*static_cast<const uint8_t *>(back.entries[0].value));
    const auto *array = static_cast<const AttributeArrayHeader *>(back.entries[1].value);
    d.add(array->elements, array->count * 2u);
    trovFree(encoded.data);
    trovFree(decoded.data);
}

void headerFields(Digest &d) {
    HeaderInfo info{0xA7E5, 0x10, 0x09, 0x1234, 0x5678, 0x9ABC, 0xDEADBEEF, 0x01020304, 0x0506};
    uint8_t bytes[20] = {};
    const PacketCursor cursor{bytes, sizeof bytes};
    d.result(TROV_EncodeHeader(&info, &cursor));
    for (uint32_t index = 0; index <= 9; ++index) {
        uint32_t v = 0;
        d.result(TROV_GetFromPacket(index, &cursor, &v));
        d.value(v);
        v = 0;
        d.result(TROV_GetFromInfo(index, &info, &v));
        d.value(v);
        const uint32_t changed = 0x11223344u + index;
        if (index != TROV_FIELD_VERSION) {
            d.result(TROV_SetToPacket(index, &cursor, &changed));
            d.result(TROV_SetToInfo(index, &info, &changed));
        }
    }
    d.add(bytes, sizeof bytes);
    HeaderInfo back{};
    d.result(TROV_DecodeHeader(&back, &cursor));
    for (const HeaderInfo *h : {&back, &info}) {
        for (uint16_t v : {h->mark, h->version, h->flags, h->code, h->value4, h->bodyLength, h->extension})
            d.value(v);
        d.value(h->value6);
        d.value(h->value7);
    }
}

void sizesAndOptions(Digest &d) {
    const HeaderInfo info{0xA7E5, 0x10, 0, 0, 0, 0, 0, 0, 0};
    const uint32_t u32 = 7;
    uint16_t size = 0;
    d.result(TROV_GetAttributePacketSize(&info, 0x0070, &threeWords, 1, &size));
    d.value(size);
    d.result(TROV_GetAttributePacketSize(&info, 0x08D5, &u32, 0, &size));
    d.value(size);
    d.result(TROV_GetEventPacketSize(&info, 0x04, &u32, &size), TROV_RESULT_NO_EVENT_CODEC);
    for (uint8_t kind = 0; kind <= 6; ++kind) {
        const uint8_t value[8] = {0x89, 0xAB, 0xCD, 0xEF, 0x12, 0x34, 0, 0};
        uint8_t wire[8] = {};
        PacketCursor out{wire, sizeof wire};
        trovEncode_OptionParam(&out, kind, value);
        d.add(wire, sizeof wire);
        uint8_t calc = 0;
        d.result(trovEncCalc_OptionParam(kind, nullptr, &calc), kind > 5 ? 1 : 0);
        d.value(calc);
        alignas(8) uint8_t back[8] = {};
        PacketCursor in{wire + 2, 6};
        d.value(trovDecode_OptionParam(kind, wire[1], back, &in) != nullptr);
        d.add(back, sizeof back);
        d.value(trovDecCalc_OptionParam(kind, 3));
    }
}

using Work = void (*)(Digest &);
const Work kWork[] = {encodeBodies, decodeBodies, eventLists, methods, extendedData, headerFields, sizesAndOptions};
constexpr size_t kWorkCount = sizeof kWork / sizeof kWork[0];

TEST(Threads, EveryFamilyGivesTheSameResultsOnEightThreadsAtOnce) {
    ASSERT_EQ(TROV_InitCoder(), 1);
    std::vector<Bytes> reference;
    for (Work w : kWork) {
        Digest d;
        w(d);
        EXPECT_TRUE(d.ok) << "work " << reference.size();
        reference.push_back(d.bytes);
    }

    constexpr int kThreads = 8, kIterations = 300;
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            // Each thread runs the families in its own rotation, so that
            // different ones overlap.
            for (int i = 0; i < kIterations; ++i) {
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
