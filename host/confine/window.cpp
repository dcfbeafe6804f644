// SPDX-License-Identifier: MIT
#include "confine/window.h"

#include <sys/mman.h>

#include <new>

namespace host {

Window::Window() {
  void *start = mmap(nullptr, kPieces * kPiece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (start == MAP_FAILED) throw std::bad_alloc();
  start_ = static_cast<uint8_t *>(start);
}

Window::~Window() {
  munmap(start_, kPieces * kPiece);
}

}  // namespace host
