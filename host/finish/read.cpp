// SPDX-License-Identifier: MIT
// What the filter wrote, from its own directory.
#include <algorithm>
#include <array>

#include "finish/finish.h"
#include "finish/tags.h"

namespace finish {
namespace {

constexpr uint32_t kMostEntries = 15;      // tiles with a colour map
constexpr uint32_t kMostPieces = 1 << 16;  // more than the strips or tiles of any page

uint32_t number(const uint8_t *at, uint32_t size) {
  uint32_t value = 0;
  for (uint32_t i = 0; i < size; ++i) value |= uint32_t{at[i]} << 8 * i;
  return value;
}

struct Entry {
  uint16_t tag, type;
  uint32_t count, value;
};

// The page's places are counted from its base; behind the file's end there is none.
struct Reader {
  const File &file;
  uint64_t base;

  Outcome bytes(uint64_t at, uint8_t *to, size_t count) const {
    if (base > file.size || at > file.size - base || count > file.size - base - at)
      return Outcome::kNotOurs;
    return file.read(file.context, base + at, to, count) ? Outcome::kDone : Outcome::kNotRead;
  }

  // The numbers of an entry: in it when there is one, else where it points.
  Outcome longs(const Entry &entry, std::vector<uint32_t> &to) const {
    if (entry.type != kLong || entry.count == 0 || entry.count > kMostPieces) return Outcome::kNotOurs;
    if (entry.count == 1) {
      to = {entry.value};
      return Outcome::kDone;
    }
    std::vector<uint8_t> raw(size_t{4} * entry.count);
    if (const Outcome outcome = bytes(entry.value, raw.data(), raw.size()); outcome != Outcome::kDone)
      return outcome;
    to.resize(entry.count);
    for (uint32_t i = 0; i < entry.count; ++i) to[i] = number(raw.data() + 4 * i, 4);
    return Outcome::kDone;
  }

  Outcome rational(const Entry &entry, Rational &to) const {
    std::array<uint8_t, 8> raw;
    if (entry.type != kRational || entry.count != 1) return Outcome::kNotOurs;
    const Outcome outcome = bytes(entry.value, raw.data(), raw.size());
    if (outcome == Outcome::kDone) to = {number(raw.data(), 4), number(raw.data() + 4, 4)};
    return outcome;
  }
};

// The value of an entry that holds one number.
Outcome single(const Entry &entry, uint32_t &to) {
  if ((entry.type != kShort && entry.type != kLong) || entry.count != 1) return Outcome::kNotOurs;
  to = entry.value;
  return Outcome::kDone;
}

Outcome take(const Reader &reader, const Entry &entry, FinishedPage &page) {
  uint32_t passed = 0;
  switch (entry.tag) {
    case kNewSubfileType:
    case kResolutionUnit:
      return single(entry, passed);
    case kImageWidth:
      return single(entry, page.width);
    case kImageLength:
      return single(entry, page.height);
    case kBitsPerSample:
      return single(entry, page.bits);
    case kCompression:
      return single(entry, page.compression);
    case kPhotometric:
      return single(entry, page.photometric);
    case kSamplesPerPixel:
      return single(entry, page.samples);
    case kRowsPerStrip:
      return single(entry, page.rowsPerStrip);
    case kTileWidth:
      return single(entry, page.tileWidth);
    case kTileLength:
      return single(entry, page.tileHeight);
    case kStripOffsets:
    case kTileOffsets:
      return reader.longs(entry, page.offsets);
    case kStripByteCounts:
    case kTileByteCounts:
      return reader.longs(entry, page.counts);
    case kXResolution:
      return reader.rational(entry, page.resolutionX);
    case kYResolution:
      return reader.rational(entry, page.resolutionY);
    case kColorMap:
      page.colorMapAt = entry.value;
      return entry.type == kShort ? Outcome::kDone : Outcome::kNotOurs;
    default:
      return Outcome::kNotOurs;
  }
}

// Counts the places from the file's start, where they must lie inside it.
Outcome settle(const Reader &reader, FinishedPage &page) {
  const uint64_t end = reader.file.size - reader.base;
  if (page.samples != 1 && page.samples != 3) return Outcome::kNotOurs;
  if (page.bits != 1 && page.bits != 4 && page.bits != 8) return Outcome::kNotOurs;
  if (page.offsets.empty() || page.offsets.size() != page.counts.size()) return Outcome::kNotOurs;
  for (size_t i = 0; i < page.offsets.size(); ++i) {
    const uint64_t at = page.offsets[i];
    if (at < kHeaderBytes || at + page.counts[i] > end) return Outcome::kNotOurs;
    page.offsets[i] = static_cast<uint32_t>(reader.base + at);
  }
  if (page.colorMapAt == 0) return Outcome::kDone;
  if (page.colorMapAt + (uint64_t{6} << page.bits) > end) return Outcome::kNotOurs;
  page.colorMapAt += static_cast<uint32_t>(reader.base);
  return Outcome::kDone;
}

}  // namespace

Outcome readPage(const File &file, uint64_t base, FinishedPage &page) {
  page = FinishedPage{};
  if (file.size > UINT32_MAX) return Outcome::kTooLarge;
  const Reader reader{file, base};
  std::array<uint8_t, kHeaderBytes + kCountBytes + kMostEntries * kEntryBytes> raw{};
  const size_t front = kHeaderBytes + kCountBytes;
  if (const Outcome outcome = reader.bytes(0, raw.data(), front); outcome != Outcome::kDone) return outcome;
  constexpr std::array<uint8_t, kHeaderBytes> kHeader{'I', 'I', 42, 0, kHeaderBytes, 0, 0, 0};
  if (!std::equal(kHeader.begin(), kHeader.end(), raw.begin())) return Outcome::kNotOurs;
  const uint32_t count = number(raw.data() + kHeaderBytes, kCountBytes);
  if (count > kMostEntries) return Outcome::kNotOurs;
  if (const Outcome outcome = reader.bytes(front, raw.data() + front, size_t{kEntryBytes} * count);
      outcome != Outcome::kDone)
    return outcome;
  for (uint32_t i = 0; i < count; ++i) {
    const uint8_t *at = raw.data() + front + size_t{kEntryBytes} * i;
    const Entry entry{static_cast<uint16_t>(number(at, 2)), static_cast<uint16_t>(number(at + 2, 2)),
                      number(at + 4, 4), number(at + kValueInEntry, 4)};
    if (const Outcome outcome = take(reader, entry, page); outcome != Outcome::kDone) return outcome;
  }
  return settle(reader, page);
}

}  // namespace finish
