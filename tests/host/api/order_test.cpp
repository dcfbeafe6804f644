// SPDX-License-Identifier: MIT
// Orders: the command's options from a program, and pictures that lie in memory in many ways.
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <memory>
#include <thread>

#include "raxel/host.h"
#include "support/temp_dir.h"
#include "support/tiff_reader.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct OrderEnd {
  void operator()(RaxelHostOrder *order) const { raxelHostOrderFree(order); }
};
using Order = std::unique_ptr<RaxelHostOrder, OrderEnd>;

struct Option {
  const char *name;
  const char *value;
};

Order orderOf(const std::vector<Option> &options) {
  Order order(raxelHostOrderNew());
  for (const auto &[name, value] : options)
    EXPECT_EQ(raxelHostOrderSet(order.get(), name, value), RAXEL_HOST_OK)
        << raxelHostOrderMessage(order.get());
  return order;
}

// Rows of 8-bit channels without gaps.
RaxelHostPixels pixelsOf(const Bytes &bytes, int32_t kind, uint32_t width, uint32_t height,
                         uint32_t channels) {
  RaxelHostPixels pixels{};
  pixels.size = sizeof pixels;
  pixels.width = width;
  pixels.height = height;
  pixels.kind = kind;
  pixels.channelBytes = 1;
  pixels.first = bytes.data();
  pixels.channelStep = 1;
  pixels.pixelStep = channels;
  pixels.rowStep = int64_t{channels} * width;
  return pixels;
}

// Runs the order into memory.
Bytes fileOf(const Order &order) {
  EXPECT_EQ(raxelHostOrderRun(order.get(), nullptr), RAXEL_HOST_OK) << raxelHostOrderMessage(order.get());
  uint64_t count = 0;
  const uint8_t *bytes = raxelHostOrderBytes(order.get(), &count);
  return {bytes, bytes + count};
}

// Follows the chain of directories.
int pagesOf(const Bytes &file) {
  const auto number = [&](size_t at, size_t bytes) {
    size_t value = 0;
    for (size_t i = bytes; i-- > 0;) value = value << 8 | file.at(at + i);
    return value;
  };
  int pages = 0;
  for (size_t at = number(4, 4); at != 0; ++pages) at = number(at + 2 + 12 * number(at, 2), 4);
  return pages;
}

// The pixels that the file shows, written as RGB without compression; the last row of an odd height stands
// twice.
Bytes shown(const RaxelHostPixels &pixels, const char *background = "white") {
  const Order order = orderOf({{"mode", "rgb"}, {"background", background}});
  EXPECT_EQ(raxelHostOrderPicture(order.get(), &pixels), RAXEL_HOST_OK);
  const Bytes file = fileOf(order);
  const support::TiffFile tiff = support::readTiff(file);
  EXPECT_TRUE(tiff.ok()) << tiff.error;
  return support::uncompressedRows(tiff);
}

// 3 by 2 pixels of red, green, blue.
const Bytes kColors{1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19};

}  // namespace

TEST(HostOrder, WritesWhatTheExportCallWrites) {
  const Order order = orderOf({{"compress", "lzw"}, {"dpi", "203.2"}});
  const RaxelHostPixels pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 3, 2, 3);
  ASSERT_EQ(raxelHostOrderPicture(order.get(), &pixels), RAXEL_HOST_OK);
  const Bytes file = fileOf(order);

  RaxelHostJob job;
  raxelHostJobDefaults(&job, sizeof job);
  job.picture = {3, 2, 24, kColors.data(), 9, nullptr, 0};
  job.request.compression = RAXEL_COMPRESS_LZW;
  job.request.dpiX = job.request.dpiY = 203.2;
  RaxelHostResult result{};
  result.size = sizeof result;
  ASSERT_EQ(raxelHostExport(&job, &result), RAXEL_HOST_OK);
  EXPECT_EQ(file, Bytes(result.memory, result.memory + result.bytes));
  raxelHostFree(result.memory);
}

TEST(HostOrder, ReadsRowsPixelsAndChannelsInAnyOrder) {
  RaxelHostPixels pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 3, 2, 3);
  EXPECT_EQ(shown(pixels), kColors);

  pixels.first = kColors.data() + 9;  // rows from the bottom up
  pixels.rowStep = -9;
  EXPECT_EQ(shown(pixels), (Bytes{11, 12, 13, 14, 15, 16, 17, 18, 19, 1, 2, 3, 4, 5, 6, 7, 8, 9}));

  pixels.first = kColors.data() + 8;  // columns from the right, blue first
  pixels.rowStep = 9;
  pixels.pixelStep = -3;
  pixels.channelStep = -1;
  EXPECT_EQ(shown(pixels), (Bytes{9, 8, 7, 6, 5, 4, 3, 2, 1, 19, 18, 17, 16, 15, 14, 13, 12, 11}));

  // Columns one after the other: 2 by 3 pixels in three planes.
  pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 2, 2, 3);
  pixels.rowStep = 1;
  pixels.pixelStep = 2;
  pixels.channelStep = 4;
  EXPECT_EQ(shown(pixels), (Bytes{1, 5, 9, 3, 7, 12, 2, 6, 11, 4, 8, 13}));

  const std::array<const void *, 2> rows{kColors.data() + 9, kColors.data()};  // rows wherever they are
  pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 3, 2, 3);
  pixels.first = nullptr;
  pixels.rows = rows.data();
  EXPECT_EQ(shown(pixels), (Bytes{11, 12, 13, 14, 15, 16, 17, 18, 19, 1, 2, 3, 4, 5, 6, 7, 8, 9}));

  pixels = pixelsOf(kColors, RAXEL_PIXELS_GREY, 3, 3, 1);
  const std::array<const void *, 3> uneven{kColors.data() + 3, kColors.data() + 12, kColors.data()};
  const std::array<const void *, 3> even{kColors.data() + 9, kColors.data() + 6, kColors.data() + 3};
  for (const auto &[places, expected] : {std::pair(uneven, Bytes{4, 5, 6, 14, 15, 16, 1, 2, 3}),
                                         std::pair(even, Bytes{11, 12, 13, 7, 8, 9, 4, 5, 6})}) {
    pixels.rows = places.data();
    Bytes colors;
    for (const uint8_t grey : expected) colors.insert(colors.end(), 3, grey);
    colors.insert(colors.end(), colors.end() - 9, colors.end());
    EXPECT_EQ(shown(pixels), colors);
  }

  pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 2, 2, 3);  // every other pixel of a longer row
  pixels.rowStep = 9;
  pixels.pixelStep = 6;
  EXPECT_EQ(shown(pixels), (Bytes{1, 2, 3, 7, 8, 9, 11, 12, 13, 17, 18, 19}));
}

TEST(HostOrder, ReadsEveryKindOfPixel) {
  const Bytes bits{0xA0, 0x40};  // 101, 010
  RaxelHostPixels pixels = pixelsOf(bits, RAXEL_PIXELS_BITS, 3, 2, 1);
  pixels.rowStep = 1;
  const Bytes checked{255, 255, 255, 0, 0, 0, 255, 255, 255, 0, 0, 0, 255, 255, 255, 0, 0, 0};
  EXPECT_EQ(shown(pixels), checked);
  pixels.first = bits.data() + 1;  // from the bottom up
  pixels.rowStep = -1;
  EXPECT_EQ(shown(pixels), Bytes(checked.rbegin(), checked.rend()));
  EXPECT_EQ(shown(pixelsOf({1, 0, 255, 0, 7, 0}, RAXEL_PIXELS_BOOL, 3, 2, 1)), checked);

  EXPECT_EQ(shown(pixelsOf({9, 200}, RAXEL_PIXELS_GREY, 1, 2, 1)), (Bytes{9, 9, 9, 200, 200, 200}));
  // 128 of 255 on white: (100 * 128 + 255 * 127 + 127) / 255 = 177.
  EXPECT_EQ(shown(pixelsOf({100, 128, 100, 255}, RAXEL_PIXELS_GREY_ALPHA, 1, 2, 2)),
            (Bytes{177, 177, 177, 100, 100, 100}));
  EXPECT_EQ(shown(pixelsOf({100, 0, 100, 255}, RAXEL_PIXELS_GREY_ALPHA, 1, 2, 2), "red"),
            (Bytes{255, 0, 0, 100, 100, 100}));
  EXPECT_EQ(shown(pixelsOf({1, 2, 3, 255, 1, 2, 3, 0}, RAXEL_PIXELS_RGBA, 1, 2, 4), "#00ff80"),
            (Bytes{1, 2, 3, 0, 255, 128}));
  // Full cyan and nothing else; half of all black: 255 * 127 / 255.
  EXPECT_EQ(shown(pixelsOf({255, 0, 0, 0, 0, 0, 0, 128}, RAXEL_PIXELS_CMYK, 1, 2, 4)),
            (Bytes{0, 255, 255, 127, 127, 127}));

  const Bytes table{10, 20, 30, 40, 50, 60}, alpha{255, 0};
  const Bytes indices{1, 0};
  pixels = pixelsOf(indices, RAXEL_PIXELS_INDEX, 1, 2, 1);
  pixels.table = table.data();
  pixels.colors = 2;
  EXPECT_EQ(shown(pixels), (Bytes{40, 50, 60, 10, 20, 30}));
  pixels.alpha = alpha.data();
  EXPECT_EQ(shown(pixels), (Bytes{255, 255, 255, 10, 20, 30}));
}

TEST(HostOrder, PacksEveryValueButZeroAsWhite) {
  constexpr uint32_t kWidth = 262;  // all values, and some more behind the last eight
  Bytes bools(2 * kWidth);
  for (size_t i = 0; i < bools.size(); ++i) bools[i] = static_cast<uint8_t>(i % 3 == 0 ? 0 : i);
  Bytes expected;
  for (const uint8_t value : bools) expected.insert(expected.end(), 3, value != 0 ? 255 : 0);
  const Bytes seen = shown(pixelsOf(bools, RAXEL_PIXELS_BOOL, kWidth, 2, 1));
  ASSERT_EQ(seen.size(), expected.size());
  for (size_t i = 0; i < seen.size(); ++i) ASSERT_EQ(seen[i], expected[i]) << i;
}

TEST(HostOrder, TellsThatSixteenBitsBecomeEight) {
  const std::array<uint16_t, 2> greys{65535, 32768};  // 32768 * 255 / 65535 = 127.5, rounded up
  RaxelHostPixels pixels = pixelsOf({}, RAXEL_PIXELS_GREY, 1, 2, 1);
  pixels.first = greys.data();
  pixels.channelBytes = 2;
  pixels.pixelStep = pixels.rowStep = 2;
  const Order order = orderOf({{"mode", "rgb"}});
  ASSERT_EQ(raxelHostOrderPicture(order.get(), &pixels), RAXEL_HOST_OK);
  const Bytes file = fileOf(order);
  const Bytes rows = support::uncompressedRows(support::readTiff(file));
  EXPECT_EQ(rows, (Bytes{255, 255, 255, 128, 128, 128}));
  const std::string report = raxelHostOrderReport(order.get());
  EXPECT_NE(report.find("\"notes\":[\"16-bit channels are reduced to 8\"]"), std::string::npos) << report;
}

// A preset is one more option, and what is set by itself goes before it.
TEST(HostOrder, TakesAPresetByItsName) {
  const RaxelHostPixels pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 3, 2, 3);
  const auto made = [&](const std::vector<Option> &options) {
    const Order order = orderOf(options);
    EXPECT_EQ(raxelHostOrderPicture(order.get(), &pixels), RAXEL_HOST_OK);
    return fileOf(order);
  };
  const Bytes label = made({{"preset", "label"}});
  EXPECT_EQ(label, made({{"mode", "bilevel"},
                         {"compress", "t6"},
                         {"strips", "one"},
                         {"threshold", "auto"},
                         {"dpi", "203"}}));
  EXPECT_EQ(made({{"preset", "label"}, {"dpi", "300"}}), made({{"dpi", "300"},
                                                               {"mode", "bilevel"},
                                                               {"compress", "t6"},
                                                               {"strips", "one"},
                                                               {"threshold", "auto"}}));
  const Bytes fax = made({{"preset", "fax-standard"}});
  EXPECT_EQ(support::readTiff(fax).width(), 1728u);
  EXPECT_EQ(support::readTiff(fax).compression(), 3u);

  // Nothing is left of one that is replaced, even after a run.
  const Order order = orderOf({{"preset", "fax-fine"}});
  ASSERT_EQ(raxelHostOrderPicture(order.get(), &pixels), RAXEL_HOST_OK);
  EXPECT_NE(fileOf(order), label);
  ASSERT_EQ(raxelHostOrderSet(order.get(), "preset", "label"), RAXEL_HOST_OK);
  EXPECT_EQ(fileOf(order), label);

  EXPECT_EQ(raxelHostOrderSet(order.get(), "preset", "fax"), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_STREQ(raxelHostOrderMessage(order.get()), "--preset fax: there is none; see --list");
}

TEST(HostOrder, RefusesOptionsWithTheCommandsWords) {
  const Order order(raxelHostOrderNew());
  const auto refusal = [&](const char *name, const char *value) -> std::string {
    EXPECT_EQ(raxelHostOrderSet(order.get(), name, value), RAXEL_HOST_BAD_ARGUMENT);
    return raxelHostOrderMessage(order.get());
  };
  EXPECT_EQ(refusal("colour", "red"), "--colour: there is no such option");
  EXPECT_EQ(refusal("jobs", "2"), "--jobs: is for the command alone");
  EXPECT_EQ(refusal("dither", "yes"), "--dither: is a flag and takes no value");
  EXPECT_EQ(refusal("dpi", nullptr), "--dpi: needs a value");
  EXPECT_EQ(refusal("dpi", "0"), "--dpi 0: give 1 to 100000, as 300, 203.2 or 204x98");
  EXPECT_EQ(raxelHostOrderSet(order.get(), "dpi", "300"), RAXEL_HOST_OK);
  EXPECT_STREQ(raxelHostOrderMessage(order.get()), "");
}

TEST(HostOrder, RefusesPicturesThatMakeNoSense) {
  const auto refusal = [](const RaxelHostPixels &pixels) -> std::string {
    const Order order = orderOf({});
    EXPECT_EQ(raxelHostOrderPicture(order.get(), &pixels), RAXEL_HOST_OK);
    EXPECT_EQ(raxelHostOrderRun(order.get(), nullptr), RAXEL_HOST_BAD_PICTURE);
    EXPECT_EQ(raxelHostOrderBytes(order.get(), nullptr), nullptr);
    return raxelHostOrderMessage(order.get());
  };
  RaxelHostPixels pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 0, 2, 3);
  EXPECT_EQ(refusal(pixels), "picture 1: has no pixels");
  pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 3, 2, 3);
  pixels.first = nullptr;
  EXPECT_EQ(refusal(pixels), "picture 1: has no pixels");
  pixels = pixelsOf(kColors, RAXEL_PIXELS_BITS, RAXEL_HOST_LONGEST_SIDE + 1, 1, 1);
  EXPECT_EQ(refusal(pixels), "picture 1: is too large: 67108865 by 1 pixels");
  pixels = pixelsOf(kColors, RAXEL_PIXEL_KINDS, 3, 2, 3);
  EXPECT_EQ(refusal(pixels), "picture 1: is of an unknown kind");
  pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 3, 2, 3);
  pixels.channelBytes = 4;
  EXPECT_EQ(refusal(pixels), "picture 1: has channels of an unknown size");
  pixels = pixelsOf(kColors, RAXEL_PIXELS_INDEX, 3, 2, 1);
  EXPECT_EQ(refusal(pixels), "picture 1: has indices and no table of 1 to 256 colours");
}

TEST(HostOrder, TellsWhyAFileCannotBeRead) {
  const support::TempDir folder;
  const std::string missing = folder.file("missing.png"), target = folder.file("made.tif");
  const Order order = orderOf({{"output", target.c_str()}});
  ASSERT_EQ(raxelHostOrderFile(order.get(), missing.c_str()), RAXEL_HOST_OK);
  EXPECT_EQ(raxelHostOrderRun(order.get(), nullptr), RAXEL_HOST_BAD_PICTURE);
  EXPECT_EQ(raxelHostOrderError(order.get()), ENOENT);
  EXPECT_EQ(raxelHostOrderMessage(order.get()), missing + ": cannot be opened: No such file or directory");
  EXPECT_NE(std::string(raxelHostOrderReport(order.get())).find("\"exit\":66"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(target));
}

TEST(HostOrder, PutsPicturesAndFilesIntoOneFileAsPages) {
  const support::TempDir folder;
  const std::string grey = folder.file("grey.pgm");
  support::writeFile(grey, std::string("P5 2 2 255\n\1\2\3\4", 15));
  const RaxelHostPixels pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 3, 2, 3);
  const Order alone = orderOf({});
  ASSERT_EQ(raxelHostOrderPicture(alone.get(), &pixels), RAXEL_HOST_OK);
  ASSERT_EQ(raxelHostOrderFile(alone.get(), grey.c_str()), RAXEL_HOST_OK);
  EXPECT_EQ(raxelHostOrderRun(alone.get(), nullptr), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_STREQ(raxelHostOrderMessage(alone.get()),
               "several inputs go as pages into one file: give --pages");

  ASSERT_EQ(raxelHostOrderSet(alone.get(), "pages", nullptr), RAXEL_HOST_OK);
  EXPECT_EQ(pagesOf(fileOf(alone)), 2);
  EXPECT_NE(std::string(raxelHostOrderReport(alone.get())).find(grey), std::string::npos);
}

TEST(HostOrder, TellsHowManyPagesItKnowsOf) {
  const support::TempDir folder;
  const std::string three = folder.file("three.tif");
  const RaxelHostPixels pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 3, 2, 3);
  const Order first = orderOf({{"pages", nullptr}, {"output", three.c_str()}});
  EXPECT_EQ(raxelHostOrderPages(first.get()), 0u);
  for (int page = 0; page < 3; ++page) raxelHostOrderPicture(first.get(), &pixels);
  ASSERT_EQ(raxelHostOrderRun(first.get(), nullptr), RAXEL_HOST_OK);
  EXPECT_EQ(raxelHostOrderPages(first.get()), 3u);

  // One picture, and three pages of a file, which are known once it is open.
  const Order order = orderOf({{"pages", nullptr}});
  raxelHostOrderPicture(order.get(), &pixels);
  raxelHostOrderFile(order.get(), three.c_str());
  struct Seen {
    const RaxelHostOrder *order;
    int32_t stage;
    std::vector<uint32_t> pages;  // when each page's writing began
  } seen{order.get(), RAXEL_STAGE_WRITING, {}};
  RaxelHostCalls calls{};
  calls.size = sizeof calls;
  calls.context = &seen;
  calls.progress = [](void *context, int32_t stage, double, uint64_t) -> int32_t {
    Seen &to = *static_cast<Seen *>(context);
    if (stage > to.stage) to.pages.push_back(raxelHostOrderPages(to.order));
    to.stage = stage;
    return 0;
  };
  ASSERT_EQ(raxelHostOrderRun(order.get(), &calls), RAXEL_HOST_OK) << raxelHostOrderMessage(order.get());
  EXPECT_EQ(seen.pages, (std::vector<uint32_t>{2, 4, 4, 4}));
}

TEST(HostOrder, GoesToACallbackAndStopsWhenAskedTo) {
  const Order order = orderOf({});
  const RaxelHostPixels pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 3, 2, 3);
  ASSERT_EQ(raxelHostOrderPicture(order.get(), &pixels), RAXEL_HOST_OK);
  const Bytes expected = fileOf(order);
  Bytes taken;
  RaxelHostCalls calls{};
  calls.size = sizeof calls;
  calls.context = &taken;
  calls.write = [](void *context, const void *bytes, uint64_t count) {
    const auto *first = static_cast<const uint8_t *>(bytes);
    static_cast<Bytes *>(context)->insert(static_cast<Bytes *>(context)->end(), first, first + count);
    return 0;
  };
  ASSERT_EQ(raxelHostOrderRun(order.get(), &calls), RAXEL_HOST_OK);
  EXPECT_EQ(taken, expected);
  EXPECT_EQ(raxelHostOrderBytes(order.get(), nullptr), nullptr);

  taken.clear();
  calls.stop = [](void *) { return 1; };
  EXPECT_EQ(raxelHostOrderRun(order.get(), &calls), RAXEL_HOST_STOPPED);
  EXPECT_TRUE(taken.empty());
}

TEST(HostOrder, AnInputIsNeverReplaced) {
  const support::TempDir folder;
  const std::string path = folder.file("grey.pgm");
  const std::string bytes("P5 2 2 255\n\1\2\3\4", 15);
  support::writeFile(path, bytes);
  const Order order = orderOf({{"output", path.c_str()}, {"force", nullptr}});
  ASSERT_EQ(raxelHostOrderFile(order.get(), path.c_str()), RAXEL_HOST_OK);
  EXPECT_EQ(raxelHostOrderRun(order.get(), nullptr), RAXEL_HOST_NO_CREATE);
  EXPECT_EQ(support::readText(path), bytes);
}

TEST(HostOrder, AnswersNullWithACode) {
  RaxelHostOrder *const none = nullptr;
  EXPECT_EQ(raxelHostOrderSet(none, "dpi", "300"), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(raxelHostOrderFile(none, "a"), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(raxelHostOrderRun(none, nullptr), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(raxelHostOrderPages(none), 0u);
  EXPECT_STREQ(raxelHostOrderMessage(none), "");
  const Order order = orderOf({});
  EXPECT_EQ(raxelHostOrderFile(order.get(), ""), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(raxelHostOrderPicture(order.get(), nullptr), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(raxelHostOrderRun(order.get(), nullptr), RAXEL_HOST_BAD_ARGUMENT);  // nothing to do
}

TEST(HostReduce, KeepsColorsThatAreFewEnough) {
  const Bytes bytes{9, 9, 9, 7, 7, 7, 9, 9, 9, 0, 0, 1};
  const RaxelHostPixels own = pixelsOf(bytes, RAXEL_PIXELS_RGB, 2, 2, 3);
  Bytes indices(4), table(3 * 256);
  uint32_t count = 0;
  ASSERT_EQ(raxelHostQuantize(&own, 256, RAXEL_QUANTIZE_BEST, 0, indices.data(), table.data(), &count),
            RAXEL_HOST_OK);
  EXPECT_EQ(indices, (Bytes{0, 1, 0, 2}));
  EXPECT_EQ(count, 3u);
  table.resize(9);
  EXPECT_EQ(table, (Bytes{9, 9, 9, 7, 7, 7, 0, 0, 1}));

  table.assign(6, 0);
  ASSERT_EQ(raxelHostQuantize(&own, 2, RAXEL_QUANTIZE_BEST, 0, indices.data(), table.data(), &count),
            RAXEL_HOST_OK);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(raxelHostQuantize(&own, 1, RAXEL_QUANTIZE_BEST, 0, indices.data(), table.data(), &count),
            RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(raxelHostQuantize(&own, 100, RAXEL_QUANTIZE_FILTER, 0, indices.data(), table.data(), &count),
            RAXEL_HOST_BAD_ARGUMENT);
}

TEST(HostReduce, RefusesPixelsThatAreNone) {
  const Bytes bytes{9, 9, 9};
  RaxelHostPixels none = pixelsOf(bytes, RAXEL_PIXELS_RGB, 1, 1, 3);
  none.first = nullptr;
  Bytes indices(1), table(6);
  EXPECT_EQ(raxelHostQuantize(&none, 2, RAXEL_QUANTIZE_BEST, 0, indices.data(), table.data(), nullptr),
            RAXEL_HOST_BAD_PICTURE);
  EXPECT_EQ(raxelHostDither(&none, table.data(), 2, indices.data()), RAXEL_HOST_BAD_PICTURE);
}

TEST(HostReduce, SpreadsWhatATableCannotShow) {
  const Bytes greys(64 * 64, 128), table{0, 0, 0, 255, 255, 255};
  const RaxelHostPixels pixels = pixelsOf(greys, RAXEL_PIXELS_GREY, 64, 64, 1);
  Bytes indices(greys.size(), 9);
  ASSERT_EQ(raxelHostDither(&pixels, table.data(), 2, indices.data()), RAXEL_HOST_OK);
  const auto white = std::count(indices.begin(), indices.end(), 1);
  EXPECT_EQ(std::count(indices.begin(), indices.end(), 0) + white, 64 * 64);
  EXPECT_GT(white, 64 * 64 * 48 / 100);
  EXPECT_LT(white, 64 * 64 * 53 / 100);
  EXPECT_EQ(raxelHostDither(&pixels, table.data(), 0, indices.data()), RAXEL_HOST_BAD_ARGUMENT);
}

TEST(HostInspect, TellsOfFilesAndOfWhatIsNone) {
  const support::TempDir folder;
  char *text = raxelHostInspect(folder.file("missing").c_str());
  ASSERT_NE(text, nullptr);
  EXPECT_NE(std::string(text).find("\"exit\":66"), std::string::npos) << text;
  raxelHostFree(text);

  const std::string path = folder.file("made.tif");
  const Order order = orderOf({{"output", path.c_str()}});
  const RaxelHostPixels pixels = pixelsOf(kColors, RAXEL_PIXELS_RGB, 3, 2, 3);
  ASSERT_EQ(raxelHostOrderPicture(order.get(), &pixels), RAXEL_HOST_OK);
  ASSERT_EQ(raxelHostOrderRun(order.get(), nullptr), RAXEL_HOST_OK);
  text = raxelHostInspect(path.c_str());
  ASSERT_NE(text, nullptr);
  EXPECT_NE(std::string(text).find("\"faults\":[],\"decodes\":true"), std::string::npos) << text;
  raxelHostFree(text);
}

// Orders of every kind side by side: what they share, they share in turns.
TEST(HostOrder, AnyThreadMayOrder) {
  Bytes photo(64 * 48 * 3);
  for (size_t i = 0; i < photo.size(); ++i) photo[i] = static_cast<uint8_t>(i * i / 7);
  const RaxelHostPixels pixels = pixelsOf(photo, RAXEL_PIXELS_RGB, 64, 48, 3);
  const support::TempDir folder;
  const std::string manifest = folder.file("pages.jsonl"), input = folder.file("in.ppm"),
                    missing = folder.file("missing.ppm");
  std::ofstream(input) << "P6 3 2 255\n" << std::string(kColors.begin(), kColors.end());
  const std::array<std::vector<Option>, 5> ways{
      {{{"mode", "color256"}, {"quantizer", "best"}},
       {{"mode", "color16"}, {"quantizer", "fast"}, {"dither", nullptr}},
       {{"mode", "color256"}, {"quantizer", "filter"}},
       {{"mode", "bilevel"}, {"compress", "t6"}, {"size", "32x24px"}},
       {{"mode", "rgb"}, {"compress", "lzw"}}}};
  const auto made = [&](size_t way) {
    const Order order = orderOf(ways.at(way));
    EXPECT_EQ(raxelHostOrderPicture(order.get(), &pixels), RAXEL_HOST_OK);
    return fileOf(order);
  };
  std::array<Bytes, 5> wanted;
  for (size_t way = 0; way < ways.size(); ++way) wanted.at(way) = made(way);
  const auto work = [&](size_t number) {
    for (size_t n = 0; n < 10; ++n) {
      const size_t way = (number + n) % ways.size();
      EXPECT_EQ(made(way), wanted.at(way)) << way;
      const std::string target =
          folder.file((std::to_string(number) + "-" + std::to_string(n) + ".tif").c_str());
      const Order noted =
          orderOf({{"output", target.c_str()}, {"manifest", manifest.c_str()}, {"resume", nullptr}});
      EXPECT_EQ(raxelHostOrderFile(noted.get(), input.c_str()), RAXEL_HOST_OK);
      EXPECT_EQ(raxelHostOrderRun(noted.get(), nullptr), RAXEL_HOST_OK)
          << raxelHostOrderMessage(noted.get());
      const Order lost = orderOf({{"output", target.c_str()}});
      EXPECT_EQ(raxelHostOrderFile(lost.get(), missing.c_str()), RAXEL_HOST_OK);
      EXPECT_EQ(raxelHostOrderRun(lost.get(), nullptr), RAXEL_HOST_BAD_PICTURE);
    }
  };
  std::array<std::thread, 4> threads;
  for (size_t i = 0; i < threads.size(); ++i) threads.at(i) = std::thread(work, i);
  for (std::thread &thread : threads) thread.join();
}
