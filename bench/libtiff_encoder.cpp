// SPDX-License-Identifier: MIT
#include "libtiff_encoder.h"

#include <tiffio.h>

#include <cstdio>

namespace bench {
namespace {

Memory &memoryOf(thandle_t handle) {
  return *static_cast<Memory *>(handle);
}

tmsize_t readSome(thandle_t handle, void *to, tmsize_t wanted) {
  Memory &memory = memoryOf(handle);
  const size_t n = std::min(static_cast<size_t>(wanted), memory.end - memory.at);
  std::memcpy(to, memory.bytes.data() + memory.at, n);
  memory.at += n;
  return static_cast<tmsize_t>(n);
}

tmsize_t writeSome(thandle_t handle, void *from, tmsize_t n) {
  memoryOf(handle).write(from, static_cast<size_t>(n));
  return n;
}

toff_t seekTo(thandle_t handle, toff_t offset, int whence) {
  Memory &memory = memoryOf(handle);
  const size_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? memory.at : memory.end;
  memory.at = base + static_cast<size_t>(offset);
  return memory.at;
}

int closeNothing(thandle_t) {
  return 0;
}

toff_t sizeOf(thandle_t handle) {
  return memoryOf(handle).end;
}

}  // namespace

void encodeWithLibtiff(const Picture &picture, uint16_t compression, Memory &memory) {
  memory.at = memory.end = 0;
  TIFF *tiff = TIFFClientOpen("bench", "wm", &memory, readSome, writeSome, seekTo, closeNothing, sizeOf,
                              nullptr, nullptr);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(picture.width));
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(picture.height));
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.bitsPerPixel == 1 ? 1 : 8);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.bitsPerPixel == 24 ? 3 : 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
               picture.bitsPerPixel == 24 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<uint32_t>(rowsPerStrip(picture)));
  // libtiff reads the strip only, though its argument is not const.
  auto *pixels = const_cast<uint8_t *>(picture.pixels.data());
  for (size_t y = 0, strip = 0; y < picture.height; y += rowsPerStrip(picture), ++strip) {
    const size_t rows = std::min(rowsPerStrip(picture), picture.height - y);
    TIFFWriteEncodedStrip(tiff, static_cast<uint32_t>(strip), pixels + y * picture.rowBytes(),
                          static_cast<tmsize_t>(rows * picture.rowBytes()));
  }
  TIFFClose(tiff);
}

}  // namespace bench
