// SPDX-License-Identifier: MIT
// The files that hold colours, and the colours that have names.
#include <gtest/gtest.h>

#include "order/palettes.h"
#include "pictures/palette.h"
#include "pictures/picture.h"

namespace {

host::Palette gimp(const std::string &text) {
  return host::readGimpPalette({reinterpret_cast<const uint8_t *>(text.data()), text.size()});
}

std::string refusal(const std::string &text) {
  try {
    gimp(text);
    return "";
  } catch (const host::Unreadable &why) {
    return why.what();
  }
}

}  // namespace

TEST(GimpPalette, HasTheColorsOfItsLines) {
  const host::Palette palette = gimp(
      "GIMP Palette\nName: Of 3 things\nColumns: 2\n#\n# sea and sky\n  0  64 255\tSea: deep\n\n128 200 "
      "255\n1 2 3 4\n");
  EXPECT_EQ(palette, (host::Palette{{0, 64, 255}, {128, 200, 255}, {1, 2, 3}}));
  // Without a name, with the ends of lines of other systems, and without one at the end.
  EXPECT_EQ(gimp("GIMP Palette \r\n255 0 0 red\r\n0 0 0"), (host::Palette{{255, 0, 0}, {0, 0, 0}}));
}

TEST(GimpPalette, SaysWhatIsWrong) {
  const std::string words = " is no colour, which begins with red, green and blue from 0 to 255";
  EXPECT_EQ(refusal("GIMP Palette\n"), "has no colours");
  EXPECT_EQ(refusal("GIMP Palette\nName: empty\n#\n"), "has no colours");
  EXPECT_EQ(refusal("GIMP Palette\n0 0 256\n"), "line 2" + words);
  EXPECT_EQ(refusal("GIMP Palette\n#\n0 0 0\n0 -1 0\n"), "line 4" + words);
  EXPECT_EQ(refusal("GIMP Palette\n1 2"), "line 2" + words);
  EXPECT_EQ(refusal("GIMP Palette\n1 2 3x\n"), "line 2" + words);
  EXPECT_EQ(refusal("GIMP Palette\n0 0 0\nName: late\n"), "line 3" + words);
  std::string many = "GIMP Palette\n";
  for (int i = 0; i < 256; ++i) many += "0 0 " + std::to_string(i) + "\n";
  EXPECT_EQ(gimp(many).size(), 256u);
  EXPECT_EQ(refusal(many + "1 1 1\n"), "has more than 256 colours");
  const auto begins = [](const std::string &text) {
    return host::beginsAsGimpPalette({reinterpret_cast<const uint8_t *>(text.data()), text.size()});
  };
  EXPECT_TRUE(begins("GIMP Palette"));
  EXPECT_TRUE(begins("\xEF\xBB\xBFGIMP Palette\n1 2 3\n"));
  EXPECT_EQ(gimp("\xEF\xBB\xBFGIMP Palette\n1 2 3\n"), (host::Palette{{1, 2, 3}}));
  EXPECT_FALSE(begins("GIMP Palettes\n"));
  EXPECT_FALSE(begins("JASC-PAL\n"));
}

TEST(NamedPalettes, HaveTheirColorsInOrder) {
  const auto colorAt = [](const char *name, size_t index) {
    const host::NamedPalette *palette = host::findPalette(name);
    const host::Palette::value_type c = palette && index < palette->colors.size()
                                            ? palette->colors[index]
                                            : host::Palette::value_type{1, 1, 1};
    return c[0] << 16 | c[1] << 8 | c[2];
  };
  const auto countOf = [](const char *name) { return host::findPalette(name)->colors.size(); };
  ASSERT_EQ(countOf("eink7"), 7u);
  ASSERT_EQ(countOf("EGA16"), 16u);
  ASSERT_EQ(countOf("web216"), size_t{6} * 6 * 6);
  EXPECT_EQ(host::findPalette("web"), nullptr);
  const std::array eink{0x000000, 0xFFFFFF, 0x00FF00, 0x0000FF, 0xFF0000, 0xFFFF00, 0xFF8000};
  for (size_t i = 0; i < eink.size(); ++i) EXPECT_EQ(colorAt("eink7", i), eink[i]) << i;
  // Bits of the index: 8 is bright, 4 red, 2 green, 1 blue.
  for (size_t i = 0; i < 16; ++i) {
    const int base = i & 8 ? 0x55 : 0, step = 0xAA;
    const int red = base + (i & 4 ? step : 0), green = base + (i & 2 ? step : 0),
              blue = base + (i & 1 ? step : 0);
    EXPECT_EQ(colorAt("ega16", i), i == 6 ? 0xAA5500 : red << 16 | green << 8 | blue) << i;
  }
  size_t index = 0;
  for (const int red : {0x00, 0x33, 0x66, 0x99, 0xCC, 0xFF}) {
    for (const int green : {0x00, 0x33, 0x66, 0x99, 0xCC, 0xFF}) {
      for (const int blue : {0x00, 0x33, 0x66, 0x99, 0xCC, 0xFF})
        EXPECT_EQ(colorAt("web216", index++), red << 16 | green << 8 | blue);
    }
  }
}
