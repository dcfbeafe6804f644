/* A host that draws: it drives the filter like a graphics device.

     driver path/to/raxel.so picture.tif

   A 100 by 80 picture of 256 greys is sent as cell arrays of ten rows between begin and end raster. */
#include "host.h"

enum { WIDTH = 100, HEIGHT = 80, ROWS_PER_CALL = 10 };
enum { OPEN = 1, CLOSE = 2, BEGIN = 3, BODY = 4, END = 5, WINDOW = 518, MODE = 521 };
enum { CELLS = 1033, PRIMITIVE = 1034, COLORS = 1314 };

static int32_t (*device)(HostWord, uint32_t, void *);

/* Sends one function record: its first 32-bit word is the opcode. */
static void send(uint32_t opcode, uint8_t *record) {
  memcpy(record, &opcode, 4);
  int32_t result = device(0, 2, record);
  if (result != 0) {
    fprintf(stderr, "opcode %u answers %d\n", (unsigned)opcode, (int)result);
    exit(1);
  }
}

static void put32(uint8_t *at, uint32_t value) {
  memcpy(at, &value, 4);
}

static void put_double(uint8_t *at, double value) {
  memcpy(at, &value, 8);
}

int main(int argc, char **argv) {
  int32_t (*entry)(uint32_t, void *, uint32_t);
  Handle (*create_setup)(HostWord, const char *, const char *, const char *);
  int32_t (*escape_setup)(Handle, int32_t, int32_t, const void *, void *, int32_t);
  int32_t (*destroy_setup)(Handle);
  static uint8_t record[102 + WIDTH * ROWS_PER_CALL];
  if (argc != 3) fail("usage: driver LIBRARY OUTPUT");
  open_library(argv[1]);
  FIND(entry, "RASTER_dd_entry");
  FIND(create_setup, "CreateSetup");
  FIND(escape_setup, "xEscapeSetup");
  FIND(destroy_setup, "DestroySetup");
  entry(0xFFFD, &device, 0); /* op -3: the address of the working entry */

  Handle setup = create_setup(0, "", "", "");
  int32_t grey256 = 142;
  if (escape_setup(setup, 9, 4, &grey256, NULL, 0) != 1) fail("bitmap mode refused");

  /* The initialisation record, in host words. */
  uint32_t capabilities[64] = {0};
  HostWord status[13] = {0};
  HostWord init[16] = {0};
  init[3] = (HostWord)argv[2];
  init[9] = 256; /* bytes of replies that this host wants room for */
  init[13] = setup;
  init[14] = (HostWord)status;
  init[15] = (HostWord)capabilities;
  if (device(0, 0, init) != 0) fail("the driver does not start");

  memset(record, 0, sizeof record);
  send(OPEN, record);
  send(BEGIN, record);
  put_double(record + 40, WIDTH - 1); /* x1, y1, z1, x2, y2, z2 */
  put_double(record + 48, HEIGHT - 1);
  send(WINDOW, record);
  memset(record, 0, sizeof record);
  int16_t metric = 1; /* 0.254 mm a pixel is 100 dots per inch */
  memcpy(record + 16, &metric, 2);
  put_double(record + 24, 0.254);
  send(MODE, record);
  send(BODY, record);

  put32(record + 4, 256 * 3 + 2); /* 256 colours follow: a ramp of greys */
  put32(record + 16, 0);
  for (int i = 0; i < 256; ++i) memset(record + 20 + 3 * i, i, 3);
  send(COLORS, record);

  memset(record, 0, sizeof record);
  int32_t begin_raster = -5, end_raster = -6;
  memcpy(record + 16, &begin_raster, 4);
  put32(record + 24, 28); /* no points, then 28 bytes of data */
  put32(record + 28, WIDTH);
  put32(record + 32, HEIGHT);
  put32(record + 36, 8);
  send(PRIMITIVE, record);

  /* Rows are collected in the order in which they come, and the first one is the picture's lowest: y
     grows with them, as it does in the window. */
  for (uint32_t y = 0; y < HEIGHT; y += ROWS_PER_CALL) {
    memset(record, 0, sizeof record);
    put_double(record + 24, y);
    put_double(record + 48, y + ROWS_PER_CALL);
    put32(record + 88, WIDTH);
    put32(record + 92, ROWS_PER_CALL);
    put32(record + 96, 8);
    for (uint32_t r = 0; r < ROWS_PER_CALL; ++r) {
      for (uint32_t x = 0; x < WIDTH; ++x) record[102 + r * WIDTH + x] = (uint8_t)(x + HEIGHT - 1 - y - r);
    }
    send(CELLS, record);
  }

  memset(record, 0, sizeof record);
  memcpy(record + 16, &end_raster, 4);
  send(PRIMITIVE, record);
  send(END, record);
  send(CLOSE, record);
  device(0, 0xFFFF, NULL);
  destroy_setup(setup);
  return 0;
}
