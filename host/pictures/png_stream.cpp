#include "pictures/png_stream.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "pictures/picture.h"

namespace host {
namespace {

constexpr size_t kSignature = 8, kAround = 12;  // a chunk's length, name and checksum

uint32_t numberAt(const uint8_t *at) {
  return uint32_t{at[0]} << 24 | uint32_t{at[1]} << 16 | uint32_t{at[2]} << 8 | at[3];
}

std::string_view nameOf(std::span<const uint8_t> chunk) {
  return {reinterpret_cast<const char *>(chunk.data()) + 4, 4};
}

std::span<const uint8_t> contentOf(std::span<const uint8_t> chunk) {
  return chunk.subspan(8, chunk.size() - kAround);
}

bool checksumHolds(std::span<const uint8_t> chunk) {
  return libdeflate_crc32(0, chunk.data() + 4, chunk.size() - 8) ==
         numberAt(chunk.data() + chunk.size() - 4);
}

// Those without which a picture cannot be shown begin with a capital.
bool decidesThePicture(std::string_view name) {
  return (name[0] & 0x20) == 0 || name == "tRNS" || name == "pHYs";
}

struct FreeDecompressor {
  void operator()(libdeflate_decompressor *which) const { libdeflate_free_decompressor(which); }
};

}  // namespace

uint64_t inflatedBytes(const PngLayout &layout) {
  const auto pass = [&](uint64_t width, uint64_t height) {
    return width == 0 ? 0 : ((width * layout.bitsPerPixel + 7) / 8 + 1) * height;
  };
  if (!layout.interlaced) return pass(layout.width, layout.height);
  constexpr struct {
    uint32_t column, row, across, down;
  } kPasses[] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                 {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
  uint64_t sum = 0;
  for (const auto &p : kPasses) {
    sum += pass((uint64_t{layout.width} + p.across - 1 - p.column) / p.across,
                (uint64_t{layout.height} + p.down - 1 - p.row) / p.down);
  }
  return sum;
}

PngStream::PngStream(std::span<const uint8_t> file) {
  parts_.push_back(file.first(std::min(file.size(), kSignature)));
  size_t at = parts_[0].size();
  bool inARow = true;
  while (file.size() - at >= kAround) {
    const uint64_t length = uint64_t{numberAt(file.data() + at)} + kAround;
    if (length > file.size() - at) break;
    const Bytes chunk = file.subspan(at, static_cast<size_t>(length));
    at += chunk.size();
    const std::string_view name = nameOf(chunk);
    if (name == "eXIf" && exif_.empty() && checksumHolds(chunk)) exif_ = contentOf(chunk);
    if (!decidesThePicture(name)) continue;
    if (name == "IDAT") {
      if (firstPixels_ == 0) firstPixels_ = endOfPixels_ = parts_.size();
      inARow = inARow && endOfPixels_ == parts_.size();
      endOfPixels_ = parts_.size() + 1;
    }
    parts_.push_back(chunk);
    if (name == "IEND") {
      whole_ = inARow && firstPixels_ != 0;
      return;
    }
  }
  // It is cut short, perhaps behind the pixels only.
  whole_ = inARow && firstPixels_ != 0 && endOfPixels_ < parts_.size();
  parts_.push_back(file.subspan(at));
}

bool PngStream::joinPixels() {
  size_t bytes = 0;
  for (size_t i = firstPixels_; i < endOfPixels_; ++i) {
    if (!checksumHolds(parts_[i])) return false;
    bytes += parts_[i].size() - kAround;
  }
  joined_ = Buffer(bytes);
  joinedBytes_ = bytes;
  uint8_t *to = joined_.data();
  for (size_t i = firstPixels_; i < endOfPixels_; ++i) {
    const Bytes content = contentOf(parts_[i]);
    std::memcpy(to, content.data(), content.size());
    to += content.size();
  }
  return true;
}

bool PngStream::inflate(uint64_t size) {
  if (!whole_ || size > kLargestPicture) return false;
  try {
    if (!joinPixels()) return false;
    inflated_ = Buffer(static_cast<size_t>(size));
  } catch (const std::bad_alloc &) {
    return false;  // row by row takes less
  }
  const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(
      libdeflate_alloc_decompressor());
  size_t got = 0;
  if (!decompressor ||
      libdeflate_zlib_decompress(decompressor.get(), joined_.data(), joinedBytes_, inflated_.data(),
                                 inflated_.size(), &got) != LIBDEFLATE_SUCCESS ||
      got != inflated_.size()) {
    inflated_ = Buffer();
    return false;
  }
  joined_ = Buffer();
  showInflated();
  return true;
}

// One chunk a block: length and name, for the first the two bytes with which zlib begins, and the block's
// own front, that is whether it is the last one, and its length twice. Nobody looks at the checksums.
void PngStream::showInflated() {
  constexpr size_t kBlock = 65535;
  static constexpr uint8_t kEnd[4] = {};
  const size_t count = (inflated_.size() + kBlock - 1) / kBlock;
  std::vector<Bytes> parts(parts_.begin(), parts_.begin() + static_cast<ptrdiff_t>(firstPixels_));
  fronts_.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    const size_t start = i * kBlock, size = std::min(kBlock, inflated_.size() - start);
    const bool first = i == 0, last = i + 1 == count;
    const size_t length = size + (first ? 7 : 5) + (last ? 4 : 0);
    const auto byte = [](size_t value, int shift) { return static_cast<uint8_t>(value >> shift); };
    fronts_.push_back(
        {0, byte(length, 16), byte(length, 8), byte(length, 0), 'I', 'D', 'A', 'T', 0x78, 0x01});
    uint8_t *block = fronts_.back().data() + (first ? 10 : 8);
    block[0] = last ? 1 : 0;
    block[1] = byte(size, 0);
    block[2] = byte(size, 8);
    block[3] = static_cast<uint8_t>(~block[1]);
    block[4] = static_cast<uint8_t>(~block[2]);
    parts.push_back({fronts_.back().data(), first ? size_t{15} : size_t{13}});
    parts.push_back({inflated_.data() + start, size});
    if (last) parts.push_back(kEnd);
    parts.push_back(kEnd);
  }
  parts.insert(parts.end(), parts_.begin() + static_cast<ptrdiff_t>(endOfPixels_), parts_.end());
  parts_ = std::move(parts);
}

void PngStream::rewind() {
  part_ = at_ = 0;
}

bool PngStream::read(void *to, size_t length) {
  auto *out = static_cast<uint8_t *>(to);
  while (length != 0) {
    if (part_ == parts_.size()) return false;
    const Bytes rest = parts_[part_].subspan(at_);
    const size_t step = std::min(length, rest.size());
    std::copy_n(rest.begin(), step, out);
    out += step;
    length -= step;
    at_ += step;
    if (step == rest.size()) {
      ++part_;
      at_ = 0;
    }
  }
  return true;
}

}  // namespace host
