// SPDX-License-Identifier: MIT
// Default attribute tables, kept for hosts that look for them: 64 zero bytes each.
#include "raxel/driver.h"

uint8_t ln_def[64] = {};
uint8_t tx_def[64] = {};
uint8_t mk_def[64] = {};
uint8_t fl_def[64] = {};
uint8_t eg_def[64] = {};
uint8_t dtr_def[64] = {};
