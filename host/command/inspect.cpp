#include "command/inspect.h"

#include <cmath>
#include <cstdio>

#include "check/inspect.h"
#include "command/tell.h"

namespace host {
namespace {

std::string numberText(double value) {
  char text[40];
  std::snprintf(text, sizeof text, value == std::floor(value) ? "%.0f" : "%g", value);
  return text;
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

}  // namespace

int inspectAll(const Options &options) {
  std::string results;
  Exit exit = kDone;
  for (const std::string &path : options.inputs) {
    Inspection seen;
    try {
      seen = inspect(path);
      if (!options.json) print(seen);
    } catch (const Failure &failure) {
      seen.name = path;
      seen.exit = failure.code();
      seen.directory.faults.emplace_back(failure.what());
      say(failure.what());
    }
    if (exit == kDone) exit = seen.exit;
    if (options.json) results += (results.empty() ? "" : ",") + toJson(seen);
  }
  if (options.json) {
    std::printf("{\"command\":\"inspect\",\"exit\":%d,\"results\":[%s]}\n", int{exit}, results.c_str());
  }
  return exit;
}

}  // namespace host
