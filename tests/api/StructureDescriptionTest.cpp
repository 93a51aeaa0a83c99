// The two description lookups for nested records, TROV_DescribeVariant and
// TROV_DescribeNested, refuse what is not theirs. (What structured
// descriptions say against the codecs: the member offsets, PublicRecordsTest;
// the wire of structured replies, RecordWalkTest; structured request values,
// EncodeRoundTripTest; the walk's conventions, StructureCodecInternalTest.)
#include <gtest/gtest.h>

#include <cstddef>

#include "TrovLayout.h"
#include "api/Initialised.h"

namespace {

TEST(StructureDescriptionLookups, RefuseForeignFieldsLayoutsAndSelectors) {
    TrovLayoutInfo selector{}, structure{}, flat{}, out{};
    ASSERT_EQ(TROV_DescribeAttribute(0x013C, TROV_PROTOCOL_VERSION, &selector), 0u);
    ASSERT_EQ(TROV_DescribeAttribute(0x2AF9, TROV_PROTOCOL_VERSION, &structure), 0u); // version, build
    ASSERT_EQ(structure.fields[0].kindId, TROV_KIND_RECORD);
    ASSERT_EQ(TROV_DescribeAttribute(0x177C, TROV_PROTOCOL_VERSION, &flat), 0u);
    for (uint8_t s : {0, 5, 255}) EXPECT_EQ(TROV_DescribeVariant(&selector, s, &out), 4u) << int(s);
    EXPECT_EQ(TROV_DescribeVariant(&structure, 1, &out), 4u);
    TrovLayoutInfo forged = structure; // a selector form over another layout's fields
    forged.form = TROV_LAYOUT_SELECTOR;
    EXPECT_EQ(TROV_DescribeVariant(&forged, 1, &out), 4u);
    EXPECT_EQ(TROV_DescribeVariant(nullptr, 1, &out), 1u);
    EXPECT_EQ(TROV_DescribeVariant(&selector, 1, nullptr), 1u);

    EXPECT_EQ(TROV_DescribeNested(&structure.fields[1], &out), 4u); // u32 build
    EXPECT_EQ(TROV_DescribeNested(&flat.fields[0], &out), 4u);
    EXPECT_EQ(TROV_DescribeNested(&selector.fields[0], &out), 4u);
    const TrovFieldInfo copy = structure.fields[0]; // the same field, not the library's
    EXPECT_EQ(TROV_DescribeNested(&copy, &out), 4u);
    // A pointer into the middle of one of the library's fields is no field.
    const auto *start = reinterpret_cast<const unsigned char *>(&structure.fields[0]);
    for (size_t shift = 1; shift < sizeof(TrovFieldInfo); ++shift)
        EXPECT_EQ(TROV_DescribeNested(reinterpret_cast<const TrovFieldInfo *>(start + shift), &out), 4u) << shift;
    EXPECT_EQ(TROV_DescribeNested(nullptr, &out), 1u);
    EXPECT_EQ(TROV_DescribeNested(&structure.fields[0], nullptr), 1u);
    ASSERT_EQ(TROV_DescribeNested(&structure.fields[0], &out), 0u);
    EXPECT_EQ(out.recordBytes, structure.fields[0].width);
}

} // namespace
