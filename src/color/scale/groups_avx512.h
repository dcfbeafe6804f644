// SPDX-License-Identifier: MIT
// The loop over the groups of a plan, for nibbles and for bits.
#pragma once

#include <cstdint>
#include <span>

#include "color/avx512.h"
#include "color/scale/move_plan.h"

#if defined(RAXEL_HAS_AVX512)

namespace color {

// Where the first has a bit the second, else the third: for _mm512_ternarylogic_epi64.
constexpr int kChoose = 0xCA;

// The bytes that a group writes, and a mask of as many low bits.
RAXEL_AVX512 inline size_t sizeOf(const MovePlan &plan, size_t i) {
  return (i + 1 < plan.groups ? plan.group[i + 1].to : plan.bytes) - plan.group[i].to;
}
RAXEL_AVX512 inline __mmask64 firstBytes(size_t n) {
  return ~uint64_t{0} >> (64 - n);
}

// The stretch of the source that a group is taken from: 64 bytes or 128, or the first n of them.
struct Stretch {
  __m512i bytes;

  RAXEL_AVX512 static Stretch load(const uint8_t *from) { return {_mm512_loadu_si512(from)}; }
  RAXEL_AVX512 static Stretch load(const uint8_t *from, size_t n) {
    return {_mm512_maskz_loadu_epi8(firstBytes(n), from)};
  }
};
struct LongStretch {
  __m512i bytes;
  __m512i more;

  RAXEL_AVX512 static LongStretch load(const uint8_t *from) {
    return {_mm512_loadu_si512(from), _mm512_loadu_si512(from + 64)};
  }
  RAXEL_AVX512 static LongStretch load(const uint8_t *from, size_t n) {
    if (n <= 64) return {_mm512_maskz_loadu_epi8(firstBytes(n), from), _mm512_setzero_si512()};
    return {_mm512_loadu_si512(from), _mm512_maskz_loadu_epi8(firstBytes(n - 64), from + 64)};
  }
};

// Asks for memory that is needed soon. It may lie anywhere.
inline void prefetch(const uint8_t *from, size_t ahead) {
  __builtin_prefetch(reinterpret_cast<const void *>(reinterpret_cast<uintptr_t>(from) + ahead));
}

// Pixels::pick makes the 64 bytes of group i from a Pixels::Source.
template <class Pixels>
RAXEL_AVX512 size_t moveGroups(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  const uint8_t *from = source.data();
  const size_t whole = plan.reach <= source.size() ? plan.whole : 0;
  for (size_t i = 0; i < whole; ++i) {
    const MovePlan::Group &group = plan.group[i];
    const auto stretch = Pixels::Source::load(from + group.from);
    for (size_t line = 0; line < sizeof stretch; line += 64) prefetch(from + group.from, plan.ahead + line);
    _mm512_storeu_si512(out + group.to, Pixels::pick(plan, i, stretch));
  }
  for (size_t i = whole; i < plan.groups; ++i) {
    const MovePlan::Group &group = plan.group[i];
    const auto stretch = Pixels::Source::load(from + group.from, group.reads);
    _mm512_mask_storeu_epi8(out + group.to, firstBytes(sizeOf(plan, i)), Pixels::pick(plan, i, stretch));
  }
  return plan.columns;
}

}  // namespace color

#endif
