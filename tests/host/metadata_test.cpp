// SPDX-License-Identifier: MIT
#include "pictures/metadata.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;
using Words = std::vector<std::string>;

Bytes operator+(Bytes a, const Bytes &b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Bytes text(const std::string &letters) {
  return {letters.begin(), letters.end()};
}

Bytes number(uint64_t value, size_t size, bool little) {
  Bytes out(size);
  for (size_t i = 0; i < size; ++i) out[little ? i : size - 1 - i] = static_cast<uint8_t>(value >> 8 * i);
  return out;
}

// A header and a directory of one-byte values, which stand behind it or, where they are few, in it.
struct Tag {
  unsigned tag;
  Bytes value;
};
Bytes tiffOf(const std::vector<Tag> &tags, bool big, bool little) {
  const size_t place = big ? 8 : 4, front = big ? 16 : 8;
  Bytes file = text(little ? "II" : "MM") + number(big ? 43 : 42, 2, little);
  if (big) file = file + number(8, 2, little) + number(0, 2, little);
  file = file + number(front, place, little) + number(tags.size(), big ? 8 : 2, little);
  Bytes behind;
  const size_t end = file.size() + tags.size() * (4 + 2 * place) + place;
  for (const Tag &tag : tags) {
    Bytes value = tag.value;
    if (value.size() > place) {
      behind = behind + value;
      value = number(end + behind.size() - value.size(), place, little);
    }
    value.resize(place);
    file = file + number(tag.tag, 2, little) + number(1, 2, little) +
           number(tag.value.size(), place, little) + value;
  }
  return file + number(0, place, little) + behind;
}

Words droppedOf(const char *format, const Bytes &file) {
  return host::readMetadata(format, file, 0).dropped;
}

Bytes chunk(const std::string &kind, const Bytes &body) {
  return number(body.size(), 4, false) + text(kind) + body + Bytes(4);
}
Words droppedOfPng(const Bytes &chunks) {
  return droppedOf("PNG", Bytes(8) + chunks + chunk("IEND", {}));
}

Bytes zeroed(const std::string &first, const std::string &then) {
  return text(first) + Bytes{0} + text(then);
}

const std::string kLarge = "the ICC profile (it is of more than 16 MiB)";
const std::string kUnread = "the ICC profile (it is not read in this format)";

}  // namespace

TEST(Metadata, IsReadFromDirectoriesOfBothSizes) {
  const Bytes profile = number(0x0102030405060708, 8, false) + Bytes{9};
  for (const bool big : {false, true}) {
    for (const bool little : {false, true}) {
      const Bytes file =
          tiffOf({{270, text("Lake")}, {315, text("Ann Ann Ann")}, {33432, text("B")}, {34675, profile}},
                 big, little);
      const host::Metadata seen = host::readMetadata(big ? "BigTIFF" : "TIFF", file, 0);
      EXPECT_EQ(seen.description, "Lake");
      EXPECT_EQ(seen.artist, "Ann Ann Ann");
      EXPECT_EQ(seen.copyright, "B");
      EXPECT_EQ(seen.icc, profile);
      EXPECT_EQ(seen.dropped, Words());
    }
  }
}

TEST(Metadata, NamesTheTagsThatAreLeftBehind) {
  const Bytes some = text("a");
  const auto dropped = [&](unsigned tag) { return droppedOf("TIFF", tiffOf({{tag, some}}, false, true)); };
  for (const unsigned tag : {269u, 285u, 316u}) EXPECT_EQ(dropped(tag), (Words{"other texts"})) << tag;
  for (const unsigned tag : {271u, 272u}) EXPECT_EQ(dropped(tag), (Words{"the device's name"})) << tag;
  EXPECT_EQ(dropped(306), (Words{"the date"}));
  EXPECT_EQ(dropped(700), (Words{"XMP data"}));
  EXPECT_EQ(dropped(33723), (Words{"IPTC data"}));
  EXPECT_EQ(dropped(34377), (Words{"Photoshop data"}));
  EXPECT_EQ(dropped(34665), (Words{"Exif data of the camera"}));
  EXPECT_EQ(dropped(305), Words());  // the file's own software stands there
  EXPECT_EQ(droppedOf("BigTIFF", tiffOf({{269, some}, {271, some}, {285, some}}, true, false)),
            (Words{"other texts", "the device's name"}));
}

TEST(Metadata, NamesAProfileThatIsTooLarge) {
  const size_t most = size_t{16} << 20;
  for (const size_t more : {size_t{0}, size_t{1}}) {
    const Bytes profile(most + more, 7);
    const Words wanted = more == 0 ? Words() : Words{kLarge};
    const host::Metadata tiff = host::readMetadata("TIFF", tiffOf({{34675, profile}}, false, true), 0);
    EXPECT_EQ(tiff.icc.size(), more == 0 ? most : 0);
    EXPECT_EQ(tiff.dropped, wanted);
    const Bytes webp = text("RIFF....WEBPICCP") + number(profile.size(), 4, true) + profile;
    EXPECT_EQ(droppedOf("WebP", webp), wanted);
  }
}

TEST(Metadata, NamesTextsOfPngThatAreLeftBehind) {
  const Words others{"other texts"};
  EXPECT_EQ(droppedOfPng(chunk("tEXt", zeroed("Title", "A lake"))), others);
  EXPECT_EQ(droppedOfPng(chunk("zTXt", zeroed("Description", "?"))), others);
  EXPECT_EQ(droppedOfPng(chunk("iTXt", zeroed("Description", std::string("\1\0\0\0?", 5)))), others);
  EXPECT_EQ(droppedOfPng(chunk("iTXt", zeroed("Title", std::string("\0\0\0\0?", 5)))), others);
  EXPECT_EQ(droppedOfPng(chunk("tIME", Bytes(7))), (Words{"the date"}));
  EXPECT_EQ(droppedOfPng(chunk("iTXt", zeroed("XML:com.adobe.xmp", std::string(5, '\0')))),
            (Words{"XMP data"}));
  EXPECT_EQ(droppedOfPng(chunk("tEXt", zeroed("Author", "Ann")) + chunk("tEXt", zeroed("Software", "x"))),
            Words());
}

TEST(Metadata, NamesCommentsOfJpegAndGif) {
  const Bytes start{0xFF, 0xD8}, scan{0xFF, 0xDA, 0, 2};
  const auto segment = [](uint8_t marker, const Bytes &body) {
    return Bytes{0xFF, marker} + number(body.size() + 2, 2, false) + body;
  };
  EXPECT_EQ(droppedOf("JPEG", start + segment(0xFE, text("hello")) +
                                  segment(0xED, zeroed("Photoshop 3.0", "8BIM")) + scan),
            (Words{"comments", "Photoshop data"}));
  EXPECT_EQ(droppedOf("JPEG", start + segment(0xE0, text("JFIF")) + scan), Words());

  const Bytes front = text("GIF89a") + Bytes{1, 0, 1, 0, 0, 0, 0};
  const Bytes picture{0x2C, 0, 0, 0, 0, 1, 0, 1, 0, 0, 2, 2, 0x44, 1, 0, 0x3B};
  const auto application = [](const std::string &name) {
    return Bytes{0x21, 0xFF, 11} + text(name) + Bytes{1, 1, 0};
  };
  EXPECT_EQ(droppedOf("GIF", front + application("NETSCAPE2.0") + picture), Words());
  EXPECT_EQ(droppedOf("GIF", front + Bytes{0x21, 0xFE, 2, 'h', 'i', 0} + picture), (Words{"comments"}));
  EXPECT_EQ(droppedOf("GIF", front + application("XMP DataXMP") + application("ICCRGBG1012") + picture),
            (Words{"XMP data", kUnread}));
}

TEST(Metadata, NamesWhatBoxesOfJpeg2000Hold) {
  const auto box = [](const std::string &kind, const Bytes &body) {
    return number(body.size() + 8, 4, false) + text(kind) + body;
  };
  const Bytes listed = box("jp2h", box("colr", {1, 0, 0, 0, 0, 0, 16}));
  const Bytes profile = box("jp2h", box("colr", Bytes{2, 0, 0} + Bytes(128)));
  EXPECT_EQ(droppedOf("JPEG 2000", listed), Words());
  EXPECT_EQ(droppedOf("JPEG 2000", profile), (Words{kUnread}));
  for (const char *kind : {"xml ", "uuid"})
    EXPECT_EQ(droppedOf("JPEG 2000", listed + box(kind, text("data"))), (Words{"XML or other data"}));
}
