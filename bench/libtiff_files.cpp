// SPDX-License-Identifier: MIT
#include "libtiff_files.h"

#include <tiffio.h>

#include <cstring>
#include <vector>

namespace bench {

namespace {

TIFF *begin(const std::string &path, uint32_t width, uint32_t height, uint16_t compression) {
  TIFF *file = TIFFOpen(path.c_str(), "wl");
  TIFFSetField(file, TIFFTAG_IMAGEWIDTH, width);
  TIFFSetField(file, TIFFTAG_IMAGELENGTH, height);
  TIFFSetField(file, TIFFTAG_COMPRESSION, compression);
  TIFFSetField(file, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, compression == COMPRESSION_NONE ? height : height / 4);
  return file;
}

}  // namespace

void writeRgbWithLibtiff(const std::string &path, std::span<const uint8_t> bitmap, uint32_t width,
                         uint32_t height, uint16_t compression) {
  TIFF *file = begin(path, width, height, compression);
  TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, 3);
  TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  std::vector<uint8_t> row(size_t{width} * 3);
  const size_t stride = (row.size() + 3) / 4 * 4;
  for (uint32_t y = 0; y < height; ++y) {
    const uint8_t *from = bitmap.data() + stride * (height - 1 - y);
    for (size_t i = 0; i < row.size(); i += 3) {
      row[i] = from[i + 2];
      row[i + 1] = from[i + 1];
      row[i + 2] = from[i];
    }
    TIFFWriteScanline(file, row.data(), y);
  }
  TIFFClose(file);
}

void writeBilevelWithLibtiff(const std::string &path, std::span<const uint8_t> bitmap, uint32_t width,
                             uint32_t height, uint16_t compression) {
  TIFF *file = begin(path, width, height, compression);
  TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  const size_t stride = (size_t{width} + 31) / 32 * 4;
  std::vector<uint8_t> row((size_t{width} + 7) / 8);
  for (uint32_t y = 0; y < height; ++y) {
    std::memcpy(row.data(), bitmap.data() + stride * (height - 1 - y), row.size());
    TIFFWriteScanline(file, row.data(), y);
  }
  TIFFClose(file);
}

}  // namespace bench
