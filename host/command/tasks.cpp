// SPDX-License-Identifier: MIT
#include "command/tasks.h"

#include <cstdio>
#include <set>

#include "output/strays.h"
#include "pictures/pages.h"

namespace host {
namespace {

// The output's name with the page's number: name-001.tif.
std::string numbered(const std::string &output, uint32_t page) {
  char number[16];
  std::snprintf(number, sizeof number, "-%03u", page + 1);
  std::string name = output;
  return name.insert(name.rfind('.'), number);
}

// One task for each chosen page of an input.
void addPages(const Options &options, const std::string &input, const std::string &output,
              std::vector<Task> &tasks) {
  try {
    const Pages pages(input);
    for (const uint32_t page : choosePages(options.pageRanges, pages.count(), pages.input().name()))
      tasks.push_back({{{input}}, numbered(output, page), page, std::nullopt});
  } catch (const Failure &failure) {
    tasks.push_back({{{input}}, output, std::nullopt, failure});
  }
}

}  // namespace

std::vector<Task> tasksOf(const Options &options) {
  if (options.pages && options.directory.empty()) {
    Task whole{{}, options.outputs.front(), std::nullopt, std::nullopt};
    for (const std::string &input : options.inputs) whole.inputs.push_back({input});
    return {whole};
  }
  std::vector<Task> tasks;
  for (size_t i = 0; i < options.inputs.size(); ++i) {
    const bool splits = !options.pages && !options.pageRanges.empty() && !options.directory.empty();
    if (splits) {
      addPages(options, options.inputs[i], options.outputs[i], tasks);
    } else {
      tasks.push_back({{{options.inputs[i]}}, options.outputs[i], std::nullopt, std::nullopt});
    }
  }
  std::set<std::string> taken, files;
  for (Task &task : tasks) {
    if (options.directory.empty()) continue;
    if (!taken.insert(task.output).second)
      throw Failure(kUsage, "two pages would be written to " + task.output);
    // By a link; the later one would take the earlier one's place.
    const std::string file = followLinks(task.output);
    if (!files.insert(file).second && !task.failure)
      task.failure = Failure(kNoCreate, task.output + ": cannot be created: another page goes to " + file);
  }
  return tasks;
}

}  // namespace host
