// SPDX-License-Identifier: MIT
#include "command/stop.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "command/tell.h"
#include "failure.h"
#include "output/hold.h"
#include "pictures/input.h"

namespace host::stop {
namespace {

// All that a handler may look at. The name is set while signals are held.
std::array<char, PATH_MAX> temporary;
std::array<char, PATH_MAX> input;
std::atomic<bool> lineShown;
bool last;
std::atomic<bool> tooLate;
constexpr size_t kMostChildren = 256;
std::array<std::atomic<pid_t>, kMostChildren> children;

void say(const char *text) {
  // Nothing can be done about a message that cannot be written.
  [[maybe_unused]] const ssize_t ignored = write(2, text, std::strlen(text));
}

void cleanUp(int signal) {
  for (auto &child : children) {
    if (const pid_t pid = child.load()) kill(pid, signal);
  }
  if (temporary[0] != '\0') unlink(temporary.data());
  if (lineShown.load()) say("\r\033[K");
}

extern "C" void stopNow(int signal) {
  if (tooLate.exchange(false)) return;
  cleanUp(signal);
  say("raxel-export: stopped\n");
  _exit(128 + signal);  // 130 for Ctrl-C
}

extern "C" void stopOnFault(int) {
  cleanUp(SIGTERM);
  say("raxel-export: ");
  say(input[0] != '\0' ? input.data() : "the input");
  say(": ");
  say(kCutShort);
  say("\n");
  _exit(kNoInput);
}

// The filter ends its process when its memory runs out; so does a decoder that finds itself broken, and an
// exception that nobody takes. libtiff does not survive a close after it found no memory for a directory.
extern "C" void stopOnAbort(int signal) {
  cleanUp(SIGTERM);
  say("raxel-export: ");
  if (input[0] != '\0') say(input.data());
  if (input[0] != '\0') say(": ");
  say(signal == SIGSEGV ? "the export was given up after a crash, which want of memory may cause\n"
                        : "the export was given up, most often for want of memory\n");
  _exit(kLibrary);
}

// Before everything else: what is made before main() needs memory as well.
[[gnu::constructor(101)]] void watchAborts() {
  struct sigaction action {};
  action.sa_mask = stopSignals();
  action.sa_handler = stopOnAbort;
  sigaction(SIGABRT, &action, nullptr);
#ifndef __SANITIZE_ADDRESS__  // which tells more
  sigaction(SIGSEGV, &action, nullptr);
#endif
  std::set_terminate([] { std::abort(); });
}

constexpr std::array<int, 3> kStops{SIGINT, SIGTERM, SIGHUP};

}  // namespace

void install() {
  struct sigaction action {};
  action.sa_mask = stopSignals();
  action.sa_flags = SA_RESTART;  // one that comes too late disturbs nothing
  action.sa_handler = stopNow;
  for (int signal : kStops) {
    // A hang-up that the caller chose to ignore (nohup) stays ignored.
    struct sigaction old {};
    if (sigaction(signal, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) continue;
    sigaction(signal, &action, nullptr);
  }
  action.sa_handler = stopOnFault;
  sigaction(SIGBUS, &action, nullptr);
  watchMappedInputs(setInput);
  // A full quota and a closed pipe come back as errors of the write.
  signal(SIGXFSZ, SIG_IGN);
  signal(SIGPIPE, SIG_IGN);
  // Where the caller ignores how its children end, this process would not be told how its own do.
  signal(SIGCHLD, SIG_DFL);
}

void setTemporary(const std::string &path) {
  const Hold hold;
  temporary.fill('\0');
  if (path.size() < temporary.size()) std::memcpy(temporary.data(), path.data(), path.size());
  tooLate.store(last && path.empty());
}

void setLast() {
  last = true;
}

void setInput(const std::string &file) {
  const std::string name = printable(file);
  input.fill('\0');
  std::memcpy(input.data(), name.data(), std::min(name.size(), input.size() - 1));
}

void setLineShown(bool shown) {
  lineShown.store(shown);
}

void addChild(pid_t child) {
  for (auto &slot : children) {
    pid_t none = 0;
    if (slot.compare_exchange_strong(none, child)) return;
  }
}

void removeChild(pid_t child) {
  for (auto &slot : children) {
    pid_t expected = child;
    slot.compare_exchange_strong(expected, 0);
  }
}

void forgetChildren() {
  for (auto &slot : children) slot.store(0);
}

}  // namespace host::stop
