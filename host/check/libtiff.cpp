#include "check/libtiff.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "failure.h"

namespace host {
namespace {

template <class Function>
bool resolve(void *library, const char *name, Function &function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  return function != nullptr;
}

bool load(LibTiff &to) {
  void *library = dlopen("libtiff.so.6", RTLD_NOW | RTLD_LOCAL);
  if (!library) return false;
#define RAXEL_RESOLVE(name) resolve(library, #name, to.name)
  return RAXEL_RESOLVE(TIFFClientOpen) && RAXEL_RESOLVE(TIFFClose) && RAXEL_RESOLVE(TIFFGetField) &&
         RAXEL_RESOLVE(TIFFGetFieldDefaulted) && RAXEL_RESOLVE(TIFFIsTiled) &&
         RAXEL_RESOLVE(TIFFScanlineSize64) && RAXEL_RESOLVE(TIFFReadScanline) &&
         RAXEL_RESOLVE(TIFFTileSize64) && RAXEL_RESOLVE(TIFFTileRowSize64) && RAXEL_RESOLVE(TIFFReadTile) &&
         RAXEL_RESOLVE(TIFFSetErrorHandler) && RAXEL_RESOLVE(TIFFSetWarningHandler) &&
         RAXEL_RESOLVE(TIFFSetErrorHandlerExt);
#undef RAXEL_RESOLVE
}

// Null when the library is not installed.
const LibTiff *installed() {
  static LibTiff functions{};
  static const bool loaded = load(functions);
  return loaded ? &functions : nullptr;
}

const LibTiff &libTiff() {
  const LibTiff *functions = installed();
  if (!functions)
    throw Failure(RAXEL_HOST_NOT_VERIFIED,
                  "libtiff is needed for this and not installed (package libtiff6)");
  return *functions;
}

// The handlers get no context, so what is said goes here; cleared by each reader.
std::vector<std::string> saidErrors, saidWarnings;
constexpr size_t kMostMessages = 100;

void collect(std::vector<std::string> &to, const char *format, va_list arguments) {
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

// The kind that a reader beside this one does not replace by its own.
__attribute__((format(printf, 3, 0))) void onErrorOfOthers(thandle_t, const char *, const char *format,
                                                           va_list arguments) {
  collect(saidErrors, format, arguments);
}

tmsize_t readBytes(thandle_t handle, void *to, tmsize_t count) {
  TiffBytes &view = *static_cast<TiffBytes *>(handle);
  if (count < 0 || view.at >= view.bytes.size()) return 0;
  const size_t step =
      std::min(static_cast<size_t>(count), view.bytes.size() - static_cast<size_t>(view.at));
  std::memcpy(to, view.bytes.data() + view.at, step);
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

}  // namespace

TiffListener::TiffListener() : lib_(installed()) {
  saidErrors.clear();
  if (lib_) lib_->TIFFSetErrorHandlerExt(onErrorOfOthers);
}

TiffListener::~TiffListener() {
  if (lib_) lib_->TIFFSetErrorHandlerExt(nullptr);
}

const std::vector<std::string> &TiffListener::errors() const {
  return saidErrors;
}

TiffReader::TiffReader(std::span<const uint8_t> bytes) : lib_(&libTiff()), memory_{bytes, 0} {
  saidErrors.clear();
  saidWarnings.clear();
  lib_->TIFFSetErrorHandler(onError);
  lib_->TIFFSetWarningHandler(onWarning);
  tiff_ = lib_->TIFFClientOpen("output", "rm", &memory_, readBytes, writeNothing, seekTo, closeNothing,
                               sizeOf, nullptr, nullptr);
  if (!tiff_) return;
  width_ = number(TIFFTAG_IMAGEWIDTH, true, 0);
  tiled_ = lib_->TIFFIsTiled(tiff_) != 0;
  rowBytes_ = lib_->TIFFScanlineSize64(tiff_);
  if (tiled_) {
    tileWidth_ = number(TIFFTAG_TILEWIDTH, true, 0);
    tileHeight_ = number(TIFFTAG_TILELENGTH, true, 0);
  }
}

TiffReader::~TiffReader() {
  if (tiff_) lib_->TIFFClose(tiff_);
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

bool TiffReader::readTileRow(uint32_t y) {
  const uint64_t tileRow = lib_->TIFFTileRowSize64(tiff_), tileSize = lib_->TIFFTileSize64(tiff_);
  if (tileRow == 0 || tileWidth_ == 0 || tileHeight_ == 0 || tileSize < tileRow * tileHeight_) return false;
  if (tileSize > kLargestTiles || rowBytes_ * tileHeight_ > kLargestTiles) return false;
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
  if (!tiled_) return lib_->TIFFReadScanline(tiff_, row, y, 0) == 1;
  if (tileHeight_ == 0 || (y % tileHeight_ == 0 && !readTileRow(y))) return false;
  std::memcpy(row, tiles_.data() + rowBytes_ * (y % tileHeight_), static_cast<size_t>(rowBytes_));
  return true;
}

const std::vector<std::string> &TiffReader::errors() const {
  return saidErrors;
}
const std::vector<std::string> &TiffReader::warnings() const {
  return saidWarnings;
}

}  // namespace host
