// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <ctime>
#include <map>
#include <sstream>

#include "order/color_names.h"
#include "order/manifest.h"
#include "order/option_table.h"
#include "order/options.h"
#include "order/presets.h"
#include "order/shard.h"

namespace host {
namespace {

[[noreturn]] void fail(const std::string &what) {
  throw Failure(kUsage, what);
}

[[noreturn]] void failValue(std::string_view option, const std::string &value, const std::string &hint) {
  fail("--" + std::string(option) + " " + value + ": " + hint);
}

// The whole text as a number, or nothing.
template <class Number>
std::optional<Number> parse(std::string_view text) {
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// Words are known in capitals, too.
std::string lower(std::string word) {
  for (char &c : word) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return word;
}

// The position of a word in a list of choices; -1 when it is none of them.
int choiceOf(std::string_view choices, std::string_view word) {
  std::istringstream list{std::string(choices)};
  std::string choice;
  for (int i = 0; list >> choice; ++i) {
    if (choice == word) return i;
  }
  return -1;
}

int chosen(const OptionRow &row, const std::string &value) {
  const int index = choiceOf(row.choices, lower(value));
  if (index < 0) failValue(row.longName, value, "is none of " + std::string(row.choices));
  return index;
}

std::array<double, 2> parseDpi(const std::string &value) {
  const size_t x = value.find_first_of("xX");
  const auto across = parse<double>(value.substr(0, x));
  const auto down = x == std::string::npos ? across : parse<double>(value.substr(x + 1));
  const bool plain = value.find_first_not_of("0123456789.xX") == std::string::npos;
  for (const auto &dpi : {across, down}) {
    if (!plain || !dpi || !(*dpi >= 1 && *dpi <= 100000))
      failValue("dpi", value, "give 1 to 100000, as 300, 203.2 or 204x98");
  }
  return {*across, *down};
}

SizeBox parseSize(const std::string &written) {
  const std::string value = lower(written);
  static const std::map<std::string, double> units{
      {"", 1}, {"in", 1}, {"cm", 2.54}, {"mm", 25.4}, {"px", 1}};
  const size_t unitAt = value.find_first_not_of("0123456789.x");
  const std::string sides = value.substr(0, unitAt),
                    unit = unitAt == std::string::npos ? "" : value.substr(unitAt);
  const size_t x = sides.find('x');
  const auto side = [&](const std::string &text) {
    if (text.empty()) return std::optional(0.0);
    auto number = parse<double>(text);
    if (number && !(*number > 0 && *number <= 1e6)) number.reset();
    return number;
  };
  const auto across = side(sides.substr(0, x));
  const auto down = x == std::string::npos ? std::optional(0.0) : side(sides.substr(x + 1));
  if (!across || !down || (*across == 0 && *down == 0) || units.count(unit) == 0) {
    failValue("size", written, "give a box as 6x4in, 15x10cm, 800x600px, 6x or x4");
  }
  return {*across / units.at(unit), *down / units.at(unit), unit == "px"};
}

// "#1af" is short for "#11aaff".
std::optional<uint32_t> parseHexColor(const std::string &value) {
  if ((value.size() != 4 && value.size() != 7) || value[0] != '#') return std::nullopt;
  std::string digits;
  for (size_t i = 1; i < value.size(); ++i) digits.append(value.size() == 4 ? 2 : 1, value[i]);
  uint32_t rgb = 0;
  const char *end = digits.data() + digits.size();
  const auto parsed = std::from_chars(digits.data(), end, rgb, 16);
  return parsed.ec == std::errc() && parsed.ptr == end ? std::optional(rgb) : std::nullopt;
}

std::array<uint8_t, 3> parseColor(const std::string &value) {
  const auto *name =
      std::ranges::find(kColorNames, lower(value), &decltype(kColorNames)::value_type::first);
  const std::optional<uint32_t> rgb =
      name != kColorNames.end() ? std::optional(name->second) : parseHexColor(value);
  if (!rgb) failValue("background", value, "give #RGB, #RRGGBB or one of HTML's sixteen names, as white");
  return {static_cast<uint8_t>(*rgb >> 16), static_cast<uint8_t>(*rgb >> 8), static_cast<uint8_t>(*rgb)};
}

// True for a day that there is and a time of it, in the format's own form.
bool isDate(const std::string &text) {
  const auto at = [&](size_t place, size_t digits) { return std::stoi(text.substr(place, digits)); };
  return (std::chrono::year(at(0, 4)) / at(5, 2) / at(8, 2)).ok() && at(11, 2) < 24 && at(14, 2) < 60 &&
         at(17, 2) < 60;
}

// The format's own form; for now in local time.
std::string parseDate(const std::string &value) {
  if (lower(value) == "now") {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y:%m:%d %H:%M:%S", &local)};
  }
  constexpr std::string_view kForm = "0000:00:00 00:00:00";
  bool fits = value.size() == kForm.size();
  for (size_t i = 0; fits && i < kForm.size(); ++i)
    fits = kForm[i] == '0' ? value[i] >= '0' && value[i] <= '9' : value[i] == kForm[i];
  if (!fits || !isDate(value))
    failValue("date", value, "give now, or a date and time as 2026:01:31 23:59:59");
  return value;
}

// As "3,1-2,7-".
std::vector<PageRange> parsePages(const std::string &value) {
  constexpr uint32_t kMost = 65535;
  std::vector<PageRange> ranges;
  std::istringstream list(value + ",");
  for (std::string text; std::getline(list, text, ',');) {
    const size_t dash = text.find('-');
    const auto first = parse<uint32_t>(text.substr(0, dash));
    auto last = dash == std::string::npos ? first : parse<uint32_t>(text.substr(dash + 1));
    if (dash != std::string::npos && dash + 1 == text.size()) last = 0;
    if (!first || !last || *first < 1 || *first > kMost || *last > kMost || (*last != 0 && *last < *first))
      failValue("page", value, "give numbers from 1 on, as 3, 1,4-6 or 2-");
    ranges.push_back({*first, *last});
  }
  return ranges;
}

SetEscape parseSet(const std::string &value) {
  const size_t equals = value.find('=');
  const auto number = parse<int32_t>(value.substr(0, equals));
  if (equals == std::string::npos || !number)
    failValue("set", value, "give an escape's number and value, as 10=153");
  return {*number, value.substr(equals + 1)};
}

// A level, or how to find one.
void setThreshold(const std::string &value, Options &o) {
  const std::string word = lower(value);
  const auto level = parse<int>(word);
  if (word == "auto") {
    o.threshold = RAXEL_THRESHOLD_OTSU;
  } else if (word == "adaptive") {
    o.threshold = RAXEL_THRESHOLD_ADAPTIVE;
  } else if (level && *level >= 0 && *level <= 255) {
    o.threshold = RAXEL_THRESHOLD_LEVEL;
    o.thresholdLevel = *level;
  } else {
    failValue("threshold", value, "give a level from 0 to 255, auto or adaptive");
  }
}

int named(const OptionRow &row, const std::string &value, int (*find)(const char *)) {
  const int found = find(value.c_str());
  if (found < 0) failValue(row.longName, value, "is none of " + std::string(row.choices) + "; see --list");
  return found;
}

// An empty name is most often a shell variable that was never set. Taken as "not given", it would make
// another file the output.
void checkName(const OptionRow &row, const std::string &value) {
  const bool name = row.completes == Completes::kFile || row.completes == Completes::kFolder ||
                    row.completes == Completes::kChoicesOrFile;
  if (!name && row.id != OptionId::kSection) return;
  if (value.empty()) fail("--" + std::string(row.longName) + ": the name is empty");
}

bool filterTakes(double dpi) {
  return dpi >= 32 && dpi <= 400 && dpi == std::floor(dpi);
}

}  // namespace

void setOption(const OptionRow &row, const std::string &value, Options &o) {
  if (decidesOnBytes(row)) o.written.push_back({std::string(row.longName), !row.argument.empty(), value});
  checkName(row, value);
  o.given.insert(row.id);
  switch (row.id) {
    case OptionId::kOutput:
      o.output = value;
      return;
    case OptionId::kDirectory:
      o.directory = value;
      return;
    case OptionId::kJobs:
    case OptionId::kThreads: {
      const auto number = parse<unsigned>(value);
      if (!number || *number < 1 || *number > 256) failValue(row.longName, value, "give 1 to 256");
      (row.id == OptionId::kJobs ? o.jobs : o.threads) = *number;
      return;
    }
    case OptionId::kPages:
      o.pages = true;
      return;
    case OptionId::kPage:
      o.pageRanges = parsePages(value);
      return;
    case OptionId::kForce:
      o.rules.force = true;
      return;
    case OptionId::kNoClobber:
      o.rules.noClobber = true;
      return;
    case OptionId::kNoSync:
      o.rules.noSync = true;
      return;
    case OptionId::kPreset:
      o.preset = findPreset(value).name;
      return;
    case OptionId::kManifest:
      o.manifest = value;
      return;
    case OptionId::kResume:
      o.resume = true;
      return;
    case OptionId::kShard:
      o.shard = parseShard(value);
      return;
    case OptionId::kMode:
      o.autoMode = lower(value) == "auto";
      o.mode = o.autoMode ? std::nullopt : std::optional(named(row, value, raxelHostFindMode));
      return;
    case OptionId::kCompress:
      o.autoCompression = lower(value) == "auto";
      o.compression =
          o.autoCompression ? std::nullopt : std::optional(named(row, value, raxelHostFindCompression));
      return;
    case OptionId::kDpi:
      o.dpi = parseDpi(value);
      return;
    case OptionId::kSize:
      o.size = parseSize(value);
      return;
    case OptionId::kFit:
      o.fit = chosen(row, value);
      return;
    case OptionId::kPaper:
      o.paper = chosen(row, value);
      return;
    case OptionId::kLayout:
      o.layout = chosen(row, value);
      return;
    case OptionId::kStrips:
      o.strips = chosen(row, value);
      return;
    case OptionId::kPredictor:
      o.predictor = chosen(row, value);
      return;
    case OptionId::kDither:
      o.dither = RAXEL_DITHER_ON;
      return;
    case OptionId::kNoDither:
      o.dither = RAXEL_DITHER_OFF;
      return;
    case OptionId::kThreshold:
      setThreshold(value, o);
      return;
    case OptionId::kTreatment:
      o.treatment = chosen(row, value);
      return;
    case OptionId::kQuantizer:
      o.quantizer = chosen(row, value);
      return;
    case OptionId::kPalette:
      o.palette = value;
      return;
    case OptionId::kBackground:
      o.background = parseColor(value);
      return;
    case OptionId::kAsIs:
      o.asIs = true;
      return;
    case OptionId::kIcc:
      o.icc = value;
      return;
    case OptionId::kDescription:
      o.description = value;
      return;
    case OptionId::kArtist:
      o.artist = value;
      return;
    case OptionId::kCopyright:
      o.copyright = value;
      return;
    case OptionId::kDate:
      o.date = parseDate(value);
      return;
    case OptionId::kVia:
      o.via = static_cast<Via>(chosen(row, value));
      return;
    case OptionId::kLibrary:
      o.library = value;
      return;
    case OptionId::kProfile:
      o.profile = value;
      return;
    case OptionId::kSection:
      o.section = value;
      return;
    case OptionId::kNoSandbox:
      o.noSandbox = true;
      return;
    case OptionId::kSave:
      o.save = true;
      return;
    case OptionId::kSet:
      o.set.push_back(parseSet(value));
      return;
    case OptionId::kDryRun:
      o.dryRun = true;
      return;
    case OptionId::kVerify:
      o.verify = true;
      return;
    case OptionId::kInspect:
      o.command = Command::kInspect;
      return;
    case OptionId::kList:
      o.command = Command::kList;
      return;
    case OptionId::kJson:
      o.json = true;
      return;
    case OptionId::kQuiet:
      o.quiet = true;
      return;
    case OptionId::kVerbose:
      o.verbose = true;
      return;
    case OptionId::kVersion:
      o.command = Command::kVersion;
      return;
  }
}

void checkOptions(const Options &o) {
  if (o.save && o.profile.empty()) fail("--save needs --profile");
  if (!o.section.empty() && o.profile.empty()) fail("--section needs --profile");
  if (o.resume && o.manifest.empty()) fail("--resume needs --manifest");
  if (o.quiet && o.verbose) fail("--quiet and --verbose exclude each other");
  if (o.rules.force && o.rules.noClobber) fail("--force and --no-clobber exclude each other");
  if (o.asIs && (o.size || o.verify)) fail("--as-is leaves all to the filter: no --size and no --verify");
  if (o.asIs && o.pages) fail("--as-is leaves all to the filter, which writes one picture: no --pages");
  if (o.asIs && (o.fit || o.paper)) fail("--as-is leaves all to the filter: no --fit and no --paper");
  if (o.asIs && !o.palette.empty()) fail("--as-is leaves all to the filter: no --palette");
  if (o.asIs && o.autoCompression) fail("--as-is leaves all to the filter: no --compress auto");
  if (o.fit && !o.size && !o.paper) fail("--fit needs --size or --paper");
  if (o.asIs && o.via != Via::kCell) fail("--as-is goes by --via cell");
  if (o.asIs && o.strips != RAXEL_STRIPS_QUARTERS) fail("--as-is leaves all to the filter: no --strips");
  if (o.threshold != RAXEL_THRESHOLD_NONE && o.dither == RAXEL_DITHER_ON)
    fail("--threshold and --dither exclude each other");
  if (o.asIs && o.threshold != RAXEL_THRESHOLD_NONE)
    fail("--as-is leaves all to the filter: no --threshold");
  const bool describes =
      o.icc != Options::kKeepProfile || o.description || o.artist || o.copyright || !o.date.empty();
  if (o.asIs && (describes || o.predictor != RAXEL_PREDICTOR_AUTO))
    fail("--as-is leaves all to the filter: no --predictor, --icc, --date and texts");
  if (o.strips != RAXEL_STRIPS_QUARTERS && o.via != Via::kCell) fail("--strips one goes by --via cell");
  for (const double dpi : o.dpi.value_or(std::array<double, 2>{96, 96})) {
    if ((o.asIs || o.save) && !filterTakes(dpi))
      fail("--dpi: the filter itself takes whole numbers from 32 to 400, and so do --as-is and --save");
  }
}

void checkPageChoice(const Options &o) {
  const std::vector<PageRange> &ranges = o.pageRanges;
  if (!o.pages && (ranges.size() > 1 || (ranges.size() == 1 && ranges[0].first != ranges[0].last)))
    fail("--page names several pages: give --pages for one file, or -d DIR for a file a page");
}

}  // namespace host
