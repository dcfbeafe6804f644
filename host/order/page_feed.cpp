// SPDX-License-Identifier: MIT
#include "order/page_feed.h"

#include <algorithm>

#include "pictures/memory.h"

namespace host {

// The pages of the next input, a file.
void PageFeed::open() {
  pages_ = std::make_unique<Pages>(name_);
  name_ = pages_->input().name();
  if (task_.page) {
    left_ = {*task_.page};
  } else if (!options_.pageRanges.empty()) {
    left_ = choosePages(options_.pageRanges, pages_->count(), name_);
  } else if (options_.pages) {
    left_ = choosePages({{1, 0}}, pages_->count(), name_);
  } else {
    left_ = {0};
  }
  std::ranges::reverse(left_);
  known_ += left_.size() - 1;
}

std::unique_ptr<Picture> PageFeed::next(const Gate &gate) {
  while (left_.empty()) {
    pages_.reset();
    if (nextInput_ == task_.inputs.size()) return nullptr;
    const TaskInput &input = task_.inputs[nextInput_++];
    name_ = input.name;
    if (input.pixels) return readMemory(*input.pixels, name_, options_.background, gate);
    open();
  }
  const uint32_t page = left_.back();
  left_.pop_back();
  // Without a word about pages it is the first one, with a note about the others.
  const bool chosen = options_.pages || !options_.pageRanges.empty();
  if (!chosen) return pages_->readFirst(options_.background, gate);
  name_ = pages_->nameOf(page);
  return pages_->read(page, options_.background, gate);
}

}  // namespace host
