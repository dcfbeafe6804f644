// SPDX-License-Identifier: MIT
// What an export is asked for, by options that have names.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "failure.h"
#include "order/option_table.h"
#include "order/shard.h"
#include "output/target.h"
#include "pictures/page_range.h"
#include "raxel/host.h"

namespace host {

enum class Command { kExport, kInspect, kList, kVersion, kHelp };

// How a picture gets into a box: at its proportions, at the box's, or at its own with white around it.
enum Fit { kFitContain, kFitExact, kFitPad };

enum Paper { kPaperA4, kPaperLetter };

enum class Via { kCell, kDriver, kMetafile };

// A box to fit the picture into; 0 leaves a side open.
struct SizeBox {
  double x = 0, y = 0;
  bool pixels = false;  // else inches
};

// An escape to send: the number, and the value as it was written.
struct SetEscape {
  int32_t number;
  std::string value;
};

// An option as it was written.
struct GivenOption {
  std::string name;
  bool hasValue;
  std::string value;
};

struct Options {
  Command command = Command::kExport;
  std::string preset;        // its name
  std::set<OptionId> given;  // what is set by itself, and not by the preset
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;  // one for each input
  std::string output;                // the one that -o names
  std::string directory;             // where they lie, with -d
  unsigned jobs = 1;
  unsigned threads = 0;               // 0: as many as there are cores
  bool pages = false;                 // all pages go into one file
  std::vector<PageRange> pageRanges;  // the chosen ones; none for all, or without `pages` the first
  TargetRules rules;
  std::string manifest;  // empty for none
  bool resume = false;
  std::optional<Shard> shard;
  std::vector<GivenOption> written;  // those that decide on the bytes of a file

  // Empty where the command line says nothing: the profile or the picture decides then.
  std::optional<int> mode;  // RaxelMode
  bool autoMode = false;    // --mode auto
  std::optional<int> compression;
  bool autoCompression = false;  // --compress auto
  std::optional<std::array<double, 2>> dpi;
  std::optional<SizeBox> size;
  std::optional<int> fit;    // Fit
  std::optional<int> paper;  // Paper
  std::optional<int> layout;
  std::optional<int> treatment;
  int strips = RAXEL_STRIPS_QUARTERS;
  int predictor = RAXEL_PREDICTOR_AUTO;
  int dither = RAXEL_DITHER_AUTO;
  int threshold = RAXEL_THRESHOLD_NONE;
  int thresholdLevel = 0;
  int quantizer = RAXEL_QUANTIZE_BEST;
  std::string palette;  // its name, or a file's; empty for none
  std::array<uint8_t, 3> background{255, 255, 255};
  bool asIs = false;

  static constexpr const char *kKeepProfile = "keep", *kDropProfile = "drop";
  std::string icc = kKeepProfile;  // or kDropProfile, or a file's name
  // Empty where the picture's own are kept.
  std::optional<std::string> description, artist, copyright;
  std::string date;  // empty for none

  Via via = Via::kCell;
  std::string library;
  std::string profile;
  std::string section;
  bool save = false;
  std::vector<SetEscape> set;

  bool dryRun = false;
  bool verify = false;
  bool json = false;
  bool quiet = false;
  bool noSandbox = false;  // decoders work in this process
  bool verbose = false;
};

// Takes the preset's options but for those that are given.
void applyPreset(Options &options);

// Takes an option's value as it was written; flags have none. Throws a Failure with kUsage.
void setOption(const OptionRow &row, const std::string &value, Options &to);

// Refuses options that contradict each other.
void checkOptions(const Options &options);
// And pages, of which a file without `pages` holds one.
void checkPageChoice(const Options &options);

}  // namespace host
