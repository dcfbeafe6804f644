// SPDX-License-Identifier: MIT
// Arguments that no host should send: every call answers with one of its codes and stays inside the
// blocks that it was given. The address sanitizer is the judge.
#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/random.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::InUse;
using support::Pixels;

uint32_t anySize(support::Random &random) {
  const uint32_t sizes[] = {0,   1,   2,   3,   4,   5,   7,    8,     9,         64,
                            127, 128, 129, 511, 512, 513, 4095, 65535, 0xFFFFFFFF};
  return sizes[random.between(0, 18)];
}

uint16_t anyDepth(support::Random &random) {
  const uint16_t depths[] = {0, 1, 1, 1, 2, 4, 4, 8, 8, 16, 24, 24, 32, 65535};
  return depths[random.between(0, 13)];
}

TEST(HostileArguments, EveryCallStaysInsideItsBlocks) {
  support::Random random(21);
  for (size_t n = support::cases(800); n > 0; --n) {
    InUse use(
        static_cast<int32_t>(random.between(RAXEL_STORED_MODE_BILEVEL - 1, RAXEL_STORED_MODE_RGB + 1)),
        static_cast<int32_t>(random.between(RAXEL_STORED_COMPRESS_NONE - 1, RAXEL_STORED_COMPRESS_T6 + 1)),
        random.chance(40) ? RAXEL_STORED_LAYOUT_TILES : RAXEL_STORED_LAYOUT_STRIPS);
    // What an earlier picture left behind.
    use.setup.tiff.nColors = static_cast<uint32_t>(random.between(0, 300));
    use.setup.tiff.nBitsPerSample = static_cast<uint32_t>(random.between(0, 9));
    use.setup.tiff.nPhotometric = static_cast<uint32_t>(random.between(0, 4));
    support::HostOutput out;
    out.host.limitTo(1 << 16);
    const Bytes palette(768);
    Handle descriptor = 0;
    const uint16_t depth = anyDepth(random);
    // A directory has 4 bytes for each tile: keep their number small.
    const uint32_t width = anySize(random) % 70000;
    const uint32_t height = anySize(random) % 5000;
    ASSERT_EQ(BeginCellBitmap(out.file, width, height, depth, random.chance(80) ? palette.data() : nullptr,
                              &descriptor),
              -1);
    for (int band = 0; band < 2; ++band) {
      const uint32_t bandWidth = random.chance(50) ? width : anySize(random);
      const uint32_t rows = random.chance(50) ? height : anySize(random);
      const uint16_t bandDepth = random.chance(70) ? depth : anyDepth(random);
      const uint64_t size = (uint64_t{bandWidth} * bandDepth + 31) / 32 * 4 * rows;
      if (size > 4000000 && size <= 0xFFFFFFFF) continue;  // defined, but not worth the time
      const auto held =
          static_cast<size_t>(random.between(0, static_cast<int64_t>(size < 100000 ? size + 4 : 1000)));
      const Pixels block(random.bytes(held));
      const int32_t code =
          WriteCellBits(out.file, block.handle(), bandWidth, rows, bandDepth, 1, descriptor);
      ASSERT_TRUE(code == 0 || code == RAXEL_NO_MEMORY || code == RAXEL_CANNOT_WRITE) << code;
    }
    EndCellBitmap(out.file, descriptor);
  }
}

}  // namespace
