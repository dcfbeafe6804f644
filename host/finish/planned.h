// SPDX-License-Identifier: MIT
// What a plan asks of the finished directory.
#pragma once

#include "finish/finish.h"
#include "raxel/host.h"

namespace finish {

// True when white is coded as 0: fax codes hold white runs, and are shortest when those are the paper's.
bool isMinIsWhite(const RaxelPlan &plan);

// The Compression tag of a RaxelCompression.
uint32_t compressionTag(int32_t compression);

// Changes what the filter's directory says into what the plan means.
void applyPlan(const RaxelPlan &plan, FinishedPage &page);

// Puts texts and profile into the page, which borrows the profile.
void applyMetadata(const RaxelMetadata &metadata, FinishedPage &page);

// What they add to a file.
uint64_t metadataBytes(const RaxelMetadata &metadata);

// The page of a plan when nothing has been written by the filter: one strip of all rows, at this place.
FinishedPage singleStripPage(const RaxelPlan &plan, uint32_t offset, uint32_t bytes);

}  // namespace finish
