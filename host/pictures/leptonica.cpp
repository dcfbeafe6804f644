// SPDX-License-Identifier: MIT
// Through Leptonica: JPEG 2000, PAM with an opacity, and the frames of GIF.
#include "prepare/leptonica.h"

#include <algorithm>
#include <optional>

#include "pictures/confined.h"
#include "pictures/jpeg2000.h"
#include "pictures/pam.h"
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
    uint8_t *to = out.rowAt(y);
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
  for (uint32_t y = 0; y < out.view.height; ++y, line += words) {
    uint8_t *to = out.rowAt(y);
    for (uint32_t x = 0; x < out.view.width; ++x)
      *to++ = narrow(line[x / 2] >> (16 - 16 * (x % 2)) & 0xFFFF);
  }
}

// Whether the last of a pixel's four bytes is its opacity.
bool hasOpacity(const Leptonica &lept, PIX *pix, const std::string &format,
                std::span<const uint8_t> bytes) {
  if (format != "JPEG 2000") return lept.pixGetSpp(pix) == 4;
  const uint32_t channels = jpeg2000Channels(bytes);
  return channels % 2 == 0 && channels != 0;
}

void copyColors(const Leptonica &lept, PIX *pix, bool hasOpacity, const Background &background,
                Picture &out) {
  const l_uint32 *line = lept.pixGetData(pix);
  const l_int32 words = lept.pixGetWpl(pix);
  for (uint32_t y = 0; y < out.view.height; ++y, line += words) {
    uint8_t *to = out.rowAt(y);
    for (uint32_t x = 0; x < out.view.width; ++x, to += 3) {
      const unsigned opacity = hasOpacity ? line[x] & 255 : 255;
      for (unsigned c = 0; c < 3; ++c) {
        const unsigned over = line[x] >> (24 - 8 * c) & 255;
        to[c] = blend(over, background[c], opacity);
      }
    }
  }
}

struct Size {
  uint32_t width = 0, height = 0;
  friend bool operator==(const Size &, const Size &) = default;
};

// What a JPEG 2000 decodes to. The library looks for as many samples of each channel as the first one has.
Size sizeOfJpeg2000(std::span<const uint8_t> bytes) {
  const Jpeg2000Grid grid = jpeg2000Grid(bytes);
  if (grid.width == 0 || grid.height == 0) throw Unreadable("is damaged: it does not begin with its size");
  if (grid.isCoarse) throw Unreadable("has channels of fewer samples than pixels; convert it to PNG first");
  const std::string missing = jpeg2000Missing(bytes);
  if (!missing.empty()) throw Unreadable("is cut short or damaged: " + missing);
  return {grid.width, grid.height};
}

// The library takes the memory of all pixels before it looks for them.
void checkPam(std::span<const uint8_t> bytes) {
  const std::optional<PamHeader> header = pamHeader(bytes);
  if (!header) throw Unreadable("is damaged: it does not begin with a header");
  const uint64_t pixel = uint64_t{header->depth} * (header->most > 255 ? 2 : 1);
  if (uint64_t{header->width} * header->height > (bytes.size() - header->pixelsAt) / pixel)
    throw Unreadable("is cut short: its pixels end too soon");
}

// As far as can be told without decoding; no pixels where it cannot.
Size announceHeader(const Leptonica &lept, std::span<const uint8_t> bytes, Picture &out) {
  if (out.format == "PAM") checkPam(bytes);
  const Size known = out.format == "JPEG 2000" ? sizeOfJpeg2000(bytes) : Size{};
  l_int32 format = 0, width = 0, height = 0, bits = 0, samples = 0, table = 0;
  if (lept.pixReadHeaderMem(bytes.data(), bytes.size(), &format, &width, &height, &bits, &samples,
                            &table) != 0 ||
      width <= 0 || height <= 0 || bits <= 0)
    return {};
  const Size size =
      known.width != 0 ? known : Size{static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
  out.tableKnown = false;
  out.announce(size.width, size.height, samples > 1 ? 24 : std::min(static_cast<uint32_t>(bits), 8u));
  out.tableKnown = true;
  return size;
}

// What the frame of a GIF takes, of which the library tells nothing before it has decoded it.
uint64_t bytesOfFrame(std::span<const uint8_t> alone) {
  uint64_t bytes = 0;
  for (const GifFrame &frame : gifFrames(alone)) bytes += uint64_t{frame.width} * frame.height;
  return bytes;
}

// A frame of a GIF goes alone: the library would decode all that the file has. It is kept in `alone`.
std::span<const uint8_t> fileOf(const Picture &wanted, std::span<const uint8_t> bytes,
                                std::vector<uint8_t> &alone) {
  if (wanted.format != "GIF") return bytes;
  alone = gifFrameAlone(bytes, static_cast<size_t>(wanted.directory));
  return alone;
}

void decode(const Leptonica &lept, std::span<const uint8_t> bytes, const Background &background,
            Picture &out) {
  const bool hasHeader = out.format != "GIF";
  const Size told = hasHeader ? announceHeader(lept, bytes, out) : Size{};
  const Pix pix(lept.pixReadMem(bytes.data(), bytes.size()), FreePix{&lept});
  if (!pix) {
    throw Unreadable(
        out.format.empty()
            ? "is no picture in a known format; see --help for those that are"
            : "is damaged, or of a kind that Leptonica does not read; convert it to PNG first");
  }
  l_int32 width = 0, height = 0, depth = 0, dpiX = 0, dpiY = 0;
  lept.pixGetDimensions(pix.get(), &width, &height, &depth);
  const Size size{static_cast<uint32_t>(width), static_cast<uint32_t>(height)};
  // Limits were asked about another picture.
  if (told != Size{} && told != size) throw Unreadable("is damaged: it is not of the size that it tells");
  lept.pixGetResolution(pix.get(), &dpiX, &dpiY);
  out.dpiX = dpiX;
  out.dpiY = dpiY;
  PIXCMAP *map = lept.pixGetColormap(pix.get());
  const uint32_t bits = depth == 16 ? 8 : depth == 32 ? 24 : static_cast<uint32_t>(depth);
  if (hasHeader && told == Size{}) out.announce(size.width, size.height, bits);
  out.allocate(size.width, size.height, bits);
  if (depth == 32)
    return copyColors(lept, pix.get(), hasOpacity(lept, pix.get(), out.format, bytes), background, out);
  if (depth == 16) return copyWide(lept, pix.get(), out);
  copyPacked(lept, pix.get(), out);
  if (map) return copyTable(lept, map, background, out);
  if (depth == 1) {  // without a table a set bit is black
    out.table[0] = out.table[1] = out.table[2] = 255;
    out.useTable(2);
  }
}

}  // namespace

void readWithLeptonica(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  const Leptonica *lept = prepare::leptonica();
  if (!lept) throw Unreadable("needs Leptonica, which cannot be loaded (package liblept5)");
  std::vector<uint8_t> alone;
  const std::span<const uint8_t> file = fileOf(out, bytes, alone);
  const uint64_t all = out.format == "GIF" ? bytesOfFrame(file) : 0;
  confined(out, all, [&](Picture &to) {
    std::vector<uint8_t> frame;
    decode(*lept, fileOf(to, bytes, frame), background, to);
  });
}

}  // namespace host
