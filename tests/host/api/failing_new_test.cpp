// SPDX-License-Identifier: MIT
// Each piece of memory in turn is refused, and no call of a program's ends it: this program has its own
// operator new, which the library takes.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>

#include "raxel/host.h"
#include "support/temp_dir.h"

namespace {

size_t until;  // how many are given before; 0: all are
bool onlyOne, refused;

}  // namespace

void *operator new(size_t size) {
  if (until != 0 && --until == 0) {
    refused = true;
    if (!onlyOne) until = 1;
    throw std::bad_alloc();
  }
  if (void *block = std::malloc(size == 0 ? 1 : size)) return block;
  throw std::bad_alloc();
}

// Kept apart, or GCC holds the pair of a caller's new and this free for a mistake.
[[gnu::noinline]] void operator delete(void *block) noexcept {
  std::free(block);
}
[[gnu::noinline]] void operator delete(void *block, size_t) noexcept {
  std::free(block);
}

namespace {

// What a call in a process of its own ends with.
enum class End { kGiven, kRefused, kWrong, kDied };

End endOf(const std::function<End()> &call, size_t number, bool once) {
  constexpr int kNothingRefused = 50;
  const pid_t child = fork();
  if (child == 0) {
    onlyOne = once;
    until = number;
    const End end = call();
    until = 0;
    _exit(refused || end != End::kGiven ? static_cast<int>(end) : kNothingRefused);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFEXITED(status)) return End::kDied;
  return WEXITSTATUS(status) == kNothingRefused ? End::kGiven : static_cast<End>(WEXITSTATUS(status));
}

// How many pieces of memory a call asks for.
size_t piecesOf(const std::function<End()> &call) {
  constexpr size_t kMany = 1u << 30;
  until = kMany;
  EXPECT_EQ(call(), End::kGiven);
  const size_t asked = kMany - until;
  until = 0;
  return asked;
}

void tryEachPiece(const std::function<End()> &call) {
  const size_t pieces = piecesOf(call);
  ASSERT_GT(pieces, 10u);
  size_t refusals = 0;
  for (size_t number = 1; number <= pieces; ++number) {
    for (const bool once : {true, false}) {
      const End end = endOf(call, number, once);
      EXPECT_TRUE(end == End::kGiven || end == End::kRefused)
          << number << " of " << pieces << (once ? ": " : " and all later ones: ")
          << (end == End::kDied ? "died" : "a wrong answer");
      refusals += end == End::kRefused ? 1 : 0;
    }
  }
  EXPECT_GT(refusals, pieces / 2);
}

// Two pages of text, numbers and strips.
std::string madeIn(const support::TempDir &folder) {
  const std::string path = folder.file("made.tif");
  RaxelHostOrder *const order = raxelHostOrderNew();
  const uint8_t pixels[6] = {0, 80, 160, 255, 1, 2};
  RaxelHostPixels picture{};
  picture.size = sizeof picture;
  picture.width = 3;
  picture.height = 2;
  picture.kind = RAXEL_PIXELS_GREY;
  picture.channelBytes = 1;
  picture.first = pixels;
  picture.rowStep = 3;
  picture.pixelStep = picture.channelStep = 1;
  EXPECT_EQ(raxelHostOrderSet(order, "output", path.c_str()), RAXEL_HOST_OK);
  EXPECT_EQ(raxelHostOrderSet(order, "pages", nullptr), RAXEL_HOST_OK);
  for (int page = 0; page < 2; ++page) EXPECT_EQ(raxelHostOrderPicture(order, &picture), RAXEL_HOST_OK);
  EXPECT_EQ(raxelHostOrderRun(order, nullptr), RAXEL_HOST_OK) << raxelHostOrderMessage(order);
  raxelHostOrderFree(order);
  return path;
}

}  // namespace

TEST(FailingNew, InspectionsLiveOn) {
  const support::TempDir folder;
  const std::string path = madeIn(folder), missing = folder.file("missing.tif");
  for (const std::string &name : {path, missing}) {
    char *const undisturbed = raxelHostInspect(name.c_str());
    ASSERT_TRUE(undisturbed);
    tryEachPiece([&] {
      char *const text = raxelHostInspect(name.c_str());
      if (!text) return End::kRefused;
      const bool same = std::strcmp(text, undisturbed) == 0, saysWhy = std::strstr(text, "memory");
      raxelHostFree(text);
      return same ? End::kGiven : saysWhy ? End::kRefused : End::kWrong;
    });
    raxelHostFree(undisturbed);
  }
}

TEST(FailingNew, TheListOfOptionsComesLater) {
  // Once it is there it stays: asked for in processes of their own alone.
  constexpr size_t kSome = 400;
  size_t refusals = 0;
  for (size_t number = 1; number <= kSome; ++number) {
    for (const bool once : {true, false}) {
      const End end = endOf(
          [] {
            if (raxelHostOptions()) return End::kGiven;
            until = 0;
            return raxelHostOptions() ? End::kRefused : End::kWrong;
          },
          number, once);
      EXPECT_TRUE(end == End::kGiven || end == End::kRefused) << number << (once ? "" : " and later ones");
      refusals += end == End::kRefused ? 1 : 0;
    }
  }
  EXPECT_GT(refusals, kSome);
}

TEST(FailingNew, OrdersLiveOn) {
  const support::TempDir folder;
  const std::string path = madeIn(folder), output = folder.file("again.tif");
  RaxelHostOrder *const order = raxelHostOrderNew();
  ASSERT_EQ(raxelHostOrderSet(order, "output", output.c_str()), RAXEL_HOST_OK);
  for (const char *flag : {"pages", "no-sync"})
    ASSERT_EQ(raxelHostOrderSet(order, flag, nullptr), RAXEL_HOST_OK);
  ASSERT_EQ(raxelHostOrderFile(order, path.c_str()), RAXEL_HOST_OK);
  ASSERT_EQ(raxelHostOrderRun(order, nullptr), RAXEL_HOST_OK) << raxelHostOrderMessage(order);
  tryEachPiece([&] {
    switch (raxelHostOrderRun(order, nullptr)) {
      case RAXEL_HOST_OK:
        return raxelHostOrderReport(order)[0] == '{' ? End::kGiven : End::kWrong;
      case RAXEL_HOST_NO_MEMORY:
        return End::kRefused;
      default:  // a picture that memory was too little for is told as one that cannot be read
        return std::strstr(raxelHostOrderMessage(order), "memory") ? End::kRefused : End::kWrong;
    }
  });
  raxelHostOrderFree(order);
}
