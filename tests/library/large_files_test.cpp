// SPDX-License-Identifier: MIT
// Files that a number of 32 bits cannot describe: dated after 2038, or of more than 2 GiB.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "library/library.h"
#include "support/temp_dir.h"

namespace {

// The system's own programs make them, whatever this one's numbers are. Whether they could.
bool made(const std::string &command, const std::string &path) {
  return std::system((command + " '" + path + "' 2>&1").c_str()) == 0;
}

// The first bytes of a file, as the library reads them.
std::string front(const std::string &path) {
  const Handle stream = LOADED(kvlOpen)(path.c_str(), nullptr, KVL_READ);
  if (stream == 0) return "cannot be opened";
  std::array<char, 4> bytes{};
  const int32_t count = LOADED(kvlRead)(stream, bytes.data(), static_cast<int32_t>(bytes.size()));
  EXPECT_EQ(LOADED(kvlClose)(stream), 0);
  return {bytes.data(), static_cast<size_t>(count)};
}

void expectReplaced(const std::string &path) {
  const Handle stream = LOADED(kvlOpen)(path.c_str(), nullptr, KVL_OUTPUT);
  ASSERT_NE(stream, 0u);
  EXPECT_EQ(LOADED(kvlWrite)(stream, "new", 3), 3);
  EXPECT_EQ(LOADED(kvlClose)(stream), 0);
  EXPECT_EQ(support::readText(path), "new");
}

struct LargeFiles : testing::Test {
  support::TempDir folder;
  std::string path = folder.file("file");
};

TEST_F(LargeFiles, ThatAreDatedAfter2038AreRead) {
  support::writeFile(path, "word");
  if (!made("touch -d '2040-01-01 00:00 UTC'", path)) GTEST_SKIP() << "the disk knows no such date";
  EXPECT_EQ(front(path), "word");
}

TEST_F(LargeFiles, ThatAreDatedAfter2038AreWritten) {
  support::writeFile(path, "words");
  if (!made("touch -d '2040-01-01 00:00 UTC'", path)) GTEST_SKIP() << "the disk knows no such date";
  expectReplaced(path);
}

TEST_F(LargeFiles, ProfilesThatAreDatedAfter2038AreReadAndRewritten) {
  support::writeFile(path, "[S]\nKey=old\n");
  if (!made("touch -d '2040-01-01 00:00 UTC'", path)) GTEST_SKIP() << "the disk knows no such date";
  std::array<char, 8> value{};
  EXPECT_EQ(LOADED(GetPrivateProfileString)("S", "Key", "", value.data(), value.size(), path.c_str()), 3);
  EXPECT_STREQ(value.data(), "old");
  LOADED(WritePrivateProfileString)("S", "Key", "new", path.c_str());
  EXPECT_EQ(support::readText(path), "[S]\nKey=new\n");
}

TEST_F(LargeFiles, OfThreeGigabytesAreReadFromTheirFront) {
  support::writeFile(path, "word");
  if (!made("truncate -s 3G", path)) GTEST_SKIP() << "the disk has no such files";
  EXPECT_EQ(front(path), "word");
}

TEST_F(LargeFiles, OfThreeGigabytesAreReplaced) {
  support::writeFile(path, "word");
  if (!made("truncate -s 3G", path)) GTEST_SKIP() << "the disk has no such files";
  expectReplaced(path);
}

}  // namespace
