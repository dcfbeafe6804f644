// SPDX-License-Identifier: MIT
#include "prepare/swap.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/random.h"

TEST(HostSwap, ExchangesTheFirstAndThirdByte) {
  const std::vector<uint8_t> in{1, 2, 3, 4, 5, 6};
  std::vector<uint8_t> out(6);
  prepare::swapRedBluePlain(in.data(), out.data(), 2);
  EXPECT_EQ(out, (std::vector<uint8_t>{3, 2, 1, 6, 5, 4}));
}

TEST(HostSwap, VectorAndPlainCodeAgreeAtEveryLengthAndTouchNothingElse) {
  support::Random random(2);
  const std::vector<uint8_t> in = random.bytes(3 * 200 + 1);
  for (size_t pixels = 0; pixels <= 200; ++pixels) {
    std::vector<uint8_t> fast(3 * pixels + 1, 0xEE), plain(3 * pixels + 1, 0xEE);
    // An input of its own size, so that a read beyond it is seen by the sanitizer.
    const std::vector<uint8_t> row(in.begin() + 1, in.begin() + 1 + static_cast<ptrdiff_t>(3 * pixels));
    prepare::swapRedBlue(row.data(), fast.data(), pixels);
    prepare::swapRedBluePlain(row.data(), plain.data(), pixels);
    ASSERT_EQ(fast, plain) << pixels;
    ASSERT_EQ(fast.back(), 0xEE);
  }
}
