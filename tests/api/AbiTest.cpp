// The public records have the layout that hosts rely on, identically in C and
// C++ and on 64-bit Linux and Windows.
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "TrovCodec.h"

extern "C" size_t trovTestCLayout(size_t *out, size_t capacity);

namespace {

TEST(Abi, RecordLayoutsAreFixed) {
    const std::vector<size_t> expected = {
        16, 0, 8,                            // PacketCursor
        24, 0, 2, 4, 6, 8, 10, 12, 16, 20,   // HeaderInfo
        16, 0, 8, 10,                        // BufferDesc
        24, 0, 8, 16,                        // DecodeResult
        16, 0, 8,                            // EncodeOutput
        16, 8,                               // OctetString
        16, 8,                               // AttributeArrayHeader
        16, 8,                               // AttributeList
        16, 2, 8,                            // AttributeEntry
        32, 8, 16,                           // AttributeBody
        40, 4, 8, 16, 24,                    // MethodBody
        40, 12, 16, 24,                      // EventListBody
        24, 14, 16,                          // EventEntry
    };
    const std::vector<size_t> cpp = {
        sizeof(PacketCursor), offsetof(PacketCursor, position), offsetof(PacketCursor, remaining),
        sizeof(HeaderInfo), offsetof(HeaderInfo, mark), offsetof(HeaderInfo, version),
        offsetof(HeaderInfo, flags), offsetof(HeaderInfo, code), offsetof(HeaderInfo, value4),
        offsetof(HeaderInfo, bodyLength), offsetof(HeaderInfo, value6),
        offsetof(HeaderInfo, value7), offsetof(HeaderInfo, extension),
        sizeof(BufferDesc), offsetof(BufferDesc, data), offsetof(BufferDesc, capacity),
        offsetof(BufferDesc, flags),
        sizeof(DecodeResult), offsetof(DecodeResult, record), offsetof(DecodeResult, buffer),
        offsetof(DecodeResult, type),
        sizeof(EncodeOutput), offsetof(EncodeOutput, data), offsetof(EncodeOutput, length),
        sizeof(OctetString), offsetof(OctetString, data),
        sizeof(AttributeArrayHeader), offsetof(AttributeArrayHeader, elements),
        sizeof(AttributeList), offsetof(AttributeList, entries),
        sizeof(AttributeEntry), offsetof(AttributeEntry, length), offsetof(AttributeEntry, value),
        sizeof(AttributeBody), offsetof(AttributeBody, value), offsetof(AttributeBody, buffer),
        sizeof(MethodBody), offsetof(MethodBody, method), offsetof(MethodBody, params),
        offsetof(MethodBody, paramsLength), offsetof(MethodBody, buffer),
        sizeof(EventListBody), offsetof(EventListBody, count), offsetof(EventListBody, entries),
        offsetof(EventListBody, buffer),
        sizeof(EventEntry), offsetof(EventEntry, eventCode), offsetof(EventEntry, body),
    };
    std::vector<size_t> c(64);
    c.resize(trovTestCLayout(c.data(), c.size()));
    EXPECT_EQ(cpp, expected);
    EXPECT_EQ(c, expected);
}

TEST(Abi, ResultCodesKeepTheirNumbers) {
    EXPECT_EQ(TROV_RESULT_OK, 0);
    EXPECT_EQ(TROV_RESULT_SHORT_INPUT, 5);
    EXPECT_EQ(TROV_RESULT_NO_DATA_TYPE_CODEC, 13);
}

TEST(Abi, InitCoderReturnsTrueEveryTime) {
    EXPECT_EQ(TROV_InitCoder(), 1);
    EXPECT_EQ(TROV_InitCoder(), 1);
}

}  // namespace
