// PNG through libspng. Depths of 1, 2 and 4 bits and colour tables stay as they are.
#include <spng.h>

#include <cstring>
#include <memory>
#include <new>

#include "pictures/exif.h"
#include "pictures/picture.h"
#include "pictures/png_stream.h"

namespace host {
namespace {

constexpr size_t kLargestChunk = size_t{64} << 20;

void check(int code) {
  if (code == SPNG_EMEM) throw std::bad_alloc();
  if (code != 0) throw Unreadable(std::string("is damaged: ") + spng_strerror(code));
}

// True for a chunk that is there, false for one that is not; whatever else is wrong is an error.
bool has(int code) {
  if (code != SPNG_ECHUNKAVAIL) check(code);
  return code == 0;
}

int readStream(spng_ctx *, void *stream, void *to, size_t length) {
  return static_cast<PngStream *>(stream)->read(to, length) ? 0 : SPNG_IO_EOF;
}

// libspng at the beginning of the stream.
class Context {
 public:
  explicit Context(PngStream &stream, bool checked = false)
      : context_(spng_ctx_new(checked ? SPNG_CTX_IGNORE_ADLER32 : 0)) {
    if (!context_) throw std::bad_alloc();
    stream.rewind();
    // A wrong checksum in the pixels is an error; in a comment it is not worth one.
    check(spng_set_crc_action(context_.get(), checked ? SPNG_CRC_USE : SPNG_CRC_ERROR,
                              checked ? SPNG_CRC_USE : SPNG_CRC_DISCARD));
    check(spng_set_chunk_limits(context_.get(), kLargestChunk, kLargestChunk));
    check(spng_set_png_stream(context_.get(), readStream, &stream));
  }
  operator spng_ctx *() const { return context_.get(); }

 private:
  struct Free {
    void operator()(spng_ctx *context) const { spng_ctx_free(context); }
  };
  std::unique_ptr<spng_ctx, Free> context_;
};

// A number of the header that libspng does not give out.
uint32_t quad(std::span<const uint8_t> bytes, size_t at) {
  uint32_t value = 0;
  for (size_t i = at; i < at + 4 && i < bytes.size(); ++i) value = value << 8 | bytes[i];
  return value;
}

// What comes before the pixels.
struct Front {
  spng_ihdr header;
  bool transparent;
  spng_trns transparency;

  bool wide() const { return header.bit_depth == 16; }
  bool indexed() const { return header.color_type == SPNG_COLOR_TYPE_INDEXED; }
  bool grey() const { return (header.color_type & 2) == 0; }
  uint32_t samples() const { return (indexed() || grey() ? 1 : 3) + (header.color_type & 4 ? 1u : 0u); }
  // Anything with an alpha channel, and pictures of one transparent colour or 16-bit level: laid on the
  // background. Other greys show it through their table.
  bool laidOver() const {
    return (header.color_type & 4) != 0 || (transparent && !indexed() && (!grey() || wide()));
  }
  // Greys on a grey stay greys.
  bool staysGrey(const Background &background) const {
    return grey() && (!laidOver() || (background[0] == background[1] && background[1] == background[2]));
  }
  uint32_t bits(const Background &background) const {
    if (!staysGrey(background)) return indexed() ? header.bit_depth : 24;
    return wide() || laidOver() ? 8 : header.bit_depth;
  }
};

void readTable(spng_ctx *context, const Front &front, const Background &background, Picture &out) {
  spng_plte colors{};
  if (!has(spng_get_plte(context, &colors))) check(SPNG_ENOPLTE);
  const uint32_t opacities = front.transparent ? front.transparency.n_type3_entries : 0;
  for (uint32_t i = 0; i < colors.n_entries && i < 256; ++i) {
    const unsigned opacity = i < opacities ? front.transparency.type3_alpha[i] : 255;
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

void readResolution(spng_ctx *context, const Exif &exif, Picture &out) {
  spng_phys phys{};
  const bool said = has(spng_get_phys(context, &phys)) && phys.unit_specifier == 1;
  out.dpiX = said ? phys.ppu_x * 0.0254 : exif.dpiX;
  out.dpiY = said ? phys.ppu_y * 0.0254 : exif.dpiY;
}

Front readFront(std::span<const uint8_t> bytes, spng_ctx *context) {
  Front front{};
  const int code = spng_get_ihdr(context, &front.header);
  if (code == SPNG_EOVERFLOW) throw Unreadable(tooLarge(quad(bytes, 16), quad(bytes, 20)));
  check(code);
  front.transparent = has(spng_get_trns(context, &front.transparency));
  return front;
}

// The whole picture as the file has it.
void decodeAsIs(spng_ctx *context, const Front &front, Picture &out) {
  // The passes of an interlaced picture are laid over each other within a byte.
  if (front.header.interlace_method != 0 && out.view.bits < 8)
    std::memset(out.pixels.data(), 0, out.pixels.size());
  check(spng_decode_image(context, out.pixels.data(), out.pixels.size(), SPNG_FMT_RAW, 0));
}

// Row by row: `place` gets pixels number `first`, first + step... of a row and where its first one goes.
template <class Place>
void decodeRows(spng_ctx *context, const Front &front, int format, int flags, Picture &out,
                const Place &place) {
  constexpr uint32_t kFirst[] = {0, 4, 0, 2, 0, 1, 0}, kStep[] = {8, 8, 4, 4, 2, 2, 1};
  check(spng_decode_image(context, nullptr, 0, format, flags | SPNG_DECODE_PROGRESSIVE));
  size_t bytes = 0;
  check(spng_decoded_image_size(context, format, &bytes));
  const Buffer row(bytes / front.header.height);  // from malloc, aligned for 16-bit samples
  // It tells of the end with the last row or, where the last pass has no rows, after it.
  for (int code = 0; code != SPNG_EOI;) {
    spng_row_info info{};
    code = spng_get_row_info(context, &info);
    if (code == SPNG_EOI) return;
    check(code);
    code = spng_decode_row(context, row.data(), row.size());
    if (code != SPNG_EOI) check(code);
    const bool passes = front.header.interlace_method != 0;
    place(row.data(), out.pixels.data() + out.view.stride * info.row_num, passes ? kFirst[info.pass] : 0,
          passes ? kStep[info.pass] : 1);
  }
}

uint8_t sampleOf(const uint8_t *row, size_t index, bool wide) {
  if (!wide) return row[index];
  uint16_t value;
  std::memcpy(&value, row + 2 * index, 2);
  return narrow(value);
}

void decodeOver(spng_ctx *context, const Front &front, const Background &background, Picture &out) {
  const bool wide = front.wide();
  const size_t channels = out.view.bits / 8;
  const auto place = [&](const uint8_t *row, uint8_t *to, uint32_t first, uint32_t step) {
    for (size_t x = first; x < front.header.width; x += step) {
      const uint8_t opacity = sampleOf(row, 4 * x + 3, wide);
      for (size_t c = 0; c < channels; ++c)
        to[channels * x + c] = blend(sampleOf(row, 4 * x + c, wide), background[c], opacity);
    }
  };
  decodeRows(context, front, wide ? SPNG_FMT_RGBA16 : SPNG_FMT_RGBA8, SPNG_DECODE_TRNS, out, place);
}

// 16-bit grey and colours without transparency.
void decodeWide(spng_ctx *context, const Front &front, Picture &out) {
  const size_t channels = out.view.bits / 8;
  const auto place = [&](const uint8_t *row, uint8_t *to, uint32_t first, uint32_t step) {
    for (size_t x = first; x < front.header.width; x += step) {
      for (size_t c = 0; c < channels; ++c) to[channels * x + c] = sampleOf(row, channels * x + c, true);
    }
  };
  decodeRows(context, front, SPNG_FMT_PNG, 0, out, place);
}

}  // namespace

void readPng(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  PngStream stream(bytes);
  const Exif exif = readExif(stream.exif().data(), stream.exif().size());
  Front front;
  {
    const Context context(stream);
    front = readFront(bytes, context);
    if (front.wide()) out.notes.push_back(kReduced);
    readResolution(context, exif, out);
    if (front.indexed()) readTable(context, front, background, out);
  }
  const spng_ihdr &header = front.header;
  const bool marked = front.transparent && front.grey() && !front.indexed() && !front.laidOver();
  if (marked) markTransparentLevel(front.transparency.gray, header.bit_depth, background, out);
  const RaxelPicture known = out.view;
  const uint32_t bits = front.bits(background);
  out.announce(header.width, header.height, bits, exif.orientation);

  out.allocate(header.width, header.height, bits);
  const bool inflated = stream.inflate(inflatedBytes(
      {header.width, header.height, front.samples() * header.bit_depth, header.interlace_method != 0}));
  const Context context(stream, inflated);
  if (front.laidOver()) {
    decodeOver(context, front, background, out);
  } else if (front.wide()) {
    decodeWide(context, front, out);
  } else {
    decodeAsIs(context, front, out);
  }
  if (known.table) out.useTable(known.colors);
  turnUpright(out, exif.orientation);
}

}  // namespace host
