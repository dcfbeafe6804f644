// SPDX-License-Identifier: MIT
// Leptonica, loaded when the first picture needs it: it and the libraries under it take longer to load
// than a small picture takes to export.
#pragma once

#include <leptonica/allheaders.h>

namespace prepare {

struct Leptonica {
  decltype(&::setMsgSeverity) setMsgSeverity;
  decltype(&::leptSetStderrHandler) leptSetStderrHandler;
  decltype(&::pixReadMem) pixReadMem;
  decltype(&::pixReadHeaderMem) pixReadHeaderMem;
  decltype(&::pixCreate) pixCreate;
  decltype(&::pixDestroy) pixDestroy;
  decltype(&::pixGetData) pixGetData;
  decltype(&::pixGetWpl) pixGetWpl;
  decltype(&::pixGetDepth) pixGetDepth;
  decltype(&::pixGetSpp) pixGetSpp;
  decltype(&::pixGetDimensions) pixGetDimensions;
  decltype(&::pixGetResolution) pixGetResolution;
  decltype(&::pixGetColormap) pixGetColormap;
  decltype(&::pixcmapGetCount) pixcmapGetCount;
  decltype(&::pixcmapGetRGBA) pixcmapGetRGBA;
  decltype(&::pixMedianCutQuantGeneral) pixMedianCutQuantGeneral;
  decltype(&::numaCreate) numaCreate;
  decltype(&::numaAddNumber) numaAddNumber;
  decltype(&::numaDestroy) numaDestroy;
  decltype(&::numaSplitDistribution) numaSplitDistribution;
  decltype(&::pixSauvolaBinarizeTiled) pixSauvolaBinarizeTiled;
};

// The functions, or null when the library cannot be loaded. The answer stays the same.
const Leptonica *leptonica();

}  // namespace prepare
