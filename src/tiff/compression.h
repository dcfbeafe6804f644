// SPDX-License-Identifier: MIT
// Coding pieces of image data with the file's compression and writing them.
#pragma once

#include "tiff/coders.h"
#include "tiff/collector.h"

namespace tiff {

// Codes one piece after the other for the same file, and keeps one output buffer and one set of
// tables for all of them.
class PieceWriter {
 public:
  // Rows go out through `rows`, which must belong to the state's file; whole strips and tiles do not.
  PieceWriter(TiffWriterState &state, Collector &rows);

  // Codes a piece, writes it, and then adds the bytes produced to the state's nStripBytes, also when the
  // stream did not take them. Result as that of CompressAndWrite.
  int32_t write(const Piece &piece);

  // Writes and counts codes that have been made of a piece already.
  int32_t writeCoded(std::span<const uint8_t> codes);

  // Of a row that comes row by row, the bytes up to the end of the write that meets the end of `room`
  // bytes: what would have been tried if each write that a host sees had gone out by itself.
  uint32_t bytesTried(const Piece &row, uint32_t room);

 private:
  int32_t code(const Coder &coder, const Piece &piece);
  int32_t writeCodes(const Coder &coder, std::span<const uint8_t> codes);

  TiffWriterState &state_;
  Collector &rows_;
  CoderMemory memory_;
  bool hostStream_;
};

}  // namespace tiff
