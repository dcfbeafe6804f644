// SPDX-License-Identifier: MIT
#include "setup/default_profile.h"

#include <dlfcn.h>

#include <cstring>

#include "raxel/settings.h"
#include "runtime/names.h"
#include "setup/text.h"

namespace setup {
namespace {

constexpr const char *kUsualName = "raxel";
const char anAddressInThisLibrary = '\0';

}  // namespace

void fileStem(std::span<char> to, const char *path) {
  const std::string_view stem = runtime::stemOf(path);
  const size_t length = stem.size() < to.size() ? stem.size() : 0;
  if (length != 0) std::memcpy(to.data(), stem.data(), length);
  to[length] = '\0';
}

void learnLibraryName() {
  if (export_szDLLName[0] != '\0') return;
  Dl_info library = {};
  if (dladdr(&anAddressInThisLibrary, &library) != 0 && isGiven(library.dli_fname)) {
    fileStem(export_szDLLName, library.dli_fname);
  }
  if (export_szDLLName[0] == '\0') copyText(export_szDLLName, kUsualName);
}

void defaultProfile(std::span<char> to) {
  // The host may have filled the buffer to its last byte.
  char library[sizeof export_szDLLName + 1] = {};
  std::memcpy(library, export_szDLLName, sizeof export_szDLLName);
  char stem[sizeof library];
  fileStem(stem, library);
  if (char *point = std::strchr(stem, '.')) *point = '\0';

  constexpr const char *kExtension = ".ini";
  const size_t length = std::strlen(stem);
  if (length + std::strlen(kExtension) >= to.size()) {
    to.front() = '\0';
    return;
  }
  copyText(to, stem);
  copyText(to.subspan(length), kExtension);
}

}  // namespace setup
