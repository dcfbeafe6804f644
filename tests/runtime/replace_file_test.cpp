// SPDX-License-Identifier: MIT
// A file that takes another's place: where links lead, and names that are too long.
#include "runtime/replace_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <filesystem>
#include <string>

#include "runtime/temporary.h"
#include "support/disk.h"
#include "support/temp_dir.h"

namespace {

struct Replace : testing::Test {
  void SetUp() override {
    support::writeFile(dir.file("source"), "new");
    source = open(dir.file("source").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(source, 0);
  }
  void TearDown() override { close(source); }

  bool replace(const std::string &path) { return runtime::replaceFile(path.c_str(), source, nullptr); }
  // A link for each number below `links`, each to the one before, and the first to a file.
  std::string chain(int links) {
    support::writeFile(dir.file("0"), "old");
    for (int i = 0; i < links; ++i) {
      EXPECT_EQ(symlink(std::to_string(i).c_str(), dir.file(std::to_string(i + 1)).c_str()), 0);
    }
    return dir.file(std::to_string(links));
  }
  size_t files() const {
    size_t n = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(dir.path())) ++n;
    return n;
  }

  support::TempDir dir;
  int source = -1;
};

// It is copied in blocks of 4096 bytes.
TEST_F(Replace, FilesOfAnyLengthAreWhole) {
  for (const size_t size : std::to_array<size_t>({0, 1, 4095, 4096, 4097, 8191, 8193})) {
    std::string text(size, 'a');
    for (size_t i = 0; i < size; ++i) text[i] = static_cast<char>('a' + i % 23);
    support::writeFile(dir.file("source"), text);
    EXPECT_TRUE(replace(dir.file("file"))) << size;
    EXPECT_EQ(support::readText(dir.file("file")), text) << size;
  }
}

// As many links as the system follows, and no more.
TEST_F(Replace, FortyLinksAreFollowed) {
  const std::string last = chain(40);
  ASSERT_EQ(access(last.c_str(), R_OK), 0);
  EXPECT_TRUE(replace(last));
  EXPECT_EQ(support::readText(dir.file("0")), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(last));
  EXPECT_EQ(files(), 42u);
}

TEST_F(Replace, MoreLinksAreNot) {
  const std::string last = chain(41);
  ASSERT_NE(access(last.c_str(), R_OK), 0);
  EXPECT_FALSE(replace(last));
  EXPECT_EQ(support::readText(dir.file("0")), "old");
  EXPECT_EQ(files(), 43u);
}

TEST_F(Replace, ALinkToItselfStays) {
  ASSERT_EQ(symlink("loop", dir.file("loop").c_str()), 0);
  EXPECT_FALSE(replace(dir.file("loop")));
  EXPECT_TRUE(std::filesystem::is_symlink(dir.file("loop")));
  EXPECT_EQ(files(), 2u);
}

TEST_F(Replace, PathsThatAreTooLongAreNone) {
  EXPECT_FALSE(replace(std::string(PATH_MAX, 'p')));
  ASSERT_EQ(symlink(std::string(PATH_MAX - 1, 'x').c_str(), dir.file("link").c_str()), 0);
  EXPECT_FALSE(replace(dir.file("link")));
  EXPECT_EQ(files(), 2u);
}

// No numbered name fits beside the target, or not even one at random.
TEST_F(Replace, TemporariesThatDoNotFitAreNotMade) {
  for (const size_t folder :
       std::to_array<size_t>({PATH_MAX - 22, PATH_MAX - 12, PATH_MAX - 2, PATH_MAX + 10})) {
    runtime::Temporary made;
    const std::string target = std::string(folder - 1, 'f') + "/p.ini.and.more";
    EXPECT_FALSE(runtime::makeTemporary(made, target.c_str(), 0600)) << folder;
  }
}

// Nor is a name tried that was cut: before its letters, or within what stands before them.
TEST_F(Replace, CutNamesAreNotTried) {
  for (const size_t folder : std::to_array<size_t>({PATH_MAX - 9, PATH_MAX - 5})) {
    runtime::Temporary made;
    const std::string target = std::string(folder - 1, 'f') + "/p";
    const support::Disk disk;
    EXPECT_FALSE(runtime::makeTemporary(made, target.c_str(), 0600)) << folder;
    EXPECT_TRUE(disk.opened().empty()) << folder;
  }
}

TEST_F(Replace, WhatIsAbsent) {
  support::writeFile(dir.file("file"), "");
  ASSERT_EQ(symlink("nothing", dir.file("leads nowhere").c_str()), 0);
  ASSERT_EQ(symlink("loop", dir.file("loop").c_str()), 0);
  EXPECT_TRUE(runtime::isAbsent(dir.file("nothing").c_str()));
  EXPECT_TRUE(runtime::isAbsent(dir.file("file/below").c_str()));
  EXPECT_TRUE(runtime::isAbsent(dir.file("leads nowhere").c_str()));
  EXPECT_FALSE(runtime::isAbsent(dir.file("file").c_str()));
  EXPECT_FALSE(runtime::isAbsent(dir.file("loop").c_str()));
}

}  // namespace
