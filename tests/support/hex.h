// SPDX-License-Identifier: MIT
// Expected bytes written as a commented dump.
#pragma once

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace support {

// Bytes from pairs of hexadecimal digits; everything from ';' to the end of its line is a comment.
inline std::vector<uint8_t> hex(std::string_view dump) {
  std::vector<uint8_t> out;
  std::string digits;
  bool comment = false;
  for (const char c : dump) {
    if (c == '\n') comment = false;
    if (c == ';') comment = true;
    if (comment || std::isxdigit(static_cast<unsigned char>(c)) == 0) continue;
    digits += c;
    if (digits.size() < 2) continue;
    out.push_back(static_cast<uint8_t>(std::strtoul(digits.c_str(), nullptr, 16)));
    digits.clear();
  }
  return out;
}

}  // namespace support
