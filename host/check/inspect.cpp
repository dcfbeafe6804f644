// SPDX-License-Identifier: MIT
#include "check/inspect.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "check/directory.h"
#include "check/json_text.h"
#include "check/libtiff.h"
#include "confine/child.h"
#include "pictures/input.h"
#include "pictures/webp_pieces.h"
#include "raxel/tiff_codes.h"

namespace host {
namespace {

constexpr uint64_t kLargestRow = uint64_t{1} << 30;

// What libtiff says of a page, as faults.
using Say = std::function<void(const std::string &fault)>;

// Has it decode every row; true when it can.
bool decode(std::span<const uint8_t> file, uint32_t directory, const Say &say) {
  TiffReader reader(file, directory);
  bool whole = reader.isOpen() && reader.rowBytes() > 0 && reader.rowBytes() <= kLargestRow;
  if (const std::string fault = whole ? faultOfWebpPieces(reader) : ""; !fault.empty()) {
    say(fault);
    whole = false;
  }
  if (whole) {
    std::vector<uint8_t> row(static_cast<size_t>(reader.rowBytes()));
    const uint32_t rows = reader.number(TIFFTAG_IMAGELENGTH, true, 0);
    for (uint32_t y = 0; whole && y < rows; ++y) whole = reader.readRow(y, row.data());
  }
  for (const std::string &text : reader.warnings()) say("libtiff warns: " + text);
  for (const std::string &text : reader.errors()) say("libtiff fails: " + text);
  return whole;
}

// What a child tells of its pages, in their order: faults of one, each as a text, and then whether it
// decodes, as a text of one byte.
constexpr std::string_view kDecodes = "+", kDoesNot = "-";
constexpr size_t kLongestFault = 500, kMostHeard = 250;

void tell(std::string_view text) {
  tellParent(text.data(), std::min(text.size(), kLongestFault));
}

void hear(Child &child, const std::vector<InspectedPage *> &pages) {
  size_t page = 0, heard = 0;
  while (page < pages.size()) {
    char text[kLongestFault];
    const size_t size = child.receive(text, sizeof text);
    const std::string_view said(text, std::min(size, sizeof text));
    if (size == 0 || ++heard > kMostHeard) {
      const std::string why = size == 0 ? child.ending().what : "its decoder does not stop telling faults";
      for (; page < pages.size(); ++page) pages[page]->directory.faults.push_back(why);
    } else if (said == kDecodes || said == kDoesNot) {
      pages[page++]->decoded = said == kDecodes;
      heard = 0;
    } else {
      pages[page]->directory.faults.push_back(plainText(said));
    }
  }
}

// The same of all pages that have a directory, in a child where decoders are confined.
void decodeAll(std::span<const uint8_t> file, const std::vector<InspectedPage *> &pages) {
  // Those of the pages' rows, of tiles, and what libtiff has beside them; a gigabyte in a second.
  constexpr Allowance kMost{4 * kLargestRow, 4096};
  if (!decodersAreConfined() || !libTiffIsInstalled()) {
    for (InspectedPage *page : pages) {
      const Say add = [&](const std::string &fault) { page->directory.faults.push_back(fault); };
      page->decoded = decode(file, page->directory.offset, add);
    }
    return;
  }
  Child child(kMost, [&] {
    for (const InspectedPage *page : pages)
      tell(decode(file, page->directory.offset, tell) ? kDecodes : kDoesNot);
  });
  hear(child, pages);
}

// A page that says to be another one, or one of another number.
void checkNumber(size_t page, size_t count, Directory &directory) {
  const DirectoryEntry *number = directory.find(297);
  if (!number || number->values.size() != 2) return;
  const double saidPage = number->values[0], saidCount = number->values[1];
  const bool holds =
      saidPage == static_cast<double>(page) && (saidCount == 0 || saidCount == static_cast<double>(count));
  if (holds) return;
  directory.faults.push_back("PageNumber does not say that it is page " + std::to_string(page + 1) +
                             " of " + std::to_string(count));
}

std::string valuesOf(const DirectoryEntry &entry) {
  JsonArray values;
  for (double value : entry.values) {
    // Whole numbers are shown as such.
    if (value == std::floor(value)) {
      values.add(static_cast<int64_t>(value));
    } else {
      values.add(value);
    }
  }
  return values.json();
}

void addPage(const InspectedPage &page, JsonObject &json) {
  JsonArray entries;
  for (const DirectoryEntry &entry : page.directory.entries) {
    JsonObject one;
    one.add("tag", entry.tag).add("name", tagName(entry.tag)).add("type", typeName(entry.type));
    one.add("count", entry.count);
    if (entry.type == 2) {
      one.add("text", entry.text);
    } else {
      one.addJson("values", valuesOf(entry));
    }
    entries.addJson(one.json());
  }
  json.addJson("entries", entries.json());
  json.addJson("faults", jsonTexts(page.directory.faults));
  json.add("decodes", page.decoded);
}

}  // namespace

Inspection inspect(const std::string &path) {
  const Input input(path);
  const std::span<const uint8_t> file = input.bytes();
  Inspection seen;
  seen.name = path;
  seen.bytes = file.size();
  const std::vector<uint64_t> places = directoryPlaces(file);
  const size_t count = std::max(places.size(), size_t{1});
  seen.pages.resize(count);
  std::vector<InspectedPage *> decoded;
  for (size_t i = 0; i < count; ++i) {
    InspectedPage &page = seen.pages[i];
    page.directory = readDirectory(file, i == 0 ? 0 : static_cast<uint32_t>(places[i]));
    if (!page.directory.entries.empty()) decoded.push_back(&page);
  }
  decodeAll(file, decoded);
  for (size_t i = 0; i < count; ++i) {
    checkNumber(i, count, seen.pages[i].directory);
    if (!seen.pages[i].decoded) seen.exit = kNoInput;
  }
  return seen;
}

std::string meaning(const DirectoryEntry &entry) {
  struct Word {
    uint16_t tag;
    double value;
    const char *text;
  };
  static constexpr Word kWords[] = {
      {254, 2, "a page of several"},
      {259, RAXEL_TIFF_UNCOMPRESSED, "none"},
      {259, RAXEL_TIFF_HUFFMAN, "Huffman"},
      {259, RAXEL_TIFF_T4, "T.4"},
      {259, RAXEL_TIFF_T6, "T.6"},
      {259, RAXEL_TIFF_LZW, "LZW"},
      {259, RAXEL_TIFF_PACKBITS, "PackBits"},
      {262, 0, "white is 0"},
      {262, 1, "black is 0"},
      {262, 2, "RGB"},
      {262, 3, "a colour map"},
      {296, 2, "inches"},
      {296, 3, "centimetres"},
      {317, 2, "rows are differences"},
  };
  for (const Word &word : kWords) {
    if (!entry.values.empty() && word.tag == entry.tag && word.value == entry.values.front())
      return word.text;
  }
  return "";
}

std::string toJson(const Inspection &seen) {
  JsonObject json;
  json.add("input", seen.name).add("exit", seen.exit).add("bytes", seen.bytes);
  json.add("littleEndian", seen.pages.front().directory.littleEndian);
  addPage(seen.pages.front(), json);
  JsonArray further;
  for (size_t i = 1; i < seen.pages.size(); ++i) {
    JsonObject page;
    addPage(seen.pages[i], page);
    further.addJson(page.json());
  }
  if (seen.pages.size() > 1) json.addJson("furtherPages", further.json());
  return json.json();
}

}  // namespace host
