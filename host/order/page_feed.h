// SPDX-License-Identifier: MIT
// The pages of a task, one after the other.
#pragma once

#include <memory>

#include "order/task.h"
#include "pictures/pages.h"

namespace host {

class PageFeed {
 public:
  // Both are borrowed.
  PageFeed(const Options &options, const Task &task)
      : options_(options), task_(task), known_(task.inputs.size()) {}

  // Reads the next page; null when there is none. The one before may go from then on. Throws a Failure that
  // names it.
  std::unique_ptr<Picture> next(const Gate &gate);
  // The name of the page that was read last, for messages.
  const std::string &name() const { return name_; }
  // How many pages there are in all, as far as it is known: an input that is not open yet counts as one.
  size_t known() const { return known_; }

 private:
  void open();

  const Options &options_;
  const Task &task_;
  size_t nextInput_ = 0, known_;
  std::unique_ptr<Pages> pages_;
  std::vector<uint32_t> left_;  // of them, the next one last
  std::string name_;
};

}  // namespace host
