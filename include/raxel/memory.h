// Handle memory: blocks named by handles, locked to pointers for use.
//
// Nothing ever moves: a handle is the address of a block, and locking returns the fixed address of
// the data inside it. Every block is zero-filled. Running out of memory prints one message and ends
// the process.
#ifndef RAXEL_MEMORY_H
#define RAXEL_MEMORY_H

#include "raxel/types.h"

RAXEL_BEGIN

// The flags that the library passes everywhere: moveable, zero-filled. Recorded, never interpreted.
#define RAXEL_MOVEABLE_ZERO 66u

RAXEL_EXPORT Handle GlobalAlloc(uint32_t flags, uint32_t size);
RAXEL_EXPORT void *GlobalLock(Handle handle);
RAXEL_EXPORT int32_t GlobalUnlock(Handle handle);
RAXEL_EXPORT int32_t GlobalFree(Handle handle);
RAXEL_EXPORT Handle GlobalReAlloc(Handle handle, uint32_t size, uint32_t flags);
RAXEL_EXPORT Handle GlobalHandle(const void *data);
RAXEL_EXPORT uint32_t GlobalSize(Handle handle);
RAXEL_EXPORT uint32_t GlobalCompact(uint32_t bytes);
RAXEL_EXPORT Handle GlobalPointerToHandle(void *data, uint32_t size);

RAXEL_EXPORT void *kvlPtrGlobalAlloc(uint32_t size);
RAXEL_EXPORT Handle kvlPtrGlobalFree(void *data);
RAXEL_EXPORT void *kvlPtrGlobalReAlloc(void *data, uint32_t size, uint32_t flags);
RAXEL_EXPORT Handle kvlPtrGlobalHandle(const void *data);

RAXEL_END

#endif
