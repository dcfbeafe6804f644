// SPDX-License-Identifier: MIT
// Documents and photos: which of the two a picture is, told by its tones.
//
// A document is ink on paper: two tones, with grey between them on the edges of the ink and hardly anywhere
// else. It is better cut into black and white than spread as dots. docs/documents.md tells how the limits
// were found.
#pragma once

#include <array>
#include <cstdint>

#include "prepare/source.h"

namespace prepare {

// How often each level occurs, and how often neighbours lie on the two sides of a cut.
struct Tones {
  std::array<uint64_t, 256> levels{};
  std::array<uint64_t, 257> steps{};  // differences: their sum up to a level is the count of a cut there
};

// Of a picture of more than some four million pixels pairs of rows with others between them are looked at.
Tones tonesOf(const Source &source);

struct Kind {
  bool isDocument = false;
  uint8_t cut = 128;  // what lies below it is ink, by the method of Nobuyuki Otsu (A threshold selection
                      // method from gray-level histograms, 1979)
};

// Whole numbers throughout, so that every machine comes to the same answer.
Kind kindOf(const Tones &tones);

}  // namespace prepare
