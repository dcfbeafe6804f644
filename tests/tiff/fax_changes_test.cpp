// SPDX-License-Identifier: MIT
// Bytes that hold a change of colour: the mask for this machine and the plain one against a look at each
// pixel; and the table of what such bytes do.
#include "tiff/fax_changes.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "support/cases.h"
#include "support/random.h"
#include "tiff/fax_codes.h"
#include "tiff/reference_fax.h"

namespace {

uint64_t byPixels(const std::vector<uint8_t> &bytes) {
  uint64_t changes = 0;
  for (size_t i = 0; i < tiff::kChangeChunk; ++i) {
    const int last = bytes[i] & 1;  // bytes[i + 1] is chunk[i]
    bool isChange = false;
    for (int bit = 0; bit < 8; ++bit) isChange |= (bytes[i + 1] >> bit & 1) != last;
    if (isChange) changes |= uint64_t{1} << i;
  }
  return changes;
}

void expectChangeMask(const std::vector<uint8_t> &bytes) {
  ASSERT_EQ(tiff::changeMaskPlain(bytes.data() + 1), byPixels(bytes));
  ASSERT_EQ(tiff::changeMask(bytes.data() + 1), byPixels(bytes));
}

TEST(FaxChanges, OneByteAtEveryPlaceGivesItsChanges) {
  for (size_t at = 0; at <= tiff::kChangeChunk; ++at) {
    for (unsigned value = 0; value < 256; ++value) {
      for (const uint8_t around : std::initializer_list<uint8_t>{0x00, 0xFF}) {
        std::vector<uint8_t> bytes(1 + tiff::kChangeChunk, around);
        bytes[at] = static_cast<uint8_t>(value);
        ASSERT_NO_FATAL_FAILURE(expectChangeMask(bytes)) << at << " " << value;
      }
    }
  }
}

TEST(FaxChanges, SeededBytesGiveTheChangesOfThePlainForm) {
  support::Random random(74);
  const size_t n = support::cases(2000);
  for (size_t i = 0; i < n; ++i) {
    std::vector<uint8_t> bytes(1 + tiff::kChangeChunk);
    const auto percent = static_cast<unsigned>(random.between(0, 100));
    for (uint8_t &byte : bytes)
      byte = random.chance(percent) ? random.byte() : random.chance(50) ? 0xFF : 0;
    ASSERT_NO_FATAL_FAILURE(expectChangeMask(bytes)) << "case " << i;
  }
}

// Every byte after a run of either colour: its runs, found pixel by pixel.
TEST(FaxChanges, ByteStepsHoldTheRunsOfEveryByte) {
  for (uint32_t color = 0; color < 2; ++color) {
    for (uint32_t byte = 0; byte < 256; ++byte) {
      std::string pixels;
      for (uint32_t i = 0; i < 8; ++i) pixels += (byte >> (7 - i) & 1) != 0 ? 'w' : 'b';
      const size_t lead = pixels.find(color == 0 ? 'b' : 'w');
      const tiff::ByteStep &step = tiff::kByteSteps[color][byte];
      if (lead == std::string::npos) {
        EXPECT_EQ(step.lead, 8);
        EXPECT_EQ(step.length, 0);
        continue;
      }
      size_t trail = 8;
      while (trail > 0 && pixels[trail - 1] == pixels[7]) --trail;
      std::string codes;
      for (size_t from = lead; from < trail;) {
        size_t to = from;
        while (pixels[to] == pixels[from]) ++to;
        codes += reference::runCodes(pixels[from] == 'b', static_cast<uint32_t>(to - from));
        from = to;
      }
      EXPECT_EQ(step.lead, lead);
      EXPECT_EQ(step.trail, 8 - trail);
      ASSERT_EQ(step.length, codes.size());
      std::string bits;
      for (size_t i = codes.size(); i-- > 0;) bits += (uint64_t{step.bits} >> i & 1) != 0 ? '1' : '0';
      EXPECT_EQ(bits, codes) << byte;
    }
  }
}

}  // namespace
