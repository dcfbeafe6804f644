// JPEG through libjpeg-turbo: grey stays grey, all else becomes RGB; Exif says which side is up.
// jpeglib.h needs the standard headers before it, and jerror.h needs jpeglib.h.
// clang-format off
#include <cstddef>
#include <cstdio>
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include <algorithm>
#include <climits>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "pictures/exif.h"
#include "pictures/picture.h"

namespace host {
namespace {

// The library reports by calling back and must not be returned to; so the reader below holds nothing
// but plain data across calls, and leaves by longjmp.
struct Trouble {
  jpeg_error_mgr manager;
  std::jmp_buf leave;
  char message[JMSG_LENGTH_MAX];
  bool tooLarge;
};

void leaveOnError(j_common_ptr common) {
  Trouble *trouble = reinterpret_cast<Trouble *>(common->err);
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

// What the decoder leaves behind; plain data, so that a jump may pass over it.
struct Decoded {
  uint8_t *pixels;
  uint32_t width, height, channels;
  bool inverted;  // Adobe's CMYK stores 255 - ink
  uint8_t unit;   // 1 dots an inch, 2 dots a centimetre
  uint16_t densityX, densityY;
  Exif exif;
};

bool decode(std::span<const uint8_t> bytes, Trouble &trouble, Decoded &out) {
  jpeg_decompress_struct info;
  info.err = jpeg_std_error(&trouble.manager);
  trouble.manager.error_exit = leaveOnError;
  trouble.manager.emit_message = noteWarning;
  if (setjmp(trouble.leave) != 0) {
    jpeg_destroy_decompress(&info);
    return false;
  }
  jpeg_create_decompress(&info);
  jpeg_save_markers(&info, JPEG_APP0 + 1, 0xFFFF);
  jpeg_mem_src(&info, bytes.data(), bytes.size());
  info.mem->max_memory_to_use = static_cast<long>(std::min<uint64_t>(kLargestPicture, LONG_MAX));
  jpeg_read_header(&info, TRUE);
  out.width = info.image_width;
  out.height = info.image_height;
  if (uint64_t{out.width} * out.height * static_cast<uint32_t>(info.num_components) > kLargestPicture) {
    trouble.tooLarge = true;
    jpeg_destroy_decompress(&info);
    return false;
  }
  if (info.num_components == 4) {
    info.out_color_space = JCS_CMYK;
  } else if (info.num_components == 3) {
    info.out_color_space = JCS_RGB;
  }
  jpeg_start_decompress(&info);
  out.channels = static_cast<uint32_t>(info.output_components);
  const size_t stride = size_t{out.width} * out.channels;
  out.pixels = static_cast<uint8_t *>(std::malloc(stride * out.height));
  if (!out.pixels) {
    std::strcpy(trouble.message, "there is not enough memory");
    jpeg_destroy_decompress(&info);
    return false;
  }
  while (info.output_scanline < info.output_height) {
    JSAMPROW row = out.pixels + stride * info.output_scanline;
    jpeg_read_scanlines(&info, &row, 1);
  }
  out.inverted = info.saw_Adobe_marker;
  out.unit = info.saw_JFIF_marker ? info.density_unit : 0;
  out.densityX = info.X_density;
  out.densityY = info.Y_density;
  for (jpeg_saved_marker_ptr m = info.marker_list; m && !out.exif.found; m = m->next) {
    out.exif = readExif(m->data, m->data_length);
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  return true;
}

// Ink on white paper.
void fromCmyk(const Decoded &from, Picture &out) {
  const uint64_t pixels = uint64_t{from.width} * from.height;
  const uint8_t *in = from.pixels;
  uint8_t *to = out.pixels.data();
  for (uint64_t i = 0; i < pixels; ++i, in += 4, to += 3) {
    for (size_t c = 0; c < 3; ++c) {
      const unsigned paper = from.inverted ? in[c] : 255u - in[c],
                     black = from.inverted ? in[3] : 255u - in[3];
      to[c] = static_cast<uint8_t>((paper * black + 127) / 255);
    }
  }
}

}  // namespace

void readJpeg(std::span<const uint8_t> bytes, Picture &out) {
  Trouble trouble{};
  Decoded decoded{};
  const bool whole = decode(bytes, trouble, decoded);
  const std::unique_ptr<uint8_t, decltype(&std::free)> pixels(decoded.pixels, &std::free);
  if (trouble.tooLarge) throw Unreadable(tooLarge(decoded.width, decoded.height));
  if (!whole) throw Unreadable(std::string("is damaged: ") + trouble.message);
  if (trouble.manager.num_warnings != 0) out.notes.push_back("the JPEG data has small faults");
  if (decoded.channels == 2) throw Unreadable("has two channels, which is no known kind of picture");
  out.allocate(decoded.width, decoded.height, decoded.channels == 1 ? 8 : 24);
  if (decoded.channels == 4) {
    fromCmyk(decoded, out);
  } else {
    std::memcpy(out.pixels.data(), decoded.pixels, out.pixels.size());
  }
  const double scale = decoded.unit == 1 ? 1 : decoded.unit == 2 ? 2.54 : 0;
  out.dpiX = decoded.densityX * scale;
  out.dpiY = decoded.densityY * scale;
  // Cameras leave it to Exif.
  if (scale == 0) {
    out.dpiX = decoded.exif.dpiX;
    out.dpiY = decoded.exif.dpiY;
  }
  turnUpright(out, decoded.exif.orientation);
}

}  // namespace host
