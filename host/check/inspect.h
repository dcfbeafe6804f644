// What a TIFF file holds.
#pragma once

#include <string>

#include "check/directory.h"
#include "failure.h"

namespace host {

struct Inspection {
  std::string name;
  Exit exit = kDone;  // kNoInput when the pixels cannot be decoded
  uint64_t bytes = 0;
  Directory directory;
  bool decoded = false;  // every row could be decoded
};

// Reads a file's directory, and has libtiff decode every row. Throws a Failure when it cannot be read.
Inspection inspect(const std::string &path);

// The inspection as a JSON object, in one line.
std::string toJson(const Inspection &seen);

}  // namespace host
