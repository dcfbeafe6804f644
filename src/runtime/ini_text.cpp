// SPDX-License-Identifier: MIT
// The text of profile lines: what is taken off before they are compared.
#include <cstring>

#include "raxel/profile.h"
#include "raxel/text.h"
#include "runtime/ini.h"
#include "runtime/stream_record.h"

namespace runtime {

namespace {

// Copies text over itself without the characters that the flags do not keep.
void dropCharacters(char *text, uint16_t flags) {
  char *to = text;
  for (const char *from = text; *from != 0; ++from) {
    const char c = *from;
    if (c == '\r' || c == '\n') continue;
    if ((c == '[' || c == ']') && (flags & kKeepBrackets) == 0) continue;
    if (c == '"' && (flags & kKeepQuotes) == 0) {
      // A doubled quote stands for one.
      if (from[1] != '"') continue;
      ++from;
    }
    *to++ = c;
  }
  *to = 0;
}

}  // namespace

bool nextLine(Handle stream, IniLine &line) {
  const Line read = readLine(stream, line.text, kLineLength);
  line.length = read.stored;
  line.text[read.stored] = 0;
  line.ended = read.ended;
  return !read.ended || read.stored != 0;
}

SectionName::SectionName(const char *given) : copy_(Block::ofSize(uint64_t{std::strlen(given)} + 1)) {
  char *text = reinterpret_cast<char *>(copy_.data());
  std::memcpy(text, given, std::strlen(given) + 1);
  IniCleanLine(text, kHeader);
}

bool SectionName::matches(IniLine &line) const {
  IniCleanLine(line.text, kHeader);
  return stricmp(line.text, text()) == 0;
}

}  // namespace runtime

void IniCleanLine(char *text, uint16_t flags) {
  if (text == nullptr) return;
  runtime::dropCharacters(text, flags);
  if (char *comment = std::strchr(text, ';')) *comment = 0;
  IniTrimChar(text, ' ');
}

void IniTrimChar(char *text, char character) {
  if (text == nullptr || character == 0) return;
  // Of quotes, one pair is the value's dress; more belong to the value.
  const size_t most = character == '"' ? 1 : SIZE_MAX;
  size_t length = std::strlen(text);
  size_t leading = 0;
  while (leading < most && text[leading] == character) ++leading;
  length -= leading;
  std::memmove(text, text + leading, length + 1);
  for (size_t i = 0; i < most && length > 0 && text[length - 1] == character; ++i) text[--length] = 0;
}
