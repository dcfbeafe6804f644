// SPDX-License-Identifier: MIT
// A 12-megapixel photo brought to 256, 16 and 2 colours, beside Leptonica and Pillow doing the like,
// and beside the plain form of the tests on a twelfth of the picture.
//
//   color_bench --benchmark_enable_random_interleaving=true --benchmark_repetitions=7
//               --benchmark_report_aggregates_only=true
#include <benchmark/benchmark.h>
#include <leptonica/allheaders.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "color/reference/plain_depth.h"
#include "pictures.h"
#include "raxel/color.h"
#include "runtime/blocks.h"
#include "support/temp_dir.h"

namespace {

constexpr uint32_t kWidth = bench::kPhotoWidth;
constexpr uint32_t kHeight = bench::kPhotoHeight;
constexpr uint32_t kPlainHeight = kHeight / 12;

const std::vector<uint8_t> &photo() {
  static const std::vector<uint8_t> bytes = bench::photo(kWidth, kHeight, 3);
  return bytes;
}

runtime::Block photoBlock() {
  runtime::Block block = runtime::Block::ofSize(photo().size());
  std::memcpy(block.data(), photo().data(), photo().size());
  return block;
}

// --- raxel -------------------------------------------------------------------------------------

// A table chosen from every pixel, and the nearest entry for each (8 bits), or error diffusion.
void change(benchmark::State &state) {
  const runtime::Block bits = photoBlock();
  for (auto _ : state) {
    Handle table = 0;
    const runtime::Block out(rlChangeColorResolution(bits.handle(), kWidth, kHeight, 24,
                                                     static_cast<int16_t>(state.range(0)), &table));
    const runtime::Block owned(table);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(change)->ArgName("bits")->Arg(8)->Arg(4)->Arg(1)->Unit(benchmark::kMillisecond);

// Error diffusion to a table that is given.
void ditherGiven(benchmark::State &state) {
  const runtime::Block bits = photoBlock();
  const auto depth = static_cast<int16_t>(state.range(0));
  Handle table = 0;
  uint16_t count = 0;
  rlDitherGetCT(bits.handle(), kWidth, kHeight, 24, depth, 0, &table, &count);
  const runtime::Block owned(table);
  for (auto _ : state) {
    const runtime::Block out(rlDitherGivenCT(bits.handle(), kWidth, kHeight, 24, depth, 0, table, count));
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(ditherGiven)->ArgName("bits")->Arg(8)->Arg(4)->Arg(1)->Unit(benchmark::kMillisecond);

// --- the plain form ----------------------------------------------------------------------------

plain::Table chosenTable(int16_t depth) {
  const runtime::Block bits = photoBlock();
  auto count = static_cast<uint16_t>(1u << depth);
  Handle handle = 0;
  if (depth == 8) {
    handle = rlReduceColorTable(bits.handle(), kWidth, kHeight, &count);
  } else {
    rlDitherGetCT(bits.handle(), kWidth, kHeight, 24, depth, 0, &handle, &count);
  }
  const runtime::Block table(handle);
  return {true, {table.bytes().begin(), table.bytes().end()}, count};
}

// The time of a twelfth: multiply by 12 to compare.
void plainForm(benchmark::State &state) {
  const auto depth = static_cast<int>(state.range(0));
  plain::Picture picture{photo(), kWidth, kPlainHeight, 24};
  picture.bits.resize(size_t{kWidth} * 3 * kPlainHeight);
  const plain::Table table = chosenTable(static_cast<int16_t>(depth));
  for (auto _ : state) {
    const plain::Bytes out =
        depth == 8 ? plain::convert(picture, 8, {}, table) : plain::dither(picture, depth, {}, table);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(plainForm)->ArgName("bits")->Arg(8)->Arg(4)->Arg(1)->Unit(benchmark::kMillisecond);

// --- Leptonica ---------------------------------------------------------------------------------

PIX *leptonicaPhoto() {
  PIX *pix = pixCreate(kWidth, kHeight, 32);
  l_uint32 *line = pixGetData(pix);
  const uint8_t *from = photo().data();
  for (uint32_t y = 0; y < kHeight; ++y, line += pixGetWpl(pix)) {
    for (uint32_t x = 0; x < kWidth; ++x, from += 3) composeRGBPixel(from[0], from[1], from[2], line + x);
  }
  return pix;
}

// 256 colours without dithering, from every pixel.
void leptonicaMedianCut(benchmark::State &state) {
  PIX *pix = leptonicaPhoto();
  for (auto _ : state) {
    PIX *out = pixMedianCutQuantGeneral(pix, 0, 8, 256, 5, 1, 0);
    pixDestroy(&out);
  }
  pixDestroy(&pix);
}
BENCHMARK(leptonicaMedianCut)->Unit(benchmark::kMillisecond);

// 16 colours with error diffusion.
void leptonicaMedianCutDithered(benchmark::State &state) {
  PIX *pix = leptonicaPhoto();
  for (auto _ : state) {
    PIX *out = pixMedianCutQuantGeneral(pix, 1, 4, 16, 5, 1, 0);
    pixDestroy(&out);
  }
  pixDestroy(&pix);
}
BENCHMARK(leptonicaMedianCutDithered)->Unit(benchmark::kMillisecond);

// Error diffusion of a picture that is grey already.
void leptonicaDitherToBinary(benchmark::State &state) {
  PIX *pix = leptonicaPhoto();
  PIX *grey = pixConvertRGBToLuminance(pix);
  for (auto _ : state) {
    PIX *out = pixDitherToBinary(grey);
    pixDestroy(&out);
  }
  pixDestroy(&grey);
  pixDestroy(&pix);
}
BENCHMARK(leptonicaDitherToBinary)->Unit(benchmark::kMillisecond);

// --- Pillow ------------------------------------------------------------------------------------

// Mapping to the 16 colours that raxel chose, with error diffusion; the script measures itself.
void pillowDither(benchmark::State &state) {
  const support::TempDir dir;
  const std::string header = "P6 " + std::to_string(kWidth) + " " + std::to_string(kHeight) + " 255\n";
  const plain::Table table = chosenTable(4);
  support::writeFile(dir.file("photo.ppm"), header + std::string(photo().begin(), photo().end()));
  support::writeFile(dir.file("table"), std::string(table.entries.begin(), table.entries.end()));
  const std::string command = "/usr/bin/python3 " RAXEL_BENCH_DIR "/pillow_dither.py " +
                              dir.file("photo.ppm") + " " + dir.file("table") + " 2>&1";
  for (auto _ : state) {
    std::FILE *pipe = ::popen(command.c_str(), "r");
    double seconds = 0;
    const bool read = pipe != nullptr && std::fscanf(pipe, "%lf", &seconds) == 1;
    if (pipe != nullptr) ::pclose(pipe);
    if (!read) {
      state.SkipWithError("needs the package python3-pil");
      break;
    }
    state.SetIterationTime(seconds);
  }
}
BENCHMARK(pillowDither)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

}  // namespace
