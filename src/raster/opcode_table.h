// SPDX-License-Identifier: MIT
// The opcode table of the driver.
#pragma once

#include <cstdint>

#include "raxel/driver.h"

namespace raster {

// What a row promises a host that inquires. It is not told by the function's address: a linker may give
// functions of equal code the same one.
enum Support : uint8_t {
  kIgnored,  // accepted, and not supported
  kSupported,
};

struct OpcodeRow {
  uint32_t opcode;
  DriverFunction function;
  Support support;
  uint32_t states;  // the states in which the function may run, as State bits
};

constexpr int kOpcodeRows = 74;
extern const OpcodeRow kOpcodeTable[kOpcodeRows];

// The first row with this opcode if it allows the current state; null otherwise.
const OpcodeRow *findRow(uint32_t opcode);

}  // namespace raster
