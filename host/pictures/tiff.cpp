// SPDX-License-Identifier: MIT
// TIFF and BigTIFF through libtiff. Indices, greys and colours of 8 and 16 bits come row by row as the file
// has them; every other kind as libtiff's own red, green, blue and opacity.
#include <algorithm>
#include <cstring>
#include <vector>

#include "check/directory.h"
#include "check/libtiff.h"
#include "pictures/confined.h"
#include "pictures/picture.h"
#include "pictures/webp_pieces.h"

namespace host {
namespace {

struct Kind {
  uint32_t width, height, bits, samples, colors;
  uint16_t extra;  // what the last sample is, where there is one more than the colours need
  bool planes;

  bool indexed() const {
    return samples == 1 && (bits == 1 || bits == 2 || bits == 4 || bits == 8) &&
           (colors == PHOTOMETRIC_MINISBLACK || colors == PHOTOMETRIC_MINISWHITE ||
            colors == PHOTOMETRIC_PALETTE);
  }
  bool grey() const {
    return samples <= 2 && (bits == 8 || bits == 16) &&
           (colors == PHOTOMETRIC_MINISBLACK || colors == PHOTOMETRIC_MINISWHITE) && !planes;
  }
  bool rgb() const {
    return (samples == 3 || samples == 4) && (bits == 8 || bits == 16) && colors == PHOTOMETRIC_RGB &&
           !planes;
  }
  bool opacity() const { return rgb() ? samples == 4 : samples == 2; }
  // Greys on a grey stay greys.
  bool staysGrey(const Background &background) const {
    return grey() && (!opacity() || (background[0] == background[1] && background[1] == background[2]));
  }
};

Kind kindOf(const TiffReader &reader) {
  Kind kind{};
  kind.width = reader.number(TIFFTAG_IMAGEWIDTH, true, 0);
  kind.height = reader.number(TIFFTAG_IMAGELENGTH, true, 0);
  kind.bits = reader.number(TIFFTAG_BITSPERSAMPLE, false, 1);
  kind.samples = reader.number(TIFFTAG_SAMPLESPERPIXEL, false, 1);
  kind.colors = reader.number(TIFFTAG_PHOTOMETRIC, false, PHOTOMETRIC_MINISBLACK);
  kind.planes = kind.samples > 1 &&
                reader.number(TIFFTAG_PLANARCONFIG, false, PLANARCONFIG_CONTIG) != PLANARCONFIG_CONTIG;
  kind.extra = reader.extraSample();
  return kind;
}

[[noreturn]] void refuseKind(const std::string &why) {
  throw Unreadable("is of a kind that libtiff does not read (" + why + "); convert it to PNG first");
}

[[noreturn]] void refuse(const TiffReader &reader) {
  const std::string why = reader.errors().empty() ? "" : reader.errors().front();
  // Some kinds pass libtiff's own look at them and are refused, in these words, by what was to read them.
  if (why.find("can not handle") != std::string::npos) refuseKind(why);
  throw Unreadable("is damaged" + (why.empty() ? "" : ": " + why));
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

void useTableOf(const TiffReader &reader, const Kind &kind, Picture &out) {
  if (kind.colors == PHOTOMETRIC_PALETTE) useColorMap(reader.colorMap(kind.bits), out);
  if (kind.colors == PHOTOMETRIC_MINISWHITE) useFallingRamp(kind.bits, out);
}

void readIndices(TiffReader &reader, const Kind &kind, Picture &out) {
  out.allocate(kind.width, kind.height, kind.bits);
  if (reader.rowBytes() != out.view.stride) throw Unreadable("is damaged");
  for (uint32_t y = 0; y < kind.height; ++y) {
    if (!reader.readRow(y, out.rowAt(y))) refuse(reader);
  }
  useTableOf(reader, kind, out);
}

// One sample as 8 bits; those of 16 are in the machine's order.
uint8_t sampleOf(const uint8_t *row, size_t index, bool wide) {
  if (!wide) return row[index];
  uint16_t value;
  std::memcpy(&value, row + 2 * index, 2);
  return narrow(value);
}

// A colour over the background. Where opacity is multiplied in already, the background's part is added.
uint8_t over(uint8_t level, uint8_t under, uint8_t opacity, bool multiplied) {
  if (!multiplied) return blend(level, under, opacity);
  return static_cast<uint8_t>(std::min(unsigned{level} + blend(0, under, opacity), 255u));
}

void readSamples(TiffReader &reader, const Kind &kind, const Background &background, Picture &out) {
  const bool wide = kind.bits == 16, opacity = kind.opacity();
  const bool greys = kind.staysGrey(background);
  const size_t shown = greys ? 1 : 3, stored = kind.grey() ? 1 : 3;
  // An extra sample of colours that nobody explains is taken for one that is multiplied in, as libtiff
  // does.
  const bool multiplied =
      kind.extra == EXTRASAMPLE_ASSOCALPHA || (kind.extra == EXTRASAMPLE_UNSPECIFIED && kind.rgb());
  out.allocate(kind.width, kind.height, greys ? 8 : 24);
  if (reader.rowBytes() != size_t{kind.width} * kind.samples * kind.bits / 8)
    throw Unreadable("is damaged");
  std::vector<uint8_t> row(static_cast<size_t>(reader.rowBytes()));
  for (uint32_t y = 0; y < kind.height; ++y) {
    uint8_t *to = out.rowAt(y);
    const bool asItIs = !wide && !opacity && shown == stored && kind.colors != PHOTOMETRIC_MINISWHITE;
    if (!reader.readRow(y, asItIs ? to : row.data())) refuse(reader);
    for (size_t x = 0; !asItIs && x < kind.width; ++x, to += shown) {
      const uint8_t clear = opacity ? sampleOf(row.data(), kind.samples * x + stored, wide) : 255;
      for (size_t c = 0; c < shown; ++c) {
        uint8_t level = sampleOf(row.data(), kind.samples * x + std::min(c, stored - 1), wide);
        if (kind.colors == PHOTOMETRIC_MINISWHITE) level = static_cast<uint8_t>(255 - level);
        to[c] = opacity ? over(level, background[c], clear, multiplied) : level;
      }
    }
  }
}

void readColors(TiffReader &reader, const Kind &kind, const Background &background, Picture &out) {
  if (const std::string why = reader.refusalOfColors(); !why.empty()) refuseKind(why);
  out.allocate(kind.width, kind.height, 24);
  const auto take = [&](uint32_t x, uint32_t y, std::span<const uint32_t> pixels) {
    uint8_t *to = out.pixels.data() + out.view.stride * y + size_t{3} * x;
    for (const uint32_t pixel : pixels) {
      const auto opacity = static_cast<uint8_t>(TIFFGetA(pixel));
      *to++ = over(static_cast<uint8_t>(TIFFGetR(pixel)), background[0], opacity, true);
      *to++ = over(static_cast<uint8_t>(TIFFGetG(pixel)), background[1], opacity, true);
      *to++ = over(static_cast<uint8_t>(TIFFGetB(pixel)), background[2], opacity, true);
    }
  };
  if (!reader.readColors(take)) refuse(reader);
}

void readResolution(const TiffReader &reader, Picture &out) {
  const uint32_t unit = reader.number(TIFFTAG_RESOLUTIONUNIT, false, RESUNIT_INCH);
  const double scale = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? 2.54 : 0;
  out.dpiX = reader.real(TIFFTAG_XRESOLUTION) * scale;
  out.dpiY = reader.real(TIFFTAG_YRESOLUTION) * scale;
}

void decodeTiff(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  TiffReader reader(bytes, out.directory);
  if (!reader.isOpen()) refuse(reader);
  if (!out.isPage && reader.hasFurtherPictures()) out.notes.push_back(kFurtherPictures);
  const Kind kind = kindOf(reader);
  const uint32_t said = reader.number(TIFFTAG_ORIENTATION, false, 1);
  const int orientation = said >= 1 && said <= 8 ? static_cast<int>(said) : 1;
  if (kind.bits == 16) out.notes.push_back(kReduced);
  readResolution(reader, out);
  if (kind.indexed()) useTableOf(reader, kind, out);
  const uint32_t bits = kind.indexed() ? kind.bits : kind.staysGrey(background) ? 8 : 24;
  out.announce(kind.width, kind.height, bits, orientation);
  if (const std::string fault = faultOfWebpPieces(reader); !fault.empty())
    throw Unreadable("is damaged: " + fault);
  if (kind.indexed()) {
    readIndices(reader, kind, out);
  } else if (kind.grey() || kind.rgb()) {
    readSamples(reader, kind, background, out);
  } else {
    readColors(reader, kind, background, out);
  }
}

}  // namespace

void readTiff(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  if (out.format == "TIFF") {
    const Directory directory = readDirectory(bytes, static_cast<uint32_t>(out.directory));
    if (!directory.cut.empty()) throw Unreadable("is cut short or damaged: " + directory.cut);
  }
  if (!libTiffIsInstalled()) throw Unreadable("needs libtiff, which cannot be loaded (package libtiff6)");
  confined(out, 0, [&](Picture &to) { decodeTiff(bytes, background, to); });
}

}  // namespace host
