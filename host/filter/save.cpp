// SPDX-License-Identifier: MIT
#include "filter/save.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>

#include "failure.h"
#include "filter/open.h"
#include "output/hold.h"

namespace host {
namespace {

// True when the command line gives what this escape sets: with an option of its own, or with --set.
bool isOption(const Options &options, RaxelEscape escape) {
  const bool inches = options.size && !options.size->pixels;
  switch (escape) {
    case RAXEL_ESCAPE_SET_COLOR_MODE:
      return options.treatment.has_value();
    case RAXEL_ESCAPE_SET_BITMAP_MODE:
      return options.mode.has_value();
    case RAXEL_ESCAPE_SET_COMPRESSION:
      return options.compression.has_value();
    case RAXEL_ESCAPE_SET_X_RESOLUTION:
    case RAXEL_ESCAPE_SET_Y_RESOLUTION:
      return options.dpi.has_value();
    case RAXEL_ESCAPE_SET_WIDTH:
      return inches && options.size->x > 0;
    case RAXEL_ESCAPE_SET_HEIGHT:
      return inches && options.size->y > 0;
    default:
      return false;
  }
}

bool gives(const Options &options, RaxelEscape escape) {
  return isOption(options, escape) ||
         std::ranges::any_of(options.set, [&](const SetEscape &set) { return set.number == escape; });
}

// Held while a profile is rewritten key by key: exports side by side would lose each other's keys. The
// profile itself is another file after every key, so its folder is what is locked; one that cannot be
// locked is done without.
class FolderLock {
 public:
  explicit FolderLock(const std::string &path) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    fd_ = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    while (fd_ >= 0 && flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
  }
  ~FolderLock() {
    if (fd_ >= 0) close(fd_);
  }
  FolderLock(const FolderLock &) = delete;
  FolderLock &operator=(const FolderLock &) = delete;

 private:
  int fd_ = -1;
};

// The profile that a setup was made from, asked for single keys.
struct Profile {
  const Library &library;
  const RasterSetup &record;

  std::string text(const char *key) const {
    char value[64] = {};
    library.readProfile(record.szModeName, key, "", value, sizeof value - 1, record.szProfilePath);
    return value;
  }

  bool holds(const char *key, int32_t value) const { return text(key) == std::to_string(value); }

  // The library stores few digits, and the width behind ".3".
  bool holdsInches(const char *key, std::string_view before, double value) const {
    const std::string stored = text(key);
    if (!stored.starts_with(before)) return false;
    double number = 0;
    const char *end = stored.data() + stored.size();
    return std::from_chars(stored.data() + before.size(), end, number).ptr == end &&
           std::abs(number - value) <= 0.01 * value;
  }
};

// The record holds the values as they were stored.
bool holdsAll(const Profile &profile, const Options &options) {
  const RasterSetup &r = profile.record;
  const auto is = [&](RaxelEscape escape, const char *key, int32_t value) {
    return !gives(options, escape) || profile.holds(key, value);
  };
  return is(RAXEL_ESCAPE_SET_COLOR_MODE, "Color Mode", r.nColorMode) &&
         is(RAXEL_ESCAPE_SET_BITMAP_MODE, "Bitmap Mode", r.nBitmapMode) &&
         is(RAXEL_ESCAPE_SET_COMPRESSION, "Compression Mode", r.nCompressionMode) &&
         is(RAXEL_ESCAPE_SET_X_RESOLUTION, "X Resolution", r.tiff.nXResolution) &&
         is(RAXEL_ESCAPE_SET_Y_RESOLUTION, "Y Resolution", r.tiff.nYResolution) &&
         (!gives(options, RAXEL_ESCAPE_SET_WIDTH) || profile.holdsInches("Width", ".3", r.dWidth)) &&
         (!gives(options, RAXEL_ESCAPE_SET_HEIGHT) || profile.holdsInches("Height", "", r.dHeight));
}

void noteAll(const Profile &profile, const Options &options, std::vector<std::string> &notes) {
  const bool resolution =
      gives(options, RAXEL_ESCAPE_SET_X_RESOLUTION) || gives(options, RAXEL_ESCAPE_SET_Y_RESOLUTION);
  const bool size = gives(options, RAXEL_ESCAPE_SET_WIDTH) || gives(options, RAXEL_ESCAPE_SET_HEIGHT);
  if (resolution && !profile.holds("Resolution Mode", RAXEL_STORED_RESOLUTION_USER))
    notes.emplace_back("the stored resolution counts only with \"Resolution Mode=310\" in the profile");
  if (size && !profile.holds("Size Mode", RAXEL_STORED_SIZE_USER))
    notes.emplace_back("the stored size counts only with \"Size Mode=603\" in the profile");
  if (gives(options, RAXEL_ESCAPE_SET_WIDTH)) {
    notes.push_back("the filter stores the width as " + profile.text("Width") +
                    ", which is read as another; put it right in the profile");
  }
  if (options.size && options.size->pixels)
    notes.emplace_back("a size in pixels is not stored; inches, cm and mm are");
  if (options.layout) {
    notes.push_back(std::string("the layout is not stored; \"Not Defined=") +
                    (*options.layout == RAXEL_LAYOUT_TILES ? "771" : "772") + "\" in the profile says it");
  }
  for (RaxelEscape escape :
       {RAXEL_ESCAPE_SET_RESOLUTION_MODE, RAXEL_ESCAPE_SET_SIZE_MODE, RAXEL_ESCAPE_SET_USER_DATA}) {
    if (gives(options, escape))
      notes.push_back("setup escape " + std::to_string(escape) + " is not stored");
  }
}

[[noreturn]] void failStore(const std::string &profile) {
  throw Failure(kNoWrite, profile + ": the settings cannot be stored; the picture is written");
}

void store(const Library &library, Setup &setup, const Options &options, std::vector<std::string> &notes) {
  sendGiven(setup, options, true);
  const Profile profile{library, setup.record()};
  if (!holdsAll(profile, options)) failStore(setup.record().szProfilePath);
  noteAll(profile, options, notes);
}

// What a section needs besides the settings themselves: a driver, without which it counts as empty, and the
// modes with which a resolution or a size counts.
void startSection(const Library &library, const Given &given, const Options &options) {
  const Hold hold;
  const auto write = [&](const char *key, const std::string &value) {
    library.writeProfile(given.newSection->name.c_str(), key, value.c_str(),
                         given.newSection->profile.c_str());
  };
  write("Driver", given.setup.record().szDriverName);
  if (gives(options, RAXEL_ESCAPE_SET_X_RESOLUTION) || gives(options, RAXEL_ESCAPE_SET_Y_RESOLUTION))
    write("Resolution Mode", std::to_string(RAXEL_STORED_RESOLUTION_USER));
  if (gives(options, RAXEL_ESCAPE_SET_WIDTH) || gives(options, RAXEL_ESCAPE_SET_HEIGHT))
    write("Size Mode", std::to_string(RAXEL_STORED_SIZE_USER));
}

}  // namespace

void checkSave(const Library &library, const Options &options) {
  if (!options.save || !options.size || options.size->pixels) return;
  const FilterLock lock;
  Given trial(library, options);
  try {
    sendSize(trial.setup, *options.size, false);
  } catch (const Failure &) {
    throw Failure(
        kUsage, "--size: a profile holds sides of 0.03125 to 22 inches; give another or leave out --save");
  }
}

void saveGiven(const Library &library, Given &given, const Options &options,
               std::vector<std::string> &notes) {
  const std::optional<NewSection> &made = given.newSection;
  const FolderLock lock(made ? made->profile : given.setup.record().szProfilePath);
  if (!made) return store(library, given.setup, options, notes);
  startSection(library, given, options);
  Given fromIt(library, options);
  if (fromIt.newSection) failStore(made->profile);
  store(library, fromIt.setup, options, notes);
}

}  // namespace host
