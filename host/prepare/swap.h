// SPDX-License-Identifier: MIT
// Red and blue exchanged in rows of 24 bits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace prepare {

// Copies pixels of three bytes, the first and the third exchanged. Picks vector code where the machine
// has it; the result is the same. The blocks must not overlap.
void swapRedBlue(const uint8_t *in, uint8_t *out, size_t pixels);

// The plain form of the same, for machines without and for the tests.
void swapRedBluePlain(const uint8_t *in, uint8_t *out, size_t pixels);

}  // namespace prepare
