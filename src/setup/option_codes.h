// The codes by which hosts name options in escapes, and the codes that the record stores.
//
// A host's codes run on without a hole; the stored ones do not. Stored code i belongs to the host's
// code first + i.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "setup/settings.h"

namespace setup {

struct OptionCodes {
  int32_t first;
  std::span<const int32_t> stored;

  std::optional<int32_t> toStored(int32_t code) const {
    const int64_t index = int64_t{code} - first;
    if (index < 0 || index >= static_cast<int64_t>(stored.size())) return std::nullopt;
    return stored[static_cast<size_t>(index)];
  }
  std::optional<int32_t> toHost(int32_t code) const {
    for (size_t i = 0; i < stored.size(); ++i) {
      if (stored[i] == code) return first + static_cast<int32_t>(i);
    }
    return std::nullopt;
  }
};

inline constexpr int32_t kStoredColorModes[] = {103, 104, 105, 106, 107};
inline constexpr int32_t kStoredBitmapModes[] = {215, 216, 217, 218, 219, 221, 222};
inline constexpr int32_t kStoredCompressions[] = {224, 225, 226, 227, 229, 230};
inline constexpr int32_t kStoredResolutionModes[] = {307, 308, 309, 310};
inline constexpr int32_t kStoredSizeModes[] = {600, 601, 602, 603};

inline constexpr OptionCodes kColorModes = {101, kStoredColorModes};
inline constexpr OptionCodes kBitmapModes = {140, kStoredBitmapModes};
inline constexpr OptionCodes kCompressions = {150, kStoredCompressions};
inline constexpr OptionCodes kResolutionModes = {0, kStoredResolutionModes};
inline constexpr OptionCodes kSizeModes = {0, kStoredSizeModes};

}  // namespace setup
