// SPDX-License-Identifier: MIT
#include "tiff/reference_changes.h"

#include <algorithm>
#include <array>

#include "tiff/fax_code_list.h"

namespace reference {
namespace {

struct TypedCode {
  uint32_t bits = 0, length = 0;
};

TypedCode typedCode(const char *text) {
  TypedCode code;
  for (; *text != 0; ++text, ++code.length) code.bits = code.bits * 2 + (*text == '1' ? 1 : 0);
  return code;
}

constexpr uint32_t kLongestListed = 13;

// The typed codes of a kind, by value, and what the next 13 bits begin with.
class CodeList {
 public:
  struct Found {
    int value = -1;  // none
    uint32_t length = 0;
  };
  void add(const char *text, uint32_t value) {
    const TypedCode code = typedCode(text);
    if (byValue_.size() <= value) byValue_.resize(value + 1);
    byValue_[value] = code;
    const uint32_t free = kLongestListed - code.length;
    for (uint32_t rest = 0; rest < 1u << free; ++rest) {
      byBits_[code.bits << free | rest] = {static_cast<int>(value), code.length};
    }
  }
  TypedCode of(uint32_t value) const { return byValue_[value]; }
  Found beginning(uint32_t bits) const { return byBits_[bits]; }

 private:
  std::vector<TypedCode> byValue_;
  std::array<Found, 1 << kLongestListed> byBits_{};
};

CodeList listRuns(bool isBlack) {
  CodeList codes;
  for (uint32_t i = 0; i < 64; ++i) codes.add(isBlack ? kBlackShort[i] : kWhiteShort[i], i);
  for (uint32_t i = 0; i < 27; ++i) codes.add(isBlack ? kBlackLong[i] : kWhiteLong[i], 64 * (i + 1));
  for (uint32_t i = 0; i < 13; ++i) codes.add(kExtended[i], 1792 + 64 * i);
  return codes;
}

const CodeList &listedRuns(bool isBlack) {
  static const CodeList white = listRuns(false), black = listRuns(true);
  return isBlack ? black : white;
}

const CodeList &listedModes() {
  static const CodeList codes = [] {
    CodeList all;
    for (uint32_t i = 0; i < 9; ++i) all.add(kModes[i], i);
    return all;
  }();
  return codes;
}

// CodeList to bytes, first bit highest, the last byte filled with zeros.
class CodeWriter {
 public:
  CodeWriter() { bytes_.reserve(200); }
  void add(TypedCode code) {
    held_ = held_ << code.length | code.bits;
    for (count_ += code.length; count_ >= 8; count_ -= 8) {
      bytes_.push_back(static_cast<uint8_t>(held_ >> (count_ - 8)));
    }
  }
  void addRun(bool isBlack, uint32_t run) {
    const CodeList &codes = listedRuns(isBlack);
    for (; run > 2560; run -= 2560) add(codes.of(2560));
    if (run >= 64) add(codes.of(run / 64 * 64));
    add(codes.of(run % 64));
  }
  void toWholeByte() {
    if (count_ > 0) add({0, 8 - count_});
  }
  Bytes bytes() {
    toWholeByte();
    return std::move(bytes_);
  }

 private:
  uint64_t held_ = 0;
  uint32_t count_ = 0;  // bits in held_ that are in no byte
  Bytes bytes_;
};

class CodeReader {
 public:
  explicit CodeReader(std::span<const uint8_t> codes) : codes_(codes) {}
  bool atEnd() const { return bit_ >= codes_.size() * 8; }
  void toWholeByte() { bit_ = (bit_ + 7) / 8 * 8; }

  // The value of the next code, or -1 when no whole code is there.
  int code(const CodeList &codes) {
    uint32_t bits = 0;
    for (size_t i = 0; i < 3; ++i) bits = bits << 8 | byteAt(bit_ / 8 + i);
    const CodeList::Found found = codes.beginning(bits << bit_ % 8 >> (24 - kLongestListed) & 0x1FFF);
    if (found.value < 0 || bit_ + found.length > codes_.size() * 8) return -1;
    bit_ += found.length;
    return found.value;
  }
  // A whole run; -1 when there is none.
  int run(bool isBlack) {
    for (int total = 0;;) {
      const int part = code(listedRuns(isBlack));
      if (part < 0) return -1;
      total += part;
      if (part < 64) return total;
    }
  }
  // Steps over an EOL with any number of zeros before it. Without one nothing is stepped over.
  bool eol() {
    size_t one = bit_;
    while (one < codes_.size() * 8 && (codes_[one / 8] >> (7 - one % 8) & 1) == 0) ++one;
    if (one >= codes_.size() * 8 || one - bit_ < 11) return false;
    bit_ = one + 1;
    return true;
  }

 private:
  uint32_t byteAt(size_t index) const { return index < codes_.size() ? codes_[index] : 0; }
  std::span<const uint8_t> codes_;
  size_t bit_ = 0;
};

// The changing elements of a row from left to right, where its width is one more that never ends.
class ChangingElements {
 public:
  ChangingElements(std::span<const uint32_t> places, uint32_t width) : places_(places), width_(width) {}
  // The first at `from` or to the right of it that changes away from this colour: `from` never decreases.
  uint32_t awayFrom(bool isBlack, uint32_t from) {
    while (next_ < places_.size() && places_[next_] < from) ++next_;
    found_ = next_ % 2 == (isBlack ? 1u : 0u) ? next_ : next_ + 1;
    return place(found_);
  }
  // The one behind the one just found.
  uint32_t behind() const { return place(found_ + 1); }

 private:
  uint32_t place(size_t index) const { return index < places_.size() ? places_[index] : width_; }
  std::span<const uint32_t> places_;
  uint32_t width_;
  size_t next_ = 0, found_ = 0;
};

void codeRow2D(std::span<const uint32_t> row, std::span<const uint32_t> above, uint32_t width,
               CodeWriter &out) {
  ChangingElements own(row, width), others(above, width);
  bool isBlack = false, atStart = true;  // at first a0 lies just before the row
  for (uint32_t a0 = 0; atStart || a0 < width; atStart = false) {
    const uint32_t a1 = own.awayFrom(isBlack, a0), a2 = own.behind();
    const uint32_t b1 = others.awayFrom(isBlack, atStart ? 0 : a0 + 1), b2 = others.behind();
    if (b2 < a1) {
      out.add(listedModes().of(0));
      a0 = b2;
    } else if (a1 + 3 >= b1 && b1 + 3 >= a1) {
      out.add(listedModes().of(5 + a1 - b1));
      a0 = a1;
      isBlack = !isBlack;
    } else {
      out.add(listedModes().of(1));
      out.addRun(isBlack, a1 - a0);
      out.addRun(!isBlack, a2 - a1);
      a0 = a2;
    }
  }
}

// A row of runs, white first, that must end at the width exactly.
bool readRow1D(CodeReader &reader, uint32_t width, ChangingRows &rows) {
  bool isBlack = false;
  for (uint32_t at = 0; at < width; isBlack = !isBlack) {
    const int run = reader.run(isBlack);
    if (run < 0 || static_cast<uint32_t>(run) > width - at) return false;
    at += static_cast<uint32_t>(run);
    if (at < width) rows.change(at);
  }
  rows.end();
  return true;
}

bool readRow2D(CodeReader &reader, uint32_t width, std::span<const uint32_t> above, ChangingRows &rows) {
  ChangingElements others(above, width);
  bool isBlack = false, atStart = true;
  for (uint32_t a0 = 0; a0 < width; atStart = false) {
    const uint32_t b1 = others.awayFrom(isBlack, atStart ? 0 : a0 + 1), b2 = others.behind();
    const int mode = reader.code(listedModes());
    if (mode < 0) return false;
    if (mode == 0) {
      a0 = b2;
    } else if (mode == 1) {
      const int first = reader.run(isBlack), second = reader.run(!isBlack);
      if (first < 0 || second < 0) return false;
      for (const int run : {first, second}) {
        if (static_cast<uint32_t>(run) > width - a0) return false;
        a0 += static_cast<uint32_t>(run);
        if (a0 < width) rows.change(a0);
      }
    } else {
      const int64_t a1 = int64_t{b1} + mode - 5;
      if (a1 < a0 || a1 > width) return false;
      a0 = static_cast<uint32_t>(a1);
      if (a0 < width) rows.change(a0);
      isBlack = !isBlack;
    }
  }
  rows.end();
  return true;
}

}  // namespace

ChangingRows changingRows(std::span<const uint8_t> packed, uint32_t width) {
  ChangingRows rows;
  const size_t rowBytes = (width + 7) / 8;
  for (size_t begin = 0; begin < packed.size(); begin += rowBytes) {
    bool isBlack = false;
    for (uint32_t x = 0; x < width;) {
      const uint32_t byte = packed[begin + x / 8];
      if (x % 8 == 0 && byte == (isBlack ? 0x00u : 0xFFu)) {
        x += 8;
        continue;
      }
      if ((byte >> (7 - x % 8) & 1) == (isBlack ? 1u : 0u)) {
        rows.change(x);
        isBlack = !isBlack;
      }
      ++x;
    }
    rows.end();
  }
  return rows;
}

Bytes huffman(const ChangingRows &rows, uint32_t width) {
  CodeWriter out;
  for (size_t index = 0; index < rows.count(); ++index) {
    uint32_t at = 0;
    bool isBlack = false;
    for (const uint32_t place : rows.row(index)) {
      out.addRun(isBlack, place - at);
      at = place;
      isBlack = !isBlack;
    }
    out.addRun(isBlack, width - at);
    out.toWholeByte();
  }
  return out.bytes();
}

Bytes t6(const ChangingRows &rows, uint32_t width) {
  CodeWriter out;
  std::span<const uint32_t> above;  // a white row
  for (size_t index = 0; index < rows.count(); ++index) {
    codeRow2D(rows.row(index), above, width, out);
    above = rows.row(index);
  }
  return out.bytes();
}

ChangingRows readHuffman(std::span<const uint8_t> codes, uint32_t width, size_t rows) {
  ChangingRows read;
  CodeReader reader(codes);
  while (read.count() < rows && readRow1D(reader, width, read)) reader.toWholeByte();
  read.dropUnended();
  return read;
}

ChangingRows readT4(std::span<const uint8_t> codes, uint32_t width) {
  ChangingRows read;
  CodeReader reader(codes);
  if (!reader.eol()) return read;
  for (;;) {
    if (reader.eol()) {  // two in a row: the end, of six in all
      for (int i = 0; i < 4; ++i) {
        if (!reader.eol()) return {};
      }
      return reader.atEnd() ? read : ChangingRows();
    }
    if (!readRow1D(reader, width, read) || !reader.eol()) return {};
  }
}

ChangingRows readT6(std::span<const uint8_t> codes, uint32_t width, size_t rows) {
  ChangingRows read;
  CodeReader reader(codes);
  while (read.count() < rows) {
    // A copy, as what is read moves when it grows.
    const std::span<const uint32_t> last =
        read.count() == 0 ? std::span<const uint32_t>() : read.row(read.count() - 1);
    const std::vector<uint32_t> above(last.begin(), last.end());
    if (!readRow2D(reader, width, above, read)) break;
  }
  read.dropUnended();
  return read;
}

}  // namespace reference
