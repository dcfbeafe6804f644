// SPDX-License-Identifier: MIT
// The filter of this process. Its state is that of the process, so there is one, and one lock around it.
#pragma once

#include <mutex>
#include <string>

#include "filter/library.h"

namespace host {

// Loads the filter on the first call (raxelHostOpen says from where), and hands out the same ever after.
// Throws a Failure that names what is missing, or when another one is asked for later.
const Library &openFilter(const std::string &path);

// The open one; null when there is none.
const Library *openedFilter();

// Held during every use of the filter, its handle memory included.
class FilterLock {
 public:
  FilterLock();

 private:
  std::unique_lock<std::mutex> lock_;
};

}  // namespace host
