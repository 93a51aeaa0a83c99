// Decoding the event-list reply (64 events, three layouts) in both framings,
// with the library allocating the record and its one block, and into the
// caller's record and block (nothing allocated), against the floor (a memcpy
// of the same bytes) and against libprotobuf parsing the equivalent message
// into an arena. One thread and two: the library keeps no shared state, so
// two threads should do twice the work.
#include <benchmark/benchmark.h>

#include <cstring>
#include <google/protobuf/arena.h>

#include "Workloads.h"

namespace {

void decodeLoop(benchmark::State &state, const std::vector<uint8_t> &packet) {
    TROV_InitCoder();
    const PacketCursor cursor{const_cast<uint8_t *>(packet.data()), uint32_t(packet.size())};
    const uint64_t before = bench::allocationsSoFar();
    for (auto _ : state) {
        HeaderInfo h{};
        DecodeResult r{};
        const TrovResult result = TROV_DecodeFU(&h, &r, &cursor, nullptr);
        if (result != TROV_RESULT_OK) {
            state.SkipWithError("decode failed");
            break;
        }
        benchmark::DoNotOptimize(r.record);
        if (r.buffer != nullptr) trovFree(r.buffer->data);
        trovFree(r.record);
    }
    bench::reportAllocations(state, before);
    bench::reportPackets(state, packet.size(), bench::kEvents);
}

void BM_DecodeEventList(benchmark::State &state) { decodeLoop(state, bench::longEventList()); }
BENCHMARK(BM_DecodeEventList)->Threads(1)->Threads(2)->UseRealTime();

void BM_DecodeShortEventList(benchmark::State &state) { decodeLoop(state, bench::shortEventList()); }
BENCHMARK(BM_DecodeShortEventList)->Threads(1)->Threads(2)->UseRealTime();

// Into the caller's record and managed block, as hosts that reuse their
// buffers call it: the record is zeroed and given the block before each
// decode, which allocates nothing.
template <class Record>
void callerDecodeLoop(benchmark::State &state, const std::vector<uint8_t> &packet) {
    TROV_InitCoder();
    const PacketCursor cursor{const_cast<uint8_t *>(packet.data()), uint32_t(packet.size())};
    std::vector<uint64_t> block(8192);
    const uint64_t before = bench::allocationsSoFar();
    for (auto _ : state) {
        Record record{};
        record.buffer = BufferDesc{block.data(), uint16_t(block.size() * 8 - 8), 0};
        HeaderInfo h{};
        DecodeResult r{&record, nullptr, 0};
        if (TROV_DecodeFU(&h, &r, &cursor, nullptr) != TROV_RESULT_OK || record.entries == nullptr) {
            state.SkipWithError("decode failed");
            break;
        }
        benchmark::DoNotOptimize(record);
        benchmark::ClobberMemory();
    }
    bench::reportAllocations(state, before);
    bench::reportPackets(state, packet.size(), bench::kEvents);
}

void BM_DecodeEventListInPlace(benchmark::State &state) {
    callerDecodeLoop<EventListBody>(state, bench::longEventList());
}
BENCHMARK(BM_DecodeEventListInPlace)->Threads(1)->Threads(2)->UseRealTime();

void BM_DecodeShortEventListInPlace(benchmark::State &state) {
    callerDecodeLoop<ShortEventListBody>(state, bench::shortEventList());
}
BENCHMARK(BM_DecodeShortEventListInPlace)->Threads(1)->Threads(2)->UseRealTime();

// The floor: the packet's bytes copied once.
void memcpyLoop(benchmark::State &state, const std::vector<uint8_t> &packet) {
    std::vector<uint8_t> copy(packet.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), packet.data(), packet.size());
        benchmark::ClobberMemory();
    }
    bench::reportPackets(state, packet.size(), bench::kEvents);
}
void BM_MemcpyEventList(benchmark::State &state) { memcpyLoop(state, bench::longEventList()); }
BENCHMARK(BM_MemcpyEventList);
void BM_MemcpyShortEventList(benchmark::State &state) { memcpyLoop(state, bench::shortEventList()); }
BENCHMARK(BM_MemcpyShortEventList);

// libprotobuf: a fresh arena per message, as a reply decoder would use it.
template <class Message>
void protobufParseLoop(benchmark::State &state, const std::string &wire) {
    google::protobuf::ArenaOptions options;
    std::vector<char> initial(16384);
    options.initial_block = initial.data();
    options.initial_block_size = initial.size();
    const uint64_t before = bench::allocationsSoFar();
    for (auto _ : state) {
        google::protobuf::Arena arena(options);
        auto *m = google::protobuf::Arena::CreateMessage<Message>(&arena);
        if (!m->ParseFromString(wire)) {
            state.SkipWithError("parse failed");
            break;
        }
        benchmark::DoNotOptimize(m);
    }
    bench::reportAllocations(state, before);
    bench::reportPackets(state, wire.size(), bench::kEvents);
}
void BM_ProtobufParseEventList(benchmark::State &state) {
    protobufParseLoop<trovbench::EventList>(state, bench::longEventListProto());
}
BENCHMARK(BM_ProtobufParseEventList)->Threads(1)->Threads(2)->UseRealTime();
void BM_ProtobufParseShortEventList(benchmark::State &state) {
    protobufParseLoop<trovbench::ShortEventList>(state, bench::shortEventListProto());
}
BENCHMARK(BM_ProtobufParseShortEventList)->Threads(1)->Threads(2)->UseRealTime();

} // namespace
