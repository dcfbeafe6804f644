// SPDX-License-Identifier: MIT
#include "prepare/nearest.h"

#include <gtest/gtest.h>

#include "support/random.h"

using prepare::Color;

namespace {

int squares(const Color &a, int red, int green, int blue) {
  return (a[0] - red) * (a[0] - red) + (a[1] - green) * (a[1] - green) + (a[2] - blue) * (a[2] - blue);
}

TEST(NearestColor, FindsTheFirstOfTheNearest) {
  support::Random random(21);
  for (size_t count : {size_t{1}, size_t{2}, size_t{16}, size_t{256}}) {
    std::vector<Color> table(count);
    for (Color &c : table) c = {random.byte(), random.byte(), random.byte()};
    if (count > 2) table[count - 1] = table[1];  // a second one of the same colour is never chosen
    prepare::NearestColor nearest(table), few(table, prepare::NearestColor::kFewPixels);
    prepare::Candidates candidates(table);
    for (int i = 0; i < 4000; ++i) {
      const uint8_t red = random.byte(), green = random.byte(), blue = random.byte();
      size_t best = 0;
      for (size_t k = 1; k < count; ++k) {
        if (squares(table[k], red, green, blue) < squares(table[best], red, green, blue)) best = k;
      }
      ASSERT_EQ(nearest.find(red, green, blue), best) << count;
      ASSERT_EQ(few.find(red, green, blue), best) << count;
      ASSERT_EQ(candidates.find({red, green, blue}), best) << count;
      ASSERT_EQ(prepare::nearestEntry(table, {red, green, blue}), best) << count;
    }
  }
}

TEST(NearestColor, FindsWholeRows) {
  support::Random random(22);
  std::vector<Color> table(200);
  for (Color &c : table) c = {random.byte(), random.byte(), random.byte()};
  prepare::NearestColor rows(table), few(table, 1), pixels(table);
  std::vector<uint8_t> indices(1000), ofFew(1000);
  for (int n = 0; n < 4; ++n) {
    const std::vector<uint8_t> colors = random.bytes(3000);
    rows.findRow(colors, indices.data());
    few.findRow(colors, ofFew.data());
    ASSERT_EQ(ofFew, indices);
    for (size_t x = 0; x < 1000; ++x) {
      ASSERT_EQ(indices[x], pixels.find(colors[3 * x], colors[3 * x + 1], colors[3 * x + 2]));
    }
  }
}

TEST(NearestColor, TiesGoToTheFirstEverywhere) {
  // Every colour of the plane red = 100 is as near to one as to the other.
  const std::vector<Color> table{{110, 50, 60}, {90, 50, 60}, {110, 50, 60}};
  prepare::NearestColor nearest(table);
  prepare::Candidates candidates(table);
  for (int v = 0; v < 256; ++v) {
    const auto byte = static_cast<uint8_t>(v);
    EXPECT_EQ(nearest.find(100, byte, 60), 0);
    EXPECT_EQ(candidates.find({100, 50, byte}), 0);
    EXPECT_EQ(nearest.find(99, byte, byte), 1);
  }
}

}  // namespace
