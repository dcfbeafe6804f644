// SPDX-License-Identifier: MIT
// Preloaded, a disk that takes as long as the test wants, and lets nobody out meanwhile. Each sync makes a
// file with the number of its process in the folder RAXEL_SLOW_DISK, and goes on when somebody removes it.
#define _GNU_SOURCE
#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

int fsync(int fd) {
  const char *folder = getenv("RAXEL_SLOW_DISK");
  const struct timespec pause = {0, 2000000};
  char name[PATH_MAX];
  sigset_t all, before;
  int gate;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &before);
  snprintf(name, sizeof name, "%s/%ld", folder ? folder : "/nowhere", (long)getpid());
  gate = open(name, O_CREAT | O_EXCL | O_WRONLY, 0600);
  if (gate < 0) abort();
  close(gate);
  while (access(name, F_OK) == 0) nanosleep(&pause, NULL);
  sigprocmask(SIG_SETMASK, &before, NULL);
  return (int)syscall(SYS_fsync, fd);
}
