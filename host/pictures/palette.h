// SPDX-License-Identifier: MIT
// Colours in a file of their own.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace host {

using Palette = std::vector<std::array<uint8_t, 3>>;  // red, green, blue

inline constexpr size_t kMostColors = 256;

// True for the first line of a GIMP palette.
bool beginsAsGimpPalette(std::span<const uint8_t> bytes);

// Its colours in their order, one at least. Throws Unreadable, with the line that is wrong.
Palette readGimpPalette(std::span<const uint8_t> bytes);

}  // namespace host
