#include "tiff/lzw.h"

#include <cstring>

#include "runtime/blocks.h"
#include "runtime/unaligned.h"

namespace tiff {
namespace {

constexpr uint32_t kClear = 256;
constexpr uint32_t kEndOfInformation = 257;
constexpr uint32_t kFirstFree = 258;
constexpr uint32_t kClearAt = 4090;  // readers allow 4094; our exact bytes are a promise

// Packs codes, first bit first.
class CodeWriter {
 public:
  explicit CodeWriter(uint8_t *out) : begin_(out), to_(out) {}
  void put(uint32_t code, uint32_t width) {
    pending_ = pending_ << width | code;
    used_ += width;
    for (; used_ >= 8; used_ -= 8) *to_++ = static_cast<uint8_t>(pending_ >> (used_ - 8));
  }
  uint32_t finish() {
    if (used_ > 0) *to_++ = static_cast<uint8_t>(pending_ << (8 - used_));
    return static_cast<uint32_t>(to_ - begin_);
  }

 private:
  uint8_t *begin_;
  uint8_t *to_;
  uint32_t pending_ = 0;
  uint32_t used_ = 0;
};

// The strings known so far, by prefix code and appended byte: the code of the longer string, or 0.
// Clearing undoes the entries made, which are far fewer than the table has places.
class StringTable {
 public:
  static constexpr size_t kPlaces = size_t{4096} * 256;
  static constexpr size_t kBytes = kPlaces * 2 + kClearAt * 4;

  explicit StringTable(uint8_t *memory) : codes_(memory), made_(memory + kPlaces * 2) {}
  uint32_t find(uint32_t key) const { return runtime::load<uint16_t>(codes_ + key * 2); }
  void add(uint32_t key) {
    // The last byte of a strip may add a string that is known; the first copy stays the one found.
    runtime::store(codes_ + key * 2, static_cast<uint16_t>(next_));
    runtime::store(made_ + next_ * 4, key);
    ++next_;
  }
  uint32_t next() const { return next_; }
  void clear() {
    for (uint32_t code = kFirstFree; code < next_; ++code) {
      runtime::store(codes_ + runtime::load<uint32_t>(made_ + code * 4) * 2, uint16_t{0});
    }
    next_ = kFirstFree;
  }

 private:
  uint8_t *codes_;
  uint8_t *made_;
  uint32_t next_ = kFirstFree;
};

}  // namespace

uint32_t encodeLzw(std::span<const uint8_t> strip, std::span<uint8_t> out) {
  CodeWriter writer(out.data());
  uint32_t width = 9;
  writer.put(kClear, width);
  if (strip.size() > 1) {
    const runtime::Block memory = runtime::Block::ofSize(StringTable::kBytes);
    if (!memory) return 0;
    StringTable table(memory.data());
    uint32_t prefix = strip[0];
    for (size_t at = 1; at < strip.size(); ++at) {
      const uint32_t key = prefix << 8 | strip[at];
      const uint32_t found = table.find(key);
      const bool last = at + 1 == strip.size();
      if (found != 0) {
        prefix = found;
        if (!last) continue;
      }
      // The key is stored also when it was found at the last byte, where nothing follows to use it.
      table.add(key);
      const uint32_t next = table.next();
      const bool writesLastByte = last && found == 0;
      for (int step = 0; step <= (writesLastByte ? 1 : 0); ++step) {
        writer.put(prefix, width);
        if (next == 512 || next == 1024 || next == 2048) ++width;
        if (next == kClearAt) {
          writer.put(kClear, width);
          width = 9;
          table.clear();
        }
        prefix = strip[at];
      }
    }
  }
  writer.put(kEndOfInformation, width);
  return writer.finish();
}

}  // namespace tiff
