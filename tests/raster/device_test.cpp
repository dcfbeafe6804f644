// SPDX-License-Identifier: MIT
// Device open and close, and the picture's state.
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <utility>

#include "raster/session.h"
#include "support/temp_dir.h"

namespace {

using raster_test::Host;

std::vector<double> repliesFrom(uint32_t position) {
  std::vector<double> values(6);
  std::memcpy(values.data(), lpEMData->lpReplyBuf + position, 48);
  return values;
}

TEST(Device, OpensByNameAndClosesBackToInitialised) {
  support::TempDir dir;
  Host host(dir.file("a.tif"));
  host.initialise();
  EXPECT_EQ(host.send(RAXEL_OP_OPEN_DEVICE), 0);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_OPEN);
  EXPECT_NE(lpEMData->hOutFile, 0u);
  EXPECT_EQ(host.send(RAXEL_OP_OPEN_DEVICE), 0) << "an open device ignores a second open";
  EXPECT_EQ(host.send(RAXEL_OP_CLOSE_DEVICE), 0);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_INITIALISED);
  EXPECT_EQ(lpEMData->hOutFile, 0u);
  EXPECT_EQ(host.send(RAXEL_OP_CLOSE_DEVICE), 0) << "a closed device ignores a close";
}

TEST(Device, AnUnopenableNameIsError303ButTheDeviceCountsAsOpen) {
  Host host("/nonexistent-folder/a.tif");
  host.initialise();
  EXPECT_EQ(host.send(RAXEL_OP_OPEN_DEVICE), RAXEL_CANNOT_WRITE);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_OPEN);
  EXPECT_EQ(host.send(RAXEL_OP_CLOSE_DEVICE), RAXEL_CANNOT_WRITE) << "there is nothing to close";
}

TEST(Device, OpeningEmptiesTheErrorStack) {
  support::TempDir dir;
  Host host(dir.file("a.tif"));
  host.initialise();
  lpEMData->nErrMax = 5;
  push_er(RAXEL_NO_MEMORY);
  host.send(RAXEL_OP_OPEN_DEVICE);
  EXPECT_EQ(lpEMData->nErrCount, 0u);
}

TEST(Device, AStopAtCloseDeletesTheFile) {
  support::TempDir dir;
  Host host(dir.file("gone.tif"));
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  EXPECT_TRUE(std::filesystem::exists(dir.file("gone.tif")));
  host.refuseFrom = host.calls.size() + 1;
  EXPECT_EQ(host.send(RAXEL_OP_CLOSE_DEVICE), RAXEL_STOPPED);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_INITIALISED);
  EXPECT_FALSE(std::filesystem::exists(dir.file("gone.tif")));
  // The plain report was refused, so the host was asked again.
  ASSERT_GE(host.calls.size(), 3u);
  EXPECT_EQ(host.calls.back().values[0], 2u);
  EXPECT_EQ(host.calls.back().values[1], 61u);
}

TEST(Device, AStopTakenBackInTheFollowUpKeepsTheFile) {
  support::TempDir dir;
  Host host(dir.file("kept.tif"));
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  host.refuseFrom = host.calls.size() + 1;
  host.action = [&host] {
    if (host.calls.back().values[0] == 2) host.refuseFrom = 0;
  };
  const size_t before = host.calls.size();
  EXPECT_EQ(host.send(RAXEL_OP_CLOSE_DEVICE), 0);
  EXPECT_EQ(host.calls.size(), before + 2) << "asked once more, and then 0";
  EXPECT_EQ(lpEMData->nLastError, 0);
  EXPECT_TRUE(std::filesystem::exists(dir.file("kept.tif")));
}

TEST(Device, MemoryOutputStaysWithTheDriver) {
  Host host;
  host.initialise();
  EXPECT_EQ(host.send(RAXEL_OP_OPEN_DEVICE), 0);
  EXPECT_EQ(WriteLong(lpEMData->hOutFile, 0x04030201), 4);
  EXPECT_EQ(host.send(RAXEL_OP_CLOSE_DEVICE), 0);
  EXPECT_EQ(host.send(RAXEL_OP_OPEN_DEVICE), 0) << "and again, with a fresh block";
  EXPECT_EQ(host.send(RAXEL_OP_CLOSE_DEVICE), 0);
}

struct ProcedureLog {
  std::vector<std::array<HostWord, 3>> calls;
};

HostWord logProcedure(HostWord context, HostWord op, HostWord, HostWord arg2) {
  auto *log = reinterpret_cast<ProcedureLog *>(context);
  log->calls.push_back({context, op, op == KVL_OP_OPEN || op == KVL_OP_CLOSE ? arg2 : 0});
  return op == KVL_OP_OPEN ? context : arg2;  // the token is the log again
}

TEST(Device, AHostProcedureReceivesWordTwelveAsItsContext) {
  ProcedureLog log;
  Host host("through-procedure");
  host.settings().lpfnOutputProc = logProcedure;
  host.status_[RAXEL_STATUS_PROC_CONTEXT] = reinterpret_cast<HostWord>(&log);
  host.initialise();
  EXPECT_EQ(host.send(RAXEL_OP_OPEN_DEVICE), 0);
  EXPECT_EQ(host.send(RAXEL_OP_CLOSE_DEVICE), 0);
  ASSERT_EQ(log.calls.size(), 2u);
  EXPECT_EQ(log.calls[0][1], 1u);
  EXPECT_EQ(log.calls[0][2], 4097u);
  EXPECT_EQ(log.calls[1][1], 5u);
  EXPECT_EQ(log.calls[1][2], 0u);
  host.send(RAXEL_OP_OPEN_DEVICE);
  host.refuseFrom = host.calls.size() + 1;
  host.send(RAXEL_OP_CLOSE_DEVICE);
  EXPECT_EQ(log.calls.back()[2], 512u) << "a stop closes and deletes";
}

HostWord refuseProcedure(HostWord, HostWord, HostWord, HostWord) {
  return 0;
}

TEST(Device, AFailureOfTheProcedureIsNotReported) {
  Host host;
  host.settings().lpfnOutputProc = refuseProcedure;
  host.initialise();
  EXPECT_EQ(host.send(RAXEL_OP_OPEN_DEVICE), 0);
  EXPECT_EQ(lpEMData->hOutFile, 0u);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_OPEN);
}

TEST(Device, PicturesFollowEachOther) {
  support::TempDir dir;
  Host host(dir.file("a.tif"));
  host.initialise();
  host.send(RAXEL_OP_OPEN_DEVICE);
  const uint32_t states[] = {RAXEL_STATE_PICTURE, RAXEL_STATE_BODY, RAXEL_STATE_ENDED,
                             RAXEL_STATE_PICTURE, RAXEL_STATE_BODY, RAXEL_STATE_ENDED};
  const uint32_t opcodes[] = {RAXEL_OP_BEGIN_PICTURE, RAXEL_OP_BEGIN_BODY, RAXEL_OP_END_PICTURE,
                              RAXEL_OP_BEGIN_PICTURE, RAXEL_OP_BEGIN_BODY, RAXEL_OP_END_PICTURE};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(host.send(opcodes[i]), 0);
    EXPECT_EQ(lpEMData->nState, states[i]);
  }
  host.send(RAXEL_OP_BEGIN_BODY);
  EXPECT_EQ(lpEMData->nState, RAXEL_STATE_ENDED) << "no body without a picture";
}

class Picture : public testing::Test {
 protected:
  Picture() : host(dir.file("p.tif")) {
    host.initialise();
    host.send(RAXEL_OP_OPEN_DEVICE);
    host.send(RAXEL_OP_BEGIN_PICTURE);
  }
  support::TempDir dir;
  Host host;
};

TEST_F(Picture, WindowAndViewportReplies) {
  auto record = Host::recordOf(RAXEL_OP_WINDOW, 64);
  for (int i = 0; i < 6; ++i) Host::put(record, 16 + 8 * static_cast<size_t>(i), 1.5 + i);
  host.send(record);
  EXPECT_EQ(host.send(RAXEL_OP_INQUIRE_WINDOW), 0);
  EXPECT_EQ(repliesFrom(0), (std::vector<double>{1.5, 2.5, 3.5, 4.5, 5.5, 6.5}));
  auto viewport = Host::recordOf(RAXEL_OP_VIEWPORT, 64);
  for (int i = 0; i < 6; ++i) Host::put(viewport, 16 + 8 * static_cast<size_t>(i), 1.0 + i);
  host.send(viewport);
  EXPECT_EQ(lpEMData->DevViewport[2], 0.0);
  EXPECT_EQ(lpEMData->DevViewport[5], 0.0);
  EXPECT_EQ(host.send(RAXEL_OP_INQUIRE_VIEWPORT), 0);
  EXPECT_EQ(repliesFrom(48), (std::vector<double>{1, 5, 0, 2, 4, 0}));
  EXPECT_EQ(lpEMData->nReplyPos, 96u);
}

TEST_F(Picture, BackgroundTakesThreeBytes) {
  auto record = Host::recordOf(RAXEL_OP_BACKGROUND, 64);
  record[16] = 10;
  record[17] = 20;
  record[18] = 30;
  host.send(record);
  EXPECT_EQ(lpEMData->BkColor[0], 10);
  EXPECT_EQ(lpEMData->BkColor[1], 20);
  EXPECT_EQ(lpEMData->BkColor[2], 30);
}

TEST_F(Picture, MetricModeGivesDotsPerInch) {
  EXPECT_EQ(host.setResolution(0.254), 0);
  EXPECT_EQ(lpEMData->nResolution, 100u);
  host.setResolution(0.0);
  EXPECT_EQ(lpEMData->nResolution, 0u);
  host.setResolution(0.254);
  auto mode = Host::recordOf(RAXEL_OP_VIEWPORT_MODE, 64);
  Host::put<int16_t>(mode, 16, 3);
  host.send(mode);
  EXPECT_EQ(lpEMData->nResolution, 100u) << "modes outside 0..2 are ignored";
  Host::put<int16_t>(mode, 16, -1);
  host.send(mode);
  EXPECT_EQ(lpEMData->nResolution, 100u);
  Host::put<int16_t>(mode, 16, 2);
  Host::put(mode, 24, 0.254);
  host.send(mode);
  EXPECT_EQ(lpEMData->nResolution, 0u) << "only mode 1 is metric";
}

TEST_F(Picture, StrangeScalesGiveDefinedResolutions) {
  host.setResolution(-0.254);
  EXPECT_EQ(lpEMData->nResolution, static_cast<uint32_t>(-99));
  host.setResolution(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(lpEMData->nResolution, 0u);
  host.setResolution(1e-300);
  EXPECT_EQ(lpEMData->nResolution, 0xFFFFFFFFu) << "the low half of the largest 64-bit number";
  host.setResolution(std::numeric_limits<double>::infinity());
  EXPECT_EQ(lpEMData->nResolution, 0u);
}

TEST_F(Picture, AStateWithItsOwnViewportKeepsTheMode) {
  host.setResolution(0.254);
  lpEMData->nState = RAXEL_STATE_PICTURE | 128;
  host.setResolution(0.0);
  EXPECT_EQ(lpEMData->nResolution, 100u);
  lpEMData->nState = RAXEL_STATE_PICTURE;
}

TEST_F(Picture, ColorsPastTheTableAreDropped) {
  host.send(RAXEL_OP_BEGIN_BODY);
  std::vector<uint8_t> rgb(30);
  for (size_t i = 0; i < rgb.size(); ++i) rgb[i] = static_cast<uint8_t>(100 + i);
  host.setColors(250, rgb);
  for (size_t i = 0; i < 18; ++i) EXPECT_EQ(lpEMData->ColorTable[250 + i / 3][i % 3], 100 + i);
  EXPECT_EQ(lpEMData->ColorTable[249][0], 0);
  EXPECT_EQ(lpEMData->BkColor[0], 0) << "nothing is stored past the table";
  host.setColors(256, rgb);
  host.setColors(0xFFFFFFFFu, rgb);
  EXPECT_EQ(lpEMData->ColorTable[0][0], 0);
}

TEST_F(Picture, ColorsAreTreatedInTheHostsRecord) {
  lpEMData->nColorOp = RAXEL_TREAT_INVERT;
  host.send(RAXEL_OP_BEGIN_BODY);
  auto record = Host::recordOf(RAXEL_OP_COLORS, 20);
  Host::put<uint32_t>(record, 4, 3 + 2);
  Host::put<uint32_t>(record, 16, 7);
  record.insert(record.end(), {1, 2, 3, 99});
  host.sendKept(record);
  EXPECT_EQ(record[20], 254);
  EXPECT_EQ(record[22], 252);
  EXPECT_EQ(record[23], 99);
  EXPECT_EQ(lpEMData->ColorTable[7][1], 253);
}

TEST_F(Picture, AColorRecordTooShortForOneColorLoadsNone) {
  host.send(RAXEL_OP_BEGIN_BODY);
  for (uint32_t length : {0u, 1u, 2u, 4u}) {
    auto record = Host::recordOf(RAXEL_OP_COLORS, 40);
    Host::put<uint32_t>(record, 4, length);
    record[20] = 77;
    host.send(record);
    EXPECT_EQ(lpEMData->ColorTable[0][0], 0) << length;
  }
}

TEST_F(Picture, SettersOutsideTheirStatesDoNothing) {
  host.send(RAXEL_OP_BEGIN_BODY);  // body: the window can no longer be set
  host.setWindow(1, 2, 3, 4);
  EXPECT_EQ(lpEMData->DevWindow[0], 0.0);
  host.setResolution(0.254);
  EXPECT_EQ(lpEMData->nResolution, 0u);
  host.send(RAXEL_OP_END_PICTURE);
  host.setColors(0, {1, 2, 3});
  EXPECT_EQ(lpEMData->ColorTable[0][0], 0) << "colours only in the body";
}

TEST_F(Picture, AcceptedOpcodesHaveNoEffect) {
  host.send(RAXEL_OP_BEGIN_BODY);
  const RasterDriverState before = *lpEMData;
  for (uint32_t opcode :
       std::initializer_list<uint32_t>{RAXEL_OP_AXC, RAXEL_OP_TRAN, RAXEL_OP_CLPR, RAXEL_OP_CLIP,
                                       RAXEL_OP_DM, 8, 1035, 1299, 1312, RAXEL_OP_NEVER_SUPPORTED}) {
    EXPECT_EQ(host.send(opcode), 0) << opcode;
  }
  EXPECT_EQ(std::memcmp(&before, lpEMData, sizeof before), 0);
  EXPECT_EQ(d_reset(5, 4), 5u);
  EXPECT_EQ(ds_fl(6), 6u);
}

TEST_F(Picture, FunctionsWithoutARecordDoNothing) {
  const RasterDriverState before = *lpEMData;
  for (DriverFunction f : {ds_dvwn, ds_bgc, ds_dvvp, ds_vpsm, ds_ct, d_gdp, d_ca, d_popes})
    EXPECT_EQ(f(0), 0u);
  EXPECT_EQ(std::memcmp(&before, lpEMData, sizeof before), 0);
}

TEST(DeviceAlone, FunctionsWithoutAStateBlockDoNothing) {
  lpEMData = nullptr;
  uint8_t record[256] = {};
  const auto word = reinterpret_cast<HostWord>(record);
  for (DriverFunction f :
       {d_opdv, d_cldv, d_begp, d_begpb, d_endp, ds_dvwn, ds_bgc, ds_dvvp, ds_vpsm, dq_dvwn, dq_dvvp,
        ds_axc, ds_tran, ds_clpr, ds_clip, ds_ct, ds_dm, d_gdp, d_ca}) {
    EXPECT_EQ(f(word), word);
  }
  EXPECT_EQ(RASTER_escape(), 0);
}

TEST(DefaultAttributes, AreZeroAsDeliveredAndTheHostsToFill) {
  for (uint8_t *table : {ln_def, tx_def, mk_def, fl_def, eg_def, dtr_def}) {
    for (int i = 0; i < 64; ++i) EXPECT_EQ(std::exchange(table[i], uint8_t{0}), 0);
  }
}

}  // namespace
