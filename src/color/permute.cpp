#include "color/permute.h"

#include "color/permute_groups.h"

#if defined(RAXEL_HAS_AVX512)

namespace color {

namespace {

struct Bytes {
  using Source = Stretch;
  RAXEL_AVX512 static __m512i pick(const MovePlan &plan, size_t i, Source source) {
    return permute(_mm512_load_si512(plan.index[i]), source.bytes);
  }
};

struct FarBytes {
  using Source = LongStretch;
  RAXEL_AVX512 static __m512i pick(const MovePlan &plan, size_t i, Source source) {
    return _mm512_permutex2var_epi8(source.bytes, _mm512_load_si512(plan.index[i]), source.more);
  }
};

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

}  // namespace

// By the width of the store: 16, 32 and 64 bytes.
const Move kPermuteBytes[] = {permuteGroups<Bytes, 16>, permuteGroups<Bytes, 32>, permuteGroups<Bytes, 64>};
const Move kPermuteFarBytes[] = {permuteGroups<FarBytes, 16>, permuteGroups<FarBytes, 32>,
                                 permuteGroups<FarBytes, 64>};
const Move kPermuteNibbles[] = {permuteGroups<Nibbles, 16>, permuteGroups<Nibbles, 32>,
                                permuteGroups<Nibbles, 64>};

}  // namespace color

#endif
