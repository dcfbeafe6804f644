// SPDX-License-Identifier: MIT
// A disk that fails at every possible call of a profile's rewriting, once or from then on: the profile is
// the old one or the new one, whole, and nothing is left beside it, in /tmp, open or allocated.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "raxel/profile.h"
#include "runtime/live_blocks.h"
#include "support/disk.h"
#include "support/environment.h"
#include "support/temp_dir.h"

namespace {

using support::Disk;
using support::DiskCall;
using support::DiskFailure;

struct ProfileFaults : testing::Test {
  support::TempDir dir;
  support::Environment noFolder{"INIDIR", nullptr};
  std::string path = dir.file("p.ini");

  size_t filesBeside() const {
    size_t n = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(dir.path())) ++n;
    return n;
  }

  // A profile that takes several windows to read and to write, with a mark that no other file has.
  std::string withKey(const char *value) const {
    std::string text = "[s]\n;" + dir.path() + "\nk=" + value + "\n[t]\n";
    while (text.size() < 40000) text += "some=line of text\n";
    return text;
  }

  static size_t filesInTmp(const std::string &mark) {
    size_t n = 0;
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator("/tmp", ignored)) {
      if (entry.path().filename().string().size() != 12 || !entry.is_regular_file(ignored)) continue;
      n += support::readText(entry.path().string()).find(mark) != std::string::npos;
    }
    return n;
  }

  // What a rewrite leaves of the profile with each call of a kind failing in turn, until none is left to
  // fail. `old` is empty where there was no profile. Returns how many calls there were.
  size_t tryAll(DiskCall call, DiskFailure failure, const std::string &old, const std::string &wanted,
                bool mayFail) {
    const size_t descriptors = support::openDescriptors();
    const size_t blocks = runtime::countBlocks();
    for (size_t number = 1;; ++number) {
      unlink(path.c_str());
      if (!old.empty()) support::writeFile(path, old);
      bool failed = false;
      {
        const Disk disk(call, number, failure);
        EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
        failed = disk.failed();
      }
      const bool isThere = std::filesystem::exists(path);
      const std::string seen = isThere ? support::readText(path) : "";
      EXPECT_TRUE(seen == wanted || (failed && mayFail && seen == old && isThere == !old.empty()))
          << number << ": " << seen.size() << " bytes";
      EXPECT_EQ(filesBeside(), isThere ? 1u : 0u) << number;
      EXPECT_EQ(support::openDescriptors(), descriptors) << number;
      EXPECT_EQ(runtime::countBlocks(), blocks) << number;
      if (!failed || testing::Test::HasFailure()) return number - 1;
    }
  }
};

TEST_F(ProfileFaults, LeaveTheOldOneOrTheNewOne) {
  const std::string old = withKey("1");
  for (const DiskFailure failure : {DiskFailure::kOnce, DiskFailure::kForever}) {
    EXPECT_GT(tryAll(DiskCall::kOpen, failure, old, withKey("9"), true), 4u);
    EXPECT_GT(tryAll(DiskCall::kRead, failure, old, withKey("9"), true), 8u);
    EXPECT_GT(tryAll(DiskCall::kWrite, failure, old, withKey("9"), true), 8u);
    EXPECT_GT(tryAll(DiskCall::kSeek, failure, old, withKey("9"), true), 1u);
    EXPECT_GT(tryAll(DiskCall::kClose, failure, old, withKey("9"), true), 3u);
    EXPECT_EQ(tryAll(DiskCall::kSync, failure, old, withKey("9"), true), 2u);
    EXPECT_EQ(tryAll(DiskCall::kRename, failure, old, withKey("9"), true), 1u);
  }
  EXPECT_EQ(filesInTmp(dir.path()), 0u);
}

TEST_F(ProfileFaults, MakeANewOneWholeOrNotAtAll) {
  for (const DiskFailure failure : {DiskFailure::kOnce, DiskFailure::kForever}) {
    for (int call = 0; call <= static_cast<int>(DiskCall::kRename); ++call) {
      tryAll(static_cast<DiskCall>(call), failure, "", "\n[s]\nk=9\n", true);
    }
  }
}

TEST_F(ProfileFaults, BytesThatComeInPiecesAreNone) {
  for (const DiskFailure failure : {DiskFailure::kShort, DiskFailure::kInterrupted}) {
    EXPECT_GT(tryAll(DiskCall::kRead, failure, withKey("1"), withKey("9"), false), 8u);
    EXPECT_GT(tryAll(DiskCall::kWrite, failure, withKey("1"), withKey("9"), false), 8u);
  }
}

// What cannot be read, written, brought to the disk or renamed leaves the old profile; what only the
// folder's own entry lacks does not.
TEST_F(ProfileFaults, NoneOfThoseThatCountIsOverlooked) {
  const auto after = [&](DiskCall call, size_t number) {
    support::writeFile(path, withKey("1"));
    // (A read that fails once, behind bytes that came, is made again and nothing is lost.)
    const Disk disk(call, number, call == DiskCall::kRead ? DiskFailure::kForever : DiskFailure::kOnce);
    WritePrivateProfileString("s", "k", "9", path.c_str());
    EXPECT_TRUE(disk.failed());
    const std::string seen = support::readText(path);
    return seen == withKey("1") ? "old" : seen == withKey("9") ? "new" : "neither";
  };
  for (const DiskCall call : {DiskCall::kRead, DiskCall::kWrite}) {
    for (size_t number = 1; number <= 8; ++number) EXPECT_STREQ(after(call, number), "old") << number;
  }
  EXPECT_STREQ(after(DiskCall::kRename, 1), "old");
  EXPECT_STREQ(after(DiskCall::kSync, 1), "old");
  EXPECT_STREQ(after(DiskCall::kSync, 2), "new");
}

// Between making a temporary and locking it, somebody may take it for one without an owner, and remove it.
// A disk without locks is another matter.
TEST_F(ProfileFaults, ATemporaryThatSomebodyElseHasLockedIsLeftToThem) {
  const auto rewrite = [&](DiskFailure failure, int error) {
    support::writeFile(path, withKey("1"));
    const Disk disk(DiskCall::kLock, 1, failure, error);
    EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
    EXPECT_TRUE(disk.failed());
    EXPECT_EQ(support::readText(path), withKey("9"));
  };
  for (const int error : {EWOULDBLOCK, EACCES, EINTR}) {
    rewrite(DiskFailure::kOnce, error);
    EXPECT_TRUE(std::filesystem::exists(dir.file(".p.ini.raxel-0"))) << error;
    EXPECT_EQ(filesBeside(), 2u) << "the second one is the profile now";
    unlink(dir.file(".p.ini.raxel-0").c_str());
  }
  for (const int error : {ENOLCK, ENOSYS, EOPNOTSUPP}) {
    rewrite(DiskFailure::kForever, error);
    EXPECT_EQ(filesBeside(), 1u) << error;
  }
}

// By the time that the lock is had, the name may be nobody's any more, or another file's.
TEST_F(ProfileFaults, ATemporaryThatHasLostItsNameIsLeft) {
  const std::string first = dir.file(".p.ini.raxel-0");
  for (const bool another : {false, true}) {
    support::writeFile(path, withKey("1"));
    const support::BeforeLock meanwhile([&] {
      unlink(first.c_str());
      if (another) support::writeFile(first, "theirs");
    });
    EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
    EXPECT_TRUE(meanwhile.passed());
    EXPECT_EQ(support::readText(path), withKey("9"));
    EXPECT_EQ(std::filesystem::exists(first), another);
    EXPECT_EQ(support::readText(first), another ? "theirs" : "");
  }
}

TEST_F(ProfileFaults, OnlyWhatWasLookedAtIsSwept) {
  const std::string first = dir.file(".p.ini.raxel-0");
  support::writeFile(path, withKey("1"));
  support::writeFile(first, "half");
  const support::BeforeLock meanwhile([&] {
    unlink(first.c_str());
    support::writeFile(first, "theirs");
  });
  EXPECT_EQ(WritePrivateProfileString("s", "k", "9", path.c_str()), 0);
  EXPECT_EQ(support::readText(path), withKey("9"));
  EXPECT_EQ(support::readText(first), "theirs");
}

}  // namespace
