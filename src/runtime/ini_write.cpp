// SPDX-License-Identifier: MIT
// WritePrivateProfileString: the whole profile is copied with one change, and the copy then takes
// the profile's place. Whatever fails on the way, the old profile stays as it was.
#include <sys/stat.h>
#include <unistd.h>

#include "raxel/profile.h"
#include "raxel/stream.h"
#include "runtime/ini.h"
#include "runtime/names.h"
#include "runtime/replace_file.h"
#include "runtime/stream_record.h"

namespace runtime {

namespace {

// The profile that a write changes. `stream` is 0 when a new one is to be made at `path`.
struct Profile {
  Handle stream;
  struct stat status;
  char path[PATH_MAX];
};

// A profile that is there but cannot be read is none of ours to replace.
bool mayCreate(Profile &profile, const char *name) {
  char candidate[PATH_MAX];
  if (inProfileFolder(candidate, name) && !isAbsent(candidate)) return false;
  return isAbsent(name) && copyText(profile.path, name);
}

// Opens the profile or settles where a new one goes. Returns whether it can be written at all:
// devices and pipes are read but never replaced.
bool findProfile(Profile &profile, const char *name) {
  profile.stream = openProfile(name, KVL_READ, profile.path);
  if (profile.stream == 0) return mayCreate(profile, name);
  const Stream &stream = *streamOf(profile.stream);
  if (fstat(fileno(stream.fp), &profile.status) == 0 && S_ISREG(profile.status.st_mode)) return true;
  INIclose(profile.stream);
  return false;
}

// Writes the changed copy. Returns whether it is whole and worth installing.
bool writeCopy(const Profile &profile, const char *path, const Edit &edit) {
  const Handle copy = kvlOpen(path, nullptr, KVL_OUTPUT);
  if (copy == 0) return false;
  if (profile.stream != 0) kvlSetLineFormat(copy, kvlGetLineFormat(profile.stream));
  const bool hasSection = copyEdited(profile.stream, copy, edit);
  bool whole = streamOf(copy)->nError == 0;
  whole = kvlClose(copy) == 0 && whole;
  // A read that failed ends a profile as its end does, but must not cut it.
  if (profile.stream != 0) return whole && streamOf(profile.stream)->nError == 0;
  return whole && hasSection;
}

void rewrite(const char *name, const Edit &edit) {
  char copy[kTempNameRoom];
  Profile profile = {};
  if (!findProfile(profile, name)) return;
  if (KVLGetTempFileName(0, "", 0, copy) != 0 && createPrivate(copy)) {
    const bool isWhole = writeCopy(profile, copy, edit);
    INIclose(profile.stream);
    const bool isNew = profile.stream == 0;
    if (isWhole) replaceFile(profile.path, copy, isNew ? nullptr : &profile.status);
    unlink(copy);
  } else {
    INIclose(profile.stream);
  }
}

}  // namespace

}  // namespace runtime

int32_t WritePrivateProfileString(const char *section, const char *key, const char *value,
                                  const char *file) {
  if (section == nullptr || file == nullptr || *file == 0) return 0;
  const runtime::SectionName name(section);
  runtime::rewrite(file, {name, key, value});
  return 0;
}
