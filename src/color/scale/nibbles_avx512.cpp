// SPDX-License-Identifier: MIT
// Pixels of four bits, 128 at once.
#include "color/scale/groups_avx512.h"
#include "color/scale/move_avx512.h"

#if defined(RAXEL_HAS_AVX512)

namespace color {

namespace {

struct Nibbles {
  using Source = Stretch;
  RAXEL_AVX512 static __m512i pick(const MovePlan &plan, size_t i, Source source) {
    const __m512i high = _mm512_set1_epi8(static_cast<char>(0xF0));
    const __m512i bytes = source.bytes;
    // The halves of every byte change places: what is shifted over from the next byte is masked.
    const __m512i swapped = _mm512_ternarylogic_epi64(high, bytes << 4, bytes >> 4, kChoose);
    const __m512i left = _mm512_permutex2var_epi8(bytes, _mm512_load_si512(plan.index[2 * i]), swapped);
    const __m512i right =
        _mm512_permutex2var_epi8(bytes, _mm512_load_si512(plan.index[2 * i + 1]), swapped);
    return _mm512_ternarylogic_epi64(high, left, right, kChoose);
  }
};

struct FarNibbles {
  using Source = LongStretch;
  RAXEL_AVX512 static __m512i pick(const MovePlan &plan, size_t i, Source source) {
    const __m512i high = _mm512_set1_epi8(static_cast<char>(0xF0));
    const __m512i leftIndex = _mm512_load_si512(plan.index[2 * i]);
    const __m512i rightIndex = _mm512_load_si512(plan.index[2 * i + 1]);
    __m512i left = _mm512_permutex2var_epi8(source.bytes, leftIndex, source.more);
    __m512i right = _mm512_permutex2var_epi8(source.bytes, rightIndex, source.more);
    // Here the nibbles of the bytes that are marked come from their other half.
    left = _mm512_mask_blend_epi8(_mm512_movepi8_mask(leftIndex), left, left << 4);
    right = _mm512_mask_blend_epi8(_mm512_movepi8_mask(rightIndex), right, right >> 4);
    return _mm512_ternarylogic_epi64(high, left, right, kChoose);
  }
};

}  // namespace

const Move kMoveNibbles = moveGroups<Nibbles>;
const Move kMoveFarNibbles = moveGroups<FarNibbles>;

}  // namespace color

#endif
