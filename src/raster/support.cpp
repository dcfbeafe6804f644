// SPDX-License-Identifier: MIT
// What the driver says it can do: the capability array and the inquiries.
#include "raster/support.h"

#include "raster/driver_state.h"
#include "raster/opcode_table.h"

// As delivered every drawing primitive is reported unsupported, even the two that the driver carries out.
int32_t GDPSupport[8] = {};

namespace raster {
namespace {

struct Capability {
  uint8_t index;
  int32_t value;
};

// clang-format off
constexpr Capability kCapabilities[] = {
    { 0, 100}, { 1, -1}, { 2, -1}, { 3, -1}, { 4, -1}, { 5,  0},
    { 9,  -1}, {10, -1}, {11, -1}, {12, -1}, {13, -1}, {14, -1}, {15, -1}, {16, -1}, {17, -1}, {18, -1},
    {19,   0}, {20,  0}, {21,  0}, {22,  0},
    {23,  -1}, {24, -1}, {25, -1}, {26, -1}, {27, -1}, {28, -1}, {29, -1},
    {31,   0}, {32, -1}, {33, -1}, {34,  0}, {35,  0}, {36, -1}, {37, -1}, {38,  1}, {39,  1},
    {40,   0}, {41, -1}, {44,  0}, {45, -1},
    {55,   0}, {56,  0}, {57, -1}, {58,  0}, {59, -1},
    {47,   0},
};
// clang-format on
static_assert(sizeof kCapabilities / sizeof kCapabilities[0] == 46);

constexpr int kColorTreatmentIndex = 47;

}  // namespace

void writeCapabilities(uint32_t *array, uint32_t colorTreatment) {
  if (array == nullptr) return;
  for (const Capability &row : kCapabilities) array[row.index] = static_cast<uint32_t>(row.value);
  array[kColorTreatmentIndex] = colorTreatment;
}

}  // namespace raster

// Tells what can be done in the state at the time of asking. The opcode is a 16-bit number.
int32_t InquireSupport(uint32_t opcode, int32_t argument) {
  const auto asked = static_cast<int16_t>(opcode);
  if (asked == RAXEL_OP_PRIMITIVE) return InqGDPSupport(argument);
  if (asked == RAXEL_OP_NEVER_SUPPORTED) return RAXEL_SUPPORT_NONE;
  const raster::OpcodeRow *row = raster::findRow(static_cast<uint32_t>(int32_t{asked}));
  return row != nullptr && row->support == raster::kSupported ? RAXEL_SUPPORT_FULL : RAXEL_SUPPORT_NONE;
}

int32_t InqGDPSupport(int32_t primitive) {
  return primitive >= -7 && primitive <= -1 ? GDPSupport[-primitive] : 0;
}
