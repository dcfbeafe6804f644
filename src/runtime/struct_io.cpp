// SPDX-License-Identifier: MIT
// Whole records, moved member by member as a format string lays them out in native memory.
#include <cstring>

#include "runtime/ascii.h"
#include "runtime/stream_record.h"
#include "runtime/struct_format.h"

namespace runtime {

namespace {

struct Reading {
  using Byte = uint8_t;
  static constexpr auto kChar = kvlReadChar;
  static constexpr auto kShort = kvlReadShort;
  static constexpr auto kLong = kvlReadLong;
  static constexpr auto kFloat = kvlReadFloat;
  static constexpr auto kDouble = kvlReadDouble;
  static constexpr auto kRaw = kvlRead;
  static constexpr bool kClearsPadding = true;
  static void clear(Byte *from, size_t n) { std::memset(from, 0, n); }
};

struct Writing {
  using Byte = const uint8_t;
  static constexpr auto kChar = kvlWriteChar;
  static constexpr auto kShort = kvlWriteShort;
  static constexpr auto kLong = kvlWriteLong;
  static constexpr auto kFloat = kvlWriteFloat;
  static constexpr auto kDouble = kvlWriteDouble;
  static constexpr auto kRaw = kvlWrite;
  static constexpr bool kClearsPadding = false;
  static void clear(Byte *, size_t) {}
};

// One walk of a format over one record.
template <class Way>
struct Walk {
  Handle handle;
  typename Way::Byte *record;
  uint64_t offset = 0;   // of the next member
  int skipped = 0;       // square brackets around it
  int nesting = 0;       // braces around it
  bool unknown = false;  // a character without a meaning was met
  bool touched = false;  // a byte of the record was moved or cleared

  void pad(int32_t alignment, bool clears) {
    const uint64_t to = alignUp(offset, alignment);
    if (Way::kClearsPadding && clears && skipped == 0 && to != offset) {
      Way::clear(record + offset, static_cast<size_t>(to - offset));
      touched = true;
    }
    offset = to;
  }

  int32_t moveChars(int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
      const int32_t moved = Way::kChar(handle, record + offset + static_cast<uint64_t>(i), 1);
      if (moved < 1) return moved;
    }
    return count;
  }

  int32_t moveItems(int32_t letter, int32_t count) {
    auto *items = record + offset;
    switch (letter) {
      case 'C':
        return moveChars(count);
      case 'S':
        return Way::kShort(handle, items, count);
      case 'L':
        return Way::kLong(handle, items, count);
      case 'F':
        return Way::kFloat(handle, items, count);
      default:
        return Way::kDouble(handle, items, count);
    }
  }

  // Returns 1, or the result of the typed call that failed.
  int32_t member(int32_t letter, Member shape, int32_t count) {
    pad(shape.alignment, letter != 'S');
    if (skipped == 0 && count > 0) {
      touched = true;
      const int32_t moved = moveItems(letter, count);
      if (moved < 1) return moved;
    }
    offset += static_cast<uint64_t>(count) * shape.size;
    return 1;
  }

  // A union moves as so many raw bytes, in no byte order. Leaves p after the group.
  int32_t unionMember(const char *&p) {
    pad(GetPadWidth(p), true);
    int32_t size = 0;
    p = GetUnionSize(p, &size);
    if (skipped == 0 && size > 0) {
      touched = true;
      const int32_t moved = Way::kRaw(handle, record + offset, size);
      if (moved != size) return moved < 0 ? moved : 0;
    }
    offset += static_cast<uint64_t>(size);
    return 1;
  }

  // A brace, a bracket, or a character without a meaning.
  void punctuation(const char *p) {
    const char c = *p;
    if (c == '{' && nesting < kMaxNesting) {
      ++nesting;
      pad(GetPadWidth(p), true);
    } else if (c == '}') {
      if (nesting > 0) --nesting;
    } else if (c == '[') {
      ++skipped;
    } else if (c == ']') {
      if (skipped > 0) --skipped;
    } else if (c != ')' && upper(c) != 'P') {
      unknown = true;
    }
  }

  int32_t wholeFormat(const char *format) {
    for (const char *p = format; *p != 0;) {
      const int32_t repeat = takeRepeat(p);
      const int32_t letter = upper(*p);
      const Member shape = memberOf(letter);
      if (letter == '(') {
        const int32_t moved = unionMember(p);
        if (moved < 1) return moved;
        continue;
      }
      if (letter == 0) break;
      if (shape.size != 0) {
        const int32_t moved = member(letter, shape, repeat);
        if (moved < 1) return moved;
      } else {
        punctuation(p);
      }
      ++p;
    }
    return 1;
  }
};

template <class Way>
int32_t moveRecords(Handle handle, typename Way::Byte *data, const char *format, int32_t count) {
  if (handle == 0 || data == nullptr || format == nullptr) return 0;
  const int32_t alignment = recordAlignment(format);
  int32_t handled = 0;
  for (int32_t pass = 0; pass < count; ++pass) {
    Walk<Way> walk{handle, data};
    const int32_t moved = walk.wholeFormat(format);
    if (moved < 1) return moved;
    walk.skipped = 0;
    walk.pad(alignment, true);
    // An unknown character makes the running count -1 before the record adds its one.
    handled = walk.unknown ? 0 : handled + 1;
    // Without a byte to move, all the other passes are like this one.
    if (!walk.touched) return walk.unknown ? 0 : count;
    data += walk.offset;
  }
  return handled;
}

}  // namespace

}  // namespace runtime

int32_t kvlReadStruct(Handle handle, void *data, const char *format, int32_t count) {
  return runtime::moveRecords<runtime::Reading>(handle, static_cast<uint8_t *>(data), format, count);
}

int32_t kvlWriteStruct(Handle handle, const void *data, const char *format, int32_t count) {
  return runtime::moveRecords<runtime::Writing>(handle, static_cast<const uint8_t *>(data), format, count);
}
