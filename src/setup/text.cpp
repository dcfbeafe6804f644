// SPDX-License-Identifier: MIT
#include "setup/text.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <string_view>

#include "runtime/ascii.h"
#include "runtime/names.h"

namespace setup {
namespace {

using runtime::isDigit;

// Whether a decimal number that no double holds is too small, rather than too large: whether its first
// digit that counts stands behind the point once the exponent has moved it.
bool isTooSmall(std::string_view number) {
  constexpr int64_t kHugeExponent = 1000000000;
  int64_t power = 0;  // of ten, one past that of the first digit that counts
  bool counts = false;
  bool point = false;
  auto at = number.begin();
  for (; at != number.end() && (isDigit(*at) || *at == '.'); ++at) {
    if (*at == '.') {
      point = true;
      continue;
    }
    counts = counts || *at != '0';
    if (counts && !point) ++power;
    if (!counts && point) --power;
  }
  if (at != number.end()) ++at;  // the e
  const bool negative = at != number.end() && *at == '-';
  int64_t exponent = 0;
  for (; at != number.end(); ++at) {
    if (isDigit(*at)) exponent = std::min(exponent * 10 + (*at - '0'), kHugeExponent);
  }
  return power + (negative ? -exponent : exponent) < 0;
}

void terminate(std::span<char> text, const std::to_chars_result &written) {
  // On a conversion that ran out of room the text is empty rather than unterminated.
  if (written.ec != std::errc{} || written.ptr == text.data() + text.size()) {
    text.front() = '\0';
  } else {
    *written.ptr = '\0';
  }
}

}  // namespace

void copyText(std::span<char> to, const char *text) {
  runtime::copyText(to, text == nullptr ? "" : text);
}

bool copyWholeText(std::span<char> to, const char *text) {
  const bool fits = runtime::copyText(to, text == nullptr ? "" : text);
  if (!fits) to.front() = '\0';
  return fits;
}

double readDecimal(const char *text) {
  while (runtime::isSpace(*text)) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  // Only digits make a number here: "inf" and "nan" are words.
  if (!isDigit(*text) && !(*text == '.' && isDigit(text[1]))) return 0.0;
  double value = 0.0;
  const auto read = std::from_chars(text, text + std::strlen(text), value);
  if (read.ec != std::errc{}) {
    const bool small = isTooSmall({text, static_cast<size_t>(read.ptr - text)});
    value = small ? 0.0 : std::numeric_limits<double>::infinity();
  }
  return negative ? -value : value;
}

void writeGeneral(std::span<char> to, double value, int digits) {
  terminate(to, std::to_chars(to.data(), to.data() + to.size(), value, std::chars_format::general, digits));
}

void writeInteger(std::span<char> to, int32_t value) {
  terminate(to, std::to_chars(to.data(), to.data() + to.size(), value));
}

}  // namespace setup
