// SPDX-License-Identifier: MIT
// For tests of decoders in a child: nothing of it stays.
#pragma once

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>

#include "confine/child.h"

class ConfinedTest : public testing::Test {
 protected:
  void SetUp() override {
    host::confineDecoders(true);
    open_ = descriptors();
  }
  void TearDown() override {
    host::confineDecoders(false);
    EXPECT_EQ(descriptors(), open_);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    EXPECT_EQ(errno, ECHILD);
  }

  static int descriptors() {
    DIR *folder = opendir("/proc/self/fd");
    int count = 0;
    while (readdir(folder)) ++count;
    closedir(folder);
    return count;
  }

 private:
  int open_ = 0;
};
