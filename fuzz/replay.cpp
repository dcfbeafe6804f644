// SPDX-License-Identifier: MIT
// Replays a fuzz target without the fuzzer: every file of the corpus as it is, with and without what is
// rare (Input::rarely), cut short, and with seeded bytes changed, and some noise besides. A finding ends
// the program, as it does in the fuzzer.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "input.h"
#include "support/cases.h"
#include "support/random.h"
#include "support/temp_dir.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

constexpr size_t kVariationsOfEach = 40;
constexpr size_t kNoises = 100;
constexpr int64_t kLongestNoise = 2000;

using Bytes = std::vector<uint8_t>;

// The target gets a block of exactly its size, so that a read past its end is noticed.
void feed(const Bytes &bytes) {
  const Bytes exact(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

Bytes varied(Bytes bytes, support::Random &random) {
  if (bytes.empty()) return bytes;
  if (random.chance(30)) bytes.resize(static_cast<size_t>(random.next() % bytes.size()));
  if (bytes.empty()) return bytes;
  for (int64_t changes = random.between(1, 8); changes > 0; --changes) {
    bytes[static_cast<size_t>(random.next() % bytes.size())] = random.byte();
  }
  return bytes;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s CORPUS-FOLDER\n", argv[0]);
    return 2;
  }
  std::vector<std::string> files;
  std::error_code missing;
  for (const auto &entry : std::filesystem::directory_iterator(argv[1], missing)) {
    files.push_back(entry.path().string());
  }
  if (files.empty()) {
    std::fprintf(stderr, "%s holds no inputs\n", argv[1]);
    return 1;
  }
  std::sort(files.begin(), files.end());

  support::Random random(1);
  size_t fed = 0;
  for (const std::string &file : files) {
    const Bytes bytes = support::readFile(file);
    for (const fuzz::Rare rare : {fuzz::Rare::kAlways, fuzz::Rare::kNever, fuzz::Rare::kByInput}) {
      fuzz::rare = rare;
      feed(bytes);
    }
    const size_t variations = support::cases(kVariationsOfEach);
    for (size_t i = 0; i < variations; ++i) feed(varied(bytes, random));
    fed += 3 + variations;
  }
  const size_t noises = support::cases(kNoises);
  for (size_t i = 0; i < noises; ++i)
    feed(random.bytes(static_cast<size_t>(random.between(0, kLongestNoise))));
  std::printf("%zu inputs\n", fed + noises);
  return 0;
}
