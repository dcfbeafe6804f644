// SPDX-License-Identifier: MIT
// SHA-256 (FIPS 180-4), for the golden list: no cryptographic library is at hand on the other
// machines that the tests run on.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace support {

// The digest as 64 lower-case hexadecimal digits.
std::string sha256(std::span<const uint8_t> bytes);

}  // namespace support
