// SPDX-License-Identifier: MIT
#include "pictures/metadata.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string_view>
#include <utility>

#include "finish/tags.h"
#include "pictures/jpeg2000.h"
#include "pictures/jpeg_segments.h"
#include "pictures/peek.h"

namespace host {
namespace {

using Bytes = std::span<const uint8_t>;
using namespace std::string_view_literals;

constexpr size_t kLongestText = 65535;
constexpr size_t kLargestProfile = size_t{16} << 20;
constexpr std::string_view kExifFront = "Exif\0\0"sv, kProfileFront = "ICC_PROFILE\0"sv;

uint64_t numberAt(Bytes bytes, uint64_t at, uint32_t size, bool little) {
  if (at > bytes.size() || size > bytes.size() - at) return 0;
  uint64_t value = 0;
  for (uint32_t i = 0; i < size; ++i) {
    value |= uint64_t{bytes[static_cast<size_t>(at) + i]} << 8 * (little ? i : size - 1 - i);
  }
  return value;
}

// Part of the bytes; empty when it does not lie in them.
Bytes partOf(Bytes bytes, uint64_t at, uint64_t size) {
  if (at > bytes.size() || size > bytes.size() - at) return {};
  return bytes.subspan(static_cast<size_t>(at), static_cast<size_t>(size));
}

bool startsWith(Bytes bytes, std::string_view text) {
  return bytes.size() >= text.size() && std::memcmp(bytes.data(), text.data(), text.size()) == 0;
}

// A text as far as its first zero, without the spaces that cameras fill it up with.
std::string textOf(Bytes bytes) {
  std::string text(bytes.begin(),
                   bytes.begin() + static_cast<ptrdiff_t>(std::min(bytes.size(), kLongestText)));
  text.resize(std::min(text.find('\0'), text.size()));
  text.resize(text.find_last_not_of(' ') + 1);
  return text;
}

// Latin-1, in which PNG has its texts, as UTF-8.
std::string utf8Of(const std::string &latin) {
  std::string out;
  for (const char c : latin) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      out += c;
    } else {
      out += static_cast<char>(0xC0 | byte >> 6);
      out += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return out;
}

void keep(std::string &to, const std::string &text) {
  if (to.empty()) to = text;
}

// What there may be besides, in the words of a note.
constexpr const char *kExifData = "Exif data of the camera";
constexpr const char *kXmp = "XMP data";
constexpr const char *kIptc = "IPTC data";
constexpr const char *kPhotoshop = "Photoshop data";
constexpr const char *kComments = "comments";
constexpr const char *kOtherTexts = "other texts";
constexpr const char *kDevice = "the device's name";
constexpr const char *kDate = "the date";
constexpr const char *kLargeProfile = "the ICC profile (it is of more than 16 MiB)";
constexpr const char *kUnreadProfile = "the ICC profile (it is not read in this format)";

void drop(const char *what, Metadata &to) {
  if (std::ranges::find(to.dropped, what) == to.dropped.end()) to.dropped.push_back(what);
}

void keepProfile(Bytes profile, Metadata &to) {
  if (profile.size() > kLargestProfile) return drop(kLargeProfile, to);
  if (to.icc.empty()) to.icc.assign(profile.begin(), profile.end());
}

// A directory of a TIFF or an Exif block, where places take 32 bits, or of a BigTIFF, where they take 64.
void readDirectory(Bytes tiff, uint64_t directory, Metadata &to) {
  constexpr uint64_t kMostEntries = 65535;
  if (tiff.size() < 8 || (tiff[0] != 'I' && tiff[0] != 'M')) return;
  const bool little = tiff[0] == 'I', big = numberAt(tiff, 2, 2, little) == 43;
  if (!big && numberAt(tiff, 2, 2, little) != 42) return;
  const uint32_t place = big ? 8 : 4;  // a count takes as much
  if (directory == 0) directory = numberAt(tiff, place, place, little);
  const uint64_t entries = numberAt(tiff, directory, big ? 8 : 2, little);
  for (uint64_t i = 0; i < std::min(entries, kMostEntries); ++i) {
    const uint64_t at = directory + (big ? 8 : 2) + (4 + 2 * place) * i;
    if (at >= tiff.size()) break;  // a count that the block does not hold
    const uint64_t count = numberAt(tiff, at + 4, place, little), valueAt = at + 4 + place;
    const Bytes value =
        partOf(tiff, count <= place ? valueAt : numberAt(tiff, valueAt, place, little), count);
    switch (numberAt(tiff, at, 2, little)) {
      case finish::kImageDescription:
        keep(to.description, textOf(value));
        break;
      case finish::kArtist:
        keep(to.artist, textOf(value));
        break;
      case finish::kCopyright:
        keep(to.copyright, textOf(value));
        break;
      case finish::kIccProfile:
        keepProfile(value, to);
        break;
      case finish::kDocumentName:
      case finish::kPageName:
      case finish::kHostComputer:
        drop(kOtherTexts, to);
        break;
      case finish::kMake:
      case finish::kModel:
        drop(kDevice, to);
        break;
      case finish::kDateTime:
        drop(kDate, to);
        break;
      case finish::kIptc:
        drop(kIptc, to);
        break;
      case finish::kPhotoshop:
        drop(kPhotoshop, to);
        break;
      case finish::kExifDirectory:
      case finish::kGpsDirectory:
        drop(kExifData, to);
        break;
      case finish::kXmpPacket:
        drop(kXmp, to);
        break;
      default:
        break;
    }
  }
}

// Exif in a JPEG and in some WebPs stands behind six bytes.
void readExifBlock(Bytes block, Metadata &to) {
  if (startsWith(block, kExifFront)) block = block.subspan(kExifFront.size());
  std::vector<uint8_t> own = std::move(to.icc);
  readDirectory(block, 0, to);
  to.icc = std::move(own);  // one in an Exif block is not the picture's
}

// The profile comes in pieces that are numbered from 1 on.
void readJpeg(Bytes file, Metadata &to) {
  constexpr uint8_t kApp1 = 0xE1, kApp2 = 0xE2, kApp13 = 0xED, kComment = 0xFE;
  std::map<uint8_t, Bytes> profile;
  eachJpegSegment(file, [&](uint8_t marker, Bytes body) {
    if (marker == kApp1 && startsWith(body, kExifFront)) readExifBlock(body, to);
    if (marker == kApp1 && startsWith(body, "http://ns.adobe.com/xap/1.0/"sv)) drop(kXmp, to);
    if (marker == kApp13 && startsWith(body, "Photoshop "sv)) drop(kPhotoshop, to);
    if (marker == kComment) drop(kComments, to);
    if (marker == kApp2 && startsWith(body, kProfileFront) && body.size() > kProfileFront.size() + 2)
      profile[body[kProfileFront.size()]] = body.subspan(kProfileFront.size() + 2);
  });
  for (const auto &[number, piece] : profile) to.icc.insert(to.icc.end(), piece.begin(), piece.end());
}

// Behind a zero byte; empty without one.
Bytes behindText(Bytes bytes) {
  const size_t size = textOf(bytes).size();
  const auto end = std::ranges::find(bytes.subspan(size), uint8_t{0});
  return end == bytes.end() ? Bytes() : Bytes(end + 1, bytes.end());
}

// A key, and a text in Latin-1 or, behind two bytes and two more texts, in UTF-8. One that is compressed is
// left alone. A file of ours names its software itself.
void readPngText(Bytes body, bool wide, Metadata &to) {
  const std::string key = textOf(body);
  Bytes rest = behindText(body);
  if (wide) {
    if (rest.size() < 2 || rest[0] != 0) return drop(kOtherTexts, to);
    rest = behindText(behindText(rest.subspan(2)));
  }
  const std::string text = wide ? textOf(rest) : utf8Of(textOf(rest));
  if (key == "Description") return keep(to.description, text);
  if (key == "Author") return keep(to.artist, text);
  if (key == "Copyright") return keep(to.copyright, text);
  if (key != "Software") drop(kOtherTexts, to);
}

void readPng(Bytes file, Metadata &to) {
  for (uint64_t at = 8; at + 12 <= file.size();) {
    const uint64_t length = numberAt(file, at, 4, false);
    const Bytes kind = partOf(file, at + 4, 4), body = partOf(file, at + 8, length);
    if (body.size() != length || startsWith(kind, "IDAT"sv)) break;
    if (startsWith(kind, "eXIf"sv)) readExifBlock(body, to);
    const bool wide = startsWith(kind, "iTXt"sv);
    const bool xmp = wide && startsWith(body, "XML:com.adobe.xmp"sv);
    if (xmp) drop(kXmp, to);
    if ((wide && !xmp) || startsWith(kind, "tEXt"sv)) readPngText(body, wide, to);
    if (startsWith(kind, "zTXt"sv)) drop(kOtherTexts, to);
    if (startsWith(kind, "tIME"sv)) drop(kDate, to);
    at += 12 + length;
  }
}

// "RIFF", a size, "WEBP", and chunks of a name, a size and an even number of bytes.
void readWebp(Bytes file, Metadata &to) {
  for (uint64_t at = 12; at + 8 <= file.size();) {
    const uint64_t length = numberAt(file, at + 4, 4, true);
    const Bytes kind = partOf(file, at, 4), body = partOf(file, at + 8, length);
    if (startsWith(kind, "ICCP"sv)) keepProfile(body, to);
    if (startsWith(kind, "EXIF"sv)) readExifBlock(body, to);
    if (startsWith(kind, "XMP "sv)) drop(kXmp, to);
    at += 8 + (length + 1) / 2 * 2;
  }
}

// The fifth kind of header ends with the place of a profile, counted from itself, and its size.
void readBmp(Bytes file, Metadata &to) {
  constexpr uint64_t kHeaderAt = 14, kFifth = 124, kSpaceAt = 56, kPlaceAt = 112, kSizeAt = 116;
  constexpr uint64_t kEmbedded = 0x4D424544;  // "MBED"
  if (numberAt(file, kHeaderAt, 4, true) != kFifth) return;
  if (numberAt(file, kHeaderAt + kSpaceAt, 4, true) != kEmbedded) return;
  const Bytes profile = partOf(file, kHeaderAt + numberAt(file, kHeaderAt + kPlaceAt, 4, true),
                               numberAt(file, kHeaderAt + kSizeAt, 4, true));
  keepProfile(profile, to);
}

void readGif(Bytes file, Metadata &to) {
  const GifExtras extras = gifExtras(file);
  if (extras.comments) drop(kComments, to);
  if (extras.xmp) drop(kXmp, to);
  if (extras.profile) drop(kUnreadProfile, to);
}

void readJpeg2000(Bytes file, Metadata &to) {
  const Jpeg2000Extras extras = jpeg2000Extras(file);
  if (extras.profile) drop(kUnreadProfile, to);
  if (extras.texts) drop("XML or other data", to);
}

}  // namespace

Metadata readMetadata(const std::string &format, Bytes file, uint64_t directory) {
  Metadata out;
  if (format == "TIFF" || format == "BigTIFF") readDirectory(file, directory, out);
  if (format == "JPEG") readJpeg(file, out);
  if (format == "PNG") readPng(file, out);
  if (format == "WebP") readWebp(file, out);
  if (format == "BMP") readBmp(file, out);
  if (format == "GIF") readGif(file, out);
  if (format == "JPEG 2000") readJpeg2000(file, out);
  return out;
}

}  // namespace host
