// SPDX-License-Identifier: MIT
// A picture's table and indices are the same on every machine: digests of both, which one machine wrote
// down and all must find again.
#include <gtest/gtest.h>

#include "host/pictures.h"
#include "prepare/clusters.h"
#include "prepare/diffuse.h"
#include "prepare/nearest.h"
#include "support/random.h"
#include "support/sha256.h"

using host_test::TestPicture;
using prepare::Color;

namespace {

// Slopes of all colours with noise over them.
void fill(TestPicture &picture, uint64_t seed, int64_t noise) {
  support::Random random(seed);
  const uint32_t w = picture.view.width, h = picture.view.height;
  for (uint32_t y = 0; y < h; ++y) {
    for (uint32_t x = 0; x < w; ++x) {
      const int64_t channels[] = {x * 255 / w, y * 255 / h, (x * y) * 255 / (w * h)};
      for (uint32_t c = 0; c < 3; ++c) {
        picture.row(y)[3 * x + c] =
            static_cast<uint8_t>(std::clamp<int64_t>(channels[c] + random.between(-noise, noise), 0, 255));
      }
    }
  }
}

std::string digest(const TestPicture &picture, uint32_t most, bool dither) {
  const prepare::Source source(picture.view, RAXEL_TREAT_NONE, nullptr);
  const std::vector<Color> table = prepare::chooseColors(prepare::histogramOf(source), most);
  std::vector<uint8_t> bytes;
  for (const Color &c : table) bytes.insert(bytes.end(), c.begin(), c.end());
  const size_t first = bytes.size();
  bytes.resize(first + size_t{source.width()} * source.height());
  if (dither) {
    prepare::diffuse(source, table, bytes.data() + first);
  } else {
    prepare::NearestColor nearest(table);
    for (uint32_t y = 0; y < source.height(); ++y) {
      nearest.findRow({source.row(y), size_t{source.width()} * 3},
                      bytes.data() + first + size_t{source.width()} * y);
    }
  }
  return support::sha256(bytes).substr(0, 16);
}

TEST(Quantize, GivesTheSameOnEveryMachine) {
  TestPicture noisy(80, 60, 24), smooth(80, 60, 24);
  fill(noisy, 51, 40);
  fill(smooth, 52, 2);
  EXPECT_EQ(digest(noisy, 256, false), "bec210e366d5d060");
  EXPECT_EQ(digest(noisy, 256, true), "0a3fee731ecb7f7a");
  EXPECT_EQ(digest(noisy, 16, false), "07e4ba66542ab259");
  EXPECT_EQ(digest(noisy, 16, true), "4db7415a61f6c4b8");
  EXPECT_EQ(digest(smooth, 256, false), "071ff80fa4ae875a");
  EXPECT_EQ(digest(smooth, 16, true), "bb104832542a3439");
}

}  // namespace
