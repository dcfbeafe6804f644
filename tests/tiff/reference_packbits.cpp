// SPDX-License-Identifier: MIT
#include "tiff/reference_packbits.h"

namespace reference {

Bytes packBitsPiece(std::span<const uint8_t> piece) {
  Bytes out;
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
    Bytes literal{c};
    size_t next = at + 1;
    bool metEqual = false;
    while (next < piece.size()) {
      if (piece[next] == literal.back()) {
        metEqual = true;
        break;
      }
      literal.push_back(piece[next++]);
    }
    if (metEqual) literal.pop_back();
    out.push_back(static_cast<uint8_t>(literal.size() - 1));
    out.insert(out.end(), literal.begin(), literal.end());
    at += literal.size();
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
