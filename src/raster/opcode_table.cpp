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
    {   1, d_opdv,   kInitialised},
    {   2, d_cldv,   kAnyOpen},
    {   3, d_begp,   kOpen | kEnded},
    {   4, d_begpb,  kPicture},
    {   5, d_endp,   kBody},
    {   8, d_noop,   kBody | kOther15},
    {   9, d_noop,   kOther5 | kOther15},
    { 778, d_noop,   kOther5 | kOther15},
    { 255, d_noop,   kInitialised},
    { 269, d_noop,   kOpen},
    { 270, d_noop,   kOpen},
    { 518, ds_dvwn,  kPicture | kOther7},
    { 519, ds_bgc,   kPicture | kOther7},
    { 520, ds_dvvp,  kPicture},
    { 521, ds_vpsm,  kPicture | kOther7},
    { 767, dq_dvwn,  kAnyOpen},
    { 766, d_noop,   kPicture | kBody | kOther5 | kOther6},
    { 765, dq_dvvp,  kAnyOpen},
    { 771, ds_axc,   kAttribute},
    { 772, ds_tran,  kAttribute},
    { 773, ds_clpr,  kAttribute},
    { 774, ds_clip,  kAttribute},
    {1025, d_noop,   kOutput},
    {1026, d_noop,   kOutput},
    {1027, d_noop,   kText},
    {1028, d_noop,   kText},
    {1029, d_noop,   kText},
    {1030, d_noop,   kBody | kOther6 | kOther8 | kOther15},
    {1031, d_noop,   kOutput},
    {1033, d_ca,     kBody | kOther15},
    {1034, d_gdp,    kOutput},
    {1035, d_noop,   kOutput},
    {1036, d_noop,   kOutput},
    {1037, d_noop,   kOutput},
    {1038, d_noop,   kOutput},
    {1039, d_noop,   kOutput},
    {1040, d_noop,   kOutput},
    {1041, d_noop,   kOutput},
    {1042, d_noop,   kOutput},
    {1043, d_noop,   kOutput},
    {1282, d_noop,   kAttribute},
    {1283, d_noop,   kAttribute},
    {1284, d_noop,   kAttribute},
    {1286, d_noop,   kAttribute},
    {1287, d_noop,   kAttribute},
    {1288, d_noop,   kAttribute},
    {1290, d_noop,   kTextAttribute},
    {1299, d_noop,   kTextAttribute},
    {1291, d_noop,   kTextAttribute},
    {1292, d_noop,   kTextAttribute},
    {1293, d_noop,   kTextAttribute},
    {1294, d_noop,   kTextAttribute},
    {1295, d_noop,   kTextAttribute},
    {1296, d_noop,   kAttribute},
    {1297, d_noop,   kAttribute},
    {1298, d_noop,   kAttribute},
    {1302, d_noop,   kAttribute},
    {1303, d_noop,   kAttribute},
    {1304, d_noop,   kAttribute},
    {1305, d_noop,   kAttribute},
    {1307, d_noop,   kAttribute},
    {1308, d_noop,   kAttribute},
    {1309, d_noop,   kAttribute},
    {1310, d_noop,   kAttribute},
    {1311, d_noop,   kAttribute},
    {1312, d_noop,   kAttribute},
    {1323, d_noop,   kAttribute},
    {1314, ds_ct,    kAttribute},
    {1537, d_noop,   kEveryState},
    {2310, ds_dm,    kBody | kOther15},
    {3841, d_noop,   kInitialised | kAnyOpen},
    {3842, d_popes,  kInitialised | kAnyOpen},
    {3843, d_empes,  kInitialised | kAnyOpen},
    {1788, d_noop,   kBody},
};
// clang-format on

}  // namespace raster

DriverFunction getfunc(uint32_t opcode) {
  const uint32_t state = lpEMData == nullptr ? 0 : lpEMData->nState;
  for (const raster::OpcodeRow &row : raster::kOpcodeTable) {
    if (row.opcode == opcode) return (row.states & state) != 0 ? row.function : d_noop;
  }
  return d_noop;
}

HostWord d_noop(HostWord record) {
  return record;
}
