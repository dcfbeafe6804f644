// SPDX-License-Identifier: MIT
// PBM, PGM and PPM, plain and raw, and PAM without an opacity, which has their raw pixels. Raw pictures of
// 1 and 8 bits are read where they lie; two levels of grey take one bit.
#include <algorithm>
#include <cstring>
#include <utility>

#include "pictures/pam.h"
#include "pictures/picture.h"

namespace host {
namespace {

// Walks over the text of a header or of a plain picture.
class Scanner {
 public:
  Scanner(std::span<const uint8_t> bytes, size_t at) : bytes_(bytes), at_(at) {}

  size_t at() const { return at_; }
  size_t left() const { return bytes_.size() - at_; }

  // The next number, after white space and comments. `what` is for the message.
  uint32_t number(const char *what, uint32_t most) {
    skipSpace();
    if (at_ == bytes_.size() || !digit(bytes_[at_])) {
      throw Unreadable(std::string(at_ == bytes_.size() ? "ends before the " : "has no number for the ") +
                       what);
    }
    uint64_t value = 0;
    for (; at_ < bytes_.size() && digit(bytes_[at_]); ++at_) {
      value = value * 10 + (bytes_[at_] - '0');
      if (value > most) throw Unreadable(std::string("has a ") + what + " above " + std::to_string(most));
    }
    return static_cast<uint32_t>(value);
  }

  // One digit 0 or 1; digits of a plain bitmap need no space between them.
  uint8_t bit() {
    skipSpace();
    if (at_ == bytes_.size()) throw Unreadable("ends in the middle of its pixels");
    const uint8_t c = bytes_[at_++];
    if (c != '0' && c != '1') throw Unreadable("has a pixel that is neither 0 nor 1");
    return static_cast<uint8_t>(c - '0');
  }

  // The single white space between a raw picture's header and its pixels.
  void endHeader() {
    if (at_ == bytes_.size() || !space(bytes_[at_])) throw Unreadable("has no space after its header");
    ++at_;
  }

 private:
  static bool digit(uint8_t c) { return c >= '0' && c <= '9'; }
  static bool space(uint8_t c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

  void skipSpace() {
    for (; at_ < bytes_.size(); ++at_) {
      if (bytes_[at_] == '#') {
        while (at_ < bytes_.size() && bytes_[at_] != '\n' && bytes_[at_] != '\r') ++at_;
        if (at_ == bytes_.size()) return;
      } else if (!space(bytes_[at_])) {
        return;
      }
    }
  }

  std::span<const uint8_t> bytes_;
  size_t at_;
};

constexpr size_t kMagicBytes = 2;

struct Header {
  char kind;                     // '1' to '6'
  uint32_t width, height, most;  // most: the value of full brightness
  bool raw() const { return kind >= '4'; }
  bool bitmap() const { return kind == '1' || kind == '4'; }
  uint32_t samples() const { return kind == '3' || kind == '6' ? 3 : 1; }
};

Header readHeader(std::span<const uint8_t> bytes, Scanner &scanner) {
  Header header{static_cast<char>(bytes[1]), 0, 0, 1};
  header.width = scanner.number("width", INT32_MAX);
  header.height = scanner.number("height", INT32_MAX);
  if (!header.bitmap()) header.most = scanner.number("largest value", 65535);
  if (header.width == 0 || header.height == 0) throw Unreadable("has no pixels");
  if (header.most == 0) throw Unreadable("has a largest value of 0");
  if (header.raw()) scanner.endHeader();
  return header;
}

// As that of a PGM or PPM.
Header headerOf(const PamHeader &pam) {
  return {pam.depth == 1 ? '5' : '6', pam.width, pam.height, pam.most};
}

uint64_t rawStride(const Header &header) {
  if (header.bitmap()) return (uint64_t{header.width} + 7) / 8;
  return uint64_t{header.width} * header.samples() * (header.most > 255 ? 2 : 1);
}

// The file's own bytes as the picture's rows.
void showInPlace(const Header &header, const uint8_t *rows, Picture &out) {
  const uint32_t bits = header.bitmap() ? 1 : header.samples() * 8;
  out.view = RaxelPicture{
      header.width, header.height, bits, rows, static_cast<size_t>(rawStride(header)), nullptr, 0};
}

// In a bitmap a set bit is black.
void useBitmapTable(Picture &out) {
  out.table[0] = out.table[1] = out.table[2] = 255;
  out.useTable(2);
}

// A grey picture of fewer levels: its values are indices of a table; values above the largest are white.
void useShortRamp(uint32_t most, Picture &out) {
  for (uint32_t i = 0; i < 256; ++i) {
    std::fill_n(out.table.data() + 3 * i, 3,
                static_cast<uint8_t>((std::min(i, most) * 255 + most / 2) / most));
  }
  out.useTable(256);
}

// Greys of two levels as one bit a pixel; a set bit is white, as it is without a table.
void packTwoLevels(const uint8_t *greys, uint32_t width, uint32_t height, Picture &out) {
  out.allocate(width, height, 1);
  std::memset(out.pixels.data(), 0, out.pixels.size());
  for (uint32_t y = 0; y < height; ++y, greys += width) {
    uint8_t *row = out.pixels.data() + out.view.stride * y;
    for (uint32_t x = 0; x < width; ++x) {
      if (greys[x] != 0) row[x / 8] = static_cast<uint8_t>(row[x / 8] | 0x80u >> x % 8);
    }
  }
}

// Two levels of grey as the one bit, and few levels as the table, that they will have.
bool twoLevels(const Header &header) {
  return header.most == 1 && header.samples() == 1 && !header.bitmap();
}
bool fewLevels(const Header &header) {
  return header.most < 255 && header.samples() == 1 && !header.bitmap() && header.raw() &&
         !twoLevels(header);
}

void announce(const Header &header, Picture &out) {
  if (header.bitmap() && header.raw()) useBitmapTable(out);
  if (fewLevels(header)) useShortRamp(header.most, out);
  out.announce(header.width, header.height,
               header.most == 1 && header.samples() == 1 ? 1 : header.samples() * 8);
}

uint8_t toByte(uint32_t value, uint32_t most) {
  return static_cast<uint8_t>((std::min(value, most) * 255 + most / 2) / most);
}

void readPlain(const Header &header, Scanner &scanner, Picture &out) {
  // Each pixel takes at least one byte of text, so a short file cannot ask for a large block.
  if (uint64_t{header.width} * header.height * header.samples() > scanner.left()) {
    throw Unreadable("ends in the middle of its pixels");
  }
  announce(header, out);
  out.allocate(header.width, header.height, header.samples() * 8);
  uint8_t *to = out.pixels.data();
  for (size_t i = 0; i < out.pixels.size(); ++i) {
    to[i] = header.bitmap() ? static_cast<uint8_t>(scanner.bit() == 0 ? 255 : 0)
                            : toByte(scanner.number("pixel", 65535), header.most);
  }
  if (header.most == 1 && header.samples() == 1) {
    const Buffer greys = std::move(out.pixels);
    out.pixels = Buffer();
    packTwoLevels(greys.data(), header.width, header.height, out);
  }
}

void readConverted(const Header &header, const uint8_t *in, Picture &out) {
  out.allocate(header.width, header.height, header.samples() * 8);
  uint8_t *to = out.pixels.data();
  const bool wide = header.most > 255;
  for (size_t i = 0; i < out.pixels.size(); ++i) {
    const uint32_t value = wide ? static_cast<uint32_t>(in[2 * i]) << 8 | in[2 * i + 1] : in[i];
    to[i] = toByte(value, header.most);
  }
}

}  // namespace

void readPnm(std::span<const uint8_t> bytes, Picture &out) {
  const std::optional<PamHeader> pam = pamHeader(bytes);
  Scanner scanner(bytes, pam ? pam->pixelsAt : kMagicBytes);
  const Header header = pam ? headerOf(*pam) : readHeader(bytes, scanner);
  if (header.most > 255) out.notes.push_back(kReduced);
  if (!header.raw()) return readPlain(header, scanner, out);
  const uint64_t stride = rawStride(header);
  if (stride > UINT64_MAX / header.height) throw Unreadable(tooLarge(header.width, header.height));
  const uint64_t wanted = stride * header.height;
  if (wanted > scanner.left()) {
    throw Unreadable("ends after " + std::to_string(scanner.left()) + " of " + std::to_string(wanted) +
                     " bytes of pixels");
  }
  announce(header, out);
  const uint8_t *pixels = bytes.data() + scanner.at();
  bringIn({pixels, static_cast<size_t>(wanted)});
  const auto after = bytes.subspan(scanner.at() + static_cast<size_t>(wanted));
  if (after.size() > 2 && after[0] == 'P' && after[1] == bytes[1]) out.notes.push_back(kFurtherPictures);
  if (twoLevels(header)) {
    return packTwoLevels(pixels, header.width, header.height, out);
  }
  const bool inPlace = header.most == 255 || header.bitmap() || fewLevels(header);
  if (!inPlace) return readConverted(header, pixels, out);
  showInPlace(header, pixels, out);
  if (header.bitmap()) useBitmapTable(out);
  if (fewLevels(header)) useShortRamp(header.most, out);
}

}  // namespace host
