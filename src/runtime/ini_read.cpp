// SPDX-License-Identifier: MIT
// GetPrivateProfileString and GetPrivateProfileInt.
#include <algorithm>
#include <cstring>

#include "raxel/profile.h"
#include "raxel/stream.h"
#include "raxel/text.h"
#include "runtime/ascii.h"
#include "runtime/ini.h"

namespace runtime {

namespace {

constexpr const char *kDefaultProfile = "KVL.INI";

// What the caller reads into. Without an address nothing is stored, and lengths are still told.
struct Buffer {
  char *bytes;
  size_t size;
  // The part that can be written.
  std::span<char> room() const { return {bytes, bytes == nullptr ? 0 : size}; }
};

// Copies as much as fits, without a terminator. Returns the bytes copied.
size_t overlay(std::span<char> room, const char *text) {
  const size_t n = std::min(std::strlen(text), room.size());
  if (n > 0) std::memcpy(room.data(), text, n);
  return n;
}

// The names of a section's keys, each with a zero byte behind it.
class KeyList {
 public:
  explicit KeyList(std::span<char> buffer) : buffer_(buffer) {}

  // Returns whether there was room for the name.
  bool add(const char *name) {
    const size_t length = std::strlen(name);
    if (used_ + length + 1 > buffer_.size()) return overflow(name);
    std::memcpy(buffer_.data() + used_, name, length + 1);
    used_ += length + 1;
    total_ += static_cast<int32_t>(length);
    return true;
  }
  bool isEmpty() const { return used_ == 0; }
  int32_t result() const { return total_; }

 private:
  bool overflow(const char *name) {
    const size_t size = buffer_.size();
    overlay(buffer_.subspan(used_), name);
    for (size_t i = size < 2 ? 0 : size - 2; i < size; ++i) buffer_[i] = 0;
    total_ = size == 0 ? 0 : static_cast<int32_t>(size - 1);
    used_ = size;
    return false;
  }

  std::span<char> buffer_;
  size_t used_ = 0;
  int32_t total_ = 0;
};

// Looks a key up, or lists all keys for a null one. Returns what the buffer then holds; `fallback`
// when there is nothing.
int32_t search(Handle stream, const SectionName &section, const char *key, const Buffer &buffer,
               int32_t fallback) {
  KeyList keys(buffer.room());
  bool inside = false;
  for (IniLine line; nextLine(stream, line);) {
    if (!inside) {
      // Any line may be a section's name, with brackets or without.
      inside = section.matches(line) && line.text[0] != 0;
    } else if (line.isHeader()) {
      inside = false;  // and this header is not looked at
    } else {
      IniCleanLine(line.text, kKeyLine);
      char *equals = std::strchr(line.text, '=');
      if (equals != nullptr) {
        *equals = 0;
        if (key == nullptr) {
          if (buffer.bytes == nullptr || !keys.add(line.text)) break;
        } else if (stricmp(line.text, key) == 0) {
          IniTrimChar(equals + 1, '"');
          overlay(buffer.room(), equals + 1);
          return static_cast<int32_t>(std::min(std::strlen(equals + 1), buffer.size));
        }
      }
    }
    if (line.ended) break;
  }
  return keys.isEmpty() ? fallback : keys.result();
}

// The value of a hexadecimal digit, -1 for any other character.
int32_t hexDigit(char character) {
  const int32_t c = upper(character);
  if (isDigit(character)) return c - '0';
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// The number at the start of a text, modulo 2^32; 0 where no digit is.
uint32_t parseNumber(const char *text) {
  uint32_t value = 0;
  if (text[0] == '0' && upper(text[1]) == 'X') {
    for (const char *c = text + 2; hexDigit(*c) >= 0; ++c) {
      value = value * 16 + static_cast<uint32_t>(hexDigit(*c));
    }
    return value;
  }
  for (; isDigit(*text); ++text) value = value * 10 + static_cast<uint32_t>(*text - '0');
  return value;
}

}  // namespace

}  // namespace runtime

int32_t GetPrivateProfileString(const char *section, const char *key, const char *fallback, char *buffer,
                                int32_t size, const char *file) {
  if (section == nullptr || *section == 0 || fallback == nullptr) return 0;
  const runtime::Buffer target{buffer, static_cast<size_t>(std::max(size, 0))};
  const std::span<char> room = target.room();
  std::fill(room.begin(), room.end(), char{0});
  // A value shorter than the default keeps the default's end behind it.
  const size_t placed = runtime::overlay(room, fallback);
  const auto standing = static_cast<int32_t>(buffer == nullptr ? std::strlen(fallback) : placed);
  char path[PATH_MAX];
  const Handle stream = file == nullptr ? 0 : runtime::openProfile(file, KVL_READ, path);
  if (stream == 0) return standing;
  const int32_t result = runtime::search(stream, runtime::SectionName(section), key, target, standing);
  INIclose(stream);
  return result;
}

int32_t GetPrivateProfileInt(const char *section, const char *key, int32_t fallback, const char *file) {
  char text[33] = {};
  if (key == nullptr) return fallback;
  if (GetPrivateProfileString(section, key, "", text, 32, file) == 0) return fallback;
  return static_cast<int32_t>(runtime::parseNumber(text));
}

int32_t GetProfileString(const char *section, const char *key, const char *fallback, char *buffer,
                         int32_t size) {
  return GetPrivateProfileString(section, key, fallback, buffer, size, runtime::kDefaultProfile);
}

int32_t GetProfileInt(const char *section, const char *key, int32_t fallback) {
  return GetPrivateProfileInt(section, key, fallback, runtime::kDefaultProfile);
}

int32_t WriteProfileString(const char *section, const char *key, const char *value) {
  return WritePrivateProfileString(section, key, value, runtime::kDefaultProfile);
}
