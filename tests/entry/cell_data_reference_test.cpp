// SPDX-License-Identifier: MIT
// Palettes and bands of cell data against the steps that make them, put together from the colour
// library's plain forms: choose a palette, shrink, change the depth, stretch.
#include <gtest/gtest.h>

#include "color/pictures.h"
#include "color/reference/plain_resolution.h"
#include "color/reference/reduce.h"
#include "color/reference/scale.h"
#include "entry/open_cell.h"
#include "support/cases.h"

namespace {

using plain::Bytes;

struct Output {
  int depth;
  uint32_t width;
  uint32_t height;
};

struct Case {
  plain::Picture picture;
  plain::Table palette;
  Output output;
};

// What an open leaves: the record's palette with its entries that count, and the cache's copy.
struct Opened {
  uint32_t colors = 0;
  Bytes palette;
  plain::Table cached;
};

// A block that is too short reads as if zeros followed.
plain::Picture whole(plain::Picture picture) {
  picture.bits.resize(size_t{plain::lineBytes(picture.width, picture.depth)} * picture.height);
  return picture;
}

Opened open(const Case &c) {
  Opened out;
  if (c.output.depth > 8) return out;
  out.colors = 1u << c.output.depth;
  out.palette.assign(size_t{3} * out.colors, 0);
  if (c.output.depth >= c.picture.depth) {
    if (!c.palette.given) return out;
    out.colors = 1u << c.picture.depth;
    const size_t known = std::min(c.palette.entries.size(), size_t{3} * out.colors);
    std::copy_n(c.palette.entries.begin(), known, out.palette.begin());
  } else if (c.picture.depth == 24 && c.output.depth == 8) {
    out.palette = reference::reduce(whole(c.picture).bits, c.picture.width, c.picture.height, 256).table;
  } else {
    // For 1 bit the palette has all eight greys, of which two count.
    out.palette = plain::chosenTable(c.picture, c.output.depth, c.palette).entries;
  }
  out.cached = {true, out.palette, out.colors};
  return out;
}

Bytes scale(const plain::Picture &picture, uint32_t width, uint32_t height) {
  return reference::scale(picture.bits, picture.depth, picture.width, picture.height, width, height);
}

Bytes band(const Case &c, const plain::Table &cached) {
  const Output &to = c.output;
  plain::Picture now = whole(c.picture);
  if (to.width < now.width || to.height < now.height) {
    now = {scale(now, to.width, to.height), to.width, to.height, now.depth};
  }
  if (to.depth != now.depth) {
    now.bits = to.depth < 8 && to.depth < now.depth ? plain::dither(now, to.depth, c.palette, cached)
                                                    : plain::convert(now, to.depth, c.palette, cached);
    now.depth = to.depth;
  }
  if (to.width > c.picture.width || to.height > c.picture.height) {
    // The sizes are the source's, whatever the block has become.
    const plain::Picture sheared = {now.bits, c.picture.width, c.picture.height, to.depth};
    now.bits = scale(whole(sheared), to.width, to.height);
  }
  return now.bits;
}

// A side of the output: as long as the source's, shorter or longer.
uint32_t sideFor(support::Random &random, uint32_t source) {
  if (random.chance(30)) return source;
  return static_cast<uint32_t>(random.chance(50) ? random.between(1, source) : random.between(source, 80));
}

Case randomCase(support::Random &random, int sourceDepth, int depth) {
  const uint32_t width = pictures::side(random);
  const uint32_t height = pictures::side(random);
  Case c{pictures::picture(random, width, height, sourceDepth),
         {},
         {depth, sideFor(random, width), sideFor(random, height)}};
  if (random.chance(10)) c.picture.bits.resize(static_cast<size_t>(random.between(0, 60)));
  if (random.chance(sourceDepth <= 8 ? 90 : 10)) {
    c.palette = pictures::table(random, static_cast<uint32_t>(1) << std::min(sourceDepth, 8));
    if (random.chance(20)) c.palette.entries.resize(static_cast<size_t>(random.between(1, 900)));
  }
  return c;
}

void compare(const Case &c) {
  const Opened opened = open(c);
  entry_test::Picture host(static_cast<uint16_t>(c.picture.depth), 1, {}, c.palette.entries);
  PictureRecord &record = host.record();
  record.nWidth = static_cast<uint16_t>(c.picture.width);
  record.nHeight = static_cast<uint16_t>(c.picture.height);
  GlobalFree(record.hBits);
  record.hBits = entry_test::blockOf(c.picture.bits);

  entry_test::Cell cell(host, static_cast<uint16_t>(c.output.depth), c.output.width, c.output.height);
  ASSERT_EQ(cell.record().nColors, opened.colors);
  ASSERT_EQ(cell.palette(), opened.palette);
  ASSERT_EQ(pictures::bytesOf(cell.cached(BANDCACHE_PALETTE)), opened.cached.entries);
  ASSERT_EQ(pictures::bytesOf(cell.band()), band(c, opened.cached));
  ASSERT_EQ(host.pixels(), c.picture.bits) << "the host's block stays as it is";

  // The step in the middle by itself, with the same tables.
  const plain::Picture picture = whole(c.picture);
  const runtime::Block palette = pictures::block(c.palette);
  const runtime::Block cached = pictures::block(opened.cached);
  const runtime::Block changed(CellDataDepth(record.hBits, picture.width, picture.height,
                                             static_cast<int16_t>(picture.depth),
                                             static_cast<int16_t>(c.output.depth), palette.handle(),
                                             cached.handle(), static_cast<uint16_t>(opened.cached.count)));
  const bool dithers = c.output.depth < 8 && c.output.depth < picture.depth;
  ASSERT_EQ(pictures::bytesOf(changed.handle()),
            dithers ? plain::dither(picture, c.output.depth, c.palette, opened.cached)
                    : plain::convert(picture, c.output.depth, c.palette, opened.cached));
}

void compareFrom(int sourceDepth, size_t n) {
  for (const int depth : {1, 4, 8, 24}) {
    support::Random random(static_cast<uint64_t>(21000 + 100 * sourceDepth + depth));
    for (size_t i = 0; i < n; ++i) {
      const Case c = randomCase(random, sourceDepth, depth);
      compare(c);
      ASSERT_FALSE(testing::Test::HasFatalFailure())
          << "case " << i << ", " << sourceDepth << " to " << depth << " bits, " << c.picture.width << " x "
          << c.picture.height << " to " << c.output.width << " x " << c.output.height;
    }
  }
}

TEST(CellDataReference, AgreesFrom1Bit) {
  compareFrom(1, support::cases(100));
}

TEST(CellDataReference, AgreesFrom4Bits) {
  compareFrom(4, support::cases(100));
}

TEST(CellDataReference, AgreesFrom8Bits) {
  compareFrom(8, support::cases(100));
}

TEST(CellDataReference, AgreesFrom24Bits) {
  compareFrom(24, support::cases(100));
}

TEST(CellDataReference, AgreesFrom32Bits) {
  compareFrom(32, support::cases(100));
}

}  // namespace
