// SPDX-License-Identifier: MIT
// Handle memory: a handle is the address of a block, laid out as runtime/handle_layout.h shows.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "raxel/memory.h"
#include "runtime/handle_layout.h"
#include "runtime/live_blocks.h"
#include "runtime/slack.h"
#include "runtime/unaligned.h"

namespace {

using runtime::blockBytes;
using runtime::blockOf;
using runtime::dataOf;
using runtime::kDataAt;
using runtime::kDataOffsetAt;
using runtime::kDataPtrAt;
using runtime::ownsData;

// The whole block, or 0 when no size_t can hold it.
size_t blockLength(uint32_t size) {
  const uint64_t length = blockBytes(size);
  return length > SIZE_MAX / 2 ? 0 : static_cast<size_t>(length);
}

// Running out of memory ends the process: no caller is prepared to go on without its block.
[[noreturn]] void exhausted(uint32_t size) {
  std::printf("GloalAlloc function failed due to insufficient memory: needs %ld bytes memory!!\n",
              static_cast<long>(blockBytes(size)));
  std::fflush(stdout);
  std::abort();
}

void writeHeader(uint8_t *block, uint32_t size, uint32_t flags) {
  std::memset(block, 0, kDataAt);
  runtime::store(block, size);
  runtime::store(block + runtime::kFlagsAt, flags);
  runtime::store<void *>(block + kDataPtrAt, block + kDataAt);
  block[kDataOffsetAt] = kDataAt;
}

}  // namespace

Handle GlobalAlloc(uint32_t flags, uint32_t size) {
  const size_t length = blockLength(size);
  void *block = length == 0 ? nullptr : std::calloc(length / 8, 8);
  if (block == nullptr) exhausted(size);
  writeHeader(static_cast<uint8_t *>(block), size, flags);
  const auto handle = reinterpret_cast<Handle>(block);
  runtime::noteBlock(handle);
  runtime::closeSlack(handle);
  return handle;
}

void *GlobalLock(Handle handle) {
  if (handle == 0) return nullptr;
  uint8_t *data = dataOf(handle);
  // Only in a block of our own is the byte before the data ours to write.
  if (ownsData(handle)) data[-1] = static_cast<uint8_t>(kDataAt);
  return data;
}

int32_t GlobalUnlock(Handle /*handle*/) {
  return 0;
}

int32_t GlobalFree(Handle handle) {
  runtime::forgetBlock(handle);
  runtime::openSlack(handle);
  std::free(reinterpret_cast<void *>(handle));
  return 0;
}

Handle GlobalReAlloc(Handle handle, uint32_t size, uint32_t flags) {
  if (handle == 0) return GlobalAlloc(flags, size);
  const uint32_t oldSize = GlobalSize(handle);
  const uint32_t kept = oldSize < size ? oldSize : size;
  if (!ownsData(handle)) {
    const Handle fresh = GlobalAlloc(flags, size);
    if (kept != 0) std::memcpy(blockOf(fresh) + kDataAt, dataOf(handle), kept);
    GlobalFree(handle);
    return fresh;
  }
  // Growing in place where the heap can: a memory stream grows thousands of times.
  const size_t length = blockLength(size);
  runtime::forgetBlock(handle);
  runtime::openSlack(handle);
  void *block = length == 0 ? nullptr : std::realloc(reinterpret_cast<void *>(handle), length);
  if (block == nullptr) exhausted(size);
  auto *bytes = static_cast<uint8_t *>(block);
  writeHeader(bytes, size, flags);
  std::memset(bytes + kDataAt + kept, 0, length - kDataAt - kept);
  const auto moved = reinterpret_cast<Handle>(block);
  runtime::noteBlock(moved);
  runtime::closeSlack(moved);
  return moved;
}

Handle GlobalHandle(const void *data) {
  if (data == nullptr) return 0;
  const auto *bytes = static_cast<const uint8_t *>(data);
  return reinterpret_cast<Handle>(bytes - bytes[-1]);
}

uint32_t GlobalSize(Handle handle) {
  return handle == 0 ? 0 : runtime::load<uint32_t>(blockOf(handle));
}

uint32_t GlobalCompact(uint32_t bytes) {
  return bytes == 0 ? 0x10000 : bytes;
}

Handle GlobalPointerToHandle(void *data, uint32_t size) {
  auto *block = static_cast<uint8_t *>(std::calloc(1, kDataAt));
  if (block == nullptr) exhausted(0);
  runtime::store(block, size);
  runtime::store(block + runtime::kReservedAt, uint32_t{0});
  runtime::store<void *>(block + kDataPtrAt, data);
  block[kDataOffsetAt] = runtime::kPointerHandleOffset;
  return reinterpret_cast<Handle>(block);
}

void *kvlPtrGlobalAlloc(uint32_t size) {
  return size == 0 ? nullptr : GlobalLock(GlobalAlloc(RAXEL_MOVEABLE_ZERO, size));
}

Handle kvlPtrGlobalFree(void *data) {
  if (data == nullptr) return 0;
  const Handle handle = kvlPtrGlobalHandle(data);
  // A block still locked is not freed: its handle comes back. Unlocking here always answers 0.
  if (GlobalUnlock(handle) != 0) return handle;
  return static_cast<Handle>(GlobalFree(handle));
}

void *kvlPtrGlobalReAlloc(void *data, uint32_t size, uint32_t flags) {
  if (data == nullptr) return kvlPtrGlobalAlloc(size);
  const Handle handle = kvlPtrGlobalHandle(data);
  GlobalUnlock(handle);
  if (size == 0) {
    GlobalFree(handle);
    return nullptr;
  }
  return GlobalLock(GlobalReAlloc(handle, size, flags));
}

Handle kvlPtrGlobalHandle(const void *data) {
  return GlobalHandle(data);
}
