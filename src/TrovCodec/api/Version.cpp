// The library's version and the names of its result codes (TrovVersion.h).
#include "TrovVersion.h"

#include <iterator>

namespace {

struct ResultText {
    const char *name;
    const char *meaning;
};

// In the order of the result codes, 0 to 13.
constexpr ResultText kResults[] = {
    {"OK", "success (also: a body the decoder skips)"},
    {"NULL_ARGUMENT", "a null pointer, a null buffer, or a required count or flag of 0"},
    {"BAD_PACKET", "fewer bytes than a header, or not the protocol mark"},
    {"BAD_FIELD_INDEX", "a header field index outside 0 to 9"},
    {"BAD_VALUE", "a type or selector value outside its defined set"},
    {"SHORT_INPUT", "the packet ends before the item, or a length disagrees"},
    {"NO_MEMORY", "an allocation or reallocation failed"},
    {"BUFFER_TOO_SMALL", "the caller's output buffer is too small and may not grow"},
    {"NO_HEADER_CODEC", "no header codec for the packet's version byte"},
    {"NO_BODY_CODEC", "no body codec for the body code and version"},
    {"NO_ATTRIBUTE_CODEC", "no attribute codec for an identifier and version"},
    {"NO_METHOD_CODEC", "no method codec, and the method code is below 0x2000"},
    {"NO_EVENT_CODEC", "no event codec for an event code and version"},
    {"NO_DATA_TYPE_CODEC", "no data-type codec for a data-type code and version"},
};
static_assert(std::size(kResults) == TROV_RESULT_NO_DATA_TYPE_CODEC + 1, "a name for every result code");

constexpr ResultText kUnknown{"UNKNOWN", "not a result code of this library"};

const ResultText &textOf(TrovResult result) {
    return result < std::size(kResults) ? kResults[result] : kUnknown;
}

} // namespace

extern "C" {

TROV_API uint32_t TROV_GetVersion(void) { return TROV_VERSION; }

TROV_API const char *TROV_ResultName(TrovResult result) { return textOf(result).name; }

TROV_API const char *TROV_ResultMeaning(TrovResult result) { return textOf(result).meaning; }

} // extern "C"
