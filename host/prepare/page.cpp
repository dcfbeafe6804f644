// SPDX-License-Identifier: MIT
#include "prepare/page.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "prepare/greys.h"
#include "prepare/taps.h"

namespace prepare {
namespace {

// --- bits ----------------------------------------------------------------------------------------

constexpr uint64_t kLeftmost = uint64_t{1} << 63;

// The first pixel from x on that is (or is not) ink, or `end`.
uint32_t next(const uint64_t *row, uint32_t x, uint32_t end, bool ink) {
  while (x < end) {
    const uint64_t word = (ink ? row[x / 64] : ~row[x / 64]) << x % 64;
    if (word != 0) return std::min(end, x + static_cast<uint32_t>(std::countl_zero(word)));
    x = (x / 64 + 1) * 64;
  }
  return end;
}

void draw(uint64_t *row, uint32_t from, uint32_t to) {
  for (uint32_t x = from; x < to; ++x) row[x / 64] |= kLeftmost >> x % 64;
}

uint32_t countInk(const Page &page, uint32_t y, uint32_t from, uint32_t to) {
  uint32_t count = 0;
  for (uint32_t x = next(page.row(y), from, to, true); x < to; x = next(page.row(y), x + 1, to, true))
    ++count;
  return count;
}

uint64_t inkOf(const Page &page) {
  uint64_t count = 0;
  for (uint64_t word : page.bits) count += static_cast<uint64_t>(std::popcount(word));
  return count;
}

void invert(Page &page) {
  const uint64_t last = page.width % 64 == 0 ? ~uint64_t{0} : ~(~uint64_t{0} >> page.width % 64);
  for (uint64_t &word : page.bits) word = ~word;
  for (uint32_t y = 0; y < page.height; ++y) page.row(y)[page.words - 1] &= last;
}

// A square of 64 by 64 pixels turned over: halves are exchanged, then quarters, and so on.
void turn(std::array<uint64_t, 64> &square) {
  uint64_t mask = 0x00000000FFFFFFFF;
  for (unsigned step = 32; step != 0; step >>= 1, mask ^= mask << step) {
    for (unsigned k = 0; k < 64; k = ((k | step) + 1) & ~step) {
      const uint64_t moved = (square[k] ^ (square[k | step] >> step)) & mask;
      square[k] ^= moved;
      square[k | step] ^= moved << step;
    }
  }
}

// --- smoothing and cutting -----------------------------------------------------------------------

// Rows scaled across, as far as the rows down need them at the same time.
class ScaledRows {
 public:
  ScaledRows(const Page &page, uint32_t width, size_t held)
      : page_(page),
        taps_(cubicTaps(page.width, width)),
        bytes_(page.width),
        rows_(held),
        numbers_(held, kNone) {
    for (std::vector<int> &row : rows_) row.resize(width);
  }

  // Weights of the ink, up to kOne; null for a row without any.
  const int *row(uint32_t y) {
    const size_t slot = y % rows_.size();
    if (numbers_[slot] != y) {
      numbers_[slot] = y;
      scale(y, rows_[slot]);
    }
    return rows_[slot].front() == kBlank ? nullptr : rows_[slot].data();
  }

 private:
  static constexpr uint32_t kNone = UINT32_MAX;
  static constexpr int kBlank = INT32_MIN;  // no sum of weights

  void scale(uint32_t y, std::vector<int> &out) {
    if (next(page_.row(y), 0, page_.width, true) == page_.width) {
      out.front() = kBlank;
      return;
    }
    for (uint32_t x = 0; x < page_.width; ++x) bytes_[x] = page_.ink(x, y);
    for (size_t i = 0; i < out.size(); ++i) {
      const uint8_t *in = bytes_.data() + taps_[i].first;
      int sum = 0;
      for (int weight : taps_[i].weights) sum += weight * *in++;
      out[i] = sum;
    }
  }

  const Page &page_;
  std::vector<Taps> taps_;
  std::vector<uint8_t> bytes_;
  std::vector<std::vector<int>> rows_;
  std::vector<uint32_t> numbers_;
};

// Ink is what covers more than this of a pixel: half at full size, a quarter from half the size on.
int cutAt(double ratio) {
  const double covered = 0.5 - std::min(1.0, ratio - 1) / 4;
  return static_cast<int>(covered * kOne * kOne);
}

double ratioOf(uint32_t from, uint32_t to) {
  return static_cast<double>(from) / to;
}

void cut(const Page &page, Page &result) {
  const std::vector<Taps> down = cubicTaps(page.height, result.height);
  size_t held = 1;
  for (const Taps &taps : down) held = std::max(held, taps.weights.size());
  ScaledRows rows(page, result.width, held);
  const int limit = cutAt(std::max(ratioOf(page.width, result.width), ratioOf(page.height, result.height)));
  std::vector<int> sums(result.width);
  for (uint32_t y = 0; y < result.height; ++y) {
    std::ranges::fill(sums, 0);
    for (uint32_t k = 0; k < down[y].weights.size(); ++k) {
      const int *row = rows.row(down[y].first + k);
      const int weight = down[y].weights[k];
      if (!row || weight == 0) continue;
      for (size_t i = 0; i < sums.size(); ++i) sums[i] += weight * row[i];
    }
    for (uint32_t x = 0; x < result.width; ++x) {
      if (sums[x] > limit) result.row(y)[x / 64] |= kLeftmost >> x % 64;
    }
  }
}

// --- rules ---------------------------------------------------------------------------------------

// A run of ink so long is a rule and no part of a letter, in pixels of the page and of the result.
constexpr uint32_t kRule = 24, kRuleInResult = 6;

// A piece of a rule: columns `from` to `to` of the page, rows `top` to `top` + `thick`.
struct Piece {
  uint32_t from, to, top, thick;
};

// Draws it into the row of the result where its middle lies, unless another line is there on either side:
// where lines lie closer than the result can show, some of them stay and not all become one.
void keep(const Piece &piece, const Page &page, Page &result) {
  const double across = ratioOf(page.width, result.width), down = ratioOf(page.height, result.height);
  const auto from = static_cast<uint32_t>(std::lround(piece.from / across));
  const auto to = std::min(result.width, static_cast<uint32_t>(std::lround(piece.to / across)));
  const auto y = std::min(result.height - 1, static_cast<uint32_t>((piece.top + piece.thick / 2.0) / down));
  if (from >= to) return;
  const uint32_t half = (to - from + 1) / 2;
  if (countInk(result, y, from, to) < half) {
    if (y > 0 && countInk(result, y - 1, from, to) >= half) return;
    if (y + 1 < result.height && countInk(result, y + 1, from, to) >= half) return;
  }
  draw(result.row(y), from, to);
}

// The pieces of a run of ink in row y that begin there and are of fewer rows than one of the result is.
void keepThin(const Page &page, uint32_t y, uint32_t from, uint32_t to, std::vector<uint64_t> &open,
              std::vector<uint64_t> &thin, Page &result) {
  const auto thickest = static_cast<uint32_t>(std::ceil(ratioOf(page.height, result.height))) - 1;
  const uint32_t firstWord = from / 64, lastWord = (to - 1) / 64;
  const auto row = [&](uint32_t at, uint32_t word) { return at < page.height ? page.row(at)[word] : 0; };
  for (uint32_t w = firstWord; w <= lastWord; ++w) {
    open[w] = page.row(y)[w] & ~(y == 0 ? 0 : page.row(y - 1)[w]);
  }
  for (uint32_t thick = 1; thick <= thickest; ++thick) {
    for (uint32_t w = firstWord; w <= lastWord; ++w) {
      const uint64_t below = row(y + thick, w);
      thin[w] = open[w] & ~below;
      open[w] &= below;
    }
    for (uint32_t x = next(thin.data(), from, to, true); x < to;) {
      const uint32_t end = next(thin.data(), x, to, false);
      keep({x, end, y, thick}, page, result);
      x = next(thin.data(), end, to, true);
    }
  }
}

void keepRules(const Page &page, Page &result) {
  if (page.height <= result.height) return;
  const auto shortest =
      std::max(kRule, static_cast<uint32_t>(std::ceil(kRuleInResult * ratioOf(page.width, result.width))));
  std::vector<uint64_t> open(page.words), thin(page.words);
  for (uint32_t y = 0; y < page.height; ++y) {
    const uint64_t *row = page.row(y);
    for (uint32_t x = next(row, 0, page.width, true); x < page.width;) {
      const uint32_t end = next(row, x, page.width, false);
      if (end - x >= shortest) keepThin(page, y, x, end, open, thin, result);
      x = next(row, end, page.width, true);
    }
  }
}

// --- to and from pictures ------------------------------------------------------------------------

Page readPage(const Source &source) {
  Page page(source.width(), source.height());
  std::vector<uint8_t> row(source.width());
  const std::array<bool, 2> dark = source.bits() == 1 ? darkIndices(source) : std::array<bool, 2>{};
  for (uint32_t y = 0; y < page.height; ++y) {
    source.bits() == 1 ? source.readIndices(y, row.data()) : source.readGrey(y, row.data());
    uint64_t *bits = page.row(y);
    for (uint32_t x = 0; x < page.width; ++x) {
      const bool ink = source.bits() == 1 ? dark[row[x]] : row[x] < 128;
      if (ink) bits[x / 64] |= kLeftmost >> x % 64;
    }
  }
  return page;
}

}  // namespace

Page::Page(uint32_t columns, uint32_t rows)
    : width(columns), height(rows), words((columns + 63) / 64), bits(size_t{words} * rows) {}

Page transposed(const Page &page) {
  Page result(page.height, page.width);
  std::array<uint64_t, 64> square;
  for (uint32_t top = 0; top < page.height; top += 64) {
    for (uint32_t word = 0; word < page.words; ++word) {
      for (uint32_t k = 0; k < 64; ++k) square[k] = top + k < page.height ? page.row(top + k)[word] : 0;
      turn(square);
      for (uint32_t k = 0; k < 64 && word * 64 + k < page.width; ++k)
        result.row(word * 64 + k)[top / 64] = square[k];
    }
  }
  return result;
}

Page shrink(const Page &page, uint32_t width, uint32_t height) {
  Page result(width, height);
  cut(page, result);
  keepRules(page, result);
  if (page.width <= width) return result;
  Page turned = transposed(result);
  keepRules(transposed(page), turned);
  return transposed(turned);
}

bool isPage(const Source &source) {
  if (source.bits() == 1) return true;
  std::vector<uint8_t> row(source.width());
  for (uint32_t y = 0; y < source.height(); ++y) {
    source.readGrey(y, row.data());
    if (!std::ranges::all_of(row, [](uint8_t level) { return level == 0 || level == 255; })) return false;
  }
  return true;
}

void shrinkPage(const Source &source, const Block &block) {
  Page page = readPage(source);
  const bool dark = inkOf(page) * 2 > uint64_t{page.width} * page.height;
  if (dark) invert(page);
  Page result = shrink(page, block.plan.width, block.plan.rows);
  if (!dark) invert(result);  // white is 1
  for (uint32_t y = 0; y < result.height; ++y) {
    const uint64_t *in = result.row(y);
    uint8_t *out = block.row(y);
    for (uint64_t i = 0; i < rowBytes(block.plan); ++i) {
      out[i] = static_cast<uint8_t>(in[i / 8] >> (56 - i % 8 * 8));
    }
  }
}

}  // namespace prepare
