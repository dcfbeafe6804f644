// SPDX-License-Identifier: MIT
#include "filter/library.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstring>

#include "failure.h"

namespace host {
namespace {

[[noreturn]] void fail(const std::string &path, const std::string &what) {
  throw Failure(RAXEL_HOST_NO_FILTER, path + ": " + what);
}

// A loaded library with its export table.
struct Loaded {
  void *handle;
  const std::string &path;
  FilterLoadRecord table{};

  template <class Function>
  void byName(const char *name, Function &to) const {
    void *symbol = dlsym(handle, name);
    if (!symbol) fail(path, std::string("has no entry ") + name + "; it is not a whole raxel.so");
    to = reinterpret_cast<Function>(symbol);
  }

  // The row's name is looked up, except that "EscapeSetup" stands for the symbol xEscapeSetup.
  template <class Function>
  void byOrdinal(uint16_t ordinal, Function &to) const {
    for (uint16_t i = 0; i < table.count; ++i) {
      const FilterExportEntry &row = table.table[i];
      if (row.ordinal == ordinal) {
        return byName(std::strcmp(row.name, "EscapeSetup") == 0 ? "xEscapeSetup" : row.name, to);
      }
    }
    fail(path,
         "lists no entry with the number " + std::to_string(ordinal) + "; it is not a whole raxel.so");
  }
};

std::string hex(uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", value);
  return text;
}

}  // namespace

Library loadLibrary(const std::string &path) {
  Library library;
  library.path = path;
  void *handle = dlopen(library.path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) {
    const char *why = dlerror();
    // The loader's sentence names the file when it is about the file.
    throw Failure(RAXEL_HOST_NO_FILTER, std::string("cannot be loaded: ") + (why ? why : path));
  }
  Loaded loaded{handle, library.path, {}};
  decltype(&::fltLoadPointers) loadPointers = nullptr;
  loaded.byName("fltLoadPointers", loadPointers);
  loadPointers(&loaded.table);
  if (!loaded.table.table) fail(library.path, "hands out no export table");

  decltype(&::KVLGetFilterVersion) version = nullptr;
  loaded.byOrdinal(RAXEL_ORDINAL_VERSION, version);
  library.version = version();
  if (library.version != RAXEL_VERSION) {
    fail(library.path,
         "is version " + hex(library.version) + ", and this program needs version " + hex(RAXEL_VERSION));
  }
  loaded.byOrdinal(RAXEL_ORDINAL_CREATE_SETUP, library.createSetup);
  loaded.byOrdinal(RAXEL_ORDINAL_DESTROY_SETUP, library.destroySetup);
  loaded.byOrdinal(RAXEL_ORDINAL_ESCAPE_SETUP, library.escapeSetup);
  loaded.byOrdinal(RAXEL_ORDINAL_EXPORT_CELL_DATA, library.exportCellData);
  loaded.byOrdinal(RAXEL_ORDINAL_ENTRY, library.metafileEntry);
  loaded.byOrdinal(RAXEL_ORDINAL_RASTER_ENTRY, library.rasterEntry);

  loaded.byName("GetPrivateProfileString", library.readProfile);
  loaded.byName("WritePrivateProfileString", library.writeProfile);
  loaded.byName("OutputPicture", library.outputPicture);
  loaded.byName("lpRaster", library.settings);
  loaded.byName("CompressAndWrite", library.compressAndWrite);
  loaded.byName("kvlOpen", library.openStream);
  loaded.byName("kvlWrite", library.writeStream);
  loaded.byName("kvlClose", library.closeStream);

  RaxelServices &s = library.services;
  loaded.byName("GlobalAlloc", s.GlobalAlloc);
  loaded.byName("GlobalLock", s.GlobalLock);
  loaded.byName("GlobalUnlock", s.GlobalUnlock);
  loaded.byName("GlobalFree", s.GlobalFree);
  loaded.byName("rlReduceColorTable", s.rlReduceColorTable);
  loaded.byName("rlConvertBitmapDepth", s.rlConvertBitmapDepth);
  loaded.byName("rlDitherGetCT", s.rlDitherGetCT);
  loaded.byName("rlDitherGivenCT", s.rlDitherGivenCT);
  loaded.byName("rev_rgb", s.rev_rgb);
  return library;
}

}  // namespace host
