#include "check/inspect.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "check/directory.h"
#include "check/libtiff.h"
#include "pictures/input.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;

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

}  // namespace

Inspection inspect(const std::string &path) {
  const Input input(path);
  Inspection seen;
  seen.name = path;
  seen.bytes = input.bytes().size();
  seen.directory = readDirectory(input.bytes());
  if (!seen.directory.entries.empty()) decode(input.bytes(), seen);
  if (!seen.decoded) seen.exit = kNoInput;
  return seen;
}

std::string toJson(const Inspection &seen) {
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
  const Json json{{"input", seen.name},     {"exit", seen.exit},
                  {"bytes", seen.bytes},    {"littleEndian", seen.directory.littleEndian},
                  {"entries", entries},     {"faults", seen.directory.faults},
                  {"decodes", seen.decoded}};
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace host
