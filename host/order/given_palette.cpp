// SPDX-License-Identifier: MIT
#include "order/given_palette.h"

#include <strings.h>

#include <cerrno>

#include "failure.h"
#include "order/palettes.h"
#include "pictures/picture.h"
#include "prepare/distinct.h"

namespace host {
namespace {

constexpr Wanted kPaletteFile{
    "palette", "a palette in it", "is no palette: give a GIMP palette (.gpl), or a picture of few colours",
    [](std::span<const uint8_t> bytes) { return beginsAsGimpPalette(bytes) || kPicture.mayBegin(bytes); },
    uint64_t{1} << 32};

[[noreturn]] void fail(const Input &input, const std::string &what) {
  throw Failure(kNoInput, input.name() + ": " + what);
}

// A table as it stands; without one, the colours in the order in which they appear.
Palette colorsOf(const Picture &picture, const Input &input) {
  const prepare::Source source(picture.view, RAXEL_TREAT_NONE, nullptr);
  if (picture.view.table) {
    const auto table = source.table().first(source.colors());
    return {table.begin(), table.end()};
  }
  prepare::DistinctColors distinct;
  std::vector<uint8_t> room(size_t{3} * source.width());
  for (uint32_t y = 0; y < source.height(); ++y) {
    const uint8_t *row = source.colorsOf(y, room.data());
    for (size_t x = 0; x < source.width(); ++x) {
      if (!distinct.add(row + 3 * x, kMostColors))
        fail(input,
             "has more than " + std::to_string(kMostColors) + " colours, which is too many for a palette");
    }
  }
  return {distinct.colors().begin(), distinct.colors().end()};
}

Palette readPalette(const Input &input, const Background &background) {
  if (!kPaletteFile.mayBegin(input.bytes())) fail(input, kPaletteFile.unlike);
  if (!beginsAsGimpPalette(input.bytes())) return colorsOf(*readPicture(input, background), input);
  try {
    return readGimpPalette(input.bytes());
  } catch (const Unreadable &why) {
    fail(input, why.what());
  }
}

std::string allNames() {
  std::string names;
  for (const NamedPalette &palette : kPalettes)
    names += (names.empty() ? "" : " ") + std::string(palette.name);
  return names;
}

}  // namespace

const NamedPalette *findPalette(const std::string &name) {
  for (const NamedPalette &palette : kPalettes) {
    if (strcasecmp(std::string(palette.name).c_str(), name.c_str()) == 0) return &palette;
  }
  return nullptr;
}

Palette givenPalette(const Options &options) {
  if (options.palette.empty()) return {};
  if (const NamedPalette *named = findPalette(options.palette))
    return {named->colors.begin(), named->colors.end()};
  try {
    return readPalette(Input(options.palette, kPaletteFile), options.background);
  } catch (const Failure &failure) {
    if (failure.error() != ENOENT) throw;
    throw Failure(kNoInput, failure.what() + ("; those with names are " + allNames()), ENOENT);
  }
}

}  // namespace host
