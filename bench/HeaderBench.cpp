// Throughput of the header path that every packet takes: encode, decode, one
// field read straight from the packet, and the full decoder's checks up to
// the body lookup.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "TrovCodec.h"

namespace {

HeaderInfo sampleHeader() {
    return HeaderInfo{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, TROV_FLAG_EXTENSION16, 0x12, 7, 0,
                      0x01020304, 0x05060708, 1};
}

void BM_EncodeHeader(benchmark::State &state) {
    const HeaderInfo h = sampleHeader();
    uint8_t packet[20];
    const PacketCursor cursor{packet, sizeof packet};
    for (auto _ : state) {
        benchmark::DoNotOptimize(TROV_EncodeHeader(&h, &cursor));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * 20);
}
BENCHMARK(BM_EncodeHeader);

void BM_DecodeHeader(benchmark::State &state) {
    const HeaderInfo h = sampleHeader();
    uint8_t packet[20];
    const PacketCursor cursor{packet, sizeof packet};
    TROV_EncodeHeader(&h, &cursor);
    HeaderInfo out{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(TROV_DecodeHeader(&out, &cursor));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * 20);
}
BENCHMARK(BM_DecodeHeader);

// One header field read from the packet, each of the ten in turn.
void BM_GetFromPacket(benchmark::State &state) {
    const HeaderInfo h = sampleHeader();
    uint8_t packet[20];
    const PacketCursor cursor{packet, sizeof packet};
    TROV_EncodeHeader(&h, &cursor);
    uint32_t value = 0, index = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(TROV_GetFromPacket(index, &cursor, &value));
        benchmark::DoNotOptimize(value);
        index = index == 9 ? 0 : index + 1;
    }
}
BENCHMARK(BM_GetFromPacket);

void BM_DecodeFUSkipped(benchmark::State &state) {
    TROV_InitCoder();
    HeaderInfo h = sampleHeader();
    h.extension = 200; // a unit type whose bodies the decoder skips
    uint8_t packet[20];
    const PacketCursor cursor{packet, sizeof packet};
    TROV_EncodeHeader(&h, &cursor);
    HeaderInfo out{};
    DecodeResult result{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(TROV_DecodeFU(&out, &result, &cursor, nullptr));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_DecodeFUSkipped);

} // namespace
