// SPDX-License-Identifier: MIT
#include "pictures/jpeg_segments.h"

#include <algorithm>

namespace host {
namespace {

constexpr uint8_t kMarkerByte = 0xFF, kStuffed = 0x00, kTemporary = 0x01, kFirstRestart = 0xD0,
                  kStartOfImage = 0xD8, kEndOfImage = 0xD9, kStartOfScan = 0xDA;

bool standsAlone(uint8_t marker) {
  return marker == kStuffed || marker == kTemporary || (marker >= kFirstRestart && marker <= kStartOfImage);
}

}  // namespace

void eachJpegSegment(std::span<const uint8_t> file, const TakeSegment &take) {
  for (size_t at = 0; at + 4 <= file.size();) {
    const uint8_t marker = file[at + 1];
    if (file[at] != kMarkerByte || marker == kMarkerByte) {
      ++at;
      continue;
    }
    at += 2;
    if (standsAlone(marker)) continue;
    if (marker == kStartOfScan || marker == kEndOfImage) break;
    const size_t length = size_t{file[at]} << 8 | file[at + 1], left = file.size() - at;
    if (length < 2) break;
    take(marker, length <= left ? file.subspan(at + 2, length - 2) : file.last(0));
    at += std::min(length, left);
  }
}

}  // namespace host
