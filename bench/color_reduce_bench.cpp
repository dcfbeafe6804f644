// SPDX-License-Identifier: MIT
// Choosing a table of 256 or 8 colours for a 12-megapixel photo from every pixel.
#include <benchmark/benchmark.h>

#include <cstring>

#include "color/median_cut/histogram.h"
#include "pictures.h"
#include "raxel/color.h"
#include "runtime/blocks.h"

namespace {

runtime::Block photoBlock() {
  const auto bytes = bench::photo(bench::kPhotoWidth, bench::kPhotoHeight, 3);
  runtime::Block block = runtime::Block::ofSize(bytes.size());
  std::memcpy(block.data(), bytes.data(), bytes.size());
  return block;
}

void histogram(benchmark::State &state) {
  const runtime::Block photo = photoBlock();
  std::vector<uint16_t> counters(color::kCells);
  for (auto _ : state) {
    std::fill(counters.begin(), counters.end(), uint16_t{0});
    benchmark::DoNotOptimize(color::countColors(std::span<uint16_t, color::kCells>(counters), photo.bytes(),
                                                bench::kPhotoWidth, bench::kPhotoHeight));
  }
}
BENCHMARK(histogram)->Unit(benchmark::kMillisecond);

void reduce(benchmark::State &state) {
  const runtime::Block photo = photoBlock();
  for (auto _ : state) {
    auto count = static_cast<uint16_t>(state.range(0));
    const runtime::Block table(
        rlReduceColorTable(photo.handle(), bench::kPhotoWidth, bench::kPhotoHeight, &count));
    benchmark::DoNotOptimize(table.data());
  }
}
BENCHMARK(reduce)->Unit(benchmark::kMillisecond)->Arg(256)->Arg(8);

// The cut alone, of a list as long as it can be.
void cut(benchmark::State &state) {
  support::Random random(5);
  const auto noise = random.bytes(3 * 1000 * 1000);
  runtime::Block block = runtime::Block::ofSize(noise.size());
  std::memcpy(block.data(), noise.data(), noise.size());
  for (auto _ : state) {
    uint16_t count = 256;
    const runtime::Block table(rlReduceColorTable(block.handle(), 1000, 1000, &count));
    benchmark::DoNotOptimize(table.data());
  }
}
BENCHMARK(cut)->Unit(benchmark::kMillisecond);

}  // namespace
