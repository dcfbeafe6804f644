// SPDX-License-Identifier: MIT
// Profiles of any bytes and escapes of any kind: no name without its end, no code made up.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "raxel/memory.h"
#include "support/cases.h"
#include "support/globals.h"
#include "support/random.h"
#include "support/temp_dir.h"

namespace {

using support::Random;

std::string noise(Random &random, int64_t longest) {
  const auto bytes = random.bytes(static_cast<size_t>(random.between(0, longest)));
  return std::string(bytes.begin(), bytes.end());
}

// Pieces that a profile is made of, in any order, with noise and line ends of every kind between.
std::string profile(Random &random) {
  static const char *const kPieces[] = {"[MODE]",
                                        "[RAXEL]",
                                        "~Mode=MODE",
                                        "Driver=RAXEL.1",
                                        "Driver=",
                                        "Color Mode=",
                                        "Bitmap Mode=",
                                        "Width=",
                                        "Height=",
                                        "X Resolution=",
                                        "Not Defined=",
                                        "Size Mode=",
                                        "\"",
                                        ";",
                                        "[",
                                        "]",
                                        "=",
                                        "0x7FFFFFFF",
                                        "4294967295",
                                        "99999999",
                                        "Resolution Mode=",
                                        "Y Resolution=",
                                        "104",
                                        "1e400",
                                        "-3",
                                        "nan",
                                        "8",
                                        "Compression Mode=227"};
  static const char *const kEnds[] = {"\n", "\r\n", "\r", "\n\n", ""};
  std::string text;
  for (int64_t i = random.between(0, 60); i > 0; --i) {
    text += random.chance(10) ? noise(random, 400) : kPieces[random.next() % std::size(kPieces)];
    text += kEnds[random.next() % std::size(kEnds)];
  }
  return text;
}

bool isTerminated(const char *text, size_t room) {
  return std::memchr(text, 0, room) != nullptr;
}

void expectWholeNames(const RasterSetup &record) {
  EXPECT_TRUE(isTerminated(record.szAppName, sizeof record.szAppName));
  EXPECT_TRUE(isTerminated(record.szModeName, sizeof record.szModeName));
  EXPECT_TRUE(isTerminated(record.szProfilePath, sizeof record.szProfilePath));
  EXPECT_TRUE(isTerminated(record.szDriverName, sizeof record.szDriverName));
}

// One escape with a value that is near its range half of the time.
void randomEscape(Random &random, Handle setup) {
  alignas(8) uint8_t input[32];
  alignas(8) uint8_t output[32];
  std::memset(output, 0xC3, sizeof output);
  const auto bytes = random.bytes(sizeof input);
  std::memcpy(input, bytes.data(), sizeof input);
  if (random.chance(50)) {
    const auto code = static_cast<int32_t>(random.between(0, 420));
    std::memcpy(input, &code, sizeof code);
  } else if (random.chance(50)) {
    const double inches = static_cast<double>(random.between(-10, 250)) / 10;
    std::memcpy(input, &inches, sizeof inches);
  }
  const auto number = static_cast<int32_t>(random.between(-2, 84));
  const auto size = static_cast<int32_t>(random.chance(80) ? (number == 13 || number == 14 ? 8 : 4)
                                                           : random.between(-1, 16));
  if (number == 81) return;  // its input is called later on
  xEscapeSetup(setup, number, size, random.chance(95) ? input : nullptr,
               random.chance(95) ? output : nullptr, random.chance(3) ? 1 : 0);
  EXPECT_EQ(output[31], 0xC3);
}

TEST(RandomSetups, KeepTheirNamesWhole) {
  const support::Globals globals;
  const support::TempDir folder;
  const std::string path = folder.file("any.ini");
  Random random(2026);
  for (size_t i = support::cases(150); i > 0; --i) {
    support::writeFile(path, random.chance(20) ? noise(random, 3000) : profile(random));
    const std::string mode = random.chance(50) ? "MODE" : noise(random, 200);
    const Handle setup = CreateSetup(0, path.c_str(), mode.c_str(), noise(random, 200).c_str());
    ASSERT_NE(setup, 0u);
    auto &record = *static_cast<RasterSetup *>(GlobalLock(setup));
    expectWholeNames(record);
    for (int64_t n = random.between(0, 20); n > 0; --n) randomEscape(random, setup);
    expectWholeNames(record);
    LoadProfile(1);
    LimitCheck();
    EXPECT_GE(record.tiff.nXResolution, 32);
    EXPECT_LE(record.tiff.nXResolution, 400);
    EXPECT_EQ(DestroySetup(setup), 0);
  }
}

}  // namespace
