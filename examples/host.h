// SPDX-License-Identifier: MIT
/* What every small host here needs: open the library and find its functions. */
#ifndef EXAMPLES_HOST_H
#define EXAMPLES_HOST_H

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "raxel/raxel.h"

static void *library;

static void fail(const char *what) {
  fprintf(stderr, "%s\n", what);
  exit(1);
}

/* An address from the dynamic loader. The cast goes through memory: ISO C keeps data and function
   pointers apart, POSIX does not. */
#define FIND(pointer, name)                        \
  do {                                             \
    void *found_ = dlsym(library, name);           \
    if (found_ == NULL) fail("no function " name); \
    memcpy(&(pointer), &found_, sizeof found_);    \
  } while (0)

/* Opens the library, asks for its table of entries and checks the version. */
static void open_library(const char *path) {
  void (*load_pointers)(FilterLoadRecord *);
  uint32_t (*version)(void);
  FilterLoadRecord record;
  library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) fail(dlerror());
  FIND(load_pointers, "fltLoadPointers");
  memset(&record, 0, sizeof record);
  load_pointers(&record);
  if (record.count != RAXEL_TABLE_ROWS) fail("not the table this host knows");
  FIND(version, "KVLGetFilterVersion");
  if (version() != RAXEL_VERSION) fail("another version of the library");
}

#endif
