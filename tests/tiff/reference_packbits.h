// SPDX-License-Identifier: MIT
// PackBits word for word as the format describes it, one byte at a time, and its decoder.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace reference {

using Bytes = std::vector<uint8_t>;

// One piece of at most 127 bytes.
Bytes packBitsPiece(std::span<const uint8_t> piece);
// A row in pieces of 127 bytes.
Bytes packBits(std::span<const uint8_t> row);
// What the codes stand for; codes cut short end the output early.
Bytes unpackBits(std::span<const uint8_t> codes);

}  // namespace reference
