// The data-type codec table: values named on the wire by a data-type code
// instead of an attribute identifier. 15 rows, ended by a row whose code is
// 0; every row serves every version.
//
// Most codes share the operations of an attribute row. Codes of a pair
// (0x02/0x03, 0x04/0x05, 0x06/0x07, 0x16/0x18) share one codec but keep rows
// of their own. The codes without an attribute row:
//   0x16, 0x18  byte string: scalar form one byte; array form a u16 count,
//               then that many bytes
//   0x14        12-byte value (scalar form only), record 16 bytes
//   0x17        16-byte value (scalar form only), record 16 bytes
//   0x19        array of strings: a u16 count, then per element a u8 length
//               and that many bytes; each element an OctetString record
//   0x1A        as 0x19 with a u16 length per element
#include <iterator>

#include "api/Dispatch.h"
#include "attributes/FixedValueCodec.h"
#include "attributes/FixedValueTypes.h"
#include "attributes/RecordValueCodec.h"
#include "attributes/RecordValueTypes.h"

namespace trov {
namespace {

// The operations of attribute row `row`, from whichever family holds it.
template <uint16_t Row>
constexpr ValueCodecOps attributeRowOps() {
    constexpr auto fixedIndex = [] {
        for (size_t i = 0; i < std::size(kFixedValueTypes); ++i)
            if (kFixedValueTypes[i].row == Row) return i;
        return std::size(kFixedValueTypes);
    }();
    if constexpr (fixedIndex < std::size(kFixedValueTypes)) {
        return FixedValueCodec<kFixedValueTypes, fixedIndex>::ops;
    } else {
        constexpr auto recordIndex = [] {
            for (size_t i = 0; i < std::size(kRecordValueTypes); ++i)
                if (kRecordValueTypes[i].row == Row) return i;
            return std::size(kRecordValueTypes);
        }();
        static_assert(recordIndex < std::size(kRecordValueTypes), "no such attribute row");
        return RecordValueCodec<kRecordValueTypes, recordIndex>::ops;
    }
}

// Fixed-size types of their own: row 0, not in the attribute table.
constexpr FixedValueType kOwnFixedTypes[] = {
    {0, 1, 2, 1, 0, {1}},                                             // 0x16, 0x18
    {0, 12, 0, 16, 0, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},          // 0x14
    {0, 16, 0, 16, 0, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}}, // 0x17
};
constexpr RecordValueType kOwnRecordTypes[] = {
    {0, 2, {fields::oct8}},  // 0x19
    {0, 2, {fields::oct16}}, // 0x1A
};

constexpr ValueCodecOps kByteString = FixedValueCodec<kOwnFixedTypes, 0>::ops;

} // namespace

extern const DataTypeCodecRow DataTypeCodecTable[] = {
    {0x03, 0, attributeRowOps<6>()},
    {0x16, 0, kByteString},
    {0x07, 0, attributeRowOps<85>()},
    {0x05, 0, attributeRowOps<130>()},
    {0x09, 0, attributeRowOps<148>()},
    {0x08, 0, attributeRowOps<149>()},
    {0x02, 0, attributeRowOps<6>()},
    {0x06, 0, attributeRowOps<85>()},
    {0x04, 0, attributeRowOps<130>()},
    {0x14, 0, FixedValueCodec<kOwnFixedTypes, 1>::ops},
    {0x17, 0, FixedValueCodec<kOwnFixedTypes, 2>::ops},
    {0x15, 0, attributeRowOps<140>()},
    {0x18, 0, kByteString},
    {0x19, 0, RecordValueCodec<kOwnRecordTypes, 0>::ops},
    {0x1A, 0, RecordValueCodec<kOwnRecordTypes, 1>::ops},
    {0, 0, {nullptr, nullptr, nullptr, nullptr}},
};

} // namespace trov
