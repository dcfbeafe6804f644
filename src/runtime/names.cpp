// SPDX-License-Identifier: MIT
#include "runtime/names.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "raxel/stream.h"

namespace runtime {

bool copyText(std::span<char> to, const char *text) {
  if (to.empty()) return false;
  const size_t length = strnlen(text, to.size());
  const size_t n = std::min(length, to.size() - 1);
  std::memmove(to.data(), text, n);
  to[n] = 0;
  return n == length;
}

size_t folderLength(const char *path) {
  const char *slash = std::strrchr(path, '/');
  return slash == nullptr ? 0 : static_cast<size_t>(slash - path) + 1;
}

const char *fileNameOf(const char *path) {
  for (const char separator : {'\\', '/', ':'}) {
    if (const char *last = std::strrchr(path, separator)) return last + 1;
  }
  return path;
}

std::string_view stemOf(const char *path) {
  const char *file = fileNameOf(path);
  const char *point = std::strrchr(file, '.');
  return {file, point == nullptr ? std::strlen(file) : static_cast<size_t>(point - file)};
}

bool joinPath(std::span<char> to, const char *folder, const char *name) {
  if (!copyText(to, folder)) return false;
  size_t length = std::strlen(folder);
  if (length == 0 || folder[length - 1] != '/') {
    if (!copyText(to.subspan(length), "/")) return false;
    ++length;
  }
  return copyText(to.subspan(length), name);
}

bool appendRandomName(std::span<char> text) {
  static constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz012345";  // 32, so that no bit is biased
  constexpr size_t kLength = 12;
  const size_t used = std::strlen(text.data());
  uint8_t random[kLength];
  if (used + kLength >= text.size() || getrandom(random, kLength, 0) != kLength) return false;
  for (size_t i = 0; i < kLength; ++i) text[used + i] = kLetters[random[i] % 32];
  text[used + kLength] = 0;
  return true;
}

}  // namespace runtime

int32_t KVLGetTempFileName(uint32_t /*drive*/, const char * /*prefix*/, uint32_t /*unique*/, char *out) {
  if (out == nullptr) return 0;
  // 60 bits of chance: a second try is for a name that somebody made by hand.
  for (int attempt = 0; attempt < 16; ++attempt) {
    char name[32] = "/tmp/";
    struct stat status;
    if (!runtime::appendRandomName(name)) break;
    if (lstat(name, &status) == 0 || errno != ENOENT) continue;
    std::memcpy(out, name, std::strlen(name) + 1);
    return 1;
  }
  return 0;
}

char *s_getpath(char *out, const char *path) {
  if (out == nullptr || path == nullptr) return out;
  const char *separator = std::strrchr(path, '\\');
  if (separator == nullptr) separator = std::strrchr(path, '/');
  const size_t length = separator == nullptr ? 0 : static_cast<size_t>(separator - path) + 1;
  std::memmove(out, path, length);
  out[length] = 0;
  return out;
}

char *s_getname(char *out, const char *path) {
  if (out == nullptr || path == nullptr) return out;
  const std::string_view name = runtime::stemOf(path);
  std::memmove(out, name.data(), name.size());
  out[name.size()] = 0;
  return out;
}
