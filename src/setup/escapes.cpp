// SPDX-License-Identifier: MIT
// Setup escapes: the host reads and changes one option at a time by number.
#include <algorithm>
#include <iterator>

#include "raxel/memory.h"
#include "raxel/profile.h"
#include "raxel/settings.h"
#include "runtime/settings_block.h"
#include "runtime/unaligned.h"
#include "setup/option_codes.h"
#include "setup/settings.h"
#include "setup/strings.h"
#include "setup/text.h"

namespace setup {
namespace {

constexpr int32_t kDone = RAXEL_ESCAPE_DONE;
constexpr int32_t kUnknown = RAXEL_ESCAPE_UNKNOWN;
constexpr int32_t kRefused = RAXEL_REFUSED;

// One call of an escape. `input` and `output` are the host's and may lie at any address.
struct Call {
  RasterSetup &record;
  Handle handle;
  const void *input;
  void *output;
  bool save;
};

// ---- Storing a new value in the profile as well

void saveText(const Call &call, Key key, const char *text) {
  WritePrivateProfileString(call.record.szModeName, keyName(key), text, call.record.szProfilePath);
}

void saveInteger(const Call &call, Key key, int32_t value) {
  if (!call.save) return;
  char text[16];
  writeInteger(text, value);
  saveText(call, key, text);
}

// The width goes out as ".3" and the value, 6.67 as ".36.67", which reads back as 0.36. Profiles
// out there have it so, and the height has it right; the two stay as they are.
void saveWidth(const Call &call, double inches) {
  if (!call.save) return;
  char text[40] = ".3";
  writeGeneral(std::span(text).subspan(2), inches, 6);
  saveText(call, Key::Width, text);
}

void saveHeight(const Call &call, double inches) {
  if (!call.save) return;
  char text[40];
  writeGeneral(text, inches, 3);
  saveText(call, Key::Height, text);
}

// ---- Setters

// Stores an option by the host's code for it, and refuses codes that are none.
int32_t setOption(const Call &call, int32_t &field, const OptionCodes &codes, Key key) {
  if (call.input == nullptr) return kRefused;
  const auto stored = codes.toStored(runtime::load<int32_t>(call.input));
  if (!stored) return kRefused;
  field = *stored;
  saveInteger(call, key, field);
  return kDone;
}

int32_t setColorMode(const Call &call) {
  return setOption(call, call.record.nColorMode, kColorModes, Key::ColorMode);
}

int32_t setBitmapMode(const Call &call) {
  return setOption(call, call.record.nBitmapMode, kModeCodes, Key::BitmapMode);
}

int32_t setCompression(const Call &call) {
  return setOption(call, call.record.nCompressionMode, kCompressions, Key::CompressionMode);
}

int32_t setResolution(const Call &call, int16_t &field, Key key) {
  if (call.input == nullptr) return kRefused;
  const auto dotsPerInch = runtime::load<int32_t>(call.input);
  if (dotsPerInch < kLowestResolution || dotsPerInch > kHighestResolution) return kRefused;
  field = static_cast<int16_t>(dotsPerInch);
  saveInteger(call, key, field);
  return kDone;
}

int32_t setXResolution(const Call &call) {
  return setResolution(call, call.record.tiff.nXResolution, Key::XResolution);
}

int32_t setYResolution(const Call &call) {
  return setResolution(call, call.record.tiff.nYResolution, Key::YResolution);
}

int32_t setInches(const Call &call, double &field) {
  if (call.input == nullptr) return kRefused;
  const auto inches = runtime::load<double>(call.input);
  // A NaN lies in no range and is refused too.
  if (!(inches >= kSmallestSize && inches <= kLargestSize)) return kRefused;
  field = inches;
  return kDone;
}

int32_t setWidth(const Call &call) {
  const int32_t answer = setInches(call, call.record.dWidth);
  if (answer == kDone) saveWidth(call, call.record.dWidth);
  return answer;
}

int32_t setHeight(const Call &call) {
  const int32_t answer = setInches(call, call.record.dHeight);
  if (answer == kDone) saveHeight(call, call.record.dHeight);
  return answer;
}

// Modes other than 0 to 3 change nothing and are not refused. Never saved: the profile keeps its
// own mode, and a saved size or resolution counts only with the mode that stands there.
int32_t setMode(const Call &call, int32_t &field, const OptionCodes &codes) {
  if (call.input == nullptr) return kRefused;
  field = codes.toStored(runtime::load<int32_t>(call.input)).value_or(field);
  return kDone;
}

int32_t setResolutionMode(const Call &call) {
  return setMode(call, call.record.nResolutionMode, kResolutionModes);
}

int32_t setSizeMode(const Call &call) {
  return setMode(call, call.record.nSizeMode, kSizeModes);
}

// The input argument itself is the value.
int32_t setUserData(const Call &call) {
  call.record.dwUserData = reinterpret_cast<HostWord>(call.input);
  return kDone;
}

// The input argument itself is the procedure; null takes it away.
int32_t setOutputProcedure(const Call &call) {
  call.record.lpfnOutputProc = reinterpret_cast<StreamProc>(reinterpret_cast<HostWord>(call.input));
  return kDone;
}

// ---- Getters

// Puts one value after the other at the host's output.
template <class... Values>
int32_t answer(const Call &call, Values... values) {
  if (call.output == nullptr) return kRefused;
  auto *to = static_cast<uint8_t *>(call.output);
  ((runtime::store(to, values), to += sizeof values), ...);
  return kDone;
}

// Two zeros say: the picture's own.
int32_t getResolution(const Call &call) {
  if (call.record.nResolutionMode == RAXEL_STORED_RESOLUTION_PICTURE)
    return answer(call, int32_t{0}, int32_t{0});
  return answer(call, int32_t{call.record.tiff.nXResolution}, int32_t{call.record.tiff.nYResolution});
}

int32_t getSize(const Call &call) {
  if (call.record.nSizeMode == RAXEL_STORED_SIZE_PICTURE) return answer(call, 0.0, 0.0);
  return answer(call, call.record.dWidth, call.record.dHeight);
}

// 32 bits of it, also where a host word has more.
int32_t getUserData(const Call &call) {
  return answer(call, static_cast<uint32_t>(call.record.dwUserData));
}

int32_t getRaster(const Call &call) {
  if (call.input == nullptr || call.output == nullptr) return kRefused;
  GetRasterInfo(call.handle, static_cast<const RasterPictureInfo *>(call.input),
                static_cast<RasterInfoResult *>(call.output));
  return kDone;
}

int32_t getColorMode(const Call &call) {
  const auto code = kColorModes.toHost(call.record.nColorMode);
  return code ? answer(call, *code) : kRefused;
}

// ---- The table

enum : int32_t { kAnySize = 0, kPointer = -1 };

struct Escape {
  int32_t number;
  int32_t size;            // bytes that the size argument has to name
  int32_t answerToOthers;  // what any other size gets
  int32_t (*action)(const Call &);
};

constexpr Escape kEscapes[] = {
    {RAXEL_ESCAPE_SET_COLOR_MODE, 4, kRefused, setColorMode},
    {RAXEL_ESCAPE_SET_BITMAP_MODE, 4, kRefused, setBitmapMode},
    {RAXEL_ESCAPE_SET_COMPRESSION, 4, kRefused, setCompression},
    {RAXEL_ESCAPE_SET_X_RESOLUTION, 4, kRefused, setXResolution},
    {RAXEL_ESCAPE_SET_Y_RESOLUTION, 4, kRefused, setYResolution},
    {RAXEL_ESCAPE_SET_WIDTH, 8, kRefused, setWidth},
    {RAXEL_ESCAPE_SET_HEIGHT, 8, kRefused, setHeight},
    {RAXEL_ESCAPE_GET_RESOLUTION, kAnySize, kDone, getResolution},
    {RAXEL_ESCAPE_GET_SIZE, kAnySize, kDone, getSize},
    {RAXEL_ESCAPE_SET_RESOLUTION_MODE, 4, kDone, setResolutionMode},
    {RAXEL_ESCAPE_SET_SIZE_MODE, 4, kDone, setSizeMode},
    {RAXEL_ESCAPE_SET_USER_DATA, kAnySize, kDone, setUserData},
    {RAXEL_ESCAPE_GET_USER_DATA, kAnySize, kDone, getUserData},
    {RAXEL_ESCAPE_GET_RASTER_INFO, kAnySize, kDone, getRaster},
    {RAXEL_ESCAPE_GET_COLOR_MODE, 4, kDone, getColorMode},
    {RAXEL_ESCAPE_SET_OUTPUT_PROC, kPointer, kDone, setOutputProcedure},
};

bool sizeFits(const Escape &escape, int32_t size) {
  if (escape.size == kAnySize) return true;
  // A pointer's size is 4 for every host, and its own size for one that says it as it is.
  if (escape.size == kPointer) return size == 4 || size == static_cast<int32_t>(sizeof(void *));
  return size == escape.size;
}

int32_t carryOut(int32_t number, int32_t size, const Call &call) {
  const auto *escape = std::find_if(std::begin(kEscapes), std::end(kEscapes),
                                    [number](const Escape &row) { return row.number == number; });
  if (escape == std::end(kEscapes)) return kUnknown;
  return sizeFits(*escape, size) ? escape->action(call) : escape->answerToOthers;
}

}  // namespace
}  // namespace setup

int32_t xEscapeSetup(Handle setup, int32_t escape, int32_t size, const void *input, void *output,
                     int32_t save) {
  RasterSetup *record = runtime::lockSettings(setup);
  if (record == nullptr) return RAXEL_REFUSED;
  lpRaster = record;
  const int32_t result = setup::carryOut(escape, size, {*record, setup, input, output, save != 0});
  GlobalUnlock(setup);
  return result;
}
