// SPDX-License-Identifier: MIT
#include "output/originals.h"

#include <gtest/gtest.h>

#include "failure.h"
#include "support/temp_dir.h"

namespace {

using host::Originals;

bool isProtected(const Originals &originals, const std::string &output) {
  try {
    originals.protectFrom(output);
  } catch (const host::Failure &failure) {
    EXPECT_EQ(failure.code(), host::kNoCreate);
    EXPECT_EQ(failure.what(),
              output + ": cannot be created: it is one of the inputs; give another name or folder");
    return true;
  }
  return false;
}

}  // namespace

TEST(Originals, AreKnownUnderEveryName) {
  const support::TempDir folder;
  for (const char *name : {"a.png", "b.png", "c.png"}) support::writeFile(folder.file(name), name);
  std::filesystem::create_symlink("a.png", folder.file("soft.tif"));
  std::filesystem::create_hard_link(folder.file("b.png"), folder.file("hard.tif"));
  std::filesystem::copy_file(folder.file("a.png"), folder.file("copy.tif"));
  const Originals originals({folder.file("a.png"), folder.file("b.png"), folder.file("missing.png")});
  EXPECT_TRUE(isProtected(originals, folder.file("a.png")));
  EXPECT_TRUE(isProtected(originals, folder.path() + "/./a.png"));
  EXPECT_TRUE(isProtected(originals, folder.file("soft.tif")));
  EXPECT_TRUE(isProtected(originals, folder.file("hard.tif")));
  EXPECT_FALSE(isProtected(originals, folder.file("c.png")));
  EXPECT_FALSE(isProtected(originals, folder.file("copy.tif")));
  EXPECT_FALSE(isProtected(originals, folder.file("missing.png")));
  EXPECT_FALSE(isProtected(originals, folder.file("new.tif")));
}

TEST(Originals, DevicesAndFoldersAreNone) {
  const support::TempDir folder;
  const Originals originals({"/dev/null", folder.path()});
  EXPECT_FALSE(isProtected(originals, "/dev/null"));
  EXPECT_FALSE(isProtected(originals, folder.path()));
  EXPECT_FALSE(isProtected(originals, ""));
}
