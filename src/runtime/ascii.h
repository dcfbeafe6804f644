// Letter case of plain ASCII, whatever the locale of the process says.
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

}  // namespace runtime
