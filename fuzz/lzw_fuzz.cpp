// SPDX-License-Identifier: MIT
// LZW of any strip: equal to the plain form, and decodes to the strip. The first two bytes say how often
// the rest is repeated, and what each repetition adds to its bytes; rarely the strips are long enough to
// clear the table, or to clear it twice.
#include "input.h"
#include "tiff/lzw.h"
#include "tiff/reference_lzw.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static tiff::LzwMemory memory;  // tables that an earlier strip used must not be noticed
  fuzz::Input input(data, size);
  const size_t repetitions = input.byte();
  const uint8_t change = input.byte();
  const size_t longest = input.rarely(256) ? 9000 : input.rarely(64) ? 4400 : input.rarely(8) ? 600 : 100;
  const std::vector<uint8_t> part = input.rest();
  const size_t parts = part.empty() ? 0 : 1 + std::min(repetitions, (longest - 1) / part.size());
  const size_t length = part.size() * parts;
  const fuzz::Exact place(length);
  for (size_t i = 0; i < length; ++i) {
    place.data()[i] = static_cast<uint8_t>(part[i % part.size()] + i / part.size() * change);
  }

  const std::span<const uint8_t> strip(place.data(), length);
  std::vector<uint8_t> codes(2 * length + 16);
  codes.resize(tiff::encodeLzw(strip, codes, memory));
  fuzz::require(codes == reference::lzw(strip), "the codes of the plain form");
  // A single byte is not coded.
  const std::vector<uint8_t> decoded = reference::unpackLzw(codes, length);
  fuzz::require(length == 1 || std::equal(strip.begin(), strip.end(), decoded.begin(), decoded.end()),
                "the strip comes back");
  return 0;
}
