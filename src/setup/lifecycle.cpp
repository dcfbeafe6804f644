// SPDX-License-Identifier: MIT
// A setup from CreateSetup to DestroySetup.
#include "raxel/memory.h"
#include "raxel/profile.h"
#include "raxel/settings.h"
#include "raxel/stream.h"
#include "raxel/text.h"
#include "runtime/blocks.h"
#include "runtime/host_output.h"
#include "runtime/settings_block.h"
#include "runtime/settings_in_use.h"
#include "setup/profile_load.h"
#include "setup/settings.h"
#include "setup/strings.h"
#include "setup/text.h"

namespace setup {
namespace {

// The section of this mode's keys. The default mode is named in the filter's own section, not in
// the application's.
void chooseMode(RasterSetup &record, const char *mode) {
  if (isGiven(mode)) {
    copyText(record.szModeName, mode);
    return;
  }
  GetPrivateProfileString(szFilter, keyName(Key::Mode), "", record.szModeName, RAXEL_NAME_ROOM,
                          record.szProfilePath);
  record.szModeName[RAXEL_NAME_ROOM - 1] = '\0';
}

// The output of a metafile session that was never ended: nobody could close it any more.
void closeSessionOutput(RasterSetup &record) {
  if (record.hOutFile == 0) return;
  kvlClose(record.hOutFile);
  runtime::handOverBlock(record.lpOutputMemory, record.lpStatus);
}

}  // namespace
}  // namespace setup

Handle CreateSetup(HostWord /*reserved*/, const char *profile, const char *mode, const char *application) {
  const Handle handle = runtime::allocate(sizeof(RasterSetup));
  if (handle == 0) return 0;
  hRaster = handle;
  lpRaster = runtime::lockSettings(handle);
  RasterSetup &record = *lpRaster;
  // For the rest of the process: "raxel" is "RAXEL" in section names and driver names.
  if (szFilter != nullptr) strupr(szFilter);

  if (setup::findProfile(record, profile)) {
    setup::copyText(record.szAppName, setup::isGiven(application) ? application : szFilter);
    setup::chooseMode(record, mode);
    // Without a "Driver" value the options keep their zeros; the defaults do not step in.
    setup::loadProfile(record);
  } else {
    setup::useDefaults(record);
  }
  GlobalUnlock(handle);
  return handle;
}

int32_t EditSetup(Handle setup, HostWord data) {
  RasterSetup *record = runtime::lockSettings(setup);
  if (record == nullptr) return RAXEL_REFUSED;
  lpRaster = record;
  record->dwEditData = data;
  return 0;
}

int32_t DestroySetup(Handle setup) {
  RasterSetup *record = runtime::lockSettings(setup);
  if (record == nullptr) return 1;
  runtime::SettingsInUse::forget(record);
  setup::closeSessionOutput(*record);
  if (hRaster == setup) hRaster = 0;
  if (hSetup == setup) hSetup = 0;
  if (lpSetup == record) lpSetup = nullptr;
  lpRaster = nullptr;
  GlobalUnlock(setup);
  GlobalFree(setup);
  return 0;
}

int32_t SaveProfile() {
  return 1;  // the escapes write each key as they change it
}

int32_t BackupProfile(RasterSetup *record) {
  if (record == nullptr) return 0;
  setup::copyText(record->szReserved, record->szProfilePath);
  KVLGetTempFileName(0, nullptr, 0, record->szProfilePath);
  return 1;
}

HostWord LoadProfileList(HostWord first, ...) {
  return first;
}
