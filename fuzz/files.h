// SPDX-License-Identifier: MIT
// Whole files, written and read in one go each.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "input.h"

namespace fuzz {

template <class Bytes>
void writeWhole(const std::string &name, const Bytes &bytes) {
  std::FILE *file = std::fopen(name.c_str(), "wb");
  require(file != nullptr, "a file of the target's own");
  std::setvbuf(file, nullptr, _IONBF, 0);
  // Where there are no bytes there may be no address either.
  require(bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size(), "room for it");
  std::fclose(file);
}

template <class Bytes>
Bytes readWhole(const std::string &name) {
  struct stat about;
  require(stat(name.c_str(), &about) == 0, "a file that is still there");
  Bytes bytes(static_cast<size_t>(about.st_size), 0);
  std::FILE *file = std::fopen(name.c_str(), "rb");
  require(file != nullptr, "a file of the target's own");
  std::setvbuf(file, nullptr, _IONBF, 0);
  require(bytes.empty() || std::fread(bytes.data(), 1, bytes.size(), file) == bytes.size(),
          "as many bytes as it has");
  std::fclose(file);
  return bytes;
}

}  // namespace fuzz
