#include "setup/text.h"

#include <charconv>
#include <cstring>
#include <limits>

namespace setup {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
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
  const size_t length = text == nullptr ? 0 : strnlen(text, to.size() - 1);
  if (length != 0) std::memcpy(to.data(), text, length);
  to[length] = '\0';
}

bool copyWholeText(std::span<char> to, const char *text) {
  const bool fits = text == nullptr || strnlen(text, to.size()) < to.size();
  copyText(to, fits ? text : nullptr);
  return fits;
}

double readDecimal(const char *text) {
  while (*text == ' ' || *text == '\t') ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  // Only digits make a number here: "inf" and "nan" are words.
  if (!isDigit(*text) && !(*text == '.' && isDigit(text[1]))) return 0.0;
  double value = 0.0;
  const auto read = std::from_chars(text, text + std::strlen(text), value);
  if (read.ec != std::errc{}) value = std::numeric_limits<double>::infinity();
  return negative ? -value : value;
}

void writeGeneral(std::span<char> to, double value, int digits) {
  terminate(to, std::to_chars(to.data(), to.data() + to.size(), value, std::chars_format::general, digits));
}

void writeInteger(std::span<char> to, int32_t value) {
  terminate(to, std::to_chars(to.data(), to.data() + to.size(), value));
}

}  // namespace setup
