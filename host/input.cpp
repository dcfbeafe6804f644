#include "input.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "failure.h"

namespace host {
namespace {

// Closes a descriptor that is not one of the standard ones.
struct Descriptor {
  int fd;
  ~Descriptor() {
    if (fd > 2) close(fd);
  }
};

[[noreturn]] void fail(const std::string &name, const std::string &what) {
  throw Failure(kNoInput, name + ": " + what);
}

Buffer readAll(int fd, const std::string &name, size_t &used) {
  Buffer all(size_t{1} << 16);
  used = 0;
  for (;;) {
    if (used == all.size()) {
      Buffer larger(all.size() * 2);
      std::memcpy(larger.data(), all.data(), used);
      all = std::move(larger);
    }
    const ssize_t got = read(fd, all.data() + used, all.size() - used);
    if (got == 0) return all;
    if (got > 0) {
      used += static_cast<size_t>(got);
    } else if (errno != EINTR) {
      fail(name, std::string("cannot be read: ") + std::strerror(errno));
    }
  }
}

}  // namespace

Input::Input(const std::string &path) : name_(path == "-" ? "standard input" : path) {
  const Descriptor file{path == "-" ? 0 : open(path.c_str(), O_RDONLY | O_CLOEXEC)};
  if (file.fd < 0) fail(name_, std::string("cannot be opened: ") + std::strerror(errno));
  struct stat about;
  if (fstat(file.fd, &about) != 0) fail(name_, std::string("cannot be read: ") + std::strerror(errno));
  if (S_ISDIR(about.st_mode)) fail(name_, "is a folder; name the pictures in it");
  if (S_ISREG(about.st_mode) && about.st_size > 0 && lseek(file.fd, 0, SEEK_CUR) == 0) {
    const size_t size = static_cast<size_t>(about.st_size);
    void *mapped = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file.fd, 0);
    if (mapped != MAP_FAILED) {
      mapped_ = mapped;
      bytes_ = {static_cast<const uint8_t *>(mapped), size};
      return;
    }
  }
  size_t used = 0;
  read_ = readAll(file.fd, name_, used);
  bytes_ = {read_.data(), used};
  if (used == 0) fail(name_, "is empty");
}

Input::~Input() {
  if (mapped_) munmap(mapped_, bytes_.size());
}

}  // namespace host
