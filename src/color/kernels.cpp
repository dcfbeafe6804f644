// SPDX-License-Identifier: MIT
#include "color/kernels.h"

#include <algorithm>

#include "color/cmyk.h"
#include "color/depth/lookup.h"
#include "color/mirror/mirror.h"
#include "color/scale/move_avx512.h"
#include "color/scale/move_ssse3.h"

namespace color {

namespace {

// By the numbers of Vectors.
constexpr Kernels kKernels[] = {
    {.planMove = planNoMove,
     .bytesToNibbles = bytesToNibblesPlain,
     .bytesToBits = bytesToBitsPlain,
     .nibblesToBits = nibblesToBitsPlain,
     .bitsToNibbles = bitsToNibblesPlain,
     .mirrorBytes = mirrorBytesPlain,
     .mirrorTriples = mirrorTriplesPlain,
     .mirrorWords = mirrorWordsPlain,
     .cmykToRgb = cmykToRgbPlain,
     .dropAlpha = dropAlphaPlain},
#if defined(RAXEL_HAS_SSSE3)
    {.planMove = planMoveSsse3,
     .bytesToNibbles = bytesToNibblesPlain,
     .bytesToBits = bytesToBitsPlain,
     .nibblesToBits = nibblesToBitsPlain,
     .bitsToNibbles = bitsToNibblesPlain,
     .mirrorBytes = mirrorBytesSsse3,
     .mirrorTriples = mirrorTriplesSsse3,
     .mirrorWords = mirrorWordsSsse3,
     .cmykToRgb = cmykToRgbSsse3,
     .dropAlpha = dropAlphaSsse3},
#endif
#if defined(RAXEL_HAS_AVX512)
    {.planMove = planMoveAvx512,
     .bytesToNibbles = bytesToNibblesAvx512,
     .bytesToBits = bytesToBitsAvx512,
     .nibblesToBits = nibblesToBitsAvx512,
     .bitsToNibbles = bitsToNibblesAvx512,
     .mirrorBytes = mirrorBytesSsse3,
     .mirrorTriples = mirrorTriplesSsse3,
     .mirrorWords = mirrorWordsSsse3,
     .cmykToRgb = cmykToRgbSsse3,
     .dropAlpha = dropAlphaSsse3},
#endif
};

constinit Vectors mostVectors = Vectors::kAvx512;

}  // namespace

Vectors processorVectors() {
#if defined(RAXEL_HAS_AVX512)
  if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
      __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512bitalg")) {
    return Vectors::kAvx512;
  }
#endif
#if defined(RAXEL_HAS_SSSE3)
  if (__builtin_cpu_supports("ssse3")) return Vectors::kSsse3;
#endif
  return Vectors::kNone;
}

const Kernels &kernels() {
  return kKernels[static_cast<uint8_t>(std::min(mostVectors, processorVectors()))];
}

void limitVectors(Vectors most) {
  mostVectors = most;
}

}  // namespace color
