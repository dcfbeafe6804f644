// SPDX-License-Identifier: MIT
#include "support/sha256.h"

#include <array>
#include <bit>
#include <cstddef>
#include <vector>

namespace support {
namespace {

// The first 32 bits of the fractional parts of the cube roots of the first 64 primes (4.2.2).
constexpr std::array<uint32_t, 64> kRound = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

using State = std::array<uint32_t, 8>;

// The same of the square roots of the first 8 primes (5.3.3).
constexpr State kStart = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                          0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

constexpr size_t kBlock = 64;

uint32_t bigEndian(const uint8_t *p) {
  return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | uint32_t{p[3]};
}

// One block of the message goes into the state (6.2.2).
void absorb(State &state, const uint8_t *block) {
  std::array<uint32_t, 64> w;
  for (size_t t = 0; t < 16; ++t) w[t] = bigEndian(block + 4 * t);
  for (size_t t = 16; t < 64; ++t) {
    const uint32_t s0 = std::rotr(w[t - 15], 7) ^ std::rotr(w[t - 15], 18) ^ (w[t - 15] >> 3);
    const uint32_t s1 = std::rotr(w[t - 2], 17) ^ std::rotr(w[t - 2], 19) ^ (w[t - 2] >> 10);
    w[t] = w[t - 16] + s0 + w[t - 7] + s1;
  }
  auto [a, b, c, d, e, f, g, h] = state;
  for (size_t t = 0; t < 64; ++t) {
    const uint32_t s1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
    const uint32_t s0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
    const uint32_t t1 = h + s1 + ((e & f) ^ (~e & g)) + kRound[t] + w[t];
    const uint32_t t2 = s0 + ((a & b) ^ (a & c) ^ (b & c));
    h = g, g = f, f = e, e = d + t1;
    d = c, c = b, b = a, a = t1 + t2;
  }
  const State round = {a, b, c, d, e, f, g, h};
  for (size_t i = 0; i < 8; ++i) state[i] += round[i];
}

}  // namespace

std::string sha256(std::span<const uint8_t> bytes) {
  State state = kStart;
  const size_t whole = bytes.size() / kBlock * kBlock;
  for (size_t at = 0; at < whole; at += kBlock) absorb(state, bytes.data() + at);

  // The end of the message, a 1 bit, zeros, and the length in bits as 64 bits (5.1.1).
  std::vector<uint8_t> tail(bytes.begin() + static_cast<ptrdiff_t>(whole), bytes.end());
  tail.push_back(0x80);
  while (tail.size() % kBlock != kBlock - 8) tail.push_back(0);
  const uint64_t bits = uint64_t{bytes.size()} * 8;
  for (int shift = 56; shift >= 0; shift -= 8) tail.push_back(static_cast<uint8_t>(bits >> shift));
  for (size_t at = 0; at < tail.size(); at += kBlock) absorb(state, tail.data() + at);

  std::string hex;
  for (const uint32_t word : state) {
    for (int shift = 28; shift >= 0; shift -= 4) hex += "0123456789abcdef"[word >> shift & 15];
  }
  return hex;
}

}  // namespace support
