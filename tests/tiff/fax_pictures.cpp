// SPDX-License-Identifier: MIT
#include "tiff/fax_pictures.h"

#include <algorithm>

namespace reference {
namespace {

void fill(std::string &row, int64_t from, int64_t to, char color) {
  const auto width = static_cast<int64_t>(row.size());
  for (int64_t x = std::max<int64_t>(from, 0); x < std::min(to, width); ++x)
    row[static_cast<size_t>(x)] = color;
}

// Slanted strokes a few pixels wide, with blank lines between them.
void drawText(support::Random &random, Picture &picture) {
  const auto width = static_cast<int64_t>(picture[0].size());
  for (int64_t x = random.between(0, 9); x < width; x += random.between(4, 60)) {
    const int64_t slant = random.between(-2, 2);
    const int64_t thick = random.between(1, 9);
    for (size_t y = 0; y < picture.size(); ++y) {
      const int64_t at = x + slant * static_cast<int64_t>(y) + random.between(0, 1);
      if (y % 7 != 6) fill(picture[y], at, at + thick, 'b');
    }
  }
}

// Edges that move by up to five pixels from row to row, so that every vertical mode comes up.
void drawDrift(support::Random &random, Picture &picture) {
  std::vector<int64_t> edges;
  const auto width = static_cast<int64_t>(picture[0].size());
  for (int64_t x = random.between(0, 5); x < width; x += random.between(1, 90)) edges.push_back(x);
  for (std::string &row : picture) {
    for (size_t i = 0; i + 1 < edges.size(); i += 2) fill(row, edges[i], edges[i + 1], 'b');
    for (int64_t &edge : edges) edge += random.between(-5, 5);
    std::sort(edges.begin(), edges.end());
  }
}

}  // namespace

Picture stripes(size_t width, size_t rows, size_t period) {
  std::string row(width, 'w');
  for (size_t x = 0; x < width; ++x) row[x] = x / period % 2 == 0 ? 'w' : 'b';
  return Picture(rows, row);
}

Picture faxPicture(support::Random &random, Kind kind) {
  const auto width =
      static_cast<size_t>(random.chance(30) ? random.between(1, 80) : random.between(1, 3000));
  const auto rows = static_cast<size_t>(random.between(1, 9));
  Picture picture(rows, std::string(width, kind == Kind::kBlack ? 'b' : 'w'));
  if (kind == Kind::kText) drawText(random, picture);
  if (kind == Kind::kDrift) drawDrift(random, picture);
  if (kind == Kind::kStripes) picture = stripes(width, rows, static_cast<size_t>(random.between(1, 300)));
  if (kind == Kind::kHalftone) {
    for (size_t y = 0; y < rows; ++y) {
      for (size_t x = 0; x < width; ++x) {
        const auto threshold = static_cast<int64_t>((x * 7 + y * 13 + x * y) % 16);
        if (threshold < static_cast<int64_t>(x * 16 / width) + random.between(-1, 1)) picture[y][x] = 'b';
      }
    }
  }
  if (kind == Kind::kNoise) {
    const auto percent = static_cast<unsigned>(random.between(1, 99));
    for (std::string &row : picture) {
      for (char &pixel : row) pixel = random.chance(percent) ? 'b' : 'w';
    }
  }
  return picture;
}

}  // namespace reference
