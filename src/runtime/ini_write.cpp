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

// A private file in /tmp that has no name any more, so that whatever becomes of this process, nothing of it
// is left. Returns its stream, or 0.
Handle openCopy() {
  char name[kTempNameRoom];
  if (KVLGetTempFileName(0, "", 0, name) == 0 || !createPrivate(name)) return 0;
  const Handle copy = kvlOpen(name, nullptr, KVL_OUTPUT);
  unlink(name);
  return copy;
}

// Writes the changed copy. Returns whether it is whole and worth installing.
bool writeCopy(const Profile &profile, Handle copy, const Edit &edit) {
  if (profile.stream != 0) kvlSetLineFormat(copy, kvlGetLineFormat(profile.stream));
  const bool hasSection = copyEdited(profile.stream, copy, edit);
  const bool whole = FlushKvlIO(copy) >= 0 && streamOf(copy)->nError == 0;
  // A read that failed ends a profile as its end does, but must not cut it.
  if (profile.stream != 0) return whole && streamOf(profile.stream)->nError == 0;
  return whole && hasSection;
}

void rewrite(const char *name, const Edit &edit) {
  Profile profile = {};
  if (!findProfile(profile, name)) return;
  const bool isNew = profile.stream == 0;
  const Handle copy = openCopy();
  const bool isWhole = copy != 0 && writeCopy(profile, copy, edit);
  INIclose(profile.stream);
  if (isWhole) replaceFile(profile.path, fileno(streamOf(copy)->fp), isNew ? nullptr : &profile.status);
  INIclose(copy);
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
