// Preloaded, a disk that takes two seconds to write and lets nobody out meanwhile.
#define _GNU_SOURCE
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

int fsync(int fd) {
  sigset_t all, before;
  struct timespec left = {2, 0};
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &before);
  nanosleep(&left, NULL);
  sigprocmask(SIG_SETMASK, &before, NULL);
  return (int)syscall(SYS_fsync, fd);
}
