// The real library, which this one needs, with a fault of its own on the way of a picture. The environment
// variable FAULT says which.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "raxel/filter.h"
#include "raxel/memory.h"

uint32_t ExportCellData(const char *name, PictureRecord *picture, const void *info, HostWord *record) {
  const char *fault = getenv("FAULT");
  void *symbol = dlsym(RTLD_NEXT, "ExportCellData");
  uint32_t (*real)(const char *, PictureRecord *, const void *, HostWord *);
  memcpy(&real, &symbol, sizeof real);
  if (fault && strcmp(fault, "nothing") == 0) return 0;  // as if all went well
  if (fault && strcmp(fault, "code") == 0) return RAXEL_CANNOT_WRITE;
  if (fault && strcmp(fault, "pixel") == 0) {  // the first of the bottom row
    uint8_t *pixels = GlobalLock(picture->hBits);
    pixels[0] ^= 0x80;
    GlobalUnlock(picture->hBits);
  }
  const uint32_t result = real(name, picture, info, record);
  if (fault && strcmp(fault, "crash") == 0) _exit(9);  // all is written, and nothing is tidied up
  return result;
}
