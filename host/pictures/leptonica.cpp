// Every other format, through Leptonica: BMP, GIF, TIFF, WebP, JPEG 2000, PAM.
#include "prepare/leptonica.h"

#include <algorithm>
#include <optional>

#include "check/directory.h"
#include "check/libtiff.h"
#include "pictures/peek.h"
#include "pictures/picture.h"

namespace host {
namespace {

using prepare::Leptonica;

struct FreePix {
  const Leptonica *lept;
  void operator()(PIX *pix) const { lept->pixDestroy(&pix); }
};
using Pix = std::unique_ptr<PIX, FreePix>;

// The library packs pixels into words, the leftmost in the high bits. Copies them as bytes.
void copyPacked(const Leptonica &lept, PIX *pix, Picture &out) {
  const l_uint32 *line = lept.pixGetData(pix);
  const l_int32 words = lept.pixGetWpl(pix);
  for (uint32_t y = 0; y < out.view.height; ++y, line += words) {
    uint8_t *to = out.pixels.data() + out.view.stride * y;
    for (size_t i = 0; i < out.view.stride; ++i)
      to[i] = static_cast<uint8_t>(line[i / 4] >> (24 - 8 * (i % 4)));
  }
}

void copyTable(const Leptonica &lept, PIXCMAP *map, const Background &background, Picture &out) {
  const l_int32 count = std::clamp(lept.pixcmapGetCount(map), 0, 256);
  for (l_int32 i = 0; i < count; ++i) {
    l_int32 c[4] = {0, 0, 0, 255};
    lept.pixcmapGetRGBA(map, i, &c[0], &c[1], &c[2], &c[3]);
    for (size_t k = 0; k < 3; ++k) {
      out.table[3 * static_cast<size_t>(i) + k] =
          blend(static_cast<unsigned>(c[k]), background[k], static_cast<unsigned>(c[3]));
    }
  }
  out.useTable(static_cast<uint32_t>(count));
}

void copyWide(const Leptonica &lept, PIX *pix, Picture &out) {
  out.notes.push_back(kReduced);
  const l_uint32 *line = lept.pixGetData(pix);
  const l_int32 words = lept.pixGetWpl(pix);
  uint8_t *to = out.pixels.data();
  for (uint32_t y = 0; y < out.view.height; ++y, line += words) {
    for (uint32_t x = 0; x < out.view.width; ++x)
      *to++ = narrow(line[x / 2] >> (16 - 16 * (x % 2)) & 0xFFFF);
  }
}

constexpr uint16_t kSamplesPerPixel = 277;

// What the four bytes of a pixel are.
struct Pixels {
  bool opacity = false;        // the last one counts
  bool premultiplied = false;  // the others are multiplied by it already
  bool blueFirst = false;
};

Pixels kindOf(const Leptonica &lept, PIX *pix, const std::string &format, std::span<const uint8_t> bytes) {
  Pixels kind;
  kind.opacity = lept.pixGetSpp(pix) == 4;
  // Colours come from libtiff, which multiplies; greys with opacity are taken as they are.
  if (format == "TIFF") kind.premultiplied = readDirectory(bytes).value(kSamplesPerPixel, 1) == 4;
  if (format == "BMP") kind.blueFirst = bmpHas32Bits(bytes);
  if (format == "JPEG 2000")
    kind.opacity = jpeg2000Channels(bytes) % 2 == 0 && jpeg2000Channels(bytes) != 0;
  return kind;
}

void copyColors(const Leptonica &lept, PIX *pix, const Pixels &kind, const Background &background,
                Picture &out) {
  const l_uint32 *line = lept.pixGetData(pix);
  const l_int32 words = lept.pixGetWpl(pix);
  uint8_t *to = out.pixels.data();
  for (uint32_t y = 0; y < out.view.height; ++y, line += words) {
    for (uint32_t x = 0; x < out.view.width; ++x, to += 3) {
      const unsigned opacity = kind.opacity ? line[x] & 255 : 255;
      for (unsigned c = 0; c < 3; ++c) {
        const unsigned over = line[x] >> (kind.blueFirst ? 8 + 8 * c : 24 - 8 * c) & 255;
        to[c] = kind.premultiplied
                    ? static_cast<uint8_t>(std::min(over + blend(0, background[c], opacity), 255u))
                    : blend(over, background[c], opacity);
      }
    }
  }
}

}  // namespace

void readWithLeptonica(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  const Leptonica *lept = prepare::leptonica();
  if (!lept) throw Unreadable("needs Leptonica, which is not installed (package liblept5)");
  // BigTIFF as well as TIFF.
  const bool tiff = bytes.size() > 2 && (bytes[0] == 'I' || bytes[0] == 'M') && bytes[1] == bytes[0];
  std::optional<TiffListener> listener;
  if (tiff) listener.emplace();
  const Pix pix(lept->pixReadMem(bytes.data(), bytes.size()), FreePix{lept});
  if (!pix) {
    throw Unreadable(
        out.format.empty()
            ? "is no picture in a known format; see --help for those that are"
            : "is damaged, or of a kind that Leptonica does not read; convert it to PNG first");
  }
  if (out.format == "GIF" && gifHasFurtherPictures(bytes)) out.notes.push_back(kFurtherPictures);
  l_int32 width = 0, height = 0, depth = 0, dpiX = 0, dpiY = 0;
  lept->pixGetDimensions(pix.get(), &width, &height, &depth);
  lept->pixGetResolution(pix.get(), &dpiX, &dpiY);
  out.dpiX = dpiX;
  out.dpiY = dpiY;
  PIXCMAP *map = lept->pixGetColormap(pix.get());
  const uint32_t bits = depth == 16 ? 8 : depth == 32 ? 24 : static_cast<uint32_t>(depth);
  out.allocate(static_cast<uint32_t>(width), static_cast<uint32_t>(height), bits);
  if (depth == 32) {
    // Colours are read without an end at the first fault, and come out whatever is missing.
    if (tiff && !listener->errors().empty()) throw Unreadable("is damaged: " + listener->errors().front());
    return copyColors(*lept, pix.get(), kindOf(*lept, pix.get(), out.format, bytes), background, out);
  }
  if (depth == 16) return copyWide(*lept, pix.get(), out);
  copyPacked(*lept, pix.get(), out);
  if (map) {
    copyTable(*lept, map, background, out);
    const int transparent = out.format == "GIF" ? gifTransparentIndex(bytes) : -1;
    if (transparent >= 0 && static_cast<uint32_t>(transparent) < out.view.colors) {
      std::copy(background.begin(), background.end(), out.table.begin() + 3 * transparent);
    }
    return;
  }
  if (depth == 1) {  // without a table a set bit is black
    out.table[0] = out.table[1] = out.table[2] = 255;
    out.useTable(2);
  }
}

}  // namespace host
