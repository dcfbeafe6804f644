// SPDX-License-Identifier: MIT
#include "pictures/pam.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace host {
namespace {

constexpr size_t kLongestHeader = 1 << 20;  // comments included

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r";
  const size_t first = text.find_first_not_of(kSpace);
  if (first == text.npos) return "";
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

// From 1 up to `most`; 0 for any other, and for what is no number.
uint32_t numberOf(std::string_view text, uint32_t most) {
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && value <= most ? value : 0;
}

}  // namespace

std::optional<PamHeader> pamHeader(std::span<const uint8_t> bytes) {
  const std::string_view text(reinterpret_cast<const char *>(bytes.data()),
                              std::min(bytes.size(), kLongestHeader));
  if (!text.starts_with("P7\n")) return std::nullopt;
  PamHeader header;
  for (size_t at = 3; at < text.size();) {
    const size_t end = text.find('\n', at);
    if (end == text.npos) break;
    const std::string_view line = trimmed(text.substr(at, end - at));
    at = end + 1;
    if (line.empty() || line[0] == '#') continue;
    const size_t space = std::min(line.find_first_of(" \t"), line.size());
    const std::string_view word = line.substr(0, space), value = trimmed(line.substr(space));
    if (word == "ENDHDR") {
      header.pixelsAt = at;
      const bool isWhole = header.width && header.height && header.depth && header.most;
      return isWhole ? std::optional(header) : std::nullopt;
    }
    if (word == "WIDTH") header.width = numberOf(value, INT32_MAX);
    if (word == "HEIGHT") header.height = numberOf(value, INT32_MAX);
    if (word == "DEPTH") header.depth = numberOf(value, 4);
    if (word == "MAXVAL") header.most = numberOf(value, 65535);
    // What TUPLTYPE says, the depth says as well.
  }
  return std::nullopt;
}

bool isOpaquePam(std::span<const uint8_t> bytes) {
  const std::optional<PamHeader> header = pamHeader(bytes);
  return header && header->depth % 2 == 1;
}

}  // namespace host
