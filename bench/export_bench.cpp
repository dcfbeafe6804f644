// SPDX-License-Identifier: MIT
// Whole exports: a picture in memory, handed over by ExportCellData, to a file on disk, beside what
// hosts would otherwise do with the same bitmap: libtiff's C API, or Leptonica where colours are chosen
// or diffused first.
#include <leptonica/allheaders.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "coder_pictures.h"
#include "libtiff_files.h"
#include "pictures.h"
#include "ratios.h"
#include "raxel/filter.h"
#include "raxel/memory.h"
#include "runtime/blocks.h"
#include "runtime/unaligned.h"
#include "support/temp_dir.h"

namespace {

struct Compression {
  int32_t asked;  // of the escape
  uint16_t tag;
};
constexpr Compression kNone{RAXEL_ASK_COMPRESS_NONE, RAXEL_TIFF_UNCOMPRESSED};
constexpr Compression kPackBits{RAXEL_ASK_COMPRESS_PACKBITS, RAXEL_TIFF_PACKBITS};
constexpr Compression kLzw{RAXEL_ASK_COMPRESS_LZW, RAXEL_TIFF_LZW};
constexpr Compression kT6{RAXEL_ASK_COMPRESS_T6, RAXEL_TIFF_T6};

struct Job {
  std::vector<uint8_t> bitmap;  // rows as libtiff and Leptonica take them
  uint16_t width;
  uint16_t height;
  uint16_t bits;
  int32_t mode;
  Compression compression;
  Handle pixels = 0;
};

void require(bool holds, const char *what) {
  if (holds) return;
  std::fprintf(stderr, "export_bench: %s\n", what);
  std::abort();
}

// A size in units of 1/100 inch at 100 dots an inch is a size in pixels. Blue and red change places in
// the block each time, which costs the same in either direction.
void exportPicture(const std::string &path, const Job &job) {
  const Handle setup = CreateSetup(0, "", "", "");
  const int32_t dpi = 100;
  const auto escape = [&](int32_t number, int32_t value) {
    require(xEscapeSetup(setup, number, 4, &value, nullptr, 0) == RAXEL_ESCAPE_DONE,
            "an escape is refused");
  };
  escape(RAXEL_ESCAPE_SET_BITMAP_MODE, job.mode);
  escape(RAXEL_ESCAPE_SET_COMPRESSION, job.compression.asked);
  escape(RAXEL_ESCAPE_SET_X_RESOLUTION, dpi);
  escape(RAXEL_ESCAPE_SET_Y_RESOLUTION, dpi);
  escape(RAXEL_ESCAPE_SET_RESOLUTION_MODE, RAXEL_ASK_RESOLUTION_USER);
  escape(RAXEL_ESCAPE_SET_SIZE_MODE, RAXEL_ASK_SIZE_PICTURE);
  PictureRecord picture{};
  picture.nBits = job.bits;
  picture.nWidth = job.width;
  picture.nHeight = job.height;
  picture.hBits = job.pixels;
  uint8_t info[EXPORT_CELL_INFO_BYTES] = {};
  runtime::store(info + 2, static_cast<int16_t>(dpi));
  runtime::store(info + 10, static_cast<uint16_t>(dpi));
  runtime::store(info + 12, int32_t{job.width});
  runtime::store(info + 16, int32_t{job.height});
  HostWord status[RAXEL_STATUS_WORDS] = {};
  HostWord record[RAXEL_RECORD_WORDS] = {};
  record[RAXEL_RECORD_SETUP] = setup;
  record[RAXEL_RECORD_STATUS] = reinterpret_cast<HostWord>(status);
  require(ExportCellData(path.c_str(), &picture, info, record) == 0, "the export fails");
  DestroySetup(setup);
}

void withLibtiff(const std::string &path, const Job &job) {
  if (job.bits == 24) {
    bench::writeRgbWithLibtiff(path, job.bitmap, job.width, job.height, job.compression.tag);
  } else {
    bench::writeBilevelWithLibtiff(path, job.bitmap, job.width, job.height, job.compression.tag);
  }
}

PIX *leptonicaPhoto(const Job &job) {
  PIX *pix = pixCreate(job.width, job.height, 32);
  for (l_uint32 y = 0; y < job.height; ++y) {
    const uint8_t *row = job.bitmap.data() + size_t{job.height - 1u - y} * job.width * 3;
    l_uint32 *line = pixGetData(pix) + size_t{y} * static_cast<size_t>(pixGetWpl(pix));
    for (l_uint32 x = 0; x < job.width; ++x, row += 3) composeRGBPixel(row[2], row[1], row[0], line + x);
  }
  return pix;
}

// Leptonica starts from a picture of its own, made beforehand.
void withLeptonica(const std::string &path, const Job &job) {
  static PIX *photo = leptonicaPhoto(job);
  if (job.mode == RAXEL_ASK_MODE_COLOR256) {
    PIX *out = pixMedianCutQuantGeneral(photo, 0, 8, 256, 0, 1, 0);
    require(pixWrite(path.c_str(), out, IFF_TIFF) == 0, "Leptonica writes no file");
    pixDestroy(&out);
  } else {
    PIX *grey = pixConvertRGBToLuminance(photo);
    PIX *out = pixDitherToBinary(grey);
    require(pixWrite(path.c_str(), out, IFF_TIFF_G4) == 0, "Leptonica writes no file");
    pixDestroy(&grey);
    pixDestroy(&out);
  }
}

using Write = void (*)(const std::string &, const Job &);

void add(const std::string &name, const Job &job, Write write) {
  benchmark::RegisterBenchmark(
      name.c_str(),
      [&job, write](benchmark::State &state) {
        const support::TempDir dir;
        const std::string path = dir.file("out.tif");
        for (auto _ : state) write(path, job);
        struct stat written {};
        require(stat(path.c_str(), &written) == 0 && written.st_size > 1000, "no file was written");
        state.counters["file_bytes"] = static_cast<double>(written.st_size);
        state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(job.bitmap.size()));
      })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();  // strips are coded on other threads, too
}

// Jobs live as long as the program: the runs point to them.
void compare(const std::string &name, std::vector<uint8_t> bitmap, uint16_t bits, int32_t mode,
             Compression compression, Write theirs) {
  auto *job = new Job{std::move(bitmap), bench::kPhotoWidth, bench::kPhotoHeight, bits, mode, compression};
  job->pixels = runtime::allocate(job->bitmap.size());
  std::memcpy(GlobalLock(job->pixels), job->bitmap.data(), job->bitmap.size());
  add(name + "/ours", *job, exportPicture);
  add(name + "/theirs", *job, theirs);
}

}  // namespace

int main(int argc, char **argv) {
  const auto photo = bench::photo(bench::kPhotoWidth, bench::kPhotoHeight, 3);
  const auto page = bench::textPage(bench::kPhotoWidth, bench::kPhotoHeight);
  compare("RGB, none/libtiff", photo, 24, RAXEL_ASK_MODE_RGB, kNone, withLibtiff);
  compare("RGB, PackBits/libtiff", photo, 24, RAXEL_ASK_MODE_RGB, kPackBits, withLibtiff);
  compare("RGB, LZW/libtiff", photo, 24, RAXEL_ASK_MODE_RGB, kLzw, withLibtiff);
  compare("text page, T.6/libtiff", page, 1, RAXEL_ASK_MODE_BILEVEL, kT6, withLibtiff);
  const auto dithered = bench::ditheredPicture(bench::kPhotoWidth, bench::kPhotoHeight).pixels;
  compare("dithered photo, T.6/libtiff", dithered, 1, RAXEL_ASK_MODE_BILEVEL, kT6, withLibtiff);
  compare("photo to 256 colours, none/Leptonica", photo, 24, RAXEL_ASK_MODE_COLOR256, kNone, withLeptonica);
  compare("photo to bilevel, T.6/Leptonica", photo, 24, RAXEL_ASK_MODE_BILEVEL, kT6, withLeptonica);
  return bench::runWithRatios(argc, argv);
}
