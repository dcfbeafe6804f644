// SPDX-License-Identifier: MIT
// What happened to a picture.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "failure.h"
#include "order/options.h"
#include "raxel/host.h"

namespace host {

struct Report {
  std::string input;
  std::string output;
  Exit exit = kDone;
  std::string error;  // when exit is not kDone

  // The picture that was read; empty format: it never was.
  std::string format;
  uint32_t width = 0, height = 0, bits = 0, colors = 0;

  // The file. With --as-is there is no plan, and these are what its directory says.
  bool planned = false;
  RaxelPlan plan{};
  bool seen = false;
  uint32_t fileWidth = 0, fileHeight = 0, fileBits = 0;
  bool isInPlace = false;  // written whole: whatever happens now, the export went well
  uint64_t bytes = 0;      // written, or with --as-is and --dry-run to be written
  bool dryRun = false;
  bool verified = false;
  bool isDone = false;       // and was before, so that nothing was written
  bool differences = false;  // the rows are coded as differences

  bool isPaged = false;            // a file of pages, which have told of themselves
  uint32_t pageCount = 0;          // in it
  std::vector<std::string> pages;  // their reports as JSON, where they are asked for

  std::vector<std::string> notes;    // always worth telling
  std::vector<std::string> details;  // for --verbose
  double readSeconds = 0, prepareSeconds = 0, writeSeconds = 0;
};

// The report as a JSON object, in one line.
std::string toJson(const Report &report);
// The document around the objects of an export.
std::string toJsonDocument(const std::vector<std::string> &reports, int exit);

// The documents of a command that failed before it began, and of --version.
std::string errorJson(int exit, const std::string &message);
std::string versionJson(const std::string &version);

}  // namespace host
