// SPDX-License-Identifier: MIT
// Picture files of one format, of which each program has the name: every page is read, or refused by name.
// What is read has rows of the size that was announced, in memory of its own or in the file.
#include <memory>
#include <string>

#include "check/directory.h"
#include "failure.h"
#include "input.h"
#include "pictures/gif_pages.h"
#include "pictures/pam.h"
#include "pictures/peek.h"
#include "pictures/picture.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern const char *const fuzzedFormat;

namespace {

// What a header may promise before its picture is left alone: large ones take long, and are read rarely.
constexpr uint64_t kMostPixels = 1 << 13, kMostPixelsRarely = 1 << 18;
constexpr uint32_t kMostPages = 4;
constexpr host::Background kWhite{255, 255, 255};

class TooMuch {};

uint64_t mostPixelsOf(std::span<const uint8_t> bytes) {
  return fuzz::Input(bytes.data(), bytes.size()).rarely(64) ? kMostPixelsRarely : kMostPixels;
}

// What was announced of a picture.
struct Announced {
  uint64_t mostPixels;
  uint32_t width = 0, height = 0;

  host::Gate gate() {
    return [this](const host::Picture &picture) {
      width = picture.view.width;
      height = picture.view.height;
      if (uint64_t{width} * height > mostPixels) throw TooMuch();
    };
  }
};

// Every byte is looked at, so that the sanitizer sees rows that lie outside.
void lookAt(const host::Picture &picture) {
  const RaxelPicture &view = picture.view;
  const uint64_t rowBytes = (uint64_t{view.width} * view.bits + 7) / 8;
  fuzz::require(view.stride >= rowBytes, "rows that do not overlap");
  unsigned sum = 0;
  for (uint32_t y = 0; y < view.height; ++y) {
    const uint8_t *row = view.rows + y * view.stride;
    for (uint64_t i = 0; i < rowBytes; ++i) sum = sum * 3 + row[i];
  }
  for (uint32_t i = 0; view.table != nullptr && i < view.colors * 3; ++i) sum = sum * 3 + view.table[i];
  asm volatile("" : : "r"(sum));  // so that the sum is made
}

void check(const host::Picture &picture, const Announced &announced) {
  const RaxelPicture &view = picture.view;
  fuzz::require(view.width > 0 && view.height > 0 && view.rows != nullptr, "a picture has pixels");
  fuzz::require(view.width == announced.width && view.height == announced.height, "of the announced size");
  const uint32_t bits = view.bits;
  fuzz::require(bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 24, "of a depth that there is");
  fuzz::require(view.table == nullptr || view.colors <= 256, "a table that fits");
  lookAt(picture);
}

// Reads one page, as a program that prepares it would.
template <class Read>
void readOne(const std::string &format, std::span<const uint8_t> bytes, uint64_t directory, Read read) {
  Announced announced{.mostPixels = mostPixelsOf(bytes)};
  host::Picture picture;
  picture.format = format;
  picture.directory = directory;
  picture.isPage = directory != 0;
  picture.gate = announced.gate();
  picture.metadata = host::readMetadata(format, bytes, directory);
  try {
    read(picture);
    check(picture, announced);
  } catch (const host::Unreadable &why) {
    fuzz::require(why.what()[0] != '\0', "a refusal says why");
  } catch (const host::Failure &why) {
    fuzz::require(why.what()[0] != '\0', "a refusal says why");
  } catch (const TooMuch &) {
  }
}

using Bytes = std::span<const uint8_t>;

void readAll(const std::string &format, Bytes bytes) {
  using host::Picture;
  if (format == "GIF") {
    // Frames behind the first are announced by nobody, and room is made for all of them.
    uint64_t promised = 0;
    for (const host::GifFrame &frame : host::gifFrames(bytes))
      promised += uint64_t{frame.width} * frame.height;
    if (mostPixelsOf(bytes) == kMostPixels && promised > kMostPages * kMostPixels) return;
    host::GifPages pages(bytes);
    for (uint32_t page = 0; page < std::min(pages.count(), kMostPages); ++page) {
      readOne(format, bytes, 0, [&](Picture &out) { pages.read(page, kWhite, out); });
    }
    return;
  }
  if (format == "TIFF") {
    std::vector<uint64_t> places = host::pagePlaces(bytes, host::directoryPlaces(bytes));
    if (places.empty()) places.push_back(0);
    places[0] = 0;
    places.resize(std::min<size_t>(places.size(), kMostPages));
    for (const uint64_t place : places) {
      readOne(format, bytes, place, [&](Picture &out) { host::readTiff(bytes, kWhite, out); });
    }
    return;
  }
  readOne(format, bytes, 0, [&](Picture &out) {
    if (format == "PNM") return host::readPnm(bytes, out);
    if (format == "PNG") return host::readPng(bytes, kWhite, out);
    if (format == "JPEG") return host::readJpeg(bytes, out);
    if (format == "BMP") return host::readBmp(bytes, kWhite, out);
    if (format == "WebP") return host::readWebp(bytes, kWhite, out);
    const bool isOther = format == "JPEG 2000" || format == "SPIX" || format == "PAM";
    fuzz::require(isOther, "a format that there is");
    host::readWithLeptonica(bytes, kWhite, out);
  });
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  // What begins otherwise never comes to this format's reader.
  const std::string format = host::formatOf({data, size}), wanted = fuzzedFormat;
  // A PAM without an opacity is read as a PNM.
  const bool isOpaque = format == "PAM" && host::isOpaquePam({data, size});
  const bool isSame = isOpaque ? wanted == "PNM" : format == wanted || format == "Big" + wanted;
  if (isSame) readAll(wanted, {data, size});
  return 0;
}
