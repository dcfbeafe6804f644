// SPDX-License-Identifier: MIT
// LZW word for word as this library's stream is defined, with its table searched one entry after
// another, and a decoder as TIFF 6.0 describes it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace reference {

using Bytes = std::vector<uint8_t>;

// A code and the bits it is written in.
struct LzwCode {
  uint32_t code;
  uint32_t width;
  bool operator==(const LzwCode &) const = default;
};

// The codes of a strip in order, and the same with a table that is linked rather than searched.
std::vector<LzwCode> lzwCodes(std::span<const uint8_t> strip);
std::vector<LzwCode> lzwCodesSooner(std::span<const uint8_t> strip);
// Codes packed first bit first.
Bytes packLzw(std::span<const LzwCode> codes);
inline Bytes lzw(std::span<const uint8_t> strip) {
  return packLzw(lzwCodesSooner(strip));
}

// Decodes as far as `length` bytes, as a TIFF reader does that knows a strip's size. Codes that no
// writer could have meant end the output early.
Bytes unpackLzw(std::span<const uint8_t> codes, size_t length);

}  // namespace reference
