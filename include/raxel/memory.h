// SPDX-License-Identifier: MIT
// Handle memory: blocks named by handles, locked to pointers for use.
//
//   Handle picture = GlobalAlloc(RAXEL_MOVEABLE_ZERO, size);
//   uint8_t *pixels = GlobalLock(picture);
//   ...
//   GlobalUnlock(picture);
//   GlobalFree(picture);
//
// Nothing ever moves: a handle is the address of a block, and locking returns the fixed address of
// the data inside it, 24 bytes further and a multiple of 8. There is no lock count, and unlocking
// does nothing. Every new block is zero-filled, whatever its flags say.
//
// Running out of memory prints one message to standard output and ends the process, so no call
// returns a null handle for want of memory. No check is made that a handle or a pointer came from
// here; a handle is dead once it was freed or reallocated.
#ifndef RAXEL_MEMORY_H
#define RAXEL_MEMORY_H

#include "raxel/types.h"

RAXEL_BEGIN

// The flags that the library passes everywhere: moveable, zero-filled. Recorded, never interpreted.
#define RAXEL_MOVEABLE_ZERO 66u

// A new block of `size` bytes, 0 included. The block is the caller's until GlobalFree.
RAXEL_EXPORT Handle GlobalAlloc(uint32_t flags, uint32_t size);

// The address of a block's data, the same at every call; null for the null handle. Also prepares the
// block for GlobalHandle.
RAXEL_EXPORT void *GlobalLock(Handle handle);

// Always 0; the handle is not looked at.
RAXEL_EXPORT int32_t GlobalUnlock(Handle handle);

// Frees a block and returns 0. Of a pointer handle only the handle goes, never the caller's memory.
RAXEL_EXPORT int32_t GlobalFree(Handle handle);

// A block of `size` bytes (2 GiB and more are sizes too) with the data of the old one as far as they
// fit, and zero bytes behind them. The old handle is dead afterwards, and pointers into it are; the
// new one may be the same number. A null handle makes it GlobalAlloc. The memory behind a pointer
// handle stays the caller's.
RAXEL_EXPORT Handle GlobalReAlloc(Handle handle, uint32_t size, uint32_t flags);

// The handle of data that GlobalLock returned; 0 for null. For any other pointer, also for a block
// that was never locked, the result is meaningless.
RAXEL_EXPORT Handle GlobalHandle(const void *data);

// The size that was asked for, in bytes; 0 for the null handle.
RAXEL_EXPORT uint32_t GlobalSize(Handle handle);

// The room that could be made: `bytes` itself, or 65536 for 0. Nothing is moved.
RAXEL_EXPORT uint32_t GlobalCompact(uint32_t bytes);

// A handle for `size` bytes that belong to the caller, who keeps them alive and frees them. Locking
// it returns `data`; GlobalHandle does not lead back from there.
RAXEL_EXPORT Handle GlobalPointerToHandle(void *data, uint32_t size);

// The same memory for callers that keep only the pointer.

// The locked data of a new block, or null for size 0.
RAXEL_EXPORT void *kvlPtrGlobalAlloc(uint32_t size);

// Frees the block of data and returns 0; 0 also for null.
RAXEL_EXPORT Handle kvlPtrGlobalFree(void *data);

// The locked data of the block at its new size. Null data make it kvlPtrGlobalAlloc, which does not
// use the flags; size 0 frees the block and returns null.
RAXEL_EXPORT void *kvlPtrGlobalReAlloc(void *data, uint32_t size, uint32_t flags);

// GlobalHandle under its second name.
RAXEL_EXPORT Handle kvlPtrGlobalHandle(const void *data);

RAXEL_END

#endif
