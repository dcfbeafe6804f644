// SPDX-License-Identifier: MIT
#include "pictures/gif_pages.h"

#include <algorithm>
#include <optional>

#include "prepare/distinct.h"
#include "prepare/source.h"

namespace host {
namespace {

// What becomes of a frame when the next one comes (GIF 89a, section 23); else it stays.
enum Disposal { kToBackground = 2, kToPrevious = 3 };

}  // namespace

GifPages::GifPages(std::span<const uint8_t> file)
    : file_(file), frames_(gifFrames(file)), screen_(gifScreen(file)), isWhole_(gifIsWhole(file)) {}

uint32_t GifPages::count() const {
  return std::max(static_cast<uint32_t>(frames_.size()), 1u);
}

void GifPages::read(uint32_t page, const Background &background, Picture &out) {
  if (page == 0 || page >= frames_.size()) return readGif(file_, background, out);
  const uint32_t width = screen_.width, height = screen_.height;
  out.tableKnown = false;
  out.announce(width, height, 8);
  out.tableKnown = true;
  checkScreen(width, height);
  if (!isWhole_) throw Unreadable(kGifIsCut);
  if (colors_.empty() || drawn_ > page) restart(background);
  try {
    for (; drawn_ <= page; ++drawn_) {
      if (drawn_ != 0) takeAway(frames_[drawn_ - 1], background);
      draw(frames_[drawn_], background, out.child);
    }
  } catch (...) {
    colors_.clear();  // which are between two frames
    throw;
  }
  show(out);
}

void GifPages::restart(const Background &background) {
  colors_.resize(size_t{3} * screen_.width * screen_.height);
  for (size_t i = 0; i < colors_.size(); ++i) colors_[i] = background[i % 3];
  drawn_ = 0;
}

void GifPages::draw(const GifFrame &frame, const Background &background, DecoderChild *child) {
  if (frame.disposal == kToPrevious) keep(frame);
  Picture alone;
  alone.format = "GIF";
  alone.directory = frame.start;
  alone.child = child;
  readWithLeptonica(file_, background, alone);
  if (!alone.view.table) throw Unreadable("is damaged: a frame has no colour table");
  const prepare::Source source(alone.view, RAXEL_TREAT_NONE, nullptr);
  std::vector<uint8_t> indices(alone.view.width), colors(size_t{3} * alone.view.width);
  const uint32_t width = std::min(alone.view.width, screen_.width - std::min(frame.left, screen_.width));
  const uint32_t height = std::min(alone.view.height, screen_.height - std::min(frame.top, screen_.height));
  for (uint32_t y = 0; y < height; ++y) {
    source.readIndices(y, indices.data());
    source.readColors(y, colors.data());
    uint8_t *to = colors_.data() + (size_t{screen_.width} * (frame.top + y) + frame.left) * 3;
    for (size_t x = 0; x < width; ++x) {
      if (indices[x] != frame.transparent)
        std::copy_n(colors.begin() + static_cast<ptrdiff_t>(3 * x), 3, to + 3 * x);
    }
  }
}

// The pixels of the screen in a row of the frame.
std::span<uint8_t> GifPages::rowUnder(const GifFrame &frame, uint32_t row) {
  const uint32_t left = std::min(frame.left, screen_.width),
                 right = std::min(frame.left + frame.width, screen_.width), y = frame.top + row;
  if (y >= screen_.height) return {};
  return std::span(colors_).subspan(3 * (size_t{screen_.width} * y + left), 3 * size_t{right - left});
}

void GifPages::keep(const GifFrame &frame) {
  before_.clear();
  before_.reserve(3 * size_t{std::min(frame.width, screen_.width)} *
                  std::min(frame.height, screen_.height));
  for (uint32_t row = 0; row < frame.height; ++row) {
    const std::span<const uint8_t> pixels = rowUnder(frame, row);
    before_.insert(before_.end(), pixels.begin(), pixels.end());
  }
}

// The frame that shows makes room for the next.
void GifPages::takeAway(const GifFrame &frame, const Background &background) {
  if (frame.disposal != kToPrevious && frame.disposal != kToBackground) return;
  auto kept = before_.cbegin();
  for (uint32_t row = 0; row < frame.height; ++row) {
    const std::span<uint8_t> pixels = rowUnder(frame, row);
    if (frame.disposal == kToPrevious) {
      std::copy_n(kept, pixels.size(), pixels.begin());
      kept += static_cast<ptrdiff_t>(pixels.size());
    } else {
      for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = background[i % 3];
    }
  }
}

// The screen as indices while there are no more than 256 colours on it, else as colours.
void GifPages::show(Picture &out) const {
  const size_t pixels = colors_.size() / 3;
  prepare::DistinctColors distinct;
  std::vector<uint8_t> indices(pixels);
  size_t i = 0;
  for (; i < pixels; ++i) {
    const std::optional<uint8_t> index = distinct.add(colors_.data() + 3 * i, 256);
    if (!index) break;
    indices[i] = *index;
  }
  const std::span<const prepare::Color> colors = distinct.colors();
  for (size_t k = 0; k < colors.size(); ++k) std::ranges::copy(colors[k], out.table.data() + 3 * k);
  const bool indexed = i == pixels;
  if (!indexed) out.announce(screen_.width, screen_.height, 24);
  out.allocate(screen_.width, screen_.height, indexed ? 8 : 24);
  std::ranges::copy(indexed ? indices : colors_, out.pixels.data());
  if (indexed) out.useTable(static_cast<uint32_t>(colors.size()));
}

}  // namespace host
