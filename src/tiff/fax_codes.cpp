// SPDX-License-Identifier: MIT
#include "tiff/fax_codes.h"

#include <cstddef>
#include <string_view>

namespace {

// A code written as its bits, first bit first.
consteval FaxCode code(std::string_view bits) {
  uint32_t value = 0;
  for (const char bit : bits) value = value * 2 + (bit == '1' ? 1 : 0);
  const auto length = static_cast<uint32_t>(bits.size());
  return {length, value << (16 - length)};
}

}  // namespace

// ITU-T T.4, tables 2 and 3: run-length codes. Index 0 to 63: a run of that many pixels.
constexpr FaxCode white[105] = {
    /*   0 */ code("00110101"),
    /*   1 */ code("000111"),
    /*   2 */ code("0111"),
    /*   3 */ code("1000"),
    /*   4 */ code("1011"),
    /*   5 */ code("1100"),
    /*   6 */ code("1110"),
    /*   7 */ code("1111"),
    /*   8 */ code("10011"),
    /*   9 */ code("10100"),
    /*  10 */ code("00111"),
    /*  11 */ code("01000"),
    /*  12 */ code("001000"),
    /*  13 */ code("000011"),
    /*  14 */ code("110100"),
    /*  15 */ code("110101"),
    /*  16 */ code("101010"),
    /*  17 */ code("101011"),
    /*  18 */ code("0100111"),
    /*  19 */ code("0001100"),
    /*  20 */ code("0001000"),
    /*  21 */ code("0010111"),
    /*  22 */ code("0000011"),
    /*  23 */ code("0000100"),
    /*  24 */ code("0101000"),
    /*  25 */ code("0101011"),
    /*  26 */ code("0010011"),
    /*  27 */ code("0100100"),
    /*  28 */ code("0011000"),
    /*  29 */ code("00000010"),
    /*  30 */ code("00000011"),
    /*  31 */ code("00011010"),
    /*  32 */ code("00011011"),
    /*  33 */ code("00010010"),
    /*  34 */ code("00010011"),
    /*  35 */ code("00010100"),
    /*  36 */ code("00010101"),
    /*  37 */ code("00010110"),
    /*  38 */ code("00010111"),
    /*  39 */ code("00101000"),
    /*  40 */ code("00101001"),
    /*  41 */ code("00101010"),
    /*  42 */ code("00101011"),
    /*  43 */ code("00101100"),
    /*  44 */ code("00101101"),
    /*  45 */ code("00000100"),
    /*  46 */ code("00000101"),
    /*  47 */ code("00001010"),
    /*  48 */ code("00001011"),
    /*  49 */ code("01010010"),
    /*  50 */ code("01010011"),
    /*  51 */ code("01010100"),
    /*  52 */ code("01010101"),
    /*  53 */ code("00100100"),
    /*  54 */ code("00100101"),
    /*  55 */ code("01011000"),
    /*  56 */ code("01011001"),
    /*  57 */ code("01011010"),
    /*  58 */ code("01011011"),
    /*  59 */ code("01001010"),
    /*  60 */ code("01001011"),
    /*  61 */ code("00110010"),
    /*  62 */ code("00110011"),
    /*  63 */ code("00110100"),
    // Make-up codes from here: index = 63 + run / 64.
    /*   64 */ code("11011"),
    /*  128 */ code("10010"),
    /*  192 */ code("010111"),
    /*  256 */ code("0110111"),
    /*  320 */ code("00110110"),
    /*  384 */ code("00110111"),
    /*  448 */ code("01100100"),
    /*  512 */ code("01100101"),
    /*  576 */ code("01101000"),
    /*  640 */ code("01100111"),
    /*  704 */ code("011001100"),
    /*  768 */ code("011001101"),
    /*  832 */ code("011010010"),
    /*  896 */ code("011010011"),
    /*  960 */ code("011010100"),
    /* 1024 */ code("011010101"),
    /* 1088 */ code("011010110"),
    /* 1152 */ code("011010111"),
    /* 1216 */ code("011011000"),
    /* 1280 */ code("011011001"),
    /* 1344 */ code("011011010"),
    /* 1408 */ code("011011011"),
    /* 1472 */ code("010011000"),
    /* 1536 */ code("010011001"),
    /* 1600 */ code("010011010"),
    /* 1664 */ code("011000"),
    /* 1728 */ code("010011011"),
    // Extended make-up codes, the same for both colours.
    /* 1792 */ code("00000001000"),
    /* 1856 */ code("00000001100"),
    /* 1920 */ code("00000001101"),
    /* 1984 */ code("000000010010"),
    /* 2048 */ code("000000010011"),
    /* 2112 */ code("000000010100"),
    /* 2176 */ code("000000010101"),
    /* 2240 */ code("000000010110"),
    /* 2304 */ code("000000010111"),
    /* 2368 */ code("000000011100"),
    /* 2432 */ code("000000011101"),
    /* 2496 */ code("000000011110"),
    /* 2560 */ code("000000011111"),
    /*  EOL */ code("000000000001"),
};

constexpr FaxCode black[105] = {
    /*   0 */ code("0000110111"),
    /*   1 */ code("010"),
    /*   2 */ code("11"),
    /*   3 */ code("10"),
    /*   4 */ code("011"),
    /*   5 */ code("0011"),
    /*   6 */ code("0010"),
    /*   7 */ code("00011"),
    /*   8 */ code("000101"),
    /*   9 */ code("000100"),
    /*  10 */ code("0000100"),
    /*  11 */ code("0000101"),
    /*  12 */ code("0000111"),
    /*  13 */ code("00000100"),
    /*  14 */ code("00000111"),
    /*  15 */ code("000011000"),
    /*  16 */ code("0000010111"),
    /*  17 */ code("0000011000"),
    /*  18 */ code("0000001000"),
    /*  19 */ code("00001100111"),
    /*  20 */ code("00001101000"),
    /*  21 */ code("00001101100"),
    /*  22 */ code("00000110111"),
    /*  23 */ code("00000101000"),
    /*  24 */ code("00000010111"),
    /*  25 */ code("00000011000"),
    /*  26 */ code("000011001010"),
    /*  27 */ code("000011001011"),
    /*  28 */ code("000011001100"),
    /*  29 */ code("000011001101"),
    /*  30 */ code("000001101000"),
    /*  31 */ code("000001101001"),
    /*  32 */ code("000001101010"),
    /*  33 */ code("000001101011"),
    /*  34 */ code("000011010010"),
    /*  35 */ code("000011010011"),
    /*  36 */ code("000011010100"),
    /*  37 */ code("000011010101"),
    /*  38 */ code("000011010110"),
    /*  39 */ code("000011010111"),
    /*  40 */ code("000001101100"),
    /*  41 */ code("000001101101"),
    /*  42 */ code("000011011010"),
    /*  43 */ code("000011011011"),
    /*  44 */ code("000001010100"),
    /*  45 */ code("000001010101"),
    /*  46 */ code("000001010110"),
    /*  47 */ code("000001010111"),
    /*  48 */ code("000001100100"),
    /*  49 */ code("000001100101"),
    /*  50 */ code("000001010010"),
    /*  51 */ code("000001010011"),
    /*  52 */ code("000000100100"),
    /*  53 */ code("000000110111"),
    /*  54 */ code("000000111000"),
    /*  55 */ code("000000100111"),
    /*  56 */ code("000000101000"),
    /*  57 */ code("000001011000"),
    /*  58 */ code("000001011001"),
    /*  59 */ code("000000101011"),
    /*  60 */ code("000000101100"),
    /*  61 */ code("000001011010"),
    /*  62 */ code("000001100110"),
    /*  63 */ code("000001100111"),
    // Make-up codes from here: index = 63 + run / 64.
    /*   64 */ code("0000001111"),
    /*  128 */ code("000011001000"),
    /*  192 */ code("000011001001"),
    /*  256 */ code("000001011011"),
    /*  320 */ code("000000110011"),
    /*  384 */ code("000000110100"),
    /*  448 */ code("000000110101"),
    /*  512 */ code("0000001101100"),
    /*  576 */ code("0000001101101"),
    /*  640 */ code("0000001001010"),
    /*  704 */ code("0000001001011"),
    /*  768 */ code("0000001001100"),
    /*  832 */ code("0000001001101"),
    /*  896 */ code("0000001110010"),
    /*  960 */ code("0000001110011"),
    /* 1024 */ code("0000001110100"),
    /* 1088 */ code("0000001110101"),
    /* 1152 */ code("0000001110110"),
    /* 1216 */ code("0000001110111"),
    /* 1280 */ code("0000001010010"),
    /* 1344 */ code("0000001010011"),
    /* 1408 */ code("0000001010100"),
    /* 1472 */ code("0000001010101"),
    /* 1536 */ code("0000001011010"),
    /* 1600 */ code("0000001011011"),
    /* 1664 */ code("0000001100100"),
    /* 1728 */ code("0000001100101"),
    // Extended make-up codes, the same for both colours.
    /* 1792 */ code("00000001000"),
    /* 1856 */ code("00000001100"),
    /* 1920 */ code("00000001101"),
    /* 1984 */ code("000000010010"),
    /* 2048 */ code("000000010011"),
    /* 2112 */ code("000000010100"),
    /* 2176 */ code("000000010101"),
    /* 2240 */ code("000000010110"),
    /* 2304 */ code("000000010111"),
    /* 2368 */ code("000000011100"),
    /* 2432 */ code("000000011101"),
    /* 2496 */ code("000000011110"),
    /* 2560 */ code("000000011111"),
    /*  EOL */ code("000000000001"),
};

// ITU-T T.6, table 1: the modes.
constexpr FaxCode twoD[9] = {
    /* pass       */ code("0001"),
    /* horizontal */ code("001"),
    /* VL3        */ code("0000010"),
    /* VL2        */ code("000010"),
    /* VL1        */ code("010"),
    /* V0         */ code("1"),
    /* VR1        */ code("011"),
    /* VR2        */ code("000011"),
    /* VR3        */ code("0000011"),
};

namespace tiff {
namespace {

// No code begins with another, so a reader never needs a mark between codes.
template <size_t N>
consteval bool isPrefixFree(const FaxCode (&table)[N]) {
  for (size_t i = 0; i < N; ++i) {
    for (size_t j = 0; j < N; ++j) {
      const uint32_t differ = table[i].code ^ table[j].code;
      if (i != j && table[i].length <= table[j].length && differ >> (16 - table[i].length) == 0)
        return false;
    }
  }
  return true;
}

// Whether a code is the one written as these bits.
consteval bool is(FaxCode entry, std::string_view bits) {
  const FaxCode wanted = code(bits);
  return entry.length == wanted.length && entry.code == wanted.code;
}

// The index of the code that a run's first step takes: its make-up code, or its terminating code.
consteval uint32_t indexOf(uint32_t run) {
  return run < 64 ? run : kMakeUpBase + run / 64;
}

static_assert(isPrefixFree(white) && isPrefixFree(black) && isPrefixFree(twoD));

// One run from every part of the tables, so that a line too many or too few cannot go unseen.
static_assert(is(white[indexOf(0)], "00110101") && is(black[indexOf(0)], "0000110111"));
static_assert(is(white[indexOf(31)], "00011010") && is(black[indexOf(31)], "000001101001"));
static_assert(is(white[indexOf(63)], "00110100") && is(black[indexOf(63)], "000001100111"));
static_assert(is(white[indexOf(64)], "11011") && is(black[indexOf(64)], "0000001111"));
static_assert(is(white[indexOf(1024)], "011010101") && is(black[indexOf(1024)], "0000001110100"));
static_assert(is(white[indexOf(1728)], "010011011") && is(black[indexOf(1728)], "0000001100101"));
static_assert(is(white[indexOf(1792)], "00000001000") && is(black[indexOf(1792)], "00000001000"));
static_assert(is(white[indexOf(2560)], "000000011111") && is(black[indexOf(2560)], "000000011111"));
static_assert(indexOf(kLongestMakeUp) == kEolIndex - 1);
static_assert(is(white[kEolIndex], "000000000001") && is(black[kEolIndex], "000000000001"));
static_assert(is(twoD[kPass], "0001") && is(twoD[kHorizontal], "001") && is(twoD[kV0], "1"));
static_assert(is(twoD[kV0 - 3], "0000010") && is(twoD[kV0 + 3], "0000011"));

// How much of the code space entries [first, last) take, in 8192nds: a code of n bits takes 1 in 2^n.
template <size_t N>
consteval uint32_t space(const FaxCode (&table)[N], size_t first, size_t last) {
  uint32_t sum = 0;
  for (size_t i = first; i < last; ++i) sum += 8192u >> table[i].length;
  return sum;
}

// The codes up to 1728 leave exactly the codes that begin with seven zeros, where EOL and the extended
// make-up codes lie; the modes leave exactly those with six zeros. A wrong length breaks these sums.
static_assert(space(white, 0, 91) == 8192 - 64 && space(black, 0, 91) == 8192 - 64);
static_assert(space(white, 91, 105) == 3 * 4 + 11 * 2 && space(twoD, 0, 9) == 8192 - 128);

template <size_t N>
consteval bool sharesLongMakeUps(const FaxCode (&a)[N], const FaxCode (&b)[N]) {
  for (size_t i = indexOf(1792); i < N; ++i) {
    if (a[i].length != b[i].length || a[i].code != b[i].code) return false;
  }
  return true;
}
static_assert(sharesLongMakeUps(white, black));

consteval BitCode placed(FaxCode entry) {
  return {static_cast<uint16_t>(entry.code >> (16 - entry.length)), static_cast<uint16_t>(entry.length)};
}

consteval std::array<std::array<BitCode, 104>, 2> placedRuns() {
  std::array<std::array<BitCode, 104>, 2> out{};
  for (size_t i = 0; i < 104; ++i) out[0][i] = placed(white[i]);
  for (size_t i = 0; i < 104; ++i) out[1][i] = placed(black[i]);
  return out;
}

consteval std::array<BitCode, 9> placedModes() {
  std::array<BitCode, 9> out{};
  for (size_t i = 0; i < 9; ++i) out[i] = placed(twoD[i]);
  return out;
}

}  // namespace

constexpr std::array<std::array<BitCode, 104>, 2> kRunCodes = placedRuns();
constexpr std::array<BitCode, 9> kModeCodes = placedModes();

namespace {

// Cannot be evaluated by a compiler, so that a table that needs it does not compile.
[[maybe_unused]] void codesOfAByteAreTooLong() {}

consteval ByteStep byteStep(uint32_t color, uint32_t pixels) {
  const auto at = [&](uint32_t i) { return 1 - (pixels >> (7 - i) & 1); };  // the colour of pixel i
  uint32_t lead = 0;
  while (lead < 8 && at(lead) == color) ++lead;
  uint32_t trail = 0;
  while (trail < 8 && at(7 - trail) == at(7)) ++trail;
  ByteStep step{0, 0, static_cast<uint8_t>(lead), static_cast<uint8_t>(trail)};
  uint64_t bits = 0;
  for (uint32_t from = lead; from + trail < 8;) {
    uint32_t to = from;
    while (at(to) == at(from)) ++to;
    const BitCode code = kRunCodes[at(from)][to - from];
    bits = bits << code.length | code.bits;
    step.length = static_cast<uint8_t>(step.length + code.length);
    from = to;
  }
  step.bits = static_cast<uint32_t>(bits);
  if (step.bits != bits || step.length > 33) codesOfAByteAreTooLong();
  return step;
}

consteval std::array<std::array<ByteStep, 256>, 2> byteSteps() {
  std::array<std::array<ByteStep, 256>, 2> out{};
  for (uint32_t pixels = 0; pixels < 256; ++pixels) {
    out[0][pixels] = byteStep(0, pixels);
    out[1][pixels] = byteStep(1, pixels);
  }
  return out;
}

}  // namespace

constexpr std::array<std::array<ByteStep, 256>, 2> kByteSteps = byteSteps();

}  // namespace tiff
