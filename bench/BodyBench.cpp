// Throughput of whole packets through the exports: a fixed request encoded
// into the caller's buffer (no allocation), an attribute reply and an
// event-list reply decoded into library-allocated records.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "TrovCodec.h"

namespace {

void BM_EncodeU32Request(benchmark::State &state) {
    TROV_InitCoder();
    HeaderInfo h{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, 0, 0x0b, 0, 0, 0, 0, 0};
    U32Body body{0x01020304};
    uint8_t packet[24];
    for (auto _ : state) {
        EncodeOutput out{packet, sizeof packet};
        benchmark::DoNotOptimize(TROV_EncodeFU(&h, &body, &out));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * 24);
}
BENCHMARK(BM_EncodeU32Request);

void decodeLoop(benchmark::State &state, const std::vector<uint8_t> &p) {
    TROV_InitCoder();
    const PacketCursor cursor{const_cast<uint8_t *>(p.data()), uint32_t(p.size())};
    for (auto _ : state) {
        HeaderInfo h{};
        DecodeResult r{};
        benchmark::DoNotOptimize(TROV_DecodeFU(&h, &r, &cursor, nullptr));
        if (r.buffer != nullptr) trovFree(r.buffer->data);
        trovFree(r.record);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(p.size()));
}

void BM_DecodeAttributeReply(benchmark::State &state) {
    // Body 0x12: attribute 0x0070, an array of four u16.
    decodeLoop(state, {0xA7, 0xE5, 0x10, 0x01, 0x00, 0x12, 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1,
                       0x00, 0x70, 0x00, 0x04, 0x00, 0x01, 0x00, 0x02, 0x00, 0x03, 0x00, 0x04});
}
BENCHMARK(BM_DecodeAttributeReply);

void BM_DecodeEventListReply(benchmark::State &state) {
    // Body 0x4d with `n` string events (0x04: a u8 and a 16-byte string).
    const auto n = static_cast<uint16_t>(state.range(0));
    std::vector<uint8_t> p = {0xA7, 0xE5, 0x10, 0x01, 0x00, 0x4d, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1,
                              0, 0, 0, 1, 2, 0, 3, 0, 4, 5, uint8_t(n >> 8), uint8_t(n)};
    for (uint16_t i = 0; i < n; ++i) {
        const uint8_t head[] = {0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 4, 0x00, 0x04, 7, 16};
        p.insert(p.end(), head, head + sizeof head);
        p.insert(p.end(), 16, 'x');
    }
    const auto body = uint16_t(p.size() - 20);
    p[8] = uint8_t(body >> 8);
    p[9] = uint8_t(body);
    decodeLoop(state, p);
    state.SetItemsProcessed(int64_t(state.iterations()) * n);
}
BENCHMARK(BM_DecodeEventListReply)->Arg(1)->Arg(16)->Arg(256);

} // namespace
