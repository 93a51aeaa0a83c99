// The record builder of the encode fuzz targets (see RecordBuilder.h).
#include "RecordBuilder.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

#include "api/LayoutRegistry.h"
#include "attributes/DataTypes.h"
#include "attributes/FixedValueCodec.h"
#include "attributes/FixedValueTypes.h"
#include "attributes/RecordValueCodec.h"
#include "attributes/RecordValueTypes.h"
#include "attributes/StructureValueTypes.h"
#include "units/FunctionUnitBodies.h"

namespace trovfuzz {

using namespace trov;

void fail(const char *what) {
    std::fprintf(stderr, "broken invariant: %s\n", what);
    __builtin_trap();
}

void storeWidth(uint8_t *p, uint32_t width, uint32_t value) {
    switch (width) {
    case 1: *p = static_cast<uint8_t>(value); break;
    case 2: {
        const auto v = static_cast<uint16_t>(value);
        std::memcpy(p, &v, 2);
        break;
    }
    default: std::memcpy(p, &value, 4); break;
    }
}

void FuzzInput::fill(uint8_t *dst, size_t n) {
    size_t k = n < 16 ? n : 16;
    if (k > size_ - at_) k = size_ - at_;
    if (k == 0) return;
    std::memcpy(dst, data_ + at_, k);
    at_ += k;
    for (size_t done = k; done < n;) { // repeat what was taken, doubling
        const size_t step = done < n - done ? done : n - done;
        std::memcpy(dst + done, dst, step);
        done += step;
    }
}

// ---- the tables as the builder sees them ------------------------------------------

namespace {

// The data types' own string-array types, as plans.
const std::array<Plan, 2> kOwnLayouts = {valuePlan(kOwnRecordTypes[0].fields), valuePlan(kOwnRecordTypes[1].fields)};

constexpr size_t kRows = 282;
constexpr size_t kPlainByteRow = 6; // a single byte, no nesting

// Record layouts parsed once, in kRecordValueTypes order; a selector type's
// four variants sit in their own array.
const std::vector<Plan> &recordLayouts() {
    static const std::vector<Plan> layouts = [] {
        std::vector<Plan> v;
        for (const RecordValueType &t : kRecordValueTypes) v.push_back(valuePlan(t.fields));
        return v;
    }();
    return layouts;
}
const std::array<Plan, 4> &selectorVariants() {
    static const std::array<Plan, 4> variants = [] {
        std::array<Plan, 4> v{};
        for (const RecordValueType &t : kRecordValueTypes)
            if (t.variants != nullptr)
                for (int i = 0; i < 4; ++i) v[i] = valuePlan(t.variants->variant[i]);
        return v;
    }();
    return variants;
}

// Value types by attribute row (1 to 282).
const std::array<ValueType, kRows + 1> &rowTypes() {
    static const std::array<ValueType, kRows + 1> types = [] {
        std::array<ValueType, kRows + 1> t{};
        for (const FixedValueType &f : kFixedValueTypes)
            t[f.row] = {ValueType::Family::Fixed, f.prefixBytes, &f, nullptr, nullptr};
        for (size_t i = 0; i < std::size(kRecordValueTypes); ++i) {
            const RecordValueType &r = kRecordValueTypes[i];
            if (r.variants != nullptr)
                t[r.row] = {ValueType::Family::Selector, 0, nullptr, selectorVariants().data(), nullptr};
            else
                t[r.row] = {ValueType::Family::Record, r.prefixBytes, nullptr, &recordLayouts()[i], nullptr};
        }
        for (const StructureValueType &s : kStructureValueTypes)
            t[s.row] = {ValueType::Family::Structure, 0, nullptr, nullptr, s.fields};
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
            const AttributeCodecRow *row = findBuiltinAttributeRow(static_cast<uint16_t>(i), TROV_PROTOCOL_VERSION);
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
            else if (d.ownFixed >= 0)
                t[i] = {ValueType::Family::Fixed, kOwnFixedTypes[d.ownFixed].prefixBytes,
                        &kOwnFixedTypes[d.ownFixed], nullptr, nullptr};
            else t[i] = {ValueType::Family::Record, 2, nullptr, &kOwnLayouts[d.ownRecord], nullptr};
        }
        return t;
    }();
    for (size_t i = 0; i < std::size(kDataTypeRows); ++i)
        if (kDataTypeRows[i].code == code) return types[i];
    return kNoType;
}

const BodyLayout *requestLayout(const BodyCodecRow &row) {
    const BodyDescriptions *d = bodyDescriptionsOf(&row);
    return d != nullptr ? d->requestLayout : nullptr;
}

const BodyLayout *replyLayout(const BodyCodecRow &row) {
    const BodyDescriptions *d = bodyDescriptionsOf(&row);
    return d != nullptr ? d->replyLayout : nullptr;
}

const MethodInfo *methodInfo(uint16_t code) {
    const size_t i = methodIndex(code);
    return i < kMethodCount ? &kMethods[i] : nullptr;
}

const MethodPlans *methodPlans(uint16_t code) {
    const size_t i = methodIndex(code);
    return i < kMethodCount ? &kMethodPlans[i] : nullptr;
}

// ---- the builder ------------------------------------------------------------------

namespace {

constexpr uint16_t kInterestingCounts[] = {0,      1,      2,      7,      8,      0xFF,   0x100,  0x101,
                                           0xFFF8, 0xFFF9, 0xFFFA, 0xFFFB, 0xFFFC, 0xFFFD, 0xFFFE, 0xFFFF};
constexpr uint32_t kChoices = std::size(kInterestingCounts) + 4;
constexpr uint8_t kNullRates[] = {32, 0, 8, 128}; // of 256

uint8_t *slot(uint8_t *base, uint32_t offset) { return base + offset; }
void storePointer(uint8_t *at, const void *p) { std::memcpy(at, &p, sizeof p); }

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

void *RecordBuilder::attributeValue(uint16_t id) { return value(attributeType(id)); }
void *RecordBuilder::dataTypeValue(uint16_t code) { return value(dataType(code)); }

void *RecordBuilder::value(const ValueType &type) {
    enter();
    void *v = nullptr;
    switch (type.family) {
    case ValueType::Family::None: v = bytes(16, false); break; // no codec reads it
    case ValueType::Family::Fixed: v = fixedValue(*type.fixed); break;
    case ValueType::Family::Record:
    case ValueType::Family::Selector: v = recordValue(type); break;
    case ValueType::Family::Structure: {
        uint8_t *record = block(structRecordSize(type.structure));
        structure(type.structure, record);
        v = record;
        break;
    }
    }
    leave();
    return v;
}

void *RecordBuilder::fixedValue(const FixedValueType &type) {
    if (type.prefixBytes == 0) { // scalar form only: the element itself
        uint8_t *element = block(type.layoutBytes());
        in_.fill(element, type.layoutBytes());
        return element;
    }
    uint8_t *head = block(sizeof(AttributeArrayHeader));
    const uint16_t n = count(type.prefixBytes, type.wireBytes, type.recordBytes);
    if (type.prefixBytes == 1) {
        head[0] = static_cast<uint8_t>(n);
        head[1] = unusedHighByte();
    } else {
        storeWidth(head, 2, n);
    }
    storePointer(slot(head, 8), bytes(size_t{n} * type.recordBytes, n != 0));
    return head;
}

void *RecordBuilder::recordValue(const ValueType &type) {
    if (type.family == ValueType::Family::Selector) {
        const uint8_t b = in_.u8();
        if (b >= 0xF0) { // outside 1 to 4: refused before the variant is read
            refuse();
            uint8_t *record = block(1);
            record[0] = (b & 1) != 0 ? 0 : static_cast<uint8_t>(5 + (b & 0x0F));
            return record;
        }
        const uint8_t selector = static_cast<uint8_t>(1 + b % 4);
        const Plan &variant = type.layout[selector - 1];
        uint8_t *record = block(8u + variant.record);
        record[0] = selector;
        fillFields(variant, record + 8);
        return record;
    }
    const Plan &layout = *type.layout;
    if (type.prefixBytes == 0) return planRecord(layout, layout.record);
    uint8_t *head = block(sizeof(AttributeArrayHeader));
    const uint16_t n = count(2, layout.wireFixed, layout.record, true);
    storeWidth(head, 2, n);
    uint8_t *elements = zeroed(size_t{n} * layout.record, n != 0);
    storePointer(slot(head, 8), elements);
    if (elements != nullptr)
        for (uint32_t i = 0; i < n; ++i) fillFields(layout, elements + size_t{i} * layout.record);
    return head;
}

void RecordBuilder::attributeEntry(uint8_t *at, EntryContext context) {
    // A structure drops an attribute its codec refuses and goes on: such a
    // record encodes, but to bytes that do not decode to it again.
    const bool outerMustFail = mustFail_, outerNullData = nullData_;
    if (context == EntryContext::Structure) mustFail_ = nullData_ = false;

    AttributeEntry entry{};
    entry.id = attributeId();
    entry.length = in_.u16(); // ignored unless written raw
    const ValueType &type = attributeType(entry.id);
    if (type.family != ValueType::Family::None) {
        void *value = attributeValue(entry.id);
        if (nullPointer()) {
            value = nullptr;
            // Only a fixed-size scalar's size does not depend on its record.
            if (type.family == ValueType::Family::Fixed && type.prefixBytes == 0) nullData_ = true;
            else mustFail_ = true;
        }
        entry.value = value;
    } else if (context == EntryContext::Event) { // raw: `length` bytes
        entry.length = count(2, 1, 1);
        entry.value = bytes(entry.length, entry.length != 0);
    } else {
        mustFail_ = true; // no codec for the identifier
        entry.value = bytes(16, false);
    }
    std::memcpy(at, &entry, sizeof entry);

    if (context == EntryContext::Structure) {
        bool dropped = mustFail_;
        if (const trov::AttributeCodecRow *row = trov::lookupAttribute(entry.id, 0); !dropped && row != nullptr) {
            // The codec may refuse a value this builder does not model as
            // refused (a size limit of its own, a selector, a nested list
            // refusing deeper down): a structure drops that too.
            trov::WireSize size;
            dropped = row->ops.encCalc(entry.value, 2, &size, 0) != TROV_RESULT_OK;
        }
        if (dropped) { // with whatever null bytes it held
            lossy();
            nullData_ = false;
        }
        mustFail_ = outerMustFail;
        nullData_ = nullData_ || outerNullData;
    }
}

void RecordBuilder::option(uint8_t *kind, uint8_t *length, uint8_t *valueSlot) {
    const uint8_t b = in_.u8();
    *kind = b < 0xC0 ? static_cast<uint8_t>(b % 6) : static_cast<uint8_t>(6 + b % 250);
    uint8_t *value = nullptr;
    if (*kind >= 6) {
        *length = static_cast<uint8_t>(count(1, 1, 1));
        value = bytes(*length, *length != 0);
    } else {
        *length = in_.u8(); // the kind decides; the length is not read
        // The bytes the option encoder reads: u32, u16, or u32 then u16.
        constexpr uint8_t kValueBytes[] = {0, 4, 4, 2, 2, 6};
        value = bytes(kValueBytes[*kind], *kind != 0);
    }
    storePointer(valueSlot, value);
}

void RecordBuilder::structure(const StructField *d, uint8_t *record) {
    // The codec's walk: each field's place depends on whether a count is
    // pending, and counted fields take the last count-flagged scalar.
    uint16_t offset = 0;
    uint16_t pending = 0;
    for (const StructField *f = d; f->number != 0; ++f) {
        const StructPlacement place = structPlaceField(*f, offset, pending > 0);
        uint8_t *at = slot(record, place.at);
        if (structIsScalar(f->kind)) {
            if (f->countFlag == 0) {
                in_.fill(at, f->size);
            } else {
                // Size the count for the field that will take it.
                uint32_t wireEach = 1, recordEach = 1;
                bool built = false;
                for (const StructField *next = f + 1; next->number != 0; ++next) {
                    if (next->kind == kStructArray) {
                        wireEach = structFixedWireSize(next->nested);
                        recordEach = next->size;
                        built = true;
                    }
                    if (next->kind == kStructOctets || next->kind == kStructChars || next->kind == kStructArray)
                        break;
                }
                const uint16_t n = count(f->size == 1 ? 1 : 2, wireEach, recordEach, built);
                // A wider count is taken as its first two bytes in memory:
                // what lies above them is the host's business.
                if (f->size == 1) {
                    at[0] = static_cast<uint8_t>(n);
                } else {
                    in_.fill(at, f->size);
                    std::memcpy(at, &n, 2);
                }
                pending = n;
            }
        } else {
            switch (f->kind) {
            case kStructOctets:
            case kStructChars:
                storePointer(at, bytes(pending, pending != 0));
                pending = 0;
                break;
            case kStructNested:
                enter();
                structure(f->nested, at);
                leave();
                break;
            case kStructOptions: {
                const uint16_t n = count(1, 2, sizeof(StructOption), true);
                at[0] = static_cast<uint8_t>(n);
                uint8_t *options = zeroed(size_t{n} * sizeof(StructOption), n != 0);
                storePointer(slot(at, 8), options);
                if (options != nullptr)
                    for (uint32_t i = 0; i < n; ++i) {
                        uint8_t *o = options + size_t{i} * sizeof(StructOption);
                        option(o, o + 1, o + offsetof(StructOption, value));
                    }
                break;
            }
            case kStructArray: {
                uint8_t *elements = zeroed(size_t{pending} * f->size, pending != 0);
                storePointer(at, elements);
                if (elements != nullptr)
                    for (uint32_t i = 0; i < pending; ++i) {
                        enter();
                        structure(f->nested, elements + size_t{i} * f->size);
                        leave();
                    }
                pending = 0;
                break;
            }
            case kStructAttribute:
                attributeEntry(at, EntryContext::Structure);
                pending = 0;
                break;
            default: break;
            }
        }
        offset = place.next;
    }
}

// ---- records --------------------------------------------------------------------------

// A record of any layout of the field model: the fields at the plan's
// offsets, each counted part a count and a pointer to its own block.
uint8_t *RecordBuilder::planRecord(const Plan &plan, size_t recordBytes) {
    uint8_t *record = block(recordBytes);
    fillFields(plan, record);
    return record;
}

void RecordBuilder::fillFields(const Plan &plan, uint8_t *record) {
    // Items are 8-byte elements; other elements are stored as wide as on the wire.
    auto stride = [](FieldKind kind) -> uint8_t {
        return kind == FieldKind::ByteU32Items || kind == FieldKind::U32ByteItems ? 8 : kindInfo(kind).wire;
    };
    uint16_t pending = 0; // a Count field's value, for the run behind it
    for (uint8_t i = 0; i < plan.count; ++i) {
        const Field &f = plan.fields[i];
        const KindInfo &k = kindInfo(f.kind);
        uint8_t *field = slot(record, f.offset);
        switch (f.kind) {
        case FieldKind::Bytes: in_.fill(field, f.size); break;
        case FieldKind::Reserved8: in_.fill(field, 1); break;
        case FieldKind::Buffer: break;
        case FieldKind::Option: option(field, field + 1, slot(record, f.data)); break;
        case FieldKind::Count: { // the run that follows takes the count
            const FieldKind run = plan.fields[i + 1].kind;
            pending = count(f.prefix, kindInfo(run).wire, stride(run));
            storeWidth(field, f.prefix, pending);
            break;
        }
        case FieldKind::Attributes:
        case FieldKind::EventAttributes: {
            const uint16_t n = count(2, 5, sizeof(AttributeEntry), true);
            storeWidth(field, 2, n);
            uint8_t *entries = zeroed(size_t{n} * sizeof(AttributeEntry), n != 0);
            storePointer(slot(field, offsetof(AttributeList, entries)), entries);
            const EntryContext context = f.kind == FieldKind::Attributes ? EntryContext::List : EntryContext::Event;
            if (entries != nullptr)
                for (uint32_t k = 0; k < n; ++k) attributeEntry(entries + size_t{k} * sizeof(AttributeEntry), context);
            break;
        }
        case FieldKind::Attribute:
        case FieldKind::TypedValue:
        case FieldKind::ReservedValue: {
            // An attribute identifier or a data type, and a value of its type.
            const bool attribute = f.kind == FieldKind::Attribute;
            const uint16_t key = attribute ? attributeId() : dataTypeCode();
            storeWidth(field, 2, key);
            void *value = attribute ? attributeValue(key) : dataTypeValue(key);
            if ((attribute ? attributeType(key) : dataType(key)).family == ValueType::Family::None) refuse();
            if (nullPointer()) {
                value = nullptr;
                refuse();
            }
            storePointer(slot(record, f.data), value);
            // A type without reserved room is read over on decoding and its
            // value not kept.
            if (f.kind == FieldKind::ReservedValue && reservedValueRoom(key) == 0) lossy();
            break;
        }
        default: {
            if (!k.counted) {
                in_.fill(field, k.wire);
                break;
            }
            if (f.prefix == 0 && f.kind != FieldKind::Rest) { // behind its Count: the pointer alone
                storePointer(slot(record, f.data), bytes(size_t{pending} * stride(f.kind), pending != 0));
                break;
            }
            const uint8_t prefix = f.kind == FieldKind::Rest ? 2 : f.prefix;
            const uint16_t n = count(prefix, k.wire, stride(f.kind));
            // A one-byte count leaves the head's next byte to junk: encoders read the first.
            if (prefix == 1) storeWidth(field, 2, static_cast<uint16_t>(unusedHighByte() << 8 | n));
            else storeWidth(field, prefix, n);
            storePointer(slot(record, f.data), bytes(size_t{n} * stride(f.kind), n != 0));
            break;
        }
        }
    }
}

void *RecordBuilder::bodyRecord(const BodyLayout &layout) { return planRecord(*layout.plan, layout.recordBytes); }

void RecordBuilder::methodParams(const Plan &plan, MethodBody &body) {
    if (plan.count == 0) { // nothing is read
        body.params = bytes(4, false);
        return;
    }
    uint8_t *params = planRecord(plan, plan.record);
    if (nullPointer()) {
        params = nullptr;
        refuse();
    }
    body.params = params;
}

MethodBody *RecordBuilder::methodBody() {
    auto *body = reinterpret_cast<MethodBody *>(block(sizeof(MethodBody)));
    in_.fill(reinterpret_cast<uint8_t *>(&body->value0), 4);
    body->method = methodCode();
    if (const MethodPlans *plans = methodPlans(body->method)) {
        body->paramsLength = in_.u16(); // the record says how long it is
        methodParams(plans->request, *body);
    } else if (body->method >= 0x2000) { // raw bytes, as long as the record says
        body->paramsLength = count(2, 1, 1);
        body->params = bytes(body->paramsLength, body->paramsLength != 0);
    } else { // no codec for the method
        refuse();
        body->paramsLength = in_.u16();
        body->params = nullptr;
    }
    return body;
}

// 0xC4 and 0xC5: a head whose first 8 bytes point at the structure.
void *RecordBuilder::structureEvent() {
    uint8_t *head = block(16);
    uint8_t *body = block(structRecordSize(structure_event::kBody));
    structure(structure_event::kBody, body);
    if (nullPointer()) {
        body = nullptr;
        refuse();
    }
    storePointer(head, body);
    return head;
}

} // namespace trovfuzz
