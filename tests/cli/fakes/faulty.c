// SPDX-License-Identifier: MIT
// The real library, which this one needs, with a fault of its own on the way of a picture. The environment
// variable FAULT says which.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "raxel/filter.h"
#include "raxel/memory.h"

static int has(const char *fault) {
  const char *wanted = getenv("FAULT");
  return wanted && strcmp(wanted, fault) == 0;
}

// Changes the first pixel of a bottom row.
static void change(Handle rows) {
  uint8_t *pixels = GlobalLock(rows);
  pixels[0] ^= 0x80;
  GlobalUnlock(rows);
}

// All is written, and nothing is tidied up.
static void crash(void) {
  if (has("crash")) _exit(9);
}

uint32_t ExportCellData(const char *name, PictureRecord *picture, const void *info, HostWord *record) {
  void *symbol = dlsym(RTLD_NEXT, "ExportCellData");
  uint32_t (*real)(const char *, PictureRecord *, const void *, HostWord *);
  memcpy(&real, &symbol, sizeof real);
  if (has("nothing")) return 0;  // as if all went well
  if (has("code")) return RAXEL_CANNOT_WRITE;
  if (has("pixel")) change(picture->hBits);
  const uint32_t result = real(name, picture, info, record);
  crash();
  return result;
}

// The same for a picture that comes in bands.
static DrawProc drawn;

static HostWord drawFaulty(HostWord op, HostWord a, HostWord first, HostWord last) {
  const HostWord answer = drawn(op, a, first, last);
  if (op == RAXEL_DRAW_BAND && first == 0) change(answer);
  return answer;
}

int32_t OutputPicture(Handle file, void *picture, DrawProc draw) {
  void *symbol = dlsym(RTLD_NEXT, "OutputPicture");
  int32_t (*real)(Handle, void *, DrawProc);
  memcpy(&real, &symbol, sizeof real);
  if (has("nothing")) return 0;
  if (has("code")) return RAXEL_CANNOT_WRITE;
  drawn = draw;
  const int32_t result = real(file, picture, has("pixel") ? drawFaulty : draw);
  crash();
  return result;
}
