#include "color/permute.h"

#include "color/permute_groups.h"

#if defined(RAXEL_HAS_AVX512)

namespace color {

namespace {

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
};

}  // namespace

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
