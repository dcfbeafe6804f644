// SPDX-License-Identifier: MIT
#include "pictures/jpeg2000.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace host {
namespace {

using Bytes = std::span<const uint8_t>;

// A number of `size` bytes with the highest first; 0 beyond the end.
uint64_t numberAt(Bytes file, uint64_t at, uint64_t size) {
  if (at > file.size() || size > file.size() - at) return 0;
  uint64_t value = 0;
  for (uint64_t i = 0; i < size; ++i) value = value << 8 | file[static_cast<size_t>(at + i)];
  return value;
}

// The content of the first box of a kind in a sequence of boxes (JPEG 2000, ISO 15444-1): a length that
// counts itself, four letters, and where the length is 1 a longer one. One that says more than there is
// ends with the file, as decoders have it. Empty when there is none.
Bytes boxIn(Bytes boxes, std::string_view kind) {
  for (uint64_t at = 0; at + 8 <= boxes.size();) {
    uint64_t length = numberAt(boxes, at, 4), front = 8;
    if (length == 1) {
      length = numberAt(boxes, at + 8, 8);
      front = 16;
    }
    if (length == 0) length = boxes.size() - at;  // up to the end
    length = std::min<uint64_t>(length, boxes.size() - at);
    if (length < front) return {};
    const Bytes box = boxes.subspan(static_cast<size_t>(at), static_cast<size_t>(length));
    if (std::equal(kind.begin(), kind.end(), box.begin() + 4))
      return box.subspan(static_cast<size_t>(front));
    at += length;
  }
  return {};
}

constexpr uint64_t kCodestream = 0xFF4FFF51;  // SOC, and SIZ behind it

// Empty where there is none, or one that does not begin with its size.
Bytes codestreamOf(Bytes file) {
  Bytes code = file;
  if (numberAt(file, 0, 4) != kCodestream) {
    // Decoders go on behind the box's end.
    const Bytes box = boxIn(file, "jp2c");
    code = box.empty() ? box : file.subspan(static_cast<size_t>(box.data() - file.data()));
  }
  return numberAt(code, 0, 4) == kCodestream ? code : Bytes();
}

// The tiles that the picture's grid is cut into.
uint64_t tilesOf(Bytes code) {
  const auto along = [&](uint64_t at) {
    const uint64_t end = numberAt(code, at, 4), tile = numberAt(code, at + 16, 4),
                   first = numberAt(code, at + 24, 4);
    return tile == 0 || first > end ? 0 : (end - first + tile - 1) / tile;
  };
  return along(8) * along(12);
}

constexpr uint64_t kStartOfTilePart = 0xFF90, kEndOfCodestream = 0xFFD9;

// The marker's segment and nothing behind it: some files have such ones beside the tile's parts.
constexpr uint64_t kEmptyTilePart = 12;

// Behind a tile-part: its length counts from its marker on, and 0 says that the codestream's end is its
// own, which no coded data look like. 0 where that lies beyond the codestream.
uint64_t endOfTilePart(Bytes code, uint64_t at) {
  constexpr uint8_t kEndMarker[] = {kEndOfCodestream >> 8, kEndOfCodestream & 0xFF};
  const uint64_t length = numberAt(code, at + 6, 4), left = code.size() - at;
  if (left < kEmptyTilePart) return 0;
  if (length != 0) return length >= kEmptyTilePart && length <= left ? at + length : 0;
  const auto from = code.begin() + static_cast<ptrdiff_t>(at + kEmptyTilePart);
  const auto end = std::search(from, code.end(), std::begin(kEndMarker), std::end(kEndMarker));
  return end == code.end() ? 0 : static_cast<uint64_t>(end - code.begin());
}

// How many parts of a tile there are, and should be at least.
struct TileParts {
  unsigned seen = 0, told = 1;
};

}  // namespace

uint32_t jpeg2000Channels(std::span<const uint8_t> file) {
  if (numberAt(file, 0, 4) == kCodestream) return static_cast<uint32_t>(numberAt(file, 40, 2));
  return static_cast<uint32_t>(numberAt(boxIn(boxIn(file, "jp2h"), "ihdr"), 8, 2));
}

Jpeg2000Grid jpeg2000Grid(std::span<const uint8_t> file) {
  const Bytes code = codestreamOf(file);
  if (code.empty()) return {};
  // The grid's end and where the picture begins on it, across and down; then each channel's depth and
  // steps.
  const auto side = [&](uint64_t at) {
    const uint64_t end = numberAt(code, at, 4), start = numberAt(code, at + 8, 4);
    return static_cast<uint32_t>(end - std::min(start, end));
  };
  Jpeg2000Grid grid{side(8), side(12), false};
  const uint64_t channels = numberAt(code, 40, 2);
  for (uint64_t i = 0; i < channels && !grid.isCoarse; ++i) {
    grid.isCoarse = numberAt(code, 43 + 3 * i, 2) != 0x0101;
  }
  return grid;
}

std::string jpeg2000Missing(std::span<const uint8_t> file) {
  constexpr uint64_t kMostTiles = 65535;
  const Bytes code = codestreamOf(file);
  const uint64_t tiles = tilesOf(code);
  if (tiles == 0 || tiles > kMostTiles) return "its size makes no sense";
  std::vector<TileParts> parts(static_cast<size_t>(tiles));
  uint64_t at = 2, marker = 0;
  while ((marker = numberAt(code, at, 2)) != kEndOfCodestream) {
    if (marker == kStartOfTilePart) {
      const uint64_t tile = numberAt(code, at + 4, 2), end = endOfTilePart(code, at);
      if (tile >= tiles) return "it has a tile that does not belong to it";
      if (end == 0) return "a tile reaches beyond its end";
      TileParts &known = parts[static_cast<size_t>(tile)];
      known.seen += end - at > kEmptyTilePart;
      known.told = std::max(known.told, static_cast<unsigned>(numberAt(code, at + 11, 1)));
      at = end;
      continue;
    }
    const uint64_t length = numberAt(code, at + 2, 2);
    if (marker >> 8 != 0xFF || length < 2) return "it has no end";
    at += 2 + length;
  }
  const auto isMissing = [](const TileParts &tile) { return tile.seen < tile.told; };
  const auto missing = std::ranges::count_if(parts, isMissing);
  return missing == 0 ? ""
                      : std::to_string(missing) + " of " + std::to_string(tiles) + " tiles are missing";
}

Jpeg2000Extras jpeg2000Extras(std::span<const uint8_t> file) {
  const Bytes color = boxIn(boxIn(file, "jp2h"), "colr");
  const bool profile = !color.empty() && (color[0] == 2 || color[0] == 3);  // of two kinds
  return {profile, !boxIn(file, "xml ").empty() || !boxIn(file, "uuid").empty()};
}

}  // namespace host
