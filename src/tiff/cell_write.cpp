// SPDX-License-Identifier: MIT
// The pixels of a picture, or of one band of it: chunk by chunk from the top of the image, colours
// turned into those of the file in place, then written plain or coded.
#include <algorithm>

#include "raxel/driver.h"
#include "raxel/settings.h"
#include "runtime/blocks.h"
#include "runtime/rows.h"
#include "tiff/cell_band.h"
#include "tiff/collector.h"
#include "tiff/compression.h"
#include "tiff/geometry.h"
#include "tiff/output.h"
#include "tiff/patches.h"
#include "tiff/side_by_side.h"
#include "tiff/tiles.h"

namespace tiff {
namespace {

constexpr uint32_t kTiledChunkBytes = 32767;  // a chunk of tiles has at most this many, padding included

struct CellJob {
  TiffWriterState &state;
  CellFormat &format;
  CellBand band;
  runtime::Block spare;  // one row, for a block that is too short; otherwise none
  Collector &out;
  const Coder &coder;
  PieceWriter &pieces;
};

uint32_t chunkRows(const TiffWriterState &state, const CellRows &cells, uint32_t rows) {
  if (!isTiled(state)) return stripRows(rows);
  const auto fitting = static_cast<uint32_t>(kTiledChunkBytes / cells.stride);
  return std::max(1u, std::min({rows, fitting, kTileRows}));
}

// The bytes of a row as they go into the file.
std::span<const uint8_t> takeRow(const CellJob &job, uint32_t row) {
  if (job.band.swapsByRow) swapRow(job.band, row);
  return {job.band.cells.row(row, job.spare.bytes()), static_cast<size_t>(job.band.cells.rowBytes)};
}

// Hands the chunk's rows over from the top one down until one fails. The rows after it are still
// recoloured: the host's pixels end up the same wherever a write fails.
template <class Take>
int32_t forRows(const CellJob &job, const Chunk &chunk, Take take) {
  for (uint32_t left = chunk.rows; left > 0; --left) {
    const int32_t result = take(takeRow(job, chunk.first + left - 1));
    if (result == RAXEL_OK) continue;
    if (job.band.swapsByRow) swapChunk(job.band, {chunk.first, left - 1});
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
  if (framing.before) {
    result = writeMark(job);
    job.state.nStripBytes = markBytes(job, 1);
  }
  if (result == RAXEL_OK) {
    result = forRows(job, chunk, [&](std::span<const uint8_t> row) {
      return job.pieces.write({row, job.band.width, 1});
    });
  } else if (job.band.swapsByRow) {
    swapChunk(job.band, chunk);
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
  uint32_t tried = markBytes(job, framing.before ? 1 : 0);
  for (uint32_t left = chunk.rows; left > 0 && tried <= room; --left) {
    const uint8_t *row = job.band.cells.row(chunk.first + left - 1, job.spare.bytes());
    const std::span<const uint8_t> bytes(row, static_cast<size_t>(job.band.cells.rowBytes));
    tried += job.pieces.bytesTried({bytes, job.band.width, 1}, room - tried);
  }
  for (uint32_t i = 0; i < framing.behind && tried <= room; ++i) tried += markBytes(job, 1);
  return tried;
}

// The tiles of a row of tiles, one after the other, until one fails; that one still gets its byte count.
template <class WriteTile>
int32_t forTiles(CellJob &job, Patches &patches, WriteTile writeTile) {
  uint32_t number = nextStrip(job.format);
  int32_t result = RAXEL_OK;
  for (uint32_t column = 0; column < job.state.nTilesAcross && result == RAXEL_OK; ++column, ++number) {
    patches.begin(number);
    job.state.nStripBytes = 0;
    result = writeTile(column);
    patches.end(number, job.state.nStripBytes);
  }
  setNextStrip(job.format, number);
  return result;
}

bool cutsTiles(const CellJob &job) {
  return job.coder.tiles && isTiled(job.state);
}

// The whole chunk at once, or each of its tiles as 8192 bytes.
int32_t codeChunk(CellJob &job, const Chunk &chunk, Patches &patches) {
  const runtime::Block packed = packRows(job.band, chunk);
  if (!cutsTiles(job)) return job.pieces.write({packed.bytes(), job.band.width, chunk.rows});
  const PackedRows rows{packed.data(), static_cast<uint32_t>(job.band.cells.rowBytes), chunk.rows};
  const runtime::Block tile = runtime::Block::ofSize(kTileBytes);
  return forTiles(job, patches, [&](uint32_t column) {
    cutTile(tile.bytes(), kTileRowBytes, kTileRows, rows, column);
    return job.pieces.write({tile.bytes(), kTilePixelsAcross, kTileRows});
  });
}

// The same for a chunk that has been coded already.
int32_t writeCoded(CellJob &job, const CodedChunk &coded, Patches &patches) {
  const uint8_t *codes = coded.codes.data();
  const auto write = [&](uint32_t piece) {
    if (piece >= coded.pieces) {
      if (coded.lost) push_er(RAXEL_NO_MEMORY);
      return coded.result;
    }
    const uint32_t length = coded.length(piece);
    return job.pieces.writeCoded({std::exchange(codes, codes + length), length});
  };
  return cutsTiles(job) ? forTiles(job, patches, write) : write(0);
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
  const uint32_t counted = job.coder.framing.before ? 0 : job.state.nStripBytes;
  const uint32_t begin = tell(file);
  const int32_t result = finishRows(job, codeRows(job, chunk));
  if (result == RAXEL_CANNOT_WRITE) {
    job.state.nStripBytes = counted + bytesTried(job, chunk, tell(file) - begin);
  }
  return result;
}

// A strip is patched around what writes it.
template <class Write>
int32_t writeStrip(CellJob &job, Patches &patches, Write write) {
  if (isTiled(job.state)) return write();
  const uint32_t number = nextStrip(job.format);
  patches.begin(number);
  job.state.nStripBytes = 0;
  const int32_t result = write();
  patches.end(number, job.state.nStripBytes);
  setNextStrip(job.format, number + 1);
  return result;
}

int32_t writeChunk(CellJob &job, const Chunk &chunk, Patches &patches) {
  if (!job.band.swapsByRow) recolorChunk(job.band, chunk);
  if (isPlain(job.state)) return finishRows(job, writePlain(job, chunk));
  return writeStrip(job, patches, [&] {
    if (job.coder.takes == Takes::kChunk) return codeChunk(job, chunk, patches);
    return job.out.gathers() ? codeGathered(job, chunk) : codeRows(job, chunk);
  });
}

// Chunk after chunk, until one fails: then the chunks below it have not been touched.
int32_t writeInTurn(CellJob &job, Patches &patches) {
  int32_t result = RAXEL_OK;
  for (uint64_t k = 0; k < job.band.chunks() && result == RAXEL_OK; ++k) {
    result = writeChunk(job, job.band.chunk(k), patches);
  }
  return result;
}

// The same with chunks that others code meanwhile.
int32_t writeCodedInTurn(CellJob &job, Patches &patches, SideBySide &crew) {
  int32_t result = RAXEL_OK;
  for (uint64_t k = 0; k < job.band.chunks() && result == RAXEL_OK; ++k) {
    const CodedChunk &coded = crew.take(k);
    recolorChunk(job.band, job.band.chunk(k));
    result = writeStrip(job, patches, [&] { return writeCoded(job, coded, patches); });
    crew.giveBack(k);
  }
  return result;
}

uint32_t threadsFor(const CellJob &job) {
  if (job.coder.threadsFrom == 0 || !canRecolorApart(job.band)) return 1;
  return codingThreads(job.band.rows * job.band.cells.rowBytes, job.band.chunks(), job.coder.threadsFrom);
}

int32_t writeChunks(CellJob &job) {
  const bool tiled = isTiled(job.state);
  Patches patches(job.state, nextStrip(job.format),
                  isPlain(job.state) ? 0 : job.band.chunks() * (tiled ? job.state.nTilesAcross : 1));
  int32_t result = RAXEL_OK;
  if (const uint32_t threads = threadsFor(job); threads > 1) {
    const ChunkPlan plan{job.band, job.coder, cutsTiles(job) ? job.state.nTilesAcross : 0u};
    SideBySide crew(plan, threads);
    result = crew.started() ? writeCodedInTurn(job, patches, crew) : writeInTurn(job, patches);
  } else {
    result = writeInTurn(job, patches);
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
  const uint64_t size = runtime::bitmapBytes(width, rows, bitsPerPixel);
  if (bitmap == 0 || cells.stride == 0 || !runtime::fitsInBlock(size) || cells.rowBytes > INT32_MAX) {
    return RAXEL_NO_MEMORY;
  }
  TiffWriterState &state = lpRaster->tiff;
  const bool swaps = state.nSamplesPerPixel * state.nBitsPerSample == 24;
  // Plain rows go to the stream of this call, codes to the one that the picture began with.
  const Handle rowsTo = tiff::isPlain(state) ? file : state.hTiffFile;
  const tiff::CellBand band{
      .cells = cells,
      .width = width,
      .rows = rows,
      .chunkRows = tiff::chunkRows(state, cells, rows),
      .swaps = swaps,
      // A host that sees each write finds a whole chunk swapped by then. Rows that share pixels, because
      // the bitmap is less deep than the file, are swapped in order.
      .swapsByRow = swaps && !tiff::isHostStream(rowsTo) && cells.stride >= uint64_t{width} * 3,
      .nibbles = state.nColors != 256,
      .map = format->bRemap != 0 ? &format->abRemap : nullptr,
  };
  tiff::Collector out(rowsTo, size);
  tiff::PieceWriter pieces(state, out);
  tiff::CellJob job{
      .state = state,
      .format = *format,
      .band = band,
      .spare = runtime::Block::ofSize(cells.block.size() < size ? cells.rowBytes : 0),
      .out = out,
      .coder = tiff::coderOf(state.nCompression),
      .pieces = pieces,
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
