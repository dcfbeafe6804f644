// SPDX-License-Identifier: MIT
#include "tiff/patches.h"

#include "raxel/settings.h"
#include "tiff/geometry.h"
#include "tiff/output.h"

namespace tiff {
namespace {

constexpr uint32_t kNumberBytes = 4;

// Whether the patches can wait until the pixels are written: they must all fall into the arrays, and
// the arrays must lie apart from each other and before everything still to be written.
bool canWait(const TiffWriterState &state, uint32_t first, uint64_t planned) {
  if (!isDiskFile(state.hTiffFile) || state.nStripsDown < 2 || first == 0 || planned == 0) return false;
  const uint64_t pieces = pieceCount(state);
  if (first - 1 + planned > pieces) return false;
  const uint64_t length = pieces * kNumberBytes;
  const uint64_t offsets = state.nOffsetsPos;
  const uint64_t counts = state.nCountsPos;
  const int32_t here = kvlSeek(state.hTiffFile, 0, KVL_FROM_POSITION);
  if (here < 0 || offsets + length > static_cast<uint32_t>(here) ||
      counts + length > static_cast<uint32_t>(here)) {
    return false;
  }
  return offsets + length <= counts || counts + length <= offsets;
}

}  // namespace

void patchOffset(const TiffWriterState &state, uint32_t k) {
  if (!isPatched(state, k)) return;
  const uint32_t here = tell(state.hTiffFile);
  seekTo(state.hTiffFile, state.nOffsetsPos + kNumberBytes * (k - 1));
  WriteLong(state.hTiffFile, here - state.dwTiffBase);
  seekBack(state.hTiffFile, here);
}

void patchByteCount(const TiffWriterState &state, uint32_t k, uint32_t count) {
  if (!isPatched(state, k)) return;
  const uint32_t here = tell(state.hTiffFile);
  seekTo(state.hTiffFile, state.nCountsPos + kNumberBytes * (k - 1));
  WriteLong(state.hTiffFile, count);
  seekBack(state.hTiffFile, here);
}

void Patches::Kept::add(uint32_t value) {
  kvlNativeToLE(value, bytes.data() + size_t{kNumberBytes} * count, kNumberBytes);
  ++count;
}

void Patches::Kept::writeAt(Handle file, uint32_t position) const {
  if (count == 0) return;
  seekTo(file, position);
  writeAll(file, bytes.bytes().first(size_t{kNumberBytes} * count));
}

Patches::Patches(const TiffWriterState &state, uint32_t first, uint64_t planned)
    : state_(state), first_(first) {
  if (!canWait(state, first, planned)) return;
  offsets_.bytes = runtime::Block::ofSize(kNumberBytes * planned);
  counts_.bytes = runtime::Block::ofSize(kNumberBytes * planned);
}

void Patches::begin(uint32_t k) {
  if (!keeps()) return patchOffset(state_, k);
  offsets_.add(tell(state_.hTiffFile) - state_.dwTiffBase);
}

void Patches::end(uint32_t k, uint32_t byteCount) {
  if (!keeps()) return patchByteCount(state_, k, byteCount);
  counts_.add(byteCount);
}

void Patches::finish() {
  if (!keeps() || offsets_.count == 0) return;
  const Handle file = state_.hTiffFile;
  const uint32_t here = tell(file);
  const uint32_t skipped = kNumberBytes * (first_ - 1);
  offsets_.writeAt(file, state_.nOffsetsPos + skipped);
  counts_.writeAt(file, state_.nCountsPos + skipped);
  seekBack(file, here);
}

}  // namespace tiff

int32_t SetStripOrTileOffset(uint32_t k) {
  if (lpRaster != nullptr) tiff::patchOffset(lpRaster->tiff, k);
  return 0;
}

int32_t SetStripOrTileByteCount(uint32_t k, uint32_t count) {
  if (lpRaster != nullptr) tiff::patchByteCount(lpRaster->tiff, k, count);
  return 0;
}
