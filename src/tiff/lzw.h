// LZW (TIFF compression 5), as this library writes it: codes of 9 to 12 bits, first bit first, from a
// Clear (256) to an End of Information (257); no predictor.
#pragma once

#include <cstdint>
#include <span>

namespace tiff {

// Codes one strip as a stream of its own.
//   strip  borrowed, of any length      out  room for at least 2 * strip.size() + 16 bytes
// Returns the bytes produced; 0 when there is no memory for the string table.
uint32_t encodeLzw(std::span<const uint8_t> strip, std::span<uint8_t> out);

}  // namespace tiff
