// SPDX-License-Identifier: MIT
#include "tiff/reference_packbits.h"

namespace reference {

Bytes packBitsPiece(std::span<const uint8_t> piece) {
  Bytes out;
  out.reserve(2 * piece.size());
  size_t at = 0;
  while (at < piece.size()) {
    const uint8_t c = piece[at];
    size_t count = 1;
    while (at + count < piece.size() && piece[at + count] == c) ++count;
    if (count >= 2) {
      out.push_back(static_cast<uint8_t>(256 + 1 - count));
      out.push_back(c);
      at += count;
      continue;
    }
    // A literal ends before the first of two equal bytes.
    size_t end = at + 1;
    while (end < piece.size() && piece[end] != piece[end - 1]) ++end;
    if (end < piece.size()) --end;
    const std::span<const uint8_t> literal = piece.subspan(at, end - at);
    out.push_back(static_cast<uint8_t>(literal.size() - 1));
    out.insert(out.end(), literal.begin(), literal.end());
    at = end;
  }
  return out;
}

Bytes packBits(std::span<const uint8_t> row) {
  Bytes out;
  for (size_t at = 0; at < row.size(); at += 127) {
    const Bytes piece = packBitsPiece(row.subspan(at, row.size() - at < 127 ? row.size() - at : 127));
    out.insert(out.end(), piece.begin(), piece.end());
  }
  return out;
}

Bytes unpackBits(std::span<const uint8_t> codes) {
  Bytes out;
  for (size_t at = 0; at < codes.size();) {
    const int control = codes[at] < 128 ? codes[at] : codes[at] - 256;
    ++at;
    if (control == -128) continue;
    if (control < 0) {
      if (at == codes.size()) break;
      out.insert(out.end(), static_cast<size_t>(1 - control), codes[at++]);
    } else {
      for (int i = 0; i <= control && at < codes.size(); ++i) out.push_back(codes[at++]);
    }
  }
  return out;
}

}  // namespace reference
