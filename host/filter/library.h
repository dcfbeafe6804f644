// SPDX-License-Identifier: MIT
// The filter, loaded as an application loads it: at run time, entries resolved by their numbers.
#pragma once

#include <string>

#include "raxel/driver.h"
#include "raxel/filter.h"
#include "raxel/host.h"
#include "raxel/profile.h"
#include "raxel/settings.h"
#include "raxel/stream.h"
#include "raxel/tiff.h"

namespace host {

// Every function of the library that this program calls.
struct Library {
  std::string path;
  uint32_t version = 0;

  // Entries of the export table.
  decltype(&::CreateSetup) createSetup = nullptr;
  decltype(&::DestroySetup) destroySetup = nullptr;
  decltype(&::xEscapeSetup) escapeSetup = nullptr;
  decltype(&::ExportCellData) exportCellData = nullptr;
  decltype(&::dd_entry) metafileEntry = nullptr;
  decltype(&::RASTER_dd_entry) rasterEntry = nullptr;

  // By name: one value of a profile; the pipeline behind ExportCellData and the settings that it works
  // with; a coder and the stream that it writes to.
  decltype(&::GetPrivateProfileString) readProfile = nullptr;
  decltype(&::WritePrivateProfileString) writeProfile = nullptr;
  decltype(&::OutputPicture) outputPicture = nullptr;
  decltype(&::lpRaster) settings = nullptr;
  decltype(&::CompressAndWrite) compressAndWrite = nullptr;
  decltype(&::kvlOpen) openStream = nullptr;
  decltype(&::kvlWrite) writeStream = nullptr;
  decltype(&::kvlClose) closeStream = nullptr;

  // Services, by name: handle memory, and what the preparation borrows.
  RaxelServices services{};
};

// Loads the library and checks its version. Throws a Failure that names what is missing. It stays loaded.
Library loadLibrary(const std::string &path);

}  // namespace host
