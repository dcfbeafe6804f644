// Coding pieces of image data with the file's compression and writing them.
#pragma once

#include <cstdint>
#include <span>

#include "raxel/tiff.h"
#include "tiff/collector.h"
#include "tiff/fax_buffer.h"
#include "tiff/lzw.h"

namespace tiff {

constexpr uint32_t kUncompressed = 1;  // nCompression
constexpr uint32_t kHuffman = 2;
constexpr uint32_t kT4 = 3;
constexpr uint32_t kT6 = 4;
constexpr uint32_t kLzw = 5;
constexpr uint32_t kPackBits = 32773;

// Codes one piece after the other for the same file, and keeps one output buffer and one set of
// tables for all of them.
class PieceWriter {
 public:
  // Rows go out through `rows`, which must belong to the state's file; whole strips and tiles do not.
  PieceWriter(TiffWriterState &state, Collector &rows);

  // Codes a piece, writes it, and then adds the bytes produced to the state's nStripBytes, also when the
  // stream did not take them. Arguments and result are those of CompressAndWrite.
  int32_t write(std::span<const uint8_t> data, uint32_t width, uint32_t rows);

  // Of a row that comes row by row, the bytes up to the end of the write that meets the end of `room`
  // bytes: what would have been tried if each write that a host sees had gone out by itself.
  uint32_t bytesTried(std::span<const uint8_t> row, uint32_t width, uint32_t room);

 private:
  bool reserve(uint64_t size);
  int32_t writePackBits(std::span<const uint8_t> data);
  int32_t writePackBitsPieces(std::span<const uint8_t> data);
  int32_t writeLzw(std::span<const uint8_t> data);
  int32_t writeFaxRow(std::span<const uint8_t> row, uint32_t width);
  int32_t writeFax2D(std::span<const uint8_t> data, uint32_t width, uint32_t rows);

  TiffWriterState &state_;
  Collector &rows_;
  FaxBuffer out_;
  LzwMemory lzwMemory_;
  bool hostStream_;
};

}  // namespace tiff
