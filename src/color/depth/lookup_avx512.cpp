// SPDX-License-Identifier: MIT
#include "color/depth/lookup.h"

#if defined(RAXEL_HAS_AVX512)

#include "runtime/unaligned.h"

namespace color {

namespace {

// A table of 256 bytes in four registers.
struct Table {
  __m512i part[4];
};

RAXEL_AVX512 inline Table loadTable(const uint8_t *values, int shift) {
  Table table;
  for (int i = 0; i < 4; ++i) table.part[i] = _mm512_loadu_si512(values + 64 * i) << shift;
  return table;
}

// Each permutation looks the low seven bits of an index up in one half of the table; the eighth chooses.
RAXEL_AVX512 inline __m512i lookUp(const Table &table, __m512i indexes) {
  const __m512i low = _mm512_permutex2var_epi8(table.part[0], indexes, table.part[1]);
  const __m512i high = _mm512_permutex2var_epi8(table.part[2], indexes, table.part[3]);
  return _mm512_mask_blend_epi8(_mm512_movepi8_mask(indexes), low, high);
}

}  // namespace

RAXEL_AVX512 void bytesToNibblesAvx512(const uint8_t *values, const uint8_t *from, uint8_t *to, size_t n) {
  const Table table = loadTable(values, 0);
  const __m512i weights = _mm512_set1_epi16(0x0110);  // 16 times the left pixel and once the right
  for (; n >= 64; n -= 64, from += 64, to += 32) {
    const __m512i pairs = _mm512_maddubs_epi16(lookUp(table, _mm512_loadu_si512(from)), weights);
    const __m256i bytes = _mm512_maskz_cvtepi16_epi8(~__mmask32{0}, pairs);
    _mm256_storeu_si256(static_cast<__m256i_u *>(static_cast<void *>(to)), bytes);
  }
  bytesToNibblesPlain(values, from, to, n);
}

RAXEL_AVX512 void bytesToBitsAvx512(const uint8_t *values, const uint8_t *from, uint8_t *to, size_t n) {
  // Masks are made of the top bits of bytes, and the first byte gives the lowest bit.
  const Table table = loadTable(values, 7);
  const __m512i turned = spread(_mm_setr_epi8(7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8));
  for (; n >= 64; n -= 64, from += 64, to += 8) {
    const __m512i indexes = _mm512_shuffle_epi8(_mm512_loadu_si512(from), turned);
    runtime::store(to, uint64_t{_mm512_movepi8_mask(lookUp(table, indexes))});
  }
  bytesToBitsPlain(values, from, to, n);
}

namespace {

// Where bytes of two pixels lie so that, with their pixels apart and side by side, each eight neighbours
// come from the right to the left: 64 pixels in the first halves of 16 bytes, the next 64 in the second
// halves.
struct Order {
  alignas(64) uint8_t from[64];
};
constexpr Order kPairsTurned = [] {
  Order order{};
  for (uint32_t i = 0; i < 64; ++i) {
    const uint32_t half = i % 16 / 8 * 32;
    order.from[i] = static_cast<uint8_t>(half + i / 16 * 8 + (i % 8 ^ 3));
  }
  return order;
}();

}  // namespace

RAXEL_AVX512 void nibblesToBitsAvx512(const uint8_t *pairs, const uint8_t *from, uint8_t *to, size_t n) {
  // The table of the right pixels, for left pixels of 0: its bit 0 counts.
  const __m128i right = _mm_loadu_si128(static_cast<const __m128i_u *>(static_cast<const void *>(pairs)));
  const __m512i table = spread(right) << 7;
  const __m512i turned = _mm512_load_si512(kPairsTurned.from);
  const __m512i low = _mm512_set1_epi8(15);
  for (; n >= 128; n -= 128, from += 64, to += 16) {
    const __m512i bytes = permute(turned, _mm512_loadu_si512(from));
    const __m512i lefts = _mm512_shuffle_epi8(table, bytes >> 4 & low);
    const __m512i rights = _mm512_shuffle_epi8(table, bytes & low);
    runtime::store(to, uint64_t{_mm512_movepi8_mask(_mm512_unpacklo_epi8(rights, lefts))});
    runtime::store(to + 8, uint64_t{_mm512_movepi8_mask(_mm512_unpackhi_epi8(rights, lefts))});
  }
  nibblesToBitsPlain(pairs, from, to, n);
}

RAXEL_AVX512 void bitsToNibblesAvx512(const uint8_t (*nibbles)[4], const uint8_t *from, uint8_t *to,
                                      size_t n) {
  // Two pixels become a byte: the last of the four that a byte of only these two becomes.
  const __m512i table = _mm512_set1_epi32(nibbles[0][3] | nibbles[1][3] << 8 | nibbles[2][3] << 16 |
                                          static_cast<int32_t>(uint32_t{nibbles[3][3]} << 24));
  // Eight bytes come from two of the source, and each from two bits of those.
  const __m512i bytes = _mm512_set_epi64(0x0F0E, 0x0D0C, 0x0B0A, 0x0908, 0x0706, 0x0504, 0x0302, 0x0100);
  const __m512i places = _mm512_set1_epi64(0x080A0C0E00020406);
  const __m512i low = _mm512_set1_epi8(3);
  for (; n >= 128; n -= 128, from += 16, to += 64) {
    const __m512i sixteen =
        spread(_mm_loadu_si128(static_cast<const __m128i_u *>(static_cast<const void *>(from))));
    const __m512i twos =
        _mm512_maskz_multishift_epi64_epi8(~__mmask64{0}, places, _mm512_shuffle_epi8(sixteen, bytes));
    _mm512_storeu_si512(to, _mm512_shuffle_epi8(table, twos & low));
  }
  bitsToNibblesPlain(nibbles, from, to, n);
}

}  // namespace color

#endif
