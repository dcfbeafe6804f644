// SPDX-License-Identifier: MIT
#include "output/sink.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "export/finish_file.h"
#include "export/output.h"
#include "failure.h"
#include "output/stream.h"
#include "raxel/stream_codes.h"
#include "support/random.h"
#include "support/temp_dir.h"

namespace {

using Bytes = std::vector<uint8_t>;

// A file model: what the bytes must be after the same writes and seeks.
struct Model {
  Bytes bytes;
  size_t position = 0;
  void write(const Bytes &piece) {
    if (bytes.size() < position + piece.size()) bytes.resize(position + piece.size());
    std::copy(piece.begin(), piece.end(), bytes.begin() + static_cast<ptrdiff_t>(position));
    position += piece.size();
  }
};

// Writes of all sizes, with patches at the front, in the middle and across its edges.
void exercise(host::Sink &sink, Model &model, uint64_t seed) {
  support::Random random(seed);
  for (int round = 0; round < 300; ++round) {
    const size_t sizes[] = {1, 2, 40, 5000, 70000, 300000};
    const Bytes piece =
        random.bytes(static_cast<size_t>(random.between(0, 1)) * 3 + sizes[random.next() % 6] / 3 + 1);
    if (random.chance(30) && !model.bytes.empty()) {
      const auto at = random.between(0, static_cast<int64_t>(model.bytes.size()));
      ASSERT_TRUE(sink.seek(at, KVL_FROM_START));
      model.position = static_cast<size_t>(at);
    } else {
      ASSERT_TRUE(sink.seek(0, KVL_FROM_END));
      model.position = model.bytes.size();
    }
    ASSERT_TRUE(sink.write(piece.data(), piece.size()));
    model.write(piece);
    ASSERT_EQ(sink.position(), model.position);
    ASSERT_EQ(sink.pageSize(), model.bytes.size());
  }
}

}  // namespace

TEST(Sink, AFileHoldsWhatWasWritten) {
  const support::TempDir folder;
  for (uint64_t seed = 1; seed <= 4; ++seed) {
    const std::string path = folder.file("out");
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    ASSERT_GE(fd, 0);
    host::Sink sink(fd);
    Model model;
    exercise(sink, model, seed);
    ASSERT_TRUE(sink.flush());
    close(fd);
    EXPECT_EQ(support::readFile(path), model.bytes);
  }
}

TEST(Sink, MemoryHoldsWhatWasWritten) {
  host::Sink sink(-1);
  Model model;
  exercise(sink, model, 9);
  ASSERT_TRUE(sink.flush());
  EXPECT_TRUE(std::ranges::equal(sink.kept(), model.bytes));
}

TEST(Sink, RefusesPlacesThatNoFileHas) {
  host::Sink sink(-1);
  EXPECT_FALSE(sink.seek(-1, KVL_FROM_START));
  EXPECT_FALSE(sink.seek(0, 3));
  EXPECT_FALSE(sink.seek(int64_t{1} << 31, KVL_FROM_START));
  EXPECT_TRUE(sink.seek(0, KVL_FROM_POSITION));
  const uint8_t byte = 0;
  ASSERT_TRUE(sink.seek(INT32_MAX, KVL_FROM_START));
  EXPECT_FALSE(sink.write(&byte, 1));
  EXPECT_EQ(sink.error(), EFBIG);
}

TEST(Sink, RemembersTheFirstErrorAndStaysFailed) {
  const int fd = open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_GE(fd, 0);
  host::Sink sink(fd);
  const Bytes piece(400000);
  EXPECT_FALSE(sink.write(piece.data(), piece.size()) && sink.flush());
  EXPECT_EQ(sink.error(), ENOSPC);
  EXPECT_FALSE(sink.write(piece.data(), 1));
  EXPECT_FALSE(sink.flush());
  close(fd);
}

// Two pages, written and patched like files of their own, and the whole file read and changed across them.
TEST(Sink, PagesStandBehindEachOther) {
  const support::TempDir folder;
  const std::string path = folder.file("out");
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  ASSERT_GE(fd, 0);
  host::Sink file(fd), memory(-1);
  Bytes whole;
  for (host::Sink *sink : {&file, &memory}) {
    whole.clear();
    for (uint64_t page = 0; page < 3; ++page) {
      if (page != 0) {
        ASSERT_TRUE(sink->startPage());
      }
      EXPECT_EQ(sink->base(), whole.size());
      EXPECT_EQ(sink->position(), 0u);
      Model model;
      exercise(*sink, model, 20 + page);
      EXPECT_EQ(sink->pageSize(), model.bytes.size());
      whole.insert(whole.end(), model.bytes.begin(), model.bytes.end());
      EXPECT_EQ(sink->size(), whole.size());
      const finish::File all = sink->wholeFile();
      EXPECT_EQ(all.size, whole.size());
      for (const uint64_t at : {uint64_t{4}, sink->base() + 10, whole.size() - 7}) {
        Bytes seen(7);
        ASSERT_TRUE(all.read(all.context, at, seen.data(), seen.size()));
        EXPECT_TRUE(std::equal(seen.begin(), seen.end(), whole.begin() + static_cast<ptrdiff_t>(at)));
        const Bytes patch{1, 2, 3, static_cast<uint8_t>(page)};
        ASSERT_TRUE(all.write(all.context, at, patch.data(), patch.size()));
        std::copy(patch.begin(), patch.end(), whole.begin() + static_cast<ptrdiff_t>(at));
      }
      Bytes seen(whole.size());
      ASSERT_TRUE(all.read(all.context, 0, seen.data(), seen.size()));
      EXPECT_EQ(seen, whole);
      uint8_t byte = 0;
      EXPECT_FALSE(all.read(all.context, whole.size(), &byte, 1));
    }
    ASSERT_TRUE(sink->flush());
  }
  close(fd);
  EXPECT_EQ(support::readFile(path), whole);
  EXPECT_TRUE(std::ranges::equal(memory.kept(), whole));
}

namespace {

template <class Action>
std::string outputFailure(Action action) {
  try {
    action();
  } catch (const host::Failure &failure) {
    return failure.what();
  }
  return "";
}

}  // namespace

TEST(Output, InMemoryEndsBeforeTwoGigabytes) {
  host::Output output("", host::TargetRules{});
  const uint8_t byte = 1;
  output.sink().seek(INT32_MAX, KVL_FROM_START);
  EXPECT_FALSE(output.sink().write(&byte, 1));
  EXPECT_EQ(outputFailure([&] { output.checkWritten(); }),
            output.name() + ": cannot be written: the file would take 2 GiB or more");
}

TEST(Output, NumbersNoMorePagesThanAFileCan) {
  host::Output output("", host::TargetRules{});
  host::PageCount pages;
  pages.number = 65533;
  EXPECT_EQ(outputFailure([&] { host::startPage(output, pages); }), "");
  EXPECT_EQ(pages.number, 65534u);
  EXPECT_EQ(outputFailure([&] { host::startPage(output, pages); }),
            output.name() + ": cannot be finished: a file numbers its pages up to 65535");
}

TEST(Output, ServesTheFilterNothingThatItDoesNotAskFor) {
  host::Sink sink(-1);
  host::Pace pace(RaxelHostJob{});
  host::OutputStream stream(sink, pace);
  const auto context = reinterpret_cast<HostWord>(&stream);
  uint8_t byte = 0;
  const HostWord to = reinterpret_cast<HostWord>(&byte);
  EXPECT_EQ(host::OutputStream::procedure(context, KVL_OP_READ, to, 1), ~HostWord{0});
  EXPECT_EQ(host::OutputStream::procedure(0, KVL_OP_READ, to, 1), 0u);
}
