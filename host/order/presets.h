// SPDX-License-Identifier: MIT
// Options for a purpose, by one name.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace host {

struct Preset {
  std::string_view name;
  std::string_view about;
  std::string_view options;  // as on a command line, without the dashes: "dpi=203 pages"
};

// Fax pages are 1728 dots wide at 204 an inch, in rows of 98, 196 or 391 an inch (ITU-T T.4); an even
// number of them stays within the sheet. What is in fax codes is one strip, as printers and fax programs
// read it; an archive may be of LZW, which is never one strip.
inline constexpr auto kPresets = std::to_array<Preset>({
    {"archive", "to be kept: colours of 8 bits as they are, profiles where the mode allows, and checked",
     "compress=auto predictor=auto icc=keep verify"},
    {"fax-standard", "pages for fax programs",
     "mode=bilevel compress=t4 strips=one pages dpi=204x98 size=1728xpx paper=a4"},
    {"fax-fine", "the same in fine resolution",
     "mode=bilevel compress=t4 strips=one pages dpi=204x196 size=1728xpx paper=a4"},
    {"fax-superfine", "the same in superfine resolution",
     "mode=bilevel compress=t4 strips=one pages dpi=204x391 size=1728xpx paper=a4"},
    {"label", "for label printers: black and white without dots",
     "mode=bilevel compress=t6 strips=one threshold=auto dpi=203"},
});

// Throws a Failure with kUsage for none.
const Preset &findPreset(const std::string &name);

}  // namespace host
