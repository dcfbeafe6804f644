// SPDX-License-Identifier: MIT
#include <cstring>
#include <utility>

#include "pictures/picture.h"

namespace host {
namespace {

// Where the upright picture's pixels come from: rows and columns exchanged first, then mirrored.
struct Turn {
  bool exchange, mirrorX, mirrorY;
};
constexpr Turn kTurns[9] = {
    {},                     // there is no orientation 0
    {false, false, false},  // 1 upright
    {false, true, false},   // 2 mirrored
    {false, true, true},    // 3 upside down
    {false, false, true},   // 4 upside down and mirrored
    {true, false, false},   // 5 on its side and mirrored
    {true, false, true},    // 6 the top is on the right: turn it clockwise
    {true, true, true},     // 7 on its other side and mirrored
    {true, true, false},    // 8 the top is on the left
};

// Between rows of 1, 2, 4, 8 or 24 bits a pixel; pixels of less than a byte go onto zeros.
void copyPixel(const uint8_t *from, uint32_t fromX, uint8_t *to, uint32_t toX, uint32_t bits) {
  if (bits >= 8) {
    const size_t bytes = bits / 8;
    std::memcpy(to + bytes * toX, from + bytes * fromX, bytes);
    return;
  }
  const uint32_t inByte = 8 / bits;
  const unsigned pixel =
      unsigned{from[fromX / inByte]} << (fromX % inByte * bits) & 0xFFu & (0xFF00u >> bits);
  to[toX / inByte] = static_cast<uint8_t>(to[toX / inByte] | pixel >> (toX % inByte * bits));
}

}  // namespace

void turnUpright(Picture &picture, int orientation) {
  if (orientation < 2 || orientation > 8) return;
  const Turn turn = kTurns[orientation];
  const RaxelPicture from = picture.view;
  const Buffer old = std::move(picture.pixels);
  picture.pixels = Buffer();
  picture.allocate(turn.exchange ? from.height : from.width, turn.exchange ? from.width : from.height,
                   from.bits);
  for (uint32_t y = 0; y < picture.view.height; ++y) {
    uint8_t *to = picture.pixels.data() + picture.view.stride * y;
    if (from.bits < 8) std::memset(to, 0, picture.view.stride);
    for (uint32_t x = 0; x < picture.view.width; ++x) {
      uint32_t sx = turn.exchange ? y : x, sy = turn.exchange ? x : y;
      if (turn.mirrorX) sx = from.width - 1 - sx;
      if (turn.mirrorY) sy = from.height - 1 - sy;
      copyPixel(from.rows + from.stride * sy, sx, to, x, from.bits);
    }
  }
  picture.view.table = from.table;
  picture.view.colors = from.colors;
  if (turn.exchange) std::swap(picture.dpiX, picture.dpiY);
}

}  // namespace host
