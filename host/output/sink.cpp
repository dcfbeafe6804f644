// SPDX-License-Identifier: MIT
#include "output/sink.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include "buffer.h"
#include "prepare/services.h"
#include "raxel/stream_codes.h"

namespace host {
namespace {

constexpr uint64_t kFront = 64 << 10;

}  // namespace

Sink::~Sink() {
  std::free(block_);
}

bool Sink::writeAny(const uint8_t *bytes, size_t count) {
  if (!mayWrite(count)) {
    if (error_ == 0) error_ = EFBIG;
    return false;
  }
  try {
    return fd_ < 0 ? keep(bytes, count) : writeToFile(bytes, count);
  } catch (const std::bad_alloc &) {
    error_ = ENOMEM;
    return false;
  }
}

bool Sink::keep(const uint8_t *bytes, size_t count) {
  const uint64_t end = position_ + count;
  if (base_ + end > room_ && !grow(base_ + end)) return false;
  uint8_t *page = block_ + base_;
  if (position_ > size_) std::memset(page + size_, 0, static_cast<size_t>(position_ - size_));
  std::memcpy(page + position_, bytes, count);
  position_ = end;
  size_ = std::max(size_, end);
  return true;
}

bool Sink::grow(uint64_t size) {
  const uint64_t room = std::max({size, room_ * 2, kFront});
  void *block = std::realloc(block_, static_cast<size_t>(room));
  if (!block) {
    error_ = ENOMEM;
    return false;
  }
  block_ = static_cast<uint8_t *>(block);
  // The filter, which is at work meanwhile, ends the process when nothing is left for it.
  if (!prepare::fits(prepare::kFilterTables)) {
    error_ = ENOMEM;
    return false;
  }
  const uint64_t used = base_ + size_;
  useLargePages(block_ + used, static_cast<size_t>(room - used));
  room_ = room;
  return true;
}

void Sink::expect(uint64_t bytes) {
  if (fd_ < 0 && bytes > room_ && prepare::fits(bytes + prepare::kFilterTables)) grow(bytes);
}

uint8_t *Sink::release() {
  void *block = std::realloc(block_, static_cast<size_t>(std::max<uint64_t>(size(), 1)));
  uint8_t *const released = block ? static_cast<uint8_t *>(block) : block_;
  block_ = nullptr;
  base_ = position_ = size_ = room_ = 0;
  return released;
}

bool Sink::writeToFile(const uint8_t *bytes, size_t count) {
  while (count != 0) {
    size_t step = count;
    if (position_ < kFront) {
      step = static_cast<size_t>(std::min<uint64_t>(count, kFront - position_));
      const uint64_t end = position_ + step;
      if (front_.size() < end) front_.resize(static_cast<size_t>(end));
      std::memcpy(front_.data() + position_, bytes, step);
    } else if (position_ == size_) {
      step = std::min(count, kTail - tailSize_);
      if (!append(bytes, step)) return false;
    } else {
      // A patch beyond the front.
      step = static_cast<size_t>(std::min<uint64_t>(count, size_ > position_ ? size_ - position_ : count));
      if (!flushTail() || !writeAt(base_ + position_, bytes, step)) return false;
    }
    position_ += step;
    size_ = std::max(size_, position_);
    bytes += step;
    count -= step;
  }
  return true;
}

bool Sink::append(const uint8_t *bytes, size_t count) {
  if (!tail_) tail_.reset(new uint8_t[kTail]);
  if (tailSize_ == 0) tailStart_ = position_;
  std::memcpy(tail_.get() + tailSize_, bytes, count);
  tailSize_ += count;
  // Whole pieces, so that no page of the file is written in two goes.
  return tailSize_ < kTail || flushTail();
}

bool Sink::flushTail() {
  const bool done = writeAt(base_ + tailStart_, tail_.get(), tailSize_);
  tailSize_ = 0;
  return done;
}

bool Sink::writeAt(uint64_t at, const uint8_t *bytes, size_t count) {
  while (count != 0) {
    const ssize_t put = pwrite(fd_, bytes, count, static_cast<off_t>(at));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) {
      error_ = put < 0 ? errno : EIO;
      return false;
    }
    at += static_cast<uint64_t>(put);
    bytes += put;
    count -= static_cast<size_t>(put);
  }
  return true;
}

bool Sink::seek(int64_t offset, int whence) {
  const int64_t from =
      whence == KVL_FROM_START ? 0 : static_cast<int64_t>(whence == KVL_FROM_POSITION ? position_ : size_);
  const int64_t to = from + offset;
  if (whence < 0 || whence > 2 || to < 0 || to > static_cast<int64_t>(kMost)) return false;
  position_ = static_cast<uint64_t>(to);
  return true;
}

bool Sink::startPage() {
  if (!flush()) return false;
  base_ += size_;
  position_ = size_ = 0;
  front_.clear();
  return true;
}

finish::File Sink::wholeFile() {
  const auto read = [](void *sink, uint64_t at, uint8_t *to, size_t count) {
    return static_cast<Sink *>(sink)->readWhole(at, to, count);
  };
  const auto write = [](void *sink, uint64_t at, const uint8_t *from, size_t count) {
    return static_cast<Sink *>(sink)->writeWhole(at, from, count);
  };
  return {this, read, write, size()};
}

bool Sink::readWhole(uint64_t at, uint8_t *to, size_t count) {
  if (at > size() || count > size() - at) return false;
  if (fd_ < 0) {
    std::memcpy(to, block_ + at, count);
    return true;
  }
  if (at < base_ && count > base_ - at) {
    const auto before = static_cast<size_t>(base_ - at);
    return readWhole(at, to, before) && readWhole(base_, to + before, count - before);
  }
  if (at >= base_ && at - base_ < front_.size()) {
    const auto step = static_cast<size_t>(std::min<uint64_t>(count, front_.size() - (at - base_)));
    std::memcpy(to, front_.data() + (at - base_), step);
    at += step;
    to += step;
    count -= step;
  }
  if (count != 0 && !flushTail()) return false;
  while (count != 0) {
    const ssize_t got = pread(fd_, to, count, static_cast<off_t>(at));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    at += static_cast<uint64_t>(got);
    to += got;
    count -= static_cast<size_t>(got);
  }
  return true;
}

bool Sink::writeWhole(uint64_t at, const uint8_t *from, size_t count) {
  if (at >= base_) {
    position_ = at - base_;
    return write(from, count);
  }
  if (error_ != 0 || count > base_ - at) return false;
  if (fd_ >= 0) return writeAt(at, from, count);
  std::memcpy(block_ + at, from, count);
  return true;
}

bool Sink::flush() {
  if (error_ != 0) return false;
  if (fd_ < 0) return true;
  return flushTail() && writeAt(base_, front_.data(), front_.size());
}

}  // namespace host
