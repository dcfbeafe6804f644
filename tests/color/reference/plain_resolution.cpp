// SPDX-License-Identifier: MIT
#include "color/reference/plain_resolution.h"

#include "color/reference/reduce.h"

namespace plain {

namespace {

// A median cut of 24-bit rows. Heights are signed 16-bit numbers to it, and what a block lacks is black.
Table reduceRows(Bytes rows, uint32_t width, uint32_t height, int wanted) {
  if (static_cast<int16_t>(height) < 0) height = 0;
  height &= 0x7FFF;
  rows.resize(size_t{lineBytes(width, 24)} * height);
  const reference::Reduced reduced = reference::reduce(rows, width, height, wanted);
  return {true, reduced.table, static_cast<uint32_t>(reduced.count)};
}

}  // namespace

Table chosenTable(const Picture &picture, int depth, const Table &source) {
  const Bytes greys{0,   0,   0,   255, 255, 255, 64,  64,  64,  128, 128, 128,
                    160, 160, 160, 192, 192, 192, 208, 208, 208, 224, 224, 224};
  if (depth == 1) return {true, greys, 8};
  const int entries = 1 << depth;
  const Table own =
      reduceRows(convert(picture, 24, source, {}), picture.width, picture.height, entries - 8);
  const Bytes corners{255, 255, 255, 255, 255, 0, 255, 0, 255, 0, 255, 255,
                      255, 0,   0,   0,   255, 0, 0,   0, 255, 0, 0,   0};
  Table out{true, own.entries, static_cast<uint32_t>(entries)};
  out.entries.resize(size_t{own.count} * 3);
  out.entries.insert(out.entries.end(), corners.begin(), corners.end());
  out.entries.resize(static_cast<size_t>(entries) * 3, 0);
  return out;
}

Changed changeResolution(const Picture &picture, int depth, const Table &source) {
  Changed out;
  out.done = true;
  if (depth >= picture.depth) {
    out.bits = convert(picture, depth, source, {});
    return out;
  }
  if (picture.depth > 24) return {};
  if (depth < 8) {
    if (depth != 1 && depth != 4) return {};
    out.table = chosenTable(picture, depth, source);
    out.bits = dither(picture, depth, source, out.table);
    return out;
  }
  const int wanted = 1 << depth & 0xFFFF;
  if (picture.depth == 24) {
    out.table = reduceRows(picture.bits, picture.width, picture.height, wanted);
  } else if (source.given) {
    out.table = reduceRows(source.entries, 1u << picture.depth, 1, wanted);
  } else {
    // No picture to choose from: as many black entries as are wanted.
    out.table = {true, Bytes(static_cast<size_t>(wanted) * 3, 0), static_cast<uint32_t>(wanted)};
  }
  out.bits = convert(picture, depth, source, out.table);
  return out;
}

}  // namespace plain
