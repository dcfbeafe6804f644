// SPDX-License-Identifier: MIT
// The decoders of reference_fax.h: codes are looked up in a tree made of the typed code list.
#include <array>

#include "tiff/fax_code_list.h"
#include "tiff/reference_fax.h"

namespace reference {
namespace {

constexpr int kNone = -1;
constexpr int kEolValue = -2;

// A binary tree of codes. A code's value lies at its leaf.
class CodeTree {
 public:
  CodeTree() : nodes_(1) {}
  void add(const char *bits, int value) {
    size_t at = 0;
    for (; *bits != 0; ++bits) {
      const size_t side = *bits == '1' ? 1 : 0;
      if (nodes_[at].next[side] == 0) {
        nodes_[at].next[side] = nodes_.size();
        nodes_.emplace_back();
      }
      at = nodes_[at].next[side];
    }
    nodes_[at].value = value;
  }
  struct Node {
    std::array<size_t, 2> next{};
    int value = kNone;
  };
  const Node &node(size_t at) const { return nodes_[at]; }

 private:
  std::vector<Node> nodes_;
};

CodeTree runTree(bool isBlack) {
  CodeTree tree;
  for (size_t i = 0; i < 64; ++i) tree.add(isBlack ? kBlackShort[i] : kWhiteShort[i], static_cast<int>(i));
  for (size_t i = 0; i < 27; ++i) {
    tree.add(isBlack ? kBlackLong[i] : kWhiteLong[i], static_cast<int>(64 * (i + 1)));
  }
  for (size_t i = 0; i < 13; ++i) tree.add(kExtended[i], static_cast<int>(1792 + 64 * i));
  tree.add(kEol, kEolValue);
  return tree;
}

CodeTree modeTree() {
  CodeTree tree;
  for (size_t i = 0; i < 9; ++i) tree.add(kModes[i], static_cast<int>(i));
  return tree;
}

class Reader {
 public:
  explicit Reader(std::span<const uint8_t> codes) : codes_(codes) {}
  bool atEnd() const { return bit_ >= codes_.size() * 8; }
  int bit() {
    const int value = codes_[bit_ / 8] >> (7 - bit_ % 8) & 1;
    ++bit_;
    return value;
  }
  void toWholeByte() { bit_ = (bit_ + 7) / 8 * 8; }
  // The value of the next code, or kNone when no code is there.
  int code(const CodeTree &tree) {
    size_t at = 0;
    while (!atEnd()) {
      at = tree.node(at).next[static_cast<size_t>(bit())];
      if (at == 0) return kNone;
      if (tree.node(at).value != kNone) return tree.node(at).value;
    }
    return kNone;
  }
  // A whole run; kNone or kEolValue when there is none.
  int run(bool isBlack) {
    static const CodeTree trees[2] = {runTree(false), runTree(true)};
    int total = 0;
    for (;;) {
      const int part = code(trees[isBlack ? 1 : 0]);
      if (part < 0) return part;
      total += part;
      if (part < 64) return total;
    }
  }
  // Steps over an EOL with any number of zeros before it. Without one nothing is stepped over.
  bool eol() {
    const size_t start = bit_;
    size_t zeros = 0;
    while (!atEnd()) {
      if (bit() == 0) {
        ++zeros;
      } else {
        if (zeros >= 11) return true;
        break;
      }
    }
    bit_ = start;
    return false;
  }

 private:
  std::span<const uint8_t> codes_;
  size_t bit_ = 0;
};

// A row of runs, white first, that must end at the width exactly.
bool readRow(Reader &reader, size_t width, std::string &row) {
  for (char color = 'w'; row.size() < width; color = color == 'w' ? 'b' : 'w') {
    const int run = reader.run(color == 'b');
    if (run < 0 || row.size() + static_cast<size_t>(run) > width) return false;
    row.append(static_cast<size_t>(run), color);
  }
  return true;
}

}  // namespace

Picture unfaxHuffman(std::span<const uint8_t> codes, size_t width, size_t rows) {
  Picture picture;
  Reader reader(codes);
  while (picture.size() < rows) {
    std::string row;
    if (!readRow(reader, width, row)) break;
    picture.push_back(row);
    reader.toWholeByte();
  }
  return picture;
}

Picture unfaxT4(std::span<const uint8_t> codes, size_t width) {
  Picture picture;
  Reader reader(codes);
  if (!reader.eol()) return picture;
  for (;;) {
    if (reader.eol()) {  // two in a row: the end, of six in all
      for (int i = 0; i < 4; ++i) {
        if (!reader.eol()) return {};
      }
      return reader.atEnd() ? picture : Picture{};
    }
    std::string row;
    if (!readRow(reader, width, row) || !reader.eol()) return {};
    picture.push_back(row);
  }
}

Picture unfaxT6(std::span<const uint8_t> codes, size_t width, size_t rows) {
  static const CodeTree modes = modeTree();
  Picture picture;
  Reader reader(codes);
  std::string above(width, 'w');
  const auto changes = [&](size_t at) { return above[at] != (at == 0 ? 'w' : above[at - 1]); };
  while (picture.size() < rows) {
    std::string row;
    char color = 'w';
    bool started = false;
    while (row.size() < width) {
      size_t b1 = started ? row.size() + 1 : 0;
      while (b1 < width && !(changes(b1) && above[b1] != color)) ++b1;
      size_t b2 = b1 + 1;
      while (b2 < width && !changes(b2)) ++b2;
      if (b2 > width) b2 = width;
      started = true;
      const int mode = reader.code(modes);
      const char other = color == 'w' ? 'b' : 'w';
      if (mode == kNone) return picture;
      if (mode == 0) {
        row.append(b2 - row.size(), color);
      } else if (mode == 1) {
        const int first = reader.run(color == 'b');
        const int second = reader.run(other == 'b');
        if (first < 0 || second < 0) return picture;
        row.append(static_cast<size_t>(first), color);
        row.append(static_cast<size_t>(second), other);
      } else {
        const ptrdiff_t a1 = static_cast<ptrdiff_t>(b1) + mode - 5;
        if (a1 < static_cast<ptrdiff_t>(row.size())) return picture;
        row.append(static_cast<size_t>(a1) - row.size(), color);
        color = other;
      }
    }
    if (row.size() > width) return picture;
    picture.push_back(row);
    above = row;
  }
  return picture;
}

}  // namespace reference
