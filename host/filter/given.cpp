#include "filter/given.h"

#include <charconv>

#include "failure.h"

namespace host {
namespace {

constexpr int32_t kQuestions[] = {16, 17, 26, kGeometry, 57};

// Input values count treatments from 101 on, and modes from 140 on.
constexpr int32_t kFirstTreatment = 101, kFirstMode = 140;

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
  const bool real = escape.number == kWidth || escape.number == kHeight;
  int64_t given = 0;
  double number = 0;
  const auto parsed = real ? std::from_chars(first, end, number) : std::from_chars(first, end, given);
  if (parsed.ec != std::errc() || parsed.ptr != end) failSet(escape, "is not a number");
  const bool userData = escape.number == kUserData;
  if (given < INT32_MIN || given > (userData ? int64_t{UINT32_MAX} : int64_t{INT32_MAX}))
    failSet(escape, "is beyond the numbers that it takes");
  if (escape.number == kOutputProcedure)
    failSet(escape, "takes an address, which a command line cannot give");
  for (int32_t question : kQuestions) {
    if (escape.number == question) failSet(escape, "this escape answers a question and sets nothing");
  }
  const auto whole = static_cast<int32_t>(given);
  const void *value = real ? static_cast<const void *>(&number) : &whole;
  if (userData)
    value = reinterpret_cast<const void *>(static_cast<uintptr_t>(static_cast<intptr_t>(given)));
  const int32_t result = setup.tryEscape(escape.number, real ? 8 : 4, value, save && !userData);
  if (result == 0) failSet(escape, "there is no such escape");
  if (result < 0) failSet(escape, "the library refuses this value");
}

void sendSize(Setup &setup, const SizeBox &box, bool save) {
  if (box.x > 0) setup.set(kWidth, box.x, save);
  if (box.y > 0) setup.set(kHeight, box.y, save);
}

void sendGiven(Setup &setup, const Options &options, bool save) {
  // The setup has them already, and only the profile has not.
  if (save) {
    for (const SetEscape &escape : options.set) sendEscape(setup, escape, true);
  }
  if (options.treatment) setup.set(kColorTreatment, kFirstTreatment + *options.treatment, save);
  if (options.mode) setup.set(kMode, kFirstMode + *options.mode, save);
  if (options.compression) setup.set(kCompression, raxelHostCompressionValue(*options.compression), save);
  if (options.dpi) {
    setup.set(kResolutionMode, RAXEL_ESCAPE_USER_RESOLUTION);
    setup.set(kResolutionX, static_cast<int32_t>((*options.dpi)[0]), save);
    setup.set(kResolutionY, static_cast<int32_t>((*options.dpi)[1]), save);
  }
  if (options.size && !options.size->pixels) sendSize(setup, *options.size, save);
  if (options.layout) setup.setLayout(*options.layout);
}

}  // namespace host
