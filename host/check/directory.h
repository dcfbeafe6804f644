// SPDX-License-Identifier: MIT
// The directory of a TIFF file, read without trust and without a library.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace host {

struct DirectoryEntry {
  uint16_t tag;
  uint16_t type;
  uint32_t count;
  std::vector<double> values;  // the first ones, numbers only
  std::string text;            // of an ASCII entry
};

struct Directory {
  bool littleEndian = true;
  uint32_t offset = 0;
  uint32_t next = 0;
  std::vector<DirectoryEntry> entries;
  std::vector<std::string> faults;  // what breaks the format, or is no good sign
  std::string cut;                  // the first fault by which pixels or their colours are missing

  const DirectoryEntry *find(uint16_t tag) const;
  // The first value of an entry; `none` without one.
  double value(uint16_t tag, double none) const;
};

// Reads the directory at a place, or the first one for 0. A file that is no TIFF has no entries and a fault
// that says so.
Directory readDirectory(std::span<const uint8_t> file, uint32_t at = 0);

// The places of all directories of a TIFF or BigTIFF, in their order. The chain ends where it leaves the
// file, with the place outside, or where it comes back to a place, with kLinkBack: no directory can be read
// at either.
inline constexpr uint64_t kLinkBack = 1;  // in the header
std::vector<uint64_t> directoryPlaces(std::span<const uint8_t> file);

// Those of these places that are pages: the first, and all others but reduced images and masks, as
// NewSubfileType says, which is a directory's first entry.
std::vector<uint64_t> pagePlaces(std::span<const uint8_t> file, std::vector<uint64_t> places);

// What the values of all entries of a TIFF's or BigTIFF's directory take, at a place or the first one for
// 0: more than the file where they lie over each other, as hostile ones do.
uint64_t bytesOfValues(std::span<const uint8_t> file, uint64_t at = 0);

// Names for texts; "tag 65000" and "type 13" for unknown ones.
std::string tagName(uint16_t tag);
std::string typeName(uint16_t type);

}  // namespace host
