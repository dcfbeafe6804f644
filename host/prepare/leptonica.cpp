// SPDX-License-Identifier: MIT
#include "prepare/leptonica.h"

#include <dlfcn.h>

#include "loading.h"

namespace prepare {
namespace {

using host::resolve;

void dropLine(const char *) {}

bool load(Leptonica &to) {
  // The name under which this major version of its interface is installed.
  void *library = dlopen("liblept.so.5", RTLD_NOW | RTLD_LOCAL);
  if (!library) return false;
#define RAXEL_RESOLVE(name) resolve(library, #name, to.name)
  const bool whole =
      RAXEL_RESOLVE(setMsgSeverity) && RAXEL_RESOLVE(leptSetStderrHandler) && RAXEL_RESOLVE(pixReadMem) &&
      RAXEL_RESOLVE(pixReadHeaderMem) && RAXEL_RESOLVE(pixCreate) && RAXEL_RESOLVE(pixDestroy) &&
      RAXEL_RESOLVE(pixGetData) && RAXEL_RESOLVE(pixGetWpl) && RAXEL_RESOLVE(pixGetDepth) &&
      RAXEL_RESOLVE(pixGetSpp) && RAXEL_RESOLVE(pixGetDimensions) && RAXEL_RESOLVE(pixGetResolution) &&
      RAXEL_RESOLVE(pixGetColormap) && RAXEL_RESOLVE(pixcmapGetCount) && RAXEL_RESOLVE(pixcmapGetRGBA) &&
      RAXEL_RESOLVE(pixMedianCutQuantGeneral) && RAXEL_RESOLVE(numaCreate) &&
      RAXEL_RESOLVE(numaAddNumber) && RAXEL_RESOLVE(numaDestroy) && RAXEL_RESOLVE(numaSplitDistribution) &&
      RAXEL_RESOLVE(pixSauvolaBinarizeTiled);
#undef RAXEL_RESOLVE
  if (!whole) return false;
  // Some of its lines have no severity; whoever calls says what is wrong, with the file's name.
  to.setMsgSeverity(L_SEVERITY_NONE);
  to.leptSetStderrHandler(dropLine);
  return true;
}

}  // namespace

const Leptonica *leptonica() {
  static Leptonica functions{};
  static const bool loaded = load(functions);
  return loaded ? &functions : nullptr;
}

}  // namespace prepare
