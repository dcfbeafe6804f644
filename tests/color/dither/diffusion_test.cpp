// SPDX-License-Identifier: MIT
// Rows diffused together come out as rows diffused one after the other, at every width and height
// around the number of rows that are worked on at once.
#include <gtest/gtest.h>

#include "color/dither/dither_picture.h"
#include "color/pictures.h"
#include "support/cases.h"

namespace {

// Whether the fast road was taken; its bits must be those of the plain form then.
bool agrees(const plain::Picture &picture, int depth, const plain::Table &source,
            const plain::Table &table) {
  color::DepthChange change;
  change.bits = picture.bits;
  change.width = picture.width;
  change.height = picture.height;
  change.sourceDepth = static_cast<int16_t>(picture.depth);
  change.depth = static_cast<int16_t>(depth);
  if (source.given) change.sourceTable = source.entries;
  change.table = table.entries;
  change.count = static_cast<uint16_t>(table.count);
  plain::Bytes out(size_t{plain::lineBytes(picture.width, depth)} * picture.height, 0);
  if (!color::ditherPicture(change, out)) return false;
  EXPECT_EQ(out, plain::dither(picture, depth, source, table))
      << picture.width << " x " << picture.height << ", " << depth << " bits";
  return true;
}

TEST(Diffusion, ColorsAgreeAtEveryHeight) {
  support::Random random(41);
  for (uint32_t height = 1; height <= 20; ++height) {
    const uint32_t width = 256 / height + 1;
    const plain::Table table = pictures::table(random, 16);
    EXPECT_TRUE(agrees(pictures::picture(random, width, height, 24), 4, {}, table)) << height;
  }
}

TEST(Diffusion, ColorsAgreeAtEveryWidth) {
  support::Random random(42);
  for (uint32_t width = 1; width <= 20; ++width) {
    const plain::Table table = pictures::table(random, 200);
    EXPECT_TRUE(agrees(pictures::picture(random, width, 260, 24), 8, {}, table)) << width;
  }
}

TEST(Diffusion, GreysAgreeAtEverySize) {
  support::Random random(43);
  for (uint32_t width = 1; width <= 12; ++width) {
    for (uint32_t height = 1; height <= 9; ++height) {
      plain::Table table = pictures::table(random, 8);
      table.entries[3] = table.entries[4] = table.entries[5];
      EXPECT_TRUE(agrees(pictures::picture(random, width, height, 24), 1, {}, table))
          << width << " x " << height;
    }
  }
}

TEST(Diffusion, BilevelTablesWithoutGreysKeepThreeChannels) {
  // A grey request finds no grey and takes entry 0; its error makes colours of its neighbours.
  support::Random random(44);
  const plain::Table table = pictures::table({200, 30, 30, 20, 180, 220, 90, 90, 10});
  EXPECT_TRUE(agrees(pictures::picture(random, 40, 30, 24), 1, {}, table));
}

TEST(Diffusion, LargerPicturesOfEveryDepthAgree) {
  support::Random random(45);
  for (int sourceDepth : {1, 4, 8, 24, 32}) {
    for (int depth : {1, 4, 8}) {
      for (size_t i = 0; i < support::cases(4); ++i) {
        const plain::Picture picture = pictures::picture(random, 70, 70, sourceDepth);
        plain::Table source;
        if (sourceDepth <= 8) source = pictures::table(random, 1u << sourceDepth);
        EXPECT_TRUE(agrees(picture, depth, source, pictures::table(random, 16)));
      }
    }
  }
}

TEST(Diffusion, SmallPicturesAndLongTablesAreLeftToThePlainRoad) {
  support::Random random(46);
  EXPECT_FALSE(agrees(pictures::picture(random, 3, 3, 24), 4, {}, pictures::table(random, 16)));
  EXPECT_FALSE(agrees(pictures::picture(random, 70, 70, 24), 8, {}, pictures::table(random, 300)));
}

}  // namespace
