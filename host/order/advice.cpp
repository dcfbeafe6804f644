// SPDX-License-Identifier: MIT
#include "order/advice.h"

#include <unistd.h>

#include <cerrno>

namespace host {
namespace {

std::string onOutput(int error, const Options &options, const std::string &output) {
  switch (error) {
    case EISDIR:
      return "; use -d for several outputs";
    case EEXIST:
      return options.rules.noClobber ? ", and --no-clobber was given"
                                     : "; give another name, or --force to replace it";
    case EACCES:
      // The file itself, and not its folder.
      if (options.rules.force || access(output.c_str(), F_OK) != 0) return "";
      return access(output.c_str(), W_OK) != 0 ? "; --force replaces it" : "";
    default:
      return "";
  }
}

std::string adviceFor(const Failure &failure, const Options &options, const std::string &output) {
  switch (failure.reason()) {
    case RAXEL_HOST_TOO_WIDE:
    case RAXEL_HOST_TOO_TALL:
      return ": give a smaller --size";
    case RAXEL_HOST_TOO_LARGE:
      return ": use fewer bits (--mode) or a smaller --size";
    case RAXEL_HOST_BAD_RESOLUTION:
      return ": give one with --dpi";
    case RAXEL_HOST_BAD_SIZE:
      return ": check --size and --dpi";
    case RAXEL_HOST_FAX_NEEDS_1_BIT:
      return ": use --mode bilevel, or --compress lzw or packbits";
    case RAXEL_HOST_TILES_NEED_T6:
      return ": use --compress t6, or --layout strips";
    case RAXEL_HOST_TILES_TOO_FLAT:
    case RAXEL_HOST_TILES_TOO_WIDE:
      return ": use --layout strips";
    case RAXEL_HOST_ONE_STRIP_NEEDS_FAX:
      return ": use --compress t6, t4 or huffman, or --strips quarters";
    case RAXEL_HOST_PREDICTOR_NEEDS_LZW:
      return ": give --predictor auto";
    case RAXEL_HOST_BAD_PALETTE:
      return ": use --mode auto, or another --palette";
    case RAXEL_HOST_NO_QUANTIZER:
      return ": use another --quantizer";
    case RAXEL_HOST_NO_THRESHOLD:
      return ": give a level with --threshold";
    case RAXEL_HOST_NO_FILTER:
      return "; name another with --library";
    case RAXEL_HOST_BAD_ROAD:
      return options.via == Via::kDriver ? ": give another --dpi, or --via cell" : ": use --via cell";
    case RAXEL_HOST_FILTER_FAILED:
      return options.via == Via::kMetafile ? "; use --via cell" : "";
    case RAXEL_HOST_NO_CREATE:
      return onOutput(failure.error(), options, output);
    default:
      return "";
  }
}

}  // namespace

Failure advised(const Failure &failure, const Options &options, const std::string &output) {
  return {failure.code(), failure.reason(), failure.what() + adviceFor(failure, options, output),
          failure.error()};
}

std::string noteText(uint32_t note) {
  std::string text = raxelHostNote(note);
  if (note == RAXEL_NOTE_DOCUMENT) return text + "; --dither makes dots of it";
  if (note == RAXEL_NOTE_NO_DOCUMENT) return text + "; --threshold auto cuts it into black and white";
  return text;
}

}  // namespace host
