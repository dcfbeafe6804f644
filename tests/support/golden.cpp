// SPDX-License-Identifier: MIT
#include "support/golden.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>

#include "support/paths.h"
#include "support/sha256.h"
#include "support/temp_dir.h"

namespace support {
namespace {

constexpr size_t kHexDigits = 64;

bool isGoldenName(std::string_view name) {
  return !name.empty() &&
         name.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-+=") ==
             std::string_view::npos;
}

// Adds or replaces one line, alone at the file even when shards of the tests run side by side.
void record(const std::string &name, const std::string &hex) {
  const int lock = ::open(goldenPath().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  ASSERT_GE(lock, 0) << goldenPath();
  ::flock(lock, LOCK_EX);
  std::string problem;
  std::map<std::string, std::string> list = parseGolden(goldenText(), problem);
  if (list[name] != hex) {
    list[name] = hex;
    std::string text;
    for (const auto &[known, digest] : list) text.append(digest).append("  ").append(known).append("\n");
    writeFile(goldenPath(), text);
  }
  ::close(lock);
}

}  // namespace

std::string goldenPath() {
  return sourcePath("tests/golden/sha256.txt");
}

std::string goldenText() {
  return readText(goldenPath());
}

std::map<std::string, std::string> parseGolden(std::string_view list, std::string &problem) {
  std::map<std::string, std::string> out;
  std::string previous;
  while (!list.empty()) {
    const std::string_view line = list.substr(0, list.find('\n'));
    list.remove_prefix(std::min(list.size(), line.size() + 1));
    const std::string_view hex = line.substr(0, kHexDigits);
    if (line.size() < kHexDigits + 3 || line.substr(kHexDigits, 2) != "  " ||
        hex.find_first_not_of("0123456789abcdef") != std::string_view::npos ||
        !isGoldenName(line.substr(kHexDigits + 2))) {
      problem = "not a line of the list: " + std::string(line);
      continue;
    }
    const std::string name(line.substr(kHexDigits + 2));
    if (name <= previous) problem = "not sorted, or there twice: " + name;
    previous = name;
    out[name] = hex;
  }
  return out;
}

void golden(const std::string &name, std::span<const uint8_t> bytes) {
  ASSERT_TRUE(isGoldenName(name)) << name;
  const std::string hex = sha256(bytes);
  if (const char *wanted = std::getenv("RAXEL_GOLDEN_RECORD"); wanted != nullptr && *wanted == '1') {
    record(name, hex);
    return;
  }
  static const std::map<std::string, std::string> list = [] {
    std::string ignored;
    return parseGolden(goldenText(), ignored);
  }();
  const auto found = list.find(name);
  ASSERT_NE(found, list.end())
      << name << " (" << bytes.size()
      << " bytes) is not in tests/golden/sha256.txt; its README says how to add it";
  EXPECT_EQ(found->second, hex) << name << " (" << bytes.size() << " bytes) is not what it was";
}

}  // namespace support
