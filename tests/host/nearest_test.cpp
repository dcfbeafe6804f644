#include "prepare/nearest.h"

#include <gtest/gtest.h>

#include "host/pictures.h"
#include "prepare/histogram.h"
#include "support/random.h"

using host_test::TestPicture;
using prepare::Color;

namespace {

int squares(const Color &a, int red, int green, int blue) {
  return (a[0] - red) * (a[0] - red) + (a[1] - green) * (a[1] - green) + (a[2] - blue) * (a[2] - blue);
}

}  // namespace

TEST(NearestColor, FindsTheFirstOfTheNearest) {
  support::Random random(21);
  for (size_t count : {size_t{1}, size_t{2}, size_t{16}, size_t{256}}) {
    std::vector<Color> table(count);
    for (Color &c : table) c = {random.byte(), random.byte(), random.byte()};
    if (count > 2) table[count - 1] = table[1];  // a second one of the same colour is never chosen
    prepare::NearestColor nearest(table);
    for (int i = 0; i < 4000; ++i) {
      const uint8_t red = random.byte(), green = random.byte(), blue = random.byte();
      size_t best = 0;
      for (size_t k = 1; k < count; ++k) {
        if (squares(table[k], red, green, blue) < squares(table[best], red, green, blue)) best = k;
      }
      ASSERT_EQ(nearest.find(red, green, blue), best) << count;
    }
  }
}

TEST(Histogram, CountsEveryPixelAndKeepsMeans) {
  TestPicture picture(4, 2, 24);
  // Two cubes: (8, 8, 8) to (11, 11, 11), and white.
  for (uint32_t x = 0; x < 4; ++x) {
    picture.setColor(x, 0, {static_cast<uint8_t>(8 + x), 8, 11});
    picture.setColor(x, 1, {255, 255, 255});
  }
  const auto found = prepare::histogramOf(prepare::Source(picture.view, RAXEL_TREAT_NONE, nullptr));
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].count, 4u);
  EXPECT_EQ(found[0].mean, (Color{10, 8, 11}));  // 9.5, rounded up
  EXPECT_EQ(found[1].mean, (Color{255, 255, 255}));
}

TEST(Histogram, LargerCubesKeepCountsAndMeans) {
  const std::vector<prepare::ColorCount> fine{
      {{0, 7, 9}, 1}, {{4, 3, 15}, 3}, {{8, 0, 8}, 2}, {{255, 250, 248}, 4000000000}};
  const auto found = prepare::inLargerCubes(fine);
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(found[0].count, 4u);
  EXPECT_EQ(found[0].mean, (Color{3, 4, 14}));  // 12 / 4, 16 / 4, 54 / 4 rounded up
  EXPECT_EQ(found[1].count, 2u);
  EXPECT_EQ(found[2].mean, (Color{255, 250, 248}));
}

TEST(Histogram, RefiningMovesColoursToTheMeanOfTheirPixels) {
  const std::vector<prepare::ColorCount> histogram{{{0, 0, 0}, 3}, {{8, 0, 0}, 1}, {{200, 200, 200}, 5}};
  std::vector<Color> table{{40, 0, 0}, {180, 180, 180}, {255, 0, 255}};
  prepare::refine(histogram, table);
  EXPECT_EQ(table[0], (Color{2, 0, 0}));
  EXPECT_EQ(table[1], (Color{200, 200, 200}));
  EXPECT_EQ(table[2], (Color{255, 0, 255}));  // nothing is near it
}
