// SPDX-License-Identifier: MIT
// A picture as it was read, ready for the preparation.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "buffer.h"
#include "pictures/input.h"
#include "pictures/metadata.h"
#include "raxel/host.h"

namespace host {

class DecoderChild;

struct Picture {
  RaxelPicture view{};  // points into the members below, or into the input
  double dpiX = 0;      // dots an inch as the file says; 0 when it does not
  double dpiY = 0;
  std::string format;  // "PNG", "JPEG"...
  std::vector<std::string> notes;
  Metadata metadata;

  // Which picture of several to read: the place of its directory in a TIFF, of its blocks in a GIF, 0 for
  // the first; and whether the user knows that there are several.
  uint64_t directory = 0;
  bool isPage = false;
  // Where decoders are confined, the child of the pages of this input; null for one of its own.
  DecoderChild *child = nullptr;

  // For a page that the format's reader does not find by itself.
  std::function<void(Picture &)> reader;

  std::array<uint8_t, 256 * 3> table{};
  bool tableKnown = true;  // false while a picture of indices is announced without its table
  Buffer pixels;

  // Where rows go that come from the top, one after the other, when not into the pixels; null for those
  // that do.
  std::function<uint8_t *(uint32_t row)> placeOf;
  int orientation = 1;  // as it is decoded

  // Called once, when all but the pixels is known; by throwing it keeps them from being decoded.
  std::function<void(const Picture &)> gate;

  Picture() = default;
  Picture(const Picture &) = delete;
  Picture &operator=(const Picture &) = delete;

  // Readers call it before they decode, with the resolution and, when tableKnown, the table in place: keeps
  // the orientation, and tells the gate the size and depth that the picture will have once it is turned.
  void announce(uint32_t width, uint32_t height, uint32_t bits, int orientation = 1);
  // Where readers write a row that decode from the top and look at no row again.
  uint8_t *rowAt(uint32_t row) const {
    uint8_t *place = placeOf ? placeOf(row) : nullptr;
    return place ? place : pixels.data() + view.stride * row;
  }
  // Makes room for rows of this size and shows them in the view, without a table.
  void allocate(uint32_t width, uint32_t height, uint32_t bits);
  // Shows `colors` entries of the table in the view.
  void useTable(uint32_t colors);
};

using Background = std::array<uint8_t, 3>;  // what shows through transparent pixels: red, green, blue

// Reads a picture of any known format; transparent parts are laid on the background. The result may
// point into the input. The gate hears what the picture is before pixels are decoded, and may throw. Throws
// a Failure that names the input and says what is wrong with it.
using Gate = std::function<void(const Picture &)>;
std::unique_ptr<Picture> readPicture(const Input &input, const Background &background,
                                     const Gate &gate = nullptr);
// The same for a picture whose choice of page is made.
void readPage(const Input &input, const Background &background, const Gate &gate, Picture &picture);

// The readers behind it. Each trusts nothing in the bytes, and throws Unreadable.
class Unreadable : public std::runtime_error {
  using std::runtime_error::runtime_error;
};
void readPnm(std::span<const uint8_t> bytes, Picture &out);  // and PAM where isOpaquePam (pam.h)
void readPng(std::span<const uint8_t> bytes, const Background &background, Picture &out);
void readJpeg(std::span<const uint8_t> bytes, Picture &out);
void readTiff(std::span<const uint8_t> bytes, const Background &background, Picture &out);
void readBmp(std::span<const uint8_t> bytes, const Background &background, Picture &out);
void readGif(std::span<const uint8_t> bytes, const Background &background, Picture &out);
void readWebp(std::span<const uint8_t> bytes, const Background &background, Picture &out);
void readWithLeptonica(std::span<const uint8_t> bytes, const Background &background, Picture &out);

// Turns the picture, whose pixels must be its own, as an orientation of TIFF or Exif (1 to 8) asks.
void turnUpright(Picture &picture, int orientation);
// Whether width and height change places then.
constexpr bool isOnItsSide(int orientation) {
  return orientation >= 5 && orientation <= 8;
}

// `over` laid on `under` with an opacity of 0 to 255.
constexpr uint8_t blend(unsigned over, unsigned under, unsigned opacity) {
  return static_cast<uint8_t>((over * opacity + under * (255 - opacity) + 127) / 255);
}

// What to note of a file with several pictures.
inline constexpr const char *kFurtherPictures =
    "only the first picture of the file is taken; others follow it";

inline constexpr const char *kGifIsCut = "is cut short or damaged: its blocks do not go on to its end";

inline constexpr const char *kReduced = "16-bit channels are reduced to 8";

// 16 bits to 8, rounded.
constexpr uint8_t narrow(unsigned v) {
  return static_cast<uint8_t>((v * 255 + 32767) / 65535);
}

// The most that a decoded picture may take: hostile headers promise more than any machine has.
constexpr uint64_t kLargestPicture = uint64_t{1} << 32;
constexpr bool isTooLong(uint32_t width, uint32_t height) {
  return width > RAXEL_HOST_LONGEST_SIDE || height > RAXEL_HOST_LONGEST_SIDE;
}
// There is at least one row.
constexpr bool isTooLarge(uint32_t width, uint32_t height, uint32_t bits) {
  return isTooLong(width, height) || (uint64_t{width} * bits + 7) / 8 > kLargestPicture / height;
}
// What to say of one that takes more.
std::string tooLarge(uint32_t width, uint32_t height);

}  // namespace host
