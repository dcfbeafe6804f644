// SPDX-License-Identifier: MIT
// Choosing a table of colours for which the sum of squared errors over all pixels is small.
//
// First boxes: all colours are one, and again and again the box with the largest error is cut in two,
// across the direction in which its colours spread most, at their mean. A box's mean is an entry. (Xiaolin
// Wu, Efficient statistical computations for optimal color quantization, 1991; the direction as in Michael
// Orchard and Charles Bouman, Color quantization of images, 1991.)
//
//     . .  :                   . .| :
//      . . ::.      one cut     . |::.          the longest spread runs from left to right
//        .  :                     |.:
//
// Then rounds: each colour goes to its nearest entry, and each entry to the mean of what has come to it
// (Stuart Lloyd, Least squares quantization in PCM, 1982). Every round lowers the error, the first ones
// most. A small table can be caught where no small step helps: there, an entry that is hardly needed is
// taken away and put beside the one with the largest error, which is kept when a few rounds come out lower.
//
// Sums are whole numbers and doubles are rounded as written, so that a picture has one table on every
// machine.
#pragma once

#include <span>
#include <vector>

#include "prepare/histogram.h"

namespace prepare {

// At most `most` entries (up to 256), fewer when there are not so many colours.
std::vector<Color> chooseColors(const std::vector<ColorCount> &histogram, uint32_t most);

// The two stages.
std::vector<Color> cutBoxes(std::vector<ColorCount> colors, uint32_t most);
void improve(const std::vector<ColorCount> &colors, std::vector<Color> &table, int rounds);

}  // namespace prepare
