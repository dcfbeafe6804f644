// SPDX-License-Identifier: MIT
// Who may do what with an output: nobody else anything before it is whole, and then as with the file that
// it replaces, or with any new one.
#pragma once

#include <sys/stat.h>

#include <string>
#include <vector>

namespace host {

struct Rights {
  bool ofOldFile = false;
  struct stat about = {};
  std::vector<char> list;  // of further users and groups, as the system keeps it; empty where there is none
  bool listIsLost = false;  // it cannot be read
};

Rights rightsOfOldFile(const std::string &path, const struct stat &about);

// Gives a file of this process's own the rights, as far as it may: what the old file's owner or group had
// is given to no other one. Answers an errno.
int giveRights(int fd, const Rights &rights);

}  // namespace host
