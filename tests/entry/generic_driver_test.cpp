// SPDX-License-Identifier: MIT
// The generic driver entry and its operations.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "raster/session.h"
#include "raxel/driver.h"
#include "raxel/filter.h"
#include "support/globals.h"
#include "support/temp_dir.h"

namespace {

// Puts the common block back to what a process starts with.
class GenericDriver : public testing::Test {
 protected:
  ~GenericDriver() override {
    hCommon = 0;
    lpCommon = nullptr;
  }
  void useCommon(int32_t state) {
    common_.nSessState = state;
    common_.nSessError = 77;
    hCommon = 1;
    lpCommon = &common_;
  }
  support::Globals globals_;
  SessionCommon common_ = {};
};

TEST_F(GenericDriver, DdEntryCopiesTheVersion) {
  char out[12];
  std::memset(out, 0x5A, sizeof out);
  EXPECT_EQ(dd_entry(RAXEL_ENTRY_VERSION, out + 1, 0), 0);
  uint32_t version;
  std::memcpy(&version, out + 1, 4);
  EXPECT_EQ(version, 0x02000005u);
  EXPECT_EQ(out[0], 0x5A);
  EXPECT_EQ(out[5], 0x5A);
}

TEST_F(GenericDriver, DdEntryCopiesTheWorkingEntrysAddress) {
  uintptr_t address = 0;
  EXPECT_EQ(dd_entry(static_cast<uint32_t>(-3), &address, 9), 0);
  EXPECT_EQ(address, reinterpret_cast<uintptr_t>(&dd_entry32));
  EXPECT_NE(address, reinterpret_cast<uintptr_t>(&RASTER_dd_entry32));
}

TEST_F(GenericDriver, DdEntryTakesTheLow16BitsAsASignedNumber) {
  uint32_t out = 0;
  dd_entry(0x1234FFFE, &out, 0);
  EXPECT_EQ(out, 0x02000005u);
}

TEST_F(GenericDriver, DdEntryDoesNothingElse) {
  for (uint32_t op : {0u, 1u, 2u, 3u, 0xFFFFu, 0xFFFCu, 0x8000u}) {
    uint32_t out = 0xABCDEF01;
    EXPECT_EQ(dd_entry(op, &out, 0), 0);
    EXPECT_EQ(out, 0xABCDEF01u) << op;
  }
  EXPECT_EQ(dd_entry(RAXEL_ENTRY_VERSION, nullptr, 0), 0);
  EXPECT_EQ(dd_entry(RAXEL_ENTRY_ADDRESS, nullptr, 0), 0);
}

TEST_F(GenericDriver, VersionAnswersItsFourBytes) {
  uint32_t record[2] = {0, 0xABCDEF01};
  EXPECT_EQ(dd_entry32(5, RAXEL_ENTRY_VERSION, record), 4);
  EXPECT_EQ(record[0], 0x02000005u);
  EXPECT_EQ(record[1], 0xABCDEF01u);
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_VERSION, nullptr), 4);
}

TEST_F(GenericDriver, UnknownOperationsTouchNothing) {
  useCommon(1);
  uint32_t record[16];
  for (uint32_t op : {1u, 3u, 4u, 0x7FFFu, 0xFFFDu, 0x8000u}) {
    std::memset(record, 0x11, sizeof record);
    EXPECT_EQ(dd_entry32(0, op, record), 0) << op;
    for (const uint32_t word : record) EXPECT_EQ(word, 0x11111111u);
  }
  EXPECT_EQ(common_.nSessError, 77);
}

TEST_F(GenericDriver, InitialiseWithoutACommonHandleAlwaysInitialises) {
  HostWord record[16] = {};  // no setup handle: initdvr answers 22
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_START, record), RAXEL_BAD_SETUP);
  common_.nSessState = 5;
  lpCommon = &common_;
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_START, record), RAXEL_BAD_SETUP)
      << "hCommon is 0, whatever lpCommon holds";
}

TEST_F(GenericDriver, InitialiseLeavesAnOpenSessionAlone) {
  HostWord record[16] = {};
  for (int32_t state : {0, 2, -1}) {
    useCommon(state);
    EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_START, record), 0) << state;
  }
  useCommon(1);
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_START, record), RAXEL_BAD_SETUP) << "state 1 is a closed session";
  lpCommon = nullptr;
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_START, record), RAXEL_BAD_SETUP);
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_START, nullptr), RAXEL_BAD_SETUP);
}

TEST_F(GenericDriver, ExecuteInAClosedSessionCallsNothing) {
  uint32_t record[4] = {1, 0, 0, 0};
  for (int32_t state : {0, -1, INT32_MIN}) {
    useCommon(state);
    EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_EXECUTE, record), 0);
    EXPECT_EQ(common_.nSessError, 0) << "cleared all the same";
  }
}

TEST_F(GenericDriver, ExecuteAnswersWithTheSessionsError) {
  // The function asks the host, and the host's callback is where a session's error comes from.
  const support::TempDir folder;
  raster_test::Host host(folder.file("out.tif"));
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  useCommon(2);
  host.action = [this] { common_.nSessError = -7; };
  uint32_t close[4] = {2, 0, 0, 0};
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_EXECUTE, close), -7);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_INITIALISED);
  uint32_t nothing[4] = {8, 0, 0, 0};
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_EXECUTE, nothing), 0) << "cleared before the next function";
  host.action = nullptr;
}

TEST_F(GenericDriver, ExecuteWithoutARasterDriverDoesNothing) {
  uint32_t record[4] = {1, 0, 0, 0};
  useCommon(1);
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_EXECUTE, record), 0);
  EXPECT_EQ(common_.nSessError, 0);
}

TEST_F(GenericDriver, ExecuteWithoutARecordClearsTheError) {
  useCommon(1);
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_EXECUTE, nullptr), 0);
  EXPECT_EQ(common_.nSessError, 0);
}

TEST_F(GenericDriver, ExecuteCallsTheFunctionThatTheOpcodeNames) {
  // The raster driver's table serves both entries: 3843 empties the error stack in every state.
  RasterDriverState driver = {};
  driver.nState = RAXEL_STATE_INITIALISED;
  driver.nLastError = RAXEL_CANNOT_WRITE;
  lpEMData = &driver;
  useCommon(2);
  uint32_t record[4] = {RAXEL_OP_EMPTY_ERRORS, 0, 0, 0};
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_EXECUTE, record), 0) << "the driver's error is not the session's";
  EXPECT_EQ(driver.nLastError, 0);
  driver.nLastError = RAXEL_CANNOT_WRITE;
  for (const int32_t state : {0, -1, INT32_MIN}) {
    common_.nSessState = state;
    common_.nSessError = 77;
    EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_EXECUTE, record), 0);
    EXPECT_EQ(driver.nLastError, RAXEL_CANNOT_WRITE) << "nothing is called in state " << state;
    EXPECT_EQ(common_.nSessError, 0) << "cleared all the same";
  }
  lpEMData = nullptr;
}

TEST_F(GenericDriver, ASessionFromOpenToEndClearsTheHostsNameAndAnswers300) {
  const support::TempDir folder;
  std::string name = folder.file("out.tif");
  const Handle setup = CreateSetup(0, "none", nullptr, nullptr);
  HostWord record[16] = {};
  record[RAXEL_START_NAME] = reinterpret_cast<HostWord>(name.data());
  record[RAXEL_START_SETUP] = setup;
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_START, record), 0);
  EXPECT_EQ(name[0], '\0');
  EXPECT_EQ(record[RAXEL_START_SETUP], 0u);
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_END, nullptr), RAXEL_NO_MEMORY);
  EXPECT_TRUE(std::filesystem::exists(folder.file("out.tif")));
  DestroySetup(setup);
}

TEST_F(GenericDriver, ExecuteWithoutACommonBlockAnswersZero) {
  uint32_t record[4] = {1, 0, 0, 0};
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_EXECUTE, record), 0);
}

TEST_F(GenericDriver, TerminateClearsTheErrorAndAnswers300) {
  useCommon(1);
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_END, nullptr), RAXEL_NO_MEMORY);
  EXPECT_EQ(common_.nSessError, 0);
  lpCommon = nullptr;
  EXPECT_EQ(dd_entry32(0, RAXEL_ENTRY_END, nullptr), RAXEL_NO_MEMORY);
}

}  // namespace
