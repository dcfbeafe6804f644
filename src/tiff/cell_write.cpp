// The pixels of a picture, or of one band of it: chunk by chunk from the top of the image, colours
// turned into those of the file in place, then written plain or coded.
//
// A chunk is a strip, or a row of tiles. The bitmap's rows run from the bottom up, so the first chunk
// is the last rows of the block, and inside a chunk the last row goes first.
#include <algorithm>

#include "raxel/settings.h"
#include "runtime/blocks.h"
#include "runtime/rows.h"
#include "tiff/cell_rows.h"
#include "tiff/collector.h"
#include "tiff/colors.h"
#include "tiff/compression.h"
#include "tiff/geometry.h"
#include "tiff/output.h"
#include "tiff/patches.h"
#include "tiff/swap.h"
#include "tiff/tiles.h"

namespace tiff {
namespace {

constexpr uint32_t kTiledChunkBytes = 32767;  // a chunk of tiles has at most this many, padding included

// Rows of a chunk, in the bitmap's order: `first` is the lowest.
struct Chunk {
  uint32_t first;
  uint32_t rows;
};

struct CellJob {
  TiffWriterState &state;
  CellFormat &format;
  CellRows cells;
  uint32_t width;  // pixels
  uint32_t rows;
  runtime::Block spare;  // one row, for a block that is too short; otherwise none
  Collector &out;
  const Coder &coder;
  PieceWriter &pieces;
  bool swaps;       // 24-bit pixels change from blue, green, red to red, green, blue
  bool swapsByRow;  // each row just before it is taken, while it is still near the processor
};

uint32_t chunkRows(const CellJob &job) {
  if (!isTiled(job.state)) return stripRows(job.rows);
  const auto fitting = static_cast<uint32_t>(kTiledChunkBytes / job.cells.stride);
  return std::max(1u, std::min({job.rows, fitting, kTileRows}));
}

// Bytes of a pixel that the block holds only in part count as 0.
void swapRow(const CellJob &job, uint32_t row) {
  const std::span<uint8_t> pixels = job.cells.held(row * job.cells.stride, uint64_t{job.width} * 3);
  swapRedBlue(pixels);
  if (const size_t rest = pixels.size() % 3; rest != 0) pixels[pixels.size() - rest] = 0;
}

void swapChunk(const CellJob &job, const Chunk &chunk) {
  for (uint32_t row = 0; row < chunk.rows; ++row) swapRow(job, chunk.first + row);
}

void remapChunk(const CellJob &job, const Chunk &chunk) {
  const uint64_t at = chunk.first * job.cells.stride;
  const uint64_t length = chunk.rows * job.cells.stride;
  const std::span<uint8_t> after = job.cells.held(at + length, 1);
  remapRows(job.cells.held(at, length), after.empty() ? uint8_t{0} : after[0], job.format.abRemap,
            job.state.nColors != 256);
}

void recolorChunk(const CellJob &job, const Chunk &chunk) {
  if (job.swaps) {
    if (!job.swapsByRow) swapChunk(job, chunk);
  } else if (job.format.bRemap != 0) {
    remapChunk(job, chunk);
  }
}

// The bytes of a row as they go into the file.
std::span<const uint8_t> takeRow(const CellJob &job, uint32_t row) {
  if (job.swapsByRow) swapRow(job, row);
  return {job.cells.row(row, job.spare.bytes()), static_cast<size_t>(job.cells.rowBytes)};
}

// Hands the chunk's rows over from the top one down until one fails. The rows after it are still
// recoloured: the host's pixels end up the same wherever a write fails.
template <class Take>
int32_t forRows(const CellJob &job, const Chunk &chunk, Take take) {
  for (uint32_t left = chunk.rows; left > 0; --left) {
    const int32_t result = take(takeRow(job, chunk.first + left - 1));
    if (result == RAXEL_OK) continue;
    if (job.swapsByRow) swapChunk(job, {chunk.first, left - 1});
    return result;
  }
  return RAXEL_OK;
}

int32_t writePlain(const CellJob &job, const Chunk &chunk) {
  return forRows(job, chunk, [&](std::span<const uint8_t> row) -> int32_t {
    const bool taken = job.out.write(row.data(), row.size()) == static_cast<int32_t>(row.size());
    return taken ? RAXEL_OK : RAXEL_CANNOT_WRITE;
  });
}

int32_t writeMark(const CellJob &job) {
  const std::span<const uint8_t> mark = job.coder.framing.mark;
  const bool taken = job.out.write(mark.data(), mark.size()) == static_cast<int32_t>(mark.size());
  return taken ? RAXEL_OK : RAXEL_CANNOT_WRITE;
}

uint32_t markBytes(const CellJob &job, uint32_t marks) {
  return static_cast<uint32_t>(job.coder.framing.mark.size()) * marks;
}

// Row by row. What stands before a strip sets the count of its bytes.
int32_t codeRows(CellJob &job, const Chunk &chunk) {
  const Framing &framing = job.coder.framing;
  int32_t result = RAXEL_OK;
  for (uint32_t i = 0; i < framing.before && result == RAXEL_OK; ++i) {
    result = writeMark(job);
    job.state.nStripBytes = markBytes(job, i + 1);
  }
  if (result == RAXEL_OK) {
    result = forRows(job, chunk, [&](std::span<const uint8_t> row) {
      return job.pieces.write({row, job.width, 1});
    });
  } else if (job.swapsByRow) {
    swapChunk(job, chunk);
  }
  for (uint32_t i = 0; i < framing.behind && result == RAXEL_OK; ++i) {
    result = writeMark(job);
    job.state.nStripBytes += markBytes(job, 1);
  }
  return result;
}

// The codes of a chunk that goes out row by row, up to the end of the write that meets the end of `room`
// bytes. Its rows have been recoloured.
uint32_t bytesTried(const CellJob &job, const Chunk &chunk, uint32_t room) {
  const Framing &framing = job.coder.framing;
  uint32_t tried = markBytes(job, framing.before);
  for (uint32_t left = chunk.rows; left > 0 && tried <= room; --left) {
    const uint8_t *row = job.cells.row(chunk.first + left - 1, job.spare.bytes());
    const std::span<const uint8_t> bytes(row, static_cast<size_t>(job.cells.rowBytes));
    tried += job.pieces.bytesTried({bytes, job.width, 1}, room - tried);
  }
  for (uint32_t i = 0; i < framing.behind && tried <= room; ++i) tried += markBytes(job, 1);
  return tried;
}

// The chunk's rows from the top one down, one after the other.
runtime::Block packRows(const CellJob &job, const Chunk &chunk) {
  runtime::Block packed = runtime::Block::ofSize(chunk.rows * job.cells.rowBytes);
  if (!packed) return packed;
  uint8_t *to = packed.data();
  for (uint32_t left = chunk.rows; left > 0; --left, to += job.cells.rowBytes) {
    if (job.swapsByRow) swapRow(job, chunk.first + left - 1);
    job.cells.copyRow(chunk.first + left - 1, to);
  }
  return packed;
}

// Each tile of a row of tiles, as 8192 bytes. The tile that fails still gets its byte count.
int32_t codeTiles(CellJob &job, const Chunk &chunk, const runtime::Block &packed, Patches &patches) {
  const PackedRows rows{packed.data(), static_cast<uint32_t>(job.cells.rowBytes), chunk.rows};
  const runtime::Block tile = runtime::Block::ofSize(kTileBytes);
  uint32_t number = nextStrip(job.format);
  int32_t result = RAXEL_OK;
  for (uint32_t column = 0; column < job.state.nTilesAcross && result == RAXEL_OK; ++column, ++number) {
    patches.begin(number);
    job.state.nStripBytes = 0;
    cutTile(tile.bytes(), kTileRowBytes, kTileRows, rows, column);
    result = job.pieces.write({tile.bytes(), kTilePixelsAcross, kTileRows});
    patches.end(number, job.state.nStripBytes);
  }
  setNextStrip(job.format, number);
  return result;
}

// The whole chunk at once.
int32_t codeChunk(CellJob &job, const Chunk &chunk, Patches &patches) {
  const runtime::Block packed = packRows(job, chunk);
  if (!packed) return RAXEL_NO_MEMORY;
  if (job.coder.tiles && isTiled(job.state)) return codeTiles(job, chunk, packed, patches);
  return job.pieces.write({packed.bytes(), job.width, chunk.rows});
}

// Ends a chunk that went out row by row.
int32_t finishRows(CellJob &job, int32_t result) {
  const bool taken = job.out.finish();
  return taken || result != RAXEL_OK ? result : RAXEL_CANNOT_WRITE;
}

// A failure may show when more rows have been gathered than could be written. Those behind the one that
// failed do not count.
int32_t codeGathered(CellJob &job, const Chunk &chunk) {
  const Handle file = job.state.hTiffFile;
  const uint32_t counted = job.coder.framing.before != 0 ? 0 : job.state.nStripBytes;
  const uint32_t begin = tell(file);
  const int32_t result = finishRows(job, codeRows(job, chunk));
  if (result == RAXEL_CANNOT_WRITE) {
    job.state.nStripBytes = counted + bytesTried(job, chunk, tell(file) - begin);
  }
  return result;
}

int32_t writeChunk(CellJob &job, const Chunk &chunk, Patches &patches) {
  recolorChunk(job, chunk);
  if (isPlain(job.state)) return finishRows(job, writePlain(job, chunk));
  const bool strip = !isTiled(job.state);
  const uint32_t number = nextStrip(job.format);
  if (strip) {
    patches.begin(number);
    job.state.nStripBytes = 0;
  }
  const bool whole = job.coder.takes == Takes::kChunk;
  const int32_t result = whole               ? codeChunk(job, chunk, patches)
                         : job.out.gathers() ? codeGathered(job, chunk)
                                             : codeRows(job, chunk);
  if (strip) {
    patches.end(number, job.state.nStripBytes);
    setNextStrip(job.format, number + 1);
  }
  return result;
}

int32_t writeChunks(CellJob &job) {
  const uint32_t rows = chunkRows(job);
  const uint64_t chunks = (uint64_t{job.rows} + rows - 1) / rows;
  const bool tiled = isTiled(job.state);
  const bool coded = !isPlain(job.state);
  Patches patches(job.state, nextStrip(job.format),
                  coded ? chunks * (tiled ? job.state.nTilesAcross : 1) : 0);
  int32_t result = RAXEL_OK;
  for (uint32_t left = job.rows; left > 0 && result == RAXEL_OK;) {
    const uint32_t taken = std::min(rows, left);
    left -= taken;
    result = writeChunk(job, {left, taken}, patches);
  }
  patches.finish();
  return result;
}

}  // namespace
}  // namespace tiff

void tifFlipMonochromeBits(uint8_t *bits, uint32_t stride, uint32_t rows, uint32_t flip) {
  if (bits == nullptr || flip == 0) return;
  const uint64_t count = uint64_t{stride} * rows;
  for (uint64_t i = 0; i < count; ++i) bits[i] = static_cast<uint8_t>(~bits[i]);
}

int32_t WriteCellBits(Handle file, Handle bitmap, uint32_t width, uint32_t rows, uint16_t bitsPerPixel,
                      int32_t /*reserved*/, Handle descriptor) {
  tiff::CellFormat *format = tiff::cellFormat(descriptor);
  if (lpRaster == nullptr || format == nullptr) return RAXEL_NO_MEMORY;
  if (rows == 0) return RAXEL_OK;
  const tiff::CellRows cells{runtime::lockBytes(bitmap), runtime::packedRowBytes(width, bitsPerPixel),
                             runtime::rowStride(width, bitsPerPixel)};
  const uint64_t size = cells.stride * rows;
  if (bitmap == 0 || cells.stride == 0 || !runtime::fitsInBlock(size) || cells.rowBytes > INT32_MAX) {
    return RAXEL_NO_MEMORY;
  }
  TiffWriterState &state = lpRaster->tiff;
  const bool swaps = state.nSamplesPerPixel * state.nBitsPerSample == 24;
  // Plain rows go to the stream of this call, codes to the one that the picture began with.
  const Handle rowsTo = tiff::isPlain(state) ? file : state.hTiffFile;
  tiff::Collector out(rowsTo, size);
  tiff::PieceWriter pieces(state, out);
  tiff::CellJob job{
      .state = state,
      .format = *format,
      .cells = cells,
      .width = width,
      .rows = rows,
      .spare = runtime::Block::ofSize(cells.block.size() < size ? cells.rowBytes : 0),
      .out = out,
      .coder = tiff::coderOf(state.nCompression),
      .pieces = pieces,
      .swaps = swaps,
      // A host that sees each write finds a whole chunk swapped by then. Rows that share pixels, because
      // the bitmap is less deep than the file, are swapped in order.
      .swapsByRow = swaps && !tiff::isHostStream(rowsTo) && cells.stride >= uint64_t{width} * 3,
  };
  if (bitsPerPixel == 1) {
    const auto held = cells.held(0, size);
    tifFlipMonochromeBits(held.data(), 1, static_cast<uint32_t>(held.size()),
                          tiff::firstRed(*format) == 255);
  }
  const int32_t result = tiff::writeChunks(job);
  GlobalUnlock(bitmap);
  GlobalUnlock(descriptor);
  return result;
}
