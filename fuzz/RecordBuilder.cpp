// The record builder of the encode fuzz targets (see RecordBuilder.h).
#include "RecordBuilder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "attributes/DataTypes.h"
#include "attributes/FixedValueTypes.h"
#include "attributes/RecordValueTypes.h"
#include "attributes/StructureValueTypes.h"
#include "attributes/ValueForms.h"
#include "engine/Field.h"
#include "units/MethodCodecs.h"

namespace trovfuzz {

using namespace trov;
using describe::Frame;

void fail(const char *what) {
    std::fprintf(stderr, "broken invariant: %s\n", what);
    __builtin_trap();
}

size_t FuzzInput::take(uint8_t *dst, size_t n) {
    const size_t k = n < size_ - at_ ? n : size_ - at_;
    if (k != 0) std::memcpy(dst, data_ + at_, k);
    at_ += k;
    return k;
}

void FuzzInput::fill(uint8_t *dst, size_t n) {
    const size_t k = take(dst, n < 16 ? n : 16);
    for (size_t done = k; k != 0 && done < n;) { // repeat what was taken, doubling
        const size_t step = done < n - done ? done : n - done;
        std::memcpy(dst + done, dst, step);
        done += step;
    }
}

// ---- the tables as the builder sees them ------------------------------------------

namespace {

constexpr size_t kRows = 282;
constexpr size_t kPlainByteRow = 6; // a single byte, no nesting

// Value types by attribute row (1 to 282).
const std::array<ValueType, kRows + 1> &rowTypes() {
    static const std::array<ValueType, kRows + 1> types = [] {
        std::array<ValueType, kRows + 1> t{};
        for (const FixedValueType &f : kFixedValueTypes) t[f.row] = {ValueType::Family::Fixed, f.prefixBytes};
        for (const RecordValueType &r : kRecordValueTypes)
            t[r.row] = r.variants != nullptr ? ValueType{ValueType::Family::Selector, 0}
                                             : ValueType{ValueType::Family::Record, r.prefixBytes};
        for (const StructureValueType &s : kStructureValueTypes) t[s.row] = {ValueType::Family::Structure, 0};
        return t;
    }();
    return types;
}

const ValueType kNoType{};

} // namespace

const ValueType &attributeType(uint16_t id) {
    // The row of every identifier, looked up once: records of many
    // attributes ask for it again and again.
    static const std::vector<uint16_t> rows = [] {
        std::vector<uint16_t> v(0x10000);
        for (uint32_t i = 0; i < v.size(); ++i) {
            const AttributeCodecRow *row = findAttributeRow(builtinTables(), static_cast<uint16_t>(i), TROV_PROTOCOL_VERSION);
            v[i] = row == nullptr ? 0 : static_cast<uint16_t>(row - AttributeCodecTable + 1);
        }
        return v;
    }();
    return rows[id] == 0 ? kNoType : rowTypes()[rows[id]];
}

const ValueType &dataType(uint16_t code) {
    static const std::array<ValueType, std::size(kDataTypeRows)> types = [] {
        std::array<ValueType, std::size(kDataTypeRows)> t{};
        for (size_t i = 0; i < t.size(); ++i) {
            const DataTypeRow &d = kDataTypeRows[i];
            if (d.attributeRow != 0) t[i] = rowTypes()[d.attributeRow];
            else if (d.ownFixed >= 0) t[i] = {ValueType::Family::Fixed, kOwnFixedTypes[d.ownFixed].prefixBytes};
            else t[i] = {ValueType::Family::Record, 2};
        }
        return t;
    }();
    for (size_t i = 0; i < std::size(kDataTypeRows); ++i)
        if (kDataTypeRows[i].code == code) return types[i];
    return kNoType;
}

// ---- the builder ------------------------------------------------------------------

namespace {

constexpr uint16_t kInterestingCounts[] = {0,      1,      2,      7,      8,      0xFF,   0x100,  0x101,
                                           0xFFF8, 0xFFF9, 0xFFFA, 0xFFFB, 0xFFFC, 0xFFFD, 0xFFFE, 0xFFFF};
constexpr uint32_t kChoices = std::size(kInterestingCounts) + 4;
constexpr uint8_t kNullRates[] = {32, 0, 8, 128}; // of 256

// The record bytes a fixed-size element's fields take, padded to their
// widest (a scalar-only type reports more).
size_t fixedBytes(const TrovLayoutInfo &element) {
    size_t end = 0, align = 1;
    for (uint16_t i = 0; i < element.fieldCount; ++i) {
        end = std::max<size_t>(end, element.fields[i].offset + element.fields[i].width);
        align = std::max<size_t>(align, element.fields[i].width);
    }
    return (end + align - 1) / align * align;
}

// The wire bytes the structure codec counts as a record's fixed size: its
// scalars and its nested records' (an option list's count and an entry's
// head are not in it).
uint32_t structureWire(const TrovLayoutInfo &layout, int depth = 0) {
    uint32_t total = 0;
    for (uint16_t i = 0; depth <= 16 && i < layout.fieldCount; ++i) {
        const TrovFieldInfo &f = layout.fields[i];
        TrovLayoutInfo nested{};
        if (f.kindId <= TROV_KIND_U32) total += f.width;
        if (f.kindId == TROV_KIND_COUNT) total += f.countBytes;
        if (f.kindId == TROV_KIND_RECORD && TROV_DescribeNested(&f, &nested) == TROV_RESULT_OK)
            total += structureWire(nested, depth + 1);
    }
    return total;
}

} // namespace

RecordBuilder::RecordBuilder(const uint8_t *data, size_t size) : in_(data, size) {
    const uint8_t hostility = in_.u8();
    nullRate_ = kNullRates[hostility & 3];
    junkHighBytes_ = (hostility & 4) != 0;
}

uint8_t *RecordBuilder::block(size_t n) {
    // Every empty part shares one block of no bytes: any access to it is an
    // overflow, and a record of many empty parts costs one allocation.
    if (n == 0 && empty_ != nullptr) return empty_;
    blocks_.push_back(std::make_unique<uint8_t[]>(n));
    if (n == 0) empty_ = blocks_.back().get();
    return blocks_.back().get();
}

bool RecordBuilder::nullPointer() { return in_.u8() >= 256 - nullRate_; }

uint8_t *RecordBuilder::zeroed(size_t n, bool followed) {
    if (nullPointer()) {
        if (followed) mustFail_ = true;
        return nullptr;
    }
    return block(n);
}

uint8_t *RecordBuilder::bytes(size_t n, bool followed) {
    if (nullPointer()) {
        if (followed) nullData_ = true;
        return nullptr;
    }
    uint8_t *p = block(n);
    in_.fill(p, n);
    return p;
}

uint16_t RecordBuilder::count(uint8_t prefixBytes, uint32_t wireEach, uint32_t recordEach, bool built) {
    const uint8_t b = in_.u8();
    uint32_t n = 0;
    if (b < 0xA0) {
        n = b % 10;
    } else if (b < 0xF0) {
        const uint32_t pick = (b - 0xA0u) % kChoices;
        if (pick < std::size(kInterestingCounts)) {
            n = kInterestingCounts[pick];
        } else { // just below and above the 16-bit boundary of the item
            const uint32_t each = wireEach == 0 ? 1 : wireEach;
            n = (0xFFFFu - prefixBytes) / each - 1 + (pick - std::size(kInterestingCounts));
        }
    } else {
        n = in_.u16();
    }
    n = prefixBytes == 1 ? n & 0xFF : n & 0xFFFF;
    const uint64_t memory = uint64_t{n} * recordEach;
    if (memory > bytesLeft_ || (built && n > elementsLeft_)) return 0;
    bytesLeft_ -= memory;
    if (built) elementsLeft_ -= n;
    return static_cast<uint16_t>(n);
}

uint8_t RecordBuilder::unusedHighByte() { return junkHighBytes_ ? in_.u8() : 0; }

uint16_t RecordBuilder::attributeId() {
    const uint8_t b = in_.u8();
    if (depth_ >= kMaxDepth) return AttributeCodecTable[kPlainByteRow - 1].identifiers[0];
    if (b >= 0xE0) return in_.u16();
    const AttributeCodecRow *row = &AttributeCodecTable[in_.u16() % kRows];
    while (row->identifiers[0] == 0) ++row; // a row without identifiers: the next
    return row->identifiers[0];
}

uint16_t RecordBuilder::dataTypeCode() {
    const uint8_t b = in_.u8();
    return b < 0xF0 ? kDataTypeRows[b % std::size(kDataTypeRows)].code : in_.u16();
}

uint16_t RecordBuilder::methodCode() {
    const uint8_t b = in_.u8();
    return b < 0xC0 ? kMethods[b % kMethodCount].code : in_.u16();
}

void RecordBuilder::enter() {
    ++depth_;
    if (depth_ > deepest_) deepest_ = depth_;
}

bool RecordBuilder::inFixedValue() const {
    return !values_.empty() && values_.back().type.family == ValueType::Family::Fixed;
}

uint32_t RecordBuilder::recordNesting() const { return open_.empty() ? 0 : open_.back().nesting; }

// ---- values and records -----------------------------------------------------------

void *RecordBuilder::attributeValue(uint16_t id) {
    pending_.push_back({attributeType(id), id});
    void *v = describe::buildValue({describe::Code::Of::Attribute, nullptr, TROV_PROTOCOL_VERSION}, id, *this);
    pending_.pop_back();
    return v;
}

void *RecordBuilder::dataTypeValue(uint16_t code) {
    pending_.push_back({dataType(code), code});
    void *v = describe::buildValue({describe::Code::Of::DataType, nullptr, TROV_PROTOCOL_VERSION}, code, *this);
    pending_.pop_back();
    return v;
}

void *RecordBuilder::record(const TrovLayoutInfo &layout) {
    void *record = describe::buildRecord(layout, TROV_PROTOCOL_VERSION, true, *this);
    check(record != nullptr, "the walk built no record");
    return record;
}

void *RecordBuilder::structureEvent(const TrovLayoutInfo &event) {
    uint8_t *head = block(16);
    TrovLayoutInfo body{};
    check(event.fieldCount == 1 && TROV_DescribeNested(event.fields, &body) == TROV_RESULT_OK,
          "a structure event without its structure");
    void *structure = record(body);
    if (nullPointer()) {
        structure = nullptr;
        refuse();
    }
    std::memcpy(head, &structure, sizeof structure);
    return head;
}

// ---- the walk's questions ---------------------------------------------------------

void *RecordBuilder::allocate(size_t n, describe::Block block) {
    switch (block) {
    case describe::Block::Record:
        if (inFixedValue()) { // a fixed-size element: its bytes at once
            uint8_t *element = this->block(values_.back().fixedBytes);
            in_.fill(element, values_.back().fixedBytes);
            return element;
        }
        return this->block(n);
    case describe::Block::Header: return this->block(n);
    // A fixed-size value's elements are bytes the write pass copies; other
    // elements a size pass walks.
    case describe::Block::Elements: return inFixedValue() ? bytes(n, n != 0) : zeroed(n, n != 0);
    case describe::Block::Data: // filled as the walk hands it over
        if (nullPointer()) {
            if (n != 0) nullData_ = true;
            return nullptr;
        }
        return this->block(n);
    }
    return nullptr;
}

bool RecordBuilder::beginRecord(const TrovLayoutInfo &layout, Frame frame) {
    const bool structure = layout.form == TROV_LAYOUT_STRUCTURE;
    uint32_t nesting = recordNesting(); // the walk's own records: their holder's
    switch (frame) {
    case Frame::Top:
    case Frame::Params:
    case Frame::Event: nesting = structure ? 1 : 0; break;
    case Frame::Value: { // a structure starts at its value's flag
        const uint32_t flag = values_.empty() ? 1 : values_.back().flag;
        nesting = structure && flag == 0 ? 1 : flag;
        break;
    }
    case Frame::Nested:
    case Frame::Item:
        enter();
        nesting = recordNesting() + 1;
        break;
    default: break;
    }
    open_.push_back({frame, nesting});
    return true;
}

bool RecordBuilder::endRecord() {
    if (open_.back().frame == Frame::Nested || open_.back().frame == Frame::Item) leave();
    open_.pop_back();
    return true;
}

bool RecordBuilder::beginValue(const TrovLayoutInfo &element) {
    // The flag the library codes the value with: typed values and values of
    // extended data and event lists travel at 1; a list's values one level
    // below the list, which sits one below the value holding it; a
    // structure's entries one below the structure's level.
    const Pending &p = pending_.back();
    uint32_t flag = 1;
    if (p.ownerKind == TROV_KIND_ATTRIBUTES) flag = nestedFlag(nestedFlag(static_cast<uint8_t>(recordNesting())));
    if (p.ownerKind == TROV_KIND_ENTRY) flag = std::min<uint32_t>(recordNesting() + 1, 0xFF);
    enter();
    values_.push_back({p.type, flag, fixedBytes(element)});
    return true;
}

void RecordBuilder::endValue() {
    values_.pop_back();
    leave();
}

bool RecordBuilder::code(const describe::Code &code, uint32_t &value) {
    using Of = describe::Code::Of;
    switch (code.of) {
    case Of::Attribute:
    case Of::DataType:
    case Of::Entry: {
        Pending p;
        p.ownerKind = code.field->kindId;
        if (p.ownerKind == TROV_KIND_ENTRY) {
            // A structure drops an attribute its codec refuses and goes on:
            // what is refused inside it is judged when it is complete.
            p.savedMustFail = mustFail_;
            p.savedNullData = nullData_;
            mustFail_ = nullData_ = false;
        }
        p.code = code.of == Of::DataType ? dataTypeCode() : attributeId();
        p.type = code.of == Of::DataType ? dataType(p.code) : attributeType(p.code);
        p.known = p.type.family != ValueType::Family::None;
        pending_.push_back(p);
        value = p.code;
        return true;
    }
    case Of::Method: {
        const uint16_t method = methodCode();
        TrovLayoutInfo params{};
        paramsKnown_ = TROV_DescribeMethod(method, code.version, 1, &params) == TROV_RESULT_OK &&
                       params.form != TROV_LAYOUT_RAW;
        noParams_ = paramsKnown_ && params.form == TROV_LAYOUT_NONE;
        if (paramsKnown_) paramsLength_ = in_.u16(); // the record says how long it is
        value = method;
        return true;
    }
    case Of::Option: {
        const uint8_t b = in_.u8();
        optionKind_ = b < 0xC0 ? static_cast<uint8_t>(b % 6) : static_cast<uint8_t>(6 + b % 250);
        value = optionKind_;
        return true;
    }
    case Of::Event: { // a code of the event table, or (0xF0 on) the next two bytes as they stand
        const uint8_t b = in_.u8();
        value = b < 0xF0 ? trov::FUEventCodecTable[b % 120].code : in_.u16();
        return true;
    }
    case Of::Selector: {
        const uint8_t b = in_.u8();
        if (b < 0xF0) {
            value = 1 + b % 4;
        } else { // outside 1 to 4: refused before the variant is read
            refuse();
            value = (b & 1) != 0 ? 0 : 5 + (b & 0x0F);
        }
        return true;
    }
    }
    return false;
}

bool RecordBuilder::scalar(const TrovFieldInfo &, unsigned width, uint32_t &value) {
    if (inFixedValue()) return true; // its bytes are in
    uint8_t wire[4] = {};
    in_.fill(wire, width);
    std::memcpy(&value, wire, sizeof value);
    return true;
}

bool RecordBuilder::count(const describe::Count &count, uint32_t &value) {
    using Of = describe::Count::Of;
    if (count.announced) return true;
    switch (count.of) {
    case Of::CountField: {
        if (count.field->countRecordBytes == 0) { // sized for the run behind it
            value = this->count(count.prefixBytes, count.elementWire, count.elementBytes);
            return true;
        }
        // A structure's count scalar, sized for the field that takes it.
        uint32_t wireEach = 1, recordEach = 1;
        TrovLayoutInfo nested{};
        const bool records = count.counted != nullptr && count.counted->kindId == TROV_KIND_RECORDS &&
                             TROV_DescribeNested(count.counted, &nested) == TROV_RESULT_OK;
        if (records) {
            wireEach = structureWire(nested);
            recordEach = nested.recordBytes;
        }
        const uint16_t n = this->count(count.prefixBytes == 1 ? 1 : 2, wireEach, recordEach, records);
        if (count.prefixBytes == 1) {
            value = n;
            return true;
        }
        // A wider count is taken as its first two bytes in memory: what lies
        // above them is the host's business.
        uint8_t scalar[4] = {};
        in_.fill(scalar, count.prefixBytes);
        std::memcpy(scalar, &n, 2);
        std::memcpy(&value, scalar, sizeof value);
        return true;
    }
    case Of::Data: {
        // A one-byte count leaves the next byte of its slot to junk: encoders read the first.
        const uint16_t n = this->count(count.prefixBytes, count.elementWire, count.elementBytes);
        value = count.prefixBytes == 1 ? uint32_t{unusedHighByte()} << 8 | n : n;
        return true;
    }
    case Of::Rest:
    case Of::Unparsed: value = this->count(2, 1, 1); return true;
    case Of::Options: value = this->count(1, 2, 16, true); return true;
    case Of::Entries: value = this->count(2, 5, sizeof(AttributeEntry), true); return true;
    case Of::Elements:
        if (inFixedValue()) {
            const uint16_t n = this->count(count.prefixBytes, count.elementWire, count.elementBytes);
            value = count.prefixBytes == 1 ? uint32_t{unusedHighByte()} << 8 | n : n;
        } else {
            value = this->count(2, count.elementWire, count.elementBytes, true);
        }
        return true;
    case Of::Option: // the kind decides the size of kinds 0 to 5; their length byte is not read
        value = optionKind_ >= 6 ? this->count(1, 1, 1) : in_.u8();
        return true;
    case Of::Records: return true;
    case Of::Events: value = this->count(2, count.elementWire, count.elementBytes, true); return true;
    }
    return false;
}

bool RecordBuilder::bytes(const TrovFieldInfo &, describe::Text, uint8_t *out, size_t size) {
    if (!inFixedValue()) in_.fill(out, size);
    return true;
}

bool RecordBuilder::element(const describe::Numbers &numbers, uint32_t index, uint32_t (&parts)[2]) {
    // The elements are what one fill of their block leaves: its first bytes repeated.
    if (index == 0) patternBytes_ = in_.take(pattern_, std::min<size_t>(16, size_t{numbers.count} * numbers.stride));
    for (unsigned p = 0; p < numbers.parts; ++p) {
        uint8_t part[4] = {};
        for (unsigned b = 0; b < numbers.partBytes(p) && patternBytes_ != 0; ++b)
            part[b] = pattern_[(size_t{index} * numbers.stride + numbers.partOffset(p) + b) % patternBytes_];
        std::memcpy(&parts[p], part, sizeof part);
    }
    return true;
}

bool RecordBuilder::filler(describe::Filler what, uint32_t &value) {
    switch (what) {
    case describe::Filler::Reserved: {
        uint8_t b = 0;
        in_.fill(&b, 1);
        value = b;
        break;
    }
    case describe::Filler::EntryLength: value = in_.u16(); break; // ignored unless written raw
    case describe::Filler::ParamsLength: value = paramsKnown_ ? paramsLength_ : in_.u16(); break;
    }
    return true;
}

describe::Answer RecordBuilder::missing(const describe::Miss &miss, void *&standIn) {
    using Of = describe::Code::Of;
    switch (miss.of) {
    case describe::Miss::Of::Code:
        if (miss.codeOf == Of::Method) { // no codec for the method
            refuse();
            standIn = nullptr;
        } else if (miss.codeOf != Of::Entry) { // no codec reads it
            enter();
            standIn = bytes(16, false);
            leave();
            if (miss.field != nullptr) refuse();
        } else if (pending_.back().ownerKind == TROV_KIND_EVENT_ATTRIBUTES) {
            return describe::Answer::Unparsed; // an event list writes it raw: `length` bytes
        } else {
            mustFail_ = true; // no codec for the identifier
            standIn = bytes(16, false);
        }
        return describe::Answer::StandIn;
    case describe::Miss::Of::Variant: return describe::Answer::StandIn;
    case describe::Miss::Of::Depth: fail("a record nested past the walk's bound");
    case describe::Miss::Of::Layout: fail("a layout the walk cannot build");
    }
    return describe::Answer::Stop;
}

void *RecordBuilder::pointer(const TrovFieldInfo *field, void *value) {
    if (field == nullptr) { // a method's parameters
        if (noParams_) { // none: bytes no codec reads, or none at all
            noParams_ = false;
            return bytes(4, false);
        }
        if (nullPointer()) {
            value = nullptr;
            refuse();
        }
        return value;
    }
    const Pending p = pending_.back();
    pending_.pop_back();
    if (field->kindId == TROV_KIND_ATTRIBUTE || field->kindId == TROV_KIND_VALUE ||
        field->kindId == TROV_KIND_RESERVED_VALUE) {
        if (nullPointer()) {
            value = nullptr;
            refuse();
        }
        // A type without reserved room is read over on decoding and its value not kept.
        if (field->kindId == TROV_KIND_RESERVED_VALUE && reservedValueRoom(p.code) == 0) lossy();
        return value;
    }
    // An attribute entry.
    if (p.known && nullPointer()) {
        value = nullptr;
        // Only a fixed-size scalar's size does not depend on its record.
        if (p.type.family == ValueType::Family::Fixed && p.type.prefixBytes == 0) nullData_ = true;
        else mustFail_ = true;
    }
    if (field->kindId != TROV_KIND_ENTRY) return value;
    // A structure drops the attribute when its codec refuses it at the level
    // the structure codes it (the codec may refuse what this builder does not
    // model as refused: a size limit of its own, a nested list refusing
    // deeper down), with whatever null bytes it held; such a record encodes,
    // but to bytes that do not decode to it again.
    bool dropped = mustFail_;
    if (const AttributeCodecRow *row = lookupAttribute(p.code, 0); !dropped && row != nullptr) {
        WireSize size;
        const auto flag = static_cast<uint8_t>(std::min<uint32_t>(recordNesting() + 1, 0xFF));
        dropped = row->ops.encCalc(value, flag, &size, 0) != TROV_RESULT_OK;
    }
    if (dropped) {
        lossy();
        nullData_ = false;
    }
    mustFail_ = p.savedMustFail;
    nullData_ = nullData_ || p.savedNullData;
    return value;
}

} // namespace trovfuzz
