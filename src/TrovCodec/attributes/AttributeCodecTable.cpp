// The attribute codec table: attribute identifier -> value codec.
//
// 282 rows, each listing the attribute identifiers that share one value type
// and that type's four operations, ended by a row whose identifier list is
// null. Every row serves every protocol version. A few identifiers stand twice
// in their own row's list (0x0162, 0x2D65, 0x2D66); row 133 has an empty list
// and can never be selected, but keeps its place.
//
// The table is assembled at compile time from two sources that each name the
// row they belong to: the identifier lists below, one run per row in row
// order, and the value-type lists, whose `row` column places each type. A row
// that no type or two types claim, or a missing or extra run, stops the build.
#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <utility>

#include "api/Dispatch.h"
#include "attributes/FixedValueCodec.h"
#include "attributes/FixedValueTypes.h"
#include "attributes/RecordValueCodec.h"
#include "attributes/RecordValueTypes.h"
#include "attributes/StructureValueTypes.h"

namespace trov {
namespace {

constexpr size_t kRows = 282;

constexpr auto kFixed =
    fixedValueOps<kFixedValueTypes>(std::make_index_sequence<std::size(kFixedValueTypes)>{});
constexpr auto kRecord =
    recordValueOps<kRecordValueTypes>(std::make_index_sequence<std::size(kRecordValueTypes)>{});
constexpr auto kStructure = structureValueOps<kStructureValueTypes>(
    std::make_index_sequence<std::size(kStructureValueTypes)>{});

// The identifier lists of rows 1 to 282, one after another, each ended by 0.
constexpr uint16_t kIdentifiers[] = {
    /* row   1 */ 0x177C, 0x1780, 0,
    /* row   2 */ 0x0090, 0x0438, 0x0092, 0x00C7, 0x0105, 0x010A, 0x012C, 0,
    /* row   3 */ 0x0002, 0x0003, 0x0004, 0x0006, 0x0007, 0x000A, 0x000B, 0x001B, 0x0027, 0x002E,
                  0x004B, 0x0051, 0x0053, 0x0054, 0x0056, 0x0057, 0x005F, 0x0064, 0x007E, 0x0088,
                  0x009C, 0x00B0, 0x00DB, 0x00E0, 0x00E5, 0x00EC, 0x00F2, 0x00FB, 0x010B, 0x0112,
                  0x0117, 0x0119, 0x011A, 0x011B, 0x011C, 0x011D, 0x011F, 0x0124, 0x012D, 0x012E,
                  0x0130, 0x0131, 0x0133, 0x0136, 0x013A, 0x013B, 0,
    /* row   4 */ 0x177A, 0,
    /* row   5 */ 0x013C, 0,
    /* row   6 */ 0x00CB, 0x00CC, 0x0025, 0x07E0, 0x0031, 0x0036, 0x0035, 0x08BD, 0x08DB, 0x2D5A,
                  0x012B, 0x2D5B, 0x2D53, 0x2D5C, 0x2D52, 0x08D6, 0x08B7, 0x00EF, 0x2E88, 0x2E85,
                  0x2E82, 0x2E86, 0x2E83, 0x2E7E, 0x2E87, 0x08CA, 0x0838, 0x0034, 0x007D, 0x0066,
                  0x002F, 0x07F6, 0x36B6, 0x0427, 0x0433, 0x2B05, 0x2AFF, 0x2B00, 0x2AFC, 0x2B04,
                  0x0848, 0x0C59, 0x0C5C, 0x0C57, 0x0C5D, 0x0C81, 0x0C80, 0x0C5B, 0x0C58, 0x0C56,
                  0x0C5E, 0x0C5A, 0x0C54, 0x003C, 0x002D, 0x00AB, 0x00AF, 0x012F, 0x1020, 0x1021,
                  0x1013, 0x101C, 0x0FA5, 0x0FAF, 0x1019, 0x101D, 0x0FC4, 0x0FB8, 0x0FA6, 0x0FC7,
                  0x0FC6, 0x1016, 0x0FBD, 0x2985, 0x2A9F, 0x2987, 0x2DBA, 0x086B, 0x28A1, 0x08EF,
                  0x0837, 0x30D9, 0x30DA, 0x30DB, 0x089B, 0x089A, 0x082C, 0x2DC4, 0x1774, 0x0010,
                  0x00DA, 0x0125, 0x00A1, 0x000C, 0x0058, 0x00F0, 0x000D, 0x082A, 0x0039, 0x0890,
                  0x0875, 0x087C, 0x0C63, 0x0C60, 0x0C5F, 0x0C71, 0x0C62, 0x2CEF, 0x1773, 0x2CFB,
                  0x2CEE, 0x07FC, 0x0C4D, 0x0424, 0x0422, 0x03F3, 0x08D2, 0x08DA, 0x08AA, 0x086C,
                  0x08A9, 0x08DD, 0x0898, 0x0843, 0x07DE, 0x08B5, 0x0BD0, 0x08E9, 0x07D8, 0x084B,
                  0x08E8, 0x085D, 0x084A, 0x084E, 0x0BEA, 0x0886, 0x2EE1, 0x08E7, 0x0032, 0x0033,
                  0x07DF, 0x0436, 0x087F, 0x0888, 0x08B3, 0x08D4, 0x08D9, 0x082F, 0x0834, 0x0881,
                  0x088A, 0x08C2, 0x08C3, 0x08C6, 0x085B, 0x085F, 0x07FA, 0x082D, 0x0883, 0x085A,
                  0x08C8, 0x088E, 0x08F0, 0x010D, 0x00B2, 0x010E, 0x00B3, 0x0C85, 0x0C7A, 0x0C67,
                  0x0C77, 0x0BC7, 0x0BD9, 0x0C89, 0x0C8A, 0x0C52, 0x0C53, 0x0BC5, 0x0BBA, 0x0C7B,
                  0x0C43, 0x0BBC, 0x0C6F, 0x0C79, 0x0C44, 0x0BDA, 0x0C8B, 0x0BF2, 0x138A, 0x1389,
                  0x0BFF, 0x0C2E, 0x08CE, 0x041B, 0x03F4, 0x08B8, 0x0073, 0x0C6E, 0x08ED, 0x08F6,
                  0x08F7, 0x138E, 0x08FE, 0x138F, 0x08FF, 0x0905, 0x0C8D, 0x0917, 0x090A, 0x0919,
                  0x0923, 0x0927, 0x0926, 0x0C8E, 0x0933, 0x0930, 0x093B, 0x093D, 0x0151, 0x2E8A,
                  0x2E8C, 0x2E8D, 0x2E8B, 0x0152, 0x093E, 0x0C8F, 0x0942, 0x0943, 0x0C91, 0x0C92,
                  0x0944, 0x0C94, 0x0946, 0x178A, 0x0948, 0x094C, 0x094B, 0x0447, 0x0950, 0x0954,
                  0x0956, 0x095D, 0x1023, 0x095F, 0x2D5F, 0x2D61, 0x2D62, 0x2D63, 0x0969, 0x0968,
                  0x096B, 0x096E, 0x096F, 0x0970, 0x015C, 0x0971, 0x0973, 0x015D, 0x0975, 0x0976,
                  0x1391, 0x097A, 0x097C, 0x097D, 0x097F, 0x0982, 0x1028, 0x2DC5, 0x0167, 0x0C98,
                  0x2D69, 0x2D6A, 0x0C99, 0x0C9A, 0x0995, 0x0C9B, 0x2D04, 0x2D05, 0x099B, 0x099C,
                  0x09A1, 0x0C9D, 0x0C9E, 0x09A4, 0x09A7, 0x0C9F, 0x0CA0, 0x0CA1, 0x0CA3, 0,
    /* row   7 */ 0x08B6, 0,
    /* row   8 */ 0x0880, 0x0FC5, 0x2A9E, 0x0C88, 0x0BC9, 0x0BE0, 0x0902, 0x0903, 0x0951, 0x0952,
                  0,
    /* row   9 */ 0x0842, 0x0831, 0x080B, 0x0889, 0x0067, 0x006B, 0x08D0, 0x08CF, 0x0906, 0x2D57,
                  0x2D56, 0x0897, 0x2E81, 0x083A, 0x006A, 0x0065, 0x0818, 0x2AFE, 0x0063, 0x0FBA,
                  0x101A, 0x0FB7, 0x0FBB, 0x2995, 0x08A0, 0x08CD, 0x0839, 0x08D1, 0x0896, 0x088B,
                  0x088C, 0x0832, 0x0810, 0x0129, 0x0841, 0x00ED, 0x00EE, 0x00D2, 0x00D1, 0x00FD,
                  0x008A, 0x0876, 0x0877, 0x0887, 0x0C69, 0x0C66, 0x0C65, 0x0C68, 0x004D, 0x2CF3,
                  0x2CF2, 0x0C4E, 0x081E, 0x0879, 0x08D3, 0x08AD, 0x08E3, 0x08B0, 0x08AC, 0x0811,
                  0x08DE, 0x0C07, 0x08A3, 0x0809, 0x0C19, 0x0804, 0x0857, 0x0891, 0x084D, 0x0802,
                  0x2EE7, 0x0068, 0x0069, 0x080A, 0x08C4, 0x08C5, 0x08C0, 0x08C1, 0x08BF, 0x081C,
                  0x0833, 0x088D, 0x085E, 0x0C05, 0x0C18, 0x0C03, 0x0C01, 0x0C4B, 0x0C87, 0x0BFB,
                  0x0BFC, 0x0C50, 0x0BFD, 0x0BED, 0x0BF8, 0x0BEE, 0x0BF1, 0x0C7F, 0x0C7E, 0x0BF0,
                  0x0C74, 0x0C26, 0x0C34, 0x0C49, 0x00C3, 0x089E, 0x08B9, 0x08EE, 0x0900, 0x090E,
                  0x0139, 0x0924, 0x0925, 0x013D, 0x0140, 0x0C90, 0x094F, 0x0448, 0x0966, 0x0967,
                  0x0C96, 0x30E1, 0x097E, 0x044A, 0x0993, 0x0169, 0x0CA4, 0,
    /* row  10 */ 0x08D8, 0x08D7, 0x0C84, 0x0BC8, 0x0C73, 0x08FB, 0x0134, 0x0901, 0x091B, 0,
    /* row  11 */ 0x006C, 0x08A2, 0x2984, 0x08A1, 0x08C9, 0x086D, 0x089D, 0x086A, 0x0C37, 0x0C25,
                  0x0914, 0,
    /* row  12 */ 0x08D5, 0x0C6D, 0x0907, 0x0C97, 0,
    /* row  13 */ 0x08E0, 0x0BEF, 0x0865, 0x0C02, 0x0135, 0,
    /* row  14 */ 0x0BBB, 0x0C86, 0x0C7C, 0,
    /* row  15 */ 0x0C06, 0,
    /* row  16 */ 0x011E, 0x28B6, 0x005B, 0x00A0, 0x0059, 0x07EF, 0x08B4, 0x0081, 0x0C48, 0x0071,
                  0x0441, 0x093C, 0x0978, 0x102C, 0x2D64, 0x2D66, 0x2D66, 0x09A2, 0x016B, 0x09A5,
                  0x09A6, 0,
    /* row  17 */ 0x0123, 0x0128, 0x043F, 0x0893, 0x08E6, 0x0BE9, 0,
    /* row  18 */ 0x177D, 0x177B, 0x2EE9, 0,
    /* row  19 */ 0x2D51, 0x2D55, 0x2D58, 0x2D5D, 0x2D5E, 0x2D65, 0x2D65, 0x2D67, 0x2D68, 0x2DB6,
                  0x2DB7, 0x2DBB, 0x2DC2, 0x2E1C, 0x2E26, 0x2E7D, 0x2E80, 0x2E8E, 0x2EE2, 0x2EE3,
                  0x30D6, 0x30D7, 0x30DC, 0x30DF, 0,
    /* row  20 */ 0x0118, 0x0138, 0,
    /* row  21 */ 0x013F, 0x0141, 0x0142, 0x0143, 0x014F, 0x0153, 0x0155, 0x0156, 0,
    /* row  22 */ 0x0157, 0x015B, 0x015E, 0,
    /* row  23 */ 0x015F, 0x0160, 0x0161, 0,
    /* row  24 */ 0x2E84, 0,
    /* row  25 */ 0x0163, 0x0164, 0x0165, 0,
    /* row  26 */ 0x0166, 0x0168, 0x016A, 0,
    /* row  27 */ 0x03F1, 0x03F5, 0x03F8, 0,
    /* row  28 */ 0x03F9, 0x03FA, 0x03FB, 0,
    /* row  29 */ 0x0434, 0,
    /* row  30 */ 0x0404, 0x0405, 0x0406, 0,
    /* row  31 */ 0x040A, 0x040B, 0x040E, 0,
    /* row  32 */ 0x043A, 0,
    /* row  33 */ 0x2B07, 0,
    /* row  34 */ 0x040F, 0x0415, 0x0416, 0,
    /* row  35 */ 0x0C55, 0,
    /* row  36 */ 0x041A, 0x041D, 0x041E, 0,
    /* row  37 */ 0x041F, 0x0420, 0x0428, 0,
    /* row  38 */ 0x042A, 0x042B, 0,
    /* row  39 */ 0x042C, 0x042D, 0,
    /* row  40 */ 0x0430, 0x0431, 0,
    /* row  41 */ 0x1778, 0x1786, 0x0994, 0x2D03, 0,
    /* row  42 */ 0x0435, 0x043B, 0,
    /* row  43 */ 0x043E, 0x0443, 0,
    /* row  44 */ 0x1776, 0,
    /* row  45 */ 0x0C78, 0,
    /* row  46 */ 0x0445, 0x0446, 0,
    /* row  47 */ 0x2988, 0,
    /* row  48 */ 0x2986, 0,
    /* row  49 */ 0x2DBC, 0,
    /* row  50 */ 0x044C, 0x07D9, 0,
    /* row  51 */ 0x07EE, 0x0803, 0,
    /* row  52 */ 0x0874, 0,
    /* row  53 */ 0x07DA, 0,
    /* row  54 */ 0x0806, 0,
    /* row  55 */ 0x086F, 0,
    /* row  56 */ 0x08BC, 0,
    /* row  57 */ 0x080F, 0x0825, 0,
    /* row  58 */ 0x0BCA, 0,
    /* row  59 */ 0x0BFE, 0,
    /* row  60 */ 0x0826, 0x0828, 0,
    /* row  61 */ 0x082B, 0x083E, 0,
    /* row  62 */ 0x138D, 0,
    /* row  63 */ 0x0840, 0x0849, 0,
    /* row  64 */ 0x0853, 0x0854, 0,
    /* row  65 */ 0x085C, 0x0860, 0,
    /* row  66 */ 0x0866, 0,
    /* row  67 */ 0x0869, 0,
    /* row  68 */ 0x086E, 0,
    /* row  69 */ 0x0868, 0,
    /* row  70 */ 0x08A8, 0,
    /* row  71 */ 0x0867, 0,
    /* row  72 */ 0x0873, 0,
    /* row  73 */ 0x0878, 0,
    /* row  74 */ 0x1779, 0,
    /* row  75 */ 0x177E, 0,
    /* row  76 */ 0x087D, 0,
    /* row  77 */ 0x087E, 0,
    /* row  78 */ 0x0882, 0,
    /* row  79 */ 0x0884, 0,
    /* row  80 */ 0x03F0, 0,
    /* row  81 */ 0x03EF, 0,
    /* row  82 */ 0x0892, 0,
    /* row  83 */ 0x1772, 0,
    /* row  84 */ 0x1771, 0,
    /* row  85 */ 0x00EA, 0x0103, 0x32CA, 0x07E1, 0x083D, 0x2D54, 0x2E7F, 0x36B7, 0x0049, 0x004A,
                  0x0048, 0x2AFB, 0x1777, 0x2989, 0x297A, 0x297B, 0x297C, 0x2990, 0x298E, 0x2991,
                  0x298F, 0x298B, 0x298C, 0x298D, 0x00E1, 0x2E21, 0x30D5, 0x30D8, 0x0113, 0x0115,
                  0x0132, 0x00C5, 0x009D, 0x00FA, 0x0018, 0x0012, 0x2CF5, 0x2CF6, 0x2CF9, 0x2CFA,
                  0x2CF7, 0x2CF8, 0x2CFF, 0x08AB, 0x08DC, 0x08AF, 0x009E, 0x07D6, 0x07E9, 0x2E19,
                  0x2E1A, 0x0859, 0x084C, 0x0114, 0x0116, 0x003B, 0x2DC3, 0x00E6, 0x2DB5, 0x0024,
                  0x0885, 0x08E1, 0x08E2, 0x0121, 0x010C, 0x0C36, 0x0C35, 0x0126, 0x0823, 0x0108,
                  0x0014, 0x07F8, 0x07F9, 0x0137, 0x013E, 0x0147, 0x0148, 0x0144, 0x0145, 0x0146,
                  0x0947, 0x0949, 0x1390, 0x095A, 0x0158, 0x0162, 0x0162, 0x099E, 0,
    /* row  86 */ 0x36B4, 0x36B8, 0x0432, 0x0FB2, 0x0FB1, 0x00E4, 0x2983, 0x2981, 0x2982, 0x00E2,
                  0x00E3, 0x2A9D, 0x2E20, 0x2E1E, 0x2E1F, 0x30DE, 0x000E, 0x0009, 0x00CA, 0x001E,
                  0x001C, 0x001D, 0x1775, 0x08AE, 0x2EE5, 0x0120, 0x00B4, 0x08FC, 0x014C, 0x014D,
                  0x0941, 0x2E8F, 0,
    /* row  87 */ 0x2CFC, 0x095E, 0,
    /* row  88 */ 0x00F1, 0x0440, 0,
    /* row  89 */ 0x0FC3, 0x2D01, 0,
    /* row  90 */ 0x0C28, 0x0C29, 0,
    /* row  91 */ 0x2B01, 0x2B02, 0x2B03, 0x0C61, 0x0BCB, 0,
    /* row  92 */ 0x0C75, 0,
    /* row  93 */ 0x0084, 0x0439, 0x0093, 0x00B9, 0x00C6, 0x0106, 0x00BA, 0x00BB, 0,
    /* row  94 */ 0x00A7, 0x07E2, 0x0417, 0x004C, 0x07EB, 0x2994, 0x00E7, 0x00BE, 0x0082, 0x00C2,
                  0x00A5, 0x2CF4, 0x2EE8, 0x00B5, 0x00FF, 0x00A6, 0x0929, 0,
    /* row  95 */ 0x084F, 0x080C, 0x0899, 0x089C, 0x081A, 0x081B, 0x0149, 0,
    /* row  96 */ 0x08B1, 0x08B2, 0x2D59, 0x2E89, 0x2B06, 0x2996, 0x2997, 0x299D, 0x2998, 0x2999,
                  0x299A, 0x299C, 0x299B, 0x0107, 0x2E25, 0x30DD, 0x2EE6, 0x010F, 0x0110, 0x0111,
                  0x32C9, 0,
    /* row  97 */ 0x004E, 0x178E, 0,
    /* row  98 */ 0x07ED, 0x08A5, 0,
    /* row  99 */ 0x080E, 0,
    /* row 100 */ 0x08A7, 0,
    /* row 101 */ 0x08A6, 0x0BBD, 0,
    /* row 102 */ 0x08BE, 0,
    /* row 103 */ 0x08CB, 0,
    /* row 104 */ 0x08CC, 0,
    /* row 105 */ 0x08DF, 0,
    /* row 106 */ 0x08E4, 0,
    /* row 107 */ 0x08EA, 0,
    /* row 108 */ 0x08EB, 0,
    /* row 109 */ 0x08EC, 0,
    /* row 110 */ 0x08F1, 0,
    /* row 111 */ 0x0894, 0x08A4, 0,
    /* row 112 */ 0x08F2, 0,
    /* row 113 */ 0x08F3, 0,
    /* row 114 */ 0x0429, 0,
    /* row 115 */ 0x08F5, 0,
    /* row 116 */ 0x0C70, 0,
    /* row 117 */ 0x08BA, 0x0437, 0,
    /* row 118 */ 0x0FB0, 0x003A, 0x0BDB, 0x0154, 0x2D60, 0,
    /* row 119 */ 0x0C41, 0,
    /* row 120 */ 0x0FC2, 0x006D, 0x0C27, 0,
    /* row 121 */ 0x08F8, 0,
    /* row 122 */ 0x08F9, 0,
    /* row 123 */ 0x08FA, 0,
    /* row 124 */ 0x08FD, 0,
    /* row 125 */ 0x0BB9, 0,
    /* row 126 */ 0x0BC6, 0,
    /* row 127 */ 0x0BF9, 0,
    /* row 128 */ 0x088F, 0x0426, 0,
    /* row 129 */ 0x177F, 0,
    /* row 130 */ 0x0023, 0x07D1, 0x07E4, 0x0030, 0x0BEB, 0x07D7, 0x07E3, 0x1782, 0x1781, 0x042E,
                  0x002C, 0x07D2, 0x07E5, 0x1785, 0x001F, 0x1014, 0x0FB9, 0x0FBC, 0x0FBE, 0x0FC9,
                  0x0FCB, 0x297D, 0x297F, 0x297E, 0x2980, 0x2979, 0x2E1B, 0x2DB9, 0x1783, 0x30E0,
                  0x07D4, 0x07E7, 0x0019, 0x0801, 0x0822, 0x07D3, 0x07E6, 0x0C46, 0x0C47, 0x0017,
                  0x07D5, 0x07E8, 0x0085, 0x0BCF, 0x0C00, 0x0020, 0x07FD, 0x07FE, 0x0918, 0x014E,
                  0x1787, 0x2D00, 0x178C, 0x178F, 0x096A, 0x0981, 0,
    /* row 131 */ 0x0079, 0x007B, 0x0075, 0x0824, 0x0055, 0x005C, 0x0827, 0x0C64, 0x0935, 0x0937,
                  0x2D02, 0,
    /* row 132 */ 0x0FB4, 0x0159, 0x015A, 0,
    /* row 133 */ 0,
    /* row 134 */ 0x0C38, 0x081F, 0x0820, 0,
    /* row 135 */ 0x0C6B, 0,
    /* row 136 */ 0x087A, 0x087B, 0x0C6C, 0,
    /* row 137 */ 0x0C72, 0,
    /* row 138 */ 0x08C7, 0,
    /* row 139 */ 0x0FBF, 0x08E5, 0x0972, 0,
    /* row 140 */ 0x0070, 0x0122, 0x00AD, 0x00F8, 0x00F5, 0x00E9, 0x00AE, 0x00F9, 0x00F6, 0x0043,
                  0x0044, 0x0042, 0x00AA, 0x0FA2, 0x00AC, 0x00F7, 0x00F4, 0x00E8, 0x2CFD, 0x2CFE,
                  0x00FC, 0x2E23, 0,
    /* row 141 */ 0x0915, 0x0936, 0,
    /* row 142 */ 0x1018, 0x0414, 0,
    /* row 143 */ 0x0040, 0x00DD, 0x006F, 0x0041, 0x00DE, 0x0050, 0x003F, 0x00DC, 0x0087, 0x00CF,
                  0x00D0, 0x0074, 0x03EA, 0x00D4, 0x00D7, 0x00D3, 0x00D9, 0x00D8, 0x00D5, 0x00D6,
                  0x0421, 0x00A9, 0x00FE, 0x00F3, 0x00A8, 0x03EB, 0x03E9, 0,
    /* row 144 */ 0x0904, 0,
    /* row 145 */ 0x043D, 0x0FAB, 0x0FAD, 0x0FA8, 0x0FCA, 0,
    /* row 146 */ 0x0FA4, 0x101F, 0x0FC8, 0,
    /* row 147 */ 0x0FAA, 0,
    /* row 148 */ 0x2E24, 0x0987, 0x102D, 0,
    /* row 149 */ 0x007A, 0x007C, 0x0076, 0x042F, 0x28A2, 0x0008, 0x0013, 0x041C, 0x08F4, 0x178D,
                  0,
    /* row 150 */ 0x0908, 0,
    /* row 151 */ 0x090B, 0,
    /* row 152 */ 0x07F0, 0,
    /* row 153 */ 0x090C, 0,
    /* row 154 */ 0x0423, 0,
    /* row 155 */ 0x0419, 0,
    /* row 156 */ 0x03F2, 0,
    /* row 157 */ 0x36B3, 0x0983, 0,
    /* row 158 */ 0x090D, 0,
    /* row 159 */ 0x090F, 0,
    /* row 160 */ 0x0910, 0,
    /* row 161 */ 0x0911, 0,
    /* row 162 */ 0x0912, 0,
    /* row 163 */ 0x0916, 0,
    /* row 164 */ 0x091E, 0,
    /* row 165 */ 0x0928, 0,
    /* row 166 */ 0x092A, 0,
    /* row 167 */ 0x0C8C, 0,
    /* row 168 */ 0x092B, 0,
    /* row 169 */ 0x092C, 0,
    /* row 170 */ 0x092D, 0,
    /* row 171 */ 0x092E, 0,
    /* row 172 */ 0x092F, 0,
    /* row 173 */ 0x0934, 0,
    /* row 174 */ 0x0938, 0,
    /* row 175 */ 0x0939, 0,
    /* row 176 */ 0x093A, 0,
    /* row 177 */ 0x093F, 0,
    /* row 178 */ 0x0940, 0,
    /* row 179 */ 0x094A, 0,
    /* row 180 */ 0x0909, 0x091A, 0,
    /* row 181 */ 0x0913, 0,
    /* row 182 */ 0x0953, 0,
    /* row 183 */ 0x0957, 0,
    /* row 184 */ 0x0958, 0,
    /* row 185 */ 0x0959, 0,
    /* row 186 */ 0x095B, 0,
    /* row 187 */ 0x095C, 0,
    /* row 188 */ 0x091D, 0,
    /* row 189 */ 0x0960, 0,
    /* row 190 */ 0x0921, 0x091C, 0,
    /* row 191 */ 0x0920, 0,
    /* row 192 */ 0x091F, 0,
    /* row 193 */ 0x0922, 0,
    /* row 194 */ 0x0961, 0,
    /* row 195 */ 0x0962, 0,
    /* row 196 */ 0x014B, 0,
    /* row 197 */ 0x014A, 0,
    /* row 198 */ 0x0963, 0,
    /* row 199 */ 0x0964, 0,
    /* row 200 */ 0x096C, 0,
    /* row 201 */ 0x096D, 0,
    /* row 202 */ 0x0974, 0,
    /* row 203 */ 0x0979, 0,
    /* row 204 */ 0x097B, 0,
    /* row 205 */ 0x0931, 0x0932, 0,
    /* row 206 */ 0x0150, 0x094E, 0,
    /* row 207 */ 0x0980, 0,
    /* row 208 */ 0x0985, 0,
    /* row 209 */ 0x0986, 0,
    /* row 210 */ 0x0988, 0,
    /* row 211 */ 0x0989, 0,
    /* row 212 */ 0x098A, 0,
    /* row 213 */ 0x1788, 0,
    /* row 214 */ 0x1789, 0,
    /* row 215 */ 0x098B, 0,
    /* row 216 */ 0x0C93, 0,
    /* row 217 */ 0x0945, 0,
    /* row 218 */ 0x098C, 0,
    /* row 219 */ 0x0442, 0,
    /* row 220 */ 0x098D, 0,
    /* row 221 */ 0x094D, 0,
    /* row 222 */ 0x0444, 0,
    /* row 223 */ 0x098E, 0,
    /* row 224 */ 0x098F, 0,
    /* row 225 */ 0x0990, 0,
    /* row 226 */ 0x0991, 0,
    /* row 227 */ 0x0992, 0,
    /* row 228 */ 0x0955, 0,
    /* row 229 */ 0x0996, 0,
    /* row 230 */ 0x0997, 0,
    /* row 231 */ 0x0998, 0,
    /* row 232 */ 0x0999, 0,
    /* row 233 */ 0x099A, 0,
    /* row 234 */ 0x099D, 0,
    /* row 235 */ 0x099F, 0,
    /* row 236 */ 0x09A0, 0,
    /* row 237 */ 0x09A3, 0,
    /* row 238 */ 0x0965, 0,
    /* row 239 */ 0x09A8, 0,
    /* row 240 */ 0x0BCC, 0,
    /* row 241 */ 0x0449, 0,
    /* row 242 */ 0x0C42, 0,
    /* row 243 */ 0x1026, 0,
    /* row 244 */ 0x0C95, 0,
    /* row 245 */ 0x0977, 0,
    /* row 246 */ 0x0C9C, 0,
    /* row 247 */ 0x0CA2, 0,
    /* row 248 */ 0x0FA3, 0,
    /* row 249 */ 0x0FA9, 0,
    /* row 250 */ 0x0FAC, 0,
    /* row 251 */ 0x0FAE, 0,
    /* row 252 */ 0x0984, 0,
    /* row 253 */ 0x0FB3, 0,
    /* row 254 */ 0x0FC0, 0,
    /* row 255 */ 0x0FCC, 0,
    /* row 256 */ 0x101B, 0,
    /* row 257 */ 0x044B, 0,
    /* row 258 */ 0x1022, 0,
    /* row 259 */ 0x1024, 0,
    /* row 260 */ 0x1025, 0,
    /* row 261 */ 0x1027, 0,
    /* row 262 */ 0x102A, 0,
    /* row 263 */ 0x102B, 0,
    /* row 264 */ 0x138B, 0,
    /* row 265 */ 0x138C, 0,
    /* row 266 */ 0x1784, 0,
    /* row 267 */ 0x178B, 0,
    /* row 268 */ 0x28B7, 0,
    /* row 269 */ 0x2969, 0,
    /* row 270 */ 0x2972, 0,
    /* row 271 */ 0x2992, 0,
    /* row 272 */ 0x2993, 0,
    /* row 273 */ 0x2AF9, 0,
    /* row 274 */ 0x2AFD, 0,
    /* row 275 */ 0x2CED, 0,
    /* row 276 */ 0x2CF1, 0,
    /* row 277 */ 0x2D06, 0,
    /* row 278 */ 0x32CB, 0,
    /* row 279 */ 0x36B1, 0,
    /* row 280 */ 0x36B2, 0,
    /* row 281 */ 0x36B5, 0,
    /* row 282 */ 0x36B9, 0,
};

constexpr size_t countRuns() {
    size_t n = 0;
    for (uint16_t id : kIdentifiers) n += id == 0;
    return n;
}
static_assert(countRuns() == kRows && kIdentifiers[std::size(kIdentifiers) - 1] == 0,
              "one zero-terminated identifier run per row");

// Row r's identifiers (r from 1): the r-th run.
constexpr const uint16_t *identifierRun(size_t r) {
    const uint16_t *p = kIdentifiers;
    for (size_t run = 1; run < r; ++run)
        while (*p++ != 0) {}
    return p;
}

// The value type a row names: its operations and how many types claim it.
struct RowType {
    const ValueCodecOps *ops = nullptr;
    size_t claims = 0;
};

template <class Type, size_t N>
constexpr void claim(RowType &found, const Type (&types)[N],
                     const std::array<ValueCodecOps, N> &ops, size_t row) {
    for (size_t i = 0; i < N; ++i)
        if (types[i].row == row) found = {&ops[i], found.claims + 1};
}

constexpr RowType rowType(size_t row) {
    RowType found;
    claim(found, kFixedValueTypes, kFixed, row);
    claim(found, kRecordValueTypes, kRecord, row);
    claim(found, kStructureValueTypes, kStructure, row);
    return found;
}

template <class Type, size_t N>
constexpr bool rowsInTable(const Type (&types)[N]) {
    for (const Type &t : types)
        if (t.row < 1 || t.row > kRows) return false;
    return true;
}

constexpr bool everyRowHasOneType() {
    for (size_t r = 1; r <= kRows; ++r)
        if (rowType(r).claims != 1) return false;
    return rowsInTable(kFixedValueTypes) && rowsInTable(kRecordValueTypes) &&
           rowsInTable(kStructureValueTypes);
}
static_assert(everyRowHasOneType(), "every row 1 to 282 is claimed by exactly one value type");

// Row r of the table (r from 1); past the last row, the terminator.
constexpr AttributeCodecRow tableRow(size_t r) {
    if (r > kRows) return {nullptr, 0, {nullptr, nullptr, nullptr, nullptr}};
    return {identifierRun(r), 0, *rowType(r).ops};
}

} // namespace

// The exported table is a plain array, which a pack cannot initialise outside
// a template, so its initialiser counts the rows out ten at a time.
#define TROV_ROWS_10(r)                                                                    \
    tableRow(r), tableRow(r + 1), tableRow(r + 2), tableRow(r + 3), tableRow(r + 4),       \
        tableRow(r + 5), tableRow(r + 6), tableRow(r + 7), tableRow(r + 8), tableRow(r + 9)
#define TROV_ROWS_100(r)                                                                   \
    TROV_ROWS_10(r), TROV_ROWS_10(r + 10), TROV_ROWS_10(r + 20), TROV_ROWS_10(r + 30),     \
        TROV_ROWS_10(r + 40), TROV_ROWS_10(r + 50), TROV_ROWS_10(r + 60),                  \
        TROV_ROWS_10(r + 70), TROV_ROWS_10(r + 80), TROV_ROWS_10(r + 90)

extern constexpr AttributeCodecRow AttributeCodecTable[] = {
    TROV_ROWS_100(1),   TROV_ROWS_100(101), TROV_ROWS_10(201), TROV_ROWS_10(211),
    TROV_ROWS_10(221),  TROV_ROWS_10(231),  TROV_ROWS_10(241), TROV_ROWS_10(251),
    TROV_ROWS_10(261),  TROV_ROWS_10(271),  tableRow(281),     tableRow(282),
    tableRow(kRows + 1),
};

#undef TROV_ROWS_100
#undef TROV_ROWS_10

static_assert(std::size(AttributeCodecTable) == kRows + 1 &&
              AttributeCodecTable[kRows].identifiers == nullptr);

static_assert(std::size(kFixedValueTypes) == 122);

// A sorted index of every identifier and the first row that lists it. Every
// row serves every version, so the first row listing an identifier is the
// one the lookup rule finds, whatever the packet's version: the index
// answers exactly as the scan does, by binary search.
namespace {

struct IdentifierRow {
    uint16_t id;
    uint16_t row; // index into AttributeCodecTable
};

constexpr bool everyRowServesEveryVersion() {
    for (const AttributeCodecRow *r = AttributeCodecTable; r->identifiers != nullptr; ++r)
        if (r->version != 0) return false;
    return true;
}
static_assert(everyRowServesEveryVersion(), "the identifier index assumes version-0 rows");

constexpr size_t countEntries() {
    size_t n = 0;
    for (const AttributeCodecRow *r = AttributeCodecTable; r->identifiers != nullptr; ++r)
        for (const uint16_t *p = r->identifiers; *p != 0; ++p) ++n;
    return n;
}

constexpr auto sortedEntries() {
    std::array<IdentifierRow, countEntries()> all{};
    size_t n = 0;
    for (const AttributeCodecRow *r = AttributeCodecTable; r->identifiers != nullptr; ++r)
        for (const uint16_t *p = r->identifiers; *p != 0; ++p)
            all[n++] = {*p, static_cast<uint16_t>(r - AttributeCodecTable)};
    std::sort(all.begin(), all.end(), [](IdentifierRow a, IdentifierRow b) {
        return a.id != b.id ? a.id < b.id : a.row < b.row;
    });
    return all;
}

constexpr size_t countDistinct() {
    const auto all = sortedEntries();
    size_t n = 0;
    for (size_t i = 0; i < all.size(); ++i) n += i == 0 || all[i].id != all[i - 1].id;
    return n;
}

// Distinct identifiers, each with its first row.
constexpr auto kIdentifierIndex = [] {
    const auto all = sortedEntries();
    std::array<IdentifierRow, countDistinct()> index{};
    size_t n = 0;
    for (size_t i = 0; i < all.size(); ++i)
        if (i == 0 || all[i].id != all[i - 1].id) index[n++] = all[i];
    return index;
}();
static_assert(kIdentifierIndex.size() == 1208);

} // namespace

const AttributeCodecRow *findBuiltinAttributeRow(uint16_t id) {
    const auto *end = kIdentifierIndex.data() + kIdentifierIndex.size();
    const auto *at = std::lower_bound(kIdentifierIndex.data(), end, id,
                                      [](IdentifierRow e, uint16_t v) { return e.id < v; });
    return at != end && at->id == id ? &AttributeCodecTable[at->row] : nullptr;
}

} // namespace trov
