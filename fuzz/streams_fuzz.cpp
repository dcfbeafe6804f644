// SPDX-License-Identifier: MIT
// Streams on files, memory and procedures: what they hold beside plain models, lines and numbers on top,
// and procedures that fail, lie and cut short.
#include <cstring>
#include <string>

#include "files.h"
#include "input.h"
#include "raxel/memory.h"
#include "raxel/stream.h"
#include "runtime/plain_streams.h"
#include "support/blocks.h"
#include "support/stream_procedure.h"
#include "support/temp_dir.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using runtime_test::Bytes;
using runtime_test::PlainBlock;
using runtime_test::PlainFile;

constexpr size_t kMostSteps = 60;
constexpr int32_t kFarthest = 60000;
// A block may grow a byte at a time, and moves whenever it does.
constexpr int32_t kFarthestInBlock = 4000;
constexpr size_t kLongestInBlock = 200;

// A size near the numbers that matter: nothing, a byte, the window of 12288 bytes, several windows.
size_t lengthOf(fuzz::Input &input) {
  const unsigned choice = input.byte();
  if (choice < 128) return choice % 16;
  if (choice < 192 || !input.rarely(8)) return choice % 64 * size_t{8};
  if (choice < 250) return 12288u * (choice % 3 + 1) + choice % 5 - 2;
  return input.between(0, 40000);
}

// So many bytes of a pattern.
Bytes pattern(fuzz::Input &input, size_t count) {
  const unsigned seed = input.byte();
  Bytes bytes(count);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(seed + i * 7 + i / 256);
  // Line endings and zeros mean something.
  if (seed % 4 == 1 && count > 2) bytes[count / 2] = '\r', bytes[count - 1] = '\n';
  if (seed % 4 == 2 && count > 0) bytes[count - 1] = 0;
  return bytes;
}

// Each step is done to both, and has to come to the same.
template <class Plain>
void compare(fuzz::Input &input, Handle stream, Plain &plain, bool isBlock) {
  for (size_t step = 0; input.left() > 0 && step < kMostSteps; ++step) {
    const unsigned what = input.byte();
    if (what % 4 < 2) {
      size_t n = lengthOf(input);
      if (isBlock) n = std::min(n, kLongestInBlock);
      const Bytes from = pattern(input, n);
      const fuzz::Exact place(from, what % 8 > 3);
      fuzz::require(kvlWrite(stream, place.data(), static_cast<int32_t>(n)) == plain.write(from),
                    "as many bytes written");
    } else if (what % 4 == 2) {
      const size_t n = lengthOf(input);
      const fuzz::Exact to(n, what % 8 > 3);
      const Bytes expected = plain.read(n);
      fuzz::require(
          kvlRead(stream, to.data(), static_cast<int32_t>(n)) == static_cast<int32_t>(expected.size()),
          "as many bytes read");
      fuzz::require(std::equal(expected.begin(), expected.end(), to.data()),
                    "the bytes of the plain stream");
    } else {
      const auto whence = static_cast<int32_t>(input.byte() % 3);
      auto offset = static_cast<int32_t>(lengthOf(input));
      if (what % 8 > 3) offset = -offset;
      Plain ahead = plain;
      const int32_t position = ahead.seek(offset, whence);
      // A failed seek would forbid every later flush.
      if (position < 0 || position > (isBlock ? kFarthestInBlock : kFarthest)) continue;
      plain = std::move(ahead);
      fuzz::require(kvlSeek(stream, offset, whence) == position, "the position sought");
    }
    fuzz::require(kvlSeek(stream, 0, KVL_FROM_POSITION) == plain.at, "the position of the plain stream");
  }
}

void onFile(fuzz::Input &input) {
  static const support::TempDir dir;
  static const std::string file = dir.file("stream");
  PlainFile plain{pattern(input, lengthOf(input))};
  fuzz::writeWhole(file, plain.bytes);
  const Handle stream = kvlOpen(file.c_str(), nullptr, KVL_UPDATE);
  compare(input, stream, plain, false);
  fuzz::require(kvlClose(stream) == 0, "a file closes");
  fuzz::require(fuzz::readWhole<Bytes>(file) == plain.bytes, "the bytes of the plain file");
}

void onBlock(fuzz::Input &input) {
  const uint32_t length = input.between(1, 300), grow = input.between(1, 600);
  void *data = GlobalLock(support::newBlock(length));
  KvlStreamDesc descriptor = {};
  descriptor.lpMemVar = reinterpret_cast<HostWord>(&data);
  descriptor.dwLength = length;
  descriptor.dwGrow = grow;
  const Handle stream = kvlOpen(nullptr, &descriptor, KVL_OUTPUT);
  PlainBlock plain{Bytes(length), 0, -1, int64_t{length} - 1, grow};
  compare(input, stream, plain, true);
  fuzz::require(GlobalSize(GlobalHandle(data)) == plain.bytes.size(), "a block as large as the plain one");
  fuzz::require(std::memcmp(data, plain.bytes.data(), plain.bytes.size()) == 0,
                "the bytes of the plain block");
  fuzz::require(kvlClose(stream) == 0, "a block closes");
  GlobalFree(GlobalHandle(data));
}

void onProcedure(fuzz::Input &input) {
  support::HostStream host;
  host.keepNoLog();
  KvlStreamDesc descriptor = {};
  descriptor.lpMemVar = host.context();
  descriptor.lpfnProc = host.procedureWord();
  const Handle stream = kvlOpen("any name", &descriptor, KVL_OUTPUT);
  PlainFile plain;
  compare(input, stream, plain, false);
  fuzz::require(kvlClose(stream) == 0 && !host.isOpen(), "a procedure is told the close");
  fuzz::require(host.bytes() == plain.bytes, "the bytes of the plain file");
}

// ---- Streams that nothing holds to what they say

// Answers with what the fuzzer says, in part the truth; with nothing when there is no more to say.
fuzz::Input *answers = nullptr;

HostWord liar(HostWord, HostWord op, HostWord arg1, HostWord arg2) {
  if (answers->left() == 0) return 0;
  const unsigned choice = answers->byte();
  const auto count = static_cast<int32_t>(arg2);
  if (op == KVL_OP_READ && choice % 4 != 3) {
    // As many bytes as it answers, but for the lies.
    const int32_t given = choice % 4 == 0 ? count : std::min(count, static_cast<int32_t>(choice / 4 % 8));
    for (int32_t i = 0; i < given; ++i) reinterpret_cast<uint8_t *>(arg1)[i] = answers->byte();
    return static_cast<HostWord>(given);
  }
  if (op == KVL_OP_WRITE && choice % 4 < 2) return arg2;
  switch (choice % 16) {
    case 0:
      return static_cast<HostWord>(-1);
    case 1:
      return 0;
    case 3:
      return static_cast<HostWord>(INT32_MAX);
    case 7:
      return static_cast<HostWord>(INT32_MIN);
    case 11:
      return static_cast<HostWord>(count) + 1;
    default:
      return choice;
  }
}

// Any call, whose answer may be anything: what counts is that it stays inside the places that it is given.
void anyCall(fuzz::Input &input, Handle stream) {
  const unsigned what = input.byte();
  const auto count = static_cast<int32_t>(lengthOf(input) % 500);
  const bool odd = what >= 128;
  const fuzz::Exact place(Bytes(static_cast<size_t>(count) * 8, 0x41), odd);
  uint8_t *at = place.data();
  switch (what % 24) {
    case 0:
    case 1:
      kvlWrite(stream, at, count);
      break;
    case 2:
    case 3:
      kvlRead(stream, at, count);
      break;
    case 4:
      kvlSeek(stream, static_cast<int32_t>(input.word()) - 20000,
              static_cast<int32_t>(input.byte() % 5) - 1);
      break;
    case 5:
      kvlSeek(stream, static_cast<int32_t>(input.byte()) - 100, static_cast<int32_t>(input.byte() % 3));
      break;
    case 6:
    case 7: {
      const fuzz::Exact line(static_cast<size_t>(count), odd);
      const int32_t length = kvlReadLine(stream, reinterpret_cast<char *>(line.data()), count);
      fuzz::require(length >= -1 && length <= count, "a line within the buffer");
      break;
    }
    case 8:
      kvlWriteLine(stream, reinterpret_cast<const char *>(at), count);
      break;
    case 9:
      kvlSetLineFormat(stream, static_cast<int32_t>(input.byte()) - 2);
      break;
    case 10:
      kvlGetLineFormat(stream);
      break;
    case 11:
      FillKvlIOBuf(stream);
      break;
    case 12:
      FlushKvlIO(stream);
      break;
    case 13:
      kvlSetDataFormat(stream, static_cast<uint16_t>(input.byte() % 3), input.byte());
      break;
    case 14:
      kvlReadShort(stream, at, count);
      break;
    case 15:
      kvlReadLong(stream, at, count);
      break;
    case 16:
      kvlReadFloat(stream, at, count);
      break;
    case 17:
      kvlReadDouble(stream, at, count);
      break;
    case 18:
      kvlWriteShort(stream, at, count);
      break;
    case 19:
      kvlWriteLong(stream, at, count);
      break;
    case 20:
      kvlWriteFloat(stream, at, count);
      break;
    case 21:
      kvlWriteDouble(stream, at, count);
      break;
    case 22:
      if (count > 0) kvlReadChar(stream, at, count);
      break;
    default:
      if (count > 0) kvlWriteChar(stream, at, count);
  }
}

void anyCalls(fuzz::Input &input, Handle stream) {
  for (size_t step = 0; input.left() > 0 && step < kMostSteps; ++step) anyCall(input, stream);
}

void onLiar(fuzz::Input &input) {
  answers = &input;
  KvlStreamDesc descriptor = {};
  descriptor.lpfnProc = reinterpret_cast<HostWord>(&liar);
  descriptor.dwToken = 7;
  const Handle stream =
      kvlOpen("/nonexistent/name", &descriptor,
              fuzz::oneOf<uint32_t>(input, {KVL_OUTPUT, KVL_READ, KVL_ATTACH, KVL_UPDATE}));
  if (stream == 0) return;
  anyCalls(input, stream);
  kvlClose(stream);
}

void onFailing(fuzz::Input &input) {
  support::HostStream host;
  host.keepNoLog();
  host.failAt(input.byte() + 1u,
              input.once(2) ? support::HostStream::Failure::kOnce : support::HostStream::Failure::kForever);
  if (input.once(2)) host.limitTo(input.word() % 2000);
  KvlStreamDesc descriptor = {};
  descriptor.lpMemVar = host.context();
  descriptor.lpfnProc = host.procedureWord();
  const Handle stream = kvlOpen("/nonexistent/name", &descriptor, KVL_OUTPUT);
  if (stream == 0) return;
  anyCalls(input, stream);
  kvlClose(stream);
}

// A block that may not grow, or by a number of any sign, opened in any mode.
void onOddBlock(fuzz::Input &input) {
  const uint32_t length = input.byte();
  const Bytes held = pattern(input, length);
  void *data = GlobalLock(support::blockOf(held));
  KvlStreamDesc descriptor = {};
  descriptor.lpMemVar = reinterpret_cast<HostWord>(&data);
  descriptor.dwLength = length;
  const auto grows =
      fuzz::oneOf<int32_t>(input, {0, 1, 16, -1, -500, 1000, static_cast<int32_t>(input.byte())});
  descriptor.dwGrow = static_cast<HostWord>(grows);
  const Handle stream =
      kvlOpen("", &descriptor,
              fuzz::oneOf<uint32_t>(input, {KVL_OUTPUT, KVL_READ, KVL_WRITE, KVL_UPDATE, KVL_CREATE}));
  if (stream != 0) {
    for (size_t step = 0; input.left() > 0 && step < kMostSteps; ++step) {
      // A target far behind the end makes the block as large, in steps of what it grows by.
      const unsigned what = input.byte();
      if (what % 4 == 0) {
        const int32_t offset = static_cast<int32_t>(input.word()) - 20000;
        kvlSeek(stream, grows > 0 && grows < 256 ? offset % 1000 : offset,
                static_cast<int32_t>(what / 4 % 3));
      } else if (what % 4 == 1) {
        const fuzz::Exact to(what, true);
        const int32_t moved = kvlRead(stream, to.data(), static_cast<int32_t>(what));
        fuzz::require(moved >= -1 && moved <= static_cast<int32_t>(what), "bytes within the buffer");
      } else if (what % 4 == 2) {
        const fuzz::Exact from(Bytes(what, 0x55), true);
        const int32_t moved = kvlWrite(stream, from.data(), static_cast<int32_t>(what));
        fuzz::require(moved >= -1 && moved <= static_cast<int32_t>(what), "bytes of the buffer");
      } else {
        FlushKvlIO(stream);
        FillKvlIOBuf(stream);
      }
    }
    kvlClose(stream);
  }
  GlobalFree(GlobalHandle(data));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  switch (input.byte() % 6) {
    case 0:
      onFile(input);
      break;
    case 1:
      onBlock(input);
      break;
    case 2:
      onProcedure(input);
      break;
    case 3:
      onLiar(input);
      break;
    case 4:
      onFailing(input);
      break;
    default:
      onOddBlock(input);
  }
  return 0;
}
