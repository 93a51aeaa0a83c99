// The method codec tables: method code -> the four operations on a method
// invocation's parameters. Each FU row's operations are the generic method
// walks over the method's field lists (MethodCodecs.h); every row serves
// every version. The FP family has no methods: its table is the terminator
// row alone.
#include "engine/Tables.h"
#include "units/MethodCodecs.h"

namespace trov {

extern constexpr MethodCodecRow FUMethodCodecTable[] = {
    methodRow<0x6b>(), methodRow<0xa1>(), methodRow<0x98>(), methodRow<0x97>(), methodRow<0x6f>(), methodRow<0x75>(),
    methodRow<0x95>(), methodRow<0x96>(), methodRow<0x9b>(), methodRow<0x6c>(), methodRow<0x70>(), methodRow<0x85>(),
    methodRow<0xa9>(), methodRow<0x82>(), methodRow<0x8a>(), methodRow<0x72>(), methodRow<0x74>(), methodRow<0x73>(),
    methodRow<0x88>(), methodRow<0xa8>(), methodRow<0x0c>(), methodRow<0x90>(), methodRow<0x94>(), methodRow<0x91>(),
    methodRow<0x76>(), methodRow<0x77>(), methodRow<0x99>(), methodRow<0x9a>(), methodRow<0xa5>(), methodRow<0xa7>(),
    methodRow<0x87>(), methodRow<0x89>(), methodRow<0x7d>(), methodRow<0x7c>(), methodRow<0x66>(), methodRow<0x65>(),
    methodRow<0x68>(), methodRow<0x84>(), methodRow<0x0e>(), methodRow<0x8d>(), methodRow<0x92>(), methodRow<0x83>(),
    methodRow<0x0b>(), methodRow<0x69>(), methodRow<0xa2>(), methodRow<0x6d>(), methodRow<0xaa>(), methodRow<0x6a>(),
    methodRow<0x8c>(), methodRow<0xa3>(), methodRow<0x6e>(), methodRow<0x8f>(), methodRow<0x7e>(), methodRow<0x7f>(),
    methodRow<0x93>(), methodRow<0x67>(), methodRow<0x8e>(), methodRow<0x0d>(), methodRow<0x9c>(), methodRow<0x9d>(),
    methodRow<0xa4>(), methodRow<0x9e>(), methodRow<0x9f>(), methodRow<0xa0>(), methodRow<0xa6>(), methodRow<0xab>(),
    methodRow<0xac>(), methodRow<0xae>(), methodRow<0xad>(), methodRow<0xb1>(), methodRow<0xaf>(), methodRow<0xb0>(),
    methodRow<0xb2>(), methodRow<0xb3>(), methodRow<0xb4>(), methodRow<0xb5>(), methodRow<0xb6>(), methodRow<0xb7>(),
    methodRow<0xb8>(), methodRow<0xb9>(), methodRow<0xba>(), methodRow<0xbb>(), methodRow<0xbc>(), methodRow<0xbd>(),
    methodRow<0xbe>(), methodRow<0xbf>(), methodRow<0xc0>(),
    {0, 0, nullptr, nullptr, nullptr, nullptr},
};

extern constexpr MethodCodecRow FPMethodCodecTable[] = {
    {0, 0, nullptr, nullptr, nullptr, nullptr},
};

// The lookup indexes of the two tables above, built at compile time.
extern constexpr RowIndex FUMethodCodecIndex = kRowIndexOf<FUMethodCodecTable>.view();
extern constexpr RowIndex FPMethodCodecIndex = kRowIndexOf<FPMethodCodecTable>.view();

namespace {

// The rows follow the method list one for one, so the table holds every
// method once, in the list's order, and nothing else.
constexpr bool tableFollowsMethodList() {
    constexpr size_t rows = std::size(FUMethodCodecTable) - 1;
    if (rows != kMethodCount || FUMethodCodecTable[rows].code != 0) return false;
    for (size_t i = 0; i < rows; ++i)
        if (FUMethodCodecTable[i].code != kMethods[i].code || FUMethodCodecTable[i].version != 0) return false;
    return true;
}
static_assert(tableFollowsMethodList());
static_assert(std::size(FUMethodCodecTable) == 87 + 1, "87 method rows and the terminator");
static_assert(FUMethodCodecTable[0].code == 0x6b && FUMethodCodecTable[43].code == 0x69 &&
              FUMethodCodecTable[86].code == 0xc0);

} // namespace

} // namespace trov
