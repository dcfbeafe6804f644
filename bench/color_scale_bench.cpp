// SPDX-License-Identifier: MIT
// Scaling, mirroring and the conversions of four-byte pixels, beside a memcpy of the bytes that each
// writes.
//
// Arguments: bits per pixel, the width and height of the picture, then those of the result.
//   scale         the workers, into a picture that is there already
//   scaleToBlock  the functions on handles, which make the picture: beside a memcpy into a new block
#include <benchmark/benchmark.h>

#include <cstring>

#include "pictures.h"
#include "raxel/color.h"
#include "runtime/blocks.h"
#include "support/random.h"

namespace {

constexpr uint32_t kWidth = bench::kPhotoWidth;
constexpr uint32_t kHeight = bench::kPhotoHeight;

struct Scaling {
  int16_t depth;
  uint32_t fromWidth;
  uint32_t fromHeight;
  uint32_t width;
  uint32_t height;

  explicit Scaling(const benchmark::State &state)
      : depth(static_cast<int16_t>(state.range(0))),
        fromWidth(static_cast<uint32_t>(state.range(1))),
        fromHeight(static_cast<uint32_t>(state.range(2))),
        width(static_cast<uint32_t>(state.range(3))),
        height(static_cast<uint32_t>(state.range(4))) {}

  uint32_t bytesWritten() const { return rlCalcNewSize(width, height, depth); }
};

// A picture whose bytes are the photo's, at any depth.
runtime::Block pictureOf(int16_t depth, uint32_t width = kWidth, uint32_t height = kHeight) {
  runtime::Block block = runtime::Block::ofSize(rlCalcNewSize(width, height, depth));
  const auto bytes = bench::photo(width, height, depth == 32 ? 4 : 3);
  std::memcpy(block.data(), bytes.data(), std::min(block.bytes().size(), bytes.size()));
  return block;
}

void scale(benchmark::State &state) {
  const Scaling s(state);
  const runtime::Block source = pictureOf(s.depth, s.fromWidth, s.fromHeight);
  const runtime::Block scaled = runtime::Block::ofSize(s.bytesWritten());
  const auto worker = s.height > s.fromHeight ? Stretch : Shrink;
  for (auto _ : state) {
    worker(source.data(), scaled.data(), s.depth, s.fromWidth, s.fromHeight, s.width, s.height);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * int64_t{s.bytesWritten()});
}

// The limit: the bytes that scaling to this size writes, copied.
void copyOfTheBytesWritten(benchmark::State &state) {
  const uint32_t size = Scaling(state).bytesWritten();
  const runtime::Block from = runtime::Block::ofSize(size);
  const runtime::Block to = runtime::Block::ofSize(size);
  std::memset(from.data(), 1, size);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), size);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * int64_t{size});
}

void scaleToBlock(benchmark::State &state) {
  const Scaling s(state);
  const runtime::Block source = pictureOf(s.depth, s.fromWidth, s.fromHeight);
  for (auto _ : state) {
    const runtime::Block scaled(
        rlShrinkBitmap(source.handle(), s.depth, s.fromWidth, s.fromHeight, s.width, s.height));
    benchmark::DoNotOptimize(scaled.data());
  }
  state.SetBytesProcessed(state.iterations() * int64_t{s.bytesWritten()});
}

// The limit of that: as many bytes, copied into a block that is made for them.
void copyToBlock(benchmark::State &state) {
  const uint32_t size = Scaling(state).bytesWritten();
  const runtime::Block from = runtime::Block::ofSize(size);
  std::memset(from.data(), 1, size);
  for (auto _ : state) {
    const runtime::Block to = runtime::Block::ofSize(size);
    std::memcpy(to.data(), from.data(), size);
    benchmark::DoNotOptimize(to.data());
  }
  state.SetBytesProcessed(state.iterations() * int64_t{size});
}

// 12 megapixels, and 3.
void sizes(benchmark::internal::Benchmark *bench) {
  bench->Unit(benchmark::kMicrosecond);
  for (const int64_t depth : {1, 4, 8, 24, 32}) {
    bench->Args({depth, 4000, 3000, 4000, 3000})
        ->Args({depth, 4000, 3000, 2000, 1500})
        ->Args({depth, 4000, 3000, 3001, 2251})
        ->Args({depth, 4000, 3000, 4800, 3600})
        ->Args({depth, 2000, 1500, 1000, 750})
        ->Args({depth, 2000, 1500, 1500, 1125})
        ->Args({depth, 2000, 1500, 2400, 1800})
        ->Args({depth, 2000, 1500, 4000, 3000});
  }
}
BENCHMARK(copyOfTheBytesWritten)->Apply(sizes);
BENCHMARK(scale)->Apply(sizes);
BENCHMARK(copyToBlock)->Apply(sizes);
BENCHMARK(scaleToBlock)->Apply(sizes);

void fourBytes(benchmark::State &state, void (*convert)(Handle, uint32_t, uint32_t)) {
  const runtime::Block picture = pictureOf(32);
  for (auto _ : state) {
    convert(picture.handle(), kWidth, kHeight);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(picture.bytes().size()));
}
BENCHMARK_CAPTURE(fourBytes, rgbToCmyk, rlRGB4toCMYK)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(fourBytes, cmykToRgb, rlCMYKtoRGB)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(fourBytes, dropAlpha, rlALPHAtoRGB)->Unit(benchmark::kMicrosecond);

void flip(benchmark::State &state) {
  const auto depth = static_cast<int16_t>(state.range(0));
  const runtime::Block picture = pictureOf(depth);
  for (auto _ : state) {
    rlFlipBitmap(picture.handle(), depth, kWidth, kHeight, static_cast<uint16_t>(state.range(1)),
                 static_cast<uint16_t>(state.range(2)));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(picture.bytes().size()));
}
BENCHMARK(flip)
    ->Unit(benchmark::kMicrosecond)
    ->ArgsProduct({{1, 4, 8, 24, 32}, {1}, {0}})
    ->Args({24, 0, 1});

}  // namespace
