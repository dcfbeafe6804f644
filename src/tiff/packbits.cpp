#include "tiff/packbits.h"

#include <algorithm>
#include <cstring>

namespace tiff {

size_t encodePackBitsPiece(std::span<const uint8_t> piece, uint8_t *out) {
  const size_t n = piece.size();
  uint8_t *to = out;
  for (size_t i = 0; i < n;) {
    size_t end = i + 1;
    if (end < n && piece[end] == piece[i]) {
      while (end < n && piece[end] == piece[i]) ++end;
      *to++ = static_cast<uint8_t>(1 - (end - i));
      *to++ = piece[i];
    } else {
      while (end < n && piece[end] != piece[end - 1]) ++end;
      if (end < n) --end;  // the byte that equals its successor starts the run that follows
      *to++ = static_cast<uint8_t>(end - i - 1);
      std::memcpy(to, piece.data() + i, end - i);
      to += end - i;
    }
    i = end;
  }
  return static_cast<size_t>(to - out);
}

size_t encodePackBits(std::span<const uint8_t> row, uint8_t *out) {
  uint8_t *to = out;
  while (!row.empty()) {
    const size_t n = std::min(row.size(), kPackBitsPiece);
    to += encodePackBitsPiece(row.first(n), to);
    row = row.subspan(n);
  }
  return static_cast<size_t>(to - out);
}

}  // namespace tiff
