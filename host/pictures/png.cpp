// SPDX-License-Identifier: MIT
// PNG: the chunks through libspng, the pixels inflated at once by libdeflate or, where that does not do,
// decoded by libspng too. Depths of 1, 2 and 4 bits and colour tables stay as they are.
#include <dlfcn.h>
#include <spng.h>

#include <cstring>
#include <memory>
#include <new>

#include "loading.h"
#include "pictures/exif.h"
#include "pictures/picture.h"
#include "pictures/png_filters.h"
#include "pictures/png_stream.h"

namespace host {
namespace {

struct LibSpng {
  decltype(&::spng_ctx_free) spng_ctx_free;
  decltype(&::spng_ctx_new) spng_ctx_new;
  decltype(&::spng_decode_image) spng_decode_image;
  decltype(&::spng_decode_row) spng_decode_row;
  decltype(&::spng_get_ihdr) spng_get_ihdr;
  decltype(&::spng_get_phys) spng_get_phys;
  decltype(&::spng_get_plte) spng_get_plte;
  decltype(&::spng_get_row_info) spng_get_row_info;
  decltype(&::spng_get_trns) spng_get_trns;
  decltype(&::spng_set_chunk_limits) spng_set_chunk_limits;
  decltype(&::spng_set_crc_action) spng_set_crc_action;
  decltype(&::spng_set_png_stream) spng_set_png_stream;
  decltype(&::spng_strerror) spng_strerror;
};

bool load(LibSpng &to) {
  void *library = dlopen("libspng.so.0", RTLD_LAZY | RTLD_LOCAL);
  if (!library) return false;
#define RAXEL_RESOLVE(name) resolve(library, #name, to.name)
  return RAXEL_RESOLVE(spng_ctx_free) && RAXEL_RESOLVE(spng_ctx_new) && RAXEL_RESOLVE(spng_decode_image) &&
         RAXEL_RESOLVE(spng_decode_row) && RAXEL_RESOLVE(spng_get_ihdr) && RAXEL_RESOLVE(spng_get_phys) &&
         RAXEL_RESOLVE(spng_get_plte) && RAXEL_RESOLVE(spng_get_row_info) && RAXEL_RESOLVE(spng_get_trns) &&
         RAXEL_RESOLVE(spng_set_chunk_limits) && RAXEL_RESOLVE(spng_set_crc_action) &&
         RAXEL_RESOLVE(spng_set_png_stream) && RAXEL_RESOLVE(spng_strerror);
#undef RAXEL_RESOLVE
}

const LibSpng &libSpng() {
  static LibSpng functions{};
  static const bool loaded = load(functions);
  if (!loaded) throw Unreadable("needs libspng, which cannot be loaded (package libspng0)");
  return functions;
}

constexpr size_t kLargestChunk = size_t{64} << 20;

void check(int code) {
  if (code == SPNG_EMEM) throw std::bad_alloc();
  if (code != 0) throw Unreadable(std::string("is damaged: ") + libSpng().spng_strerror(code));
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
  explicit Context(PngStream &stream) : context_(libSpng().spng_ctx_new(0)) {
    if (!context_) throw std::bad_alloc();
    stream.rewind();
    // A wrong checksum in the pixels is an error; in a comment it is not worth one.
    check(libSpng().spng_set_crc_action(context_.get(), SPNG_CRC_ERROR, SPNG_CRC_DISCARD));
    check(libSpng().spng_set_chunk_limits(context_.get(), kLargestChunk, kLargestChunk));
    check(libSpng().spng_set_png_stream(context_.get(), readStream, &stream));
  }
  operator spng_ctx *() const { return context_.get(); }

 private:
  struct Free {
    void operator()(spng_ctx *context) const { libSpng().spng_ctx_free(context); }
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
  bool interlaced() const { return header.interlace_method != 0; }
  bool indexed() const { return header.color_type == SPNG_COLOR_TYPE_INDEXED; }
  bool grey() const { return (header.color_type & 2) == 0; }
  bool alpha() const { return (header.color_type & 4) != 0; }
  uint32_t levels() const { return indexed() || grey() ? 1 : 3; }
  uint32_t pixelBits() const { return (levels() + (alpha() ? 1 : 0)) * header.bit_depth; }
  size_t rowBytes() const { return static_cast<size_t>((uint64_t{header.width} * pixelBits() + 7) / 8); }
  // Anything with an alpha channel, and pictures of one transparent colour or 16-bit level: laid on the
  // background. Other greys show it through their table.
  bool laidOver() const { return alpha() || (transparent && !indexed() && (!grey() || wide())); }
  bool asItIs() const { return !laidOver() && !wide(); }
  // Of the picture that is made of it; greys on a grey stay greys.
  uint32_t bits(const Background &background) const {
    const bool greyUnder = background[0] == background[1] && background[1] == background[2];
    if (asItIs()) return pixelBits();
    return grey() && (!laidOver() || greyUnder) ? 8 : 24;
  }
};

void readTable(spng_ctx *context, const Front &front, const Background &background, Picture &out) {
  spng_plte colors{};
  if (!has(libSpng().spng_get_plte(context, &colors))) check(SPNG_ENOPLTE);
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
  const bool said = has(libSpng().spng_get_phys(context, &phys)) && phys.unit_specifier == 1;
  out.dpiX = said ? phys.ppu_x * 0.0254 : exif.dpiX;
  out.dpiY = said ? phys.ppu_y * 0.0254 : exif.dpiY;
}

Front readFront(std::span<const uint8_t> bytes, spng_ctx *context) {
  Front front{};
  const int code = libSpng().spng_get_ihdr(context, &front.header);
  if (code == SPNG_EOVERFLOW) throw Unreadable(tooLarge(quad(bytes, 16), quad(bytes, 20)));
  check(code);
  front.transparent = has(libSpng().spng_get_trns(context, &front.transparency));
  return front;
}

// Makes pixels of 8 bits of rows that the picture does not show as the file has them.
class Converter {
 public:
  Converter(const Front &front, const Background &background, Picture &out)
      : front_(front), background_(background), out_(out), shown_(out.view.bits / 8) {
    const spng_trns &key = front.transparency;
    const unsigned mask = front.wide() ? 0xFFFF : 0xFF;
    if (front.grey()) {
      key_[0] = key.gray & mask;
    } else {
      key_[0] = key.red & mask;
      key_[1] = key.green & mask;
      key_[2] = key.blue & mask;
    }
  }

  // Pixels first, first + step... of row y.
  void take(const uint8_t *row, uint32_t y, uint32_t first, uint32_t step) const {
    uint8_t *to = out_.pixels.data() + out_.view.stride * y;
    const size_t levels = front_.levels(), samples = levels + (front_.alpha() ? 1 : 0);
    for (size_t x = first; x < front_.header.width; x += step) {
      unsigned pixel[4] = {};
      for (size_t c = 0; c < samples; ++c) pixel[c] = sample(row, samples * x + c);
      const unsigned opacity = front_.alpha() ? eight(pixel[levels]) : isKey(pixel) ? 0 : 255;
      for (size_t c = 0; c < shown_; ++c) {
        to[shown_ * x + c] = blend(eight(pixel[c < levels ? c : 0]), background_[c], opacity);
      }
    }
  }

 private:
  unsigned sample(const uint8_t *row, size_t index) const {
    return front_.wide() ? unsigned{row[2 * index]} << 8 | row[2 * index + 1] : row[index];
  }
  uint8_t eight(unsigned sample) const {
    return front_.wide() ? narrow(sample) : static_cast<uint8_t>(sample);
  }
  bool isKey(const unsigned *pixel) const {
    return front_.transparent && std::memcmp(pixel, key_, front_.levels() * sizeof *pixel) == 0;
  }

  const Front &front_;
  const Background &background_;
  Picture &out_;
  size_t shown_;       // channels
  unsigned key_[3]{};  // the transparent colour
};

// Takes the inflated rows. False when there is something wrong with them.
bool showInflated(Buffer rows, const Front &front, const Background &background, Picture &out) {
  const size_t bytes = front.rowBytes();
  const uint32_t width = front.header.width, height = front.header.height;
  if (!unfilterPng(rows.data(), bytes, height, (front.pixelBits() + 7) / 8)) return false;
  const uint8_t *first = rows.data() + 1;
  if (front.asItIs()) {
    out.pixels = std::move(rows);
    out.view =
        RaxelPicture{width, height, front.pixelBits(), first, bytes + 1, out.view.table, out.view.colors};
    return true;
  }
  out.allocate(width, height, front.bits(background));
  const Converter converter(front, background, out);
  for (uint32_t y = 0; y < height; ++y) converter.take(first + (bytes + 1) * y, y, 0, 1);
  return true;
}

void decodeAsItIs(spng_ctx *context, const Front &front, Picture &out) {
  // The passes of an interlaced picture are laid over each other within a byte.
  if (front.interlaced() && out.view.bits < 8) {
    const size_t size = out.pixels.size();
    out.pixels = Buffer();
    out.pixels = Buffer::zeroes(size);
    out.view.rows = out.pixels.data();
  }
  check(libSpng().spng_decode_image(context, out.pixels.data(), out.pixels.size(), SPNG_FMT_RAW, 0));
}

void decodeRows(spng_ctx *context, const Front &front, const Converter &converter) {
  constexpr uint32_t kFirst[] = {0, 4, 0, 2, 0, 1, 0}, kStep[] = {8, 8, 4, 4, 2, 2, 1};
  check(libSpng().spng_decode_image(context, nullptr, 0, SPNG_FMT_RAW, SPNG_DECODE_PROGRESSIVE));
  const Buffer row(front.rowBytes());
  // It tells of the end with the last row or, where the last pass has no rows, after it.
  for (int code = 0; code != SPNG_EOI;) {
    spng_row_info info{};
    code = libSpng().spng_get_row_info(context, &info);
    if (code == SPNG_EOI) return;
    check(code);
    code = libSpng().spng_decode_row(context, row.data(), row.size());
    if (code != SPNG_EOI) check(code);
    const bool passes = front.interlaced();
    converter.take(row.data(), info.row_num, passes ? kFirst[info.pass] : 0, passes ? kStep[info.pass] : 1);
  }
}

void decode(PngStream &stream, const Front &front, const Background &background, Picture &out) {
  if (!front.interlaced()) {
    const uint64_t size = (uint64_t{front.rowBytes()} + 1) * front.header.height;
    Buffer rows = stream.inflate(size, kPngSpare);
    if (rows.size() != 0 && showInflated(std::move(rows), front, background, out)) return;
  }
  const RaxelPicture announced = out.view;
  out.allocate(front.header.width, front.header.height, front.bits(background));
  const Context context(stream);
  if (front.asItIs()) {
    decodeAsItIs(context, front, out);
  } else {
    decodeRows(context, front, Converter(front, background, out));
  }
  if (announced.table) out.useTable(announced.colors);
}

}  // namespace

void readPng(std::span<const uint8_t> bytes, const Background &background, Picture &out) {
  PngStream stream(bytes);
  const Exif exif = readExif(stream.exif().data(), stream.exif().size());
  out.metadata.icc = stream.profile();
  if (stream.hasProfile() && out.metadata.icc.empty())
    out.metadata.dropped.emplace_back("the ICC profile (it is damaged, or of more than 16 MiB)");
  Front front;
  {
    const Context context(stream);
    front = readFront(bytes, context);
    if (front.wide()) out.notes.push_back(kReduced);
    readResolution(context, exif, out);
    if (front.indexed()) readTable(context, front, background, out);
  }
  const spng_ihdr &header = front.header;
  if (front.transparent && front.grey() && front.asItIs())
    // Bits above the depth count for nothing.
    markTransparentLevel(front.transparency.gray & ((1u << header.bit_depth) - 1), header.bit_depth,
                         background, out);
  out.announce(header.width, header.height, front.bits(background), exif.orientation);
  decode(stream, front, background, out);
  turnUpright(out, exif.orientation);
}

}  // namespace host
