// SPDX-License-Identifier: MIT
// Short texts of the settings record: bounded copies, and numbers as a profile writes them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace setup {

// Whether a text argument of the host says anything.
inline bool isGiven(const char *text) {
  return text != nullptr && text[0] != '\0';
}

// Copies a text and its terminator; what does not fit is cut off. A null text counts as empty.
void copyText(std::span<char> to, const char *text);

// As copyText, but a text that does not fit leaves `to` empty. Returns whether it fitted.
bool copyWholeText(std::span<char> to, const char *text);

// The decimal number at the start of a text, after white space, in the C locale whatever the host's
// is. No number there: 0. A number too large for a double: infinity; one too small: 0.
double readDecimal(const char *text);

// printf's "%.<digits>g" in the C locale, with its terminator. `to` has room for 32 characters.
void writeGeneral(std::span<char> to, double value, int digits);

// printf's "%d", with its terminator. `to` has room for 12 characters.
void writeInteger(std::span<char> to, int32_t value);

}  // namespace setup
