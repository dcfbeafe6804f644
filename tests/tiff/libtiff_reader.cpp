// SPDX-License-Identifier: MIT
#include "tiff/libtiff_reader.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace support {
namespace {

struct Memory {
  std::vector<uint8_t> bytes;
  size_t at = 0;
};

Memory &memoryOf(thandle_t handle) {
  return *static_cast<Memory *>(handle);
}

tmsize_t readSome(thandle_t handle, void *to, tmsize_t wanted) {
  Memory &memory = memoryOf(handle);
  const size_t n = std::min(static_cast<size_t>(wanted), memory.bytes.size() - memory.at);
  if (n != 0) std::memcpy(to, memory.bytes.data() + memory.at, n);
  memory.at += n;
  return static_cast<tmsize_t>(n);
}

tmsize_t writeNothing(thandle_t, void *, tmsize_t) {
  return 0;
}

toff_t seekTo(thandle_t handle, toff_t offset, int whence) {
  Memory &memory = memoryOf(handle);
  const size_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? memory.at : memory.bytes.size();
  memory.at = std::min(base + static_cast<size_t>(offset), memory.bytes.size());
  return memory.at;
}

int closeNothing(thandle_t) {
  return 0;
}

toff_t sizeOf(thandle_t handle) {
  return memoryOf(handle).bytes.size();
}

int troubles = 0;

void countTrouble(const char *, const char *, va_list) {
  ++troubles;
}

void put16(std::vector<uint8_t> &to, uint32_t value) {
  to.push_back(static_cast<uint8_t>(value));
  to.push_back(static_cast<uint8_t>(value >> 8));
}

void put32(std::vector<uint8_t> &to, uint32_t value) {
  put16(to, value);
  put16(to, value >> 16);
}

// A little-endian file: header, one directory, the strip.
std::vector<uint8_t> fileAround(std::span<const uint8_t> strip, const StripFormat &format) {
  struct Entry {
    uint32_t tag;
    uint32_t type;  // 3: 16 bits, 4: 32 bits
    uint32_t value;
  };
  constexpr uint32_t kEntries = 9;
  constexpr uint32_t kStripAt = 8 + 2 + kEntries * 12 + 4;
  const Entry entries[kEntries] = {
      {256, 4, format.width},
      {257, 4, format.rows},
      {258, 3, format.bitsPerSample},
      {259, 3, format.compression},
      {262, 3, 1},  // BlackIsZero
      {273, 4, kStripAt},
      {277, 3, 1},
      {278, 4, format.rows},
      {279, 4, static_cast<uint32_t>(strip.size())},
  };
  std::vector<uint8_t> file = {'I', 'I', 42, 0, 8, 0, 0, 0};
  put16(file, kEntries);
  for (const Entry &entry : entries) {
    put16(file, entry.tag);
    put16(file, entry.type);
    put32(file, 1);
    put32(file, entry.value);
  }
  put32(file, 0);
  file.insert(file.end(), strip.begin(), strip.end());
  return file;
}

}  // namespace

std::vector<uint8_t> readStripWithLibtiff(std::span<const uint8_t> strip, const StripFormat &format) {
  const TIFFErrorHandler oldError = TIFFSetErrorHandler(countTrouble);
  const TIFFErrorHandler oldWarning = TIFFSetWarningHandler(countTrouble);
  troubles = 0;
  Memory memory{fileAround(strip, format)};
  std::vector<uint8_t> rows;
  TIFF *tiff = TIFFClientOpen("strip", "rm", &memory, readSome, writeNothing, seekTo, closeNothing, sizeOf,
                              nullptr, nullptr);
  if (tiff != nullptr) {
    rows.resize(static_cast<size_t>(TIFFStripSize(tiff)));
    const tmsize_t n = TIFFReadEncodedStrip(tiff, 0, rows.data(), static_cast<tmsize_t>(rows.size()));
    if (n != static_cast<tmsize_t>(rows.size()) || troubles != 0) rows.clear();
    TIFFClose(tiff);
  }
  TIFFSetErrorHandler(oldError);
  TIFFSetWarningHandler(oldWarning);
  return rows;
}

}  // namespace support
