// SPDX-License-Identifier: MIT
// The finishing step of an export: between the filter's last write and the renaming.
#pragma once

#include "export/output.h"
#include "raxel/host.h"

namespace host {

// The pages of a file.
struct PageCount {
  bool isPaged = false;  // there may be several, and each says so
  uint32_t number = 0;   // of the page being written, from 0 on
  finish::Chain chain;
};

// Gives the page that has just been written to the output the directory that the result so far, with its
// plan, and the metadata mean. Throws a Failure that names the output; its old file stays.
void finishPage(Output &output, const RaxelHostResult &result, const RaxelMetadata &metadata,
                PageCount &pages);

// Makes room for another page behind the one that is finished.
void startPage(Output &output, PageCount &pages);

// Tells all pages how many there are.
void endPages(Output &output, const PageCount &pages);

}  // namespace host
