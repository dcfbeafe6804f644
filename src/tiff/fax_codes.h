// SPDX-License-Identifier: MIT
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

// What a byte of eight pixels does to the runs of a row, say w w b w w b b b after a white run:
//
//   the run before grows by `lead` = 2 and ends; a black run of 1 and a white one of 2 follow, whose
//   codes are `bits`; a run of `trail` = 3 begins
//
// A byte that only goes on with the run before has lead = 8 and ends nothing.
struct ByteStep {
  uint32_t bits;   // right-aligned codes of the runs inside
  uint8_t length;  // their length in bits: at most 33, of which the first is 0 then
  uint8_t lead;
  uint8_t trail;
};

// By colour of the run before (0 white, 1 black), and by the byte, in which set bits are white.
extern const std::array<std::array<ByteStep, 256>, 2> kByteSteps;

}  // namespace tiff
