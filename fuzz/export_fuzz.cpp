// SPDX-License-Identifier: MIT
// One whole export with any settings and any small picture, into a host's stream that fails or fills up
// at any point, or into memory, with a host that may ask to stop.
#include <cstring>
#include <string>

#include "input.h"
#include "raxel/raxel.h"
#include "runtime/numbers.h"
#include "support/stream_procedure.h"
#include "support/tiff_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

constexpr size_t kStatusWords = 16, kExportWords = 8;

struct Listener {
  unsigned untilRefusal = 0;  // 0: never refuses
  HostWord lastPercent = 0;
};

int32_t listen(HostWord context, HostWord a, HostWord, HostWord, HostWord percent, HostWord, HostWord) {
  auto *listener = reinterpret_cast<Listener *>(context);
  if (a == 0) listener->lastPercent = percent;
  return listener->untilRefusal > 0 && --listener->untilRefusal == 0 ? 1 : 0;
}

using fuzz::oneOf;

// Option codes that exist, and some that do not. Sizes stay small: mostly a sixteenth of an inch, half an
// inch at most.
void settle(fuzz::Input &input, RasterSetup &setup) {
  const double inch = input.rarely(64) ? 1 : 0.125;
  // What is less than nothing may become more than any block holds.
  const auto less = static_cast<int16_t>(input.rarely(16) ? -1 : 1);
  setup.nBitmapMode =
      oneOf<int32_t>(input, {RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_MODE_GREY16, RAXEL_STORED_MODE_GREY256,
                             RAXEL_STORED_MODE_COLOR8, RAXEL_STORED_MODE_COLOR16, 220,
                             RAXEL_STORED_MODE_COLOR256, RAXEL_STORED_MODE_RGB, 0, -1});
  setup.nCompressionMode = oneOf<int32_t>(
      input, {RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_STORED_COMPRESS_HUFFMAN,
              RAXEL_STORED_COMPRESS_LZW, 228, RAXEL_STORED_COMPRESS_T4, RAXEL_STORED_COMPRESS_T6, 0, -1});
  // LZW's tables of megabytes take longer than all the rest: the address sanitizer marks every byte.
  if (setup.nCompressionMode == RAXEL_STORED_COMPRESS_LZW && !input.rarely(17)) {
    setup.nCompressionMode = RAXEL_STORED_COMPRESS_NONE;
  }
  setup.nColorMode = oneOf<int32_t>(
      input, {RAXEL_STORED_COLORS, RAXEL_STORED_COLORS_INVERT, RAXEL_STORED_COLORS_INVERT_GREY,
              RAXEL_STORED_COLORS_GREY, RAXEL_STORED_COLORS_GREY_INVERT, 102, 108, 0});
  setup.nSizeMode = oneOf<int32_t>(input, {RAXEL_STORED_SIZE_DISPLAY, RAXEL_STORED_SIZE_PRINTER,
                                           RAXEL_STORED_SIZE_PICTURE, RAXEL_STORED_SIZE_USER, 0});
  setup.nResolutionMode =
      oneOf<int32_t>(input, {RAXEL_STORED_RESOLUTION_DISPLAY, RAXEL_STORED_RESOLUTION_PRINTER,
                             RAXEL_STORED_RESOLUTION_PICTURE, RAXEL_STORED_RESOLUTION_USER, 0});
  setup.tiff.wLayoutMode =
      oneOf<uint16_t>(input, {RAXEL_STORED_LAYOUT_STRIPS, RAXEL_STORED_LAYOUT_TILES, 0});
  setup.tiff.nXResolution =
      oneOf<int16_t>(input, {32, 96, 100, 300, 400, 1, 0, less, static_cast<int16_t>(400 * less)});
  setup.tiff.nYResolution =
      oneOf<int16_t>(input, {32, 96, 100, 300, 400, 1, 0, less, static_cast<int16_t>(400 * less)});
  setup.dWidth = inch * oneOf(input, {0.5, 0.03125, 0.3, 0.0, 0.2 * less, 1e-300});
  setup.dHeight = inch * oneOf(input, {0.5, 0.03125, 0.3, 0.0, 0.2 * less, 1e-300});
}

Handle block(const std::vector<uint8_t> &bytes) {
  const Handle handle = GlobalAlloc(RAXEL_MOVEABLE_ZERO, static_cast<uint32_t>(bytes.size()));
  if (!bytes.empty()) std::memcpy(GlobalLock(handle), bytes.data(), bytes.size());
  GlobalUnlock(handle);
  return handle;
}

template <typename T>
void put(uint8_t *record, size_t at, T value) {
  std::memcpy(record + at, &value, sizeof value);
}

uint32_t longestSide(const fuzz::Input &input) {
  return input.rarely(64) ? 90 : 16;
}

void describe(fuzz::Input &input, uint8_t *info) {
  put(info, 2, oneOf<uint16_t>(input, {96, 0, 1, 300}));  // display dots per inch
  const auto unitsPerInch = oneOf<uint16_t>(input, {100, 72, 300, 1, 0});
  put(info, 10, unitsPerInch);
  // Up to half an inch; without a resolution the extents are inches already.
  const uint32_t longest = unitsPerInch == 0 ? 1 : unitsPerInch / (input.rarely(64) ? 2u : 16u);
  for (const size_t at : {12u, 16u}) {
    const auto extent = static_cast<int32_t>(input.between(0, longest));
    put(info, at, input.byte() % 16 == 0 && input.rarely(16) ? -extent : extent);
  }
  for (const size_t at : {20u, 24u})
    put(info, at, static_cast<int32_t>(input.between(0, longestSide(input))));
}

// Whether the output stays below some sides or, rarely, is too large for any block. In between, a side of
// less than nothing asks for gigabytes: a machine that lacks them ends the process, as it must.
bool isModest(const fuzz::Input &input, RasterSetup &settings, PictureRecord picture, const uint8_t *info) {
  const uint64_t side = input.rarely(2048) ? 2000 : 260;
  int32_t numbers[4];  // extents, then the display
  std::memcpy(numbers, info + 12, sizeof numbers);
  int16_t displayResolution;
  std::memcpy(&displayResolution, info + 2, sizeof displayResolution);
  std::memcpy(&picture.nResolution, info + 10, sizeof picture.nResolution);
  picture.dExtentX = numbers[0];
  picture.dExtentY = numbers[1];
  SetDisplayInfo(numbers[2], numbers[3], displayResolution, displayResolution);

  const RasterSetup before = settings;
  lpRaster = &settings;
  PictureFormat format{};
  QueryPlatformOffscreen(&format, &picture, DrawExportCellData);
  uint16_t bits = 0, colorSpace = 0;
  uint8_t flags[9] = {};
  QueryCellFormat(&format.dWidth, &format.dHeight, &bits, &format.nResolution, &colorSpace, flags);
  settings = before;
  lpRaster = nullptr;
  const uint64_t width = runtime::toU32(format.dWidth) + uint64_t{1};
  const uint64_t height = runtime::toU32(format.dHeight) + uint64_t{1};
  const uint64_t bytes = width * bits / 8 * height;
  // The places of so many strips are written before their rows are found to fit no block.
  return (width < side && height < side) || (bytes > UINT32_MAX && input.rarely(1024));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const Handle setup = CreateSetup(0, "/nonexistent/none.ini", nullptr, nullptr);
  auto *settings = static_cast<RasterSetup *>(GlobalLock(setup));
  settle(input, *settings);

  support::HostStream stream;
  stream.keepNoLog();
  const bool toStream = input.byte() % 4 != 0;
  if (toStream) settings->lpfnOutputProc = stream.procedure();
  const unsigned failing = input.word();
  if (failing % 2 == 1) stream.failAt(failing / 2 % 600 + 1);
  const unsigned filling = input.word();
  if (filling % 4 == 1) stream.limitTo(filling / 4);
  GlobalUnlock(setup);

  uint8_t info[EXPORT_CELL_INFO_BYTES] = {};
  describe(input, info);

  PictureRecord picture{};
  picture.nBits = oneOf<uint16_t>(input, {1, 4, 8, 24, 32, 16, 0});
  picture.nWidth = static_cast<uint16_t>(input.between(0, longestSide(input)));
  picture.nHeight = static_cast<uint16_t>(input.between(0, longestSide(input)));
  const unsigned palette = input.byte();
  if (palette % 4 != 0 && picture.nBits <= 8) {
    auto colors = input.bytes(palette % 4 == 1 ? palette : size_t{3} << picture.nBits);
    picture.hPalette = block(colors);
  }
  // Sometimes fewer rows than the picture should have.
  std::vector<uint8_t> rows((picture.nWidth * size_t{picture.nBits} + 31) / 32 * 4 * picture.nHeight);
  if (input.byte() % 16 == 0) rows.resize(rows.size() / 2);

  Listener listener;
  listener.untilRefusal = input.byte() % 8;
  HostWord status[kStatusWords] = {};
  status[RAXEL_STATUS_CONTEXT] = reinterpret_cast<HostWord>(&listener);
  status[RAXEL_STATUS_CALLBACK] = reinterpret_cast<HostWord>(&listen);
  status[RAXEL_STATUS_PROC_CONTEXT] = stream.context();
  HostWord request[kExportWords] = {};
  request[2] = setup;
  request[6] = reinterpret_cast<HostWord>(status);

  // What is left of the input is repeated until all rows are full.
  const auto pixels = input.rest();
  for (size_t i = 0; i < rows.size() && !pixels.empty(); ++i) rows[i] = pixels[i % pixels.size()];
  picture.hBits = block(rows);
  const bool modest = isModest(input, *static_cast<RasterSetup *>(GlobalLock(setup)), picture, info);
  GlobalUnlock(setup);

  uint32_t result = 0;
  if (modest) result = ExportCellData(toStream ? "any.tif" : "", &picture, info, request);
  fuzz::require(result == 0 || result == RAXEL_CANNOT_WRITE, "a code that the call may answer");
  fuzz::require(!stream.isOpen(), "an open stream is closed");
  if (modest && toStream && result == 0 && failing % 2 == 0 && filling % 4 != 1 &&
      listener.lastPercent == 100) {
    const support::TiffFile file = support::readTiff(stream.bytes());
    fuzz::require(file.ok(), "a finished export is a TIFF file");
    fuzz::require(file.width() > 0 && file.height() > 0 && file.height() % 2 == 0, "of even height");
  }
  if (status[RAXEL_STATUS_OUTPUT] != 0) GlobalFree(status[RAXEL_STATUS_OUTPUT]);
  GlobalFree(picture.hBits);
  if (picture.hPalette != 0) GlobalFree(picture.hPalette);
  DestroySetup(setup);
  return 0;
}
