// SPDX-License-Identifier: MIT
// Files to finish: behind a descriptor, and in memory.
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "finish/finish.h"

namespace finish {
namespace {

// Calls pread or pwrite until all is done; a signal in between does not count.
template <class Call, class Bytes>
bool all(Call call, int fd, uint64_t at, Bytes *bytes, size_t count) {
  while (count != 0) {
    const ssize_t step = call(fd, bytes, count, static_cast<off_t>(at));
    if (step < 0 && errno == EINTR) continue;
    if (step <= 0) return false;
    at += static_cast<uint64_t>(step);
    bytes += step;
    count -= static_cast<size_t>(step);
  }
  return true;
}

bool readDescriptor(void *context, uint64_t at, uint8_t *to, size_t count) {
  return all(pread, *static_cast<const int *>(context), at, to, count);
}

bool writeDescriptor(void *context, uint64_t at, const uint8_t *from, size_t count) {
  return all(pwrite, *static_cast<const int *>(context), at, from, count);
}

bool readMemory(void *context, uint64_t at, uint8_t *to, size_t count) {
  const auto &bytes = *static_cast<std::vector<uint8_t> *>(context);
  if (at > bytes.size() || count > bytes.size() - at) return false;
  std::memcpy(to, bytes.data() + at, count);
  return true;
}

bool writeMemory(void *context, uint64_t at, const uint8_t *from, size_t count) {
  auto &bytes = *static_cast<std::vector<uint8_t> *>(context);
  if (at > bytes.size()) return false;
  if (count > bytes.size() - at) bytes.resize(static_cast<size_t>(at) + count);
  std::memcpy(bytes.data() + at, from, count);
  return true;
}

}  // namespace

File fileOf(const int &descriptor, uint64_t size) {
  return {const_cast<int *>(&descriptor), readDescriptor, writeDescriptor, size};
}

File fileOf(std::vector<uint8_t> &bytes) {
  return {&bytes, readMemory, writeMemory, bytes.size()};
}

}  // namespace finish
