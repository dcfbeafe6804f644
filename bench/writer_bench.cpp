// SPDX-License-Identifier: MIT
// Whole RGB files of 12 megapixels on disk: the writer from BeginCellBitmap to kvlClose beside
// libtiff's C API, from the same bitmap, and beside a plain copy and a plain write of its bytes.
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "libtiff_files.h"
#include "pictures.h"
#include "ratios.h"
#include "raxel/settings.h"
#include "raxel/stream.h"
#include "runtime/blocks.h"
#include "support/temp_dir.h"

namespace {

struct Job {
  std::string name;
  Handle pixels = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  uint16_t compression = RAXEL_TIFF_UNCOMPRESSED;

  std::span<uint8_t> bitmap() const { return runtime::lockBytes(pixels); }
};

Handle blockOf(const std::vector<uint8_t> &bytes) {
  const Handle block = runtime::allocate(bytes.size());
  std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
  return block;
}

// The pixels change from blue first to red first in the block itself, and back the next time: half of
// the files have their colours the other way round, which costs the same.
void writeWithRaxel(const std::string &path, const Job &job) {
  RasterSetup setup{};
  setup.nBitmapMode = RAXEL_STORED_MODE_RGB;
  setup.nCompressionMode = job.compression == RAXEL_TIFF_UNCOMPRESSED ? RAXEL_STORED_COMPRESS_NONE
                                                                      : RAXEL_STORED_COMPRESS_PACKBITS;
  setup.tiff.nXResolution = setup.tiff.nYResolution = 300;
  setup.tiff.wLayoutMode = RAXEL_STORED_LAYOUT_STRIPS;
  lpRaster = &setup;
  const Handle file = kvlOpen(path.c_str(), nullptr, KVL_OUTPUT);
  Handle descriptor = 0;
  BeginCellBitmap(file, job.width, job.height, 24, nullptr, &descriptor);
  WriteCellBits(file, job.pixels, job.width, job.height, 24, 1, descriptor);
  EndCellBitmap(file, descriptor);
  kvlClose(file);
  lpRaster = nullptr;
}

void writeWithLibtiff(const std::string &path, const Job &job) {
  bench::writeRgbWithLibtiff(path, job.bitmap(), job.width, job.height, job.compression);
}

void writePlainly(const std::string &path, const Job &job) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const std::span<const uint8_t> bytes = job.bitmap();
  if (::write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) std::abort();
  ::close(file);
}

void copyInMemory(const std::string &, const Job &job) {
  static std::vector<uint8_t> to(job.bitmap().size());
  std::memcpy(to.data(), job.bitmap().data(), to.size());
  benchmark::ClobberMemory();
}

using Write = void (*)(const std::string &, const Job &);

void add(const std::string &name, const Job &job, Write write) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
    const support::TempDir dir;
    const std::string path = dir.file("out.tif");
    for (auto _ : state) write(path, job);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(job.bitmap().size()));
  })->Unit(benchmark::kMillisecond);
}

// Each limit is a pair of its own, with the writer's uncompressed file as "ours".
void compare(const std::string &name, const std::vector<uint8_t> &bitmap) {
  Job job{name, blockOf(bitmap), bench::kPhotoWidth, bench::kPhotoHeight, RAXEL_TIFF_UNCOMPRESSED};
  add("none/" + name + "/ours", job, writeWithRaxel);
  add("none/" + name + "/theirs", job, writeWithLibtiff);
  add("none against write()/" + name + "/ours", job, writeWithRaxel);
  add("none against write()/" + name + "/theirs", job, writePlainly);
  add("none against memcpy/" + name + "/ours", job, writeWithRaxel);
  add("none against memcpy/" + name + "/theirs", job, copyInMemory);
  job.compression = RAXEL_TIFF_PACKBITS;
  add("PackBits/" + name + "/ours", job, writeWithRaxel);
  add("PackBits/" + name + "/theirs", job, writeWithLibtiff);
}

}  // namespace

int main(int argc, char **argv) {
  compare("photo", bench::photo(bench::kPhotoWidth, bench::kPhotoHeight, 3));
  return bench::runWithRatios(argc, argv);
}
