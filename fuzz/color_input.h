// SPDX-License-Identifier: MIT
// Pictures and colour tables out of a fuzzer's bytes, in blocks of exactly their size.
#pragma once

#include "color/pictures.h"
#include "input.h"

namespace fuzz {

using plain::Bytes;

// A block of the caller's own memory, which ends where its bytes end.
class ExactBlock {
 public:
  explicit ExactBlock(const Bytes &bytes) : place_(bytes), size_(bytes.size()) {
    handle_ = GlobalPointerToHandle(place_.data(), static_cast<uint32_t>(size_));
  }
  // None for a table that is missing.
  explicit ExactBlock(const plain::Table &table) : ExactBlock(table.entries) {
    if (!table.given) release();
  }
  ~ExactBlock() { release(); }
  ExactBlock(const ExactBlock &) = delete;
  ExactBlock &operator=(const ExactBlock &) = delete;

  Handle handle() const { return handle_; }
  Bytes bytes() const { return {place_.data(), place_.data() + size_}; }

 private:
  void release() {
    if (handle_ != 0) GlobalFree(handle_);
    handle_ = 0;
  }
  Exact place_;
  size_t size_;
  Handle handle_;
};

// So many bytes: those of the input, repeated with a change where it ends.
inline Bytes filled(Input &input, size_t count) {
  Bytes bytes = input.bytes(std::min<size_t>(count, input.byte()));
  const size_t given = bytes.size();
  const uint8_t change = input.byte();
  bytes.resize(count);
  for (size_t i = given; i < count && given != 0; ++i) {
    bytes[i] = static_cast<uint8_t>(bytes[i - given] + change);
  }
  return bytes;
}

inline uint32_t side(Input &input) {
  const unsigned choice = input.byte();
  return choice % (input.rarely(4096) ? 156 : input.rarely(64) ? 40 : 15) + 1;
}

// Up to 15 pixels, or up to 150: some 128 are taken together.
inline uint32_t width(Input &input) {
  const unsigned choice = input.byte();
  return choice < 144 ? choice % 15 + 1 : choice - 105;
}

// So many rows that a picture stays below 256 pixels, from which on a search is prepared for megabytes. Now
// and then it gets some more, and rarely as many as it likes.
inline uint32_t rows(Input &input, uint32_t width) {
  const uint32_t most = input.rarely(4096) ? 22500 : input.rarely(64) ? 1600 : 255;
  return std::clamp(fuzz::width(input), 1u, std::max(most / width, 1u));
}

// A picture of some depth. Now and then its block is shorter than it says.
inline plain::Picture picture(Input &input, int depth) {
  plain::Picture out{{}, width(input), 0, depth};
  out.height = rows(input, out.width);
  out.bits = filled(input, size_t{plain::lineBytes(out.width, depth)} * out.height);
  if (input.once(16)) out.bits.resize(out.bits.size() * input.byte() / 256);
  return out;
}

inline int depth(Input &input) {
  return oneOf<int>(input, {1, 4, 8, 24, 32, 1, 4, 8, 24, 32, 1, 4, 8, 24, 24, 16});
}

// A table of up to so many entries; now and then none.
inline plain::Table table(Input &input, uint32_t most) {
  if (input.once(8)) return {};
  const uint32_t entries = input.between(0, most);
  return {true, filled(input, size_t{3} * entries), entries};
}

// The table of a source: as long as its depth asks, or shorter.
inline plain::Table tableFor(Input &input, int depth) {
  if (depth > 8) return input.once(8) ? table(input, 256) : plain::Table{};
  const uint32_t full = 1u << depth;
  if (input.once(8)) return table(input, full);
  return {true, filled(input, size_t{3} * full), full};
}

}  // namespace fuzz
