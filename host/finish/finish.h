// SPDX-License-Identifier: MIT
// The finishing step: gives a file that the filter wrote the directory that its readers want.
//
// The filter's directory says the least that the format allows, and some of it in a way that not every
// reader takes: black is always 0, RGB names its depth once, the tags of tiles do not ascend, resolutions
// end at 400. When the filter has closed the file and before the file takes the old one's place, a new
// directory goes behind the strips and the header points to it. The strips stay where they are, and the
// filter's own directory, some 170 bytes, stays as bytes that nobody reads:
//
//   the filter's    header -> directory, values | strips
//   finished        header ----------------------------------> directory, values
//                             (slack)            | strips
//
// Further pages follow in the same file. Each is written by the filter as if it were a file of its own that
// starts at a place called its base, so that every place in its directory is counted from there:
//
//   header ------------------------> directory 1 --------------------------> directory 2
//           (slack) | strips of 1 |               | (slack) | strips of 2 |
//
// The road of one page, in the order of the calls:
//
//   FinishedPage page;
//   outcome = readPage(file, base, page);      what the filter wrote, places counted from the file's start
//   page.photometric = ...                     what is to be different
//   outcome = writePage(file, page, chain);    behind the last byte; header or page before point to it
//   base = file.size;                          where the next page starts: always even
//   outcome = endPages(file, chain);           once, when there are several pages
//
// Nothing here opens, closes, renames or keeps a file, allocates more than a page's directory needs, or
// reads a place outside it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "raxel/tiff_codes.h"

namespace finish {

// The file as it lies open: a descriptor, a block of memory, or a sink that holds parts of it back. Places
// count from its start. Both functions return false when they cannot do all of it; a write at `size` makes
// the file longer.
struct File {
  void *context;
  bool (*read)(void *context, uint64_t at, uint8_t *to, size_t count);
  bool (*write)(void *context, uint64_t at, const uint8_t *from, size_t count);
  uint64_t size;  // bytes in the file; writePage keeps it true
};

// A file of an open descriptor that reads and writes, and one in memory. What they refer to must live as
// long as they do.
File fileOf(const int &descriptor, uint64_t size);
File fileOf(std::vector<uint8_t> &bytes);

// Dots an inch as the format has them.
struct Rational {
  uint32_t above = 0;
  uint32_t below = 1;
};

// The fraction nearest to a resolution: whole where it is whole, else in thousandths, shortened.
Rational rationalOf(double dotsPerInch);

// Everything that a finished directory says. The places are counted from the start of the file.
struct FinishedPage {
  uint32_t width = 0;  // ImageWidth, pixels
  uint32_t height = 0;
  uint32_t bits = 1;                               // BitsPerSample, once for each sample
  uint32_t samples = 1;                            // SamplesPerPixel, 1 or 3
  uint32_t compression = RAXEL_TIFF_UNCOMPRESSED;  // a RaxelTiffCompression
  uint32_t photometric = 1;  // 0: white is 0, 1: black is 0, 2: red, green, blue, 3: a colour map

  // Strips of so many rows, or tiles when tileWidth is not 0.
  uint32_t rowsPerStrip = 0;
  uint32_t tileWidth = 0, tileHeight = 0;
  std::vector<uint32_t> offsets;  // of the strips or tiles
  std::vector<uint32_t> counts;   // their bytes

  Rational resolutionX, resolutionY;
  // Where the colour map of 3 << bits numbers of 16 bits lies already; 0 for none.
  uint32_t colorMapAt = 0;
  uint32_t predictor = 1;  // 2: rows hold horizontal differences

  // NewSubfileType 2 and PageNumber, counted from 0.
  bool isPage = false;
  uint16_t pageNumber = 0;

  // Texts in UTF-8 and ASCII; an empty one is left out.
  std::string description, software, dateTime, artist, copyright;
  std::span<const uint8_t> icc;  // an ICC profile; empty for none
};

// Where the next directory's place goes, and the numbers of pages that are told at the end.
struct Chain {
  uint64_t linkAt = 4;  // in the header at first
  uint32_t last = 0;    // the last page's directory; 0 for none
  std::vector<uint32_t> totalsAt;
};

enum class Outcome {
  kDone,
  kNotOurs,       // the directory is not one that the filter writes, or is damaged
  kTooLarge,      // the file would pass 4 GiB, which its format cannot hold
  kTooManyPages,  // more than 65535, which PageNumber cannot count
  kNotRead,       // the file's function failed
  kNotWritten,
};

// One sentence for an outcome. Never null.
const char *sentence(Outcome outcome);

// Reads the directory that the filter wrote at `base`: 8 bytes of header, then it. Leaves `page` without
// texts, profile, predictor and page number.
Outcome readPage(const File &file, uint64_t base, FinishedPage &page);

// Writes the directory behind the last byte, its tags in ascending order, and points to it from the header
// or from the page before. The file ends at an even place afterwards.
Outcome writePage(File &file, const FinishedPage &page, Chain &chain);

// What writePage would add to a file of so many bytes.
uint64_t directoryBytes(const FinishedPage &page, uint64_t size);

// Tells every page how many there are.
Outcome endPages(File &file, const Chain &chain);

}  // namespace finish
