// trov: prints what the TROV codec makes of packets.
//
//   trov FILE...      decode each packet and print its header fields, the
//                     body decoder's verdict and, for event lists, method
//                     invocations and attribute bodies, what the body holds
//
// A FILE ending in .hex holds the packet as hexadecimal text (whitespace
// between bytes is optional; '#' starts a comment); any other file is the raw
// packet bytes.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "TrovCodec.h"
#include "TrovVersion.h"

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool parseHex(const std::string &text, std::vector<uint8_t> &out) {
    int high = -1;
    bool comment = false;
    for (char c : text) {
        if (comment) {
            comment = c != '\n';
            continue;
        }
        if (c == '#') {
            comment = true;
            continue;
        }
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') continue;
        const int d = hexDigit(c);
        if (d < 0) return false;
        if (high < 0) {
            high = d;
        } else {
            out.push_back(static_cast<uint8_t>(high << 4 | d));
            high = -1;
        }
    }
    return high < 0;
}

bool readPacket(const char *path, std::vector<uint8_t> &packet) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const size_t n = std::strlen(path);
    if (n > 4 && std::strcmp(path + n - 4, ".hex") == 0) return parseHex(bytes, packet);
    packet.assign(bytes.begin(), bytes.end());
    return true;
}

void showBody(uint16_t code, const void *record) {
    if (code == 0x4d) {
        const auto *b = static_cast<const EventListBody *>(record);
        std::printf("  events     %u\n", b->count);
        for (uint16_t i = 0; i < b->count; ++i)
            std::printf("    event 0x%04X  fields 0x%04X 0x%08X 0x%08X 0x%02X\n", b->entries[i].eventCode,
                        b->entries[i].field1, b->entries[i].field2, b->entries[i].field3,
                        b->entries[i].field4);
    } else if (code == 0x0a) {
        const auto *b = static_cast<const ShortEventListBody *>(record);
        std::printf("  events     %u\n", b->count);
        for (uint8_t i = 0; i < b->count; ++i)
            std::printf("    event 0x%04X  field 0x%02X\n", b->entries[i].eventCode, b->entries[i].field2);
    } else if (code == 0x1d) {
        const auto *b = static_cast<const MethodBody *>(record);
        std::printf("  method     0x%04X, %u parameter bytes\n", b->method, b->paramsLength);
    } else if (code == 0x12 || code == 0x15 || code == 0x18 || code == 0x32) {
        const auto *b = static_cast<const AttributeBody *>(record);
        std::printf("  attribute  0x%04X\n", b->id);
    }
}

int show(const char *path) {
    std::vector<uint8_t> packet;
    if (!readPacket(path, packet)) {
        std::fprintf(stderr, "trov: cannot read %s\n", path);
        return 1;
    }
    std::printf("%s: %zu bytes\n", path, packet.size());
    PacketCursor cursor{packet.data(), static_cast<uint32_t>(packet.size())};
    HeaderInfo h{};
    const TrovResult r = TROV_DecodeHeader(&h, &cursor);
    if (r != TROV_RESULT_OK) {
        std::printf("  header: %u %s\n", r, TROV_ResultName(r));
        return 0;
    }
    std::printf("  mark       0x%04X%s\n", h.mark, h.mark == TROV_PROTOCOL_MARK ? "" : " (not the protocol mark)");
    std::printf("  version    0x%02X\n", h.version);
    std::printf("  flags      0x%02X\n", h.flags);
    std::printf("  code       0x%04X\n", h.code);
    std::printf("  value4     0x%04X\n", h.value4);
    std::printf("  bodyLength %u\n", h.bodyLength);
    std::printf("  value6     0x%08X\n", h.value6);
    std::printf("  value7     0x%08X\n", h.value7);
    std::printf("  extension  0x%04X\n", h.extension);

    DecodeResult result{};
    HeaderInfo again{};
    const TrovResult body = TROV_DecodeFU(&again, &result, &cursor, nullptr);
    if (body == TROV_RESULT_OK && result.record == nullptr)
        std::printf("  body       not decoded for unit type %u\n", result.type);
    else
        std::printf("  body       %u %s (unit type %u)\n", body, TROV_ResultName(body), result.type);
    if (body == TROV_RESULT_OK && result.record != nullptr) showBody(again.code, result.record);
    if (result.buffer != nullptr) trovFree(result.buffer->data);
    trovFree(result.record);
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: trov FILE...\n");
        return 2;
    }
    TROV_InitCoder();
    int status = 0;
    for (int i = 1; i < argc; ++i) status |= show(argv[i]);
    return status;
}
