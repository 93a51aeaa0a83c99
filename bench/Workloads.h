// The workloads the throughput benchmarks share: one event-list reply in
// both framings, the request records of the encode side, and the protobuf
// messages that carry the same fields, counts and values.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "TrovCodec.h"
#include "trov_bench.pb.h"

namespace bench {

// Heap allocations made by the calling thread so far (AllocationCounter.cpp
// counts every malloc, calloc and realloc of the process, trovMalloc's too).
uint64_t allocationsSoFar();

// Reports the allocations per iteration made since `before`.
inline void reportAllocations(benchmark::State &state, uint64_t before) {
    state.counters["allocs"] = benchmark::Counter(double(allocationsSoFar() - before),
                                                  benchmark::Counter::kAvgIterations);
}

inline void reportPackets(benchmark::State &state, size_t bytes, int64_t items) {
    state.counters["packet_bytes"] = benchmark::Counter(double(bytes), benchmark::Counter::kAvgThreads);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
    state.SetItemsProcessed(int64_t(state.iterations()) * items);
}

// ---- the event-list reply ------------------------------------------------------

inline constexpr int kEvents = 64;

// Event i of the workload: three layouts in turn, each with a 4-byte string.
struct EventSample {
    uint16_t code;   // 0x04: u8, string; 0x13: u32, string; 0x52: u32, u32, string
    uint32_t value0; // the layout's first field
    uint32_t value1; // 0x52's second field
    uint8_t text[4];
    uint16_t field1;
    uint32_t field2, field3;
    uint8_t field4;
};

inline EventSample eventSample(int i) {
    static constexpr uint16_t kCodes[] = {0x04, 0x13, 0x52};
    const auto u = uint32_t(i);
    EventSample e{kCodes[i % 3], 0, 0, {'e', 'v', uint8_t('0' + i / 10), uint8_t('0' + i % 10)},
                  uint16_t(0x100 + u), 0x01000000u + u * 977u, 0x20000000u + u * 31u, uint8_t(u)};
    e.value0 = e.code == 0x04 ? (u & 0xFF) : 0x00ABCDEFu + u;
    e.value1 = 0x7F000000u ^ u;
    return e;
}

inline void putU16(std::vector<uint8_t> &p, uint32_t v) {
    p.push_back(uint8_t(v >> 8));
    p.push_back(uint8_t(v));
}
inline void putU32(std::vector<uint8_t> &p, uint32_t v) {
    putU16(p, v >> 16);
    putU16(p, v);
}

inline void putEventBody(std::vector<uint8_t> &p, const EventSample &e) {
    if (e.code == 0x04) p.push_back(uint8_t(e.value0));
    else putU32(p, e.value0);
    if (e.code == 0x52) putU32(p, e.value1);
    p.push_back(sizeof e.text);
    p.insert(p.end(), e.text, e.text + sizeof e.text);
}

inline HeaderInfo replyHeader(uint16_t code) {
    return HeaderInfo{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, TROV_FLAG_EXTENSION16, code, 7, 0,
                      0x01020304, 0x05060708, 1};
}

inline std::vector<uint8_t> withHeader(uint16_t code, const std::vector<uint8_t> &body) {
    std::vector<uint8_t> p(TROV_HEADER_LENGTH);
    HeaderInfo h = replyHeader(code);
    h.bodyLength = uint16_t(body.size());
    const PacketCursor c{p.data(), uint32_t(p.size())};
    TROV_InitCoder();
    TROV_EncodeHeader(&h, &c);
    p.insert(p.end(), body.begin(), body.end());
    return p;
}

// Body 0x4d: the 12-byte body head, then each event's 13-byte head and body.
inline std::vector<uint8_t> longEventList() {
    std::vector<uint8_t> b;
    putU32(b, 0x11223344), b.push_back(5), putU16(b, 0x0606), putU16(b, 0x0707), b.push_back(8);
    putU16(b, kEvents);
    for (int i = 0; i < kEvents; ++i) {
        const EventSample e = eventSample(i);
        putU16(b, e.field1), putU32(b, e.field2), putU32(b, e.field3), b.push_back(e.field4);
        putU16(b, e.code);
        putEventBody(b, e);
    }
    return withHeader(0x4d, b);
}

// Body 0x0a: the 5-byte body head, then each event's code, u8 and body.
inline std::vector<uint8_t> shortEventList() {
    std::vector<uint8_t> b;
    putU32(b, 0x11223344), b.push_back(kEvents);
    for (int i = 0; i < kEvents; ++i) {
        const EventSample e = eventSample(i);
        putU16(b, e.code), b.push_back(e.field4);
        putEventBody(b, e);
    }
    return withHeader(0x0a, b);
}

inline void fillHeader(trovbench::Header *h, uint16_t code, uint32_t bodyLength) {
    const HeaderInfo i = replyHeader(code);
    h->set_mark(i.mark), h->set_version(i.version), h->set_flags(i.flags), h->set_code(i.code);
    h->set_value4(i.value4), h->set_body_length(bodyLength), h->set_value6(i.value6);
    h->set_value7(i.value7), h->set_extension(i.extension);
}

template <class Message>
void fillEventBody(Message *m, const EventSample &e) {
    m->set_value0(e.value0);
    if (e.code == 0x52) m->set_value1(e.value1);
    m->set_text(reinterpret_cast<const char *>(e.text), sizeof e.text);
}

inline std::string longEventListProto() {
    trovbench::EventList m;
    fillHeader(m.mutable_header(), 0x4d, uint32_t(longEventList().size() - TROV_HEADER_LENGTH));
    m.set_value0(0x11223344), m.set_value1(5), m.set_value2(0x0606), m.set_value3(0x0707), m.set_value4(8);
    for (int i = 0; i < kEvents; ++i) {
        const EventSample e = eventSample(i);
        trovbench::Event *ev = m.add_events();
        ev->set_field1(e.field1), ev->set_field2(e.field2), ev->set_field3(e.field3);
        ev->set_field4(e.field4), ev->set_event_code(e.code);
        fillEventBody(ev, e);
    }
    return m.SerializeAsString();
}

inline std::string shortEventListProto() {
    trovbench::ShortEventList m;
    fillHeader(m.mutable_header(), 0x0a, uint32_t(shortEventList().size() - TROV_HEADER_LENGTH));
    m.set_value0(0x11223344);
    for (int i = 0; i < kEvents; ++i) {
        const EventSample e = eventSample(i);
        trovbench::BriefEvent *ev = m.add_events();
        ev->set_event_code(e.code), ev->set_field2(e.field4);
        fillEventBody(ev, e);
    }
    return m.SerializeAsString();
}

// ---- the request side ------------------------------------------------------------

inline constexpr int kArrayValues = 16;   // the small requests
inline constexpr int kLargeArray = 256;    // the large ones (a method's u8 count stops at 255)

// Body 0x12, attribute 0x0070 (u16 values) in array form.
template <int N>
struct AttributeRequestOf {
    HeaderInfo header = replyHeader(0x12);
    uint16_t values[N];
    AttributeArrayHeader array{N, values};
    AttributeBody body{0x0070, &array, {}};
    AttributeRequestOf() {
        for (int i = 0; i < N; ++i) values[i] = uint16_t(0x1000 + 0x111 * i);
    }
};
using AttributeRequest = AttributeRequestOf<kArrayValues>;
using LargeAttributeRequest = AttributeRequestOf<kLargeArray>;

// Body 0x1d, method 0x76: u8, then a u8 count of u32 values.
template <int N>
struct MethodRequestOf {
    static_assert(N <= 255, "the count is a u8");
    HeaderInfo header = replyHeader(0x1d);
    uint32_t values[N];
    struct {
        uint8_t selector;
        alignas(8) uint8_t count;
        alignas(8) uint32_t *values;
    } params{3, N, values};
    MethodBody body{0x0A0B0C0D, 0x76, &params, 0, {}};
    MethodRequestOf() {
        for (int i = 0; i < N; ++i) values[i] = 0x00100000u * uint32_t(i + 1) + uint32_t(i);
    }
};
using MethodRequest = MethodRequestOf<kArrayValues>;
using LargeMethodRequest = MethodRequestOf<255>;

// Body 0x10: the header alone.
struct HeaderOnlyRequest {
    HeaderInfo header = replyHeader(0x10);
    EmptyBody body{};
};

} // namespace bench
