// SPDX-License-Identifier: MIT
// Pictures and tables in memory that ends where they do, with a page behind it that cannot be touched:
// every conversion stays inside, in every build, and gives what the plain form gives.
#include <gtest/gtest.h>

#include <memory>

#include "color/depth/depth.h"
#include "color/dither/dither_picture.h"
#include "color/pictures.h"
#include "color/reference/plain_resolution.h"
#include "color/reference/scale.h"
#include "support/page_end.h"

namespace {

using pictures::kDepths;
using plain::Bytes;
using support::PageEnd;

// Less and more than what the fast roads take at a time, and enough pixels for a search's memory.
struct Size {
  uint32_t width;
  uint32_t height;
};
constexpr Size kSizes[] = {{1, 1}, {3, 5}, {8, 2}, {31, 3}, {33, 9}, {67, 2}, {150, 12}, {1100, 2}};

// A table in such memory, or none.
class TableAtTheEnd {
 public:
  explicit TableAtTheEnd(const plain::Table &table)
      : memory_(table.given ? std::make_unique<PageEnd>(table.entries) : nullptr) {}
  Handle handle() const { return memory_ ? memory_->handle() : 0; }
  std::span<const uint8_t> bytes() const { return runtime::lockBytes(handle()); }

 private:
  std::unique_ptr<PageEnd> memory_;
};

// A picture of some depth, at times without its last bytes.
plain::Picture pictureOf(support::Random &random, Size size, int depth) {
  plain::Picture picture = pictures::picture(random, size.width, size.height, depth);
  if (random.chance(30)) {
    const auto lost = static_cast<size_t>(random.between(1, 7));
    picture.bits.resize(picture.bits.size() - std::min(lost, picture.bits.size()));
  }
  return picture;
}

// A table of so many entries, at times without its last bytes: one, two, a whole entry or more.
plain::Table tableOf(support::Random &random, uint32_t entries) {
  plain::Table table = pictures::table(random, entries);
  if (random.chance(50)) {
    const auto lost = static_cast<size_t>(random.between(1, random.chance(50) ? 4 : 800));
    table.entries.resize(table.entries.size() - std::min(lost, table.entries.size()));
  }
  return table;
}

plain::Table sourceTableOf(support::Random &random, int depth) {
  return depth <= 8 ? tableOf(random, 1u << depth) : plain::Table{};
}

Handle convertTo(int depth, const plain::Picture &picture, Handle bits, Handle source, Handle table,
                 uint32_t count) {
  return rlConvertBitmapDepth(bits, picture.width, picture.height, static_cast<int16_t>(picture.depth),
                              static_cast<int16_t>(depth), source, table, static_cast<uint16_t>(count));
}

color::DepthChange changeOf(const plain::Picture &picture, int depth, const PageEnd &bits,
                            const TableAtTheEnd &source, const TableAtTheEnd &table, uint32_t count) {
  return {.bits = runtime::lockBytes(bits.handle()),
          .width = picture.width,
          .height = picture.height,
          .sourceDepth = static_cast<int16_t>(picture.depth),
          .depth = static_cast<int16_t>(depth),
          .sourceTable = source.bytes(),
          .table = table.bytes(),
          .count = static_cast<uint16_t>(count)};
}

TEST(ExactMemory, HoldsPicturesOfEveryDepthThatAreConverted) {
  support::Random random(401);
  for (const int from : kDepths) {
    for (const int to : kDepths) {
      for (const Size size : kSizes) {
        for (const bool given : {false, true}) {
          const plain::Picture picture = pictureOf(random, size, from);
          const plain::Table source = sourceTableOf(random, from);
          const plain::Table table = given ? tableOf(random, to < 8 ? 16 : 256) : plain::Table{};
          const Bytes expected = plain::convert(picture, to, source, table);

          const PageEnd bits(picture.bits);
          const TableAtTheEnd sourceTable(source);
          const TableAtTheEnd newTable(table);
          const runtime::Block block(
              convertTo(to, picture, bits.handle(), sourceTable.handle(), newTable.handle(), table.count));
          ASSERT_EQ(pictures::bytesOf(block.handle()), expected) << from << " to " << to;

          // Blocks have a few bytes more than they tell; here the result ends with its memory too.
          const PageEnd out(Bytes(expected.size(), 0));
          color::convertDepth(changeOf(picture, to, bits, sourceTable, newTable, table.count),
                              runtime::lockBytes(out.handle()));
          ASSERT_EQ(out.bytes(), expected) << from << " to " << to;
        }
      }
    }
  }
}

TEST(ExactMemory, HoldsPicturesOfEveryDepthThatAreDithered) {
  support::Random random(402);
  for (const int from : kDepths) {
    for (const int to : {1, 4, 8}) {
      for (const Size size : kSizes) {
        const plain::Picture picture = pictureOf(random, size, from);
        const plain::Table source = sourceTableOf(random, from);
        plain::Table table = tableOf(random, to == 8 ? 256 : 16);
        const auto claimed = static_cast<uint16_t>(table.count);
        // A count is cut at the table's whole entries.
        table.count = static_cast<uint32_t>(table.entries.size() / 3);
        const Bytes expected = plain::dither(picture, to, source, table);

        const PageEnd bits(picture.bits);
        const TableAtTheEnd sourceTable(source);
        const TableAtTheEnd given(table);
        const runtime::Block block(rlDitherGivenCT(bits.handle(), picture.width, picture.height,
                                                   static_cast<int16_t>(from), static_cast<int16_t>(to),
                                                   sourceTable.handle(), given.handle(), claimed));
        ASSERT_EQ(pictures::bytesOf(block.handle()), expected) << from << " to " << to;

        const PageEnd out(Bytes(expected.size(), 0));
        if (color::ditherPicture(changeOf(picture, to, bits, sourceTable, given, table.count),
                                 runtime::lockBytes(out.handle()))) {
          ASSERT_EQ(out.bytes(), expected) << from << " to " << to;
        }
      }
    }
  }
}

TEST(ExactMemory, HoldsPicturesThatATableIsChosenFor) {
  support::Random random(403);
  for (const int from : kDepths) {
    for (const int to : {1, 4, 8}) {
      for (const Size size : kSizes) {
        const plain::Picture picture = pictureOf(random, size, from);
        const plain::Table source = sourceTableOf(random, from);
        const plain::Table expected = plain::chosenTable(picture, to, source);
        const auto sourceDepth = static_cast<int16_t>(from);
        const auto depth = static_cast<int16_t>(to);

        const PageEnd bits(picture.bits);
        const TableAtTheEnd sourceTable(source);
        Handle chosen = 0;
        uint16_t count = 0;
        rlDitherGetCT(bits.handle(), size.width, size.height, sourceDepth, depth, sourceTable.handle(),
                      &chosen, &count);
        const runtime::Block owned(chosen);
        ASSERT_EQ(pictures::bytesOf(chosen), expected.entries) << from << " to " << to;
        ASSERT_EQ(count, expected.count);

        // The caller's own table, of fewer entries than the depth has.
        plain::Table few = pictures::table(random, 2);
        few.entries.resize(static_cast<size_t>(random.between(0, 6)));
        few.count = static_cast<uint32_t>(few.entries.size() / 3);
        const TableAtTheEnd own(few);
        Handle used = own.handle();
        const runtime::Block dithered(rlDitherBitmap(bits.handle(), size.width, size.height, sourceDepth,
                                                     depth, sourceTable.handle(), &used));
        ASSERT_EQ(used, own.handle());
        ASSERT_EQ(pictures::bytesOf(dithered.handle()), plain::dither(picture, to, source, few))
            << from << " to " << to;
      }
    }
  }
}

TEST(ExactMemory, HoldsPicturesThatChangeTheirResolution) {
  support::Random random(404);
  for (const int from : kDepths) {
    for (const int to : kDepths) {
      for (const Size size : kSizes) {
        const plain::Picture picture = pictureOf(random, size, from);
        const plain::Table source = sourceTableOf(random, from);
        const plain::Changed expected = plain::changeResolution(picture, to, source);

        const PageEnd bits(picture.bits);
        const TableAtTheEnd sourceTable(source);
        Handle table = sourceTable.handle();
        const runtime::Block out(rlChangeColorResolution(bits.handle(), size.width, size.height,
                                                         static_cast<int16_t>(from),
                                                         static_cast<int16_t>(to), &table));
        const runtime::Block owned(table != sourceTable.handle() ? table : 0);
        ASSERT_EQ(pictures::bytesOf(out.handle()), expected.bits) << from << " to " << to;
        ASSERT_EQ(pictures::bytesOf(owned.handle()), expected.table.entries) << from << " to " << to;
      }
    }
  }
}

TEST(ExactMemory, HoldsFourBytePixels) {
  support::Random random(405);
  for (uint32_t width = 1; width <= 40; ++width) {
    // Whole pixels, and a piece of one more that stays as it is.
    for (const size_t piece : {size_t{0}, size_t{1}, size_t{3}}) {
      const Bytes pixels = random.bytes(size_t{width} * 4);
      const Bytes rest = random.bytes(piece);
      const auto after = [&](void (*change)(Handle, uint32_t, uint32_t)) {
        Bytes bytes = pixels;
        bytes.insert(bytes.end(), rest.begin(), rest.end());
        const PageEnd bits(bytes);
        change(bits.handle(), width, 2);
        return bits.bytes();
      };
      const auto expected = [&](void (*change)(Bytes &)) {
        Bytes bytes = pixels;
        change(bytes);
        bytes.insert(bytes.end(), rest.begin(), rest.end());
        return bytes;
      };
      ASSERT_EQ(after(rlRGB4toCMYK), expected(reference::rgbToCmyk)) << width;
      ASSERT_EQ(after(rlCMYKtoRGB), expected(reference::cmykToRgb)) << width;
      ASSERT_EQ(after(rlALPHAtoRGB), expected(reference::dropAlpha)) << width;
    }
  }
}

}  // namespace
