// Heap access, trovMalloc/trovFree and the output-buffer helpers.
#include "engine/Memory.h"

#include <cassert>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
#include <windows.h>
#endif

#include "engine/HeaderCodec.h"
#include "engine/Cursor.h"

namespace trov {

#if defined(TROV_ALLOC_SEAM)
namespace {
uint32_t failAt = 0;
bool failOnwards = false;
uint32_t allocations = 0;
bool seamFails() {
    ++allocations;
    return failAt != 0 && (allocations == failAt || (failOnwards && allocations > failAt));
}
} // namespace
void failAllocationAt(uint32_t nth) {
    failAt = nth;
    failOnwards = false;
    allocations = 0;
}
void failAllocationsFrom(uint32_t nth) {
    failAt = nth;
    failOnwards = nth != 0;
    allocations = 0;
}
uint32_t allocationsSinceArmed() { return allocations; }

namespace {
AllocationLog *activeLog = nullptr;
AllocationLog::Block *loggedBlock(void *p) {
    for (uint32_t i = 0; activeLog != nullptr && i < activeLog->count; ++i)
        if (activeLog->blocks[i].live && activeLog->blocks[i].pointer == p) return &activeLog->blocks[i];
    return nullptr;
}
// Records a block of `size` bytes whose first `known` bytes are initialised.
void logBlock(void *p, uint32_t size, uint32_t known) {
    if (activeLog == nullptr || p == nullptr) return;
    if (size > known) std::memset(static_cast<uint8_t *>(p) + known, 0xA5, size - known);
    if (AllocationLog::Block *b = loggedBlock(p); b != nullptr) b->size = size;
    else if (activeLog->count < AllocationLog::kMaxBlocks) activeLog->blocks[activeLog->count++] = {p, size, true};
    else activeLog->overflow = true;
}
} // namespace
void logAllocations(AllocationLog *log) {
    if (log != nullptr) *log = AllocationLog{};
    activeLog = log;
}
#define TROV_SEAM_FAILS() seamFails()
#define TROV_SEAM_LOG(p, size, known) logBlock(p, size, known)
#else
#define TROV_SEAM_FAILS() false
#define TROV_SEAM_LOG(p, size, known) ((void)0)
#endif

void *heapAlloc(uint32_t size) {
    if (TROV_SEAM_FAILS()) return nullptr;
#if defined(_WIN32)
    void *p = LocalAlloc(0, size); // fixed memory, not zeroed
#else
    void *p = std::malloc(size == 0 ? 1 : size);
#endif
    TROV_SEAM_LOG(p, size, 0);
    return p;
}

void *heapRealloc(void *p, uint32_t size) {
    if (TROV_SEAM_FAILS()) return nullptr;
#if defined(TROV_ALLOC_SEAM)
    // Found before the reallocation: p may not be looked at after it.
    AllocationLog::Block *b = loggedBlock(p);
#endif
#if defined(_WIN32)
    void *grown = LocalReAlloc(p, size, 0); // flags 0: grow in place or fail
#else
    void *grown = std::realloc(p, size == 0 ? 1 : size);
#endif
#if defined(TROV_ALLOC_SEAM)
    // A logged block keeps its entry; one from before the log is added whole.
    const uint32_t known = b == nullptr ? size : (b->size < size ? b->size : size);
    if (b != nullptr && grown != nullptr) b->pointer = grown;
    TROV_SEAM_LOG(grown, size, known);
#endif
    return grown;
}

void heapFree(void *p) {
#if defined(TROV_ALLOC_SEAM)
    if (AllocationLog::Block *b = loggedBlock(p); b != nullptr) b->live = false;
#endif
#if defined(_WIN32)
    LocalFree(p);
#else
    std::free(p);
#endif
}

int freeIfSet(void *p) {
    if (p == nullptr) return 1;
    heapFree(p);
    return 0;
}

TrovResult reserveEncodeBuffer(HeaderInfo *info, const WireSize &size, EncodeOutput *output,
                               PacketCursor *body, bool *allocated) {
    if (allocated != nullptr) *allocated = false;
    const HeaderCodecRow *row = findHeaderRow(static_cast<uint8_t>(info->version));
    if (row == nullptr) return TROV_RESULT_NO_HEADER_CODEC;
    // The record keeps the body length even when a later step fails, and so
    // does a body the 16-bit figure cannot frame: the figure is stored (the
    // true length modulo 65536), then the body is refused.
    info->bodyLength = size.bytes;
    if (size.extent > kMaxBodyLength) return TROV_RESULT_SHORT_INPUT;
    const uint32_t bodyLength = size.extent;

    const uint32_t total = uint32_t{row->headerLength} + bodyLength;
    if (output->data == nullptr) {
        output->data = static_cast<uint8_t *>(heapAlloc(total));
        if (output->data == nullptr) return TROV_RESULT_NO_MEMORY;
        if (allocated != nullptr) *allocated = true;
    } else if (output->length < total) {
        return TROV_RESULT_BUFFER_TOO_SMALL;
    }
    const PacketCursor whole{output->data, total};
    body->position = row->encodeHeader(info, &whole);
    body->remaining = bodyLength;
    output->length = total;
    return TROV_RESULT_OK;
}

TrovResult finishEncodeBuffer(EncodeOutput *output, PacketCursor &body, bool allocated) {
    if (overrun(body)) {
        if (allocated) {
            heapFree(output->data);
            output->data = nullptr;
            output->length = 0;
        }
        return TROV_RESULT_SHORT_INPUT;
    }
    // The write pass fills exactly what the size pass reserved: a body left
    // short is a codec's fault, stopped here in builds with assertions (the
    // tests' and the sanitizers'). Shipped builds still never send heap bytes
    // that no codec wrote.
    assert(body.remaining == 0 && "an encode wrote fewer bytes than its size pass reserved");
    if (body.remaining != 0) std::memset(body.position, 0, body.remaining);
    return TROV_RESULT_OK;
}

TrovResult allocateRecord(DecodeResult *result, const PacketCursor *input, uint16_t needed,
                          uint16_t recordBytes, bool *allocated) {
    *allocated = false;
    if (input->remaining < needed) {
        result->type = 6;
        return TROV_RESULT_SHORT_INPUT;
    }
    if (result->record != nullptr) return TROV_RESULT_OK;
    void *record = heapAlloc(recordBytes);
    if (record == nullptr) {
        result->type = 6;
        return TROV_RESULT_NO_MEMORY;
    }
    std::memset(record, 0, recordBytes);
    result->record = record;
    *allocated = true;
    return TROV_RESULT_OK;
}

TrovResult prepareBuffer(DecodeResult *result, BufferDesc *buffer, uint16_t size, bool *allocated,
                         uint32_t extent) {
    *allocated = false;
    if (result->buffer != nullptr) {
        // A buffer allocated earlier in this call moves into this descriptor.
        if (result->buffer != buffer) {
            buffer->data = result->buffer->data;
            buffer->capacity = result->buffer->capacity;
            buffer->flags = result->buffer->flags;
        }
        result->buffer = nullptr;
    }
    const uint32_t room = extent > size ? extent : size;
    if (room == 0) return TROV_RESULT_OK;

    if (buffer->data == nullptr) {
        if (buffer->capacity != 0) return TROV_RESULT_NULL_ARGUMENT;
        buffer->data = heapAlloc(room);
        if (buffer->data == nullptr) return TROV_RESULT_NO_MEMORY;
        result->buffer = buffer;
        buffer->flags = TROV_BUFFER_ALLOCATED;
        buffer->capacity = size;
        *allocated = true;
    } else if (buffer->capacity < room) {
        if ((buffer->flags & TROV_BUFFER_GROWABLE) == 0) return TROV_RESULT_BUFFER_TOO_SMALL;
        // The old pointer is overwritten even when the grow fails.
        buffer->data = heapRealloc(buffer->data, room);
        if (buffer->data == nullptr) return TROV_RESULT_NO_MEMORY;
        buffer->flags = static_cast<uint8_t>(buffer->flags | TROV_BUFFER_GROWN);
        buffer->capacity = size;
    }
    std::memset(buffer->data, 0, room);
    return TROV_RESULT_OK;
}

void releaseOnFailure(DecodeResult *result, bool freeRecord, bool freeBuffer) {
    result->type = 6;
    if (freeBuffer && result->buffer != nullptr) {
        freeIfSet(result->buffer->data);
        result->buffer->data = nullptr;
        result->buffer->capacity = 0;
        result->buffer = nullptr;
    }
    if (freeRecord) {
        freeIfSet(result->record);
        result->record = nullptr;
    }
}

} // namespace trov

extern "C" {

TROV_API void *trovMalloc(uint32_t size) { return trov::heapAlloc(size); }

TROV_API void *trovFree(void *p) {
#if defined(_WIN32)
    return LocalFree(p);
#else
    std::free(p);
    return nullptr;
#endif
}

} // extern "C"
