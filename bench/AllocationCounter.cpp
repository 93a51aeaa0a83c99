// Counts heap allocations for the benchmarks' "allocs" counter. The library
// allocates only through the C heap (trovMalloc is malloc on Linux), so the
// benchmark program defines malloc, calloc and realloc itself: the dynamic
// linker binds every caller in the process, the shared library included, to
// these definitions, which count per thread and hand over to glibc's own
// allocator. Nothing in the library is instrumented for it.
#include <cstddef>
#include <cstdint>

extern "C" {
void *__libc_malloc(size_t);
void *__libc_calloc(size_t, size_t);
void *__libc_realloc(void *, size_t);
}

namespace {
thread_local uint64_t allocations = 0;
}

namespace bench {
uint64_t allocationsSoFar() { return allocations; }
} // namespace bench

extern "C" {
void *malloc(size_t n) {
    ++allocations;
    return __libc_malloc(n);
}
void *calloc(size_t n, size_t size) {
    ++allocations;
    return __libc_calloc(n, size);
}
void *realloc(void *p, size_t n) {
    ++allocations;
    return __libc_realloc(p, n);
}
}
