// The data-type codec table, built from the data-type rows (DataTypes.h):
// each code runs the codec of its attribute row's value type or of its own
// type. Ended by a row whose code is 0.
#include <iterator>
#include <utility>

#include "engine/Tables.h"
#include "attributes/DataTypes.h"
#include "attributes/FixedValueCodec.h"
#include "attributes/FixedValueTypes.h"
#include "attributes/RecordValueCodec.h"
#include "attributes/RecordValueTypes.h"

namespace trov {
namespace {

template <class Type, size_t N>
constexpr size_t typeOfRow(const Type (&types)[N], uint16_t row) {
    for (size_t i = 0; i < N; ++i)
        if (types[i].row == row) return i;
    return N;
}

template <size_t I>
constexpr ValueCodecOps dataTypeOps() {
    constexpr DataTypeRow d = kDataTypeRows[I];
    if constexpr (d.ownFixed >= 0) {
        return FixedValueCodec<kOwnFixedTypes, d.ownFixed>::ops;
    } else if constexpr (d.ownRecord >= 0) {
        return RecordValueCodec<kOwnRecordTypes, d.ownRecord>::ops;
    } else if constexpr (constexpr size_t f = typeOfRow(kFixedValueTypes, d.attributeRow);
                         f < std::size(kFixedValueTypes)) {
        return FixedValueCodec<kFixedValueTypes, f>::ops;
    } else {
        constexpr size_t r = typeOfRow(kRecordValueTypes, d.attributeRow);
        static_assert(r < std::size(kRecordValueTypes), "a data type names no fixed or record row");
        return RecordValueCodec<kRecordValueTypes, r>::ops;
    }
}

template <size_t... I>
constexpr std::array<DataTypeCodecRow, sizeof...(I) + 1> dataTypeTable(std::index_sequence<I...>) {
    return {DataTypeCodecRow{kDataTypeRows[I].code, 0, dataTypeOps<I>()}...,
            DataTypeCodecRow{0, 0, {nullptr, nullptr, nullptr, nullptr}}};
}

constexpr auto kTable = dataTypeTable(std::make_index_sequence<std::size(kDataTypeRows)>{});

} // namespace

// The exported table is a plain array: its rows are copied from the one
// built at compile time above.
#define TROV_ROW(i) kTable[i]
extern constexpr DataTypeCodecRow DataTypeCodecTable[] = {
    TROV_ROW(0),  TROV_ROW(1),  TROV_ROW(2),  TROV_ROW(3),  TROV_ROW(4),  TROV_ROW(5),  TROV_ROW(6),  TROV_ROW(7),
    TROV_ROW(8),  TROV_ROW(9),  TROV_ROW(10), TROV_ROW(11), TROV_ROW(12), TROV_ROW(13), TROV_ROW(14), TROV_ROW(15),
};
#undef TROV_ROW
static_assert(kTable.size() == 16, "a row of the exported table per data type, and the end row");

// The lookup index of the table above, built at compile time.
extern constexpr RowIndex DataTypeCodecIndex = kRowIndexOf<DataTypeCodecTable>.view();

} // namespace trov
