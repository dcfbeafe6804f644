// SPDX-License-Identifier: MIT
// Settings changed and asked for by numbered escapes, with values and answers in places of exactly their
// size, beside a plain copy of what a setup holds; and now and then a profile to load and save.
#include <cstring>
#include <limits>
#include <string>

#include "files.h"
#include "input.h"
#include "raxel/raxel.h"
#include "support/temp_dir.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using fuzz::oneOf;

// The stored code of each number that a host sends, from the first on.
struct Codes {
  int32_t first;
  std::vector<int32_t> stored;

  bool know(int32_t asked) const {
    return asked >= first && asked - first < static_cast<int32_t>(stored.size());
  }
  int32_t of(int32_t asked) const { return stored[static_cast<size_t>(asked - first)]; }
};

const Codes kColors{RAXEL_ASK_COLORS,
                    {RAXEL_STORED_COLORS, RAXEL_STORED_COLORS_INVERT, RAXEL_STORED_COLORS_INVERT_GREY,
                     RAXEL_STORED_COLORS_GREY, RAXEL_STORED_COLORS_GREY_INVERT}};
const Codes kModes{RAXEL_ASK_MODE_BILEVEL,
                   {RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_MODE_GREY16, RAXEL_STORED_MODE_GREY256,
                    RAXEL_STORED_MODE_COLOR8, RAXEL_STORED_MODE_COLOR16, RAXEL_STORED_MODE_COLOR256,
                    RAXEL_STORED_MODE_RGB}};
const Codes kCompressions{
    RAXEL_ASK_COMPRESS_NONE,
    {RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_STORED_COMPRESS_HUFFMAN,
     RAXEL_STORED_COMPRESS_LZW, RAXEL_STORED_COMPRESS_T4, RAXEL_STORED_COMPRESS_T6}};
const Codes kResolutions{RAXEL_ASK_RESOLUTION_DISPLAY,
                         {RAXEL_STORED_RESOLUTION_DISPLAY, RAXEL_STORED_RESOLUTION_PRINTER,
                          RAXEL_STORED_RESOLUTION_PICTURE, RAXEL_STORED_RESOLUTION_USER}};
const Codes kSizes{RAXEL_ASK_SIZE_DISPLAY,
                   {RAXEL_STORED_SIZE_DISPLAY, RAXEL_STORED_SIZE_PRINTER, RAXEL_STORED_SIZE_PICTURE,
                    RAXEL_STORED_SIZE_USER}};

// The options of a record.
struct Options {
  int32_t colors, mode, compression, sizes, resolutions, x, y;
  uint64_t width, height;  // the bits of the numbers: what is no number stays the same, too
  HostWord user;
  bool operator==(const Options &) const = default;
};

uint64_t bitsOf(double number) {
  uint64_t bits;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}

Options optionsOf(const RasterSetup &record) {
  return {record.nColorMode,      record.nBitmapMode,       record.nCompressionMode,  record.nSizeMode,
          record.nResolutionMode, record.tiff.nXResolution, record.tiff.nYResolution, bitsOf(record.dWidth),
          bitsOf(record.dHeight), record.dwUserData};
}

template <class T>
T valueAt(const uint8_t *at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

bool isTerminated(const char *text, size_t room) {
  return std::memchr(text, 0, room) != nullptr;
}

// One escape: what is sent, and what should come of it.
class Call {
 public:
  explicit Call(fuzz::Input &input)
      : number_(oneOf<int32_t>(input, {RAXEL_ESCAPE_SET_COLOR_MODE,
                                       RAXEL_ESCAPE_SET_BITMAP_MODE,
                                       RAXEL_ESCAPE_SET_COMPRESSION,
                                       RAXEL_ESCAPE_SET_X_RESOLUTION,
                                       RAXEL_ESCAPE_SET_Y_RESOLUTION,
                                       RAXEL_ESCAPE_SET_WIDTH,
                                       RAXEL_ESCAPE_SET_HEIGHT,
                                       RAXEL_ESCAPE_GET_RESOLUTION,
                                       RAXEL_ESCAPE_GET_SIZE,
                                       RAXEL_ESCAPE_SET_RESOLUTION_MODE,
                                       RAXEL_ESCAPE_SET_SIZE_MODE,
                                       RAXEL_ESCAPE_SET_USER_DATA,
                                       RAXEL_ESCAPE_GET_USER_DATA,
                                       RAXEL_ESCAPE_GET_RASTER_INFO,
                                       RAXEL_ESCAPE_GET_COLOR_MODE,
                                       RAXEL_ESCAPE_SET_OUTPUT_PROC,
                                       -1,
                                       0,
                                       2,
                                       8,
                                       15,
                                       20,
                                       24,
                                       27,
                                       55,
                                       58,
                                       80,
                                       82,
                                       INT32_MAX,
                                       INT32_MIN})),
        isInches_(number_ == RAXEL_ESCAPE_SET_WIDTH || number_ == RAXEL_ESCAPE_SET_HEIGHT) {
    size_ = isInches_ ? 8 : 4;
    if (input.once(8)) size_ = oneOf<int32_t>(input, {0, 1, 3, 4, 5, 8, 16, -1, -8, INT32_MAX, INT32_MIN});
    chooseValue(input);
    const unsigned missing = input.byte();
    hasInput_ = missing % 32 != 1;
    hasOutput_ = missing % 32 != 2;
    odd_ = missing % 2 == 1;
  }

  void carryOut(Handle setup, Options &options, int32_t save) {
    const fuzz::Exact sent(value_, odd_);
    const std::vector<uint8_t> before(answerBytes(), 0xC3);
    const fuzz::Exact answer(before, odd_);
    const bool isWord = number_ == RAXEL_ESCAPE_SET_USER_DATA || number_ == RAXEL_ESCAPE_SET_OUTPUT_PROC;
    const void *input = hasInput_ ? sent.data() : nullptr;
    const int32_t result =
        xEscapeSetup(setup, number_, size_, input, hasOutput_ ? answer.data() : nullptr, save);
    // The procedure is only kept, and must not be called.
    if (isWord) lpRaster->lpfnOutputProc = nullptr;
    fuzz::require(result == RAXEL_ESCAPE_DONE || result == RAXEL_ESCAPE_UNKNOWN || result == RAXEL_REFUSED,
                  "an answer that an escape may give");
    if (number_ == RAXEL_ESCAPE_GET_RASTER_INFO) {
      options = optionsOf(*lpRaster);  // some of them follow the picture
    } else {
      fuzz::require(result == expected(input, options), "the answer of the plain rules");
      if (result == RAXEL_ESCAPE_DONE && hasOutput_) check(answer.data(), options);
    }
    fuzz::require(optionsOf(*lpRaster) == options, "the options of the plain rules");
  }

 private:
  void chooseValue(fuzz::Input &input) {
    value_.clear();
    if (number_ == RAXEL_ESCAPE_GET_RASTER_INFO) {
      for (int word = 0; word < 7; ++word) {
        put(oneOf<int32_t>(input, {0, 1, 96, 300, 640, -1, -100, 32767, INT32_MAX, INT32_MIN,
                                   static_cast<int32_t>(input.word())}));
      }
    } else if (isInches_) {
      put(oneOf(input, {6.67, 0.03125, 22.0, 0.031, 22.01, 0.0, -1.0, 1e300, -1e300, 8.5,
                        std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                        input.between(0, 2300) / 100.0}));
    } else {
      put(input.once(8) ? static_cast<int32_t>(input.quad())
                        : static_cast<int32_t>(input.between(0, 420)) - (input.once(16) ? 420 : 0));
      if (input.once(2)) {
        value_.clear();
        put(oneOf<int32_t>(input, {RAXEL_ASK_COLORS, RAXEL_ASK_MODE_BILEVEL, RAXEL_ASK_COMPRESS_NONE, 0}) +
            input.byte() % 9 - 1);
      }
    }
    // A value of another size than the escape takes is not looked at.
    const int32_t taken = number_ == RAXEL_ESCAPE_GET_RASTER_INFO ? 28 : isInches_ ? 8 : 4;
    if (size_ != taken && number_ != RAXEL_ESCAPE_GET_RASTER_INFO) value_.clear();
  }
  template <class T>
  void put(T value) {
    const size_t at = value_.size();
    value_.resize(at + sizeof value);
    std::memcpy(&value_[at], &value, sizeof value);
  }

  size_t answerBytes() const {
    switch (number_) {
      case RAXEL_ESCAPE_GET_RESOLUTION:
        return 8;
      case RAXEL_ESCAPE_GET_SIZE:
        return 16;
      case RAXEL_ESCAPE_GET_USER_DATA:
        return 4;
      case RAXEL_ESCAPE_GET_RASTER_INFO:
        return 12;
      case RAXEL_ESCAPE_GET_COLOR_MODE:
        return size_ == 4 ? 4 : 0;
      default:
        return 0;
    }
  }

  int32_t setCode(const void *input, const Codes &codes, int32_t &option) const {
    if (size_ != 4 || input == nullptr) return RAXEL_REFUSED;
    const auto asked = valueAt<int32_t>(static_cast<const uint8_t *>(input));
    if (!codes.know(asked)) return RAXEL_REFUSED;
    option = codes.of(asked);
    return RAXEL_ESCAPE_DONE;
  }
  // Modes that are none are taken for no change.
  int32_t setMode(const void *input, const Codes &codes, int32_t &option) const {
    if (size_ != 4) return RAXEL_ESCAPE_DONE;
    if (input == nullptr) return RAXEL_REFUSED;
    setCode(input, codes, option);
    return RAXEL_ESCAPE_DONE;
  }
  int32_t setResolution(const void *input, int32_t &option) const {
    if (size_ != 4 || input == nullptr) return RAXEL_REFUSED;
    const auto asked = valueAt<int32_t>(static_cast<const uint8_t *>(input));
    if (asked < 32 || asked > 400) return RAXEL_REFUSED;
    option = asked;
    return RAXEL_ESCAPE_DONE;
  }
  int32_t setInches(const void *input, uint64_t &option) const {
    if (size_ != 8 || input == nullptr) return RAXEL_REFUSED;
    const auto asked = valueAt<double>(static_cast<const uint8_t *>(input));
    if (!(asked >= 0.03125 && asked <= 22.0)) return RAXEL_REFUSED;
    option = bitsOf(asked);
    return RAXEL_ESCAPE_DONE;
  }

  int32_t expected(const void *input, Options &options) const {
    const int32_t given = hasOutput_ ? int32_t{RAXEL_ESCAPE_DONE} : int32_t{RAXEL_REFUSED};
    switch (number_) {
      case RAXEL_ESCAPE_SET_COLOR_MODE:
        return setCode(input, kColors, options.colors);
      case RAXEL_ESCAPE_SET_BITMAP_MODE:
        return setCode(input, kModes, options.mode);
      case RAXEL_ESCAPE_SET_COMPRESSION:
        return setCode(input, kCompressions, options.compression);
      case RAXEL_ESCAPE_SET_X_RESOLUTION:
        return setResolution(input, options.x);
      case RAXEL_ESCAPE_SET_Y_RESOLUTION:
        return setResolution(input, options.y);
      case RAXEL_ESCAPE_SET_WIDTH:
        return setInches(input, options.width);
      case RAXEL_ESCAPE_SET_HEIGHT:
        return setInches(input, options.height);
      case RAXEL_ESCAPE_SET_RESOLUTION_MODE:
        return setMode(input, kResolutions, options.resolutions);
      case RAXEL_ESCAPE_SET_SIZE_MODE:
        return setMode(input, kSizes, options.sizes);
      case RAXEL_ESCAPE_SET_USER_DATA:
        options.user = reinterpret_cast<HostWord>(input);
        return RAXEL_ESCAPE_DONE;
      case RAXEL_ESCAPE_SET_OUTPUT_PROC:
        return RAXEL_ESCAPE_DONE;
      case RAXEL_ESCAPE_GET_RESOLUTION:
      case RAXEL_ESCAPE_GET_SIZE:
      case RAXEL_ESCAPE_GET_USER_DATA:
        return given;
      case RAXEL_ESCAPE_GET_COLOR_MODE:
        if (size_ != 4) return RAXEL_ESCAPE_DONE;
        return isColorMode(options.colors) ? given : int32_t{RAXEL_REFUSED};
      default:
        return RAXEL_ESCAPE_UNKNOWN;
    }
  }
  static bool isColorMode(int32_t stored) {
    return std::find(kColors.stored.begin(), kColors.stored.end(), stored) != kColors.stored.end();
  }

  void check(const uint8_t *answer, const Options &options) const {
    const bool ownSize = options.sizes == RAXEL_STORED_SIZE_PICTURE;
    const bool ownResolution = options.resolutions == RAXEL_STORED_RESOLUTION_PICTURE;
    switch (number_) {
      case RAXEL_ESCAPE_GET_RESOLUTION:
        fuzz::require(valueAt<int32_t>(answer) == (ownResolution ? 0 : options.x),
                      "the columns' resolution");
        fuzz::require(valueAt<int32_t>(answer + 4) == (ownResolution ? 0 : options.y),
                      "the rows' resolution");
        break;
      case RAXEL_ESCAPE_GET_SIZE:
        fuzz::require(valueAt<uint64_t>(answer) == (ownSize ? 0 : options.width), "the width");
        fuzz::require(valueAt<uint64_t>(answer + 8) == (ownSize ? 0 : options.height), "the height");
        break;
      case RAXEL_ESCAPE_GET_USER_DATA:
        fuzz::require(valueAt<uint32_t>(answer) == static_cast<uint32_t>(options.user), "the user's data");
        break;
      case RAXEL_ESCAPE_GET_COLOR_MODE:
        if (size_ == 4) {
          const auto asked = valueAt<int32_t>(answer);
          fuzz::require(kColors.know(asked) && kColors.of(asked) == options.colors, "the colour mode");
        }
        break;
      default:
        break;
    }
  }

  int32_t number_;
  bool isInches_;
  int32_t size_ = 0;
  std::vector<uint8_t> value_;
  bool hasInput_ = true, hasOutput_ = true, odd_ = false;
};

std::string text(fuzz::Input &input) {
  const auto bytes = input.bytes(input.byte() % 160);
  return std::string(bytes.begin(), bytes.end()).c_str();
}

void checkNames(const RasterSetup &record) {
  fuzz::require(isTerminated(record.szAppName, sizeof record.szAppName) &&
                    isTerminated(record.szModeName, sizeof record.szModeName) &&
                    isTerminated(record.szProfilePath, sizeof record.szProfilePath) &&
                    isTerminated(record.szDriverName, sizeof record.szDriverName),
                "names end");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const support::TempDir dir;
  static const std::string file = dir.file("raxel.ini");
  fuzz::Input input(data, size);
  SetDisplayInfo(input.byte(), input.byte(), static_cast<int16_t>(input.byte() - 8),
                 static_cast<int16_t>(input.byte() - 8));
  SetPrinterInfo(input.byte() / 16.0, input.byte() / 16.0, input.byte(), input.byte());
  const bool hasProfile = input.once(8);
  std::string mode = "MODE", application = "APP";
  if (hasProfile) {
    if (input.once(4)) mode = text(input);
    if (input.once(4)) application = text(input);
    const auto values = input.bytes(input.word() % 400);
    fuzz::writeWhole(file, "[MODE]\nDriver=RAXEL.1\n" + std::string(values.begin(), values.end()));
  }
  const Handle setup =
      CreateSetup(0, hasProfile ? file.c_str() : "/nonexistent.ini", mode.c_str(), application.c_str());
  const auto &record = *static_cast<const RasterSetup *>(GlobalLock(setup));
  checkNames(record);
  Options options = optionsOf(record);
  unsigned saves = hasProfile ? 2 : 0;
  for (size_t calls = 0; input.left() > 0 && calls < 60; ++calls) {
    Call call(input);
    const bool save = saves > 0 && input.once(4);
    if (save) --saves;
    call.carryOut(setup, options, save);
  }
  checkNames(record);
  LimitCheck();
  fuzz::require(record.tiff.nXResolution >= 32 && record.tiff.nXResolution <= 400 &&
                    record.tiff.nYResolution >= 32 && record.tiff.nYResolution <= 400 &&
                    record.dWidth >= 0.03125 && record.dWidth <= 22 && record.dHeight >= 0.03125 &&
                    record.dHeight <= 22,
                "limits that hold");
  DestroySetup(setup);
  return 0;
}
