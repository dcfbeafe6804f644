// SPDX-License-Identifier: MIT
#include "setup/display.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "raxel/settings.h"
#include "runtime/ascii.h"
#include "setup/settings.h"
#include "setup/text.h"

namespace setup {
namespace {

constexpr DeviceInfo kUsualDisplay = {1280.0, 1078.0, 96, 96};

DeviceInfo display = {};
DeviceInfo printer = {};

using runtime::isDigit;

// The number at the start of a text: spaces, a sign, digits; clamped to 32 bits.
int32_t leadingNumber(const char *text) {
  while (runtime::isSpace(*text)) ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  int64_t value = 0;
  for (; isDigit(*text); ++text) value = std::min<int64_t>(value * 10 + (*text - '0'), int64_t{1} << 32);
  constexpr std::numeric_limits<int32_t> range;
  return static_cast<int32_t>(std::clamp<int64_t>(negative ? -value : value, range.min(), range.max()));
}

// Takes a number and moves on: over a run of digits, then over one character, never past the end.
int32_t takeNumber(const char *&text) {
  const int32_t value = leadingNumber(text);
  while (isDigit(*text)) ++text;
  if (*text != '\0') ++text;
  return value;
}

// Every output of the getters may be null.
template <class Number>
void storeIfWanted(Number *out, Number value) {
  if (out != nullptr) *out = value;
}

}  // namespace

DeviceInfo parseDisplayInfo(const char *text) {
  DeviceInfo info = {};
  info.dWidth = takeNumber(text);
  info.dHeight = takeNumber(text);
  info.nXRes = low16(takeNumber(text));
  info.nYRes = low16(takeNumber(text));
  return info;
}

DeviceInfo displayInDots() {
  const char *environment = secure_getenv("DISPLAYINFO");
  if (isGiven(environment)) return parseDisplayInfo(environment);
  DeviceInfo info = kUsualDisplay;
  if (display.dWidth != 0.0) info.dWidth = display.dWidth;
  if (display.dHeight != 0.0) info.dHeight = display.dHeight;
  if (display.nXRes != 0) info.nXRes = display.nXRes;
  if (display.nYRes != 0) info.nYRes = display.nYRes;
  return info;
}

}  // namespace setup

void SetDisplayInfo(double width, double height, int16_t xResolution, int16_t yResolution) {
  setup::display = {width, height, xResolution, yResolution};
}

void SetPrinterInfo(double width, double height, int16_t xResolution, int16_t yResolution) {
  setup::printer = {width, height, xResolution, yResolution};
}

int32_t GetDisplayInfo(double *width, double *height, int16_t *xResolution, int16_t *yResolution) {
  const setup::DeviceInfo info = setup::displayInDots();
  // Inches; a resolution of 0 makes them infinite, or no number at all.
  setup::storeIfWanted(width, info.dWidth / info.nXRes);
  setup::storeIfWanted(height, info.dHeight / info.nYRes);
  setup::storeIfWanted(xResolution, info.nXRes);
  setup::storeIfWanted(yResolution, info.nYRes);
  return 0;
}

int32_t GetPrinterInfo(double *width, double *height, int16_t *xResolution, int16_t *yResolution) {
  // As stored: no defaults and no division, so the printer's page is kept in inches.
  setup::storeIfWanted(width, setup::printer.dWidth);
  setup::storeIfWanted(height, setup::printer.dHeight);
  setup::storeIfWanted(xResolution, setup::printer.nXRes);
  setup::storeIfWanted(yResolution, setup::printer.nYRes);
  return 0;
}

int32_t GetDisplayColorInfo(HostWord /*unused*/) {
  return 0;
}
