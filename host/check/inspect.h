// SPDX-License-Identifier: MIT
// What a TIFF file holds.
#pragma once

#include <string>
#include <vector>

#include "check/directory.h"
#include "failure.h"

namespace host {

struct InspectedPage {
  Directory directory;
  bool decoded = false;  // every row could be decoded
};

struct Inspection {
  std::string name;
  Exit exit = kDone;  // kNoInput when the pixels of a page cannot be decoded
  uint64_t bytes = 0;
  std::vector<InspectedPage> pages{1};  // at least one
};

// Reads the directories of a file, and has libtiff decode every row. Throws a Failure when it cannot be
// read.
Inspection inspect(const std::string &path);

// What the number in a tag means, in words for people; empty where there is no more to say.
std::string meaning(const DirectoryEntry &entry);

// The inspection as a JSON object, in one line.
std::string toJson(const Inspection &seen);

}  // namespace host
