// SPDX-License-Identifier: MIT
#include "tiff/compression.h"

#include <algorithm>

#include "tiff/output.h"

namespace tiff {
namespace {

// Writes in one call and answers the stream's own result; -1 when no call can carry so many bytes.
int32_t writeOnce(Handle file, const uint8_t *bytes, size_t count) {
  return count > INT32_MAX ? -1 : kvlWrite(file, bytes, static_cast<int32_t>(count));
}

// Cuts off the part of a piece that the coder takes by itself.
Piece takePart(const Coder &coder, Piece &left) {
  const size_t length =
      coder.partBytes == 0 ? left.bytes.size() : std::min<size_t>(left.bytes.size(), coder.partBytes);
  const Piece part{left.bytes.first(length), left.width, left.rows, left.bytes.size() - length};
  left.bytes = left.bytes.subspan(length);
  return part;
}

}  // namespace

PieceWriter::PieceWriter(TiffWriterState &state, Collector &rows)
    : state_(state), rows_(rows), hostStream_(isHostStream(state.hTiffFile)) {}

int32_t PieceWriter::write(const Piece &piece) {
  if (!makeRoom(memory_, piece.bytes.size())) return RAXEL_NO_MEMORY;
  const Coder &coder = coderOf(state_.nCompression);
  if (coder.encode == nullptr) return RAXEL_CANNOT_WRITE;
  if (!holdsPixels(coder, piece)) return RAXEL_NO_MEMORY;
  if (coder.partBytes == 0) return code(coder, piece);
  // A host sees a write for each part; a stream of our own needs no more than one.
  Piece left = piece;
  int32_t result = RAXEL_OK;
  while (result == RAXEL_OK && !left.bytes.empty()) {
    result = code(coder, hostStream_ ? takePart(coder, left) : std::exchange(left, {}));
  }
  return result;
}

int32_t PieceWriter::code(const Coder &coder, const Piece &piece) {
  const uint32_t before = coder.partBytes != 0 && !hostStream_ ? tell(state_.hTiffFile) : 0;
  const uint32_t produced = coder.encode(piece, memory_);
  if (memory_.out.handle() == 0) return RAXEL_NO_MEMORY;
  const int32_t result = writeCodes(coder, {memory_.out.data(), produced});
  const bool all = result == RAXEL_OK || coder.partBytes == 0 || hostStream_;
  state_.nStripBytes += all ? produced : bytesTried(piece, tell(state_.hTiffFile) - before);
  return result;
}

int32_t PieceWriter::writeCodes(const Coder &coder, std::span<const uint8_t> codes) {
  const int32_t written = coder.takes == Takes::kRow
                              ? rows_.write(codes.data(), codes.size())
                              : writeOnce(state_.hTiffFile, codes.data(), codes.size());
  const bool taken =
      coder.wholeWrites ? written >= 0 && static_cast<uint32_t>(written) == codes.size() : written >= 1;
  return taken ? RAXEL_OK : RAXEL_CANNOT_WRITE;
}

int32_t PieceWriter::writeCoded(std::span<const uint8_t> codes) {
  const int32_t result = writeCodes(coderOf(state_.nCompression), codes);
  state_.nStripBytes += static_cast<uint32_t>(codes.size());
  return result;
}

uint32_t PieceWriter::bytesTried(const Piece &row, uint32_t room) {
  const Coder &coder = coderOf(state_.nCompression);
  if (coder.encode == nullptr || !makeRoom(memory_, row.bytes.size())) return 0;
  uint32_t tried = 0;
  for (Piece left = row; !left.bytes.empty() && tried <= room;) {
    tried += coder.encode(takePart(coder, left), memory_);
  }
  return tried;
}

}  // namespace tiff

int32_t CompressAndWrite(TiffWriterState *state, const uint8_t *data, uint32_t byteCount, uint32_t width,
                         uint32_t rows) {
  if (state == nullptr || (data == nullptr && byteCount != 0)) return RAXEL_NO_MEMORY;
  tiff::Collector atOnce(state->hTiffFile, 0);
  return tiff::PieceWriter(*state, atOnce).write({{data, byteCount}, width, rows});
}
