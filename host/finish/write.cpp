// SPDX-License-Identifier: MIT
// The finished directory: its entries in ascending order, their longer values behind them.
#include <cmath>
#include <numeric>

#include "finish/finish.h"
#include "finish/tags.h"

namespace finish {
namespace {

// TIFF's numbers are little-endian in these files.
void put(std::vector<uint8_t> &to, uint32_t value, uint32_t size) {
  for (uint32_t i = 0; i < size; ++i) to.push_back(static_cast<uint8_t>(value >> 8 * i));
}

struct NewEntry {
  uint16_t tag, type;
  uint32_t count;
  std::vector<uint8_t> value;
};

NewEntry numbers(Tag tag, Type type, std::span<const uint32_t> values) {
  NewEntry entry{tag, type, static_cast<uint32_t>(values.size()), {}};
  entry.value.reserve(values.size() * (type == kShort ? 2 : 4));
  for (const uint32_t value : values) put(entry.value, value, type == kShort ? 2 : 4);
  return entry;
}

NewEntry one(Tag tag, Type type, uint32_t value) {
  return numbers(tag, type, {&value, 1});
}

NewEntry fraction(Tag tag, const Rational &value) {
  NewEntry entry{tag, kRational, 1, {}};
  put(entry.value, value.above, 4);
  put(entry.value, value.below, 4);
  return entry;
}

// Readers look for the zero at the end.
NewEntry text(Tag tag, const std::string &value) {
  NewEntry entry{tag, kAscii, static_cast<uint32_t>(value.size() + 1), {value.begin(), value.end()}};
  entry.value.push_back(0);
  return entry;
}

// The colour map stays where the filter has put it.
NewEntry colorMap(const FinishedPage &page) {
  NewEntry entry{kColorMap, kShort, 3u << page.bits, {}};
  put(entry.value, page.colorMapAt, 4);
  return entry;
}

std::vector<NewEntry> entriesOf(const FinishedPage &page) {
  constexpr uint32_t kFax3 = 3, kFax4 = 4;
  constexpr uint32_t kFillBits = 4;      // every end-of-line code ends on a byte boundary
  constexpr uint32_t kOneOfSeveral = 2;  // a single page of a document
  constexpr uint32_t kInch = 2;
  const bool tiles = page.tileWidth != 0;
  std::vector<NewEntry> e;
  e.push_back(one(kNewSubfileType, kLong, page.isPage ? kOneOfSeveral : 0));
  e.push_back(one(kImageWidth, kShort, page.width));
  e.push_back(one(kImageLength, kShort, page.height));
  e.push_back(numbers(kBitsPerSample, kShort, std::vector<uint32_t>(page.samples, page.bits)));
  e.push_back(one(kCompression, kShort, page.compression));
  e.push_back(one(kPhotometric, kShort, page.photometric));
  if (!page.description.empty()) e.push_back(text(kImageDescription, page.description));
  if (!tiles) e.push_back(numbers(kStripOffsets, kLong, page.offsets));
  e.push_back(one(kSamplesPerPixel, kShort, page.samples));
  if (!tiles) e.push_back(one(kRowsPerStrip, kLong, page.rowsPerStrip));
  if (!tiles) e.push_back(numbers(kStripByteCounts, kLong, page.counts));
  e.push_back(fraction(kXResolution, page.resolutionX));
  e.push_back(fraction(kYResolution, page.resolutionY));
  if (page.compression == kFax3) e.push_back(one(kT4Options, kLong, kFillBits));
  if (page.compression == kFax4) e.push_back(one(kT6Options, kLong, 0));
  e.push_back(one(kResolutionUnit, kShort, kInch));
  // How many pages there are is told when all are written.
  if (page.isPage) e.push_back(numbers(kPageNumber, kShort, std::vector<uint32_t>{page.pageNumber, 0}));
  if (!page.software.empty()) e.push_back(text(kSoftware, page.software));
  if (!page.dateTime.empty()) e.push_back(text(kDateTime, page.dateTime));
  if (!page.artist.empty()) e.push_back(text(kArtist, page.artist));
  if (page.predictor != 1) e.push_back(one(kPredictor, kShort, page.predictor));
  if (page.colorMapAt != 0) e.push_back(colorMap(page));
  if (tiles) e.push_back(one(kTileWidth, kLong, page.tileWidth));
  if (tiles) e.push_back(one(kTileLength, kLong, page.tileHeight));
  if (tiles) e.push_back(numbers(kTileOffsets, kLong, page.offsets));
  if (tiles) e.push_back(numbers(kTileByteCounts, kLong, page.counts));
  if (!page.copyright.empty()) e.push_back(text(kCopyright, page.copyright));
  if (!page.icc.empty())
    e.push_back({kIccProfile,
                 kUndefined,
                 static_cast<uint32_t>(page.icc.size()),
                 {page.icc.begin(), page.icc.end()}});
  return e;
}

// Entry count, entries, the next directory's place (none yet), values; all at even places.
std::vector<uint8_t> directoryAt(uint64_t start, const std::vector<NewEntry> &entries) {
  std::vector<uint8_t> front, values;
  const size_t frontBytes = kCountBytes + kEntryBytes * entries.size() + kLinkBytes;
  const uint64_t valuesAt = start + frontBytes;
  front.reserve(frontBytes);
  put(front, static_cast<uint32_t>(entries.size()), kCountBytes);
  for (const NewEntry &entry : entries) {
    put(front, entry.tag, 2);
    put(front, entry.type, 2);
    put(front, entry.count, 4);
    if (entry.value.size() > 4) {
      put(front, static_cast<uint32_t>(valuesAt + values.size()), 4);
      values.insert(values.end(), entry.value.begin(), entry.value.end());
      values.resize((values.size() + 1) & ~size_t{1});
    } else {
      front.insert(front.end(), entry.value.begin(), entry.value.end());
      front.resize(front.size() + 4 - entry.value.size());
    }
  }
  put(front, 0, kLinkBytes);
  front.insert(front.end(), values.begin(), values.end());
  return front;
}

bool patch(const File &file, uint64_t at, uint32_t value, uint32_t size) {
  std::vector<uint8_t> bytes;
  put(bytes, value, size);
  return file.write(file.context, at, bytes.data(), bytes.size());
}

// What the entries and their values need at most, before they are put together.
uint64_t roomFor(const FinishedPage &page) {
  return page.icc.size() + page.description.size() + page.software.size() + page.dateTime.size() +
         page.artist.size() + page.copyright.size() + 8 * page.offsets.size() + 1024;
}

}  // namespace

Rational rationalOf(double dotsPerInch) {
  constexpr uint32_t kParts = 1000;
  const double parts = std::round(dotsPerInch * kParts);
  if (!(parts >= 1)) return {0, 1};
  if (parts > UINT32_MAX) return {static_cast<uint32_t>(std::fmin(std::round(dotsPerInch), UINT32_MAX)), 1};
  const auto above = static_cast<uint32_t>(parts);
  const uint32_t shared = std::gcd(above, kParts);
  return {above / shared, kParts / shared};
}

const char *sentence(Outcome outcome) {
  switch (outcome) {
    case Outcome::kDone:
      return "done";
    case Outcome::kNotOurs:
      return "the filter has written a directory that cannot be finished";
    case Outcome::kTooLarge:
      return "the file would pass 4 GiB, and its format ends there";
    case Outcome::kTooManyPages:
      return "a file numbers its pages up to 65535";
    case Outcome::kNotRead:
      return "what was written cannot be read back";
    case Outcome::kNotWritten:
      return "the directory cannot be written";
  }
  return "";
}

Outcome writePage(File &file, const FinishedPage &page, Chain &chain) {
  const uint64_t start = (file.size + 1) & ~uint64_t{1};
  if (start + roomFor(page) > UINT32_MAX) return Outcome::kTooLarge;
  const std::vector<NewEntry> entries = entriesOf(page);
  std::vector<uint8_t> bytes = directoryAt(start, entries);
  if (start != file.size) bytes.insert(bytes.begin(), 0);
  if (!file.write(file.context, file.size, bytes.data(), bytes.size())) return Outcome::kNotWritten;
  file.size += bytes.size();
  if (!patch(file, chain.linkAt, static_cast<uint32_t>(start), kLinkBytes)) return Outcome::kNotWritten;
  chain.last = static_cast<uint32_t>(start);
  chain.linkAt = start + kCountBytes + kEntryBytes * entries.size();
  for (size_t i = 0; i < entries.size(); ++i) {
    if (entries[i].tag != kPageNumber) continue;
    const uint64_t total = start + kCountBytes + kEntryBytes * i + kValueInEntry + 2;
    chain.totalsAt.push_back(static_cast<uint32_t>(total));
  }
  return Outcome::kDone;
}

uint64_t directoryBytes(const FinishedPage &page, uint64_t size) {
  return size % 2 + directoryAt(0, entriesOf(page)).size();
}

Outcome endPages(File &file, const Chain &chain) {
  if (chain.totalsAt.size() > UINT16_MAX) return Outcome::kTooManyPages;
  for (const uint32_t at : chain.totalsAt) {
    if (!patch(file, at, static_cast<uint32_t>(chain.totalsAt.size()), 2)) return Outcome::kNotWritten;
  }
  return Outcome::kDone;
}

}  // namespace finish
