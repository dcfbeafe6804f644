// SPDX-License-Identifier: MIT
// What the user is told of a failure, and which number the command ends with.
#include "failure.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <set>

#include "finish/finish.h"
#include "order/advice.h"
#include "support/temp_dir.h"

namespace {

struct Row {
  RaxelHostCode reason;
  host::Exit exit;
  const char *advice;
};

// Each code of the library, the number of the command and the hint behind the sentence.
constexpr Row kRows[] = {
    {RAXEL_HOST_OK, host::kDone, ""},
    {RAXEL_HOST_BAD_PICTURE, host::kNoInput, ""},
    {RAXEL_HOST_TOO_WIDE, host::kNoInput, ": give a smaller --size"},
    {RAXEL_HOST_TOO_TALL, host::kNoInput, ": give a smaller --size"},
    {RAXEL_HOST_TOO_LARGE, host::kNoInput, ": use fewer bits (--mode) or a smaller --size"},
    {RAXEL_HOST_BAD_RESOLUTION, host::kUsage, ": give one with --dpi"},
    {RAXEL_HOST_BAD_SIZE, host::kUsage, ": check --size and --dpi"},
    {RAXEL_HOST_FAX_NEEDS_1_BIT, host::kUsage, ": use --mode bilevel, or --compress lzw or packbits"},
    {RAXEL_HOST_TILES_NEED_T6, host::kUsage, ": use --compress t6, or --layout strips"},
    {RAXEL_HOST_TILES_TOO_FLAT, host::kUsage, ": use --layout strips"},
    {RAXEL_HOST_TILES_TOO_WIDE, host::kUsage, ": use --layout strips"},
    {RAXEL_HOST_ONE_STRIP_NEEDS_FAX, host::kUsage,
     ": use --compress t6, t4 or huffman, or --strips quarters"},
    {RAXEL_HOST_PREDICTOR_NEEDS_LZW, host::kUsage, ": give --predictor auto"},
    {RAXEL_HOST_BAD_PALETTE, host::kUsage, ": use --mode auto, or another --palette"},
    {RAXEL_HOST_NO_QUANTIZER, host::kUsage, ": use another --quantizer"},
    {RAXEL_HOST_NO_THRESHOLD, host::kUsage, ": give a level with --threshold"},
    {RAXEL_HOST_NO_FILTER, host::kLibrary, "; name another with --library"},
    {RAXEL_HOST_NO_SERVICE, host::kLibrary, ""},
    {RAXEL_HOST_NO_MEMORY, host::kLibrary, ""},
    {RAXEL_HOST_FILTER_FAILED, host::kLibrary, ""},
    {RAXEL_HOST_BAD_ROAD, host::kUsage, ": use --via cell"},
    {RAXEL_HOST_BAD_ARGUMENT, host::kUsage, ""},
    {RAXEL_HOST_NO_CREATE, host::kNoCreate, ""},
    {RAXEL_HOST_NO_WRITE, host::kNoWrite, ""},
    {RAXEL_HOST_NOT_VERIFIED, host::kNoWrite, ""},
    {RAXEL_HOST_STOPPED, host::kStopped, ""},
};

std::string told(const host::Failure &failure, const host::Options &options,
                 const std::string &output = "") {
  return host::advised(failure, options, output).what();
}

}  // namespace

TEST(Failure, EveryCodeHasItsNumberAndItsAdvice) {
  std::set<int> reasons;
  for (const Row &row : kRows) {
    reasons.insert(row.reason);
    EXPECT_EQ(host::exitOf(row.reason), row.exit) << row.reason;
    const host::Failure failure(row.reason, "it is so");
    EXPECT_EQ(failure.code(), row.exit);
    EXPECT_EQ(told(failure, {}), std::string("it is so") + row.advice) << row.reason;
  }
  EXPECT_EQ(reasons.size(), size_t{RAXEL_HOST_CODES});
}

TEST(Failure, EveryNumberHasTheNearestCode) {
  EXPECT_EQ(host::reasonOf(host::kDone), RAXEL_HOST_OK);
  EXPECT_EQ(host::reasonOf(host::kUsage), RAXEL_HOST_BAD_ARGUMENT);
  EXPECT_EQ(host::reasonOf(host::kNoInput), RAXEL_HOST_BAD_PICTURE);
  EXPECT_EQ(host::reasonOf(host::kLibrary), RAXEL_HOST_FILTER_FAILED);
  EXPECT_EQ(host::reasonOf(host::kNoCreate), RAXEL_HOST_NO_CREATE);
  EXPECT_EQ(host::reasonOf(host::kNoWrite), RAXEL_HOST_NO_WRITE);
  EXPECT_EQ(host::reasonOf(host::kStopped), RAXEL_HOST_STOPPED);
}

TEST(Failure, AdviceGoesByTheRoadThatWasTaken) {
  host::Options driver, metafile;
  driver.via = host::Via::kDriver;
  metafile.via = host::Via::kMetafile;
  EXPECT_EQ(told({RAXEL_HOST_BAD_ROAD, "no"}, driver), "no: give another --dpi, or --via cell");
  EXPECT_EQ(told({RAXEL_HOST_BAD_ROAD, "no"}, metafile), "no: use --via cell");
  EXPECT_EQ(told({RAXEL_HOST_FILTER_FAILED, "no"}, driver), "no");
  EXPECT_EQ(told({RAXEL_HOST_FILTER_FAILED, "no"}, metafile), "no; use --via cell");
}

TEST(Failure, AdviceOnAnOutputGoesByWhatIsInTheWay) {
  const support::TempDir folder;
  const std::string file = folder.file("old.tif");
  std::ofstream(file) << "old";
  const auto inTheWay = [&](int error, const host::Options &options, const std::string &output) {
    return told({RAXEL_HOST_NO_CREATE, "no", error}, options, output);
  };
  host::Options plain, kept, forced;
  kept.rules.noClobber = true;
  forced.rules.force = true;
  EXPECT_EQ(inTheWay(EISDIR, plain, folder.path()), "no; use -d for several outputs");
  EXPECT_EQ(inTheWay(EEXIST, plain, file), "no; give another name, or --force to replace it");
  EXPECT_EQ(inTheWay(EEXIST, kept, file), "no, and --no-clobber was given");
  EXPECT_EQ(inTheWay(ENOSPC, plain, file), "no");
  // It is the folder that cannot be written: the file is not there, or may be written itself.
  EXPECT_EQ(inTheWay(EACCES, plain, folder.file("new.tif")), "no");
  EXPECT_EQ(inTheWay(EACCES, plain, file), "no");
  ASSERT_EQ(chmod(file.c_str(), 0444), 0);
  EXPECT_EQ(inTheWay(EACCES, forced, file), "no");
  // Root may write it all the same.
  EXPECT_EQ(inTheWay(EACCES, plain, file), geteuid() == 0 ? "no" : "no; --force replaces it");
}

TEST(Failure, EveryOutcomeOfFinishingIsTold) {
  using finish::Outcome;
  std::set<std::string> told;
  for (const Outcome outcome : {Outcome::kDone, Outcome::kNotOurs, Outcome::kTooLarge,
                                Outcome::kTooManyPages, Outcome::kNotRead, Outcome::kNotWritten}) {
    const std::string sentence = finish::sentence(outcome);
    EXPECT_FALSE(sentence.empty());
    EXPECT_TRUE(told.insert(sentence).second) << sentence;
  }
}
