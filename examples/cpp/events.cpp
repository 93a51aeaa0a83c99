// A C++ host: builds an attribute request, reads a reply that carries an
// event list, and lets RAII free what the library allocated.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "TrovCodec.h"
#include "TrovVersion.h"

namespace {

// What the library allocates is released with trovFree.
struct TrovDeleter {
    void operator()(void *p) const { trovFree(p); }
};
template <class T>
using TrovPtr = std::unique_ptr<T, TrovDeleter>;

HeaderInfo header(uint16_t code) {
    HeaderInfo h;
    std::memset(&h, 0, sizeof h);
    h.mark = TROV_PROTOCOL_MARK;
    h.version = TROV_PROTOCOL_VERSION;
    h.flags = 1;     // bytes 18-19 carry the 16-bit extension:
    h.extension = 1; // the unit type
    h.code = code;
    return h;
}

} // namespace

int main() {
    TROV_InitCoder();
    std::printf("TrovCodec %s, loaded 0x%06x\n", TROV_VERSION_STRING, static_cast<unsigned>(TROV_GetVersion()));

    // A request of body 0x12: one attribute, 0x08D5, whose value is a u32.
    uint32_t value = 0x01020304;
    AttributeBody request{};
    request.id = 0x08D5;
    request.value = &value;
    HeaderInfo out = header(0x12);
    EncodeOutput packet{nullptr, 0};
    TrovResult r = TROV_EncodeFU(&out, &request, &packet);
    TrovPtr<uint8_t> sent(packet.data);
    std::printf("request: %s, %u bytes\n", TROV_ResultName(r), static_cast<unsigned>(packet.length));
    if (r != TROV_RESULT_OK) return 1;

    // A reply of body 0x4d: a 12-byte head (u32, u8, u16, u16, u8, u16 count),
    // then one event: its 13-byte head (u16, u32, u32, u8, u16 code 0x04) and
    // its body (a u8, then the string "hi").
    std::vector<uint8_t> reply = {0xA7, 0xE5, 0x10, 0x01, 0x00, 0x4D, 0, 0, 0, 29, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1,
                                  0, 0, 0, 9, 1, 0, 2, 0, 3, 4, 0, 1,
                                  0, 5, 0, 0, 0, 6, 0, 0, 0, 7, 8, 0, 0x04, 0x2A, 2, 'h', 'i'};
    HeaderInfo in;
    std::memset(&in, 0, sizeof in);
    DecodeResult result{nullptr, nullptr, 0};
    PacketCursor cursor{reply.data(), static_cast<uint32_t>(reply.size())};
    r = TROV_DecodeFU(&in, &result, &cursor, nullptr);
    TrovPtr<EventListBody> list(static_cast<EventListBody *>(result.record));
    TrovPtr<void> block(list != nullptr ? list->buffer.data : nullptr);
    uint16_t bodyLength = 0;
    TROV_GetFromInfo(5, &in, &bodyLength);
    std::printf("reply: %s, body 0x%02x of %u bytes\n", TROV_ResultName(r), static_cast<unsigned>(in.code),
                static_cast<unsigned>(bodyLength));
    if (r != TROV_RESULT_OK || list == nullptr) return 1;
    for (uint16_t i = 0; i < list->count; ++i) {
        const EventEntry &e = list->entries[i];
        std::printf("event 0x%02x, first field %u\n", static_cast<unsigned>(e.eventCode),
                    static_cast<unsigned>(*static_cast<const uint8_t *>(e.body)));
    }
    return 0;
}
