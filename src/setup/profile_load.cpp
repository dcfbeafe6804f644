// SPDX-License-Identifier: MIT
#include "setup/profile_load.h"

#include "raxel/profile.h"
#include "setup/default_profile.h"
#include "setup/settings.h"
#include "setup/strings.h"
#include "setup/text.h"

namespace setup {
namespace {

// One section of a profile, read key by key. Codes are taken as they are, without a range check.
struct Section {
  const char *name;
  const char *file;

  int32_t integer(Key key, int32_t fallback) const {
    return GetPrivateProfileInt(name, keyName(key), fallback, file);
  }
  int16_t resolution(Key key) const { return low16(integer(key, kDefaultResolution)); }

  // A stored value lies over the start of the default and keeps the default's remaining characters:
  // a width of 8 over "6.67" is 8.67.
  double inches(Key key, const char *fallback) const {
    char text[31] = {};
    GetPrivateProfileString(name, keyName(key), fallback, text, 30, file);
    return readDecimal(text);
  }
};

bool readDriverName(RasterSetup &record, const Section &section) {
  constexpr auto kRoom = static_cast<int32_t>(sizeof record.szDriverName);
  const int32_t length = GetPrivateProfileString(section.name, keyName(Key::Driver), "",
                                                 record.szDriverName, kRoom, section.file);
  record.szDriverName[kRoom - 1] = '\0';
  return length > 0;
}

void readModes(RasterSetup &record, const Section &section) {
  record.nColorMode = section.integer(Key::ColorMode, RAXEL_STORED_COLORS);
  record.nSizeMode = section.integer(Key::SizeMode, RAXEL_STORED_SIZE_PICTURE);
  record.nResolutionMode = section.integer(Key::ResolutionMode, RAXEL_STORED_RESOLUTION_PICTURE);
  record.nBitmapMode = section.integer(Key::BitmapMode, RAXEL_STORED_MODE_COLOR256);
  record.nLineMode = section.integer(Key::LineMode, RAXEL_STORED_LINES);
  record.tiff.wLayoutMode = static_cast<uint16_t>(section.integer(Key::Layout, RAXEL_STORED_LAYOUT_STRIPS));
  record.nCompressionMode = section.integer(Key::CompressionMode, RAXEL_STORED_COMPRESS_NONE);
}

void readResolution(RasterSetup &record, const Section &section) {
  TiffWriterState &tiff = record.tiff;
  if (record.nResolutionMode == RAXEL_STORED_RESOLUTION_PRINTER && record.bPrinterInfo == 0) {
    record.nResolutionMode = RAXEL_STORED_RESOLUTION_DISPLAY;
  }
  if (record.nResolutionMode == RAXEL_STORED_RESOLUTION_DISPLAY) {
    GetDisplayInfo(nullptr, nullptr, &tiff.nXResolution, &tiff.nYResolution);
  } else if (record.nResolutionMode == RAXEL_STORED_RESOLUTION_PRINTER) {
    GetPrinterInfo(nullptr, nullptr, &tiff.nXResolution, &tiff.nYResolution);
  } else {
    tiff.nXResolution = section.resolution(Key::XResolution);
    tiff.nYResolution = section.resolution(Key::YResolution);
  }
}

// Only sizes and resolutions that come from the profile are checked and repaired.
void readSize(RasterSetup &record, const Section &section) {
  if (record.nSizeMode == RAXEL_STORED_SIZE_PRINTER && record.bPrinterInfo == 0)
    record.nSizeMode = RAXEL_STORED_SIZE_DISPLAY;
  if (record.nSizeMode == RAXEL_STORED_SIZE_DISPLAY) {
    GetDisplayInfo(&record.dWidth, &record.dHeight, nullptr, nullptr);
  } else if (record.nSizeMode == RAXEL_STORED_SIZE_PRINTER) {
    GetPrinterInfo(&record.dWidth, &record.dHeight, nullptr, nullptr);
  } else {
    record.dWidth = section.inches(Key::Width, "6.67");
    record.dHeight = section.inches(Key::Height, "5.0");
    repairLimits(record);
  }
}

}  // namespace

bool findProfile(RasterSetup &record, const char *profile) {
  if (isGiven(profile)) {
    if (!copyWholeText(record.szProfilePath, profile)) return false;
  } else {
    learnLibraryName();
    defaultProfile(record.szProfilePath);
  }
  return record.szProfilePath[0] != '\0' && GetProfileDirectory(record.szProfilePath, nullptr) == 0;
}

bool loadProfile(RasterSetup &record) {
  const Section section = {record.szModeName, record.szProfilePath};
  if (!readDriverName(record, section)) return false;
  readModes(record, section);
  readResolution(record, section);
  readSize(record, section);
  return true;
}

}  // namespace setup

int32_t LoadProfile(int32_t /*flag*/) {
  return lpRaster != nullptr && setup::loadProfile(*lpRaster) ? 1 : 0;
}
