// SPDX-License-Identifier: MIT
// libtiff over bytes in memory, loaded when a file is verified or inspected.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace host {

struct LibTiff {
  decltype(&::TIFFClientOpen) TIFFClientOpen;
  decltype(&::TIFFClose) TIFFClose;
  decltype(&::TIFFGetField) TIFFGetField;
  decltype(&::TIFFGetFieldDefaulted) TIFFGetFieldDefaulted;
  decltype(&::TIFFIsTiled) TIFFIsTiled;
  decltype(&::TIFFScanlineSize64) TIFFScanlineSize64;
  decltype(&::TIFFReadScanline) TIFFReadScanline;
  decltype(&::TIFFTileSize64) TIFFTileSize64;
  decltype(&::TIFFTileRowSize64) TIFFTileRowSize64;
  decltype(&::TIFFNumberOfStrips) TIFFNumberOfStrips;
  decltype(&::TIFFNumberOfTiles) TIFFNumberOfTiles;
  decltype(&::TIFFGetStrileOffset) TIFFGetStrileOffset;
  decltype(&::TIFFGetStrileByteCount) TIFFGetStrileByteCount;
  decltype(&::TIFFReadTile) TIFFReadTile;
  decltype(&::TIFFSetErrorHandler) TIFFSetErrorHandler;
  decltype(&::TIFFSetWarningHandler) TIFFSetWarningHandler;
  decltype(&::TIFFSetField) TIFFSetField;
  decltype(&::TIFFLastDirectory) TIFFLastDirectory;
  decltype(&::TIFFRGBAImageOK) TIFFRGBAImageOK;
  decltype(&::TIFFReadRGBAStripExt) TIFFReadRGBAStripExt;
  decltype(&::TIFFReadRGBATileExt) TIFFReadRGBATileExt;
};

// Loads it.
bool libTiffIsInstalled();

// Bytes and a place in them.
struct TiffBytes {
  std::span<const uint8_t> bytes;
  uint64_t at = 0;
  uint64_t directory = 0;  // what the header is to say for the place of the first one; 0: what it says
};

// A TIFF being read. Only one lives at a time: the library's messages come without a context.
class TiffReader {
 public:
  // Throws a Failure when libtiff cannot be loaded. The bytes are borrowed.
  // Shows the picture of that directory (0: the first).
  explicit TiffReader(std::span<const uint8_t> bytes, uint64_t directory = 0);
  ~TiffReader();
  TiffReader(const TiffReader &) = delete;
  TiffReader &operator=(const TiffReader &) = delete;

  bool isOpen() const { return tiff_ != nullptr; }
  // A field of one number; the format's default, or `none` when there is neither.
  uint32_t number(uint32_t tag, bool wide, uint32_t none) const;
  double real(uint32_t tag) const;  // 0 for none
  // The colour map as 8-bit red, green, blue; empty when there is none.
  std::vector<uint8_t> colorMap(uint32_t bits) const;
  // What a sample beyond those of the colours means (EXTRASAMPLE_...).
  uint16_t extraSample() const;
  // True when another directory follows.
  bool hasFurtherPictures() const;
  // Decodes the next row of bytes, in order from 0 on; `row` has rowBytes() of room. False when it
  // cannot.
  bool readRow(uint32_t y, uint8_t *row);
  uint64_t rowBytes() const { return rowBytes_; }

  // The strips or tiles, of a width in pixels, and what the file holds of each: nothing for one that is not
  // in it.
  uint32_t pieces() const;
  uint32_t pieceWidth() const { return tiled_ ? tileWidth_ : width_; }
  std::span<const uint8_t> piece(uint32_t index) const;

  // Why the library cannot turn this file into colours; empty when it can.
  std::string refusalOfColors() const;
  // Receives pixels of a row from column x on; libtiff's TIFFGetR, TIFFGetG, TIFFGetB and TIFFGetA take
  // them apart, and the colours are multiplied by the opacity.
  using TakePixels = std::function<void(uint32_t x, uint32_t y, std::span<const uint32_t> pixels)>;
  // Decodes the whole picture, as it lies in the file, a strip or a tile at a time. False when it cannot.
  bool readColors(const TakePixels &take);

  // What the library had to say so far.
  const std::vector<std::string> &errors() const;
  const std::vector<std::string> &warnings() const;

 private:
  const LibTiff *lib_;
  TIFFErrorHandler errorsBefore_ = nullptr, warningsBefore_ = nullptr;  // the program's own
  TIFF *tiff_ = nullptr;
  uint64_t rowBytes_ = 0;
  bool tiled_ = false;
  uint32_t tileWidth_ = 0, tileHeight_ = 0, width_ = 0, height_ = 0;
  std::vector<uint8_t> tiles_;  // one row of tiles, as rows of the picture
  TiffBytes memory_;

  void open();
  bool hasSaneTiles(uint64_t tileBytes) const;
  bool readTileRow(uint32_t y);
};

}  // namespace host
