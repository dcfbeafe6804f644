// SPDX-License-Identifier: MIT
// A host of the raster driver out of a fuzzer's bytes: settings, and function records one after the other.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "input.h"
#include "raster/opcode_table.h"
#include "raster/session.h"
#include "runtime/rows.h"
#include "support/stream_procedure.h"

namespace fuzz {

class DriverHost {
 public:
  explicit DriverHost(Input &input) : input_(input) {
    // A small display and page: pictures may have to be as large.
    const int32_t part = input.rarely(16) ? 1 : 4;
    SetDisplayInfo(64 / part, 48 / part, 96, 96);
    SetPrinterInfo(0.5 / part, 0.4 / part, 60, 60);
    stream.keepNoLog();
    const unsigned failing = input.byte();
    if (failing % 4 == 1) stream.failAt(failing / 4 * 8 + 1);
    if (failing % 4 == 2) stream.limitTo(size_t{failing} * 8);
    chooseSettings();
    host.record_[RAXEL_START_REPLY_BYTES] = input.between(0, 300);
    const unsigned missing = input.byte();
    if (missing % 32 == 1) host.record_[RAXEL_START_SETUP] = 0;
    if (missing % 32 == 2) host.record_[RAXEL_START_STATUS] = 0;
    if (missing % 32 == 3) host.record_[RAXEL_START_CAPABILITIES] = 0;
    if (missing % 32 == 4) host.status_[RAXEL_STATUS_CALLBACK] = 0;
    host.refuseFrom = input.byte() % 16;
  }

  // The settings change between sessions, too.
  void chooseSettings() {
    RasterSetup &settings = host.settings();
    settings.nBitmapMode =
        oneOf<int32_t>(input_, {RAXEL_STORED_MODE_RGB, RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_MODE_GREY16,
                                RAXEL_STORED_MODE_GREY256, RAXEL_STORED_MODE_COLOR8,
                                RAXEL_STORED_MODE_COLOR16, RAXEL_STORED_MODE_COLOR256, 0});
    // Choosing a table of colours, and LZW's tables of megabytes, of which the address sanitizer marks
    // every byte, take longer than all the rest.
    if (settings.nBitmapMode == RAXEL_STORED_MODE_COLOR256 && !input_.rarely(5)) {
      settings.nBitmapMode = RAXEL_STORED_MODE_RGB;
    }
    settings.nCompressionMode = oneOf<int32_t>(
        input_, {RAXEL_STORED_COMPRESS_NONE, RAXEL_STORED_COMPRESS_PACKBITS, RAXEL_STORED_COMPRESS_HUFFMAN,
                 RAXEL_STORED_COMPRESS_LZW, RAXEL_STORED_COMPRESS_T4, RAXEL_STORED_COMPRESS_T6, 0});
    if (settings.nCompressionMode == RAXEL_STORED_COMPRESS_LZW && !input_.rarely(17)) {
      settings.nCompressionMode = RAXEL_STORED_COMPRESS_NONE;
    }
    const unsigned modes = input_.byte();
    settings.nColorMode = RAXEL_STORED_COLORS - 1 + static_cast<int32_t>(modes % 7);
    settings.nSizeMode = RAXEL_STORED_SIZE_DISPLAY + static_cast<int32_t>(modes / 8 % 4);
    settings.nResolutionMode = RAXEL_STORED_RESOLUTION_DISPLAY + static_cast<int32_t>(modes / 32 % 4);
    settings.tiff.wLayoutMode = modes % 16 == 1 ? RAXEL_STORED_LAYOUT_TILES : RAXEL_STORED_LAYOUT_STRIPS;
    settings.tiff.nXResolution = static_cast<int16_t>(input_.between(32, 60));
    settings.tiff.nYResolution = static_cast<int16_t>(input_.between(32, 60));
    const double parts = input_.rarely(13) ? 32 : 128;
    settings.dWidth = static_cast<double>(input_.between(1, 20)) / parts;
    settings.dHeight = static_cast<double>(input_.between(1, 20)) / parts;
    settings.lpfnOutputProc = input_.once(4) ? nullptr : stream.procedure();
    host.status_[RAXEL_STATUS_PROC_CONTEXT] = stream.context();
  }

  // The next record, mostly of a function that the driver's state waits for. It is as long as its fields
  // say and no longer.
  std::vector<uint8_t> record() {
    const uint32_t opcode = nextOpcode();
    boundWindow();
    boundPage();
    Bytes record(4);
    Host::put(record, 0, opcode);
    switch (opcode) {
      case RAXEL_OP_WINDOW:
      case RAXEL_OP_VIEWPORT:
        for (size_t at = 16; at < 64; at += 8) Host::put(record, at, number());
        break;
      case RAXEL_OP_BACKGROUND:
        for (size_t at = 16; at < 19; ++at) Host::put(record, at, input_.byte());
        break;
      case RAXEL_OP_VIEWPORT_MODE:
        Host::put<int16_t>(record, 16, static_cast<int16_t>(input_.byte() % 5 - 1));
        Host::put(record, 24, number());
        break;
      case RAXEL_OP_COLORS:
        fillColors(record);
        break;
      case RAXEL_OP_PRIMITIVE:
        fillPrimitive(record);
        break;
      case RAXEL_OP_CELL_ARRAY:
        fillCells(record);
        break;
      case RAXEL_OP_POP_ERRORS:
        Host::put(record, 16, static_cast<int32_t>(input_.byte()) - 128);
        break;
      default:
        break;
    }
    return record;
  }

  // A procedure that is given no context of its own answers with no token, and so declines.
  bool isClosed() const { return host.record_[RAXEL_START_STATUS] == 0 || !stream.isOpen(); }

  using Host = raster_test::Host;
  support::HostStream stream;
  Host host;

 private:
  using Bytes = std::vector<uint8_t>;

  uint32_t nextOpcode() {
    const unsigned choice = input_.byte();
    if (lpEMData == nullptr || choice % 8 == 7) {
      if (choice / 8 % 8 == 7) return input_.quad();
      return raster::kOpcodeTable[input_.byte() % raster::kOpcodeRows].opcode;
    }
    switch (lpEMData->nState) {
      case RAXEL_STATE_INITIALISED:
        return RAXEL_OP_OPEN_DEVICE;
      case RAXEL_STATE_OPEN:
      case RAXEL_STATE_ENDED:
        return choice % 8 == 6 ? RAXEL_OP_CLOSE_DEVICE : RAXEL_OP_BEGIN_PICTURE;
      case RAXEL_STATE_PICTURE:
        return choice % 8 < 5    ? RAXEL_OP_BEGIN_BODY
               : choice % 8 == 5 ? RAXEL_OP_WINDOW
                                 : RAXEL_OP_VIEWPORT_MODE;
      default:
        return choice % 8 < 3   ? RAXEL_OP_CELL_ARRAY
               : choice % 8 < 5 ? RAXEL_OP_PRIMITIVE
               : choice % 8 < 6 ? RAXEL_OP_COLORS
                                : RAXEL_OP_END_PICTURE;
    }
  }

  double number() {
    const unsigned choice = input_.byte();
    switch (choice) {
      case 250:
        return std::numeric_limits<double>::quiet_NaN();
      case 251:
        return std::numeric_limits<double>::infinity();
      case 252:
        return -std::numeric_limits<double>::infinity();
      case 253:
        return 1e300;
      case 254:
        return -1e19;
      case 255:
        return 1e-300;
      default:
        return static_cast<double>(static_cast<int>(choice) - 100) / 2;
    }
  }

  // Sides of a raster: small, nothing at all, or more than any block holds.
  void sides(uint32_t &columns, uint32_t &rows) {
    const unsigned kind = input_.byte();
    const unsigned longest = input_.rarely(16) ? 40 : 16;
    columns = input_.byte() % longest;
    rows = input_.byte() % longest;
    if (kind == 255) columns = rows = 0xFFFFFFFFu;
    if (kind == 254) columns = rows = 0x80000000u;
  }

  int32_t precision() {
    return oneOf<int32_t>(input_, {1, 4, 8, 24, -1, -4, -8, -24, RAXEL_PRECISION_BILEVEL, 0, 2, 16, 32, 33,
                                   -40, std::numeric_limits<int32_t>::min()});
  }

  // A window is a few hundred pixels wide, or so large that no block holds a row of squares.
  void boundWindow() {
    if (lpEMData == nullptr) return;
    double *window = lpEMData->DevWindow;
    for (const size_t corner : {0u, 1u, 3u, 4u}) {
      if (std::fabs(window[corner]) > 100 && std::fabs(window[corner]) < 1e9) window[corner] = 100;
    }
    if (!(std::fabs(window[0]) < 1e9 && std::fabs(window[3]) < 1e9)) {
      window[1] = 0;
      window[4] = 1e19;
    }
    // A resolution multiplies its pixels.
    uint32_t &resolution = lpEMData->nResolution;
    if (resolution != 0 && resolution < 150) resolution = 150;
    if (resolution > 2000 && resolution < 0x7FFF0000u) resolution = 2000;
  }

  // A page of the settings' own is at most 150 pixels wide, or so large that no block holds it: a
  // metafile session takes its sides from what the host has told of the frame.
  void boundPage() {
    RasterSetup &settings = host.settings();
    for (double *side : {&settings.dWidth, &settings.dHeight}) {
      if (*side > 1.5 && *side < 1e6) *side = 1.5;
      // A side of less than nothing goes on until the host objects: now and then.
      if (*side < 0 && settings.tiff.nXResolution % 8 != 3) *side = 0;
    }
    if (settings.dWidth >= 1e6 || settings.dHeight >= 1e6) settings.dWidth = settings.dHeight = 1e9;
    for (int16_t *resolution : {&settings.tiff.nXResolution, &settings.tiff.nYResolution}) {
      if (*resolution > 100) *resolution = 100;
    }
  }

  void fillColors(Bytes &record) {
    const uint32_t length = input_.between(0, 800);
    const uint32_t colors = length < 2 ? 0 : (length - 2) / 3;
    Host::put(record, 4, length);
    Host::put(record, 16, input_.once(16) ? input_.quad() : input_.byte());
    Bytes all = input_.bytes(std::min<size_t>(size_t{3} * colors, 24));
    for (uint32_t i = 0; i < 3 * colors; ++i) {
      record.push_back(all.empty() ? static_cast<uint8_t>(i) : all[i % all.size()]);
    }
  }

  void fillPrimitive(Bytes &record) {
    const bool isActive = lpEMData != nullptr && lpEMData->bCellActive != 0;
    const unsigned choice = input_.byte();
    int32_t primitive = isActive ? RAXEL_PRIMITIVE_END_RASTER : RAXEL_PRIMITIVE_BEGIN_RASTER;
    if (choice % 8 == 7) primitive = static_cast<int32_t>(choice / 8) - 16;
    if (primitive == RAXEL_PRIMITIVE_END_RASTER && ++pictures_ > mostPictures()) primitive = 0;
    uint32_t points = choice % 4;
    if (choice == 253) points = 0xFFFFFFFFu;
    if (choice == 254) points = 0x555556u;
    Host::put(record, 16, primitive);
    Host::put(record, 20, points);
    if (points > 4) return;
    record.resize(24 + size_t{points} * 24, 0xAB);
    uint32_t columns, rows;
    sides(columns, rows);
    const size_t at = record.size();
    const uint32_t length = input_.once(16) ? input_.byte() % 28u : 28u;
    Host::put(record, at, length);
    Host::put(record, at + 4, columns);
    const int32_t bits = precision();
    if (bits == std::numeric_limits<int32_t>::min()) rows = 0xFFFFFFFFu;  // a block would be gigabytes
    Host::put(record, at + 8, rows);
    Host::put(record, at + 12, bits);
    Host::put<uint16_t>(record, at + 18, input_.byte());
    record.resize(at + 4 + length);
  }

  void fillCells(Bytes &record) {
    const bool isActive = lpEMData != nullptr && lpEMData->bCellActive != 0;
    uint32_t columns, rows;
    sides(columns, rows);
    if (!isActive && ++pictures_ > mostPictures()) rows = 0;
    int32_t bits = precision();
    Host::put(record, 24, number());
    Host::put(record, 48, number());
    const double depth = bits == RAXEL_PRECISION_BILEVEL ? 1 : std::fabs(static_cast<double>(bits));
    // Either no block can hold the rows, or the record really holds them: what a host promises is read.
    if (columns > 40 && isActive) columns = rows = 1;
    if (depth > 64) rows = 0;
    Host::put(record, 88, columns);
    Host::put(record, 92, rows);
    Host::put(record, 96, bits);
    record.resize(102);
    const uint64_t bytes =
        columns > 40 ? 0 : runtime::rowStride(columns, static_cast<uint32_t>(depth)) * uint64_t{rows};
    Bytes pixels = input_.bytes(static_cast<size_t>(std::min<uint64_t>(bytes, input_.byte())));
    const size_t given = pixels.size();
    pixels.resize(static_cast<size_t>(bytes));
    for (size_t i = given; i < pixels.size() && given != 0; ++i) pixels[i] = pixels[i % given];
    if (bits < 0) {
      rows_ = std::move(pixels);
      rows_.shrink_to_fit();
      const uint8_t *at = input_.once(32) ? nullptr : rows_.data();
      Host::put(record, 102, at);
    } else {
      record.insert(record.end(), pixels.begin(), pixels.end());
    }
  }

  // Each costs more than a hundred records.
  unsigned mostPictures() const { return input_.rarely(7) ? 5 : 1; }

  Input &input_;
  Bytes rows_;
  unsigned pictures_ = 0;
};

}  // namespace fuzz
