// SPDX-License-Identifier: MIT
#include "pictures/webp_pieces.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "check/libtiff.h"

namespace host {
namespace {

uint32_t shortAt(const uint8_t *at) {
  return at[0] | uint32_t{at[1]} << 8;
}

uint8_t bitsTurned(uint8_t byte) {
  unsigned turned = 0;
  for (unsigned bit = 0; bit < 8; ++bit) turned |= (unsigned{byte} >> bit & 1u) << (7 - bit);
  return static_cast<uint8_t>(turned);
}

}  // namespace

// Behind "RIFF", a size and "WEBP" comes a chunk with its size: of the canvas, or of either code.
uint32_t webpWidth(std::span<const uint8_t> file) {
  constexpr size_t kChunkAt = 12, kShortest = 26;
  if (file.size() < kShortest || std::memcmp(file.data(), "RIFF", 4) != 0 ||
      std::memcmp(file.data() + 8, "WEBP", 4) != 0)
    return 0;
  const std::string_view kind(reinterpret_cast<const char *>(file.data() + kChunkAt), 4);
  if (kind == "VP8L") return 1 + (shortAt(&file[21]) & 0x3FFF);
  if (file.size() < kWebpFront) return 0;
  if (kind == "VP8X") return 1 + (shortAt(&file[24]) | uint32_t{file[26]} << 16);
  return kind == "VP8 " ? shortAt(&file[26]) & 0x3FFF : 0;
}

std::string faultOfWebpPieces(const TiffReader &reader) {
  if (reader.number(TIFFTAG_COMPRESSION, false, COMPRESSION_NONE) != COMPRESSION_WEBP) return "";
  const bool turned = reader.number(TIFFTAG_FILLORDER, false, FILLORDER_MSB2LSB) == FILLORDER_LSB2MSB;
  for (uint32_t i = 0; i < reader.pieces(); ++i) {
    const std::span<const uint8_t> piece = reader.piece(i),
                                   front = piece.first(std::min(kWebpFront, piece.size()));
    std::vector<uint8_t> bytes(front.begin(), front.end());
    if (turned) std::ranges::transform(bytes, bytes.begin(), bitsTurned);
    if (webpWidth(bytes) != reader.pieceWidth()) return "its WebP data are of another width than it says";
  }
  return "";
}

}  // namespace host
