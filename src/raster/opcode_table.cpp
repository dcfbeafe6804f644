// The opcode table: which function answers an opcode, and in which states. Searched from the top;
// the first row with the opcode decides, also when its states refuse. The order is not ascending
// everywhere, and opcodes that this driver accepts and ignores stand here with d_noop.
#include "raster/opcode_table.h"

#include "raster/driver_state.h"

namespace raster {
namespace {

constexpr uint32_t kAnyOpen = kOpen | kPicture | kBody | kEnded | kOther5 | kOther6;
constexpr uint32_t kEveryState =
    kInitialised | kAnyOpen | kOther7 | kOther8 | kOther9 | kOther10 | kOther11 | kOther15;

// The states of the rows that share them.
constexpr uint32_t kOutput = kBody | kOther5 | kOther8 | kOther15;
constexpr uint32_t kText = kBody | kOther8 | kOther15;
constexpr uint32_t kAttribute = kBody | kOther7 | kOther15;
constexpr uint32_t kTextAttribute = kBody | kOther6 | kOther7 | kOther15;

}  // namespace

// clang-format off
const OpcodeRow kOpcodeTable[kOpcodeRows] = {
    {   1, d_opdv,   kSupported, kInitialised},
    {   2, d_cldv,   kSupported, kAnyOpen},
    {   3, d_begp,   kSupported, kOpen | kEnded},
    {   4, d_begpb,  kSupported, kPicture},
    {   5, d_endp,   kSupported, kBody},
    {   8, d_noop,   kIgnored,   kBody | kOther15},
    {   9, d_noop,   kIgnored,   kOther5 | kOther15},
    { 778, d_noop,   kIgnored,   kOther5 | kOther15},
    { 255, d_noop,   kIgnored,   kInitialised},
    { 269, d_noop,   kIgnored,   kOpen},
    { 270, d_noop,   kIgnored,   kOpen},
    { 518, ds_dvwn,  kSupported, kPicture | kOther7},
    { 519, ds_bgc,   kSupported, kPicture | kOther7},
    { 520, ds_dvvp,  kSupported, kPicture},
    { 521, ds_vpsm,  kSupported, kPicture | kOther7},
    { 767, dq_dvwn,  kSupported, kAnyOpen},
    { 766, d_noop,   kIgnored,   kPicture | kBody | kOther5 | kOther6},
    { 765, dq_dvvp,  kSupported, kAnyOpen},
    { 771, ds_axc,   kSupported, kAttribute},
    { 772, ds_tran,  kSupported, kAttribute},
    { 773, ds_clpr,  kSupported, kAttribute},
    { 774, ds_clip,  kSupported, kAttribute},
    {1025, d_noop,   kIgnored,   kOutput},
    {1026, d_noop,   kIgnored,   kOutput},
    {1027, d_noop,   kIgnored,   kText},
    {1028, d_noop,   kIgnored,   kText},
    {1029, d_noop,   kIgnored,   kText},
    {1030, d_noop,   kIgnored,   kBody | kOther6 | kOther8 | kOther15},
    {1031, d_noop,   kIgnored,   kOutput},
    {1033, d_ca,     kSupported, kBody | kOther15},
    {1034, d_gdp,    kSupported, kOutput},
    {1035, d_noop,   kIgnored,   kOutput},
    {1036, d_noop,   kIgnored,   kOutput},
    {1037, d_noop,   kIgnored,   kOutput},
    {1038, d_noop,   kIgnored,   kOutput},
    {1039, d_noop,   kIgnored,   kOutput},
    {1040, d_noop,   kIgnored,   kOutput},
    {1041, d_noop,   kIgnored,   kOutput},
    {1042, d_noop,   kIgnored,   kOutput},
    {1043, d_noop,   kIgnored,   kOutput},
    {1282, d_noop,   kIgnored,   kAttribute},
    {1283, d_noop,   kIgnored,   kAttribute},
    {1284, d_noop,   kIgnored,   kAttribute},
    {1286, d_noop,   kIgnored,   kAttribute},
    {1287, d_noop,   kIgnored,   kAttribute},
    {1288, d_noop,   kIgnored,   kAttribute},
    {1290, d_noop,   kIgnored,   kTextAttribute},
    {1299, d_noop,   kIgnored,   kTextAttribute},
    {1291, d_noop,   kIgnored,   kTextAttribute},
    {1292, d_noop,   kIgnored,   kTextAttribute},
    {1293, d_noop,   kIgnored,   kTextAttribute},
    {1294, d_noop,   kIgnored,   kTextAttribute},
    {1295, d_noop,   kIgnored,   kTextAttribute},
    {1296, d_noop,   kIgnored,   kAttribute},
    {1297, d_noop,   kIgnored,   kAttribute},
    {1298, d_noop,   kIgnored,   kAttribute},
    {1302, d_noop,   kIgnored,   kAttribute},
    {1303, d_noop,   kIgnored,   kAttribute},
    {1304, d_noop,   kIgnored,   kAttribute},
    {1305, d_noop,   kIgnored,   kAttribute},
    {1307, d_noop,   kIgnored,   kAttribute},
    {1308, d_noop,   kIgnored,   kAttribute},
    {1309, d_noop,   kIgnored,   kAttribute},
    {1310, d_noop,   kIgnored,   kAttribute},
    {1311, d_noop,   kIgnored,   kAttribute},
    {1312, d_noop,   kIgnored,   kAttribute},
    {1323, d_noop,   kIgnored,   kAttribute},
    {1314, ds_ct,    kSupported, kAttribute},
    {1537, d_noop,   kIgnored,   kEveryState},
    {2310, ds_dm,    kSupported, kBody | kOther15},
    {3841, d_noop,   kIgnored,   kInitialised | kAnyOpen},
    {3842, d_popes,  kSupported, kInitialised | kAnyOpen},
    {3843, d_empes,  kSupported, kInitialised | kAnyOpen},
    {1788, d_noop,   kIgnored,   kBody},
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
