// PNG through libspng. Depths of 1, 2 and 4 bits and colour tables stay as they are.
#include <spng.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "pictures/picture.h"

namespace host {
namespace {

constexpr size_t kLargestChunk = size_t{64} << 20;

struct FreeContext {
  void operator()(spng_ctx *context) const { spng_ctx_free(context); }
};
using Context = std::unique_ptr<spng_ctx, FreeContext>;

void check(int code) {
  if (code != 0) throw Unreadable(std::string("is damaged: ") + spng_strerror(code));
}

// A number of the header that libspng does not give out.
uint32_t quad(std::span<const uint8_t> bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = at; i < at + 4 && i < bytes.size(); ++i) value = value << 8 | bytes[i];
  return value;
}

// Grey levels or colours as the file has them, one of the transparency kinds aside.
void decodeAsIs(spng_ctx *context, const spng_ihdr &header, uint32_t bits, Picture &out) {
  out.allocate(header.width, header.height, bits);
  // The passes of an interlaced picture are laid over each other within a byte.
  if (header.interlace_method != 0 && bits < 8) std::memset(out.pixels.data(), 0, out.pixels.size());
  check(spng_decode_image(context, out.pixels.data(), out.pixels.size(), SPNG_FMT_RAW, 0));
}

void readTable(spng_ctx *context, const Background &background, Picture &out) {
  spng_plte colors{};
  spng_trns opacities{};
  check(spng_get_plte(context, &colors));
  const bool transparent = spng_get_trns(context, &opacities) == 0;
  for (uint32_t i = 0; i < colors.n_entries && i < 256; ++i) {
    const unsigned opacity = transparent && i < opacities.n_type3_entries ? opacities.type3_alpha[i] : 255;
    const spng_plte_entry &c = colors.entries[i];
    out.table[3 * i] = blend(c.red, background[0], opacity);
    out.table[3 * i + 1] = blend(c.green, background[1], opacity);
    out.table[3 * i + 2] = blend(c.blue, background[2], opacity);
  }
  out.useTable(colors.n_entries);
}

// A grey picture with one transparent level: the level becomes the background.
void markTransparentLevel(unsigned level, uint32_t bits, const Background &background, Picture &out) {
  const uint32_t levels = 1u << bits;
  for (uint32_t i = 0; i < levels; ++i) {
    for (size_t c = 0; c < 3; ++c) {
      out.table[3 * i + c] = i == level ? background[c] : static_cast<uint8_t>(i * 255 / (levels - 1));
    }
  }
  out.useTable(levels);
}

// Anything with an alpha channel, and pictures of one transparent colour: laid on the background.
void decodeOver(spng_ctx *context, const spng_ihdr &header, const Background &background, Picture &out) {
  const bool wide = header.bit_depth == 16;
  const uint64_t bytes = uint64_t{header.width} * header.height * (wide ? 8 : 4);
  if (bytes > kLargestPicture) throw Unreadable(tooLarge(header.width, header.height));
  const Buffer deep(static_cast<size_t>(bytes));  // from malloc, aligned for 16-bit samples
  check(spng_decode_image(context, deep.data(), deep.size(), wide ? SPNG_FMT_RGBA16 : SPNG_FMT_RGBA8,
                          SPNG_DECODE_TRNS));
  // Greys on a grey stay greys.
  const bool grey =
      (header.color_type & 2) == 0 && background[0] == background[1] && background[1] == background[2];
  const size_t channels = grey ? 1 : 3;
  out.allocate(header.width, header.height, grey ? 8 : 24);
  uint8_t *to = out.pixels.data();
  const uint64_t pixels = uint64_t{header.width} * header.height;
  const uint16_t *samples = static_cast<const uint16_t *>(static_cast<const void *>(deep.data()));
  for (uint64_t i = 0; i < pixels; ++i, to += channels) {
    uint8_t from[4];
    for (size_t c = 0; c < 4; ++c) from[c] = wide ? narrow(samples[4 * i + c]) : deep.data()[4 * i + c];
    for (size_t c = 0; c < channels; ++c) to[c] = blend(from[c], background[c], from[3]);
  }
}

// 16-bit grey and colours without transparency.
void decodeWide(spng_ctx *context, const spng_ihdr &header, uint32_t channels, Picture &out) {
  const uint64_t samples = uint64_t{header.width} * header.height * channels;
  if (samples * 2 > kLargestPicture) throw Unreadable(tooLarge(header.width, header.height));
  const Buffer deep(static_cast<size_t>(samples * 2));
  check(spng_decode_image(context, deep.data(), deep.size(), SPNG_FMT_PNG, 0));
  out.allocate(header.width, header.height, channels * 8);
  const uint16_t *from = static_cast<const uint16_t *>(static_cast<const void *>(deep.data()));
  for (uint64_t i = 0; i < samples; ++i) out.pixels.data()[i] = narrow(from[i]);
}

void readResolution(spng_ctx *context, Picture &out) {
  spng_phys phys{};
  if (spng_get_phys(context, &phys) != 0 || phys.unit_specifier != 1) return;
  out.dpiX = phys.ppu_x * 0.0254;
  out.dpiY = phys.ppu_y * 0.0254;
}

}  // namespace

void readPng(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  const Context context(spng_ctx_new(0));
  if (!context) throw std::bad_alloc();
  spng_ctx *c = context.get();
  // A wrong checksum in the pixels is an error; in a comment it is not worth one.
  check(spng_set_crc_action(c, SPNG_CRC_ERROR, SPNG_CRC_DISCARD));
  check(spng_set_chunk_limits(c, kLargestChunk, kLargestChunk));
  check(spng_set_png_buffer(c, bytes.data(), bytes.size()));
  spng_ihdr header{};
  const int code = spng_get_ihdr(c, &header);
  if (code == SPNG_EOVERFLOW) throw Unreadable(tooLarge(quad(bytes, 16), quad(bytes, 20)));
  check(code);
  spng_trns transparent{};
  const bool hasTransparency = spng_get_trns(c, &transparent) == 0;
  const bool wide = header.bit_depth == 16;
  if (wide) out.notes.push_back(kReduced);
  readResolution(c, out);

  switch (header.color_type) {
    case SPNG_COLOR_TYPE_INDEXED:
      decodeAsIs(c, header, header.bit_depth, out);
      readTable(c, background, out);
      return;
    case SPNG_COLOR_TYPE_GRAYSCALE:
      if (wide && hasTransparency) return decodeOver(c, header, background, out);
      if (wide) return decodeWide(c, header, 1, out);
      decodeAsIs(c, header, header.bit_depth, out);
      if (hasTransparency) markTransparentLevel(transparent.gray, header.bit_depth, background, out);
      return;
    case SPNG_COLOR_TYPE_TRUECOLOR:
      if (hasTransparency) return decodeOver(c, header, background, out);
      if (wide) return decodeWide(c, header, 3, out);
      return decodeAsIs(c, header, 24, out);
    default:
      return decodeOver(c, header, background, out);
  }
}

}  // namespace host
