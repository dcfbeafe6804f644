// SPDX-License-Identifier: MIT
/* Writes a PPM as a TIFF: the whole road, in one call.

   write IN.ppm OUT.tif

   cc -std=c99 write.c $(pkg-config --cflags --libs raxelhost) -o write */
#include <raxel/host.h>
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char **argv) {
  RaxelHostJob job;
  RaxelHostResult result;
  unsigned width, height;
  FILE *in = argc == 3 ? fopen(argv[1], "rb") : NULL;
  if (in == NULL || fscanf(in, "P6 %u %u 255", &width, &height) != 2 || getc(in) == EOF) return 66;
  size_t stride = (size_t)3 * width;
  uint8_t *pixels = calloc(height, stride);
  if (pixels == NULL || fread(pixels, stride, height, in) != height) return 66;
  raxelHostJobDefaults(&job, sizeof job);
  job.picture = (RaxelPicture){width, height, 24, pixels, stride, NULL, 0}; /* 24 bits, rows from the top */
  job.request.compression = RAXEL_COMPRESS_LZW;
  job.path = argv[2];
  result.size = sizeof result;
  if (raxelHostExport(&job, &result) != RAXEL_HOST_OK) fprintf(stderr, "%s\n", result.message);
  free(pixels);
  return result.code == RAXEL_HOST_OK ? 0 : 74;
}
