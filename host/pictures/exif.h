// SPDX-License-Identifier: MIT
// What the Exif block of a file says of the picture. Bytes are not trusted.
#pragma once

#include <cstddef>
#include <cstdint>

namespace host {

struct Exif {
  bool found = false;
  int orientation = 1;        // 1 to 8
  double dpiX = 0, dpiY = 0;  // dots an inch as stored; 0 when it does not say both
};

// Reads the first directory of a block: in JPEG "Exif", two zero bytes, and a TIFF file without pixels
// (Exif 2.3, section 4.5), in PNG and WebP that file alone.
Exif readExif(const uint8_t *data, size_t size);

}  // namespace host
