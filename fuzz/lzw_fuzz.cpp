// SPDX-License-Identifier: MIT
// LZW of any strip: decodes to the strip, and equals the plain form. The first two bytes say how often the
// rest is repeated, and what each repetition adds to its bytes, so that short inputs make strips that clear
// the table more than once.
#include "input.h"
#include "tiff/lzw.h"
#include "tiff/reference_lzw.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static tiff::LzwMemory memory;  // tables that an earlier strip used must not be noticed
  constexpr size_t kLongest = 9000;
  constexpr size_t kShort = 600;  // the plain form searches entry by entry: longer strips now and then
  fuzz::Input input(data, size);
  const size_t repetitions = input.byte();
  const uint8_t change = input.byte();
  std::vector<uint8_t> part = input.rest();
  std::vector<uint8_t> strip = part;
  for (size_t i = 0; i < repetitions && strip.size() + part.size() <= kLongest; ++i) {
    for (uint8_t &byte : part) byte = static_cast<uint8_t>(byte + change);
    strip.insert(strip.end(), part.begin(), part.end());
  }

  std::vector<uint8_t> codes(2 * strip.size() + 16);
  codes.resize(tiff::encodeLzw(strip, codes, memory));
  if (strip.size() <= kShort || repetitions % 64 == 8) {
    fuzz::require(codes == reference::lzw(strip), "the codes of the plain form");
  }
  // A single byte is not coded.
  fuzz::require(strip.size() == 1 || reference::unpackLzw(codes, strip.size()) == strip,
                "the strip comes back");
  return 0;
}
