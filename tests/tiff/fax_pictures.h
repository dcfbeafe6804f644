// SPDX-License-Identifier: MIT
// Seeded bilevel pictures of every kind that a fax coder meets.
#pragma once

#include <cstdint>

#include "support/random.h"
#include "tiff/reference_fax.h"

namespace reference {

enum class Kind { kWhite, kBlack, kText, kHalftone, kNoise, kStripes, kDrift, kCount };

// A picture of the kind; its width is 1 to 3000 and it has few rows.
Picture faxPicture(support::Random &random, Kind kind);

// Vertical stripes, `period` white and `period` black pixels in turn.
Picture stripes(size_t width, size_t rows, size_t period);

}  // namespace reference
