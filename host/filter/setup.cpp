#include "filter/setup.h"

#include <charconv>
#include <cstring>

#include "failure.h"
#include "output/stop.h"

namespace host {
namespace {

constexpr int32_t kQuestions[] = {16, 17, 26, kGeometry, 57};

// Input values count treatments from 101 on, and modes from 140 on.
constexpr int32_t kFirstTreatment = 101, kFirstMode = 140;

// Stored layout codes.
constexpr uint16_t kStoredTiles = 771, kStoredStrips = 772;

// Where no file can be: the library then takes its own defaults, and looks for no other profile.
constexpr const char *kNoProfile = "/dev/null/none";

[[noreturn]] void failSet(const SetEscape &escape, const std::string &why) {
  throw Failure(kUsage, "--set " + std::to_string(escape.number) + "=" + escape.value + ": " + why);
}

}  // namespace

Setup::Setup(const Library &library, const Options &options) : library_(library) {
  create(options.profile.c_str(), options.section.c_str());
  try {
    if (!options.profile.empty()) checkProfile(options);
    for (const SetEscape &escape : options.set) sendEscape(escape, false);
  } catch (...) {
    destroy();
    throw;
  }
}

Setup::~Setup() {
  destroy();
}

void Setup::create(const char *profile, const char *section) {
  handle_ = library_.createSetup(0, profile, section, nullptr);
  if (handle_ == 0) throw Failure(kLibrary, library_.path + ": cannot create a setup");
  record_ = static_cast<RasterSetup *>(library_.services.GlobalLock(handle_));
}

void Setup::destroy() {
  if (handle_ == 0) return;
  library_.services.GlobalUnlock(handle_);
  library_.destroySetup(handle_);
  handle_ = 0;
}

void Setup::checkProfile(const Options &options) {
  if (record_->szProfilePath[0] == '\0') {
    throw Failure(kNoInput, options.profile +
                                ": no profile of this name can be read (INIDIR is looked through first)");
  }
  if (record_->szDriverName[0] != '\0') return;
  if (!options.save || record_->szModeName[0] == '\0') {
    throw Failure(kNoInput, options.profile + ": section [" + record_->szModeName +
                                "] has no value for \"Driver\"; choose one with --section, or make one " +
                                "with --section and --save");
  }
  newSection_ = NewSection{record_->szProfilePath, record_->szModeName};
  destroy();
  create(kNoProfile, "");
}

void Setup::send(int32_t escape, int32_t size, const void *value, bool save) {
  // A profile being rewritten is not left half done, nor are its temporary files left behind.
  const stop::Hold hold;
  const int32_t result = library_.escapeSetup(handle_, escape, size, value, nullptr, save ? 1 : 0);
  if (result == 1) return;
  throw Failure(kLibrary, "setup escape " + std::to_string(escape) +
                              (result == 0 ? " is not handled by this library" : " refuses its value"));
}

void Setup::set(int32_t escape, int32_t value, bool save) {
  send(escape, 4, &value, save);
}
void Setup::set(int32_t escape, double value, bool save) {
  send(escape, 8, &value, save);
}

void Setup::setLayout(int32_t layout) {
  record_->tiff.wLayoutMode = layout == RAXEL_LAYOUT_TILES ? kStoredTiles : kStoredStrips;
}

void Setup::setOutput(StreamProc procedure) {
  send(kOutputProcedure, sizeof(void *), reinterpret_cast<const void *>(procedure), false);
}

void Setup::setStatus(HostWord *status) {
  record_->lpStatus = status;
}

RasterInfoResult Setup::query(const RasterPictureInfo &picture) {
  RasterInfoResult result{};
  library_.escapeSetup(handle_, kGeometry, sizeof picture, &picture, &result, 0);
  return result;
}

// Widths and heights are doubles, user data is the value itself (up to an unsigned word), and all else is a
// whole number.
void Setup::sendEscape(const SetEscape &escape, bool save) {
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
  const stop::Hold hold;
  int32_t result = 0;
  if (userData) {
    const auto value = static_cast<uintptr_t>(static_cast<intptr_t>(given));
    result = library_.escapeSetup(handle_, kUserData, 4, reinterpret_cast<const void *>(value), nullptr, 0);
  } else {
    const auto whole = static_cast<int32_t>(given);
    const void *value = real ? static_cast<const void *>(&number) : &whole;
    result = library_.escapeSetup(handle_, escape.number, real ? 8 : 4, value, nullptr, save ? 1 : 0);
  }
  if (result == 0) failSet(escape, "there is no such escape");
  if (result < 0) failSet(escape, "the library refuses this value");
}

void sendPlan(Setup &setup, const RaxelPlan &plan) {
  setup.set(kColorTreatment, kFirstTreatment);  // the preparation has treated the colours
  setup.set(kMode, raxelHostModeValue(plan.mode));
  setup.set(kCompression, raxelHostCompressionValue(plan.compression));
  setup.set(kResolutionMode, RAXEL_ESCAPE_USER_RESOLUTION);
  setup.set(kResolutionX, plan.dpiX);
  setup.set(kResolutionY, plan.dpiY);
  setup.set(kSizeMode, RAXEL_ESCAPE_PICTURE_SIZE);
  setup.setLayout(plan.layout);
}

void sendSize(Setup &setup, const SizeBox &box, bool save) {
  if (box.x > 0) setup.set(kWidth, box.x, save);
  if (box.y > 0) setup.set(kHeight, box.y, save);
}

void sendGiven(Setup &setup, const Options &options, bool save) {
  // The setup has them already, and only the profile has not.
  if (save) {
    for (const SetEscape &escape : options.set) setup.sendEscape(escape, true);
  }
  if (options.treatment) setup.set(kColorTreatment, kFirstTreatment + *options.treatment, save);
  if (options.mode) setup.set(kMode, kFirstMode + *options.mode, save);
  if (options.compression) setup.set(kCompression, raxelHostCompressionValue(*options.compression), save);
  if (options.dpi) {
    setup.set(kResolutionMode, RAXEL_ESCAPE_USER_RESOLUTION);
    setup.set(kResolutionX, (*options.dpi)[0], save);
    setup.set(kResolutionY, (*options.dpi)[1], save);
  }
  if (options.size && !options.size->pixels) sendSize(setup, *options.size, save);
  if (options.layout) setup.setLayout(*options.layout);
}

}  // namespace host
