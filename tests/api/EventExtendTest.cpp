// Extended event data through the exported interface: raw items, the 8-bit
// length of events other than 0x30, schema-driven round trips, and every
// argument and schema check.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "TrovCodec.h"
#include "api/Initialised.h"

namespace {

constexpr uint8_t kVersion = 0x10;

class EventExtend : public testing::Test {
protected:
    void TearDown() override {
        trovFree(in.data);
        trovFree(out.data);
    }
    BufferDesc in{}, out{};
    TrovResult decode(std::vector<uint8_t> &bytes, EventExtendList &list, uint16_t code = 0x31,
                      const EventExtendSchema *schema = nullptr) {
        OctetString data{static_cast<uint16_t>(bytes.size()), bytes.data()};
        return TROV_DecodeEventExtend(&list, &data, code, schema, kVersion, &in);
    }
};

// (Self-describing data decoded and encoded back, and event 0x30's data of
// 301 bytes: GuardPageTest.) An identifier without a codec becomes a raw
// item. Its length is not checked against the data: what the data holds is
// copied, the rest of the item reads as zero, and nothing past the data is
// read. A count of 0 allocates nothing. (Truncations: GuardPageTest.)
TEST_F(EventExtend, UnknownIdentifiersBecomeRawItemsAndEmptyDataNone) {
    std::vector<uint8_t> bytes = {3, 0x00, 0x01, 3, 0xAA, 0xBB, 0xCC, 0x00, 0xCB, 1, 0x7F, 0x00, 0x01, 20, 0xAA, 0xBB};
    EventExtendList list{};
    ASSERT_EQ(decode(bytes, list), 0u);
    ASSERT_EQ(list.count, 3);
    EXPECT_EQ(list.entries[0].identifier, 0); // raw
    const auto *raw = static_cast<EventExtendRawItem *>(list.entries[0].value);
    EXPECT_EQ(raw->identifier, 0x0001);
    EXPECT_EQ(raw->length, 3);
    ASSERT_EQ(raw->data, reinterpret_cast<const uint8_t *>(raw) + 24);
    EXPECT_EQ(raw->data[2], 0xCC);
    EXPECT_EQ(list.entries[1].value, reinterpret_cast<const uint8_t *>(raw) + 32);
    EXPECT_EQ(*static_cast<uint8_t *>(list.entries[1].value), 0x7F);
    const auto *last = static_cast<EventExtendRawItem *>(list.entries[2].value);
    EXPECT_EQ(last->length, 20);
    EXPECT_EQ(last->data[1], 0xBB);
    EXPECT_EQ(last->data[2], 0);

    // A raw item cannot be encoded: its identifier has no codec.
    EventExtendList again{3, list.entries};
    OctetString data{};
    EXPECT_EQ(TROV_EncodeEventExtend(&again, &data, 0x31, nullptr, kVersion, &out),
              TROV_RESULT_NO_ATTRIBUTE_CODEC);

    trovFree(in.data);
    in = BufferDesc{};
    std::vector<uint8_t> zero = {0};
    ASSERT_EQ(decode(zero, list), 0u);
    EXPECT_EQ(list.count, 0);
    EXPECT_EQ(list.entries, nullptr);
    EXPECT_EQ(in.data, nullptr);
}

// Any event but 0x30 reads only the low byte of the data's length: of 300
// bytes (75 one-byte items) it sees 44, which hold 10 items; and encodes no
// more than 255 bytes.
TEST_F(EventExtend, OnlyEventThirtyHasASixteenBitLength) {
    std::vector<uint8_t> bytes = {75};
    for (int i = 0; i < 74; ++i) bytes.insert(bytes.end(), {0x00, 0xCB, 1, uint8_t(i)});
    bytes.insert(bytes.end(), {0x00, 0x01, 0});
    EventExtendList list{};
    EXPECT_EQ(decode(bytes, list, 0x31), TROV_RESULT_SHORT_INPUT);

    std::vector<uint8_t> values(74);
    std::vector<EventExtendEntry> items;
    for (int i = 0; i < 74; ++i) items.push_back({0, 0x00CB, &values[i]});
    EventExtendList many{74, items.data()};
    OctetString data{};
    EXPECT_EQ(TROV_EncodeEventExtend(&many, &data, 0x31, nullptr, kVersion, &out), TROV_RESULT_SHORT_INPUT);
    ASSERT_EQ(TROV_EncodeEventExtend(&many, &data, 0x30, nullptr, kVersion, &out), 0u);
    EXPECT_EQ(data.length, 1 + 74 * 4);
}

// An item's length byte frames at most 255 bytes (longer items are refused
// on encoding: GuardPageTest), but a value with a codec is read by its
// own layout, not by that byte: 255 one-byte elements of 0x011E behind their
// count, 256 bytes, behind a length of 0 (256 mod 256), then 0x00CB.
TEST_F(EventExtend, ValuesWithACodecAreReadByTheirLayoutNotTheLengthByte) {
    std::vector<uint8_t> bytes = {2, 0x01, 0x1E, 0x00, 0xFF};
    for (int i = 0; i < 255; ++i) bytes.push_back(uint8_t(i * 7 + 1));
    bytes.insert(bytes.end(), {0x00, 0xCB, 1, 0x5A});
    EventExtendList list{};
    ASSERT_EQ(decode(bytes, list, 0x30), 0u);
    ASSERT_EQ(list.count, 2);
    EXPECT_EQ(list.entries[0].identifier, 0x011E);
    const auto *array = static_cast<const uint8_t *>(list.entries[0].value);
    EXPECT_EQ(array[0], 255); // a u8 count
    const auto *elements = static_cast<const uint8_t *>(reinterpret_cast<const AttributeArrayHeader *>(array)->elements);
    ASSERT_EQ(elements, array + 16);
    EXPECT_TRUE(std::equal(elements, elements + 255, bytes.begin() + 5));
    EXPECT_EQ(list.entries[1].identifier, 0x00CB);
    ASSERT_EQ(list.entries[1].value, array + 16 + 256);
    EXPECT_EQ(*static_cast<const uint8_t *>(list.entries[1].value), 0x5A);
}

// A schema's first row for the event gives the items and their kinds; an
// event without a row has self-describing data. (A schema's data encoded
// back, and at every truncation: GuardPageTest.)
TEST_F(EventExtend, TheEventsFirstSchemaRowOrNone) {
    const EventExtendItemSpec specs[] = {{TROV_EXTEND_KIND_DATA_TYPE, 0x14}, {7, 0x00CB}};
    const EventExtendSchemaRow rows[] = {{0x55, 1, specs}, {0x44, 2, specs}, {0x44, 1, specs}};
    const EventExtendSchema schema{3, rows};
    std::vector<uint8_t> bytes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0x33};
    EventExtendList back{};
    ASSERT_EQ(decode(bytes, back, 0x44, &schema), 0u);
    ASSERT_EQ(back.count, 2);
    EXPECT_EQ(back.entries[0].kind, TROV_EXTEND_KIND_DATA_TYPE);
    EXPECT_EQ(std::memcmp(back.entries[0].value, bytes.data(), 12), 0);
    EXPECT_EQ(back.entries[1].kind, 7);
    EXPECT_EQ(*static_cast<uint8_t *>(back.entries[1].value), 0x33);

    std::vector<uint8_t> self = {1, 0x00, 0xCB, 1, 0x21};
    trovFree(in.data);
    in = BufferDesc{};
    ASSERT_EQ(decode(self, back, 0x66, &schema), 0u);
    EXPECT_EQ(back.entries[0].kind, 0);
}

TEST_F(EventExtend, ArgumentAndSchemaChecks) {
    uint8_t byte = 1;
    OctetString data{1, &byte};
    EventExtendList list{};
    const EventExtendItemSpec unknownType[] = {{TROV_EXTEND_KIND_DATA_TYPE, 0x0A}};
    const EventExtendItemSpec unknownId[] = {{1, 0x0001}};
    const EventExtendSchemaRow typeRow[] = {{0x31, 1, unknownType}};
    const EventExtendSchemaRow idRow[] = {{0x31, 1, unknownId}};
    const EventExtendSchemaRow noItems[] = {{0x31, 1, nullptr}};
    const EventExtendSchema emptySchema{0, nullptr}, noRows{1, nullptr}, missingItems{1, noItems},
        typeSchema{1, typeRow}, idSchema{1, idRow};
    OctetString nullData{1, nullptr};
    struct Case {
        const char *what;
        TrovResult expected;
        TrovResult got;
    };
    const Case decodes[] = {
        {"null list", 1, TROV_DecodeEventExtend(nullptr, &data, 0x31, nullptr, kVersion, &in)},
        {"null data", 1, TROV_DecodeEventExtend(&list, nullptr, 0x31, nullptr, kVersion, &in)},
        {"null bytes", 1, TROV_DecodeEventExtend(&list, &nullData, 0x31, nullptr, kVersion, &in)},
        {"null buffer", 1, TROV_DecodeEventExtend(&list, &data, 0x31, nullptr, kVersion, nullptr)},
        {"version 0", 1, TROV_DecodeEventExtend(&list, &data, 0x31, nullptr, 0, &in)},
        {"event 0", 1, TROV_DecodeEventExtend(&list, &data, 0, nullptr, kVersion, &in)},
        {"rows missing", 1, TROV_DecodeEventExtend(&list, &data, 0x31, &noRows, kVersion, &in)},
        {"items missing", 1, TROV_DecodeEventExtend(&list, &data, 0x31, &missingItems, kVersion, &in)},
        {"unknown data type", 13, TROV_DecodeEventExtend(&list, &data, 0x31, &typeSchema, kVersion, &in)},
        {"unknown attribute", 10, TROV_DecodeEventExtend(&list, &data, 0x31, &idSchema, kVersion, &in)},
    };
    for (const Case &c : decodes) EXPECT_EQ(c.got, c.expected) << c.what;
    std::vector<uint8_t> zero = {0};
    EXPECT_EQ(decode(zero, list, 0x31, &emptySchema), 0u) << "an empty schema reads as none";

    uint8_t v = 0;
    EventExtendEntry entry{1, 0x00CB, &v};
    EventExtendList one{1, &entry}, broken{1, nullptr};
    const EventExtendItemSpec other[] = {{1, 0x00CC}};
    const EventExtendSchemaRow otherRow[] = {{0x31, 1, other}}, twoRow[] = {{0x31, 2, other}};
    const EventExtendSchema mismatch{1, otherRow}, wrongCount{1, twoRow};
    OctetString outData{};
    const Case encodes[] = {
        {"null list", 1, TROV_EncodeEventExtend(nullptr, &outData, 0x31, nullptr, kVersion, &out)},
        {"entries missing", 1, TROV_EncodeEventExtend(&broken, &outData, 0x31, nullptr, kVersion, &out)},
        {"empty schema", 1, TROV_EncodeEventExtend(&one, &outData, 0x31, &emptySchema, kVersion, &out)},
        {"no row for the event", 1, TROV_EncodeEventExtend(&one, &outData, 0x32, &idSchema, kVersion, &out)},
        {"item count differs", 1, TROV_EncodeEventExtend(&one, &outData, 0x31, &wrongCount, kVersion, &out)},
        {"item differs", 1, TROV_EncodeEventExtend(&one, &outData, 0x31, &mismatch, kVersion, &out)},
        {"version 0", 1, TROV_EncodeEventExtend(&one, &outData, 0x31, nullptr, 0, &out)},
    };
    for (const Case &c : encodes) EXPECT_EQ(c.got, c.expected) << c.what;
    EXPECT_EQ(outData.data, nullptr);
}

} // namespace
