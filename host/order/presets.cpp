// SPDX-License-Identifier: MIT
#include "order/presets.h"

#include <algorithm>
#include <sstream>

#include "order/option_table.h"
#include "order/options.h"
#include "prepare/plan.h"

namespace host {
namespace {

// These say the same thing in different ways: with one of them given a preset keeps silent about the
// others.
constexpr std::array kGreyOptions{OptionId::kDither, OptionId::kNoDither, OptionId::kThreshold};

bool isGiven(const Options &options, OptionId id) {
  const auto given = [&](OptionId one) { return options.given.contains(one); };
  const bool isGrey = std::ranges::find(kGreyOptions, id) != kGreyOptions.end();
  return given(id) || (isGrey && std::ranges::any_of(kGreyOptions, given));
}

// One strip is for fax codes, and for those of a preset that gives way to others it is not asked.
bool isForOtherCodes(const Options &options, OptionId id) {
  const bool noFax = options.compression && !prepare::isFax(*options.compression);
  return id == OptionId::kStrips && (noFax || options.layout == RAXEL_LAYOUT_TILES);
}

}  // namespace

const Preset &findPreset(const std::string &name) {
  const auto *preset = std::ranges::find(kPresets, name, &Preset::name);
  if (preset == kPresets.end()) throw Failure(kUsage, "--preset " + name + ": there is none; see --list");
  return *preset;
}

void applyPreset(Options &options) {
  if (options.preset.empty()) return;
  std::istringstream words{std::string(findPreset(options.preset).options)};
  for (std::string word; words >> word;) {
    const size_t equals = word.find('=');
    const auto *row = std::ranges::find(kOptions, word.substr(0, equals), &OptionRow::longName);
    if (row == kOptions.end() || isGiven(options, row->id) || isForOtherCodes(options, row->id)) continue;
    setOption(*row, equals == std::string::npos ? "" : word.substr(equals + 1), options);
    options.given.erase(row->id);
  }
}

}  // namespace host
