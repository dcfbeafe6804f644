// SPDX-License-Identifier: MIT
#include "library/host.h"

#include <cmath>
#include <cstring>

#include "library/library.h"
#include "support/random.h"
#include "support/temp_dir.h"

namespace library {
namespace {

// Every size in pixels is exact with this picture resolution and extents rounded up.
constexpr uint16_t kUnitsPerInch = 32768;

int32_t reportProgress(HostWord context, HostWord a, HostWord b, HostWord, HostWord percent, HostWord,
                       HostWord) {
  if (a == 0 && b == 0) {
    reinterpret_cast<std::vector<int32_t> *>(context)->push_back(static_cast<int32_t>(percent));
  }
  return 0;
}

Handle copyToHandle(const std::vector<uint8_t> &bytes) {
  const Handle handle = LOADED(GlobalAlloc)(RAXEL_MOVEABLE_ZERO, static_cast<uint32_t>(bytes.size()));
  std::memcpy(LOADED(GlobalLock)(handle), bytes.data(), bytes.size());
  LOADED(GlobalUnlock)(handle);
  return handle;
}

int32_t extent(unsigned pixels, unsigned dpi) {
  return static_cast<int32_t>(std::ceil(double{kUnitsPerInch} * pixels / dpi));
}

void set(Handle setup, int32_t escape, int32_t value) {
  EXPECT_EQ(LOADED(xEscapeSetup)(setup, escape, 4, &value, nullptr, 0), RAXEL_ESCAPE_DONE)
      << "escape " << escape;
}

template <typename T>
void put(uint8_t *record, size_t at, T value) {
  std::memcpy(record + at, &value, sizeof value);
}

void apply(const Job &job, Handle setup) {
  set(setup, RAXEL_ESCAPE_SET_BITMAP_MODE, job.mode);
  set(setup, RAXEL_ESCAPE_SET_COMPRESSION, job.compression);
  set(setup, RAXEL_ESCAPE_SET_RESOLUTION_MODE, RAXEL_ASK_RESOLUTION_USER);
  set(setup, RAXEL_ESCAPE_SET_X_RESOLUTION, job.dpi);
  set(setup, RAXEL_ESCAPE_SET_Y_RESOLUTION, job.dpi);
  set(setup, RAXEL_ESCAPE_SET_SIZE_MODE, RAXEL_ASK_SIZE_PICTURE);
  // No escape sets the layout, only a profile does.
  static_cast<RasterSetup *>(LOADED(GlobalLock)(setup))->tiff.wLayoutMode =
      job.tiles ? RAXEL_STORED_LAYOUT_TILES : RAXEL_STORED_LAYOUT_STRIPS;
  LOADED(GlobalUnlock)(setup);
}

Handle makeSetup(const support::TempDir &dir, const Job &job) {
  // The profile's name is one that no folder holds, so that the setup has the built-in defaults.
  const Handle setup = LOADED(CreateSetup)(0, dir.file("none.ini").c_str(), nullptr, nullptr);
  apply(job, setup);
  return setup;
}

// The status record of a host that wants to know how far an export is.
struct Status {
  explicit Status(Written &written) {
    words[RAXEL_STATUS_CONTEXT] = reinterpret_cast<HostWord>(&written.progress);
    words[RAXEL_STATUS_CALLBACK] = reinterpret_cast<HostWord>(&reportProgress);
  }
  HostWord word() { return reinterpret_cast<HostWord>(words); }
  HostWord words[RAXEL_STATUS_WORDS] = {};
};

}  // namespace

Picture noise(uint16_t bits, uint16_t width, uint16_t height, uint64_t seed) {
  support::Random random(seed);
  Picture picture{bits, width, height, {}, {}};
  if (bits <= 8) picture.palette = random.bytes(size_t{3} << bits);
  picture.rows = random.bytes((size_t{width} * bits + 31) / 32 * 4 * height);
  return picture;
}

Written exportPicture(const Picture &picture, const Job &job, Handle given) {
  const support::TempDir dir;
  const std::string path = dir.file("picture.tif");
  const Handle setup = given != 0 ? given : makeSetup(dir, job);
  if (given != 0) apply(job, given);

  PictureRecord record{};
  record.nBits = picture.bits;
  record.nWidth = picture.width;
  record.nHeight = picture.height;
  record.hBits = copyToHandle(picture.rows);
  if (!picture.palette.empty()) record.hPalette = copyToHandle(picture.palette);

  uint8_t info[EXPORT_CELL_INFO_BYTES] = {};
  put(info, 2, uint16_t{96});
  put(info, 10, kUnitsPerInch);
  put(info, 12, extent(picture.width, job.dpi));
  put(info, 16, extent(picture.height, job.dpi));
  put(info, 20, int32_t{picture.width});
  put(info, 24, int32_t{picture.height});

  Written written;
  Status status(written);
  HostWord exportRecord[RAXEL_RECORD_WORDS] = {};
  exportRecord[RAXEL_RECORD_SETUP] = setup;
  exportRecord[RAXEL_RECORD_STATUS] = status.word();

  written.result = LOADED(ExportCellData)(path.c_str(), &record, info, exportRecord);
  written.file = support::readFile(path);

  LOADED(GlobalFree)(record.hBits);
  if (record.hPalette != 0) LOADED(GlobalFree)(record.hPalette);
  if (given == 0) {
    EXPECT_EQ(LOADED(DestroySetup)(setup), 0);
  }
  return written;
}

Written drivePicture(const Picture &picture, const Job &job) {
  const support::TempDir dir;
  std::string path = dir.file("picture.tif");
  const Handle setup = makeSetup(dir, job);

  Written written;
  const auto call = [&written](uint32_t op, void *record) {
    const int32_t code = LOADED(RASTER_dd_entry32)(0, op, record);
    if (written.result == 0) written.result = static_cast<uint32_t>(code);
  };
  // A function record: the opcode, and what follows it from byte 16 on.
  const auto function = [&call](uint32_t opcode, const auto &fill) {
    alignas(8) uint8_t record[256] = {};
    put(record, 0, opcode);
    fill(record);
    call(RAXEL_ENTRY_EXECUTE, record);
  };
  const auto nothing = [](uint8_t *) {};

  Status status(written);
  int32_t capabilities[64] = {};
  HostWord start[RAXEL_START_WORDS] = {};
  start[RAXEL_START_NAME] = reinterpret_cast<HostWord>(path.data());
  start[RAXEL_START_REPLY_BYTES] = 1024;  // bytes for replies
  start[RAXEL_START_SETUP] = setup;
  start[RAXEL_START_STATUS] = status.word();
  start[RAXEL_START_CAPABILITIES] = reinterpret_cast<HostWord>(capabilities);
  call(RAXEL_ENTRY_START, start);
  function(RAXEL_OP_OPEN_DEVICE, nothing);
  function(RAXEL_OP_BEGIN_PICTURE, nothing);
  function(RAXEL_OP_WINDOW, [&](uint8_t *r) {  // the window, one unit a pixel
    put(r, 16 + 3 * 8, double(picture.width - 1));
    put(r, 16 + 4 * 8, double(picture.height - 1));
  });
  function(RAXEL_OP_VIEWPORT_MODE, [&](uint8_t *r) {  // millimetres a unit
    put(r, 16, int16_t{RAXEL_VIEWPORT_METRIC});
    put(r, 24, 25.4 / job.dpi);
  });
  function(RAXEL_OP_BEGIN_BODY, nothing);
  function(RAXEL_OP_PRIMITIVE, [&](uint8_t *r) {  // without points
    put(r, 16, int32_t{RAXEL_PRIMITIVE_BEGIN_RASTER});
    put(r, 28, uint32_t{picture.width});
    put(r, 32, uint32_t{picture.height});
    put(r, 36, int32_t{picture.bits});
  });
  // The cell array itself, its pixels within the record.
  std::vector<uint8_t> cells(102);
  put(cells.data(), 0, uint32_t{RAXEL_OP_CELL_ARRAY});
  put(cells.data(), 48, double(picture.height - 1));
  put(cells.data(), 88, uint32_t{picture.width});
  put(cells.data(), 92, uint32_t{picture.height});
  put(cells.data(), 96, int32_t{picture.bits});
  cells.insert(cells.end(), picture.rows.begin(), picture.rows.end());
  call(RAXEL_ENTRY_EXECUTE, cells.data());
  function(RAXEL_OP_PRIMITIVE, [](uint8_t *r) { put(r, 16, int32_t{RAXEL_PRIMITIVE_END_RASTER}); });
  function(RAXEL_OP_END_PICTURE, nothing);
  function(RAXEL_OP_CLOSE_DEVICE, nothing);
  call(RAXEL_ENTRY_END, nullptr);

  written.file = support::readFile(path);
  EXPECT_EQ(LOADED(DestroySetup)(setup), 0);
  return written;
}

}  // namespace library
