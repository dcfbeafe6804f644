#include "library/host.h"

#include <cmath>
#include <cstring>

#include "library/library.h"
#include "support/random.h"
#include "support/temp_dir.h"

namespace library {
namespace {

// Words of the host's records.
constexpr size_t kExportSetup = 2, kExportStatus = 6, kExportWords = 8;
constexpr size_t kStatusContext = 1, kStatusCallback = 2, kStatusWords = 16;

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
  const Handle handle = LOADED(GlobalAlloc)(66, static_cast<uint32_t>(bytes.size()));
  std::memcpy(LOADED(GlobalLock)(handle), bytes.data(), bytes.size());
  LOADED(GlobalUnlock)(handle);
  return handle;
}

int32_t extent(unsigned pixels, unsigned dpi) {
  return static_cast<int32_t>(std::ceil(double{kUnitsPerInch} * pixels / dpi));
}

void set(Handle setup, int32_t escape, int32_t value) {
  EXPECT_EQ(LOADED(xEscapeSetup)(setup, escape, 4, &value, nullptr, 0), 1) << "escape " << escape;
}

template <typename T>
void put(uint8_t *record, size_t at, T value) {
  std::memcpy(record + at, &value, sizeof value);
}

void apply(const Job &job, Handle setup) {
  set(setup, 9, job.mode);
  set(setup, 10, job.compression);
  set(setup, 18, 3);  // the resolution is the setup's own, and the size the picture's
  set(setup, 11, job.dpi);
  set(setup, 12, job.dpi);
  set(setup, 19, 2);
  // No escape sets the layout, only a profile does.
  static_cast<RasterSetup *>(LOADED(GlobalLock)(setup))->tiff.wLayoutMode = job.tiles ? 771 : 772;
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
    words[kStatusContext] = reinterpret_cast<HostWord>(&written.progress);
    words[kStatusCallback] = reinterpret_cast<HostWord>(&reportProgress);
  }
  HostWord word() { return reinterpret_cast<HostWord>(words); }
  HostWord words[kStatusWords] = {};
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
  HostWord exportRecord[kExportWords] = {};
  exportRecord[kExportSetup] = setup;
  exportRecord[kExportStatus] = status.word();

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
    call(2, record);
  };
  const auto nothing = [](uint8_t *) {};

  Status status(written);
  int32_t capabilities[64] = {};
  HostWord start[16] = {};
  start[3] = reinterpret_cast<HostWord>(path.data());
  start[9] = 1024;  // bytes for replies
  start[13] = setup;
  start[14] = status.word();
  start[15] = reinterpret_cast<HostWord>(capabilities);
  call(0, start);
  function(1, nothing);            // open the device
  function(3, nothing);            // begin a picture
  function(518, [&](uint8_t *r) {  // the window, one unit a pixel
    put(r, 16 + 3 * 8, double(picture.width - 1));
    put(r, 16 + 4 * 8, double(picture.height - 1));
  });
  function(521, [&](uint8_t *r) {  // millimetres a unit
    put(r, 16, int16_t{1});
    put(r, 24, 25.4 / job.dpi);
  });
  function(4, nothing);             // begin its body
  function(1034, [&](uint8_t *r) {  // begin raster, without points
    put(r, 16, int32_t{-5});
    put(r, 28, uint32_t{picture.width});
    put(r, 32, uint32_t{picture.height});
    put(r, 36, int32_t{picture.bits});
  });
  // The cell array itself, its pixels within the record.
  std::vector<uint8_t> cells(102);
  put(cells.data(), 0, uint32_t{1033});
  put(cells.data(), 48, double(picture.height - 1));
  put(cells.data(), 88, uint32_t{picture.width});
  put(cells.data(), 92, uint32_t{picture.height});
  put(cells.data(), 96, int32_t{picture.bits});
  cells.insert(cells.end(), picture.rows.begin(), picture.rows.end());
  call(2, cells.data());
  function(1034, [](uint8_t *r) { put(r, 16, int32_t{-6}); });  // end raster
  function(5, nothing);                                         // end the picture
  function(2, nothing);                                         // close the device
  call(0xFFFF, nullptr);

  written.file = support::readFile(path);
  EXPECT_EQ(LOADED(DestroySetup)(setup), 0);
  return written;
}

}  // namespace library
