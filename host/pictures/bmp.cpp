// SPDX-License-Identifier: MIT
// BMP without compression: colour tables of 1 to 8 bits, and pixels of 16, 24 and 32 bits, whose channels
// masks may place.
#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "pictures/picture.h"

namespace host {
namespace {

using Bytes = std::span<const uint8_t>;

// A little-endian number of up to 4 bytes; 0 beyond the end.
uint32_t numberAt(Bytes file, size_t at, size_t size) {
  uint32_t value = 0;
  for (size_t i = 0; i < size && at + i < file.size(); ++i) value |= uint32_t{file[at + i]} << 8 * i;
  return value;
}

constexpr uint32_t kPlain = 0, kBitFields = 3, kAlphaBitFields = 6;
constexpr size_t kFileHeader = 14;
constexpr uint32_t kOldHeader = 12, kHeader = 40;

struct Header {
  uint32_t size, width, height, bits, compression, used;
  bool topDown, old;
  size_t pixels;  // where they begin
  double dpiX, dpiY;
};

Header readHeader(Bytes file) {
  Header header{};
  header.size = numberAt(file, kFileHeader, 4);
  header.pixels = numberAt(file, 10, 4);
  header.old = header.size == kOldHeader;
  if (!header.old && header.size < kHeader) throw Unreadable("is damaged: its header has an unknown size");
  const size_t at = kFileHeader + 4;
  if (header.old) {
    header.width = numberAt(file, at, 2);
    header.height = numberAt(file, at + 2, 2);
    header.bits = numberAt(file, at + 6, 2);
    return header;
  }
  header.width = numberAt(file, at, 4);
  header.height = numberAt(file, at + 4, 4);
  header.bits = numberAt(file, at + 10, 2);
  header.compression = numberAt(file, at + 12, 4);
  header.dpiX = numberAt(file, at + 20, 4) * 0.0254;
  header.dpiY = numberAt(file, at + 24, 4) * 0.0254;
  header.used = numberAt(file, at + 28, 4);
  // A negative height says that the top row comes first.
  header.topDown = header.height > INT32_MAX;
  if (header.topDown) header.height = 0 - header.height;
  if (header.width > INT32_MAX || header.height > INT32_MAX)
    throw Unreadable("is damaged: its size is negative");
  return header;
}

// One channel of a pixel.
struct Channel {
  uint32_t mask;

  uint8_t of(uint32_t pixel) const {
    if (mask == 0) return 0;
    const int shift = std::countr_zero(mask);
    const uint64_t most = mask >> shift, value = (pixel & mask) >> shift;
    return static_cast<uint8_t>((value * 255 + most / 2) / most);
  }
};

struct Channels {
  Channel red, green, blue, opacity;
};

Channels readChannels(Bytes file, const Header &header) {
  if (header.compression == kPlain) {
    // The fourth byte of 32 bits has no meaning.
    if (header.bits == 16) return {{0x7C00}, {0x03E0}, {0x001F}, {0}};
    return {{0xFF0000}, {0x00FF00}, {0x0000FF}, {0}};
  }
  constexpr size_t kMasks = kFileHeader + kHeader;
  constexpr uint32_t kHeaderWithOpacity = 56;
  const bool opacity = header.compression == kAlphaBitFields || header.size >= kHeaderWithOpacity;
  return {{numberAt(file, kMasks, 4)},
          {numberAt(file, kMasks + 4, 4)},
          {numberAt(file, kMasks + 8, 4)},
          {opacity ? numberAt(file, kMasks + 12, 4) : 0}};
}

void readTable(Bytes file, const Header &header, Picture &out) {
  const size_t start = kFileHeader + header.size, each = header.old ? 3 : 4;
  uint32_t count = 1u << header.bits;
  if (header.used != 0) count = std::min(count, header.used);
  if (header.pixels > start)
    count = std::min(count, static_cast<uint32_t>(std::min<size_t>((header.pixels - start) / each, count)));
  if (count == 0 || file.size() < start + each * count)
    throw Unreadable("is damaged: its colour table is missing");
  for (size_t i = 0; i < count; ++i) {
    for (size_t c = 0; c < 3; ++c) out.table[3 * i + c] = file[start + each * i + 2 - c];
  }
  out.useTable(count);
}

class Rows {
 public:
  Rows(Bytes file, const Header &header)
      : header_(header), stride_((uint64_t{header.width} * header.bits + 31) / 32 * 4) {
    const uint64_t wanted = stride_ * header.height,
                   there = file.size() - std::min(file.size(), header.pixels);
    if (there < wanted) {
      throw Unreadable("ends after " + std::to_string(there) + " of " + std::to_string(wanted) +
                       " bytes of pixels");
    }
    first_ = file.data() + header.pixels;
  }

  const uint8_t *row(uint32_t y) const {
    return first_ + static_cast<size_t>(stride_ * (header_.topDown ? y : header_.height - 1 - y));
  }
  uint32_t pixel(uint32_t x, uint32_t y) const {
    const uint8_t *at = row(y) + size_t{x} * (header_.bits / 8);
    uint32_t value = uint32_t{at[0]} | uint32_t{at[1]} << 8;
    if (header_.bits == 32) value |= uint32_t{at[2]} << 16 | uint32_t{at[3]} << 24;
    return value;
  }

 private:
  const Header &header_;
  uint64_t stride_;
  const uint8_t *first_;
};

// Some writers name a mask for the opacity and leave it 0 everywhere: such a picture is meant to be seen.
bool isClear(const Rows &rows, const Header &header, const Channel &opacity) {
  for (uint32_t y = 0; y < header.height; ++y) {
    for (uint32_t x = 0; x < header.width; ++x) {
      if ((rows.pixel(x, y) & opacity.mask) != 0) return false;
    }
  }
  return true;
}

void copyColors(const Rows &rows, const Header &header, const Channels &channels,
                const Background &background, Picture &out) {
  const bool opaque = channels.opacity.mask == 0 || isClear(rows, header, channels.opacity);
  uint8_t *to = out.pixels.data();
  for (uint32_t y = 0; y < header.height; ++y) {
    for (uint32_t x = 0; x < header.width; ++x) {
      const uint32_t pixel = rows.pixel(x, y);
      const unsigned opacity = opaque ? 255 : channels.opacity.of(pixel);
      *to++ = blend(channels.red.of(pixel), background[0], opacity);
      *to++ = blend(channels.green.of(pixel), background[1], opacity);
      *to++ = blend(channels.blue.of(pixel), background[2], opacity);
    }
  }
}

void copyBlueFirst(const Rows &rows, const Header &header, Picture &out) {
  uint8_t *to = out.pixels.data();
  for (uint32_t y = 0; y < header.height; ++y) {
    const uint8_t *from = rows.row(y);
    for (uint32_t x = 0; x < header.width; ++x, from += 3) {
      for (size_t c = 0; c < 3; ++c) *to++ = from[2 - c];
    }
  }
}

}  // namespace

void readBmp(Bytes file, const Background &background, Picture &out) {
  const Header header = readHeader(file);
  const uint32_t bits = header.bits;
  const bool indexed = bits == 1 || bits == 2 || bits == 4 || bits == 8, masked = bits == 16 || bits == 32;
  const bool plain = header.compression == kPlain,
             fields = header.compression == kBitFields || header.compression == kAlphaBitFields;
  if (!((indexed && plain) || (bits == 24 && plain) || (masked && (plain || fields))))
    throw Unreadable("is compressed or of an unusual depth; convert it to PNG first");
  out.dpiX = header.dpiX;
  out.dpiY = header.dpiY;
  if (indexed) readTable(file, header, out);
  out.announce(header.width, header.height, indexed ? bits : 24);
  const Rows rows(file, header);
  out.allocate(header.width, header.height, indexed ? bits : 24);
  if (masked) return copyColors(rows, header, readChannels(file, header), background, out);
  if (!indexed) return copyBlueFirst(rows, header, out);
  for (uint32_t y = 0; y < header.height; ++y) {
    std::memcpy(out.pixels.data() + out.view.stride * y, rows.row(y), out.view.stride);
  }
  readTable(file, header, out);
}

}  // namespace host
