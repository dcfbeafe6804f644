// SPDX-License-Identifier: MIT
// Preloaded, a system that fails: the environment variable RAXEL_FAULT has a kind of call, its number and
// how it goes on, as "write 3 once", "memory 100 forever" or "write 2 quota". When that call comes, a file
// RAXEL_FAULT_SEEN is made. Children are spared. Standard input, output and error never fail.
#define _GNU_SOURCE
#undef _FILE_OFFSET_BITS  // it has functions of both widths, by their own names
#undef _TIME_BITS
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

static char wanted[16];
static long number;
static int forever;
static int full = ENOSPC;
static const char *seen;
static atomic_long count;
static pid_t self;

__attribute__((constructor(101))) static void configure(void) {
  const char *fault = getenv("RAXEL_FAULT");
  char how[16] = "";
  seen = getenv("RAXEL_FAULT_SEEN");
  if (!fault || sscanf(fault, "%15s %ld %15s", wanted, &number, how) != 3) wanted[0] = 0;
  forever = strcmp(how, "once") != 0;
  if (strcmp(how, "quota") == 0) full = EDQUOT;
  atomic_store(&count, 0);
  self = getpid();
}

// Whether this call of a kind is one that fails.
static int fails(const char *kind) {
  long own;
  if (!wanted[0] || strcmp(kind, wanted) != 0 || getpid() != self) return 0;
  own = atomic_fetch_add(&count, 1) + 1;
  if (own < number || (own > number && !forever)) return 0;
  if (seen && own == number) {
    const long fd = syscall(SYS_openat, AT_FDCWD, seen, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (fd >= 0) syscall(SYS_close, fd);
  }
  return 1;
}

static int fails_on(const char *kind, int fd) {
  return fd > 2 && fails(kind);
}

// Puts the system's own function into a pointer, unless it is there already.
static void find(void *to, const char *name) {
  void *symbol;
  memcpy(&symbol, to, sizeof symbol);
  if (symbol) return;
  symbol = dlsym(RTLD_NEXT, name);
  memcpy(to, &symbol, sizeof symbol);
}

// ---- Files
// --------------------------------------------------------------------------------------------------------

static int open_at(int folder, const char *path, int flags, mode_t mode) {
  if (fails("open")) {
    errno = EIO;
    return -1;
  }
  return (int)syscall(SYS_openat, folder, path, flags, mode);
}

#define MODE_OF(flags, mode)               \
  mode_t mode = 0;                         \
  if (flags & (O_CREAT | O_TMPFILE)) {     \
    va_list more;                          \
    va_start(more, flags);                 \
    mode = (mode_t)va_arg(more, unsigned); \
    va_end(more);                          \
  }

int open(const char *path, int flags, ...) {
  MODE_OF(flags, mode)
  return open_at(AT_FDCWD, path, flags, mode);
}
int open64(const char *path, int flags, ...) {
  MODE_OF(flags, mode)
  return open_at(AT_FDCWD, path, flags, mode);
}
int openat(int folder, const char *path, int flags, ...) {
  MODE_OF(flags, mode)
  return open_at(folder, path, flags, mode);
}
FILE *fopen(const char *path, const char *mode) {
  static FILE *(*real)(const char *, const char *);
  find(&real, "fopen");
  if (!fails("open")) return real(path, mode);
  errno = EIO;
  return NULL;
}
FILE *fopen64(const char *path, const char *mode) {
  return fopen(path, mode);
}

#define FAIL(kind, fd, error) \
  if (fails_on(kind, fd)) {   \
    errno = error;            \
    return -1;                \
  }

ssize_t read(int fd, void *to, size_t size) {
  FAIL("read", fd, EIO)
  return syscall(SYS_read, fd, to, size);
}
ssize_t pread(int fd, void *to, size_t size, off_t at) {
  FAIL("read", fd, EIO)
  return syscall(SYS_pread64, fd, to, size, at);
}
ssize_t pread64(int fd, void *to, size_t size, off64_t at) {
  return pread(fd, to, size, at);
}
ssize_t write(int fd, const void *from, size_t size) {
  FAIL("write", fd, full)
  return syscall(SYS_write, fd, from, size);
}
ssize_t pwrite(int fd, const void *from, size_t size, off_t at) {
  FAIL("write", fd, full)
  return syscall(SYS_pwrite64, fd, from, size, at);
}
ssize_t pwrite64(int fd, const void *from, size_t size, off64_t at) {
  return pwrite(fd, from, size, at);
}
off_t lseek(int fd, off_t offset, int whence) {
  FAIL("seek", fd, EIO)
  return syscall(SYS_lseek, fd, offset, whence);
}
off64_t lseek64(int fd, off64_t offset, int whence) {
  return lseek(fd, offset, whence);
}
int fsync(int fd) {
  FAIL("sync", fd, EIO)
  return (int)syscall(SYS_fsync, fd);
}
// A file is closed also when that fails.
int close(int fd) {
  const int result = (int)syscall(SYS_close, fd);
  FAIL("close", fd, EIO)
  return result;
}
int fclose(FILE *stream) {
  static int (*real)(FILE *);
  find(&real, "fclose");
  const int failed = fails_on("close", fileno(stream));
  const int result = real(stream);
  if (failed) errno = EIO;
  return failed ? EOF : result;
}
int rename(const char *from, const char *to) {
  FAIL("rename", 3, EIO)
  return (int)syscall(SYS_rename, from, to);
}

// ---- What else is asked about files, and children
// --------------------------------------------------------------------------------------------------------

#define FAILING(kind, type, name, declared, given) \
  type name declared {                             \
    static type(*real) declared;                   \
    find(&real, #name);                            \
    FAIL(kind, 3, EIO)                             \
    return real given;                             \
  }

FAILING("look", int, stat, (const char *path, struct stat *about), (path, about))
FAILING("look", int, lstat, (const char *path, struct stat *about), (path, about))
FAILING("look", int, fstat, (int fd, struct stat *about), (fd, about))
FAILING("look", int, fstat64, (int fd, struct stat64 *about), (fd, about))
FAILING("look", int, access, (const char *path, int how), (path, how))
FAILING("look", ssize_t, readlink, (const char *path, char *to, size_t size), (path, to, size))
FAILING("lock", int, flock, (int fd, int how), (fd, how))
FAILING("right", int, fchmod, (int fd, mode_t mode), (fd, mode))
FAILING("right", int, fchown, (int fd, uid_t user, gid_t group), (fd, user, group))
FAILING("fork", int, socketpair, (int family, int kind, int protocol, int ends[2]),
        (family, kind, protocol, ends))
FAILING("fork", pid_t, fork, (void), ())
FAILING("fork", pid_t, waitpid, (pid_t child, int *status, int how), (child, status, how))

// ---- Memory
// -------------------------------------------------------------------------------------------------------

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t number, size_t size);
void *__libc_realloc(void *block, size_t size);
void *__libc_memalign(size_t alignment, size_t size);

static void *none(void) {
  errno = ENOMEM;
  return NULL;
}

void *malloc(size_t size) {
  return fails("memory") ? none() : __libc_malloc(size);
}
void *calloc(size_t elements, size_t size) {
  return fails("memory") ? none() : __libc_calloc(elements, size);
}
void *realloc(void *block, size_t size) {
  return fails("memory") ? none() : __libc_realloc(block, size);
}
void *memalign(size_t alignment, size_t size) {
  return fails("memory") ? none() : __libc_memalign(alignment, size);
}
void *aligned_alloc(size_t alignment, size_t size) {
  return fails("memory") ? none() : __libc_memalign(alignment, size);
}
int posix_memalign(void **block, size_t alignment, size_t size) {
  void *made;
  if (fails("memory")) return ENOMEM;
  made = __libc_memalign(alignment, size);
  if (!made) return ENOMEM;
  *block = made;
  return 0;
}
void *mmap(void *at, size_t size, int protection, int flags, int fd, off_t offset) {
  if (fails("memory")) {
    errno = ENOMEM;
    return MAP_FAILED;
  }
  return (void *)syscall(SYS_mmap, at, size, protection, flags, fd, offset);
}
void *mmap64(void *at, size_t size, int protection, int flags, int fd, off64_t offset) {
  return mmap(at, size, protection, flags, fd, offset);
}
