// SPDX-License-Identifier: MIT
#include "output/originals.h"

#include <sys/stat.h>
#include <unistd.h>

#include "failure.h"

namespace host {
namespace {

// False when there is no regular file behind the name.
bool identify(const std::string &name, int standard, std::pair<dev_t, ino_t> &file) {
  struct stat about;
  const int result = name == "-" ? fstat(standard, &about) : stat(name.c_str(), &about);
  if (result != 0 || !S_ISREG(about.st_mode)) return false;
  file = {about.st_dev, about.st_ino};
  return true;
}

}  // namespace

Originals::Originals(const std::vector<std::string> &inputs) {
  std::pair<dev_t, ino_t> file;
  for (const std::string &input : inputs) {
    if (identify(input, STDIN_FILENO, file)) files_.insert(file);
  }
}

void Originals::protectFrom(const std::string &output) const {
  std::pair<dev_t, ino_t> file;
  if (!identify(output, STDOUT_FILENO, file) || !files_.contains(file)) return;
  throw Failure(kNoCreate, (output == "-" ? "standard output" : output) +
                               ": cannot be created: it is one of the inputs; give another name or folder");
}

}  // namespace host
