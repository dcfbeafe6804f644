// SPDX-License-Identifier: MIT
#include "pictures/peek.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "pictures/picture.h"

namespace host {
namespace {

using Bytes = std::span<const uint8_t>;

struct Magic {
  std::string_view bytes;
  size_t at;
  const char *format;
};

using namespace std::string_view_literals;
// How each format begins.
constexpr Magic kMagic[] = {
    {"\x89PNG\r\n\x1A\n"sv, 0, "PNG"},
    {"\xFF\xD8\xFF"sv, 0, "JPEG"},
    {"BM"sv, 0, "BMP"},
    {"GIF87a"sv, 0, "GIF"},
    {"GIF89a"sv, 0, "GIF"},
    {"II*\0"sv, 0, "TIFF"},
    {"MM\0*"sv, 0, "TIFF"},
    {"II+\0"sv, 0, "BigTIFF"},
    {"MM\0+"sv, 0, "BigTIFF"},
    {"WEBP"sv, 8, "WebP"},
    {"jP  "sv, 4, "JPEG 2000"},
    {"\xFF\x4F\xFF\x51"sv, 0, "JPEG 2000"},
    {"%PDF"sv, 0, "PDF"},
    {"<svg"sv, 0, "SVG"},
    {"P7\n"sv, 0, "PAM"},
    {"spix"sv, 0, "SPIX"},
};

}  // namespace

std::string formatOf(std::span<const uint8_t> bytes) {
  for (const Magic &magic : kMagic) {
    if (bytes.size() >= magic.at + magic.bytes.size() &&
        std::memcmp(bytes.data() + magic.at, magic.bytes.data(), magic.bytes.size()) == 0) {
      return magic.format;
    }
  }
  if (bytes.size() > 2 && bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '6') return "PNM";
  return "";
}

namespace {

// Walks over the blocks of a GIF: extensions, which are 21 and a label, and pictures, which are 2C, a
// place, a size, flags, perhaps a table, and the size of the first codes; then pieces with their lengths in
// front, up to an empty one.
class GifBlocks {
 public:
  explicit GifBlocks(Bytes file)
      : file_(file), at_(file.size() < 13 ? file.size() : 13 + tableSize(file[10])) {}

  bool more() const {
    return at_ + 10 <= file_.size() && (file_[at_] == kPicture || file_[at_] == kExtension);
  }
  bool isPicture() const { return file_[at_] == kPicture; }
  bool isShortExtension() const { return at_ + 2 <= file_.size() && file_[at_] == kExtension; }
  size_t place() const { return std::min(at_, file_.size()); }
  // At least ten bytes of it are there.
  const uint8_t *block() const { return file_.data() + at_; }
  void goTo(size_t place) { at_ = place; }
  void next() {
    at_ += isPicture() ? 10 + tableSize(file_[at_ + 9]) + 1 : 2;
    while (at_ < file_.size() && file_[at_] != 0) at_ += size_t{1} + file_[at_];
    ++at_;
  }

 private:
  static constexpr uint8_t kPicture = 0x2C, kExtension = 0x21;
  static size_t tableSize(unsigned flags) { return (flags & 0x80) != 0 ? size_t{6} << (flags & 7) : 0; }

  Bytes file_;
  size_t at_;
};

constexpr uint8_t kTrailer = 0x3B, kGraphicControl = 0xF9, kComment = 0xFE, kApplication = 0xFF;

uint32_t word(const uint8_t *at) {
  return at[0] | uint32_t{at[1]} << 8;
}

}  // namespace

int gifTransparentIndex(std::span<const uint8_t> file) {
  int transparent = -1;
  for (GifBlocks blocks(file); blocks.more() && !blocks.isPicture(); blocks.next()) {
    const uint8_t *block = blocks.block();
    const bool graphicControl = block[1] == kGraphicControl && block[2] >= 4;
    if (graphicControl) transparent = (block[3] & 1) != 0 ? block[6] : -1;
  }
  return transparent;
}

GifScreen gifScreen(std::span<const uint8_t> file) {
  GifBlocks blocks(file);
  while (blocks.more() && !blocks.isPicture()) blocks.next();
  if (!blocks.more()) return {};
  const uint8_t *block = blocks.block();
  GifScreen screen{word(file.data() + 6), word(file.data() + 8), word(block + 1), word(block + 3)};
  screen.width = std::max(screen.width, screen.left + word(block + 5));
  screen.height = std::max(screen.height, screen.top + word(block + 7));
  return screen;
}

GifExtras gifExtras(std::span<const uint8_t> file) {
  GifExtras extras{};
  for (GifBlocks blocks(file); blocks.more() && !blocks.isPicture(); blocks.next()) {
    const uint8_t *block = blocks.block();
    // An application's name has eleven letters, and what follows goes without saying.
    const auto isOf = [&](const char *name) {
      return block[1] == kApplication && block[2] == 11 && std::memcmp(block + 3, name, 7) == 0;
    };
    extras.comments |= block[1] == kComment;
    extras.xmp |= isOf("XMP Dat");
    extras.profile |= isOf("ICCRGBG");
  }
  return extras;
}

std::vector<GifFrame> gifFrames(std::span<const uint8_t> file) {
  std::vector<GifFrame> frames;
  GifBlocks blocks(file);
  GifFrame frame{.start = blocks.place()};
  while (blocks.more()) {
    const uint8_t *block = blocks.block();
    const bool isPicture = blocks.isPicture();
    if (!isPicture && block[1] == kGraphicControl && block[2] >= 4) {
      frame.disposal = block[3] >> 2 & 7;
      frame.transparent = (block[3] & 1) != 0 ? block[6] : -1;
    }
    if (isPicture) {
      frame.left = word(block + 1);
      frame.top = word(block + 3);
      frame.width = word(block + 5);
      frame.height = word(block + 7);
    }
    blocks.next();
    if (!isPicture) continue;
    frame.end = blocks.place();
    frames.push_back(frame);
    frame = {.start = frame.end};
  }
  return frames;
}

bool gifIsWhole(std::span<const uint8_t> file) {
  GifBlocks blocks(file);
  while (blocks.more()) blocks.next();
  // Extensions at the end may be shorter than what a walk looks at.
  while (blocks.isShortExtension()) blocks.next();
  return blocks.place() < file.size() && file[blocks.place()] == kTrailer;
}

std::vector<uint8_t> gifFrameAlone(std::span<const uint8_t> file, size_t start) {
  GifBlocks blocks(file);
  const Bytes head = file.first(blocks.place());
  if (start == 0) start = blocks.place();
  blocks.goTo(start);
  while (blocks.more() && !blocks.isPicture()) blocks.next();
  if (blocks.more()) blocks.next();
  std::vector<uint8_t> alone(head.begin(), head.end());
  alone.insert(alone.end(), file.begin() + static_cast<ptrdiff_t>(start),
               file.begin() + static_cast<ptrdiff_t>(blocks.place()));
  alone.push_back(kTrailer);
  return alone;
}

bool gifHasFurtherPictures(std::span<const uint8_t> file) {
  int pictures = 0;
  for (GifBlocks blocks(file); blocks.more(); blocks.next()) {
    if (blocks.isPicture() && ++pictures == 2) return true;
  }
  return false;
}

void checkScreen(uint32_t width, uint32_t height) {
  constexpr uint64_t kLargest = uint64_t{1} << 28;
  if (uint64_t{width} * height > kLargest) throw Unreadable(tooLarge(width, height));
}

}  // namespace host
