// SPDX-License-Identifier: MIT
// String and number helpers, the same in every locale.
#include "raxel/text.h"

#include "runtime/ascii.h"
#include "runtime/numbers.h"

char *strupr(char *text) {
  if (text == nullptr) return nullptr;
  for (char *c = text; *c != 0; ++c) *c = static_cast<char>(runtime::upper(*c));
  return text;
}

char *strlower(char *text) {
  if (text == nullptr) return nullptr;
  for (char *c = text; *c != 0; ++c) *c = static_cast<char>(runtime::lower(*c));
  return text;
}

char *strlwr(char *text) {
  return strlower(text);
}

int32_t stricmp(const char *a, const char *b) {
  if (a == nullptr || b == nullptr) return 0;
  while (*a != 0 && *b != 0 && runtime::upper(*a) == runtime::upper(*b)) ++a, ++b;
  return runtime::upper(*b) - runtime::upper(*a);
}

int32_t strnicmp(const char *a, const char *b, int32_t n) {
  if (a == nullptr || b == nullptr) return 0;
  for (int32_t i = 0; i < n; ++i) {
    const int32_t difference = runtime::upper(b[i]) - runtime::upper(a[i]);
    if (difference != 0) return difference;
  }
  return 0;
}

double dabs(double x) {
  return x > 0.0 ? x : -x;
}

int32_t roundd(double x) {
  return runtime::toI32(x > 0.0 ? x + 0.5 : x - 0.5);
}

int32_t feqi(int32_t a, int32_t b, int32_t tolerance) {
  // Unsigned, so that no pair overflows; a negative tolerance is a huge one.
  uint32_t distance = static_cast<uint32_t>(a) - static_cast<uint32_t>(b);
  if (distance >= 0x80000000u) distance = 0 - distance;
  return static_cast<uint32_t>(tolerance) >= distance ? 1 : 0;
}
