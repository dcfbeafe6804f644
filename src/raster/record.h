// SPDX-License-Identifier: MIT
// Where things stand in the driver's function records. Byte offsets are the same on every build;
// values may lie at any address and are read with unaligned-safe loads.
#pragma once

#include <cstddef>
#include <cstdint>

#include "raxel/types.h"
#include "runtime/unaligned.h"

namespace raster {

// Every function record starts with its opcode; most put their data at byte 16.
constexpr size_t kOpcodeAt = 0;
constexpr size_t kDataAt = 16;

// Viewport mode.
constexpr size_t kModeAt = 16;   // i16: RaxelViewportMode
constexpr size_t kScaleAt = 24;  // f64: millimetres per unit

// Colour table.
constexpr size_t kColorLengthAt = 4;  // u32 L: (L - 2) / 3 colours follow
constexpr size_t kFirstColorAt = 16;  // u32
constexpr size_t kColorsAt = 20;      // R, G, B bytes

// Error stack.
constexpr size_t kPopCountAt = 16;  // i32

// Drawing primitive: id, n points of three f64, then a length and the data.
constexpr size_t kPrimitiveAt = 16;   // i32
constexpr size_t kPointCountAt = 20;  // u32
constexpr size_t kPointsAt = 24;      // 24 bytes each
constexpr size_t kPointBytes = 24;
constexpr size_t kBeginBytes = 28;       // data bytes of begin raster
constexpr size_t kBeginColumnsAt = 0;    // u32
constexpr size_t kBeginRowsAt = 4;       // u32
constexpr size_t kBeginPrecisionAt = 8;  // i32
constexpr size_t kBeginFlagsAt = 14;     // u16

// Cell array.
constexpr size_t kFirstYAt = 24;     // f64
constexpr size_t kSecondYAt = 48;    // f64
constexpr size_t kColumnsAt = 88;    // u32
constexpr size_t kRowsAt = 92;       // u32
constexpr size_t kPrecisionAt = 96;  // i32; negative: a pointer to the rows stands at 102
constexpr size_t kPixelsAt = 102;

inline uint8_t *recordBytes(HostWord record) {
  return reinterpret_cast<uint8_t *>(record);
}

template <class T>
T field(HostWord record, size_t offset) {
  return runtime::load<T>(recordBytes(record) + offset);
}

}  // namespace raster
