// A C++ host on the C++ layer (TrovCodec.hpp): builds a request whose record
// type the compiler checks, then reads replies as they come off a connection,
// a few bytes at a time: the splitter frames the packets that are complete,
// each is decoded into records that free themselves, and the events of an
// event list are read through their own record types.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "TrovCodec.hpp"

namespace {

void printReply(const trov::Decoded &reply) {
    std::printf("reply: body 0x%02x on unit type %u: %s", static_cast<unsigned>(reply.code()),
                static_cast<unsigned>(reply.unitType()), trov::name(reply.result()));
    if (reply && reply.record() == nullptr) std::printf(", not decoded for this unit type");
    if (const U32Body *number = reply.as<0x0B>()) std::printf(", value %u", static_cast<unsigned>(number->value0));
    std::printf("\n");
    for (const trov::Event event : reply.events()) {
        std::printf("  event 0x%02x", static_cast<unsigned>(event.code()));
        if (const TrovEvent0004 *e = event.as<TrovEvent0004>())
            std::printf(": %u, \"%.*s\"", static_cast<unsigned>(e->value0), static_cast<int>(e->string1.length),
                        reinterpret_cast<const char *>(e->string1.data));
        else if (const TrovEvent012C *e = event.as<TrovEvent012C>())
            std::printf(": %u attribute(s)", static_cast<unsigned>(e->attributes0.count));
        std::printf("\n");
    }
}

} // namespace

int main() {
    trov::init();
    std::printf("TrovCodec %s, loaded 0x%06x\n", TROV_VERSION_STRING, static_cast<unsigned>(TROV_GetVersion()));

    // A request of body 0x12: attribute 0x08D5, whose value is a u32. The
    // packet frees itself.
    uint32_t value = 0x01020304;
    AttributeBody request{};
    request.id = 0x08D5;
    request.value = &value;
    const trov::Encoded sent = trov::encode<0x12>(trov::makeHeader(0, 1), request);
    std::printf("request: %s, %u bytes\n", trov::name(sent.result), static_cast<unsigned>(sent.packet.size()));
    if (!sent) return 1;

    // Three replies back to back, each a 20-byte header (mark A7E5, version
    // 0x10, flags 1, code, bodyLength at bytes 8-9, unit type at 18-19) and
    // its body:
    //   0x0b on unit type 1: a u32, 123456
    //   0x4d on unit type 1: an event list, head (u32, u8, u16, u16, u8, count
    //        2), then event 0x04 (a u8, the string "hi") and event 0x12c (one
    //        attribute, 0x00CB = 0x2A), each behind a 13-byte head
    //   0x0a on unit type 4: a unit type whose 0x0a bodies are not decoded
    const std::vector<uint8_t> wire = {
        0xA7, 0xE5, 0x10, 0x01, 0x00, 0x0B, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1,      //
        0x00, 0x01, 0xE2, 0x40,                                                           //
        0xA7, 0xE5, 0x10, 0x01, 0x00, 0x4D, 0, 0, 0, 49, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1,    //
        0, 0, 0, 1, 2, 0, 3, 0, 4, 5, 0, 2,                                               //
        0, 1, 0, 0, 0, 0x10, 0, 0, 0, 0x20, 0x30, 0x00, 0x04, 7, 2, 'h', 'i',             //
        0, 2, 0, 0, 0, 0x11, 0, 0, 0, 0x21, 0x31, 0x01, 0x2C, 0, 1, 0, 0xCB, 0, 1, 0x2A, //
        0xA7, 0xE5, 0x10, 0x01, 0x00, 0x0A, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4};

    // The bytes arrive 16 at a time. Whatever the splitter does not frame yet
    // stays pending for the next read.
    std::vector<uint8_t> pending;
    const std::size_t chunk = 16;
    for (std::size_t at = 0; at < wire.size(); at += chunk) {
        const std::size_t end = std::min(at + chunk, wire.size());
        pending.insert(pending.end(), wire.begin() + static_cast<std::ptrdiff_t>(at),
                       wire.begin() + static_cast<std::ptrdiff_t>(end));
        const trov::Frames frames = trov::split(pending);
        for (const trov::Frame frame : frames) {
            const trov::Decoded reply = trov::decode(frame);
            printReply(reply);
            if (!reply) return 1;
        }
        pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(frames.consumed()));
    }
    std::printf("%u bytes left over\n", static_cast<unsigned>(pending.size()));
    return pending.empty() ? 0 : 1;
}
