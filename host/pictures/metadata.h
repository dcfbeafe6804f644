// SPDX-License-Identifier: MIT
// What a file says of its picture beside the pixels. Bytes are not trusted.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace host {

struct Metadata {
  std::vector<uint8_t> icc;  // an ICC profile; empty for none
  std::string description, artist, copyright;
  std::vector<std::string> dropped;  // what else there is, in words
};

// Of a file in a format of formatOf; in a TIFF of the directory at that place, 0 for the first. The profile
// of a PNG is compressed and comes with its pixels.
Metadata readMetadata(const std::string &format, std::span<const uint8_t> file, uint64_t directory);

}  // namespace host
