// SPDX-License-Identifier: MIT
// Threads of the built library: how many a call makes, and what may be said about it from outside.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include <cstdlib>

#include "library/host.h"

#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
#include <dlfcn.h>

namespace {

int made = 0;  // only the thread that exports makes any

}  // namespace

// What the program defines goes before what its libraries do.
extern "C" int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*start)(void *),
                              void *argument) {
  ++made;
  using Create = int (*)(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *);
  static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  return create(thread, attributes, start, argument);
}

namespace {

using namespace library;

int madeBy(const Picture &picture, const Job &job) {
  made = 0;
  EXPECT_EQ(exportPicture(picture, job).result, 0u);
  return made;
}

int cores() {
  cpu_set_t set;
  return sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
}

// Four strips: the caller codes as well as the threads that it makes.
TEST(Threads, AreMadeForLargePicturesOfSlowCoders) {
  const Picture large = noise(24, 800, 500, 3);
  EXPECT_EQ(madeBy(large, {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_LZW}), std::min(cores(), 4) - 1);
  EXPECT_EQ(madeBy(large, {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_PACKBITS}), 0);
  EXPECT_EQ(madeBy(large, {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_NONE}), 0);
  EXPECT_EQ(madeBy(noise(24, 400, 300, 3), {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_LZW}), 0);
}

TEST(Threads, AreNoneForAProcessHeldToOneCore) {
  cpu_set_t before, one;
  ASSERT_EQ(sched_getaffinity(0, sizeof before, &before), 0);
  CPU_ZERO(&one);
  CPU_SET(static_cast<size_t>(sched_getcpu()), &one);
  ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
  EXPECT_EQ(madeBy(noise(24, 800, 500, 3), {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_LZW}), 0);
  EXPECT_EQ(sched_setaffinity(0, sizeof before, &before), 0);
}

TEST(Threads, AreHeldToWhatTheEnvironmentSays) {
  const Picture large = noise(24, 800, 500, 3);
  setenv("RAXEL_THREADS", "1", 1);
  EXPECT_EQ(madeBy(large, {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_LZW}), 0);
  setenv("RAXEL_THREADS", "2", 1);
  EXPECT_EQ(madeBy(large, {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_LZW}), std::min(cores(), 2) - 1);
  unsetenv("RAXEL_THREADS");
}

}  // namespace
#endif

TEST(Threads, MakeNoDifferenceToAFile) {
  const library::Picture large = library::noise(24, 800, 500, 4);
  const library::Written many = library::exportPicture(large, {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_LZW});
  setenv("RAXEL_THREADS", "1", 1);
  const library::Written one = library::exportPicture(large, {RAXEL_ASK_MODE_RGB, RAXEL_ASK_COMPRESS_LZW});
  unsetenv("RAXEL_THREADS");
  EXPECT_EQ(one.result, 0u);
  EXPECT_EQ(many.file, one.file);
}
