// SPDX-License-Identifier: MIT
// Profile lines on their way from the old profile to the new one.
#include <cstring>

#include "raxel/profile.h"
#include "raxel/stream.h"
#include "raxel/text.h"
#include "runtime/ini.h"

namespace runtime {

namespace {

void writeText(Handle to, const char *text) {
  kvlWrite(to, text, static_cast<int32_t>(std::strlen(text)));
}

void writeLine(Handle to, const IniLine &line) {
  kvlWriteLine(to, line.text, line.length);
}

void writeHeader(Handle to, const SectionName &section) {
  writeText(to, "[");
  writeText(to, section.text());
  kvlWriteLine(to, "]", 1);
}

void writeEntry(Handle to, const Edit &edit) {
  writeText(to, edit.key);
  writeText(to, "=");
  kvlWriteLine(to, edit.value, static_cast<int32_t>(std::strlen(edit.value)));
}

// Whether a line holds the edit's key: what stands before its first "=", without a comment and
// without spaces. A reader looks for comments in the whole line first, and takes spaces before the
// "=" for a part of the key.
bool holdsKey(IniLine line, const char *key) {
  char *equals = std::strchr(line.text, '=');
  if (equals == nullptr) return false;
  *equals = 0;
  IniCleanLine(line.text, kKeyLine);
  return stricmp(line.text, key) == 0;
}

// The lines of one occurrence of the section, as they arrive.
class SectionWriter {
 public:
  SectionWriter(Handle to, const Edit &edit) : to_(to), edit_(edit) {}

  void begin(const IniLine &header) {
    header_ = header;
    pendingHeader_ = true;
    written_ = false;
    if (sets()) writePendingHeader();
  }

  void add(const IniLine &line) {
    if (edit_.key == nullptr) return;
    if (!holdsKey(line, edit_.key)) {
      writePendingHeader();
      writeLine(to_, line);
    } else if (sets()) {
      writeEntry(to_, edit_);
      written_ = true;
    }
  }

  void end() {
    if (sets() && !written_) writeEntry(to_, edit_);
  }

 private:
  bool sets() const { return edit_.key != nullptr && edit_.value != nullptr; }

  // A header waits for the first line that stays, so that a section left empty disappears.
  void writePendingHeader() {
    if (pendingHeader_) writeLine(to_, header_);
    pendingHeader_ = false;
  }

  Handle to_;
  const Edit &edit_;
  IniLine header_ = {};
  bool pendingHeader_ = false;
  bool written_ = false;
};

// Copies all lines. Returns whether the section was among them.
bool copyLines(Handle from, Handle to, const Edit &edit) {
  SectionWriter writer(to, edit);
  bool inside = false;
  bool found = false;
  for (IniLine line; nextLine(from, line);) {
    if (inside && !line.isHeader()) {
      writer.add(line);
    } else if (inside) {
      // The header that ends the section is not looked at, even when it has the same name.
      writer.end();
      inside = false;
      writeLine(to, line);
    } else if (IniLine header = line; line.isHeader() && edit.section.matches(header)) {
      writer.begin(line);
      inside = found = true;
    } else {
      writeLine(to, line);
    }
    if (line.ended) break;
  }
  if (inside) writer.end();
  return found;
}

}  // namespace

bool copyEdited(Handle from, Handle to, const Edit &edit) {
  if (from != 0 && copyLines(from, to, edit)) return true;
  if (edit.key == nullptr || edit.value == nullptr) return false;
  kvlWriteLine(to, "", 0);
  writeHeader(to, edit.section);
  writeEntry(to, edit);
  return true;
}

}  // namespace runtime
