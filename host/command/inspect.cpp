// SPDX-License-Identifier: MIT
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

void print(const InspectedPage &page) {
  const Directory &d = page.directory;
  std::printf("Directory at %u, %zu entries:\n", d.offset, d.entries.size());
  for (const DirectoryEntry &entry : d.entries) {
    const std::string word = meaning(entry);
    std::printf("  %5u  %-20s %-9s %5u  %s%s\n", entry.tag, tagName(entry.tag).c_str(),
                typeName(entry.type).c_str(), entry.count, valuesText(entry).c_str(),
                word.empty() ? "" : (" (" + word + ")").c_str());
  }
  printPieces(d);
  std::printf("%s\n", d.faults.empty() ? "No faults." : "Faults:");
  for (const std::string &fault : d.faults) std::printf("  %s\n", fault.c_str());
  std::printf("The pixels %s.\n", page.decoded ? "decode" : "do not decode");
}

void print(const Inspection &seen) {
  const Directory &first = seen.pages.front().directory;
  if (first.entries.empty()) {
    for (const std::string &fault : first.faults) say(seen.name + ": " + fault);
    return;
  }
  const size_t count = seen.pages.size();
  std::printf("%s: %llu bytes, %s-endian%s\n", printable(seen.name).c_str(),
              static_cast<unsigned long long>(seen.bytes), first.littleEndian ? "little" : "big",
              count > 1 ? (", " + std::to_string(count) + " pages").c_str() : "");
  for (size_t i = 0; i < count; ++i) {
    if (count > 1) std::printf("Page %zu:\n", i + 1);
    print(seen.pages[i]);
  }
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
      seen.pages.front().directory.faults.emplace_back(failure.what());
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
