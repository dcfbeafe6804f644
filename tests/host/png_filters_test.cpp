// SPDX-License-Identifier: MIT
#include "pictures/png_filters.h"

#include <gtest/gtest.h>

#include "support/random.h"

namespace {

using Bytes = std::vector<uint8_t>;

// One byte after the other, as the format defines it.
Bytes plainly(Bytes rows, size_t rowBytes, uint32_t height, size_t step) {
  for (size_t y = 0; y < height; ++y) {
    uint8_t *row = rows.data() + (rowBytes + 1) * y + 1;
    for (size_t i = 0; i < rowBytes; ++i) {
      const int a = i >= step ? row[i - step] : 0, b = y > 0 ? row[i - rowBytes - 1] : 0,
                c = i >= step && y > 0 ? row[i - rowBytes - 1 - step] : 0;
      const int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
      const int nearest = pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
      const int added[] = {0, a, b, (a + b) / 2, nearest};
      row[i] = static_cast<uint8_t>(row[i] + added[row[-1]]);
    }
  }
  return rows;
}

}  // namespace

TEST(PngFilters, AreUndoneAsTheFormatDefinesThem) {
  support::Random random(3);
  for (const size_t step : {size_t{1}, size_t{2}, size_t{3}, size_t{4}, size_t{6}, size_t{8}}) {
    for (size_t pixels = 1; pixels < 40; ++pixels) {
      const size_t rowBytes = pixels * step;
      constexpr uint32_t kHeight = 25;
      Bytes rows = random.bytes((rowBytes + 1) * kHeight);
      for (uint32_t y = 0; y < kHeight; ++y)
        rows[(rowBytes + 1) * y] = static_cast<uint8_t>((y + y / 5) % 5);
      Bytes undone = rows;
      undone.resize(rows.size() + host::kPngSpare, 0xA5);
      ASSERT_TRUE(host::unfilterPng(undone.data(), rowBytes, kHeight, step));
      EXPECT_EQ(Bytes(undone.end() - host::kPngSpare, undone.end()), Bytes(host::kPngSpare, 0xA5));
      undone.resize(rows.size());
      EXPECT_EQ(undone, plainly(rows, rowBytes, kHeight, step)) << step << ", " << pixels;
    }
  }
}

TEST(PngFilters, RefuseWhatTheyDoNotKnow) {
  Bytes rows{0, 1, 2, 3, 5, 1, 2, 3};
  rows.resize(rows.size() + host::kPngSpare);
  EXPECT_TRUE(host::unfilterPng(rows.data(), 3, 1, 3));
  EXPECT_FALSE(host::unfilterPng(rows.data(), 3, 2, 3));
  EXPECT_FALSE(host::unfilterPng(rows.data(), 3, 1, 5));  // no pixel takes as many bytes
}
