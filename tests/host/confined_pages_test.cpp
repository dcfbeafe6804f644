// SPDX-License-Identifier: MIT
// Pages of one input in a child: one for all of them, and what becomes of those beside a page that does
// harm.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <memory>
#include <new>
#include <set>

#include "confine/filter.h"
#include "confined.h"
#include "failure.h"
#include "pictures/confined.h"

namespace {

using host::Picture;

constexpr uint32_t kPageSide = 8;

class ConfinedPages : public ConfinedTest {};

// What a page is made of, and which process made it.
void fillPage(Picture &page) {
  page.dpiX = getpid();
  page.announce(kPageSide, kPageSide, 8);
  page.allocate(kPageSide, kPageSide, 8);
  std::fill_n(page.pixels.data(), page.pixels.size(), static_cast<uint8_t>(page.directory));
}

// Reads a page as pages of an input are read. The process that decoded it; what is said of one that is lost
// or refused becomes `said`.
pid_t readPage(host::DecoderChild &child, uint64_t place, const host::Decode &decode,
               std::string *said = nullptr) {
  Picture page;
  page.format = "TIFF";
  page.isPage = true;
  page.directory = place;
  page.child = &child;
  try {
    host::confined(page, 0, decode);
  } catch (const host::Unreadable &why) {
    if (!said) throw;
    *said = why.what();
    return 0;
  }
  EXPECT_EQ(page.view.width, kPageSide);
  EXPECT_EQ(page.pixels.data()[kPageSide * kPageSide - 1], static_cast<uint8_t>(place));
  return static_cast<pid_t>(page.dpiX);
}

TEST_F(ConfinedPages, OneChildDecodesThemAll) {
  host::DecoderChild child;
  std::set<pid_t> seen;
  for (uint64_t place = 0; place < 100; ++place) {
    seen.insert(readPage(child, place, [](Picture &page) {
      if (page.format != "TIFF" || !page.isPage || !page.notes.empty())
        throw host::Unreadable("is mixed up");
      fillPage(page);
      page.notes.emplace_back("of this page");
    }));
  }
  EXPECT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen.count(getpid()), 0u);
}

// However page 5 ends.
void expectOnlyPageFiveToFail(const host::Decode &harm, const std::string &wanted) {
  host::DecoderChild child;
  const auto decode = [&](Picture &page) {
    if (page.directory == 5) harm(page);
    fillPage(page);
  };
  std::string said;
  std::set<pid_t> before, after;
  for (uint64_t place = 0; place < 5; ++place) before.insert(readPage(child, place, decode));
  EXPECT_EQ(readPage(child, 5, decode, &said), 0);
  EXPECT_EQ(said.substr(0, wanted.size()), wanted);
  for (uint64_t place = 6; place < 10; ++place) after.insert(readPage(child, place, decode));
  EXPECT_EQ(before.size(), 1u);
  EXPECT_EQ(after.size(), 1u);
  EXPECT_NE(before, after);
}

TEST_F(ConfinedPages, OnesBesideAPageThatEndsItsDecoderAreRead) {
  expectOnlyPageFiveToFail([](Picture &) { __builtin_trap(); }, "is damaged: its decoder ended by signal ");
  expectOnlyPageFiveToFail([](Picture &) { _exit(0); }, "is damaged: its decoder ended too soon");
}

TEST_F(ConfinedPages, OnesBesideAPageThatIsRefusedAreRead) {
  expectOnlyPageFiveToFail([](Picture &) { throw host::Unreadable("is torn"); }, "is torn");
}

TEST_F(ConfinedPages, OnesBesideAPageThatTellsNonsenseAreRead) {
  expectOnlyPageFiveToFail([](Picture &) { host::tellParent("x", 1); },
                           "is damaged: what its decoder tells makes no sense");
}

TEST_F(ConfinedPages, AnotherChildComesAfterThePageThatTheGateRefuses) {
  host::DecoderChild child;
  const pid_t before = readPage(child, 1, fillPage);
  Picture page;
  page.child = &child;
  page.gate = [](const Picture &) { throw host::Failure(host::kUsage, "too large for me"); };
  EXPECT_THROW(host::confined(page, 0, fillPage), host::Failure);
  EXPECT_NE(readPage(child, 3, fillPage), before);
}

// It was whole when it came over.
TEST_F(ConfinedPages, APageMayEndItsDecoderOnceItIsRead) {
  host::DecoderChild child;
  const auto decode = [](Picture &page) {
    fillPage(page);
    // What the page owns goes with it.
    const auto trap = [](int *) { __builtin_trap(); };
    if (page.directory == 2) page.reader = [owned = std::shared_ptr<int>(new int, trap)](Picture &) {};
  };
  std::set<pid_t> seen;
  for (uint64_t place = 0; place < 5; ++place) seen.insert(readPage(child, place, decode));
  EXPECT_EQ(seen.size(), 2u);
}

// A few pieces of rows go over without an answer that is waited for.
TEST_F(ConfinedPages, LargeOnesFollowSmallOnes) {
  host::DecoderChild child;
  for (const uint32_t rows : {1u, 9u, 2u, 40u, 5u, 4u, 33u, 1u}) {
    Picture page;
    page.child = &child;
    page.directory = rows;
    host::confined(page, 0, [](Picture &to) {
      const auto height = static_cast<uint32_t>(to.directory);
      to.allocate(host::Window::kPiece / 2, height, 8);
      for (uint32_t y = 0; y < height; ++y)
        std::fill_n(to.rowAt(y), to.view.stride, static_cast<uint8_t>(y * 7 + height));
    });
    ASSERT_EQ(page.view.height, rows);
    size_t wrong = 0;
    for (size_t i = 0; i < page.pixels.size(); ++i)
      wrong += page.pixels.data()[i] != static_cast<uint8_t>(i / page.view.stride * 7 + rows);
    EXPECT_EQ(wrong, 0u) << rows;
  }
}

// It would keep what memory its parent had.
TEST_F(ConfinedPages, ALargeOneIsTheLastOfItsChild) {
  host::DecoderChild child;
  const auto read = [&](uint32_t side) {
    Picture page;
    page.child = &child;
    page.directory = side;
    host::confined(page, 0, [](Picture &to) {
      to.dpiX = getpid();
      const auto across = static_cast<uint32_t>(to.directory);
      to.allocate(across, across, 8);
    });
    return page.dpiX;
  };
  const double first = read(10);
  EXPECT_EQ(read(2047), first);
  EXPECT_EQ(read(2048), first);
  EXPECT_NE(read(10), first);
}

TEST_F(ConfinedPages, ADismissedChildIsNotAsked) {
  host::DecoderChild child;
  const pid_t before = readPage(child, 1, fillPage);
  child.dismiss();
  const pid_t after = readPage(child, 2, fillPage);
  EXPECT_NE(after, before);
  child.dismiss();
}

// What the system tells of the child while it waits for the gate.
struct Limits {
  pid_t process;
  rlim_t seconds, space;
  std::set<int> descriptors;
};
Limits limitsOf(host::DecoderChild &child, uint64_t place, const host::Decode &decode) {
  Limits seen{};
  Picture page;
  page.child = &child;
  page.directory = place;
  page.gate = [&](const Picture &announced) {
    seen.process = static_cast<pid_t>(announced.dpiX);
    rlimit limit{};
    prlimit(seen.process, RLIMIT_CPU, nullptr, &limit);
    seen.seconds = limit.rlim_cur;
    prlimit(seen.process, RLIMIT_AS, nullptr, &limit);
    seen.space = limit.rlim_cur;
    for (const auto &entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(seen.process) + "/fd"))
      seen.descriptors.insert(std::stoi(entry.path().filename()));
  };
  host::confined(page, 0, decode);
  return seen;
}

TEST_F(ConfinedPages, TheHundredthMayTakeNoMoreThanTheSecond) {
  host::DecoderChild child;
  const Limits first = limitsOf(child, 0, fillPage), second = limitsOf(child, 1, fillPage);
  Limits last{};
  for (uint64_t place = 2; place < 100; ++place) last = limitsOf(child, place, fillPage);
  EXPECT_EQ(last.process, first.process);
  EXPECT_EQ(first.seconds, 60u);
  EXPECT_EQ(second.seconds, 61u);  // a part of one is spent
  EXPECT_EQ(last.seconds, 61u);
  constexpr rlim_t kMostHeld = rlim_t{16} << 20;
  EXPECT_LE(first.space, last.space);
  EXPECT_LE(last.space - first.space, kMostHeld);
  EXPECT_EQ(first.descriptors, (std::set<int>{STDERR_FILENO, host::kLineToParent}));
  EXPECT_EQ(last.descriptors, first.descriptors);
}

void spend(double seconds) {
  const std::clock_t end = std::clock() + static_cast<std::clock_t>(seconds * CLOCKS_PER_SEC);
  while (std::clock() < end) continue;
}

TEST_F(ConfinedPages, EachHasAllOfItsTime) {
  host::DecoderChild child;
  const auto slow = [](Picture &page) {
    spend(page.directory == 0 ? 0.26 : 0);
    fillPage(page);
  };
  const Limits first = limitsOf(child, 0, slow), second = limitsOf(child, 1, slow);
  EXPECT_NE(second.process, first.process);
  EXPECT_EQ(second.seconds, first.seconds);
}

TEST_F(ConfinedPages, EachHasAllOfTheLimitsOfItsParent) {
  rlimit before{};
  getrlimit(RLIMIT_CPU, &before);
  const rlimit lower{100000, before.rlim_max};
  setrlimit(RLIMIT_CPU, &lower);
  host::DecoderChild child;
  const Limits first = limitsOf(child, 0, fillPage), second = limitsOf(child, 1, fillPage);
  setrlimit(RLIMIT_CPU, &before);
  EXPECT_NE(second.process, first.process);
  EXPECT_EQ(second.seconds, first.seconds);
}

#if !defined(__SANITIZE_ADDRESS__)  // which takes terabytes of addresses
// The MiB that a page can have.
double eatAll() {
  constexpr size_t kPiece = size_t{4} << 20;
  std::vector<void *> got;
  got.reserve(4096);
  while (got.size() < 4096) {
    void *piece =
        mmap(nullptr, kPiece, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (piece == MAP_FAILED) break;
    got.push_back(piece);
  }
  for (void *piece : got) munmap(piece, kPiece);
  return static_cast<double>(got.size() * 4);
}

TEST_F(ConfinedPages, EachHasAllOfItsMemory) {
  host::DecoderChild child;
  std::set<double> processes;
  double least = 1e9, most = 0;
  for (uint64_t place = 0; place < 100; ++place) {
    Picture page;
    page.child = &child;
    page.directory = place;
    host::confined(page, 0, [](Picture &to) {
      to.dpiX = getpid();
      to.dpiY = eatAll();
      to.allocate(kPageSide, kPageSide, 8);
      // A decoder that loses a megabyte a page.
      if (mmap(nullptr, 1 << 20, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED)
        throw std::bad_alloc();
    });
    processes.insert(page.dpiX);
    least = std::min(least, page.dpiY);
    most = std::max(most, page.dpiY);
  }
  EXPECT_NEAR(least, 1020, 4);
  EXPECT_NEAR(most, 1020, 4);
  EXPECT_GE(processes.size(), 100u / 17);
  EXPECT_LE(processes.size(), 100u / 10);
}
#endif

}  // namespace
