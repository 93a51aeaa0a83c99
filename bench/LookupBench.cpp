// Cost of finding a codec row: the layout queries do little besides the table
// lookup, so they time it through the exported interface. Each family runs
// over the codes its table knows (hits) and over a spread of codes across the
// whole 16-bit space, most of which no table knows (misses, which a scan pays
// for in full).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "TrovCodec.h"
#include "TrovLayout.h"

namespace {

using Describe = TrovResult (*)(uint16_t code, uint8_t version, TrovLayoutInfo *out);

TrovResult describeBody(uint16_t code, uint8_t version, TrovLayoutInfo *out) {
    return TROV_DescribeBody(code, version, 0, out);
}
TrovResult describeMethod(uint16_t code, uint8_t version, TrovLayoutInfo *out) {
    return TROV_DescribeMethod(code, version, 0, out);
}

// The codes a family answers for, or (spread) every 97th code of the space.
std::vector<uint16_t> codesFor(Describe describe, bool spread) {
    TROV_InitCoder();
    std::vector<uint16_t> codes;
    for (uint32_t code = 1; code <= 0xFFFF; ++code) {
        TrovLayoutInfo info;
        if (spread ? code % 97 == 0 : describe(uint16_t(code), TROV_PROTOCOL_VERSION, &info) == 0)
            codes.push_back(uint16_t(code));
    }
    return codes;
}

void lookups(benchmark::State &state, Describe describe, bool spread) {
    const std::vector<uint16_t> codes = codesFor(describe, spread);
    TrovLayoutInfo info;
    size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(describe(codes[i], TROV_PROTOCOL_VERSION, &info));
        if (++i == codes.size()) i = 0;
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
}

BENCHMARK_CAPTURE(lookups, Body_Hits, describeBody, false);
BENCHMARK_CAPTURE(lookups, Body_Spread, describeBody, true);
BENCHMARK_CAPTURE(lookups, Event_Hits, TROV_DescribeEvent, false);
BENCHMARK_CAPTURE(lookups, Event_Spread, TROV_DescribeEvent, true);
BENCHMARK_CAPTURE(lookups, Method_Hits, describeMethod, false);
BENCHMARK_CAPTURE(lookups, Method_Spread, describeMethod, true);
BENCHMARK_CAPTURE(lookups, Attribute_Hits, TROV_DescribeAttribute, false);
BENCHMARK_CAPTURE(lookups, Attribute_Spread, TROV_DescribeAttribute, true);
BENCHMARK_CAPTURE(lookups, DataType_Hits, TROV_DescribeDataType, false);
BENCHMARK_CAPTURE(lookups, DataType_Spread, TROV_DescribeDataType, true);

// The attribute size query: lookup and the value codec's size pass.
void attributeSizes(benchmark::State &state) {
    TROV_InitCoder();
    const HeaderInfo h{TROV_PROTOCOL_MARK, TROV_PROTOCOL_VERSION, TROV_FLAG_EXTENSION16, 0x12, 7, 0,
                       0x01020304, 0x05060708, 1};
    alignas(8) static const uint8_t value[4096] = {}; // room for any value record, all zero
    std::vector<uint16_t> ids;
    for (uint32_t id = 1; id <= 0xFFFF; ++id) {
        uint16_t size;
        if (TROV_GetAttributePacketSize(&h, uint16_t(id), value, 0, &size) == 0) ids.push_back(uint16_t(id));
    }
    size_t i = 0;
    for (auto _ : state) {
        uint16_t size;
        benchmark::DoNotOptimize(TROV_GetAttributePacketSize(&h, ids[i], value, 0, &size));
        if (++i == ids.size()) i = 0;
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
}
BENCHMARK(attributeSizes);

} // namespace
