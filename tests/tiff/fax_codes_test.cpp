// SPDX-License-Identifier: MIT
// The fax code tables, entry by entry against a copy typed separately.
#include "tiff/fax_codes.h"

#include <gtest/gtest.h>

#include <string>

#include "raxel/tiff.h"
#include "tiff/fax_code_list.h"

namespace {

std::string bitsOf(const FaxCode &entry) {
  std::string bits;
  for (uint32_t i = 0; i < entry.length; ++i) bits += (entry.code >> (15 - i) & 1) != 0 ? '1' : '0';
  return bits;
}

TEST(FaxCodes, TerminatingCodesStandAtTheirRuns) {
  for (size_t run = 0; run < 64; ++run) {
    EXPECT_EQ(bitsOf(white[run]), reference::kWhiteShort[run]) << run;
    EXPECT_EQ(bitsOf(black[run]), reference::kBlackShort[run]) << run;
  }
}

TEST(FaxCodes, MakeUpCodesStandAt63PlusRunBy64) {
  for (size_t run = 64; run <= 1728; run += 64) {
    EXPECT_EQ(bitsOf(white[63 + run / 64]), reference::kWhiteLong[run / 64 - 1]) << run;
    EXPECT_EQ(bitsOf(black[63 + run / 64]), reference::kBlackLong[run / 64 - 1]) << run;
  }
  for (size_t run = 1792; run <= 2560; run += 64) {
    EXPECT_EQ(bitsOf(white[63 + run / 64]), reference::kExtended[(run - 1792) / 64]) << run;
    EXPECT_EQ(bitsOf(black[63 + run / 64]), reference::kExtended[(run - 1792) / 64]) << run;
  }
}

TEST(FaxCodes, EolIsTheLastEntry) {
  EXPECT_EQ(sizeof white / sizeof white[0], 105u);
  EXPECT_EQ(sizeof black / sizeof black[0], 105u);
  EXPECT_EQ(bitsOf(white[104]), reference::kEol);
  EXPECT_EQ(bitsOf(black[104]), reference::kEol);
}

TEST(FaxCodes, ModesStandInOrder) {
  ASSERT_EQ(sizeof twoD / sizeof twoD[0], 9u);
  for (size_t i = 0; i < 9; ++i) EXPECT_EQ(bitsOf(twoD[i]), reference::kModes[i]) << i;
}

TEST(FaxCodes, CodesLieInTheTopBitsOf16) {
  EXPECT_EQ(white[0].length, 8u);
  EXPECT_EQ(white[0].code, 0x3500u);
  EXPECT_EQ(black[0].length, 10u);
  EXPECT_EQ(black[0].code, 0x0DC0u);
  EXPECT_EQ(twoD[tiff::kV0].code, 0x8000u);
  for (const FaxCode &entry : white) EXPECT_EQ(entry.code & 0xFFFFu >> entry.length, 0u);
  for (const FaxCode &entry : black) EXPECT_EQ(entry.code & 0xFFFFu >> entry.length, 0u);
}

TEST(FaxCodes, PlacedFormHoldsTheSameCodes) {
  for (size_t i = 0; i < 104; ++i) {
    EXPECT_EQ(tiff::kRunCodes[0][i].length, white[i].length);
    EXPECT_EQ(tiff::kRunCodes[0][i].bits, white[i].code >> (16 - white[i].length));
    EXPECT_EQ(tiff::kRunCodes[1][i].length, black[i].length);
    EXPECT_EQ(tiff::kRunCodes[1][i].bits, black[i].code >> (16 - black[i].length));
  }
  for (size_t i = 0; i < 9; ++i) {
    EXPECT_EQ(tiff::kModeCodes[i].length, twoD[i].length);
    EXPECT_EQ(tiff::kModeCodes[i].bits, twoD[i].code >> (16 - twoD[i].length));
  }
}

}  // namespace
