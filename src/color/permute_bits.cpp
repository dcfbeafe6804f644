// Pixels of one bit: 512 at once where a row is widened, else 64.
#include "color/permute.h"
#include "color/permute_groups.h"
#include "runtime/unaligned.h"

#if defined(RAXEL_HAS_AVX512)

namespace color {

namespace {

// Every byte is put together from fields of eight bits, which begin one bit further left each. The number
// of index rows is a constant, so that the loop is none.
template <size_t kIndexes>
struct Fields {
  using Source = Stretch;
  RAXEL_AVX512 static __m512i pick(const MovePlan &plan, size_t i, Source source) {
    const uint8_t(*index)[64] = plan.index + i * kIndexes;
    const __m512i windows = permute(_mm512_load_si512(index[0]), source.bytes);
    const __m512i place = _mm512_load_si512(index[1]);
    __m512i bits = field(place, windows);
    for (size_t k = 2; k < kIndexes; ++k) {
      const __m512i further = _mm512_add_epi8(place, _mm512_set1_epi8(static_cast<char>(k - 1)));
      bits = _mm512_ternarylogic_epi64(_mm512_load_si512(index[k]), field(further, windows), bits, kChoose);
    }
    return bits;
  }

  RAXEL_AVX512 static __m512i field(__m512i place, __m512i windows) {
    return _mm512_maskz_multishift_epi64_epi8(~__mmask64{0}, place, windows);
  }
};

// A stretch of 16 bytes four times, or one of 64.
template <int kBytes>
RAXEL_AVX512 inline __m512i loadStretch(const uint8_t *from) {
  if constexpr (kBytes == 16) {
    return spread(_mm_loadu_si128(static_cast<const __m128i_u *>(static_cast<const void *>(from))));
  } else {
    return _mm512_loadu_si512(from);
  }
}
template <int kBytes>
RAXEL_AVX512 inline __m512i loadStretch(const uint8_t *from, size_t n) {
  if constexpr (kBytes == 16) {
    return spread(_mm_maskz_loadu_epi8(static_cast<__mmask16>(firstBytes(n)), from));
  } else {
    return _mm512_maskz_loadu_epi8(firstBytes(n), from);
  }
}

// The 64 bits of a group.
template <int kBytes>
RAXEL_AVX512 inline uint64_t pickBits(const MovePlan &plan, size_t i, __m512i stretch) {
  const __m512i index = _mm512_load_si512(plan.index[2 * i]);
  const __m512i eights = kBytes == 16 ? _mm512_shuffle_epi8(stretch, index) : permute(index, stretch);
  return _mm512_bitshuffle_epi64_mask(eights, _mm512_load_si512(plan.index[2 * i + 1]));
}

template <int kBytes>
RAXEL_AVX512 size_t permuteBits(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  const uint8_t *from = source.data();
  const size_t whole = plan.reach <= source.size() ? plan.whole : 0;
  for (size_t i = 0; i < whole; ++i) {
    const __m512i stretch = loadStretch<kBytes>(from + plan.group[i].from);
    runtime::store(out + plan.group[i].to, pickBits<kBytes>(plan, i, stretch));
  }
  for (size_t i = whole; i < plan.groups; ++i) {
    const __m512i stretch = loadStretch<kBytes>(from + plan.group[i].from, plan.group[i].reads);
    const uint64_t bits = pickBits<kBytes>(plan, i, stretch);
    std::memcpy(out + plan.group[i].to, &bits, sizeOf(plan, i));
  }
  return plan.columns;
}

}  // namespace

// By the rows of indexes, from two on.
const Move kPermuteFields[] = {permuteGroups<Fields<2>, 64>, permuteGroups<Fields<3>, 64>,
                               permuteGroups<Fields<4>, 64>, permuteGroups<Fields<5>, 64>,
                               permuteGroups<Fields<6>, 64>, permuteGroups<Fields<7>, 64>,
                               permuteGroups<Fields<8>, 64>, permuteGroups<Fields<9>, 64>};

const Move kPermuteBits16 = permuteBits<16>;
const Move kPermuteBits64 = permuteBits<64>;

}  // namespace color

#endif
