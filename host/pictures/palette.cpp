// SPDX-License-Identifier: MIT
// GIMP's palettes (GIMP developer documentation, "GIMP Palette file format"): lines of text. The first one
// says "GIMP Palette", those of the header are a word, a colon and its value, "#" begins a comment, and all
// others hold red, green and blue from 0 to 255 and perhaps the colour's name.
#include "pictures/palette.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "pictures/picture.h"

namespace host {
namespace {

constexpr std::string_view kFirstLine = "GIMP Palette", kBlanks = " \t\r";

// Takes the first line off the text, without what ends it.
std::string_view takeLine(std::string_view &text) {
  const size_t end = text.find('\n');
  std::string_view line = text.substr(0, end);
  text.remove_prefix(end == text.npos ? text.size() : end + 1);
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  return line.substr(0, line.find_last_not_of(kBlanks) + 1);
}

// "Columns: 8"
bool isHeader(std::string_view line) {
  const size_t colon = line.find(':');
  return colon != line.npos && line.find_first_of("0123456789") > colon;
}

// Takes a number and the blanks behind it off the line; false when there is none.
bool takeChannel(std::string_view &line, uint8_t &value) {
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), value);
  if (error != std::errc()) return false;
  line.remove_prefix(static_cast<size_t>(end - line.data()));
  const size_t blanks = std::min(line.find_first_not_of(kBlanks), line.size());
  const bool ends = blanks != 0 || line.empty();
  line.remove_prefix(blanks);
  return ends;
}

}  // namespace

bool beginsAsGimpPalette(std::span<const uint8_t> bytes) {
  std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);  // some editors mark UTF-8
  return takeLine(text) == kFirstLine;
}

Palette readGimpPalette(std::span<const uint8_t> bytes) {
  std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
  takeLine(text);
  Palette palette;
  for (int number = 2; !text.empty(); ++number) {
    std::string_view line = takeLine(text);
    if (line.empty() || line.front() == '#' || (palette.empty() && isHeader(line))) continue;
    std::array<uint8_t, 3> color{};
    for (uint8_t &channel : color) {
      if (!takeChannel(line, channel))
        throw Unreadable("line " + std::to_string(number) +
                         " is no colour, which begins with red, green and blue from 0 to 255");
    }
    if (palette.size() == kMostColors)
      throw Unreadable("has more than " + std::to_string(kMostColors) + " colours");
    palette.push_back(color);
  }
  if (palette.empty()) throw Unreadable("has no colours");
  return palette;
}

}  // namespace host
