// SPDX-License-Identifier: MIT
#include "setup/strings.h"

#include <algorithm>
#include <cstring>
#include <iterator>

// Searched from the top; the last entry stands for every id that is not here. 12, 14, 16 and 26 are
// not, and 26 on purpose: the key that chooses strips or tiles goes by the name "Not Defined".
const StringTableEntry gStringTable[25] = {
    {0, "~Defaults"},
    {1, "~Mode"},
    {2, "~Header"},
    {3, "~Default Mode"},
    {4, "Driver"},
    {6, "DefaultFileSpec"},
    {7, "Font"},
    {11, "Color Mode"},
    {15, "User-Defined Patterns"},
    {5, "ColorTableSource"},
    {8, "Color"},
    {9, "FILE"},
    {10, "PROFILE"},
    {17, "Bitmap Mode"},
    {18, "Resolution Mode"},
    {19, "X Resolution"},
    {20, "Y Resolution"},
    {21, "Width"},
    {22, "Height"},
    {23, "File Type"},
    {24, "Compression Mode"},
    {13, "TIF Export"},
    {25, "Size Mode"},
    {27, "Line Mode"},
    {65535, "Not Defined"},
};

namespace setup {
namespace {

const char *textOrNotDefined(const StringTableEntry *found) {
  return found != nullptr ? found->text : std::rbegin(gStringTable)->text;
}

}  // namespace

const StringTableEntry *findText(uint16_t id) {
  const auto *end = std::end(gStringTable);
  const auto *found = std::find_if(std::begin(gStringTable), end,
                                   [id](const StringTableEntry &entry) { return entry.id == id; });
  return found == end ? nullptr : found;
}

const char *keyName(Key key) {
  return textOrNotDefined(findText(static_cast<uint16_t>(key)));
}

}  // namespace setup

int32_t LoadString(HostWord /*module*/, uint32_t id, char *buffer, int32_t size) {
  const StringTableEntry *found = setup::findText(static_cast<uint16_t>(id));
  const char *text = setup::textOrNotDefined(found);
  const auto length = static_cast<int32_t>(std::strlen(text));
  // A text that does not fit stays without its terminator: callers pass more room than any text.
  const int32_t copied = std::min(size, length + 1);
  if (buffer != nullptr && copied > 0) std::memcpy(buffer, text, static_cast<size_t>(copied));
  return found != nullptr ? length : 0;
}
