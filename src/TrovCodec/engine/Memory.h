// Memory and output buffers.
//
// The library allocates from one heap only (the Windows local heap, or the C
// heap elsewhere) and only in these helpers. Every allocation either lands in
// a place the caller can see (and then belongs to the caller, released with
// trovFree) or is released before the failing call returns.
#pragma once

#include <cstdint>

#include "TrovCodec.h"
#include "engine/CodecTypes.h"

namespace trov {

// The longest body a packet can carry: the header's bodyLength is 16 bits.
inline constexpr uint32_t kMaxBodyLength = 0xFFFF;

// Raw heap access behind trovMalloc/trovFree. heapRealloc grows a block; on
// Windows in place only (it fails rather than move the block).
void *heapAlloc(uint32_t size);
void *heapRealloc(void *p, uint32_t size);
void heapFree(void *p);

// Releases p when it is set: 1 for a null pointer, else 0.
int freeIfSet(void *p);

// Sets the header's bodyLength, allocates the packet (output->data null) or
// checks the caller's buffer, writes the header and points `body` just past
// it with bodyLength bytes remaining; output->length becomes the total.
// `bodyLength` is the size pass's answer for the body: its 16-bit figure goes
// into the header's bodyLength, which keeps it whatever follows, and its true
// extent is what the encoder is about to write. A body longer than 65535
// bytes cannot be framed by the header's 16-bit field: it is refused once the
// figure is stored, before anything is allocated or written. `allocated`,
// when given, tells whether this call allocated the packet.
// Results: 0; 8 no header codec; 5 a body longer than 65535 bytes; 6
// allocation failed; 7 the caller's buffer is shorter than 20 + bodyLength
// (nothing written to it).
TrovResult reserveEncodeBuffer(HeaderInfo *info, const WireSize &bodyLength, EncodeOutput *output,
                               PacketCursor *body, bool *allocated = nullptr);

// Ends an encode begun by reserveEncodeBuffer once the body is written: the
// body cursor must have been filled exactly. A cursor that overran (its size
// pass under-reported, so the writers refused to go on) gives 5 and releases
// a packet this encode allocated. A body left short (a size pass that
// over-reported) fails an assertion where assertions are on, and is zeroed
// otherwise, so a packet never carries stale heap contents. Results: 0; 5.
TrovResult finishEncodeBuffer(EncodeOutput *output, PacketCursor &body, bool allocated);

// Gives a decode its body record: 5 (type 6) when the input holds fewer than
// `needed` bytes; the caller's record when there is one; else a zeroed block
// of recordBytes (6, type 6, on failure). `allocated` tells whether this call
// allocated the record.
TrovResult allocateRecord(DecodeResult *result, const PacketCursor *input, uint16_t needed,
                          uint16_t recordBytes, bool *allocated);

// Makes `buffer` hold `size` zeroed bytes: takes over a buffer the result
// tracks from earlier in the call; allocates when data is null (flags 0x0B,
// tracked by the result); grows a growable buffer that is too small (sets
// bit 2; a failed grow stores the null pointer, losing the old one).
// Results: 0; 1 data null with a non-zero capacity; 7 too small and not
// growable; 6 allocation failed. `allocated` tells whether this call
// allocated the buffer.
//
// `extent` is what the decode will really write (at least `size` for all
// traffic whose reported size is exact). A block the library allocates gets
// that much real room while `capacity` records the reported size; a caller's
// buffer whose capacity cannot hold the extent is grown when growable, else
// refused with 7, so a short or wrapped size report never lets a decode
// write past the buffer.
TrovResult prepareBuffer(DecodeResult *result, BufferDesc *buffer, uint16_t size, bool *allocated,
                         uint32_t extent = 0);

// Marks the result failed (type 6) and frees what the failing call
// allocated: the tracked buffer's data and/or the record.
void releaseOnFailure(DecodeResult *result, bool freeRecord, bool freeBuffer);

#if defined(TROV_ALLOC_SEAM)
// Test seam, compiled into test builds only: the nth allocation or
// reallocation from now (1 = the next) fails; 0 disarms. Returns the number
// of allocations made since the last arming.
void failAllocationAt(uint32_t nth);
// As failAllocationAt, but every allocation from the nth on fails too.
void failAllocationsFrom(uint32_t nth);
uint32_t allocationsSinceArmed();

// Test seam: while a log is set, every block heapAlloc hands out (filled with
// 0xA5, so bytes the library never writes read the same in every build) is
// recorded, heapRealloc updates its entry (or adds one) and heapFree marks it
// dead. At most kMaxBlocks blocks per log; later ones set `overflow`.
struct AllocationLog {
    static constexpr uint32_t kMaxBlocks = 64;
    struct Block {
        void *pointer;
        uint32_t size;
        bool live;
    };
    Block blocks[kMaxBlocks];
    uint32_t count;
    bool overflow;
};
// Starts logging into `log` (emptied first); null stops logging.
void logAllocations(AllocationLog *log);
#endif

} // namespace trov
