// SPDX-License-Identifier: MIT
// Makes the golden files, and says what they are:
//
//   raxel_golden_files                 a line "SHA-256  name" for each, by name
//   raxel_golden_files --compare LIST  which of them are not what such a list says, and how many are
//   raxel_golden_files --into FOLDER   writes them as FOLDER/name.tif
#include <cstdio>
#include <fstream>
#include <map>

#include "golden/files.h"
#include "support/golden.h"
#include "support/sha256.h"
#include "support/temp_dir.h"
#include "support/tiff_reader.h"

namespace {

using golden::Bytes;
using Digests = std::map<std::string, std::string>;

// A road that leads nowhere would be the same everywhere.
bool isPicture(const Bytes &file) {
  const support::TiffFile read = support::readTiff(file);
  return read.find(256) != nullptr && read.width() != 0 && read.height() != 0;
}

// By name; `failures` counts those that cannot be compared.
Digests makeAll(const std::string &folder, int &failures) {
  Digests made;
  const auto take = [&](const std::string &name, const Bytes &file) {
    if (!isPicture(file)) {
      std::printf("%s is no picture: %zu bytes\n", name.c_str(), file.size());
      ++failures;
    }
    if (!made.emplace(name, support::sha256(file)).second) {
      std::printf("%s is there twice\n", name.c_str());
      ++failures;
    }
    if (!folder.empty())
      support::writeFile(folder + "/" + name + ".tif", std::string(file.begin(), file.end()));
  };
  golden::makeCalls(take);
  golden::makeDriven(take);
  golden::makeSessions(take);
  golden::makeTall(take);
  return made;
}

// How many differ.
int compare(const Digests &made, const std::string &path) {
  std::string problem;
  Digests listed = support::parseGolden(support::readText(path), problem);
  int failures = 0;
  if (!problem.empty()) {
    std::printf("%s: %s\n", path.c_str(), problem.c_str());
    ++failures;
  }
  for (const auto &[name, digest] : made) {
    if (const auto found = listed.find(name); found == listed.end()) {
      std::printf("%s is not in the list\n", name.c_str());
      ++failures;
    } else {
      if (found->second != digest) {
        std::printf("%s is not what it was\n", name.c_str());
        ++failures;
      }
      listed.erase(found);
    }
  }
  for (const auto &[name, digest] : listed) {
    std::printf("%s is not made\n", name.c_str());
    ++failures;
  }
  return failures;
}

}  // namespace

int main(int argc, char **argv) {
  const std::string option = argc == 3 ? argv[1] : "";
  if (argc != 1 && option != "--compare" && option != "--into") {
    std::fprintf(stderr, "usage: raxel_golden_files [--compare LIST | --into FOLDER]\n");
    return 64;
  }
  int failures = 0;
  const Digests made = makeAll(option == "--into" ? argv[2] : "", failures);
  if (option == "--compare") {
    failures += compare(made, argv[2]);
    std::printf("golden: %d passed, %d failed\n", static_cast<int>(made.size()) - failures, failures);
  } else {
    for (const auto &[name, digest] : made) std::printf("%s  %s\n", digest.c_str(), name.c_str());
  }
  return failures == 0 ? 0 : 1;
}
