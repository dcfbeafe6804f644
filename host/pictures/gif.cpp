// SPDX-License-Identifier: MIT
// GIF: Leptonica decodes the first frame, which is laid on its screen here.
#include <algorithm>
#include <utility>
#include <vector>

#include "pictures/peek.h"
#include "pictures/picture.h"
#include "prepare/source.h"

namespace host {
namespace {

// The entry of the table that has this colour, perhaps a new one; 256 when there is no room for one.
uint32_t entryOf(const Background &color, Picture &out) {
  uint32_t entry = 0;
  while (entry < out.view.colors && !std::equal(color.begin(), color.end(), out.table.begin() + 3 * entry))
    ++entry;
  if (entry == out.view.colors && entry < 256) {
    std::copy(color.begin(), color.end(), out.table.begin() + 3 * entry);
    out.useTable(entry + 1);
  }
  return entry;
}

uint32_t bitsFor(uint32_t colors) {
  uint32_t bits = 1;
  while (1u << bits < colors) bits *= 2;
  return bits;
}

// The frame on a screen of the background, as indices or, where the table has no entry left, as colours.
void layOnScreen(const GifScreen &screen, const Background &background, Picture &out) {
  const RaxelPicture view = out.view;
  const Buffer frame = std::move(out.pixels);
  out.pixels = Buffer();
  const uint32_t free = entryOf(background, out), colors = out.view.colors;
  const prepare::Source source(
      {view.width, view.height, view.bits, frame.data(), view.stride, out.table.data(), colors},
      RAXEL_TREAT_NONE, nullptr);
  const bool indexed = free < 256;
  const uint32_t bits = indexed ? bitsFor(colors) : 24;
  if (!indexed) out.view.table = nullptr;
  out.announce(screen.width, screen.height, bits);
  checkScreen(screen.width, screen.height);
  out.allocate(screen.width, screen.height, bits);
  std::vector<uint8_t> row(indexed ? screen.width : size_t{3} * screen.width);
  for (uint32_t y = 0; y < screen.height; ++y) {
    for (size_t i = 0; i < row.size(); ++i)
      row[i] = indexed ? static_cast<uint8_t>(free) : background[i % 3];
    const bool inFrame = y >= screen.top && y - screen.top < view.height;
    if (inFrame && indexed) source.readIndices(y - screen.top, row.data() + screen.left);
    if (inFrame && !indexed) source.readColors(y - screen.top, row.data() + size_t{3} * screen.left);
    uint8_t *to = out.pixels.data() + out.view.stride * y;
    if (indexed) {
      prepare::packRow(row, out.view.bits, to);
    } else {
      std::copy(row.begin(), row.end(), to);
    }
  }
  if (indexed) out.useTable(colors);
}

}  // namespace

void readGif(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  const GifScreen screen = gifScreen(bytes);
  if (!out.isPage && gifHasFurtherPictures(bytes)) out.notes.push_back(kFurtherPictures);
  // The decoder finds a frame behind some damage; of that one nobody could say how large it will be.
  if (screen.width == 0 || screen.height == 0)
    throw Unreadable("is damaged: no frame is where one belongs");
  // The frame's table may be smaller than its codes allow.
  out.tableKnown = false;
  out.announce(screen.width, screen.height, 8);
  out.tableKnown = true;
  if (!gifIsWhole(bytes)) throw Unreadable(kGifIsCut);
  readWithLeptonica(bytes, background, out);
  const int transparent = gifTransparentIndex(bytes);
  if (transparent >= 0 && static_cast<uint32_t>(transparent) < out.view.colors)
    std::copy(background.begin(), background.end(), out.table.begin() + 3 * transparent);
  const bool covered = out.view.width == screen.width && out.view.height == screen.height;
  const bool inside = uint64_t{screen.left} + out.view.width <= screen.width &&
                      uint64_t{screen.top} + out.view.height <= screen.height;
  if (!covered && inside && out.view.table) layOnScreen(screen, background, out);
}

}  // namespace host
