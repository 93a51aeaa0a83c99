// The fixed-size value codecs: every member's sizes and identifiers against
// the protocol's member table, empty arrays, short packets, the two rows that
// test their count prefix narrowly, row 257's overflow check, golden vectors
// and a record size that wraps its 16 bits.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "api/Dispatch.h"

namespace trov {
namespace {

constexpr uint8_t kVersion = 0x10;
using Bytes = std::vector<uint8_t>;

// The member table: row, element wire bytes W, count prefix P, element record
// bytes M (scalar-only types: the record size reported), and the row's
// identifier list as its length, first entry and sum.
struct Member {
    uint16_t row;
    uint8_t W, P, M;
    uint16_t ids, first;
    uint32_t idSum;
};
constexpr Member kMembers[] = {
    {6, 1, 0, 8, 289, 0x00CB, 1086751}, {8, 2, 0, 8, 10, 0x0880, 35772}, {130, 2, 0, 8, 56, 0x0023, 223837},
    {10, 3, 0, 8, 9, 0x08D8, 21177}, {41, 3, 0, 8, 4, 0x1778, 26005}, {101, 3, 0, 8, 2, 0x08A6, 5219},
    {138, 3, 0, 8, 1, 0x08C7, 2247}, {12, 4, 0, 8, 4, 0x08D5, 10976}, {62, 4, 0, 8, 1, 0x138D, 5005},
    {85, 4, 0, 8, 88, 0x00EA, 409714}, {125, 4, 0, 8, 1, 0x0BB9, 3001}, {131, 4, 0, 8, 11, 0x0079, 24119},
    {14, 5, 0, 8, 3, 0x0BBB, 9405}, {17, 5, 0, 8, 6, 0x0123, 9196}, {24, 5, 0, 8, 1, 0x2E84, 11908},
    {96, 5, 0, 8, 21, 0x08B1, 174591}, {118, 5, 0, 8, 5, 0x0FB0, 19065}, {137, 5, 0, 8, 1, 0x0C72, 3186},
    {154, 5, 0, 8, 1, 0x0423, 1059}, {243, 5, 0, 8, 1, 0x1026, 4134}, {80, 6, 0, 8, 1, 0x03F0, 1008},
    {134, 6, 0, 8, 3, 0x0C38, 7287}, {190, 6, 0, 16, 2, 0x0921, 4669}, {205, 6, 0, 8, 2, 0x0931, 4707},
    {206, 6, 0, 8, 2, 0x0150, 2718}, {141, 7, 0, 8, 2, 0x0915, 4683}, {245, 7, 0, 8, 1, 0x0977, 2423},
    {86, 8, 0, 8, 32, 0x36B4, 166785}, {135, 8, 0, 8, 1, 0x0C6B, 3179}, {84, 9, 0, 16, 1, 0x1771, 6001},
    {95, 9, 0, 16, 7, 0x084F, 13070}, {136, 9, 0, 16, 3, 0x087A, 7521}, {167, 9, 0, 16, 1, 0x0C8C, 3212},
    {180, 9, 0, 16, 2, 0x0909, 4643}, {4, 10, 0, 16, 1, 0x177A, 6010}, {111, 10, 0, 16, 2, 0x0894, 4408},
    {129, 10, 0, 16, 1, 0x177F, 6015}, {47, 11, 0, 16, 1, 0x2988, 10632}, {116, 11, 0, 16, 1, 0x0C70, 3184},
    {128, 11, 0, 16, 2, 0x088F, 3253}, {191, 11, 0, 16, 1, 0x0920, 2336}, {7, 12, 0, 16, 1, 0x08B6, 2230},
    {90, 12, 0, 16, 2, 0x0C28, 6225}, {126, 12, 0, 16, 1, 0x0BC6, 3014}, {44, 13, 0, 16, 1, 0x1776, 6006},
    {75, 13, 0, 16, 1, 0x177E, 6014}, {98, 13, 0, 16, 2, 0x07ED, 4242}, {214, 13, 0, 16, 1, 0x1789, 6025},
    {74, 14, 0, 24, 1, 0x1779, 6009}, {192, 14, 0, 24, 1, 0x091F, 2335}, {228, 15, 0, 24, 1, 0x0955, 2389},
    {91, 16, 0, 16, 5, 0x2B01, 39218}, {145, 16, 0, 16, 5, 0x043D, 17159}, {157, 16, 0, 16, 2, 0x36B3, 16438},
    {217, 16, 0, 24, 1, 0x0945, 2373}, {92, 17, 0, 24, 1, 0x0C75, 3189}, {32, 18, 0, 24, 1, 0x043A, 1082},
    {83, 18, 0, 24, 1, 0x1772, 6002}, {197, 18, 0, 24, 1, 0x014A, 330}, {193, 19, 0, 24, 1, 0x0922, 2338},
    {146, 20, 0, 24, 3, 0x0FA4, 12171}, {49, 22, 0, 32, 1, 0x2DBC, 11708}, {58, 22, 0, 32, 1, 0x0BCA, 3018},
    {222, 25, 0, 32, 1, 0x0444, 1092}, {238, 28, 0, 32, 1, 0x0965, 2405}, {33, 32, 0, 32, 1, 0x2B07, 11015},
    {147, 48, 0, 48, 1, 0x0FAA, 4010}, {20, 64, 0, 64, 2, 0x0118, 592}, {16, 1, 1, 1, 21, 0x011E, 71342},
    {9, 2, 1, 2, 127, 0x0842, 357885}, {139, 2, 1, 2, 3, 0x0FBF, 8726}, {11, 3, 1, 3, 11, 0x006C, 32480},
    {142, 3, 1, 4, 2, 0x1018, 5164}, {221, 3, 1, 4, 1, 0x094D, 2381}, {2, 4, 1, 4, 7, 0x0090, 2396},
    {13, 4, 1, 4, 5, 0x08E0, 10859}, {53, 4, 1, 4, 1, 0x07DA, 2010}, {93, 4, 1, 4, 8, 0x0084, 2378},
    {132, 4, 1, 4, 3, 0x0FB4, 4711}, {15, 5, 1, 5, 1, 0x0C06, 3078}, {18, 5, 1, 8, 3, 0x177D, 24033},
    {70, 5, 1, 6, 1, 0x08A8, 2216}, {97, 5, 1, 8, 2, 0x004E, 6108}, {117, 5, 1, 8, 2, 0x08BA, 3313},
    {119, 5, 1, 6, 1, 0x0C41, 3137}, {48, 6, 1, 8, 1, 0x2986, 10630}, {71, 6, 1, 8, 1, 0x0867, 2151},
    {81, 6, 1, 6, 1, 0x03EF, 1007}, {120, 6, 1, 8, 3, 0x0FC2, 7254}, {181, 6, 1, 6, 1, 0x0913, 2323},
    {219, 6, 1, 6, 1, 0x0442, 1090}, {56, 7, 1, 8, 1, 0x08BC, 2236}, {1, 8, 1, 8, 2, 0x177C, 12028},
    {87, 8, 1, 8, 2, 0x2CFC, 13914}, {152, 8, 1, 8, 1, 0x07F0, 2032}, {89, 9, 1, 12, 2, 0x0FC3, 15556},
    {216, 9, 1, 12, 1, 0x0C93, 3219}, {29, 10, 1, 12, 1, 0x0434, 1076}, {35, 13, 1, 16, 1, 0x0C55, 3157},
    {52, 13, 1, 16, 1, 0x0874, 2164}, {114, 13, 1, 16, 1, 0x0429, 1065}, {127, 13, 1, 20, 1, 0x0BF9, 3065},
    {213, 17, 1, 20, 1, 0x1788, 6024}, {45, 18, 1, 20, 1, 0x0C78, 3192}, {69, 18, 1, 20, 1, 0x0868, 2152},
    {252, 18, 1, 20, 1, 0x0984, 2436}, {55, 21, 1, 24, 1, 0x086F, 2159}, {59, 22, 1, 24, 1, 0x0BFE, 3070},
    {140, 2, 2, 2, 22, 0x0070, 42336}, {241, 2, 2, 2, 1, 0x0449, 1097}, {100, 3, 2, 4, 1, 0x08A7, 2215},
    {143, 3, 2, 4, 27, 0x0040, 8107}, {94, 4, 2, 4, 17, 0x00A7, 43352}, {133, 4, 2, 4, 0, 0x0000, 0},
    {54, 5, 2, 6, 1, 0x0806, 2054}, {99, 5, 2, 6, 1, 0x080E, 2062}, {156, 5, 2, 8, 1, 0x03F2, 1010},
    {257, 9, 2, 12, 1, 0x044B, 1099}, {88, 8, 2, 8, 2, 0x00F1, 1329}, {155, 9, 2, 12, 1, 0x0419, 1049},
    {188, 10, 2, 12, 1, 0x091D, 2333}, {196, 12, 2, 12, 1, 0x014B, 331},
};

const ValueCodecOps &ops(uint16_t row) { return AttributeCodecTable[row - 1].ops; }
uint32_t roundUp8(uint32_t n) { return (n + 7) & ~7u; }
bool narrow(uint16_t row) { return row == 133 || row == 143; }

// An array header as the host fills it: the count at the prefix's width.
struct alignas(8) Header {
    uint8_t bytes[16] = {};
    Header(uint16_t count, uint8_t prefix, const void *elements = nullptr) {
        if (prefix == 1) bytes[0] = static_cast<uint8_t>(count);
        else std::memcpy(bytes, &count, 2);
        std::memcpy(bytes + 8, &elements, sizeof elements);
    }
    Bytes vec() const { return Bytes(bytes, bytes + 16); }
};

// A packet: `prefix` bytes holding `count` (big-endian), then `body` bytes of
// filler, in a heap block of exactly that size.
struct Packet {
    std::unique_ptr<uint8_t[]> data;
    uint32_t size;
    Packet(uint8_t prefix, uint32_t count, uint32_t body) : data(new uint8_t[prefix + body]), size(prefix + body) {
        std::memset(data.get(), 0x5C, size);
        if (prefix == 1) data[0] = static_cast<uint8_t>(count);
        if (prefix == 2) data[0] = static_cast<uint8_t>(count >> 8), data[1] = static_cast<uint8_t>(count);
    }
    PacketCursor cursor() const { return {data.get(), size}; }
};

TEST(FixedValue, MembersMatchTheirRowsSizesAndIdentifiers) {
    int byPrefix[3] = {};
    for (const Member &m : kMembers) {
        SCOPED_TRACE(testing::Message() << "row " << m.row);
        ++byPrefix[m.P];
        uint32_t n = 0, sum = 0;
        for (const uint16_t *id = AttributeCodecTable[m.row - 1].identifiers; *id != 0; ++id, ++n) sum += *id;
        EXPECT_EQ(n, m.ids);
        EXPECT_EQ(AttributeCodecTable[m.row - 1].identifiers[0], m.first);
        EXPECT_EQ(sum, m.idSum);

        // Packet sizes: W in scalar form; P + 8W for an array of 8, whose
        // count a scalar-only type must not read.
        Header eight(8, m.P == 0 ? 2 : m.P);
        WireSize size;
        ASSERT_EQ(ops(m.row).encCalc(eight.bytes, 0, &size, kVersion), 0u);
        EXPECT_EQ(size.bytes, m.W);
        ASSERT_EQ(ops(m.row).encCalc(eight.bytes, 1, &size, kVersion), 0u);
        EXPECT_EQ(size.bytes, m.P == 0 ? m.W : m.P + 8 * m.W);

        // Record sizes: scalar M (rounded up to 8 for prefixed types); an
        // array of 8 shows the element stride exactly, 16 + 8M.
        for (uint8_t isArray : {0, 1}) {
            const bool array = isArray != 0 && m.P != 0;
            Packet p(array ? m.P : 0, 8, array ? 8u * m.W : m.W);
            PacketCursor c = p.cursor();
            RecordSize r{};
            ASSERT_EQ(ops(m.row).decCalc(&c, isArray, &r, kVersion), 0u);
            EXPECT_EQ(c.remaining, 0u);
            EXPECT_EQ(r.bytes, array ? 16 + 8 * m.M : m.P == 0 ? m.M : roundUp8(m.M));
            EXPECT_EQ(r.extent, r.bytes);
        }
    }
    EXPECT_EQ(byPrefix[0], 68);
    EXPECT_EQ(byPrefix[1], 40);
    EXPECT_EQ(byPrefix[2], 14);
}

// An empty array is its count prefix alone and decodes to a 16-byte head
// with a null element pointer. A packet without room for the prefix, or for
// three elements less one byte, fails with the cursor before the prefix;
// only the narrow rows let that last short element through.
TEST(FixedValue, EmptyArraysAndShortPackets) {
    for (const Member &m : kMembers) {
        if (m.P == 0) continue;
        SCOPED_TRACE(testing::Message() << "row " << m.row);
        WireSize size{0xAAAA, 0xAAAA};
        ASSERT_EQ(ops(m.row).encCalc(Header(0, m.P).bytes, 1, &size, kVersion), 0u);
        EXPECT_EQ(size.bytes, m.P);
        Packet empty(m.P, 0, 0);
        PacketCursor c = empty.cursor();
        RecordSize r{};
        ASSERT_EQ(ops(m.row).decCalc(&c, 1, &r, kVersion), 0u);
        EXPECT_EQ(r.bytes, 16);
        alignas(8) uint8_t record[16];
        std::memset(record, 0xEE, sizeof record);
        PacketCursor d = empty.cursor();
        EXPECT_EQ(ops(m.row).decode(record, &d, 1, kVersion), record + 16);
        Bytes head(16, 0xEE);
        std::fill(head.begin(), head.begin() + m.P, 0); // the count at the prefix's width
        std::fill(head.begin() + 8, head.end(), 0);     // a null element pointer
        EXPECT_EQ(Bytes(record, record + 16), head);

        const Packet shorts[] = {{0, 0, 0}, {static_cast<uint8_t>(m.P - 1), 0, 0}, {m.P, 3, 3u * m.W - 1}};
        for (const Packet &p : shorts) {
            PacketCursor t = p.cursor();
            const TrovResult result = ops(m.row).decCalc(&t, 1, &r, kVersion);
            if (narrow(m.row) && p.size == m.P + 3u * m.W - 1) {
                EXPECT_EQ(result, 0u);
                EXPECT_EQ(r.bytes, 16 + roundUp8(3 * m.M));
                continue;
            }
            EXPECT_EQ(result, 5u) << p.size << " bytes";
            EXPECT_EQ(t.position, p.data.get());
        }
    }
    // Count 2 in 7 bytes in all: row 143 passes, row 100 (the same W and M,
    // the full test) does not.
    Packet p143(2, 2, 5), p100(2, 2, 5);
    PacketCursor c143 = p143.cursor(), c100 = p100.cursor();
    RecordSize r{};
    EXPECT_EQ(ops(143).decCalc(&c143, 1, &r, kVersion), 0u);
    EXPECT_EQ(r.bytes, 24);
    EXPECT_EQ(ops(100).decCalc(&c100, 1, &r, kVersion), 5u);
    EXPECT_EQ(c100.remaining, 7u);
}

TEST(FixedValue, Row257RefusesPacketSizesAbove16Bits) {
    WireSize size{0xAAAA, 0xAAAA};
    EXPECT_EQ(ops(257).encCalc(Header(7282, 2).bytes, 1, &size, kVersion), 5u); // 65,540 bytes
    EXPECT_EQ(size.bytes, 0xAAAA);
    EXPECT_EQ(ops(257).encCalc(Header(7281, 2).bytes, 1, &size, kVersion), 0u);
    EXPECT_EQ(size.bytes, 65531);
    EXPECT_EQ(ops(257).encCalc(Header(7282, 2).bytes, 0, &size, kVersion), 0u);
    EXPECT_EQ(size.bytes, 9);
    // Other rows keep the protocol's 16-bit arithmetic: row 155 has the same
    // W and P, and its size.bytes wraps.
    EXPECT_EQ(ops(155).encCalc(Header(7282, 2).bytes, 1, &size, kVersion), 0u);
    EXPECT_EQ(size.bytes, 4);
}

// Row 1: four bytes, then a big-endian u32; the record holds the u32 at 4.
// Row 257: u32, u8, u32; the record holds them at 0, 4 and 8 (12 bytes).
// Arrays of two elements; element records as a little-endian host holds them.
TEST(FixedValue, GoldenVectorsOfRows1And257) {
    struct Golden {
        uint16_t row;
        Bytes wire, elements;
    };
    const Golden goldens[] = {
        {1,
         {0x02, 0x11, 0x22, 0x33, 0x44, 0x89, 0xAB, 0xCD, 0xEF, 0xF1, 0xF2, 0xF3, 0xF4, 0x00, 0x00, 0x01, 0x00},
         {0x11, 0x22, 0x33, 0x44, 0xEF, 0xCD, 0xAB, 0x89, 0xF1, 0xF2, 0xF3, 0xF4, 0x00, 0x01, 0x00, 0x00}},
        {257,
         {0x00, 0x02, 0x12, 0x34, 0x56, 0x78, 0x9A, 0xDE, 0xAD, 0xBE, 0xEF,
          0x80, 0x00, 0x00, 0x01, 0x7F, 0x00, 0x00, 0x00, 0x02},
         {0x78, 0x56, 0x34, 0x12, 0x9A, 0, 0, 0, 0xEF, 0xBE, 0xAD, 0xDE,
          0x01, 0x00, 0x00, 0x80, 0x7F, 0, 0, 0, 0x02, 0x00, 0x00, 0x00}},
    };
    for (const Golden &g : goldens) {
        SCOPED_TRACE(testing::Message() << "row " << g.row);
        const uint8_t prefix = g.row == 1 ? 1 : 2;
        const uint32_t recordBytes = 16 + roundUp8(static_cast<uint32_t>(g.elements.size()));
        Bytes wire = g.wire;
        PacketCursor c{wire.data(), static_cast<uint32_t>(wire.size())};
        RecordSize r{};
        ASSERT_EQ(ops(g.row).decCalc(&c, 1, &r, kVersion), 0u);
        EXPECT_EQ(r.bytes, recordBytes);
        alignas(8) uint8_t record[64] = {};
        PacketCursor d{wire.data(), static_cast<uint32_t>(wire.size())};
        EXPECT_EQ(ops(g.row).decode(record, &d, 1, kVersion), record + recordBytes);
        EXPECT_EQ(Bytes(record, record + 16), Header(2, prefix, record + 16).vec());
        EXPECT_EQ(Bytes(record + 16, record + 16 + g.elements.size()), g.elements);

        // Host-built elements encode to the same bytes; the scalar form is
        // the first element alone.
        Bytes host = g.elements;
        Bytes out(g.wire.size());
        PacketCursor e{out.data(), static_cast<uint32_t>(out.size())};
        ops(g.row).encode(&e, Header(2, prefix, host.data()).bytes, 1, kVersion);
        EXPECT_EQ(out, g.wire);
        const size_t w = (g.wire.size() - prefix) / 2;
        Bytes one(w);
        PacketCursor s{one.data(), static_cast<uint32_t>(w)};
        ops(g.row).encode(&s, host.data(), 0, kVersion);
        EXPECT_EQ(one, Bytes(g.wire.begin() + prefix, g.wire.begin() + prefix + w));
    }
}

// 40,000 two-byte elements: the reported 16-bit figure wraps, the extent does
// not, and the decode stays inside a block of the extent.
TEST(FixedValue, WrappedRecordSizeDecodesIntoItsExtent) {
    const uint32_t n = 40000;
    Packet p(2, n, 2 * n);
    for (uint32_t i = 0; i < n; ++i) p.data[2 + 2 * i] = static_cast<uint8_t>(i >> 8), p.data[3 + 2 * i] = static_cast<uint8_t>(i);
    PacketCursor c = p.cursor();
    RecordSize r{};
    ASSERT_EQ(ops(140).decCalc(&c, 1, &r, kVersion), 0u);
    EXPECT_EQ(r.bytes, (80000 + 16) % 65536);
    EXPECT_EQ(r.extent, 80016u);
    EXPECT_EQ(c.remaining, 0u);
    std::unique_ptr<uint8_t[]> block(new uint8_t[r.extent]);
    PacketCursor d = p.cursor();
    EXPECT_EQ(ops(140).decode(block.get(), &d, 1, kVersion), block.get() + 80016);
    uint16_t count, first, last;
    std::memcpy(&count, block.get(), 2);
    std::memcpy(&first, block.get() + 16, 2);
    std::memcpy(&last, block.get() + 16 + 2 * (n - 1), 2);
    EXPECT_EQ(count, n);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(last, static_cast<uint16_t>(n - 1));
}

} // namespace
} // namespace trov
