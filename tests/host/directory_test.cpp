// SPDX-License-Identifier: MIT
#include "check/directory.h"

#include <gtest/gtest.h>

#include "support/random.h"

namespace {

using Bytes = std::vector<uint8_t>;

void put16(Bytes &out, unsigned v, bool little) {
  out.push_back(static_cast<uint8_t>(little ? v : v >> 8));
  out.push_back(static_cast<uint8_t>(little ? v >> 8 : v));
}
void put32(Bytes &out, uint32_t v, bool little) {
  put16(out, little ? v & 0xFFFF : v >> 16, little);
  put16(out, little ? v >> 16 : v & 0xFFFF, little);
}

// Width 7, one strip at 74 of 3 bytes, a resolution of 3/2 at 66.
Bytes sample(bool little) {
  Bytes file{static_cast<uint8_t>(little ? 'I' : 'M'), static_cast<uint8_t>(little ? 'I' : 'M')};
  put16(file, 42, little);
  put32(file, 8, little);
  put16(file, 4, little);
  const auto entry = [&](unsigned tag, unsigned type, uint32_t count, uint32_t value) {
    put16(file, tag, little);
    put16(file, type, little);
    put32(file, count, little);
    if (type == 3) {
      put16(file, value, little);
      put16(file, 0, little);
    } else {
      put32(file, value, little);
    }
  };
  entry(256, 3, 1, 7);
  entry(273, 4, 1, 74);
  entry(279, 4, 1, 3);
  entry(282, 5, 1, 66);
  put32(file, 0, little);
  file.resize(66);
  put32(file, 3, little);
  put32(file, 2, little);
  file.insert(file.end(), {1, 2, 3});
  return file;
}

}  // namespace

TEST(Directory, ReadsBothByteOrders) {
  for (bool little : {true, false}) {
    const host::Directory d = host::readDirectory(sample(little));
    EXPECT_EQ(d.littleEndian, little);
    ASSERT_EQ(d.entries.size(), 4u);
    EXPECT_EQ(d.value(256, 0), 7);
    EXPECT_EQ(d.value(273, 0), 74);
    EXPECT_EQ(d.value(282, 0), 1.5);
    EXPECT_EQ(d.value(999, -1), -1);
    EXPECT_TRUE(d.faults.empty());
  }
}

TEST(Directory, ReadsSignedNumbers) {
  for (bool little : {true, false}) {
    Bytes file = sample(little);
    file[little ? 12 : 13] = 9;  // the width's type: 32 bits with a sign
    for (size_t at = 18; at < 22; ++at) file[at] = 0xFF;
    EXPECT_EQ(host::readDirectory(file).value(256, 0), -1);
  }
}

TEST(Directory, ReducedImagesAndMasksAreNoPages) {
  // Directories of one entry each, which says these kinds.
  const auto placesOf = [](bool little, unsigned type, const std::vector<uint32_t> &kinds, unsigned tag) {
    Bytes file{static_cast<uint8_t>(little ? 'I' : 'M'), static_cast<uint8_t>(little ? 'I' : 'M')};
    put16(file, 42, little);
    put32(file, 8, little);
    for (size_t i = 0; i < kinds.size(); ++i) {
      put16(file, 1, little);
      put16(file, tag, little);
      put16(file, type, little);
      put32(file, 1, little);
      if (type == 3) put16(file, kinds[i], little);
      if (type == 3) put16(file, 0, little);
      if (type != 3) put32(file, kinds[i], little);
      put32(file, i + 1 < kinds.size() ? static_cast<uint32_t>(file.size() + 4) : 0, little);
    }
    return host::pagePlaces(file, host::directoryPlaces(file));
  };
  using Places = std::vector<uint64_t>;
  for (const bool little : {true, false}) {
    for (const unsigned type : {3u, 4u}) {
      EXPECT_EQ(placesOf(little, type, {0, 2, 1, 2, 4, 0}, 254), (Places{8, 26, 62, 98}));
      EXPECT_EQ(placesOf(little, type, {1, 4, 3, 6}, 254), Places{8});
    }
    EXPECT_EQ(placesOf(little, 4, {0, 1, 4}, 255), (Places{8, 26, 44}));  // another tag
    EXPECT_EQ(placesOf(little, 2, {0, 1, 4}, 254), (Places{8, 26, 44}));  // no number
  }
  // BigTIFF: a page, and a reduced image of it at 52.
  Bytes big{'I', 'I', 43, 0, 8, 0, 0, 0, 16, 0, 0, 0, 0, 0, 0, 0};
  for (const uint8_t kind : std::initializer_list<uint8_t>{0, 1}) {
    big.insert(big.end(),
               {1, 0, 0, 0, 0, 0, 0, 0, 254, 0, 4, 0, 1, 0, 0, 0, 0, 0, 0, 0, kind, 0, 0, 0, 0, 0, 0, 0});
    big.insert(big.end(), {static_cast<uint8_t>(kind == 0 ? 52 : 0), 0, 0, 0, 0, 0, 0, 0});
  }
  EXPECT_EQ(host::directoryPlaces(big), (Places{16, 52}));
  EXPECT_EQ(host::pagePlaces(big, host::directoryPlaces(big)), Places{16});
  // A place outside stays, so that reading fails there.
  Bytes cut = sample(true);
  cut[58] = 200;
  EXPECT_EQ(host::pagePlaces(cut, host::directoryPlaces(cut)), (Places{8, 200}));
  EXPECT_EQ(host::pagePlaces({}, host::directoryPlaces({})), Places{});
}

TEST(Directory, AChainThatComesBackEndsWithAPlaceThatIsNone) {
  for (const bool little : {true, false}) {
    Bytes file = sample(little);
    file[little ? 58 : 61] = 8;
    EXPECT_EQ(host::directoryPlaces(file), (std::vector<uint64_t>{8, host::kLinkBack}));
    const host::Directory back = host::readDirectory(file, host::kLinkBack);
    EXPECT_EQ(back.cut, "the directories link back to where they were");
    EXPECT_TRUE(back.entries.empty());
    file[little ? 58 : 61] = 77;
    EXPECT_EQ(host::directoryPlaces(file), (std::vector<uint64_t>{8, 77}));  // outside
  }
}

TEST(Directory, NamesEveryKindOfFault) {
  const auto faultsOf = [](const Bytes &file) {
    std::string all;
    for (const std::string &fault : host::readDirectory(file).faults) all += fault + ";";
    return all;
  };
  EXPECT_EQ(faultsOf({}), "it is no TIFF file;");
  EXPECT_EQ(faultsOf({'I', 'I', 43, 0, 8, 0, 0, 0}), "it is a BigTIFF file;");
  Bytes file = sample(true);
  file[22] = 0xFF;  // the offset's tag becomes 511
  EXPECT_EQ(faultsOf(file), "StripByteCounts stands after tag 511, and tags should ascend;");
  file = sample(true);
  file.pop_back();
  EXPECT_EQ(faultsOf(file), "strip 1 reaches beyond the end of the file;");
  file = sample(true);
  file[42] = 0;  // byte count
  EXPECT_EQ(faultsOf(file), "strip 1 is empty or has no place;");
  file = sample(true);
  file[54] = 200;  // the resolution's place
  EXPECT_EQ(faultsOf(file), "XResolution has values beyond the end of the file;");
  file = sample(true);
  file[4] = 250;
  EXPECT_EQ(faultsOf(file), "its directory lies beyond the end of the file;");
}

// What is missing makes a difference only where it is pixels or their colours.
TEST(Directory, TellsWhetherPixelsAreCut) {
  EXPECT_EQ(host::readDirectory(sample(true)).cut, "");
  Bytes file = sample(true);
  file.pop_back();
  EXPECT_EQ(host::readDirectory(file).cut, "strip 1 reaches beyond the end of the file");
  file = sample(true);
  file[54] = 200;  // the resolution's place
  EXPECT_EQ(host::readDirectory(file).cut, "");
  file[46] = 64;  // tag 282 becomes 320
  EXPECT_EQ(host::readDirectory(file).cut, "ColorMap has values beyond the end of the file");
}

// More strips than a text would show: the last one counts like the first.
TEST(Directory, LooksAtEveryStrip) {
  constexpr uint32_t kStrips = 80000;
  Bytes file{'I', 'I'};
  put16(file, 42, true);
  put32(file, 8, true);
  put16(file, 2, true);
  for (const uint32_t tag : {273u, 279u}) {
    put16(file, tag, true);
    put16(file, 4, true);
    put32(file, kStrips, true);
    put32(file, tag == 273 ? 38 : 38 + 4 * kStrips, true);
  }
  put32(file, 0, true);
  for (uint32_t i = 0; i < kStrips; ++i) put32(file, 8, true);
  for (uint32_t i = 0; i < kStrips; ++i) put32(file, i + 1 == kStrips ? 0x7FFFFFFF : 1, true);
  EXPECT_EQ(host::readDirectory(file).cut, "strip 80000 reaches beyond the end of the file");
}

// Values of many entries may lie over each other, and would take a thousand times as much as the file.
TEST(Directory, KeepsNoMoreValuesThanAnyFileHas) {
  constexpr uint32_t kEntries = 6000;
  Bytes file{'I', 'I'};
  put16(file, 42, true);
  put32(file, 8, true);
  put16(file, kEntries, true);
  for (uint32_t i = 0; i < kEntries; ++i) {
    put16(file, 1000 + i, true);
    put16(file, 1, true);
    put32(file, 70000, true);
    put32(file, 8, true);
  }
  put32(file, 0, true);
  size_t values = 0;
  const host::Directory directory = host::readDirectory(file);
  for (const host::DirectoryEntry &entry : directory.entries) values += entry.values.size();
  EXPECT_EQ(directory.entries.size(), kEntries);
  EXPECT_EQ(values, 1u << 20);
}

TEST(Directory, KeepsNoMoreStripsThanAPictureNeeds) {
  Bytes file{'I', 'I'};
  put16(file, 42, true);
  put32(file, 8, true);
  put16(file, 1, true);
  put16(file, 273, true);
  put16(file, 1, true);
  put32(file, (1 << 24) + 1, true);
  put32(file, 8, true);
  put32(file, 0, true);
  file.resize(8 + (1 << 24) + 1);
  const host::Directory directory = host::readDirectory(file);
  EXPECT_EQ(directory.cut, "StripOffsets has more values than a picture needs");
  EXPECT_EQ(directory.entries.at(0).values.size(), 0u);
}

TEST(Directory, AnyBytesAreReadWithoutHarm) {
  support::Random random(11);
  for (int round = 0; round < 3000; ++round) {
    Bytes file = sample(random.chance(50));
    const auto changes = random.between(1, 6);
    for (int i = 0; i < changes; ++i) file[static_cast<size_t>(random.between(4, 76))] = random.byte();
    file.resize(static_cast<size_t>(random.between(0, 77)));
    host::readDirectory(file);
  }
}
