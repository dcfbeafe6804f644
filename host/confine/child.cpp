// SPDX-License-Identifier: MIT
#include "confine/child.h"

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

#include "confine/filter.h"
#include "failure.h"
#include "output/hold.h"

namespace host {
namespace {

bool confines = false;

// What the parent says to go on.
constexpr char kGo = 1;

constexpr const char *kTooLong = "its decoder took too long";

// The child does not do what its parent does on a signal. What the parent ignores, it ignores.
void takeSignalsPlainly() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGBUS, SIGSEGV, SIGABRT}) {
    struct sigaction action {};
    if (sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    std::signal(number, SIG_DFL);
  }
}

// What /proc tells of a process: how it is, and its processor time in seconds.
struct Look {
  char state;
  double seconds;
};

Look lookAt(pid_t pid) {
  char name[40];
  std::snprintf(name, sizeof name, "/proc/%d/stat", static_cast<int>(pid));
  std::FILE *about = std::fopen(name, "re");
  if (!about) return {'?', 0};
  char text[600];
  const size_t size = std::fread(text, 1, sizeof text - 1, about);
  std::fclose(about);
  text[size] = '\0';
  // The program's name, in parentheses, may hold anything.
  const char *rest = std::strrchr(text, ')');
  Look look{'?', 0};
  unsigned long user = 0, system = 0;
  if (!rest || std::sscanf(rest, ") %c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %lu %lu", &look.state, &user,
                           &system) != 3)
    return {'?', 0};
  look.seconds = static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
  return look;
}

double secondsOf(const timeval &time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// A limit of the whole command may be the lower one.
double mostSeconds(const Allowance &most) {
  rlimit own{};
  getrlimit(RLIMIT_CPU, &own);
  return static_cast<double>(std::min<rlim_t>(own.rlim_max, most.seconds));
}

// Both ends of what joins a parent and its child; those that are left are closed.
struct Ends {
  int parents = -1, childs = -1;
  ~Ends() {
    if (parents >= 0) close(parents);
    if (childs >= 0) close(childs);
  }
};

// A record arrives in one piece, or not at all.
bool makeLine(Ends &line) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return false;
  line.parents = ends[0];
  line.childs = ends[1];
  return true;
}

[[noreturn]] void doIt(const Allowance &most, uint64_t parentsSpace, int line, pid_t parent,
                       const std::function<void()> &work) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(1);  // it was gone before
  confineThisProcess(most, parentsSpace, line);
  try {
    work();
  } catch (...) {
    _exit(1);
  }
  _exit(0);
}

}  // namespace

void confineDecoders(bool on) {
  confines = on;
}

bool decodersAreConfined() {
  return confines;
}

Child::Child(const Allowance &most, const std::function<void()> &work)
    : most_(most), parentsSpace_(addressSpace()) {
  Ends line;
  bool started = makeLine(line);
  if (started) {
    const pid_t parent = getpid();
    {
      const Hold hold;
      pid_ = fork();
      if (pid_ == 0) takeSignalsPlainly();
    }
    if (pid_ == 0) doIt(most, parentsSpace_, line.childs, parent, work);
    started = pid_ > 0;
  }
  if (!started) throw Failure(kLibrary, std::string("cannot start a process: ") + std::strerror(errno));
  line_ = std::exchange(line.parents, -1);
}

Child::~Child() {
  if (pid_ > 0) finish();
  close(line_);
}

// Looks now and then: decoders work, or wait for the disk, and do not sleep.
bool Child::mayGoOn() {
  constexpr int kMostAsleep = 5;
  const Look look = lookAt(pid_);
  asleep_ = look.state == 'S' ? asleep_ + 1 : 0;
  if (asleep_ >= kMostAsleep) givenUp_ = "its decoder stood still";
  // One that does not care for the signal at its limit gets a little more.
  if (look.seconds > spent_ + static_cast<double>(most_.seconds) + 2) givenUp_ = kTooLong;
  return !givenUp_;
}

// Until there is something to read, or the end. False when the child stands still.
bool Child::waitFor(int fd) {
  constexpr int kLook = 1000;  // ms
  for (;;) {
    pollfd one{fd, POLLIN, 0};
    const int ready = poll(&one, 1, kLook);
    if (ready > 0) return true;
    // A signal may have come as well.
    if (ready == 0 && !mayGoOn()) return false;
  }
}

size_t Child::receive(void *record, size_t room) {
  while (!givenUp_ && waitFor(line_)) {
    const ssize_t got = recv(line_, record, room, MSG_TRUNC);
    if (got >= 0) return static_cast<size_t>(got);
    // The latter is said once of a child that ended before it heard all answers; what it told is there
    // still.
    if (errno != EINTR && errno != ECONNRESET) break;
  }
  return 0;
}

void Child::goOn() {
  // A child that is gone is noticed when nothing comes from it, and one that does not listen is not waited
  // for.
  ask(&kGo, 1);
}

bool Child::ask(const void *record, size_t size) {
  return send(line_, record, size, MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(size);
}

void Child::allow(const Allowance &most) {
  most_ = most;
  // The limit counts whole seconds.
  const auto spent = static_cast<uint64_t>(std::ceil(spent_));
  setAllowance(pid_, {most.memory + held_, most.seconds + spent}, parentsSpace_);
}

bool Child::renew(const Allowance &most) {
  // More than libraries keep for themselves, and a hundred times what another child costs.
  constexpr uint64_t kMostHeld = uint64_t{16} << 20;
  constexpr double kMostSpent = 0.25;
  const uint64_t space = addressSpace(pid_);
  held_ = space - std::min(space, parentsSpace_);
  spent_ = processorTime(pid_);
  if (space == 0 || held_ > kMostHeld || spent_ > kMostSpent || isLimited()) return false;
  asleep_ = 0;
  allow(most);
  return true;
}

void Child::stop() {
  if (pid_ > 0) kill(pid_, SIGKILL);
}

void Child::finish() {
  stop();
  while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
  pid_ = 0;
}

Ending Child::ending() {
  if (givenUp_) {
    finish();
    return {0, givenUp_};
  }
  constexpr int kTries = 200, kPause = 10000;  // of us
  int status = 0;
  rusage used{};
  pid_t done = 0;
  // It may have closed the line and live on.
  for (int i = 0; i < kTries && done == 0; ++i) {
    if (i != 0) usleep(kPause);
    done = wait4(pid_, &status, WNOHANG, &used);
    if (done < 0 && errno == EINTR) done = 0;
  }
  if (done == 0) finish();
  pid_ = 0;
  const int signal = done > 0 && WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  const double seconds = secondsOf(used.ru_utime) + secondsOf(used.ru_stime) - spent_;
  // The limit counts ticks, and what is told here is more exact.
  if (signal == SIGXCPU || (signal == SIGKILL && seconds >= 0.9 * mostSeconds(most_)))
    return {signal, kTooLong};
  if (signal != 0) return {signal, "its decoder ended by signal " + std::to_string(signal)};
  return {0, "its decoder ended too soon"};
}

std::string plainText(std::string_view said) {
  std::string text(said);
  std::ranges::replace_if(
      text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
  return text;
}

void tellParent(const void *record, size_t size) {
  if (write(kLineToParent, record, size) != static_cast<ssize_t>(size)) _exit(1);
}

void waitForParent() {
  char answer = 0;
  if (hearParent(&answer, 1) != 1 || answer != kGo) _exit(1);
}

size_t hearParent(void *record, size_t room) {
  const ssize_t got = read(kLineToParent, record, room);
  if (got <= 0) _exit(1);
  return static_cast<size_t>(got);
}

}  // namespace host
