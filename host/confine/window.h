// SPDX-License-Identifier: MIT
// Memory that a child and its parent share: what one of them writes there goes over to the other in pieces,
// a few of which may be on their way.
#pragma once

#include <cstddef>
#include <cstdint>

namespace host {

class Window {
 public:
  // So small that it stays in a processor's cache.
  static constexpr size_t kPieces = 4, kPiece = size_t{1} << 18;

  // To be made before the child. Throws std::bad_alloc.
  Window();
  ~Window();
  Window(const Window &) = delete;
  Window &operator=(const Window &) = delete;

  // Where the piece of that number lies, after the one that was there before.
  uint8_t *piece(size_t number) const { return start_ + number % kPieces * kPiece; }

 private:
  uint8_t *start_;
};

}  // namespace host
