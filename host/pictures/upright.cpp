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

}  // namespace

void turnUpright(Picture &picture, int orientation) {
  if (orientation < 2 || orientation > 8 || picture.view.bits < 8) return;
  const Turn turn = kTurns[orientation];
  const RaxelPicture from = picture.view;
  const Buffer old = std::move(picture.pixels);
  picture.pixels = Buffer();
  picture.allocate(turn.exchange ? from.height : from.width, turn.exchange ? from.width : from.height,
                   from.bits);
  const size_t bytes = from.bits / 8;
  uint8_t *to = picture.pixels.data();
  for (uint32_t y = 0; y < picture.view.height; ++y) {
    for (uint32_t x = 0; x < picture.view.width; ++x, to += bytes) {
      uint32_t sx = turn.exchange ? y : x, sy = turn.exchange ? x : y;
      if (turn.mirrorX) sx = from.width - 1 - sx;
      if (turn.mirrorY) sy = from.height - 1 - sy;
      std::memcpy(to, from.rows + from.stride * sy + bytes * sx, bytes);
    }
  }
  picture.view.table = from.table;
  picture.view.colors = from.colors;
  if (turn.exchange) std::swap(picture.dpiX, picture.dpiY);
}

}  // namespace host
