// SPDX-License-Identifier: MIT
// Bytes on their way to a file or a block of memory: gathered into large pieces, with the front of a file
// held back for patches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "finish/finish.h"

namespace host {

// A file being written from the start on, page by page. The filter appends picture data and comes back to
// the directory at the front to fill in offsets; that front stays in memory until the end, so that a patch
// costs no system call.
class Sink {
 public:
  // Writes go to `fd`, which stays the caller's. -1 keeps everything in memory.
  explicit Sink(int fd) : fd_(fd) {}
  ~Sink();
  Sink(const Sink &) = delete;
  Sink &operator=(const Sink &) = delete;

  // Sets addresses aside for so many bytes where they are kept in memory, if there are so many: a block
  // that grows is copied. What is not written takes no memory.
  void expect(uint64_t bytes);
  // At the current position. False after the first failure, and from then on; error() says why.
  bool write(const uint8_t *bytes, size_t count) {
    // What most are: a few bytes behind all the others, which wait for a whole piece.
    if (tailSize_ == 0 || position_ != size_ || count >= kTail - tailSize_ || !mayWrite(count))
      return writeAny(bytes, count);
    std::memcpy(tail_.get() + tailSize_, bytes, count);
    tailSize_ += count;
    size_ = position_ += count;
    return true;
  }
  // Moves the position, up to 2 GiB in a page. False for a place that no file has.
  bool seek(int64_t offset, int whence);
  // Everything to the file.
  bool flush();

  // Starts another page behind all that is written: from here on, positions count from its start.
  bool startPage();
  // Where the page starts in the file.
  uint64_t base() const { return base_; }
  // The whole file for the finishing step, places counted from its start. Ends with the next write or seek.
  finish::File wholeFile();

  uint64_t position() const { return position_; }
  // Bytes of the whole file, and of the page.
  uint64_t size() const { return base_ + size_; }
  uint64_t pageSize() const { return size_; }
  int error() const { return error_; }  // an errno; ENOMEM when the block cannot grow
  // All bytes; only when they are kept in memory.
  std::span<const uint8_t> kept() const { return {block_, static_cast<size_t>(size())}; }
  // The same, which the caller frees with free(); never null. Nothing is kept from then on.
  uint8_t *release();

 private:
  static constexpr size_t kTail = 256 << 10;
  static constexpr uint64_t kMost = INT32_MAX;        // positions are signed 32-bit for the filter
  static constexpr uint64_t kMostPages = UINT32_MAX;  // places are 32-bit in the file

  bool mayWrite(size_t count) const {
    return error_ == 0 && position_ + count <= kMost && base_ + position_ + count <= kMostPages;
  }
  bool writeAny(const uint8_t *bytes, size_t count);
  bool keep(const uint8_t *bytes, size_t count);
  bool grow(uint64_t size);
  bool writeToFile(const uint8_t *bytes, size_t count);
  // At places of the whole file.
  bool readWhole(uint64_t at, uint8_t *to, size_t count);
  bool writeWhole(uint64_t at, const uint8_t *from, size_t count);
  // The same past everything that is held back, to the descriptor.
  bool writeAt(uint64_t at, const uint8_t *bytes, size_t count);
  bool append(const uint8_t *bytes, size_t count);
  bool flushTail();

  int fd_;
  int error_ = 0;
  uint64_t base_ = 0;  // where the page starts; the places below count from there
  uint64_t position_ = 0;
  uint64_t size_ = 0;
  std::vector<uint8_t> front_;       // bytes from 0 on
  std::unique_ptr<uint8_t[]> tail_;  // bytes from tailStart_ on, not written yet; room for kTail
  size_t tailSize_ = 0;
  uint64_t tailStart_ = 0;
  uint8_t *block_ = nullptr;  // all bytes, when there is no file
  uint64_t room_ = 0;         // of the block
};

}  // namespace host
