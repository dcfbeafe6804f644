// SPDX-License-Identifier: MIT
// The coders beside libtiff's, through its C API: the same picture in the same four strips, in memory,
// in the same run. Both sides end in a copy of the codes into one block.
#include <algorithm>
#include <span>

#include "coder_pictures.h"
#include "libtiff_encoder.h"
#include "ratios.h"
#include "tiff/fax_1d.h"
#include "tiff/fax_2d.h"
#include "tiff/lzw.h"
#include "tiff/packbits.h"

namespace {

using bench::Memory;
using bench::Picture;

// Values of the TIFF tag.
constexpr uint16_t kHuffman = RAXEL_TIFF_HUFFMAN;
constexpr uint16_t kT4 = RAXEL_TIFF_T4;
constexpr uint16_t kT6 = RAXEL_TIFF_T6;
constexpr uint16_t kLzw = RAXEL_TIFF_LZW;
constexpr uint16_t kPackBits = RAXEL_TIFF_PACKBITS;

// What codes are made in, kept from strip to strip as the writer keeps it.
struct Room : tiff::FaxBuffer {
  using FaxBuffer::FaxBuffer;
  tiff::LzwMemory lzw;
};

void encodePackBitsStrip(std::span<const uint8_t> strip, size_t rowBytes, Room &room, Memory &memory) {
  for (; !strip.empty(); strip = strip.subspan(rowBytes)) {
    memory.write(room.data(), tiff::encodePackBits(strip.first(rowBytes), room.data()));
  }
}

void encodeLzwStrip(std::span<const uint8_t> strip, Room &room, Memory &memory) {
  memory.write(room.data(), tiff::encodeLzw(strip, {room.data(), room.size()}, room.lzw));
}

void encodeFaxStrip(std::span<const uint8_t> strip, const Picture &picture, uint16_t compression,
                    Room &room, Memory &memory) {
  const auto width = static_cast<uint32_t>(picture.width);
  const size_t rowBytes = picture.rowBytes();
  if (compression == kT6) {
    const uint32_t n =
        tiff::encodeFax2D(strip, width, static_cast<uint32_t>(strip.size() / rowBytes), room);
    memory.write(room.data(), n);
    return;
  }
  const uint8_t eol[] = {0, 1};
  if (compression == kT4) memory.write(eol, 2);
  for (; !strip.empty(); strip = strip.subspan(rowBytes)) {
    const uint32_t n = tiff::encodeFaxRow(strip.first(rowBytes), width, compression, room);
    memory.write(room.data(), n);
  }
  for (int i = 0; compression == kT4 && i < 5; ++i) memory.write(eol, 2);
}

void encodeWithRaxel(const Picture &picture, uint16_t compression, Memory &memory) {
  memory.at = memory.end = 0;
  const size_t stripBytes = bench::rowsPerStrip(picture) * picture.rowBytes();
  const bool byRow = compression == kPackBits || compression == kHuffman || compression == kT4;
  Room room(runtime::allocate(2 * (byRow ? picture.rowBytes() : stripBytes) + 16));
  for (std::span<const uint8_t> left = picture.pixels; !left.empty();) {
    const std::span<const uint8_t> strip = left.first(std::min(stripBytes, left.size()));
    left = left.subspan(strip.size());
    if (compression == kPackBits) encodePackBitsStrip(strip, picture.rowBytes(), room, memory);
    if (compression == kLzw) encodeLzwStrip(strip, room, memory);
    if (compression <= kT6) encodeFaxStrip(strip, picture, compression, room, memory);
  }
}

using Encode = void (*)(const Picture &, uint16_t, Memory &);

void add(const std::string &name, const Picture &picture, uint16_t compression, Encode encode) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State &state) {
    Memory memory{std::vector<uint8_t>(picture.pixels.size() * 4)};
    for (auto _ : state) {
      encode(picture, compression, memory);
      benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(picture.pixels.size()));
    state.counters["coded"] = static_cast<double>(memory.end);
  })->Unit(benchmark::kMillisecond);
}

void compare(const std::string &coder, uint16_t compression, const std::vector<Picture> &pictures) {
  for (const Picture &picture : pictures) {
    add(coder + "/" + picture.name + "/ours", picture, compression, encodeWithRaxel);
    add(coder + "/" + picture.name + "/theirs", picture, compression, bench::encodeWithLibtiff);
  }
}

}  // namespace

int main(int argc, char **argv) {
  using namespace bench;
  const std::vector<Picture> byteWise = {photoPicture(), noisePicture(), greyScanPicture(), chartPicture(),
                                         textPicture()};
  const std::vector<Picture> bilevel = {textPicture(), ditheredPicture(), bilevelNoisePicture()};
  compare("PackBits", kPackBits, byteWise);
  compare("LZW", kLzw, byteWise);
  compare("Huffman", kHuffman, bilevel);
  compare("T.4", kT4, bilevel);
  compare("T.6", kT6, bilevel);
  return runWithRatios(argc, argv);
}
