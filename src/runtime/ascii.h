// SPDX-License-Identifier: MIT
// Letter case and kinds of plain ASCII characters, whatever the locale of the process says.
#pragma once

#include <cstdint>

namespace runtime {

// Characters are signed bytes: 0x80 to 0xFF come back as -128 to -1, unchanged.
constexpr int32_t upper(char character) {
  const auto c = static_cast<int8_t>(character);
  return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c;
}

constexpr int32_t lower(char character) {
  const auto c = static_cast<int8_t>(character);
  return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c;
}

constexpr bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

// What standard conversions of numbers step over.
constexpr bool isSpace(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

}  // namespace runtime
