// SPDX-License-Identifier: MIT
// WebP within TIFF. libtiff takes it for granted that each strip or tile is as wide as the directory says.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace host {

class TiffReader;

// The width of a still WebP with a RIFF header, in pixels; 0 for all else. So many bytes tell it.
inline constexpr size_t kWebpFront = 30;
uint32_t webpWidth(std::span<const uint8_t> file);

// What is wrong with the strips or tiles of an open file; empty for nothing, and for those of other codes.
std::string faultOfWebpPieces(const TiffReader &reader);

}  // namespace host
