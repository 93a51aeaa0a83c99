// Differential regression: a deterministic corpus of generated packets
// (every body code, event lists of every event code in both framings,
// attribute values under three body framings, methods), each whole, cut at
// every length and with bytes flipped, goes through the exported decoders and
// encoders, and all that comes back -- results, header fields, every block
// the library allocated, re-encoded packets -- is hashed per group and
// compared with tests/data/differential-expectations.txt. Pointers in hashed blocks hash as
// (block, offset) and fresh blocks are filled with 0xA5, so only behaviour
// reaches the hashes.
//
// The expectations were recorded from commit 49a2308, before the field-model
// rewrite; never re-record them to make a change pass. When the cases
// themselves change, build that commit in its own worktree with this file and
// run it with TROV_DIFFERENTIAL_RECORD=<path>: it then writes the expectations
// to <path> instead of comparing.
#include <gtest/gtest.h>

#if !defined(_WIN32)

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "engine/Memory.h"
#include "TrovCodec.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct Rng {
    uint64_t state;
    uint64_t next() {
        uint64_t z = (state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    uint32_t below(uint32_t n) { return static_cast<uint32_t>(next() % n); }
    // Half the bytes are 0-3, so counts and lengths usually fit the body.
    uint8_t byte() {
        const uint64_t v = next();
        return static_cast<uint8_t>((v & 1) ? (v >> 8) % 4 : v >> 8);
    }
    Bytes bytes(uint32_t n) {
        Bytes b(n);
        for (auto &x : b) x = byte();
        return b;
    }
};

struct Group {
    uint64_t hash = 0xCBF29CE484222325ull; // FNV-1a
    uint32_t cases = 0;
};
std::map<std::string, Group> groups;
Group *current = nullptr;

void begin(const std::string &group) {
    current = &groups[group];
    ++current->cases;
}
template <class... Args> std::string name(const char *format, Args... args) {
    char text[160];
    std::snprintf(text, sizeof text, format, args...);
    return text;
}

void hash(const void *p, size_t n) {
    for (size_t i = 0; i < n; ++i) current->hash = (current->hash ^ static_cast<const uint8_t *>(p)[i]) * 0x100000001B3ull;
}
void hash(uint64_t v) { hash(&v, sizeof v); }
void hashHeader(const HeaderInfo &i) {
    const uint64_t f[] = {i.mark, i.version, i.flags, i.code, i.value4, i.bodyLength, i.value6, i.value7, i.extension};
    hash(f, sizeof f);
}

// Blocks whose bytes a case hashes; a pointer into any of them hashes as
// (index, offset), so no address reaches the hash.
struct Region {
    const void *p;
    size_t n;
};
using Regions = std::vector<Region>;

uint64_t mapPointer(const Regions &regions, uint64_t w) {
    for (size_t i = 0; i < regions.size(); ++i) {
        const auto base = reinterpret_cast<uintptr_t>(regions[i].p);
        if (w != 0 && w >= base && w <= base + regions[i].n) return (0xB10Cull << 48) | (i << 32) | (w - base);
    }
    return w;
}
void hashPointer(const Regions &regions, const void *p) { hash(mapPointer(regions, reinterpret_cast<uintptr_t>(p))); }
void hashRegions(const Regions &regions) {
    for (const Region &r : regions) {
        hash(r.n);
        const auto *p = static_cast<const uint8_t *>(r.p);
        size_t off = 0;
        for (; off + 8 <= r.n; off += 8) {
            uint64_t w;
            std::memcpy(&w, p + off, 8);
            hash(mapPointer(regions, w));
        }
        hash(p + off, r.n - off);
    }
}

// Runs `call` with the allocation log on; returns the blocks it left live.
template <class F> Regions logged(F call) {
    trov::AllocationLog log;
    trov::logAllocations(&log);
    call();
    trov::logAllocations(nullptr);
    EXPECT_FALSE(log.overflow);
    Regions live;
    for (uint32_t i = 0; i < log.count; ++i)
        if (log.blocks[i].live) live.push_back({log.blocks[i].pointer, log.blocks[i].size});
    return live;
}
void freeAll(const Regions &blocks) {
    for (const Region &r : blocks) trovFree(const_cast<void *>(r.p));
}

// A case's own copy of its input; an empty one still points somewhere valid.
struct Input {
    explicit Input(Bytes b) : bytes(std::move(b)) {}
    Bytes bytes;
    uint64_t anchor = 0;
    uint8_t *data() { return bytes.empty() ? reinterpret_cast<uint8_t *>(&anchor) : bytes.data(); }
    PacketCursor cursor() { return {data(), static_cast<uint32_t>(bytes.size())}; }
    Region region() const { return {bytes.data(), bytes.size()}; }
};

void put16(Bytes &b, uint16_t v) { b.insert(b.end(), {uint8_t(v >> 8), uint8_t(v)}); }
void put32(Bytes &b, uint32_t v) { put16(b, uint16_t(v >> 16)), put16(b, uint16_t(v)); }
void append(Bytes &b, const Bytes &more) { b.insert(b.end(), more.begin(), more.end()); }

// Header (random flag bytes and values 6 and 7) and body.
Bytes packet(uint16_t code, const Bytes &body, Rng &rng, uint8_t version = TROV_PROTOCOL_VERSION, uint16_t unit = 1) {
    const auto v6 = static_cast<uint32_t>(rng.next()), v7 = static_cast<uint32_t>(rng.next());
    Bytes p{0xA7, 0xE5, version, 0x01};
    put16(p, code);
    p.push_back(rng.byte());
    p.push_back(rng.byte());
    put16(p, uint16_t(body.size())), put32(p, v6), put32(p, v7), put16(p, unit);
    append(p, body);
    return p;
}

// Bodies whose request encoder takes the record their reply decoder fills,
// so a decoded record encodes straight back. Of the methods (0x1d) only raw
// ones qualify: the others' request and reply parameters differ.
bool sameRecord(uint16_t code, const void *record) {
    static constexpr uint16_t codes[] = {0x03, 0x0b, 0x0f, 0x12, 0x14, 0x15, 0x17, 0x18, 0x1f, 0x20,
                                         0x21, 0x22, 0x23, 0x26, 0x27, 0x28, 0x29, 0x2a, 0x30, 0x32,
                                         0x4d, 0x4e, 0x4f, 0x51, 0x77, 0x7a, 0x7b, 0x85};
    if (code == 0x1d) return static_cast<const MethodBody *>(record)->method >= 0x2000;
    return std::find(std::begin(codes), std::end(codes), code) != std::end(codes);
}

// Encodes a decoded record back: into a library block, then into caller
// buffers of the exact size and one byte short; of an attribute body, also
// the packet size its value needs.
void reencode(const HeaderInfo &decoded, const void *record) {
    HeaderInfo info = decoded;
    EncodeOutput out{nullptr, 0};
    const Regions blocks = logged([&] { hash(TROV_EncodeFU(&info, record, &out)); });
    hashHeader(info), hash(out.length);
    if (out.data != nullptr) hash(out.data, out.length);
    freeAll(blocks);
    for (uint32_t shorter : {0u, 1u}) {
        if (out.data == nullptr || out.length < shorter) break;
        Bytes buffer(out.length - shorter, 0x5A);
        EncodeOutput caller{buffer.data(), static_cast<uint32_t>(buffer.size())};
        info = decoded;
        hash(TROV_EncodeFU(&info, record, &caller)), hash(caller.length), hash(buffer.data(), buffer.size());
    }
    uint16_t id = 0, size = 0;
    const void *value = nullptr;
    if (const auto *b = static_cast<const U32AttributeBody *>(record); decoded.code == 0x03) id = b->id, value = b->value;
    if (const auto *b = static_cast<const AttributeBody *>(record); decoded.code == 0x12 || decoded.code == 0x15 ||
                                                                    decoded.code == 0x18 || decoded.code == 0x32)
        id = b->id, value = b->value;
    if (value != nullptr) hash(TROV_GetAttributePacketSize(&decoded, id, value, 1, &size)), hash(size);
}

// Decodes again into a caller's zeroed record of `recordSize` bytes whose
// closing BufferDesc is left to the library (variant 0), holds a caller
// buffer of exactly `room` bytes (1) or one byte short (2), or holds an
// 8-byte growable block (3).
void decodeIntoCaller(PacketCursor &cursor, const Region &input, size_t recordSize, size_t room, int variant) {
    std::vector<uint64_t> callerRecord((recordSize + 7) / 8, 0), callerBuffer((room + 7) / 8 + 1, 0);
    // The closing BufferDesc, when the record can end with one
    // (variants 1 to 3 run only for records that do).
    auto *desc = recordSize < 16 || recordSize % 8 != 0 ? nullptr
                                 : reinterpret_cast<BufferDesc *>(reinterpret_cast<uint8_t *>(callerRecord.data()) +
                                                                  recordSize - 16);
    // Field by field: a whole-struct copy would bring in a temporary's padding.
    if (variant == 1 || variant == 2) desc->data = callerBuffer.data(), desc->capacity = uint16_t(room - (variant - 1));
    if (variant == 3) desc->data = std::memset(trovMalloc(8), 0x5A, 8), desc->capacity = 8, desc->flags = TROV_BUFFER_GROWABLE;
    void *const given = variant == 3 ? desc->data : nullptr;
    HeaderInfo info{};
    DecodeResult caller{callerRecord.data(), nullptr, 0};
    TrovResult r = 0;
    const Regions blocks = logged([&] { r = TROV_DecodeFU(&info, &caller, &cursor, nullptr); });
    const bool grown = std::any_of(blocks.begin(), blocks.end(), [&](const Region &b) { return desc != nullptr && b.p == desc->data; });
    Regions all{{callerRecord.data(), recordSize}};
    if (variant == 1 || variant == 2) all.push_back({callerBuffer.data(), room});
    all.insert(all.end(), blocks.begin(), blocks.end());
    if (variant == 3 && !grown) all.push_back({desc->data, 8});
    all.push_back(input);
    hash(r), hash(caller.type), hashPointer(all, caller.buffer), hashRegions(all);
    freeAll(blocks);
    if (variant == 3 && !grown) trovFree(desc->data == nullptr ? given : desc->data);
}

// A case of `group`: one decode with the library allocating (result, header,
// type, every block left live), re-encoding a record that encodes back. With
// `variants`, also decodes into caller records, all four variants when the
// record ends with a BufferDesc the decode allocated.
void decodeCase(const std::string &group, const Bytes &bytes, bool variants) {
    begin(group);
    Input input(bytes);
    PacketCursor cursor = input.cursor();
    HeaderInfo info{};
    DecodeResult result{};
    TrovResult r = 0;
    const Regions blocks = logged([&] { r = TROV_DecodeFU(&info, &result, &cursor, nullptr); });
    Regions regions(blocks);
    regions.push_back(input.region()); // last: a record pointing into its input shows as such
    hash(r), hashHeader(info), hash(result.type);
    hashPointer(regions, result.record), hashPointer(regions, result.buffer), hashRegions(regions);
    const auto record = std::find_if(blocks.begin(), blocks.end(), [&](const Region &b) { return b.p == result.record; });
    if (r == 0 && record != blocks.end()) {
        if (info.version == TROV_PROTOCOL_VERSION && sameRecord(info.code, result.record)) reencode(info, result.record);
        size_t room = 0;
        if (variants && record->n >= 16) {
            BufferDesc desc;
            std::memcpy(&desc, static_cast<const uint8_t *>(record->p) + record->n - 16, sizeof desc);
            for (const Region &b : blocks)
                if (b.p == desc.data && b.p != record->p && desc.flags == TROV_BUFFER_ALLOCATED) room = b.n;
        }
        for (int variant = 0; variants && variant < (room != 0 ? 4 : 1); ++variant)
            decodeIntoCaller(cursor, input.region(), record->n, room, variant);
    }
    freeAll(blocks);
}

// A packet whole (also through TROV_DecodeFP), cut at every length (with the
// header's body length kept, and set to what is left), and with a few bytes
// flipped.
void decodeAll(const std::string &group, const Bytes &p, Rng &rng) {
    decodeCase(group, p, true);
    Input input(p);
    PacketCursor cursor = input.cursor();
    HeaderInfo info{};
    DecodeResult fp{};
    hash(TROV_DecodeFP(&info, &fp, &cursor)), hash(fp.type), hashHeader(info);
    for (size_t cut = 0; cut < p.size(); ++cut) {
        Bytes part(p.begin(), p.begin() + static_cast<std::ptrdiff_t>(cut));
        decodeCase(group, part, false);
        if (cut < 20) continue;
        part[8] = uint8_t((cut - 20) >> 8), part[9] = uint8_t(cut - 20);
        decodeCase(group, part, false);
    }
    for (int flip = 0; flip < 3; ++flip) {
        Bytes changed(p);
        changed[rng.below(uint32_t(p.size()))] ^= uint8_t(1 + rng.below(255));
        decodeCase(group, changed, false);
    }
}

void functionUnitCorpus(Rng &rng) {
    for (uint8_t version : {uint8_t{TROV_PROTOCOL_VERSION}, uint8_t{TROV_PROTOCOL_VERSION + 1}})
        for (unsigned code = 0; code <= 0xFF; ++code)
            for (uint32_t longest : {4u, 12u, 32u, 64u})
                decodeAll(name("decode-fu v0x%02x code 0x%04x", unsigned{version}, code),
                          packet(uint16_t(code), rng.bytes(rng.below(longest)), rng, version), rng);
    // Unit types pick which bodies are decoded at all.
    for (unsigned unit : {0u, 2u, 4u, 8u, 9u, 18u, 23u, 24u, 25u, 31u, 33u})
        for (unsigned code = 0; code <= 0x86; ++code)
            decodeCase(name("decode-fu unit %u", unit),
                       packet(uint16_t(code), rng.bytes(rng.below(24)), rng, TROV_PROTOCOL_VERSION, uint16_t(unit)), true);
}

// An event list under long framing (0x4d) or short framing (0x0a).
Bytes eventList(bool isLong, const std::vector<uint16_t> &codes, Rng &rng) {
    Bytes body;
    put32(body, uint32_t(rng.next()));
    if (isLong) {
        body.push_back(rng.byte()), put16(body, uint16_t(rng.next())), put16(body, uint16_t(rng.next()));
        body.push_back(rng.byte()), put16(body, uint16_t(codes.size()));
    } else {
        body.push_back(uint8_t(codes.size()));
    }
    for (uint16_t code : codes) {
        if (isLong) {
            put16(body, rng.byte()), put32(body, uint32_t(rng.next())), put32(body, uint32_t(rng.next()));
            body.push_back(rng.byte()), put16(body, code);
        } else {
            put16(body, code), body.push_back(rng.byte());
        }
        append(body, rng.bytes(rng.below(rng.below(2) ? 12 : 40)));
    }
    return packet(isLong ? 0x4d : 0x0a, body, rng);
}

void eventCorpus(Rng &rng) {
    for (bool isLong : {true, false}) {
        const char *framing = isLong ? "long" : "short";
        for (unsigned code = 0; code <= 0x13F; ++code)
            for (int i = 0; i < 2; ++i)
                decodeAll(name("decode-event %s code 0x%03x", framing, code), eventList(isLong, {uint16_t(code)}, rng), rng);
        for (int i = 0; i < 40; ++i) {
            std::vector<uint16_t> codes(rng.below(5));
            for (auto &c : codes) c = uint16_t(rng.below(2) ? 0x98 + rng.below(0x2E) : rng.below(0x140));
            decodeAll(name("decode-event-multi %s", framing), eventList(isLong, codes, rng), rng);
        }
    }
}

// Attribute values under three body framings: the identifier alone (0x12),
// after a u32 (0x03), after a u16 (0x35).
void attributeCorpus(Rng &rng) {
    for (unsigned id = 0; id <= 300; ++id)
        for (uint16_t code : {0x12, 0x03, 0x35})
            for (uint32_t longest : {8u, 32u}) {
                Bytes body = rng.bytes(code == 0x12 ? 0 : code == 0x03 ? 4 : 2);
                put16(body, uint16_t(id));
                append(body, rng.bytes(rng.below(longest)));
                decodeAll(name("decode-attribute id 0x%04x", id), packet(code, body, rng), rng);
            }
}

void methodCorpus(Rng &rng) {
    std::vector<unsigned> codes;
    for (unsigned c = 0; c <= 0xFF; ++c) codes.push_back(c);
    codes.insert(codes.end(), {0x2000, 0x2001, 0x3ABC, 0xFFFF});
    for (unsigned code : codes)
        for (uint32_t longest : {6u, 24u, 48u}) {
            Bytes body;
            put32(body, uint32_t(rng.next())), put16(body, uint16_t(code));
            append(body, rng.bytes(rng.below(longest)));
            decodeAll(name("decode-method code 0x%04x", code), packet(0x1d, body, rng), rng);
        }
}

TEST(DifferentialCorpus, EveryOutputMatchesTheRecordedBaseline) {
    TROV_InitCoder();
    groups.clear();
    Rng rng{0x7E570C0DEull};
    for (auto corpus : {functionUnitCorpus, eventCorpus, attributeCorpus, methodCorpus}) corpus(rng);
    // Lines are "<group> <cases> <hash>".
    std::map<std::string, std::string> got, expected;
    std::string text;
    for (const auto &[group, g] : groups) text += group + " " + (got[group] = name("%u %016" PRIx64, g.cases, g.hash)) + "\n";
    if (const char *path = std::getenv("TROV_DIFFERENTIAL_RECORD")) {
        std::ofstream(path, std::ios::binary) << text;
        GTEST_SUCCEED() << "recorded " << groups.size() << " groups to " << path;
        return;
    }
    std::ifstream file(TROV_SOURCE_DIR "/tests/data/differential-expectations.txt");
    for (std::string line; std::getline(file, line);)
        if (const size_t cases = line.rfind(' ', line.rfind(' ') - 1); cases != std::string::npos)
            expected[line.substr(0, cases)] = line.substr(cases + 1);
    ASSERT_FALSE(expected.empty()) << "no expectations; record them with TROV_DIFFERENTIAL_RECORD";
    std::vector<std::string> differing;
    for (const auto &[group, value] : got)
        if (const auto e = expected.find(group); e == expected.end() || e->second != value) differing.push_back(group);
    for (const auto &[group, value] : expected)
        if (got.count(group) == 0) differing.push_back(group + " (missing)");
    std::string list;
    for (size_t i = 0; i < differing.size() && i < 20; ++i) list += "\n  " + differing[i];
    EXPECT_TRUE(differing.empty()) << differing.size() << " of " << expected.size()
                                   << " groups differ from the baseline:" << list;
}

} // namespace

#else
TEST(DifferentialCorpus, EveryOutputMatchesTheRecordedBaseline) { GTEST_SKIP() << "hashes are recorded on Linux"; }
#endif
