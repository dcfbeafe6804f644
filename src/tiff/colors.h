// SPDX-License-Identifier: MIT
// Palettes and index remapping of the indexed bitmap modes.
#pragma once

#include <cstdint>
#include <span>

#include "raxel/tiff.h"
#include "runtime/blocks.h"
#include "runtime/live_blocks.h"
#include "tiff/cell_descriptor.h"

namespace tiff {

// The host's palette: red, green, blue bytes. Entries past its end read as black.
class Palette {
 public:
  // In handle memory a palette is as long as its block. Elsewhere a bitmap of up to 8 bits per pixel comes
  // with one entry for each of its pixel values, and deeper ones have no palette; nor has a null pointer.
  Palette(const uint8_t *entries, uint16_t bitsPerPixel) {
    if (const Handle block = runtime::blockWithData(entries); block != 0) {
      bytes_ = runtime::lockBytes(block);
    } else if (entries != nullptr && bitsPerPixel <= 8) {
      bytes_ = {entries, size_t{3} << bitsPerPixel};
    }
  }

  uint8_t channel(uint32_t entry, uint32_t which) const {
    const size_t at = size_t{3} * entry + which;
    return at < bytes_.size() ? bytes_[at] : 0;
  }

 private:
  std::span<const uint8_t> bytes_;
};

// Fills the state's colour map for its photometric interpretation and number of colours: the eight
// fixed colours, the host's palette, or evenly spaced greys.
void settleColorMap(TiffWriterState &state, const Palette &palette);

// Fills the descriptor's remapping from the host's palette to the colour map, for the eight fixed
// colours and the two grey modes; every other mode keeps the host's indices.
void buildRemap(CellFormat &format, const TiffWriterState &state, const Palette &palette);

// Replaces the indices in `rows` through the table, in place, with a lead of one byte: each byte
// receives the mapping of the byte after it. `after` is the byte that follows the rows.
//   nibbles  true when a byte holds two 4-bit indices
void remapRows(std::span<uint8_t> rows, uint8_t after, const uint8_t (&table)[256], bool nibbles);

}  // namespace tiff
