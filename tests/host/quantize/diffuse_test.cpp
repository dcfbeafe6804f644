// SPDX-License-Identifier: MIT
// Error diffusion, worked by hand and beside the plain form, one row and one pixel after the other.
#include "prepare/diffuse.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "host/pictures.h"
#include "prepare/nearest.h"
#include "support/random.h"

using host_test::TestPicture;
using prepare::Color;

namespace {

std::vector<uint8_t> diffused(const TestPicture &picture, const std::vector<Color> &table,
                              prepare::Shares shares = prepare::kSharesOfOwnColors) {
  std::vector<uint8_t> indices(size_t{picture.view.width} * picture.view.height, 99);
  prepare::diffuse(prepare::Source(picture.view, RAXEL_TREAT_NONE, nullptr), table, indices.data(), shares);
  return indices;
}

// The definition: shares in 128ths, and sums that are rounded.
std::vector<uint8_t> plainly(TestPicture &picture, const std::vector<Color> &table,
                             prepare::Shares shares = {46, 33, 19, 6}) {
  const auto width = static_cast<int>(picture.view.width), height = static_cast<int>(picture.view.height);
  std::vector<int> owed(static_cast<size_t>(3 * width * height));
  std::vector<uint8_t> indices;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      Color wanted{};
      for (int c = 0; c < 3; ++c) {
        const int sum = owed[static_cast<size_t>(3 * (y * width + x) + c)] + 64;
        const int shift = (sum - (sum % 128 + 128) % 128) / 128;  // rounded down, whatever the sign
        wanted[static_cast<size_t>(c)] = static_cast<uint8_t>(
            std::clamp(picture.row(static_cast<uint32_t>(y))[3 * x + c] + shift, 0, 255));
      }
      const uint8_t index = prepare::nearestEntry(table, wanted);
      indices.push_back(index);
      const auto share = [&](int toX, int toY, int weight) {
        if (toX < 0 || toX >= width || toY >= height) return;
        for (int c = 0; c < 3; ++c) {
          const auto k = static_cast<size_t>(c);
          owed[static_cast<size_t>(3 * (toY * width + toX) + c)] += weight * (wanted[k] - table[index][k]);
        }
      };
      share(x + 1, y, shares.ahead);
      share(x - 1, y + 1, shares.behind);
      share(x, y + 1, shares.below);
      share(x + 1, y + 1, shares.beyond);
    }
  }
  return indices;
}

TEST(Diffuse, SharesWhatAPixelLoses) {
  // Greys of 100 and the entries 0 and 255. 100 becomes 0 and loses 100: 100 * 46 / 128 = 36 go to the
  // right, 136 becomes 255 and loses -119: -43 go on, and 57 becomes 0. Below: 100 + (100 * 33 - 119 * 19 +
  // 64) / 128 = 108 becomes 0, and so on.
  TestPicture picture(3, 2, 24);
  for (uint32_t i = 0; i < 6; ++i) picture.setColor(i % 3, i / 3, {100, 100, 100});
  const std::vector<Color> table{{0, 0, 0}, {255, 255, 255}};
  const auto indices = diffused(picture, table);
  EXPECT_EQ(std::vector<uint8_t>(indices.begin(), indices.begin() + 3), (std::vector<uint8_t>{0, 1, 0}));
  EXPECT_EQ(indices[3], 0);
  EXPECT_EQ(indices, plainly(picture, table));
}

TEST(Diffuse, KeepsColorsOfTheTable) {
  TestPicture picture(9, 7, 24);
  const std::vector<Color> table{{1, 2, 3}, {200, 100, 50}, {0, 255, 0}};
  for (uint32_t i = 0; i < 63; ++i) picture.setColor(i % 9, i / 9, table[i % 3]);
  const auto indices = diffused(picture, table);
  for (uint32_t i = 0; i < 63; ++i) EXPECT_EQ(indices[i], i % 3);
}

TEST(Diffuse, RowsTogetherGiveWhatOneRowAfterTheOtherDoes) {
  support::Random random(41);
  for (const uint32_t width : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 31u, 64u}) {
    for (const uint32_t height : {1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 13u}) {
      TestPicture picture(width, height, 24);
      for (uint8_t &byte : picture.rows) byte = random.byte();
      // Every second picture is dark and bright, where sums are clamped.
      if ((width + height) % 2 != 0) {
        for (uint8_t &byte : picture.rows)
          byte = byte < 128 ? static_cast<uint8_t>(byte / 16) : static_cast<uint8_t>(byte | 0xF0);
      }
      std::vector<Color> table(height % 2 == 0 ? 16 : 200);
      for (Color &c : table) c = {random.byte(), random.byte(), random.byte()};
      ASSERT_EQ(diffused(picture, table), plainly(picture, table)) << width << " x " << height;
      ASSERT_EQ(diffused(picture, table, prepare::kSharesOfGivenColors),
                plainly(picture, table, {56, 40, 24, 8}))
          << width << " x " << height;
    }
  }
}

}  // namespace
