// SPDX-License-Identifier: MIT
// Modes and compressions with their other names, palettes, presets.
#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "command/help.h"
#include "order/palettes.h"
#include "order/presets.h"
#include "raxel/host.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;

struct Named {
  const char *(*name)(int);
  const char *(*alias)(int, int);
  const char *const *about;
  int count;
};

constexpr const char *kModeTexts[] = {
    "1 bit, black and white",
    "4 bits, 16 grey levels",
    "8 bits, 256 grey levels",
    "4 bits, the eight corners of the colour cube",
    "4 bits, 16 colours of the picture's own, or those of --palette",
    "8 bits, 256 colours of the picture's own, or those of --palette",
    "24 bits, red, green and blue",
};
static_assert(std::size(kModeTexts) == RAXEL_MODES);

constexpr const char *kCompressionTexts[] = {
    "no compression, one strip",
    "runs of bytes",
    "CCITT modified Huffman, bilevel only",
    "dictionary of strings",
    "CCITT Group 3, bilevel only",
    "CCITT Group 4, bilevel only, in strips or tiles",
};
static_assert(std::size(kCompressionTexts) == RAXEL_COMPRESSIONS);

constexpr Named kModes{raxelHostModeName, raxelHostModeAlias, kModeTexts, RAXEL_MODES};
constexpr Named kCompressions{raxelHostCompressionName, raxelHostCompressionAlias, kCompressionTexts,
                              RAXEL_COMPRESSIONS};

std::string text(const Named &list) {
  std::string out;
  for (int i = 0; i < list.count; ++i) {
    std::string line = std::string("  ") + list.name(i);
    line.resize(13, ' ');
    out += line + list.about[i];
    for (int n = 0; const char *alias = list.alias(i, n); ++n)
      out += std::string(n == 0 ? "; also " : ", ") + alias;
    out += '\n';
  }
  return out;
}

Json json(const Named &list) {
  Json all = Json::array();
  for (int i = 0; i < list.count; ++i) {
    Json aliases = Json::array();
    for (int n = 0; const char *alias = list.alias(i, n); ++n) aliases.push_back(alias);
    all.push_back({{"name", list.name(i)}, {"about", list.about[i]}, {"otherNames", aliases}});
  }
  return all;
}

// The options as they are written on a command line.
std::string dashed(const Preset &preset) {
  std::istringstream words{std::string(preset.options)};
  std::string out;
  for (std::string word; words >> word;) {
    std::ranges::replace(word, '=', ' ');
    out += (out.empty() ? "--" : " --") + word;
  }
  return out;
}

std::string presetText() {
  std::string out;
  for (const Preset &preset : kPresets) {
    std::string line = "  " + std::string(preset.name);
    line.resize(17, ' ');
    out += line + std::string(preset.about) + ":\n" + std::string(17, ' ') + dashed(preset) + '\n';
  }
  return out;
}

Json presetJson() {
  Json all = Json::array();
  for (const Preset &preset : kPresets)
    all.push_back({{"name", preset.name}, {"about", preset.about}, {"options", dashed(preset)}});
  return all;
}

std::string paletteText() {
  std::string out;
  for (const NamedPalette &palette : kPalettes) {
    std::string line = "  " + std::string(palette.name);
    line.resize(13, ' ');
    out += line + std::string(palette.about) + '\n';
  }
  return out;
}

Json paletteJson() {
  Json all = Json::array();
  for (const NamedPalette &palette : kPalettes)
    all.push_back({{"name", palette.name}, {"about", palette.about}, {"colors", palette.colors.size()}});
  return all;
}

}  // namespace

std::string listText() {
  return "Modes:\n" + text(kModes) + "\nCompressions:\n" + text(kCompressions) + "\nPalettes:\n" +
         paletteText() + "\nPresets:\n" + presetText();
}

std::string listJson() {
  return Json{{"command", "list"},         {"exit", 0},
              {"modes", json(kModes)},     {"compressions", json(kCompressions)},
              {"palettes", paletteJson()}, {"presets", presetJson()}}
             .dump() +
         "\n";
}

}  // namespace host
