// SPDX-License-Identifier: MIT
// Profiles of any bytes: read a value, list the keys or read a number, and now and then write or delete a
// key and read it again. Input: what to do, section, key and value with their lengths, then the profile.
#include <cstring>
#include <filesystem>
#include <string>

#include "files.h"
#include "input.h"
#include "raxel/profile.h"
#include "support/temp_dir.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

constexpr uint8_t kNullKey = 1, kNullValue = 2, kWrite = 4, kNullSection = 8;

std::string text(fuzz::Input &input) {
  const auto bytes = input.bytes(input.byte() % 64);
  return std::string(bytes.begin(), bytes.end()).c_str();  // up to the first NUL, as a host's text
}

// Reads into a block of exactly the size that is announced.
void read(const char *section, const char *key, const std::string &fallback, size_t room,
          const char *file) {
  std::vector<char> buffer(room);
  const int32_t length = GetPrivateProfileString(section, key, fallback.c_str(), buffer.data(),
                                                 static_cast<int32_t>(room), file);
  // An empty vector may have no address, and a null buffer asks how long the default is.
  const size_t most = buffer.data() == nullptr ? fallback.size() : room;
  fuzz::require(length >= 0 && static_cast<size_t>(length) <= most, "a length within the buffer");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const support::TempDir dir;
  static const std::string file = dir.file("raxel.ini");

  fuzz::Input input(data, size);
  const uint8_t what = input.byte();
  const size_t room = input.word() % 400;
  const std::string section = text(input), key = text(input), value = text(input);
  const auto profile = input.rest();
  fuzz::writeWhole(file, profile);

  const char *sectionOrNull = what & kNullSection ? nullptr : section.c_str();
  const char *keyOrNull = what & kNullKey ? nullptr : key.c_str();
  switch (what >> 4 & 3) {
    case 2:
      read(section.c_str(), nullptr, "", room, file.c_str());
      break;
    case 3:
      GetPrivateProfileInt(section.c_str(), key.c_str(), 7, file.c_str());
      break;
    default:
      read(sectionOrNull, keyOrNull, value, room, file.c_str());
      break;
  }
  if ((what & kWrite) && input.rarely(16)) {  // which takes longer than twenty profiles that are read
    WritePrivateProfileString(sectionOrNull, keyOrNull, what & kNullValue ? nullptr : value.c_str(),
                              file.c_str());
    read(section.c_str(), keyOrNull, "", room, file.c_str());
    // The rewritten profile is the one and only file that is left.
    size_t files = 0;
    for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator(dir.path())) ++files;
    fuzz::require(files == 1, "no temporary file stays beside the profile");
  }
  return 0;
}
