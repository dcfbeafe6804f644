// SPDX-License-Identifier: MIT
// Pixels of one bit: 512 at once where most columns are taken, else 64.
#include "color/scale/groups_avx512.h"
#include "color/scale/move_avx512.h"
#include "runtime/unaligned.h"

#if defined(RAXEL_HAS_AVX512)

namespace color {

namespace {

// Every byte is put together from fields of eight bits, which begin one bit further left each. Their number
// is a constant, so that the loop is none.
template <class Windows, size_t kFields>
struct Fields {
  using Source = typename Windows::Source;
  RAXEL_AVX512 static __m512i pick(const MovePlan &plan, size_t i, Source source) {
    const uint8_t(*index)[64] = plan.index + i * (Windows::kCount + kFields);
    const Windows windows = Windows::take(index, source);
    index += Windows::kCount;
    const __m512i place = _mm512_load_si512(index[0]);
    __m512i bits = windows.field(place);
    for (size_t k = 1; k < kFields; ++k) {
      const __m512i further = _mm512_add_epi8(place, _mm512_set1_epi8(static_cast<char>(k)));
      bits = _mm512_ternarylogic_epi64(_mm512_load_si512(index[k]), windows.field(further), bits, kChoose);
    }
    return bits;
  }
};

// Eight bytes of the source for eight bytes of the group.
struct OneWindow {
  using Source = Stretch;
  static constexpr size_t kCount = 1;
  __m512i bytes;

  RAXEL_AVX512 static OneWindow take(const uint8_t (*index)[64], Source source) {
    return {permute(_mm512_load_si512(index[0]), source.bytes)};
  }
  RAXEL_AVX512 __m512i field(__m512i place) const {
    return _mm512_maskz_multishift_epi64_epi8(~__mmask64{0}, place, bytes);
  }
};

// And for four of them each.
struct TwoWindows {
  using Source = LongStretch;
  static constexpr size_t kCount = 2;
  __m512i first;
  __m512i second;

  RAXEL_AVX512 static TwoWindows take(const uint8_t (*index)[64], Source source) {
    return {_mm512_permutex2var_epi8(source.bytes, _mm512_load_si512(index[0]), source.more),
            _mm512_permutex2var_epi8(source.bytes, _mm512_load_si512(index[1]), source.more)};
  }
  RAXEL_AVX512 __m512i field(__m512i place) const {
    constexpr __mmask64 kFirst = 0x0F0F0F0F0F0F0F0F;
    return _mm512_mask_multishift_epi64_epi8(_mm512_maskz_multishift_epi64_epi8(kFirst, place, first),
                                             ~kFirst, place, second);
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
RAXEL_AVX512 size_t moveBits(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
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

// By the number of fields.
const Move kMoveFields[] = {moveGroups<Fields<OneWindow, 1>>, moveGroups<Fields<OneWindow, 2>>,
                            moveGroups<Fields<OneWindow, 3>>, moveGroups<Fields<OneWindow, 4>>,
                            moveGroups<Fields<OneWindow, 5>>, moveGroups<Fields<OneWindow, 6>>,
                            moveGroups<Fields<OneWindow, 7>>, moveGroups<Fields<OneWindow, 8>>};
const Move kMoveFarFields[] = {moveGroups<Fields<TwoWindows, 1>>, moveGroups<Fields<TwoWindows, 2>>,
                               moveGroups<Fields<TwoWindows, 3>>, moveGroups<Fields<TwoWindows, 4>>,
                               moveGroups<Fields<TwoWindows, 5>>, moveGroups<Fields<TwoWindows, 6>>,
                               moveGroups<Fields<TwoWindows, 7>>, moveGroups<Fields<TwoWindows, 8>>};

const Move kMoveBits16 = moveBits<16>;
const Move kMoveBits64 = moveBits<64>;

}  // namespace color

#endif
