// SPDX-License-Identifier: MIT
// Every form of the library's inner loops that this machine can run, one after the other.
//
//   for (const color::Vectors level : levels::all()) {
//     const levels::AtMost limit(level);
//     ...
//   }
#pragma once

#include <vector>

#include "color/kernels.h"

namespace levels {

inline std::vector<color::Vectors> all() {
  std::vector<color::Vectors> found;
  for (const auto level : {color::Vectors::kNone, color::Vectors::kSsse3, color::Vectors::kAvx512}) {
    if (level <= color::processorVectors()) found.push_back(level);
  }
  return found;
}

// Keeps the library to a level while it is alive.
class AtMost {
 public:
  explicit AtMost(color::Vectors level) { color::limitVectors(level); }
  ~AtMost() { color::limitVectors(color::Vectors::kAvx512); }
  AtMost(const AtMost &) = delete;
  AtMost &operator=(const AtMost &) = delete;
};

// For messages.
inline int number(color::Vectors level) {
  return static_cast<int>(level);
}

}  // namespace levels
