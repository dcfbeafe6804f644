// SPDX-License-Identifier: MIT
// LZW: the code stream bit by bit, where its widths change and where its table clears.
#include "tiff/lzw.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/cases.h"
#include "support/random.h"
#include "tiff/reference_lzw.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Codes = std::vector<reference::LzwCode>;

constexpr uint32_t kClear = 256;
constexpr uint32_t kEnd = 257;

Bytes encodeLzw(const Bytes &strip) {
  Bytes out(2 * strip.size() + 16, 0xA5);
  out.resize(tiff::encodeLzw(strip, out));
  return out;
}

// A strip in which no two neighbours ever come again together, so that every byte is a code of its
// own and adds a string: steps of 1 through all bytes, then steps of 3, of 5 and so on.
Bytes withoutRepeatedPairs(size_t length) {
  Bytes strip;
  uint8_t at = 0;
  for (size_t i = 0; i < length; ++i) {
    strip.push_back(at);
    at = static_cast<uint8_t>(at + 2 * (i / 256) + 1);
  }
  return strip;
}

// Clear and the first `count` bytes of such a strip, as they are coded up to the first clearing: 254
// codes of 9 bits, 512 of 10, 1024 of 11 and 2042 of 12.
Codes bytesWithoutRepeats(const Bytes &strip, size_t count) {
  Codes codes{{kClear, 9}};
  for (size_t i = 0; i < count; ++i) {
    codes.push_back({strip[i], i < 254 ? 9u : i < 766 ? 10u : i < 1790 ? 11u : 12u});
  }
  return codes;
}

Bytes packed(Codes codes, const Codes &more) {
  codes.insert(codes.end(), more.begin(), more.end());
  return reference::packLzw(codes);
}

// 100000000 100000001, then six bits of fill.
TEST(Lzw, EmptyStripIsClearAndEnd) {
  EXPECT_EQ(encodeLzw({}), (Bytes{0x80, 0x40, 0x40}));
}

TEST(Lzw, StripOfOneByteIsClearAndEnd) {
  EXPECT_EQ(encodeLzw({0x41}), (Bytes{0x80, 0x40, 0x40}));
  EXPECT_EQ(encodeLzw({0x00}), (Bytes{0x80, 0x40, 0x40}));
}

// 100000000 001000001 001000010 100000001
TEST(Lzw, TwoBytesAreTwoLiterals) {
  EXPECT_EQ(encodeLzw({0x41, 0x42}), (Bytes{0x80, 0x10, 0x48, 0x50, 0x10}));
}

// 100000000 001000001 001000010 100000010 100000001: the string at 258 ends the strip.
TEST(Lzw, StringFoundAtTheLastByte) {
  EXPECT_EQ(encodeLzw({0x41, 0x42, 0x41, 0x42}), (Bytes{0x80, 0x10, 0x48, 0x50, 0x28, 0x08}));
}

// 100000000 001000001 100000010 100000001: the code that is just being made.
TEST(Lzw, ARunOfThreeUsesItsOwnString) {
  EXPECT_EQ(encodeLzw({0x41, 0x41, 0x41}), (Bytes{0x80, 0x10, 0x60, 0x50, 0x10}));
}

TEST(Lzw, WidthsChangeAfterStrings511And1023And2047) {
  for (const size_t length : {254u, 256u, 766u, 768u, 1790u, 1792u, 3000u}) {
    const Bytes strip = withoutRepeatedPairs(length);
    const uint32_t width = length < 255 ? 9 : length < 767 ? 10 : length < 1791 ? 11 : 12;
    EXPECT_EQ(encodeLzw(strip), packed(bytesWithoutRepeats(strip, length), {{kEnd, width}})) << length;
  }
}

// The last byte is checked with the table size of the code before it, so the width grows twice.
TEST(Lzw, WidthGrowsTwiceWhenTheStripEndsAtAWidening) {
  const Bytes a = withoutRepeatedPairs(255);
  EXPECT_EQ(encodeLzw(a), packed(bytesWithoutRepeats(a, 254), {{254, 10}, {kEnd, 11}}));
  const Bytes b = withoutRepeatedPairs(767);
  EXPECT_EQ(encodeLzw(b), packed(bytesWithoutRepeats(b, 766), {{b[766], 11}, {kEnd, 12}}));
  const Bytes c = withoutRepeatedPairs(1791);
  EXPECT_EQ(encodeLzw(c), packed(bytesWithoutRepeats(c, 1790), {{c[1790], 12}, {kEnd, 13}}));
}

// The tail of the 255-byte case in bits: 253 in 9, then 254 in 10, then the end in 11.
//   ...011111101 0011111110 00100000001 and four bits of fill
TEST(Lzw, WidthGrowsTwiceInBits) {
  const Bytes codes = encodeLzw(withoutRepeatedPairs(255));
  ASSERT_EQ(codes.size(), 290u);  // 9 + 254 * 9 + 10 + 11 = 2316 bits
  EXPECT_EQ(Bytes(codes.end() - 4, codes.end()), (Bytes{0xFA, 0x7F, 0x10, 0x10}));
}

TEST(Lzw, ClearsTableAt4090) {
  const Bytes strip = withoutRepeatedPairs(3834);
  EXPECT_EQ(encodeLzw(strip), packed(bytesWithoutRepeats(strip, 3832),
                                     {{kClear, 12}, {strip[3832], 9}, {strip[3833], 9}, {kEnd, 9}}));
}

TEST(Lzw, SecondClearWhenTheStripEndsAtAClearing) {
  const Bytes strip = withoutRepeatedPairs(3833);
  EXPECT_EQ(encodeLzw(strip), packed(bytesWithoutRepeats(strip, 3832),
                                     {{kClear, 12}, {strip[3832], 9}, {kClear, 9}, {kEnd, 9}}));
}

TEST(Lzw, StringsFromBeforeTheClearingAreForgotten) {
  Bytes strip = withoutRepeatedPairs(3833);
  const Bytes again = {0, 1, 2, 0, 1, 2};
  strip.insert(strip.end(), again.begin(), again.end());
  EXPECT_EQ(encodeLzw(strip),
            packed(bytesWithoutRepeats(strip, 3832),
                   {{kClear, 12}, {strip[3832], 9}, {0, 9}, {1, 9}, {2, 9}, {259, 9}, {2, 9}, {kEnd, 9}}));
}

// The string found at the last byte is stored once more, and that copy counts for the widths.
TEST(Lzw, StringStoredAgainAtTheLastByteCountsForTheWidth) {
  Bytes strip = withoutRepeatedPairs(254);
  strip[252] = 0;  // 0 and 1 again: the string at 258
  strip[253] = 1;
  EXPECT_EQ(encodeLzw(strip), packed(bytesWithoutRepeats(strip, 252), {{258, 9}, {kEnd, 9}}));
  strip = withoutRepeatedPairs(255);
  strip[253] = 0;
  strip[254] = 1;
  EXPECT_EQ(encodeLzw(strip), packed(bytesWithoutRepeats(strip, 253), {{258, 9}, {kEnd, 10}}));
}

TEST(Lzw, StringStoredAgainAtTheLastByteCountsForTheClearing) {
  Bytes strip = withoutRepeatedPairs(3833);
  strip[3831] = 0;
  strip[3832] = 1;
  EXPECT_EQ(encodeLzw(strip),
            packed(bytesWithoutRepeats(strip, 3831), {{258, 12}, {kClear, 12}, {kEnd, 9}}));
}

// Strips of one value, of short cycles, of noise, of few letters, of runs, and of all of these in turn.
constexpr int64_t kKinds = 6;

Bytes sampleStrip(support::Random &random, size_t length, int64_t kind) {
  Bytes strip(length);
  const auto period = static_cast<size_t>(random.between(1, 40));
  const Bytes cycle = random.bytes(period);
  const auto letters = static_cast<uint8_t>(random.between(1, 7));
  const int64_t longest = random.between(1, 600);
  size_t left = 0;
  for (size_t i = 0; i < length; ++i) {
    if (kind == 0) strip[i] = cycle[0];
    if (kind == 1) strip[i] = cycle[i % period];
    if (kind == 2) strip[i] = random.byte();
    if (kind == 3) strip[i] = random.byte() % letters;
    if (kind == 4) {
      if (left == 0) left = static_cast<size_t>(random.between(1, longest));
      --left;
      strip[i] = left == 0 ? random.byte() : cycle[0];
    }
  }
  for (size_t at = 0; kind == 5 && at < length;) {
    const Bytes part =
        sampleStrip(random, static_cast<size_t>(random.between(1, 9000)), random.between(0, 4));
    const size_t n = std::min(part.size(), length - at);
    std::copy_n(part.begin(), n, strip.begin() + static_cast<ptrdiff_t>(at));
    at += n;
  }
  return strip;
}

TEST(Lzw, EveryLengthDecodes) {
  support::Random random(80);
  const size_t step = std::max<size_t>(1, 5000 / support::cases(5000));
  for (size_t length = 2; length <= 5000; length += length < 300 ? 1 : step) {
    for (const int64_t kind :
         {int64_t{0}, int64_t{1}, int64_t{2}, static_cast<int64_t>(length / step) % 3 + 3}) {
      const Bytes strip = sampleStrip(random, length, kind);
      ASSERT_EQ(reference::unpackLzw(encodeLzw(strip), length), strip) << length << " kind " << kind;
    }
  }
}

// What the strips are compared with has the codes of a table that is searched entry by entry.
TEST(Lzw, LinkedStringsAreFoundLikeSearchedOnes) {
  support::Random random(83);
  const size_t n = support::cases(60);
  for (size_t i = 0; i < n; ++i) {
    const auto length = static_cast<size_t>(random.between(0, i % 4 == 0 ? 9000 : 900));
    const Bytes strip = sampleStrip(random, length, static_cast<int64_t>(i) % kKinds);
    ASSERT_EQ(reference::lzwCodesSooner(strip), reference::lzwCodes(strip)) << "case " << i;
  }
}

TEST(Lzw, EqualsThePlainForm) {
  support::Random random(81);
  const size_t step = 20 * std::max<size_t>(1, 100 / support::cases(100));
  for (size_t length = 0; length <= 5000; length += length < 300 ? 1 : step) {
    for (int64_t kind = 0; kind < kKinds; ++kind) {
      const Bytes strip = sampleStrip(random, length, kind);
      ASSERT_EQ(encodeLzw(strip), reference::lzw(strip)) << length << " kind " << kind;
    }
  }
}

TEST(Lzw, EqualsThePlainFormOverManyClearings) {
  support::Random random(82);
  tiff::LzwMemory memory;  // used again for every strip
  const size_t n = support::cases(36);
  for (size_t i = 0; i < n; ++i) {
    const auto length = static_cast<size_t>(random.between(20000, 60000));
    const Bytes strip = sampleStrip(random, length, static_cast<int64_t>(i) % kKinds);
    Bytes codes(2 * length + 16, 0xA5);
    codes.resize(tiff::encodeLzw(strip, codes, memory));
    ASSERT_EQ(codes, reference::lzw(strip)) << "case " << i;
    ASSERT_EQ(codes, encodeLzw(strip)) << "case " << i;
    ASSERT_EQ(reference::unpackLzw(codes, length), strip) << "case " << i;
  }
}

// However many strips lie between, with tables that are used again: the same strip gives the same codes.
TEST(Lzw, StringsOfEarlierStripsAreForgotten) {
  const Bytes strip = {1, 2, 3, 1, 2, 3, 1, 2, 3};
  // Clear, 1, 2, 3, 12, 31, 23, end, all of 9 bits
  const Bytes wanted =
      packed({{kClear, 9}, {1, 9}, {2, 9}, {3, 9}}, {{258, 9}, {260, 9}, {259, 9}, {kEnd, 9}});
  for (size_t between = 0; between < 50; ++between) {
    tiff::LzwMemory memory;
    const auto code = [&](const Bytes &bytes) {
      Bytes codes(2 * bytes.size() + 16, 0xA5);
      codes.resize(tiff::encodeLzw(bytes, codes, memory));
      return codes;
    };
    ASSERT_EQ(code(strip), wanted) << between;
    for (size_t i = 0; i < between; ++i) code({5, 6});
    ASSERT_EQ(code(strip), wanted) << between;
  }
}

// A string of one byte grows by one with every code, far past what is listed by length.
TEST(Lzw, LongRunsOfOneByte) {
  for (const size_t length : {1000u, 8256u, 8257u, 100000u}) {
    Bytes strip(length, 0xFF);
    ASSERT_EQ(encodeLzw(strip), reference::lzw(strip)) << length;
    for (size_t at = 0; at < length; at += 97 + at / 50) strip[at] = 0;
    ASSERT_EQ(encodeLzw(strip), reference::lzw(strip)) << length;
  }
}

}  // namespace
