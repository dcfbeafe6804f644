// SPDX-License-Identifier: MIT
// Rows of a picture of any depth, read as colours, as grey levels or as indices.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "raxel/host.h"

namespace prepare {

using Color = std::array<uint8_t, 3>;  // red, green, blue

// Brightness of a colour, 0 to 255; v for the grey (v, v, v).
constexpr uint8_t brightness(unsigned red, unsigned green, unsigned blue) {
  return static_cast<uint8_t>((299 * red + 587 * green + 114 * blue + 500) / 1000);
}

// Asked for every row that is read: true ends the preparation.
struct Interrupt {
  bool (*wanted)(void *context) = nullptr;  // null: nobody to ask
  void *context = nullptr;
};

// Thrown by the reading of a row when an interrupt is wanted.
struct Interrupted {};

// A picture as the stages see it: with the table written out, and a colour treatment that is applied
// while rows are read (to the table when there is one).
class Source {
 public:
  // The treatment must be RAXEL_TREAT_NONE when services is null. The picture's rows are borrowed.
  Source(const RaxelPicture &picture, int32_t treatment, const RaxelServices *services,
         const Interrupt &interrupt = {});

  uint32_t width() const { return picture_.width; }
  uint32_t height() const { return picture_.height; }
  uint32_t bits() const { return picture_.bits; }
  bool indexed() const { return picture_.bits <= 8; }
  // True when every colour is known to be a grey: decided by the table, without looking at pixels.
  bool grey() const { return grey_; }
  // The row as it stands.
  const uint8_t *row(uint32_t y) const {
    if (interrupt_.wanted && interrupt_.wanted(interrupt_.context)) throw Interrupted();
    return picture_.rows + picture_.stride * y;
  }
  // Entries that the picture's own table has; at most 2 ** bits, and all of them without a table.
  uint32_t colors() const { return colors_; }
  // Colours of an indexed picture: 2 ** bits entries, black beyond the picture's own.
  std::span<const Color> table() const { return {table_.data(), size_t{1} << picture_.bits}; }

  // One byte a pixel; indexed pictures only.
  void readIndices(uint32_t y, uint8_t *out) const;
  // One grey level a pixel.
  void readGrey(uint32_t y, uint8_t *out) const;
  // Three bytes a pixel: red, green, blue.
  void readColors(uint32_t y, uint8_t *out) const;
  // The same, in place where the row stands so already; `room` for one row is used where it does not.
  const uint8_t *colorsOf(uint32_t y, uint8_t *room) const;

 private:
  RaxelPicture picture_;
  int32_t treatment_;  // for rows of 24 bits; tables are treated at once
  const RaxelServices *services_;
  Interrupt interrupt_;
  bool grey_ = false;
  bool levelsAreIndices_ = false;  // so that there is nothing to look up
  uint32_t colors_ = 0;
  std::array<Color, 256> table_{};
  std::array<uint8_t, 256> level_{};  // brightness of each entry
};

// True when no pixel has a hue. Looks at pixels up to the first that has.
bool isGreyPicture(const Source &source);

// Packs a row of indices into 1, 4 or 8 bits a pixel, leftmost pixel in the high bits. Unused bits of
// the last byte are 0.
void packRow(std::span<const uint8_t> indices, uint32_t bits, uint8_t *out);

}  // namespace prepare
