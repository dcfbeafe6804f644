// SPDX-License-Identifier: MIT
// The finishing step on files of any bytes: what the filter may have written is finished so that a reader
// finds it again, everything else is refused and stays as it was.
#include <string>

#include "check/directory.h"
#include "check/inspect.h"
#include "finish/finish.h"
#include "finish/tags.h"
#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using finish::Outcome;

std::string text(fuzz::Input &input) {
  const auto bytes = input.bytes(input.byte() % 24);
  return std::string(bytes.begin(), bytes.end()).c_str();
}

std::vector<double> asDoubles(const std::vector<uint32_t> &values) {
  return {values.begin(), values.end()};
}

// The finished directory says what the page says.
void compare(const finish::FinishedPage &page, const std::vector<uint8_t> &file, uint64_t place) {
  const host::Directory read = host::readDirectory(file, static_cast<uint32_t>(place));
  fuzz::require(read.offset == place && !read.entries.empty(), "a directory where the chain points");
  for (size_t i = 1; i < read.entries.size(); ++i) {
    fuzz::require(read.entries[i].tag > read.entries[i - 1].tag, "tags that ascend");
  }
  const bool isShort = page.width <= 0xFFFF && page.height <= 0xFFFF;
  fuzz::require(!isShort || (read.value(finish::kImageWidth, -1) == page.width &&
                             read.value(finish::kImageLength, -1) == page.height),
                "the page's size");
  const bool tiles = page.tileWidth != 0;
  const host::DirectoryEntry *offsets = read.find(tiles ? finish::kTileOffsets : finish::kStripOffsets);
  const host::DirectoryEntry *counts =
      read.find(tiles ? finish::kTileByteCounts : finish::kStripByteCounts);
  fuzz::require(offsets != nullptr && counts != nullptr, "strips or tiles");
  fuzz::require(offsets->count == page.offsets.size() && counts->count == page.counts.size(),
                "all of them");
  const auto sameStart = [](const std::vector<double> &some, const std::vector<double> &all) {
    return some.size() <= all.size() && std::equal(some.begin(), some.end(), all.begin());
  };
  fuzz::require(sameStart(offsets->values, asDoubles(page.offsets)), "their places");
  fuzz::require(sameStart(counts->values, asDoubles(page.counts)), "their bytes");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  // Telling what is seen takes longer than everything else together.
  const bool isTold = input.rarely(16);
  const unsigned what = input.byte();
  const uint64_t base = what % 8 == 7 ? input.word() : 0;
  std::string texts[5];
  if (what % 4 == 1) {
    for (std::string &one : texts) one = text(input);
  }
  const std::vector<uint8_t> icc = what % 8 == 2 ? input.bytes(input.byte()) : std::vector<uint8_t>();
  std::vector<uint8_t> bytes = input.rest();
  const std::vector<uint8_t> before = bytes;

  // What a person asks of a file that he did not write.
  std::vector<uint64_t> places = host::directoryPlaces(bytes);
  for (size_t i = 0; i < std::min<size_t>(places.size(), 4); ++i) {
    const auto at = static_cast<uint32_t>(places[i]);
    if (at != places[i]) continue;
    host::Inspection seen;
    seen.name = "file";
    seen.bytes = bytes.size();
    seen.pages[0].directory = host::readDirectory(bytes, at);
    for (const auto &entry : seen.pages[0].directory.entries) host::meaning(entry);
    fuzz::require(!isTold || !host::toJson(seen).empty(), "an inspection that can be told");
  }
  host::pagePlaces(bytes, places);

  finish::File file = finish::fileOf(bytes);
  finish::FinishedPage page;
  const Outcome outcome = finish::readPage(file, base, page);
  fuzz::require(bytes == before, "reading changes nothing");
  fuzz::require(outcome == Outcome::kDone || outcome == Outcome::kNotOurs, "a file in memory can be read");
  if (outcome != Outcome::kDone) return 0;
  for (size_t i = 0; i < page.offsets.size(); ++i) {
    fuzz::require(uint64_t{page.offsets[i]} + page.counts[i] <= before.size(), "strips inside the file");
  }
  page.description = texts[0];
  page.software = texts[1];
  page.dateTime = texts[2];
  page.artist = texts[3];
  page.copyright = texts[4];
  page.icc = icc;
  page.isPage = what % 16 == 3;
  page.predictor = what % 16 == 4 ? 2 : 1;

  finish::Chain chain;
  const uint64_t added = finish::directoryBytes(page, bytes.size());
  fuzz::require(finish::writePage(file, page, chain) == Outcome::kDone, "a page that can be written");
  fuzz::require(bytes.size() == before.size() + added && bytes.size() % 2 == 0,
                "as many bytes as foretold");
  fuzz::require(finish::endPages(file, chain) == Outcome::kDone, "pages that end");
  fuzz::require(std::equal(before.begin() + 8, before.end(), bytes.begin() + 8), "the file's bytes stay");
  compare(page, bytes, chain.last);
  places = host::directoryPlaces(bytes);
  fuzz::require(places.size() == 1 && places[0] == chain.last, "one directory");
  return 0;
}
