// SPDX-License-Identifier: MIT
// LZW (TIFF compression 5), as this library writes it: codes of 9 to 12 bits, first bit first, from a
// Clear (256) to an End of Information (257); no predictor.
#pragma once

#include <cstdint>
#include <span>

#include "runtime/blocks.h"

namespace tiff {

// The tables that strings are looked up in, made when they are first needed: some 270 KB, and 2 MB more
// for data that repeats much. Kept from strip to strip, they are made only once.
struct LzwMemory {
  runtime::Block lists;
  runtime::Block columns;
};

// Codes one strip as a stream of its own.
//   strip  borrowed, of any length      out  room for at least 2 * strip.size() + 16 bytes
// Returns the bytes produced. Tables that cannot be had end the process, as all handle memory does.
uint32_t encodeLzw(std::span<const uint8_t> strip, std::span<uint8_t> out, LzwMemory &memory);
uint32_t encodeLzw(std::span<const uint8_t> strip, std::span<uint8_t> out);

}  // namespace tiff
