/* A host built the way the Microsoft toolchain builds one: an MSVC-ABI object
 * (clang --target=x86_64-pc-windows-msvc) linked by lld-link, the Microsoft
 * linker's stand-in, against TrovCodec.lib, with no C runtime at all
 * (scripts/check-windows). Its exit code says what failed: 1 the loaded
 * library's version, 2 initialisation, 4 a header round trip; it says so on
 * its console too, a line either way. */
#include "TrovCodec.h"
#include "TrovVersion.h"

__declspec(dllimport) void __stdcall ExitProcess(unsigned code);
__declspec(dllimport) void *__stdcall GetStdHandle(unsigned long which);
__declspec(dllimport) int __stdcall WriteFile(void *file, const void *data, unsigned long size,
                                              unsigned long *written, void *overlapped);

static void say(const char *text) {
    unsigned long size = 0, written = 0;
    while (text[size] != '\0') ++size;
    WriteFile(GetStdHandle((unsigned long)-11 /* standard output */), text, size, &written, 0);
}

/* With no C runtime, the compiler's zero-filling calls land here. */
void *memset(void *to, int value, __SIZE_TYPE__ n) {
    unsigned char *p = to;
    while (n-- > 0) *p++ = (unsigned char)value;
    return to;
}

void __stdcall start(void) {
    unsigned code = 0;
    if (TROV_GetVersion() != TROV_VERSION) code |= 1;
    if (TROV_InitCoder() != 1) code |= 2;

    HeaderInfo info = {TROV_PROTOCOL_MARK, 0x10, 0x01, 0x000b, 0, 0, 0, 0, 7};
    uint8_t bytes[20] = {0};
    PacketCursor cursor = {bytes, sizeof bytes};
    HeaderInfo back = {0, 0, 0, 0, 0, 0, 0, 0, 0};
    if (TROV_EncodeHeader(&info, &cursor) != TROV_RESULT_OK || TROV_DecodeHeader(&back, &cursor) != TROV_RESULT_OK ||
        back.code != 0x000b || back.extension != 7)
        code |= 4;
    say(code == 0 ? "msvc-host: version, init and a header round trip passed\n" : "msvc-host: FAILED\n");
    ExitProcess(code);
}
