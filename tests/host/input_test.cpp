// SPDX-License-Identifier: MIT
#include "pictures/input.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "failure.h"
#include "support/temp_dir.h"

namespace {

// The message with which reading these bytes from a pipe fails; empty when it does not.
std::string refusal(const std::string &bytes, uint64_t longest) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  close(ends[1]);
  const std::string path = "/dev/fd/" + std::to_string(ends[0]);
  std::string message;
  try {
    host::Wanted wanted = host::kPicture;
    wanted.longest = longest;
    const host::Input input(path, wanted);
    EXPECT_EQ(std::string(input.bytes().begin(), input.bytes().end()), bytes);
  } catch (const host::Failure &failure) {
    EXPECT_EQ(failure.code(), host::kNoInput);
    message = std::string(failure.what()).substr(path.size());
  }
  close(ends[0]);
  return message;
}

}  // namespace

TEST(Input, APipeMustEnd) {
  const std::string picture = "P5\n1 1\n255\nA";
  EXPECT_EQ(refusal(picture, 12), "");
  EXPECT_EQ(refusal(picture, 11), ": does not end within 11 bytes; give one picture in a file");
}

// Words and first look are those of what is wanted.
TEST(Input, SpeaksOfWhatIsWanted) {
  const auto begins = [](std::span<const uint8_t> bytes) { return bytes[0] == 0; };
  const host::Wanted zeros{"row of zeros", "a row of zeros in it", "begins with no zero", begins, 100000};
  const auto said = [&](const std::string &path) -> std::string {
    try {
      const host::Input input(path, zeros);
      return "nothing";
    } catch (const host::Failure &failure) {
      return failure.what();
    }
  };
  EXPECT_EQ(said("/tmp"), "/tmp: is a folder; name a row of zeros in it");
  EXPECT_EQ(said("/dev/zero"),
            "/dev/zero: does not end within 100000 bytes; give one row of zeros in a file");
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_NE(fcntl(ends[1], F_SETPIPE_SZ, 1 << 20), -1);
  const std::string ones(70000, '1');
  ASSERT_EQ(write(ends[1], ones.data(), ones.size()), static_cast<ssize_t>(ones.size()));
  close(ends[1]);
  const std::string path = "/dev/fd/" + std::to_string(ends[0]);
  EXPECT_EQ(said(path), path + ": begins with no zero");
  close(ends[0]);
}

// A file that need not be a picture is looked at before it is brought into memory.
TEST(Input, AMappedFileIsNotReadInWhole) {
  constexpr size_t kSize = size_t{32} << 20;
  const support::TempDir folder;
  const std::string path = folder.file("large");
  const int file = open(path.c_str(), O_RDWR | O_CREAT, 0600);
  ASSERT_EQ(ftruncate(file, kSize), 0);
  close(file);
  const auto pagesInMemory = [](const host::Input &input) {
    std::vector<unsigned char> pages(kSize / static_cast<size_t>(sysconf(_SC_PAGESIZE)));
    if (mincore(const_cast<uint8_t *>(input.bytes().data()), kSize, pages.data()) != 0) return -1L;
    long count = 0;
    for (const unsigned char page : pages) count += page & 1;
    return count;
  };
  host::watchMappedInputs([](const std::string &) {});
  long before = 0;
  {
    const host::Input input(path);
    ASSERT_EQ(input.bytes().size(), kSize);
    before = pagesInMemory(input);
  }
  host::watchMappedInputs(nullptr);
  if (before < 0) GTEST_SKIP() << "the system does not tell what is in memory";
  EXPECT_LT(before, 100);
}

// A program that does not catch the fault of a file that is cut short would end by it.
TEST(Input, MapsFilesOnlyWhileSomebodyWatches) {
  static std::vector<std::string> told;
  told.clear();
  const support::TempDir folder;
  const std::string path = folder.file("small");
  support::writeFile(path, "P5\n1 1\n255\nA");
  const std::vector<uint8_t> expected = support::readFile(path);
  const auto read = [&] {
    const host::Input input(path);
    return std::vector<uint8_t>(input.bytes().begin(), input.bytes().end());
  };
  EXPECT_EQ(read(), expected);
  EXPECT_TRUE(told.empty());
  host::watchMappedInputs([](const std::string &name) { told.push_back(name); });
  EXPECT_EQ(read(), expected);
  host::watchMappedInputs(nullptr);
  EXPECT_EQ(told, (std::vector<std::string>{path, ""}));
}
