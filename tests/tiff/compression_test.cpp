// SPDX-License-Identifier: MIT
// Coding single pieces: which coder, how many writes, what counts as failed, and what is counted.
#include "tiff/compression.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "support/hex.h"
#include "support/temp_dir.h"
#include "tiff/writer_fixture.h"

namespace {

using support::Bytes;
using support::hex;

class Compression : public testing::Test {
 protected:
  int32_t code(uint32_t compression, const Bytes &data, uint32_t width = 0, uint32_t rows = 1) {
    state.nCompression = compression;
    state.hTiffFile = out.file;
    return CompressAndWrite(&state, data.data(), static_cast<uint32_t>(data.size()), width, rows);
  }
  support::HostOutput out;
  TiffWriterState state{};
};

TEST_F(Compression, APackBitsRowIsCodedAndCounted) {
  EXPECT_EQ(code(RAXEL_TIFF_PACKBITS, {0x41, 0x42, 0x42}), 0);
  EXPECT_EQ(out.bytes(), hex("00 41 FF 42"));
  EXPECT_EQ(state.nStripBytes, 4u);
}

// A row of 300 bytes is three pieces, and no run crosses from one to the next.
TEST_F(Compression, PackBitsCutsRowsIntoPieces) {
  EXPECT_EQ(code(RAXEL_TIFF_PACKBITS, Bytes(300, 0x33)), 0);
  EXPECT_EQ(out.bytes(), hex("82 33  82 33  D3 33"));
  EXPECT_EQ(out.host.log(), "write 2 x 3\n");
  EXPECT_EQ(state.nStripBytes, 6u);
}

TEST_F(Compression, PackBitsOfNothingWritesNothing) {
  EXPECT_EQ(code(RAXEL_TIFF_PACKBITS, {}), 0);
  EXPECT_EQ(CompressAndWrite(&state, nullptr, 0, 0, 0), 0);
  EXPECT_TRUE(out.host.calls().empty());
}

TEST_F(Compression, AHuffmanRowIsCodedAndCounted) {
  EXPECT_EQ(code(RAXEL_TIFF_HUFFMAN, {0xFF}, 8), 0);  // white 8: 10011
  EXPECT_EQ(out.bytes(), hex("98"));
}

TEST_F(Compression, T4RowHasItsEol) {
  EXPECT_EQ(code(RAXEL_TIFF_T4, {0xFF}, 8), 0);
  EXPECT_EQ(out.bytes(), hex("98 00 01"));
}

TEST_F(Compression, AT6StripIsCodedAndCounted) {
  EXPECT_EQ(code(RAXEL_TIFF_T6, {0xFF, 0xFF, 0xFF}, 8, 3), 0);  // V0 three times
  EXPECT_EQ(out.bytes(), hex("E0"));
}

TEST_F(Compression, AnLzwStripIsCodedAndCounted) {
  EXPECT_EQ(code(RAXEL_TIFF_LZW, {0x41, 0x42}), 0);
  EXPECT_EQ(out.bytes(), hex("80 10 48 50 10"));
  EXPECT_EQ(code(RAXEL_TIFF_LZW, {}), 0);
  EXPECT_EQ(support::slice(out.bytes(), 5, 9), hex("80 40 40"));
  EXPECT_EQ(state.nStripBytes, 8u);
}

TEST_F(Compression, EveryOtherCodeIs303) {
  for (const uint32_t compression : {0u, 1u, 6u, 7u, 32771u, 32772u, 32774u, 0x80008005u}) {
    EXPECT_EQ(code(compression, {1, 2, 3}, 8, 3), RAXEL_CANNOT_WRITE) << compression;
  }
  EXPECT_TRUE(out.host.calls().empty());
  EXPECT_EQ(state.nStripBytes, 0u);
}

// Codes 2, 3 and 5 are content with a write that took anything; PackBits and T.6 want all of it.
TEST_F(Compression, ShortWritesFailPackBitsAndT6Alone) {
  const struct {
    uint32_t compression;
    Bytes data;
    uint32_t produced;
    int32_t result;
  } rows[] = {{RAXEL_TIFF_T4, {0xFF}, 3, 0},
              {RAXEL_TIFF_HUFFMAN, {0xAA}, 3, 0},
              {RAXEL_TIFF_LZW, {0x41, 0x42}, 5, 0},
              {RAXEL_TIFF_PACKBITS, {0x41, 0x42}, 3, RAXEL_CANNOT_WRITE},
              {RAXEL_TIFF_T6, {0xAA}, 4, RAXEL_CANNOT_WRITE}};
  for (const auto &row : rows) {
    support::HostOutput full;
    full.host.limitTo(1);
    state = {};
    state.nCompression = row.compression;
    state.hTiffFile = full.file;
    EXPECT_EQ(CompressAndWrite(&state, row.data.data(), static_cast<uint32_t>(row.data.size()), 8, 1),
              row.result)
        << row.compression;
    EXPECT_EQ(full.host.writeSizes(), (std::vector<size_t>{state.nStripBytes})) << row.compression;
    EXPECT_EQ(full.bytes().size(), 1u);
  }
}

// What was produced counts, also when the stream did not take it.
TEST_F(Compression, FailingWritesAre303AndCounted) {
  for (const uint32_t compression :
       {RAXEL_TIFF_HUFFMAN, RAXEL_TIFF_T4, RAXEL_TIFF_T6, RAXEL_TIFF_LZW, RAXEL_TIFF_PACKBITS}) {
    support::HostOutput failing;
    failing.host.failAt(1);
    state = {};
    state.nCompression = compression;
    state.hTiffFile = failing.file;
    const Bytes data = {0xAA};
    EXPECT_EQ(CompressAndWrite(&state, data.data(), 1, 8, 1), RAXEL_CANNOT_WRITE) << compression;
    EXPECT_EQ(failing.host.writeSizes(), (std::vector<size_t>{state.nStripBytes}));
  }
}

TEST_F(Compression, PackBitsStopsAtThePieceThatFailed) {
  out.host.failAt(2);
  EXPECT_EQ(code(RAXEL_TIFF_PACKBITS, Bytes(300, 0x33)), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(out.host.calls().size(), 2u);
  EXPECT_EQ(state.nStripBytes, 4u);
}

// In a block that cannot grow as well: the piece that did not fit counts, and the ones after it do not. 300
// bytes that all differ from their neighbours are pieces of 128, 128 and 47.
TEST_F(Compression, PackBitsInMemoryStopsAtThePieceThatFailed) {
  Bytes row;
  for (size_t i = 0; i < 300; ++i) row.push_back(static_cast<uint8_t>(i));
  const std::vector<std::pair<uint32_t, uint32_t>> counts = {{0, 128},
                                                             {10, 128},
                                                             {127, 128},
                                                             {128, 256},
                                                             {140, 256},
                                                             {255, 256},
                                                             {256, RAXEL_CANNOT_WRITE},
                                                             {302, RAXEL_CANNOT_WRITE}};
  for (const auto &[room, counted] : counts) {
    const support::MemoryOutput memory(room);
    state = {};
    state.nCompression = RAXEL_TIFF_PACKBITS;
    state.hTiffFile = memory.file;
    EXPECT_EQ(CompressAndWrite(&state, row.data(), 300, 0, 0), RAXEL_CANNOT_WRITE) << room;
    EXPECT_EQ(state.nStripBytes, counted) << room;
  }
}

// No row at all makes no codes, and a write of nothing answers 0: less than 1, but all of it.
TEST_F(Compression, FaxRowsOfNoPixels) {
  EXPECT_EQ(code(RAXEL_TIFF_HUFFMAN, {}, 0), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(code(RAXEL_TIFF_T6, {}, 0, 0), 0);
  EXPECT_EQ(code(RAXEL_TIFF_T6, {0xFF}, 8, 0), 0);
  EXPECT_TRUE(out.bytes().empty());
  EXPECT_EQ(out.host.log(), "write 0 x 3\n");  // a host may answer as it likes
}

#if !defined(__SANITIZE_ADDRESS__)
// No rows take no memory, however wide they are.
TEST_F(Compression, WideRowsThatAreNoneTakeNoMemory) {
  const auto run = [] {
    const rlimit limit{512 << 20, 512 << 20};
    setrlimit(RLIMIT_AS, &limit);
    TiffWriterState wide{};
    wide.nCompression = RAXEL_TIFF_T6;
    const uint8_t byte = 0;
    _exit(CompressAndWrite(&wide, &byte, 1, 0xFFFFFFFF, 0));
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
#endif

TEST_F(Compression, MoreRowsOrPixelsThanBytesIs300) {
  EXPECT_EQ(code(RAXEL_TIFF_HUFFMAN, {0xFF}, 9), RAXEL_NO_MEMORY);
  EXPECT_EQ(code(RAXEL_TIFF_T4, {0xFF}, 0xFFFFFFFF), RAXEL_NO_MEMORY);
  EXPECT_EQ(code(RAXEL_TIFF_T6, {0xFF, 0xFF}, 8, 3), RAXEL_NO_MEMORY);
  EXPECT_EQ(code(RAXEL_TIFF_T6, {0xFF, 0xFF}, 9, 2), RAXEL_NO_MEMORY);
  EXPECT_EQ(code(RAXEL_TIFF_T6, {0xFF}, 0xFFFFFFFF, 0xFFFFFFFF), RAXEL_NO_MEMORY);
  EXPECT_TRUE(out.host.calls().empty());
}

TEST_F(Compression, MissingArgumentsAre300) {
  EXPECT_EQ(CompressAndWrite(nullptr, nullptr, 0, 0, 0), RAXEL_NO_MEMORY);
  state.nCompression = RAXEL_TIFF_PACKBITS;
  EXPECT_EQ(CompressAndWrite(&state, nullptr, 1, 8, 1), RAXEL_NO_MEMORY);
}

// Twice the bytes must fit into a block.
TEST_F(Compression, PiecesOfTwoGigabytesAre300) {
  const uint8_t byte = 0;
  state.nCompression = RAXEL_TIFF_PACKBITS;
  state.hTiffFile = out.file;
  EXPECT_EQ(CompressAndWrite(&state, &byte, 0x80000000, 8, 1), RAXEL_NO_MEMORY);
  EXPECT_EQ(CompressAndWrite(&state, &byte, 0xFFFFFFFF, 8, 1), RAXEL_NO_MEMORY);
}

TEST_F(Compression, NoFileIs303) {
  state.nCompression = RAXEL_TIFF_LZW;
  const uint8_t byte = 7;
  EXPECT_EQ(CompressAndWrite(&state, &byte, 1, 8, 1), RAXEL_CANNOT_WRITE);
}

// On a file of our own a row goes out in one piece of work, with the same bytes.
TEST_F(Compression, PackBitsOnDiskIsTheSame) {
  const support::TempDir dir;
  const std::string name = dir.file("pieces");
  Bytes row;
  for (size_t i = 0; i < 1000; ++i) row.push_back(static_cast<uint8_t>(i * i / 50));
  EXPECT_EQ(code(RAXEL_TIFF_PACKBITS, row), 0);
  const uint32_t counted = state.nStripBytes;
  state = {};
  state.nCompression = RAXEL_TIFF_PACKBITS;
  state.hTiffFile = kvlOpen(name.c_str(), nullptr, KVL_OUTPUT);
  EXPECT_EQ(CompressAndWrite(&state, row.data(), 1000, 0, 0), 0);
  EXPECT_EQ(kvlClose(state.hTiffFile), 0);
  EXPECT_EQ(support::readFile(name), out.bytes());
  EXPECT_EQ(state.nStripBytes, counted);
}

// What would have been tried of a row that cannot be coded: nothing.
TEST_F(Compression, NothingIsTriedOfRowsThatAreNotCoded) {
  state.hTiffFile = out.file;
  tiff::Collector rows(out.file, 0);
  tiff::PieceWriter pieces(state, rows);
  const Bytes row(100, 0x55);
  state.nCompression = RAXEL_TIFF_UNCOMPRESSED;
  EXPECT_EQ(pieces.bytesTried({row, 800, 1}, 1000), 0u);
  state.nCompression = RAXEL_TIFF_PACKBITS;
  EXPECT_EQ(pieces.bytesTried({{row.data(), size_t{0x80000000}}, 8, 1}, 1000), 0u);
  EXPECT_EQ(pieces.bytesTried({row, 800, 1}, 1000), 2u);
}

TEST(MakeRoom, KeepsABlockThatIsLargeEnough) {
  tiff::FaxBuffer buffer(runtime::allocate(20));
  EXPECT_TRUE(tiff::makeRoom(buffer, 2));  // twice as much and 16 more
  EXPECT_EQ(buffer.size(), 20u);
  EXPECT_TRUE(tiff::makeRoom(buffer, 3));
  EXPECT_EQ(buffer.size(), 22u);
  EXPECT_FALSE(tiff::makeRoom(buffer, 0x80000000));
  EXPECT_EQ(buffer.handle(), 0u);
}

}  // namespace
