// SPDX-License-Identifier: MIT
// Fax coding word for word as T.4 and T.6 describe it, one pixel at a time, and decoders for it.
//
// A picture here is a string of pixels for each row, 'w' or 'b'. Codes are strings of '0' and '1'.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace reference {

using Bytes = std::vector<uint8_t>;
using Picture = std::vector<std::string>;

// The codes of a run: make-up codes and a terminating code.
std::string runCodes(bool isBlack, uint32_t run);

// One row in one dimension, without fill; rows against each other in two dimensions, without an end.
std::string fax1D(const std::string &row);
std::string fax2D(const Picture &picture);

// Bits to bytes, first bit highest, the last byte filled with zeros.
Bytes packBits01(const std::string &bits);

// Rows as the coders take them, a set bit for white; `pad` is the value of the bits past the width.
Bytes packRow(const std::string &row, bool pad = false);
Bytes packPicture(const Picture &picture, bool pad = false);

// Decoders. Each gives the rows decoded before the data ended or made no sense.
Picture unfaxHuffman(std::span<const uint8_t> codes, size_t width, size_t rows);  // rows on whole bytes
Picture unfaxT4(std::span<const uint8_t> codes, size_t width);                    // EOLs, six at the end
Picture unfaxT6(std::span<const uint8_t> codes, size_t width, size_t rows);

}  // namespace reference
