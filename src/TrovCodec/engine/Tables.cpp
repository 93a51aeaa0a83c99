// The installed view of the tables and the lookups that are not one-liners.
#include "engine/Tables.h"

namespace trov {

std::atomic<const Tables *> installedTables{nullptr};

const AttributeCodecRow *findAttributeRow(const Tables &t, uint16_t id, uint8_t version) {
    if (t.attributes == nullptr) return nullptr;
    if (t.attributeIndex != nullptr) return rowAt(t.attributes, t.attributeIndex->find(id, version));
    for (const AttributeCodecRow *row = t.attributes; row->identifiers != nullptr; ++row) {
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
    if (const MethodCodecRow *row = findRow(t.fuMethods, code, version, t.fuMethodIndex)) return row;
    return code >= 0x2000 ? t.rawMethod : nullptr;
}

} // namespace trov
