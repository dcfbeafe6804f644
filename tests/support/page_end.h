// SPDX-License-Identifier: MIT
// Memory that ends where a page does, with a page behind it that cannot be touched: a load or store
// past its last byte ends the test program, in every build.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "raxel/memory.h"

namespace support {

class PageEnd {
 public:
  explicit PageEnd(const std::vector<uint8_t> &bytes)
      : page_(static_cast<size_t>(::sysconf(_SC_PAGESIZE))), size_(bytes.size()) {
    room_ = (size_ + page_ - 1) / page_ * page_;
    memory_ = static_cast<uint8_t *>(
        ::mmap(nullptr, room_ + page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ::mprotect(memory_ + room_, page_, PROT_NONE);
    if (size_ != 0) std::memcpy(data(), bytes.data(), size_);
    handle_ = GlobalPointerToHandle(data(), static_cast<uint32_t>(size_));
  }
  ~PageEnd() {
    GlobalFree(handle_);
    ::munmap(memory_, room_ + page_);
  }
  PageEnd(const PageEnd &) = delete;
  PageEnd &operator=(const PageEnd &) = delete;

  Handle handle() const { return handle_; }
  uint8_t *data() const { return memory_ + room_ - size_; }
  std::vector<uint8_t> bytes() const { return {data(), data() + size_}; }

 private:
  size_t page_;
  size_t size_;
  size_t room_;
  uint8_t *memory_;
  Handle handle_;
};

}  // namespace support
