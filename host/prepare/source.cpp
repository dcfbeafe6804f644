// SPDX-License-Identifier: MIT
#include "prepare/source.h"

#include <algorithm>
#include <cstring>

namespace prepare {

Source::Source(const RaxelPicture &picture, int32_t treatment, const RaxelServices *services,
               const Interrupt &interrupt)
    : picture_(picture), treatment_(treatment), services_(services), interrupt_(interrupt) {
  if (!indexed()) return;
  const size_t entries = size_t{1} << picture.bits;
  colors_ = static_cast<uint32_t>(picture.table ? std::min<size_t>(entries, picture.colors) : entries);
  for (size_t i = 0; i < entries; ++i) {
    if (picture.table && i < colors_) {
      std::copy_n(picture.table + 3 * i, 3, table_[i].begin());
    } else if (!picture.table) {
      table_[i].fill(static_cast<uint8_t>(i * 255 / (entries - 1)));
    }
  }
  if (treatment != RAXEL_TREAT_NONE) services->rev_rgb(256, table_[0].data(), treatment);
  grey_ = levelsAreIndices_ = true;
  for (size_t i = 0; i < entries; ++i) {
    const Color &c = table_[i];
    grey_ = grey_ && c[0] == c[1] && c[1] == c[2];
    level_[i] = brightness(c[0], c[1], c[2]);
    levelsAreIndices_ = levelsAreIndices_ && level_[i] == i;
  }
}

void Source::readIndices(uint32_t y, uint8_t *out) const {
  const uint8_t *in = row(y);
  if (picture_.bits == 8) {
    std::memcpy(out, in, picture_.width);
    return;
  }
  const uint32_t bits = picture_.bits, perByte = 8 / bits;
  const unsigned mask = (1u << bits) - 1;
  size_t x = 0;
  for (; x + perByte <= picture_.width; ++in) {
    for (uint32_t shift = 8; shift != 0; ++x) {
      shift -= bits;
      out[x] = static_cast<uint8_t>((*in >> shift) & mask);
    }
  }
  for (uint32_t shift = 8; x < picture_.width; ++x) {
    shift -= bits;
    out[x] = static_cast<uint8_t>((*in >> shift) & mask);
  }
}

void Source::readGrey(uint32_t y, uint8_t *out) const {
  if (indexed()) {
    readIndices(y, out);
    if (levelsAreIndices_) return;
    for (uint32_t x = 0; x < picture_.width; ++x) out[x] = level_[out[x]];
    return;
  }
  std::vector<uint8_t> treated;
  const uint8_t *in = row(y);
  if (treatment_ != RAXEL_TREAT_NONE) {
    treated.resize(size_t{picture_.width} * 3);
    readColors(y, treated.data());
    in = treated.data();
  }
  for (uint32_t x = 0; x < picture_.width; ++x, in += 3) out[x] = brightness(in[0], in[1], in[2]);
}

void Source::readColors(uint32_t y, uint8_t *out) const {
  if (!indexed()) {
    std::memcpy(out, row(y), size_t{picture_.width} * 3);
    if (treatment_ != RAXEL_TREAT_NONE) services_->rev_rgb(picture_.width, out, treatment_);
    return;
  }
  // The indices go to the end of the row's room, and the colours overtake them only when read.
  uint8_t *indices = out + size_t{picture_.width} * 2;
  readIndices(y, indices);
  for (uint32_t x = 0; x < picture_.width; ++x) {
    const Color &c = table_[indices[x]];
    out[0] = c[0];
    out[1] = c[1];
    out[2] = c[2];
    out += 3;
  }
}

const uint8_t *Source::colorsOf(uint32_t y, uint8_t *room) const {
  if (!indexed() && treatment_ == RAXEL_TREAT_NONE) return row(y);
  readColors(y, room);
  return room;
}

bool isGreyPicture(const Source &source) {
  if (source.grey()) return true;
  std::vector<uint8_t> row(size_t{source.width()} * 3);
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readColors(y, row.data());
    for (size_t i = 0; i < row.size(); i += 3) {
      if (row[i] != row[i + 1] || row[i] != row[i + 2]) return false;
    }
  }
  return true;
}

void packRow(std::span<const uint8_t> indices, uint32_t bits, uint8_t *out) {
  if (bits == 8) {
    std::copy(indices.begin(), indices.end(), out);
    return;
  }
  if (bits == 4) {
    const size_t pairs = indices.size() / 2;
    for (size_t i = 0; i < pairs; ++i) {
      out[i] = static_cast<uint8_t>(indices[2 * i] << 4 | indices[2 * i + 1]);
    }
    if (indices.size() % 2 != 0) out[pairs] = static_cast<uint8_t>(indices.back() << 4);
    return;
  }
  unsigned gathered = 0;
  uint32_t filled = 0;
  for (uint8_t index : indices) {
    gathered = gathered << bits | index;
    filled += bits;
    if (filled == 8) {
      *out++ = static_cast<uint8_t>(gathered);
      gathered = filled = 0;
    }
  }
  if (filled != 0) *out = static_cast<uint8_t>(gathered << (8 - filled));
}

}  // namespace prepare
