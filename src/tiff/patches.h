// SPDX-License-Identifier: MIT
// Filling in where each strip or tile begins and how many bytes it has, in the directory's arrays.
#pragma once

#include <cstdint>

#include "raxel/tiff.h"
#include "runtime/blocks.h"

namespace tiff {

// Whether strip or tile k is patched at all. Only the rows of strips or tiles are looked at, so a
// single row of tiles gets its first tile patched and no other.
inline bool isPatched(const TiffWriterState &state, uint32_t k) {
  return state.nStripsDown >= 2 || (state.nStripsDown == 1 && k == 1);
}

// Patches the array at `arrayPos`: tell, seek, write, seek back.
void patchOffset(const TiffWriterState &state, uint32_t k);
void patchByteCount(const TiffWriterState &state, uint32_t k, uint32_t count);

// The patches of one WriteCellBits. In a file on disk, going back to the arrays and forth again costs
// two flushes of the buffer, so there the numbers are kept and written in one go at the end; on every
// other stream each patch is made at once. The file's bytes are the same.
class Patches {
 public:
  // Strips or tiles `first` and up are about to be written, at most `planned` of them.
  Patches(const TiffWriterState &state, uint32_t first, uint64_t planned);

  // Strip or tile k begins at the stream's current position.
  void begin(uint32_t k);
  // Strip or tile k has ended, with this many bytes.
  void end(uint32_t k, uint32_t byteCount);
  // Writes what was kept.
  void finish();

 private:
  // One array's numbers as they go into the file, for strips `first_` and up.
  struct Kept {
    runtime::Block bytes;
    uint32_t count = 0;
    void add(uint32_t value);
    void writeAt(Handle file, uint32_t position) const;
  };
  bool keeps() const { return static_cast<bool>(offsets_.bytes); }

  const TiffWriterState &state_;
  uint32_t first_;
  Kept offsets_;
  Kept counts_;
};

}  // namespace tiff
