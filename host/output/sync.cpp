// SPDX-License-Identifier: MIT
#include "output/sync.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>

#include "output/hold.h"

namespace host {
namespace {

constexpr uint64_t kLong =
    8 << 20;  // below, a disk that deserves the name takes less than a tenth of a second

// Whoever waits for the end of what this process prints is not to wait for the child.
void closeOthers(int fd) {
  const auto own = static_cast<unsigned>(fd);
  if (own > 0) close_range(0, own - 1, 0);
  close_range(own + 1, ~0u, 0);
}

}  // namespace

int troubleWithClosing(int fd) {
  const int other = fcntl(fd, F_DUPFD_CLOEXEC, 3);
  return other >= 0 && close(other) != 0 && errno != EINTR ? errno : 0;
}

int syncToDisk(int fd) {
  return fsync(fd) == 0 ? 0 : errno;
}

int syncInChild(int fd, uint64_t bytes) {
  if (bytes < kLong) return syncToDisk(fd);
  pid_t child = 0;
  {
    const Hold hold;  // the child is not to run what its parent does on a signal
    child = fork();
    if (child == 0) {
      for (int number : {SIGINT, SIGTERM, SIGHUP}) std::signal(number, SIG_DFL);
      closeOthers(fd);
      _exit(syncToDisk(fd));
    }
  }
  if (child < 0) return syncToDisk(fd);
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return syncToDisk(fd);
  }
  // One that somebody ended leaves the question open.
  return WIFEXITED(status) ? WEXITSTATUS(status) : syncToDisk(fd);
}

}  // namespace host
