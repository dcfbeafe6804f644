// SPDX-License-Identifier: MIT
// Writes one of the texts made from the option table to standard output; runs while the project is built.
//
//   raxel-export-option-docs bash|zsh|fish
//   raxel-export-option-docs manual PAGE      the page with its line "@OPTIONS@" replaced
#include <fstream>
#include <iostream>
#include <string>

#include "command/option_docs.h"

namespace {

int writeManual(const char *page) {
  std::ifstream in(page);
  std::string line;
  bool replaced = false;
  while (std::getline(in, line)) {
    const bool here = line == "@OPTIONS@";
    std::cout << (here ? host::manualOptions() : line + "\n");
    replaced = replaced || here;
  }
  return replaced ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
  const std::string what = argc > 1 ? argv[1] : "";
  if (what == "manual" && argc == 3) return writeManual(argv[2]);
  if (what == "bash") std::cout << host::bashCompletion();
  if (what == "zsh") std::cout << host::zshCompletion();
  if (what == "fish") std::cout << host::fishCompletion();
  return std::cout.good() ? 0 : 1;
}
