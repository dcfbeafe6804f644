// SPDX-License-Identifier: MIT
#include "check/verify.h"

#include <gtest/gtest.h>
#include <tiff.h>

#include "failure.h"
#include "host/pictures.h"

namespace {

using Bytes = std::vector<uint8_t>;

void put(Bytes &out, uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<uint8_t>(value >> 8 * i));
}

struct Kind {
  uint32_t bits = 1, compression = COMPRESSION_NONE, photometric = PHOTOMETRIC_MINISBLACK;
};

// A TIFF of one strip, written out by hand.
Bytes handMade(const Kind &kind, uint32_t width, uint32_t height, uint32_t dpi, const Bytes &rows,
               std::span<const uint8_t> table = {}) {
  Bytes file{'I', 'I', 42, 0, 8, 0, 0, 0};
  const auto colors = static_cast<uint32_t>(table.size() / 3);
  const uint32_t entries = colors == 0 ? 11 : 12, after = 10 + 12 * entries + 4;
  put(file, entries, 2);
  const auto entry = [&](uint32_t tag, uint32_t type, uint32_t value, uint32_t count = 1) {
    put(file, tag, 2);
    put(file, type, 2);
    put(file, count, 4);
    put(file, value, 4);
  };
  entry(256, 3, width);
  entry(257, 3, height);
  entry(258, 3, kind.bits);
  entry(259, 3, kind.compression);
  entry(262, 3, kind.photometric);
  entry(273, 4, after + 16 + 6 * colors);
  entry(277, 3, 1);
  entry(278, 4, height);
  entry(279, 4, static_cast<uint32_t>(rows.size()));
  entry(282, 5, after);
  entry(283, 5, after + 8);
  if (colors != 0) entry(320, 3, after + 16, 3 * colors);
  put(file, 0, 4);
  for (int i = 0; i < 2; ++i) {
    put(file, dpi, 4);
    put(file, 1, 4);
  }
  for (uint32_t i = 0; i < 3 * colors; ++i) put(file, table[i % colors * 3 + i / colors] * 257u, 2);
  file.insert(file.end(), rows.begin(), rows.end());
  return file;
}

Bytes bilevelFile(uint32_t width, uint32_t height, uint32_t dpi, const Bytes &rows) {
  return handMade({}, width, height, dpi, rows);
}

struct Case {
  host_test::TestPicture picture{10, 2, 1};
  host_test::Prepared made;
  explicit Case(int mode = RAXEL_MODE_BILEVEL, int compression = RAXEL_COMPRESS_NONE) {
    picture.setIndex(3, 0, 1);
    picture.setIndex(9, 1, 1);
    made = host_test::prepared(picture, host_test::request(mode, compression));
  }
  std::string errorOf(const Bytes &file) const {
    try {
      host::Meant(made.plan, made.pixels.data(), made.table.data()).compare(file, "x.tif");
    } catch (const host::Failure &failure) {
      EXPECT_EQ(failure.code(), host::kNoWrite);
      return failure.what();
    }
    return "";
  }
};

}  // namespace

TEST(Verify, AcceptsThePictureThatWasMeant) {
  EXPECT_EQ(Case().errorOf(bilevelFile(10, 2, 96, {0x10, 0x00, 0x00, 0x40})), "");
}

TEST(Verify, NamesTheFirstDifference) {
  const Case c;
  EXPECT_EQ(c.errorOf(bilevelFile(10, 2, 96, {0x10, 0x00, 0x01, 0x40})),
            "x.tif: the check failed: row 1 differs from column 0 on; the file is not kept");
  EXPECT_EQ(c.errorOf(bilevelFile(10, 2, 96, {0x10, 0x40, 0x00, 0x40})),
            "x.tif: the check failed: row 0 differs from column 8 on; the file is not kept");
  EXPECT_NE(c.errorOf(bilevelFile(10, 2, 72, {0x10, 0x00, 0x00, 0x40})), "");
  EXPECT_NE(c.errorOf(bilevelFile(11, 2, 96, {0x10, 0x00, 0x00, 0x40})), "");
  EXPECT_NE(c.errorOf(bilevelFile(10, 3, 96, {0x10, 0x00, 0x00, 0x40, 0, 0})), "");
  EXPECT_NE(c.errorOf({1, 2, 3}), "");
}

TEST(Verify, BitsBeyondTheWidthDoNotCount) {
  EXPECT_EQ(Case().errorOf(bilevelFile(10, 2, 96, {0x10, 0x3F, 0x00, 0x55})), "");
}

TEST(Verify, RowsThatCannotBeDecodedAreNamed) {
  // LZW without a code that it knows.
  const std::string said =
      Case(RAXEL_MODE_BILEVEL, RAXEL_COMPRESS_LZW)
          .errorOf(handMade({.compression = COMPRESSION_LZW}, 10, 2, 96, {0xFF, 0xFF, 0xFF, 0xFF}));
  EXPECT_NE(said.find("x.tif: the check failed: row 0 cannot be decoded"), std::string::npos) << said;
}

TEST(Verify, TheColoursCountToo) {
  Case c(RAXEL_MODE_COLOR16);
  Bytes rows;
  for (uint32_t y = 0; y < 2; ++y) rows.insert(rows.end(), c.made.row(y), c.made.row(y) + 5);
  const Kind kind{.bits = 4, .photometric = PHOTOMETRIC_PALETTE};
  const std::span table = std::span(c.made.table).first<48>();
  EXPECT_EQ(c.errorOf(handMade(kind, 10, 2, 96, rows, table)), "");
  const Bytes right = handMade(kind, 10, 2, 96, rows, table);
  ++c.made.table[47];
  EXPECT_EQ(c.errorOf(right), "x.tif: the check failed: the colour map differs; the file is not kept");
}
