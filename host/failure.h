// How this program gives up: one exception with the exit code and the sentence for the user.
#pragma once

#include <stdexcept>
#include <string>

namespace host {

// Exit codes, after the BSD convention of sysexits.h.
enum Exit : int {
  kDone = 0,
  kUsage = 64,     // the command line makes no sense
  kNoInput = 66,   // an input cannot be read, or holds no picture
  kLibrary = 70,   // raxel.so is missing, of another version, or stopped on the way
  kNoCreate = 73,  // the output cannot be created
  kNoWrite = 74,   // a write failed, or the check of the written file
  kStopped = 130,  // Ctrl-C
};

class Failure : public std::runtime_error {
 public:
  Failure(Exit code, const std::string &message) : std::runtime_error(message), code_(code) {}
  Exit code() const { return code_; }

 private:
  Exit code_;
};

}  // namespace host
