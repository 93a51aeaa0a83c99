// Table pointers, TROV_InitCoder and the lookups that are not one-liners.
#include "api/Dispatch.h"

namespace trov {

TablePointers tablePointers;

Tables activeTables() {
    constexpr auto r = std::memory_order_relaxed;
    const TablePointers &p = tablePointers;
    return Tables{p.attributes.load(r), p.dataTypes.load(r), p.fuBodies.load(r),
                  p.fpBodies.load(r),   p.fuMethods.load(r), p.fpMethods.load(r),
                  p.fuEvents.load(r),   p.fpEvents.load(r)};
}

Tables builtinTables() {
    return Tables{AttributeCodecTable, DataTypeCodecTable, FUCodecTable,      FPCodecTable,
                  FUMethodCodecTable,  FPMethodCodecTable, FUEventCodecTable, FPEventCodecTable};
}

const HeaderCodecRow *findHeaderRow(uint8_t version) {
    for (const HeaderCodecRow *row = HeaderCodecTable; row->version != 0; ++row) {
        if (row->version == version) return row;
    }
    return nullptr;
}

const AttributeCodecRow *findAttributeRow(const AttributeCodecRow *table, uint16_t id,
                                          uint8_t version) {
    if (table == nullptr) return nullptr;
    if (table == AttributeCodecTable) return findBuiltinAttributeRow(id, version);
    for (const AttributeCodecRow *row = table; row->identifiers != nullptr; ++row) {
        for (const uint16_t *p = row->identifiers; *p != 0; ++p) {
            if (*p != id) continue;
            if (row->version == 0 || row->version == version) return row;
            break; // listed here for another version: try the next row
        }
    }
    return nullptr;
}

const ValueCodecOps *attributeCodec(uint16_t id, uint8_t version) {
    const AttributeCodecRow *row = lookupAttribute(id, version);
    return row != nullptr ? &row->ops : nullptr;
}

const MethodCodecRow *findMethodRow(const Tables &t, uint16_t code, uint8_t version) {
    if (t.fuMethods == nullptr) return nullptr;
    if (const MethodCodecRow *row = findRow(t.fuMethods, code, version)) return row;
    return code >= 0x2000 ? &RawMethodCodecRow : nullptr;
}

} // namespace trov

extern "C" TROV_API int32_t TROV_InitCoder(void) {
    constexpr auto r = std::memory_order_relaxed;
    const trov::Tables t = trov::builtinTables();
    trov::TablePointers &p = trov::tablePointers;
    p.attributes.store(t.attributes, r);
    p.dataTypes.store(t.dataTypes, r);
    p.fuBodies.store(t.fuBodies, r);
    p.fpBodies.store(t.fpBodies, r);
    p.fuMethods.store(t.fuMethods, r);
    p.fpMethods.store(t.fpMethods, r);
    p.fuEvents.store(t.fuEvents, r);
    p.fpEvents.store(t.fpEvents, r);
    return 1;
}
