// SPDX-License-Identifier: MIT
// The mask of equal neighbours: the form for this machine and the plain one against a look at each byte.
#include "tiff/packbits_masks.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/cases.h"
#include "support/random.h"

namespace {

tiff::EqualMask byBytes(const std::vector<uint8_t> &bytes) {
  tiff::EqualMask mask{0, 0};
  for (size_t i = 0; i < 128; ++i) {
    const uint64_t bit = bytes[i] == bytes[i + 1] ? uint64_t{1} << i % 64 : 0;
    (i < 64 ? mask.low : mask.high) |= bit;
  }
  return mask;
}

void expectEqualMask(const std::vector<uint8_t> &bytes) {
  const tiff::EqualMask expected = byBytes(bytes);
  const tiff::EqualMask plain = tiff::equalMaskPlain(bytes.data());
  const tiff::EqualMask fast = tiff::equalMask(bytes.data());
  ASSERT_EQ(plain.low, expected.low);
  ASSERT_EQ(plain.high, expected.high);
  ASSERT_EQ(fast.low, expected.low);
  ASSERT_EQ(fast.high, expected.high);
}

TEST(PackBitsMasks, OnePairAtEveryPlaceIsFound) {
  for (size_t at = 0; at < 128; ++at) {
    std::vector<uint8_t> bytes(tiff::kEqualMaskReads);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i);
    bytes[at + 1] = bytes[at];
    expectEqualMask(bytes);
  }
}

// Bytes that differ in one bit only, each bit in turn: also the highest, where the sums carry.
TEST(PackBitsMasks, EveryBitTellsBytesApart) {
  for (unsigned bit = 0; bit < 8; ++bit) {
    std::vector<uint8_t> bytes(tiff::kEqualMaskReads, 0x80);
    for (size_t i = 0; i < bytes.size(); i += 3) bytes[i] = static_cast<uint8_t>(0x80 ^ 1u << bit);
    expectEqualMask(bytes);
  }
}

TEST(PackBitsMasks, SeededBytesGiveTheMasksOfThePlainForm) {
  support::Random random(73);
  const size_t n = support::cases(2000);
  for (size_t i = 0; i < n; ++i) {
    std::vector<uint8_t> bytes(tiff::kEqualMaskReads);
    const int64_t letters = random.between(1, 256);
    for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(random.between(0, letters - 1));
    ASSERT_NO_FATAL_FAILURE(expectEqualMask(bytes)) << "case " << i;
  }
}

}  // namespace
