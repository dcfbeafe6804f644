// SPDX-License-Identifier: MIT
/* Sends every page of a TIFF as a fax machine would, and receives it into another.
 *
 *     fax_loop FROM.tif TO.tif
 */
#include <inttypes.h>
#include <math.h>
#include <spandsp.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <tiffio.h>
#include <time.h>

int main(int argc, char **argv) {
  if (argc != 3) return 64;
  t4_tx_state_t *from = t4_tx_init(NULL, argv[1], -1, -1);
  t4_rx_state_t *to = t4_rx_init(NULL, argv[2], T4_COMPRESSION_ITU_T4_1D);
  if (!from || !to) return 66;
  const int pages = t4_tx_get_pages_in_file(from);
  for (int page = 0; page < pages; ++page) {
    uint8_t piece[256];
    int count;
    t4_tx_set_tx_encoding(from, T4_COMPRESSION_ITU_T4_1D);
    t4_tx_set_min_bits_per_row(from, 0);
    if (t4_tx_start_page(from) != 0) return 70;
    t4_rx_set_rx_encoding(to, T4_COMPRESSION_ITU_T4_1D);
    t4_rx_set_image_width(to, t4_tx_get_image_width(from));
    t4_rx_set_x_resolution(to, t4_tx_get_x_resolution(from));
    t4_rx_set_y_resolution(to, t4_tx_get_y_resolution(from));
    if (t4_rx_start_page(to) != 0) return 73;
    while ((count = t4_tx_get_chunk(from, piece, sizeof piece)) > 0) t4_rx_put_chunk(to, piece, count);
    t4_tx_end_page(from);
    if (t4_rx_end_page(to) != 0) return 74;
  }
  t4_tx_free(from);
  t4_rx_free(to);
  printf("%d\n", pages);
  return 0;
}
