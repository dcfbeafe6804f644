// SPDX-License-Identifier: MIT
#include "filter/given.h"

#include <charconv>

#include "failure.h"

namespace host {
namespace {

constexpr int32_t kQuestions[] = {RAXEL_ESCAPE_GET_RESOLUTION, RAXEL_ESCAPE_GET_SIZE,
                                  RAXEL_ESCAPE_GET_USER_DATA, RAXEL_ESCAPE_GET_RASTER_INFO,
                                  RAXEL_ESCAPE_GET_COLOR_MODE};

[[noreturn]] void failSet(const SetEscape &escape, const std::string &why) {
  throw Failure(kUsage, "--set " + std::to_string(escape.number) + "=" + escape.value + ": " + why);
}

// The section that is to be made, if any.
std::optional<NewSection> sectionToMake(const Library &library, const Options &options) {
  if (options.profile.empty()) return std::nullopt;
  const Setup trial(library, options.profile, options.section);
  const RasterSetup &record = trial.record();
  if (record.szProfilePath[0] == '\0') {
    throw Failure(kNoInput, options.profile +
                                ": no profile of this name can be read (INIDIR is looked through first)");
  }
  if (record.szDriverName[0] != '\0') return std::nullopt;
  if (!options.save || record.szModeName[0] == '\0') {
    throw Failure(kNoInput, options.profile + ": section [" + record.szModeName +
                                "] has no value for \"Driver\"; choose one with --section, or make one " +
                                "with --section and --save");
  }
  return NewSection{record.szProfilePath, record.szModeName};
}

}  // namespace

Given::Given(const Library &library, const Options &options)
    : newSection(sectionToMake(library, options)),
      setup(library, newSection ? kNoProfile : options.profile, newSection ? "" : options.section) {
  for (const SetEscape &escape : options.set) sendEscape(setup, escape, false);
}

// Widths and heights are doubles, user data is the value itself (up to an unsigned word), and all else is a
// whole number.
void sendEscape(Setup &setup, const SetEscape &escape, bool save) {
  const char *first = escape.value.data(), *end = first + escape.value.size();
  const bool real = escape.number == RAXEL_ESCAPE_SET_WIDTH || escape.number == RAXEL_ESCAPE_SET_HEIGHT;
  int64_t given = 0;
  double number = 0;
  const auto parsed = real ? std::from_chars(first, end, number) : std::from_chars(first, end, given);
  if (parsed.ec != std::errc() || parsed.ptr != end) failSet(escape, "is not a number");
  const bool userData = escape.number == RAXEL_ESCAPE_SET_USER_DATA;
  if (given < INT32_MIN || given > (userData ? int64_t{UINT32_MAX} : int64_t{INT32_MAX}))
    failSet(escape, "is beyond the numbers that it takes");
  if (escape.number == RAXEL_ESCAPE_SET_OUTPUT_PROC)
    failSet(escape, "takes an address, which a command line cannot give");
  for (int32_t question : kQuestions) {
    if (escape.number == question) failSet(escape, "this escape answers a question and sets nothing");
  }
  const auto whole = static_cast<int32_t>(given);
  const void *value = real ? static_cast<const void *>(&number) : &whole;
  if (userData)
    value = reinterpret_cast<const void *>(static_cast<uintptr_t>(static_cast<intptr_t>(given)));
  const int32_t result = setup.tryEscape(escape.number, real ? 8 : 4, value, save && !userData);
  if (result == RAXEL_ESCAPE_UNKNOWN) failSet(escape, "there is no such escape");
  if (result != RAXEL_ESCAPE_DONE) failSet(escape, "the library refuses this value");
}

void sendSize(Setup &setup, const SizeBox &box, bool save) {
  if (box.x > 0) setup.set(RAXEL_ESCAPE_SET_WIDTH, box.x, save);
  if (box.y > 0) setup.set(RAXEL_ESCAPE_SET_HEIGHT, box.y, save);
}

void sendGiven(Setup &setup, const Options &options, bool save) {
  // The setup has them already, and only the profile has not.
  if (save) {
    for (const SetEscape &escape : options.set) sendEscape(setup, escape, true);
  }
  if (options.treatment)
    setup.set(RAXEL_ESCAPE_SET_COLOR_MODE, RAXEL_ASK_COLORS + *options.treatment, save);
  if (options.mode) setup.set(RAXEL_ESCAPE_SET_BITMAP_MODE, RAXEL_ASK_MODE_BILEVEL + *options.mode, save);
  if (options.compression)
    setup.set(RAXEL_ESCAPE_SET_COMPRESSION, raxelHostCompressionValue(*options.compression), save);
  if (options.dpi) {
    setup.set(RAXEL_ESCAPE_SET_RESOLUTION_MODE, RAXEL_ASK_RESOLUTION_USER);
    setup.set(RAXEL_ESCAPE_SET_X_RESOLUTION, static_cast<int32_t>((*options.dpi)[0]), save);
    setup.set(RAXEL_ESCAPE_SET_Y_RESOLUTION, static_cast<int32_t>((*options.dpi)[1]), save);
  }
  if (options.size && !options.size->pixels) sendSize(setup, *options.size, save);
  if (options.layout) setup.setLayout(*options.layout);
}

}  // namespace host
