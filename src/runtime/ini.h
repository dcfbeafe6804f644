// SPDX-License-Identifier: MIT
// Profiles line by line, for the calls that read them and the one that rewrites them.
#pragma once

#include <climits>
#include <cstdint>
#include <span>

#include "raxel/types.h"
#include "runtime/blocks.h"

namespace runtime {

// What IniCleanLine leaves in place.
constexpr uint16_t kKeepBrackets = 1;
constexpr uint16_t kKeepQuotes = 4;
constexpr uint16_t kHeader = 0;                             // how section names are cleaned
constexpr uint16_t kKeyLine = kKeepBrackets | kKeepQuotes;  // how key lines are cleaned

constexpr int32_t kLineLength = 256;  // a longer line comes in pieces of this many bytes

struct IniLine {
  char text[kLineLength + 2];  // terminated, without its line ending; may hold zero bytes itself
  int32_t length;
  bool ended;  // nothing follows this line

  bool isEmpty() const { return length == 0; }
  bool isHeader() const { return text[0] == '['; }
};

// Reads the next line. Returns whether there was one: the last may lack its line ending.
bool nextLine(Handle stream, IniLine &line);

// A section name, cleaned. Frees itself.
class SectionName {
 public:
  explicit SectionName(const char *given);
  const char *text() const { return reinterpret_cast<const char *>(copy_.data()); }
  // Whether a line, cleaned as a header, is this name. The line is changed.
  bool matches(IniLine &line) const;

 private:
  Block copy_;
};

// The path of a name under INIDIR. Returns whether the variable is set and the path fits.
bool inProfileFolder(std::span<char> path, const char *name);

// Opens a profile under its own name or else under INIDIR, and tells the path that worked.
Handle openProfile(const char *name, uint32_t mode, std::span<char> path);

// How WritePrivateProfileString changes a profile.
struct Edit {
  const SectionName &section;
  const char *key;    // null: the whole section goes
  const char *value;  // null: the key goes
};

// Copies a profile, or nothing when `from` is 0, to a stream with an edit made. Returns whether the
// profile's section was there or was added.
bool copyEdited(Handle from, Handle to, const Edit &edit);

}  // namespace runtime
