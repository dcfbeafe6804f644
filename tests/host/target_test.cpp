#include "output/target.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "failure.h"
#include "support/temp_dir.h"

namespace {

using host::Target;

void write(Target &target, const std::string &text) {
  ASSERT_TRUE(target.sink().write(reinterpret_cast<const uint8_t *>(text.data()), text.size()));
}

size_t filesIn(const std::string &folder) {
  size_t count = 0;
  for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(folder)) ++count;
  return count;
}

int codeOf(const std::string &path, const host::TargetRules &rules) {
  try {
    const Target target(path, rules);
  } catch (const host::Failure &failure) {
    return failure.code();
  }
  return 0;
}

}  // namespace

TEST(Target, ReplacesTheOldFileOnlyAtTheEnd) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  support::writeFile(path, "old");
  Target target(path, {});
  write(target, "new");
  EXPECT_EQ(support::readText(path), "old");
  target.commit();
  EXPECT_EQ(support::readText(path), "new");
  EXPECT_EQ(filesIn(folder.path()), 1u);
}

TEST(Target, KeepsAFileThatWasMadeMeanwhileIfNoneMayBeReplaced) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  {
    Target target(path, {.noClobber = true});
    write(target, "new");
    support::writeFile(path, "old");
    try {
      target.commit();
      FAIL() << "replaced it";
    } catch (const host::Failure &failure) {
      EXPECT_EQ(failure.code(), host::kNoCreate);
      EXPECT_EQ(failure.what(),
                path + ": cannot be created: it was made during the export, and --no-clobber was given");
    }
  }
  EXPECT_EQ(support::readText(path), "old");
  EXPECT_EQ(filesIn(folder.path()), 1u);
  std::filesystem::remove(path);
  Target(path, {.noClobber = true}).commit();
  EXPECT_EQ(filesIn(folder.path()), 1u);
}

TEST(Target, RefusesANameThatIsTooLongBeforeTheWork) {
  const support::TempDir folder;
  EXPECT_EQ(codeOf(folder.file(std::string(256, 'a')), {}), host::kNoCreate);
  EXPECT_EQ(filesIn(folder.path()), 0u);
  EXPECT_EQ(codeOf(folder.file(std::string(255, 'a')), {}), 0);
}

TEST(Target, LeavesNothingBehindWhenGivenUp) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  support::writeFile(path, "old");
  {
    Target target(path, {});
    write(target, "new");
    EXPECT_EQ(filesIn(folder.path()), 2u);
  }
  EXPECT_EQ(support::readText(path), "old");
  EXPECT_EQ(filesIn(folder.path()), 1u);
}

TEST(Target, RemovesTheStrayOfAKilledExportButNotALivingOnes) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif"), stray = folder.file(".a.tif.raxel-0"),
                    living = folder.file(".a.tif.raxel-1");
  support::writeFile(stray, "half");
  support::writeFile(living, "half");
  const int fd = open(living.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(fd, LOCK_EX), 0);
  Target(path, {}).commit();
  EXPECT_FALSE(std::filesystem::exists(stray));
  EXPECT_TRUE(std::filesystem::exists(living));
  close(fd);
}

TEST(Target, TwoExportsToOneFileDoNotMix) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  Target first(path, {}), second(path, {});
  write(first, "first");
  write(second, "second");
  second.commit();
  EXPECT_EQ(support::readText(path), "second");
  first.commit();
  EXPECT_EQ(support::readText(path), "first");
}

TEST(Target, KeepsTheOldFilesRights) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  support::writeFile(path, "old");
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  Target target(path, {});
  target.commit();
  struct stat about;
  ASSERT_EQ(stat(path.c_str(), &about), 0);
  EXPECT_EQ(about.st_mode & 07777, 0640u);
}

TEST(Target, WritesThroughLinks) {
  const support::TempDir folder;
  std::filesystem::create_directory(folder.file("real"));
  support::writeFile(folder.file("real/a.tif"), "old");
  std::filesystem::create_symlink("real/a.tif", folder.file("link.tif"));
  Target target(folder.file("link.tif"), {});
  write(target, "new");
  target.commit();
  EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link.tif")));
  EXPECT_EQ(support::readText(folder.file("real/a.tif")), "new");
}

TEST(Target, LongNamesWork) {
  const support::TempDir folder;
  const std::string path = folder.file(std::string(251, 'n') + ".tif");
  Target target(path, {});
  write(target, "new");
  target.commit();
  EXPECT_EQ(support::readText(path), "new");
}

TEST(Target, RefusesWhatItMayNotReplace) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  support::writeFile(path, "old");
  EXPECT_EQ(codeOf(path, {false, true}), host::kNoCreate);
  EXPECT_EQ(codeOf(folder.path(), {}), host::kNoCreate);
  EXPECT_EQ(codeOf(folder.file("none/a.tif"), {}), host::kNoCreate);
  EXPECT_EQ(codeOf(path, {}), 0);
  EXPECT_EQ(support::readText(path), "old");
}

TEST(Target, ShowsItsBytesForACheck) {
  const support::TempDir folder;
  Target target(folder.file("a.tif"), {});
  write(target, "some bytes");
  const auto bytes = target.bytes();
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "some bytes");
  target.commit();
}

TEST(Target, AFullDeviceIsAFailedWrite) {
  Target target("/dev/full", {});
  write(target, "bytes");
  try {
    target.commit();
    FAIL();
  } catch (const host::Failure &failure) {
    EXPECT_EQ(failure.code(), host::kNoWrite);
    EXPECT_STREQ(failure.what(), "/dev/full: cannot be written: the disk is full");
  }
}
