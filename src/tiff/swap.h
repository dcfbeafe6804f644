// SPDX-License-Identifier: MIT
// Turning blue, green, red into red, green, blue.
#pragma once

#include <cstdint>
#include <span>

namespace tiff {

// Swaps the first and third byte of every whole pixel of three bytes, in place; up to two bytes that
// make no whole pixel stay as they are.
void swapRedBlue(std::span<uint8_t> pixels);

// The same, byte by byte: what the vector code must equal.
void swapRedBluePlain(std::span<uint8_t> pixels);

}  // namespace tiff
