// The body codec tables: body code -> the operation that builds a request
// packet and the operation that reads a reply body. The FP family has no
// bodies: its table is the terminator row alone.
//
// Each FU row names the request and reply layouts of its code together with
// the figures the code list gives for them: the request's fixed length (or
// kVaries when it depends on the record) and the reply's minimum length (or
// kVaries for a reply whose minimum this library chose). The compiler checks
// every figure against the layout's field list. Codes of one shape share the
// layout's operations. Body 0x0a is decode-only; body 0x1d is the method
// invocation.
#include <cstddef>
#include <functional>
#include <iterator>

#include "engine/Tables.h"
#include "units/BodyDescription.h"
#include "units/FunctionUnitBodies.h"
#include "units/MethodBody.h"

namespace trov {

namespace {

constexpr int kVaries = -1;    // a request whose length follows from the record
constexpr int kNoRequest = -2; // a code that is only ever decoded

template <uint16_t Code, const BodyLayout *Request, const BodyLayout *Reply, int RequestLength,
          int ReplyMinimum>
constexpr BodyCodecRow bodyRow() {
    static_assert((Request == nullptr) == (RequestLength == kNoRequest));
    if constexpr (Request != nullptr) {
        static_assert(Request->kind == BodyKind::Fields);
        static_assert(RequestLength == kVaries ? !isFixedLength(*Request)
                                               : isFixedLength(*Request) &&
                                                     minimumLength(*Request) == RequestLength);
    }
    static_assert(ReplyMinimum == kVaries ? hasVariableParts(*Reply)
                                          : minimumLength(*Reply) == ReplyMinimum);
    BodyEncodeFn encode = nullptr;
    if constexpr (Request != nullptr) encode = &encodeBody<Request>;
    return BodyCodecRow{Code, 0, encode, &decodeBody<Reply>};
}

} // namespace

// Every FU row, once: the codec table and the layout index below are both
// expanded from this list, so they cannot disagree. `row` takes the code, the
// request and reply layouts and their two figures; `method` the method
// invocation.
#define TROV_FU_BODIES(row, method) \
    row(0x01, &kBlockBody, &kByteBody, kVaries, 1) \
    row(0x02, &kU32U16PairBody, &kU32PairByteBody, 8, 9) \
    row(0x03, &kU32AttributeBody, &kU32AttributeBody, kVaries, 7) \
    row(0x04, &kU32U16Body, &kU32AttributeBody, 6, 7) \
    row(0x05, &kU32TripleByteBody, &kU32TripleU16ByteBody, 13, 15) \
    row(0x06, &kU32StringBody, &kByteU32PairBody, kVaries, 9) \
    row(0x07, &kU32PairByteBody, &kU32PairByteU16Body, 9, 11) \
    row(0x08, &kU16AttributeBody, &kU32U16PairBody, kVaries, 8) \
    row(0x09, &kU32LongStringBody, &kU32U16PairBody, kVaries, 8) \
    row(0x0a, nullptr, &kShortEventListBody, kNoRequest, 5) \
    row(0x0b, &kU32Body, &kU32Body, 4, 4) \
    row(0x0c, &kByteU32PairBody, &kU32ByteBody, 9, 5) \
    row(0x0d, &kU32PairBody, &kU32Body, 8, 4) \
    row(0x0e, &kU32TripleBody, &kU32Body, 12, 4) \
    row(0x0f, &kU32PairBytePairBody, &kU32PairBytePairBody, 10, 10) \
    row(0x10, &kEmptyBody, &kU32PairBytePairBody, 0, 10) \
    row(0x11, &kByteU32TripleBody, &kU16PairBody, 13, 4) \
    row(0x12, &kAttributeBody, &kAttributeBody, kVaries, 3) \
    row(0x13, &kByteBody, &kByteU32Body, 1, 5) \
    row(0x14, &kU32Body, &kU32Body, 4, 4) \
    row(0x15, &kAttributeBody, &kAttributeBody, kVaries, 3) \
    row(0x16, &kEmptyBody, &kU32Body, 0, 4) \
    row(0x17, &kU32Body, &kU32Body, 4, 4) \
    row(0x18, &kAttributeBody, &kAttributeBody, kVaries, 3) \
    row(0x19, &kEmptyBody, &kU32Body, 0, 4) \
    row(0x1a, &kStringBody, &kNoReplyBody, kVaries, 0) \
    row(0x1b, &kU16StringBody, &kStringBody, kVaries, 1) \
    row(0x1c, &kEmptyBody, &kNoReplyBody, 0, 0) \
    method(0x1d) \
    row(0x1f, &kU32Body, &kU32Body, 4, 4) \
    row(0x20, &kU32Body, &kU32Body, 4, 4) \
    row(0x21, &kU32Body, &kU32Body, 4, 4) \
    row(0x22, &kU32PairBody, &kU32PairBody, 8, 8) \
    row(0x23, &kU32Body, &kU32Body, 4, 4) \
    row(0x24, &kU32Body, &kU32PairBody, 4, 8) \
    row(0x25, &kU32ByteBody, &kU32PairBody, 5, 8) \
    row(0x26, &kU32Body, &kU32Body, 4, 4) \
    row(0x27, &kU32Body, &kU32Body, 4, 4) \
    row(0x28, &kU32Body, &kU32Body, 4, 4) \
    row(0x29, &kU32Body, &kU32Body, 4, 4) \
    row(0x2a, &kU32ByteBody, &kU32ByteBody, 5, 5) \
    row(0x2b, &kU16U32Body, &kU16LongStringBody, 6, kVaries) \
    row(0x2c, &kU32QuadByteBody, &kU32ByteU32Body, 17, 9) \
    row(0x2e, &kU16Body, &kU32Body, 2, 4) \
    row(0x30, &kU32Body, &kU32Body, 4, 4) \
    row(0x31, &kU32Body, &kU32BlockBody, 4, 4) \
    row(0x32, &kAttributeBody, &kAttributeBody, kVaries, 3) \
    row(0x33, &kEmptyBody, &kU32Body, 0, 4) \
    row(0x35, &kU32U16AttributeBody, &kU16AttributeBody, kVaries, kVaries) \
    row(0x36, &kU32ByteStringBody, &kU32U16U32Body, kVaries, 10) \
    row(0x37, &kU32StringByteBody, &kU32U16U32Body, kVaries, 10) \
    row(0x38, &kU32PairLongStringBody, &kU32QuadU16Body, kVaries, 18) \
    row(0x39, &kU32LongStringByteBody, &kU32PairStringBody, kVaries, 9) \
    row(0x3a, &kByteStringBody, &kU32PairStringBody, kVaries, 9) \
    row(0x3b, &kU32PairAttributeBody, &kU32PairU16ByteBody, kVaries, 11) \
    row(0x3c, &kU32U16U32Body, &kU32PairU16ByteBody, 10, 11) \
    row(0x3f, &kByteAttributeBody, &kByteLongStringBody, kVaries, 3) \
    row(0x40, &kU32StringPairBody, &kU32Body, kVaries, 4) \
    row(0x44, &kU16PairStringBody, &kU32TripleByteBody, kVaries, 13) \
    row(0x45, &kByteU32QuadBody, &kU32U16U32PairByteBody, 17, 15) \
    row(0x46, &kU32PairBody, &kU32ByteBody, 8, 5) \
    row(0x47, &kU32TripleU16PairByteBody, &kU32ByteBody, 17, 5) \
    row(0x48, &kU32QuadByteBody, &kU32ByteU16U32Body, 17, 11) \
    row(0x49, &kU32PairU16Body, &kU16U32PairBody, 10, 10) \
    row(0x4a, &kU32ByteU32Body, &kByteU32Body, 9, 5) \
    row(0x4c, &kU32PairU16Body, &kU32PairBody, 10, 8) \
    row(0x4d, &kEventListHead, &kEventListBody, 10, 12) \
    row(0x4e, &kU32Body, &kU32Body, 4, 4) \
    row(0x4f, &kU32Body, &kU32Body, 4, 4) \
    row(0x50, &kU32PairBody, &kU32PairLongStringBody, 8, kVaries) \
    row(0x51, &kU32Body, &kU32Body, 4, 4) \
    row(0x52, &kU16Bytes12Body, &kU32QuadBody, 14, 16) \
    row(0x53, &kU32U16LongStringBody, &kByteU32TripleBody, kVaries, 13) \
    row(0x54, &kU16LongStringBody, &kBytePairU16Body, kVaries, 4) \
    row(0x55, &kEmptyBody, &kNoReplyBody, 0, 0) \
    row(0x56, &kU32PairAttributeBody, &kU32AttributeBody, kVaries, 7) \
    row(0x57, &kU32U16U32Body, &kU32AttributeBody, 10, 7) \
    row(0x58, &kU32ByteU32PairBody, &kU32TripleByteU16Body, 13, 15) \
    row(0x5c, &kU32PairBody, &kU32Body, 8, 4) \
    row(0x5d, &kU16U32StringBody, &kU32U16LongStringBody, kVaries, 8) \
    row(0x5e, &kU32PairStringBody, &kU32U16LongStringBody, kVaries, 8) \
    row(0x5f, &kByteLongStringBody, &kBytePairLongStringBody, kVaries, 4) \
    row(0x60, &kU32QuadByteBody, &kU32ByteU16U32Body, 17, 11) \
    row(0x61, &kU32PairStringBody, &kU32U16LongStringBody, kVaries, 8) \
    row(0x62, &kU32ByteLongStringBody, &kU16PairU32Body, kVaries, 8) \
    row(0x65, &kEmptyBody, &kU16ByteBody, 0, 3) \
    row(0x66, &kU16ByteStringBody, &kU16Body, kVaries, 2) \
    row(0x67, &kU32PairStringByteBody, &kU32TripleU16ByteBody, kVaries, 15) \
    row(0x68, &kU16PairLongStringBody, &kU16BytePairBody, kVaries, 4) \
    row(0x69, &kU32ByteAttributeBody, &kU32AttributeBody, kVaries, 7) \
    row(0x6a, &kU16PairAttributeBody, &kU32U16PairBody, kVaries, 8) \
    row(0x6b, &kBytePairStringBody, &kBytePairU32PairBody, kVaries, 10) \
    row(0x6c, &kU32StringU16Body, &kLongStringBody, kVaries, 2) \
    row(0x6d, &kByteU16StringBody, &kByteBlockBody, kVaries, 1) \
    row(0x6e, &kU16LongStringByteBody, &kLongStringBody, kVaries, 2) \
    row(0x6f, &kU32TripleStringBody, &kU32StringPairBody, kVaries, kVaries) \
    row(0x70, &kU32U16PairStringBody, &kByteU16PairU32Body, kVaries, 9) \
    row(0x71, &kU32PairByteStringBody, &kU32PairBody, kVaries, 8) \
    row(0x72, &kU16Bytes16Body, &kU32PairU16PairU32Body, 18, 16) \
    row(0x73, &kU16PairLongStringBody, &kU16BytePairBody, kVaries, 4) \
    row(0x74, &kU32U16StringBody, &kU32Body, kVaries, 4) \
    row(0x75, &kU32LongStringPairBody, &kU32PairBody, kVaries, 8) \
    row(0x76, &kU32ByteU32TripleBody, &kByteStringBody, 17, 2) \
    row(0x77, &kU32ByteBody, &kU32ByteBody, 5, 5) \
    row(0x78, &kU32U16ByteStringBody, &kU32BytePairLongStringBody, kVaries, 8) \
    row(0x79, &kByteU32LongStringBody, &kU32BytePairLongStringBody, kVaries, 8) \
    row(0x7a, &kU32ByteBody, &kU32ByteBody, 5, 5) \
    row(0x7b, &kU32Body, &kU32Body, 4, 4) \
    row(0x7c, &kU32PairLongStringPairBody, &kU32PairByteLongStringBody, kVaries, 11) \
    row(0x7d, &kU16U32AttributeBody, &kU32PairByteLongStringBody, kVaries, 11) \
    row(0x7e, &kU32BytePairStringBody, &kU32QuadByteBody, kVaries, 17) \
    row(0x7f, &kU16TripleStringBody, &kBytePairU16U32Body, kVaries, 8) \
    row(0x80, &kU32PairU16LongStringBody, &kU32QuadStringBody, kVaries, 17) \
    row(0x81, &kU32TripleLongStringBody, &kU32QuadLongStringBody, kVaries, 18) \
    row(0x82, &kU32PairBody, &kU32Body, 8, 4) \
    row(0x83, &kU32U16PairByteLongStringBody, &kU16U32U16ByteBody, kVaries, 9) \
    row(0x84, &kU32StringPairBody, &kU32Body, kVaries, 4) \
    row(0x85, &kU32PairBody, &kU32PairBody, 8, 8)

#define TROV_CODEC_ROW(code, request, reply, length, minimum) \
    bodyRow<code, request, reply, length, minimum>(),
#define TROV_METHOD_ROW(code) {code, 0, encodeMethodBody, decodeMethodBody},
extern constexpr BodyCodecRow FUCodecTable[] = {
    TROV_FU_BODIES(TROV_CODEC_ROW, TROV_METHOD_ROW)
    {0, 0, nullptr, nullptr},
};

#undef TROV_CODEC_ROW
#undef TROV_METHOD_ROW

namespace {

#define TROV_LAYOUT_ROW(code, request, reply, length, minimum) \
    BodyDescriptions{describedBody<request>(), describedBody<reply>(), request, reply},
#define TROV_NO_LAYOUT_ROW(code) BodyDescriptions{&kMethodCallInfo, &kMethodCallInfo, nullptr, nullptr},
// Row i of FUCodecTable runs on the layouts kFULayouts[i] describes.
constexpr BodyDescriptions kFULayouts[] = {TROV_FU_BODIES(TROV_LAYOUT_ROW, TROV_NO_LAYOUT_ROW)};
#undef TROV_LAYOUT_ROW
#undef TROV_NO_LAYOUT_ROW
static_assert(std::size(kFULayouts) + 1 == std::size(FUCodecTable));

} // namespace

const BodyDescriptions *bodyDescriptionsOf(const BodyCodecRow *row) {
    const BodyCodecRow *end = FUCodecTable + std::size(kFULayouts);
    const std::less<const BodyCodecRow *> before;
    if (before(row, FUCodecTable) || !before(row, end)) return nullptr;
    return &kFULayouts[row - FUCodecTable];
}

#undef TROV_FU_BODIES

extern constexpr BodyCodecRow FPCodecTable[] = {
    {0, 0, nullptr, nullptr},
};

// The lookup indexes of the two tables above, built at compile time.
extern constexpr RowIndex FUCodecIndex = kRowIndexOf<FUCodecTable>.view();
extern constexpr RowIndex FPCodecIndex = kRowIndexOf<FPCodecTable>.view();

namespace {

// 118 codes from 0x01 to 0x85, each once; only 0x0a lacks an encoder.
consteval bool checkFUCodecTable() {
    constexpr size_t rows = std::size(FUCodecTable) - 1;
    if (rows != 118) return false;
    for (size_t i = 0; i < rows; ++i) {
        const BodyCodecRow &r = FUCodecTable[i];
        if (r.code < 0x01 || r.code > 0x85 || r.version != 0 || r.decode == nullptr) return false;
        if ((r.encode == nullptr) != (r.code == 0x0a)) return false;
        for (size_t j = i + 1; j < rows; ++j)
            if (FUCodecTable[j].code == r.code) return false;
    }
    return FUCodecTable[rows].code == 0;
}
static_assert(checkFUCodecTable());

} // namespace

} // namespace trov
