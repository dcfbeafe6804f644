// SPDX-License-Identifier: MIT
// raxelHostExport into memory beside the same export into a file: a 12-megapixel photo, prepared and
// written.
#include <benchmark/benchmark.h>

#include "pictures.h"
#include "raxel/host.h"
#include "support/temp_dir.h"

namespace {

void exportPhoto(benchmark::State &state, int32_t compression, bool toFile) {
  const support::TempDir dir;
  const std::string path = dir.file("photo.tif");
  const auto pixels = bench::photo(bench::kPhotoWidth, bench::kPhotoHeight, 3);
  RaxelHostJob job;
  raxelHostJobDefaults(&job, sizeof job);
  job.picture = {bench::kPhotoWidth,
                 bench::kPhotoHeight,
                 24,
                 pixels.data(),
                 size_t{3} * bench::kPhotoWidth,
                 nullptr,
                 0};
  job.request.compression = compression;
  if (toFile) job.path = path.c_str();
  for (auto _ : state) {
    RaxelHostResult result{};
    result.size = sizeof result;
    if (raxelHostExport(&job, &result) != RAXEL_HOST_OK) state.SkipWithError(result.message);
    raxelHostFree(result.memory);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(pixels.size()));
}
BENCHMARK_CAPTURE(exportPhoto, none_memory, RAXEL_COMPRESS_NONE, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(exportPhoto, none_file, RAXEL_COMPRESS_NONE, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(exportPhoto, packbits_memory, RAXEL_COMPRESS_PACKBITS, false)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(exportPhoto, packbits_file, RAXEL_COMPRESS_PACKBITS, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(exportPhoto, lzw_memory, RAXEL_COMPRESS_LZW, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(exportPhoto, lzw_file, RAXEL_COMPRESS_LZW, true)->Unit(benchmark::kMillisecond);

}  // namespace
