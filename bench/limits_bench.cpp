// SPDX-License-Identifier: MIT
// What no writer can beat: the bytes of a 12-megapixel photo copied in memory, and written to a file.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "pictures.h"
#include "support/temp_dir.h"

namespace {

void memcpyOfThePhoto(benchmark::State &state) {
  const auto from = bench::photo(bench::kPhotoWidth, bench::kPhotoHeight, 3);
  std::vector<uint8_t> to(from.size());
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(from.size()));
}
BENCHMARK(memcpyOfThePhoto)->Unit(benchmark::kMillisecond);

void writeOfThePhoto(benchmark::State &state) {
  const support::TempDir dir;
  const auto bytes = bench::photo(bench::kPhotoWidth, bench::kPhotoHeight, 3);
  for (auto _ : state) {
    const int file = ::open(dir.file("photo").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (::write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
      state.SkipWithError("the disk is full");
    }
    ::close(file);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}
BENCHMARK(writeOfThePhoto)->Unit(benchmark::kMillisecond);

}  // namespace
