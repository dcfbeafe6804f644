// SPDX-License-Identifier: MIT
// The geometry of a job: what the file will hold, and which jobs no reader could open.
#include "prepare/plan.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>

#include "finish/planned.h"
#include "raxel/host.h"

namespace prepare {
namespace {

constexpr uint32_t kUnitsPerInch = 32768;
constexpr uint64_t kLargest = (uint64_t{1} << 31) - (1 << 20);  // stream positions are signed 32-bit

bool within(int32_t value, int32_t count) {
  return value >= 0 && value < count;
}

int checkPicture(const RaxelPicture &picture) {
  const uint32_t bits = picture.bits;
  if (!picture.rows || picture.width == 0 || picture.height == 0) return RAXEL_HOST_BAD_PICTURE;
  if (std::max(picture.width, picture.height) > RAXEL_HOST_LONGEST_SIDE) return RAXEL_HOST_BAD_PICTURE;
  if (bits != 1 && bits != 2 && bits != 4 && bits != 8 && bits != 24) return RAXEL_HOST_BAD_PICTURE;
  if ((uint64_t{picture.width} * bits + 7) / 8 > picture.stride) return RAXEL_HOST_BAD_PICTURE;
  return RAXEL_HOST_OK;
}

// What the filter takes is whole; the finished directory tells the true one.
constexpr double kLeastFilterDpi = 32, kMostFilterDpi = 400, kMostDpi = 100000;

bool resolutionFits(double dpi, bool finish) {
  if (finish) return dpi >= 1 && dpi <= kMostDpi;
  return dpi >= kLeastFilterDpi && dpi <= kMostFilterDpi && dpi == std::floor(dpi);
}

int32_t filterDpi(double dpi) {
  return static_cast<int32_t>(std::clamp(std::round(dpi), kLeastFilterDpi, kMostFilterDpi));
}

uint32_t bitsOf(int32_t mode) {
  switch (mode) {
    case RAXEL_MODE_BILEVEL:
      return 1;
    case RAXEL_MODE_GREY256:
    case RAXEL_MODE_COLOR256:
      return 8;
    case RAXEL_MODE_RGB:
      return 24;
    default:
      return 4;
  }
}

// The colours of all other modes are fixed.
int checkPalette(const RaxelRequest &request) {
  if ((request.palette != nullptr) != (request.paletteColors != 0)) return RAXEL_HOST_BAD_ARGUMENT;
  if (!request.palette) return RAXEL_HOST_OK;
  const bool isFree = request.mode == RAXEL_MODE_COLOR16 || request.mode == RAXEL_MODE_COLOR256;
  return isFree && request.paletteColors <= 1u << bitsOf(request.mode) ? RAXEL_HOST_OK
                                                                       : RAXEL_HOST_BAD_PALETTE;
}

int checkRequest(const RaxelRequest &request) {
  if (!within(request.mode, RAXEL_MODES) || !within(request.compression, RAXEL_COMPRESSIONS) ||
      !within(request.layout, RAXEL_LAYOUT_TILES + 1) || !within(request.treatment, RAXEL_TREATMENTS) ||
      !within(request.dither, RAXEL_DITHER_OFF + 1) || !within(request.quantizer, RAXEL_QUANTIZERS)) {
    return RAXEL_HOST_BAD_ARGUMENT;
  }
  if (!within(request.finish, 2) || !within(request.strips, RAXEL_STRIPS_ONE + 1))
    return RAXEL_HOST_BAD_ARGUMENT;
  if (request.finish == 0 && request.strips != 0) return RAXEL_HOST_BAD_ARGUMENT;
  if (!within(request.threshold, RAXEL_THRESHOLDS) || !within(request.thresholdLevel, 256) ||
      (request.threshold != RAXEL_THRESHOLD_NONE && request.dither == RAXEL_DITHER_ON))
    return RAXEL_HOST_BAD_ARGUMENT;
  for (double dpi : {request.dpiX, request.dpiY}) {
    if (!resolutionFits(dpi, request.finish != 0)) return RAXEL_HOST_BAD_RESOLUTION;
  }
  for (double inches : {request.inchesX, request.inchesY}) {
    if (!(inches >= 0) || !std::isfinite(inches)) return RAXEL_HOST_BAD_SIZE;
  }
  return checkPalette(request);
}

// Pixels of the picture at the wanted size. With one side given the other keeps the proportions, seen
// at the two resolutions.
int sizeInPixels(const RaxelPicture &picture, const RaxelRequest &request, double &width, double &rows) {
  double inchesX = request.inchesX, inchesY = request.inchesY;
  width = picture.width;
  rows = picture.height;
  if (inchesX == 0 && inchesY == 0) return RAXEL_HOST_OK;
  if (inchesX == 0) inchesX = inchesY * picture.width / picture.height;
  if (inchesY == 0) inchesY = inchesX * picture.height / picture.width;
  width = std::floor(inchesX * request.dpiX + 0.5);
  rows = std::floor(inchesY * request.dpiY + 0.5);
  return width < 1 || rows < 1 ? RAXEL_HOST_BAD_SIZE : RAXEL_HOST_OK;
}

// Header, directory of 13 entries (14 with a colour map), colour map, two rationals, packed rows; a
// finished file's directory behind them.
uint64_t uncompressedBytes(const RaxelPlan &plan) {
  const bool map = hasColorMap(plan.mode);
  const uint64_t directory = 8 + 2 + 12 * (map ? 14 : 13) + 4;
  const uint64_t mapBytes = map ? uint64_t{6} << plan.bits : 0;
  const uint64_t filters = directory + mapBytes + 16 + rowBytes(plan) * plan.height;
  if (plan.finish == 0) return filters;
  finish::FinishedPage page = finish::singleStripPage(plan, 0, 0);
  if (map) page.colorMapAt = 1;
  return filters + finish::directoryBytes(page, filters);
}

// Combinations that the filter writes and readers cannot open.
int checkReadable(const RaxelPlan &plan) {
  const bool fax = isFax(plan.compression);
  if (fax && plan.mode != RAXEL_MODE_BILEVEL) return RAXEL_HOST_FAX_NEEDS_1_BIT;
  const bool tiles = plan.layout == RAXEL_LAYOUT_TILES;
  if (plan.strips == RAXEL_STRIPS_ONE && (tiles || (!fax && plan.compression != RAXEL_COMPRESS_NONE)))
    return RAXEL_HOST_ONE_STRIP_NEEDS_FAX;
  if (!tiles) return RAXEL_HOST_OK;
  if (plan.compression != RAXEL_COMPRESS_T6) return RAXEL_HOST_TILES_NEED_T6;
  // A chunk of the writer holds 32767 bytes, so beyond this width it holds less than a tile's 128 rows.
  if (plan.width > 2016) return RAXEL_HOST_TILES_TOO_WIDE;
  // With a single row of tiles the writer notes the place of the first tile only.
  if (plan.height <= 128 && plan.width > 512) return RAXEL_HOST_TILES_TOO_FLAT;
  return RAXEL_HOST_OK;
}

int plan(const RaxelPicture &picture, const RaxelRequest &request, RaxelPlan &out, bool anyway) {
  if (const int code = checkPicture(picture)) return code;
  if (const int code = checkRequest(request)) return code;
  double width = 0, rows = 0;
  if (const int code = sizeInPixels(picture, request, width, rows)) return code;
  if (std::max(width, rows) <= UINT32_MAX) {
    out.pictureWidth = static_cast<uint32_t>(width);
    out.pictureRows = static_cast<uint32_t>(rows);
  }
  if (request.pageWidth != 0 || request.pageHeight != 0) {
    if (width > request.pageWidth || rows > request.pageHeight) return RAXEL_HOST_BAD_SIZE;
    width = request.pageWidth;
    rows = request.pageHeight;
  }
  if (width > 65535) return RAXEL_HOST_TOO_WIDE;
  if (rows > 65534) return RAXEL_HOST_TOO_TALL;

  out.width = static_cast<uint32_t>(width);
  out.rows = static_cast<uint32_t>(rows);
  out.height = (out.rows + 1) & ~1u;
  out.mode = request.mode;
  out.layout = request.layout;
  out.bits = bitsOf(request.mode);
  out.stride = static_cast<uint32_t>((uint64_t{out.width} * out.bits + 31) / 32 * 4);
  out.bytes = uint64_t{out.stride} * out.height;
  out.colors = out.bits == 24 ? 0 : 1u << out.bits;
  if (out.bytes >= kLargest) return RAXEL_HOST_TOO_LARGE;
  out.compression = request.compression;
  if (out.height != out.rows) out.notes |= RAXEL_NOTE_ROW_REPEATED;
  if (out.pictureWidth != picture.width || out.pictureRows != picture.height)
    out.notes |= RAXEL_NOTE_SCALED;
  out.dpiX = request.dpiX;
  out.dpiY = request.dpiY;
  out.threshold = -1;
  out.finish = request.finish;
  out.strips = request.strips;
  out.filterDpiX = filterDpi(request.dpiX);
  out.filterDpiY = filterDpi(request.dpiY);
  out.unitsPerInch = kUnitsPerInch;
  // The writer multiplies by the resolution and truncates, escape 56 rounds up: units rounded up and
  // down give the same pixels there, since a unit is less than a pixel at every resolution.
  const auto up = [](double pixels, int32_t dpi) { return std::ceil(pixels * kUnitsPerInch / dpi); };
  const auto down = [](double pixels, int32_t dpi) { return std::floor(pixels * kUnitsPerInch / dpi); };
  out.extentX = static_cast<int32_t>(up(out.width, out.filterDpiX));
  out.extentY = static_cast<int32_t>(up(out.height, out.filterDpiY));
  out.queryX = static_cast<int32_t>(down(out.width, out.filterDpiX));
  out.queryY = static_cast<int32_t>(down(out.height, out.filterDpiY));
  out.uncompressedBytes = uncompressedBytes(out);
  return anyway ? RAXEL_HOST_OK : checkReadable(out);
}

int planOrClear(const RaxelPicture *picture, const RaxelRequest *request, RaxelPlan *out, bool anyway) {
  if (!out) return RAXEL_HOST_BAD_ARGUMENT;
  *out = RaxelPlan{};
  if (!picture || !request) return RAXEL_HOST_BAD_ARGUMENT;
  const int code = plan(*picture, *request, *out, anyway);
  if (code != RAXEL_HOST_OK) *out = RaxelPlan{};
  return code;
}

}  // namespace

uint64_t rowBytes(const RaxelPlan &plan) {
  return (uint64_t{plan.width} * plan.bits + 7) / 8;
}

std::vector<uint8_t> packRows(const RaxelPlan &plan, const uint8_t *block, uint32_t first, uint32_t rows) {
  const auto bytes = static_cast<size_t>(rowBytes(plan));
  std::vector<uint8_t> packed(bytes * rows);
  for (uint32_t i = 0; i < rows; ++i) {
    std::copy_n(block + size_t{plan.stride} * (plan.height - 1 - first - i), bytes,
                packed.data() + bytes * i);
  }
  return packed;
}

bool hasColorMap(int32_t mode) {
  return mode == RAXEL_MODE_COLOR8 || mode == RAXEL_MODE_COLOR16 || mode == RAXEL_MODE_COLOR256;
}

bool isFax(int32_t compression) {
  return compression == RAXEL_COMPRESS_HUFFMAN || compression == RAXEL_COMPRESS_T4 ||
         compression == RAXEL_COMPRESS_T6;
}

bool codesComplement(const RaxelPlan &plan) {
  return plan.finish == 0 && plan.bits == 1 && isFax(plan.compression);
}

}  // namespace prepare

extern "C" {

void raxelHostDefaults(RaxelRequest *request) {
  if (!request) return;
  *request = RaxelRequest{};
  request->mode = RAXEL_MODE_RGB;
  request->dpiX = request->dpiY = 96;
}

int raxelHostPlan(const RaxelPicture *picture, const RaxelRequest *request, RaxelPlan *plan) {
  return prepare::planOrClear(picture, request, plan, false);
}

int raxelHostPlanAnyway(const RaxelPicture *picture, const RaxelRequest *request, RaxelPlan *plan) {
  return prepare::planOrClear(picture, request, plan, true);
}

}  // extern "C"
