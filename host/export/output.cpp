// SPDX-License-Identifier: MIT
#include "export/output.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "failure.h"

namespace host {
namespace {

constexpr size_t kPiece = 1 << 20;

TargetRules rulesOf(const RaxelHostJob &job) {
  return {(job.flags & RAXEL_HOST_FORCE) != 0,
          (job.flags & RAXEL_HOST_NO_CLOBBER) != 0,
          (job.flags & RAXEL_HOST_ONLY_TIFF) != 0,
          (job.flags & RAXEL_HOST_SYNC_CHILD) != 0,
          (job.flags & RAXEL_HOST_NO_SYNC) != 0,
          job.temporary,
          job.context};
}

}  // namespace

Output::Output(const RaxelHostJob &job) : Output(job.path ? job.path : "", rulesOf(job)) {
  write_ = job.write;
  context_ = job.context;
}

Output::Output(const std::string &path, const TargetRules &rules) : name_("the picture") {
  if (path.empty()) return;
  target_ = std::make_unique<Target>(path, rules);
  name_ = target_->name();
}

void Output::checkWritten() const {
  if (target_) return target_->checkWritten();
  if (memory_.error() == ENOMEM)
    throw Failure(RAXEL_HOST_NO_MEMORY, raxelHostMessage(RAXEL_HOST_NO_MEMORY), ENOMEM);
  if (memory_.error() != 0) {
    throw Failure(RAXEL_HOST_NO_WRITE, name_ + ": cannot be written: the file would take 2 GiB or more",
                  memory_.error());
  }
}

uint8_t *Output::commit(const std::function<void()> &lastLook) {
  if (target_) {
    target_->commit(lastLook);
    return nullptr;
  }
  lastLook();
  if (!write_) return memory_.release();
  std::span<const uint8_t> left = memory_.kept();
  while (!left.empty()) {
    const size_t step = std::min(kPiece, left.size());
    if (const int error = write_(context_, left.data(), step); error != 0) {
      throw Failure(RAXEL_HOST_NO_WRITE,
                    name_ + ": cannot be written: " + std::strerror(error > 0 ? error : EIO),
                    error > 0 ? error : EIO);
    }
    left = left.subspan(step);
  }
  return nullptr;
}

}  // namespace host
