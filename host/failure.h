// SPDX-License-Identifier: MIT
// How work is given up here: one exception with a code and a sentence for the user.
#pragma once

#include <stdexcept>
#include <string>

#include "raxel/host.h"

namespace host {

// Exit codes of the command, after the BSD convention of sysexits.h.
enum Exit : int {
  kDone = 0,
  kUsage = 64,     // the command line makes no sense
  kNoInput = 66,   // an input cannot be read, or holds no picture
  kLibrary = 70,   // raxel.so is missing, of another version, or stopped on the way
  kNoCreate = 73,  // the output cannot be created
  kNoWrite = 74,   // a write failed, or the check of the written file
  kStopped = 130,  // Ctrl-C
};

// What the command ends with for a code of libraxelhost, and the code nearest to it.
Exit exitOf(int reason);
RaxelHostCode reasonOf(Exit code);

class Failure : public std::runtime_error {
 public:
  // In the rooms that read options and pictures.
  Failure(Exit code, const std::string &message, int error = 0)
      : Failure(code, reasonOf(code), message, error) {}
  // In those of libraxelhost: a RaxelHostCode, and the errno behind it where there is one.
  Failure(RaxelHostCode reason, const std::string &message, int error = 0)
      : Failure(exitOf(reason), reason, message, error) {}
  // Where the two tell different things.
  Failure(Exit code, RaxelHostCode reason, const std::string &message, int error)
      : std::runtime_error(message), code_(code), reason_(reason), error_(error) {}

  Exit code() const { return code_; }
  RaxelHostCode reason() const { return reason_; }
  int error() const { return error_; }

 private:
  Exit code_;
  RaxelHostCode reason_;
  int error_;
};

}  // namespace host
