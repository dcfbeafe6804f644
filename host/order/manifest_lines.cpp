// SPDX-License-Identifier: MIT
#include "order/manifest_lines.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string_view>
#include <unordered_map>

#include "failure.h"

namespace host {
namespace {

using Json = nlohmann::json;

// A line has lists of names, and nothing that is deeper; what is would be written out by a call in a call.
bool isShallow(int depth, Json::parse_event_t, Json &) {
  return depth <= 4;
}

// Where the lines of targets begin, by the hashes of their names. Who takes a line looks whether it is the
// right one.
class Index {
 public:
  void read(const std::string &path) {
    struct stat about;
    if (stat(path.c_str(), &about) != 0) {
      *this = {};
      return;
    }
    // Another file by now, or one that was cut.
    if (about.st_ino != file_ || about.st_size < read_) *this = {};
    file_ = about.st_ino;
    if (about.st_size == read_) return;
    std::ifstream in(path, std::ios::binary);
    in.seekg(read_);
    for (std::string line; std::getline(in, line);) {
      if (in.eof()) break;  // not whole yet
      const Json entry = Json::parse(line, isShallow, false);
      if (entry.is_object() && entry.contains("target")) places_[hashOf(entry["target"].dump())] = read_;
      read_ = in.tellg();
    }
  }

  std::string line(const std::string &path, const std::string &target) const {
    const auto found = places_.find(hashOf(target));
    if (found == places_.end()) return "";
    std::ifstream in(path, std::ios::binary);
    in.seekg(found->second);
    std::string text;
    std::getline(in, text);
    return text;
  }

 private:
  static size_t hashOf(const std::string &target) { return std::hash<std::string>{}(target); }

  std::unordered_map<size_t, std::streamoff> places_;
  ino_t file_ = 0;
  std::streamoff read_ = 0;
};

// Never freed: a thread may be at work when the process ends.
struct Indices {
  std::mutex mutex;
  std::map<std::string, Index> all;
};

Indices &indices() {
  static auto *const only = new Indices;
  return *only;
}

// Opened to be appended to.
int openForLines(const std::string &path) {
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (fd < 0) throw Failure(kNoWrite, path + ": cannot be written: " + std::strerror(errno), errno);
  return fd;
}

bool endsInALine(int fd) {
  const off_t end = lseek(fd, 0, SEEK_END);
  char last = '\n';
  return end <= 0 || (pread(fd, &last, 1, end - 1) == 1 && last == '\n');
}

}  // namespace

void readManifest(const std::string &path) {
  const std::lock_guard<std::mutex> lock(indices().mutex);
  indices().all[path].read(path);
}

std::string manifestLine(const std::string &path, const std::string &target) {
  const std::lock_guard<std::mutex> lock(indices().mutex);
  return indices().all[path].line(path, target);
}

void checkManifest(const std::string &path) {
  const int fd = openForLines(path);
  char first = '{';
  const ssize_t got = pread(fd, &first, 1, 0);
  close(fd);
  if (got < 0 || first != '{') throw Failure(kNoCreate, path + ": is there already, and no manifest");
}

void appendToManifest(const std::string &path, const std::string &text) {
  const std::string lines = "\n" + text + "\n";  // made first: where memory ends no file is open
  const int fd = openForLines(path);
  // Nobody else appends meanwhile: half of his line would look like one that was cut. Where a disk has no
  // locks, that costs an empty line at most.
  while (flock(fd, LOCK_EX) != 0 && errno == EINTR) continue;
  // A line that a full disk has cut must not spoil this one.
  const std::string_view line = std::string_view(lines).substr(endsInALine(fd) ? 1 : 0);
  const ssize_t put = write(fd, line.data(), line.size());
  int error = put == static_cast<ssize_t>(line.size()) ? 0 : put < 0 ? errno : ENOSPC;
  // Some disks of a network say only here what they could not write.
  if (close(fd) != 0 && errno != EINTR && error == 0) error = errno;
  if (error != 0) {
    throw Failure(kNoWrite,
                  path + ": cannot be written: " + std::strerror(error) + "; the picture is written",
                  error);
  }
}

}  // namespace host
