// SPDX-License-Identifier: MIT
// A host that sends anything: every opcode in every state, records cut short and lengths that wrap,
// numbers that are none. The sanitizers say whether the driver stays inside its blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "raster/opcode_table.h"
#include "raster/session.h"
#include "support/cases.h"
#include "support/random.h"

namespace {

using raster_test::Host;
using support::Random;

// Opcodes that no row of the table has.
constexpr uint32_t kUnknownOpcodes[] = {0, 6, 7, 1032, 3844, 0xFFFF, 0x10409, 0xFFFFFFFF};

// Any row of the table, or now and then none.
uint32_t anyOpcode(Random &random) {
  if (random.chance(14)) return kUnknownOpcodes[random.between(0, std::ssize(kUnknownOpcodes) - 1)];
  return raster::kOpcodeTable[random.between(0, raster::kOpcodeRows - 1)].opcode;
}

size_t bytesWritten = 0;

// The files go nowhere; the token is any number but 0.
HostWord swallow(HostWord, HostWord op, HostWord, HostWord arg2) {
  if (op == KVL_OP_WRITE) {
    bytesWritten += arg2;
    return arg2;
  }
  return op == KVL_OP_OPEN ? 1 : 0;
}

double anyDouble(Random &random) {
  switch (random.between(0, 11)) {
    case 0:
      return std::numeric_limits<double>::quiet_NaN();
    case 1:
      return std::numeric_limits<double>::infinity();
    case 2:
      return -std::numeric_limits<double>::infinity();
    case 3:
      return 1e300;
    case 4:
      return -1e19;
    default:
      return static_cast<double>(random.between(-40, 40)) / 2;
  }
}

uint32_t anySize(Random &random) {
  switch (random.between(0, 19)) {
    case 0:
      return 0;
    case 1:
      return 0xFFFFFFFFu;
    case 2:
      return 0x80000000u;
    case 3:
      return 0x401u;
    default:
      return static_cast<uint32_t>(random.between(1, 24));
  }
}

int32_t anyPrecision(Random &random) {
  static constexpr int32_t kPrecisions[] = {1, 4, 8, 24, -1, -4, -8, -24, -32768, 0, 2, 16, 32, 33, 40};
  return random.between(0, 19999) == 0 ? std::numeric_limits<int32_t>::min()
                                       : kPrecisions[random.between(0, std::ssize(kPrecisions) - 1)];
}

// Bytes that a cell array of this record needs for its rows: the host's promise. Past 2^40 it only
// says "too many".
uint64_t promisedBytes(uint32_t columns, uint32_t rows, int32_t precision) {
  const double bits = precision == -32768 ? 1 : std::fabs(static_cast<double>(precision));
  const double row = std::floor(columns * bits / 8) + 8;
  return static_cast<uint64_t>(std::min(row * rows, 1e12));
}

class RandomHost {
 public:
  explicit RandomHost(uint64_t seed) : random_(seed), scratch_(1 << 16, 0x5A) {}

  void run(size_t records) {
    for (size_t i = 0; i < records; ++i) {
      if (lpEMData == nullptr || random_.chance(1)) restart();
      sendOne();
    }
  }

 private:
  void restart() {
    if (random_.chance(50)) RASTER_dd_entry32(0, RAXEL_ENTRY_END, nullptr);
    RasterSetup &settings = host_.settings();
    static constexpr int32_t kModes[] = {RAXEL_STORED_MODE_BILEVEL, RAXEL_STORED_MODE_GREY16,
                                         RAXEL_STORED_MODE_GREY256, RAXEL_STORED_MODE_COLOR8,
                                         RAXEL_STORED_MODE_COLOR16, RAXEL_STORED_MODE_COLOR256,
                                         RAXEL_STORED_MODE_RGB,     220};
    static constexpr int32_t kCompressions[] = {RAXEL_STORED_COMPRESS_NONE,
                                                RAXEL_STORED_COMPRESS_PACKBITS,
                                                RAXEL_STORED_COMPRESS_HUFFMAN,
                                                RAXEL_STORED_COMPRESS_LZW,
                                                RAXEL_STORED_COMPRESS_T4,
                                                RAXEL_STORED_COMPRESS_T6,
                                                228};
    settings.nBitmapMode = kModes[random_.between(0, 7)];
    settings.nCompressionMode = kCompressions[random_.between(0, 6)];
    settings.nColorMode =
        static_cast<int32_t>(random_.between(RAXEL_STORED_COLORS - 1, RAXEL_STORED_COLORS_GREY_INVERT + 1));
    settings.nSizeMode =
        static_cast<int32_t>(random_.between(RAXEL_STORED_SIZE_PRINTER, RAXEL_STORED_SIZE_USER));
    settings.nResolutionMode = static_cast<int32_t>(
        random_.between(RAXEL_STORED_RESOLUTION_PRINTER, RAXEL_STORED_RESOLUTION_USER));
    settings.tiff.wLayoutMode = random_.chance(20) ? RAXEL_STORED_LAYOUT_TILES : RAXEL_STORED_LAYOUT_STRIPS;
    settings.tiff.nXResolution = static_cast<int16_t>(random_.between(32, 60));
    settings.tiff.nYResolution = settings.tiff.nXResolution;
    settings.dWidth = static_cast<double>(random_.between(1, 20)) / 32;
    settings.dHeight = static_cast<double>(random_.between(1, 20)) / 32;
    settings.lpfnOutputProc = random_.chance(80) ? swallow : nullptr;
    host_.record_[RAXEL_START_REPLY_BYTES] = static_cast<HostWord>(random_.between(0, 300));
    host_.record_[RAXEL_START_SETUP] = random_.chance(95) ? host_.setup_ : 0;
    host_.record_[RAXEL_START_STATUS] =
        random_.chance(90) ? reinterpret_cast<HostWord>(host_.status_.data()) : 0;
    host_.record_[RAXEL_START_CAPABILITIES] =
        random_.chance(90) ? reinterpret_cast<HostWord>(host_.capabilities_.data()) : 0;
    host_.calls.clear();
    host_.refuseFrom = random_.chance(10) ? static_cast<size_t>(random_.between(1, 9)) : 0;
    hCommon = random_.chance(1) ? 9 : 0;
    host_.initialise();
    hCommon = 0;
    if (lpEMData != nullptr && random_.chance(30)) {
      lpEMData->nErrMax = random_.chance(80) ? static_cast<uint32_t>(random_.between(-2, 12))
                                             : static_cast<uint32_t>(random_.next());
    }
    host_.calls.clear();
  }

  // Mostly the opcode that the state waits for, so that sessions get somewhere.
  uint32_t nextOpcode() {
    if (lpEMData == nullptr || random_.chance(25)) return anyOpcode(random_);
    switch (lpEMData->nState) {
      case RAXEL_STATE_INITIALISED:
        return RAXEL_OP_OPEN_DEVICE;
      case RAXEL_STATE_OPEN:
      case RAXEL_STATE_ENDED:
        return random_.chance(80) ? RAXEL_OP_BEGIN_PICTURE : RAXEL_OP_CLOSE_DEVICE;
      case RAXEL_STATE_PICTURE:
        return random_.chance(60) ? RAXEL_OP_BEGIN_BODY
                                  : (random_.chance(50) ? RAXEL_OP_WINDOW : RAXEL_OP_VIEWPORT_MODE);
      default:
        return random_.chance(10) ? uint32_t{RAXEL_OP_END_PICTURE} : bodyOpcode();
    }
  }

  // A picture costs a thousand times what the other records cost: one in a while is enough.
  uint32_t bodyOpcode() {
    if (lpEMData->bCellActive != 0) return random_.chance(80) ? RAXEL_OP_CELL_ARRAY : RAXEL_OP_PRIMITIVE;
    if (random_.chance(1)) return RAXEL_OP_CELL_ARRAY;
    return random_.chance(70) ? RAXEL_OP_PRIMITIVE : RAXEL_OP_COLORS;
  }

  void sendOne() {
    const uint32_t opcode = nextOpcode();
    std::vector<uint8_t> record = random_.bytes(128);
    Host::put(record, 0, opcode);
    if (opcode == RAXEL_OP_WINDOW || opcode == RAXEL_OP_VIEWPORT) {
      for (size_t at = 16; at < 64; at += 8) Host::put(record, at, anyDouble(random_));
    } else if (opcode == RAXEL_OP_VIEWPORT_MODE) {
      Host::put<int16_t>(record, 16, static_cast<int16_t>(random_.between(-1, 3)));
      // A resolution low enough keeps the pictures small.
      Host::put(record, 24, random_.chance(70) ? 0.5 : anyDouble(random_));
    } else if (opcode == RAXEL_OP_COLORS) {
      fillColors(record);
    } else if (opcode == RAXEL_OP_PRIMITIVE) {
      fillPrimitive(record);
    } else if (opcode == RAXEL_OP_CELL_ARRAY) {
      fillCells(record);
    }
    if (lpEMData != nullptr && lpEMData->nState == RAXEL_STATE_BODY) boundWindow();
    host_.send(std::move(record));
    if (host_.calls.size() > 64) host_.calls.clear();
    if (lpEMData != nullptr && random_.chance(1)) lpEMData->nState = static_cast<uint32_t>(random_.next());
    if (lpEMData != nullptr && random_.chance(5)) dq_es();
  }

  // A resolution of an unframed picture multiplies its window: keep both within a few hundred pixels,
  // or so large that no block holds the picture.
  void boundWindow() {
    for (const size_t corner : {0u, 1u, 3u, 4u}) {
      double &value = lpEMData->DevWindow[corner];
      if (std::fabs(value) > 100 && std::fabs(value) < 1e9) value = 100;
    }
    // One row of 2^32 bilevel pixels does fit, and takes long: such windows are as high as they are wide.
    const double *window = lpEMData->DevWindow;
    if (std::fabs(window[0]) >= 1e9 || std::fabs(window[3]) >= 1e9) {
      lpEMData->DevWindow[1] = 0;
      lpEMData->DevWindow[4] = 1e19;
    }
    const uint32_t resolution = lpEMData->nResolution;
    if (resolution > 2000 && resolution < 0x7FFF0000u) lpEMData->nResolution = 2000;
  }

  void fillColors(std::vector<uint8_t> &record) {
    const auto colors = static_cast<uint32_t>(random_.between(0, 300));
    record.resize(20 + size_t{colors} * 3);
    Host::put(record, 4,
              random_.chance(10) ? static_cast<uint32_t>(random_.between(0, 2)) : colors * 3 + 2);
    Host::put(record, 16,
              random_.chance(90) ? static_cast<uint32_t>(random_.between(0, 300))
                                 : static_cast<uint32_t>(random_.next()));
  }

  // Frames begin and end about as often.
  int32_t primitive() {
    if (random_.chance(45)) return -5;
    return random_.chance(80) ? -6 : static_cast<int32_t>(random_.between(-8, 2));
  }

  void fillPrimitive(std::vector<uint8_t> &record) {
    const uint32_t points = random_.chance(5)   ? 0xFFFFFFFFu
                            : random_.chance(5) ? 0x555556u
                                                : static_cast<uint32_t>(random_.between(0, 3));
    Host::put(record, 16, primitive());
    Host::put(record, 20, points);
    if (points > 3) return;
    const size_t at = 24 + size_t{points} * 24;
    record.resize(at + 4);
    const bool whole = random_.chance(90);
    Host::put(record, at, whole ? 28u : static_cast<uint32_t>(random_.between(0, 27)));
    Host::put(record, at + 4, anySize(random_));
    uint32_t rows = anySize(random_);
    int32_t precision = anyPrecision(random_);
    if (random_.chance(70)) precision = 8;
    Host::put(record, at + 8, rows);
    Host::put(record, at + 12, precision);
    record.resize(at + 32, 0x33);
  }

  void fillCells(std::vector<uint8_t> &record) {
    uint32_t columns = anySize(random_);
    uint32_t rows = anySize(random_);
    int32_t precision = anyPrecision(random_);
    // Either no block can hold the rows, or the record really holds them.
    uint64_t promised = promisedBytes(columns, rows, precision);
    if (promised > scratch_.size()) {
      columns = static_cast<uint32_t>(random_.between(0, 24));
      rows = static_cast<uint32_t>(random_.between(0, 24));
      precision = precision < 0 ? -24 : 24;
      promised = promisedBytes(columns, rows, precision);
    }
    for (const size_t at : {24u, 48u}) Host::put(record, at, anyDouble(random_));
    Host::put(record, 88, columns);
    Host::put(record, 92, rows);
    Host::put(record, 96, precision);
    record.resize(102);
    if (precision < 0) {
      const uint8_t *rowsAt = random_.chance(5) ? nullptr : scratch_.data();
      Host::put(record, 102, rowsAt);
    } else {
      record.resize(102 + static_cast<size_t>(promised), 0x44);
    }
  }

  Random random_;
  std::vector<uint8_t> scratch_;
  Host host_;
};

TEST(RandomHost, NeverLeavesTheDriversBlocks) {
#if defined(__SANITIZE_ADDRESS__)
  const size_t records = support::cases(2500000);  // here every access is checked, so here it counts
#else
  const size_t records = support::cases(300000);
#endif
  bytesWritten = 0;
  RandomHost(20241).run(records);
  EXPECT_GT(bytesWritten, records / 4) << "too few sessions came to a picture";
}

}  // namespace
