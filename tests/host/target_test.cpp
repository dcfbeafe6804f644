// SPDX-License-Identifier: MIT
#include "output/target.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "failure.h"
#include "output/strays.h"
#include "support/temp_dir.h"

namespace {

using host::Target;

// What may be replaced without a question: it begins like a TIFF.
const std::string kOldFile("II*\0old", 7);

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

// The message without the path; empty when the target can be made.
std::string refusal(const std::string &path, const host::TargetRules &rules) {
  try {
    const Target target(path, rules);
  } catch (const host::Failure &failure) {
    EXPECT_EQ(failure.code(), host::kNoCreate);
    return std::string(failure.what()).substr(path.size());
  }
  return "";
}

}  // namespace

TEST(Target, ReplacesTheOldFileOnlyAtTheEnd) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  support::writeFile(path, kOldFile);
  Target target(path, {});
  write(target, "new");
  EXPECT_EQ(support::readText(path), kOldFile);
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
    support::writeFile(path, kOldFile);
    try {
      target.commit();
      FAIL() << "replaced it";
    } catch (const host::Failure &failure) {
      EXPECT_EQ(failure.code(), host::kNoCreate);
      EXPECT_EQ(failure.what(), path + ": cannot be created: it was made during the export");
      EXPECT_EQ(failure.error(), EEXIST);
    }
  }
  EXPECT_EQ(support::readText(path), kOldFile);
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
  support::writeFile(path, kOldFile);
  {
    Target target(path, {});
    write(target, "new");
    EXPECT_EQ(filesIn(folder.path()), 2u);
  }
  EXPECT_EQ(support::readText(path), kOldFile);
  EXPECT_EQ(filesIn(folder.path()), 1u);
}

TEST(Target, PlantedNamesAreNeitherFollowedNorTouched) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif"), victim = folder.file("victim");
  support::writeFile(victim, "mine");
  ASSERT_EQ(symlink("victim", folder.file(".a.tif.raxel-0").c_str()), 0);
  std::filesystem::create_directory(folder.file(".a.tif.raxel-1"));
  {
    Target target(path, {});
    write(target, "new");
    target.commit();
  }
  EXPECT_EQ(support::readText(path), "new");
  EXPECT_FALSE(std::filesystem::is_symlink(path));
  EXPECT_EQ(support::readText(victim), "mine");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.file(".a.tif.raxel-0")));
  EXPECT_TRUE(std::filesystem::is_directory(folder.file(".a.tif.raxel-1")));
}

// The rights of a target's temporary when it is half written, and those of the file in the end.
struct Rights {
  mode_t half, whole;
};

Rights rightsOf(const std::string &path) {
  std::string name;
  host::TargetRules rules;
  rules.context = &name;
  rules.temporary = [](void *context, const char *temporary) {
    if (temporary) *static_cast<std::string *>(context) = temporary;
  };
  struct stat half = {}, whole = {};
  Target target(path, rules);
  write(target, "ne");
  target.sink().flush();
  EXPECT_EQ(stat(name.c_str(), &half), 0);
  write(target, "w");
  target.commit();
  EXPECT_EQ(stat(path.c_str(), &whole), 0);
  return {half.st_mode & 07777, whole.st_mode & 07777};
}

TEST(Target, ATemporaryIsPrivateUntilItIsWhole) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  const mode_t before = umask(027);
  const Rights made = rightsOf(path);
  umask(before);
  EXPECT_EQ(made.half, 0600u);
  EXPECT_EQ(made.whole, 0640u) << "what the user's mask leaves";
  for (const mode_t old : {0666u, 0400u, 0755u}) {
    support::writeFile(path, kOldFile);
    ASSERT_EQ(chmod(path.c_str(), old), 0);
    const Rights replaced = rightsOf(path);
    EXPECT_EQ(replaced.half, 0600u);
    EXPECT_EQ(replaced.whole, old) << "those of the old file";
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  }
}

TEST(Target, ANameThatIsTakenMakesWayForAnother) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  for (int slot = 0; slot < 10; ++slot) {
    ASSERT_EQ(symlink("victim", folder.file(".a.tif.raxel-" + std::to_string(slot)).c_str()), 0);
  }
  std::string names;
  host::TargetRules rules;
  rules.context = &names;
  rules.temporary = [](void *context, const char *temporary) {
    if (temporary) *static_cast<std::string *>(context) += std::filesystem::path(temporary).filename();
  };
  {
    Target target(path, rules);
    write(target, "new");
    target.commit();
  }
  EXPECT_EQ(support::readText(path), "new");
  EXPECT_FALSE(std::filesystem::exists(folder.file("victim")));
  ASSERT_EQ(names.size(), std::string(".a.tif.raxel-").size() + 12);
  EXPECT_EQ(names.find_first_not_of("0123456789", names.rfind('-') + 1), std::string::npos) << names;
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

TEST(Target, SweepsTheStraysOfOtherTargetsFromTheFoldersOfARun) {
  const support::TempDir folder;
  std::filesystem::create_directory(folder.file("to"));
  std::filesystem::create_directory(folder.file("linked"));
  std::filesystem::create_symlink("../linked/z.tif", folder.file("to/z.tif"));
  const std::string living = folder.file("to/.living.tif.raxel-1");
  const std::vector<std::string> strays{"to/.a.tif.raxel-0", "to/.other.tif.raxel-9",
                                        "to/.a.tif.raxel-012345678901", "linked/.b.raxel-3"};
  const std::vector<std::string> others{"to/a.tif.raxel-0", "to/.a.tif.raxel-x", "to/.raxel-0",
                                        "to/.a.raxel-10", ".c.tif.raxel-0"};
  for (const std::string &name : strays) support::writeFile(folder.file(name), "half");
  for (const std::string &name : others) support::writeFile(folder.file(name), "whole");
  support::writeFile(living, "half");
  std::filesystem::create_directory(folder.file("to/.folder.raxel-0"));
  const int fd = open(living.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(fd, LOCK_EX), 0);
  host::sweepFolders({folder.file("to/z.tif"), "-", "/dev/null", folder.file("to/a.tif")});
  for (const std::string &name : strays) EXPECT_FALSE(std::filesystem::exists(folder.file(name))) << name;
  for (const std::string &name : others) EXPECT_TRUE(std::filesystem::exists(folder.file(name))) << name;
  EXPECT_TRUE(std::filesystem::exists(living));
  EXPECT_TRUE(std::filesystem::exists(folder.file("to/.folder.raxel-0")));
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
  support::writeFile(path, kOldFile);
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
  support::writeFile(folder.file("real/a.tif"), kOldFile);
  std::filesystem::create_symlink("real/a.tif", folder.file("link.tif"));
  Target target(folder.file("link.tif"), {});
  write(target, "new");
  target.commit();
  EXPECT_TRUE(std::filesystem::is_symlink(folder.file("link.tif")));
  EXPECT_EQ(support::readText(folder.file("real/a.tif")), "new");
}

// The system tells a name for a descriptor's file that nobody has any more, and which is nobody else's
// either.
TEST(Target, WritesADescriptorsFileThatLostItsNameInPlace) {
  const auto written = [](const std::string &name, bool linked, bool taken) {
    const support::TempDir folder;
    const std::string path = folder.file(name), other = folder.file("other.tif");
    support::writeFile(path, kOldFile + "and more");
    const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (linked) std::filesystem::create_hard_link(path, other);
    std::filesystem::remove(path);
    if (taken) support::writeFile(path + " (deleted)", "Dear");
    Target target("/dev/fd/" + std::to_string(fd), {});
    write(target, "new");
    target.commit();
    if (linked) {
      EXPECT_EQ(support::readText(other), "new") << name;
    }
    if (taken) {
      EXPECT_EQ(support::readText(path + " (deleted)"), "Dear") << name;
    }
    EXPECT_EQ(filesIn(folder.path()), size_t{linked} + size_t{taken}) << name;
    std::string text(20, 0);
    const ssize_t size = pread(fd, text.data(), text.size(), 0);
    close(fd);
    return text.substr(0, size < 0 ? 0 : static_cast<size_t>(size));
  };
  for (const bool linked : {false, true}) {
    for (const std::string &name : {std::string("a.tif"), std::string(250, 'n')})
      EXPECT_EQ(written(name, linked, false), "new");
    EXPECT_EQ(written("a.tif", linked, true), "new");
  }
}

TEST(Target, ReplacesADescriptorsFileByItsName) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif"), other = folder.file("other.tif");
  support::writeFile(path, kOldFile);
  const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
  std::filesystem::create_hard_link(path, other);
  Target target("/dev/fd/" + std::to_string(fd), {});
  write(target, "new");
  target.commit();
  close(fd);
  EXPECT_EQ(support::readText(path), "new");
  EXPECT_EQ(support::readText(other), kOldFile);
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
  support::writeFile(path, kOldFile);
  EXPECT_EQ(codeOf(path, {false, true}), host::kNoCreate);
  EXPECT_EQ(codeOf(folder.path(), {}), host::kNoCreate);
  EXPECT_EQ(codeOf(folder.file("none/a.tif"), {}), host::kNoCreate);
  EXPECT_EQ(codeOf(path, {}), 0);
  EXPECT_EQ(support::readText(path), kOldFile);
}

// A name given by mistake may be that of a picture, a program, a letter.
TEST(Target, ReplacesNoFileThatIsNoTiffWithoutForce) {
  const support::TempDir folder;
  const std::string path = folder.file("a.tif");
  const auto holding = [&](const std::string &bytes, bool force) {
    support::writeFile(path, bytes);
    const std::string why = refusal(path, {.force = force});
    EXPECT_EQ(support::readText(path), bytes);
    return why;
  };
  const std::string no = ": cannot be created: it exists and is no TIFF";
  for (const char *bytes : {"old", "I", "II*", "II+x", "MM*", "\x89PNG\r\n\x1A\n"}) {
    EXPECT_EQ(holding(bytes, false), no) << bytes;
    EXPECT_EQ(holding(bytes, true), "") << bytes;
  }
  EXPECT_EQ(holding(std::string("II\0*", 4), false), no);
  for (const std::string &bytes : {std::string(), std::string("II*\0", 4), std::string("MM\0*", 4),
                                   std::string("II+\0", 4), std::string("MM\0+\0\x8", 6)}) {
    EXPECT_EQ(holding(bytes, false), "") << bytes;
  }
}

TEST(Target, LooksAtTheFileBehindALink) {
  const support::TempDir folder;
  support::writeFile(folder.file("letter"), "Dear");
  std::filesystem::create_symlink("letter", folder.file("a.tif"));
  EXPECT_NE(refusal(folder.file("a.tif"), {}), "");
  EXPECT_EQ(refusal(folder.file("a.tif"), {.force = true}), "");
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
