// SPDX-License-Identifier: MIT
// Profiles after many settings have been written into them: the same bytes on every machine.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "raxel/profile.h"
#include "support/environment.h"
#include "support/golden.h"
#include "support/random.h"
#include "support/temp_dir.h"

namespace {

using support::Random;

constexpr std::array<const char *, 5> kSections{"raster", "TIFF", "[Export]", "colour modes", "a"};
constexpr std::array<const char *, 7> kKeys{"Bitmap Mode", "Compression", "k", "K", "dWidth", "Name ", "x"};
constexpr std::array<const char *, 6> kValues{
    "103", "", "6.67", "long value, with = and ; in it", " spaced ", "\xE9\xFF"};

template <size_t N>
const char *oneOf(Random &random, const std::array<const char *, N> &of) {
  return of[static_cast<size_t>(random.between(0, static_cast<int64_t>(N) - 1))];
}

// Lines as users and editors leave them, with either ending.
std::string profileOf(Random &random) {
  std::string out;
  const std::string end = random.chance(50) ? "\r\n" : "\n";
  for (int64_t lines = random.between(0, 40); lines > 0; --lines) {
    switch (random.between(0, 5)) {
      case 0: {
        const std::string name = oneOf(random, kSections);
        out += name.front() == '[' ? name : "[" + name + "]";
        break;
      }
      case 1:
        out += "; a comment = of a user";
        break;
      case 2:
        break;
      default:
        out += oneOf(random, kKeys);
        out += random.chance(20) ? " = " : "=";
        out += oneOf(random, kValues);
        if (random.chance(20)) out += " ; said behind it";
    }
    out += end;
  }
  return out;
}

TEST(GoldenProfile, RewritingGivesTheSameOnEveryMachine) {
  const support::TempDir folder;
  const support::Environment noFolder{"INIDIR", nullptr};
  const std::string path = folder.file("p.ini");
  for (uint64_t seed = 1; seed <= 20; ++seed) {
    Random random(seed);
    support::writeFile(path, profileOf(random));
    for (int i = 0; i < 40; ++i) {
      const char *section = oneOf(random, kSections);
      const char *key = random.chance(5) ? nullptr : oneOf(random, kKeys);
      const char *value = random.chance(20) ? nullptr : oneOf(random, kValues);
      EXPECT_EQ(WritePrivateProfileString(section, key, value, path.c_str()), 0);
    }
    support::golden("runtime/profile-" + std::to_string(seed), support::readFile(path));
  }
}

}  // namespace
