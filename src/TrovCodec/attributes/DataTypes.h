// The data types: values named on the wire by a data-type code instead of an
// attribute identifier. 15 codes; every one serves every version.
//
// Most codes share the value type of an attribute row. Codes of a pair
// (0x02/0x03, 0x04/0x05, 0x06/0x07, 0x16/0x18) share one type but keep rows
// of their own. The codes without an attribute row have types of their own:
//   0x16, 0x18  byte string: scalar form one byte; array form a u16 count,
//               then that many bytes
//   0x14        12-byte value (scalar form only), record 16 bytes
//   0x17        16-byte value (scalar form only), record 16 bytes
//   0x19        array of strings: a u16 count, then per element a u8 length
//               and that many bytes; each element an OctetString record
//   0x1A        as 0x19 with a u16 length per element
//
// The codec table and the layout descriptions are both built from these rows.
#pragma once

#include <cstdint>

#include "attributes/FixedValueType.h"
#include "attributes/RecordValueType.h"

namespace trov {

// Fixed-size and record types of their own: row 0, not in the attribute table.
inline constexpr FixedValueType kOwnFixedTypes[] = {
    {0, 1, 2, 1, 0, {1}},                                                // byte string
    {0, 12, 0, 16, 0, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},             // 12 bytes
    {0, 16, 0, 16, 0, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}}, // 16 bytes
};
inline constexpr RecordValueType kOwnRecordTypes[] = {
    {0, 2, {fields::oct8}},  // strings with a u8 length
    {0, 2, {fields::oct16}}, // strings with a u16 length
};

// A code and its type: an attribute row's, or one of its own (-1: none).
struct DataTypeRow {
    uint16_t code;
    uint16_t attributeRow; // 0: a type of its own
    int8_t ownFixed = -1;  // index into kOwnFixedTypes
    int8_t ownRecord = -1; // index into kOwnRecordTypes
};

// In table order (the first matching row wins).
inline constexpr DataTypeRow kDataTypeRows[] = {
    {0x03, 6},   {0x16, 0, 0},  {0x07, 85},  {0x05, 130},    {0x09, 148},
    {0x08, 149}, {0x02, 6},     {0x06, 85},  {0x04, 130},    {0x14, 0, 1},
    {0x17, 0, 2}, {0x15, 140},  {0x18, 0, 0}, {0x19, 0, -1, 0}, {0x1A, 0, -1, 1},
};

} // namespace trov
