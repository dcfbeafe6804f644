// SPDX-License-Identifier: MIT
// Where the bytes of an export go: a file, a callback or memory.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>

#include "output/target.h"

namespace host {

class Output {
 public:
  // Throws a Failure when the file cannot be created.
  explicit Output(const RaxelHostJob &job);
  // To a file, or for no path to memory.
  Output(const std::string &path, const TargetRules &rules);

  Sink &sink() { return target_ ? target_->sink() : memory_; }
  // The name for messages.
  const std::string &name() const { return name_; }
  // Throws the Failure that tells why the sink stopped, if it did.
  void checkWritten() const;
  // All bytes written, for a check of them.
  std::span<const uint8_t> bytes() { return target_ ? target_->bytes() : memory_.kept(); }
  // Puts the whole file in its place, hands it to the callback, or returns it in memory. Just before that
  // it calls `lastLook`, which may throw: nothing has happened then.
  uint8_t *commit(const std::function<void()> &lastLook);

 private:
  std::unique_ptr<Target> target_;  // null: the bytes are kept
  Sink memory_{-1};
  std::string name_;
  RaxelHostWrite write_ = nullptr;
  void *context_ = nullptr;
};

}  // namespace host
