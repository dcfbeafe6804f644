// SPDX-License-Identifier: MIT
// The opcode table: which function answers an opcode, and in which states. Searched from the top;
// the first row with the opcode decides, also when its states refuse. The order is not ascending
// everywhere, and opcodes that this driver accepts and ignores stand here with d_noop.
#include "raster/opcode_table.h"

#include "raster/driver_state.h"

namespace raster {
namespace {

constexpr uint32_t kInitialised = RAXEL_STATE_INITIALISED;
constexpr uint32_t kOpen = RAXEL_STATE_OPEN;
constexpr uint32_t kPicture = RAXEL_STATE_PICTURE;
constexpr uint32_t kBody = RAXEL_STATE_BODY;
constexpr uint32_t kEnded = RAXEL_STATE_ENDED;

constexpr uint32_t kAnyOpen = kOpen | kPicture | kBody | kEnded | kOther5 | kOther6;
constexpr uint32_t kEveryState =
    kInitialised | kAnyOpen | kOther7 | kOther8 | kOther9 | kOther10 | kOther11 | kOther15;

// The states of the rows that share them.
constexpr uint32_t kOutput = kBody | kOther5 | kOther8 | kOther15;
constexpr uint32_t kText = kBody | kOther8 | kOther15;
constexpr uint32_t kAttribute = kBody | kOther7 | kOther15;
constexpr uint32_t kTextAttribute = kBody | kOther6 | kOther7 | kOther15;

// An opcode that is accepted and ignored. Nothing is known of it but its number.
constexpr OpcodeRow ignored(uint32_t opcode, uint32_t states) {
  return {opcode, d_noop, kIgnored, states};
}

}  // namespace

// clang-format off
constinit const OpcodeRow kOpcodeTable[kOpcodeRows] = {
    {RAXEL_OP_OPEN_DEVICE,      d_opdv,  kSupported, kInitialised},
    {RAXEL_OP_CLOSE_DEVICE,     d_cldv,  kSupported, kAnyOpen},
    {RAXEL_OP_BEGIN_PICTURE,    d_begp,  kSupported, kOpen | kEnded},
    {RAXEL_OP_BEGIN_BODY,       d_begpb, kSupported, kPicture},
    {RAXEL_OP_END_PICTURE,      d_endp,  kSupported, kBody},
    ignored(8, kBody | kOther15),
    ignored(9, kOther5 | kOther15),
    ignored(778, kOther5 | kOther15),
    ignored(255, kInitialised),
    ignored(269, kOpen),
    ignored(270, kOpen),
    {RAXEL_OP_WINDOW,           ds_dvwn, kSupported, kPicture | kOther7},
    {RAXEL_OP_BACKGROUND,       ds_bgc,  kSupported, kPicture | kOther7},
    {RAXEL_OP_VIEWPORT,         ds_dvvp, kSupported, kPicture},
    {RAXEL_OP_VIEWPORT_MODE,    ds_vpsm, kSupported, kPicture | kOther7},
    {RAXEL_OP_INQUIRE_WINDOW,   dq_dvwn, kSupported, kAnyOpen},
    ignored(766, kPicture | kBody | kOther5 | kOther6),
    {RAXEL_OP_INQUIRE_VIEWPORT, dq_dvvp, kSupported, kAnyOpen},
    {RAXEL_OP_AXC,              ds_axc,  kSupported, kAttribute},
    {RAXEL_OP_TRAN,             ds_tran, kSupported, kAttribute},
    {RAXEL_OP_CLPR,             ds_clpr, kSupported, kAttribute},
    {RAXEL_OP_CLIP,             ds_clip, kSupported, kAttribute},
    ignored(1025, kOutput),
    ignored(1026, kOutput),
    ignored(1027, kText),
    ignored(1028, kText),
    ignored(1029, kText),
    ignored(1030, kBody | kOther6 | kOther8 | kOther15),
    ignored(1031, kOutput),
    {RAXEL_OP_CELL_ARRAY,       d_ca,    kSupported, kBody | kOther15},
    {RAXEL_OP_PRIMITIVE,        d_gdp,   kSupported, kOutput},
    ignored(1035, kOutput),
    ignored(1036, kOutput),
    ignored(1037, kOutput),
    ignored(1038, kOutput),
    ignored(1039, kOutput),
    ignored(1040, kOutput),
    ignored(1041, kOutput),
    ignored(1042, kOutput),
    ignored(1043, kOutput),
    ignored(1282, kAttribute),
    ignored(1283, kAttribute),
    ignored(1284, kAttribute),
    ignored(1286, kAttribute),
    ignored(1287, kAttribute),
    ignored(1288, kAttribute),
    ignored(1290, kTextAttribute),
    ignored(1299, kTextAttribute),
    ignored(1291, kTextAttribute),
    ignored(1292, kTextAttribute),
    ignored(1293, kTextAttribute),
    ignored(1294, kTextAttribute),
    ignored(1295, kTextAttribute),
    ignored(1296, kAttribute),
    ignored(1297, kAttribute),
    ignored(1298, kAttribute),
    ignored(1302, kAttribute),
    ignored(1303, kAttribute),
    ignored(1304, kAttribute),
    ignored(1305, kAttribute),
    ignored(1307, kAttribute),
    ignored(1308, kAttribute),
    ignored(1309, kAttribute),
    ignored(1310, kAttribute),
    ignored(1311, kAttribute),
    ignored(1312, kAttribute),
    ignored(RAXEL_OP_NEVER_SUPPORTED, kAttribute),
    {RAXEL_OP_COLORS,           ds_ct,   kSupported, kAttribute},
    ignored(1537, kEveryState),
    {RAXEL_OP_DM,               ds_dm,   kSupported, kBody | kOther15},
    ignored(3841, kInitialised | kAnyOpen),
    {RAXEL_OP_POP_ERRORS,       d_popes, kSupported, kInitialised | kAnyOpen},
    {RAXEL_OP_EMPTY_ERRORS,     d_empes, kSupported, kInitialised | kAnyOpen},
    ignored(1788, kBody),
};
// clang-format on

const OpcodeRow *findRow(uint32_t opcode) {
  const uint32_t state = lpEMData == nullptr ? 0 : lpEMData->nState;
  for (const OpcodeRow &row : kOpcodeTable) {
    if (row.opcode == opcode) return (row.states & state) != 0 ? &row : nullptr;
  }
  return nullptr;
}

}  // namespace raster

DriverFunction getfunc(uint32_t opcode) {
  const raster::OpcodeRow *row = raster::findRow(opcode);
  return row == nullptr ? d_noop : row->function;
}

HostWord d_noop(HostWord record) {
  return record;
}
