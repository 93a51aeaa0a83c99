// Decoded records sized to the byte, in every family.
//
// A decode runs in two passes: a size pass reports the room the record needs
// (a RecordSize extent, or the buffer a body decode asks of its caller) and
// the decode pass fills it. Here every decode gets a heap block of exactly
// the reported room followed by 16 canary bytes, for counts and lengths at
// the rounding boundaries (0, 1, 7, 8, 255, 256 where the prefix allows). A
// size pass that forgets a terminator byte or a rounding lets the decode
// break the canary, or return an end beyond the room. Every reply decoded
// so (bodies, methods inside 0x1d, events in both lists) also encodes back
// to its packet through TROV_EncodeReply.
//
// The wire input is built from the families' own descriptions (value types,
// event layouts, method field lists, body field lists, structure
// descriptors), so every row of every table meets the same lengths.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "TrovCodec.h"
#include "TrovReplyEncode.h"
#include "api/ReplyPacket.h"
#include "api/Dispatch.h"
#include "api/Initialised.h"
#include "attributes/DataTypes.h"
#include "attributes/FixedValueTypes.h"
#include "attributes/RecordValueTypes.h"
#include "attributes/StructureValueTypes.h"
#include "engine/Cursor.h"
#include "events/AttributeEvents.h"
#include "events/StringEvents.h"
#include "units/BodyDescription.h"
#include "units/FunctionUnitBodies.h"
#include "units/MethodCodecs.h"

namespace trov {
namespace {

constexpr uint32_t kLengths[] = {0, 1, 7, 8, 255, 256};

// ---- exact room ----------------------------------------------------------------

constexpr uint8_t kCanary[16] = {0xA5, 0xB8, 0x9F, 0xF2, 0xD1, 0x34, 0x0B, 0x6E,
                                 0x4D, 0xA0, 0x87, 0x9A, 0xF9, 0xDC, 0x33, 0x16};

// A heap block of exactly `room` zeroed bytes (as the library zeroes a
// buffer before decoding into it), then the canary.
class ExactRoom {
public:
    explicit ExactRoom(uint32_t room) : room_(room), block_(room + sizeof kCanary) {
        std::copy(std::begin(kCanary), std::end(kCanary), block_.begin() + room);
    }
    uint8_t *data() const { return const_cast<uint8_t *>(block_.data()); }
    const uint8_t *end() const { return block_.data() + room_; }
    bool canaryIntact() const { return std::equal(std::begin(kCanary), std::end(kCanary), end()); }
    // Whether [p, p + n) lies inside the room.
    bool holds(const void *p, uint32_t n = 0) const {
        const auto *b = static_cast<const uint8_t *>(p);
        return b >= block_.data() && b <= end() && n <= static_cast<uint32_t>(end() - b);
    }

private:
    uint32_t room_;
    std::vector<uint8_t> block_;
};

// ---- wire input ------------------------------------------------------------------

// n, as far as a count of `width` bytes holds it.
uint32_t fit(uint32_t n, uint32_t width) { return std::min(n, width == 1 ? 0xFFu : 0xFFFFu); }

struct Wire {
    std::vector<uint8_t> bytes;

    void number(uint32_t width, uint32_t v) { putWire(bytes, v, width); }
    // n bytes of letters: never zero, never a canary byte.
    void fill(uint32_t n) {
        for (uint32_t i = 0; i < n; ++i) bytes.push_back(static_cast<uint8_t>('a' + bytes.size() % 26));
    }
    // A count of `width` bytes (n, as far as it holds), then that many
    // elements of elementBytes.
    void counted(uint32_t width, uint32_t n, uint32_t elementBytes) {
        number(width, fit(n, width));
        fill(fit(n, width) * elementBytes);
    }
    void append(const Wire &w) { bytes.insert(bytes.end(), w.bytes.begin(), w.bytes.end()); }
    PacketCursor cursor() { return PacketCursor{bytes.data(), static_cast<uint32_t>(bytes.size())}; }
};

uint16_t attributeId(uint16_t row) { return AttributeCodecTable[row - 1].identifiers[0]; }

// Attribute values the builders nest: a character string (row 149), a
// counted byte array (row 16), a structure whose 16-bit figure is short of
// its extent (row 280: characters, then an array, which resets the figure),
// and (row 0) raw bytes under an identifier without a codec.
constexpr uint16_t kCharsRow = 149, kBytesRow = 16, kProfileRow = 280, kRawRow = 0;
constexpr uint16_t kUnknownId = 0x0001; // the identifier of row 0: no row serves it

// A value type of any family, as its description gives it.
struct ValueShape {
    const FixedValueType *fixed = nullptr;
    const RecordValueType *record = nullptr;
    const Plan *structure = nullptr;
};

ValueShape shapeOfRow(uint16_t row) {
    ValueShape s;
    for (const FixedValueType &t : kFixedValueTypes)
        if (t.row == row) s.fixed = &t;
    for (const RecordValueType &t : kRecordValueTypes)
        if (t.row == row) s.record = &t;
    for (const StructureValueType &t : kStructureValueTypes)
        if (t.row == row) s.structure = t.plan;
    return s;
}

void valueWire(Wire &w, const ValueShape &s, uint32_t n, uint8_t isArray, uint8_t selector = 1);

// A list of identified items: a count of countWidth bytes (n, as far as it
// holds), then per item a u16 identifier, a length of lengthWidth bytes and
// the value in array form. Items cycle through `rows`; the first is n long,
// the others 0 to 9.
void itemListWire(Wire &w, uint32_t n, uint32_t countWidth, uint32_t lengthWidth,
                  std::initializer_list<uint16_t> rows) {
    const uint32_t count = fit(n, countWidth);
    w.number(countWidth, count);
    for (uint32_t i = 0; i < count; ++i) {
        const uint16_t row = rows.begin()[i % rows.size()];
        const uint32_t length = i == 0 ? n : (n + i) % 10;
        Wire value;
        if (row == kRawRow) value.fill(fit(length, lengthWidth));
        else valueWire(value, shapeOfRow(row), length, 1);
        w.number(2, row == kRawRow ? kUnknownId : attributeId(row));
        w.number(lengthWidth, static_cast<uint32_t>(value.bytes.size())); // codecs read the value, not this
        w.append(value);
    }
}

// The wire form of any layout of the field model with every count and
// length n (as far as its prefix holds).
void planWire(Wire &w, const Plan &p, uint32_t n) {
    uint32_t count = 0;
    for (uint8_t i = 0; i < p.count; ++i) {
        const Field &f = p.fields[i];
        const KindInfo &k = kindInfo(f.kind);
        switch (f.kind) {
        case FieldKind::Bytes: w.fill(f.size); break;
        case FieldKind::Count: w.number(f.prefix, count = fit(n, f.prefix)); break;
        case FieldKind::Rest: w.fill(n); break;
        case FieldKind::Attribute:
            w.number(2, attributeId(kProfileRow));
            valueWire(w, shapeOfRow(kProfileRow), n, 1);
            break;
        case FieldKind::ReservedValue:
            if (n % 2 == 0) { // type 0x14, a 12-byte value, has room reserved
                w.number(2, 0x14);
                w.fill(12);
                break;
            }
            [[fallthrough]]; // type 0x08 has none and is read over
        case FieldKind::TypedValue:
            w.number(2, 0x08);
            valueWire(w, shapeOfRow(kCharsRow), n, 1);
            break;
        case FieldKind::Option: // a raw kind of n bytes
            w.number(1, 6 + n % 3);
            w.counted(1, n, 1);
            break;
        case FieldKind::Attributes: itemListWire(w, n, 2, 2, {kBytesRow}); break; // nested: known rows only
        case FieldKind::EventAttributes: itemListWire(w, n, 2, 2, {kCharsRow, kRawRow, kProfileRow}); break;
        default:
            if (!k.counted) w.fill(k.wire);
            else if (f.prefix == 0) w.fill(count * k.wire);
            else w.counted(f.prefix, n, k.wire);
            break;
        }
    }
}

// u8 count, then per option kind, length and value; the kinds cycle through
// the fixed ones (0 to 5) and raw ones of varying length.
void optionListWire(Wire &w, uint32_t n) {
    w.number(1, fit(n, 1));
    for (uint32_t i = 0; i < fit(n, 1); ++i) {
        const auto kind = static_cast<uint8_t>(i % 8);
        uint8_t length = static_cast<uint8_t>(i * 5 % 17);
        if (kind <= 5) trovEncCalc_OptionParam(kind, nullptr, &length); // the kind's own length
        w.number(1, kind);
        w.number(1, length);
        w.fill(length);
    }
}

// A record described for the structure codec: every count n, except inside
// nested records and array elements (so that 256 hops stay small).
void structureWire(Wire &w, const Plan &d, uint32_t n) {
    uint32_t count = 0;
    for (uint8_t i = 0; i < d.count; ++i) {
        const Field &f = d.fields[i];
        switch (f.kind) {
        case FieldKind::Count: w.number(f.prefix, count = fit(n, f.prefix)); break;
        case FieldKind::Octets:
        case FieldKind::Chars: w.fill(count); break;
        case FieldKind::Record: structureWire(w, *f.nested, n % 10); break;
        case FieldKind::Options: optionListWire(w, n); break;
        case FieldKind::Records:
            for (uint32_t k = 0; k < count; ++k) structureWire(w, *f.nested, (n + k) % 10);
            break;
        case FieldKind::Entry: {
            Wire value;
            valueWire(value, shapeOfRow(kCharsRow), n, 1);
            w.number(2, attributeId(kCharsRow));
            w.number(2, static_cast<uint32_t>(value.bytes.size()));
            w.append(value);
            break;
        }
        default: w.fill(kindInfo(f.kind).wire); break;
        }
    }
}

// A value in scalar form (isArray 0) or array form; a selector type's
// variant `selector`. Arrays of records hold up to two elements.
void valueWire(Wire &w, const ValueShape &s, uint32_t n, uint8_t isArray, uint8_t selector) {
    if (s.structure != nullptr) return structureWire(w, *s.structure, n);
    if (s.fixed != nullptr) {
        if (s.fixed->prefixBytes == 0 || isArray == 0) return w.fill(s.fixed->wireBytes);
        return w.counted(s.fixed->prefixBytes, n, s.fixed->wireBytes);
    }
    if (s.record->variants != nullptr) {
        w.number(1, selector);
        return planWire(w, valuePlan(s.record->variants->variant[selector - 1]), n);
    }
    const Plan l = valuePlan(s.record->fields);
    if (s.record->prefixBytes == 0 || isArray == 0) return planWire(w, l, n);
    w.number(2, std::min(n, 2u));
    for (uint32_t i = 0; i < std::min(n, 2u); ++i) planWire(w, l, n);
}

// ---- the two checks ----------------------------------------------------------------

// At codec level: sizes the item, decodes it into exactly the extent and
// checks the canary, the returned end and that the whole item was read. The
// structure codec bounds its own writes and drops what does not fit, so for
// it (`fillsExtent`) an under-reported extent shows as an end short of it.
// `kept` receives the decoded record.
template <class Size, class Decode>
void expectInsideExtent(Wire &w, Size size, Decode decode, bool fillsExtent = false,
                        std::optional<ExactRoom> *kept = nullptr) {
    PacketCursor sizing = w.cursor();
    RecordSize reported{};
    ASSERT_EQ(size(sizing, reported), 0u);
    ExactRoom room(reported.extent);
    PacketCursor c = w.cursor();
    const auto *end = static_cast<const uint8_t *>(decode(room.data(), c));
    EXPECT_TRUE(room.canaryIntact()) << "the decode wrote past the extent of " << reported.extent;
    EXPECT_TRUE(room.holds(end)) << "the decode ends " << (end - room.data()) << " bytes in, beyond the extent of "
                                 << reported.extent;
    EXPECT_TRUE(!fillsExtent || end == room.end()) << "the decode dropped data that the extent left no room for";
    EXPECT_EQ(c.remaining, 0u);
    if (kept != nullptr) kept->emplace(std::move(room));
}

// A value also sizes for encoding as its wire, encodes back to it, and every
// shorter packet (a heap block of exactly its bytes) fails the size pass
// without moving the cursor. Structure rows go record first instead (the
// encode fuzz targets; the walk itself: StructureCodecInternalTest). `narrow`: the row tests its count prefix
// narrowly and the value has elements, so a packet one byte short of its
// last element passes the size pass, and still decodes inside its extent.
void expectValueInsideExtent(const ValueCodecOps &ops, Wire &w, uint8_t isArray, bool structure = false,
                             bool narrow = false) {
    const auto size = [&](PacketCursor &c, RecordSize &s) { return ops.decCalc(&c, isArray, &s, TROV_PROTOCOL_VERSION); };
    const auto decode = [&](void *record, PacketCursor &c) { return ops.decode(record, &c, isArray, TROV_PROTOCOL_VERSION); };
    std::optional<ExactRoom> record;
    expectInsideExtent(w, size, decode, structure, &record);
    if (structure || testing::Test::HasFatalFailure()) return;

    WireSize wireSize{0xAAAA, 0xAAAA};
    ASSERT_EQ(ops.encCalc(record->data(), isArray, &wireSize, TROV_PROTOCOL_VERSION), 0u);
    ASSERT_EQ(wireSize.bytes, w.bytes.size());
    std::vector<uint8_t> again(wireSize.bytes);
    PacketCursor e{again.data(), wireSize.bytes};
    ops.encode(&e, record->data(), isArray, TROV_PROTOCOL_VERSION);
    EXPECT_EQ(e.remaining, 0u);
    EXPECT_EQ(again, w.bytes) << "re-encoded bytes differ";

    for (uint32_t n = 0; n < w.bytes.size(); ++n) {
        Wire cut{std::vector<uint8_t>(w.bytes.begin(), w.bytes.begin() + n)};
        if (narrow && n + 1 == w.bytes.size()) {
            SCOPED_TRACE("one byte short of the last element passes the narrow test");
            expectInsideExtent(cut, size, decode);
            continue;
        }
        PacketCursor t = cut.cursor();
        RecordSize s{};
        const TrovResult r = size(t, s);
        ASSERT_TRUE(r != 0 && t.position == cut.bytes.data() && t.remaining == n)
            << "truncated to " << n << " of " << w.bytes.size() << " bytes: result " << r;
    }
}

// The room a decode asks of its caller's buffer: the smallest capacity it
// accepts. A smaller buffer is refused (7) before anything is written, so
// the search writes only into a block of the largest capacity.
template <class Decode>
uint32_t roomAskedFor(Decode decode) {
    std::vector<uint8_t> large(0xFFFF);
    if (decode(large.data(), 0xFFFFu) != TROV_RESULT_OK) return UINT32_MAX;
    uint32_t lo = 0, hi = 0xFFFF;
    while (lo < hi) {
        const uint32_t mid = (lo + hi) / 2;
        if (decode(large.data(), mid) == TROV_RESULT_OK) hi = mid;
        else lo = mid + 1;
    }
    return lo;
}

// Through TROV_DecodeFU: a reply decoded into a caller's record whose
// managed buffer, at `bufferOffset`, is exactly the room the decode asks
// for. `check` looks at the decoded record.
struct Reply {
    TrovResult result;
    std::vector<uint64_t> record; // 8-aligned
    HeaderInfo info{};
};

template <class Check>
void expectReplyInsideItsRoom(const std::vector<uint8_t> &p, size_t recordBytes, size_t bufferOffset, Check check,
                              bool encodesBack = true) {
    auto decode = [&](void *data, uint32_t capacity) {
        Reply r{0, std::vector<uint64_t>((recordBytes + 7) / 8, 0)};
        storeField(r.record.data(), bufferOffset, BufferDesc{data, static_cast<uint16_t>(capacity), 0});
        DecodeResult result{r.record.data(), nullptr, 0};
        const PacketCursor c{const_cast<uint8_t *>(p.data()), static_cast<uint32_t>(p.size())};
        r.result = TROV_DecodeFU(&r.info, &result, &c, nullptr);
        return r;
    };
    const uint32_t asked = roomAskedFor([&](void *data, uint32_t capacity) { return decode(data, capacity).result; });
    ASSERT_NE(asked, UINT32_MAX) << "the reply does not decode";
    ExactRoom room(asked);
    const Reply r = decode(room.data(), asked);
    ASSERT_EQ(r.result, 0u);
    EXPECT_TRUE(room.canaryIntact()) << "the decode wrote past the " << asked << " bytes it asked for";
    check(r, room);
    if (!encodesBack) return;

    // The record encodes back to the packet, allocated and into a buffer of
    // exactly its length; one byte short is refused with nothing written,
    // the body's length set all the same.
    HeaderInfo h = r.info;
    EncodeOutput out{nullptr, 0};
    ASSERT_EQ(TROV_EncodeReply(&h, r.record.data(), &out), 0u);
    EXPECT_EQ(std::vector<uint8_t>(out.data, out.data + out.length), p) << "re-encoded bytes differ";
    trovFree(out.data);
    std::vector<uint8_t> exact(p.size() + 1, 0xCD), shorter(p.size(), 0xCD);
    out = {exact.data(), static_cast<uint32_t>(p.size())};
    ASSERT_EQ(TROV_EncodeReply(&h, r.record.data(), &out), 0u);
    EXPECT_EQ(std::vector<uint8_t>(exact.begin(), exact.end() - 1), p);
    EXPECT_EQ(exact.back(), 0xCD);
    out = {shorter.data(), static_cast<uint32_t>(p.size() - 1)};
    h.bodyLength = 0;
    EXPECT_EQ(TROV_EncodeReply(&h, r.record.data(), &out), TROV_RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(h.bodyLength, p.size() - TROV_HEADER_LENGTH);
    EXPECT_EQ(shorter, std::vector<uint8_t>(p.size(), 0xCD));
}

class ExtentBoundary : public testing::Test {};

std::string named(const char *prefix, uint32_t v, const char *format = "%04X") {
    char digits[8];
    std::snprintf(digits, sizeof digits, format, v);
    return prefix + std::string(digits);
}

// ---- attribute rows and data types ---------------------------------------------------

// Every data type: the attribute row whose value type a code shares, or the
// code's own type.
ValueShape dataTypeShape(uint16_t code) {
    for (const DataTypeRow &d : kDataTypeRows) {
        if (d.code != code) continue;
        if (d.ownFixed >= 0) return {&kOwnFixedTypes[d.ownFixed], nullptr, nullptr};
        if (d.ownRecord >= 0) return {nullptr, &kOwnRecordTypes[d.ownRecord], nullptr};
        return shapeOfRow(d.attributeRow);
    }
    return {};
}

// Every attribute row and every data type; a selector type in each of its
// four variants.
struct ValueCase {
    std::string name;
    const ValueCodecOps *ops;
    ValueShape shape;
    bool narrow; // tests its 2-byte count prefix narrowly on purpose
};

std::vector<ValueCase> allValues() {
    std::vector<ValueCase> cases;
    for (uint16_t r = 1; AttributeCodecTable[r - 1].identifiers != nullptr; ++r)
        cases.push_back({named("Row", r, "%03u"), &AttributeCodecTable[r - 1].ops, shapeOfRow(r), r == 133 || r == 143});
    for (uint16_t code : {0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19, 0x1A}) {
        const DataTypeCodecRow *row = findRow(DataTypeCodecTable, code, TROV_PROTOCOL_VERSION);
        cases.push_back({named("Type", code), row == nullptr ? nullptr : &row->ops, dataTypeShape(code), false});
    }
    return cases;
}

class ValueExtent : public ExtentBoundary, public testing::WithParamInterface<ValueCase> {};

TEST_P(ValueExtent, DecodeStaysInsideTheExtent) {
    const ValueCase &v = GetParam();
    ASSERT_NE(v.ops, nullptr);
    const int variants = v.shape.record != nullptr && v.shape.record->variants != nullptr ? 4 : 1;
    for (uint32_t n : kLengths)
        for (uint8_t isArray = 0; isArray <= 1; ++isArray)
            for (uint8_t variant = 1; variant <= variants; ++variant) {
                SCOPED_TRACE(testing::Message() << "length " << n << ", array form " << int{isArray}
                                                << ", variant " << int{variant});
                Wire w;
                valueWire(w, v.shape, n, isArray, variant);
                expectValueInsideExtent(*v.ops, w, isArray, v.shape.structure != nullptr,
                                        v.narrow && isArray != 0 && n != 0);
            }
}

INSTANTIATE_TEST_SUITE_P(EveryRowAndType, ValueExtent, testing::ValuesIn(allValues()),
                         [](const auto &info) { return info.param.name; });

// ---- events and event lists -------------------------------------------------------------

Wire eventWire(uint16_t code, uint32_t n) {
    Wire w;
    const EventCodec *c = findStringEventOps(code);
    if (c == nullptr) c = findAttributeEventCodec(code);
    if (c != nullptr && c->plan != nullptr) planWire(w, *c->plan, n);
    if (code == 0xC4 || code == 0xC5) structureWire(w, structure_event::kBody, n);
    return w;
}

// Body 0x4d carries events in the long framing, body 0x0a in the short one.
struct Framing {
    uint16_t code;
    bool isLong;
    size_t recordBytes, bufferOffset, entriesOffset, entryBytes, bodyOffset;
};
constexpr Framing kLong{0x4d, true, sizeof(EventListBody), offsetof(EventListBody, buffer),
                        offsetof(EventListBody, entries), sizeof(EventEntry), offsetof(EventEntry, body)};
constexpr Framing kShort{0x0a, false, sizeof(ShortEventListBody), offsetof(ShortEventListBody, buffer),
                         offsetof(ShortEventListBody, entries), sizeof(EventBriefEntry),
                         offsetof(EventBriefEntry, body)};

// The list's block holds the entries, then every event record; each entry
// points into it.
void expectEventListInsideItsRoom(const Framing &f, const std::vector<std::pair<uint16_t, Wire>> &events,
                                  bool encodesBack = true) {
    Wire body;
    body.fill(f.isLong ? 10 : 4);
    body.number(f.isLong ? 2 : 1, static_cast<uint32_t>(events.size()));
    for (const auto &[code, event] : events) {
        if (f.isLong) body.fill(11);
        body.number(2, code);
        if (!f.isLong) body.fill(1);
        body.append(event);
    }
    const auto check = [&](const Reply &r, const ExactRoom &room) {
        const auto *entries = loadField<const uint8_t *>(r.record.data(), f.entriesOffset);
        if (events.empty()) return;
        ASSERT_EQ(entries, room.data());
        for (size_t i = 0; i < events.size(); ++i)
            EXPECT_TRUE(room.holds(loadField<const void *>(entries + i * f.entryBytes, f.bodyOffset))) << "event " << i;
    };
    expectReplyInsideItsRoom(replyPacket(f.code, body.bytes), f.recordBytes, f.bufferOffset, check, encodesBack);
}

class EventExtent : public ExtentBoundary, public testing::WithParamInterface<uint16_t> {};

TEST_P(EventExtent, DecodeStaysInsideTheRoomInBothListFramings) {
    ASSERT_NE(findRow(FUEventCodecTable, GetParam(), TROV_PROTOCOL_VERSION), nullptr);
    for (uint32_t n : kLengths) {
        SCOPED_TRACE(testing::Message() << "length " << n);
        Wire w = eventWire(GetParam(), n);
        for (const Framing &f : {kLong, kShort}) {
            SCOPED_TRACE(f.isLong ? "long framing" : "short framing");
            // Event 0x78 at odd lengths reads its typed value over (no room
            // reserved): nothing to write back (ReplyEncodeTest).
            expectEventListInsideItsRoom(f, {{GetParam(), w}}, GetParam() != 0x78 || n % 2 == 0);
        }
    }
}

std::vector<uint16_t> allEventCodes() {
    std::vector<uint16_t> codes;
    for (const EventCodecRow *r = FUEventCodecTable; r->code != 0; ++r) codes.push_back(r->code);
    return codes;
}
INSTANTIATE_TEST_SUITE_P(EveryCode, EventExtent, testing::ValuesIn(allEventCodes()),
                         [](const auto &info) { return named("Event", info.param); });

// Event counts at the boundaries, in both framings: strings, lists, a structure.
TEST_F(ExtentBoundary, EventListsOfEveryCountStayInsideTheirRoom) {
    const uint16_t mix[] = {0x04, 0x30, 0xB1, 0xBE, 0x12C, 0xC4};
    for (const Framing &f : {kLong, kShort})
        for (uint32_t n : kLengths) {
            const uint32_t count = fit(n, f.isLong ? 2 : 1);
            SCOPED_TRACE(testing::Message() << count << " events, " << (f.isLong ? "long" : "short") << " framing");
            std::vector<std::pair<uint16_t, Wire>> events;
            for (uint32_t i = 0; i < count; ++i) events.emplace_back(mix[i % 6], eventWire(mix[i % 6], i % 10));
            expectEventListInsideItsRoom(f, events);
        }
}

// ---- method replies ------------------------------------------------------------------------

// A method's reply parameters. Code 0x2000 has no row: its parameters are
// the raw bytes to the end of the body.
constexpr uint16_t kRawMethod = 0x2000;

Wire methodReplyWire(uint16_t code, uint32_t n) {
    Wire w;
    const size_t i = methodIndex(code);
    if (i == kMethodCount) w.fill(n);
    else if (kMethods[i].reply == MethodReply::Structured) structureWire(w, *kMethods[i].replyDescriptor, n);
    else planWire(w, kMethodPlans[i].reply, n);
    return w;
}

class MethodExtent : public ExtentBoundary, public testing::WithParamInterface<uint16_t> {};

TEST_P(MethodExtent, ReplyStaysInsideTheExtentAloneAndThroughBody0x1d) {
    const MethodCodecRow *row = findMethodRow(activeTables(), GetParam(), TROV_PROTOCOL_VERSION);
    ASSERT_NE(row, nullptr);
    const size_t i = methodIndex(GetParam());
    const bool structured = i < kMethodCount && kMethods[i].reply == MethodReply::Structured;
    for (uint32_t n : kLengths) {
        SCOPED_TRACE(testing::Message() << "length " << n);
        Wire w = methodReplyWire(GetParam(), n);
        uint16_t length = 0;
        expectInsideExtent(
            w, [&](PacketCursor &c, RecordSize &s) { return row->decCalc(&c, &length, &s); },
            [&](void *record, PacketCursor &c) { return row->decode(record, &c); }, structured);

        Wire body;
        body.fill(4);
        body.number(2, GetParam());
        body.append(w);
        expectReplyInsideItsRoom(replyPacket(0x1d, body.bytes), sizeof(MethodBody), offsetof(MethodBody, buffer),
                                 [](const Reply &r, const ExactRoom &room) {
                                     EXPECT_EQ(loadField<void *>(r.record.data(), offsetof(MethodBody, params)), room.data());
                                 });
    }
}

std::vector<uint16_t> allMethodCodes() {
    std::vector<uint16_t> codes;
    for (const MethodInfo &m : kMethods) codes.push_back(m.code);
    codes.push_back(kRawMethod);
    return codes;
}
INSTANTIATE_TEST_SUITE_P(EveryCode, MethodExtent, testing::ValuesIn(allMethodCodes()),
                         [](const auto &info) { return named("Method", info.param); });

// ---- function-unit reply bodies ------------------------------------------------------------

// Every reply layout with variable parts (a buffer), with the body codes
// that reply with it.
struct VariableReply {
    const BodyLayout *layout;
    std::vector<uint16_t> codes;
};

std::vector<VariableReply> variableReplies() {
    std::vector<VariableReply> out;
    for (const BodyCodecRow *row = FUCodecTable; row->code != 0; ++row) {
        const BodyDescriptions *d = bodyDescriptionsOf(row);
        if (d == nullptr || d->replyLayout == nullptr || !hasVariableParts(*d->replyLayout)) continue;
        auto it = std::find_if(out.begin(), out.end(), [&](const VariableReply &v) { return v.layout == d->replyLayout; });
        if (it == out.end()) it = out.insert(out.end(), VariableReply{d->replyLayout, {}});
        it->codes.push_back(row->code);
    }
    return out;
}

uint32_t bufferOf(const BodyLayout &l) {
    for (uint8_t k = 0; k < l.plan->count; ++k)
        if (l.plan->fields[k].kind == FieldKind::Buffer) return l.plan->fields[k].offset;
    return 0;
}

class ReplyBodyExtent : public ExtentBoundary, public testing::WithParamInterface<VariableReply> {};

// Every string and block n long; attribute values structures whose
// characters and array are n long.
TEST_P(ReplyBodyExtent, DecodeStaysInsideTheBufferItAsksFor) {
    const BodyLayout &l = *GetParam().layout;
    for (uint16_t code : GetParam().codes)
        for (uint32_t n : kLengths) {
            SCOPED_TRACE(testing::Message() << "code 0x" << std::hex << code << std::dec << ", length " << n);
            Wire w;
            planWire(w, *l.plan, n);
            // A string or value placed elsewhere than the room breaks the
            // canary or the encoding back.
            expectReplyInsideItsRoom(replyPacket(code, w.bytes), l.recordBytes, bufferOf(l),
                                     [](const Reply &, const ExactRoom &) {});
        }
}

INSTANTIATE_TEST_SUITE_P(EveryVariableLayout, ReplyBodyExtent, testing::ValuesIn(variableReplies()),
                         [](const auto &info) { return std::string(info.param.layout->name); });

// ---- extended event data -------------------------------------------------------------------

// Event 0x30's byte string has a u16 length, so the items can be long. The
// data holds n items (as far as the count byte holds), the first n long:
// self-describing, raw values, character strings and byte arrays in turn;
// with a schema, character strings, string arrays and records in turn.
constexpr uint16_t kLongStringEvent = 0x30;

TEST_F(ExtentBoundary, ExtendedDataStaysInsideTheBufferItAsksFor) {
    for (const bool withSchema : {false, true})
    for (uint32_t n : kLengths) {
        SCOPED_TRACE(testing::Message() << "length " << n << (withSchema ? ", schema" : ", self-describing"));
        Wire data;
        std::vector<EventExtendItemSpec> items;
        if (!withSchema) itemListWire(data, n, 1, 1, {kRawRow, kCharsRow, kBytesRow});
        for (uint32_t i = 0; withSchema && i < fit(n, 1); ++i) {
            const uint32_t length = i == 0 ? n : (n + i) % 10;
            if (i % 3 == 0) items.push_back({TROV_EXTEND_KIND_DATA_TYPE, 0x08});
            if (i % 3 == 1) items.push_back({TROV_EXTEND_KIND_DATA_TYPE, 0x19});
            if (i % 3 == 2) items.push_back({0, attributeId(3)});
            valueWire(data, i % 3 == 2 ? shapeOfRow(3) : dataTypeShape(items.back().identifier), length, 1);
        }
        data.bytes.reserve(1); // a data pointer even without items
        const EventExtendSchemaRow row{kLongStringEvent, static_cast<uint8_t>(items.size()), items.data()};
        const EventExtendSchema schema{1, &row};
        const OctetString string{static_cast<uint16_t>(data.bytes.size()), data.bytes.data()};
        EventExtendList list{0, nullptr};
        auto decode = [&](void *buffer, uint32_t capacity) {
            BufferDesc b{buffer, static_cast<uint16_t>(capacity), 0};
            return TROV_DecodeEventExtend(&list, &string, kLongStringEvent, withSchema ? &schema : nullptr,
                                          TROV_PROTOCOL_VERSION, &b);
        };
        const uint32_t asked = roomAskedFor(decode);
        ASSERT_NE(asked, UINT32_MAX) << "the data does not decode";
        ExactRoom room(asked);
        ASSERT_EQ(decode(room.data(), asked), 0u);
        EXPECT_TRUE(room.canaryIntact()) << "the decode wrote past the " << asked << " bytes it asked for";
        for (uint32_t i = 0; i < list.count; ++i) {
            const EventExtendEntry &e = list.entries[i];
            EXPECT_TRUE(room.holds(e.value)) << "item " << i;
            if (withSchema || e.identifier != 0) continue;
            const auto raw = loadField<EventExtendRawItem>(e.value, 0); // the record, then its bytes
            EXPECT_TRUE(room.holds(e.value, sizeof raw) && room.holds(raw.data, raw.length)) << "item " << i;
        }
    }
}

} // namespace
} // namespace trov
