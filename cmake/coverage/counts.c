// SPDX-License-Identifier: MIT
// Part of each library and program of the coverage build: all processes count in one file,
// build/coverage/counts/ID.
//
// The compiler's own way is that each process adds its counts to a file of each source as it ends. What a
// process that is killed has done would not count (children that decode always are), and those that run out
// of memory or of disk in a test do so in the counting. So that here the memory of the counters is that of
// a file, which all share; nothing is done at the end. With RAXEL_COUNTS_WRITE in the environment the
// counts so far are moved to where the compiler's tools look for them, and a program does nothing else.
#define _GNU_SOURCE
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

// Where the linker puts the counters (counts.ld), and what it puts first of all.
extern char raxel_counts_begin[] __attribute__((visibility("hidden")));
extern char raxel_counts_end[] __attribute__((visibility("hidden")));
extern const ElfW(Ehdr) __ehdr_start __attribute__((visibility("hidden")));

// The linker leads here what is meant for the functions without "wrap".
void __real___gcov_exit(void);
void __wrap___gcov_exit(void) __attribute__((visibility("hidden")));
void __wrap___gcov_dump(void) __attribute__((visibility("hidden")));
void __wrap___gcov_reset(void) __attribute__((visibility("hidden")));

static int writes(void) {
  return getenv("RAXEL_COUNTS_WRITE") != NULL;
}

void __wrap___gcov_exit(void) {
  if (writes()) __real___gcov_exit();
}

// Around a fork and an exec.
void __wrap___gcov_dump(void) {}
void __wrap___gcov_reset(void) {}

static const ElfW(Phdr) * parts(void) {
  return (const ElfW(Phdr) *)((const char *)&__ehdr_start + __ehdr_start.e_phoff);
}

// A copy of a library has the same, and one that is linked again has another.
static void appendBuildId(char *path) {
  // A program that is not moved has addresses for places.
  const uintptr_t base = __ehdr_start.e_type == ET_EXEC ? 0 : (uintptr_t)&__ehdr_start;
  for (int i = 0; i < __ehdr_start.e_phnum; ++i) {
    if (parts()[i].p_type != PT_NOTE) continue;
    const char *at = (const char *)(base + parts()[i].p_vaddr), *end = at + parts()[i].p_memsz;
    while (at < end) {
      const ElfW(Nhdr) *note = (const ElfW(Nhdr) *)at;
      const char *data = at + sizeof *note + ((note->n_namesz + 3) & ~3u);
      for (unsigned k = 0; k < note->n_descsz && note->n_type == NT_GNU_BUILD_ID; ++k)
        sprintf(path + strlen(path), "%02x", (unsigned char)data[k]);
      at = data + ((note->n_descsz + 3) & ~3u);
    }
  }
}

// Before all other code, the host's first constructors (101) too. Straight to the system: tests watch and
// fail the C library's calls.
#pragma GCC diagnostic ignored "-Wprio-ctor-dtor"
__attribute__((constructor(100))) static void share(void) {
  const size_t size = (size_t)(raxel_counts_end - raxel_counts_begin);
  const int kept = writes() ? MAP_PRIVATE : MAP_SHARED;
  char path[sizeof RAXEL_COUNTS + 100] = RAXEL_COUNTS "/";
  appendBuildId(path);
  long file = syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CLOEXEC);
  // Tests look at when a process makes its first file.
  if (file < 0) file = syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (file < 0) return;
  if (syscall(SYS_lseek, file, 0, SEEK_END) == (long)size || syscall(SYS_ftruncate, file, size) == 0)
    syscall(SYS_mmap, raxel_counts_begin, size, PROT_READ | PROT_WRITE, MAP_FIXED | kept, file, 0);
  syscall(SYS_close, file);
  if (writes()) unlink(path);
}

// After all libraries' own.
__attribute__((constructor)) static void endProgram(void) {
  if (writes() && getauxval(AT_PHDR) == (unsigned long)parts()) exit(0);
}
