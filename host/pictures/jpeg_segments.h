// SPDX-License-Identifier: MIT
// The segments of a JPEG (ITU-T T.81, B.1.1.4): a marker, a length that counts itself, and what it says.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

namespace host {

// Receives a marker's second byte, and what is behind the length: nothing where the file ends before it
// does.
using TakeSegment = std::function<void(uint8_t marker, std::span<const uint8_t> body)>;

// Calls it for each segment in front of the first scan, in their order. Bytes that belong to none are
// passed over, as decoders do.
void eachJpegSegment(std::span<const uint8_t> file, const TakeSegment &take);

}  // namespace host
