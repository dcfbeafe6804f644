// SPDX-License-Identifier: MIT
// JPEG through libjpeg-turbo: grey stays grey, all else becomes RGB; Exif says which side is up.
// jpeglib.h needs the standard headers before it, and jerror.h needs jpeglib.h.
// clang-format off
#include <cstddef>
#include <cstdio>
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include <dlfcn.h>

#include <algorithm>
#include <climits>
#include <csetjmp>
#include <new>

#include "loading.h"
#include "pictures/confined.h"
#include "pictures/exif.h"
#include "pictures/jpeg_segments.h"
#include "pictures/picture.h"

namespace host {
namespace {

struct LibJpeg {
  decltype(&::jpeg_CreateDecompress) jpeg_CreateDecompress;
  decltype(&::jpeg_destroy_decompress) jpeg_destroy_decompress;
  decltype(&::jpeg_finish_decompress) jpeg_finish_decompress;
  decltype(&::jpeg_mem_src) jpeg_mem_src;
  decltype(&::jpeg_read_header) jpeg_read_header;
  decltype(&::jpeg_read_scanlines) jpeg_read_scanlines;
  decltype(&::jpeg_start_decompress) jpeg_start_decompress;
  decltype(&::jpeg_std_error) jpeg_std_error;
};

bool load(LibJpeg &to) {
  void *library = dlopen("libjpeg.so.62", RTLD_LAZY | RTLD_LOCAL);
  if (!library) return false;
#define RAXEL_RESOLVE(name) resolve(library, #name, to.name)
  return RAXEL_RESOLVE(jpeg_CreateDecompress) && RAXEL_RESOLVE(jpeg_destroy_decompress) &&
         RAXEL_RESOLVE(jpeg_finish_decompress) && RAXEL_RESOLVE(jpeg_mem_src) &&
         RAXEL_RESOLVE(jpeg_read_header) && RAXEL_RESOLVE(jpeg_read_scanlines) &&
         RAXEL_RESOLVE(jpeg_start_decompress) && RAXEL_RESOLVE(jpeg_std_error);
#undef RAXEL_RESOLVE
}

const LibJpeg &libJpeg() {
  static LibJpeg functions{};
  static const bool loaded = load(functions);
  if (!loaded) throw Unreadable("needs libjpeg-turbo, which cannot be loaded (package libjpeg62-turbo)");
  return functions;
}

// The library reports by calling back and must not be returned to; so the functions below that call it hold
// nothing but plain data, and are left by longjmp.
struct Trouble {
  jpeg_error_mgr manager;
  std::jmp_buf leave;
  int code;
  char message[JMSG_LENGTH_MAX];
};

void leaveOnError(j_common_ptr common) {
  Trouble *trouble = reinterpret_cast<Trouble *>(common->err);
  trouble->code = common->err->msg_code;
  common->err->format_message(common, trouble->message);
  std::longjmp(trouble->leave, 1);
}

void noteWarning(j_common_ptr common, int level) {
  if (level >= 0) return;  // a trace, not a warning
  ++common->err->num_warnings;
  // Data is missing. The library would go on with grey, of which a short file can ask for gigabytes.
  const int code = common->err->msg_code;
  if (code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER || code == JWRN_HUFF_BAD_CODE) leaveOnError(common);
}

void refuse(Trouble &trouble, const char *why) {
  std::snprintf(trouble.message, sizeof trouble.message, "%s", why);
}

// Of the squares of eight by eight samples, of which the picture is made.
uint64_t blocksOf(const jpeg_decompress_struct &info) {
  uint64_t blocks = 0;
  for (int i = 0; i < info.num_components; ++i)
    blocks += uint64_t{info.comp_info[i].width_in_blocks} * info.comp_info[i].height_in_blocks;
  return blocks;
}

// Called for each row of blocks while the scans are gathered. A scan of a few bytes passes over the whole
// picture.
void countScans(j_common_ptr common) {
  constexpr uint64_t kFewScans = 32, kMostScans = 500;  // encoders make some ten
  constexpr uint64_t kMostBlocks = uint64_t{1} << 26;   // of all scans together, where they are not few
  Trouble *trouble = reinterpret_cast<Trouble *>(common->err);
  const jpeg_decompress_struct &info = *reinterpret_cast<j_decompress_ptr>(common);
  const auto scans = static_cast<uint64_t>(info.input_scan_number);
  if (scans <= kFewScans || (scans <= kMostScans && scans * blocksOf(info) <= kMostBlocks)) return;
  refuse(*trouble, "it has more scans than a picture needs");
  std::longjmp(trouble->leave, 1);
}

struct Decoder {
  const LibJpeg &lib = libJpeg();
  jpeg_decompress_struct info{};
  Trouble trouble{};
  jpeg_progress_mgr progress{};

  Decoder() {
    info.err = lib.jpeg_std_error(&trouble.manager);
    trouble.manager.error_exit = leaveOnError;
    trouble.manager.emit_message = noteWarning;
    progress.progress_monitor = countScans;
  }
  ~Decoder() { lib.jpeg_destroy_decompress(&info); }
  Decoder(const Decoder &) = delete;
  Decoder &operator=(const Decoder &) = delete;

  [[noreturn]] void fail() const {
    if (trouble.code == JERR_OUT_OF_MEMORY) throw std::bad_alloc();
    // A progressive picture is gathered in whole before its first row comes.
    if (trouble.code == JERR_NO_BACKING_STORE)
      throw Unreadable(tooLarge(info.image_width, info.image_height) +
                       ", which as a progressive JPEG take too much memory");
    throw Unreadable(std::string("is damaged: ") + trouble.message);
  }
};

bool readHeader(Decoder &decoder, std::span<const uint8_t> bytes) {
  const LibJpeg &lib = decoder.lib;
  if (setjmp(decoder.trouble.leave) != 0) return false;
  jpeg_decompress_struct &info = decoder.info;
  lib.jpeg_CreateDecompress(&info, JPEG_LIB_VERSION, sizeof info);
  info.progress = &decoder.progress;
  lib.jpeg_mem_src(&info, bytes.data(), bytes.size());
  info.mem->max_memory_to_use = static_cast<long>(std::min<uint64_t>(kLargestPicture, LONG_MAX));
  lib.jpeg_read_header(&info, TRUE);
  if (info.num_components == 4) {
    info.out_color_space = JCS_CMYK;
  } else if (info.num_components == 3) {
    info.out_color_space = JCS_RGB;
  }
  return true;
}

// Ink on white paper.
void fromCmyk(const uint8_t *in, uint32_t width, bool inverted, uint8_t *to) {
  for (uint32_t x = 0; x < width; ++x, in += 4, to += 3) {
    for (size_t c = 0; c < 3; ++c) {
      const unsigned paper = inverted ? in[c] : 255u - in[c], black = inverted ? in[3] : 255u - in[3];
      to[c] = static_cast<uint8_t>((paper * black + 127) / 255);
    }
  }
}

// Whether each channel came in a scan, and in a progressive picture its means, without which all is grey.
bool hasAllChannels(const jpeg_decompress_struct &info) {
  for (int i = 0; i < info.num_components; ++i) {
    if (!info.comp_info[i].quant_table || (info.coef_bits && info.coef_bits[i][0] < 0)) return false;
  }
  return true;
}

// `inks` has room for a row of CMYK, and is null for other pictures. Rows of any other size would not fit.
bool decode(Decoder &decoder, const Picture &out, uint8_t *inks) {
  const LibJpeg &lib = decoder.lib;
  if (setjmp(decoder.trouble.leave) != 0) return false;
  jpeg_decompress_struct &info = decoder.info;
  lib.jpeg_start_decompress(&info);
  const auto channels = inks ? 4 : out.view.bits / 8;
  if (info.output_width != out.view.width || info.output_height != out.view.height ||
      static_cast<uint32_t>(info.output_components) != channels) {
    refuse(decoder.trouble, "its rows are of another size than it says");
    return false;
  }
  if (!hasAllChannels(info)) {
    refuse(decoder.trouble, "scans are missing");
    return false;
  }
  while (info.output_scanline < info.output_height) {
    uint8_t *to = out.rowAt(info.output_scanline);
    JSAMPROW row = inks ? inks : to;
    lib.jpeg_read_scanlines(&info, &row, 1);
    // Adobe's CMYK stores 255 - ink.
    if (inks) fromCmyk(inks, info.output_width, info.saw_Adobe_marker, to);
  }
  lib.jpeg_finish_decompress(&info);
  return true;
}

// What the file says of its size on paper; Exif has the word where it says nothing, as cameras do.
void readResolution(const jpeg_decompress_struct &info, const Exif &exif, Picture &out) {
  const int unit = info.saw_JFIF_marker ? info.density_unit : 0;
  const double scale = unit == 1 ? 1 : unit == 2 ? 2.54 : 0;
  out.dpiX = scale == 0 ? exif.dpiX : info.X_density * scale;
  out.dpiY = scale == 0 ? exif.dpiY : info.Y_density * scale;
}

void decodeJpeg(std::span<const uint8_t> bytes, Picture &out) {
  Decoder decoder;
  if (!readHeader(decoder, bytes)) decoder.fail();
  const jpeg_decompress_struct &info = decoder.info;
  const auto channels = static_cast<uint32_t>(info.num_components);
  if (uint64_t{info.image_width} * info.image_height * channels > kLargestPicture)
    throw Unreadable(tooLarge(info.image_width, info.image_height));
  if (channels != 1 && channels != 3 && channels != 4)
    throw Unreadable("has " + std::to_string(channels) + " channels, which is no known kind of picture");
  Exif exif;
  eachJpegSegment(bytes, [&](uint8_t marker, std::span<const uint8_t> body) {
    if (marker == JPEG_APP0 + 1 && !exif.found) exif = readExif(body.data(), body.size());
  });
  readResolution(info, exif, out);
  const uint32_t bits = channels == 1 ? 8 : 24;
  out.announce(info.image_width, info.image_height, bits, exif.orientation);
  // Huffman codes take a bit at least, arithmetic ones less.
  if (!info.arith_code && blocksOf(info) / 8 > bytes.size())
    throw Unreadable("is damaged: it has less than a bit for each block");
  out.allocate(info.image_width, info.image_height, bits);
  const Buffer inks(channels == 4 ? size_t{info.image_width} * 4 : 0);
  if (!decode(decoder, out, channels == 4 ? inks.data() : nullptr)) decoder.fail();
  if (decoder.trouble.manager.num_warnings != 0) out.notes.push_back("the JPEG data has small faults");
}

}  // namespace

void readJpeg(std::span<const uint8_t> bytes, Picture &out) {
  libJpeg();
  confined(out, 0, [&](Picture &to) { decodeJpeg(bytes, to); });
}

}  // namespace host
