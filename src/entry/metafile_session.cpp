// SPDX-License-Identifier: MIT
// A metafile session: the output is opened at the start, the host records a metafile, and the end
// renders it into the output and closes.
#include "entry/metafile_session.h"

#include <cstring>

#include "entry/output_stream.h"
#include "raxel/driver.h"
#include "raxel/memory.h"
#include "raxel/stream.h"
#include "runtime/bitmap_modes.h"
#include "runtime/host_output.h"
#include "runtime/host_status.h"
#include "runtime/settings_block.h"
#include "runtime/settings_in_use.h"

namespace entry {
namespace {

int32_t closeSessionOutput(RasterSetup &settings) {
  const runtime::SettingsInUse use(&settings);
  const Handle stream = settings.hOutFile;
  settings.hOutFile = 0;
  const int32_t closed = kvlClose(stream);
  // The host's procedure may have destroyed the record.
  if (!use.destroyed()) runtime::handOverBlock(settings.lpOutputMemory, settings.lpStatus);
  return closed;
}

// Takes the name over and leaves the host an empty one. False for a name that does not fit.
bool takeName(RasterSetup &settings, char *name) {
  const size_t length = name == nullptr ? 0 : strnlen(name, sizeof settings.szOutputFile);
  const bool fits = length < sizeof settings.szOutputFile;
  std::memset(settings.szOutputFile, 0, sizeof settings.szOutputFile);
  if (fits && length != 0) std::memcpy(settings.szOutputFile, name, length);
  if (name != nullptr) name[0] = '\0';
  return fits;
}

// A host's procedure has destroyed the record in the middle of the start.
int32_t withoutSettings() {
  lpRaster = nullptr;
  return RAXEL_BAD_SETUP;
}

// The colour mode by the code that the host gave for it.
int32_t externalColorMode(int32_t colorMode) {
  if (colorMode < RAXEL_STORED_COLORS || colorMode > RAXEL_STORED_COLORS_GREY_INVERT)
    return RAXEL_ASK_COLORS;
  return RAXEL_ASK_COLORS + (colorMode - RAXEL_STORED_COLORS);
}

MetafilePicture describe(Handle metafile, const RasterSetup &settings) {
  MetafilePicture picture = {};
  picture.hMetafile = metafile;
  picture.nFrameLeft = runtime::statusWord(settings.lpStatus, RAXEL_STATUS_FRAME_LEFT);
  picture.nFrameTop = runtime::statusWord(settings.lpStatus, RAXEL_STATUS_FRAME_TOP);
  picture.nFrameRight = runtime::statusWord(settings.lpStatus, RAXEL_STATUS_FRAME_RIGHT);
  picture.nFrameBottom = runtime::statusWord(settings.lpStatus, RAXEL_STATUS_FRAME_BOTTOM);
  picture.nFrameResolution = runtime::statusWord(settings.lpStatus, RAXEL_STATUS_FRAME_RESOLUTION);
  std::memcpy(picture.dGeometry, settings.dPictureGeometry, sizeof picture.dGeometry);
  picture.dRoundedWidth = settings.dRoundedWidth;
  picture.dRoundedHeight = settings.dRoundedHeight;
  picture.dwPlatform = settings.dwPlatformA;
  return picture;
}

}  // namespace

void setWriterFields(TiffWriterState &tiff, int32_t bitmapMode) {
  const runtime::BitmapMode *mode = runtime::bitmapMode(bitmapMode);
  if (mode == nullptr) return;
  tiff.nPhotometric = mode->photometric;
  tiff.nBitsPerSample = mode->bitsPerSample;
  // One sample is not stored: the number that was there stays.
  if (mode->samplesPerPixel != 1) tiff.nSamplesPerPixel = mode->samplesPerPixel;
  tiff.nColors = mode->colors;
}

void tellItems(ItemCallback tell, Handle setup, Handle recordSetup, RasterSetup &settings) {
  int32_t colorMode = externalColorMode(settings.nColorMode);
  int32_t fonts = AltFontsAvailable() != 0 ? 111 : 110;
  int32_t item6 = 130;
  int32_t item3 = 1;
  const struct {
    HostWord number;
    Handle setup;
    int32_t *value;
  } items[] = {
      {1, setup, &colorMode}, {2, setup, &fonts}, {6, setup, &item6}, {5, recordSetup, &settings.nLineMode},
      {3, setup, &item3},
  };
  const runtime::SettingsInUse use(&settings);
  for (const auto &item : items) {
    tell(item.setup, item.number, sizeof *item.value, reinterpret_cast<HostWord>(item.value), 0, 0);
    if (use.destroyed()) return;
  }
}

int32_t renderMetafile(Handle metafile, RasterSetup &settings) {
  const runtime::SettingsInUse use(&settings);
  if (metafile == 0 || escape() != 0 || use.destroyed()) return RAXEL_NO_MEMORY;
  lpRaster = &settings;
  MetafilePicture picture = describe(metafile, settings);
  const int32_t result = OutputPicture(settings.hOutFile, &picture, DrawPlatformMetafile);
  if (escape() != 0 && !use.destroyed() && settings.szOutputFile[0] != '\0') {
    kvlOpen(settings.szOutputFile, nullptr, KVL_DELETE);
  }
  return result;
}

}  // namespace entry

int32_t initdvr(HostWord *record) {
  using namespace entry;
  if (record == nullptr) return RAXEL_BAD_SETUP;
  hRaster = record[RAXEL_START_SETUP];
  lpRaster = runtime::lockSettings(hRaster);
  if (lpRaster == nullptr) return RAXEL_BAD_SETUP;
  RasterSetup &settings = *lpRaster;
  const runtime::SettingsInUse use(&settings);
  // A session that was never terminated: its output is closed as it stands.
  if (settings.hOutFile != 0) closeSessionOutput(settings);
  if (use.destroyed()) return withoutSettings();

  auto *status = reinterpret_cast<HostWord *>(record[RAXEL_START_STATUS]);
  settings.lpStatus = status;
  HostWord itemCallback = 0;
  const HostWord platform =
      InitPlatformMetafileFilter(record[RAXEL_START_PLATFORM_1], record[RAXEL_START_PLATFORM_2], status,
                                 &settings.dwPlatformA, &hSetup, &settings.dwPlatformB, &itemCallback);

  auto *name = reinterpret_cast<char *>(record[RAXEL_START_NAME]);
  if (!takeName(settings, name)) return RAXEL_CANNOT_WRITE;
  const Handle output =
      openOutput({settings.szOutputFile, settings.lpfnOutputProc, status}, &settings.lpOutputMemory);
  if (use.destroyed()) {
    kvlClose(output);
    return withoutSettings();
  }
  settings.hOutFile = output;
  // A host procedure that refuses goes unnoticed here; the session then has no output.
  if (settings.hOutFile == 0 && settings.lpfnOutputProc == nullptr) return RAXEL_CANNOT_WRITE;
  if (name != nullptr) name[0] = '\0';

  setWriterFields(settings.tiff, settings.nBitmapMode);
  settings.dwStatusValue = runtime::statusWord(status, RAXEL_STATUS_VALUE);
  settings.dwPlatformResult = platform;
  record[RAXEL_START_SETUP] = hSetup;
  if (itemCallback != 0) {
    tellItems(reinterpret_cast<ItemCallback>(itemCallback), hRaster, record[RAXEL_START_SETUP], settings);
  }
  return RAXEL_OK;
}

int32_t termdvr(HostWord /*unused*/) {
  const Handle metafile = GetMetaFileHandle();
  RasterSetup *settings = lpRaster;
  const runtime::SettingsInUse use(settings);
  int32_t result =
      settings != nullptr ? entry::renderMetafile(metafile, *settings) : int32_t{RAXEL_NO_MEMORY};
  DeleteMetaFileHandle();
  const int32_t ended = TermPlatformMetafileFilter();
  if (settings != nullptr && !use.destroyed() && settings->hOutFile != 0 &&
      entry::closeSessionOutput(*settings) != 0) {
    result = RAXEL_CANNOT_WRITE;
  }
  return result == RAXEL_OK ? ended : result;
}

int32_t escape() {
  if (lpCommon == nullptr || lpCommon->lpSessStatus == nullptr) return 0;
  const HostWord *status = lpCommon->lpSessStatus;
  const int32_t stop =
      CallGetSet_Status(runtime::statusCallback(status), runtime::statusWord(status, RAXEL_STATUS_CONTEXT),
                        0, 0, 0, lpCommon->nSessStatusArg, 0, 0);
  if (stop == 0) return RAXEL_OK;
  push_er(RAXEL_STOPPED);
  return RAXEL_STOPPED;
}

int32_t esc_mode(int32_t /*on*/) {
  return 0;
}

int32_t AltFontsAvailable() {
  return 0;
}
