// SPDX-License-Identifier: MIT
// Looks into files for their format, and for what Leptonica does not tell of the pictures that it reads.
// Bytes are not trusted.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace host {

// The name of the format, from the first 12 bytes; empty for none that is known.
std::string formatOf(std::span<const uint8_t> file);

// The index of the first picture's transparent colour; -1 for none.
int gifTransparentIndex(std::span<const uint8_t> file);

// The screen of a GIF, as large as its first frame needs, and that frame's place on it; all 0 without a
// frame.
struct GifScreen {
  uint32_t width, height, left, top;
};
GifScreen gifScreen(std::span<const uint8_t> file);
// Throws Unreadable for a screen so large that no frame needs it.
void checkScreen(uint32_t width, uint32_t height);

// A frame of a GIF: the blocks of it and of the extensions in front of it, its place on the screen, what
// becomes of it when the next one comes, as the format numbers it, and its transparent index, -1 for none.
struct GifFrame {
  size_t start = 0, end = 0;
  uint32_t left = 0, top = 0, width = 0, height = 0;
  unsigned disposal = 0;
  int transparent = -1;
};
// All of them, in their order.
std::vector<GifFrame> gifFrames(std::span<const uint8_t> file);

// A file of the frame alone whose blocks begin there, which is in the file.
std::vector<uint8_t> gifFrameAlone(std::span<const uint8_t> file, size_t start);

// True when another picture follows the first one.
bool gifHasFurtherPictures(std::span<const uint8_t> file);

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

// What files say besides: a GIF in front of its first picture, a JP2 file among its boxes.
struct GifExtras {
  bool comments, xmp, profile;
};
GifExtras gifExtras(std::span<const uint8_t> file);
struct Jpeg2000Extras {
  bool profile, texts;
};
Jpeg2000Extras jpeg2000Extras(std::span<const uint8_t> file);

}  // namespace host
