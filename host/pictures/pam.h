// SPDX-License-Identifier: MIT
// The header of PAM, netpbm's format P7: words and numbers, a line each, in any order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace host {

struct PamHeader {
  uint32_t width = 0, height = 0;
  uint32_t depth = 0;  // samples of a pixel: 1 grey, 3 colours, 2 and 4 the same with an opacity
  uint32_t most = 0;   // the value of full brightness, up to 65535
  size_t pixelsAt = 0;
};

// Nothing where the header is not whole, or has numbers that no PAM has.
std::optional<PamHeader> pamHeader(std::span<const uint8_t> bytes);

// Whether the samples are those of a raw PGM or PPM.
bool isOpaquePam(std::span<const uint8_t> bytes);

}  // namespace host
