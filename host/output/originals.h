// SPDX-License-Identifier: MIT
// The inputs of a run, which no output may replace.
#pragma once

#include <sys/types.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace host {

// Known by device and inode, so that links, other spellings of a path and redirections count as well.
class Originals {
 public:
  // Looks up all inputs; "-" is standard input. What is no regular file cannot be lost and is left out.
  explicit Originals(const std::vector<std::string> &inputs);

  // Throws a Failure when writing to this output ("-": standard output) would replace one of them.
  void protectFrom(const std::string &output) const;

 private:
  std::set<std::pair<dev_t, ino_t>> files_;
};

}  // namespace host
