// The exported layout descriptions (TrovLayout.h).
//
// Every description is built at compile time from the plans the codecs run
// on: the body layouts, the method field lists, the two event families'
// layouts, the attribute value types and the data types. A lookup finds the
// codec row through the same tables and rules as the codecs (so nothing is
// described before TROV_InitCoder, and the first matching row wins), then
// answers with the description that belongs to that row.
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>
#include <utility>

#include "api/Dispatch.h"
#include "units/BodyDescription.h"
#include "api/StructureDescription.h"
#include "TrovLayout.h"
#include "attributes/DataTypes.h"
#include "attributes/FixedValueTypes.h"
#include "attributes/RecordValueTypes.h"
#include "attributes/StructureValueTypes.h"
#include "events/AttributeEvents.h"
#include "events/StringEvents.h"
#include "units/MethodCodecs.h"

namespace trov {
namespace {

template <class Row>
constexpr bool within(const Row *row, const Row *first, size_t n) {
    const std::less<const Row *> before;
    return !before(row, first) && before(row, first + n);
}

constexpr TrovLayoutInfo info(const char *record, uint16_t recordBytes, uint16_t count,
                              const TrovFieldInfo *fields, uint8_t form, uint8_t arrayCountBytes,
                              uint16_t wireFixed) {
    return TrovLayoutInfo{record, recordBytes, count, fields, form, arrayCountBytes, wireFixed};
}

// ---- events ------------------------------------------------------------------------

// The descriptions of one family's plans, in the order of its layouts.
template <const auto &Plans>
struct EventFields {
    static constexpr FieldList make(size_t i) { return describePlan(Plans[i]); }
};

template <const auto &Plans, size_t... I>
constexpr auto eventInfos(std::index_sequence<I...>) {
    return std::array<TrovLayoutInfo, sizeof...(I)>{
        info(nullptr, Plans[I].record, fieldCount<EventFields<Plans>, I>(), fieldArray<EventFields<Plans>, I>(),
             TROV_LAYOUT_FIELDS, 0, Plans[I].wireFixed)...};
}
constexpr auto kStringEventInfos =
    eventInfos<kStringEventPlans>(std::make_index_sequence<kStringEventPlans.size()>{});
constexpr auto kAttributeEventInfos =
    eventInfos<kAttributeEventPlans>(std::make_index_sequence<kAttributeEventPlans.size()>{});

// The rows of the built-in FU event table: every code of the two families.
constexpr size_t kEventRows = kStringEventCodecs.size() + kAttributeEventCodecs.size();

// 0xC4 and 0xC5: a 16-byte head pointing at the structure, the structure
// behind it as the one field, "data".
constexpr TrovFieldInfo kStructureEventFields[] = {{"data", "record", TROV_KIND_RECORD, 0, 0, 0,
                                                    structure_event::kHeadBytes, sizeof(structure_event::Body),
                                                    TROV_NO_DATA, -1}};
constexpr TrovLayoutInfo kStructureEventInfo =
    info("TrovEvent00C4", sizeof(structure_event::Event), 1, kStructureEventFields, TROV_LAYOUT_STRUCTURE, 0,
         structure_event::kBody.wireFixed);

// The description of the event a row decodes, found through the plan its
// operations run.
const TrovLayoutInfo *describeEventRow(const EventCodecRow &row) {
    const EventCodec *c = findStringEventOps(row.code);
    if (c == nullptr) c = findAttributeEventCodec(row.code);
    if (c == nullptr || c->decode != row.decode) return nullptr;
    if (c->plan == nullptr) return &kStructureEventInfo;
    if (within(c->plan, kStringEventPlans.data(), kStringEventPlans.size()))
        return &kStringEventInfos[static_cast<size_t>(c->plan - kStringEventPlans.data())];
    return &kAttributeEventInfos[static_cast<size_t>(c->plan - kAttributeEventPlans.data())];
}

// ---- methods -------------------------------------------------------------------------

struct MethodRequestFields {
    static constexpr FieldList make(size_t i) { return describePlan(kMethodPlans[i].request); }
};
struct MethodReplyFields {
    static constexpr FieldList make(size_t i) { return describePlan(kMethodPlans[i].reply); }
};

template <size_t I>
constexpr TrovLayoutInfo methodRequestInfo() {
    const Plan &p = kMethodPlans[I].request;
    return info(nullptr, p.count == 0 ? uint16_t{0} : p.record, fieldCount<MethodRequestFields, I>(),
                fieldArray<MethodRequestFields, I>(), p.count == 0 ? TROV_LAYOUT_NONE : TROV_LAYOUT_FIELDS,
                0, p.wireFixed);
}

template <size_t I>
constexpr TrovLayoutInfo methodReplyInfo() {
    const MethodInfo &m = kMethods[I];
    const Plan &p = kMethodPlans[I].reply;
    switch (m.reply) {
    case MethodReply::Structured: return *describeStructureOf(m.replyDescriptor);
    case MethodReply::None: return info(nullptr, 0, 0, nullptr, TROV_LAYOUT_NONE, 0, 0);
    default:
        return info(nullptr, p.record, fieldCount<MethodReplyFields, I>(), fieldArray<MethodReplyFields, I>(),
                    TROV_LAYOUT_FIELDS, 0, p.wireFixed);
    }
}

template <size_t... I>
constexpr auto methodInfos(std::index_sequence<I...>) {
    struct Sides {
        std::array<TrovLayoutInfo, sizeof...(I)> request, reply;
    };
    return Sides{{methodRequestInfo<I>()...}, {methodReplyInfo<I>()...}};
}
constexpr auto kMethodInfos = methodInfos(std::make_index_sequence<kMethodCount>{});

// Codes of 0x2000 and above without a method: the parameters are the bytes.
constexpr TrovLayoutInfo kRawMethodInfo = info(nullptr, 0, 0, nullptr, TROV_LAYOUT_RAW, 0, 0);

// ---- attribute values and data types ----------------------------------------------------

// A fixed-size type: the plan its codec runs.
constexpr FieldList describeFixed(const FixedValueType &t) { return describePlan(t.plan()); }

// A record type: the plan its codec runs.
constexpr FieldList describeRecord(const RecordValueType &t) { return describePlan(valuePlan(t.fields)); }

constexpr size_t kAttributeRows = 282;

template <class Type, size_t N>
constexpr size_t typeOfRow(const Type (&types)[N], size_t row) {
    for (size_t i = 0; i < N; ++i)
        if (types[i].row == row) return i;
    return N;
}

struct AttributeRowFields {
    static constexpr FieldList make(size_t row) {
        if (size_t i = typeOfRow(kFixedValueTypes, row); i < std::size(kFixedValueTypes))
            return describeFixed(kFixedValueTypes[i]);
        if (size_t i = typeOfRow(kRecordValueTypes, row); i < std::size(kRecordValueTypes)) {
            const RecordValueType &t = kRecordValueTypes[i];
            if (t.variants == nullptr) return describeRecord(t);
            FieldList out; // a selector type: the selector byte
            out.at[0] = describeField(fields::u8, 0, false);
            out.at[0].name = "selector";
            out.count = 1;
            return out;
        }
        return FieldList{}; // a structure type
    }
};

template <size_t Row>
constexpr TrovLayoutInfo attributeRowInfo() {
    constexpr uint16_t n = fieldCount<AttributeRowFields, Row>();
    constexpr const TrovFieldInfo *f = fieldArray<AttributeRowFields, Row>();
    if constexpr (constexpr size_t i = typeOfRow(kFixedValueTypes, Row); i < std::size(kFixedValueTypes)) {
        constexpr const FixedValueType &t = kFixedValueTypes[i];
        static_assert(n == t.fieldCount(), "a fixed value type's fields moved");
        return info(nullptr, t.recordBytes, n, f, TROV_LAYOUT_FIELDS, t.prefixBytes, t.wireBytes);
    } else if constexpr (constexpr size_t j = typeOfRow(kRecordValueTypes, Row);
                         j < std::size(kRecordValueTypes)) {
        constexpr const RecordValueType &t = kRecordValueTypes[j];
        if constexpr (t.variants == nullptr) {
            constexpr Plan plan = valuePlan(t.fields);
            static_assert(n == plan.count);
            return info(nullptr, plan.record, n, f, TROV_LAYOUT_FIELDS, t.prefixBytes, plan.wireFixed);
        } else { // the selector at 0, the largest variant's record at 8
            uint16_t variant = 0;
            for (const ValueFields &v : t.variants->variant)
                if (valuePlan(v).record > variant) variant = valuePlan(v).record;
            return info(nullptr, static_cast<uint16_t>(8 + variant), n, f, TROV_LAYOUT_SELECTOR, 0, 1);
        }
    } else {
        constexpr size_t k = typeOfRow(kStructureValueTypes, Row);
        static_assert(k < std::size(kStructureValueTypes), "an attribute row without a value type");
        static_assert(describeStructureOf(kStructureValueTypes[k].plan) != nullptr,
                      "a structure value type without names");
        return *describeStructureOf(kStructureValueTypes[k].plan);
    }
}

// Index r - 1 describes row r.
template <size_t... I>
constexpr std::array<TrovLayoutInfo, sizeof...(I)> attributeInfos(std::index_sequence<I...>) {
    return {attributeRowInfo<I + 1>()...};
}
constexpr auto kAttributeInfos = attributeInfos(std::make_index_sequence<kAttributeRows>{});

// The selector type's variants: each the whole record, the selector at 0 and
// the variant's fields at their offsets behind it (from 8).
constexpr size_t kSelectorType = [] {
    size_t found = std::size(kRecordValueTypes);
    for (size_t i = 0; i < std::size(kRecordValueTypes); ++i)
        if (kRecordValueTypes[i].variants != nullptr) found = found == std::size(kRecordValueTypes) ? i : ~size_t{0};
    return found;
}();
static_assert(kSelectorType < std::size(kRecordValueTypes), "one selector type");
constexpr uint16_t kVariantOffset = 8;
constexpr size_t kVariantCount = std::size(SelectorVariants{}.variant);

struct VariantFields {
    static constexpr FieldList make(size_t v) {
        FieldList out;
        out.at[0] = describeField(fields::u8, 0, false);
        out.at[0].name = "selector";
        const FieldList variant = describePlan(valuePlan(kRecordValueTypes[kSelectorType].variants->variant[v]));
        for (uint16_t k = 0; k < variant.count; ++k) {
            TrovFieldInfo f = variant.at[k];
            f.offset = static_cast<uint16_t>(f.offset + kVariantOffset);
            if (f.dataOffset != TROV_NO_DATA) f.dataOffset = static_cast<uint16_t>(f.dataOffset + kVariantOffset);
            if (f.countField >= 0) f.countField = static_cast<int16_t>(f.countField + 1);
            out.at[++out.count] = f;
        }
        ++out.count;
        return out;
    }
};
template <size_t... V>
constexpr std::array<TrovLayoutInfo, sizeof...(V)> variantInfos(std::index_sequence<V...>) {
    const auto plan = [](size_t v) { return valuePlan(kRecordValueTypes[kSelectorType].variants->variant[v]); };
    return {info(nullptr, static_cast<uint16_t>(kVariantOffset + plan(V).record), fieldCount<VariantFields, V>(),
                 fieldArray<VariantFields, V>(), TROV_LAYOUT_FIELDS, 0,
                 static_cast<uint16_t>(1 + plan(V).wireFixed))...};
}
constexpr auto kVariantInfos = variantInfos(std::make_index_sequence<kVariantCount>{});

// Where `field` starts among the `n` fields from `first`: its index, or -1
// when it is not the start of one of them. A host may hand in any pointer, so
// only addresses are compared (a pointer into the middle of a field, which
// pointer arithmetic could not reach, is no field).
ptrdiff_t fieldIndex(const TrovFieldInfo *field, const TrovFieldInfo *first, size_t n) {
    const auto at = reinterpret_cast<uintptr_t>(field), begin = reinterpret_cast<uintptr_t>(first);
    if (at < begin || at - begin >= n * sizeof(TrovFieldInfo) || (at - begin) % sizeof(TrovFieldInfo) != 0) return -1;
    return static_cast<ptrdiff_t>((at - begin) / sizeof(TrovFieldInfo));
}

// The record a structure field nests and the room the field gives it.
template <EventFraming F>
const TrovLayoutInfo *eventEntryOf(const TrovFieldInfo *field, uint16_t &room) {
    const TrovLayoutInfo &list = kEventListInfo<F>;
    const ptrdiff_t index = fieldIndex(field, list.fields, list.fieldCount);
    if (index < 0 || list.fields[index].kindId != TROV_KIND_EVENTS) return nullptr;
    room = kEventEntryInfo<F>.recordBytes;
    return &kEventEntryInfo<F>;
}

const TrovLayoutInfo *nestedOf(const TrovFieldInfo *field, uint16_t &room) {
    if (const TrovLayoutInfo *entry = eventEntryOf<EventFraming::Long>(field, room)) return entry;
    if (const TrovLayoutInfo *entry = eventEntryOf<EventFraming::Short>(field, room)) return entry;
    if (fieldIndex(field, kStructureEventFields, 1) == 0) {
        room = sizeof(structure_event::Body);
        return describeStructureOf(&structure_event::kBody);
    }
    for (size_t i = 0; i < kStructureCount; ++i) {
        const TrovLayoutInfo &l = kStructureInfos[i];
        const ptrdiff_t index = fieldIndex(field, l.fields, l.fieldCount);
        if (index < 0) continue;
        const Field &f = kStructureNames[i].plan->fields[index];
        if (f.nested == nullptr) return nullptr;
        room = f.size;
        return describeStructureOf(f.nested);
    }
    return nullptr;
}

// The data types' own types, in the order of their tables.
struct OwnTypeFields {
    static constexpr FieldList make(size_t i) {
        return i < std::size(kOwnFixedTypes) ? describeFixed(kOwnFixedTypes[i])
                                             : describeRecord(kOwnRecordTypes[i - std::size(kOwnFixedTypes)]);
    }
};

template <size_t I>
constexpr TrovLayoutInfo ownTypeInfo() {
    if constexpr (I < std::size(kOwnFixedTypes)) {
        const FixedValueType &t = kOwnFixedTypes[I];
        return info(nullptr, t.recordBytes, fieldCount<OwnTypeFields, I>(), fieldArray<OwnTypeFields, I>(),
                    TROV_LAYOUT_FIELDS, t.prefixBytes, t.wireBytes);
    } else {
        const RecordValueType &t = kOwnRecordTypes[I - std::size(kOwnFixedTypes)];
        const Plan plan = valuePlan(t.fields);
        return info(nullptr, plan.record, fieldCount<OwnTypeFields, I>(), fieldArray<OwnTypeFields, I>(),
                    TROV_LAYOUT_FIELDS, t.prefixBytes, plan.wireFixed);
    }
}
template <size_t... I>
constexpr std::array<TrovLayoutInfo, sizeof...(I)> ownTypeInfos(std::index_sequence<I...>) {
    return {ownTypeInfo<I>()...};
}
constexpr auto kOwnTypeInfos =
    ownTypeInfos(std::make_index_sequence<std::size(kOwnFixedTypes) + std::size(kOwnRecordTypes)>{});

// The description of a data type's row: its attribute row's, or its own type's.
constexpr const TrovLayoutInfo *describeDataType(const DataTypeRow &d) {
    if (d.ownFixed >= 0) return &kOwnTypeInfos[static_cast<size_t>(d.ownFixed)];
    if (d.ownRecord >= 0) return &kOwnTypeInfos[std::size(kOwnFixedTypes) + static_cast<size_t>(d.ownRecord)];
    return &kAttributeInfos[d.attributeRow - 1];
}

// ---- every description holds -------------------------------------------------------------

// Fields in wire order inside the record, with names, and pointers inside it.
constexpr bool holds(const TrovLayoutInfo &l) {
    if ((l.fieldCount == 0) != (l.fields == nullptr)) return false;
    for (uint16_t i = 0; i < l.fieldCount; ++i) {
        const TrovFieldInfo &f = l.fields[i];
        if (f.name == nullptr || f.name[0] == '\0' || f.offset + f.width > l.recordBytes) return false;
        if (f.dataOffset != TROV_NO_DATA && f.dataOffset + 8 > f.offset + f.width) return false;
        if (i > 0 && f.offset < l.fields[i - 1].offset + l.fields[i - 1].width &&
            l.fields[i - 1].kindId != TROV_KIND_RESERVED)
            return false;
    }
    return true;
}
template <size_t N>
constexpr bool allHold(const std::array<TrovLayoutInfo, N> &infos) {
    for (const TrovLayoutInfo &l : infos)
        if (!holds(l)) return false;
    return true;
}
static_assert(allHold(kStringEventInfos) && allHold(kAttributeEventInfos));
static_assert(allHold(kMethodInfos.request) && allHold(kMethodInfos.reply));
static_assert(allHold(kAttributeInfos) && allHold(kStructureInfos) && allHold(kVariantInfos));
static_assert(holds(kStructureEventInfo));
static_assert(holds(kEventListInfo<EventFraming::Long>) && holds(kEventListInfo<EventFraming::Short>) &&
              holds(kEventEntryInfo<EventFraming::Long>) && holds(kEventEntryInfo<EventFraming::Short>) &&
              holds(kMethodCallInfo));
static_assert(kAttributeInfos[0].fieldCount == 5 && kAttributeInfos[0].fields[4].offset == 4);

TrovResult answer(const TrovLayoutInfo *found, TrovResult missing, TrovLayoutInfo *out) {
    if (found == nullptr) return missing;
    *out = *found;
    return TROV_RESULT_OK;
}

} // namespace
} // namespace trov

using namespace trov;

TROV_API TrovResult TROV_DescribeBody(uint16_t code, uint8_t version, int request, TrovLayoutInfo *out) {
    if (out == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const BodyCodecRow *row = findBodyRow(activeTables(), code, version, 1);
    const BodyDescriptions *d = row != nullptr ? bodyDescriptionsOf(row) : nullptr;
    if (d == nullptr) return TROV_RESULT_NO_BODY_CODEC;
    return answer(request != 0 ? d->request : d->reply, TROV_RESULT_NO_BODY_CODEC, out);
}

TROV_API TrovResult TROV_DescribeEvent(uint16_t code, uint8_t version, TrovLayoutInfo *out) {
    if (out == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const Tables t = activeTables();
    const EventCodecRow *row = findEventRow(t, code, version, 1);
    if (row == nullptr || !within(row, FUEventCodecTable, kEventRows)) return TROV_RESULT_NO_EVENT_CODEC;
    return answer(describeEventRow(*row), TROV_RESULT_NO_EVENT_CODEC, out);
}

TROV_API TrovResult TROV_DescribeMethod(uint16_t code, uint8_t version, int request, TrovLayoutInfo *out) {
    if (out == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const MethodCodecRow *row = findMethodRow(activeTables(), code, version);
    if (row == &RawMethodCodecRow) return answer(&kRawMethodInfo, TROV_RESULT_NO_METHOD_CODEC, out);
    if (row == nullptr || !within(row, FUMethodCodecTable, kMethodCount)) return TROV_RESULT_NO_METHOD_CODEC;
    const size_t i = static_cast<size_t>(row - FUMethodCodecTable);
    return answer(request != 0 ? &kMethodInfos.request[i] : &kMethodInfos.reply[i], TROV_RESULT_NO_METHOD_CODEC,
                  out);
}

TROV_API TrovResult TROV_DescribeAttribute(uint16_t id, uint8_t version, TrovLayoutInfo *out) {
    if (out == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const AttributeCodecRow *row = findAttributeRow(activeTables(), id, version);
    if (row == nullptr || !within(row, AttributeCodecTable, kAttributeRows)) return TROV_RESULT_NO_ATTRIBUTE_CODEC;
    return answer(&kAttributeInfos[static_cast<size_t>(row - AttributeCodecTable)], TROV_RESULT_NO_ATTRIBUTE_CODEC,
                  out);
}

TROV_API TrovResult TROV_DescribeDataType(uint16_t code, uint8_t version, TrovLayoutInfo *out) {
    if (out == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const DataTypeCodecRow *row = lookupDataType(code, version);
    if (row == nullptr || !within(row, DataTypeCodecTable, std::size(kDataTypeRows))) return TROV_RESULT_NO_DATA_TYPE_CODEC;
    return answer(describeDataType(kDataTypeRows[static_cast<size_t>(row - DataTypeCodecTable)]),
                  TROV_RESULT_NO_DATA_TYPE_CODEC, out);
}

TROV_API TrovResult TROV_DescribeNested(const TrovFieldInfo *field, TrovLayoutInfo *out) {
    if (field == nullptr || out == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    uint16_t room = 0;
    const TrovLayoutInfo *nested = nestedOf(field, room);
    if (nested == nullptr) return TROV_RESULT_BAD_VALUE;
    *out = *nested;
    out->recordBytes = room;
    return TROV_RESULT_OK;
}

TROV_API TrovResult TROV_DescribeVariant(const TrovLayoutInfo *layout, uint8_t selector, TrovLayoutInfo *out) {
    if (layout == nullptr || out == nullptr) return TROV_RESULT_NULL_ARGUMENT;
    const TrovLayoutInfo &selectorLayout = kAttributeInfos[kRecordValueTypes[kSelectorType].row - 1];
    if (layout->form != TROV_LAYOUT_SELECTOR || layout->fields != selectorLayout.fields) return TROV_RESULT_BAD_VALUE;
    if (selector < 1 || selector > kVariantCount) return TROV_RESULT_BAD_VALUE;
    *out = kVariantInfos[selector - 1u];
    return TROV_RESULT_OK;
}
