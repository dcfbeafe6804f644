// SPDX-License-Identifier: MIT
#include "finish/finish.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>

#include "check/directory.h"
#include "check/libtiff.h"
#include "support/temp_dir.h"

namespace {

using Bytes = std::vector<uint8_t>;
using finish::Chain;
using finish::File;
using finish::FinishedPage;
using finish::Outcome;

void put16(Bytes &to, uint32_t value) {
  to.push_back(static_cast<uint8_t>(value));
  to.push_back(static_cast<uint8_t>(value >> 8));
}
void put32(Bytes &to, uint32_t value) {
  put16(to, value & 0xFFFF);
  put16(to, value >> 16);
}
void entry(Bytes &to, uint32_t tag, uint32_t type, uint32_t count, uint32_t value) {
  put16(to, tag);
  put16(to, type);
  put32(to, count);
  put32(to, value);
}

// A picture of 8 by 2 bits without compression, as the filter writes it: 13 entries from 10 on, two
// rationals at 170, its two bytes at 186.
Bytes bilevel(uint8_t top, uint8_t bottom) {
  Bytes b{'I', 'I', 42, 0, 8, 0, 0, 0};
  put16(b, 13);
  entry(b, 254, 4, 1, 0);
  entry(b, 256, 3, 1, 8);
  entry(b, 257, 3, 1, 2);
  entry(b, 258, 3, 1, 1);
  entry(b, 259, 3, 1, 1);
  entry(b, 262, 3, 1, 1);
  entry(b, 273, 4, 1, 186);
  entry(b, 277, 3, 1, 1);
  entry(b, 278, 4, 1, 2);
  entry(b, 279, 4, 1, 2);
  entry(b, 282, 5, 1, 170);
  entry(b, 283, 5, 1, 178);
  entry(b, 296, 3, 1, 2);
  put32(b, 0);
  for (const uint32_t number : {400u, 1u, 300u, 1u}) put32(b, number);
  b.insert(b.end(), {top, bottom});
  return b;
}

// A row of two RGB pixels above another, in two strips without compression.
Bytes rgb() {
  Bytes b{'I', 'I', 42, 0, 8, 0, 0, 0};
  put16(b, 13);
  entry(b, 254, 4, 1, 0);
  entry(b, 256, 3, 1, 2);
  entry(b, 257, 3, 1, 2);
  entry(b, 258, 3, 1, 8);
  entry(b, 259, 3, 1, 1);
  entry(b, 262, 3, 1, 2);
  entry(b, 273, 4, 2, 186);
  entry(b, 277, 3, 1, 3);
  entry(b, 278, 4, 1, 1);
  entry(b, 279, 4, 2, 194);
  entry(b, 282, 5, 1, 170);
  entry(b, 283, 5, 1, 178);
  entry(b, 296, 3, 1, 2);
  put32(b, 0);
  for (const uint32_t number : {96u, 1u, 96u, 1u}) put32(b, number);
  for (const uint32_t number : {202u, 208u, 6u, 6u}) put32(b, number);
  for (uint8_t i = 1; i <= 12; ++i) b.push_back(static_cast<uint8_t>(20 * i));
  return b;
}

// Finishes the page at `base` after a change.
template <class Change>
Outcome finishPage(Bytes &bytes, uint64_t base, Chain &chain, Change change) {
  File file = finish::fileOf(bytes);
  FinishedPage page;
  const Outcome read = finish::readPage(file, base, page);
  if (read != Outcome::kDone) return read;
  change(page);
  const Outcome written = finish::writePage(file, page, chain);
  EXPECT_EQ(file.size, bytes.size());
  return written;
}

template <class Change>
Bytes finished(Bytes bytes, Change change) {
  Chain chain;
  EXPECT_EQ(finishPage(bytes, 0, chain, change), Outcome::kDone);
  return bytes;
}

}  // namespace

TEST(Finish, PutsTheDirectoryBehindTheStripsAndPointsToIt) {
  const Bytes before = bilevel(0xF0, 0x0F);
  ASSERT_EQ(before.size(), 188u);
  Bytes wanted = before;
  wanted[4] = 188;
  put16(wanted, 14);
  entry(wanted, 254, 4, 1, 0);
  entry(wanted, 256, 3, 1, 8);
  entry(wanted, 257, 3, 1, 2);
  entry(wanted, 258, 3, 1, 1);
  entry(wanted, 259, 3, 1, 1);
  entry(wanted, 262, 3, 1, 0);  // was 1
  entry(wanted, 273, 4, 1, 186);
  entry(wanted, 277, 3, 1, 1);
  entry(wanted, 278, 4, 1, 2);
  entry(wanted, 279, 4, 1, 2);
  entry(wanted, 282, 5, 1, 362);  // 188 + 2 + 14 * 12 + 4
  entry(wanted, 283, 5, 1, 370);
  entry(wanted, 296, 3, 1, 2);
  entry(wanted, 305, 2, 4, 0x006D6C6B);  // "klm" and its end
  put32(wanted, 0);
  for (const uint32_t number : {1016u, 5u, 300u, 1u}) put32(wanted, number);
  const Bytes after = finished(before, [](FinishedPage &page) {
    page.photometric = 0;
    page.resolutionX = finish::rationalOf(203.2);
    page.software = "klm";
  });
  EXPECT_EQ(after, wanted);
}

TEST(Finish, StartsTheDirectoryAtAnEvenPlace) {
  Bytes odd = bilevel(1, 2);
  odd.push_back(0xEE);
  const Bytes after = finished(odd, [](FinishedPage &) {});
  EXPECT_EQ(after[189], 0);
  EXPECT_EQ(after[4], 190);
  EXPECT_EQ(after.size() % 2, 0u);
}

TEST(Finish, NamesTheDepthOfEverySample) {
  const Bytes after = finished(rgb(), [](FinishedPage &) {});
  const host::Directory directory = host::readDirectory(after);
  EXPECT_TRUE(directory.faults.empty());
  EXPECT_EQ(directory.find(258)->values, (std::vector<double>{8, 8, 8}));
  EXPECT_EQ(directory.find(273)->values, (std::vector<double>{202, 208}));
  host::TiffReader reader(after);
  ASSERT_TRUE(reader.isOpen());
  Bytes row(6);
  ASSERT_TRUE(reader.readRow(0, row.data()));
  ASSERT_TRUE(reader.readRow(1, row.data()));
  EXPECT_EQ(row, (Bytes{140, 160, 180, 200, 220, 240}));
  EXPECT_TRUE(reader.warnings().empty());
}

TEST(Finish, TellsOfThePredictor) {
  const Bytes after = finished(rgb(), [](FinishedPage &page) {
    page.predictor = 2;
    page.compression = RAXEL_TIFF_LZW;  // no reader takes a predictor without a compression
  });
  EXPECT_EQ(host::readDirectory(after).value(317, 1), 2);
}

TEST(Finish, WritesTextsAndProfileInAscendingOrder) {
  const Bytes profile{1, 2, 3, 4, 5};
  const Bytes after = finished(rgb(), [&](FinishedPage &page) {
    page.description = "Seite \xC3\xA4";
    page.artist = "A";
    page.copyright = "2026, nobody";
    page.dateTime = "2026:01:02 03:04:05";
    page.software = "raxel";
    page.icc = profile;
  });
  const host::Directory directory = host::readDirectory(after);
  EXPECT_TRUE(directory.faults.empty()) << directory.faults.front();
  EXPECT_EQ(directory.find(315)->text, "A");
  EXPECT_EQ(directory.find(33432)->text, "2026, nobody");
  EXPECT_EQ(directory.find(306)->text, "2026:01:02 03:04:05");
  EXPECT_EQ(directory.find(34675)->values, (std::vector<double>{1, 2, 3, 4, 5}));
  EXPECT_EQ(directory.find(270)->count, 9u);
  host::TiffReader reader(after);
  EXPECT_TRUE(reader.isOpen());
  EXPECT_TRUE(reader.warnings().empty()) << reader.warnings().front();
}

TEST(Finish, ChainsPagesAndCountsThem) {
  Bytes bytes;
  Chain chain;
  std::vector<uint64_t> bases;
  for (uint16_t number = 0; number < 3; ++number) {
    bases.push_back(bytes.size());
    const Bytes page = bilevel(static_cast<uint8_t>(number), 0xFF);
    bytes.insert(bytes.end(), page.begin(), page.end());
    ASSERT_EQ(finishPage(bytes, bases.back(), chain,
                         [&](FinishedPage &to) {
                           to.isPage = true;
                           to.pageNumber = number;
                         }),
              Outcome::kDone);
  }
  File file = finish::fileOf(bytes);
  ASSERT_EQ(finish::endPages(file, chain), Outcome::kDone);
  uint32_t at = 0;
  std::memcpy(&at, bytes.data() + 4, 4);
  for (uint32_t number = 0; number < 3; ++number) {
    ASSERT_NE(at, 0u);
    Bytes alone = bytes;
    std::memcpy(alone.data() + 4, &at, 4);
    const host::Directory directory = host::readDirectory(alone);
    EXPECT_EQ(directory.value(254, 0), 2);
    EXPECT_EQ(directory.find(297)->values, (std::vector<double>{static_cast<double>(number), 3}));
    const auto strip = static_cast<size_t>(directory.value(273, 0));
    EXPECT_EQ(strip, bases[number] + 186);
    EXPECT_EQ(bytes[strip], number);
    at = directory.next;
  }
  EXPECT_EQ(at, 0u);
}

TEST(Finish, WorksOnAnOpenFileAsInMemory) {
  const support::TempDir folder;
  const std::string path = folder.file("page.tif");
  const Bytes before = rgb();
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(write(fd, before.data(), before.size()), static_cast<ssize_t>(before.size()));
  File file = finish::fileOf(fd, before.size());
  FinishedPage page;
  Chain chain;
  EXPECT_EQ(finish::readPage(file, 0, page), Outcome::kDone);
  EXPECT_EQ(finish::writePage(file, page, chain), Outcome::kDone);
  close(fd);
  EXPECT_EQ(support::readFile(path), finished(before, [](FinishedPage &) {}));
}

TEST(Finish, TakesNoDirectoryThatTheFilterDoesNotWrite) {
  const Bytes good = rgb();
  const auto outcome = [](Bytes bytes, uint64_t base = 0) {
    FinishedPage page;
    return finish::readPage(finish::fileOf(bytes), base, page);
  };
  EXPECT_EQ(outcome(good), Outcome::kDone);
  for (size_t size = 0; size < good.size(); ++size) {
    EXPECT_EQ(outcome(Bytes(good.begin(), good.begin() + static_cast<ptrdiff_t>(size))), Outcome::kNotOurs)
        << size;
  }
  EXPECT_EQ(outcome(good, 1), Outcome::kNotOurs);
  EXPECT_EQ(outcome(good, good.size() + 1), Outcome::kNotOurs);
  // Each byte of header and entries set to 255: it is refused or read, and nothing outside is touched.
  for (size_t at = 0; at < 202; ++at) {
    Bytes bad = good;
    bad[at] = 0xFF;
    outcome(bad);
  }
  Bytes bad = good;
  bad[8 + 2 + 6 * 12] = 0x99;  // a tag that the filter does not write
  EXPECT_EQ(outcome(bad), Outcome::kNotOurs);
  bad = good;
  bad[186 + 3] = 0xFF;  // a strip beyond the end
  EXPECT_EQ(outcome(bad), Outcome::kNotOurs);
  bad = good;
  bad[186] = 2;  // a strip inside the header
  EXPECT_EQ(outcome(bad), Outcome::kNotOurs);
  // Samples and depths that no picture has: each sample's depth would be written.
  for (const auto &[entryAt, value] :
       {std::pair{7, 0}, {7, 2}, {7, 255}, {3, 0}, {3, 2}, {3, 16}, {3, 255}}) {
    bad = good;
    const auto at = static_cast<size_t>(8 + 2 + entryAt * 12 + 8);
    bad[at] = static_cast<uint8_t>(value);
    EXPECT_EQ(outcome(bad), Outcome::kNotOurs) << entryAt << " " << value;
  }
}

TEST(Finish, EndsAtFourGiB) {
  const auto fails = [](void *, uint64_t, uint8_t *, size_t) { return false; };
  const auto refuses = [](void *, uint64_t, const uint8_t *, size_t) { return false; };
  FinishedPage page;
  page.offsets = page.counts = {8};
  Chain chain;
  File file{nullptr, fails, refuses, UINT32_MAX - 100};
  EXPECT_EQ(finish::writePage(file, page, chain), Outcome::kTooLarge);
  file.size = UINT32_MAX - 2000;
  EXPECT_EQ(finish::writePage(file, page, chain), Outcome::kNotWritten);
  const Bytes profile(1000);
  page.icc = profile;
  EXPECT_EQ(finish::writePage(file, page, chain), Outcome::kTooLarge);
  file.size = 200;
  EXPECT_EQ(finish::readPage(file, 0, page), Outcome::kNotRead);
  Chain many;
  many.totalsAt.resize(65536);
  EXPECT_EQ(finish::endPages(file, many), Outcome::kTooManyPages);
}

TEST(Finish, WritesResolutionsAsShortFractions) {
  const auto is = [](double dots, uint32_t above, uint32_t below) {
    const finish::Rational r = finish::rationalOf(dots);
    return r.above == above && r.below == below;
  };
  EXPECT_TRUE(is(600, 600, 1));
  EXPECT_TRUE(is(203.2, 1016, 5));
  EXPECT_TRUE(is(0.254, 127, 500));
  EXPECT_TRUE(is(299.9994, 299999, 1000));
  EXPECT_TRUE(is(5e6, 5000000, 1));
  EXPECT_TRUE(is(0, 0, 1));
  EXPECT_TRUE(is(-4, 0, 1));
}
