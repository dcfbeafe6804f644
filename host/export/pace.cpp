// SPDX-License-Identifier: MIT
#include "export/pace.h"

#include <algorithm>

#include "failure.h"

namespace host {
namespace {

constexpr auto kStep = std::chrono::milliseconds(20);

}  // namespace

void Pace::begin(RaxelHostStage stage) {
  stage_ = stage;
  done_ = 0;
  check(0);
}

void Pace::expect(uint64_t writes) {
  expected_ = std::max<uint64_t>(writes, 1);
  begin(RAXEL_STAGE_WRITING);
}

bool Pace::look(uint64_t size) {
  gathered_ = 0;
  if (stopped_ || Clock::now() - last_ < kStep) return !stopped_;
  tell(size);
  return !stopped_;
}

void Pace::tell(uint64_t size) {
  const double part = std::min(1.0, static_cast<double>(done_) / static_cast<double>(expected_));
  if (progress_ && progress_(context_, stage_, part, size) != 0) stopped_ = true;
  if (stop_ && stop_(context_) != 0) stopped_ = true;
  last_ = Clock::now();
}

void Pace::check(uint64_t size) {
  if (!asked_) return;
  if (!stopped_) tell(size);
  if (stopped_) throw Failure(RAXEL_HOST_STOPPED, raxelHostMessage(RAXEL_HOST_STOPPED));
}

}  // namespace host
