// SPDX-License-Identifier: MIT
#include "support/stream_procedure.h"

#include <algorithm>
#include <cstring>

#include "raxel/stream_codes.h"

namespace support {
namespace {

// The stream that answers the calls which come without a context.
HostStream *newest = nullptr;

std::string line(const HostStream::Call &call) {
  switch (call.op) {
    case HostStream::kOpen:
      return "open " + call.name + " " + std::to_string(call.number);
    case HostStream::kRead:
      return "read " + std::to_string(call.number);
    case HostStream::kWrite:
      return "write " + std::to_string(call.number);
    case HostStream::kSeek:
      return "seek " + std::to_string(call.offset) + " from " + std::to_string(call.number) + " = " +
             std::to_string(call.answer);
    case HostStream::kClose:
      return call.number == 0 ? "close" : "close " + std::to_string(call.number);
    case HostStream::kExists:
      return "exists " + call.name;
    case HostStream::kDelete:
      return "delete " + call.name;
    default:
      return "operation " + std::to_string(call.op);
  }
}

std::string text(HostWord name) {
  const char *p = reinterpret_cast<const char *>(name);
  return p == nullptr ? std::string() : std::string(p);
}

}  // namespace

HostStream::HostStream() : previous_(newest) {
  newest = this;
}
HostStream::~HostStream() {
  newest = previous_;
}

HostWord HostStream::context() const {
  return reinterpret_cast<HostWord>(this);
}
StreamProc HostStream::procedure() const {
  return &HostStream::dispatch;
}
HostWord HostStream::procedureWord() const {
  return reinterpret_cast<HostWord>(procedure());
}

void HostStream::failAt(size_t n, Failure failure) {
  untilFailure_ = n;
  failForever_ = failure == Failure::kForever;
  failed_ = false;
}

std::vector<size_t> HostStream::writeSizes() const {
  std::vector<size_t> sizes;
  for (const Call &call : calls_) {
    if (call.op == kWrite) sizes.push_back(static_cast<size_t>(call.number));
  }
  return sizes;
}

size_t HostStream::count(Op op) const {
  return static_cast<size_t>(
      std::count_if(calls_.begin(), calls_.end(), [op](const Call &call) { return call.op == op; }));
}

std::string HostStream::log() const {
  std::string out;
  for (size_t i = 0; i < calls_.size();) {
    const std::string one = line(calls_[i]);
    size_t run = 1;
    while (i + run < calls_.size() && line(calls_[i + run]) == one) ++run;
    out += run == 1 ? one + "\n" : one + " x " + std::to_string(run) + "\n";
    i += run;
  }
  return out;
}

HostWord HostStream::dispatch(HostWord contextOrToken, HostWord op, HostWord arg1, HostWord arg2) {
  HostStream *self = reinterpret_cast<HostStream *>(contextOrToken);
  if (self == nullptr) self = newest;
  if (self == nullptr) return 0;

  Call call;
  call.op = static_cast<uint32_t>(op);
  if (op == kOpen || op == kExists || op == kDelete) call.name = text(arg1);
  if (op == kSeek) call.offset = *reinterpret_cast<const int32_t *>(arg1);
  call.number = static_cast<int32_t>(arg2);
  bool failing = self->failed_ && self->failForever_;
  if (self->untilFailure_ > 0 && --self->untilFailure_ == 0) self->failed_ = failing = true;
  call.answer = self->perform(call, arg1, failing);
  if (self->logs_) self->calls_.push_back(call);
  if (op == kOpen && call.answer != 0) return contextOrToken;
  return static_cast<HostWord>(call.answer);
}

int64_t HostStream::perform(Call &call, HostWord arg1, bool failing) {
  switch (call.op) {
    case kOpen:
      if (failing) return 0;
      if ((call.number & KVL_CREATE) != 0) bytes_.clear();
      position_ = 0;
      open_ = true;
      return 1;
    case kRead:
      return failing ? -1 : read(arg1, call.number);
    case kWrite:
      return failing ? -1 : write(arg1, call.number);
    case kSeek:
      return failing ? -1 : seek(call.offset, call.number);
    case kClose:
      open_ = false;
      if (call.number == KVL_DELETE) deleted_ = true;
      return failing ? -1 : 0;
    case kExists:
      return failing || deleted_ ? -1 : 1;
    case kDelete:
      if (failing) return 0;
      deleted_ = true;
      return 1;
    default:
      return 0;
  }
}

int64_t HostStream::read(HostWord buffer, int64_t count) {
  const size_t left = position_ < bytes_.size() ? bytes_.size() - position_ : 0;
  const size_t n = count > 0 ? std::min(left, static_cast<size_t>(count)) : 0;
  if (n > 0) std::memcpy(reinterpret_cast<void *>(buffer), bytes_.data() + position_, n);
  position_ += n;
  return static_cast<int64_t>(n);
}

int64_t HostStream::write(HostWord buffer, int64_t count) {
  const size_t room = position_ < capacity_ ? capacity_ - position_ : 0;
  const size_t n = count > 0 ? std::min(room, static_cast<size_t>(count)) : 0;
  if (n == 0) return 0;
  if (bytes_.size() < position_ + n) bytes_.resize(position_ + n);
  std::memcpy(bytes_.data() + position_, reinterpret_cast<const void *>(buffer), n);
  position_ += n;
  return static_cast<int64_t>(n);
}

int64_t HostStream::seek(int64_t offset, int64_t whence) {
  const int64_t from = whence == KVL_FROM_POSITION ? static_cast<int64_t>(position_)
                       : whence == KVL_FROM_END    ? static_cast<int64_t>(bytes_.size())
                                                   : 0;
  if (from + offset < 0) return -1;
  position_ = static_cast<size_t>(from + offset);
  return from + offset;
}

}  // namespace support
