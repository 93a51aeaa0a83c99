/* A C translation unit's view of the public records: the figures a C host
 * compiles against. AbiTest.cpp compares them with what the C++ library sees. */
#include <stddef.h>

#include "TrovCodec.h"
#include "TrovInspect.h"
#include "TrovLayout.h"
#include "api/AbiFigures.h"

/* The generated records, codes and encode front doors are pedantic C11. */
#pragma GCC diagnostic push
#pragma GCC diagnostic error "-Wpedantic"
#include "TrovCodes.h"
#include "TrovEncode.h"
#include "TrovRecords.h"
#pragma GCC diagnostic pop

/* Sizes and offsets, in a fixed order, as a C compiler lays them out. */
size_t trovTestCLayout(size_t *out, size_t capacity) {
    const size_t figures[] = {
        TROV_ABI_FIGURES
    };
    size_t n = sizeof figures / sizeof figures[0];
    for (size_t i = 0; i < n && i < capacity; ++i) out[i] = figures[i];
    return n;
}
