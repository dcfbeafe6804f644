// SPDX-License-Identifier: MIT
#include "check/libtiff.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "buffer.h"
#include "check/directory.h"
#include "failure.h"
#include "loading.h"
#include "raxel/host.h"

namespace host {
namespace {

bool load(LibTiff &to) {
  void *library = dlopen("libtiff.so.6", RTLD_NOW | RTLD_LOCAL);
  if (!library) return false;
#define RAXEL_RESOLVE(name) resolve(library, #name, to.name)
  return RAXEL_RESOLVE(TIFFClientOpen) && RAXEL_RESOLVE(TIFFClose) && RAXEL_RESOLVE(TIFFGetField) &&
         RAXEL_RESOLVE(TIFFGetFieldDefaulted) && RAXEL_RESOLVE(TIFFIsTiled) &&
         RAXEL_RESOLVE(TIFFScanlineSize64) && RAXEL_RESOLVE(TIFFReadScanline) &&
         RAXEL_RESOLVE(TIFFTileSize64) && RAXEL_RESOLVE(TIFFTileRowSize64) && RAXEL_RESOLVE(TIFFReadTile) &&
         RAXEL_RESOLVE(TIFFNumberOfStrips) && RAXEL_RESOLVE(TIFFNumberOfTiles) &&
         RAXEL_RESOLVE(TIFFGetStrileOffset) && RAXEL_RESOLVE(TIFFGetStrileByteCount) &&
         RAXEL_RESOLVE(TIFFSetErrorHandler) && RAXEL_RESOLVE(TIFFSetWarningHandler) &&
         RAXEL_RESOLVE(TIFFSetField) && RAXEL_RESOLVE(TIFFLastDirectory) &&
         RAXEL_RESOLVE(TIFFRGBAImageOK) && RAXEL_RESOLVE(TIFFReadRGBAStripExt) &&
         RAXEL_RESOLVE(TIFFReadRGBATileExt);
#undef RAXEL_RESOLVE
}

// Null when the library cannot be loaded.
const LibTiff *installed() {
  static LibTiff functions{};
  static const bool loaded = load(functions);
  return loaded ? &functions : nullptr;
}

const LibTiff &libTiff() {
  const LibTiff *functions = installed();
  if (!functions)
    throw Failure(RAXEL_HOST_NOT_VERIFIED,
                  "libtiff is needed for this and cannot be loaded (package libtiff6)");
  return *functions;
}

// The handlers get no context, so what is said goes here; cleared by each reader.
std::vector<std::string> saidErrors, saidWarnings;
constexpr size_t kMostMessages = 100;

__attribute__((format(printf, 2, 0))) void collect(std::vector<std::string> &to, const char *format,
                                                   va_list arguments) {
  char text[400];
  std::vsnprintf(text, sizeof text, format, arguments);
  if (to.size() < kMostMessages) to.push_back(text);
}

__attribute__((format(printf, 2, 0))) void onError(const char *, const char *format, va_list arguments) {
  collect(saidErrors, format, arguments);
}
__attribute__((format(printf, 2, 0))) void onWarning(const char *, const char *format, va_list arguments) {
  collect(saidWarnings, format, arguments);
}

// In bytes that were read, the header's place of the first directory becomes another one: 4 bytes from 4
// on, in BigTIFF 8 from 8 on.
void pointToDirectory(const TiffBytes &view, uint8_t *bytes, size_t count) {
  const bool little = view.bytes[0] == 'I', big = view.bytes[little ? 2 : 3] == 43;
  const uint64_t size = big ? 8 : 4;
  for (uint64_t i = 0; i < size; ++i) {
    const uint64_t at = size + i;
    if (at < view.at || at - view.at >= count) continue;
    bytes[at - view.at] = static_cast<uint8_t>(view.directory >> 8 * (little ? i : size - 1 - i));
  }
}

tmsize_t readBytes(thandle_t handle, void *to, tmsize_t count) {
  TiffBytes &view = *static_cast<TiffBytes *>(handle);
  if (count < 0 || view.at >= view.bytes.size()) return 0;
  const size_t step =
      std::min(static_cast<size_t>(count), view.bytes.size() - static_cast<size_t>(view.at));
  std::memcpy(to, view.bytes.data() + view.at, step);
  if (view.directory != 0) pointToDirectory(view, static_cast<uint8_t *>(to), step);
  view.at += step;
  return static_cast<tmsize_t>(step);
}
tmsize_t writeNothing(thandle_t, void *, tmsize_t) {
  return 0;
}
toff_t seekTo(thandle_t handle, toff_t offset, int whence) {
  TiffBytes &view = *static_cast<TiffBytes *>(handle);
  view.at = whence == SEEK_SET   ? offset
            : whence == SEEK_CUR ? view.at + offset
                                 : view.bytes.size() + offset;
  return view.at;
}
int closeNothing(thandle_t) {
  return 0;
}
toff_t sizeOf(thandle_t handle) {
  return static_cast<TiffBytes *>(handle)->bytes.size();
}
// The library sees most of the file where it lies. It does not write there: files that it maps itself
// cannot be written to.
int mapBytes(thandle_t handle, void **base, toff_t *size) {
  const std::span<const uint8_t> bytes = static_cast<TiffBytes *>(handle)->bytes;
  *base = const_cast<uint8_t *>(bytes.data());
  *size = bytes.size();
  return 1;
}
void unmapNothing(thandle_t, void *, toff_t) {}

}  // namespace

bool libTiffIsInstalled() {
  return installed() != nullptr;
}

TiffReader::TiffReader(std::span<const uint8_t> bytes, uint64_t directory)
    : lib_(&libTiff()), memory_{bytes, 0, directory} {
  saidErrors.clear();
  saidWarnings.clear();
  errorsBefore_ = lib_->TIFFSetErrorHandler(onError);
  warningsBefore_ = lib_->TIFFSetWarningHandler(onWarning);
  // The library reads the values of each entry, and the same ones again for the next.
  const uint64_t size = bytes.size(), mostValues = 4 * size + (uint64_t{1} << 20);
  if (bytesOfValues(bytes, directory) > mostValues) {
    saidErrors.emplace_back("the values of its directory lie over each other");
    return;
  }
  tiff_ = lib_->TIFFClientOpen("output", "r", &memory_, readBytes, writeNothing, seekTo, closeNothing,
                               sizeOf, mapBytes, unmapNothing);
  if (tiff_) open();
}

void TiffReader::open() {
  width_ = number(TIFFTAG_IMAGEWIDTH, true, 0);
  height_ = number(TIFFTAG_IMAGELENGTH, true, 0);
  tiled_ = lib_->TIFFIsTiled(tiff_) != 0;
  rowBytes_ = lib_->TIFFScanlineSize64(tiff_);
  if (tiled_) {
    tileWidth_ = number(TIFFTAG_TILEWIDTH, true, 0);
    tileHeight_ = number(TIFFTAG_TILELENGTH, true, 0);
  }
  // Some files have a last strip of as many rows as the others. Of one that it takes at once the library
  // shows as much as its fast decoder happened to write; the plain one stops behind the rows asked for.
  const uint32_t code = number(TIFFTAG_COMPRESSION, false, COMPRESSION_NONE),
                 rows = number(TIFFTAG_ROWSPERSTRIP, true, 0);
  const bool isDeflate = code == COMPRESSION_ADOBE_DEFLATE || code == COMPRESSION_DEFLATE;
  if (isDeflate && !tiled_ && rows != 0 && rows != UINT32_MAX && height_ % rows != 0)
    lib_->TIFFSetField(tiff_, TIFFTAG_DEFLATE_SUBCODEC, DEFLATE_SUBCODEC_ZLIB);
}

TiffReader::~TiffReader() {
  if (tiff_) lib_->TIFFClose(tiff_);
  lib_->TIFFSetErrorHandler(errorsBefore_);
  lib_->TIFFSetWarningHandler(warningsBefore_);
}

uint32_t TiffReader::number(uint32_t tag, bool wide, uint32_t none) const {
  uint32_t whole = none;
  uint16_t half = 0;
  if (wide) return lib_->TIFFGetFieldDefaulted(tiff_, tag, &whole) ? whole : none;
  return lib_->TIFFGetFieldDefaulted(tiff_, tag, &half) ? half : none;
}

double TiffReader::real(uint32_t tag) const {
  float value = 0;
  return lib_->TIFFGetField(tiff_, tag, &value) ? static_cast<double>(value) : 0;
}

std::vector<uint8_t> TiffReader::colorMap(uint32_t bits) const {
  uint16_t *channels[3] = {};
  if (bits > 8 || !lib_->TIFFGetField(tiff_, TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]))
    return {};
  std::vector<uint8_t> map;
  for (uint32_t i = 0; i < 1u << bits; ++i) {
    for (const uint16_t *channel : channels) map.push_back(static_cast<uint8_t>(channel[i] >> 8));
  }
  return map;
}

// Hostile files promise tiles of any size.
constexpr uint64_t kLargestTiles = uint64_t{1} << 29;

// Small pictures may have large tiles, but not many that lie beside them.
bool TiffReader::hasSaneTiles(uint64_t tileBytes) const {
  constexpr uint64_t kForEachPixel = 16, kAtLeast = uint64_t{1} << 29;
  constexpr uint32_t kWidest = 1 << 20;  // beside a narrow picture; fax codes take 16 bytes for each pixel
  if (tileBytes > kLargestTiles || tileWidth_ > std::max(kWidest, width_)) return false;
  // Sides of no picture: those of one are limited.
  if (tileHeight_ > RAXEL_HOST_LONGEST_SIDE || std::max(width_, height_) > RAXEL_HOST_LONGEST_SIDE)
    return false;
  const auto covered = [](uint64_t side, uint64_t tile) { return (side + tile - 1) / tile * tile; };
  const uint64_t pixels = covered(width_, tileWidth_) * covered(height_, tileHeight_);
  return pixels <= std::max(uint64_t{width_} * height_ * kForEachPixel, kAtLeast);
}

static bool refuseTiles() {
  saidErrors.emplace_back("its tiles are larger than a picture needs");
  return false;
}

bool TiffReader::readTileRow(uint32_t y) {
  const uint64_t tileRow = lib_->TIFFTileRowSize64(tiff_), tileSize = lib_->TIFFTileSize64(tiff_);
  if (tileRow == 0 || tileWidth_ == 0 || tileHeight_ == 0 || tileSize < tileRow * tileHeight_) return false;
  if (!hasSaneTiles(tileSize) || rowBytes_ * tileHeight_ > kLargestTiles) return refuseTiles();
  // Tiles go side by side in whole bytes, which those of a multiple of 16 pixels always are.
  const bool planes = number(TIFFTAG_PLANARCONFIG, false, PLANARCONFIG_CONTIG) != PLANARCONFIG_CONTIG;
  const uint64_t pixel = uint64_t{number(TIFFTAG_BITSPERSAMPLE, false, 1)} *
                         (planes ? 1 : number(TIFFTAG_SAMPLESPERPIXEL, false, 1));
  if (tileWidth_ < width_ && tileWidth_ * pixel % 8 != 0) return false;
  std::vector<uint8_t> tile(static_cast<size_t>(tileSize));
  tiles_.resize(static_cast<size_t>(rowBytes_ * tileHeight_));
  uint64_t column = 0;
  for (uint32_t x = 0; x < width_; x += tileWidth_, column += tileRow) {
    if (lib_->TIFFReadTile(tiff_, tile.data(), x, y, 0, 0) < 0) return false;
    const uint64_t used = std::min(tileRow, rowBytes_ - std::min(column, rowBytes_));
    for (uint32_t r = 0; r < tileHeight_; ++r) {
      std::memcpy(tiles_.data() + rowBytes_ * r + column, tile.data() + tileRow * r,
                  static_cast<size_t>(used));
    }
  }
  return true;
}

bool TiffReader::readRow(uint32_t y, uint8_t *row) {
  if (!tiled_) {
    // What a strip does not fill is not left as it was: the library takes some for whole that are not.
    std::memset(row, 0, static_cast<size_t>(rowBytes_));
    return lib_->TIFFReadScanline(tiff_, row, y, 0) == 1;
  }
  if (tileHeight_ == 0 || (y % tileHeight_ == 0 && !readTileRow(y))) return false;
  std::memcpy(row, tiles_.data() + rowBytes_ * (y % tileHeight_), static_cast<size_t>(rowBytes_));
  return true;
}

uint32_t TiffReader::pieces() const {
  return tiled_ ? lib_->TIFFNumberOfTiles(tiff_) : lib_->TIFFNumberOfStrips(tiff_);
}

std::span<const uint8_t> TiffReader::piece(uint32_t index) const {
  const uint64_t at = lib_->TIFFGetStrileOffset(tiff_, index),
                 count = lib_->TIFFGetStrileByteCount(tiff_, index), size = memory_.bytes.size();
  if (at > size || count > size - at) return {};
  return memory_.bytes.subspan(static_cast<size_t>(at), static_cast<size_t>(count));
}

uint16_t TiffReader::extraSample() const {
  uint16_t count = 0, *kinds = nullptr;
  if (!lib_->TIFFGetFieldDefaulted(tiff_, TIFFTAG_EXTRASAMPLES, &count, &kinds) || count == 0) return 0;
  return kinds[0];
}

bool TiffReader::hasFurtherPictures() const {
  return lib_->TIFFLastDirectory(tiff_) == 0;
}

std::string TiffReader::refusalOfColors() const {
  char why[1024] = "";
  return lib_->TIFFRGBAImageOK(tiff_, why) ? "" : why;
}

bool TiffReader::readColors(const TakePixels &take) {
  // Strips are as wide as the picture; the library bounds their rows by the picture's.
  const uint32_t stripHeight = std::min(number(TIFFTAG_ROWSPERSTRIP, true, height_), height_);
  const uint32_t wide = tiled_ ? tileWidth_ : width_, high = tiled_ ? tileHeight_ : stripHeight;
  const uint64_t pixels = uint64_t{wide} * high;
  if (pixels == 0 || pixels > SIZE_MAX / 8) return false;
  if (tiled_ && !hasSaneTiles(pixels * sizeof(uint32_t))) return refuseTiles();
  // No code makes as many pixels of a byte, and the library takes all of a strip's memory first.
  constexpr uint64_t kMostOfAByte = 4096;
  const bool isVast = pixels > kLargestTiles / sizeof(uint32_t);
  if (isVast && pixels / kMostOfAByte > memory_.bytes.size()) return false;
  const Buffer zeroes = Buffer::zeroes(pixels * sizeof(uint32_t));
  const std::span<uint32_t> piece(static_cast<uint32_t *>(static_cast<void *>(zeroes.data())), pixels);
  // The library would turn pieces one by one.
  lib_->TIFFSetField(tiff_, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  for (uint64_t y = 0; y < height_; y += high) {
    for (uint64_t x = 0; x < width_; x += wide) {
      const auto left = static_cast<uint32_t>(x), top = static_cast<uint32_t>(y);
      const uint32_t columns = std::min(wide, width_ - left), rows = std::min(high, height_ - top);
      const int read = tiled_ ? lib_->TIFFReadRGBATileExt(tiff_, left, top, piece.data(), 1)
                              : lib_->TIFFReadRGBAStripExt(tiff_, top, piece.data(), 1);
      if (read != 1) return false;
      // The bottom row comes first. A tile that reaches beyond the picture keeps its size, a strip does
      // not.
      const uint32_t first = tiled_ ? high : rows;
      for (uint32_t r = 0; r < rows; ++r) {
        take(left, top + r, {piece.data() + size_t{wide} * (first - 1 - r), columns});
      }
    }
  }
  return true;
}

const std::vector<std::string> &TiffReader::errors() const {
  return saidErrors;
}
const std::vector<std::string> &TiffReader::warnings() const {
  return saidWarnings;
}

}  // namespace host
