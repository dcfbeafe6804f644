// SPDX-License-Identifier: MIT
// Large blocks of bytes that nothing writes to before they are used.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace host {

// Asks the system for large pages under a block, where whole ones lie in it. Touching a block for the
// first time is then several times faster.
void useLargePages(void *start, size_t bytes);

// Owns `size` bytes of any content, or nothing. Throws std::bad_alloc.
class Buffer {
 public:
  Buffer() = default;
  explicit Buffer(size_t size);
  // Of zeros, which take no memory until they are looked at.
  static Buffer zeroes(size_t size);
  ~Buffer();
  Buffer(Buffer &&other) noexcept { swap(other); }
  Buffer &operator=(Buffer &&other) noexcept {
    swap(other);
    return *this;
  }

  uint8_t *data() const { return data_; }
  size_t size() const { return size_; }

 private:
  void swap(Buffer &other) {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
  }
  uint8_t *data_ = nullptr;
  size_t size_ = 0;
};

}  // namespace host
