// SPDX-License-Identifier: MIT
#include "check/directory.h"

#include <algorithm>
#include <array>
#include <set>
#include <unordered_set>

#include "finish/tags.h"

namespace host {
namespace {

struct Named {
  uint16_t number;
  const char *name;
};

constexpr Named kTags[] = {
    {finish::kNewSubfileType, "NewSubfileType"},
    {finish::kImageWidth, "ImageWidth"},
    {finish::kImageLength, "ImageLength"},
    {finish::kBitsPerSample, "BitsPerSample"},
    {finish::kCompression, "Compression"},
    {finish::kPhotometric, "Photometric"},
    {finish::kFillOrder, "FillOrder"},
    {finish::kImageDescription, "ImageDescription"},
    {finish::kMake, "Make"},
    {finish::kStripOffsets, "StripOffsets"},
    {finish::kOrientation, "Orientation"},
    {finish::kSamplesPerPixel, "SamplesPerPixel"},
    {finish::kRowsPerStrip, "RowsPerStrip"},
    {finish::kStripByteCounts, "StripByteCounts"},
    {finish::kXResolution, "XResolution"},
    {finish::kYResolution, "YResolution"},
    {finish::kPlanarConfiguration, "PlanarConfiguration"},
    {finish::kT4Options, "T4Options"},
    {finish::kT6Options, "T6Options"},
    {finish::kResolutionUnit, "ResolutionUnit"},
    {finish::kPageNumber, "PageNumber"},
    {finish::kSoftware, "Software"},
    {finish::kDateTime, "DateTime"},
    {finish::kArtist, "Artist"},
    {finish::kPredictor, "Predictor"},
    {finish::kColorMap, "ColorMap"},
    {finish::kTileWidth, "TileWidth"},
    {finish::kTileLength, "TileLength"},
    {finish::kTileOffsets, "TileOffsets"},
    {finish::kTileByteCounts, "TileByteCounts"},
    {finish::kExtraSamples, "ExtraSamples"},
    {finish::kSampleFormat, "SampleFormat"},
    {finish::kCopyright, "Copyright"},
    {finish::kIccProfile, "ICCProfile"},
};

struct Type {
  const char *name;
  uint32_t size;
};
constexpr std::array<Type, 13> kTypes{{{"", 0},
                                       {"BYTE", 1},
                                       {"ASCII", 1},
                                       {"SHORT", 2},
                                       {"LONG", 4},
                                       {"RATIONAL", 8},
                                       {"SBYTE", 1},
                                       {"UNDEFINED", 1},
                                       {"SSHORT", 2},
                                       {"SLONG", 4},
                                       {"SRATIONAL", 8},
                                       {"FLOAT", 4},
                                       {"DOUBLE", 8}}};

constexpr uint32_t kMostValues = 70000;  // more than the strips or tiles of any file written here
// Of all entries together, which in a hostile file may lie over each other.
constexpr uint32_t kMostValuesInAll = 1 << 20;
constexpr uint32_t kMostPieces = 1 << 24;  // strips or tiles
constexpr uint32_t kMostText = 200;
constexpr size_t kMostFaults = 1000;  // nobody reads more

// Tags without whose values there are no pixels, or none in their colours.
bool isNeeded(uint16_t tag) {
  return tag == finish::kColorMap || tag == finish::kStripOffsets || tag == finish::kStripByteCounts ||
         tag == finish::kTileOffsets || tag == finish::kTileByteCounts;
}

// Numbers at places of the file; a place outside reads as 0 and is remembered.
class Bytes {
 public:
  Bytes(std::span<const uint8_t> file, bool little) : file_(file), little_(little) {}

  bool has(uint64_t at, uint64_t count) const { return at <= file_.size() && count <= file_.size() - at; }
  uint64_t number(uint64_t at, uint32_t size) const {
    uint64_t value = 0;
    if (!has(at, size)) return 0;
    for (uint32_t i = 0; i < size; ++i) {
      value |= uint64_t{file_[static_cast<size_t>(at) + i]} << 8 * (little_ ? i : size - 1 - i);
    }
    return value;
  }
  char letter(uint64_t at) const {
    return has(at, 1) ? static_cast<char>(file_[static_cast<size_t>(at)]) : '\0';
  }

 private:
  std::span<const uint8_t> file_;
  bool little_;
};

double valueAt(const Bytes &bytes, uint64_t at, uint16_t type) {
  switch (type) {
    case 1:
    case 7:
      return static_cast<double>(bytes.number(at, 1));
    case 3:
      return static_cast<double>(bytes.number(at, 2));
    case 4:
      return static_cast<double>(bytes.number(at, 4));
    case 5: {
      const double below = static_cast<double>(bytes.number(at + 4, 4));
      return below == 0 ? 0 : static_cast<double>(bytes.number(at, 4)) / below;
    }
    case 6:
      return static_cast<int8_t>(bytes.number(at, 1));
    case 8:
      return static_cast<int16_t>(bytes.number(at, 2));
    case 9:
      return static_cast<int32_t>(bytes.number(at, 4));
    default:
      return 0;
  }
}

// Adds a fault; `cuts` says that it leaves pixels or colours out.
void addFault(Directory &directory, const std::string &fault, bool cuts) {
  directory.faults.push_back(fault);
  if (cuts && directory.cut.empty()) directory.cut = fault;
}

// What was read of a directory so far.
struct Progress {
  uint32_t room = kMostValuesInAll;
  std::set<uint16_t> needed;
};

DirectoryEntry readEntry(const Bytes &bytes, uint64_t at, Progress &progress, Directory &directory) {
  DirectoryEntry entry{static_cast<uint16_t>(bytes.number(at, 2)),
                       static_cast<uint16_t>(bytes.number(at + 2, 2)),
                       static_cast<uint32_t>(bytes.number(at + 4, 4)),
                       {},
                       {}};
  if (entry.type == 0 || entry.type >= kTypes.size()) {
    addFault(directory, tagName(entry.tag) + " has the unknown type " + std::to_string(entry.type), false);
    return entry;
  }
  const uint64_t size = uint64_t{kTypes[entry.type].size} * entry.count;
  const uint64_t place = size <= 4 ? at + 8 : bytes.number(at + 8, 4);
  if (!bytes.has(place, size)) {
    addFault(directory, tagName(entry.tag) + " has values beyond the end of the file", isNeeded(entry.tag));
    return entry;
  }
  if (entry.type == 2) {
    for (uint32_t i = 0; i < std::min(entry.count, kMostText); ++i) {
      const char c = bytes.letter(place + i);
      if (c != '\0') entry.text.push_back(c >= ' ' && c <= '~' ? c : '?');
    }
    return entry;
  }
  // Of the strips none is left unlooked at; a tag that stands twice does not count again.
  const bool all = isNeeded(entry.tag) && progress.needed.insert(entry.tag).second;
  if (all && entry.count > kMostPieces) {
    addFault(directory, tagName(entry.tag) + " has more values than a picture needs", true);
    return entry;
  }
  const uint32_t count = all ? entry.count : std::min({entry.count, kMostValues, progress.room});
  if (!all) progress.room -= count;
  entry.values.reserve(count);
  for (uint32_t i = 0; i < count; ++i) {
    entry.values.push_back(valueAt(bytes, place + uint64_t{kTypes[entry.type].size} * i, entry.type));
  }
  return entry;
}

void checkOrder(Directory &directory) {
  for (size_t i = 1; i < directory.entries.size(); ++i) {
    const uint16_t before = directory.entries[i - 1].tag, tag = directory.entries[i].tag;
    if (tag > before) continue;
    directory.faults.push_back(tagName(tag) +
                               (tag == before ? " stands twice" : " stands after " + tagName(before)) +
                               ", and tags should ascend");
  }
}

// Offsets and byte counts of strips or tiles.
void checkPieces(Directory &directory, uint64_t fileSize, uint16_t offsetsTag, uint16_t countsTag) {
  const DirectoryEntry *offsets = directory.find(offsetsTag), *counts = directory.find(countsTag);
  if (!offsets || !counts) return;
  if (offsets->values.size() != counts->values.size()) {
    directory.faults.push_back("there are not as many byte counts as offsets");
  }
  for (size_t i = 0; i < std::min(offsets->values.size(), counts->values.size()); ++i) {
    if (directory.faults.size() >= kMostFaults) return;
    const double offset = offsets->values[i], count = counts->values[i];
    const std::string piece =
        (offsetsTag == finish::kStripOffsets ? "strip " : "tile ") + std::to_string(i + 1);
    if (offset == 0 || count == 0) {
      directory.faults.push_back(piece + " is empty or has no place");
    } else if (offset + count > static_cast<double>(fileSize)) {
      addFault(directory, piece + " reaches beyond the end of the file", true);
    }
  }
}

}  // namespace

const DirectoryEntry *Directory::find(uint16_t tag) const {
  const auto found = std::ranges::find(entries, tag, &DirectoryEntry::tag);
  return found == entries.end() ? nullptr : &*found;
}

double Directory::value(uint16_t tag, double none) const {
  const DirectoryEntry *entry = find(tag);
  return entry && !entry->values.empty() ? entry->values.front() : none;
}

std::string tagName(uint16_t tag) {
  for (const Named &named : kTags) {
    if (named.number == tag) return named.name;
  }
  return "tag " + std::to_string(tag);
}

std::string typeName(uint16_t type) {
  return type != 0 && type < kTypes.size() ? kTypes[type].name : "type " + std::to_string(type);
}

namespace {

// How a file lays its directories out.
struct Layout {
  Bytes bytes;
  uint32_t place;  // bytes of a place in the file, and of a count of values
  uint32_t count;  // bytes of a count of entries
  uint32_t entry() const { return 4 + 2 * place; }
  uint32_t value() const { return 4 + place; }  // where it stands in its entry
};

Layout layoutOf(std::span<const uint8_t> file) {
  const Bytes bytes(file, file[0] == 'I');
  return bytes.number(2, 2) == 43 ? Layout{bytes, 8, 8} : Layout{bytes, 4, 2};
}

// Of one value, as readers have it who know BigTIFF's types; an unknown type has none.
uint64_t sizeOfType(uint64_t type) {
  constexpr uint64_t kIfd = 13, kLong8 = 16, kIfd8 = 18;
  if (type < kTypes.size()) return kTypes[static_cast<size_t>(type)].size;
  return type == kIfd ? 4 : type >= kLong8 && type <= kIfd8 ? 8 : 0;
}

}  // namespace

std::vector<uint64_t> directoryPlaces(std::span<const uint8_t> file) {
  std::vector<uint64_t> places;
  if (file.size() < 16) return places;
  const Layout layout = layoutOf(file);
  const Bytes &bytes = layout.bytes;
  std::unordered_set<uint64_t> seen;
  for (uint64_t at = bytes.number(layout.place, layout.place); at != 0;) {
    const bool inside = at >= 8 && bytes.has(at, layout.count);
    const uint64_t count = inside ? bytes.number(at, layout.count) : 0;
    const bool isNew = seen.insert(at).second;
    places.push_back(isNew ? at : kLinkBack);
    if (!inside || !isNew || count > UINT16_MAX) break;
    at = bytes.number(at + layout.count + layout.entry() * count, layout.place);
  }
  return places;
}

std::vector<uint64_t> pagePlaces(std::span<const uint8_t> file, std::vector<uint64_t> places) {
  constexpr uint64_t kReduced = 1, kMask = 4;
  if (places.empty()) return places;
  const Layout layout = layoutOf(file);
  const Bytes &bytes = layout.bytes;
  const auto isNoPage = [&](uint64_t place) {
    const uint64_t entry = place + layout.count;
    if (bytes.number(place, layout.count) == 0 || bytes.number(entry, 2) != finish::kNewSubfileType)
      return false;
    const uint64_t type = bytes.number(entry + 2, 2);
    const uint32_t size = type == finish::kLong ? 4 : type == finish::kShort ? 2 : 0;
    return (bytes.number(entry + layout.value(), size) & (kReduced | kMask)) != 0;
  };
  places.erase(std::remove_if(places.begin() + 1, places.end(), isNoPage), places.end());
  return places;
}

uint64_t bytesOfValues(std::span<const uint8_t> file, uint64_t at) {
  if (file.size() < 16) return 0;
  const Layout layout = layoutOf(file);
  const Bytes &bytes = layout.bytes;
  if (at == 0) at = bytes.number(layout.place, layout.place);
  const uint64_t entries = std::min<uint64_t>(bytes.number(at, layout.count), UINT16_MAX);
  uint64_t all = 0;
  for (uint64_t i = 0; i < entries; ++i) {
    const uint64_t entry = at + layout.count + layout.entry() * i, inEntry = entry + layout.value();
    const uint64_t count = std::min<uint64_t>(bytes.number(entry + 4, layout.place), file.size());
    const uint64_t size = sizeOfType(bytes.number(entry + 2, 2)) * count;
    const uint64_t place = size <= layout.place ? inEntry : bytes.number(inEntry, layout.place);
    all += std::min(size, file.size() - std::min<uint64_t>(place, file.size()));
  }
  return all;
}

Directory readDirectory(std::span<const uint8_t> file, uint32_t at) {
  Directory directory;
  if (file.size() < 8 || (file[0] != 'I' && file[0] != 'M') || file[1] != file[0]) {
    directory.faults.push_back("it is no TIFF file");
    return directory;
  }
  directory.littleEndian = file[0] == 'I';
  const Bytes bytes(file, directory.littleEndian);
  if (bytes.number(2, 2) != 42) {
    directory.faults.push_back(bytes.number(2, 2) == 43 ? "it is a BigTIFF file" : "it is no TIFF file");
    return directory;
  }
  if (at == kLinkBack) {
    addFault(directory, "the directories link back to where they were", true);
    return directory;
  }
  directory.offset = at != 0 ? at : static_cast<uint32_t>(bytes.number(4, 4));
  const uint64_t count = bytes.number(directory.offset, 2), start = uint64_t{directory.offset} + 2;
  if (directory.offset < 8 || count == 0 || !bytes.has(start, 12 * count + 4)) {
    directory.faults.push_back("its directory lies beyond the end of the file");
    return directory;
  }
  Progress progress;
  for (uint64_t i = 0; i < count; ++i)
    directory.entries.push_back(readEntry(bytes, start + 12 * i, progress, directory));
  directory.next = static_cast<uint32_t>(bytes.number(start + 12 * count, 4));
  checkOrder(directory);
  checkPieces(directory, file.size(), finish::kStripOffsets, finish::kStripByteCounts);
  checkPieces(directory, file.size(), finish::kTileOffsets, finish::kTileByteCounts);
  return directory;
}

}  // namespace host
