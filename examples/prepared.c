// SPDX-License-Identifier: MIT
/* A host on top of libraxelhost: any picture, any mode, and the file shows the picture.

   prepared RAXEL.SO OUT.TIF [MODE [COMPRESSION]]

   The picture here is a disc on a slope of colours, rows from the top, red before blue: as it would come
   from a reader or a canvas. What the filter wants of it, libraxelhost knows. */
#include "host.h"
#include "raxel/host.h"

enum { WIDTH = 201, HEIGHT = 101, DPI = 150 };

static uint8_t pixels[HEIGHT][WIDTH][3];

static void draw(void) {
  int x, y;
  for (y = 0; y < HEIGHT; ++y) {
    for (x = 0; x < WIDTH; ++x) {
      const int inside = (x - 60) * (x - 60) + (y - 50) * (y - 50) < 1600;
      pixels[y][x][0] = (uint8_t)(inside ? 220 : x);
      pixels[y][x][1] = (uint8_t)(inside ? 40 : 2 * y);
      pixels[y][x][2] = (uint8_t)(inside ? 30 : 255 - x);
    }
  }
}

static void check(int code) {
  if (code != RAXEL_HOST_OK) fail(raxelHostMessage(code));
}

/* The status callback: 100 percent comes only for a whole picture. */
static int32_t complete;
static int32_t report(HostWord context, HostWord a, HostWord b, HostWord c, HostWord percent, HostWord e,
                      HostWord f) {
  (void)context, (void)c, (void)e, (void)f;
  if (a == 0 && b == 0 && percent == RAXEL_REPORT_COMPLETE) complete = 1;
  return 0;
}

/* Numbers of the 28-byte export information. */
static uint8_t info[EXPORT_CELL_INFO_BYTES];
static void put16(size_t at, uint32_t value) {
  const uint16_t half = (uint16_t)value;
  memcpy(info + at, &half, sizeof half);
}
static void put32(size_t at, int32_t value) {
  memcpy(info + at, &value, sizeof value);
}

int main(int argc, char **argv) {
  RaxelServices services;
  RaxelPicture picture;
  RaxelRequest request;
  RaxelPlan plan;
  PictureRecord record;
  HostWord status[RAXEL_STATUS_WORDS] = {0}, export_record[RAXEL_RECORD_WORDS] = {0};
  Handle (*create_setup)(HostWord, const char *, const char *, const char *);
  int32_t (*destroy_setup)(Handle);
  int32_t (*escape)(Handle, int32_t, int32_t, const void *, void *, int32_t);
  uint32_t (*export_cells)(const char *, PictureRecord *, const void *, HostWord *);
  Handle setup, rows, table;
  int32_t escapes[7][2];
  size_t i;

  if (argc < 3) fail("prepared RAXEL.SO OUT.TIF [MODE [COMPRESSION]]");
  open_library(argv[1]);
  FIND(create_setup, "CreateSetup");
  FIND(destroy_setup, "DestroySetup");
  FIND(escape, "xEscapeSetup");
  FIND(export_cells, "ExportCellData");
  FIND(services.GlobalAlloc, "GlobalAlloc");
  FIND(services.GlobalLock, "GlobalLock");
  FIND(services.GlobalUnlock, "GlobalUnlock");
  FIND(services.GlobalFree, "GlobalFree");
  FIND(services.rlReduceColorTable, "rlReduceColorTable");
  FIND(services.rlConvertBitmapDepth, "rlConvertBitmapDepth");
  FIND(services.rlDitherGetCT, "rlDitherGetCT");
  FIND(services.rlDitherGivenCT, "rlDitherGivenCT");
  FIND(services.rev_rgb, "rev_rgb");

  /* What there is, and what is wanted of it. */
  draw();
  memset(&picture, 0, sizeof picture);
  picture.width = WIDTH;
  picture.height = HEIGHT;
  picture.bits = 24;
  picture.rows = &pixels[0][0][0];
  picture.stride = sizeof pixels[0];
  raxelHostDefaults(&request);
  request.dpiX = request.dpiY = DPI;
  if (argc > 3) request.mode = raxelHostFindMode(argv[3]);
  if (argc > 4) request.compression = raxelHostFindCompression(argv[4]);

  /* The plan says how much room it takes; the preparation fills that room. */
  check(raxelHostPlan(&picture, &request, &plan));
  rows = services.GlobalAlloc(RAXEL_MOVEABLE_ZERO, (uint32_t)plan.bytes);
  table = services.GlobalAlloc(RAXEL_MOVEABLE_ZERO, 256 * 3);
  check(raxelHostPrepare(&picture, &request, &services, &plan, services.GlobalLock(rows),
                         services.GlobalLock(table)));

  /* The settings that go with it. */
  setup = create_setup(0, NULL, NULL, NULL);
  escapes[0][0] = RAXEL_ESCAPE_SET_COLOR_MODE, escapes[0][1] = RAXEL_ASK_COLORS; /* treated already */
  escapes[1][0] = RAXEL_ESCAPE_SET_BITMAP_MODE, escapes[1][1] = raxelHostModeValue(plan.mode);
  escapes[2][0] = RAXEL_ESCAPE_SET_COMPRESSION, escapes[2][1] = raxelHostCompressionValue(plan.compression);
  escapes[3][0] = RAXEL_ESCAPE_SET_RESOLUTION_MODE, escapes[3][1] = RAXEL_ASK_RESOLUTION_USER;
  escapes[4][0] = RAXEL_ESCAPE_SET_X_RESOLUTION, escapes[4][1] = plan.filterDpiX;
  escapes[5][0] = RAXEL_ESCAPE_SET_Y_RESOLUTION, escapes[5][1] = plan.filterDpiY;
  escapes[6][0] = RAXEL_ESCAPE_SET_SIZE_MODE, escapes[6][1] = RAXEL_ASK_SIZE_PICTURE;
  for (i = 0; i < sizeof escapes / sizeof escapes[0]; ++i) {
    if (escape(setup, escapes[i][0], 4, &escapes[i][1], NULL, 0) != RAXEL_ESCAPE_DONE)
      fail("a setting is refused");
  }

  /* And the export itself. */
  memset(&record, 0, sizeof record);
  record.nBits = (uint16_t)plan.bits;
  record.nWidth = (uint16_t)plan.width;
  record.nHeight = (uint16_t)plan.height;
  record.hPalette = table;
  record.hBits = rows;
  put16(2, 96);
  put16(10, plan.unitsPerInch);
  put32(12, plan.extentX);
  put32(16, plan.extentY);
  put32(20, 1280);
  put32(24, 1024);
  status[RAXEL_STATUS_CALLBACK] = (HostWord)report;
  export_record[RAXEL_RECORD_SETUP] = setup;
  export_record[RAXEL_RECORD_STATUS] = (HostWord)status;
  if (export_cells(argv[2], &record, info, export_record) != RAXEL_OK || !complete)
    fail("the export failed");
  for (i = 0; i < RAXEL_NOTES; ++i) {
    if (plan.notes & 1u << i) printf("%s\n", raxelHostNote(1u << i));
  }

  destroy_setup(setup);
  services.GlobalUnlock(rows);
  services.GlobalFree(rows);
  services.GlobalUnlock(table);
  services.GlobalFree(table);
  return 0;
}
