// SPDX-License-Identifier: MIT
// Names and escape values of modes and compressions, and the sentences for codes and notes.
#include <strings.h>

#include <array>
#include <cstddef>

#include "raxel/host.h"

namespace {

constexpr size_t kNames = 7;  // a name and up to six other names

struct Choice {
  int32_t value;  // what the escape takes
  std::array<const char *, kNames> names;
};

// In the order of RaxelMode, with what a prepared picture asks for: eight colours go out as sixteen, of
// which eight are the fixed ones, since the filter's own mode for them would remap every pixel.
constexpr auto kModes = std::to_array<Choice>({
    {RAXEL_ASK_MODE_BILEVEL, {"bilevel", "mono", "bw", "1"}},
    {RAXEL_ASK_MODE_GREY16, {"grey16", "gray16"}},
    {RAXEL_ASK_MODE_GREY256, {"grey256", "gray256", "grey", "gray"}},
    {RAXEL_ASK_MODE_COLOR16, {"color8", "colour8"}},
    {RAXEL_ASK_MODE_COLOR16, {"color16", "colour16"}},
    {RAXEL_ASK_MODE_COLOR256, {"color256", "colour256", "palette"}},
    {RAXEL_ASK_MODE_RGB, {"rgb", "truecolor", "24"}},
});
static_assert(kModes.size() == RAXEL_MODES);

// In the order of RaxelCompression.
constexpr auto kCompressions = std::to_array<Choice>({
    {RAXEL_ASK_COMPRESS_NONE, {"none", "uncompressed"}},
    {RAXEL_ASK_COMPRESS_PACKBITS, {"packbits", "rle"}},
    {RAXEL_ASK_COMPRESS_HUFFMAN, {"huffman", "mh", "ccittrle", "fax1d"}},
    {RAXEL_ASK_COMPRESS_LZW, {"lzw"}},
    {RAXEL_ASK_COMPRESS_T4, {"t4", "g3", "group3", "fax3", "ccittfax3"}},
    {RAXEL_ASK_COMPRESS_T6, {"t6", "g4", "group4", "fax", "fax4", "ccittfax4"}},
});
static_assert(kCompressions.size() == RAXEL_COMPRESSIONS);

constexpr std::array<const char *, RAXEL_HOST_CODES> kMessages{
    "done",
    "a value handed over lies outside its range",
    "the picture has no pixels, or a depth other than 1, 2, 4, 8 and 24 bits",
    "the picture is wider than the 65535 pixels that a file holds",
    "the picture is taller than the 65534 rows that a file holds",
    "the picture takes 2 GiB or more, and a file ends there",
    "a resolution lies between 1 and 100,000 dots an inch, and between 32 and 400 for the filter alone",
    "a size is a positive number of inches that gives at least one pixel",
    "fax compressions code one bit a pixel",
    "tiles are made with the T.6 compression only",
    "readers cannot open a single row of tiles with several columns",
    "readers cannot open tiles in pictures wider than 2016 pixels",
    "one strip is made with the fax compressions only",
    "the filter lacks a function that this preparation needs",
    "this quantizer is not available here",
    "Leptonica, which finds thresholds, is not available here",
    "there is not enough memory for this picture",
    "raxel.so is not found, or is no whole filter of this version: name it in RAXEL_LIBRARY",
    "the filter stopped before the picture was complete",
    "this road cannot carry the picture: take the one call with a finished picture",
    "the output cannot be created",
    "the output cannot be written",
    "what was written does not show the picture",
    "stopped before the picture was complete",
    "a predictor is for LZW in the modes grey256 and rgb",
    "a palette is for the modes color16, with up to 16 colours, and color256",
};

constexpr std::array<const char *, RAXEL_NOTES> kNotes{
    "the height was odd, so the last row is repeated",
    "the picture was scaled to the size asked for",
    "the picture has more colours or levels than the mode holds and was reduced",
    "lost levels are dithered",
    "strips of one byte cannot be coded as LZW, so PackBits is used",
    "readers misread a modified-Huffman picture this small, so PackBits is used",
    "readers refuse T.4 and modified Huffman where a row alternates at every pixel, so T.6 is used",
    "taken for a document, so grey is cut into black and white",
    "not taken for a document, so grey becomes dots",
};

template <size_t N>
int find(const std::array<Choice, N> &choices, const char *name) {
  if (!name) return -1;
  for (size_t i = 0; i < N; ++i) {
    for (const char *known : choices[i].names) {
      if (known && strcasecmp(known, name) == 0) return static_cast<int>(i);
    }
  }
  return -1;
}

template <size_t N>
const char *nameAt(const std::array<Choice, N> &choices, int index, int n) {
  if (index < 0 || static_cast<size_t>(index) >= N || n < 0 || static_cast<size_t>(n) >= kNames) {
    return nullptr;
  }
  return choices[static_cast<size_t>(index)].names[static_cast<size_t>(n)];
}

template <size_t N>
int32_t valueOf(const std::array<Choice, N> &choices, int index) {
  return index < 0 || static_cast<size_t>(index) >= N ? -1 : choices[static_cast<size_t>(index)].value;
}

}  // namespace

extern "C" {

const char *raxelHostModeName(int mode) {
  return nameAt(kModes, mode, 0);
}
int32_t raxelHostModeValue(int mode) {
  return valueOf(kModes, mode);
}
const char *raxelHostModeAlias(int mode, int n) {
  return n < 0 ? nullptr : nameAt(kModes, mode, n + 1);
}
int raxelHostFindMode(const char *name) {
  return find(kModes, name);
}

const char *raxelHostCompressionName(int compression) {
  return nameAt(kCompressions, compression, 0);
}
int32_t raxelHostCompressionValue(int compression) {
  return valueOf(kCompressions, compression);
}
const char *raxelHostCompressionAlias(int compression, int n) {
  return n < 0 ? nullptr : nameAt(kCompressions, compression, n + 1);
}
int raxelHostFindCompression(const char *name) {
  return find(kCompressions, name);
}

const char *raxelHostMessage(int code) {
  if (code < 0 || code >= RAXEL_HOST_CODES) return "unknown code";
  return kMessages[static_cast<size_t>(code)];
}

const char *raxelHostNote(uint32_t note) {
  for (size_t i = 0; i < kNotes.size(); ++i) {
    if (note == 1u << i) return kNotes[i];
  }
  return "unknown note";
}

}  // extern "C"
