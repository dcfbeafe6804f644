// SPDX-License-Identifier: MIT
// Looks into JPEG 2000, JP2 files and bare codestreams (ITU-T T.800, Annexes A and I), for what Leptonica
// does not tell of them. Bytes are not trusted.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace host {

// The number of channels, of a JP2 file or a bare codestream; 0 when it is not found. An even one has
// opacity for its last.
uint32_t jpeg2000Channels(std::span<const uint8_t> file);
// What its codestream tells: the picture's size, and whether a channel has fewer samples than the picture
// has pixels. No size where there is no codestream, or one that does not begin with it.
struct Jpeg2000Grid {
  uint32_t width = 0, height = 0;
  bool isCoarse = false;
};
Jpeg2000Grid jpeg2000Grid(std::span<const uint8_t> file);

// What of the codestream is not there, in words; empty for a whole one. The decoder shows grey for it.
std::string jpeg2000Missing(std::span<const uint8_t> file);

// What a JP2 file says besides among its boxes.
struct Jpeg2000Extras {
  bool profile, texts;
};
Jpeg2000Extras jpeg2000Extras(std::span<const uint8_t> file);

}  // namespace host
