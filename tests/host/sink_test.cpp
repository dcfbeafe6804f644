#include "output/sink.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

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
      ASSERT_TRUE(sink.seek(at, 0));
      model.position = static_cast<size_t>(at);
    } else {
      ASSERT_TRUE(sink.seek(0, 2));
      model.position = model.bytes.size();
    }
    ASSERT_TRUE(sink.write(piece.data(), piece.size()));
    model.write(piece);
    ASSERT_EQ(sink.position(), model.position);
    ASSERT_EQ(sink.size(), model.bytes.size());
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
  EXPECT_FALSE(sink.seek(-1, 0));
  EXPECT_FALSE(sink.seek(0, 3));
  EXPECT_FALSE(sink.seek(int64_t{1} << 31, 0));
  EXPECT_TRUE(sink.seek(0, 1));
  const uint8_t byte = 0;
  ASSERT_TRUE(sink.seek(INT32_MAX, 0));
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
