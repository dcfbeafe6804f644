// SPDX-License-Identifier: MIT
// The pages of a GIF: its screen as it is while each frame shows.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "pictures/peek.h"
#include "pictures/picture.h"

namespace host {

class GifPages {
 public:
  // The bytes are borrowed.
  explicit GifPages(std::span<const uint8_t> file);

  // At least 1, also of a file without frames, which cannot be read.
  uint32_t count() const;
  // Reads a page, from 0 on. Pages in their order cost a frame each; one that comes before the last begins
  // anew. Throws Unreadable.
  void read(uint32_t page, const Background &background, Picture &out);

 private:
  void restart(const Background &background);
  void draw(const GifFrame &frame, const Background &background, DecoderChild *child);
  std::span<uint8_t> rowUnder(const GifFrame &frame, uint32_t row);
  void keep(const GifFrame &frame);
  void takeAway(const GifFrame &frame, const Background &background);
  void show(Picture &out) const;

  std::span<const uint8_t> file_;
  std::vector<GifFrame> frames_;
  GifScreen screen_;
  bool isWhole_;
  uint32_t drawn_ = 0;           // frames that the screen has seen, the last of which still shows
  std::vector<uint8_t> colors_;  // of the screen, red, green, blue; empty before the first
  std::vector<uint8_t> before_;  // the pixels under a frame that is to leave them as they were
};

}  // namespace host
