// The outputs of a run, each with the inputs and pages that go into it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "command/options.h"

namespace host {

struct Task {
  std::vector<std::string> inputs;
  std::string output;
  std::optional<uint32_t> page;    // the only one of the input, from 0 on
  std::optional<Failure> failure;  // why it cannot even begin
};

// In the order of the inputs. With -d and --page every input is opened, to know its pages. Throws a Failure
// with kUsage when two pages would be written to one file.
std::vector<Task> tasksOf(const Options &options);

}  // namespace host
