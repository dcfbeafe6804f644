// SPDX-License-Identifier: MIT
#include "prepare/nearest.h"

#include <climits>

namespace prepare {
namespace {

int squares(const Color &a, const Color &b) {
  int sum = 0;
  for (size_t c = 0; c < 3; ++c) sum += (a[c] - b[c]) * (a[c] - b[c]);
  return sum;
}

uint8_t nearestOf(std::span<const uint8_t> candidates, std::span<const Color> table, const Color &color) {
  uint8_t best = candidates[0];
  int least = INT_MAX;
  for (const uint8_t index : candidates) {
    const int distance = squares(table[index], color);
    if (distance < least) {
      least = distance;
      best = index;
    }
  }
  return best;
}

}  // namespace

uint8_t nearestEntry(std::span<const Color> table, const Color &color) {
  size_t best = 0;
  int least = INT_MAX;
  for (size_t i = 0; i < table.size(); ++i) {
    const int distance = squares(table[i], color);
    if (distance < least) {
      least = distance;
      best = i;
    }
  }
  return static_cast<uint8_t>(best);
}

Candidates::Candidates(std::span<const Color> table)
    : table_(table), all_(table.size()), large_(16 * 16 * 16), numbers_(large_.size()) {
  for (size_t i = 0; i < all_.size(); ++i) all_[i] = static_cast<uint8_t>(i);
}

// Compares each candidate a with the one that is nearest to the cell's middle, b. The difference of the
// squared distances from a colour p to the two,
//     (p - a)^2 - (p - b)^2 = (a - b) . (a + b - 2p),
// is linear in p: it is least in a corner of the cell, and each channel finds its corner by itself. When
// even that is above 0, a is never the nearest here.
void Candidates::keepPossible(std::span<const uint8_t> from, const Color &low, int side) {
  const auto half = static_cast<uint8_t>(side / 2);
  const Color middle{static_cast<uint8_t>(low[0] + half), static_cast<uint8_t>(low[1] + half),
                     static_cast<uint8_t>(low[2] + half)};
  const uint8_t central = nearestOf(from, table_, middle);
  const Color &b = table_[central];
  possible_.clear();
  for (const uint8_t index : from) {
    const Color &a = table_[index];
    int least = 0;
    for (size_t c = 0; c < 3; ++c) {
      const int p = a[c] > b[c] ? low[c] + side - 1 : low[c];
      least += (a[c] - b[c]) * (a[c] + b[c] - 2 * p);
    }
    // One that is never more than as near loses to an earlier entry.
    if (least < 0 || (least == 0 && index <= central)) possible_.push_back(index);
  }
}

void Candidates::note(List &list, std::span<const uint8_t> from, const Color &color, int side) {
  const auto start = [side](uint8_t v) { return static_cast<uint8_t>(v & -side); };
  keepPossible(from, {start(color[0]), start(color[1]), start(color[2])}, side);
  list = {static_cast<uint32_t>(lists_.size()), static_cast<uint32_t>(possible_.size())};
  lists_.insert(lists_.end(), possible_.begin(), possible_.end());
}

std::span<const uint8_t> Candidates::around(const Color &color) {
  const auto cell = static_cast<size_t>((color[0] >> 4) << 8 | (color[1] >> 4) << 4 | color[2] >> 4);
  if (large_[cell].count == 0) {
    note(large_[cell], all_, color, 16);
    numbers_[cell] = static_cast<uint16_t>(small_.size());
    small_.emplace_back();
  }
  List &small = small_[numbers_[cell]][static_cast<size_t>((color[0] >> 3 & 1) << 2 |
                                                           (color[1] >> 3 & 1) << 1 | (color[2] >> 3 & 1))];
  if (small.count == 0) note(small, listed(large_[cell]), color, 8);
  return listed(small);
}

uint8_t Candidates::find(const Color &color) {
  return nearestOf(around(color), table_, color);
}

std::span<const uint8_t> Candidates::inSmallCell(const Color &low) {
  keepPossible(around(low), low, 4);
  return possible_;
}

NearestColor::NearestColor(std::span<const Color> table, uint64_t pixels)
    : table_(table), candidates_(table) {
  if (pixels <= kFewPixels) return;
  answered_.resize(64 * 64 * 64);
  answers_.resize(kAnswers);
  for (size_t i = 0; i < table.size(); ++i) {
    answers_.insert(answers_.end(), kAnswers, static_cast<uint8_t>(i));
  }
}

void NearestColor::answer(size_t cell) {
  const Color low{static_cast<uint8_t>(cell >> 12 << 2), static_cast<uint8_t>((cell >> 6 & 63) << 2),
                  static_cast<uint8_t>((cell & 63) << 2)};
  const std::span<const uint8_t> possible = candidates_.inSmallCell(low);
  if (possible.size() == 1) {
    answered_[cell] = possible[0] + 1u;
    return;
  }
  answered_[cell] = static_cast<uint32_t>(answers_.size() / kAnswers);
  for (unsigned place = 0; place < kAnswers; ++place) {
    const Color color{static_cast<uint8_t>(low[0] + (place >> 4)),
                      static_cast<uint8_t>(low[1] + (place >> 2 & 3)),
                      static_cast<uint8_t>(low[2] + (place & 3))};
    answers_.push_back(nearestOf(possible, table_, color));
  }
}

void NearestColor::findRow(std::span<const uint8_t> colors, uint8_t *indices) {
  if (answered_.empty()) {
    for (; !colors.empty(); colors = colors.subspan(3)) *indices++ = find(colors[0], colors[1], colors[2]);
    return;
  }
  const uint32_t *answered = answered_.data();
  const uint8_t *answers = answers_.data();
  const uint8_t *end = colors.data() + colors.size();
  for (const uint8_t *color = colors.data(); color != end; color += 3) {
    const size_t cell = cellOf(color[0], color[1], color[2]);
    if (answered[cell] == 0) {
      answer(cell);
      answers = answers_.data();
    }
    *indices++ = answers[answered[cell] * kAnswers + placeOf(color[0], color[1], color[2])];
  }
}

}  // namespace prepare
