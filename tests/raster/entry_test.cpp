// SPDX-License-Identifier: MIT
// The driver's entries: initialisation, termination, versions and capabilities.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <set>

#include "raster/session.h"
#include "support/page_end.h"
#include "support/temp_dir.h"

namespace {

using raster_test::Call;
using raster_test::Host;

constexpr HostWord kMinusTwo = static_cast<HostWord>(intptr_t{-2});

TEST(DriverEntry, AnswersVersionAndAddress) {
  uint32_t version = 0;
  EXPECT_EQ(RASTER_dd_entry(RAXEL_ENTRY_VERSION, &version, 0), 0);
  EXPECT_EQ(version, 0x02000005u);
  int32_t (*entry)(HostWord, uint32_t, void *) = nullptr;
  EXPECT_EQ(RASTER_dd_entry(0x1FFFD, &entry, 0), 0) << "only the low 16 bits of the op count";
  EXPECT_EQ(entry, &RASTER_dd_entry32);
  uint32_t untouched = 7;
  EXPECT_EQ(RASTER_dd_entry(RAXEL_ENTRY_START, &untouched, 0), 0);
  EXPECT_EQ(untouched, 7u);
  EXPECT_EQ(RASTER_dd_entry(RAXEL_ENTRY_VERSION, nullptr, 0), 0);
  version = 0;
  EXPECT_EQ(RASTER_dd_entry32(0, RAXEL_ENTRY_VERSION, &version), 4);
  EXPECT_EQ(version, 0x02000005u);
  EXPECT_EQ(RASTER_dd_entry32(0, RAXEL_ENTRY_VERSION, nullptr), 4);
  EXPECT_EQ(RASTER_dd_entry32(0, RAXEL_ENTRY_NOTHING, nullptr), 0);
  EXPECT_EQ(RASTER_dd_entry32(0, 3, nullptr), 0);
}

TEST(DriverEntry, InitialisesAndAnnouncesProgressToOneHundred) {
  Host host("picture.tif");
  host.settings().nColorMode = RAXEL_STORED_COLORS_GREY;
  EXPECT_EQ(host.initialise(), 0);
  ASSERT_NE(lpEMData, nullptr);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_INITIALISED);
  EXPECT_STREQ(lpEMData->szOutFile, "picture.tif");
  EXPECT_EQ(lpEMData->nColorOp, RAXEL_TREAT_GREY);
  EXPECT_EQ(lpEMData->hSetupRef, host.setup_);
  EXPECT_EQ(hSetup, host.setup_);
  EXPECT_EQ(lpSetup, &host.settings());
  EXPECT_EQ(host.record_[RAXEL_START_REPLIES], reinterpret_cast<HostWord>(lpEMData->lpReplyBuf));
  EXPECT_EQ(GlobalSize(lpEMData->hReplyBuf), 256u);
  ASSERT_EQ(host.calls.size(), 1u);
  EXPECT_EQ(host.calls[0], (Call{reinterpret_cast<HostWord>(&host), {0, kMinusTwo, 100, 0, 0, 0}}));
  EXPECT_EQ(host.terminate(), 0);
  EXPECT_EQ(lpEMData, nullptr);
  EXPECT_EQ(hEMData, 0u);
}

TEST(DriverEntry, SaysNothingToAHostWithoutContext) {
  Host host;
  host.status_[RAXEL_STATUS_CONTEXT] = 0;
  host.initialise();
  EXPECT_TRUE(host.calls.empty());
}

TEST(DriverEntry, SaysNothingToAHostWithoutACallback) {
  Host host;
  host.status_[RAXEL_STATUS_CALLBACK] = 0;
  host.initialise();
  EXPECT_TRUE(host.calls.empty());
}

TEST(DriverEntry, WritesExactlyTheListedCapabilities) {
  Host host;
  host.settings().nColorMode = RAXEL_STORED_COLORS_GREY_INVERT;
  host.capabilities_.fill(0xAAAA5555u);
  host.initialise();
  const std::set<int> minusOne = {1,  2,  3,  4,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 23,
                                  24, 25, 26, 27, 28, 29, 32, 33, 36, 37, 41, 45, 57, 59};
  const std::set<int> nought = {5, 19, 20, 21, 22, 31, 34, 35, 40, 44, 55, 56, 58};
  for (int i = 0; i < 64; ++i) {
    uint32_t expected = 0xAAAA5555u;
    if (minusOne.count(i) != 0) expected = 0xFFFFFFFFu;
    if (nought.count(i) != 0) expected = 0;
    if (i == 0) expected = 100;
    if (i == 38 || i == 39) expected = 1;
    if (i == 47) expected = 4;
    EXPECT_EQ(host.capabilities_[static_cast<size_t>(i)], expected) << i;
  }
}

TEST(DriverEntry, ColorModesBecomeTreatments) {
  for (int32_t mode = 0; mode <= RAXEL_STORED_COLORS_GREY_INVERT + 1; ++mode) {
    Host host;
    host.settings().nColorMode = mode;
    host.initialise();
    const uint32_t expected = mode >= RAXEL_STORED_COLORS && mode <= RAXEL_STORED_COLORS_GREY_INVERT
                                  ? static_cast<uint32_t>(mode - RAXEL_STORED_COLORS)
                                  : 0;
    EXPECT_EQ(lpEMData->nColorOp, expected) << mode;
  }
}

TEST(DriverEntry, ReadsNoFurtherThanTheEndOfItsName) {
  Host host;
  const support::PageEnd name({'a', '.', 't', 'i', 'f', 0});
  host.record_[RAXEL_START_NAME] = reinterpret_cast<HostWord>(name.data());
  EXPECT_EQ(host.initialise(), 0);
  EXPECT_STREQ(lpEMData->szOutFile, "a.tif");
}

TEST(DriverEntry, RefusesNamesThatDoNotFit) {
  Host fits(std::string(143, 'n'));
  EXPECT_EQ(fits.initialise(), 0);
  EXPECT_EQ(std::strlen(lpEMData->szOutFile), 143u);
  fits.terminate();
  Host tooLong(std::string(144, 'n'));
  EXPECT_EQ(tooLong.initialise(), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(lpEMData, nullptr);
  EXPECT_EQ(tooLong.record_[RAXEL_START_REPLIES], 0u);
  EXPECT_EQ(tooLong.send(RAXEL_OP_OPEN_DEVICE), 0);
}

TEST(DriverEntry, RefusesReplyBuffersPastAllReason) {
  Host host;
  host.record_[RAXEL_START_REPLY_BYTES] = 0x80000000u;
  EXPECT_EQ(host.initialise(), RAXEL_NO_MEMORY);
  EXPECT_EQ(lpEMData, nullptr);
}

TEST(DriverEntry, TakesNullsForNothing) {
  EXPECT_EQ(RASTER_dd_entry32(0, RAXEL_ENTRY_START, nullptr), RAXEL_NO_MEMORY);
  EXPECT_EQ(RASTER_dd_entry32(0, RAXEL_ENTRY_EXECUTE, nullptr), 0);
  EXPECT_EQ(RASTER_dd_entry32(0, RAXEL_ENTRY_END, nullptr), 0);
  Host host;
  host.record_[RAXEL_START_NAME] = 0;
  host.record_[RAXEL_START_SETUP] = 0;
  host.record_[RAXEL_START_STATUS] = 0;
  host.record_[RAXEL_START_CAPABILITIES] = 0;
  EXPECT_EQ(host.initialise(), 0);
  EXPECT_EQ(lpSetup, nullptr);
  EXPECT_STREQ(lpEMData->szOutFile, "");
  EXPECT_EQ(RASTER_dd_entry32(0, RAXEL_ENTRY_EXECUTE, nullptr), 0);
}

TEST(DriverEntry, WithACommonBlockThereIsNoStateToAllocate) {
  Host host;
  hCommon = 5;
  EXPECT_EQ(host.initialise(), RAXEL_NO_MEMORY);
  EXPECT_EQ(AllocGlobal(), 0);
  EXPECT_EQ(lpEMData, nullptr);
}

TEST(DriverEntry, WithACommonBlockARunningStateIsLeftAlone) {
  Host host;
  host.initialise();
  lpEMData->nColorOp = 77;
  hCommon = 5;
  EXPECT_EQ(host.initialise(), 0);
  EXPECT_EQ(lpEMData->nColorOp, 77u);
  lpEMData->nState = 0xFFFFFFFFu;  // marked as ended by the host: initialised again, in place
  RasterDriverState *state = lpEMData;
  EXPECT_EQ(host.initialise(), 0);
  EXPECT_EQ(lpEMData, state);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_INITIALISED);
  hCommon = 0;
}

TEST(DriverEntry, ASecondInitialisationStartsAfresh) {
  support::TempDir dir;
  Host host(dir.file("again.tif"));
  host.openBody(4, 4);
  host.beginRaster(4, 4, 8);
  const size_t calls = host.calls.size();
  EXPECT_EQ(host.initialise(), 0);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_INITIALISED);
  EXPECT_EQ(lpEMData->hOutFile, 0u);
  EXPECT_EQ(host.calls.size(), calls + 1) << "the old output is closed without asking the host";
}

int closes = 0;

// An output that ends the session when it is closed.
HostWord endWhenClosed(HostWord, HostWord op, HostWord, HostWord) {
  if (op != KVL_OP_CLOSE) return 1;
  ++closes;
  return static_cast<HostWord>(RASTER_dd_entry32(0, RAXEL_ENTRY_END, nullptr));
}

TEST(DriverEntry, AnOutputThatEndsTheSessionIsClosedOnce) {
  Host host;
  host.settings().lpfnOutputProc = endWhenClosed;
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  ASSERT_NE(lpEMData->hOutFile, 0u);
  closes = 0;
  EXPECT_EQ(host.initialise(), 0);
  EXPECT_EQ(closes, 1);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_INITIALISED);
}

TEST(DriverEntry, TerminationClosesAnOpenDevice) {
  support::TempDir dir;
  Host host(dir.file("open.tif"));
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  EXPECT_EQ(host.terminate(), 0);
  ASSERT_EQ(host.calls.size(), 2u);
  EXPECT_EQ(host.calls[1].values, (std::array<HostWord, 6>{0, 0, 0, 0, 0, 0}));
  EXPECT_TRUE(std::filesystem::exists(dir.file("open.tif")));
  EXPECT_EQ(host.terminate(), 0);
}

TEST(DriverEntry, ASetupDestroyedInTheAnnouncementIs300) {
  Host host;
  host.action = [&host] { host.destroySetup(); };
  EXPECT_EQ(host.initialise(), RAXEL_NO_MEMORY);
  EXPECT_EQ(lpEMData, nullptr);
  EXPECT_EQ(lpSetup, nullptr);
  EXPECT_EQ(host.record_[RAXEL_START_REPLIES], 0u);
}

TEST(DriverEntry, ASessionEndedInItsOwnAnnouncementIs300) {
  Host host;
  host.action = [&host] { host.terminate(); };
  EXPECT_EQ(host.initialise(), RAXEL_NO_MEMORY);
  EXPECT_EQ(lpEMData, nullptr);
}

TEST(DriverEntry, ASessionEndedInTheReportOfTheCloseLeavesNothingToClose) {
  support::TempDir dir;
  Host host(dir.file("ended.tif"));
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  host.action = [&host] {
    host.action = nullptr;
    EXPECT_EQ(host.terminate(), 0);
  };
  EXPECT_EQ(host.send(RAXEL_OP_CLOSE_DEVICE), 0);
  EXPECT_EQ(lpEMData, nullptr);
  EXPECT_EQ(hEMData, 0u);
  EXPECT_TRUE(std::filesystem::exists(dir.file("ended.tif")));
}

TEST(DriverEntry, ANegativeStateDispatchesNothing) {
  Host host;
  host.initialise();
  lpEMData->nState = 0x80000001u;
  lpEMData->nLastError = 9;
  EXPECT_EQ(host.send(RAXEL_OP_OPEN_DEVICE), 0);
  EXPECT_EQ(lpEMData->hOutFile, 0u);
  lpEMData->nState = RAXEL_STATE_INITIALISED;
}

TEST(DriverEntry, LocksAreNoWork) {
  EXPECT_EQ(AllocGlobal(), 0);
  EXPECT_EQ(LockGlobal(3), 0);
  EXPECT_EQ(UnlockGlobal(3), 0);
  EXPECT_EQ(FreeGlobal(), 0);
}

}  // namespace
