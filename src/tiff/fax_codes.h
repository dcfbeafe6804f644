// The fax codes of ITU-T T.4 and T.6: what each index of the tables `white`, `black` and `twoD`
// (raxel/tiff.h) stands for, and the same codes in the form that the coders place.
#pragma once

#include <array>
#include <cstdint>

#include "raxel/tiff.h"

namespace tiff {

// Indices of `white` and `black`. Runs of 0 to 63 pixels have terminating codes; longer runs have a
// make-up code for their multiple of 64 first.
inline constexpr uint32_t kMakeUpBase = 63;  // index of a make-up code: kMakeUpBase + run / 64
inline constexpr uint32_t kEolIndex = 104;
inline constexpr uint32_t kLongestMakeUp = 2560;  // pixels

// Indices of `twoD`. A vertical mode with a1 - b1 = d, -3 <= d <= 3, is kV0 + d.
inline constexpr uint32_t kPass = 0;
inline constexpr uint32_t kHorizontal = 1;
inline constexpr uint32_t kV0 = 5;

// A code ready for a bit accumulator: right-aligned, at most 13 bits.
struct BitCode {
  uint16_t bits;
  uint16_t length;
};

// By colour (0 white, 1 black) and table index.
extern const std::array<std::array<BitCode, 104>, 2> kRunCodes;
extern const std::array<BitCode, 9> kModeCodes;

}  // namespace tiff
