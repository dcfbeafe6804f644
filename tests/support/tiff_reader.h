// SPDX-License-Identifier: MIT
// A small TIFF reader of the tests' own: it takes a file apart from its bytes, by the TIFF 6.0
// description, and shares no code with the library.
//
// It is strict where a file could mislead a test (every offset must lie inside the file) and keeps
// what others throw away: the order of the entries, and where each value lies.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace support {

struct TiffEntry {
  uint16_t tag = 0;
  uint16_t type = 0;             // 1 BYTE, 2 ASCII, 3 SHORT, 4 LONG, 5 RATIONAL
  uint32_t count = 0;            // values of that type
  uint32_t field = 0;            // the value field's four bytes as a little-endian number
  uint32_t valuesAt = 0;         // where in the file the values begin
  std::vector<uint32_t> values;  // count of them; a RATIONAL gives numerator, denominator
};

// One strip or one tile, as the file's two arrays say.
struct TiffPiece {
  uint32_t offset = 0;
  uint32_t byteCount = 0;
};

struct TiffFile {
  std::string error;               // empty when the file was understood; otherwise what is wrong with it
  std::vector<TiffEntry> entries;  // in file order
  uint32_t nextDirectory = 0;
  std::vector<TiffPiece> pieces;
  bool tiled = false;
  std::span<const uint8_t> bytes;  // the caller's, who keeps them alive

  bool ok() const { return error.empty(); }
  const TiffEntry *find(uint16_t tag) const;  // null when the tag is not there
  // The tag's value number `index`; `otherwise` when it is not there.
  uint32_t value(uint16_t tag, uint32_t otherwise = 0, size_t index = 0) const;
  std::vector<uint16_t> tags() const;  // in file order
  // The coded bytes of a strip or tile; empty when it does not lie inside the file.
  std::span<const uint8_t> piece(size_t index) const;

  uint32_t width() const { return value(256); }
  uint32_t height() const { return value(257); }
  uint32_t bitsPerSample() const { return value(258, 1); }
  uint32_t samplesPerPixel() const { return value(277, 1); }
  uint32_t compression() const { return value(259, 1); }
  uint32_t photometric() const { return value(262); }
  uint32_t rowBytes() const;  // of a decoded row of a strip: pixels packed, no padding to words
};

// Reads the header and the first directory of a little-endian file.
TiffFile readTiff(std::span<const uint8_t> bytes);

// The rows of an uncompressed file in strips, one after the other, `height` times rowBytes() of them;
// empty when the file is tiled, compressed or short.
std::vector<uint8_t> uncompressedRows(const TiffFile &file);

}  // namespace support
