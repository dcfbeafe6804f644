// SPDX-License-Identifier: MIT
// The segments of a JPEG (ITU-T T.81, B.1.1.4): a marker, a length that counts itself, and what it says.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace host {

struct JpegSegment {
  uint8_t marker;                 // its second byte
  std::span<const uint8_t> body;  // behind the length; empty where the file ends before it does
};

// Those in front of the first scan, in their order. Bytes that belong to none are passed over, as decoders
// do.
std::vector<JpegSegment> jpegSegments(std::span<const uint8_t> file);

}  // namespace host
