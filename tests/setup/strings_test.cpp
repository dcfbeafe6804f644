// SPDX-License-Identifier: MIT
// The string table: every entry, and the bounded copies of LoadString.
#include "setup/strings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "raxel/settings.h"

namespace {

struct Row {
  int id;
  const char *text;
};

// Typed again from the host's list of profile keys.
constexpr Row kRows[] = {
    {0, "~Defaults"},
    {1, "~Mode"},
    {2, "~Header"},
    {3, "~Default Mode"},
    {4, "Driver"},
    {6, "DefaultFileSpec"},
    {7, "Font"},
    {11, "Color Mode"},
    {15, "User-Defined Patterns"},
    {5, "ColorTableSource"},
    {8, "Color"},
    {9, "FILE"},
    {10, "PROFILE"},
    {17, "Bitmap Mode"},
    {18, "Resolution Mode"},
    {19, "X Resolution"},
    {20, "Y Resolution"},
    {21, "Width"},
    {22, "Height"},
    {23, "File Type"},
    {24, "Compression Mode"},
    {13, "TIF Export"},
    {25, "Size Mode"},
    {27, "Line Mode"},
    {65535, "Not Defined"},
};

std::string load(uint32_t id, int32_t size, int32_t *result = nullptr) {
  char buffer[144];
  std::memset(buffer, '#', sizeof buffer);
  const int32_t length = LoadString(0, id, buffer, size);
  if (result != nullptr) *result = length;
  return std::string(buffer, sizeof buffer);
}

TEST(StringTable, HoldsTheseEntriesInThisOrder) {
  ASSERT_EQ(std::size(gStringTable), std::size(kRows));
  for (size_t i = 0; i < std::size(kRows); ++i) {
    EXPECT_EQ(gStringTable[i].id, kRows[i].id) << i;
    EXPECT_STREQ(gStringTable[i].text, kRows[i].text) << i;
  }
}

TEST(StringTable, EveryIdYieldsItsTextAndLength) {
  for (const Row &row : kRows) {
    int32_t length = -1;
    const std::string loaded = load(static_cast<uint32_t>(row.id), 144, &length);
    EXPECT_STREQ(loaded.c_str(), row.text);
    EXPECT_EQ(length, static_cast<int32_t>(std::strlen(row.text)));
  }
}

TEST(LoadString, UnknownIdsAreNotDefinedAndOfLengthZero) {
  for (uint32_t id : {12u, 14u, 16u, 26u, 28u, 32768u}) {
    int32_t length = -1;
    EXPECT_STREQ(load(id, 144, &length).c_str(), "Not Defined") << id;
    EXPECT_EQ(length, 0) << id;
  }
}

TEST(LoadString, IdsAreComparedInSixteenBits) {
  int32_t length = 0;
  EXPECT_STREQ(load(0x1000D, 144, &length).c_str(), "TIF Export");
  EXPECT_EQ(length, 10);
  EXPECT_STREQ(load(0xFFFFFFFF, 144, &length).c_str(), "Not Defined");
  EXPECT_EQ(length, 11) << "-1 is an entry of its own, not an unknown id";
}

TEST(LoadString, RoomForTextAndTerminatorHoldsBoth) {
  EXPECT_EQ(load(13, 11).substr(0, 12), std::string("TIF Export\0#", 12));
}

TEST(LoadString, SmallerRoomHoldsAPrefixWithoutTerminator) {
  int32_t length = 0;
  EXPECT_EQ(load(13, 10, &length).substr(0, 12), "TIF Export##");
  EXPECT_EQ(length, 10);
  EXPECT_EQ(load(13, 3, &length).substr(0, 5), "TIF##");
  EXPECT_EQ(length, 10);
  EXPECT_EQ(load(26, 4, &length).substr(0, 6), "Not ##");
  EXPECT_EQ(length, 0);
}

TEST(LoadString, NoRoomOrNoBufferCopiesNothing) {
  int32_t length = 0;
  EXPECT_EQ(load(13, 0, &length)[0], '#');
  EXPECT_EQ(length, 10);
  EXPECT_EQ(load(13, -5, &length)[0], '#');
  EXPECT_EQ(length, 10);
  EXPECT_EQ(LoadString(0, 13, nullptr, 144), 10);
}

TEST(KeyNames, TheLayoutKeyGoesByTheNameNotDefined) {
  EXPECT_STREQ(setup::keyName(setup::Key::Layout), "Not Defined");
  EXPECT_STREQ(setup::keyName(setup::Key::CompressionMode), "Compression Mode");
}

}  // namespace
