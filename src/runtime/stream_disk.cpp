// SPDX-License-Identifier: MIT
#include "runtime/stream_disk.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace runtime {

namespace {

int32_t readBorrowed(FILE *fp, int32_t offset, std::span<uint8_t> to) {
  if (unxSeek(fp, offset, SEEK_SET) < 0) return -1;
  const size_t n = std::fread(to.data(), 1, to.size(), fp);
  return n == 0 && std::ferror(fp) != 0 ? -1 : static_cast<int32_t>(n);
}

int32_t writeBorrowed(FILE *fp, int32_t offset, std::span<const uint8_t> from) {
  if (unxSeek(fp, offset, SEEK_SET) < 0) return 0;
  const size_t n = std::fwrite(from.data(), 1, from.size(), fp);
  // Bytes that stay in the caller's buffer could fail unseen later.
  return std::fflush(fp) != 0 ? 0 : static_cast<int32_t>(n);
}

int32_t sizeOfBorrowed(FILE *fp) {
  const off_t here = ftello(fp);
  const int32_t size = unxSeek(fp, 0, SEEK_END);
  if (here >= 0) fseeko(fp, here, SEEK_SET);
  return size;
}

}  // namespace

int32_t readAt(const Stream &stream, int32_t offset, std::span<uint8_t> to) {
  if (stream.bBorrowed != 0) return readBorrowed(stream.fp, offset, to);
  const int fd = fileno(stream.fp);
  size_t done = 0;
  while (done < to.size()) {
    const ssize_t n = pread(fd, to.data() + done, to.size() - done, offset + static_cast<off_t>(done));
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && done == 0) return -1;
    if (n <= 0) break;
    done += static_cast<size_t>(n);
  }
  return static_cast<int32_t>(done);
}

int32_t writeAt(const Stream &stream, int32_t offset, std::span<const uint8_t> from) {
  if (stream.bBorrowed != 0) return writeBorrowed(stream.fp, offset, from);
  const int fd = fileno(stream.fp);
  size_t done = 0;
  while (done < from.size()) {
    const ssize_t n = pwrite(fd, from.data() + done, from.size() - done, offset + static_cast<off_t>(done));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    done += static_cast<size_t>(n);
  }
  return static_cast<int32_t>(done);
}

int32_t positionOf(const Stream &stream, int32_t offset, int32_t whence) {
  if (stream.bBorrowed != 0) return unxSeek(stream.fp, offset, whence);
  // A file with a size has every position.
  if (whence == SEEK_SET && offset >= 0 && stream.lSize >= 0) return offset;
  // fseek knows these three only; lseek would take more.
  if (whence != SEEK_SET && whence != SEEK_CUR && whence != SEEK_END) return -1;
  const off_t position = lseek(fileno(stream.fp), offset, whence);
  return position < 0 || position > INT32_MAX ? -1 : static_cast<int32_t>(position);
}

int32_t sizeOf(const Stream &stream) {
  if (stream.bBorrowed != 0) return sizeOfBorrowed(stream.fp);
  const off_t size = lseek(fileno(stream.fp), 0, SEEK_END);
  return size > INT32_MAX ? INT32_MAX : static_cast<int32_t>(size);
}

int32_t sizeAfterWrite(const Stream &stream, int32_t end) {
  if (stream.bBorrowed != 0 || stream.lSize < 0 || !isOpenForWriting(stream)) return sizeOf(stream);
  return std::max(stream.lSize, end);
}

}  // namespace runtime

int32_t unxSeek(FILE *stream, int32_t offset, int32_t whence) {
  if (stream == nullptr || fseeko(stream, offset, whence) != 0) return -1;
  const off_t position = ftello(stream);
  return position > INT32_MAX ? -1 : static_cast<int32_t>(position);
}
