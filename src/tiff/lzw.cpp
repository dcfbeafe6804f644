// SPDX-License-Identifier: MIT
// The idea: the codes do not depend on how strings are looked up, so that two ways are open which hardly
// search (lzw_strings.h), one for data that repeats little and one for data that repeats much. Whenever
// the table is cleared, what it held tells which way is the better one for what follows, and its codes,
// whose widths are known then, are packed together.
#include "tiff/lzw.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

#include "tiff/bit_writer.h"
#include "tiff/lzw_strings.h"

namespace tiff {
namespace {

constexpr uint32_t kClear = 256;
constexpr uint32_t kEndOfInformation = 257;

constexpr uint32_t kMostCodes = kClearAt - kFirstFree;  // before a Clear

struct Stream {
  BitWriter bits;
  const uint8_t *at;           // the byte to take next
  uint16_t *codes;             // of the present table, not yet in `bits`: one for each of its strings
  uint32_t prefix = 0;         // the known string that the bytes before `at` are
  uint32_t next = kFirstFree;  // the code of the next string
  uint32_t width = 9;          // of the code behind those in `bits`
};

struct ColumnTables {
  StringColumns columns;
  RunStrings runs;
};

template <uint32_t width>
void packCodes(BitWriter &bits, const uint16_t *codes, uint32_t count) {
  BitWriter to = bits;
  uint32_t i = 0;
  for (; i + 4 <= count; i += 4) {
    const uint64_t before = uint32_t{codes[i]} << width | codes[i + 1];
    to.put(before << 2 * width | uint32_t{codes[i + 2]} << width | codes[i + 3], 4 * width);
  }
  for (; i < count; ++i) to.put(codes[i], width);
  bits = to;
}

// Puts the codes of a table into the stream: how wide each of them is says how many came before it.
[[gnu::noinline]] void packTable(Stream &s) {
  constexpr uint32_t k10Bits = 512 - kFirstFree, k11Bits = 1024 - kFirstFree, k12Bits = 2048 - kFirstFree;
  const uint32_t count = s.next - kFirstFree;
  const auto within = [count](uint32_t from, uint32_t to) {
    return std::min(count, to) - std::min(count, from);
  };
  packCodes<9>(s.bits, s.codes, within(0, k10Bits));
  packCodes<10>(s.bits, s.codes + k10Bits, within(k10Bits, k11Bits));
  packCodes<11>(s.bits, s.codes + k11Bits, within(k11Bits, k12Bits));
  packCodes<12>(s.bits, s.codes + k12Bits, within(k12Bits, kMostCodes));
  s.width = count < k10Bits ? 9 : count < k11Bits ? 10 : count < k12Bits ? 11 : 12;
}

// The two ways take bytes up to `last`, or until the table is full: true for that. The prefix is a single
// byte at first. Called once a table, they stay functions of their own, to be told apart in a profile.

[[gnu::noinline]] bool codeWithLists(Stream &stream, StringLists &lists, const uint8_t *last) {
  Stream s = stream;
  while (s.at != last && s.next != kClearAt) {
    uint16_t *place = lists.pair(s.at - 1);
    uint32_t byte = *s.at++;
    uint32_t code = lists.codeIn(*place);
    if (code >= StringLists::kCodes) {
      lists.addPair(place, s.next);
    } else {
      do {
        s.prefix = code;
        if (s.at == last) break;
        byte = *s.at++;
        place = lists.find(s.prefix, byte);
        code = lists.codeIn(*place);
      } while (code < StringLists::kCodes);
      if (code < StringLists::kCodes) break;  // the bytes end within a known string
      lists.add(place, byte, s.next);
    }
    s.codes[s.next++ - kFirstFree] = static_cast<uint16_t>(s.prefix);
    s.prefix = byte;
  }
  stream = s;
  return s.next == kClearAt;
}

// The first byte of a word that is not 0, in the order of memory.
[[gnu::always_inline]] inline uint32_t firstByteSet(uint64_t word) {
  const int bits =
      std::endian::native == std::endian::little ? std::countr_zero(word) : std::countl_zero(word);
  return static_cast<uint32_t>(bits) / 8;
}

// How many of `limit` bytes, 8 or more, are like this one.
[[gnu::always_inline]] inline uint32_t countLike(const uint8_t *bytes, uint32_t limit, uint32_t byte) {
  const uint64_t like = byte * uint64_t{0x0101010101010101};
  for (uint32_t at = 0;; at = std::min(at + 8, limit - 8)) {
    uint64_t word;
    std::memcpy(&word, bytes + at, sizeof word);
    if (word != like) return at + firstByteSet(word ^ like);
    if (at == limit - 8) return limit;
  }
}

// When the prefix is a byte of which long runs are known as strings, takes the longest one that follows
// and ends before `last`.
[[gnu::always_inline]] inline void takeRun(Stream &s, const RunStrings &runs, const uint8_t *last) {
  const uint32_t byte = s.prefix;
  const uint32_t known = runs.length[byte] - 1u;  // bytes that may follow the prefix
  const auto left = static_cast<size_t>(last - s.at);
  if (known < 8 || left < 8) return;
  uint32_t n = countLike(s.at, static_cast<uint32_t>(std::min<size_t>(known, left)), byte);
  if (n == known) {
    s.prefix = runs.longest[byte];
  } else {
    n = std::min(n, RunStrings::kListed - 2);
    if (n != 0) s.prefix = runs.codes[byte][n + 1];
  }
  s.at += n;
}

[[gnu::noinline]] bool codeWithColumns(Stream &stream, ColumnTables &tables, const uint8_t *last) {
  Stream s = stream;
  PlacesMade &made = tables.columns.made;
  while (s.next != kClearAt) {
    takeRun(s, tables.runs, last);
    uint32_t byte = 0;
    uint16_t *place = nullptr;
    while (place == nullptr && s.at != last) {
      byte = *s.at++;
      uint16_t &code = tables.columns.codes[byte][s.prefix];
      if (code == 0) {
        place = &code;
      } else {
        s.prefix = code;
      }
    }
    if (place == nullptr) break;  // the bytes end within a known string
    *place = static_cast<uint16_t>(s.next);
    made.places[s.next - kFirstFree] = byte << 12 | s.prefix;
    tables.runs.add(s.prefix, byte, s.next);
    s.codes[s.next++ - kFirstFree] = static_cast<uint16_t>(s.prefix);
    s.prefix = byte;
  }
  made.count = s.next - kFirstFree;
  stream = s;
  return s.next == kClearAt;
}

// Whether a strip looks, by its first bytes, as if it repeated much: one byte in four is like the one
// before it.
bool looksRepetitive(std::span<const uint8_t> strip) {
  const size_t n = std::min<size_t>(strip.size(), 4096);
  size_t equal = 0;
  for (size_t i = 1; i < n; ++i) equal += strip[i] == strip[i - 1] ? size_t{1} : size_t{0};
  return equal > n / 4;
}

// Whether a table that was filled by this many bytes held long strings.
bool repeatedMuch(ptrdiff_t bytes) {
  return bytes >= ptrdiff_t{kClearAt} * 6;
}

template <class Table>
Table &tableIn(runtime::Block &block) {
  if (!block) block = runtime::Block::ofSize(sizeof(Table));
  return *static_cast<Table *>(static_cast<void *>(block.data()));
}

// Codes all bytes but the last, and answers what string the last one makes with the prefix then: its
// code, or 0 when it is not known. Leaves the columns without strings.
uint32_t codeAllButLast(Stream &s, std::span<const uint8_t> strip, LzwMemory &memory) {
  const uint8_t *last = &strip.back();
  bool repeats = looksRepetitive(strip);
  for (;;) {
    const uint8_t *begin = s.at;
    uint32_t known = 0;
    bool cleared = false;
    if (repeats) {
      auto &tables = tableIn<ColumnTables>(memory.columns);
      tables.runs.clear();
      cleared = codeWithColumns(s, tables, last);
      known = tables.columns.codes[*last][s.prefix];
      tables.columns.clear();
    } else {
      auto &lists = tableIn<StringLists>(memory.lists);
      lists.clear();
      cleared = codeWithLists(s, lists, last);
      known = lists.codeIn(*(s.prefix < 256 ? lists.pair(last - 1) : lists.find(s.prefix, *last)));
      if (known >= StringLists::kCodes) known = 0;
    }
    packTable(s);
    if (!cleared) return known;
    s.bits.put(kClear, s.width);
    s.width = 9;
    s.next = kFirstFree;
    repeats = repeatedMuch(s.at - begin);
  }
}

// Codes the last byte. The string that it makes with the prefix counts also when it is known, though it
// is stored a second time then. When it is not known the byte is written as a code of its own, and is
// followed by the same checks made with the same count: so the width can grow twice, and Clear come twice.
void codeLastByte(Stream &s, uint32_t known, uint32_t byte) {
  const uint32_t counted = s.next + 1;
  const auto write = [&](uint32_t code) {
    s.bits.put(code, s.width);
    if (counted == 512 || counted == 1024 || counted == 2048) ++s.width;
    if (counted == kClearAt) {
      s.bits.put(kClear, s.width);
      s.width = 9;
    }
  };
  write(known != 0 ? known : s.prefix);
  if (known == 0) write(byte);
}

}  // namespace

uint32_t encodeLzw(std::span<const uint8_t> strip, std::span<uint8_t> out, LzwMemory &memory) {
  uint16_t codes[kMostCodes];
  Stream s{{out.data()}, strip.data(), codes};
  s.bits.put(kClear, s.width);
  // A strip of one byte gets no code for it.
  if (strip.size() > 1) {
    s.prefix = *s.at++;
    const uint32_t known = codeAllButLast(s, strip, memory);
    codeLastByte(s, known, strip.back());
  }
  s.bits.put(kEndOfInformation, s.width);
  return static_cast<uint32_t>(s.bits.end() - out.data());
}

uint32_t encodeLzw(std::span<const uint8_t> strip, std::span<uint8_t> out) {
  LzwMemory memory;
  return encodeLzw(strip, out, memory);
}

}  // namespace tiff
