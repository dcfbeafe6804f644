// SPDX-License-Identifier: MIT
// The front of a file as TIFF 6.0 lays it out, put together entry by entry: what tests of the pixels behind
// it expect. tests/tiff/directory_test.cpp spells fronts out byte by byte, and compares this with them.
#pragma once

#include <cstdint>
#include <vector>

#include "raxel/tiff_codes.h"

namespace support {

struct Front {
  uint32_t width = 0;
  uint32_t length = 0;
  uint32_t bits = 1;
  uint32_t compression = RAXEL_TIFF_UNCOMPRESSED;
  uint32_t photometric = RAXEL_TIFF_BLACK_IS_ZERO;
  uint32_t samples = 1;
  uint32_t rowsPerStrip = 0;  // 0: tiles of 512 by 128
  uint32_t xResolution = 96;
  uint32_t yResolution = 96;
  // One for each strip or tile. A single one stands in its entry, more in an array behind the resolutions.
  std::vector<uint32_t> offsets = {0};
  std::vector<uint32_t> counts = {0};
};

// Header, directory and the values that it points to; without a colour map.
inline std::vector<uint8_t> frontOf(const Front &front) {
  constexpr uint32_t kShort = 3, kLong = 4, kRational = 5;
  std::vector<uint8_t> out;
  const auto put = [&out](uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
  };
  const auto entry = [&put](uint32_t tag, uint32_t type, size_t count, uint32_t value) {
    put(tag, 2);
    put(type, 2);
    put(static_cast<uint32_t>(count), 4);
    put(value, 4);
  };
  const bool tiled = front.rowsPerStrip == 0;
  const uint32_t entries = tiled ? 14 : 13;
  const uint32_t resolutions = 8 + 2 + 12 * entries + 4;  // behind header, count, entries, next directory
  const auto pieces = static_cast<uint32_t>(front.offsets.size());
  const uint32_t arrays = resolutions + 16;

  put(0x4949, 2);  // "II"
  put(42, 2);
  put(8, 4);
  put(entries, 2);
  entry(254, kLong, 1, 0);
  entry(256, kShort, 1, front.width);
  entry(257, kShort, 1, front.length);
  entry(258, kShort, 1, front.bits);
  entry(259, kShort, 1, front.compression);
  entry(262, kShort, 1, front.photometric);
  entry(tiled ? 324 : 273, kLong, pieces, pieces == 1 ? front.offsets[0] : arrays);
  entry(277, kShort, 1, front.samples);
  if (tiled) {
    entry(322, kLong, 1, 512);
    entry(323, kLong, 1, 128);
  } else {
    entry(278, kLong, 1, front.rowsPerStrip);
  }
  entry(tiled ? 325 : 279, kLong, pieces, pieces == 1 ? front.counts[0] : arrays + 4 * pieces);
  entry(282, kRational, 1, resolutions);
  entry(283, kRational, 1, resolutions + 8);
  entry(296, kShort, 1, 2);
  put(0, 4);
  for (const uint32_t resolution : {front.xResolution, front.yResolution}) {
    put(resolution, 4);
    put(1, 4);
  }
  if (pieces == 1) return out;
  for (const uint32_t offset : front.offsets) put(offset, 4);
  for (const uint32_t count : front.counts) put(count, 4);
  return out;
}

// Bytes, one run behind the other.
inline std::vector<uint8_t> joined(std::vector<uint8_t> first, const std::vector<uint8_t> &second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace support
