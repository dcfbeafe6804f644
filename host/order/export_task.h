// SPDX-License-Identifier: MIT
// One output, from the files of its pictures.
#pragma once

#include <functional>

#include "filter/library.h"
#include "order/options.h"
#include "order/report.h"
#include "order/task.h"

namespace host {

// Who asked for an export. Null is for who does not care.
struct Caller {
  uint32_t flags = 0;  // of a RaxelHostJob, besides those that options say
  RaxelHostProgress progress = nullptr;
  RaxelHostStop stop = nullptr;
  RaxelHostTemporary temporary = nullptr;
  RaxelHostWrite write = nullptr;                // takes the file of a task without an output
  uint8_t **memory = nullptr;                    // or is where it lies then, the caller's from then on
  size_t *pages = nullptr;                       // is told how many there are, as far as it is known
  void *context = nullptr;                       // of all of them
  std::function<void(const Report &page)> told;  // of each page that is written
};

// Finds the filter that the options name, or the usual one.
const Library &openFilter(const Options &options);

// Exports the picture or the pages of a task, and fills the report as it goes. Throws a Failure, which says
// which option helps; the old output then stands.
void exportTask(const Library &library, const Options &options, const Task &task, const Caller &caller,
                Report &report);

}  // namespace host
