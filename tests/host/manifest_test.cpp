// SPDX-License-Identifier: MIT
#include "order/manifest.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "failure.h"
#include "order/digest.h"
#include "order/manifest_lines.h"
#include "order/option_table.h"
#include "order/shard.h"
#include "support/temp_dir.h"

namespace {

template <class Action>
host::Exit codeOf(Action action) {
  try {
    action();
  } catch (const host::Failure &failure) {
    return failure.code();
  }
  return host::kDone;
}

std::string lineOf(const std::string &path, const std::string &target) {
  host::readManifest(path);
  return host::manifestLine(path, target);
}

}  // namespace

TEST(Shard, IsAPlaceAmongAll) {
  const host::Shard shard = host::parseShard("12/345");
  EXPECT_EQ(shard.number, 12u);
  EXPECT_EQ(shard.count, 345u);
  EXPECT_EQ(host::parseShard("8/8").number, 8u);
  for (const char *wrong : {"0/3", "4/3", "1", "1/", "/1", "1/0", "a/b", "1/2/3", "-1/2", " 1/2", "1/2 ",
                            "1/99999999999999999999"}) {
    EXPECT_EQ(codeOf([&] { host::parseShard(wrong); }), host::kUsage) << wrong;
  }
}

TEST(Shard, IsTheSameOnEveryMachine) {
  struct Case {
    const char *name;
    uint64_t ofTwo, ofThree, ofEight;
  };
  constexpr std::array kCases{Case{"scan-01.png", 2, 2, 4},  Case{"scan-02.png", 1, 2, 3},
                              Case{"scan-03.png", 1, 1, 3},  Case{"scan-04.png", 2, 1, 8},
                              Case{"\xC3\xA4.png", 2, 3, 4}, Case{"a", 2, 3, 6}};
  for (const Case &c : kCases) {
    for (const std::string &input : {std::string(c.name), std::string("/some/folder/") + c.name}) {
      EXPECT_TRUE(host::isInShard(input, {1, 1})) << input;
      for (uint64_t number = 1; number <= 8; ++number) {
        EXPECT_EQ(host::isInShard(input, {number, 2}), number == c.ofTwo) << input;
        EXPECT_EQ(host::isInShard(input, {number, 3}), number == c.ofThree) << input;
        EXPECT_EQ(host::isInShard(input, {number, 8}), number == c.ofEight) << input;
      }
    }
  }
}

TEST(Digest, IsSha256OfFilesOneAfterTheOther) {
  const support::TempDir folder;
  support::writeFile(folder.file("a"), "a");
  support::writeFile(folder.file("bc"), "bc");
  support::writeFile(folder.file("million"), std::string(1'000'000, 'a'));
  EXPECT_EQ(host::digestOf({folder.file("a"), folder.file("bc")}),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(host::digestOf({folder.file("million")}),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
  EXPECT_EQ(host::digestOf({}), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(codeOf([&] { host::digestOf({folder.file("missing")}); }), host::kNoInput);
  EXPECT_EQ(codeOf([&] { host::digestOf({folder.path()}); }), host::kNoInput);
}

TEST(Manifest, HasEveryLineOfManyWhoAppendAtOnce) {
  const support::TempDir folder;
  const std::string path = folder.file("m.jsonl");
  constexpr size_t kWriters = 4, kLines = 100;
  // Of many pages, which a disk may show one after the other.
  const auto lineBy = [](size_t writer, size_t number) {
    return "{\"target\":\"" + std::string(20'000 + number, static_cast<char>('a' + writer)) + "\"}";
  };
  std::array<pid_t, kWriters> writers{};
  for (size_t writer = 0; writer < kWriters; ++writer) {
    writers[writer] = fork();
    ASSERT_GE(writers[writer], 0);
    if (writers[writer] != 0) continue;
    const host::Exit exit = codeOf([&] {
      for (size_t number = 0; number < kLines; ++number)
        host::appendToManifest(path, lineBy(writer, number));
    });
    _exit(exit);
  }
  for (const pid_t writer : writers) {
    int status = -1;
    EXPECT_EQ(waitpid(writer, &status, 0), writer);
    EXPECT_EQ(status, 0);
  }
  std::istringstream text(support::readText(path));
  std::array<size_t, kWriters> seen{};
  size_t lines = 0;
  for (std::string line; std::getline(text, line); ++lines) {
    ASSERT_GT(line.size(), 20'000u) << line;
    const auto writer = static_cast<size_t>(line[11] - 'a');
    ASSERT_LT(writer, kWriters) << line.substr(0, 40);
    ASSERT_TRUE(line == lineBy(writer, seen[writer]++)) << line.substr(0, 40);
  }
  EXPECT_EQ(lines, kWriters * kLines);
}

TEST(Manifest, HasTheLastWholeLineOfATarget) {
  const support::TempDir folder;
  const std::string path = folder.file("m.jsonl");
  EXPECT_EQ(lineOf(path, R"("a.tif")"), "");
  host::appendToManifest(path, R"({"target":"a.tif","bytes":1})");
  host::appendToManifest(path, R"({"target":"b.tif","bytes":2})");
  EXPECT_EQ(lineOf(path, R"("a.tif")"), R"({"target":"a.tif","bytes":1})");
  host::appendToManifest(path, R"({"target":"a.tif","bytes":3})");
  EXPECT_EQ(lineOf(path, R"("a.tif")"), R"({"target":"a.tif","bytes":3})");
  EXPECT_EQ(lineOf(path, R"("b.tif")"), R"({"target":"b.tif","bytes":2})");
  EXPECT_EQ(lineOf(path, R"("c.tif")"), "");
  EXPECT_EQ(std::filesystem::file_size(path), 3 * 29u);
  // One that is not whole counts for nothing, until it is, and spoils no other.
  support::writeFile(path, "{\"target\":\"a.tif\",\"bytes\":1}\n{\"target\":\"b.tif\",\"by");
  EXPECT_EQ(lineOf(path, R"("b.tif")"), "");
  host::appendToManifest(path, R"({"target":"c.tif"})");
  EXPECT_EQ(lineOf(path, R"("a.tif")"), R"({"target":"a.tif","bytes":1})");
  EXPECT_EQ(lineOf(path, R"("b.tif")"), "");
  EXPECT_EQ(lineOf(path, R"("c.tif")"), R"({"target":"c.tif"})");
  std::filesystem::remove(path);
  EXPECT_EQ(lineOf(path, R"("a.tif")"), "");
}

TEST(Manifest, IsNoOtherFile) {
  const support::TempDir folder;
  const std::string path = folder.file("photo.png");
  support::writeFile(path, "\x89PNG");
  EXPECT_EQ(codeOf([&] { host::checkManifest(path); }), host::kNoCreate);
  EXPECT_EQ(codeOf([&] { host::checkManifest(folder.path()); }), host::kNoWrite);
  EXPECT_EQ(codeOf([&] { host::checkManifest(folder.file("missing/m.jsonl")); }), host::kNoWrite);
  EXPECT_EQ(codeOf([&] { host::checkManifest(folder.file("new.jsonl")); }), host::kDone);
  EXPECT_EQ(std::filesystem::file_size(path), 4u);
}

TEST(Manifest, TellsTheOptionsThatDecideOnBytes) {
  std::string names;
  for (const host::OptionRow &row : host::kOptions) {
    if (!host::decidesOnBytes(row)) names.append(row.longName).append(" ");
  }
  EXPECT_EQ(names,
            "output directory jobs threads force no-clobber no-sync no-sandbox manifest resume shard "
            "library save dry-run "
            "verify inspect list json quiet verbose version ");
}
