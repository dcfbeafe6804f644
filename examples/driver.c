// SPDX-License-Identifier: MIT
/* A host that draws: it drives the filter like a graphics device.

     driver path/to/raxel.so picture.tif

   A 100 by 80 picture of 256 greys is sent as cell arrays of ten rows between begin and end raster. */
#include "host.h"

enum { WIDTH = 100, HEIGHT = 80, ROWS_PER_CALL = 10 };

static int32_t (*device)(HostWord, uint32_t, void *);

/* Sends one function record: its first 32-bit word is the opcode. */
static void send(uint32_t opcode, uint8_t *record) {
  memcpy(record, &opcode, 4);
  int32_t result = device(0, RAXEL_ENTRY_EXECUTE, record);
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
  entry(RAXEL_ENTRY_ADDRESS, &device, 0);

  Handle setup = create_setup(0, "", "", "");
  int32_t grey256 = RAXEL_ASK_MODE_GREY256;
  if (escape_setup(setup, RAXEL_ESCAPE_SET_BITMAP_MODE, 4, &grey256, NULL, 0) != RAXEL_ESCAPE_DONE)
    fail("bitmap mode refused");

  /* The initialisation record, in host words. */
  uint32_t capabilities[64] = {0};
  HostWord status[RAXEL_STATUS_WORDS] = {0};
  HostWord init[RAXEL_START_WORDS] = {0};
  init[RAXEL_START_NAME] = (HostWord)argv[2];
  init[RAXEL_START_REPLY_BYTES] = 256; /* bytes of replies that this host wants room for */
  init[RAXEL_START_SETUP] = setup;
  init[RAXEL_START_STATUS] = (HostWord)status;
  init[RAXEL_START_CAPABILITIES] = (HostWord)capabilities;
  if (device(0, RAXEL_ENTRY_START, init) != RAXEL_OK) fail("the driver does not start");

  memset(record, 0, sizeof record);
  send(RAXEL_OP_OPEN_DEVICE, record);
  send(RAXEL_OP_BEGIN_PICTURE, record);
  put_double(record + 40, WIDTH - 1); /* x1, y1, z1, x2, y2, z2 */
  put_double(record + 48, HEIGHT - 1);
  send(RAXEL_OP_WINDOW, record);
  memset(record, 0, sizeof record);
  int16_t metric = RAXEL_VIEWPORT_METRIC; /* 0.254 mm a pixel is 100 dots per inch */
  memcpy(record + 16, &metric, 2);
  put_double(record + 24, 0.254);
  send(RAXEL_OP_VIEWPORT_MODE, record);
  send(RAXEL_OP_BEGIN_BODY, record);

  put32(record + 4, 256 * 3 + 2); /* 256 colours follow: a ramp of greys */
  put32(record + 16, 0);
  for (int i = 0; i < 256; ++i) memset(record + 20 + 3 * i, i, 3);
  send(RAXEL_OP_COLORS, record);

  memset(record, 0, sizeof record);
  int32_t begin_raster = RAXEL_PRIMITIVE_BEGIN_RASTER, end_raster = RAXEL_PRIMITIVE_END_RASTER;
  memcpy(record + 16, &begin_raster, 4);
  put32(record + 24, 28); /* no points, then 28 bytes of data */
  put32(record + 28, WIDTH);
  put32(record + 32, HEIGHT);
  put32(record + 36, 8);
  send(RAXEL_OP_PRIMITIVE, record);

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
    send(RAXEL_OP_CELL_ARRAY, record);
  }

  memset(record, 0, sizeof record);
  memcpy(record + 16, &end_raster, 4);
  send(RAXEL_OP_PRIMITIVE, record);
  send(RAXEL_OP_END_PICTURE, record);
  send(RAXEL_OP_CLOSE_DEVICE, record);
  device(0, RAXEL_ENTRY_END, NULL);
  destroy_setup(setup);
  return 0;
}
