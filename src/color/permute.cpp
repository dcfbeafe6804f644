#include "color/permute.h"

#if defined(RAXEL_HAS_AVX512)

#include "runtime/unaligned.h"

namespace color {

namespace {

// The bytes that a group writes, and a mask of as many low bits.
RAXEL_AVX512 size_t sizeOf(const MovePlan &plan, size_t i) {
  return (i + 1 < plan.groups ? plan.group[i + 1].to : plan.bytes) - plan.group[i].to;
}
RAXEL_AVX512 __mmask64 firstBytes(size_t n) {
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

struct Bytes {
  RAXEL_AVX512 static __m512i pick(const MovePlan &plan, size_t i, __m512i stretch) {
    return permute(_mm512_load_si512(plan.index[i]), stretch);
  }
};

struct Nibbles {
  RAXEL_AVX512 static __m512i pick(const MovePlan &plan, size_t i, __m512i stretch) {
    const __m512i high = _mm512_set1_epi8(static_cast<char>(0xF0));
    // The halves of every byte change places: what is shifted over from the next byte is masked.
    const __m512i swapped = _mm512_ternarylogic_epi64(high, stretch << 4, stretch >> 4, kChoose);
    const __m512i left = _mm512_permutex2var_epi8(stretch, _mm512_load_si512(plan.index[2 * i]), swapped);
    const __m512i right =
        _mm512_permutex2var_epi8(stretch, _mm512_load_si512(plan.index[2 * i + 1]), swapped);
    return _mm512_ternarylogic_epi64(high, left, right, kChoose);
  }
  static constexpr int kChoose = 0xCA;  // where the first has a bit the second, else the third
};

template <class Pixels, int kBytes>
RAXEL_AVX512 size_t permuteGroups(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  const uint8_t *from = source.data();
  const size_t whole = plan.reach <= source.size() ? plan.whole : 0;
  for (size_t i = 0; i < whole; ++i) {
    const MovePlan::Group &group = plan.group[i];
    storeFirst<kBytes>(out + group.to, Pixels::pick(plan, i, _mm512_loadu_si512(from + group.from)));
  }
  for (size_t i = whole; i < plan.groups; ++i) {
    const MovePlan::Group &group = plan.group[i];
    const __m512i stretch = _mm512_maskz_loadu_epi8(group.reads, from + group.from);
    _mm512_mask_storeu_epi8(out + group.to, firstBytes(sizeOf(plan, i)), Pixels::pick(plan, i, stretch));
  }
  return plan.columns;
}

// A stretch of 8 bytes in every eight bytes of a register, one of 16 in every sixteen, or one of 64.
template <int kBytes>
RAXEL_AVX512 inline __m512i loadStretch(const uint8_t *from) {
  if constexpr (kBytes == 8) return _mm512_set1_epi64(runtime::load<int64_t>(from));
  if constexpr (kBytes == 16)
    return spread(_mm_loadu_si128(static_cast<const __m128i_u *>(static_cast<const void *>(from))));
  if constexpr (kBytes == 64) return _mm512_loadu_si512(from);
}
template <int kBytes>
RAXEL_AVX512 inline __m512i loadStretch(const uint8_t *from, uint64_t reads) {
  if constexpr (kBytes == 8) {
    const __m128i eight = _mm_maskz_loadu_epi8(static_cast<__mmask16>(reads), from);
    return _mm512_set1_epi64(_mm_cvtsi128_si64(eight));
  }
  if constexpr (kBytes == 16) return spread(_mm_maskz_loadu_epi8(static_cast<__mmask16>(reads), from));
  if constexpr (kBytes == 64) return _mm512_maskz_loadu_epi8(reads, from);
}

// The 64 bits of a group.
template <int kBytes>
RAXEL_AVX512 inline uint64_t pickBits(const MovePlan &plan, size_t i, __m512i stretch) {
  if constexpr (kBytes == 8) {
    return _mm512_bitshuffle_epi64_mask(stretch, _mm512_load_si512(plan.index[i]));
  } else {
    const __m512i index = _mm512_load_si512(plan.index[2 * i]);
    const __m512i eights = kBytes == 16 ? _mm512_shuffle_epi8(stretch, index) : permute(index, stretch);
    return _mm512_bitshuffle_epi64_mask(eights, _mm512_load_si512(plan.index[2 * i + 1]));
  }
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

size_t permuteBits8(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  return permuteBits<8>(plan, source, out);
}
size_t permuteBits16(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  return permuteBits<16>(plan, source, out);
}
size_t permuteBits64(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  return permuteBits<64>(plan, source, out);
}
size_t permuteBytes16(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  return permuteGroups<Bytes, 16>(plan, source, out);
}
size_t permuteBytes32(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  return permuteGroups<Bytes, 32>(plan, source, out);
}
size_t permuteBytes64(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  return permuteGroups<Bytes, 64>(plan, source, out);
}
size_t permuteNibbles16(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  return permuteGroups<Nibbles, 16>(plan, source, out);
}
size_t permuteNibbles32(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  return permuteGroups<Nibbles, 32>(plan, source, out);
}
size_t permuteNibbles64(const MovePlan &plan, std::span<const uint8_t> source, uint8_t *out) {
  return permuteGroups<Nibbles, 64>(plan, source, out);
}

}  // namespace color

#endif
