// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <iterator>

#include "raxel/host.h"

TEST(HostNames, EveryModeIsFoundByItsNameAndHasItsEscapeValue) {
  const char *names[] = {"bilevel", "grey16", "grey256", "color8", "color16", "color256", "rgb"};
  static_assert(std::size(names) == RAXEL_MODES);
  for (int mode = 0; mode < RAXEL_MODES; ++mode) {
    EXPECT_STREQ(raxelHostModeName(mode), names[mode]);
    EXPECT_EQ(raxelHostFindMode(names[mode]), mode);
    // Eight colours go out as sixteen.
    EXPECT_EQ(raxelHostModeValue(mode),
              mode == RAXEL_MODE_COLOR8 ? int32_t{RAXEL_ASK_MODE_COLOR16} : RAXEL_ASK_MODE_BILEVEL + mode);
  }
}

TEST(HostNames, EveryCompressionIsFoundByItsNameAndHasItsEscapeValue) {
  const char *names[] = {"none", "packbits", "huffman", "lzw", "t4", "t6"};
  static_assert(std::size(names) == RAXEL_COMPRESSIONS);
  for (int code = 0; code < RAXEL_COMPRESSIONS; ++code) {
    EXPECT_STREQ(raxelHostCompressionName(code), names[code]);
    EXPECT_EQ(raxelHostFindCompression(names[code]), code);
    EXPECT_EQ(raxelHostCompressionValue(code), RAXEL_ASK_COMPRESS_NONE + code);
  }
}

TEST(HostNames, KnowsTheFieldsOtherNamesInAnyCase) {
  EXPECT_EQ(raxelHostFindCompression("g3"), RAXEL_COMPRESS_T4);
  for (const char *name : {"g4", "G4", "fax", "group4", "ccittfax4", "CCITTFax4"}) {
    EXPECT_EQ(raxelHostFindCompression(name), RAXEL_COMPRESS_T6) << name;
  }
  EXPECT_EQ(raxelHostFindCompression("mh"), RAXEL_COMPRESS_HUFFMAN);
  EXPECT_EQ(raxelHostFindMode("Gray"), RAXEL_MODE_GREY256);
}

TEST(HostNames, RefusesWhatItDoesNotKnow) {
  EXPECT_EQ(raxelHostFindMode("sepia"), -1);
  EXPECT_EQ(raxelHostFindMode(""), -1);
  EXPECT_EQ(raxelHostFindMode(nullptr), -1);
  EXPECT_EQ(raxelHostFindCompression("zip"), -1);
  EXPECT_EQ(raxelHostModeName(-1), nullptr);
  EXPECT_EQ(raxelHostModeName(RAXEL_MODES), nullptr);
  EXPECT_EQ(raxelHostModeValue(99), -1);
  EXPECT_EQ(raxelHostCompressionValue(-5), -1);
}

TEST(HostNames, ListsOtherNamesToTheLast) {
  EXPECT_STREQ(raxelHostModeAlias(RAXEL_MODE_BILEVEL, 0), "mono");
  EXPECT_EQ(raxelHostCompressionAlias(RAXEL_COMPRESS_LZW, 0), nullptr);
  EXPECT_EQ(raxelHostCompressionAlias(RAXEL_COMPRESS_T6, -1), nullptr);
  EXPECT_EQ(raxelHostCompressionAlias(RAXEL_COMPRESS_T6, 1000), nullptr);
}

TEST(HostNames, EveryCodeAndNoteHasASentence) {
  for (int code = 0; code < RAXEL_HOST_CODES; ++code) EXPECT_GT(std::strlen(raxelHostMessage(code)), 3u);
  for (uint32_t i = 0; i < RAXEL_NOTES; ++i) EXPECT_STRNE(raxelHostNote(1u << i), "unknown note");
  EXPECT_STREQ(raxelHostMessage(-1), "unknown code");
  EXPECT_STREQ(raxelHostMessage(RAXEL_HOST_CODES), "unknown code");
  EXPECT_STREQ(raxelHostNote(3), "unknown note");
}
