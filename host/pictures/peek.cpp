// SPDX-License-Identifier: MIT
#include "pictures/peek.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "pictures/picture.h"

namespace host {
namespace {

using Bytes = std::span<const uint8_t>;

// A number of `size` bytes with the highest first; 0 beyond the end.
uint64_t numberAt(Bytes file, uint64_t at, uint64_t size) {
  if (at > file.size() || size > file.size() - at) return 0;
  uint64_t value = 0;
  for (uint64_t i = 0; i < size; ++i) value = value << 8 | file[static_cast<size_t>(at + i)];
  return value;
}

// The content of the first box of a kind in a sequence of boxes (JPEG 2000, ISO 15444-1): a length that
// counts itself, four letters, and where the length is 1 a longer one. One that says more than there is
// ends with the file, as decoders have it. Empty when there is none.
Bytes boxIn(Bytes boxes, std::string_view kind) {
  for (uint64_t at = 0; at + 8 <= boxes.size();) {
    uint64_t length = numberAt(boxes, at, 4), front = 8;
    if (length == 1) {
      length = numberAt(boxes, at + 8, 8);
      front = 16;
    }
    if (length == 0) length = boxes.size() - at;  // up to the end
    length = std::min<uint64_t>(length, boxes.size() - at);
    if (length < front) return {};
    const Bytes box = boxes.subspan(static_cast<size_t>(at), static_cast<size_t>(length));
    if (std::equal(kind.begin(), kind.end(), box.begin() + 4))
      return box.subspan(static_cast<size_t>(front));
    at += length;
  }
  return {};
}

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

constexpr uint8_t kGraphicControl = 0xF9, kComment = 0xFE, kApplication = 0xFF;

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

std::vector<uint8_t> gifFrameAlone(std::span<const uint8_t> file, size_t start) {
  constexpr uint8_t kTrailer = 0x3B;
  GifBlocks blocks(file);
  const Bytes head = file.first(blocks.place());
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

namespace {

constexpr uint64_t kCodestream = 0xFF4FFF51;  // SOC, and SIZ behind it

}  // namespace

uint32_t jpeg2000Channels(std::span<const uint8_t> file) {
  if (numberAt(file, 0, 4) == kCodestream) return static_cast<uint32_t>(numberAt(file, 40, 2));
  return static_cast<uint32_t>(numberAt(boxIn(boxIn(file, "jp2h"), "ihdr"), 8, 2));
}

Jpeg2000Grid jpeg2000Grid(std::span<const uint8_t> file) {
  const Bytes code = numberAt(file, 0, 4) == kCodestream ? file : boxIn(file, "jp2c");
  if (numberAt(code, 0, 4) != kCodestream) return {};
  // The grid's end and where the picture begins on it, across and down; then each channel's depth and
  // steps.
  const auto side = [&](uint64_t at) {
    const uint64_t end = numberAt(code, at, 4), start = numberAt(code, at + 8, 4);
    return static_cast<uint32_t>(end - std::min(start, end));
  };
  Jpeg2000Grid grid{side(8), side(12), false};
  const uint64_t channels = numberAt(code, 40, 2);
  for (uint64_t i = 0; i < channels && !grid.isCoarse; ++i) {
    grid.isCoarse = numberAt(code, 43 + 3 * i, 2) != 0x0101;
  }
  return grid;
}

Jpeg2000Extras jpeg2000Extras(std::span<const uint8_t> file) {
  const Bytes color = boxIn(boxIn(file, "jp2h"), "colr");
  const bool profile = !color.empty() && (color[0] == 2 || color[0] == 3);  // of two kinds
  return {profile, !boxIn(file, "xml ").empty() || !boxIn(file, "uuid").empty()};
}

void checkScreen(uint32_t width, uint32_t height) {
  constexpr uint64_t kLargest = uint64_t{1} << 28;
  if (uint64_t{width} * height > kLargest) throw Unreadable(tooLarge(width, height));
}

}  // namespace host
