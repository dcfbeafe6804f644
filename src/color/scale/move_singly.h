// SPDX-License-Identifier: MIT
// Moves pixels one by one: where no plan is made, and what plans leave over.
#pragma once

#include <cstdint>
#include <span>

namespace color {

// Pixel i of the output, which begins with a byte, is pixel columns[i] of the source. The columns never
// fall and lie in the source. What is left of the last byte becomes 0.
void moveSingly(int16_t depth, std::span<const uint32_t> columns, std::span<const uint8_t> source,
                uint8_t *out);

}  // namespace color
