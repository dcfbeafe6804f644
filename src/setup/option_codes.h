// SPDX-License-Identifier: MIT
// The codes by which hosts name options in escapes, and the codes that the record stores.
//
// A host's codes run on without a hole; the stored ones do not. Stored code i belongs to the host's
// code first + i.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "raxel/setting_codes.h"

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

inline constexpr int32_t kStoredColors[] = {
    RAXEL_STORED_COLORS,      RAXEL_STORED_COLORS_INVERT,      RAXEL_STORED_COLORS_INVERT_GREY,
    RAXEL_STORED_COLORS_GREY, RAXEL_STORED_COLORS_GREY_INVERT,
};
inline constexpr int32_t kStoredModes[] = {
    RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_MODE_GREY16,  RAXEL_STORED_MODE_GREY256,
    RAXEL_STORED_MODE_COLOR8,  RAXEL_STORED_MODE_COLOR16, RAXEL_STORED_MODE_COLOR256,
    RAXEL_STORED_MODE_RGB,
};
inline constexpr int32_t kStoredCompressions[] = {
    RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_STORED_COMPRESS_HUFFMAN,
    RAXEL_STORED_COMPRESS_LZW,  RAXEL_STORED_COMPRESS_T4,       RAXEL_STORED_COMPRESS_T6,
};
inline constexpr int32_t kStoredResolutions[] = {
    RAXEL_STORED_RESOLUTION_DISPLAY,
    RAXEL_STORED_RESOLUTION_PRINTER,
    RAXEL_STORED_RESOLUTION_PICTURE,
    RAXEL_STORED_RESOLUTION_USER,
};
inline constexpr int32_t kStoredSizes[] = {
    RAXEL_STORED_SIZE_DISPLAY,
    RAXEL_STORED_SIZE_PRINTER,
    RAXEL_STORED_SIZE_PICTURE,
    RAXEL_STORED_SIZE_USER,
};

inline constexpr OptionCodes kColorModes = {RAXEL_ASK_COLORS, kStoredColors};
inline constexpr OptionCodes kModeCodes = {RAXEL_ASK_MODE_BILEVEL, kStoredModes};
inline constexpr OptionCodes kCompressions = {RAXEL_ASK_COMPRESS_NONE, kStoredCompressions};
inline constexpr OptionCodes kResolutionModes = {RAXEL_ASK_RESOLUTION_DISPLAY, kStoredResolutions};
inline constexpr OptionCodes kSizeModes = {RAXEL_ASK_SIZE_DISPLAY, kStoredSizes};

}  // namespace setup
