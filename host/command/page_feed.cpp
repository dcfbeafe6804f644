#include "command/page_feed.h"

#include <algorithm>

namespace host {

// The next input; false when all have been read.
bool PageFeed::open() {
  pages_.reset();
  if (nextInput_ == task_.inputs.size()) return false;
  name_ = task_.inputs[nextInput_++];
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
  return true;
}

std::unique_ptr<Picture> PageFeed::next(const Gate &gate) {
  while (left_.empty()) {
    if (!open()) return nullptr;
  }
  const uint32_t page = left_.back();
  left_.pop_back();
  // Without a word about pages it is the first one, with a note about the others.
  const bool chosen = options_.pages || !options_.pageRanges.empty();
  if (!chosen) return readPicture(pages_->input(), options_.background, gate);
  name_ = pages_->nameOf(page);
  return pages_->read(page, options_.background, gate);
}

}  // namespace host
