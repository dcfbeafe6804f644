// SPDX-License-Identifier: MIT
// How many cores each of several processes codes on.
#include "command/cores.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <cstdlib>

namespace {

using host::coresEach;

TEST(Cores, AreSharedByTheProcesses) {
  EXPECT_EQ(coresEach(8, 0, 2, 0), 4u);
  EXPECT_EQ(coresEach(8, 0, 3, 0), 2u);
  EXPECT_EQ(coresEach(2, 0, 8, 0), 1u);
  EXPECT_EQ(coresEach(0, 0, 1, 0), 1u);  // a machine that does not tell
}

TEST(Cores, AreAtMostWhatWasAskedFor) {
  EXPECT_EQ(coresEach(8, 3, 1, 0), 3u);
  EXPECT_EQ(coresEach(8, 4, 2, 0), 2u);
  EXPECT_EQ(coresEach(8, 1, 4, 0), 1u);
}

TEST(Cores, StayBelowWhatTheEnvironmentAllows) {
  EXPECT_EQ(coresEach(8, 0, 2, 3), 3u);
  EXPECT_EQ(coresEach(8, 2, 1, 3), 2u);
}

TEST(Cores, AreToldThroughTheEnvironment) {
  unsetenv("RAXEL_THREADS");
  host::shareCores(0, 1);
  EXPECT_EQ(std::getenv("RAXEL_THREADS"), nullptr);  // the filter finds out by itself
  host::shareCores(3, 1);
  EXPECT_STREQ(std::getenv("RAXEL_THREADS"), "3");
  host::shareCores(0, 256);
  EXPECT_STREQ(std::getenv("RAXEL_THREADS"), "1");
  setenv("RAXEL_THREADS", "many", 1);
  host::shareCores(5, 1);
  EXPECT_STREQ(std::getenv("RAXEL_THREADS"), "5");
  unsetenv("RAXEL_THREADS");
}

TEST(Cores, AreThoseThatTheProcessMayUse) {
  cpu_set_t before, one;
  ASSERT_EQ(sched_getaffinity(0, sizeof before, &before), 0);
  EXPECT_EQ(host::usableCores(), static_cast<unsigned>(CPU_COUNT(&before)));
  CPU_ZERO(&one);
  for (size_t core = 0; CPU_COUNT(&one) == 0; ++core) {
    if (CPU_ISSET(core, &before)) CPU_SET(core, &one);
  }
  ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
  EXPECT_EQ(host::usableCores(), 1u);
  ASSERT_EQ(sched_setaffinity(0, sizeof before, &before), 0);
}

}  // namespace
