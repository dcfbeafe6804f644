// SPDX-License-Identifier: MIT
#include "pictures/jpeg_segments.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;
using Seen = std::vector<std::pair<int, Bytes>>;

Seen segmentsOf(const Bytes &file) {
  Seen seen;
  host::eachJpegSegment(file, [&](uint8_t marker, std::span<const uint8_t> body) {
    seen.emplace_back(marker, Bytes(body.begin(), body.end()));
  });
  return seen;
}

}  // namespace

TEST(JpegSegments, EndAtTheFirstScan) {
  EXPECT_EQ(segmentsOf({0xFF, 0xD8, 0xFF, 0xE1, 0, 4,    7,    8, 0xFF, 0xFE, 0, 2,
                        0xFF, 0xDA, 0,    3,    1, 0xFF, 0xE1, 0, 2,    0,    0}),
            (Seen{{0xE1, {7, 8}}, {0xFE, {}}}));
  EXPECT_EQ(segmentsOf({0xFF, 0xD8, 0xFF, 0xD9, 0xFF, 0xE1, 0, 2}), Seen{});
}

// Fill bytes, bytes that belong to nothing, and markers without a length.
TEST(JpegSegments, PassOverWhatBelongsToNone) {
  EXPECT_EQ(segmentsOf({0xFF, 0xD8, 0xFF, 0xFF, 0xFF, 0xE1, 0,    3,    9, 5, 6,
                        0xFF, 0,    0xFF, 0xD3, 0xFF, 1,    0xFF, 0xE2, 0, 3, 4}),
            (Seen{{0xE1, {9}}, {0xE2, {4}}}));
}

TEST(JpegSegments, TrustNoLength) {
  EXPECT_EQ(segmentsOf({0xFF, 0xD8, 0xFF, 0xE1, 0, 4, 7}), (Seen{{0xE1, {}}}));
  EXPECT_EQ(segmentsOf({0xFF, 0xD8, 0xFF, 0xE1, 0, 1, 7, 0xFF, 0xE2, 0, 2}), Seen{});
  for (size_t length = 0; length < 4; ++length)
    EXPECT_EQ(segmentsOf(Bytes(length, uint8_t{0xFF})), Seen{}) << length;
}
