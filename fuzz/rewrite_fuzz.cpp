// SPDX-License-Identifier: MIT
// Profiles of any bytes rewritten: after each write they are what a plain editor of their lines makes of
// them. Input: a few writes (what to do, section, key and value with their lengths), then the profile. Most
// profiles are edited between two streams, as a file takes longer than its edit.
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>

#include "files.h"
#include "input.h"
#include "raxel/profile.h"
#include "raxel/stream.h"
#include "runtime/ini.h"
#include "support/stream_procedure.h"
#include "support/temp_dir.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

struct Write {
  std::string section;
  bool hasKey = true, hasValue = true;
  std::string key, value;
};

// ---- The plain editor. Texts end at their first zero byte, as a host's do; lines are bytes.

// Lines of at most 256 bytes; longer ones come in pieces, and the end of one of exactly 256 is a line more.
std::vector<std::string> linesOf(const std::string &text) {
  std::vector<std::string> lines;
  std::string line;
  for (size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (line.size() == 256) {
      lines.push_back(std::exchange(line, ""));
    } else if (c == '\n' || (c == '\r' && at + 1 < text.size())) {
      at += c == '\r' && text[at + 1] == '\n' ? size_t{2} : size_t{1};
      lines.push_back(std::exchange(line, ""));
    } else {
      if (c != '\r') line += c;  // one at the very end ends nothing
      ++at;
    }
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

// The first line ending of a text; both characters where there is none.
std::string endingOf(const std::string &text) {
  const size_t at = text.find_first_of("\r\n");
  if (at == std::string::npos) return "\r\n";
  if (text[at] == '\n') return "\n";
  return at + 1 < text.size() && text[at + 1] == '\n' ? "\r\n" : "\r";
}

std::string cleaned(const std::string &text, bool isHeader) {
  std::string out;
  for (size_t i = 0; i < text.size() && text[i] != '\0'; ++i) {
    const char c = text[i];
    if (c == '\r' || c == '\n') continue;
    if (isHeader && (c == '[' || c == ']')) continue;
    if (isHeader && c == '"' && (i + 1 == text.size() || text[i + 1] != '"')) continue;
    if (isHeader && c == '"') ++i;  // of two only one stays
    out += c;
  }
  out = out.substr(0, out.find(';'));
  const size_t first = out.find_first_not_of(' ');
  return first == std::string::npos ? "" : out.substr(first, out.find_last_not_of(' ') - first + 1);
}

bool equalWords(const std::string &a, const std::string &b) {
  const auto capital = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return capital(x) == capital(y); });
}

bool holdsKey(const std::string &line, const std::string &key) {
  const std::string text = line.c_str();
  const size_t equals = text.find('=');
  return equals != std::string::npos && equalWords(cleaned(text.substr(0, equals), false), key);
}

std::string edited(const std::string &text, const Write &write) {
  const std::string ending = endingOf(text), section = cleaned(write.section, true);
  const bool sets = write.hasKey && write.hasValue;
  const std::string entry = write.key + "=" + write.value;
  std::vector<std::string> out;
  const std::vector<std::string> lines = linesOf(text);
  bool found = false;
  for (size_t i = 0; i < lines.size();) {
    const bool isStart = lines[i][0] == '[' && equalWords(cleaned(lines[i], true), section);
    const std::string header = lines[i++];
    if (!isStart) {
      out.push_back(header);
      continue;
    }
    found = true;
    std::vector<std::string> kept;
    bool replaced = false;
    for (; i < lines.size() && lines[i][0] != '['; ++i) {
      if (!write.hasKey) continue;
      if (!holdsKey(lines[i], write.key)) {
        kept.push_back(lines[i]);
      } else if (sets) {
        kept.push_back(entry);
        replaced = true;
      }
    }
    if (sets && !replaced) kept.push_back(entry);
    if (!kept.empty()) out.push_back(header);
    out.insert(out.end(), kept.begin(), kept.end());
    // The header that ends the section stays as it is, even one of the same name.
    if (i < lines.size()) out.push_back(lines[i++]);
  }
  if (!found && sets) out.insert(out.end(), {"", "[" + section + "]", entry});
  std::string all;
  for (const std::string &line : out) all += line + ending;
  return all;
}

std::string text(fuzz::Input &input) {
  const auto bytes = input.bytes(input.byte() % 48);
  return std::string(bytes.begin(), bytes.end()).c_str();
}

Write writeOf(fuzz::Input &input) {
  Write write;
  const unsigned what = input.byte();
  write.hasKey = what % 8 != 1;
  write.hasValue = what % 8 != 2;
  write.section = text(input);
  write.key = text(input);
  write.value = text(input);
  return write;
}

const char *keyOf(const Write &write) {
  return write.hasKey ? write.key.c_str() : nullptr;
}

const char *valueOf(const Write &write) {
  return write.hasValue ? write.value.c_str() : nullptr;
}

Handle open(support::HostStream &host, uint32_t mode) {
  host.keepNoLog();
  KvlStreamDesc description{};
  description.lpMemVar = host.context();
  description.lpfnProc = host.procedureWord();
  const Handle stream = kvlOpen("raxel.ini", &description, mode);
  fuzz::require(stream != 0, "a stream of the target's own");
  return stream;
}

std::string editedBetweenStreams(const std::string &text, const Write &write) {
  support::HostStream profile, copy;
  profile.bytes().assign(text.begin(), text.end());
  const Handle from = open(profile, KVL_READ), to = open(copy, KVL_OUTPUT);
  kvlSetLineFormat(to, kvlGetLineFormat(from));
  const runtime::SectionName section(write.section.c_str());
  runtime::copyEdited(from, to, {section, keyOf(write), valueOf(write)});
  kvlClose(from);
  kvlClose(to);
  return {copy.bytes().begin(), copy.bytes().end()};
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const support::TempDir dir;
  static const std::string file = dir.file("raxel.ini");
  fuzz::Input input(data, size);
  const unsigned more = input.byte() % 3;
  std::vector<Write> writes(input.rarely(4) ? 1 + more : 1);
  for (Write &write : writes) write = writeOf(input);
  const auto profile = input.rest();
  std::string expected(profile.begin(), profile.end());
  if (!input.rarely(16)) {
    for (const Write &write : writes) {
      const std::string now = editedBetweenStreams(expected, write);
      expected = edited(expected, write);
      fuzz::require(now == expected, "the profile of the plain editor");
    }
    return 0;
  }
  fuzz::writeWhole(file, expected);
  for (const Write &write : writes) {
    WritePrivateProfileString(write.section.c_str(), keyOf(write), valueOf(write), file.c_str());
    expected = edited(expected, write);
    fuzz::require(fuzz::readWhole<std::string>(file) == expected, "the profile of the plain editor");
  }
  size_t files = 0;
  for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(dir.path())) ++files;
  fuzz::require(files == 1, "no temporary file stays beside the profile");
  return 0;
}
