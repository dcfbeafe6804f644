// SPDX-License-Identifier: MIT
#include "filter/open.h"

#include <dlfcn.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <memory>

#include "failure.h"

namespace host {
namespace {

// Never destroyed: other threads may still be at work when the process ends.
std::mutex &filterMutex() {
  static auto *const mutex = new std::mutex;
  return *mutex;
}

std::mutex openMutex;
std::unique_ptr<const Library> opened;

std::string folderOf(const std::string &path) {
  return path.substr(0, path.rfind('/') + 1);
}

std::string programFolder() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  return length <= 0 ? "" : folderOf(std::string(path, static_cast<size_t>(length)));
}

// That of libraxelhost, or of the program that it is a part of.
std::string ownFolder() {
  Dl_info about;
  static const char here = 0;
  return dladdr(&here, &about) != 0 && about.dli_fname ? folderOf(about.dli_fname) : "";
}

std::string findLibrary(const std::string &wanted) {
  // A name without a folder would be looked for among the system's libraries.
  const auto named = [](const std::string &path) {
    return path.find('/') == std::string::npos ? "./" + path : path;
  };
  if (!wanted.empty()) return named(wanted);
  if (const char *path = secure_getenv("RAXEL_LIBRARY"); path && *path != '\0') return named(path);
  for (const std::string &folder : {programFolder(), ownFolder()}) {
    if (folder.empty()) continue;
    for (const char *place : {"raxel.so", RAXEL_FILTER_FROM_PROGRAM, "raxel/raxel.so"}) {
      if (std::string path = folder + place; access(path.c_str(), F_OK) == 0) return path;
    }
  }
  if (const char *path = RAXEL_INSTALLED_FILTER; access(path, F_OK) == 0) return path;
  throw Failure(
      RAXEL_HOST_NO_FILTER,
      "raxel.so: not named by RAXEL_LIBRARY, and not found beside the program nor in ../lib/raxel");
}

bool isSameFile(const std::string &one, const std::string &other) {
  const std::unique_ptr<char, decltype(&std::free)> a(realpath(one.c_str(), nullptr), std::free);
  const std::unique_ptr<char, decltype(&std::free)> b(realpath(other.c_str(), nullptr), std::free);
  return a && b && std::string(a.get()) == b.get();
}

}  // namespace

const Library &openFilter(const std::string &path) {
  const std::lock_guard<std::mutex> lock(openMutex);
  if (!opened) {
    opened = std::make_unique<const Library>(loadLibrary(findLibrary(path)));
  } else if (!path.empty() && !isSameFile(path, opened->path)) {
    throw Failure(RAXEL_HOST_BAD_ARGUMENT,
                  path + ": cannot be loaded beside " + opened->path + ", which this process uses");
  }
  return *opened;
}

const Library *openedFilter() {
  const std::lock_guard<std::mutex> lock(openMutex);
  return opened.get();
}

FilterLock::FilterLock() : lock_(filterMutex()) {}

}  // namespace host

namespace {

thread_local std::string openError;

}  // namespace

extern "C" {

int raxelHostOpen(const char *path) {
  try {
    openError.clear();
    host::openFilter(path ? path : "");
    return RAXEL_HOST_OK;
  } catch (const host::Failure &failure) {
    openError = failure.what();
    return failure.reason();
  } catch (const std::bad_alloc &) {
    openError = "no memory left";  // short enough to need none
    return RAXEL_HOST_NO_MEMORY;
  }
}

const char *raxelHostFilter() {
  const host::Library *library = host::openedFilter();
  return library ? library->path.c_str() : nullptr;
}

const char *raxelHostOpenError() {
  return openError.c_str();
}

}  // extern "C"
