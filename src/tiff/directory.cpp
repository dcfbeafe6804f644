// SPDX-License-Identifier: MIT
// The fixed front of every file: header, one directory, and the values that the directory points to.
//
// Everything is written front to back with zeros where a value is not known yet, and the position of
// each such zero is kept: the directory's own (entry count, resolutions, array positions) are filled
// in before WriteTiffDir returns, the strips' offsets and byte counts while the pixels are written.
//
// The results of single writes are not looked at. A file that cannot be written shows when its
// pixels are.
#include "tiff/geometry.h"
#include "tiff/output.h"

namespace {

using tiff::seekBack;
using tiff::seekTo;
using tiff::tell;

enum Tag : uint32_t {
  kNewSubfileType = 254,
  kImageWidth = 256,
  kImageLength = 257,
  kBitsPerSample = 258,
  kCompression = 259,
  kPhotometric = 262,
  kStripOffsets = 273,
  kSamplesPerPixel = 277,
  kRowsPerStrip = 278,
  kStripByteCounts = 279,
  kXResolution = 282,
  kYResolution = 283,
  kResolutionUnit = 296,
  kColorMap = 320,
  kTileWidth = 322,
  kTileLength = 323,
  kTileOffsets = 324,
  kTileByteCounts = 325,
};

enum Type : uint32_t { kShort = 3, kLong = 4, kRational = 5 };

constexpr uint32_t kDirectoryAt = 8;   // right behind the header
constexpr uint32_t kEntryBytes = 12;   // tag 2, type 2, count 4, value 4
constexpr uint32_t kValueInEntry = 8;  // where in an entry its value field lies
constexpr uint32_t kNextOffsetBytes = 4;
constexpr uint32_t kInches = 2;
constexpr uint32_t kWideningFactor = 257;  // a byte to 16 bits: 0xFF becomes 0xFFFF

// Writes entries in order, each through WriteSimpleTag, and counts them.
struct EntryWriter {
  Handle file;
  uint16_t count = 0;

  void add(Tag tag, Type type, uint32_t values, uint32_t value) {
    WriteSimpleTag(file, tag, type, values, value, &count);
  }
};

// Positions in the file are relative to the header's own.
uint32_t relative(const TiffWriterState &state) {
  return tell(state.hTiffFile) - state.dwTiffBase;
}

// The entry of one of the two arrays. A single value fits into the entry itself; more of them get an
// array behind the resolutions, and the entry receives its position then (placeArray).
void addArrayEntry(EntryWriter &entries, const TiffWriterState &state, Tag tag, uint32_t &entryPos,
                   uint32_t &valuesPos) {
  const uint32_t pieces = tiff::pieceCount(state);
  entryPos = relative(state) + kValueInEntry;
  if (pieces < 2) {
    valuesPos = entryPos;
    entryPos = 0;
  }
  entries.add(tag, kLong, pieces, 0);
}

// Writes an array of zeros at the current position and its position into the entry.
void placeArray(const TiffWriterState &state, uint32_t entryPos, uint32_t &valuesPos) {
  const Handle file = state.hTiffFile;
  const uint32_t here = tell(file);
  seekTo(file, entryPos + state.dwTiffBase);
  WriteLong(file, here - state.dwTiffBase);
  seekBack(file, here);
  valuesPos = here - state.dwTiffBase;
  const bool ours = !tiff::isHostStream(file);
  for (uint32_t left = tiff::pieceCount(state); left > 0; --left) {
    // A stream of our own that has failed takes nothing more; a host's may.
    if (WriteLong(file, 0) != 4 && ours) break;
  }
}

// 2 to the power of the bits of a sample, by doubling in 32 bits.
uint32_t colorMapEntries(const TiffWriterState &state) {
  return state.nBitsPerSample < 32 ? uint32_t{1} << state.nBitsPerSample : 0;
}

// All red values, then all green, then all blue.
void writeColorMap(const TiffWriterState &state) {
  constexpr uint32_t kHeld = 256;
  const uint32_t entries = colorMapEntries(state);
  const bool ours = !tiff::isHostStream(state.hTiffFile);
  for (uint32_t channel = 0; channel < 3; ++channel) {
    for (uint32_t i = 0; i < entries; ++i) {
      const uint32_t value = i < kHeld ? state.abColorMap[i][channel] * kWideningFactor : 0;
      if (WriteWord(state.hTiffFile, value) != 2 && ours) return;
    }
  }
}

void writeRational(Handle file, int16_t value) {
  WriteLong(file, static_cast<uint32_t>(int32_t{value}));
  WriteLong(file, 1);
}

// Writes the entries, which for tiles are not in ascending order of tags. Gives the relative position
// of the XResolution entry; YResolution's follows it.
uint32_t addEntries(EntryWriter &entries, TiffWriterState &state) {
  const bool tiled = tiff::isTiled(state);
  entries.add(kNewSubfileType, kLong, 1, state.dwNewSubfileType);
  entries.add(kImageWidth, kShort, 1, state.nImageWidth);
  entries.add(kImageLength, kShort, 1, state.nImageLength);
  entries.add(kBitsPerSample, kShort, 1, state.nBitsPerSample);
  entries.add(kCompression, kShort, 1, state.nCompression);
  entries.add(kPhotometric, kShort, 1, state.nPhotometric);
  addArrayEntry(entries, state, tiled ? kTileOffsets : kStripOffsets, state.nOffsetsEntryPos,
                state.nOffsetsPos);
  entries.add(kSamplesPerPixel, kShort, 1, state.nSamplesPerPixel);
  if (tiled) {
    entries.add(kTileWidth, kLong, 1, tiff::kTilePixelsAcross);
    entries.add(kTileLength, kLong, 1, tiff::kTileRows);
  } else {
    entries.add(kRowsPerStrip, kLong, 1, state.nRowsPerStrip);
  }
  addArrayEntry(entries, state, tiled ? kTileByteCounts : kStripByteCounts, state.nCountsEntryPos,
                state.nCountsPos);
  const uint32_t xResolution = relative(state);
  entries.add(kXResolution, kRational, 1, 0);
  entries.add(kYResolution, kRational, 1, 0);
  entries.add(kResolutionUnit, kShort, 1, kInches);
  if (state.nPhotometric == RAXEL_TIFF_PALETTE) {
    const uint32_t colorMap = relative(state) + kEntryBytes + kNextOffsetBytes;
    entries.add(kColorMap, kShort, 3 * colorMapEntries(state), colorMap);
  }
  return xResolution;
}

// Fills in the entry count and the places of the two rationals, and writes them at `end`.
void placeResolutions(const TiffWriterState &state, uint16_t entryCount, uint32_t xResolution,
                      uint32_t end) {
  const Handle file = state.hTiffFile;
  const uint32_t base = state.dwTiffBase;
  seekTo(file, base + kDirectoryAt);
  WriteWord(file, entryCount);
  seekTo(file, base + xResolution + kValueInEntry);
  WriteLong(file, end - base);
  seekTo(file, base + xResolution + kEntryBytes + kValueInEntry);
  WriteLong(file, end - base + 8);
  seekBack(file, end);
  writeRational(file, state.nXResolution);
  writeRational(file, state.nYResolution);
}

// Writes the entries, what they point to, and the empty arrays of offsets and byte counts.
void writeDirectory(TiffWriterState &state) {
  const Handle file = state.hTiffFile;
  if (state.nWriterKind == RAXEL_WRITER_ONE_STRIP) state.nStripsDown = 1;
  WriteWord(file, 0);  // the entry count, once it is known
  EntryWriter entries{file};
  const uint32_t xResolution = addEntries(entries, state);
  WriteLong(file, 0);  // no further directory
  if (state.nPhotometric == RAXEL_TIFF_PALETTE) writeColorMap(state);
  placeResolutions(state, entries.count, xResolution, tell(file));
  if (tiff::pieceCount(state) > 1) {
    placeArray(state, state.nOffsetsEntryPos, state.nOffsetsPos);
    placeArray(state, state.nCountsEntryPos, state.nCountsPos);
  }
}

}  // namespace

int32_t WriteWord(Handle file, uint32_t value) {
  if (file == 0) return 0;
  const uint8_t bytes[2] = {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8)};
  if (!tiff::isHostStream(file)) return kvlWrite(file, bytes, 2);
  for (const uint8_t &byte : bytes) {
    if (const int32_t written = kvlWrite(file, &byte, 1); written != 1) return written;
  }
  return 2;
}

int32_t WriteLong(Handle file, uint32_t value) {
  for (const uint32_t half : {value & 0xFFFF, value >> 16}) {
    if (const int32_t written = WriteWord(file, half); written != 2) return written;
  }
  return 4;
}

int32_t WriteSimpleTag(Handle file, uint32_t tag, uint32_t type, uint32_t count, uint32_t value,
                       uint16_t *counter) {
  if (counter != nullptr) ++*counter;
  WriteWord(file, tag);
  WriteWord(file, type);
  WriteLong(file, count);
  // A single SHORT fills the first half of the field, and the other half is zero. More of them leave
  // their position there, or two values.
  return WriteLong(file, type == kShort && count == 1 ? value & 0xFFFF : value);
}

int32_t WriteTiffHdr(TiffWriterState *state) {
  if (state == nullptr) return 0;
  WriteWord(state->hTiffFile, 0x4949);  // "II": little-endian
  WriteWord(state->hTiffFile, 42);
  WriteLong(state->hTiffFile, kDirectoryAt);
  return 0;
}

int32_t WriteTiffDir(TiffWriterState *state) {
  if (state != nullptr) writeDirectory(*state);
  return 0;
}
