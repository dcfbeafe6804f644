// SPDX-License-Identifier: MIT
#include "pictures/exif.h"

#include <cstring>

#include "finish/tags.h"

namespace host {
namespace {

// A TIFF file in memory; places beyond its end read as 0.
struct Tiff {
  const uint8_t *bytes;
  size_t size;
  bool little;

  uint32_t number(uint64_t at, uint32_t count) const {
    if (at > size || count > size - at) return 0;
    uint32_t value = 0;
    for (uint32_t i = 0; i < count; ++i) {
      value |= uint32_t{bytes[static_cast<size_t>(at) + i]} << 8 * (little ? i : count - 1 - i);
    }
    return value;
  }
  // Of two LONGs, the first above the second; 0 without a divisor.
  double rational(uint64_t at) const {
    const uint32_t below = number(at + 4, 4);
    return below == 0 ? 0 : static_cast<double>(number(at, 4)) / static_cast<double>(below);
  }
};

}  // namespace

Exif readExif(const uint8_t *data, size_t size) {
  constexpr size_t kFront = 6;
  Exif out;
  const bool fronted = size >= kFront && std::memcmp(data, "Exif\0\0", kFront) == 0;
  if (fronted) {
    data += kFront;
    size -= kFront;
  }
  if (size < 8) return out;
  const bool bare = std::memcmp(data, "II*\0", 4) == 0 || std::memcmp(data, "MM\0*", 4) == 0;
  if (!fronted && !bare) return out;
  out.found = true;
  const Tiff tiff{data, size, data[0] == 'I'};
  const uint64_t start = tiff.number(4, 4);
  const uint32_t entries = tiff.number(start, 2);
  double x = 0, y = 0;
  uint32_t unit = 2;  // inches, where nothing else is said
  for (uint32_t i = 0; i < entries; ++i) {
    const uint64_t at = start + 2 + 12 * uint64_t{i};
    if (at + 12 > tiff.size) break;
    const uint32_t tag = tiff.number(at, 2), word = tiff.number(at + 8, 2), place = tiff.number(at + 8, 4);
    if (tag == finish::kOrientation && word >= 1 && word <= 8) out.orientation = static_cast<int>(word);
    if (tag == finish::kXResolution) x = tiff.rational(place);
    if (tag == finish::kYResolution) y = tiff.rational(place);
    if (tag == finish::kResolutionUnit) unit = word;
  }
  const double scale = unit == 2 ? 1 : unit == 3 ? 2.54 : 0;
  if (x > 0 && y > 0) {
    out.dpiX = x * scale;
    out.dpiY = y * scale;
  }
  return out;
}

}  // namespace host
