// SPDX-License-Identifier: MIT
#include "support/tiff_reader.h"

namespace support {
namespace {

constexpr uint16_t kStripOffsets = 273, kStripByteCounts = 279;
constexpr uint16_t kTileOffsets = 324, kTileByteCounts = 325;

bool inside(std::span<const uint8_t> bytes, uint64_t at, uint64_t length) {
  return at <= bytes.size() && length <= bytes.size() - at;
}

uint32_t number(std::span<const uint8_t> bytes, size_t at, unsigned size) {
  uint32_t value = 0;
  for (unsigned i = 0; i < size; ++i) value |= uint32_t{bytes[at + i]} << (8 * i);
  return value;
}

// The bytes of one number of a type and the numbers of one value; 0 bytes for types not known here.
struct Shape {
  unsigned size;
  unsigned numbers;
};

Shape shapeOf(uint16_t type) {
  switch (type) {
    case 1:
    case 2:
      return {1, 1};
    case 3:
      return {2, 1};
    case 4:
      return {4, 1};
    case 5:
      return {4, 2};
    default:
      return {0, 0};
  }
}

std::string readEntry(std::span<const uint8_t> bytes, size_t at, TiffEntry &entry) {
  entry.tag = static_cast<uint16_t>(number(bytes, at, 2));
  entry.type = static_cast<uint16_t>(number(bytes, at + 2, 2));
  entry.count = number(bytes, at + 4, 4);
  entry.field = number(bytes, at + 8, 4);
  const Shape shape = shapeOf(entry.type);
  const std::string name = "entry " + std::to_string(entry.tag);
  if (shape.size == 0) return name + " has the unknown type " + std::to_string(entry.type);
  const uint64_t length = uint64_t{entry.count} * shape.size * shape.numbers;
  entry.valuesAt = length <= 4 ? static_cast<uint32_t>(at + 8) : entry.field;
  if (!inside(bytes, entry.valuesAt, length)) return name + " points outside the file";
  for (size_t i = 0; i < size_t{entry.count} * shape.numbers; ++i) {
    entry.values.push_back(number(bytes, entry.valuesAt + i * shape.size, shape.size));
  }
  return {};
}

std::string readPieces(TiffFile &file) {
  file.tiled = file.find(kTileOffsets) != nullptr;
  const TiffEntry *offsets = file.find(file.tiled ? kTileOffsets : kStripOffsets);
  const TiffEntry *counts = file.find(file.tiled ? kTileByteCounts : kStripByteCounts);
  if (offsets == nullptr || counts == nullptr) return "offsets or byte counts are missing";
  if (offsets->values.size() != counts->values.size()) return "offsets and byte counts differ in number";
  for (size_t i = 0; i < offsets->values.size(); ++i) {
    file.pieces.push_back({offsets->values[i], counts->values[i]});
  }
  return {};
}

std::string read(TiffFile &file) {
  const std::span<const uint8_t> bytes = file.bytes;
  if (!inside(bytes, 0, 8)) return "shorter than a header";
  if (bytes[0] != 'I' || bytes[1] != 'I') return "not little-endian";
  if (number(bytes, 2, 2) != 42) return "not a TIFF file";
  const uint32_t directory = number(bytes, 4, 4);
  if (!inside(bytes, directory, 2)) return "the directory lies outside the file";
  const uint32_t count = number(bytes, directory, 2);
  const size_t first = size_t{directory} + 2;
  if (!inside(bytes, first, uint64_t{count} * 12 + 4)) return "the directory runs past the file";
  for (size_t i = 0; i < count; ++i) {
    TiffEntry &entry = file.entries.emplace_back();
    if (std::string error = readEntry(bytes, first + 12 * i, entry); !error.empty()) return error;
  }
  file.nextDirectory = number(bytes, first + 12 * size_t{count}, 4);
  return readPieces(file);
}

}  // namespace

const TiffEntry *TiffFile::find(uint16_t tag) const {
  for (const TiffEntry &entry : entries) {
    if (entry.tag == tag) return &entry;
  }
  return nullptr;
}

uint32_t TiffFile::value(uint16_t tag, uint32_t otherwise, size_t index) const {
  const TiffEntry *entry = find(tag);
  return entry != nullptr && index < entry->values.size() ? entry->values[index] : otherwise;
}

std::vector<uint16_t> TiffFile::tags() const {
  std::vector<uint16_t> out;
  for (const TiffEntry &entry : entries) out.push_back(entry.tag);
  return out;
}

std::span<const uint8_t> TiffFile::piece(size_t index) const {
  if (index >= pieces.size()) return {};
  const auto [offset, byteCount] = pieces[index];
  return inside(bytes, offset, byteCount) ? bytes.subspan(offset, byteCount) : std::span<const uint8_t>{};
}

uint32_t TiffFile::rowBytes() const {
  return static_cast<uint32_t>((uint64_t{width()} * bitsPerSample() * samplesPerPixel() + 7) / 8);
}

TiffFile readTiff(std::span<const uint8_t> bytes) {
  TiffFile file;
  file.bytes = bytes;
  file.error = read(file);
  return file;
}

std::vector<uint8_t> uncompressedRows(const TiffFile &file) {
  if (!file.ok() || file.tiled || file.compression() != 1) return {};
  std::vector<uint8_t> rows;
  for (size_t i = 0; i < file.pieces.size(); ++i) {
    const std::span<const uint8_t> strip = file.piece(i);
    rows.insert(rows.end(), strip.begin(), strip.end());
  }
  const uint64_t wanted = uint64_t{file.rowBytes()} * file.height();
  if (rows.size() < wanted) return {};
  rows.resize(static_cast<size_t>(wanted));
  return rows;
}

}  // namespace support
