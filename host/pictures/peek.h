// SPDX-License-Identifier: MIT
// Looks into files for their format, and for what Leptonica does not tell of the GIFs that it reads. Bytes
// are not trusted.
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

// A file of the frame alone whose blocks begin there, which is in the file; of the first one for 0.
std::vector<uint8_t> gifFrameAlone(std::span<const uint8_t> file, size_t start);

// Whether its blocks go on to its end. Nothing else tells of one that is cut short between two of them.
bool gifIsWhole(std::span<const uint8_t> file);

// True when another picture follows the first one.
bool gifHasFurtherPictures(std::span<const uint8_t> file);

// What the file says besides, in front of its first picture.
struct GifExtras {
  bool comments, xmp, profile;
};
GifExtras gifExtras(std::span<const uint8_t> file);

}  // namespace host
