// SPDX-License-Identifier: MIT
#include "pictures/memory.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

#include "failure.h"

namespace host {
namespace {

// One picture on its way from memory to a view of it.
struct Reading {
  const RaxelHostPixels &from;
  Background background;

  // Rows may lie from the bottom up.
  const uint8_t *row(uint32_t y) const {
    if (from.rows) return static_cast<const uint8_t *>(from.rows[y]);
    return static_cast<const uint8_t *>(from.first) + static_cast<ptrdiff_t>(from.rowStep) * y;
  }
  bool isBackgroundGrey() const { return background[0] == background[1] && background[1] == background[2]; }
};

uint32_t channelsOf(int32_t kind) {
  switch (kind) {
    case RAXEL_PIXELS_GREY_ALPHA:
      return 2;
    case RAXEL_PIXELS_RGB:
      return 3;
    case RAXEL_PIXELS_RGBA:
    case RAXEL_PIXELS_CMYK:
      return 4;
    default:
      return 1;
  }
}

// Of the picture that is made of it.
uint32_t bitsOf(const Reading &reading) {
  switch (reading.from.kind) {
    case RAXEL_PIXELS_BITS:
    case RAXEL_PIXELS_BOOL:
      return 1;
    case RAXEL_PIXELS_GREY:
    case RAXEL_PIXELS_INDEX:
      return 8;
    case RAXEL_PIXELS_GREY_ALPHA:
      return reading.isBackgroundGrey() ? 8 : 24;
    default:
      return 24;
  }
}

void check(const RaxelHostPixels &p) {
  if (!p.first && !p.rows) throw Unreadable("has no pixels");
  if (p.kind < 0 || p.kind >= RAXEL_PIXEL_KINDS) throw Unreadable("is of an unknown kind");
  const bool wide = p.channelBytes == 2 && p.kind >= RAXEL_PIXELS_GREY && p.kind != RAXEL_PIXELS_INDEX;
  if (p.channelBytes != 1 && !wide) throw Unreadable("has channels of an unknown size");
  if (p.kind == RAXEL_PIXELS_INDEX && (!p.table || p.colors < 1 || p.colors > 256))
    throw Unreadable("has indices and no table of 1 to 256 colours");
}

// Rows that are told one by one may lie as evenly as others.
RaxelHostPixels withSteps(RaxelHostPixels p) {
  if (!p.rows || p.height == 0) return p;
  const auto step = [&](uint32_t y) {
    return reinterpret_cast<uintptr_t>(p.rows[y]) - reinterpret_cast<uintptr_t>(p.rows[y - 1]);
  };
  for (uint32_t y = 2; y < p.height; ++y) {
    if (step(y) != step(1)) return p;
  }
  p.first = p.rows[0];
  p.rowStep = p.height == 1 ? 0 : static_cast<intptr_t>(step(1));
  p.rows = nullptr;
  return p;
}

// Whether the rows are what the view can show.
bool liesReady(const RaxelHostPixels &p) {
  if (p.rows || p.rowStep < 0 || p.channelBytes != 1) return false;
  const auto reach = static_cast<uint64_t>(p.rowStep);
  const bool single = p.height == 1;
  switch (p.kind) {
    case RAXEL_PIXELS_BITS:
      return single || reach >= (uint64_t{p.width} + 7) / 8;
    case RAXEL_PIXELS_GREY:
    case RAXEL_PIXELS_INDEX:
      return (p.pixelStep == 1 || p.width == 1) && (single || reach >= p.width);
    case RAXEL_PIXELS_RGB:
      return p.channelStep == 1 && (p.pixelStep == 3 || p.width == 1) &&
             (single || reach >= uint64_t{3} * p.width);
    default:
      return false;
  }
}

// A row's channels as bytes, one after the other.
void gather(const Reading &reading, uint32_t y, uint32_t channels, uint8_t *out) {
  const RaxelHostPixels &p = reading.from;
  const auto pixelStep = static_cast<ptrdiff_t>(p.pixelStep);
  const auto channelStep = static_cast<ptrdiff_t>(p.channelStep);
  const uint8_t *pixel = reading.row(y);
  if (p.channelBytes == 1 && channels == 1) {
    for (uint32_t x = 0; x < p.width; ++x, pixel += pixelStep) *out++ = *pixel;
    return;
  }
  if (p.channelBytes == 1 && channels == 3 && pixelStep == 4 && channelStep == 1) {
    // Four bytes in one go, of which the next pixel replaces the last.
    for (uint32_t x = 1; x < p.width; ++x, pixel += 4, out += 3) std::memcpy(out, pixel, 4);
    std::memcpy(out, pixel, 3);
    return;
  }
  if (p.channelBytes == 1) {
    for (uint32_t x = 0; x < p.width; ++x, pixel += pixelStep) {
      for (uint32_t c = 0; c < channels; ++c) *out++ = pixel[channelStep * c];
    }
    return;
  }
  for (uint32_t x = 0; x < p.width; ++x, pixel += pixelStep) {
    for (uint32_t c = 0; c < channels; ++c) {
      uint16_t value;
      std::memcpy(&value, pixel + channelStep * c, sizeof value);
      *out++ = narrow(value);
    }
  }
}

// Eight bytes, 0 or not, as the bits of one, the first byte in the high bit.
uint8_t packEight(const uint8_t *in) {
  constexpr uint64_t kLow = 0x7F7F7F7F7F7F7F7F;
  // Brings bit 0 of each byte to the top byte, each to its place, without a carry.
  constexpr uint64_t kGather =
      std::endian::native == std::endian::little ? 0x8040201008040201 : 0x0102040810204080;
  uint64_t bytes;
  std::memcpy(&bytes, in, sizeof bytes);
  const uint64_t set = (((bytes & kLow) + kLow) | bytes) & ~kLow;
  return static_cast<uint8_t>((set >> 7) * kGather >> 56);
}

void packBools(const uint8_t *in, uint32_t width, uint8_t *out) {
  size_t x = 0;
  for (; x + 8 <= width; x += 8) *out++ = packEight(in + x);
  if (x == width) return;
  std::array<uint8_t, 8> last{};
  std::copy(in + x, in + width, last.begin());
  *out = packEight(last.data());
}

// `colors` channels of colour, the last of them once more for what the background has besides, then
// opacity.
void layOnBackground(const Reading &reading, const uint8_t *in, uint32_t colors, uint32_t made,
                     uint8_t *out) {
  for (uint32_t x = 0; x < reading.from.width; ++x, in += colors + 1, out += made) {
    for (uint32_t c = 0; c < made; ++c) {
      out[c] = blend(in[std::min(c, colors - 1)], reading.background[c], in[colors]);
    }
  }
}

void fromInk(const uint8_t *in, uint32_t width, uint8_t *out) {
  for (uint32_t x = 0; x < width; ++x, in += 4, out += 3) {
    for (size_t c = 0; c < 3; ++c)
      out[c] = static_cast<uint8_t>(((255u - in[c]) * (255u - in[3]) + 127) / 255);
  }
}

// The row as the view has it, from its channels.
void convert(const Reading &reading, const uint8_t *in, uint8_t *out) {
  const RaxelHostPixels &p = reading.from;
  switch (p.kind) {
    case RAXEL_PIXELS_BOOL:
      return packBools(in, p.width, out);
    case RAXEL_PIXELS_GREY_ALPHA:
      return layOnBackground(reading, in, 1, reading.isBackgroundGrey() ? 1 : 3, out);
    case RAXEL_PIXELS_RGBA:
      return layOnBackground(reading, in, 3, 3, out);
    default:
      return fromInk(in, p.width, out);
  }
}

void copyRows(const Reading &reading, Picture &out) {
  const RaxelHostPixels &p = reading.from;
  const uint32_t channels = channelsOf(p.kind);
  if (p.kind == RAXEL_PIXELS_BITS) {
    for (uint32_t y = 0; y < p.height; ++y)
      std::memcpy(out.pixels.data() + out.view.stride * y, reading.row(y), out.view.stride);
    return;
  }
  const bool isPlain =
      p.kind == RAXEL_PIXELS_GREY || p.kind == RAXEL_PIXELS_INDEX || p.kind == RAXEL_PIXELS_RGB;
  std::vector<uint8_t> row(isPlain ? 0 : size_t{p.width} * channels);
  const bool isPacked =
      p.channelBytes == 1 && p.pixelStep == channels && (channels == 1 || p.channelStep == 1);
  for (uint32_t y = 0; y < p.height; ++y) {
    uint8_t *to = out.pixels.data() + out.view.stride * y;
    if (!isPlain && isPacked) {
      convert(reading, reading.row(y), to);
      continue;
    }
    gather(reading, y, channels, isPlain ? to : row.data());
    if (!isPlain) convert(reading, row.data(), to);
  }
}

void readTable(const Reading &reading, Picture &out) {
  const RaxelHostPixels &p = reading.from;
  for (uint32_t i = 0; i < p.colors; ++i) {
    for (uint32_t c = 0; c < 3; ++c) {
      const uint8_t color = p.table[3 * i + c];
      out.table[3 * i + c] = p.alpha ? blend(color, reading.background[c], p.alpha[i]) : color;
    }
  }
}

void read(const Reading &reading, Picture &out) {
  const RaxelHostPixels &p = reading.from;
  check(p);
  const bool isIndex = p.kind == RAXEL_PIXELS_INDEX;
  out.dpiX = p.dpiX;
  out.dpiY = p.dpiY;
  // One of inks is none of what they become.
  if (p.icc && p.kind != RAXEL_PIXELS_CMYK) out.metadata.icc.assign(p.icc, p.icc + p.iccBytes);
  if (isIndex) {
    readTable(reading, out);
    out.useTable(p.colors);
  }
  out.announce(p.width, p.height, bitsOf(reading));
  if (p.channelBytes == 2) out.notes.emplace_back(kReduced);
  if (liesReady(p)) {
    out.view = RaxelPicture{
        p.width, p.height, bitsOf(reading), reading.row(0), static_cast<size_t>(p.rowStep), nullptr, 0};
    // A single row needs no step.
    if (p.height == 1) out.view.stride = static_cast<size_t>((uint64_t{p.width} * bitsOf(reading) + 7) / 8);
  } else {
    out.allocate(p.width, p.height, bitsOf(reading));
    copyRows(reading, out);
  }
  if (isIndex) out.useTable(p.colors);
}

}  // namespace

std::unique_ptr<Picture> readMemory(const RaxelHostPixels &pixels, const std::string &name,
                                    const Background &background, const Gate &gate) {
  auto picture = std::make_unique<Picture>();
  picture->gate = gate;
  try {
    read({withSteps(pixels), background}, *picture);
  } catch (const Unreadable &why) {
    throw Failure(kNoInput, name + ": " + why.what());
  } catch (const std::bad_alloc &) {
    throw Failure(kNoInput, RAXEL_HOST_NO_MEMORY, name + ": there is not enough memory for this picture",
                  ENOMEM);
  }
  return picture;
}

}  // namespace host
