// SPDX-License-Identifier: MIT
#include "buffer.h"

#include <sys/mman.h>

#include <cstdlib>
#include <new>

namespace host {

void useLargePages(void *start, size_t bytes) {
  constexpr size_t kLarge = size_t{2} << 20;
  const uintptr_t first = (reinterpret_cast<uintptr_t>(start) + kLarge - 1) & ~(kLarge - 1);
  const uintptr_t end = (reinterpret_cast<uintptr_t>(start) + bytes) & ~(kLarge - 1);
  if (end > first) madvise(reinterpret_cast<void *>(first), end - first, MADV_HUGEPAGE);
}

Buffer::Buffer(size_t size)
    : data_(static_cast<uint8_t *>(std::malloc(size == 0 ? 1 : size))), size_(size) {
  if (!data_) throw std::bad_alloc();
  useLargePages(data_, size);
}

Buffer Buffer::zeroes(size_t size) {
  Buffer made;
  made.data_ = static_cast<uint8_t *>(std::calloc(size == 0 ? 1 : size, 1));
  made.size_ = size;
  if (!made.data_) throw std::bad_alloc();
  return made;
}

Buffer::~Buffer() {
  std::free(data_);
}

}  // namespace host
