// SPDX-License-Identifier: MIT
#include "support/capture.h"

#include <gtest/gtest.h>

namespace {

TEST(Capture, TakesBothStreamsApart) {
  support::Capture out(1);
  support::Capture err(2);
  std::printf("to output");
  std::fprintf(stderr, "to error");
  EXPECT_EQ(err.text(), "to error");
  EXPECT_EQ(out.text(), "to output");
  EXPECT_EQ(out.text(), "to output");
}

}  // namespace
