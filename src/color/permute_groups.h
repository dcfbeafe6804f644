// The loop over the groups of a plan, for every kind of pixels that AVX-512 moves.
#pragma once

#include <cstdint>
#include <span>

#include "color/avx512.h"
#include "color/move_plan.h"

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

// The first kBytes of a register.
template <int kBytes>
RAXEL_AVX512 inline void storeFirst(uint8_t *to, __m512i value) {
  void *const at = to;
  if constexpr (kBytes == 16) {
    _mm_storeu_si128(static_cast<__m128i_u *>(at), _mm512_maskz_extracti32x4_epi32(15, value, 0));
  }
  if constexpr (kBytes == 32) {
    _mm256_storeu_si256(static_cast<__m256i_u *>(at), _mm512_maskz_extracti64x4_epi64(15, value, 0));
  }
  if constexpr (kBytes == 64) _mm512_storeu_si512(at, value);
}

// Asks for memory that is needed soon. It may lie anywhere.
inline void prefetch(const uint8_t *from, size_t ahead) {
  __builtin_prefetch(reinterpret_cast<const void *>(reinterpret_cast<uintptr_t>(from) + ahead));
}

// Pixels::pick makes the 64 bytes of group i from its stretch of the source.
template <class Pixels, int kBytes>
RAXEL_AVX512 size_t permuteGroups(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  const uint8_t *from = source.data();
  const size_t whole = plan.reach <= source.size() ? plan.whole : 0;
  for (size_t i = 0; i < whole; ++i) {
    const MovePlan::Group &group = plan.group[i];
    prefetch(from + group.from, plan.ahead);
    storeFirst<kBytes>(out + group.to, Pixels::pick(plan, i, _mm512_loadu_si512(from + group.from)));
  }
  for (size_t i = whole; i < plan.groups; ++i) {
    const MovePlan::Group &group = plan.group[i];
    const __m512i stretch = _mm512_maskz_loadu_epi8(group.reads, from + group.from);
    _mm512_mask_storeu_epi8(out + group.to, firstBytes(sizeOf(plan, i)), Pixels::pick(plan, i, stretch));
  }
  return plan.columns;
}

}  // namespace color

#endif
