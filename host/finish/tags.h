// SPDX-License-Identifier: MIT
// Numbers of the format: tags and types.
#pragma once

#include <cstdint>

namespace finish {

enum Tag : uint16_t {
  kNewSubfileType = 254,
  kImageWidth = 256,
  kImageLength = 257,
  kBitsPerSample = 258,
  kCompression = 259,
  kPhotometric = 262,
  kFillOrder = 266,
  kDocumentName = 269,
  kImageDescription = 270,
  kMake = 271,
  kModel = 272,
  kStripOffsets = 273,
  kOrientation = 274,
  kSamplesPerPixel = 277,
  kRowsPerStrip = 278,
  kStripByteCounts = 279,
  kXResolution = 282,
  kYResolution = 283,
  kPlanarConfiguration = 284,
  kPageName = 285,
  kT4Options = 292,
  kT6Options = 293,
  kResolutionUnit = 296,
  kPageNumber = 297,
  kSoftware = 305,
  kDateTime = 306,
  kArtist = 315,
  kHostComputer = 316,
  kPredictor = 317,
  kColorMap = 320,
  kTileWidth = 322,
  kTileLength = 323,
  kTileOffsets = 324,
  kTileByteCounts = 325,
  kExtraSamples = 338,
  kSampleFormat = 339,
  kXmpPacket = 700,
  kCopyright = 33432,
  kIptc = 33723,
  kPhotoshop = 34377,
  kExifDirectory = 34665,
  kIccProfile = 34675,
  kGpsDirectory = 34853,
};

enum Type : uint16_t { kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kUndefined = 7 };

constexpr uint32_t kHeaderBytes = 8;   // "II", 42, the first directory's place
constexpr uint32_t kCountBytes = 2;    // of entries, in front of them
constexpr uint32_t kEntryBytes = 12;   // tag, type, count, value or its place
constexpr uint32_t kValueInEntry = 8;  // where the value stands in an entry
constexpr uint32_t kLinkBytes = 4;     // the next directory's place, behind the entries

}  // namespace finish
