// SPDX-License-Identifier: MIT
// Fitting a picture's proportions into a box on paper.
#pragma once

#include <cmath>

namespace runtime {

struct Inches {
  double width;
  double height;
};

// The largest size of these proportions (width over height) in the box, in whole pixels on one side; the
// other side stays the box's.
//
// Whole pixels are kept in doubles: huge boxes and resolutions of 0 make infinities and NaNs, which the
// callers cut to their range. Whole numbers have one zero: a part of a negative pixel is 0.0, since -0.0
// would turn the sign of the box's proportions.
inline Inches fitProportions(double proportions, const Inches &box, double xResolution,
                             double yResolution) {
  double width = std::trunc(xResolution * box.width) + 0.0;
  double height = std::trunc(yResolution * box.height) + 0.0;
  const double ofBox = width / height;
  if (proportions < ofBox) {
    width -= std::trunc(width - height * proportions);
  } else if (proportions > ofBox) {
    height -= std::trunc(height - width / proportions);
  }
  return {width / xResolution, height / yResolution};
}

}  // namespace runtime
