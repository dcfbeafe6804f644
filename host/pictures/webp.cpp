// SPDX-License-Identifier: MIT
// WebP through libwebp, which is loaded when the first such picture comes: stills, and of animations the
// first frame on its canvas.
#include <dlfcn.h>
#include <webp/decode.h>
#include <webp/demux.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "loading.h"
#include "pictures/confined.h"
#include "pictures/exif.h"
#include "pictures/picture.h"

namespace host {
namespace {

struct LibWebp {
  decltype(&::WebPDecodeRGBInto) WebPDecodeRGBInto;
  decltype(&::WebPDecodeRGBAInto) WebPDecodeRGBAInto;
  decltype(&::WebPDemuxInternal) WebPDemuxInternal;
  decltype(&::WebPDemuxDelete) WebPDemuxDelete;
  decltype(&::WebPDemuxGetI) WebPDemuxGetI;
  decltype(&::WebPDemuxGetFrame) WebPDemuxGetFrame;
  decltype(&::WebPDemuxReleaseIterator) WebPDemuxReleaseIterator;
  decltype(&::WebPDemuxGetChunk) WebPDemuxGetChunk;
  decltype(&::WebPDemuxReleaseChunkIterator) WebPDemuxReleaseChunkIterator;
};

bool load(LibWebp &to) {
  void *codec = dlopen("libwebp.so.7", RTLD_LAZY | RTLD_LOCAL);
  void *container = dlopen("libwebpdemux.so.2", RTLD_LAZY | RTLD_LOCAL);
  if (!codec || !container) return false;
#define RAXEL_RESOLVE(library, name) resolve(library, #name, to.name)
  return RAXEL_RESOLVE(codec, WebPDecodeRGBInto) && RAXEL_RESOLVE(codec, WebPDecodeRGBAInto) &&
         RAXEL_RESOLVE(container, WebPDemuxInternal) && RAXEL_RESOLVE(container, WebPDemuxDelete) &&
         RAXEL_RESOLVE(container, WebPDemuxGetI) && RAXEL_RESOLVE(container, WebPDemuxGetFrame) &&
         RAXEL_RESOLVE(container, WebPDemuxReleaseIterator) &&
         RAXEL_RESOLVE(container, WebPDemuxGetChunk) &&
         RAXEL_RESOLVE(container, WebPDemuxReleaseChunkIterator);
#undef RAXEL_RESOLVE
}

const LibWebp &libWebp() {
  static LibWebp functions{};
  static const bool loaded = load(functions);
  if (!loaded)
    throw Unreadable("needs libwebp, which cannot be loaded (packages libwebp7 and libwebpdemux2)");
  return functions;
}

// The chunks of a file, and the first frame among them.
class Container {
 public:
  explicit Container(std::span<const uint8_t> bytes) : lib_(libWebp()) {
    const WebPData data{bytes.data(), bytes.size()};
    demuxer_ = lib_.WebPDemuxInternal(&data, 0, nullptr, WEBP_DEMUX_ABI_VERSION);
    if (!demuxer_ || !lib_.WebPDemuxGetFrame(demuxer_, 1, &frame_) || !frame_.complete) {
      close();
      throw Unreadable("is damaged");
    }
  }
  ~Container() { close(); }
  Container(const Container &) = delete;
  Container &operator=(const Container &) = delete;

  uint32_t feature(WebPFormatFeature which) const { return lib_.WebPDemuxGetI(demuxer_, which); }
  const WebPIterator &frame() const { return frame_; }

  Exif exif() const {
    WebPChunkIterator chunk{};
    Exif exif;
    if (lib_.WebPDemuxGetChunk(demuxer_, "EXIF", 1, &chunk))
      exif = readExif(chunk.chunk.bytes, chunk.chunk.size);
    lib_.WebPDemuxReleaseChunkIterator(&chunk);
    return exif;
  }

 private:
  void close() {
    lib_.WebPDemuxReleaseIterator(&frame_);
    lib_.WebPDemuxDelete(demuxer_);
  }

  const LibWebp &lib_;
  WebPDemuxer *demuxer_ = nullptr;
  WebPIterator frame_{};
};

void decodeOpaque(const WebPIterator &frame, uint8_t *to, size_t stride) {
  const size_t room =
      stride * (static_cast<size_t>(frame.height) - 1) + static_cast<size_t>(frame.width) * 3;
  if (!libWebp().WebPDecodeRGBInto(frame.fragment.bytes, frame.fragment.size, to, room,
                                   static_cast<int>(stride)))
    throw Unreadable("is damaged");
}

void decodeOver(const WebPIterator &frame, const Background &background, uint8_t *to, size_t stride) {
  const size_t width = static_cast<size_t>(frame.width), height = static_cast<size_t>(frame.height);
  const Buffer deep(width * height * 4);
  if (!libWebp().WebPDecodeRGBAInto(frame.fragment.bytes, frame.fragment.size, deep.data(), deep.size(),
                                    static_cast<int>(width * 4)))
    throw Unreadable("is damaged");
  const uint8_t *from = deep.data();
  for (size_t y = 0; y < height; ++y, to += stride) {
    for (size_t x = 0; x < width; ++x, from += 4) {
      for (size_t c = 0; c < 3; ++c) to[3 * x + c] = blend(from[c], background[c], from[3]);
    }
  }
}

constexpr uint32_t kLongestSide = 16384;  // of a frame

void decodeWebp(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  const Container container(bytes);
  const WebPIterator &frame = container.frame();
  const uint32_t width = container.feature(WEBP_FF_CANVAS_WIDTH),
                 height = container.feature(WEBP_FF_CANVAS_HEIGHT);
  const auto end = [](int start, int size) { return static_cast<int64_t>(start) + size; };
  if (frame.width <= 0 || frame.height <= 0 || frame.x_offset < 0 || frame.y_offset < 0 ||
      end(frame.x_offset, frame.width) > width || end(frame.y_offset, frame.height) > height)
    throw Unreadable("is damaged: its first frame does not lie on its canvas");
  // No picture has more, and an animation with a larger canvas is nothing but its background.
  if (std::max(width, height) > kLongestSide) throw Unreadable(tooLarge(width, height));
  if (container.feature(WEBP_FF_FRAME_COUNT) > 1) out.notes.push_back(kFurtherPictures);
  const Exif exif = container.exif();
  out.dpiX = exif.dpiX;
  out.dpiY = exif.dpiY;
  out.announce(width, height, 24, exif.orientation);
  out.allocate(width, height, 24);
  uint8_t *to = out.pixels.data();
  if (static_cast<uint32_t>(frame.width) != width || static_cast<uint32_t>(frame.height) != height) {
    // What the frame leaves free is as clear as a transparent part.
    for (size_t i = 0; i < out.pixels.size(); ++i) to[i] = background[i % 3];
    to += out.view.stride * static_cast<size_t>(frame.y_offset) +
          size_t{3} * static_cast<size_t>(frame.x_offset);
  }
  if (frame.has_alpha) {
    decodeOver(frame, background, to, out.view.stride);
  } else {
    decodeOpaque(frame, to, out.view.stride);
  }
}

}  // namespace

void readWebp(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  libWebp();
  confined(out, 0, [&](Picture &to) { decodeWebp(bytes, background, to); });
}

}  // namespace host
