// TIFF pictures in tiles, which Leptonica leaves alone: by libtiff, depths and colour tables as they are.

#include <algorithm>
#include <optional>

#include "check/libtiff.h"
#include "failure.h"
#include "pictures/picture.h"

namespace host {
namespace {

void readRows(TiffReader &reader, Picture &out) {
  for (uint32_t y = 0; y < out.view.height; ++y) {
    if (!reader.readRow(y, out.pixels.data() + out.view.stride * y)) {
      throw Unreadable("is damaged" + (reader.errors().empty() ? "" : ": " + reader.errors().front()));
    }
  }
}

// Levels that run from white to black.
void useFallingRamp(uint32_t bits, Picture &out) {
  const uint32_t levels = 1u << bits;
  for (uint32_t i = 0; i < levels; ++i) {
    const auto level = static_cast<uint8_t>((levels - 1 - i) * 255 / (levels - 1));
    for (size_t c = 0; c < 3; ++c) out.table[3 * i + c] = level;
  }
  out.useTable(levels);
}

void useColorMap(const std::vector<uint8_t> &map, Picture &out) {
  if (map.empty()) throw Unreadable("is damaged: it has no colour map");
  std::copy(map.begin(), map.end(), out.table.begin());
  out.useTable(static_cast<uint32_t>(map.size() / 3));
}

void readResolution(const TiffReader &reader, Picture &out) {
  const uint32_t unit = reader.number(TIFFTAG_RESOLUTIONUNIT, false, RESUNIT_INCH);
  const double scale = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? 2.54 : 0;
  out.dpiX = reader.real(TIFFTAG_XRESOLUTION) * scale;
  out.dpiY = reader.real(TIFFTAG_YRESOLUTION) * scale;
}

}  // namespace

void readTiledTiff(std::span<const uint8_t> bytes, Picture &out) {
  std::optional<TiffReader> opened;
  try {
    opened.emplace(bytes);
  } catch (const Failure &) {
    throw Unreadable("needs libtiff, which is not installed (package libtiff6)");
  }
  TiffReader &reader = *opened;
  if (!reader.isOpen()) throw Unreadable("is damaged");
  const uint32_t bits = reader.number(TIFFTAG_BITSPERSAMPLE, false, 1),
                 samples = reader.number(TIFFTAG_SAMPLESPERPIXEL, false, 1),
                 colors = reader.number(TIFFTAG_PHOTOMETRIC, false, PHOTOMETRIC_MINISBLACK);
  const bool indexed = samples == 1 && (bits == 1 || bits == 2 || bits == 4 || bits == 8) &&
                       (colors == PHOTOMETRIC_MINISBLACK || colors == PHOTOMETRIC_MINISWHITE ||
                        colors == PHOTOMETRIC_PALETTE);
  const bool rgb = samples == 3 && bits == 8 && colors == PHOTOMETRIC_RGB &&
                   reader.number(TIFFTAG_PLANARCONFIG, false, PLANARCONFIG_CONTIG) == PLANARCONFIG_CONTIG;
  if (!indexed && !rgb) throw Unreadable("has tiles of an unusual kind; convert it to PNG first");
  out.allocate(reader.number(TIFFTAG_IMAGEWIDTH, true, 0), reader.number(TIFFTAG_IMAGELENGTH, true, 0),
               rgb ? 24 : bits);
  if (reader.rowBytes() != out.view.stride) throw Unreadable("is damaged");
  readRows(reader, out);
  readResolution(reader, out);
  if (colors == PHOTOMETRIC_PALETTE) useColorMap(reader.colorMap(bits), out);
  if (colors == PHOTOMETRIC_MINISWHITE) useFallingRamp(bits, out);
}

}  // namespace host
