// The first attribute (or data type) whose element is plain scalars in array
// form, at a version: what the tests nest inside values, so that nesting
// stays small. Found once per family and version.
#pragma once

#include <cstdint>

#include "TrovLayout.h"

inline uint16_t plainCode(bool dataType, uint8_t version) {
    static uint16_t found[2][256] = {};
    uint16_t &code = found[dataType][version];
    for (unsigned c = 1; code == 0 && c < 0x10000; ++c) {
        TrovLayoutInfo l{};
        const auto key = uint16_t(c);
        const TrovResult r = dataType ? TROV_DescribeDataType(key, version, &l) : TROV_DescribeAttribute(key, version, &l);
        bool plain = r == TROV_RESULT_OK && l.form == TROV_LAYOUT_FIELDS && l.arrayCountBytes != 0 && l.fieldCount != 0;
        for (uint16_t i = 0; plain && i < l.fieldCount; ++i) plain = l.fields[i].kindId <= TROV_KIND_U32;
        if (plain) code = key;
    }
    return code;
}

inline uint16_t plainAttribute(uint8_t version = TROV_PROTOCOL_VERSION) { return plainCode(false, version); }
