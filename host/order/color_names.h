// SPDX-License-Identifier: MIT
// Colours that options call by names.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

namespace host {

// The sixteen colours that have names in HTML.
inline constexpr auto kColorNames = std::to_array<std::pair<std::string_view, uint32_t>>({
    {"black", 0x000000},
    {"silver", 0xC0C0C0},
    {"gray", 0x808080},
    {"white", 0xFFFFFF},
    {"maroon", 0x800000},
    {"red", 0xFF0000},
    {"purple", 0x800080},
    {"fuchsia", 0xFF00FF},
    {"green", 0x008000},
    {"lime", 0x00FF00},
    {"olive", 0x808000},
    {"yellow", 0xFFFF00},
    {"navy", 0x000080},
    {"blue", 0x0000FF},
    {"teal", 0x008080},
    {"aqua", 0x00FFFF},
});

}  // namespace host
