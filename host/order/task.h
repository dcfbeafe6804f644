// SPDX-License-Identifier: MIT
// One output, with the inputs and pages that go into it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "order/options.h"

namespace host {

// A file by its path, or a picture in memory, which is borrowed and has a name for messages.
struct TaskInput {
  std::string name;
  const RaxelHostPixels *pixels = nullptr;
};

struct Task {
  std::vector<TaskInput> inputs;
  std::string output;
  std::optional<uint32_t> page;    // the only one of the input, from 0 on
  std::optional<Failure> failure;  // why it cannot even begin
};

}  // namespace host
