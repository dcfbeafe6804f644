// SPDX-License-Identifier: MIT
// Decoders in a child: what they tell is believed only when it makes sense, and they reach nothing.
#include "pictures/confined.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <limits>
#include <new>
#include <set>

#include "confine/child.h"
#include "confine/filter.h"
#include "confine/window.h"
#include "confined.h"
#include "failure.h"
#include "pictures/told.h"
#include "support/temp_dir.h"

namespace {

using host::Picture;
using host::Told;

class Confined : public ConfinedTest {
 protected:
  // What is said of a decoder, and the signal that ended it.
  struct End {
    std::string what;
    int signal;
  };
  static End endOf(const host::Decode &decode) {
    Picture picture;
    try {
      host::confined(picture, 0, decode);
    } catch (const host::DecoderLost &lost) {
      return {lost.what(), lost.signal()};
    } catch (const host::Unreadable &why) {
      return {std::string("unreadable: ") + why.what(), 0};
    } catch (const std::bad_alloc &) {
      return {"no memory", 0};
    }
    return {"read", 0};
  }
};

void fill(Picture &picture, uint32_t width, uint32_t height, uint32_t bits) {
  picture.announce(width, height, bits);
  picture.allocate(width, height, bits);
  for (size_t i = 0; i < picture.pixels.size(); ++i) picture.pixels.data()[i] = static_cast<uint8_t>(i * 7);
}

TEST_F(Confined, BringsThePictureOver) {
  Picture picture;
  picture.notes = {"before"};
  bool asked = false;
  picture.gate = [&](const Picture &announced) {
    asked = true;
    EXPECT_EQ(announced.view.width, 301u);
    EXPECT_EQ(announced.view.height, 200u);
    EXPECT_EQ(announced.view.bits, 8u);
    EXPECT_EQ(announced.view.colors, 2u);
    EXPECT_EQ(announced.view.table[5], 9);
    EXPECT_EQ(announced.dpiX, 72.5);
    EXPECT_EQ(announced.notes, (std::vector<std::string>{"before", "announced"}));
  };
  const pid_t parent = getpid();
  host::confined(picture, 0, [&](Picture &to) {
    if (getpid() == parent) throw host::Unreadable("is decoded here");
    to.dpiX = 72.5;
    to.notes.emplace_back("announced");
    to.table[5] = 9;
    to.useTable(2);
    fill(to, 301, 200, 8);
    to.useTable(3);
    to.dpiY = 300;
    to.notes.emplace_back("a line\nand \x1b[31mred");
  });
  EXPECT_TRUE(asked);
  ASSERT_EQ(picture.pixels.size(), 301u * 200);
  EXPECT_EQ(picture.view.rows, picture.pixels.data());
  EXPECT_EQ(picture.view.stride, 301u);
  EXPECT_EQ(picture.view.colors, 3u);
  EXPECT_EQ(picture.view.table, picture.table.data());
  for (size_t i = 0; i < picture.pixels.size(); ++i)
    ASSERT_EQ(picture.pixels.data()[i], static_cast<uint8_t>(i * 7)) << i;
  EXPECT_EQ(picture.dpiX, 72.5);
  EXPECT_EQ(picture.dpiY, 300);
  EXPECT_EQ(picture.notes, (std::vector<std::string>{"before", "announced", "a line?and ?[31mred"}));
}

TEST_F(Confined, BringsAPictureOverThatWasTurned) {
  Picture picture;
  picture.gate = [](const Picture &announced) {
    EXPECT_EQ(announced.view.width, 2u);
    EXPECT_EQ(announced.dpiX, 300);
  };
  host::confined(picture, 0, [&](Picture &to) {
    to.dpiX = 200;
    to.dpiY = 300;
    to.announce(3, 2, 24, 6);
    to.allocate(3, 2, 24);
    for (uint8_t i = 0; i < 18; ++i) to.pixels.data()[i] = i;
  });
  EXPECT_EQ(picture.dpiX, 300);
  EXPECT_EQ(picture.dpiY, 200);
  EXPECT_EQ(picture.view.width, 2u);
  EXPECT_EQ(picture.view.height, 3u);
  // The left column, from below, is the first row.
  EXPECT_EQ(std::vector<uint8_t>(picture.pixels.data(), picture.pixels.data() + 18),
            (std::vector<uint8_t>{9, 10, 11, 0, 1, 2, 12, 13, 14, 3, 4, 5, 15, 16, 17, 6, 7, 8}));
}

TEST_F(Confined, WorksHereUnlessAsked) {
  host::confineDecoders(false);
  Picture picture;
  const pid_t parent = getpid();
  pid_t worker = 0;
  host::confined(picture, 0, [&](Picture &) { worker = getpid(); });
  EXPECT_EQ(worker, parent);
}

TEST_F(Confined, LetsTheGateSayNo) {
  Picture picture;
  picture.gate = [](const Picture &) { throw host::Failure(host::kUsage, "too large for me"); };
  try {
    host::confined(picture, 0, [](Picture &to) { fill(to, 10, 10, 24); });
    ADD_FAILURE() << "the gate is not heard";
  } catch (const host::Failure &failure) {
    EXPECT_EQ(failure.code(), host::kUsage);
    EXPECT_STREQ(failure.what(), "too large for me");
  }
  EXPECT_EQ(picture.pixels.size(), 0u);
}

TEST_F(Confined, TellsWhyNot) {
  EXPECT_EQ(endOf([](Picture &) { throw host::Unreadable("is blue\x07"); }).what, "unreadable: is blue?");
  EXPECT_EQ(endOf([](Picture &) { throw std::bad_alloc(); }).what, "no memory");
  // Cut off, and no more.
  EXPECT_EQ(endOf([](Picture &) { throw host::Unreadable(std::string(5000, 'x')); }).what,
            "unreadable: " + std::string(sizeof Told::text - 1, 'x'));
}

// The errno of each thing that a decoder has no business to do, or 0 for one that goes well.
std::string reachOut() {
  std::string errors;
  const auto add = [&](const char *what, bool failed) {
    errors += std::string(what) + " " + std::to_string(failed ? errno : 0) + " ";
  };
  add("open", open("/dev/null", O_RDONLY) < 0);
  add("socket", socket(AF_UNIX, SOCK_STREAM, 0) < 0);
  add("folder", syscall(SYS_chdir, "/") != 0);
  add("signal", kill(getppid(), 0) != 0);
  add("code", mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED);
  return errors;
}

TEST_F(Confined, ReachesNothing) {
  // A kernel that takes filters would look for one there.
  if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, nullptr) != -1 || errno != EFAULT)
    GTEST_SKIP() << "this kernel takes no filters of system calls";
  EXPECT_EQ(endOf([](Picture &) { throw host::Unreadable(reachOut()); }).what,
            "unreadable: open 1 socket 1 folder 1 signal 1 code 1 ");
  const pid_t child = fork();  // what it opens goes with it
  if (child == 0) _exit(reachOut() == "open 0 socket 0 folder 0 signal 0 code 0 " ? 0 : 1);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0) << "the test could not fail";
}

// What the system tells of the child while it waits for the gate.
struct Seen {
  std::set<int> descriptors;
  rlim_t files, processes, core;
};
Seen lookAtChild() {
  pid_t child = 0;
  std::ifstream("/proc/self/task/" + std::to_string(getpid()) + "/children") >> child;
  Seen seen{};
  for (const auto &entry : std::filesystem::directory_iterator("/proc/" + std::to_string(child) + "/fd"))
    seen.descriptors.insert(std::stoi(entry.path().filename()));
  rlimit limit{};
  prlimit(child, RLIMIT_NOFILE, nullptr, &limit);
  seen.files = limit.rlim_max;
  prlimit(child, RLIMIT_NPROC, nullptr, &limit);
  seen.processes = limit.rlim_max;
  prlimit(child, RLIMIT_CORE, nullptr, &limit);
  seen.core = limit.rlim_max;
  return seen;
}

TEST_F(Confined, HasNothingOfItsParentButTheLine) {
  const int own = open("/dev/null", O_RDWR);  // not for the child
  Picture picture;
  Seen seen{};
  picture.gate = [&](const Picture &) { seen = lookAtChild(); };
  host::confined(picture, 0, [](Picture &to) { fill(to, 8, 8, 8); });
  close(own);
  EXPECT_EQ(seen.descriptors, (std::set<int>{STDERR_FILENO, host::kLineToParent}));
  EXPECT_EQ(seen.files, 0u);
  EXPECT_EQ(seen.processes, 0u);
  EXPECT_EQ(seen.core, 0u);
}

// Records that a decoder which was taken over sends for a picture of 8 by 8 greys.
using Change = std::function<void(Told &)>;
void tellOf(host::TellKind kind, const Change &change) {
  Told told{};
  told.kind = kind;
  told.width = told.height = told.bits = 8;
  told.orientation = 1;
  told.tableKnown = 1;
  change(told);
  host::tellParent(&told, sizeof told);
}
void asItIs(Told &) {}
void tellPiece(uint32_t bytes) {
  tellOf(host::kTellPiece, [&](Told &told) { told.bytes = bytes; });
}

// Rows, and their bytes in two pieces.
void sendRows(const Change &change, uint32_t bytes = 64) {
  tellOf(host::kTellRows, change);
  tellPiece(16);
  tellPiece(bytes - 16);
}

// All that makes a picture, and one change.
void lie(const Change &change) {
  sendRows(asItIs);
  tellOf(host::kTellDone, change);
  _exit(0);
}

constexpr const char *kNonsense = "is damaged: what its decoder tells makes no sense";

TEST_F(Confined, BelievesWhatMakesSense) {
  EXPECT_EQ(endOf([](Picture &) { lie(asItIs); }).what, "read");
}

TEST_F(Confined, BelievesNoLies) {
  struct Lie {
    const char *name;
    Change change;
  };
  const Lie lies[] = {
      {"no such kind", [](Told &t) { t.kind = 99; }},
      {"kind 0", [](Told &t) { t.kind = 0; }},
      {"no columns", [](Told &t) { t.width = 0; }},
      {"no rows", [](Told &t) { t.height = 0; }},
      {"more columns", [](Told &t) { t.width = 9; }},
      {"more rows", [](Told &t) { t.height = 9; }},
      {"all rows", [](Told &t) { t.height = 0xFFFFFFFF; }},
      {"all of both", [](Told &t) { t.width = t.height = 0xFFFFFFFF, t.bits = 24; }},
      {"no bits", [](Told &t) { t.bits = 0; }},
      {"three bits", [](Told &t) { t.bits = 3; }},
      {"16 bits", [](Told &t) { t.bits = 16; }},
      {"32 bits", [](Told &t) { t.bits = 32, t.width = t.height = 1; }},
      {"colours beyond the table", [](Told &t) { t.colors = 257; }},
      {"a table of colours", [](Told &t) { t.colors = 2, t.bits = 24, t.width = t.height = 1; }},
      {"no orientation", [](Told &t) { t.orientation = 0; }},
      {"the ninth orientation", [](Told &t) { t.orientation = 9; }},
      {"a bool of 2", [](Told &t) { t.tableKnown = 2; }},
      {"texts without end", [](Told &t) { t.texts = 9; }},
      {"a refusal without a reason", [](Told &t) { t.kind = host::kTellRefused; }},
      {"a refusal of nothing", [](Told &t) { t.kind = host::kTellRefused, t.texts = 1; }},
  };
  for (const Lie &one : lies) {
    EXPECT_EQ(endOf([&](Picture &) { lie(one.change); }).what, kNonsense) << one.name;
    EXPECT_EQ(endOf([&](Picture &) {
                sendRows(one.change);
                tellOf(host::kTellDone, asItIs);
                _exit(0);
              }).what,
              kNonsense)
        << "rows: " << one.name;
  }
}

// 2^64 + 26 bytes, of which 64 bits hold the 26.
TEST_F(Confined, BelievesNoMoreBytesThanCanBeCounted) {
  EXPECT_EQ(endOf([](Picture &) {
              const Change many = [](Told &t) { t.width = 3062868337, t.height = 2007567422, t.bits = 24; };
              tellOf(host::kTellRows, many);
              tellPiece(26);
              tellOf(host::kTellDone, many);
              _exit(0);
            }).what,
            kNonsense);
}

TEST_F(Confined, WantsAllRowsInTheirTime) {
  const auto done = [](const std::function<void()> &first) {
    return endOf([&](Picture &) {
             first();
             tellOf(host::kTellDone, asItIs);
             _exit(0);
           })
        .what;
  };
  EXPECT_EQ(done([] { sendRows(asItIs); }), "read");
  EXPECT_EQ(done([] {}), kNonsense);
  EXPECT_EQ(done([] { tellOf(host::kTellRows, asItIs); }), kNonsense);
  EXPECT_EQ(done([] { tellPiece(64); }), kNonsense);
  EXPECT_EQ(done([] { sendRows(asItIs, 63); }), kNonsense);
  EXPECT_EQ(done([] { sendRows(asItIs, 65); }), kNonsense);
  EXPECT_EQ(done([] { sendRows(asItIs, 16); }), kNonsense) << "a piece of nothing";
  EXPECT_EQ(done([] { sendRows(asItIs, 15); }), kNonsense) << "4 GiB";
  EXPECT_EQ(done([] {
              sendRows(asItIs);
              tellPiece(1);
            }),
            kNonsense);
  EXPECT_EQ(done([] {
              sendRows(asItIs);
              sendRows(asItIs);
            }),
            kNonsense);
  EXPECT_EQ(done([] {
              sendRows(asItIs);
              tellOf(host::kTellAnnounced, asItIs);
              host::waitForParent();
            }),
            kNonsense);
  EXPECT_EQ(done([] {
              sendRows(asItIs, 63);
              _exit(0);
            }),
            "is damaged: its decoder ended too soon");
  EXPECT_EQ(done([] {
              sendRows(asItIs, 63);
              throw host::Unreadable("has a hole");
            }),
            "unreadable: has a hole");
  // More than the window has, of a picture that is larger.
  const auto large = [](uint32_t bytes) {
    return endOf([&](Picture &) {
             const Change wide = [](Told &told) { told.width = told.height = 1024; };
             tellOf(host::kTellRows, wide);
             for (uint32_t sent = 0; sent < 1024 * 1024; sent += bytes) tellPiece(bytes);
             tellOf(host::kTellDone, wide);
             _exit(0);
           })
        .what;
  };
  EXPECT_EQ(large(host::Window::kPiece), "read");
  EXPECT_EQ(large(2 * host::Window::kPiece), kNonsense);
}

// Who takes no answers is not waited for.
TEST_F(Confined, ListensToADecoderThatDoesNotListen) {
  EXPECT_EQ(endOf([&](Picture &) {
              const Change narrow = [](Told &told) { told.width = 1, told.height = 20000; };
              tellOf(host::kTellRows, narrow);
              for (int row = 0; row < 20000; ++row) tellPiece(1);
              tellOf(host::kTellDone, narrow);
              _exit(0);
            }).what,
            "read");
}

// A piece's bytes are another row's soon after.
TEST_F(Confined, BringsRowsOverWhileOthersAreDecoded) {
  struct Size {
    uint32_t width, height;
  };
  constexpr uint32_t kPiece = host::Window::kPiece;
  const Size sizes[] = {{1, 1},
                        {1, 300},
                        {1000, 3000},
                        {kPiece, 9},
                        {kPiece - 1, 9},
                        {kPiece / 2, 18},
                        {kPiece / 2 + 1, 9},
                        {kPiece + 1, 9},
                        {3 * kPiece, 1},
                        {kPiece / 3, 3 * 4},
                        {kPiece / 3, 3 * 4 + 1}};
  for (const Size &size : sizes) {
    for (const bool rowByRow : {true, false}) {
      Picture picture;
      host::confined(picture, 0, [&](Picture &to) {
        to.allocate(size.width, size.height, 8);
        for (uint32_t y = 0; y < size.height; ++y) {
          uint8_t *row = rowByRow ? to.rowAt(y) : to.pixels.data() + to.view.stride * y;
          for (uint32_t x = 0; x < size.width; ++x) row[x] = static_cast<uint8_t>(x * 7 + y * 13);
        }
      });
      ASSERT_EQ(picture.pixels.size(), size_t{size.width} * size.height);
      size_t wrong = 0;
      for (uint32_t y = 0; y < size.height; ++y) {
        const uint8_t *row = picture.view.rows + picture.view.stride * y;
        for (uint32_t x = 0; x < size.width; ++x) wrong += row[x] != static_cast<uint8_t>(x * 7 + y * 13);
      }
      EXPECT_EQ(wrong, 0u) << size.width << " by " << size.height << (rowByRow ? " by rows" : "");
    }
  }
}

TEST_F(Confined, BelievesNoRecordsOfAnotherSize) {
  for (const size_t size : {size_t{1}, sizeof(Told) - 1, sizeof(Told) + 1, size_t{60000}}) {
    EXPECT_EQ(endOf([&](Picture &) {
                const std::vector<uint8_t> record(size, 1);
                host::tellParent(record.data(), size);
              }).what,
              kNonsense)
        << size;
  }
}

TEST_F(Confined, HoldsADecoderToItsWord) {
  const auto announced = [](const Change &change) {
    return endOf([&](Picture &) {
             tellOf(host::kTellAnnounced, change);
             host::waitForParent();
             lie(asItIs);
           })
        .what;
  };
  EXPECT_EQ(announced(asItIs), "read");
  EXPECT_EQ(announced([](Told &told) { told.width = 7; }), kNonsense);
  EXPECT_EQ(announced([](Told &told) { told.height = 7; }), kNonsense);
  EXPECT_EQ(announced([](Told &told) { told.bits = 4; }), kNonsense);
  // It was told as it will be turned.
  EXPECT_EQ(endOf([](Picture &) {
              tellOf(host::kTellAnnounced, [](Told &told) { told.width = 4; });
              host::waitForParent();
              lie([](Told &told) { told.orientation = 6; });
            }).what,
            kNonsense);
  // Without a table it does not know the depth yet.
  EXPECT_EQ(announced([](Told &told) { told.tableKnown = 0, told.bits = 4; }), "read");
  EXPECT_EQ(endOf([&](Picture &) {
              tellOf(host::kTellAnnounced, asItIs);
              host::waitForParent();
              tellOf(host::kTellAnnounced, asItIs);
              host::waitForParent();
            }).what,
            kNonsense);
}

TEST_F(Confined, TakesTextsAsTheyAre) {
  // None of them ends.
  EXPECT_EQ(endOf([&](Picture &) {
              tellOf(host::kTellRefused, [](Told &told) {
                told.texts = 1;
                std::fill(std::begin(told.text), std::end(told.text), 'x');
              });
            }).what,
            "unreadable: " + std::string(sizeof Told::text, 'x'));
  Picture picture;
  host::confined(picture, 0, [](Picture &) {
    lie([](Told &told) {
      told.texts = 8;
      std::fill(std::begin(told.text), std::end(told.text), 'x');
      told.dpiX = std::numeric_limits<double>::quiet_NaN();
      told.dpiY = std::numeric_limits<double>::infinity();
    });
  });
  ASSERT_EQ(picture.notes.size(), 8u);
  EXPECT_EQ(picture.notes[0].size(), sizeof Told::text);
  EXPECT_EQ(picture.notes[1], "");
  EXPECT_EQ(picture.dpiX, 0);
  EXPECT_EQ(picture.dpiY, 0);
}

TEST_F(Confined, SaysHowADecoderEnded) {
  EXPECT_EQ(endOf([](Picture &) { _exit(0); }).what, "is damaged: its decoder ended too soon");
  EXPECT_EQ(endOf([](Picture &) { throw 1; }).what, "is damaged: its decoder ended too soon");
  const End trap = endOf([](Picture &) { __builtin_trap(); });
  EXPECT_EQ(trap.what, "is damaged: its decoder ended by signal " + std::to_string(trap.signal));
  EXPECT_TRUE(trap.signal == SIGILL || trap.signal == SIGTRAP) << trap.signal;
}

TEST_F(Confined, TellsOfAFileThatSomebodyCutsShort) {
  const support::TempDir folder;
  const std::string path = folder.file("cut");
  support::writeFile(path, std::string(5000, 'x'));
  const int file = open(path.c_str(), O_RDONLY);
  void *bytes = mmap(nullptr, 5000, PROT_READ, MAP_PRIVATE, file, 0);
  close(file);
  ASSERT_NE(bytes, MAP_FAILED);
  Picture picture;
  picture.gate = [&](const Picture &) { EXPECT_EQ(truncate(path.c_str(), 0), 0); };
  int signal = 0;
  try {
    host::confined(picture, 0, [&](Picture &to) {
      to.announce(64, 64, 8);
      throw host::Unreadable(std::string(1, static_cast<const volatile char *>(bytes)[0]));
    });
  } catch (const host::DecoderLost &lost) {
    signal = lost.signal();
  }
  munmap(bytes, 5000);
  EXPECT_EQ(signal, SIGBUS);
}

TEST_F(Confined, DoesNotWaitForADecoderThatStandsStill) {
  EXPECT_EQ(endOf([](Picture &) { host::waitForParent(); }).what, "is damaged: its decoder stood still");
}

#if !defined(__SANITIZE_ADDRESS__)  // which takes terabytes of addresses
TEST_F(Confined, TakesNoMoreMemoryThanItsPictureNeeds) {
  constexpr size_t kPiece = size_t{16} << 20;
  const auto eat = [](Picture &) {
    size_t got = 0;
    while (got < size_t{1} << 40 && mmap(nullptr, kPiece, PROT_READ | PROT_WRITE,
                                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0) != MAP_FAILED)
      got += kPiece;
    throw host::Unreadable(std::to_string(got >> 20));
  };
  constexpr size_t kPrefix = sizeof "unreadable: " - 1;
  const auto eaten = [&](uint32_t side) {
    return std::stoul(endOf([&](Picture &picture) {
                        if (side != 0) picture.announce(side, side, 8);
                        eat(picture);
                      }).what.substr(kPrefix));
  };
  EXPECT_NEAR(static_cast<double>(eaten(0)), 1024, 40);
  // 100 MB of it.
  EXPECT_NEAR(static_cast<double>(eaten(10240)), 1024 + 12 * 100, 40);
}
#endif

}  // namespace
