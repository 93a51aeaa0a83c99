// Differential regression over a deterministic corpus: every packet, event
// list, attribute value, method, extended-data string and option parameter
// below goes through the exported functions, and what comes back (results,
// headers, the blocks the library allocated, re-encoded packets) is hashed
// per group and compared with tests/data/differential-expectations.txt.
//
// Pointers inside the hashed blocks are replaced by (block, offset), and the
// allocation log fills fresh blocks with 0xA5, so the hashes depend on the
// library's behaviour alone, not on addresses or stale heap bytes.
//
// With TROV_DIFFERENTIAL_RECORD=<path> set the test writes the expectations
// there instead of comparing.
#include <gtest/gtest.h>

#if !defined(_WIN32)

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "api/Memory.h"
#include "api/TrovCodec.h"

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

struct Hash {
    uint64_t h = 0xCBF29CE484222325ull;
    void add(const void *p, size_t n) {
        for (size_t i = 0; i < n; ++i) h = (h ^ static_cast<const uint8_t *>(p)[i]) * 0x100000001B3ull;
    }
    void u64(uint64_t v) { add(&v, sizeof v); }
};

struct Group {
    Hash hash;
    uint32_t cases = 0;
};
std::map<std::string, Group> groups;
Hash *current = nullptr;

void begin(const std::string &group) {
    Group &g = groups[group];
    ++g.cases;
    current = &g.hash;
}

// Blocks whose contents a case records; pointers into any of them hash as
// (index, offset).
struct Region {
    const void *p;
    size_t n;
};
uint64_t mapPointer(const std::vector<Region> &regions, uint64_t w) {
    for (size_t i = 0; i < regions.size(); ++i) {
        const auto base = reinterpret_cast<uintptr_t>(regions[i].p);
        if (w != 0 && w >= base && w <= base + regions[i].n) return (0xB10Cull << 48) | (i << 32) | (w - base);
    }
    return w;
}
void hashRegions(const std::vector<Region> &regions) {
    for (const Region &r : regions) {
        current->u64(r.n);
        const auto *p = static_cast<const uint8_t *>(r.p);
        size_t off = 0;
        for (; off + 8 <= r.n; off += 8) {
            uint64_t w;
            std::memcpy(&w, p + off, 8);
            current->u64(mapPointer(regions, w));
        }
        current->add(p + off, r.n - off);
    }
}
void hashHeader(const HeaderInfo &i) {
    const uint64_t f[] = {i.mark, i.version, i.flags, i.code, i.value4, i.bodyLength, i.value6, i.value7, i.extension};
    current->add(f, sizeof f);
}

// Runs `call` with the allocation log on; returns the live blocks it left.
template <class F> std::vector<Region> logged(trov::AllocationLog &log, F call) {
    trov::logAllocations(&log);
    call();
    trov::logAllocations(nullptr);
    EXPECT_FALSE(log.overflow);
    std::vector<Region> live;
    for (uint32_t i = 0; i < log.count; ++i)
        if (log.blocks[i].live) live.push_back({log.blocks[i].pointer, log.blocks[i].size});
    return live;
}
void freeAll(const std::vector<Region> &blocks) {
    for (const Region &r : blocks) trovFree(const_cast<void *>(r.p));
}

Bytes packet(uint8_t version, uint16_t code, uint16_t unit, const Bytes &body, Rng &rng) {
    Bytes p(20);
    const auto v6 = static_cast<uint32_t>(rng.next()), v7 = static_cast<uint32_t>(rng.next());
    const uint8_t head[] = {0xA7, 0xE5, version, 0x01, uint8_t(code >> 8), uint8_t(code), rng.byte(), rng.byte(),
                            uint8_t(body.size() >> 8), uint8_t(body.size()), uint8_t(v6 >> 24), uint8_t(v6 >> 16),
                            uint8_t(v6 >> 8), uint8_t(v6), uint8_t(v7 >> 24), uint8_t(v7 >> 16), uint8_t(v7 >> 8),
                            uint8_t(v7), uint8_t(unit >> 8), uint8_t(unit)};
    std::memcpy(p.data(), head, 20);
    p.insert(p.end(), body.begin(), body.end());
    return p;
}
void put16(Bytes &b, uint16_t v) { b.insert(b.end(), {uint8_t(v >> 8), uint8_t(v)}); }
void put32(Bytes &b, uint32_t v) { put16(b, uint16_t(v >> 16)), put16(b, uint16_t(v)); }

// Body codes whose request encoder takes the record their reply decoder
// fills: a decoded record encodes straight back. The method invocation
// (0x1d) qualifies only for raw methods (0x2000 and above without a codec):
// other methods' request and reply parameters differ. The attribute bodies
// name where their identifier and value sit.
constexpr uint16_t kSameRecordCodes[] = {0x03, 0x0b, 0x0f, 0x12, 0x14, 0x15, 0x17, 0x18, 0x1d, 0x1f,
                                         0x20, 0x21, 0x22, 0x23, 0x26, 0x27, 0x28, 0x29, 0x2a, 0x30,
                                         0x32, 0x4d, 0x4e, 0x4f, 0x51, 0x77, 0x7a, 0x7b, 0x85};
bool sameRecord(uint16_t code, const void *record) {
    if (code == 0x1d) return static_cast<const MethodBody *>(record)->method >= 0x2000;
    for (uint16_t c : kSameRecordCodes)
        if (c == code) return true;
    return false;
}
bool attributeOf(uint16_t code, const void *record, uint16_t *id, const void **value) {
    if (code == 0x12 || code == 0x15 || code == 0x18 || code == 0x32) {
        auto *r = static_cast<const AttributeBody *>(record);
        return *id = r->id, *value = r->value, true;
    }
    if (code == 0x03 || code == 0x04 || code == 0x56 || code == 0x57 || code == 0x69) {
        auto *r = static_cast<const U32AttributeBody *>(record);
        return *id = r->id, *value = r->value, true;
    }
    if (code == 0x35) {
        auto *r = static_cast<const U16AttributeBody *>(record);
        return *id = r->id, *value = r->value, true;
    }
    return false;
}

// Encodes a decoded record back: library-allocated, then into caller buffers
// of the exact size and one byte short.
void reencode(const HeaderInfo &decoded, const void *record) {
    HeaderInfo info = decoded;
    EncodeOutput out{nullptr, 0};
    trov::AllocationLog log;
    const auto blocks = logged(log, [&] { current->u64(TROV_EncodeFU(&info, record, &out)); });
    hashHeader(info);
    current->u64(out.length);
    if (out.data != nullptr) current->add(out.data, out.length);
    freeAll(blocks);
    for (uint32_t shorter : {0u, 1u}) {
        if (out.data == nullptr || out.length < shorter) break;
        Bytes buffer(out.length - shorter, 0x5A);
        EncodeOutput caller{buffer.data(), static_cast<uint32_t>(buffer.size())};
        info = decoded;
        current->u64(TROV_EncodeFU(&info, record, &caller));
        current->u64(caller.length);
        current->add(buffer.data(), buffer.size());
    }
    uint16_t id = 0, size = 0;
    const void *value = nullptr;
    if (attributeOf(decoded.code, record, &id, &value) && value != nullptr) {
        current->u64(TROV_GetAttributePacketSize(&decoded, id, value, 1, &size));
        current->u64(size);
    }
}

// One decode with the library allocating: result, header, type and every
// block left live. With `variants`, the record is also decoded into a
// caller's record, with the library's, an exact, a short and a growable
// caller buffer in its closing BufferDesc.
void decodeCase(const Bytes &bytes, bool variants) {
    Bytes copy(bytes);
    uint64_t anchor = 0;
    PacketCursor cursor{copy.empty() ? reinterpret_cast<uint8_t *>(&anchor) : copy.data(),
                        static_cast<uint32_t>(copy.size())};
    HeaderInfo info{};
    DecodeResult result{};
    trov::AllocationLog log;
    TrovResult r = 0;
    const auto blocks = logged(log, [&] { r = TROV_DecodeFU(&info, &result, &cursor, nullptr); });
    // The packet last: a record pointing into its input would show as such.
    std::vector<Region> regions(blocks);
    regions.push_back({copy.data(), copy.size()});
    current->u64(r);
    hashHeader(info);
    current->u64(result.type);
    current->u64(mapPointer(regions, reinterpret_cast<uintptr_t>(result.record)));
    current->u64(mapPointer(regions, reinterpret_cast<uintptr_t>(result.buffer)));
    hashRegions(regions);
    const Region *record = nullptr;
    for (const Region &b : blocks)
        if (b.p == result.record) record = &b;
    if (r == 0 && record != nullptr && info.version == TROV_PROTOCOL_VERSION && sameRecord(info.code, result.record))
        reencode(info, result.record);

    if (variants && r == 0 && record != nullptr) {
        // A record that ends with a BufferDesc holding a block of this call.
        size_t room = 0;
        if (record->n >= 16) {
            BufferDesc desc;
            std::memcpy(&desc, static_cast<const uint8_t *>(record->p) + record->n - 16, sizeof desc);
            for (const Region &b : blocks)
                if (b.p == desc.data && b.p != record->p && desc.flags == TROV_BUFFER_ALLOCATED) room = b.n;
        }
        for (int variant = 0; variant < (room != 0 ? 4 : 1); ++variant) {
            std::vector<uint64_t> callerRecord((record->n + 7) / 8, 0);
            std::vector<uint64_t> callerBuffer((room + 7) / 8 + 1, 0);
            auto *desc = reinterpret_cast<BufferDesc *>(reinterpret_cast<uint8_t *>(callerRecord.data()) + record->n - 16);
            // Field by field: a whole-struct copy would bring in a temporary's padding.
            if (variant == 1 || variant == 2) desc->data = callerBuffer.data(), desc->capacity = uint16_t(room - (variant - 1));
            if (variant == 3)
                desc->data = std::memset(trovMalloc(8), 0x5A, 8), desc->capacity = 8, desc->flags = TROV_BUFFER_GROWABLE;
            void *given = variant == 3 ? desc->data : nullptr;
            HeaderInfo info2{};
            DecodeResult caller{callerRecord.data(), nullptr, 0};
            trov::AllocationLog log2;
            const auto more = logged(log2, [&] { r = TROV_DecodeFU(&info2, &caller, &cursor, nullptr); });
            std::vector<Region> all{{callerRecord.data(), record->n}};
            if (variant == 1 || variant == 2) all.push_back({callerBuffer.data(), room});
            bool grown = false;
            for (const Region &b : more) grown |= b.p == desc->data;
            all.insert(all.end(), more.begin(), more.end());
            if (variant == 3 && !grown) all.push_back({desc->data, 8});
            all.push_back({copy.data(), copy.size()});
            current->u64(r);
            current->u64(caller.type);
            current->u64(mapPointer(all, reinterpret_cast<uintptr_t>(caller.buffer)));
            hashRegions(all);
            freeAll(more);
            if (variant == 3 && !grown) trovFree(desc->data == nullptr ? given : desc->data);
        }
    }
    freeAll(blocks);
}

// A generated packet, whole and cut at every length (the header's body
// length kept, and set to what is left), then a few byte flips.
void decodeAll(const std::string &group, const Bytes &p, Rng &rng) {
    begin(group);
    decodeCase(p, true);
    {
        Bytes copy(p);
        PacketCursor cursor{copy.data(), static_cast<uint32_t>(copy.size())};
        HeaderInfo info{};
        DecodeResult fp{};
        current->u64(TROV_DecodeFP(&info, &fp, &cursor));
        current->u64(fp.type);
        hashHeader(info);
    }
    for (size_t cut = 0; cut < p.size(); ++cut) {
        Bytes part(p.begin(), p.begin() + static_cast<std::ptrdiff_t>(cut));
        begin(group);
        decodeCase(part, false);
        if (cut >= 20) {
            part[8] = uint8_t((cut - 20) >> 8), part[9] = uint8_t(cut - 20);
            begin(group);
            decodeCase(part, false);
        }
    }
    for (int flip = 0; flip < 3; ++flip) {
        Bytes changed(p);
        changed[rng.below(uint32_t(p.size()))] ^= uint8_t(1 + rng.below(255));
        begin(group);
        decodeCase(changed, false);
    }
}

std::string name(const char *format, unsigned a, unsigned b = 0) {
    char text[96];
    std::snprintf(text, sizeof text, format, a, b);
    return text;
}

void functionUnitCorpus(Rng &rng) {
    for (uint8_t version : {uint8_t{TROV_PROTOCOL_VERSION}, uint8_t{TROV_PROTOCOL_VERSION + 1}})
        for (unsigned code = 0; code <= 0xFF; ++code)
            for (uint32_t longest : {4u, 12u, 32u, 64u})
                decodeAll(name("decode-fu v0x%02x code 0x%04x", version, code),
                          packet(version, uint16_t(code), 1, rng.bytes(rng.below(longest)), rng), rng);
    // Unit types pick which bodies are decoded at all.
    for (unsigned unit : {0u, 2u, 4u, 8u, 9u, 18u, 23u, 24u, 25u, 31u, 33u})
        for (unsigned code = 0; code <= 0x86; ++code) {
            begin(name("decode-fu unit %u", unit));
            decodeCase(packet(TROV_PROTOCOL_VERSION, uint16_t(code), uint16_t(unit), rng.bytes(rng.below(24)), rng), true);
        }
}

// Event-list bodies: long framing (0x4d) and short framing (0x0a).
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
        const Bytes event = rng.bytes(rng.below(rng.below(2) ? 12 : 40));
        body.insert(body.end(), event.begin(), event.end());
    }
    return packet(TROV_PROTOCOL_VERSION, isLong ? 0x4d : 0x0a, 1, body, rng);
}

void eventCorpus(Rng &rng) {
    for (bool isLong : {true, false}) {
        const char *framing = isLong ? "long" : "short";
        for (unsigned code = 0; code <= 0x13F; ++code)
            for (int i = 0; i < 2; ++i)
                decodeAll(std::string("decode-event ") + framing + name(" code 0x%03x", code),
                          eventList(isLong, {uint16_t(code)}, rng), rng);
        for (int i = 0; i < 40; ++i) {
            std::vector<uint16_t> codes(rng.below(5));
            for (auto &c : codes) c = uint16_t(rng.below(2) ? 0x98 + rng.below(0x2E) : rng.below(0x140));
            decodeAll(std::string("decode-event-multi ") + framing, eventList(isLong, codes, rng), rng);
        }
    }
}

// Attribute values under their three body framings: id alone (0x12), after
// a u32 (0x03), after a u16 (0x35).
void attributeCorpus(Rng &rng) {
    for (unsigned id = 0; id <= 300; ++id)
        for (uint16_t code : {0x12, 0x03, 0x35})
            for (uint32_t longest : {8u, 32u}) {
                Bytes body = code == 0x12 ? Bytes{} : code == 0x03 ? rng.bytes(4) : rng.bytes(2);
                put16(body, uint16_t(id));
                const Bytes value = rng.bytes(rng.below(longest));
                body.insert(body.end(), value.begin(), value.end());
                decodeAll(name("decode-attribute id 0x%04x", id), packet(TROV_PROTOCOL_VERSION, code, 1, body, rng), rng);
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
            const Bytes params = rng.bytes(rng.below(longest));
            body.insert(body.end(), params.begin(), params.end());
            decodeAll(name("decode-method code 0x%04x", code), packet(TROV_PROTOCOL_VERSION, 0x1d, 1, body, rng), rng);
        }
}

// Extended event data: decode (into a library block) and encode back, with
// the data cut at every length.
void extendCase(const Bytes &data, uint16_t eventCode, const EventExtendSchema *schema) {
    for (size_t cut = 0; cut <= data.size(); ++cut) {
        Bytes copy(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(cut));
        uint64_t anchor = 0;
        OctetString string{uint16_t(cut), copy.empty() ? reinterpret_cast<uint8_t *>(&anchor) : copy.data()};
        EventExtendList list{};
        BufferDesc buffer{nullptr, 0, 0};
        trov::AllocationLog log;
        TrovResult r = 0;
        const auto blocks = logged(log, [&] {
            r = TROV_DecodeEventExtend(&list, &string, eventCode, schema, TROV_PROTOCOL_VERSION, &buffer);
        });
        current->u64(r);
        current->u64(list.count);
        current->u64(mapPointer(blocks, reinterpret_cast<uintptr_t>(list.entries)));
        current->u64(buffer.capacity), current->u64(buffer.flags);
        hashRegions(blocks);
        if (r == 0) {
            OctetString encoded{0, nullptr};
            BufferDesc out{nullptr, 0, 0};
            trov::AllocationLog log2;
            const auto more = logged(log2, [&] {
                current->u64(TROV_EncodeEventExtend(&list, &encoded, eventCode, schema, TROV_PROTOCOL_VERSION, &out));
            });
            current->u64(encoded.length);
            current->u64(mapPointer(more, reinterpret_cast<uintptr_t>(encoded.data)));
            hashRegions(more);
            freeAll(more);
        }
        freeAll(blocks);
    }
}

void extendCorpus(Rng &rng) {
    for (unsigned id = 0; id <= 300; ++id)
        for (uint16_t eventCode : {0x30, 0x52}) {
            begin(name("extend id 0x%04x", id));
            Bytes data{uint8_t(1 + rng.below(2))};
            for (unsigned item = 0; item < data[0]; ++item) {
                const Bytes value = rng.bytes(rng.below(16));
                put16(data, uint16_t(item == 0 ? id : rng.below(301))), data.push_back(uint8_t(value.size()));
                data.insert(data.end(), value.begin(), value.end());
            }
            extendCase(data, eventCode, nullptr);
        }
    static const EventExtendItemSpec items[] = {{99, 0x14}, {0, 5}, {99, 0x16}, {1, 85}, {99, 0x19}, {99, 0x1A}, {99, 0x03}};
    static const EventExtendSchemaRow rows[] = {{0x52, 2, items}, {0x30, 3, items + 2}, {0x60, 2, items + 5}, {0x61, 1, items + 4}};
    const EventExtendSchema schema{4, rows};
    for (const EventExtendSchemaRow &row : rows)
        for (int i = 0; i < 12; ++i) {
            begin(name("extend schema event 0x%04x", row.eventCode));
            extendCase(rng.bytes(rng.below(40)), row.eventCode, &schema);
        }
}

void optionCorpus(Rng &rng) {
    for (unsigned kind = 0; kind <= 10; ++kind) {
        begin(name("option kind %u", kind));
        uint8_t size = 0;
        current->u64(trovEncCalc_OptionParam(uint8_t(kind), nullptr, &size));
        current->u64(size);
        for (uint32_t room = 0; room <= 10; ++room) {
            uint64_t value[2] = {rng.next(), rng.next()};
            Bytes out(room + 1, 0x5A);
            PacketCursor cursor{out.data(), room};
            trovEncode_OptionParam(&cursor, uint8_t(kind), value);
            current->u64(uint64_t(cursor.position - out.data())), current->u64(cursor.remaining);
            current->add(out.data(), out.size());
            const Bytes input = rng.bytes(room);
            const auto length = uint8_t(rng.below(12));
            current->u64(trovDecCalc_OptionParam(uint8_t(kind), length));
            alignas(8) uint8_t destination[264];
            std::memset(destination, 0x5A, sizeof destination);
            Bytes copy(input);
            uint64_t anchor = 0;
            PacketCursor in{copy.empty() ? reinterpret_cast<uint8_t *>(&anchor) : copy.data(), room};
            void *end = trovDecode_OptionParam(uint8_t(kind), length, destination, &in);
            current->u64(end == nullptr ? ~0ull : uint64_t(static_cast<uint8_t *>(end) - destination));
            current->u64(in.remaining);
            current->add(destination, sizeof destination);
        }
    }
}

void headerCorpus(Rng &rng) {
    for (int i = 0; i < 200; ++i) {
        begin("header");
        Bytes raw = rng.bytes(24);
        if (rng.below(4) != 0) raw[2] = TROV_PROTOCOL_VERSION;
        const uint32_t remaining = rng.below(25);
        PacketCursor cursor{raw.data(), remaining};
        HeaderInfo info{};
        current->u64(TROV_DecodeHeader(&info, &cursor));
        hashHeader(info);
        for (uint32_t index = 0; index <= 10; ++index) {
            uint32_t out = 0, value = uint32_t(rng.next());
            current->u64(TROV_GetFromPacket(index, &cursor, &out)), current->u64(out);
            current->u64(TROV_GetFromInfo(index, &info, &out)), current->u64(out);
            current->u64(TROV_SetToInfo(index, &info, &value)), hashHeader(info);
            current->u64(TROV_SetToPacket(index, &cursor, &value));
        }
        current->add(raw.data(), raw.size());
        Bytes encoded(24, 0x5A);
        PacketCursor out{encoded.data(), remaining};
        current->u64(TROV_EncodeHeader(&info, &out));
        current->add(encoded.data(), encoded.size());
        uint16_t size = 0;
        current->u64(TROV_GetEventPacketSize(&info, uint16_t(rng.below(0x140)), raw.data(), &size));
    }
}

Bytes readFile(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The seed corpora: whole packets (with the fuzz target's header, field and
// option reads) and event-list bodies under both framings.
void fuzzCorpus(Rng &rng) {
    const std::string root = TROV_SOURCE_DIR "/fuzz/corpus/";
    for (const char *target : {"fuzz_decode_packet", "fuzz_event_lists"}) {
        std::vector<std::string> files;
        for (const auto &entry : std::filesystem::directory_iterator(root + target)) files.push_back(entry.path().filename());
        std::sort(files.begin(), files.end());
        for (const std::string &file : files) {
            const Bytes bytes = readFile(root + target + "/" + file);
            const std::string group = std::string(target) + " " + file;
            if (std::string(target) == "fuzz_event_lists") {
                decodeAll(group, packet(TROV_PROTOCOL_VERSION, 0x4d, 1, bytes, rng), rng);
                decodeAll(group, packet(TROV_PROTOCOL_VERSION, 0x0a, 1, bytes, rng), rng);
                continue;
            }
            decodeAll(group, bytes, rng);
            Bytes copy(bytes);
            uint64_t anchor = 0;
            PacketCursor cursor{copy.empty() ? reinterpret_cast<uint8_t *>(&anchor) : copy.data(), uint32_t(copy.size())};
            HeaderInfo info{};
            current->u64(TROV_DecodeHeader(&info, &cursor));
            for (uint32_t index = 0; index < 11; ++index) {
                uint32_t out = 0;
                current->u64(TROV_GetFromPacket(index, &cursor, &out)), current->u64(out);
            }
            alignas(8) uint8_t record[264] = {};
            PacketCursor options = cursor;
            while (options.remaining >= 2) {
                const uint8_t kind = options.position[0], length = options.position[1];
                options.position += 2, options.remaining -= 2;
                if (trovDecCalc_OptionParam(kind, length) > sizeof record) break;
                if (trovDecode_OptionParam(kind, length, record, &options) == nullptr) break;
            }
            current->u64(options.remaining);
            current->add(record, sizeof record);
        }
    }
}

std::string expectations() {
    std::ostringstream text;
    for (const auto &[group, g] : groups) {
        char line[160];
        std::snprintf(line, sizeof line, "%s %u %016" PRIx64 "\n", group.c_str(), g.cases, g.hash.h);
        text << line;
    }
    return text.str();
}

TEST(DifferentialCorpus, EveryOutputMatchesTheRecordedBaseline) {
    TROV_InitCoder();
    groups.clear();
    Rng rng{0x7E570C0DEull};
    functionUnitCorpus(rng);
    eventCorpus(rng);
    attributeCorpus(rng);
    methodCorpus(rng);
    extendCorpus(rng);
    optionCorpus(rng);
    headerCorpus(rng);
    fuzzCorpus(rng);
    const std::string actual = expectations();

    if (const char *record = std::getenv("TROV_DIFFERENTIAL_RECORD")) {
        std::ofstream(record, std::ios::binary) << actual;
        GTEST_SUCCEED() << "recorded " << groups.size() << " groups to " << record;
        return;
    }
    // Lines are "<group> <cases> <hash>"; a group missing on either side differs.
    const auto split = [](const std::string &text) {
        std::map<std::string, std::string> lines;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);) {
            const size_t cases = line.rfind(' ', line.rfind(' ') - 1);
            if (cases != std::string::npos) lines[line.substr(0, cases)] = line.substr(cases + 1);
        }
        return lines;
    };
    const Bytes file = readFile(TROV_SOURCE_DIR "/tests/data/differential-expectations.txt");
    auto expected = split(std::string(file.begin(), file.end()));
    const auto got = split(actual);
    ASSERT_FALSE(expected.empty()) << "no expectations; record them with TROV_DIFFERENTIAL_RECORD";
    std::vector<std::string> differing;
    for (const auto &[group, value] : got)
        if (expected.count(group) == 0 || expected[group] != value) differing.push_back(group);
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
