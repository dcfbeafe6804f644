// SPDX-License-Identifier: MIT
// Sizes, depths and blocks that do not belong together: nothing outside a block is touched, nothing
// hangs, and what comes back has the size that was asked for.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "color/bitmap.h"
#include "raxel/color.h"
#include "raxel/memory.h"
#include "runtime/blocks.h"
#include "support/cases.h"
#include "support/page_end.h"
#include "support/random.h"

namespace {

constexpr uint32_t kSides[] = {0,     1,     2,     3,     7,       8,          9,          31,        70,
                               32767, 32768, 65535, 65536, 1 << 20, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
constexpr int16_t kAnyDepths[] = {1, 4, 8, 24, 32, 1, 4, 8, 24, 32, 0, -1, 2, 7, 16, 31, 33, 32767, -32768};

// Larger results are legal but slow to fill.
constexpr uint64_t kLargest = 1 << 17;

template <class T, size_t n>
T pick(support::Random &random, const T (&values)[n]) {
  return values[random.between(0, static_cast<int64_t>(n) - 1)];
}

// Memory of exactly so many bytes, so that a checking build sees the first one past it.
class Exactly {
 public:
  explicit Exactly(std::vector<uint8_t> bytes)
      : bytes_(std::move(bytes)),
        handle_(GlobalPointerToHandle(bytes_.data(), static_cast<uint32_t>(bytes_.size()))) {}
  ~Exactly() { GlobalFree(handle_); }
  Exactly(const Exactly &) = delete;
  Exactly &operator=(const Exactly &) = delete;
  Handle handle() const { return handle_; }

 private:
  std::vector<uint8_t> bytes_;
  Handle handle_;
};

struct Picture {
  Exactly bits;
  uint32_t width;
  uint32_t height;
  int16_t depth;
};

Picture anyPicture(support::Random &random) {
  const auto size = static_cast<size_t>(random.between(1, random.chance(10) ? 5000 : 70));
  return {Exactly(random.bytes(size)), pick(random, kSides), pick(random, kSides),
          pick(random, kAnyDepths)};
}

TEST(BadSizes, AreScaled) {
  support::Random random(301);
  for (size_t n = 0; n < support::cases(3000); ++n) {
    const Picture picture = anyPicture(random);
    const uint32_t width = pick(random, kSides);
    const uint32_t height = pick(random, kSides);
    const uint64_t size = color::bitmapSize(width, height, picture.depth);
    if (size > kLargest && runtime::fitsInBlock(size)) continue;
    const runtime::Block scaled(rlStretchBitmap(picture.bits.handle(), picture.depth, picture.width,
                                                picture.height, width, height));
    ASSERT_EQ(static_cast<bool>(scaled), size <= kLargest);
    ASSERT_EQ(scaled.bytes().size(), size <= kLargest ? size : 0);
  }
}

TEST(BadSizes, AreMirrored) {
  support::Random random(302);
  for (size_t n = 0; n < support::cases(3000); ++n) {
    const Picture picture = anyPicture(random);
    const auto leftRight = static_cast<uint16_t>(random.between(0, 1));
    const auto topBottom = static_cast<uint16_t>(random.between(0, 1));
    ASSERT_EQ(rlFlipBitmap(picture.bits.handle(), picture.depth, picture.width, picture.height, leftRight,
                           topBottom),
              picture.bits.handle());
  }
}

TEST(BadSizes, AreReduced) {
  support::Random random(304);
  for (size_t n = 0; n < support::cases(600); ++n) {
    const Picture picture = anyPicture(random);
    const auto wanted = static_cast<uint16_t>(random.chance(10) ? random.next() : random.next() % 64);
    uint16_t count = wanted;
    const runtime::Block table(rlReduceColorTable(picture.bits.handle(), picture.width,
                                                  static_cast<int16_t>(picture.height), &count));
    ASSERT_EQ(table.bytes().size(), wanted * 3u);
    ASSERT_LE(count, wanted);
  }
}

TEST(GoodSizes, EndWhereTheirMemoryDoes) {
  // Wide enough for every way in which rows move and pixels are counted.
  support::Random random(306);
  for (const int16_t depth : {int16_t{1}, int16_t{4}, int16_t{8}, int16_t{24}, int16_t{32}}) {
    for (const uint32_t width : {31u, 32u, 100u, 1024u}) {
      const uint32_t height = depth == 24 && width == 1024 ? 200 : 20;
      const support::PageEnd bits(random.bytes(rlCalcNewSize(width, height, depth)));
      for (const uint32_t percent : {45u, 60u, 99u, 100u, 110u, 290u}) {
        const uint32_t to = width * percent / 100;
        // As many rows and more of them: both take the last one too.
        const runtime::Block copied(rlShrinkBitmap(bits.handle(), depth, width, height, to, height));
        const runtime::Block taller(rlShrinkBitmap(bits.handle(), depth, width, height, to, height + 3));
        ASSERT_TRUE(copied && taller);
      }
      rlFlipBitmap(bits.handle(), depth, width, height, 1, 1);
      uint16_t count = 8;
      const runtime::Block table(rlReduceColorTable(
          bits.handle(), width * static_cast<uint32_t>(depth) / 24, static_cast<int16_t>(height), &count));
      rlALPHAtoRGB(bits.handle(), width, height);
    }
  }
}

TEST(BadSizes, OfFourBytePixelsStopAtTheBlock) {
  support::Random random(304);
  for (size_t n = 0; n < support::cases(2000); ++n) {
    const Picture picture = anyPicture(random);
    rlRGB4toCMYK(picture.bits.handle(), picture.width, picture.height);
    rlCMYKtoRGB(picture.bits.handle(), picture.width, picture.height);
    rlALPHAtoRGB(picture.bits.handle(), picture.width, picture.height);
  }
}

TEST(BadSizes, AreScaledAndMirroredWhilePlacesArePrinted) {
  support::Random random(305);
  _debug_color_res = 4;
  testing::internal::CaptureStderr();
  for (size_t n = 0; n < support::cases(300); ++n) {
    const Picture picture = anyPicture(random);
    const uint32_t sides[] = {0, 1, 2, 7, 9};
    const runtime::Block scaled(rlShrinkBitmap(picture.bits.handle(), picture.depth, picture.width,
                                               picture.height, pick(random, sides), pick(random, sides)));
    // Rows without bytes do not end with the block: all their places are printed, however many.
    if (picture.depth < 1 && uint64_t{picture.width} * picture.height > kLargest) continue;
    rlFlipBitmap(picture.bits.handle(), picture.depth, picture.width, picture.height, 1, 1);
  }
  _debug_color_res = 0;
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
