// SPDX-License-Identifier: MIT
// The driver's states and the life of its state block.
#pragma once

#include <cstdint>

#include "raxel/driver.h"

namespace raster {

// Bits of the opcode table's masks that are no RaxelDeviceState: they belong to drivers with more states,
// and this one never enters them.
enum OtherState : uint32_t {
  kOther5 = 1u << 5,
  kOther6 = 1u << 6,
  kOther7 = 1u << 7,
  kOther8 = 1u << 8,
  kOther9 = 1u << 9,
  kOther10 = 1u << 10,
  kOther11 = 1u << 11,
  kOther15 = 1u << 15,
};

// Frees the state block and closes and frees whatever it still owned, without asking the host anything.
void endState();

// Points the writer at the settings record that this driver was given. False when there is none.
bool useDriverSetup();

// Sends six values to the host's status callback; 0 when there is none.
int32_t tellHost(HostWord a, HostWord b, HostWord c, HostWord d);

}  // namespace raster
