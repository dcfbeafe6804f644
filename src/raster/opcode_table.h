// The opcode table of the driver.
#pragma once

#include <cstdint>

#include "raxel/driver.h"

namespace raster {

struct OpcodeRow {
  uint32_t opcode;
  DriverFunction function;
  uint32_t states;  // the states in which the function may run, as State bits
};

constexpr int kOpcodeRows = 74;
extern const OpcodeRow kOpcodeTable[kOpcodeRows];

}  // namespace raster
