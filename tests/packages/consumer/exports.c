// SPDX-License-Identifier: MIT
// Writes four pixels to the file that is named, by libraxelhost and the filter that it finds. Prints
// "exports" and the version that both have.
#include <raxel/host.h>
#include <stdio.h>

// Names of the application's own.
static const double zero = 0.0, one = 1.0;
static double split(double whole) {
  return whole / 2 + zero * one;
}

int main(int count, char **arguments) {
  static const uint8_t pixels[12] = {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255};
  RaxelHostJob job;
  RaxelHostResult result = {sizeof result};
  if (count != 2 || split(2) != 1.0 || raxelHostVersion() != RAXEL_HOST_VERSION) return 2;
  raxelHostJobDefaults(&job, sizeof job);
  job.picture.width = job.picture.height = 2;
  job.picture.bits = 24;
  job.picture.rows = pixels;
  job.picture.stride = 6;
  job.path = arguments[1];
  if (raxelHostExport(&job, &result) != RAXEL_HOST_OK) {
    fprintf(stderr, "%s\n", result.message);
    return 1;
  }
  printf("exports %d.%d.%d\n", RAXEL_HOST_VERSION_MAJOR, RAXEL_HOST_VERSION_MINOR,
         RAXEL_HOST_VERSION_PATCH);
  return 0;
}
