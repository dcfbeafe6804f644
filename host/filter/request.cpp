// SPDX-License-Identifier: MIT
// What is to be done with a picture, from three sources.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <iterator>

#include "filter/given.h"

namespace host {
namespace {

int modeOfCode(int32_t code) {
  switch (code) {
    case RAXEL_STORED_MODE_BILEVEL:
      return RAXEL_MODE_BILEVEL;
    case RAXEL_STORED_MODE_GREY16:
      return RAXEL_MODE_GREY16;
    case RAXEL_STORED_MODE_GREY256:
      return RAXEL_MODE_GREY256;
    case RAXEL_STORED_MODE_COLOR8:
      return RAXEL_MODE_COLOR8;
    case RAXEL_STORED_MODE_COLOR16:
      return RAXEL_MODE_COLOR16;
    case RAXEL_STORED_MODE_COLOR256:
      return RAXEL_MODE_COLOR256;
    default:
      return RAXEL_MODE_RGB;
  }
}

// Unknown codes write uncompressed data.
int compressionOfCode(int32_t code) {
  switch (code) {
    case RAXEL_STORED_COMPRESS_PACKBITS:
      return RAXEL_COMPRESS_PACKBITS;
    case RAXEL_STORED_COMPRESS_HUFFMAN:
      return RAXEL_COMPRESS_HUFFMAN;
    case RAXEL_STORED_COMPRESS_LZW:
      return RAXEL_COMPRESS_LZW;
    case RAXEL_STORED_COMPRESS_T4:
      return RAXEL_COMPRESS_T4;
    case RAXEL_STORED_COMPRESS_T6:
      return RAXEL_COMPRESS_T6;
    default:
      return RAXEL_COMPRESS_NONE;
  }
}

bool isGrey(const RaxelPicture &picture) {
  for (uint32_t i = 0; picture.table && i < picture.colors; ++i) {
    const uint8_t *c = picture.table + 3 * i;
    if (c[0] != c[1] || c[1] != c[2]) return false;
  }
  return true;
}

// Black and white, in either order; a table that the picture does not fill counts as black.
bool isBlackAndWhite(const RaxelPicture &picture) {
  if (picture.bits != 1) return false;
  if (!isGrey(picture)) return false;
  for (uint32_t i = 0; picture.table && i < std::min(picture.colors, 2u); ++i) {
    const uint8_t v = picture.table[3 * i];
    if (v != 0 && v != 255) return false;
  }
  return true;
}

// Grey levels without a table, or with one of evenly spaced greys.
bool keepsIn16Greys(const RaxelPicture &picture) {
  if (picture.bits > 4 || !isGrey(picture)) return false;
  for (uint32_t i = 0; picture.table && i < picture.colors; ++i) {
    if (picture.table[3 * i] % 17 != 0) return false;
  }
  return true;
}

// The smallest mode that keeps what the picture can hold; as long as its table is not known, the one of
// which nothing is refused that another may hold.
int ownMode(const Picture &from) {
  const RaxelPicture &picture = from.view;
  if (!from.tableKnown && picture.bits <= 8) return RAXEL_MODE_BILEVEL;
  if (isBlackAndWhite(picture)) return RAXEL_MODE_BILEVEL;
  if (picture.bits == 24) return RAXEL_MODE_RGB;
  if (keepsIn16Greys(picture)) return RAXEL_MODE_GREY16;
  if (isGrey(picture)) return RAXEL_MODE_GREY256;
  return picture.bits <= 4 || picture.colors <= 16 ? RAXEL_MODE_COLOR16 : RAXEL_MODE_COLOR256;
}

// The smallest mode that holds it.
int modeOf(const Palette &palette) {
  return palette.size() <= 16 ? RAXEL_MODE_COLOR16 : RAXEL_MODE_COLOR256;
}

// 1 by 1 is how many files say "unknown". What lies this near to a whole number is meant to be one: formats
// count in dots a metre, of which an inch has 1/39.
double ownDpi(double dpi, std::vector<std::string> &notes) {
  constexpr double kMost = 100000, kNear = 0.0127;
  if (!(dpi >= 1.5) || !std::isfinite(dpi)) return 96;
  if (dpi > kMost) {
    notes.push_back("the picture's " + std::to_string(std::lround(std::min(dpi, 1e9))) +
                    " dots an inch cannot be written; 100000 are");
    return kMost;
  }
  return std::abs(dpi - std::round(dpi)) <= kNear ? std::round(dpi) : dpi;
}

// Of a finished file: bilevel ones have codes of their own.
int ownCompression(int mode) {
  return mode == RAXEL_MODE_BILEVEL ? RAXEL_COMPRESS_T6 : RAXEL_COMPRESS_LZW;
}

constexpr double kInchesOfPaper[][2] = {{210 / 25.4, 297 / 25.4}, {8.5, 11}};  // in the order of Paper

// An even number of rows does not have to be made even.
double wholeRows(double rows) {
  return std::max(2.0, 2 * std::floor(rows / 2 + 1e-9));
}

// The sheet's box of pixels, where a side of --size that is given goes before its own.
SizeBox paperBox(const Options &options, const RaxelRequest &request) {
  const auto &inches = kInchesOfPaper[*options.paper];
  SizeBox box = options.size.value_or(SizeBox{});
  if (!box.pixels) {
    box.x *= request.dpiX;
    box.y *= request.dpiY;
  }
  box.pixels = true;
  if (box.x == 0) box.x = std::floor(inches[0] * request.dpiX);
  if (box.y == 0) box.y = wholeRows(inches[1] * request.dpiY);
  return box;
}

void setPixels(double width, double height, RaxelRequest &request) {
  request.inchesX = std::max(1.0, std::round(width)) / request.dpiX;
  request.inchesY = std::max(1.0, std::round(height)) / request.dpiY;
}

// The largest size inside the box that keeps the proportions: on paper, at the picture's own resolution or
// with square pixels, or else those of the pixels.
void contain(const SizeBox &box, bool onPaper, const Picture &picture, RaxelRequest &request) {
  double across = picture.view.width, down = picture.view.height;
  if (onPaper && picture.dpiX >= 1.5 && picture.dpiY >= 1.5) {
    across /= picture.dpiX;
    down /= picture.dpiY;
  }
  const double dotsX = onPaper ? request.dpiX : 1, dotsY = onPaper ? request.dpiY : 1;
  const double boxX = box.pixels ? box.x / dotsX : box.x, boxY = box.pixels ? box.y / dotsY : box.y;
  const double scale = std::min(boxX > 0 ? boxX / across : HUGE_VAL, boxY > 0 ? boxY / down : HUGE_VAL);
  setPixels(across * scale * dotsX, down * scale * dotsY, request);
}

// Of a page of inches and any resolution: what is too large stays so.
uint32_t toPixels(double side) {
  return static_cast<uint32_t>(std::min<double>(side, UINT32_MAX));
}

// Puts the picture into the box. In a box of inches its proportions are those on paper, in one of pixels
// those of the pixels, and padded always those on paper.
void fit(const SizeBox &box, int how, const Picture &picture, RaxelRequest &request) {
  const bool whole = box.x > 0 && box.y > 0;
  if (how == kFitContain || !whole) return contain(box, !box.pixels, picture, request);
  const double width = std::max(1.0, std::round(box.pixels ? box.x : box.x * request.dpiX));
  const double height = std::max(1.0, std::round(box.pixels ? box.y : box.y * request.dpiY));
  if (how == kFitExact) return setPixels(width, height, request);
  contain({width, height, true}, true, picture, request);
  request.pageWidth = toPixels(width);
  request.pageHeight = toPixels(height);
}

// A box of pixels with both sides given is meant exactly where dots are not square.
int howToFit(const Options &options, const RaxelRequest &request) {
  if (options.fit) return *options.fit;
  if (options.paper) return kFitPad;
  const SizeBox &box = *options.size;
  return box.pixels && box.x > 0 && box.y > 0 && request.dpiX != request.dpiY ? kFitExact : kFitContain;
}

// In three digits, whatever the locale.
std::string shortNumber(double value) {
  char text[32];
  return {text, std::to_chars(text, std::end(text), value, std::chars_format::general, 3).ptr};
}

// Without a size the pixels stay as they are, and what they cover on paper goes with the resolution.
void noteOtherPrint(const Picture &picture, const RaxelRequest &request, std::vector<std::string> &notes) {
  constexpr double kSame = 0.005;
  const double across = picture.dpiX / request.dpiX, down = picture.dpiY / request.dpiY;
  if (picture.dpiX < 1.5 || picture.dpiY < 1.5 || !std::isfinite(across) || !std::isfinite(down)) return;
  if (std::abs(across - 1) < kSame && std::abs(down - 1) < kSame) return;
  const std::string times = shortNumber(across), timesDown = shortNumber(down);
  notes.push_back("at this resolution it prints " + times + (times == timesDown ? "" : " by " + timesDown) +
                  " times as large as at its own; --size or --paper gives it a size");
}

}  // namespace

RaxelRequest requestFor(const Options &options, const Palette &palette, const Setup &setup,
                        const Picture &picture, std::vector<std::string> &notes) {
  RaxelRequest request;
  raxelHostDefaults(&request);
  const RasterSetup &stored = setup.record();
  const bool fromProfile = setup.fromProfile();
  const auto chosen = [&](std::initializer_list<int32_t> escapes) {
    return fromProfile || std::ranges::any_of(options.set, [&](const SetEscape &set) {
             return std::ranges::find(escapes, set.number) != escapes.end();
           });
  };

  request.mode = options.mode       ? *options.mode
                 : !palette.empty() ? modeOf(palette)
                 : chosen({RAXEL_ESCAPE_SET_BITMAP_MODE}) && !options.autoMode
                     ? modeOfCode(stored.nBitmapMode)
                     : ownMode(picture);
  request.compression = options.compression       ? *options.compression
                        : options.autoCompression ? ownCompression(request.mode)
                        : chosen({RAXEL_ESCAPE_SET_COMPRESSION})
                            ? compressionOfCode(stored.nCompressionMode)
                            : RAXEL_COMPRESS_NONE;
  request.layout = options.layout ? *options.layout
                   : fromProfile && stored.tiff.wLayoutMode == RAXEL_STORED_LAYOUT_TILES
                       ? RAXEL_LAYOUT_TILES
                       : RAXEL_LAYOUT_STRIPS;
  request.treatment = options.treatment ? *options.treatment
                      : chosen({RAXEL_ESCAPE_SET_COLOR_MODE})
                          ? std::clamp(stored.nColorMode - RAXEL_STORED_COLORS, 0, RAXEL_TREATMENTS - 1)
                          : RAXEL_TREAT_NONE;
  request.finish = 1;
  request.strips = options.strips;
  request.dither = options.dither;
  request.quantizer = options.quantizer;
  request.palette = palette.empty() ? nullptr : palette.front().data();
  request.paletteColors = static_cast<uint32_t>(palette.size());
  request.threshold = options.threshold;
  request.thresholdLevel = options.thresholdLevel;
  if (request.threshold != RAXEL_THRESHOLD_NONE && request.mode != RAXEL_MODE_BILEVEL)
    notes.push_back(std::string("--threshold is for --mode bilevel, and does nothing for ") +
                    raxelHostModeName(request.mode));
  if (options.dpi) {
    request.dpiX = (*options.dpi)[0];
    request.dpiY = (*options.dpi)[1];
  } else if (chosen({RAXEL_ESCAPE_SET_RESOLUTION_MODE, RAXEL_ESCAPE_SET_X_RESOLUTION,
                     RAXEL_ESCAPE_SET_Y_RESOLUTION}) &&
             stored.nResolutionMode != RAXEL_STORED_RESOLUTION_PICTURE && stored.tiff.nXResolution > 0 &&
             stored.tiff.nYResolution > 0) {
    request.dpiX = stored.tiff.nXResolution;
    request.dpiY = stored.tiff.nYResolution;
  } else {
    request.dpiX = ownDpi(picture.dpiX, notes);
    request.dpiY = picture.dpiY == picture.dpiX ? request.dpiX : ownDpi(picture.dpiY, notes);
  }
  if (options.paper) {
    fit(paperBox(options, request), howToFit(options, request), picture, request);
  } else if (options.size) {
    fit(*options.size, howToFit(options, request), picture, request);
  } else if (chosen({RAXEL_ESCAPE_SET_SIZE_MODE, RAXEL_ESCAPE_SET_WIDTH, RAXEL_ESCAPE_SET_HEIGHT}) &&
             stored.nSizeMode != RAXEL_STORED_SIZE_PICTURE && stored.dWidth > 0 && stored.dHeight > 0) {
    fit({stored.dWidth, stored.dHeight, false}, kFitContain, picture, request);
  } else if (options.dpi) {
    noteOtherPrint(picture, request, notes);
  }
  return request;
}

}  // namespace host
