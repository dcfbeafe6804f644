// SPDX-License-Identifier: MIT
// What nStripBytes, and with it a strip's byte count, says: when it grows, and how far it has come when
// the output fails.
#include <gtest/gtest.h>

#include <map>

#include "runtime/file_limit.h"
#include "runtime/unaligned.h"
#include "support/random.h"
#include "support/temp_dir.h"
#include "tiff/reference_fax.h"
#include "tiff/reference_packbits.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::InUse;
using support::Pixels;

// --- A host that looks -----------------------------------------------------------------------------

struct Counted {
  size_t written;    // bytes of the write
  uint32_t counted;  // nStripBytes while it is made
  friend bool operator==(const Counted &, const Counted &) = default;
};

void PrintTo(const Counted &seen, std::ostream *out) {
  *out << seen.written << " bytes at " << seen.counted;
}

// A stream procedure that takes everything and notes each write of more than one byte; patches and the
// front come a byte at a time.
struct Watcher {
  std::vector<Counted> seen;
  int64_t position = 0;

  static HostWord answer(HostWord token, HostWord op, HostWord first, HostWord second) {
    auto &self = *reinterpret_cast<Watcher *>(token);
    const auto count = static_cast<int32_t>(second);
    if (op == support::HostStream::kOpen) return token;
    if (op == support::HostStream::kSeek) {
      const int32_t offset = *reinterpret_cast<const int32_t *>(first);
      self.position = second == 0 ? offset : self.position + offset;
      return static_cast<HostWord>(self.position);
    }
    if (op != support::HostStream::kWrite) return 0;
    if (count > 1) self.seen.push_back({static_cast<size_t>(count), lpRaster->tiff.nStripBytes});
    self.position += count;
    return second;
  }

  // What it saw of a picture of 16 by `height` pixels, each row 55 AA.
  std::vector<Counted> watch(int32_t compression, uint32_t height,
                             uint16_t layout = RAXEL_STORED_LAYOUT_STRIPS) {
    InUse use(RAXEL_STORED_MODE_BILEVEL, compression, layout);
    use.setup.tiff.nStripBytes = 77;  // of the picture before
    KvlStreamDesc descriptor{};
    descriptor.lpMemVar = reinterpret_cast<HostWord>(this);
    descriptor.lpfnProc = reinterpret_cast<HostWord>(&Watcher::answer);
    const Handle file = kvlOpen("watched", &descriptor, KVL_OUTPUT);
    Bytes rows;
    for (uint32_t i = 0; i < height; ++i) rows.insert(rows.end(), {0x55, 0xAA, 0, 0});
    const Pixels block(rows);
    EXPECT_EQ(support::writePicture(file, {16, height, 1, {}, Bytes(6)}, block.handle()), 0);
    kvlClose(file);
    return std::move(seen);
  }
};

// Strips of two rows. A PackBits row is 01 55 AA.
TEST(StripCount, GrowsAfterEachPieceOfPackBits) {
  const std::vector<Counted> expected = {{3, 0}, {3, 3}, {3, 0}, {3, 3}, {3, 0}, {3, 3}, {3, 0}, {3, 3}};
  EXPECT_EQ(Watcher().watch(RAXEL_STORED_COMPRESS_PACKBITS, 8), expected);
}

// A row is black, seven of one pixel each, two white, and seven of one again.
TEST(StripCount, GrowsAfterEachRowOfHuffman) {
  const auto row =
      static_cast<uint32_t>(reference::packBits01(reference::fax1D("bwbwbwbwwbwbwbwb")).size());
  const std::vector<Counted> expected = {{row, 0}, {row, row}, {row, 0}, {row, row},
                                         {row, 0}, {row, row}, {row, 0}, {row, row}};
  EXPECT_EQ(Watcher().watch(RAXEL_STORED_COMPRESS_HUFFMAN, 8), expected);
}

// The first end of line sets the count, and so it begins from the picture before when nothing is patched.
TEST(StripCount, GrowsAfterEachEndOfLineOfT4) {
  const auto row =
      static_cast<uint32_t>(reference::packBits01(reference::fax1D("bwbwbwbwwbwbwbwb")).size()) + 2;
  for (const uint16_t layout : {RAXEL_STORED_LAYOUT_STRIPS, RAXEL_STORED_LAYOUT_TILES}) {
    std::vector<Counted> expected = {{2, layout == RAXEL_STORED_LAYOUT_TILES ? 77u : 0u}, {row, 2}};
    for (uint32_t i = 0; i < 5; ++i) expected.push_back({2, row + 2 + 2 * i});
    EXPECT_EQ(Watcher().watch(RAXEL_STORED_COMPRESS_T4, 1, layout), expected) << layout;
  }
}

TEST(StripCount, GrowsAfterAStripOfLzwAndOfT6) {
  for (const int32_t compression : {RAXEL_STORED_COMPRESS_LZW, RAXEL_STORED_COMPRESS_T6}) {
    const std::vector<Counted> seen = Watcher().watch(compression, 4);
    ASSERT_EQ(seen.size(), 4u);
    for (const Counted &strip : seen) EXPECT_EQ(strip.counted, 0u) << compression;
  }
}

// --- A disk that fills up ----------------------------------------------------------------------------

constexpr uint32_t kWidth = 4000;
constexpr uint32_t kHeight = 80;
constexpr uint32_t kWindow = 12288;  // what a stream keeps of a file: it fails when a full one does

// How many bytes a row's codes take, without an end of line.
uint32_t faxRow(const Bytes &row, uint32_t width) {
  std::string pixels;
  for (uint32_t x = 0; x < width; ++x) pixels += (row[x / 8] << x % 8 & 0x80) != 0 ? 'w' : 'b';
  return static_cast<uint32_t>(reference::packBits01(reference::fax1D(pixels)).size());
}

// How long the writes are that a host would see of a strip, one after the other.
std::vector<uint32_t> writesOf(int32_t compression, const std::vector<Bytes> &rows) {
  std::vector<uint32_t> writes;
  const auto add = [&](size_t length) { writes.push_back(static_cast<uint32_t>(length)); };
  if (compression == RAXEL_STORED_COMPRESS_T4) add(2);
  for (const Bytes &row : rows) {
    if (compression == RAXEL_STORED_COMPRESS_PACKBITS) {
      for (size_t at = 0; at < row.size(); at += 127) {
        add(reference::packBitsPiece(
                std::span(row).subspan(at).first(std::min<size_t>(127, row.size() - at)))
                .size());
      }
    } else {
      add(faxRow(row, kWidth) + (compression == RAXEL_STORED_COMPRESS_T4 ? 2u : 0u));
    }
  }
  for (int i = 0; compression == RAXEL_STORED_COMPRESS_T4 && i < 5; ++i) add(2);
  return writes;
}

struct Layout {
  uint16_t mode;
  std::vector<uint32_t> rows;  // of each piece of the picture
  uint32_t front;              // bytes before the first one
};

// Four strips behind two arrays of four numbers. In the layout of tiles rows that are not cut into them go
// out in pieces of up to 32,767 bytes, behind two arrays of eight numbers.
Layout layoutOf(uint16_t mode) {
  if (mode == RAXEL_STORED_LAYOUT_STRIPS) return {mode, {20, 20, 20, 20}, 0xDA};
  return {mode, {65, 15}, 0x106};
}

class FullDisk : public testing::TestWithParam<std::tuple<int32_t, uint16_t>> {};

// Rows are gathered, but a strip counts only what was tried: up to the write that found no room. Where
// nothing is patched the count goes on from what it was, unless an end of line sets it.
TEST_P(FullDisk, AStripCountsWhatWasTried) {
  constexpr uint32_t kBefore = 77;
  const int32_t compression = std::get<0>(GetParam());
  const Layout layout = layoutOf(std::get<1>(GetParam()));
  const bool startsAnew =
      layout.mode == RAXEL_STORED_LAYOUT_STRIPS || compression == RAXEL_STORED_COMPRESS_T4;
  support::Random random(11);
  const Bytes pixels = random.bytes(size_t{kWidth} / 8 * kHeight);
  std::vector<std::vector<uint32_t>> strips;
  size_t fromBottom = kHeight;
  for (const uint32_t count : layout.rows) {
    std::vector<Bytes> rows;
    for (uint32_t i = 0; i < count; ++i) {
      rows.push_back(support::slice(pixels, --fromBottom * (kWidth / 8), kWidth / 8));
    }
    strips.push_back(writesOf(compression, rows));
  }
  for (const uint32_t limit : {kWindow - 1, kWindow, kWindow + 1, 20000u, 2 * kWindow, 30000u, 36000u}) {
    const support::TempDir dir;
    InUse use(RAXEL_STORED_MODE_BILEVEL, compression, layout.mode);
    use.setup.tiff.nStripBytes = kBefore;
    const Handle file = kvlOpen(dir.file("full.tif").c_str(), nullptr, KVL_OUTPUT);
    const Pixels block(pixels);
    // The first byte that cannot be kept, because the window before it cannot be written.
    const uint32_t lost = (limit / kWindow + 1) * kWindow;
    uint32_t expected = kBefore;
    uint32_t at = layout.front;
    for (const std::vector<uint32_t> &strip : strips) {
      if (startsAnew) expected = 0;
      for (size_t i = 0; i < strip.size() && at <= lost; ++i) {
        expected += strip[i];
        at += strip[i];
      }
      if (at > lost) break;
    }
    ASSERT_GT(at, lost) << "the picture is too small for " << limit;
    {
      const support::FileLimit disk(limit);
      EXPECT_EQ(support::writePicture(file, {kWidth, kHeight, 1, {}, Bytes(6)}, block.handle()),
                RAXEL_CANNOT_WRITE);
    }
    EXPECT_EQ(use.setup.tiff.nStripBytes, expected) << limit;
    kvlClose(file);
  }
}

// Where the codes of a first row end: it is noise up to some byte, and white from there on.
struct LongRow {
  static constexpr uint32_t kWidth = 64000;
  Bytes pixels;
  uint32_t coded;  // with its end of line
  uint32_t end;    // in a file whose first strip begins with it
};

// Such rows which end at most so many bytes before the disk does, each at another one.
std::vector<LongRow> rowsEndingBefore(uint32_t limit, uint32_t height, uint32_t most, uint64_t seed) {
  support::HostOutput front;
  {
    InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T4);
    Handle descriptor = 0;
    BeginCellBitmap(front.file, LongRow::kWidth, height, 1, Bytes(6).data(), &descriptor);
    EndCellBitmap(front.file, descriptor);
  }
  support::Random random(seed);
  const Bytes noise = random.bytes(LongRow::kWidth / 8);
  std::map<uint32_t, LongRow> rows;
  for (size_t length = noise.size(); length > 0; --length) {
    LongRow row{Bytes(noise.begin(), noise.begin() + static_cast<ptrdiff_t>(length)), 0, 0};
    row.pixels.resize(noise.size(), 0xFF);
    row.coded = faxRow(row.pixels, LongRow::kWidth) + 2;
    row.end = static_cast<uint32_t>(front.bytes().size()) + 2 + row.coded;
    if (row.end + most < limit) break;
    if (row.end > limit) length -= (row.end - limit) / 8;  // a byte of noise takes less than eight
    if (row.end <= limit) rows.emplace(row.end, row);
  }
  std::vector<LongRow> all;
  for (auto &[end, row] : rows) all.push_back(std::move(row));
  return all;
}

// What the first strip counts when its rows are all like this one.
uint32_t countedOnFullDisk(const LongRow &row, uint32_t height) {
  const support::TempDir dir;
  InUse use(RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_COMPRESS_T4);
  const Handle file = kvlOpen(dir.file("full.tif").c_str(), nullptr, KVL_OUTPUT);
  Bytes rows;
  for (uint32_t i = 0; i < height; ++i) rows.insert(rows.end(), row.pixels.begin(), row.pixels.end());
  const Pixels block(rows);
  {
    const support::FileLimit disk(kWindow - 1);
    EXPECT_EQ(support::writePicture(file, {LongRow::kWidth, height, 1, {}, Bytes(6)}, block.handle()),
              RAXEL_CANNOT_WRITE);
  }
  kvlClose(file);
  return use.setup.tiff.nStripBytes;
}

// The five ends of line behind a T.4 strip are tried one by one.
TEST(FullDiskEnd, AStripCountsTheMarksThatWereTried) {
  const std::vector<LongRow> rows = rowsEndingBefore(kWindow, 1, 10, 5);
  EXPECT_GE(rows.size(), 4u);
  for (const LongRow &row : rows) {
    const uint32_t marks = std::min((kWindow - row.end) / 2 + 1, 5u);
    EXPECT_EQ(countedOnFullDisk(row, 1), 2 + row.coded + 2 * marks) << row.end;
  }
}

// Of a strip of two rows the second is tried as well where the disk ends with the first, or behind it.
TEST(FullDiskEnd, AStripCountsTheRowThatFoundNoRoomAtAll) {
  std::vector<LongRow> rows;
  for (uint64_t seed = 1; seed < 20 && (rows.empty() || rows.back().end != kWindow); ++seed) {
    rows = rowsEndingBefore(kWindow, 8, 10, seed);
  }
  ASSERT_FALSE(rows.empty());
  EXPECT_EQ(rows.back().end, kWindow);
  for (const LongRow &row : rows) EXPECT_EQ(countedOnFullDisk(row, 8), 2 + 2 * row.coded) << row.end;
}

// A piece coded by itself counts in the same way.
TEST(FullDiskRow, CountsWhatWasTried) {
  const support::TempDir dir;
  const Handle file = kvlOpen(dir.file("full").c_str(), nullptr, KVL_OUTPUT);
  Bytes row;  // no two bytes alike: each piece takes 128 bytes
  for (uint32_t i = 0; i < 20000; ++i) row.push_back(static_cast<uint8_t>(i));
  TiffWriterState state{};
  state.nCompression = RAXEL_TIFF_PACKBITS;
  state.hTiffFile = file;
  {
    const support::FileLimit disk(5000);
    EXPECT_EQ(CompressAndWrite(&state, row.data(), 20000, 0, 0), RAXEL_CANNOT_WRITE);
  }
  EXPECT_EQ(state.nStripBytes, kWindow + 128);
  kvlClose(file);
}

INSTANTIATE_TEST_SUITE_P(Rows, FullDisk,
                         testing::Combine(testing::Values(int32_t{RAXEL_STORED_COMPRESS_PACKBITS},
                                                          int32_t{RAXEL_STORED_COMPRESS_HUFFMAN},
                                                          int32_t{RAXEL_STORED_COMPRESS_T4}),
                                          testing::Values(uint16_t{RAXEL_STORED_LAYOUT_STRIPS},
                                                          uint16_t{RAXEL_STORED_LAYOUT_TILES})),
                         [](const auto &row) {
                           return std::to_string(std::get<0>(row.param)) + "_layout" +
                                  std::to_string(std::get<1>(row.param));
                         });

}  // namespace
