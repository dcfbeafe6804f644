#include "check/inspect.h"

#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "check/directory.h"
#include "check/libtiff.h"
#include "command/report.h"
#include "pictures/input.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;

struct Inspection {
  std::string name;
  Exit exit = kDone;
  uint64_t bytes = 0;
  Directory directory;
  bool decoded = false;  // every row could be decoded
};

std::string numberText(double value) {
  char text[40];
  std::snprintf(text, sizeof text, value == std::floor(value) ? "%.0f" : "%g", value);
  return text;
}

// Has libtiff decode every row, and adds what it says to the faults.
void decode(std::span<const uint8_t> file, Inspection &to) {
  constexpr uint64_t kLargestRow = uint64_t{1} << 30;
  TiffReader reader(file);
  bool whole = reader.isOpen() && reader.rowBytes() > 0 && reader.rowBytes() <= kLargestRow;
  if (whole) {
    std::vector<uint8_t> row(static_cast<size_t>(reader.rowBytes()));
    const uint32_t rows = reader.number(TIFFTAG_IMAGELENGTH, true, 0);
    for (uint32_t y = 0; whole && y < rows; ++y) whole = reader.readRow(y, row.data());
  }
  for (const std::string &text : reader.warnings()) to.directory.faults.push_back("libtiff warns: " + text);
  for (const std::string &text : reader.errors()) to.directory.faults.push_back("libtiff fails: " + text);
  to.decoded = whole;
}

std::string valuesText(const DirectoryEntry &entry) {
  if (entry.type == 2) return '"' + entry.text + '"';
  std::string text;
  constexpr size_t kShown = 6;
  for (size_t i = 0; i < std::min(entry.values.size(), kShown); ++i)
    text += (i ? " " : "") + numberText(entry.values[i]);
  return entry.count > kShown ? text + " ..." : text;
}

void printPieces(const Directory &directory) {
  const bool tiles = directory.find(324) != nullptr;
  const DirectoryEntry *offsets = directory.find(tiles ? 324 : 273),
                       *counts = directory.find(tiles ? 325 : 279);
  if (!offsets || !counts) return;
  std::printf("%s:\n", tiles ? "Tiles" : "Strips");
  for (size_t i = 0; i < std::min(offsets->values.size(), counts->values.size()); ++i) {
    std::printf("  %5zu  at %-10s %10s bytes\n", i + 1, numberText(offsets->values[i]).c_str(),
                numberText(counts->values[i]).c_str());
  }
}

void print(const Inspection &seen) {
  const Directory &d = seen.directory;
  if (d.entries.empty()) {
    for (const std::string &fault : d.faults) say(seen.name + ": " + fault);
    return;
  }
  std::printf("%s: %llu bytes, %s-endian\n", printable(seen.name).c_str(),
              static_cast<unsigned long long>(seen.bytes), d.littleEndian ? "little" : "big");
  std::printf("Directory at %u, %zu entries:\n", d.offset, d.entries.size());
  for (const DirectoryEntry &entry : d.entries) {
    std::printf("  %5u  %-20s %-9s %5u  %s\n", entry.tag, tagName(entry.tag).c_str(),
                typeName(entry.type).c_str(), entry.count, valuesText(entry).c_str());
  }
  printPieces(d);
  std::printf("%s\n", d.faults.empty() ? "No faults." : "Faults:");
  for (const std::string &fault : d.faults) std::printf("  %s\n", fault.c_str());
  std::printf("The pixels %s.\n", seen.decoded ? "decode" : "do not decode");
}

Json jsonOf(const Inspection &seen) {
  Json entries = Json::array();
  for (const DirectoryEntry &entry : seen.directory.entries) {
    Json json{{"tag", entry.tag},
              {"name", tagName(entry.tag)},
              {"type", typeName(entry.type)},
              {"count", entry.count}};
    if (entry.type == 2) {
      json["text"] = entry.text;
    } else {
      // Whole numbers are shown as such.
      json["values"] = Json::array();
      for (double value : entry.values) {
        const bool whole = value == std::floor(value);
        json["values"].push_back(whole ? Json(static_cast<int64_t>(value)) : Json(value));
      }
    }
    entries.push_back(json);
  }
  return {{"input", seen.name},     {"exit", seen.exit},
          {"bytes", seen.bytes},    {"littleEndian", seen.directory.littleEndian},
          {"entries", entries},     {"faults", seen.directory.faults},
          {"decodes", seen.decoded}};
}

}  // namespace

int inspectAll(const Options &options) {
  Json results = Json::array();
  Exit exit = kDone;
  for (const std::string &path : options.inputs) {
    Inspection seen;
    seen.name = path;
    try {
      const Input input(path);
      seen.bytes = input.bytes().size();
      seen.directory = readDirectory(input.bytes());
      if (!seen.directory.entries.empty()) decode(input.bytes(), seen);
      if (!seen.decoded) seen.exit = kNoInput;
      if (!options.json) print(seen);
    } catch (const Failure &failure) {
      seen.exit = failure.code();
      seen.directory.faults.push_back(failure.what());
      say(failure.what());
    }
    if (exit == kDone) exit = seen.exit;
    if (options.json) results.push_back(jsonOf(seen));
  }
  if (options.json) {
    const Json document{{"command", "inspect"}, {"exit", exit}, {"results", results}};
    std::printf("%s\n", document.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
  }
  return exit;
}

}  // namespace host
