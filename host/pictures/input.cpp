// SPDX-License-Identifier: MIT
#include "pictures/input.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include "failure.h"
#include "pictures/peek.h"

namespace host {
namespace {

// Closes a descriptor that is not one of the standard ones.
struct Descriptor {
  int fd;
  ~Descriptor() {
    if (fd > 2) close(fd);
  }
};

[[noreturn]] void fail(const std::string &name, const std::string &what, int error = 0) {
  throw Failure(kNoInput, name + ": " + what, error);
}

MappedInputWatch watch = nullptr;

constexpr size_t kFirstLook = size_t{1} << 16;

// `expected` bytes or so.
Buffer readAll(int fd, const std::string &name, const Wanted &wanted, size_t expected, size_t &used) {
  Buffer all(std::max(kFirstLook, expected));
  used = 0;
  for (;;) {
    if (used == all.size()) {
      if (all.size() == kFirstLook && !wanted.mayBegin({all.data(), used})) fail(name, wanted.unlike);
      Buffer larger(all.size() * 2);
      std::memcpy(larger.data(), all.data(), used);
      all = std::move(larger);
    }
    const ssize_t got = read(fd, all.data() + used, all.size() - used);
    if (got == 0) return all;
    if (got > 0) {
      used += static_cast<size_t>(got);
      if (used > wanted.longest) {
        fail(name, "does not end within " + std::to_string(wanted.longest) + " bytes; give one " +
                       wanted.one + " in a file");
      }
    } else if (errno != EINTR) {
      fail(name, std::string("cannot be read: ") + std::strerror(errno), errno);
    }
  }
}

}  // namespace

constinit const Wanted kPicture{
    "picture", "the pictures in it", "is no picture in a known format; see --help for those that are",
    [](std::span<const uint8_t> bytes) { return !formatOf(bytes).empty(); }, uint64_t{1} << 32};

void watchMappedInputs(MappedInputWatch told) {
  watch = told;
}

void bringIn(std::span<const uint8_t> bytes) {
#ifdef MADV_POPULATE_READ
  constexpr size_t kPiece = size_t{4} << 20;
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  const uint8_t *start = bytes.data() - reinterpret_cast<uintptr_t>(bytes.data()) % page;
  const uint8_t *end = bytes.data() + bytes.size();
  while (start < end) {
    const size_t step = std::min(kPiece, static_cast<size_t>(end - start));
    // Older systems do not know it; the pages come one by one then.
    if (madvise(const_cast<uint8_t *>(start), step, MADV_POPULATE_READ) != 0) return;
    start += step;
  }
#else
  static_cast<void>(bytes);
#endif
}

Input::Input(const std::string &path, const Wanted &wanted) : name_(path == "-" ? "standard input" : path) {
  const Descriptor file{path == "-" ? 0 : open(path.c_str(), O_RDONLY | O_CLOEXEC)};
  if (file.fd < 0) fail(name_, std::string("cannot be opened: ") + std::strerror(errno), errno);
  struct stat about;
  if (fstat(file.fd, &about) != 0)
    fail(name_, std::string("cannot be read: ") + std::strerror(errno), errno);
  if (S_ISDIR(about.st_mode)) fail(name_, std::string("is a folder; name ") + wanted.inside, EISDIR);
  if (watch && S_ISREG(about.st_mode) && about.st_size > 0 && lseek(file.fd, 0, SEEK_CUR) == 0) {
    const size_t size = static_cast<size_t>(about.st_size);
    void *mapped = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.fd, 0);
    if (mapped != MAP_FAILED) {
      mapped_ = mapped;
      watch(name_);
      bytes_ = {static_cast<const uint8_t *>(mapped), size};
      return;
    }
  }
  size_t used = 0;
  try {
    const uint64_t size = S_ISREG(about.st_mode) ? static_cast<uint64_t>(about.st_size) : 0;
    // One more, to see the end.
    read_ = readAll(file.fd, name_, wanted, static_cast<size_t>(std::min(size, wanted.longest) + 1), used);
  } catch (const std::bad_alloc &) {
    const bool isFile = S_ISREG(about.st_mode);
    fail(name_, std::string("there is not enough memory to read it") +
                    (isFile ? "" : "; give a file, which need not be read in whole"));
  }
  bytes_ = {read_.data(), used};
  if (used == 0) fail(name_, "is empty");
}

Input::~Input() {
  if (!mapped_) return;
  watch("");
  munmap(mapped_, bytes_.size());
}

}  // namespace host
