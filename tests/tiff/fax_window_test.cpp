// SPDX-License-Identifier: MIT
// Rows as the two-dimensional coder reads them, against a look at each pixel.
#include "tiff/fax_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/cases.h"
#include "support/random.h"
#include "tiff/reference_fax.h"

namespace {

constexpr uint64_t kWhite = ~uint64_t{0};
constexpr uint64_t kBlack = 0;

std::vector<uint8_t> windowsOf(const std::string &row, bool pad) {
  const std::vector<uint8_t> packed = reference::packRow(row, pad);
  std::vector<uint8_t> copy(packed.size() + tiff::kWindowSlack, 0xA5);
  tiff::copyForWindows(packed.data(), static_cast<uint32_t>(row.size()), copy.data());
  return copy;
}

// Bit i tells whether pixel `at` + i has not the colour; past the width colours alternate.
bool differs(const std::string &row, size_t at, char color) {
  if (at < row.size()) return row[at] != color;
  const bool likeLast = (at - row.size()) % 2 != 0;
  return (row.back() == color) != likeLast;
}

void check(const std::string &row, bool pad) {
  const std::vector<uint8_t> copy = windowsOf(row, pad);
  for (size_t at = 0; at < row.size(); ++at) {
    const uint64_t fromWhite = tiff::window(copy.data(), static_cast<uint32_t>(at), kWhite);
    const uint64_t fromBlack = tiff::window(copy.data(), static_cast<uint32_t>(at), kBlack);
    for (size_t i = 0; i < 57; ++i) {
      ASSERT_EQ((fromWhite >> i & 1) != 0, differs(row, at + i, 'w')) << at << " + " << i;
      ASSERT_EQ((fromBlack >> i & 1) != 0, differs(row, at + i, 'b')) << at << " + " << i;
    }
    for (const char color : {'w', 'b'}) {
      size_t found = at;
      while (!differs(row, found, color)) ++found;
      ASSERT_EQ(tiff::findOther(copy.data(), at, color == 'w' ? kWhite : kBlack), found) << at << color;
    }
  }
}

TEST(FaxWindow, SeededRowsOfEveryWidthAreSearchedAsPlainly) {
  support::Random random(75);
  const size_t step = std::max<size_t>(1, 20 / support::cases(20));
  for (size_t width = 1; width <= 300; width += step) {
    std::string row(width, 'w');
    const auto percent = static_cast<unsigned>(random.between(0, 30));
    char color = 'w';
    for (char &pixel : row) {
      if (random.chance(percent)) color = color == 'w' ? 'b' : 'w';
      pixel = color;
    }
    ASSERT_NO_FATAL_FAILURE(check(row, random.chance(50))) << width;
  }
}

TEST(FaxWindow, RowsOfOneColorEndAtTheirWidth) {
  for (size_t width = 1; width <= 200; ++width) {
    ASSERT_NO_FATAL_FAILURE(check(std::string(width, 'w'), false)) << width;
    ASSERT_NO_FATAL_FAILURE(check(std::string(width, 'b'), true)) << width;
  }
}

TEST(FaxWindow, BitsOfEveryByteAreReversed) {
  for (uint64_t byte = 0; byte < 256; ++byte) {
    uint64_t expected = 0;
    for (unsigned bit = 0; bit < 8; ++bit) expected |= (byte >> bit & 1) << (7 - bit);
    EXPECT_EQ(tiff::reverseBits(byte << 24), expected << 24);
  }
}

}  // namespace
