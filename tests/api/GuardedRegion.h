// A writable byte region followed by an inaccessible page, so that a read or
// write one byte past the region's end faults at once instead of landing in
// some neighbour's memory (which a sanitizer may or may not watch). Tests put
// input so that it ends at end(), and give output buffers that end there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
#  ifndef WIN32_LEAN_AND_MEAN
#    define WIN32_LEAN_AND_MEAN
#  endif
#  ifndef NOMINMAX
#    define NOMINMAX
#  endif
#  include <windows.h>
#else
#  include <sys/mman.h>
#  include <unistd.h>
#endif

class GuardedRegion {
public:
    // At least `bytes` writable bytes before the guard page.
    explicit GuardedRegion(size_t bytes) {
#if defined(_WIN32)
        SYSTEM_INFO info;
        GetSystemInfo(&info);
        const size_t page = info.dwPageSize;
        usable_ = (bytes + page - 1) / page * page;
        mapped_ = usable_ + page;
        base_ = static_cast<uint8_t *>(VirtualAlloc(nullptr, mapped_, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        DWORD old = 0;
        if (base_ == nullptr || !VirtualProtect(base_ + usable_, page, PAGE_NOACCESS, &old)) std::abort();
#else
        const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        usable_ = (bytes + page - 1) / page * page;
        mapped_ = usable_ + page;
        void *p = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (p == MAP_FAILED) std::abort();
        base_ = static_cast<uint8_t *>(p);
        if (mprotect(base_ + usable_, page, PROT_NONE) != 0) std::abort();
#endif
    }

    ~GuardedRegion() {
#if defined(_WIN32)
        VirtualFree(base_, 0, MEM_RELEASE);
#else
        munmap(base_, mapped_);
#endif
    }

    GuardedRegion(const GuardedRegion &) = delete;
    GuardedRegion &operator=(const GuardedRegion &) = delete;

    // The first inaccessible byte.
    uint8_t *end() const { return base_ + usable_; }

    // The last n bytes before the guard.
    uint8_t *tail(size_t n) const {
        if (n > usable_) std::abort();
        return end() - n;
    }

    // Copies n bytes so that the last one lies right before the guard.
    uint8_t *place(const uint8_t *bytes, size_t n) const {
        uint8_t *p = tail(n);
        if (n != 0) std::memcpy(p, bytes, n);
        return p;
    }

private:
    uint8_t *base_ = nullptr;
    size_t usable_ = 0;
    size_t mapped_ = 0;
};
