// TIFF pictures: what the directory says beyond what the readers below look at.
#include <cstring>

#include "check/directory.h"
#include "pictures/picture.h"

namespace host {
namespace {

constexpr uint16_t kBitsPerSample = 258, kOrientation = 274, kTileWidth = 322;

void put16(uint8_t *to, unsigned value, bool little) {
  to[little ? 0 : 1] = static_cast<uint8_t>(value);
  to[little ? 1 : 0] = static_cast<uint8_t>(value >> 8);
}

// The file with every orientation set to upright. Leptonica turns some kinds of pictures the wrong way.
Buffer withoutOrientation(std::span<const uint8_t> bytes, const Directory &directory) {
  Buffer copy(bytes.size());
  std::memcpy(copy.data(), bytes.data(), bytes.size());
  uint8_t *entry = copy.data() + directory.offset + 2;
  for (size_t i = 0; i < directory.entries.size(); ++i, entry += 12) {
    if (directory.entries[i].tag != kOrientation) continue;
    // Type SHORT, count 1, value 1.
    const bool little = directory.littleEndian;
    std::memset(entry + 2, 0, 10);
    put16(entry + 2, 3, little);
    put16(entry + (little ? 4 : 6), 1, little);
    put16(entry + 8, 1, little);
  }
  return copy;
}

int orientationOf(const Directory &directory) {
  const double value = directory.value(kOrientation, 1);
  return value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
}

}  // namespace

void readTiff(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  const Directory directory = readDirectory(bytes);
  if (!directory.cut.empty()) throw Unreadable("is cut short or damaged: " + directory.cut);
  if (directory.next != 0) out.notes.push_back(kFurtherPictures);
  const int orientation = orientationOf(directory);
  if (directory.find(kTileWidth)) {
    readTiledTiff(bytes, out);
  } else if (orientation != 1) {
    const Buffer upright = withoutOrientation(bytes, directory);
    readWithLeptonica({upright.data(), upright.size()}, background, out);
  } else {
    readWithLeptonica(bytes, background, out);
  }
  turnUpright(out, orientation);
  // Leptonica keeps 16 bits of greys, and says so; colours it has reduced already.
  if (out.view.bits == 24 && directory.value(kBitsPerSample, 1) == 16) out.notes.push_back(kReduced);
}

}  // namespace host
