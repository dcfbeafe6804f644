// SPDX-License-Identifier: MIT
// Tables of colours that have names.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "pictures/palette.h"

namespace host {

// The seven colours of panels of coloured ink as their makers write them, in the order in which the panels
// count them (Waveshare, 5.65inch e-Paper Module (F), its manual and the programs for it).
inline constexpr auto kEink7 = std::to_array<Palette::value_type>({
    {0x00, 0x00, 0x00},  // black
    {0xFF, 0xFF, 0xFF},  // white
    {0x00, 0xFF, 0x00},  // green
    {0x00, 0x00, 0xFF},  // blue
    {0xFF, 0x00, 0x00},  // red
    {0xFF, 0xFF, 0x00},  // yellow
    {0xFF, 0x80, 0x00},  // orange
});

// The sixteen colours that the Enhanced Graphics Adapter begins with (IBM, Options and Adapters Technical
// Reference, 1984): two thirds for a bit of colour, one third for a bit of brightness, and brown where dark
// yellow would be.
inline constexpr auto kEga16 = std::to_array<Palette::value_type>({
    {0x00, 0x00, 0x00},
    {0x00, 0x00, 0xAA},
    {0x00, 0xAA, 0x00},
    {0x00, 0xAA, 0xAA},
    {0xAA, 0x00, 0x00},
    {0xAA, 0x00, 0xAA},
    {0xAA, 0x55, 0x00},
    {0xAA, 0xAA, 0xAA},
    {0x55, 0x55, 0x55},
    {0x55, 0x55, 0xFF},
    {0x55, 0xFF, 0x55},
    {0x55, 0xFF, 0xFF},
    {0xFF, 0x55, 0x55},
    {0xFF, 0x55, 0xFF},
    {0xFF, 0xFF, 0x55},
    {0xFF, 0xFF, 0xFF},
});

// The colours that browsers once showed alike on every machine of 256 (Netscape, 1994): each channel is 0,
// 20, 40, 60, 80 or 100 percent. Red changes most slowly, and blue fastest.
inline constexpr auto kWeb216 = [] {
  std::array<Palette::value_type, size_t{6} * 6 * 6> colors{};
  for (size_t i = 0; i < colors.size(); ++i) {
    colors[i] = {static_cast<uint8_t>(i / 36 * 0x33), static_cast<uint8_t>(i / 6 % 6 * 0x33),
                 static_cast<uint8_t>(i % 6 * 0x33)};
  }
  return colors;
}();

struct NamedPalette {
  std::string_view name;
  std::string_view about;
  std::span<const Palette::value_type> colors;
};

inline constexpr auto kPalettes = std::to_array<NamedPalette>({
    {"eink7", "panels of electronic ink in seven colours, in the order in which they count them", kEink7},
    {"ega16", "the sixteen colours of old PC screens, in their order", kEga16},
    {"web216", "six levels of red, green and blue, as browsers once showed them everywhere", kWeb216},
});

// Null for none. Capitals are as good.
const NamedPalette *findPalette(const std::string &name);

}  // namespace host
