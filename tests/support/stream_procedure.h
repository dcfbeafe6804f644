// SPDX-License-Identifier: MIT
// A host stream procedure for tests: it keeps the file in memory, logs every operation, and fails
// when told to.
//
//   support::HostStream host;
//   KvlStreamDesc desc{};
//   desc.lpMemVar = host.context();
//   desc.lpfnProc = host.procedure();
//   const Handle stream = kvlOpen("any name", &desc, KVL_OUTPUT);
//   ...
//   EXPECT_EQ(host.calls()[1].op, support::HostStream::kWrite);
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "raxel/types.h"

namespace support {

class HostStream {
 public:
  enum Op : uint32_t { kOpen = 1, kRead, kWrite, kSeek, kClose, kExists, kDelete };

  // One operation, as it came and as it was answered.
  struct Call {
    uint32_t op = 0;
    std::string name;    // open, exists, delete: the file's name
    int64_t number = 0;  // open: mode; read, write: bytes; seek: whence; close: 0, or 512 to delete
    int64_t offset = 0;  // seek: the offset asked for
    int64_t answer = 0;  // what the caller got, as a signed number
    friend bool operator==(const Call &, const Call &) = default;
  };

  enum class Failure {
    kOnce,     // the calls that follow work again
    kForever,  // every later call fails as well: a disk that stays full
  };

  HostStream();
  ~HostStream();
  HostStream(const HostStream &) = delete;
  HostStream &operator=(const HostStream &) = delete;

  // The first word of the stream descriptor (and word 12 of a host status record). The procedure
  // answers an open with the same value as the token.
  HostWord context() const;
  // The fifth word of the stream descriptor. `exists` and `delete` come without a context: they are
  // logged by the HostStream made last.
  StreamProc procedure() const;
  HostWord procedureWord() const;

  // From now on the Nth call (1 is the next one) fails: open answers 0, exists -1, delete 0, and read,
  // write and seek -1 without moving anything; a close is logged and answers -1.
  void failAt(size_t n, Failure failure = Failure::kForever);
  // From now on writes of all but the first `capacity` bytes of the file are cut short: a disk that
  // fills up. A write at the end answers the bytes that still fit.
  void limitTo(size_t capacity) { capacity_ = capacity; }

  const std::vector<Call> &calls() const { return calls_; }
  std::vector<size_t> writeSizes() const;
  size_t count(Op op) const;
  // One line a call: "open x.tif 4097", "write 1", "seek 0 from 1 = 8", "close". Runs of equal lines
  // are folded into "write 1 x 12".
  std::string log() const;
  void clearLog() { calls_.clear(); }
  // For a host that never looks at the calls: colours and rows come in thousands of them.
  void keepNoLog() { logs_ = false; }

  std::vector<uint8_t> &bytes() { return bytes_; }
  const std::vector<uint8_t> &bytes() const { return bytes_; }
  size_t position() const { return position_; }
  bool isOpen() const { return open_; }
  bool deleted() const { return deleted_; }

 private:
  static HostWord dispatch(HostWord contextOrToken, HostWord op, HostWord arg1, HostWord arg2);
  int64_t perform(Call &call, HostWord arg1, bool failing);
  int64_t read(HostWord buffer, int64_t count);
  int64_t write(HostWord buffer, int64_t count);
  int64_t seek(int64_t offset, int64_t whence);

  std::vector<Call> calls_;
  std::vector<uint8_t> bytes_;
  size_t position_ = 0;
  size_t capacity_ = SIZE_MAX;
  size_t untilFailure_ = 0;  // 0: no failure to come
  bool failForever_ = false;
  bool logs_ = true;
  bool failed_ = false;
  bool open_ = false;
  bool deleted_ = false;
  HostStream *previous_;
};

}  // namespace support
