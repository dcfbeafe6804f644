// SPDX-License-Identifier: MIT
#include "pictures/picture.h"

#include <csignal>
#include <new>
#include <utility>

#include "failure.h"
#include "pictures/confined.h"
#include "pictures/pam.h"
#include "pictures/peek.h"

namespace host {
namespace {

void readAs(const std::string &format, std::span<const uint8_t> bytes, const Background &background,
            Picture &out) {
  if (format == "PNM" || (format == "PAM" && isOpaquePam(bytes))) return readPnm(bytes, out);
  if (format == "PNG") return readPng(bytes, background, out);
  if (format == "JPEG") return readJpeg(bytes, out);
  if (format == "PDF" || format == "SVG") {
    throw Unreadable("is a " + format + " drawing; render it to PNG or PPM first");
  }
  if (format == "TIFF" || format == "BigTIFF") return readTiff(bytes, background, out);
  if (format == "BMP") return readBmp(bytes, background, out);
  if (format == "GIF") return readGif(bytes, background, out);
  if (format == "WebP") return readWebp(bytes, background, out);
  readWithLeptonica(bytes, background, out);
}

}  // namespace

std::string tooLarge(uint32_t width, uint32_t height) {
  return "is too large: " + std::to_string(width) + " by " + std::to_string(height) + " pixels";
}

void Picture::announce(uint32_t width, uint32_t height, uint32_t bits, int turn) {
  if (width == 0 || height == 0) throw Unreadable("has no pixels");
  if (isTooLong(width, height)) throw Unreadable(tooLarge(width, height));
  orientation = turn >= 1 && turn <= 8 ? turn : 1;
  if (!gate) return;
  if (isOnItsSide(turn)) {
    std::swap(width, height);
    std::swap(dpiX, dpiY);
  }
  // There are no rows yet, and nobody looks at them.
  const auto stride = static_cast<size_t>((uint64_t{width} * bits + 7) / 8);
  view = RaxelPicture{width, height, bits, table.data(), stride, view.table, view.colors};
  gate(*this);
  if (isOnItsSide(turn)) std::swap(dpiX, dpiY);
}

void Picture::allocate(uint32_t width, uint32_t height, uint32_t bits) {
  const uint64_t stride = (uint64_t{width} * bits + 7) / 8;
  if (width == 0 || height == 0) throw Unreadable("has no pixels");
  if (isTooLarge(width, height, bits)) throw Unreadable(tooLarge(width, height));
  pixels = Buffer(static_cast<size_t>(stride * height));
  view = RaxelPicture{width, height, bits, pixels.data(), static_cast<size_t>(stride), nullptr, 0};
}

void Picture::useTable(uint32_t colors) {
  view.table = table.data();
  view.colors = colors;
}

std::unique_ptr<Picture> readPicture(const Input &input, const Background &background, const Gate &gate) {
  auto picture = std::make_unique<Picture>();
  readPage(input, background, gate, *picture);
  return picture;
}

void readPage(const Input &input, const Background &background, const Gate &gate, Picture &picture) {
  picture.gate = gate;
  picture.format = formatOf(input.bytes());
  picture.metadata = readMetadata(picture.format, input.bytes(), picture.directory);
  try {
    if (picture.reader) return picture.reader(picture);
    readAs(picture.format, input.bytes(), background, picture);
  } catch (const Unreadable &why) {
    // A process that reads what a mapped file has no more ends by that signal.
    const auto *lost = dynamic_cast<const DecoderLost *>(&why);
    if (lost && lost->signal() == SIGBUS && input.isMapped())
      throw Failure(kNoInput, input.name() + ": " + kCutShort);
    const std::string kind = picture.format.empty() ? "" : " (" + picture.format + ")";
    throw Failure(kNoInput, input.name() + kind + ": " + why.what());
  } catch (const std::bad_alloc &) {
    throw Failure(kNoInput, input.name() + ": there is not enough memory for this picture");
  }
}

}  // namespace host
