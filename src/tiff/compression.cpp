#include "tiff/compression.h"

#include <algorithm>

#include "tiff/fax_1d.h"
#include "tiff/fax_2d.h"
#include "tiff/output.h"
#include "tiff/packbits.h"

namespace tiff {
namespace {

constexpr uint64_t kSlack = 16;  // very short strips code to more than twice their length

// Writes in one call and answers the stream's own result; -1 when no call can carry so many bytes.
int32_t writeOnce(Handle file, const uint8_t *bytes, size_t count) {
  return count > INT32_MAX ? -1 : kvlWrite(file, bytes, static_cast<int32_t>(count));
}

}  // namespace

PieceWriter::PieceWriter(TiffWriterState &state, Collector &rows)
    : state_(state), rows_(rows), out_(0), hostStream_(isHostStream(state.hTiffFile)) {}

int32_t PieceWriter::write(std::span<const uint8_t> data, uint32_t width, uint32_t rows) {
  if (!reserve(2 * uint64_t{data.size()} + kSlack)) return RAXEL_NO_MEMORY;
  switch (state_.nCompression) {
    case kHuffman:
    case kT4:
      return writeFaxRow(data, width);
    case kPackBits:
      return hostStream_ ? writePackBitsPieces(data) : writePackBits(data);
    case kLzw:
      return writeLzw(data);
    case kT6:
      return writeFax2D(data, width, rows);
    default:
      return RAXEL_CANNOT_WRITE;
  }
}

// The buffer is kept from piece to piece, and made anew only for a larger one.
bool PieceWriter::reserve(uint64_t size) {
  if (out_.handle() == 0 || out_.size() < size) out_ = FaxBuffer(runtime::allocate(size));
  return out_.handle() != 0;
}

int32_t PieceWriter::writePackBits(std::span<const uint8_t> data) {
  if (data.empty()) return RAXEL_OK;
  const uint32_t before = tell(state_.hTiffFile);
  const auto produced = static_cast<uint32_t>(encodePackBits(data, out_.data()));
  const bool taken = rows_.write(out_.data(), produced) == static_cast<int32_t>(produced);
  state_.nStripBytes += taken ? produced : bytesTried(data, 0, tell(state_.hTiffFile) - before);
  return taken ? RAXEL_OK : RAXEL_CANNOT_WRITE;
}

uint32_t PieceWriter::bytesTried(std::span<const uint8_t> row, uint32_t width, uint32_t room) {
  if (!reserve(2 * uint64_t{row.size()} + kSlack)) return 0;
  if (state_.nCompression != kPackBits) return encodeFaxRow(row, width, state_.nCompression, out_);
  uint32_t tried = 0;
  while (!row.empty() && tried <= room) {
    const size_t length = std::min(row.size(), kPackBitsPiece);
    tried += static_cast<uint32_t>(encodePackBits(row.first(length), out_.data()));
    row = row.subspan(length);
  }
  return tried;
}

// A host sees one write for each piece.
int32_t PieceWriter::writePackBitsPieces(std::span<const uint8_t> data) {
  while (!data.empty()) {
    const size_t length = std::min(data.size(), kPackBitsPiece);
    const size_t produced = encodePackBits(data.first(length), out_.data());
    const bool taken = writeAll(state_.hTiffFile, {out_.data(), produced});
    state_.nStripBytes += static_cast<uint32_t>(produced);
    if (!taken) return RAXEL_CANNOT_WRITE;
    data = data.subspan(length);
  }
  return RAXEL_OK;
}

// A write that took anything at all is good enough for LZW and for rows of fax codes.
int32_t PieceWriter::writeLzw(std::span<const uint8_t> data) {
  const uint32_t produced = encodeLzw(data, {out_.data(), out_.size()}, lzwMemory_);
  const int32_t written = writeOnce(state_.hTiffFile, out_.data(), produced);
  state_.nStripBytes += produced;
  return written < 1 ? RAXEL_CANNOT_WRITE : RAXEL_OK;
}

int32_t PieceWriter::writeFaxRow(std::span<const uint8_t> row, uint32_t width) {
  if ((uint64_t{width} + 7) / 8 > row.size()) return RAXEL_NO_MEMORY;
  const uint32_t produced = encodeFaxRow(row, width, state_.nCompression, out_);
  if (out_.handle() == 0) return RAXEL_NO_MEMORY;
  const int32_t written = rows_.write(out_.data(), produced);
  state_.nStripBytes += produced;
  return written < 1 ? RAXEL_CANNOT_WRITE : RAXEL_OK;
}

int32_t PieceWriter::writeFax2D(std::span<const uint8_t> data, uint32_t width, uint32_t rows) {
  if ((uint64_t{width} + 7) / 8 * rows > data.size()) return RAXEL_NO_MEMORY;
  const uint32_t produced = encodeFax2D(data, width, rows, out_);
  if (out_.handle() == 0) return RAXEL_NO_MEMORY;
  const bool taken = writeAll(state_.hTiffFile, {out_.data(), produced});
  state_.nStripBytes += produced;
  return taken ? RAXEL_OK : RAXEL_CANNOT_WRITE;
}

}  // namespace tiff

int32_t CompressAndWrite(TiffWriterState *state, const uint8_t *data, uint32_t byteCount, uint32_t width,
                         uint32_t rows) {
  if (state == nullptr || (data == nullptr && byteCount != 0)) return RAXEL_NO_MEMORY;
  tiff::Collector atOnce(state->hTiffFile, 0);
  return tiff::PieceWriter(*state, atOnce).write({data, byteCount}, width, rows);
}
