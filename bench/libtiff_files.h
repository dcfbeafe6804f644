// SPDX-License-Identifier: MIT
// Whole files by libtiff's C API, from a bitmap as this library takes it: bottom row first, 24-bit
// pixels blue first. Apart from the library's headers, as libtiff's gives the name `tiff` to a type.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace bench {

// Writes `path`. The rows are turned one by one in a buffer, and handed over as scanlines.
//   compression  the value of the TIFF tag
void writeRgbWithLibtiff(const std::string &path, std::span<const uint8_t> bitmap, uint32_t width,
                         uint32_t height, uint16_t compression);

// The same for rows of one bit a pixel, padded to 4 bytes.
void writeBilevelWithLibtiff(const std::string &path, std::span<const uint8_t> bitmap, uint32_t width,
                             uint32_t height, uint16_t compression);

}  // namespace bench
