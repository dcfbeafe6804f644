// SPDX-License-Identifier: MIT
#include "pictures/png_stream.h"

#include <dlfcn.h>
#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "loading.h"
#include "pictures/input.h"
#include "pictures/picture.h"

namespace host {
namespace {

struct LibDeflate {
  decltype(&::libdeflate_crc32) libdeflate_crc32;
  decltype(&::libdeflate_alloc_decompressor) libdeflate_alloc_decompressor;
  decltype(&::libdeflate_free_decompressor) libdeflate_free_decompressor;
  decltype(&::libdeflate_zlib_decompress) libdeflate_zlib_decompress;
};

bool load(LibDeflate &to) {
  void *library = dlopen("libdeflate.so.0", RTLD_LAZY | RTLD_LOCAL);
  if (!library) return false;
#define RAXEL_RESOLVE(name) resolve(library, #name, to.name)
  return RAXEL_RESOLVE(libdeflate_crc32) && RAXEL_RESOLVE(libdeflate_alloc_decompressor) &&
         RAXEL_RESOLVE(libdeflate_free_decompressor) && RAXEL_RESOLVE(libdeflate_zlib_decompress);
#undef RAXEL_RESOLVE
}

const LibDeflate &libDeflate() {
  static LibDeflate functions{};
  static const bool loaded = load(functions);
  if (!loaded) throw Unreadable("needs libdeflate, which cannot be loaded (package libdeflate0)");
  return functions;
}

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
  return libDeflate().libdeflate_crc32(0, chunk.data() + 4, chunk.size() - 8) ==
         numberAt(chunk.data() + chunk.size() - 4);
}

// Those without which a picture cannot be shown begin with a capital.
bool decidesThePicture(std::string_view name) {
  return (name[0] & 0x20) == 0 || name == "tRNS" || name == "pHYs";
}

struct FreeDecompressor {
  void operator()(libdeflate_decompressor *which) const {
    libDeflate().libdeflate_free_decompressor(which);
  }
};

}  // namespace

PngStream::PngStream(std::span<const uint8_t> file) {
  parts_.push_back(file.first(std::min(file.size(), kSignature)));
  size_t at = parts_[0].size();
  bool inARow = true, ended = false;
  while (!ended && file.size() - at >= kAround) {
    const uint64_t length = uint64_t{numberAt(file.data() + at)} + kAround;
    if (length > file.size() - at) break;
    const Bytes chunk = file.subspan(at, static_cast<size_t>(length));
    at += chunk.size();
    const std::string_view name = nameOf(chunk);
    if (name == "eXIf" && exif_.empty() && checksumHolds(chunk)) exif_ = contentOf(chunk);
    hasProfile_ = hasProfile_ || name == "iCCP";
    if (name == "iCCP" && profile_.empty() && checksumHolds(chunk)) profile_ = contentOf(chunk);
    if (!decidesThePicture(name)) continue;
    if (name == "IDAT") {
      if (firstPixels_ == 0) firstPixels_ = endOfPixels_ = parts_.size();
      inARow = inARow && endOfPixels_ == parts_.size();
      endOfPixels_ = parts_.size() + 1;
    }
    parts_.push_back(chunk);
    ended = name == "IEND";
  }
  if (!ended) parts_.push_back(file.subspan(at));
  whole_ = inARow && firstPixels_ != 0;
}

std::vector<uint8_t> PngStream::profile() const {
  constexpr size_t kLeast = size_t{64} << 10, kMost = size_t{16} << 20;
  // A name, a zero byte, one for the method, and the codes.
  const auto end = std::ranges::find(profile_, uint8_t{0});
  const auto front = static_cast<size_t>(end - profile_.begin()) + 2;
  if (front >= profile_.size()) return {};
  const Bytes codes = profile_.subspan(front);
  const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> inflater(
      libDeflate().libdeflate_alloc_decompressor());
  std::vector<uint8_t> out;
  for (size_t room = kLeast; inflater && room <= kMost; room *= 4) {
    out.resize(room);
    size_t got = 0;
    const auto result = libDeflate().libdeflate_zlib_decompress(inflater.get(), codes.data(), codes.size(),
                                                                out.data(), room, &got);
    out.resize(got);
    if (result == LIBDEFLATE_SUCCESS) return out;
    if (result != LIBDEFLATE_INSUFFICIENT_SPACE) break;
  }
  return {};
}

bool PngStream::joinPixels(Buffer &joined) const {
  const bool one = endOfPixels_ - firstPixels_ == 1;
  size_t bytes = 0;
  for (size_t i = firstPixels_; !one && i < endOfPixels_; ++i) bytes += contentOf(parts_[i]).size();
  joined = Buffer(bytes);
  uint8_t *to = joined.data();
  for (size_t i = firstPixels_; i < endOfPixels_; ++i) {
    if (!checksumHolds(parts_[i])) return false;
    const Bytes content = contentOf(parts_[i]);
    if (!one) to = std::copy(content.begin(), content.end(), to);
  }
  return true;
}

Buffer PngStream::inflate(uint64_t size, size_t spare) const {
  if (!whole_ || size > kLargestPicture) return {};
  const uint8_t *last = parts_[endOfPixels_ - 1].data() + parts_[endOfPixels_ - 1].size();
  bringIn({parts_[firstPixels_].data(), last});
  const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> inflater(
      libDeflate().libdeflate_alloc_decompressor());
  if (!inflater) return {};
  try {
    Buffer joined;
    if (!joinPixels(joined)) return {};
    const Bytes pixels =
        joined.size() == 0 ? contentOf(parts_[firstPixels_]) : Bytes{joined.data(), joined.size()};
    const auto wanted = static_cast<size_t>(size);
    Buffer out(wanted + spare);
    size_t got = 0;
    const auto result = libDeflate().libdeflate_zlib_decompress(inflater.get(), pixels.data(),
                                                                pixels.size(), out.data(), wanted, &got);
    return result == LIBDEFLATE_SUCCESS && got == wanted ? std::move(out) : Buffer();
  } catch (const std::bad_alloc &) {
    return {};  // row by row takes less
  }
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
    out = std::copy_n(rest.begin(), step, out);
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
