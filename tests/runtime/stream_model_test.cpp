// SPDX-License-Identifier: MIT
// Streams against plain models: what a file or a growing block holds after any sequence of calls,
// and the record's fields after every write as storing one byte at a time leaves them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "raxel/memory.h"
#include "raxel/stream.h"
#include "runtime/plain_streams.h"
#include "runtime/record_of_stream.h"
#include "support/blocks.h"
#include "support/cases.h"
#include "support/random.h"
#include "support/temp_dir.h"

namespace {

using runtime_test::Bytes;
using runtime_test::PlainBlock;
using runtime_test::PlainFile;
using support::record;

// A size near the numbers that matter: one byte, a page, the window, several windows.
size_t interestingSize(support::Random &random) {
  switch (random.between(0, 5)) {
    case 0:
      return 1;
    case 1:
      return static_cast<size_t>(random.between(0, 8));
    case 2:
      return static_cast<size_t>(12288 * random.between(1, 3) + random.between(-1, 1));
    case 3:
      return static_cast<size_t>(random.between(0, 40000));
    default:
      return static_cast<size_t>(random.between(0, 3000));
  }
}

void compareOneRun(uint64_t seed, const std::string &path, bool attached) {
  support::Random random(seed);
  PlainFile plain{random.bytes(interestingSize(random))};
  support::writeFile(path, std::string(plain.bytes.begin(), plain.bytes.end()));
  FILE *fp = attached ? std::fopen(path.c_str(), "r+") : nullptr;
  KvlStreamDesc d = {};
  d.fpOpen = reinterpret_cast<HostWord>(fp);
  const Handle h = attached ? kvlOpen(nullptr, &d, KVL_ATTACH) : kvlOpen(path.c_str(), nullptr, KVL_UPDATE);
  ASSERT_NE(h, 0u);
  for (int step = 0; step < 60; ++step) {
    const size_t n = interestingSize(random);
    if (random.chance(40)) {
      const Bytes from = random.bytes(n);
      ASSERT_EQ(kvlWrite(h, from.data(), static_cast<int32_t>(n)), plain.write(from));
    } else if (random.chance(50)) {
      Bytes to(n + 1);
      const int32_t got = kvlRead(h, to.data(), static_cast<int32_t>(n));
      to.resize(static_cast<size_t>(std::max(got, 0)));
      ASSERT_EQ(to, plain.read(n));
    } else {
      const auto whence = static_cast<int32_t>(random.between(0, 2));
      const int64_t offset =
          whence == KVL_FROM_START ? random.between(-1, 50000) : random.between(-9000, 9000);
      const int32_t position = plain.seek(offset, whence);
      if (position < 0) continue;  // a failed seek would forbid every later flush
      ASSERT_EQ(kvlSeek(h, static_cast<int32_t>(offset), whence), position);
    }
    ASSERT_EQ(kvlSeek(h, 0, KVL_FROM_POSITION), plain.at) << "seed " << seed << " step " << step;
  }
  ASSERT_EQ(kvlClose(h), 0);
  if (fp != nullptr) std::fclose(fp);
  ASSERT_EQ(support::readFile(path), plain.bytes) << "seed " << seed;
}

TEST(StreamModel, FilesHoldWhatAPlainFileHolds) {
  const support::TempDir dir;
  for (uint64_t seed = 0; seed < support::cases(200); ++seed) compareOneRun(seed, dir.file("f"), false);
}

TEST(StreamModel, AttachedFilesHoldWhatAPlainFileHolds) {
  const support::TempDir dir;
  for (uint64_t seed = 0; seed < support::cases(60); ++seed)
    compareOneRun(seed + 7000, dir.file("f"), true);
}

// Writing as one store a byte: the window fills, and the next byte flushes it.
struct ByteWriter {
  Bytes disk;
  Bytes window = Bytes(12288);
  int32_t nPos = 0, nHigh = -1, lBufStart = 0, bDirty = 0, lSize = 0;

  void put(uint8_t byte) {
    if (nPos > 12287) {
      disk.insert(disk.end(), window.begin(), window.begin() + nHigh + 1);
      lBufStart += nHigh + 1;
      lSize = static_cast<int32_t>(disk.size());
      nPos = 0;
      nHigh = -1;
    }
    window[static_cast<size_t>(nPos)] = byte;
    nHigh = std::max(nHigh, nPos++);
    bDirty = 1;
  }
};

TEST(StreamModel, WritesInBulkLeaveWhatSingleStoresLeave) {
  const support::TempDir dir;
  const std::string path = dir.file("f");
  for (uint64_t seed = 0; seed < support::cases(60); ++seed) {
    support::Random random(seed);
    ByteWriter plain;
    const Handle h = kvlOpen(path.c_str(), nullptr, KVL_OUTPUT);
    for (int step = 0; step < 20; ++step) {
      const Bytes from = random.bytes(interestingSize(random));
      ASSERT_EQ(kvlWrite(h, from.data(), static_cast<int32_t>(from.size())),
                static_cast<int32_t>(from.size()));
      for (const uint8_t byte : from) plain.put(byte);
      const KvlStream &s = record(h);
      ASSERT_EQ(s.nPos, plain.nPos) << "seed " << seed << " step " << step;
      ASSERT_EQ(s.nHigh, plain.nHigh);
      ASSERT_EQ(s.nLimit, 12287);
      ASSERT_EQ(s.lBufStart, plain.lBufStart);
      ASSERT_EQ(s.lNextRead, plain.lBufStart);
      ASSERT_EQ(s.bDirty, plain.bDirty);
      ASSERT_EQ(s.lSize, plain.lSize);
      ASSERT_EQ(support::readFile(path), plain.disk);
      ASSERT_EQ(std::memcmp(GlobalLock(s.hBuffer), plain.window.data(), static_cast<size_t>(s.nPos)), 0);
    }
    ASSERT_EQ(kvlClose(h), 0);
  }
}

// A file stream as its rules have it: one window, one byte at a time.
struct PlainStream {
  Bytes disk;
  Bytes window = Bytes(12288);
  int32_t nPos = 0, nHigh = -1, lBufStart = 0, lNextRead = 0, bDirty = 0, lSize = 0;

  int32_t flush() {
    if (bDirty == 0) return 0;
    const int32_t count = nHigh + 1;
    const size_t end = static_cast<size_t>(lBufStart + count);
    if (disk.size() < end) disk.resize(end);
    std::copy_n(window.begin(), count, disk.begin() + lBufStart);
    lBufStart = lNextRead = lBufStart + count;
    nPos = 0;
    nHigh = -1;
    bDirty = 0;
    lSize = static_cast<int32_t>(disk.size());
    return count;
  }
  int32_t fill() {
    flush();
    const auto from = std::min<int32_t>(lNextRead, static_cast<int32_t>(disk.size()));
    const auto count = std::min<int32_t>(static_cast<int32_t>(disk.size()) - from, 12288);
    std::copy_n(disk.begin() + from, count, window.begin());
    nPos = 0;
    nHigh = count - 1;
    lBufStart = lNextRead;
    lNextRead += count;
    return count;
  }
  void put(uint8_t byte) {
    if (nPos > 12287) {
      flush();
      if (nPos > 12287) {  // a window of bytes that were only read gives way all the same
        lBufStart = lNextRead = lBufStart + nPos;
        nPos = 0;
        nHigh = -1;
      }
    }
    window[static_cast<size_t>(nPos)] = byte;
    nHigh = std::max(nHigh, nPos++);
    bDirty = 1;
  }
  Bytes read(size_t n) {
    Bytes out;
    while (out.size() < n && (nPos <= nHigh || fill() > 0))
      out.push_back(window[static_cast<size_t>(nPos++)]);
    return out;
  }
  int32_t seek(int32_t offset, int32_t whence) {
    if (whence == KVL_FROM_POSITION && offset == 0) return lBufStart + nPos;
    if (whence == KVL_FROM_POSITION) return seek(offset + lBufStart + nPos, KVL_FROM_START);
    if (whence == KVL_FROM_START && offset >= lBufStart && offset <= lBufStart + nHigh) {
      nPos = offset - lBufStart;
      return offset;
    }
    flush();
    lNextRead = offset + (whence == KVL_FROM_END ? static_cast<int32_t>(disk.size()) : 0);
    fill();
    return lBufStart;
  }
};

void compareWindows(const KvlStream &s, const PlainStream &plain) {
  ASSERT_EQ(s.nPos, plain.nPos);
  ASSERT_EQ(s.nHigh, plain.nHigh);
  ASSERT_EQ(s.nLimit, 12287);
  ASSERT_EQ(s.lBufStart, plain.lBufStart);
  ASSERT_EQ(s.lNextRead, plain.lNextRead);
  ASSERT_EQ(s.bDirty, plain.bDirty);
  ASSERT_EQ(s.lSize, plain.lSize);
  ASSERT_EQ(s.nError, 0);
  ASSERT_EQ(std::memcmp(GlobalLock(s.hBuffer), plain.window.data(), static_cast<size_t>(s.nHigh + 1)), 0);
}

TEST(StreamModel, WindowsFollowEveryCall) {
  const support::TempDir dir;
  const std::string path = dir.file("f");
  for (uint64_t seed = 0; seed < support::cases(150); ++seed) {
    support::Random random(seed + 900);
    PlainStream plain;
    plain.disk = random.bytes(interestingSize(random));
    plain.lSize = static_cast<int32_t>(plain.disk.size());
    support::writeFile(path, std::string(plain.disk.begin(), plain.disk.end()));
    const Handle h = kvlOpen(path.c_str(), nullptr, KVL_UPDATE);
    for (int step = 0; step < 50; ++step) {
      const size_t n = interestingSize(random);
      switch (random.between(0, 4)) {
        case 0: {
          const Bytes from = random.bytes(n);
          ASSERT_EQ(kvlWrite(h, from.data(), static_cast<int32_t>(n)), static_cast<int32_t>(n));
          for (const uint8_t byte : from) plain.put(byte);
          break;
        }
        case 1: {
          Bytes to(n + 1);
          to.resize(static_cast<size_t>(kvlRead(h, to.data(), static_cast<int32_t>(n))));
          ASSERT_EQ(to, plain.read(n));
          break;
        }
        case 2:
          if (random.chance(50)) {
            ASSERT_EQ(FlushKvlIO(h), plain.flush());
          } else {
            ASSERT_EQ(FillKvlIOBuf(h), plain.fill());
          }
          break;
        default: {
          // Near the window's two ends as often as anywhere.
          const int32_t ends[] = {plain.lBufStart, plain.lBufStart + plain.nHigh,
                                  static_cast<int32_t>(random.between(0, 50000))};
          const auto target = static_cast<int32_t>(ends[random.between(0, 2)] + random.between(-1, 1));
          if (target < 0) continue;
          if (random.chance(20)) {
            const int32_t back = -static_cast<int32_t>(random.between(0, plain.lSize));
            ASSERT_EQ(kvlSeek(h, back, KVL_FROM_END), plain.seek(back, KVL_FROM_END));
          } else if (random.chance(30)) {
            const int32_t by = target - plain.lBufStart - plain.nPos;
            ASSERT_EQ(kvlSeek(h, by, KVL_FROM_POSITION), plain.seek(by, KVL_FROM_POSITION));
          } else {
            ASSERT_EQ(kvlSeek(h, target, KVL_FROM_START), plain.seek(target, KVL_FROM_START));
          }
        }
      }
      ASSERT_NO_FATAL_FAILURE(compareWindows(record(h), plain)) << "seed " << seed << " step " << step;
      ASSERT_EQ(support::readFile(path), plain.disk) << "seed " << seed << " step " << step;
    }
    plain.flush();
    ASSERT_EQ(kvlClose(h), 0);
    ASSERT_EQ(support::readFile(path), plain.disk) << "seed " << seed;
  }
}

TEST(StreamModel, BlocksHoldWhatAPlainBlockHolds) {
  for (uint64_t seed = 0; seed < support::cases(400); ++seed) {
    support::Random random(seed);
    const auto length = static_cast<uint32_t>(random.between(1, 300));
    const auto grow = static_cast<uint32_t>(random.between(1, 5000));
    void *data = GlobalLock(support::newBlock(length));
    KvlStreamDesc d = {};
    d.lpMemVar = reinterpret_cast<HostWord>(&data);
    d.dwLength = length;
    d.dwGrow = grow;
    const Handle h = kvlOpen(nullptr, &d, KVL_OUTPUT);
    PlainBlock plain{Bytes(length), 0, -1, int64_t{length} - 1, grow};
    for (int step = 0; step < 40; ++step) {
      const auto n = static_cast<size_t>(random.between(0, random.chance(20) ? 9000 : 200));
      if (random.chance(45)) {
        const Bytes from = random.bytes(n);
        ASSERT_EQ(kvlWrite(h, from.data(), static_cast<int32_t>(n)), plain.write(from));
      } else if (random.chance(40)) {
        Bytes to(n + 1);
        to.resize(static_cast<size_t>(kvlRead(h, to.data(), static_cast<int32_t>(n))));
        ASSERT_EQ(to, plain.read(n));
      } else {
        const auto whence = static_cast<int32_t>(random.between(0, 2));
        const int64_t offset = random.between(-300, random.chance(10) ? 20000 : 300);
        const int32_t position = plain.seek(offset, whence);
        if (position < 0) continue;
        ASSERT_EQ(kvlSeek(h, static_cast<int32_t>(offset), whence), position);
      }
      const KvlStream &s = record(h);
      ASSERT_EQ(s.nPos, plain.at) << "seed " << seed << " step " << step;
      ASSERT_EQ(s.nHigh, plain.high);
      ASSERT_EQ(s.nLimit, plain.limit);
      ASSERT_EQ(data, GlobalLock(s.hBuffer)) << "the caller's variable follows the block";
      ASSERT_EQ(GlobalSize(s.hBuffer), plain.bytes.size());
      ASSERT_EQ(std::memcmp(data, plain.bytes.data(), plain.bytes.size()), 0);
    }
    ASSERT_EQ(kvlClose(h), 0);
    GlobalFree(GlobalHandle(data));
  }
}

}  // namespace
