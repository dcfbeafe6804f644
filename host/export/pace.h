// SPDX-License-Identifier: MIT
// How far an export is, for who asked to be told, and whether it is to stop.
#pragma once

#include <chrono>
#include <cstdint>

#include "raxel/host.h"

namespace host {

class Pace {
 public:
  explicit Pace(const RaxelHostJob &job)
      : progress_(job.progress), stop_(job.stop), context_(job.context), asked_(progress_ || stop_) {}

  // A stage begins. Throws the Failure of a stop that was asked for.
  void begin(RaxelHostStage stage);
  // Writing begins: the number of image-data writes to come.
  void expect(uint64_t writes);
  // One write of `count` bytes; `size` is that of the file so far. False when the export is to stop.
  bool wrote(uint64_t count, uint64_t size) {
    if (!asked_) return true;
    // Header, directory and patches come in single bytes and pairs; the measure is the pixels.
    if (count > 2) ++done_;
    gathered_ += count;
    return gathered_ < kWorthALook ? !stopped_ : look(size);
  }
  // Between two rows of a preparation: false when the export is to stop.
  bool goesOn() { return !asked_ || look(0); }
  // Asks once more; throws the Failure of a stop that was asked for.
  void check(uint64_t size);
  bool stopped() const { return stopped_; }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr uint64_t kWorthALook = 32 << 10;  // bytes; the clock costs as much as a small write
  bool look(uint64_t size);
  void tell(uint64_t size);

  RaxelHostProgress progress_;
  RaxelHostStop stop_;
  void *context_;
  bool asked_;
  bool stopped_ = false;
  RaxelHostStage stage_ = RAXEL_STAGE_PREPARING;
  uint64_t done_ = 0, expected_ = 1, gathered_ = 0;
  Clock::time_point last_ = Clock::now();
};

}  // namespace host
