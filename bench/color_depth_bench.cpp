// SPDX-License-Identifier: MIT
// Conversions of 12 megapixels between all depths, beside a memcpy of the bytes that each writes.
//
// Arguments: bits per pixel before and after. Both write into a new block, as a caller would see it.
#include <benchmark/benchmark.h>

#include <cstring>

#include "pictures.h"
#include "raxel/color.h"
#include "runtime/blocks.h"
#include "support/random.h"

namespace {

constexpr uint32_t kWidth = bench::kPhotoWidth;
constexpr uint32_t kHeight = bench::kPhotoHeight;

runtime::Block randomBlock(size_t size, uint64_t seed) {
  support::Random random(seed);
  const auto bytes = random.bytes(size);
  runtime::Block block = runtime::Block::ofSize(size);
  std::memcpy(block.data(), bytes.data(), size);
  return block;
}

void convert(benchmark::State &state) {
  const auto from = static_cast<int16_t>(state.range(0));
  const auto to = static_cast<int16_t>(state.range(1));
  const runtime::Block bits = randomBlock(rlCalcNewSize(kWidth, kHeight, from), 1);
  const runtime::Block sourceTable = from <= 8 ? randomBlock(size_t{3} << from, 2) : runtime::Block();
  const runtime::Block table = to < from && to <= 8 ? randomBlock(size_t{3} << to, 3) : runtime::Block();
  const auto count = static_cast<uint16_t>(table ? 1u << to : 0u);
  for (auto _ : state) {
    const runtime::Block out(rlConvertBitmapDepth(bits.handle(), kWidth, kHeight, from, to,
                                                  sourceTable.handle(), table.handle(), count));
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(rlCalcNewSize(kWidth, kHeight, to)));
}

// The limit: the bytes that a picture of this depth has, copied into a new block.
void copy(benchmark::State &state) {
  const uint32_t size = rlCalcNewSize(kWidth, kHeight, static_cast<int16_t>(state.range(0)));
  const runtime::Block bits = randomBlock(size, 1);
  for (auto _ : state) {
    const runtime::Block out = runtime::Block::ofSize(size);
    std::memcpy(out.data(), bits.data(), size);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * int64_t{size});
}

BENCHMARK(convert)
    ->ArgNames({"from", "to"})
    ->ArgsProduct({{1, 4, 8}, {1, 4, 8, 24, 32}})
    ->ArgsProduct({{24, 32}, {24, 32}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(copy)->ArgName("to")->Arg(1)->Arg(4)->Arg(8)->Arg(24)->Arg(32)->Unit(benchmark::kMillisecond);

}  // namespace
