// SPDX-License-Identifier: MIT
// PackBits: runs, literals and pieces.
#include "tiff/packbits.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/cases.h"
#include "support/random.h"
#include "tiff/reference_packbits.h"

namespace {

using Bytes = std::vector<uint8_t>;

// The row stands in a block of exactly its size, and so does the room for the codes, so that the
// address sanitizer sees every byte read or written outside.
Bytes encodeRow(const Bytes &row) {
  Bytes out(2 * row.size() + 2, 0xA5);
  out.resize(tiff::encodePackBits(row, out.data()));
  return out;
}

Bytes encodePiece(const Bytes &piece) {
  Bytes out(2 * piece.size() + 2, 0xA5);
  out.resize(tiff::encodePackBits(piece, out.data()));
  return out;
}

TEST(PackBits, ALiteralEndsWhereAPairBegins) {
  EXPECT_EQ(encodeRow({0x41, 0x42, 0x42}), (Bytes{0x00, 0x41, 0xFF, 0x42}));
}

TEST(PackBits, RunsOf127And128EqualBytes) {
  EXPECT_EQ(encodeRow(Bytes(127, 0x33)), (Bytes{0x82, 0x33}));
  EXPECT_EQ(encodeRow(Bytes(128, 0x33)), (Bytes{0x82, 0x33, 0x00, 0x33}));
  EXPECT_EQ(encodeRow(Bytes(129, 0x33)), (Bytes{0x82, 0x33, 0xFF, 0x33}));
  EXPECT_EQ(encodeRow(Bytes(126, 0x33)), (Bytes{0x83, 0x33}));
}

TEST(PackBits, RowOf300IsPiecesOf127And127And46) {
  EXPECT_EQ(encodeRow(Bytes(300, 0)), (Bytes{0x82, 0, 0x82, 0, 0xD3, 0}));
  Bytes rising(300);
  for (size_t i = 0; i < rising.size(); ++i) rising[i] = static_cast<uint8_t>(i);
  Bytes expected;
  for (size_t at = 0; at < 300; at += 127) {
    const size_t n = at == 254 ? 46 : 127;
    expected.push_back(static_cast<uint8_t>(n - 1));
    for (size_t i = at; i < at + n; ++i) expected.push_back(static_cast<uint8_t>(i));
  }
  EXPECT_EQ(encodeRow(rising), expected);
}

TEST(PackBits, EmptyRowGivesNothing) {
  EXPECT_EQ(encodeRow({}), Bytes{});
  EXPECT_EQ(encodePiece({}), Bytes{});
}

TEST(PackBits, OneByteIsALiteral) {
  EXPECT_EQ(encodeRow({0x80}), (Bytes{0x00, 0x80}));
}

TEST(PackBits, PairIsAlwaysARun) {
  EXPECT_EQ(encodeRow({1, 2, 2, 3, 4, 4}), (Bytes{0x00, 1, 0xFF, 2, 0x00, 3, 0xFF, 4}));
  EXPECT_EQ(encodeRow({1, 1, 2, 2, 2, 3, 3}), (Bytes{0xFF, 1, 0xFE, 2, 0xFF, 3}));
}

TEST(PackBits, LiteralsAndRunsInTurn) {
  EXPECT_EQ(encodeRow({0x41, 0x42, 0x42, 0x43, 0x44, 0x45, 0x45, 0x45}),
            (Bytes{0x00, 0x41, 0xFF, 0x42, 0x01, 0x43, 0x44, 0xFE, 0x45}));
}

TEST(PackBits, LiteralAtTheEndKeepsItsLastByte) {
  EXPECT_EQ(encodeRow({7, 7, 1, 2, 3}), (Bytes{0xFF, 7, 0x02, 1, 2, 3}));
}

// The pair lies on bytes 126 and 127, so its second byte begins a new piece.
TEST(PackBits, RunsNeverCrossAPiece) {
  Bytes row(130);
  for (size_t i = 0; i < row.size(); ++i) row[i] = static_cast<uint8_t>(i);
  row[127] = row[126];
  Bytes expected{126};
  expected.insert(expected.end(), row.begin(), row.begin() + 127);
  expected.push_back(2);
  expected.insert(expected.end(), row.begin() + 127, row.end());
  EXPECT_EQ(encodeRow(row), expected);
}

TEST(PackBits, ControlByteMinus128NeverOccurs) {
  for (size_t n = 1; n <= 1000; ++n) {
    const Bytes codes = encodeRow(Bytes(n, 9));
    for (size_t at = 0; at < codes.size(); at += 2) ASSERT_NE(codes[at], 0x80) << n;
  }
}

// Rows of every length and of every liveliness: `alphabet` letters, each repeated up to `repeat` times.
Bytes livelyRow(support::Random &random, size_t length, int64_t alphabet, int64_t repeat) {
  Bytes row;
  while (row.size() < length) {
    const auto letter = static_cast<uint8_t>(random.between(0, alphabet));
    row.insert(row.end(), static_cast<size_t>(random.between(1, repeat)), letter);
  }
  row.resize(length);
  return row;
}

TEST(PackBits, EqualsThePlainFormAndDecodes) {
  support::Random random(71);
  const size_t n = support::cases(20000);
  for (size_t i = 0; i < n; ++i) {
    const auto length = static_cast<size_t>(random.between(0, i % 10 == 0 ? 9000 : 700));
    const Bytes row = livelyRow(random, length, random.between(0, 255), random.between(1, 200));
    const Bytes codes = encodeRow(row);
    ASSERT_EQ(codes, reference::packBits(row)) << "case " << i;
    ASSERT_EQ(reference::unpackBits(codes), row) << "case " << i;
  }
}

TEST(PackBits, BytesBehindARowChangeNothing) {
  support::Random random(7);
  for (size_t size = 0; size <= 300; ++size) {
    for (const size_t behind : {0u, 1u, 31u, 32u, 33u, 158u, 159u, 200u}) {
      // Few values, so that what lies behind often goes on with the row's last run.
      Bytes bytes = random.bytes(size + behind);
      for (uint8_t &byte : bytes) byte &= 1;
      Bytes out(2 * bytes.size() + 2, 0xA5);
      out.resize(tiff::encodePackBits({bytes.data(), size}, behind, out.data()));
      ASSERT_EQ(out, reference::packBits({bytes.data(), size})) << size << " and " << behind << " behind";
    }
  }
}

TEST(PackBits, PieceByPieceGivesTheBytesOfTheRow) {
  support::Random random(72);
  const size_t n = support::cases(3000);
  for (size_t i = 0; i < n; ++i) {
    const Bytes row = livelyRow(random, static_cast<size_t>(random.between(0, 127)), random.between(0, 20),
                                random.between(1, 40));
    ASSERT_EQ(encodePiece(row), reference::packBitsPiece(row)) << "case " << i;
  }
}

}  // namespace
