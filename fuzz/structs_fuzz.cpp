// SPDX-License-Identifier: MIT
// Records by format string. Formats that are put together member by member are compared with a plain layout
// in a place of exactly its size, and written back; formats of any characters have to stay inside what they
// can describe at most.
#include <cstring>
#include <string>

#include "input.h"
#include "raxel/stream.h"
#include "support/stream_procedure.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint8_t kUntouched = 0x23;

bool isBigEndianMachine() {
  const uint16_t one = 1;
  uint8_t first;
  std::memcpy(&first, &one, 1);
  return first == 0;
}

size_t alignUp(size_t offset, size_t alignment) {
  return (offset + alignment - 1) / alignment * alignment;
}

// A stream on bytes of the host's own, with an order of numbers.
class Stream {
 public:
  Stream(const Bytes &bytes, uint16_t order) {
    KvlStreamDesc descriptor = {};
    host_.keepNoLog();
    descriptor.lpMemVar = host_.context();
    descriptor.lpfnProc = host_.procedureWord();
    handle_ = kvlOpen("records", &descriptor, KVL_OUTPUT);
    host_.bytes() = bytes;
    kvlSetDataFormat(handle_, order, 0);
  }
  ~Stream() { kvlClose(handle_); }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;

  Handle handle() const { return handle_; }
  const Bytes &bytes() const { return host_.bytes(); }
  size_t position() const { return host_.position(); }

 private:
  support::HostStream host_;
  Handle handle_;
};

// ---- Formats that make sense, and what they lay out

struct Part {
  char letter;  // of a member; '{', '(' or '[' of a group
  unsigned repeat = 1;
  std::vector<std::vector<Part>> alternatives;  // of a group; only a union has more than one
};

size_t sizeOf(char letter) {
  return letter == 'C' ? 1 : letter == 'S' ? 2 : letter == 'D' ? 8 : 4;
}
bool isGroup(const Part &part) {
  return part.letter == '{' || part.letter == '(' || part.letter == '[';
}

std::vector<Part> partsOf(fuzz::Input &input, unsigned depth, unsigned &budget) {
  std::vector<Part> parts;
  for (unsigned n = input.byte() % 5; n > 0 && budget > 0; --n) {
    --budget;
    Part part{fuzz::oneOf<char>(input, {'C', 'S', 'L', 'F', 'D', '{', '(', '['}), 1, {}};
    if (isGroup(part) && depth == 0) part.letter = 'C';
    if (isGroup(part)) {
      const unsigned alternatives = part.letter == '(' ? input.byte() % 3u + 1 : 1;
      for (unsigned i = 0; i < alternatives; ++i)
        part.alternatives.push_back(partsOf(input, depth - 1, budget));
    } else {
      part.repeat = input.once(4) ? input.byte() % 13u : 1;
    }
    parts.push_back(std::move(part));
  }
  return parts;
}

void spell(const std::vector<Part> &parts, std::string &to) {
  for (const Part &part : parts) {
    if (part.repeat != 1) to += std::to_string(part.repeat);
    to += part.letter;
    for (size_t i = 0; i < part.alternatives.size(); ++i) {
      if (i > 0) to += '|';
      spell(part.alternatives[i], to);
    }
    if (isGroup(part)) to += part.letter == '{' ? '}' : part.letter == '(' ? ')' : ']';
  }
}

size_t alignmentOf(const std::vector<Part> &parts) {
  size_t widest = 1;
  for (const Part &part : parts) {
    if (!isGroup(part)) widest = std::max(widest, sizeOf(part.letter));
    for (const auto &alternative : part.alternatives) widest = std::max(widest, alignmentOf(alternative));
  }
  return widest;
}
size_t alignmentOf(const Part &group) {
  size_t widest = 1;
  for (const auto &alternative : group.alternatives) widest = std::max(widest, alignmentOf(alternative));
  return widest;
}

// The end of parts that begin at an offset.
size_t endOf(const std::vector<Part> &parts, size_t offset) {
  for (const Part &part : parts) {
    if (!isGroup(part)) {
      offset = alignUp(offset, sizeOf(part.letter)) + part.repeat * sizeOf(part.letter);
    } else {
      if (part.letter != '[') offset = alignUp(offset, alignmentOf(part));
      size_t end = offset;
      for (const auto &alternative : part.alternatives) end = std::max(end, endOf(alternative, offset));
      offset = end;
    }
  }
  return offset;
}

// What reading does to the memory of one record: `from` are the file's bytes.
class Layout {
 public:
  Layout(Bytes &memory, size_t start, const Bytes &from, size_t &at, bool swaps)
      : memory_(memory), start_(start), from_(from), at_(at), swaps_(swaps) {}

  void lay(const std::vector<Part> &parts, bool skipped) {
    for (const Part &part : parts) {
      if (part.letter == '[') {
        lay(part.alternatives[0], true);
      } else if (part.letter == '{') {
        pad(alignmentOf(part), !skipped);
        lay(part.alternatives[0], skipped);
      } else if (part.letter == '(') {
        pad(alignmentOf(part), !skipped);
        size_t size = 0;
        for (const auto &alternative : part.alternatives) size = std::max(size, endOf(alternative, 0));
        if (!skipped) move(size, false);
        offset_ += size;
      } else {
        pad(sizeOf(part.letter), !skipped && part.letter != 'S');
        for (unsigned i = 0; i < part.repeat; ++i) {
          if (!skipped) move(sizeOf(part.letter), swaps_);
          offset_ += sizeOf(part.letter);
        }
      }
    }
  }
  // Returns the record's size.
  size_t end(size_t alignment) {
    pad(alignment, true);
    return offset_;
  }

 private:
  void pad(size_t alignment, bool clears) {
    for (; offset_ % alignment != 0; ++offset_) {
      if (clears) memory_[start_ + offset_] = 0;
    }
  }
  void move(size_t size, bool swapped) {
    for (size_t i = 0; i < size; ++i) {
      memory_[start_ + offset_ + (swapped ? size - 1 - i : i)] = from_[at_ + i];
    }
    at_ += size;
  }

  Bytes &memory_;
  size_t start_, offset_ = 0;
  const Bytes &from_;
  size_t &at_;
  bool swaps_;
};

void compare(fuzz::Input &input) {
  unsigned budget = 24;
  const std::vector<Part> parts = partsOf(input, 3, budget);
  std::string format;
  spell(parts, format);
  const auto order = static_cast<uint16_t>(input.once(2) ? KVL_DATA_BIG_ENDIAN : KVL_DATA_LITTLE_ENDIAN);
  const unsigned records = input.byte() % 4;
  const bool odd = input.once(2);
  const size_t alignment = alignmentOf(parts);
  const size_t recordBytes = alignUp(endOf(parts, 0), alignment);
  Bytes file = input.rest();
  if (file.empty()) file.push_back(1);
  for (size_t i = 0; file.size() < recordBytes * records; ++i)
    file.push_back(static_cast<uint8_t>(file[i] + i));

  Bytes expected(recordBytes * records, kUntouched);
  size_t taken = 0;
  const bool swaps = (order == KVL_DATA_BIG_ENDIAN) != isBigEndianMachine();
  for (unsigned i = 0; i < records; ++i) {
    Layout layout(expected, i * recordBytes, file, taken, swaps);
    layout.lay(parts, false);
    fuzz::require(layout.end(alignment) == recordBytes, "the plain layout's own size");
  }

  const fuzz::Exact memory(Bytes(expected.size(), kUntouched), odd);
  const Stream from(file, order);
  const int32_t read =
      kvlReadStruct(from.handle(), memory.data(), format.c_str(), static_cast<int32_t>(records));
  fuzz::require(read == static_cast<int32_t>(records), "as many records read");
  fuzz::require(from.position() == taken, "as many bytes taken");
  fuzz::require(std::equal(expected.begin(), expected.end(), memory.data()), "the plain layout");

  const Stream to({}, order);
  const int32_t written =
      kvlWriteStruct(to.handle(), memory.data(), format.c_str(), static_cast<int32_t>(records));
  fuzz::require(written == static_cast<int32_t>(records), "as many records written");
  fuzz::require(to.bytes() == Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(taken)),
                "the bytes that were read");
}

// ---- Formats that need not make sense

void endure(fuzz::Input &input) {
  static const char kCharacters[] = "CSLFDcslfdP{}()[]|0123?x ";
  const int32_t records = input.byte() % 4;
  const auto order = static_cast<uint16_t>(input.byte() % 3);
  std::string format;
  const size_t length = input.byte() % 48;
  for (size_t i = 0; i < length; ++i) format += kCharacters[input.byte() % (sizeof kCharacters - 1)];
  // Each character adds as many members of at most 8 bytes as the digits before it say, and padding.
  size_t most = 16, repeat = 0;
  for (const char c : format) {
    const bool isDigit = c >= '0' && c <= '9';
    if (isDigit) repeat = std::min<size_t>(repeat * 10 + static_cast<size_t>(c - '0'), 65535);
    if (isDigit) continue;
    most += 8 * std::max<size_t>(repeat, 1) + 16;
    repeat = 0;
  }
  if (most > 20000) return;
  const fuzz::Exact memory(Bytes(most * static_cast<size_t>(records), kUntouched));
  const Stream from(input.rest(), order);
  const int32_t read = kvlReadStruct(from.handle(), memory.data(), format.c_str(), records);
  fuzz::require(read >= -1 && read <= records, "a number of records");
  const Stream to({}, order);
  const int32_t written = kvlWriteStruct(to.handle(), memory.data(), format.c_str(), records);
  fuzz::require(written >= -1 && written <= records, "a number of records");
  GetPadWidth(format.c_str());
  int32_t size = 0;
  const char *after = GetUnionSize(format.c_str(), &size);
  fuzz::require(after >= format.c_str() && after <= format.c_str() + format.size(),
                "a place in the format");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  if (input.byte() % 3 == 2) {
    endure(input);
  } else {
    compare(input);
  }
  return 0;
}
