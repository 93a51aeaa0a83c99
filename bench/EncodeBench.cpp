// Encoding requests into the caller's buffer: an attribute body with an array
// value (16 u16, and 256), a method body with parameters (a u8 and 16 u32, and
// 255) and a header-only packet, against the floor (a memcpy of the packet's
// bytes) and against libprotobuf serialising the equivalent message into a
// buffer.
#include <benchmark/benchmark.h>

#include <cstring>
#include <iterator>
#include <vector>

#include "Workloads.h"

namespace {

template <class Request>
void encodeLoop(benchmark::State &state) {
    TROV_InitCoder();
    Request request;
    uint8_t packet[1280];
    uint32_t length = 0;
    const uint64_t before = bench::allocationsSoFar();
    for (auto _ : state) {
        EncodeOutput out{packet, sizeof packet};
        if (TROV_EncodeFU(&request.header, &request.body, &out) != TROV_RESULT_OK) {
            state.SkipWithError("encode failed");
            break;
        }
        length = out.length;
        benchmark::ClobberMemory();
    }
    bench::reportAllocations(state, before);
    bench::reportPackets(state, length, 1);
}

template <class Request>
void memcpyLoop(benchmark::State &state) {
    TROV_InitCoder();
    Request request;
    uint8_t packet[1280], copy[1280];
    EncodeOutput out{packet, sizeof packet};
    TROV_EncodeFU(&request.header, &request.body, &out);
    for (auto _ : state) {
        std::memcpy(copy, packet, out.length);
        benchmark::DoNotOptimize(copy); // a local copy nothing reads would be dropped
        benchmark::ClobberMemory();
    }
    bench::reportPackets(state, out.length, 1);
}

template <class Message>
void protobufSerializeLoop(benchmark::State &state, const Message &m) {
    uint8_t wire[1536];
    const size_t size = m.ByteSizeLong();
    const uint64_t before = bench::allocationsSoFar();
    for (auto _ : state) {
        if (!m.SerializeToArray(wire, sizeof wire)) {
            state.SkipWithError("serialise failed");
            break;
        }
        benchmark::ClobberMemory();
    }
    bench::reportAllocations(state, before);
    bench::reportPackets(state, size, 1);
}

template <class Request>
void protobufAttributeLoop(benchmark::State &state) {
    const Request r;
    trovbench::AttributeRequest m;
    bench::fillHeader(m.mutable_header(), r.header.code, uint32_t(4 + 2 * std::size(r.values)));
    m.set_id(r.body.id);
    for (uint16_t v : r.values) m.add_values(v);
    protobufSerializeLoop(state, m);
}

template <class Request>
void protobufMethodLoop(benchmark::State &state) {
    const Request r;
    trovbench::MethodRequest m;
    bench::fillHeader(m.mutable_header(), r.header.code, uint32_t(6 + 2 + 4 * std::size(r.values)));
    m.set_value0(r.body.value0), m.set_method(r.body.method), m.set_selector(r.params.selector);
    for (uint32_t v : r.values) m.add_values(v);
    protobufSerializeLoop(state, m);
}

BENCHMARK_TEMPLATE(encodeLoop, bench::AttributeRequest)->Name("BM_EncodeAttributeArray");
BENCHMARK_TEMPLATE(memcpyLoop, bench::AttributeRequest)->Name("BM_MemcpyAttributeArray");
BENCHMARK_TEMPLATE(protobufAttributeLoop, bench::AttributeRequest)->Name("BM_ProtobufSerializeAttributeArray");
BENCHMARK_TEMPLATE(encodeLoop, bench::LargeAttributeRequest)->Name("BM_EncodeLargeAttributeArray");
BENCHMARK_TEMPLATE(memcpyLoop, bench::LargeAttributeRequest)->Name("BM_MemcpyLargeAttributeArray");
BENCHMARK_TEMPLATE(protobufAttributeLoop, bench::LargeAttributeRequest)
    ->Name("BM_ProtobufSerializeLargeAttributeArray");

BENCHMARK_TEMPLATE(encodeLoop, bench::MethodRequest)->Name("BM_EncodeMethodParams");
BENCHMARK_TEMPLATE(memcpyLoop, bench::MethodRequest)->Name("BM_MemcpyMethodParams");
BENCHMARK_TEMPLATE(protobufMethodLoop, bench::MethodRequest)->Name("BM_ProtobufSerializeMethodParams");
BENCHMARK_TEMPLATE(encodeLoop, bench::LargeMethodRequest)->Name("BM_EncodeLargeMethodParams");
BENCHMARK_TEMPLATE(memcpyLoop, bench::LargeMethodRequest)->Name("BM_MemcpyLargeMethodParams");
BENCHMARK_TEMPLATE(protobufMethodLoop, bench::LargeMethodRequest)->Name("BM_ProtobufSerializeLargeMethodParams");

void BM_EncodeHeaderOnly(benchmark::State &state) { encodeLoop<bench::HeaderOnlyRequest>(state); }
BENCHMARK(BM_EncodeHeaderOnly);
void BM_MemcpyHeaderOnly(benchmark::State &state) { memcpyLoop<bench::HeaderOnlyRequest>(state); }
BENCHMARK(BM_MemcpyHeaderOnly);
void BM_ProtobufSerializeHeaderOnly(benchmark::State &state) {
    trovbench::HeaderOnly m;
    bench::fillHeader(m.mutable_header(), 0x10, 0);
    protobufSerializeLoop(state, m);
}
BENCHMARK(BM_ProtobufSerializeHeaderOnly);

// Refusing a record whose entries share their values: attribute 0x08CC
// nested `depth` levels, 256 entries a level all pointing at the next level
// (256^depth paths through about 256 x depth entries). The size pass stops
// once no length field can state the value, so the refusal takes the same
// time at every depth; a pass over every path would take hours at depth 4.
void BM_RefuseSharedNestedLists(benchmark::State &state) {
    TROV_InitCoder();
    const auto depth = static_cast<size_t>(state.range(0));
    struct Level {
        AttributeArrayHeader value;
        AttributeList list;
        std::vector<AttributeEntry> entries;
    };
    std::vector<Level> levels(depth + 1);
    for (size_t i = depth + 1; i-- > 0;) {
        Level &l = levels[i];
        if (i < depth) l.entries.assign(256, AttributeEntry{0x08CC, 0, &levels[i + 1].value});
        l.list = AttributeList{static_cast<uint16_t>(l.entries.size()), l.entries.empty() ? nullptr : l.entries.data()};
        l.value = AttributeArrayHeader{1, &l.list};
    }
    AttributeBody body{0x08CC, &levels[0].value, {nullptr, 0, 0}};
    for (auto _ : state) {
        HeaderInfo info{0xA7E5, 0x10, 0, 0x12, 0, 0, 0, 0, 0};
        EncodeOutput out{nullptr, 0};
        if (TROV_EncodeFU(&info, &body, &out) != TROV_RESULT_SHORT_INPUT) {
            state.SkipWithError("the record was not refused");
            break;
        }
    }
}
BENCHMARK(BM_RefuseSharedNestedLists)->Arg(2)->Arg(4)->Arg(8);

} // namespace
