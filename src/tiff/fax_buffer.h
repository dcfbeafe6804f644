// SPDX-License-Identifier: MIT
// Where fax codes go: a block of handle memory that grows, and a writer that packs codes into it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "raxel/driver.h"
#include "raxel/memory.h"
#include "runtime/blocks.h"
#include "tiff/bit_writer.h"
#include "tiff/fax_codes.h"

namespace tiff {

// Owns the output block. When it cannot grow it is given up: 300 goes on the driver's error stack,
// the handle becomes 0, and the coder that asked gives 0 bytes.
class FaxBuffer {
 public:
  // Takes over a block of any size, also 0 bytes. `largest` bounds its growth, in bytes.
  explicit FaxBuffer(Handle owned, uint64_t largest = 0xFFFFFFFFu)
      : block_(owned), bytes_(block_.bytes()), largest_(largest) {}
  // One without a block, whose loss goes on no stack: threads other than the host's have none.
  static FaxBuffer untold(uint64_t largest = 0xFFFFFFFFu) {
    FaxBuffer buffer(0, largest);
    buffer.tells_ = false;
    return buffer;
  }
  // Takes over another block instead of its own.
  void renew(Handle owned) {
    block_ = runtime::Block(owned);
    bytes_ = block_.bytes();
  }

  Handle handle() const { return block_.handle(); }
  uint8_t *data() const { return bytes_.data(); }
  uint32_t size() const { return static_cast<uint32_t>(bytes_.size()); }

  // Makes the block larger and keeps its bytes; they may move. False when the block is lost.
  [[gnu::noinline]] bool grow() {
    const uint64_t step = 5000 + size() / 2;
    const uint64_t wanted = size() + step <= largest_ ? size() + step : size() + uint64_t{5000};
    if (handle() == 0) return false;
    if (wanted > largest_ || !runtime::fitsInBlock(wanted)) return lose();
    block_ =
        runtime::Block(GlobalReAlloc(block_.release(), static_cast<uint32_t>(wanted), RAXEL_MOVEABLE_ZERO));
    bytes_ = block_.bytes();
    return true;
  }

 private:
  bool lose() {
    if (tells_) push_er(RAXEL_NO_MEMORY);
    block_ = runtime::Block();
    bytes_ = {};
    return false;
  }

  runtime::Block block_;
  std::span<uint8_t> bytes_;
  uint64_t largest_;
  bool tells_ = true;
};

// Packs codes into a FaxBuffer from its first byte on, and makes it grow.
//
// A writer is a value that the coders keep in registers: what is called out of line takes it and gives
// it back, so that its address is never taken.
class FaxWriter {
 public:
  explicit FaxWriter(FaxBuffer &buffer)
      : buffer_(&buffer), bits_{buffer.data()}, end_(buffer.data() + buffer.size()) {}

  // Makes room for two puts, or for `bytes`: what the puts fill, and 8 more. False when the buffer is
  // lost: then nothing more may be put.
  bool reserve(ptrdiff_t bytes = 16) {
    if (room() >= bytes) return true;
    const ptrdiff_t at = bits_.to - buffer_->data();
    const bool grown = buffer_->grow();
    bits_.to = grown ? buffer_->data() + at : nullptr;
    end_ = buffer_->data() + buffer_->size();
    return grown;
  }
  ptrdiff_t room() const { return end_ - bits_.to; }
  bool lost() const { return bits_.to == nullptr; }

  void put(uint64_t bits, uint32_t length) { bits_.put(bits, length); }
  void put(BitCode code) { bits_.put(code.bits, code.length); }

  // The bit writer alone, for loops that know that there is room, and back again.
  BitWriter bits() const { return bits_; }
  void setBits(const BitWriter &bits) { bits_ = bits; }

  // Places the make-up codes of a run of 64 or more, and then makes room as reserve() does.
  //   colour  0 white, 1 black
  bool putMakeUps(uint32_t color, uint32_t run, ptrdiff_t bytes = 16) {
    *this = withMakeUps(*this, color, run, bytes);
    return !lost();
  }

  // Places a whole run as make-up codes and a terminating code, reserving for itself.
  bool putRun(uint32_t color, uint32_t run) {
    if (run >= 64 ? !putMakeUps(color, run) : !reserve()) return false;
    put(kRunCodes[color][run % 64]);
    return true;
  }

  // Steps to the next whole byte; the bits stepped over are 0.
  void fillByte() {
    if (bits_.used == 0) return;
    bits_ = {bits_.to + 1};
  }

  // The bytes written when a partly filled byte counts as a whole one.
  uint32_t byteCount() const { return static_cast<uint32_t>(bits_.end() - buffer_->data()); }

 private:
  [[gnu::noinline]] static FaxWriter withMakeUps(FaxWriter writer, uint32_t color, uint32_t run,
                                                 ptrdiff_t bytes) {
    const auto &codes = kRunCodes[color];
    for (; run >= 64; run = run > kLongestMakeUp ? run - kLongestMakeUp : 0) {
      if (!writer.reserve()) return writer;
      writer.put(codes[kMakeUpBase + (run > kLongestMakeUp ? kLongestMakeUp : run) / 64]);
    }
    writer.reserve(bytes);
    return writer;
  }

  FaxBuffer *buffer_;
  BitWriter bits_;  // its `to` is null once the buffer is lost
  uint8_t *end_;    // the end of the block
};

}  // namespace tiff
