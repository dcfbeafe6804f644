// SPDX-License-Identifier: MIT
// Indexes brought to fewer bits a pixel, at every level of vector instructions.
#include "color/depth/lookup.h"

#include <gtest/gtest.h>

#include "color/levels.h"
#include "support/cases.h"
#include "support/page_end.h"
#include "support/random.h"

namespace {

using Bytes = std::vector<uint8_t>;

// What pixels of so many bits are when they are packed from the top bit down.
Bytes packed(const Bytes &pixels, size_t bits) {
  Bytes out((pixels.size() * bits + 7) / 8);
  for (size_t i = 0; i < pixels.size(); ++i) {
    const size_t at = i * bits;
    out[at / 8] = static_cast<uint8_t>(out[at / 8] | pixels[i] << (8 - bits - at % 8));
  }
  return out;
}

Bytes valuesBelow(support::Random &random, unsigned limit) {
  Bytes values = random.bytes(256);
  for (uint8_t &value : values) value = static_cast<uint8_t>(value % limit);
  return values;
}

// Looks every pixel up by itself and compares, at every level; both rows end with their memory.
template <class Table, class Form>
void expectPacked(size_t n, const Bytes &from, const Table *table, const Bytes &pixels, size_t bits,
                  Form color::Kernels::*form) {
  const Bytes expected = packed(pixels, bits);
  const support::PageEnd source(from);
  for (const color::Vectors level : levels::all()) {
    const levels::AtMost limit(level);
    const support::PageEnd to(Bytes(expected.size(), 0xA5));
    (color::kernels().*form)(table, source.data(), to.data(), n);
    ASSERT_EQ(to.bytes(), expected) << n << " pixels at level " << levels::number(level);
  }
}

TEST(Lookup, PacksBytes) {
  support::Random random(131);
  for (size_t n = 0; n < support::cases(400); ++n) {
    const Bytes from = random.bytes(n);
    for (const size_t depth : {size_t{1}, size_t{4}}) {
      const Bytes values = valuesBelow(random, 1u << depth);
      Bytes pixels;
      for (const uint8_t index : from) pixels.push_back(values[index]);
      expectPacked(n, from, values.data(), pixels, depth,
                   depth == 1 ? &color::Kernels::bytesToBits : &color::Kernels::bytesToNibbles);
    }
  }
}

TEST(Lookup, PacksNibblesIntoBits) {
  support::Random random(133);
  for (size_t n = 0; n < support::cases(600); ++n) {
    const Bytes values = valuesBelow(random, 2);
    const Bytes from = random.bytes((n + 1) / 2);
    Bytes pairs(256);
    for (size_t byte = 0; byte < 256; ++byte) {
      pairs[byte] = static_cast<uint8_t>(values[byte >> 4] << 1 | values[byte & 15]);
    }
    Bytes pixels;
    for (size_t i = 0; i < n; ++i)
      pixels.push_back(values[i % 2 == 0 ? from[i / 2] >> 4 : from[i / 2] & 15]);
    expectPacked(n, from, pairs.data(), pixels, 1, &color::Kernels::nibblesToBits);
  }
}

TEST(Lookup, PacksBitsIntoNibbles) {
  support::Random random(134);
  for (size_t n = 0; n < support::cases(600); ++n) {
    const uint8_t values[] = {static_cast<uint8_t>(random.byte() % 16),
                              static_cast<uint8_t>(random.byte() % 16)};
    const auto pixelOf = [&](unsigned byte, size_t k) { return values[byte >> (7 - k) & 1]; };
    uint8_t nibbles[256][4];
    for (unsigned byte = 0; byte < 256; ++byte) {
      for (size_t k = 0; k < 4; ++k) {
        nibbles[byte][k] = static_cast<uint8_t>(pixelOf(byte, 2 * k) << 4 | pixelOf(byte, 2 * k + 1));
      }
    }
    const Bytes from = random.bytes((n + 7) / 8);
    Bytes pixels;
    for (size_t i = 0; i < n; ++i) pixels.push_back(pixelOf(from[i / 8], i % 8));
    expectPacked(n, from, nibbles, pixels, 4, &color::Kernels::bitsToNibbles);
  }
}

}  // namespace
