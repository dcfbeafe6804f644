// SPDX-License-Identifier: MIT
// Where profiles are: under the name as given, and in the folder that INIDIR names.
#include <cstdlib>
#include <cstring>

#include "raxel/profile.h"
#include "raxel/stream.h"
#include "runtime/ini.h"
#include "runtime/names.h"

namespace runtime {

namespace {

constexpr size_t kNameRoom = 144;  // of a profile's name in a settings record

const char *profileFolder() {
  const char *folder = secure_getenv("INIDIR");
  return folder == nullptr || *folder == 0 ? nullptr : folder;
}

// The module file's name with ".ini" for its extension. Returns whether it fits.
bool nameAfterModule(std::span<char> name, const char *module) {
  const std::string_view stem = stemOf(module);
  if (stem.size() >= name.size()) return false;
  std::memcpy(name.data(), stem.data(), stem.size());
  return copyText(name.subspan(stem.size()), ".ini");
}

bool isReadable(const char *path) {
  const Handle stream = kvlOpen(path, nullptr, KVL_READ);
  INIclose(stream);
  return stream != 0;
}

}  // namespace

bool inProfileFolder(std::span<char> path, const char *name) {
  const char *folder = profileFolder();
  return folder != nullptr && joinPath(path, folder, name);
}

Handle openProfile(const char *name, uint32_t mode, std::span<char> path) {
  if (const Handle stream = kvlOpen(name, nullptr, mode)) {
    copyText(path, name);
    return stream;
  }
  return inProfileFolder(path, name) ? kvlOpen(path.data(), nullptr, mode) : 0;
}

}  // namespace runtime

Handle INIopen(char *name, int32_t room, uint32_t mode) {
  if (name == nullptr) return 0;
  if (const Handle stream = kvlOpen(name, nullptr, mode)) return stream;
  char path[PATH_MAX];
  if (!runtime::inProfileFolder(path, name)) return 0;
  const Handle stream = kvlOpen(path, nullptr, mode);
  if (stream != 0 && room > 0) runtime::copyText({name, static_cast<size_t>(room)}, path);
  return stream;
}

int32_t INIclose(Handle stream) {
  return stream == 0 ? 0 : kvlClose(stream);
}

int32_t GetProfileDirectory(char *name, const char *modulePath) {
  if (name == nullptr) return 1;
  char fromModule[runtime::kNameRoom];
  const char *wanted = name;
  if (*name == 0 && modulePath != nullptr) {
    if (!runtime::nameAfterModule(fromModule, modulePath)) return 1;
    wanted = fromModule;
  }
  // What a settings record cannot hold is no profile of its.
  if (strnlen(wanted, runtime::kNameRoom) == runtime::kNameRoom) return 1;
  char path[runtime::kNameRoom];
  const char *folder = runtime::profileFolder();
  if (folder != nullptr && std::strlen(folder) < runtime::kNameRoom &&
      runtime::joinPath(path, folder, wanted) && runtime::isReadable(path)) {
    std::memcpy(name, path, std::strlen(path) + 1);
    return 0;
  }
  if (!runtime::isReadable(wanted)) return 1;
  if (wanted != name) std::memcpy(name, wanted, std::strlen(wanted) + 1);
  return 0;
}
