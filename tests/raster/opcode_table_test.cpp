// SPDX-License-Identifier: MIT
// The opcode table against a second, independently typed copy, and the guard of the states.
#include "raster/opcode_table.h"

#include <gtest/gtest.h>

#include <map>

#include "raxel/driver.h"

namespace {

struct Expected {
  uint32_t opcode;
  DriverFunction function;
  uint32_t mask;
};

const Expected kExpected[] = {
    {1, d_opdv, 0x1},       {2, d_cldv, 0x7e},      {3, d_begp, 0x12},      {4, d_begpb, 0x4},
    {5, d_endp, 0x8},       {8, d_noop, 0x8008},    {9, d_noop, 0x8020},    {778, d_noop, 0x8020},
    {255, d_noop, 0x1},     {269, d_noop, 0x2},     {270, d_noop, 0x2},     {518, ds_dvwn, 0x84},
    {519, ds_bgc, 0x84},    {520, ds_dvvp, 0x4},    {521, ds_vpsm, 0x84},   {767, dq_dvwn, 0x7e},
    {766, d_noop, 0x6c},    {765, dq_dvvp, 0x7e},   {771, ds_axc, 0x8088},  {772, ds_tran, 0x8088},
    {773, ds_clpr, 0x8088}, {774, ds_clip, 0x8088}, {1025, d_noop, 0x8128}, {1026, d_noop, 0x8128},
    {1027, d_noop, 0x8108}, {1028, d_noop, 0x8108}, {1029, d_noop, 0x8108}, {1030, d_noop, 0x8148},
    {1031, d_noop, 0x8128}, {1033, d_ca, 0x8008},   {1034, d_gdp, 0x8128},  {1035, d_noop, 0x8128},
    {1036, d_noop, 0x8128}, {1037, d_noop, 0x8128}, {1038, d_noop, 0x8128}, {1039, d_noop, 0x8128},
    {1040, d_noop, 0x8128}, {1041, d_noop, 0x8128}, {1042, d_noop, 0x8128}, {1043, d_noop, 0x8128},
    {1282, d_noop, 0x8088}, {1283, d_noop, 0x8088}, {1284, d_noop, 0x8088}, {1286, d_noop, 0x8088},
    {1287, d_noop, 0x8088}, {1288, d_noop, 0x8088}, {1290, d_noop, 0x80c8}, {1299, d_noop, 0x80c8},
    {1291, d_noop, 0x80c8}, {1292, d_noop, 0x80c8}, {1293, d_noop, 0x80c8}, {1294, d_noop, 0x80c8},
    {1295, d_noop, 0x80c8}, {1296, d_noop, 0x8088}, {1297, d_noop, 0x8088}, {1298, d_noop, 0x8088},
    {1302, d_noop, 0x8088}, {1303, d_noop, 0x8088}, {1304, d_noop, 0x8088}, {1305, d_noop, 0x8088},
    {1307, d_noop, 0x8088}, {1308, d_noop, 0x8088}, {1309, d_noop, 0x8088}, {1310, d_noop, 0x8088},
    {1311, d_noop, 0x8088}, {1312, d_noop, 0x8088}, {1323, d_noop, 0x8088}, {1314, ds_ct, 0x8088},
    {1537, d_noop, 0x8fff}, {2310, ds_dm, 0x8008},  {3841, d_noop, 0x7f},   {3842, d_popes, 0x7f},
    {3843, d_empes, 0x7f},  {1788, d_noop, 0x8},
};

constexpr uint32_t kIgnored = 1299, kIgnoredInBody = 1312;  // two that nobody needs

class Dispatch : public testing::Test {
 protected:
  Dispatch() { lpEMData = &state_; }
  ~Dispatch() override { lpEMData = nullptr; }
  RasterDriverState state_ = {};
};

TEST(OpcodeTable, HoldsItsSeventyFourRowsInOrder) {
  ASSERT_EQ(std::size(kExpected), 74u);
  ASSERT_EQ(raster::kOpcodeRows, 74);
  for (size_t i = 0; i < std::size(kExpected); ++i) {
    EXPECT_EQ(raster::kOpcodeTable[i].opcode, kExpected[i].opcode) << "row " << i + 1;
    EXPECT_EQ(raster::kOpcodeTable[i].function, kExpected[i].function) << "row " << i + 1;
    EXPECT_EQ(raster::kOpcodeTable[i].states, kExpected[i].mask) << "row " << i + 1;
    const auto support = kExpected[i].function == d_noop ? raster::kIgnored : raster::kSupported;
    EXPECT_EQ(raster::kOpcodeTable[i].support, support) << "row " << i + 1;
  }
}

TEST_F(Dispatch, EveryOpcodeAnswersInItsStatesAlone) {
  std::map<uint32_t, Expected> rows;
  for (const Expected &row : kExpected) rows.emplace(row.opcode, row);
  for (uint32_t bit = 0; bit < 32; ++bit) {
    state_.nState = uint32_t{1} << bit;
    for (uint32_t opcode = 0; opcode < 5000; ++opcode) {
      const auto row = rows.find(opcode);
      const bool allowed = row != rows.end() && (row->second.mask & state_.nState) != 0;
      ASSERT_EQ(getfunc(opcode), allowed ? row->second.function : d_noop)
          << opcode << " in " << state_.nState;
    }
  }
}

TEST_F(Dispatch, OpcodesAreComparedInFull) {
  state_.nState = RAXEL_STATE_INITIALISED;
  EXPECT_EQ(getfunc(0x10000 + RAXEL_OP_OPEN_DEVICE), d_noop);
  EXPECT_EQ(getfunc(RAXEL_OP_OPEN_DEVICE), d_opdv);
}

TEST(DispatchAlone, WithoutAStateBlockEveryFunctionIsIgnored) {
  lpEMData = nullptr;
  EXPECT_EQ(getfunc(RAXEL_OP_OPEN_DEVICE), d_noop);
  EXPECT_EQ(getfunc(RAXEL_OP_EMPTY_ERRORS), d_noop);
  EXPECT_EQ(d_noop(0x1234), 0x1234u);
}

TEST_F(Dispatch, SupportDependsOnTheStateAtTheTimeOfAsking) {
  state_.nState = RAXEL_STATE_INITIALISED;
  EXPECT_EQ(InquireSupport(RAXEL_OP_OPEN_DEVICE, 0), RAXEL_SUPPORT_FULL);
  state_.nState = RAXEL_STATE_OPEN;
  EXPECT_EQ(InquireSupport(RAXEL_OP_OPEN_DEVICE, 0), RAXEL_SUPPORT_NONE);
  EXPECT_EQ(InquireSupport(RAXEL_OP_CLOSE_DEVICE, 0), RAXEL_SUPPORT_FULL);
  EXPECT_EQ(InquireSupport(kIgnored, 0), RAXEL_SUPPORT_NONE) << "accepted and ignored is not supported";
  state_.nState = RAXEL_STATE_BODY;
  // Functions that take their record and do nothing with it are functions all the same.
  for (const uint32_t opcode : {RAXEL_OP_AXC, RAXEL_OP_TRAN, RAXEL_OP_CLPR, RAXEL_OP_CLIP, RAXEL_OP_DM})
    EXPECT_EQ(InquireSupport(opcode, 0), RAXEL_SUPPORT_FULL);
  EXPECT_EQ(InquireSupport(kIgnoredInBody, 0), RAXEL_SUPPORT_NONE);
  EXPECT_EQ(InquireSupport(RAXEL_OP_PRIMITIVE, RAXEL_PRIMITIVE_BEGIN_RASTER), RAXEL_SUPPORT_NONE);
  EXPECT_EQ(InquireSupport(RAXEL_OP_PRIMITIVE, RAXEL_PRIMITIVE_END_RASTER), RAXEL_SUPPORT_NONE);
  EXPECT_EQ(InquireSupport(RAXEL_OP_NEVER_SUPPORTED, 0), RAXEL_SUPPORT_NONE);
  EXPECT_EQ(InquireSupport(0x50000 + RAXEL_OP_CELL_ARRAY, 0), RAXEL_SUPPORT_FULL)
      << "the low 16 bits are the opcode";
  EXPECT_EQ(InquireSupport(0xFFFF, 0), RAXEL_SUPPORT_NONE);
}

TEST(Primitives, AreAllReportedUnsupported) {
  for (const int32_t word : GDPSupport) EXPECT_EQ(word, 0);
  for (int32_t id = -10; id <= 10; ++id) EXPECT_EQ(InqGDPSupport(id), 0);
  EXPECT_EQ(InqGDPSupport(INT32_MIN), 0);
}

TEST(Primitives, AreReportedAsTheTableSays) {
  for (int32_t id = 1; id <= 7; ++id) GDPSupport[id] = 100 + id;
  for (int32_t id = 1; id <= 7; ++id) EXPECT_EQ(InqGDPSupport(-id), 100 + id);
  EXPECT_EQ(InqGDPSupport(-8), 0);
  EXPECT_EQ(InqGDPSupport(0), 0);
  for (int32_t &word : GDPSupport) word = 0;
}

TEST(Primitives, AreReportedAsAHostStoresThem) {
  GDPSupport[5] = -9;
  EXPECT_EQ(InqGDPSupport(RAXEL_PRIMITIVE_BEGIN_RASTER), -9);
  EXPECT_EQ(InquireSupport(RAXEL_OP_PRIMITIVE, RAXEL_PRIMITIVE_BEGIN_RASTER), -9);
  EXPECT_EQ(InqGDPSupport(RAXEL_PRIMITIVE_END_RASTER), 0);
  GDPSupport[5] = 0;
}

}  // namespace
