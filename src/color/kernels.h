// SPDX-License-Identifier: MIT
// The inner loops that some processors run faster in another form, chosen in one place, at run time.
//
// Every form gives the same bytes. Those of kNone are plain C++ and work everywhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "color/scale/move_plan.h"

namespace color {

// What a processor has, in rising order: each includes those before it.
enum class Vectors : uint8_t {
  kNone,
  kSsse3,   // x86: shuffles of 16 bytes
  kAvx512,  // x86-64: permutations of 64 bytes and gathering of bits (AVX-512 BW, VBMI and BITALG)
};

struct Kernels {
  // Plans how rows move; see move_plan.h. May leave out columns from the right, or all.
  void (*planMove)(MovePlan &plan, std::span<const uint32_t> columns, int16_t depth);

  // Rows of indexes become rows of pixels of less than a byte; see lookup.h.
  void (*bytesToNibbles)(const uint8_t *values, const uint8_t *from, uint8_t *to, size_t n);
  void (*bytesToBits)(const uint8_t *values, const uint8_t *from, uint8_t *to, size_t n);
  void (*nibblesToBits)(const uint8_t *pairs, const uint8_t *from, uint8_t *to, size_t n);
  void (*bitsToNibbles)(const uint8_t (*nibbles)[4], const uint8_t *from, uint8_t *to, size_t n);

  // Pixels of one, three and four bytes are exchanged; see mirror.h.
  void (*mirrorBytes)(uint8_t *left, uint8_t *right, size_t n);
  void (*mirrorTriples)(uint8_t *left, uint8_t *right, size_t n);
  void (*mirrorWords)(uint8_t *left, uint8_t *right, size_t n);

  // Pictures change in place; see cmyk.h.
  void (*cmykToRgb)(uint8_t *pixels, size_t count);
  void (*dropAlpha)(uint8_t *pixels, size_t count);
};

// The fastest forms that this processor has, and that the limit allows.
const Kernels &kernels();

// What this processor has.
Vectors processorVectors();

// Keeps kernels() to slower forms from now on, so that tests reach each of them on one machine.
void limitVectors(Vectors most);

}  // namespace color
