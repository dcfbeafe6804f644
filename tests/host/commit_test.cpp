// SPDX-License-Identifier: MIT
// The order in which a file gets to its place, seen at the system calls: this program has its own fsync,
// rename and what else leads there, which keep a list and can fail.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <functional>

#include "failure.h"
#include "order/manifest_lines.h"
#include "output/target.h"
#include "support/temp_dir.h"

namespace {

std::string calls;
bool syncFails, renameFails, closeFails;
int renameNewError, linkError;
const std::string kOld("II*\0old", 7);  // a TIFF as far as anybody looks

}  // namespace

extern "C" int fsync(int fd) {
  calls += "sync ";
  if (!syncFails) return static_cast<int>(syscall(SYS_fsync, fd));
  errno = EIO;
  return -1;
}

extern "C" int rename(const char *from, const char *to) noexcept {
  calls += "rename ";
  if (!renameFails) return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
  errno = EACCES;
  return -1;
}

extern "C" int close(int fd) {
  const auto result = static_cast<int>(syscall(SYS_close, fd));
  if (!closeFails) return result;
  errno = EIO;
  return -1;
}

extern "C" int renameat2(int fromFolder, const char *from, int toFolder, const char *to,
                         unsigned how) noexcept {
  calls += "renameat2 ";
  if (renameNewError == 0)
    return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, how));
  errno = renameNewError;
  return -1;
}

extern "C" int link(const char *from, const char *to) noexcept {
  calls += "link ";
  if (linkError == 0) return static_cast<int>(syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
  errno = linkError;
  return -1;
}

namespace {

// What a commit over an old file ends with: its message, or nothing when all went well.
struct Commit {
  std::string message, content;
  size_t files = 0;

  explicit Commit(const host::TargetRules &rules = {}, const std::function<void()> &lastLook = nullptr) {
    const support::TempDir folder;
    const std::string path = folder.file("a.tif");
    support::writeFile(path, kOld);
    calls.clear();
    try {
      host::Target target(path, rules);
      const std::string text = "new";
      target.sink().write(reinterpret_cast<const uint8_t *>(text.data()), text.size());
      target.commit(lastLook);
    } catch (const host::Failure &failure) {
      EXPECT_EQ(failure.code(), lastLook ? host::kStopped : host::kNoWrite);
      message = failure.what();
      if (message.starts_with(path)) message.erase(0, path.size());
    }
    content = support::readText(path);
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(folder.path())) ++files;
  }
};

}  // namespace

TEST(Commit, WaitsForTheDiskBeforeTheOldFileGoes) {
  syncFails = renameFails = false;
  const Commit done;
  EXPECT_EQ(done.message, "");
  EXPECT_EQ(calls, "sync rename ");
  EXPECT_EQ(done.content, "new");
  EXPECT_EQ(done.files, 1u);
}

TEST(Commit, DoesNotWaitForTheDiskWhenToldNotTo) {
  syncFails = true;
  for (const bool inChild : {false, true}) {
    const Commit done({.syncChild = inChild, .noSync = true});
    EXPECT_EQ(done.message, "");
    EXPECT_EQ(calls, "rename ");
    EXPECT_EQ(done.content, "new");
    EXPECT_EQ(done.files, 1u);
  }
  syncFails = false;
}

TEST(Commit, ADiskThatFailsLeavesTheOldFile) {
  syncFails = true;
  const Commit failed;
  syncFails = false;
  EXPECT_EQ(failed.message, ": cannot be written: Input/output error; the old file is untouched");
  EXPECT_EQ(calls, "sync ");
  EXPECT_EQ(failed.content, kOld);
  EXPECT_EQ(failed.files, 1u);
}

TEST(Commit, AStopDuringTheWaitForTheDiskLeavesTheOldFile) {
  const Commit stopped({}, [] {
    calls += "look ";
    throw host::Failure(RAXEL_HOST_STOPPED, "stopped");
  });
  EXPECT_EQ(calls, "sync look ");
  EXPECT_EQ(stopped.message, "stopped");
  EXPECT_EQ(stopped.content, kOld);
  EXPECT_EQ(stopped.files, 1u);
}

TEST(Commit, ARefusedRenamingLeavesTheOldFile) {
  renameFails = true;
  const Commit failed;
  renameFails = false;
  EXPECT_EQ(failed.message, ": cannot be written: you may not write there; the old file is untouched");
  EXPECT_EQ(failed.content, kOld);
  EXPECT_EQ(failed.files, 1u);
}

// Disks of a network tell of what they could not write when a file is closed.
TEST(Commit, WhatAClosingTellsOfLeavesTheOldFile) {
  closeFails = true;
  const Commit failed({.noSync = true});
  closeFails = false;
  EXPECT_EQ(failed.message, ": cannot be written: Input/output error; the old file is untouched");
  EXPECT_EQ(failed.content, kOld);
  EXPECT_EQ(failed.files, 1u);
}

// What is written as it is has no old file that could stay.
TEST(Commit, WhatAClosingTellsOfAFileThatIsOpenAlreadyIsNoSuccess) {
  const support::TempDir folder;
  const int fd = open(folder.file("out").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  for (const std::string name : {"-", "/dev/null"}) {
    for (const bool fails : {false, true}) {
      std::string message;
      const int stdoutBefore = dup(STDOUT_FILENO);
      dup2(fd, STDOUT_FILENO);
      try {
        host::Target target(name, {});
        target.sink().write(reinterpret_cast<const uint8_t *>("new"), 3);
        closeFails = fails;
        target.commit();
      } catch (const host::Failure &failure) {
        EXPECT_EQ(failure.code(), host::kNoWrite) << name;
        message = failure.what();
      }
      closeFails = false;
      dup2(stdoutBefore, STDOUT_FILENO);
      close(stdoutBefore);
      const std::string told = name == "-" ? "standard output" : name;
      EXPECT_EQ(message, fails ? told + ": cannot be written: Input/output error" : "");
    }
  }
  close(fd);
}

TEST(Commit, WhatAClosingTellsOfAManifestIsNoSuccess) {
  const support::TempDir folder;
  const std::string path = folder.file("m.jsonl");
  std::string message;
  closeFails = true;
  try {
    host::appendToManifest(path, "{}");
  } catch (const host::Failure &failure) {
    EXPECT_EQ(failure.code(), host::kNoWrite);
    EXPECT_EQ(failure.error(), EIO);
    message = failure.what();
  }
  closeFails = false;
  EXPECT_EQ(message, path + ": cannot be written: Input/output error; the picture is written");
}

// Some disks know no renaming that replaces nothing, and some of them no links either.
TEST(Commit, ADiskThatCannotRenameToANewNameReplacesNothingEither) {
  const auto commit = [](bool madeMeanwhile) {
    const support::TempDir folder;
    const std::string path = folder.file("a.tif");
    calls.clear();
    int code = 0;
    try {
      host::Target target(path, {.noClobber = true});
      target.sink().write(reinterpret_cast<const uint8_t *>("new"), 3);
      if (madeMeanwhile) support::writeFile(path, kOld);
      target.commit();
    } catch (const host::Failure &failure) {
      code = failure.code();
    }
    size_t files = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(folder.path())) ++files;
    EXPECT_EQ(files, 1u);
    EXPECT_EQ(code, madeMeanwhile ? host::kNoCreate : 0);
    EXPECT_EQ(support::readText(path), madeMeanwhile ? kOld : "new");
    return calls;
  };
  for (const int error : {EINVAL, ENOSYS}) {
    renameNewError = error;
    EXPECT_EQ(commit(false), "sync renameat2 link ");
    EXPECT_EQ(commit(true), "sync renameat2 link ");
    linkError = EPERM;
    EXPECT_EQ(commit(false), "sync renameat2 link rename ");
    EXPECT_EQ(commit(true), "sync renameat2 link ");
    linkError = 0;
  }
  renameNewError = 0;
}

TEST(Commit, ADiskThatCannotRenameToANewNameIsNamed) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  std::string message;
  renameNewError = EIO;
  try {
    host::Target target(path, {.noClobber = true});
    target.sink().write(reinterpret_cast<const uint8_t *>("new"), 3);
    target.commit();
  } catch (const host::Failure &failure) {
    message = failure.what();
  }
  renameNewError = 0;
  EXPECT_EQ(message, path + ": cannot be written: Input/output error");
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}
