// SPDX-License-Identifier: MIT
// The filters of PNG's rows (ISO/IEC 15948, section 9), undone where they lie.
#pragma once

#include <cstddef>
#include <cstdint>

namespace host {

// Rows of `rowBytes` bytes, each with its filter type in front, whose pixels take `step` bytes (1 for those
// of less than a byte); `rows` has kPngSpare bytes more than these. False for an unknown type: the rows
// then hold nothing of use.
constexpr size_t kPngSpare = 8;
bool unfilterPng(uint8_t *rows, size_t rowBytes, uint32_t height, size_t step);

}  // namespace host
