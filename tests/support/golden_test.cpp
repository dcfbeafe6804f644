// SPDX-License-Identifier: MIT
// The golden list itself, and that a changed file is noticed.
#include "support/golden.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <vector>

#include "support/paths.h"
#include "support/temp_dir.h"

namespace {

const std::vector<uint8_t> kHello = {'h', 'e', 'l', 'l', 'o'};

TEST(Golden, TheListIsSortedAndWellFormed) {
  std::string problem;
  EXPECT_FALSE(support::parseGolden(support::goldenText(), problem).empty());
  EXPECT_EQ(problem, "");
}

TEST(Golden, EveryGroupHasItsRecipe) {
  std::string problem;
  const std::string readme = support::readText(support::sourcePath("tests/golden/README.md"));
  for (const auto &[name, digest] : support::parseGolden(support::goldenText(), problem)) {
    const std::string heading = "\n## " + name.substr(0, name.find('/') + 1) + "\n";
    EXPECT_NE(readme.find(heading), std::string::npos) << name;
  }
}

TEST(Golden, KnowsTheBytes) {
  support::golden("support/hello", kHello);
}

TEST(Golden, NoticesChangedBytes) {
  if (getenv("RAXEL_GOLDEN_RECORD") != nullptr) GTEST_SKIP() << "recording";
  EXPECT_NONFATAL_FAILURE(support::golden("support/hello", std::vector<uint8_t>{'H'}), "not what it was");
}

TEST(Golden, NoticesAnUnlistedName) {
  if (getenv("RAXEL_GOLDEN_RECORD") != nullptr) GTEST_SKIP() << "recording";
  EXPECT_FATAL_FAILURE(support::golden("support/unlisted", std::vector<uint8_t>{}), "is not in");
}

TEST(Golden, RefusesBadLists) {
  const std::string hex(64, 'a');
  const std::vector<std::string> bad = {hex + "  b\n" + hex + "  a\n",
                                        hex + "  a\n" + hex + "  a\n",
                                        hex + " a\n",
                                        "xyz  a\n",
                                        hex + "  \n",
                                        "\n"};
  for (const std::string &list : bad) {
    std::string problem;
    support::parseGolden(list, problem);
    EXPECT_NE(problem, "") << list;
  }
  std::string problem;
  EXPECT_EQ(support::parseGolden(hex + "  a\n" + hex + "  b\n", problem).size(), 2u);
  EXPECT_EQ(problem, "");
}

}  // namespace
